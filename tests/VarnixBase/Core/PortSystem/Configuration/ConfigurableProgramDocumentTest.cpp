#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocument.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/Io/NotExistException.hpp"
#include "Zon/System/Commons/NotImplementedException.hpp"
#include "support/LeakCheck.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Core::PortSystem::Configuration;
using Zon::Plc::Commons::Meta::StandardAttribute;
using Zon::System::Commons::InvalidConfigException;
using Zon::System::Commons::NotImplementedException;
using Zon::System::Commons::Diagnostics::Logging::LogEntry;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;
using Zon::System::Commons::Io::NotExistException;

namespace {

constexpr const char* parameterText = "Parameter must contain exactly one attribute of `value` or `ref`";

class ConfigurableProgramDocumentTest : public VarnixTest::HostTest {
protected:
    static constexpr const char* path = "/opt/varnix/data/VarnixBase/Core/PortSystem/Test.prog.config";

    /// Writes `xml` at `path` and loads it.
    void LoadText(const std::string& xml)
    {
        WritePlatformFile(path, xml);
        doc->Load(path);
    }

    /// Writes `xml`, loads it expecting an `InvalidConfigException`, and gives its message.
    std::string LoadFailingParameter(const std::string& xml)
    {
        WritePlatformFile(path, xml);
        try {
            doc->Load(path);
        } catch (const InvalidConfigException& e) {
            return e.GetMessage().ToStdString();
        }
        ADD_FAILURE() << "Load did not throw InvalidConfigException";
        return {};
    }

    std::vector<LogEntry> Warnings() { return Capture().GetEntries(LogLevel::Warning); }

    /// Exactly one warning was logged, with this text, at warning level, by the document's logger.
    void ExpectOneWarning(const std::string& text)
    {
        auto warnings = Warnings();
        ASSERT_EQ(warnings.size(), 1u);
        EXPECT_EQ(warnings[0].level, LogLevel::Warning);
        EXPECT_EQ(warnings[0].message, text);
        EXPECT_EQ(warnings[0].loggerName, ConfigurableProgramDocument::GetLogger().GetName().ToStdString());
    }

    const PortSettings& OnlyPort()
    {
        EXPECT_EQ(doc->GetPrograms().size(), 1u);
        EXPECT_EQ(doc->GetPrograms().at(0).ports.size(), 1u);
        return doc->GetPrograms().at(0).ports.at(0);
    }

    std::string PortDocument(const std::string& portAttributes)
    {
        return "<Config><Program type=\"P\"><Ports><Port name=\"p\" " + portAttributes +
               "/></Ports></Program></Config>";
    }

    void SetUp() override
    {
        HostTest::SetUp();
        doc.emplace();
    }
    void TearDown() override
    {
        doc.reset();
        HostTest::TearDown();
    }

    /// Made once the host runtime exists: the document's class logger needs its log manager.
    std::optional<ConfigurableProgramDocument> doc;
};

} // namespace

// --- the format -----------------------------------------------------------------------------

