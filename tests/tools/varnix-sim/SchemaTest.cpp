#include <gtest/gtest.h>

#include "Schema.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixSimCli;
using VarnixBase::Sim::UsageError;

namespace {

std::vector<Deviation> Validate(const std::string& text)
{
    VarnixTest::TempDir dir;
    std::string schema = FindSchema();
    EXPECT_FALSE(schema.empty()) << "the schema is not found in the source tree";
    return ValidateAgainstSchema(dir.WriteFile("d.prog.config", text).string(), schema);
}

Problem At(long line, const std::string& severity, const std::string& message)
{
    Problem problem;
    problem.severity = severity;
    problem.line = line;
    problem.message = message;
    return problem;
}

} // namespace

TEST(Schema, IsFoundInTheSourceTreeForTheBuildTree)
{
    std::string schema = FindSchema();
    ASSERT_FALSE(schema.empty());
    EXPECT_EQ(std::filesystem::path(schema).filename(), "prog-config.xsd");
}

TEST(Schema, AValidDocumentHasNoDeviation)
{
    auto deviations = Validate(R"(<?xml version="1.0"?>
<ConfigurableProgram>
  <Program type="T">
    <Ports>
      <Port name="a" type="int16" attributes="Input Archive"/>
      <Port name="b" type="qualified.float64" dimensions="1">
        <QualityProvider ref="a"/>
      </Port>
    </Ports>
    <Connectors>
      <Connector startPort="a" endPort="b" type="scale">
        <Parameter name="gain" value="0.5"/>
        <Parameter name="offset" ref="a"/>
      </Connector>
    </Connectors>
  </Program>
</ConfigurableProgram>
)");
    EXPECT_TRUE(deviations.empty());
}

TEST(Schema, EachDeviationIsAWarningAtItsLine)
{
    auto deviations = Validate(R"(<?xml version="1.0"?>
<ConfigurableProgram>
  <Program type="T">
    <Ports>
      <Port name="a" type="int16" attributes="Input Ouptut"/>
      <Port name="b" type="int16" size="2"/>
    </Ports>
    <Connectors>
      <Connector startPort="a" endPort="b" type="copy">
        <Parameter name="p" value="1" ref="a"/>
      </Connector>
      <Conector startPort="a" endPort="b" type="copy"/>
    </Connectors>
  </Program>
</ConfigurableProgram>
)");
    ASSERT_EQ(deviations.size(), 4u);
    for (const auto& deviation : deviations) {
        EXPECT_EQ(deviation.problem.severity, "warning");
        EXPECT_EQ(deviation.problem.message.rfind("schema: ", 0), 0u) << deviation.problem.message;
    }
    EXPECT_EQ(deviations[0].problem.line, 5);
    EXPECT_NE(deviations[0].problem.message.find("'Input Ouptut'"), std::string::npos);
    EXPECT_EQ(deviations[0].subject, "");
    EXPECT_EQ(deviations[1].problem.line, 6);
    EXPECT_EQ(deviations[1].subject, "`size`");
    EXPECT_EQ(deviations[2].problem.line, 10);
    EXPECT_EQ(deviations[2].subject, "`value` or `ref`");
    EXPECT_EQ(deviations[3].problem.line, 12);
    EXPECT_NE(deviations[3].problem.message.find("'Conector'"), std::string::npos);
}

TEST(Schema, AMissingSchemaIsAUsageError)
{
    VarnixTest::TempDir dir;
    auto document = dir.WriteFile("d.prog.config", "<ConfigurableProgram/>").string();
    EXPECT_THROW(ValidateAgainstSchema(document, (dir.Path() / "none.xsd").string()), UsageError);
}

TEST(Schema, MergeLeavesOutWhatTheLibraryReportedAtTheSameLine)
{
    std::vector<Problem> problems{At(4, "warning", "Port attribute is unknown: `size`"),
                                  At(9, "error", "Parameter must contain exactly one attribute of `value` or `ref`")};
    std::vector<Deviation> deviations{
        {At(4, "warning", "schema: attribute 'size' is not allowed"), "`size`"},
        {At(4, "warning", "schema: flag word"), ""},
        {At(6, "warning", "schema: attribute 'size' is not allowed"), "`size`"},
        {At(9, "warning", "schema: key"), "`value` or `ref`"},
        {At(2, "warning", "schema: element"), ""},
    };
    MergeDeviations(problems, deviations);
    ASSERT_EQ(problems.size(), 5u);
    EXPECT_EQ(problems[0].line, 2);
    EXPECT_EQ(problems[1].message, "Port attribute is unknown: `size`");
    EXPECT_EQ(problems[2].message, "schema: flag word");
    EXPECT_EQ(problems[3].line, 6);
    EXPECT_EQ(problems[4].severity, "error");
}

TEST(Schema, ADocumentThatDeclaresEntitiesIsLeftUncheckedWithOneWarning)
{
    // Ten thousand references to a long entity: validating would expand each of them anew.
    std::string text = "<?xml version=\"1.0\"?>\n<!DOCTYPE ConfigurableProgram [<!ENTITY e \"" +
                       std::string(10000, 'x') + "\">]>\n<ConfigurableProgram>\n  <Program type=\"T\" note=\"";
    for (int index = 0; index < 10000; ++index) {
        text += "&e;";
    }
    text += "\"/>\n</ConfigurableProgram>\n";
    auto deviations = Validate(text);
    ASSERT_EQ(deviations.size(), 1u);
    EXPECT_EQ(deviations[0].problem.severity, "warning");
    EXPECT_EQ(deviations[0].problem.line, 1);
    EXPECT_EQ(deviations[0].problem.message,
              "schema: not checked: the document declares entities, and the check does not expand an entity reference");
}
