#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocumentHelper.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LoggerBase.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Core::PortSystem::Configuration;
using Zon::Plc::Commons::Meta::StandardAttribute;
using Zon::System::Commons::InvalidConfigException;
using Zon::System::Commons::Diagnostics::Logging::GetLogger;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

std::string PlatformText(StandardAttribute attributes)
{
    std::ostringstream stream;
    stream << attributes;
    return stream.str();
}

StandardAttribute Bit(unsigned bit)
{
    return static_cast<StandardAttribute>(std::uint64_t{1} << bit);
}

struct XmlDocDeleter {
    void operator()(xmlDoc* doc) const noexcept { xmlFreeDoc(doc); }
};
using XmlDocPtr = std::unique_ptr<xmlDoc, XmlDocDeleter>;

XmlDocPtr Parse(const std::string& xml)
{
    XmlDocPtr doc(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "test.xml", nullptr, XML_PARSE_NONET));
    EXPECT_NE(doc, nullptr);
    return doc;
}

/// The first child element of `node` with this name.
xmlNode* Child(xmlNode* node, const char* name)
{
    for (xmlNode* child = node->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE && std::strcmp(reinterpret_cast<const char*>(child->name), name) == 0) {
            return child;
        }
    }
    ADD_FAILURE() << "no child " << name;
    return nullptr;
}

class ConfigurableProgramDocumentHelperTest : public VarnixTest::HostTest {};

} // namespace

TEST(ConfigurableProgramDocumentHelperConvertToString, OfZeroPrintsThePlatformsZeroText)
{
    EXPECT_EQ(ConfigurableProgramDocumentHelper::ConvertToString(StandardAttribute::None, '|'),
              PlatformText(StandardAttribute::None));
    EXPECT_EQ(ConfigurableProgramDocumentHelper::ConvertToString(StandardAttribute::None, '|'), "None");
}

TEST(ConfigurableProgramDocumentHelperConvertToString, OfBitsZeroAndThreeJoinsTheTwoFlagTextsWithOneSeparatorLowerBitFirst)
{
    auto text = ConfigurableProgramDocumentHelper::ConvertToString(Bit(3) | Bit(0), '|');
    EXPECT_EQ(text, PlatformText(Bit(0)) + "|" + PlatformText(Bit(3)));
    EXPECT_EQ(text, "Input|ReadOnly");
}

TEST(ConfigurableProgramDocumentHelperConvertToString, OfOneBitHasNoSeparator)
{
    EXPECT_EQ(ConfigurableProgramDocumentHelper::ConvertToString(StandardAttribute::Output, '|'), "Output");
}

TEST(ConfigurableProgramDocumentHelperConvertToString, UsesTheGivenSeparator)
{
    auto all = StandardAttribute::Input | StandardAttribute::Output | StandardAttribute::Retain;
    EXPECT_EQ(ConfigurableProgramDocumentHelper::ConvertToString(all, ','), "Input,Output,Retain");
}

TEST(ConfigurableProgramDocumentHelperConvertToString, PrintsEveryBitOnItsOwnEvenWhereThePlatformJoinsThem)
{
    // Bits without a name of their own: the platform prints them together as one number, the
    // conversion prints each bit through the platform on its own.
    auto bits = Bit(9) | Bit(8) | Bit(63);
    EXPECT_EQ(PlatformText(Bit(8) | Bit(9)), "0x300");
    EXPECT_EQ(ConfigurableProgramDocumentHelper::ConvertToString(bits, '|'),
              PlatformText(Bit(8)) + "|" + PlatformText(Bit(9)) + "|" + PlatformText(Bit(63)));
    EXPECT_EQ(ConfigurableProgramDocumentHelper::ConvertToString(bits, '|'), "0x100|0x200|0x8000000000000000");
}

TEST_F(ConfigurableProgramDocumentHelperTest, VerifyDocumentAlwaysAnswersTrue)
{
    ConfigurableProgramDocumentHelper helper(GetLogger("HelperTest"));
    EXPECT_TRUE(helper.VerifyDocument());
}