TEST_F(ConfigurableProgramDocumentTest, ReadsEveryFieldOfAFullDocumentInDocumentOrder)
{
    LoadText(R"(<?xml version="1.0" encoding="utf-8"?>
<ProgramConfiguration>
  <!-- a comment between elements -->
  <Program type="App.Main">
    <Ports>
      <Port name="level" type="QualifiedPort&lt;double&gt;" attributes="Input Retain" dimensions="1">
        <QualityProvider ref="Main/sensor"/>
        <Parameter name="gain" value="1.5"/>
        <QualityProvider ref="Main/other"/>
        <Parameter name="offset" ref="App/Main.offset"/>
      </Port>
      <Port name="out" type="Port&lt;int&gt;" attributes="Output"/>
    </Ports>
    <Connectors>
      <Connector startPort="level" endPort="out" type="ScaleConnector">
        <Parameter name="factor" value="2.0"/>
        <QualityProvider ref="Main/q"/>
      </Connector>
    </Connectors>
  </Program>
</ProgramConfiguration>)");

    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    const auto& program = doc->GetPrograms()[0];
    EXPECT_EQ(program.type, "App.Main");
    ASSERT_EQ(program.ports.size(), 2u);

    const auto& level = program.ports[0];
    EXPECT_EQ(level.name, "level");
    EXPECT_EQ(level.type, "QualifiedPort<double>");
    EXPECT_EQ(level.attributes, StandardAttribute::Input | StandardAttribute::Retain);
    EXPECT_EQ(level.dimensions, 1u);
    ASSERT_EQ(level.qualityProviders.size(), 2u);
    EXPECT_EQ(level.qualityProviders[0].ref, "Main/sensor");
    EXPECT_EQ(level.qualityProviders[1].ref, "Main/other");
    ASSERT_EQ(level.parameters.size(), 2u);
    EXPECT_EQ(level.parameters[0], (ParameterSettings{"gain", "1.5", ""}));
    EXPECT_EQ(level.parameters[1], (ParameterSettings{"offset", "", "App/Main.offset"}));

    const auto& out = program.ports[1];
    EXPECT_EQ(out.name, "out");
    EXPECT_EQ(out.type, "Port<int>");
    EXPECT_EQ(out.attributes, StandardAttribute::Output);
    EXPECT_EQ(out.dimensions, 1u);
    EXPECT_TRUE(out.parameters.empty());
    EXPECT_TRUE(out.qualityProviders.empty());

    ASSERT_EQ(program.connectors.size(), 1u);
    const auto& connector = program.connectors[0];
    EXPECT_EQ(connector.startPort, "level");
    EXPECT_EQ(connector.endPort, "out");
    EXPECT_EQ(connector.type, "ScaleConnector");
    ASSERT_EQ(connector.parameters.size(), 1u);
    EXPECT_EQ(connector.parameters[0], (ParameterSettings{"factor", "2.0", ""}));
    ASSERT_EQ(connector.qualityProviders.size(), 1u);
    EXPECT_EQ(connector.qualityProviders[0].ref, "Main/q");

    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, ANewDocumentHasNoPrograms)
{
    EXPECT_TRUE(doc->GetPrograms().empty());
}

TEST_F(ConfigurableProgramDocumentTest, RootOfAnyNameWithAttributesLoadsWithoutWarning)
{
    LoadText(R"(<whatever.Name version="3" vendor="x" xmlns="urn:any"><Program type="A"/></whatever.Name>)");
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "A");
    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, RootWithoutProgramLoadsWithNoPrograms)
{
    LoadText("<Config><Other type=\"A\"/>text<Ports/></Config>");
    EXPECT_TRUE(doc->GetPrograms().empty());
    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, ProgramWithoutTypeHasAnEmptyType)
{
    LoadText("<Config><Program/></Config>");
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_TRUE(doc->GetPrograms()[0].type.IsEmpty());
    EXPECT_TRUE(doc->GetPrograms()[0].ports.empty());
    EXPECT_TRUE(doc->GetPrograms()[0].connectors.empty());
}

TEST_F(ConfigurableProgramDocumentTest, ProgramsOfTheSameTypeStaySeparateEntries)
{
    LoadText(R"(<Config>
      <Program type="A"><Ports><Port name="one"/></Ports></Program>
      <Program type="A"><Ports><Port name="two"/></Ports></Program>
    </Config>)");
    ASSERT_EQ(doc->GetPrograms().size(), 2u);
    EXPECT_EQ(doc->GetPrograms()[0].ports.at(0).name, "one");
    EXPECT_EQ(doc->GetPrograms()[1].ports.at(0).name, "two");
}

TEST_F(ConfigurableProgramDocumentTest, TwoPortsElementsGiveOneListInOrder)
{
    LoadText(R"(<Config><Program type="A">
      <Ports><Port name="a"/><Port name="b"/></Ports>
      <Connectors><Connector startPort="a" endPort="b"/></Connectors>
      <Ports><Port name="c"/></Ports>
      <Connectors><Connector startPort="b" endPort="c"/></Connectors>
    </Program></Config>)");
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    const auto& program = doc->GetPrograms()[0];
    ASSERT_EQ(program.ports.size(), 3u);
    EXPECT_EQ(program.ports[0].name, "a");
    EXPECT_EQ(program.ports[1].name, "b");
    EXPECT_EQ(program.ports[2].name, "c");
    ASSERT_EQ(program.connectors.size(), 2u);
    EXPECT_EQ(program.connectors[0].startPort, "a");
    EXPECT_EQ(program.connectors[1].startPort, "b");
}

