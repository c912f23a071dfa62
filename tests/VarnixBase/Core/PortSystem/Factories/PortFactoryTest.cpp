#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/AnalogInPort.hpp"
#include "VarnixBase/Core/PortSystem/PnDeviceStatePort.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/PortSystem/Factories/PortFactory.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Core::PortSystem;
using Zon::String;
using Zon::Plc::Commons::Gds::StaticString;
using Zon::System::Commons::ArgumentException;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

/// One built-in port class: its short name, its common type name, and how to recognise a port of
/// exactly that class and of its value type.
struct BuiltIn {
    std::string shortName;
    String commonTypeName;
    std::function<bool(IPort&)> isClass;
    std::function<bool(IPort&)> hasValueType;
};

template <class P>
BuiltIn Row(const char* shortName)
{
    return BuiltIn{shortName, Zon::CommonTypeName<P>(), [](IPort& port) { return typeid(port) == typeid(P); },
                   [](IPort& port) { return dynamic_cast<PortBase<typename P::ValueType>*>(&port) != nullptr; }};
}

/// The built-in classes in the order in which the factory registers them.
std::vector<BuiltIn> BuiltIns()
{
    using S80 = StaticString<80, char>;
    using S512 = StaticString<512, char>;
    using W80 = StaticString<80, char16_t>;
    using W512 = StaticString<512, char16_t>;
    return {
        Row<Port<bool>>("boolean"),
        Row<Port<signed char>>("int8"),
        Row<Port<unsigned char>>("uint8"),
        Row<Port<short>>("int16"),
        Row<Port<unsigned short>>("uint16"),
        Row<Port<int>>("int32"),
        Row<Port<unsigned int>>("uint32"),
        Row<Port<float>>("float32"),
        Row<Port<unsigned long>>("uint64"),
        Row<Port<long>>("int64"),
        Row<Port<double>>("float64"),
        Row<Port<S80>>("string80"),
        Row<Port<S512>>("string512"),
        Row<Port<W80>>("wstring80"),
        Row<Port<W512>>("wstring512"),
        Row<QualifiedPort<bool>>("qualified.boolean"),
        Row<QualifiedPort<signed char>>("qualified.int8"),
        Row<QualifiedPort<unsigned char>>("qualified.uint8"),
        Row<QualifiedPort<short>>("qualified.int16"),
        Row<QualifiedPort<unsigned short>>("qualified.uint16"),
        Row<QualifiedPort<int>>("qualified.int32"),
        Row<QualifiedPort<unsigned int>>("qualified.uint32"),
        Row<QualifiedPort<float>>("qualified.float32"),
        Row<QualifiedPort<unsigned long>>("qualified.uint64"),
        Row<QualifiedPort<long>>("qualified.int64"),
        Row<QualifiedPort<double>>("qualified.float64"),
        Row<QualifiedPort<S80>>("qualified.string80"),
        Row<QualifiedPort<S512>>("qualified.string512"),
        Row<QualifiedPort<W80>>("qualified.wstring80"),
        Row<QualifiedPort<W512>>("qualified.wstring512"),
        Row<PnDeviceStatePort>("PnDeviceState"),
        Row<AnalogInPort>("AnalogIn"),
    };
}

class PortFactoryTest : public VarnixTest::HostTest {
protected:
    PortFactory& Factory() { return PortFactory::GetInstance(); }
};

std::string MessageOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const ArgumentException& error) {
        return error.GetMessage().ToStdString();
    }
    return "no exception";
}

/// A port class of an application, with a constructor that can be told to fail.
class CustomPort : public Port<int> {
public:
    CustomPort(const String& name, unsigned long dimension) : Port<int>(name, dimension)
    {
        if (name == "fail") {
            throw std::runtime_error("custom port refused");
        }
    }
};

/// The common type name of the class of the port that `port` points to.
String ClassOf(const std::shared_ptr<IPort>& port)
{
    return Zon::CommonTypeNameOf(typeid(*port));
}

