#include <sstream>

#include <gtest/gtest.h>

#include "VarnixBase/Sim/Analysis.hpp"
#include "VarnixBase/Sim/Graph.hpp"
#include "VarnixBase/Sim/Outline.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Sim;

namespace {

const char* const Document = R"(<?xml version="1.0"?>
<Anything>
  <Program type="Tank">
    <Ports>
      <Port name="raw" type="AnalogIn"/>
      <Port name="level" type="qualified.float64" dimensions="2">
        <QualityProvider ref="raw"/>
      </Port>
    </Ports>
    <Connectors>
      <Connector startPort="raw" endPort="level.x" type="scale">
        <Parameter name="gain" value="0.5"/>
      </Connector>
    </Connectors>
    <Port name="ignored" type="int32"/>
  </Program>
  <Program type="Other"/>
  <Program type="Tank">
    <Ports><Port name="extra" type="int16" dimensions=" 0"/></Ports>
  </Program>
</Anything>
)";

DocumentOutline Outline(const std::string& text)
{
    VarnixTest::TempDir dir;
    return ReadOutline(dir.WriteFile("d.prog.config", text).string());
}

} // namespace

TEST(Outline, ReadsElementsAtTheirLevelsWithLines)
{
    auto outline = Outline(Document);
    EXPECT_EQ(outline.ProgramTypes(), (std::vector<std::string>{"Tank", "Other"}));
    auto tank = outline.Merged("Tank");
    ASSERT_EQ(tank.ports.size(), 3u);
    EXPECT_EQ(tank.ports[0].name, "raw");
    EXPECT_EQ(tank.ports[0].line, 5);
    EXPECT_EQ(tank.ports[1].qualityProviders.at(0).text, "raw");
    EXPECT_EQ(tank.ports[1].qualityProviders.at(0).line, 7);
    EXPECT_EQ(tank.ports[2].name, "extra");
    ASSERT_EQ(tank.connectors.size(), 1u);
    EXPECT_EQ(tank.connectors[0].Name(), "raw:level.x");
    EXPECT_EQ(tank.connectors[0].line, 11);
    EXPECT_TRUE(tank.connectors[0].parameters.at(0).hasValue);
    EXPECT_EQ(tank.connectors[0].parameters.at(0).value, "0.5");
}

TEST(Outline, MissingAndMalformedFilesAreUsageErrors)
{
    VarnixTest::TempDir dir;
    EXPECT_THROW(ReadOutline((dir.Path() / "none.prog.config").string()), UsageError);
    EXPECT_THROW(ReadOutline(dir.WriteFile("bad.prog.config", "<a><b></a>").string()), UsageError);
    EXPECT_THROW(ReadOutline(dir.Path().string()), UsageError);
}

TEST(Outline, PortKindsAndValueTypes)
{
    EXPECT_EQ(PortKind("AnalogIn"), "device");
    EXPECT_EQ(PortKind("qualified.int8"), "qualified");
    EXPECT_EQ(PortKind("float64"), "plain");
    EXPECT_EQ(PortValueType("qualified.float64"), "double");
    EXPECT_EQ(PortValueType("wstring80"), "wstring(80)");
    EXPECT_EQ(PortValueType("bogus"), "");
}

TEST(Analysis, DimensionsAreReadAsTheLibraryReadsThem)
{
    auto problems = FindDimensionProblems(Outline(Document).Merged("Tank"));
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].port, "level");
    EXPECT_EQ(problems[0].dimensions, 2);
    EXPECT_EQ(problems[0].line, 6);
}

TEST(Analysis, ACycleOfConnectorsIsFound)
{
    auto outline = Outline(R"(<r><Program type="P"><Ports><Port name="a" type="int32"/><Port name="b" type="int32"/>
<Port name="c" type="int32"/></Ports><Connectors>
<Connector startPort="a" endPort="b" type="copy"><QualityProvider ref="b:c"/></Connector>
<Connector startPort="b" endPort="c" type="copy"><QualityProvider ref="a:b"/></Connector>
</Connectors></Program></r>)");
    auto cycles = FindQualityCycles(outline.Merged("P"));
    ASSERT_EQ(cycles.size(), 1u);
    EXPECT_EQ(cycles[0].members, (std::vector<std::string>{"a:b", "b:c"}));
    EXPECT_EQ(cycles[0].line, 3);
}

TEST(Analysis, ADevicePortThatFeedsAndJudgesItsOwnConnectorIsACycle)
{
    auto outline = Outline(R"(<r><Program type="P"><Ports>
<Port name="raw" type="AnalogIn"><QualityProvider ref="raw:level"/></Port>
<Port name="level" type="qualified.float64"/></Ports><Connectors>
<Connector startPort="raw" endPort="level" type="scale"/></Connectors></Program></r>)");
    auto cycles = FindQualityCycles(outline.Merged("P"));
    ASSERT_EQ(cycles.size(), 1u);
    EXPECT_EQ(cycles[0].members, (std::vector<std::string>{"raw", "raw:level"}));
}

TEST(Analysis, ACycleThroughAQualifiedPortIsHarmless)
{
    // The qualified port answers from its own state and never asks its providers.
    auto outline = Outline(R"(<r><Program type="P"><Ports>
<Port name="a" type="qualified.int32"><QualityProvider ref="a:b"/></Port>
<Port name="b" type="qualified.int32"/></Ports><Connectors>
<Connector startPort="a" endPort="b" type="copy"/></Connectors></Program></r>)");
    EXPECT_TRUE(FindQualityCycles(outline.Merged("P")).empty());
}

TEST(Graph, DrawsPortsByKindConnectorsAndDashedBindings)
{
    auto program = Outline(Document).Merged("Tank");
    std::ostringstream dot;
    WriteDot(dot, program);
    std::string text = dot.str();
    EXPECT_NE(text.find("digraph \"Tank\" {"), std::string::npos);
    EXPECT_NE(text.find("\"port:raw\" [label=\"raw\\nAnalogIn\", shape=doubleoctagon];"), std::string::npos);
    EXPECT_NE(text.find("\"port:level\" [label=\"level\\nqualified.float64\", shape=box, style=rounded];"),
              std::string::npos);
    EXPECT_NE(text.find("\"port:raw\" -> \"port:level\" [label=\"scale\\nunsigned short -> double\"];"),
              std::string::npos);
    EXPECT_NE(text.find("\"port:raw\" -> \"port:level\" [style=dashed, color=gray40];"), std::string::npos);
    EXPECT_EQ(text.back(), '\n');
}