TEST_F(ConfigurableProgramDocumentTest, ElementsAtTheWrongLevelOrWithUnknownNamesAreSkippedSilently)
{
    LoadText(R"(<Config><Program type="A">
      <Port name="directlyBelowProgram"/>
      <Ports>
        <Connector startPort="belowPorts"/>
        <Unknown><Port name="nestedInUnknown"/></Unknown>
        <port name="lowerCase"/>
        <Port name="good"><Port name="nestedPort"/><Connectors/></Port>
      </Ports>
      <Connectors><Port name="belowConnectors"/></Connectors>
      <Extra><Ports><Port name="belowExtra"/></Ports></Extra>
    </Program></Config>)");
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    const auto& program = doc->GetPrograms()[0];
    ASSERT_EQ(program.ports.size(), 1u);
    EXPECT_EQ(program.ports[0].name, "good");
    EXPECT_TRUE(program.connectors.empty());
    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, NamespacePrefixesPlayNoPart)
{
    LoadText(R"(<c:Config xmlns:c="urn:a" xmlns:d="urn:b">
      <d:Program d:type="A"><c:Ports><Port c:name="p"/></c:Ports></d:Program>
    </c:Config>)");
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "A");
    ASSERT_EQ(doc->GetPrograms()[0].ports.size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].ports[0].name, "p");
    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, AttributeValuesAreTakenAsTheyStand)
{
    LoadText(R"(<Config><Program type="  A b  "><Ports><Port name=" p " type="Port&lt;bool&gt;"/></Ports></Program></Config>)");
    EXPECT_EQ(doc->GetPrograms().at(0).type, "  A b  ");
    EXPECT_EQ(OnlyPort().name, " p ");
    EXPECT_EQ(OnlyPort().type, "Port<bool>");
}

TEST_F(ConfigurableProgramDocumentTest, PortWithoutAttributesGetsTheDefaults)
{
    LoadText("<Config><Program><Ports><Port/></Ports></Program></Config>");
    const auto& port = OnlyPort();
    EXPECT_TRUE(port.name.IsEmpty());
    EXPECT_TRUE(port.type.IsEmpty());
    EXPECT_EQ(port.attributes, StandardAttribute::None);
    EXPECT_EQ(port.dimensions, 1u);
    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, QualityProviderWithoutRefIsAppendedWithAnEmptyRef)
{
    LoadText(R"(<Config><Program><Ports><Port name="p"><QualityProvider/></Port></Ports></Program></Config>)");
    ASSERT_EQ(OnlyPort().qualityProviders.size(), 1u);
    EXPECT_TRUE(OnlyPort().qualityProviders[0].ref.IsEmpty());
    EXPECT_TRUE(Warnings().empty());
}

// --- Parameter ------------------------------------------------------------------------------

TEST_F(ConfigurableProgramDocumentTest, ParameterWithNoAttributeEndsTheLoad)
{
    EXPECT_EQ(LoadFailingParameter(R"(<Config><Program><Ports><Port name="p"><Parameter/></Port></Ports></Program></Config>)"),
              parameterText);
}

TEST_F(ConfigurableProgramDocumentTest, ParameterWithOnlyANameEndsTheLoadWithTheSameMessage)
{
    EXPECT_EQ(LoadFailingParameter(
                  R"(<Config><Program><Ports><Port name="p"><Parameter name="gain"/></Port></Ports></Program></Config>)"),
              parameterText);
}

TEST_F(ConfigurableProgramDocumentTest, ParameterWithValueAndRefEndsTheLoadWithTheSameMessage)
{
    EXPECT_EQ(LoadFailingParameter(R"(<Config><Program><Connectors><Connector>
        <Parameter name="gain" value="1" ref="App/Main.gain"/>
      </Connector></Connectors></Program></Config>)"),
              parameterText);
}

TEST_F(ConfigurableProgramDocumentTest, ParameterWithOnlyAnUnknownAttributeWarnsAndEndsTheLoad)
{
    EXPECT_EQ(LoadFailingParameter(
                  R"(<Config><Program><Ports><Port name="p"><Parameter Value="1"/></Port></Ports></Program></Config>)"),
              parameterText);
    ExpectOneWarning("Parameter attribute is unknown: `Value`");
}