PortFactory::FactoryMethodPtr MakeCreator(int& calls)
{
    return std::make_shared<PortFactory::FactoryMethod>([&calls](const String& name, std::uint64_t dimension) {
        ++calls;
        return std::shared_ptr<IPort>(std::make_shared<Port<double>>(name, dimension));
    });
}

} // namespace

TEST_F(PortFactoryTest, AFreshFactoryHasTypeForAll32NamesOfTheTableAndForTheCommonTypeNameOfEachClass)
{
    auto builtIns = BuiltIns();
    ASSERT_EQ(builtIns.size(), 32u);
    for (const auto& row : builtIns) {
        EXPECT_TRUE(Factory().HasType(String(row.shortName))) << row.shortName;
        EXPECT_TRUE(Factory().HasType(row.commonTypeName)) << row.commonTypeName;
    }
    EXPECT_TRUE(Factory().HasType("VarnixBase.Core.PortSystem.Port<int>"));
    EXPECT_TRUE(Factory().HasType("VarnixBase.Core.PortSystem.QualifiedPort<double>"));
    EXPECT_TRUE(Factory().HasType("VarnixBase.Core.PortSystem.AnalogInPort"));
    EXPECT_TRUE(Factory().HasType("VarnixBase.Core.PortSystem.PnDeviceStatePort"));
}

TEST_F(PortFactoryTest, TheConstructorRegistersBothNamesOfEachClassInTheTablesOrderLongNameFirst)
{
    Factory();
    std::vector<std::string> expected;
    for (const auto& row : BuiltIns()) {
        expected.push_back("Add port factory `" + row.commonTypeName.ToStdString() + "`");
        expected.push_back("Add port factory `" + row.shortName + "`");
    }
    EXPECT_EQ(expected.size(), 64u);
    EXPECT_EQ(Capture().GetMessages(LogLevel::Debug), expected);
    for (const auto& entry : Capture().GetEntries(LogLevel::Debug)) {
        EXPECT_EQ(entry.loggerName, "VarnixBase.Core.PortSystem.PortFactory");
    }
}

TEST_F(PortFactoryTest, GetInstanceGivesTheSameFactoryEveryTime)
{
    EXPECT_EQ(&PortFactory::GetInstance(), &PortFactory::GetInstance());
}

TEST_F(PortFactoryTest, CreateGivesForEachOfThe64NamesAPortOfTheRightClassAndValueTypeWithTheGivenNameAndDimension)
{
    std::size_t created = 0;
    for (const auto& row : BuiltIns()) {
        for (const String& type : {String(row.shortName), row.commonTypeName}) {
            String name(("port_" + row.shortName).c_str());
            auto port = Factory().Create(type, name, 3);
            ASSERT_NE(port, nullptr) << type;
            EXPECT_TRUE(row.isClass(*port)) << type;
            EXPECT_TRUE(row.hasValueType(*port)) << type;
            EXPECT_EQ(port->GetName(), name) << type;
            // Device ports keep the dimension in their base but always report one value.
            auto& base = dynamic_cast<PortBaseImpl&>(*port);
            EXPECT_EQ(base.PortBaseImpl::GetDimension(), 3u) << type;
            bool devicePort = row.shortName == "AnalogIn" || row.shortName == "PnDeviceState";
            EXPECT_EQ(port->GetDimension(), devicePort ? 1u : 3u) << type;
            ++created;
        }
    }
    EXPECT_EQ(created, 64u);
}

TEST_F(PortFactoryTest, EachCreateMakesANewPortThatTheFactoryDoesNotKeep)
{
    auto first = Factory().Create("int32", "a", 1);
    auto second = Factory().Create("int32", "a", 1);
    EXPECT_NE(first, second);
    EXPECT_EQ(first.use_count(), 1);
}

TEST_F(PortFactoryTest, CreateWithANameOutsideTheTableThrowsWithThePortsNameAndThatType)
{
    EXPECT_EQ(MessageOf([&] { Factory().Create("qualified.AnalogIn", "raw", 1); }),
              "Port `raw` has unsupported type `qualified.AnalogIn`");
    EXPECT_EQ(MessageOf([&] { Factory().Create("qualified.PnDeviceState", "dev", 1); }),
              "Port `dev` has unsupported type `qualified.PnDeviceState`");
    EXPECT_EQ(MessageOf([&] { Factory().Create("bool", "flag", 1); }), "Port `flag` has unsupported type `bool`");
    EXPECT_EQ(MessageOf([&] { Factory().Create("Int32", "count", 1); }), "Port `count` has unsupported type `Int32`");
    EXPECT_FALSE(Factory().HasType("qualified.AnalogIn"));
    EXPECT_EQ(Capture().GetMessages(LogLevel::Trace).size(), 0u);
}

