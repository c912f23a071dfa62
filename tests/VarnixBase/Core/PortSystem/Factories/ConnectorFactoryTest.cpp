#include <functional>
#include <ostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/CopyConnector.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/PortSystem/Factories/MapTypeInfo.hpp"
#include "VarnixBase/Core/PortSystem/Factories/OrderedArrayMap.hpp"
#include "VarnixBase/Core/PortSystem/IPort.hpp"
#include "VarnixBase/Core/PortSystem/ScaleConnector.hpp"
#include "VarnixBase/Example/DemoStringConnector.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/ParseException.hpp"

#include "../ConnectorTestSupport.hpp"
#include "PairCases.hpp"

using namespace ConnectorTest;
using namespace VarnixBase::Core::PortSystem;
using Zon::System::Commons::ArgumentException;
using Zon::System::Commons::InvalidConfigException;

namespace {

const std::string FactoryLogger = "VarnixBase.Core.PortSystem.ConnectorFactory";

class ConnectorFactoryTest : public PublishedPortsFixture {
protected:
    /// The message of the `InvalidConfigException` that `Create` throws.
    static std::string CreateFailure(const char* type, const String& startPort, const String& endPort)
    {
        try {
            Factory().Create(String(type), String("c"), startPort, endPort);
        } catch (const InvalidConfigException& error) {
            return error.GetMessage().ToStdString();
        }
        return "no exception";
    }

    static std::string NotAvailable(const std::string& type, const std::string& input, const std::string& output)
    {
        return "Connector type `" + type + "` not available: inputType=`" + input + "` outputType=`" + output + "`";
    }

    /// A creator that counts its calls and makes a copy connector of `int`.
    static ConnectorFactory::FactoryMethod CountingCreator(int& calls)
    {
        return std::make_shared<ConnectorFactory::FactoryFunction>(
            [&calls](const String& name, const String& startPort, const String& endPort) -> std::shared_ptr<IConnector> {
                ++calls;
                return std::make_shared<CopyConnector<int, int>>(name, startPort, endPort);
            });
    }
};

class ConnectorFactoryPairTest : public ConnectorFactoryTest, public ::testing::WithParamInterface<PairCase> {};

} // namespace

TEST_P(ConnectorFactoryPairTest, CreateReachesTheBuiltInPairBetweenPublishedPortsAndItsConnectorConverts)
{
    GetParam().run(*this);
}

INSTANTIATE_TEST_SUITE_P(BuiltIn, ConnectorFactoryPairTest, ::testing::ValuesIn(BuiltInPairs()),
                         [](const ::testing::TestParamInfo<PairCase>& info) { return info.param.label; });

TEST_F(ConnectorFactoryTest, TheConstructorRegistersTheTwoHundredTwentyThreePairsInTheirOrder)
{
    Factory();
    auto lines = Capture().GetEntries(Level::Debug);
    auto cases = BuiltInPairs();
    ASSERT_EQ(cases.size(), 223u);
    ASSERT_EQ(lines.size(), cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_EQ(lines[i].loggerName, FactoryLogger);
        EXPECT_EQ(lines[i].message, "Connector factory added: type=`" + cases[i].type + "`, inputType=`" +
                                        cases[i].inputType + "`, outputType=`" + cases[i].outputType + "`")
            << i;
    }
    EXPECT_EQ(lines.front().message, "Connector factory added: type=`copy`, inputType=`bool`, outputType=`bool`");
    EXPECT_EQ(lines[121].message, "Connector factory added: type=`copy`, inputType=`" + TypeName<NarrowText>() +
                                      "`, outputType=`" + TypeName<NarrowText>() + "`");
    EXPECT_EQ(lines.back().message, "Connector factory added: type=`scale`, inputType=`double`, outputType=`double`");
}

TEST_F(ConnectorFactoryTest, TheNamesOfTheVariablesMeetTheNamesOfTheRegisteredTypes)
{
    // The pairs are registered under the names the meta data derives for variables of each type.
    EXPECT_EQ(TypeName<NarrowText>(), "VarnixBase.Commons.Gds.StaticStringAdapter<char>");
    EXPECT_EQ(TypeName<WideText>(), "VarnixBase.Commons.Gds.StaticStringAdapter<char16_t>");
    EXPECT_EQ(TypeName<unsigned long>(), "unsigned long");
}