TEST_F(ConfigurableProgramDocumentTest, ParameterWithAnEmptyValueIsAccepted)
{
    LoadText(R"(<Config><Program><Ports><Port name="p"><Parameter name="gain" value=""/></Port></Ports></Program></Config>)");
    ASSERT_EQ(OnlyPort().parameters.size(), 1u);
    EXPECT_EQ(OnlyPort().parameters[0], (ParameterSettings{"gain", "", ""}));
}

TEST_F(ConfigurableProgramDocumentTest, ParameterWithAnEmptyRefIsAccepted)
{
    LoadText(R"(<Config><Program><Ports><Port name="p"><Parameter ref=""/></Port></Ports></Program></Config>)");
    ASSERT_EQ(OnlyPort().parameters.size(), 1u);
    EXPECT_EQ(OnlyPort().parameters[0], (ParameterSettings{"", "", ""}));
}

TEST_F(ConfigurableProgramDocumentTest, ParameterWithValueAndAnUnknownAttributeWarnsOnceAndKeepsTheRecord)
{
    LoadText(R"(<Config><Program><Ports><Port name="p">
        <Parameter name="gain" value="2" unit="bar"/>
      </Port></Ports></Program></Config>)");
    ExpectOneWarning("Parameter attribute is unknown: `unit`");
    ASSERT_EQ(OnlyPort().parameters.size(), 1u);
    EXPECT_EQ(OnlyPort().parameters[0], (ParameterSettings{"gain", "2", ""}));
}

TEST_F(ConfigurableProgramDocumentTest, LoadFailingInTheSecondProgramLeavesExactlyTheFirst)
{
    EXPECT_EQ(LoadFailingParameter(R"(<Config>
      <Program type="First"><Ports><Port name="a"><Parameter name="x" value="1"/></Port></Ports></Program>
      <Program type="Second"><Ports><Port name="b"/><Port name="c"><Parameter name="y"/></Port></Ports></Program>
      <Program type="Third"/>
    </Config>)"),
              parameterText);
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "First");
    ASSERT_EQ(doc->GetPrograms()[0].ports.size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].ports[0].name, "a");
}

TEST_F(ConfigurableProgramDocumentTest, LoadFailingInTheFirstProgramEmptiesWhatAnEarlierLoadHeld)
{
    LoadText(R"(<Config><Program type="Earlier"/></Config>)");
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(LoadFailingParameter(R"(<Config><Program type="Bad"><Ports><Port><Parameter/></Port></Ports></Program></Config>)"),
              parameterText);
    EXPECT_TRUE(doc->GetPrograms().empty());
}

TEST_F(ConfigurableProgramDocumentTest, TryLoadAnswersFalseForABadParameter)
{
    WritePlatformFile(path, R"(<Config><Program type="A"/><Program><Connectors><Connector><Parameter/></Connector></Connectors></Program></Config>)");
    EXPECT_FALSE(doc->TryLoad(path));
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "A");
}

TEST_F(ConfigurableProgramDocumentTest, ALoadThatFailsInAParameterKeepsNoMemory)
{
#if defined(VARNIX_TEST_LEAK_CHECK)
    // The parsed tree is released when the parser throws: a leak check right after a hundred
    // such loads finds nothing.
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(LoadFailingParameter(R"(<Config><Program type="A"><Ports><Port name="p"><Parameter name="x"/></Port></Ports></Program></Config>)"),
                  parameterText);
    }
    EXPECT_EQ(__lsan_do_recoverable_leak_check(), 0);
#else
    GTEST_SKIP() << "needs the leak checker of the sanitized build (scripts/test --sanitize); valgrind's memcheck "
                    "(scripts/test --valgrind) checks the same";
#endif
}

// --- Port attributes and dimensions -----------------------------------------------------------