TEST_F(ConfigurableProgramDocumentHelperTest, EachParserActsOnlyOnItsOwnElement)
{
    auto doc = Parse(R"(<Root><!-- note --><?pi x?>text<Other ref="r" name="n" value="v" type="t"/><port name="x"/></Root>)");
    ConfigurableProgramDocumentHelper helper(GetLogger("HelperTest"));
    ConfigurableProgramSettings settings;
    PortSettings port;
    std::vector<ConfigurableProgramSettings> programs;
    xmlNode* root = xmlDocGetRootElement(doc.get());
    for (xmlNode* node = root->children; node != nullptr; node = node->next) {
        helper.ParseProgram(node, programs);
        helper.ParsePorts(node, settings);
        helper.ParsePort(node, settings);
        helper.ParseConnectors(node, settings);
        helper.ParseConnector(node, settings);
        helper.ParseQualityProvider(node, port);
        helper.ParseParameter(node, port);
    }
    helper.ParseProgram(nullptr, programs);
    helper.ParseParameter(nullptr, port);
    EXPECT_TRUE(programs.empty());
    EXPECT_EQ(settings, ConfigurableProgramSettings{});
    EXPECT_EQ(port, PortSettings{});
    EXPECT_EQ(Capture().Size(), 0u);
}

TEST_F(ConfigurableProgramDocumentHelperTest, ParseDocumentEmptiesTheListFirst)
{
    auto doc = Parse(R"(<Root><Program type="New"/></Root>)");
    ConfigurableProgramDocumentHelper helper(GetLogger("HelperTest"));
    std::vector<ConfigurableProgramSettings> programs(2);
    programs[0].type = "Old";
    helper.ParseDocument(xmlDocGetRootElement(doc.get()), programs);
    ASSERT_EQ(programs.size(), 1u);
    EXPECT_EQ(programs[0].type, "New");
}

TEST_F(ConfigurableProgramDocumentHelperTest, ParseDocumentDoesNotLookAtTheRootsName)
{
    // The root itself is handed over: a root called Program is not a program.
    auto doc = Parse(R"(<Program type="Root"><Program type="Child"/></Program>)");
    ConfigurableProgramDocumentHelper helper(GetLogger("HelperTest"));
    std::vector<ConfigurableProgramSettings> programs;
    helper.ParseDocument(xmlDocGetRootElement(doc.get()), programs);
    ASSERT_EQ(programs.size(), 1u);
    EXPECT_EQ(programs[0].type, "Child");
}

TEST_F(ConfigurableProgramDocumentHelperTest, WarningsGoToTheGivenLogger)
{
    auto doc = Parse(R"(<Connectors><Connector startPort="a" speed="fast"/></Connectors>)");
    ConfigurableProgramDocumentHelper helper(GetLogger("HelperTest"));
    ConfigurableProgramSettings settings;
    helper.ParseConnectors(xmlDocGetRootElement(doc.get()), settings);
    auto warnings = Capture().GetEntries(LogLevel::Warning);
    ASSERT_EQ(warnings.size(), 1u);
    EXPECT_EQ(warnings[0].loggerName, "HelperTest");
    EXPECT_EQ(warnings[0].message, "Connector attribute is unknown: `speed`");
    ASSERT_EQ(settings.connectors.size(), 1u);
    EXPECT_EQ(settings.connectors[0].startPort, "a");
}

TEST_F(ConfigurableProgramDocumentHelperTest, ParseParameterThrowsWithoutAppending)
{
    auto doc = Parse(R"(<Port><Parameter name="a" value="1"/><Parameter name="b" value="2" ref="x"/></Port>)");
    ConfigurableProgramDocumentHelper helper(GetLogger("HelperTest"));
    PortSettings port;
    xmlNode* root = xmlDocGetRootElement(doc.get());
    helper.ParseParameter(Child(root, "Parameter"), port);
    ASSERT_EQ(port.parameters.size(), 1u);
    try {
        helper.ParseParameter(Child(root, "Parameter")->next, port);
        FAIL() << "ParseParameter did not throw";
    } catch (const InvalidConfigException& e) {
        EXPECT_EQ(e.GetMessage(), "Parameter must contain exactly one attribute of `value` or `ref`");
    }
    EXPECT_EQ(port.parameters.size(), 1u);
}

TEST_F(ConfigurableProgramDocumentHelperTest, ParseQualityProviderAppendsToTheGivenBase)
{
    auto doc = Parse(R"(<QualityProvider ref="App/Main.q"/>)");
    ConfigurableProgramDocumentHelper helper(GetLogger("HelperTest"));
    ConnectorSettings connector;
    helper.ParseQualityProvider(xmlDocGetRootElement(doc.get()), connector);
    ASSERT_EQ(connector.qualityProviders.size(), 1u);
    EXPECT_EQ(connector.qualityProviders[0].ref, "App/Main.q");
}