TEST_F(ConnectorFactoryTest, EveryBuiltInPairIsReachedThoughTheOrderedSearchOfTheMapCanMissSome)
{
    // The same keys in maps of the factory's kind, inserted in the same order: all go in, but the
    // map's own search does not find every one of them. The factory walks its pairs instead.
    OrderedArrayMap<MapTypeInfo, int> copy;
    OrderedArrayMap<MapTypeInfo, int> scale;
    auto cases = BuiltInPairs();
    for (const auto& pair : cases) {
        auto& map = pair.type == "copy" ? copy : scale;
        MapTypeInfo key{String(pair.inputType), String(pair.outputType)};
        ASSERT_EQ(map.Find(key), map.end()) << pair.label;
        ASSERT_TRUE(map.Insert(key, 0)) << pair.label;
    }
    EXPECT_EQ(copy.Size(), 123u);
    EXPECT_EQ(scale.Size(), 100u);
    std::vector<PairCase> missed;
    for (const auto& pair : cases) {
        auto& map = pair.type == "copy" ? copy : scale;
        if (map.Find(MapTypeInfo{String(pair.inputType), String(pair.outputType)}) == map.end()) {
            missed.push_back(pair);
        }
    }
    EXPECT_FALSE(missed.empty());
    // Each of those pairs creates its connector all the same.
    for (const auto& pair : missed) {
        SCOPED_TRACE(pair.label);
        pair.run(*this);
    }
}

TEST_F(ConnectorFactoryTest, ScaleBetweenTwoBoolPortsThrowsWhileCopyGivesAConnector)
{
    EXPECT_EQ(CreateFailure("scale", InPath<bool>(), OutPath<bool>()), NotAvailable("scale", "bool", "bool"));
    auto connector = Factory().Create(String("copy"), String("c"), InPath<bool>(), OutPath<bool>());
    ASSERT_NE(connector, nullptr);
    in.b = true;
    connector->Execute();
    EXPECT_TRUE(out.b);
}

TEST_F(ConnectorFactoryTest, CopyBetweenANarrowAndAWideStringPortThrowsAndNamesBothTypes)
{
    EXPECT_EQ(CreateFailure("copy", InPath<NarrowText>(), OutPath<WideText>()),
              NotAvailable("copy", TypeName<NarrowText>(), TypeName<WideText>()));
    EXPECT_EQ(CreateFailure("copy", InPath<WideText>(), OutPath<NarrowText>()),
              NotAvailable("copy", TypeName<WideText>(), TypeName<NarrowText>()));
}

TEST_F(ConnectorFactoryTest, CopyBetweenATextAndANumberThrows)
{
    EXPECT_EQ(CreateFailure("copy", InPath<NarrowText>(), OutPath<int>()),
              NotAvailable("copy", TypeName<NarrowText>(), "int"));
    EXPECT_EQ(CreateFailure("copy", InPath<bool>(), OutPath<WideText>()),
              NotAvailable("copy", "bool", TypeName<WideText>()));
    EXPECT_EQ(CreateFailure("scale", InPath<NarrowText>(), OutPath<NarrowText>()),
              NotAvailable("scale", TypeName<NarrowText>(), TypeName<NarrowText>()));
}

TEST_F(ConnectorFactoryTest, CreateWithAnUnknownTypeThrowsTheSameTextWithBothDerivedTypeNames)
{
    EXPECT_EQ(CreateFailure("shift", InPath<short>(), OutPath<double>()), NotAvailable("shift", "short", "double"));
}

TEST_F(ConnectorFactoryTest, AUserTypeIsNamedByTheMetaDataAndFindsNoBuiltInPair)
{
    EXPECT_EQ(CreateFailure("copy", String("Conn/Settings"), OutPath<double>()),
              NotAvailable("copy", "Settings", "double"));
}