TEST_F(ConfigurableProgramDocumentTest, DimensionsOfZeroGiveOneWithoutWarning)
{
    LoadText(PortDocument("dimensions=\"0\""));
    EXPECT_EQ(OnlyPort().dimensions, 1u);
    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, EmptyDimensionsGiveOneWithoutWarning)
{
    LoadText(PortDocument("dimensions=\"\""));
    EXPECT_EQ(OnlyPort().dimensions, 1u);
    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, DimensionsOfLettersOnlyGiveOneWithoutWarning)
{
    LoadText(PortDocument("dimensions=\"abc\""));
    EXPECT_EQ(OnlyPort().dimensions, 1u);
    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, DimensionsOfTwoAreKeptWithTheWarning)
{
    LoadText(PortDocument("dimensions=\"2\""));
    EXPECT_EQ(OnlyPort().dimensions, 2u);
    ExpectOneWarning("Port dimension other than 1 is currently not supported");
}

TEST_F(ConfigurableProgramDocumentTest, DigitsFollowedByLettersGiveTheDigitsNumberWithTheWarning)
{
    LoadText(PortDocument("dimensions=\"12abc\""));
    EXPECT_EQ(OnlyPort().dimensions, 12u);
    ExpectOneWarning("Port dimension other than 1 is currently not supported");
}

TEST_F(ConfigurableProgramDocumentTest, OneFollowedByLettersGivesOneWithoutWarning)
{
    LoadText(PortDocument("dimensions=\"1st\""));
    EXPECT_EQ(OnlyPort().dimensions, 1u);
    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, DimensionsAcceptLeadingWhiteSpace)
{
    LoadText(PortDocument("dimensions=\"   3\""));
    EXPECT_EQ(OnlyPort().dimensions, 3u);
    ExpectOneWarning("Port dimension other than 1 is currently not supported");
}

TEST_F(ConfigurableProgramDocumentTest, NegativeDimensionsAreStoredAsTheyStandInTheUnsignedField)
{
    LoadText(PortDocument("dimensions=\"-2\""));
    EXPECT_EQ(OnlyPort().dimensions, static_cast<std::uint64_t>(-2));
    ExpectOneWarning("Port dimension other than 1 is currently not supported");
}

TEST_F(ConfigurableProgramDocumentTest, AttributesWithTwoBlanksGiveTheSameBitsAsWithOne)
{
    LoadText(PortDocument("attributes=\"Input  Hidden\""));
    EXPECT_EQ(OnlyPort().attributes, StandardAttribute::Input | StandardAttribute::Hidden);
    EXPECT_TRUE(Warnings().empty());
}

TEST_F(ConfigurableProgramDocumentTest, AMisspeltFlagNameBetweenTwoKnownOnesChangesNothing)
{
    LoadText(PortDocument("attributes=\"Input Hiden Hidden\""));
    EXPECT_EQ(OnlyPort().attributes, StandardAttribute::Input | StandardAttribute::Hidden);
    EXPECT_TRUE(Warnings().empty());
    for (const auto& entry : Capture().GetEntries()) {
        EXPECT_EQ(entry.message.find("Hiden"), std::string::npos) << entry.message;
    }
}

TEST_F(ConfigurableProgramDocumentTest, AllKnownFlagNamesAreOredTogether)
{
    LoadText(PortDocument("attributes=\"Input Output Retain ReadOnly Hidden Server Archive Diagnostic\""));
    EXPECT_EQ(static_cast<std::uint64_t>(OnlyPort().attributes), 0xFFu);
}

TEST_F(ConfigurableProgramDocumentTest, OnlyTheBlankSeparatesFlagNames)
{
    // A tab (written as a character reference, since XML turns a literal tab into a blank)
    // does not separate: the name after it does not count.
    LoadText(PortDocument("attributes=\"Output&#9;Input Retain\""));
    EXPECT_EQ(OnlyPort().attributes & StandardAttribute::Input, StandardAttribute::None);
    EXPECT_NE(OnlyPort().attributes & StandardAttribute::Retain, StandardAttribute::None);
}

// --- warnings ---------------------------------------------------------------------------------

TEST_F(ConfigurableProgramDocumentTest, UnknownProgramAttributeWarns)
{
    LoadText(R"(<Config><Program type="A" Type="B"/></Config>)");
    ExpectOneWarning("Program attribute is unknown: `Type`");
    EXPECT_EQ(doc->GetPrograms().at(0).type, "A");
}

TEST_F(ConfigurableProgramDocumentTest, AnyPortsAttributeWarnsAndParsingGoesOn)
{
    LoadText(R"(<Config><Program><Ports name="x"><Port name="p"/></Ports></Program></Config>)");
    ExpectOneWarning("Ports attribute is unknown: `name`");
    EXPECT_EQ(OnlyPort().name, "p");
}