TEST_F(PortFactoryTest, CreateWithTheEmptyStringAsTypeThrowsAndAnEmptyNameIsAcceptedAndPassedToThePort)
{
    EXPECT_EQ(MessageOf([&] { Factory().Create("", "level", 1); }), "Port `level` has unsupported type ``");
    auto port = Factory().Create("float64", "", 1);
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->GetName(), String(""));
    EXPECT_EQ(Capture().Count(LogLevel::Trace, "Port created: name=`` type=`float64` dimension=1"), 1u);
}

TEST_F(PortFactoryTest, CreateLogsTheNewPortsNameTheTypeAsAskedForAndTheDimensionAtTraceLevel)
{
    Factory().Create("VarnixBase.Core.PortSystem.QualifiedPort<int>", "level", 1);
    Factory().Create("AnalogIn", "raw", 7);
    auto entries = Capture().GetEntries(LogLevel::Trace);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(static_cast<int>(entries[0].level), 8);
    EXPECT_EQ(entries[0].loggerName, "VarnixBase.Core.PortSystem.PortFactory");
    EXPECT_EQ(entries[0].message,
              "Port created: name=`level` type=`VarnixBase.Core.PortSystem.QualifiedPort<int>` dimension=1");
    EXPECT_EQ(entries[1].message, "Port created: name=`raw` type=`AnalogIn` dimension=7");
}

TEST_F(PortFactoryTest, CreatePassesADimensionOf2ToThePortWithoutComplaint)
{
    Factory();
    Capture().Clear();
    auto port = Factory().Create("uint16", "pair", 2);
    EXPECT_EQ(port->GetDimension(), 2u);
    EXPECT_EQ(Capture().GetEntries(LogLevel::Warning).size(), 0u);
    EXPECT_EQ(Capture().GetEntries(LogLevel::Error).size(), 0u);
    EXPECT_EQ(Capture().Count(LogLevel::Trace, "Port created: name=`pair` type=`uint16` dimension=2"), 1u);
}

TEST_F(PortFactoryTest, AddFactoryMethodWithAnExistingNameReturnsFalseAndLeavesTheCreatorInPlace)
{
    Factory();
    Capture().Clear();
    int calls = 0;
    EXPECT_FALSE(Factory().AddFactoryMethod("int32", MakeCreator(calls)));
    EXPECT_EQ(Capture().Size(), 0u);
    auto port = Factory().Create("int32", "count", 1);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(ClassOf(port), Zon::CommonTypeName<Port<int>>());

    EXPECT_FALSE(Factory().AddFactoryMethod<CustomPort>("AnalogIn"));
    EXPECT_EQ(ClassOf(Factory().Create("AnalogIn", "raw", 1)), Zon::CommonTypeName<AnalogInPort>());
}

TEST_F(PortFactoryTest, AddFactoryMethodRegistersANewNameAndLogsItAtDebugLevel)
{
    Factory();
    Capture().Clear();
    int calls = 0;
    EXPECT_TRUE(Factory().AddFactoryMethod("real", MakeCreator(calls)));
    EXPECT_TRUE(Factory().HasType("real"));
    auto entries = Capture().GetEntries(LogLevel::Debug);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(static_cast<int>(entries[0].level), 7);
    EXPECT_EQ(entries[0].message, "Add port factory `real`");
    auto port = Factory().Create("real", "temperature", 4);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(port->GetName(), String("temperature"));
    EXPECT_EQ(port->GetDimension(), 4u);
}