TEST_F(ConnectorFactoryTest, AnUnknownMemberNamesTheUnknownTypeInTheText)
{
    EXPECT_EQ(CreateFailure("copy", String("Conn/In.Nothing"), OutPath<int>()),
              NotAvailable("copy", "<unknown-type>", "int"));
}

TEST_F(ConnectorFactoryTest, AnEndPortOfAComponentThatIsNotAvailableNamesTheUnknownType)
{
    EXPECT_EQ(CreateFailure("copy", InPath<int>(), String("Away/Out.Int32")),
              NotAvailable("copy", "int", "<unknown-type>"));
    EXPECT_EQ(Capture().Count(Level::Error, "Component is not available: Away"), 1u);
}

TEST_F(ConnectorFactoryTest, AStartPortThatDoesNotResolveFailsInGetDataInfoBeforeTheMapsAreLookedAt)
{
    EXPECT_THROW(Factory().Create(String("no such type"), String("c"), String("Conn/In.Int32]"), OutPath<int>()),
                 Zon::System::Commons::ParseException);
    Factory().ClearFactoryMethods();
    EXPECT_THROW(Factory().Create(String("copy"), String("c"), String("Conn/In.Int32[x]"), OutPath<int>()),
                 Zon::System::Commons::ParseException);
    EXPECT_THROW(Factory().Create(String("copy"), String("c"), InPath<int>(), String("Conn/Out.Int32[]")),
                 std::invalid_argument);
}

TEST_F(ConnectorFactoryTest, CreateLogsTheTypeAndBothPortsAtDebugLevel)
{
    Factory();
    Capture().Clear();
    Factory().Create(String("copy"), String("c"), InPath<int>(), OutPath<long>());
    auto lines = Capture().GetEntries(Level::Debug);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front().loggerName, FactoryLogger);
    EXPECT_EQ(lines.front().message, "Create connector: type=copy, startPort=Conn/In.Int32, endPort=Conn/Out.Int64");
}

TEST_F(ConnectorFactoryTest, TryAddFactoryMethodWithANewTypeNameCreatesTheOuterEntry)
{
    int calls = 0;
    Factory();
    Capture().Clear();
    EXPECT_TRUE(Factory().TryAddFactoryMethod(String("mirror"), String("int"), String("int"), CountingCreator(calls)));
    EXPECT_EQ(Capture().Count(Level::Debug, "Connector factory added: type=`mirror`, inputType=`int`, outputType=`int`"),
              1u);
    auto connector = Factory().Create(String("mirror"), String("m"), InPath<int>(), OutPath<int>());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(connector->GetName(), String("m"));
    Capture().Clear();
    Factory().RemoveFactoryMethod(String("mirror"));
    EXPECT_EQ(Capture().Count(Level::Trace, "Remove connector type `mirror`"), 1u);
}

TEST_F(ConnectorFactoryTest, TheOuterEntryStaysWhenThePairIsRefused)
{
    int calls = 0;
    Factory();
    ASSERT_TRUE(Factory().TryAddFactoryMethod(String("twice"), String("int"), String("int"), CountingCreator(calls)));
    Capture().Clear();
    EXPECT_FALSE(Factory().TryAddFactoryMethod(String("twice"), String("int"), String("int"), CountingCreator(calls)));
    EXPECT_EQ(Capture().Size(), 0u);
    // The first creator is the one that is used.
    Factory().Create(String("twice"), String("t"), InPath<int>(), OutPath<int>());
    EXPECT_EQ(calls, 1);
}

TEST_F(ConnectorFactoryTest, AddFactoryMethodThrowsWhenThePairIsRefused)
{
    int calls = 0;
    Factory().AddFactoryMethod(String("dup"), String("a"), String("b"), CountingCreator(calls));
    try {
        Factory().AddFactoryMethod(String("dup"), String("a"), String("b"), CountingCreator(calls));
        FAIL() << "no exception";
    } catch (const ArgumentException& error) {
        EXPECT_EQ(error.GetMessage(), String("Unable to add connector dup: inputType=a, outputType=b"));
    }
}