TEST_F(ConfigurableProgramDocumentTest, UnknownPortAttributeWarns)
{
    LoadText(PortDocument("size=\"4\""));
    ExpectOneWarning("Port attribute is unknown: `size`");
    EXPECT_EQ(OnlyPort().name, "p");
}

TEST_F(ConfigurableProgramDocumentTest, AnyConnectorsAttributeWarnsAndParsingGoesOn)
{
    LoadText(R"(<Config><Program><Connectors type="x"><Connector type="C"/></Connectors></Program></Config>)");
    ExpectOneWarning("Connectors attribute is unknown: `type`");
    ASSERT_EQ(doc->GetPrograms().at(0).connectors.size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].connectors[0].type, "C");
}

TEST_F(ConfigurableProgramDocumentTest, ConnectorWithANameAttributeWarnsAndIgnoresIt)
{
    LoadText(R"(<Config><Program><Connectors>
        <Connector name="mine" startPort="a" endPort="b" type="C"/>
      </Connectors></Program></Config>)");
    ExpectOneWarning("Connector attribute is unknown: `name`");
    ASSERT_EQ(doc->GetPrograms().at(0).connectors.size(), 1u);
    const auto& connector = doc->GetPrograms()[0].connectors[0];
    EXPECT_EQ(connector.startPort, "a");
    EXPECT_EQ(connector.endPort, "b");
    EXPECT_EQ(connector.type, "C");
}

TEST_F(ConfigurableProgramDocumentTest, UnknownQualityProviderAttributeWarns)
{
    LoadText(R"(<Config><Program><Ports><Port name="p"><QualityProvider ref="q" kind="x"/></Port></Ports></Program></Config>)");
    ExpectOneWarning("QualityProvider attribute is unknown: `kind`");
    ASSERT_EQ(OnlyPort().qualityProviders.size(), 1u);
    EXPECT_EQ(OnlyPort().qualityProviders[0].ref, "q");
}

TEST_F(ConfigurableProgramDocumentTest, WarningsComeInDocumentOrder)
{
    LoadText(R"(<Config><Program b="1" a="2"><Ports z="3"><Port y="4" dimensions="5"/></Ports></Program></Config>)");
    auto messages = Capture().GetMessages(LogLevel::Warning);
    std::vector<std::string> expected = {
        "Program attribute is unknown: `b`",
        "Program attribute is unknown: `a`",
        "Ports attribute is unknown: `z`",
        "Port attribute is unknown: `y`",
        "Port dimension other than 1 is currently not supported",
    };
    EXPECT_EQ(messages, expected);
}

// --- loading ----------------------------------------------------------------------------------

TEST_F(ConfigurableProgramDocumentTest, ASecondLoadReplacesTheFirstOnesContent)
{
    LoadText(R"(<Config><Program type="A"/><Program type="B"/></Config>)");
    ASSERT_EQ(doc->GetPrograms().size(), 2u);
    LoadText(R"(<Config><Program type="C"/></Config>)");
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "C");
}

TEST_F(ConfigurableProgramDocumentTest, TryLoadAnswersTrueAndLoads)
{
    WritePlatformFile(path, R"(<Config><Program type="A"/></Config>)");
    EXPECT_TRUE(doc->TryLoad(path));
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "A");
}

TEST_F(ConfigurableProgramDocumentTest, TryLoadOnAMissingFileReturnsFalseAndLogsNothing)
{
    auto before = Capture().Size();
    EXPECT_FALSE(doc->TryLoad("/opt/varnix/data/missing.prog.config"));
    EXPECT_EQ(Capture().Size(), before);
    EXPECT_TRUE(doc->GetPrograms().empty());
}

TEST_F(ConfigurableProgramDocumentTest, TryLoadOfInvalidXmlReturnsFalseAndLogsNothing)
{
    WritePlatformFile(path, "<Config>");
    auto before = Capture().Size();
    EXPECT_FALSE(doc->TryLoad(path));
    EXPECT_EQ(Capture().Size(), before);
}