TEST_F(PortFactoryTest, TheTemplatedFormRegistersTheCommonTypeNameFirstThenTheShortNameWithOneSharedCreator)
{
    Factory();
    Capture().Clear();
    EXPECT_TRUE(Factory().AddFactoryMethod<CustomPort>("custom"));
    const std::string longName = Zon::CommonTypeName<CustomPort>().ToStdString();
    EXPECT_EQ(Capture().GetMessages(LogLevel::Debug),
              (std::vector<std::string>{"Add port factory `" + longName + "`", "Add port factory `custom`"}));
    EXPECT_EQ(ClassOf(Factory().Create("custom", "a", 1)), Zon::CommonTypeName<CustomPort>());
    EXPECT_EQ(ClassOf(Factory().Create(String(longName.c_str()), "b", 1)), Zon::CommonTypeName<CustomPort>());
    // The two names are removed separately.
    Factory().RemoveFactoryMethod("custom");
    EXPECT_TRUE(Factory().HasType(String(longName.c_str())));
}

TEST_F(PortFactoryTest, TheTemplatedFormWithTheCommonTypeNameAsNameRegistersOneName)
{
    Factory();
    Capture().Clear();
    String longName = Zon::CommonTypeName<CustomPort>();
    EXPECT_TRUE(Factory().AddFactoryMethod<CustomPort>(longName));
    EXPECT_EQ(Capture().GetMessages(LogLevel::Debug),
              (std::vector<std::string>{"Add port factory `" + longName.ToStdString() + "`"}));
}

TEST_F(PortFactoryTest, TheTemplatedFormReturnsTheResultOfTheLastRegistrationMade)
{
    // The long name is new, the short name is taken: the long name is added all the same.
    EXPECT_FALSE(Factory().AddFactoryMethod<CustomPort>("int32"));
    EXPECT_TRUE(Factory().HasType(Zon::CommonTypeName<CustomPort>()));
    EXPECT_EQ(ClassOf(Factory().Create("int32", "a", 1)), Zon::CommonTypeName<Port<int>>());
    // The long name is taken, the short name is new.
    EXPECT_TRUE(Factory().AddFactoryMethod<CustomPort>("custom"));
    EXPECT_EQ(ClassOf(Factory().Create("custom", "b", 1)), Zon::CommonTypeName<CustomPort>());
}

TEST_F(PortFactoryTest, RemoveFactoryMethodOfInt32LeavesTheCommonTypeNameOfPortOfIntRegistered)
{
    Factory();
    Capture().Clear();
    Factory().RemoveFactoryMethod("int32");
    EXPECT_FALSE(Factory().HasType("int32"));
    EXPECT_TRUE(Factory().HasType("VarnixBase.Core.PortSystem.Port<int>"));
    auto port = Factory().Create("VarnixBase.Core.PortSystem.Port<int>", "count", 1);
    EXPECT_EQ(ClassOf(port), Zon::CommonTypeName<Port<int>>());
    EXPECT_EQ(MessageOf([&] { Factory().Create("int32", "count", 1); }), "Port `count` has unsupported type `int32`");
    auto entries = Capture().GetEntries(LogLevel::Trace);
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ(entries[0].message, "Remove port type `int32`");
}

TEST_F(PortFactoryTest, RemoveFactoryMethodOfAnUnknownNameDoesNothingAndLogsNothing)
{
    Factory();
    Capture().Clear();
    Factory().RemoveFactoryMethod("int33");
    Factory().RemoveFactoryMethod("");
    EXPECT_EQ(Capture().Size(), 0u);
    for (const auto& row : BuiltIns()) {
        EXPECT_TRUE(Factory().HasType(String(row.shortName))) << row.shortName;
        EXPECT_TRUE(Factory().HasType(row.commonTypeName)) << row.commonTypeName;
    }
}

TEST_F(PortFactoryTest, ARemovedBuiltInCanBeAddedAgain)
{
    Factory().RemoveFactoryMethod("AnalogIn");
    EXPECT_FALSE(Factory().HasType("AnalogIn"));
    // The long name is still there, so only the short name is added again.
    EXPECT_TRUE(Factory().AddFactoryMethod<AnalogInPort>("AnalogIn"));
    EXPECT_EQ(ClassOf(Factory().Create("AnalogIn", "raw", 1)), Zon::CommonTypeName<AnalogInPort>());
}