TEST_F(ConnectorFactoryTest, AddFactoryMethodForTwoTypesUsesTheirCommonTypeNames)
{
    int calls = 0;
    Factory();
    Capture().Clear();
    Factory().AddFactoryMethod<unsigned short, float>(String("custom"), CountingCreator(calls));
    EXPECT_EQ(Capture().Count(Level::Debug,
                              "Connector factory added: type=`custom`, inputType=`unsigned short`, outputType=`float`"),
              1u);
    Factory().Create(String("custom"), String("c"), InPath<unsigned short>(), OutPath<float>());
    EXPECT_EQ(calls, 1);
}

TEST_F(ConnectorFactoryTest, AddFactoryMethodForAConnectorClassRegistersItsTwoValueTypes)
{
    using VarnixBase::Example::DemoStringConnector;
    Factory().AddFactoryMethod<DemoStringConnector>(String("demoString"));
    port.text = Narrow80("from the port");
    auto connector = Factory().Create(String("demoString"), String("d"), String("Conn/Port"), OutPath<NarrowText>());
    ASSERT_NE(dynamic_cast<DemoStringConnector*>(connector.get()), nullptr);
    connector->Execute();
    EXPECT_EQ(std::string(out.text.data, out.text.length), "from the port");
}

TEST_F(ConnectorFactoryTest, AnAddedPairJoinsABuiltInType)
{
    EXPECT_EQ(CreateFailure("scale", InPath<bool>(), OutPath<bool>()), NotAvailable("scale", "bool", "bool"));
    Factory().AddFactoryMethod<CopyConnector<bool, bool>>(String("scale"));
    EXPECT_EQ(CreateFailure("scale", InPath<bool>(), OutPath<bool>()), "no exception");
    EXPECT_EQ(CreateFailure("scale", InPath<int>(), OutPath<int>()), "no exception");
}

TEST_F(ConnectorFactoryTest, ACreatorThatReturnsNullLeadsToTheNotAvailableText)
{
    Factory().AddFactoryMethod(String("refusing"), String("int"), String("long"),
                               std::make_shared<ConnectorFactory::FactoryFunction>(
                                   [](const String&, const String&, const String&) { return nullptr; }));
    EXPECT_EQ(CreateFailure("refusing", InPath<int>(), OutPath<long>()), NotAvailable("refusing", "int", "long"));
}

TEST_F(ConnectorFactoryTest, AnEmptyCreatorFailsWithTheBadFunctionCallException)
{
    Factory().AddFactoryMethod(String("empty"), String("int"), String("int"),
                               std::make_shared<ConnectorFactory::FactoryFunction>());
    EXPECT_THROW(Factory().Create(String("empty"), String("e"), InPath<int>(), OutPath<int>()), std::bad_function_call);
    Factory().AddFactoryMethod(String("null"), String("int"), String("int"), nullptr);
    EXPECT_THROW(Factory().Create(String("null"), String("n"), InPath<int>(), OutPath<int>()), std::bad_function_call);
}

TEST_F(ConnectorFactoryTest, AnExceptionOfACreatorPassesThroughCreate)
{
    Factory().AddFactoryMethod(String("failing"), String("int"), String("int"),
                               std::make_shared<ConnectorFactory::FactoryFunction>(
                                   [](const String&, const String&, const String&) -> std::shared_ptr<IConnector> {
                                       throw std::runtime_error("creator failed");
                                   }));
    EXPECT_THROW(Factory().Create(String("failing"), String("f"), InPath<int>(), OutPath<int>()), std::runtime_error);
}

TEST_F(ConnectorFactoryTest, RemoveFactoryMethodOfScaleRemovesAllItsPairsAndLeavesCopyWhole)
{
    Factory();
    Capture().Clear();
    Factory().RemoveFactoryMethod(String("scale"));
    auto trace = Capture().GetEntries(Level::Trace);
    ASSERT_EQ(trace.size(), 1u);
    EXPECT_EQ(trace[0].loggerName, FactoryLogger);
    EXPECT_EQ(trace[0].message, "Remove connector type `scale`");
    EXPECT_EQ(CreateFailure("scale", InPath<int>(), OutPath<int>()), NotAvailable("scale", "int", "int"));
    EXPECT_EQ(CreateFailure("scale", InPath<double>(), OutPath<float>()), NotAvailable("scale", "double", "float"));
    for (const auto& pair : BuiltInPairs()) {
        if (pair.type == "copy") {
            SCOPED_TRACE(pair.label);
            pair.run(*this);
        }
    }
}