TEST_F(ConfigurableProgramDocumentTest, PathsResolveUnderTheFileSystemRoot)
{
    // The file exists only below the test's root, not at the machine's real /opt.
    WritePlatformFile("/opt/varnix/projects/VarnixBase/Main.prog.config", "<Config><Program type=\"Rooted\"/></Config>");
    doc->Load("/opt/varnix/projects/VarnixBase/Main.prog.config");
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "Rooted");
}

TEST_F(ConfigurableProgramDocumentTest, SaveIsNotImplemented)
{
    try {
        doc->Save();
        FAIL() << "Save did not throw";
    } catch (const NotImplementedException& e) {
        EXPECT_EQ(e.GetMessage(), "ConfigurableProgramDocument::Save is not implemented yet");
    }
}

TEST_F(ConfigurableProgramDocumentTest, SaveToAPathIsNotImplementedAndWritesNothing)
{
    try {
        doc->Save("/opt/varnix/data/out.prog.config");
        FAIL() << "Save did not throw";
    } catch (const NotImplementedException& e) {
        EXPECT_EQ(e.GetMessage(), "ConfigurableProgramDocument::Save is not implemented yet");
    }
    EXPECT_FALSE(std::filesystem::exists(MachinePath("/opt/varnix/data/out.prog.config")));
}

TEST_F(ConfigurableProgramDocumentTest, CopiesAreDeep)
{
    LoadText(PortDocument("type=\"T\""));
    ConfigurableProgramDocument copy(*doc);
    copy.GetPrograms()[0].ports[0].name = "changed";
    EXPECT_EQ(OnlyPort().name, "p");
    EXPECT_EQ(copy.GetPrograms()[0].ports[0].type, "T");
}

// --- bad input --------------------------------------------------------------------------------

TEST_F(ConfigurableProgramDocumentTest, MissingFileThrowsNotExistAndKeepsThePrograms)
{
    LoadText(R"(<Config><Program type="Kept"/></Config>)");
    try {
        doc->Load("/opt/varnix/data/missing.prog.config");
        FAIL() << "Load did not throw";
    } catch (const NotExistException& e) {
        EXPECT_EQ(e.GetMessage(), "File `/opt/varnix/data/missing.prog.config` not found.");
    }
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "Kept");
}

TEST_F(ConfigurableProgramDocumentTest, DirectoryIsNoFileAndThrowsNotExist)
{
    std::filesystem::create_directories(MachinePath("/opt/varnix/data/dir.prog.config"));
    try {
        doc->Load("/opt/varnix/data/dir.prog.config");
        FAIL() << "Load did not throw";
    } catch (const NotExistException& e) {
        EXPECT_EQ(e.GetMessage(), "File `/opt/varnix/data/dir.prog.config` not found.");
    }
}

TEST_F(ConfigurableProgramDocumentTest, TextThatIsNotXmlThrowsInvalidXmlAndKeepsThePrograms)
{
    LoadText(R"(<Config><Program type="Kept"/></Config>)");
    WritePlatformFile(path, "this is not XML at all");
    try {
        doc->Load(path);
        FAIL() << "Load did not throw";
    } catch (const InvalidConfigException& e) {
        EXPECT_EQ(e.GetMessage(), std::string("Invalid XML `") + path + "`");
    }
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_EQ(doc->GetPrograms()[0].type, "Kept");
}

TEST_F(ConfigurableProgramDocumentTest, EmptyFileThrowsInvalidXml)
{
    WritePlatformFile(path, "");
    try {
        doc->Load(path);
        FAIL() << "Load did not throw";
    } catch (const InvalidConfigException& e) {
        EXPECT_EQ(e.GetMessage(), std::string("Invalid XML `") + path + "`");
    }
}

TEST_F(ConfigurableProgramDocumentTest, UnclosedElementThrowsInvalidXml)
{
    WritePlatformFile(path, "<Config><Program type=\"A\"></Config>");
    EXPECT_THROW(doc->Load(path), InvalidConfigException);
    EXPECT_TRUE(doc->GetPrograms().empty());
}

