#include <gtest/gtest.h>

#include "Zon/Host/PortPublisher.hpp"
#include "Zon/Plc/Commons/DataType.hpp"
#include "Zon/Plc/Commons/Gds/StaticString.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "support/HostFixture.hpp"

using namespace Zon::Host;
using Zon::Plc::Commons::DataTypePointerBit;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::StandardAttribute;
using Zon::Plc::Commons::Meta::TypeIdentifier;

namespace Sample {

struct Record {
    int a = 0;
    double b = 0;
};

} // namespace Sample

using Sample::Record;

template <>
struct Zon::Plc::Commons::Meta::PortDataType<Record> : PortDataTypeCode<UserTypeCode> {};

class PortPublisherTest : public VarnixTest::HostTest {
protected:
    TypeLibrary library{"Host", "Host"};
    PortPublisher publisher{library};
};

TEST_F(PortPublisherTest, RootVariableIsATableOfPortAddresses)
{
    int count = 5;
    double level = 1.5;
    DynamicPortsBuilder builder;
    builder.AddPort(Zon::String("count"), count, StandardAttribute::Input);
    builder.AddPort(Zon::String("level"), level, StandardAttribute::None);
    Component& component = publisher.Publish("App/Main", builder);

    EXPECT_EQ(component.GetComponentName(), "App");
    const auto* root = component.FindVariable("Main");
    ASSERT_NE(root, nullptr);
    auto* const* table = static_cast<void* const*>(root->address);
    EXPECT_EQ(table[0], &count);
    EXPECT_EQ(table[1], &level);

    TypeIdentifier type("Host", "App.Main");
    auto countMember = library.GetChildInfo(type, "count");
    EXPECT_EQ(countMember.offset, 0u);
    EXPECT_EQ(countMember.dataType, 11u | DataTypePointerBit);
    EXPECT_EQ(countMember.typeIdentifier.GetName(), "int");
    auto levelMember = library.GetChildInfo(type, "level");
    EXPECT_EQ(levelMember.offset, sizeof(void*));
    EXPECT_EQ(levelMember.dataType, 15u | DataTypePointerBit);
}

TEST_F(PortPublisherTest, StructuresNeedADescription)
{
    Record record;
    DynamicPortsBuilder builder;
    builder.AddPort(Zon::String("record"), record, StandardAttribute::None);
    try {
        publisher.Publish("App/Main", builder);
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::ArgumentException& error) {
        EXPECT_STREQ(error.what(), "Port `record` has type `Sample.Record`, which the type library does not describe");
    }
    EXPECT_EQ(publisher.FindComponent("App"), nullptr);
    EXPECT_EQ(library.GetTypeInfo("App.Main").dataType, 0u); // nothing half-registered is left

    library.AddStruct<Record>().Member("a", &Record::a).Member("b", &Record::b);
    publisher.Publish("App/Main", builder);
    auto member = library.GetChildInfo(TypeIdentifier("Host", "App.Main"), "record");
    EXPECT_EQ(member.typeIdentifier.GetName(), "Sample.Record");
    EXPECT_NE(member.dataType & DataTypePointerBit, 0u);
}

TEST_F(PortPublisherTest, FixedStringsAreDescribedByTheirCode)
{
    Zon::Plc::Commons::Gds::StaticString<80, char> text;
    DynamicPortsBuilder builder;
    builder.AddPort(Zon::String("text"), text, StandardAttribute::None);
    publisher.Publish("App/Main", builder);
    auto member = library.GetChildInfo(TypeIdentifier("Host", "App.Main"), "text");
    EXPECT_EQ(member.dataType, 42u | DataTypePointerBit);
    EXPECT_EQ(member.size, sizeof(text));
}

TEST_F(PortPublisherTest, InstancePathsMustBeComponentSlashProgramAndUnique)
{
    DynamicPortsBuilder builder;
    for (const char* bad : {"Main", "/Main", "App/", "App/Main/x"}) {
        EXPECT_THROW(publisher.Publish(bad, builder), Zon::System::Commons::ArgumentException) << bad;
    }
    publisher.Publish("App/Main", builder);
    EXPECT_THROW(publisher.Publish("App/Main", builder), Zon::System::Commons::ArgumentException);
    publisher.Publish("App/Second", builder);
    EXPECT_NE(publisher.FindComponent("App")->FindVariable("Second"), nullptr);
}

TEST_F(PortPublisherTest, WithdrawRemovesTheVariableAndItsType)
{
    int count = 0;
    DynamicPortsBuilder builder;
    builder.AddPort(Zon::String("count"), count, StandardAttribute::None);
    Component& component = publisher.Publish("App/Main", builder);
    EXPECT_TRUE(publisher.Withdraw("App/Main"));
    EXPECT_EQ(component.FindVariable("Main"), nullptr);
    EXPECT_EQ(library.GetTypeInfo("App.Main").dataType, 0u);
    EXPECT_FALSE(publisher.Withdraw("App/Main"));
    publisher.Publish("App/Main", builder); // can be published again
}

TEST_F(PortPublisherTest, ABaseCodeThatDiffersFromTheLibrarysIsRefused)
{
    float value = 0;
    DynamicPortsBuilder builder;
    // Published as a float but named like an int: the library's description wins only if it agrees.
    builder.AddPort("odd", 14, "int", sizeof(float), alignof(float), {}, StandardAttribute::None, &value);
    try {
        publisher.Publish("App/Main", builder);
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::ArgumentException& error) {
        EXPECT_STREQ(error.what(),
                     "Port `odd` is published with data type code 14, but the type library describes `int` with code 11");
    }
}