TEST_F(ConnectorFactoryTest, RemoveFactoryMethodOfAnUnknownNameDoesNothingAndLogsNothing)
{
    Factory();
    Capture().Clear();
    Factory().RemoveFactoryMethod(String("nothing"));
    EXPECT_EQ(Capture().Size(), 0u);
    EXPECT_EQ(CreateFailure("copy", InPath<int>(), OutPath<int>()), "no exception");
    EXPECT_EQ(CreateFailure("scale", InPath<int>(), OutPath<int>()), "no exception");
}

TEST_F(ConnectorFactoryTest, ClearFactoryMethodsErasesEverythingSilently)
{
    Factory();
    Capture().Clear();
    Factory().ClearFactoryMethods();
    EXPECT_EQ(Capture().Size(), 0u);
    EXPECT_EQ(CreateFailure("copy", InPath<int>(), OutPath<int>()), NotAvailable("copy", "int", "int"));
    EXPECT_EQ(CreateFailure("scale", InPath<int>(), OutPath<int>()), NotAvailable("scale", "int", "int"));
    // Nothing brings the built-ins back; a pair added afterwards works.
    Factory().AddFactoryMethod<CopyConnector<int, int>>(String("copy"));
    EXPECT_EQ(CreateFailure("copy", InPath<int>(), OutPath<int>()), "no exception");
    EXPECT_EQ(CreateFailure("copy", InPath<int>(), OutPath<long>()), NotAvailable("copy", "int", "long"));
}

TEST_F(ConnectorFactoryTest, GetInstanceReturnsTheSameFactory)
{
    EXPECT_EQ(&ConnectorFactory::GetInstance(), &ConnectorFactory::GetInstance());
}

// The key order -------------------------------------------------------------------------------------

TEST(MapTypeInfo, AKeyWithTheLesserInputTypeIsBefore)
{
    EXPECT_TRUE((MapTypeInfo{String("a"), String("z")} < MapTypeInfo{String("b"), String("a")}));
}

TEST(MapTypeInfo, AKeyWithTheGreaterInputTypeIsBeforeWhenItsOutputTypeIsLess)
{
    EXPECT_TRUE((MapTypeInfo{String("b"), String("a")} < MapTypeInfo{String("a"), String("z")}));
    EXPECT_FALSE((MapTypeInfo{String("b"), String("z")} < MapTypeInfo{String("a"), String("a")}));
}

TEST(MapTypeInfo, TwoDifferentKeysCanEachBeBeforeTheOther)
{
    MapTypeInfo first{String("int"), String("long")};
    MapTypeInfo second{String("long"), String("int")};
    EXPECT_TRUE(first < second);
    EXPECT_TRUE(second < first);
}

TEST(MapTypeInfo, OnlyEqualKeysAreEquivalent)
{
    MapTypeInfo key{String("int"), String("int")};
    EXPECT_FALSE(key < key);
    MapTypeInfo same{String("int"), String("int")};
    EXPECT_FALSE(key < same);
    EXPECT_FALSE(same < key);
    MapTypeInfo outputGreater{String("int"), String("long")};
    EXPECT_TRUE(key < outputGreater);
    EXPECT_FALSE(outputGreater < key);
}

TEST(MapTypeInfo, NamesCompareByBytesAndTheShorterOfEqualPrefixesIsLess)
{
    EXPECT_TRUE((MapTypeInfo{String("int"), String("x")} < MapTypeInfo{String("int2"), String("x")}));
    EXPECT_FALSE((MapTypeInfo{String("int2"), String("x")} < MapTypeInfo{String("int"), String("x")}));
    EXPECT_TRUE((MapTypeInfo{String("Z"), String("x")} < MapTypeInfo{String("a"), String("x")}));
    EXPECT_TRUE((MapTypeInfo{String("a"), String("x")} < MapTypeInfo{String("\x80"), String("x")}));
}