TEST_F(ConfigurableProgramDocumentTest, BadXmlWritesNothingToStandardError)
{
    WritePlatformFile(path, "<Config><Program");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(doc->TryLoad(path));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

namespace {
int callerHandlerCalls = 0;
void CallerHandler(void*, xmlErrorPtr) { ++callerHandlerCalls; }
} // namespace

TEST_F(ConfigurableProgramDocumentTest, TheCallersXmlErrorHandlerIsLeftAloneAndRestored)
{
    xmlSetStructuredErrorFunc(nullptr, &CallerHandler);
    WritePlatformFile(path, "<Config><Program");
    EXPECT_FALSE(doc->TryLoad(path));
    EXPECT_EQ(callerHandlerCalls, 0);

    xmlDoc* direct = xmlReadMemory("<broken", 7, "direct.xml", nullptr, XML_PARSE_NONET);
    EXPECT_EQ(direct, nullptr);
    EXPECT_GT(callerHandlerCalls, 0);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
}

TEST_F(ConfigurableProgramDocumentTest, ExternalEntityInContentIsNotLoaded)
{
    // Were the entity expanded, its markup would add a port and a connector.
    WritePlatformFile("/secret.txt", "<Port name=\"TOP-SECRET\"/>");
    WritePlatformFile("/secret2.txt", "<Connectors><Connector startPort=\"TOP-SECRET\"/></Connectors>");
    std::string secret2 = MachinePath("/secret2.txt").string();
    std::string secret = MachinePath("/secret.txt").string();
    LoadText(R"(<?xml version="1.0"?>
<!DOCTYPE Config [<!ENTITY leak SYSTEM "file://)" + secret + R"("><!ENTITY more SYSTEM ")" + secret2 + R"(">]>
<Config><Program type="A">&more;<Ports>&leak;<Port name="p"/></Ports></Program></Config>)");
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    const auto& program = doc->GetPrograms()[0];
    EXPECT_EQ(program.type, "A");
    ASSERT_EQ(program.ports.size(), 1u);
    EXPECT_EQ(program.ports[0].name, "p");
    EXPECT_TRUE(program.ports[0].parameters.empty());
    EXPECT_TRUE(program.connectors.empty());
}

TEST_F(ConfigurableProgramDocumentTest, ExternalEntityInAnAttributeMakesTheDocumentInvalid)
{
    WritePlatformFile("/secret.txt", "TOP-SECRET");
    std::string secret = MachinePath("/secret.txt").string();
    WritePlatformFile(path, R"(<?xml version="1.0"?>
<!DOCTYPE Config [<!ENTITY leak SYSTEM ")" + secret + R"(">]>
<Config><Program type="&leak;"><Ports><Port name="&leak;"/></Ports></Program></Config>)");
    try {
        doc->Load(path);
        FAIL() << "Load did not throw";
    } catch (const InvalidConfigException& e) {
        EXPECT_EQ(e.GetMessage(), std::string("Invalid XML `") + path + "`");
        EXPECT_EQ(e.GetMessage().ToStdString().find("TOP-SECRET"), std::string::npos);
    }
    EXPECT_TRUE(doc->GetPrograms().empty());
}

TEST_F(ConfigurableProgramDocumentTest, ExternalDtdIsNotLoaded)
{
    // A DTD that would add a default attribute; it is neither read nor applied.
    WritePlatformFile("/opt/varnix/data/defaults.dtd", "<!ATTLIST Program type CDATA \"FromDtd\">");
    LoadText(R"(<?xml version="1.0"?>
<!DOCTYPE Config SYSTEM ")" + MachinePath("/opt/varnix/data/defaults.dtd").string() + R"(">
<Config><Program/></Config>)");
    ASSERT_EQ(doc->GetPrograms().size(), 1u);
    EXPECT_TRUE(doc->GetPrograms()[0].type.IsEmpty());
}

TEST_F(ConfigurableProgramDocumentTest, EntityExpansionBombIsRefused)
{
    std::string xml = "<?xml version=\"1.0\"?>\n<!DOCTYPE Config [\n<!ENTITY e0 \"lollollollollollollollollollol\">\n";
    for (int i = 1; i <= 10; ++i) {
        xml += "<!ENTITY e" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) {
            xml += "&e" + std::to_string(i - 1) + ";";
        }
        xml += "\">\n";
    }
    xml += "]>\n<Config><Program type=\"&e10;\"/></Config>";
    WritePlatformFile(path, xml);
    EXPECT_THROW(doc->Load(path), InvalidConfigException);
}