TEST_F(PortFactoryTest, ClearFactoryMethodsRemovesEverythingSilentlyAndTheBuiltInsDoNotComeBack)
{
    Factory();
    Capture().Clear();
    Factory().ClearFactoryMethods();
    EXPECT_EQ(Capture().Size(), 0u);
    for (const auto& row : BuiltIns()) {
        EXPECT_FALSE(Factory().HasType(String(row.shortName))) << row.shortName;
        EXPECT_FALSE(Factory().HasType(row.commonTypeName)) << row.commonTypeName;
    }
    EXPECT_EQ(MessageOf([&] { PortFactory::GetInstance().Create("int32", "count", 1); }),
              "Port `count` has unsupported type `int32`");
    // A creator added afterwards works.
    EXPECT_TRUE(Factory().AddFactoryMethod<Port<int>>("int32"));
    EXPECT_EQ(ClassOf(Factory().Create("int32", "count", 1)), Zon::CommonTypeName<Port<int>>());
}

TEST_F(PortFactoryTest, ExceptionsFromAPortsConstructorPassThroughCreateUnchanged)
{
    Factory().AddFactoryMethod<CustomPort>("custom");
    Capture().Clear();
    try {
        Factory().Create("custom", "fail", 1);
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "custom port refused");
    }
    EXPECT_EQ(Capture().GetEntries(LogLevel::Trace).size(), 0u);
}

TEST_F(PortFactoryTest, AnEmptyFunctionObjectFailsWithTheStandardBadFunctionCall)
{
    EXPECT_TRUE(Factory().AddFactoryMethod("hollow", std::make_shared<PortFactory::FactoryMethod>()));
    EXPECT_THROW(Factory().Create("hollow", "x", 1), std::bad_function_call);
    // An empty pointer in place of the function object fails the same way.
    EXPECT_TRUE(Factory().AddFactoryMethod("missing", nullptr));
    EXPECT_TRUE(Factory().HasType("missing"));
    EXPECT_THROW(Factory().Create("missing", "x", 1), std::bad_function_call);
}

TEST_F(PortFactoryTest, ACreatorThatGivesNoPortHasItsEmptyResultReturnedAndLoggedWithAnEmptyName)
{
    Factory().AddFactoryMethod("nothing", std::make_shared<PortFactory::FactoryMethod>(
                                              [](const String&, std::uint64_t) { return std::shared_ptr<IPort>(); }));
    Capture().Clear();
    EXPECT_EQ(Factory().Create("nothing", "x", 1), nullptr);
    EXPECT_EQ(Capture().Count(LogLevel::Trace, "Port created: name=`` type=`nothing` dimension=1"), 1u);
}

TEST(PortFactoryStartUp, WithoutApplicationDomainGetInstanceFailsAndTriesAgainLater)
{
    try {
        PortFactory::GetInstance();
        FAIL() << "no exception";
    } catch (const Zon::Exception& exception) {
        EXPECT_STREQ(exception.what(), "Singleton instance of type 'Zon.AppDomain' was not created yet!");
    }
    Zon::Host::RuntimeOptions options;
    options.consoleLevel.reset();
    Zon::Host::Runtime runtime(options);
    PortFactory& factory = PortFactory::GetInstance();
    EXPECT_EQ(&factory, &PortFactory::GetInstance());
    EXPECT_TRUE(factory.HasType("AnalogIn"));
}

TEST(PortFactoryStartUp, TheFactoryOutlivesTheRuntimeItWasMadeUnder)
{
    Zon::Host::RuntimeOptions options;
    options.consoleLevel.reset();
    {
        Zon::Host::Runtime first(options);
        PortFactory::GetInstance();
    }
    Zon::Host::Runtime second(options);
    auto port = PortFactory::GetInstance().Create("qualified.float64", "level", 1);
    EXPECT_EQ(port->GetName(), String("level"));
    EXPECT_EQ(second.GetCapture().Count(LogLevel::Trace,
                                        "Port created: name=`level` type=`qualified.float64` dimension=1"),
              1u);
}
