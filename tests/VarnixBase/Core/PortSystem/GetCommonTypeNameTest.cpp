#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "VarnixBase/Core/PortSystem/GetCommonTypeName.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/Host/Component.hpp"
#include "Zon/Host/StructBuilder.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "support/HostFixture.hpp"

using VarnixBase::Core::PortSystem::GetCommonTypeName;
using Zon::Plc::Commons::DataTypeEnum;
using Zon::Plc::Commons::DataTypePointerBit;
using Zon::Plc::Commons::Meta::DataInfo;
using Zon::Plc::Commons::Meta::DataTag;
using Zon::Plc::Commons::Meta::TypeIdentifier;

namespace {

struct Narrow {
    std::uint16_t capacity = 16;
    std::uint16_t length = 0;
    char data[17] = {};
};

struct Wide {
    std::uint16_t capacity = 16;
    std::uint16_t length = 0;
    char16_t data[17] = {};
};

struct Record {
    double value;
    double* pointer;
};

class GetCommonTypeNameTest : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        VarnixTest::HostTest::SetUp();
        library.AddFixedString<Narrow>("Narrow").AddFixedString<Wide, char16_t>("Wide");
        library.AddStruct<Record>("Record").Member("value", &Record::value).Pointer("pointer", &Record::pointer);
    }

    /// The record of the variable `name` of type `T` that lives in `object`.
    template <class T>
    DataInfo VariableOf(const char* name, T& object)
    {
        component.AddVariable(name, object);
        return *component.FindVariable(name);
    }

    template <class T>
    void ExpectNameOfVariable()
    {
        T value{};
        SCOPED_TRACE(Zon::CommonTypeName<T>().ToStdString());
        EXPECT_EQ(GetCommonTypeName(VariableOf(Zon::CommonTypeName<T>().CStr(), value)), Zon::CommonTypeName<T>());
    }

    using Level = Zon::System::Commons::Diagnostics::Logging::LogLevel;

    Zon::Host::TypeLibrary library{"DemoLibrary", "Demo"};
    Zon::Host::Component component{"Comp", library};
};

} // namespace

TEST_F(GetCommonTypeNameTest, BaseCodesNameTheirTypes)
{
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(3)), "bool");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(4)), "unsigned char");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(5)), "signed char");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(6)), "char");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(7)), "char16_t");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(8)), "unsigned short");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(9)), "short");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(10)), "unsigned int");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(11)), "int");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(12)), "unsigned long");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(13)), "long");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(14)), "float");
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(15)), "double");
    EXPECT_EQ(Capture().Size(), 0u);
}

TEST_F(GetCommonTypeNameTest, StringCodesNameTheStringAdapters)
{
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(42)),
              Zon::CommonTypeName<VarnixBase::Commons::Gds::StaticStringAdapter<char>>());
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(46)),
              Zon::CommonTypeName<VarnixBase::Commons::Gds::StaticStringAdapter<char16_t>>());
}

TEST_F(GetCommonTypeNameTest, CodeSixteenGivesAnEmptyNameAndOneErrorLine)
{
    EXPECT_EQ(GetCommonTypeName(DataTypeEnum(16)), "");
    auto entries = Capture().GetEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].level, Level::Error);
    EXPECT_EQ(entries[0].loggerName, "Root");
    EXPECT_EQ(entries[0].message, "### GetCommonTypeName: 16");
}

TEST_F(GetCommonTypeNameTest, RecordWithBaseZeroIsAnUnknownType)
{
    DataInfo info(DataTag("x", nullptr, 0, TypeIdentifier("Demo", "Thing"), false));
    EXPECT_EQ(GetCommonTypeName(info), "<unknown-type>");
    auto entries = Capture().GetEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].level, Level::Info);
    EXPECT_EQ(entries[0].loggerName, "Root");
    EXPECT_EQ(entries[0].message, "### Unknown type: Demo::Thing");
    EXPECT_EQ(GetCommonTypeName(DataInfo::Empty), "<unknown-type>");
}

TEST_F(GetCommonTypeNameTest, RecordWithBase255IsAnUnknownType)
{
    DataInfo info(DataTag("x", nullptr, 255, TypeIdentifier(), false));
    EXPECT_EQ(GetCommonTypeName(info), "<unknown-type>");
}

TEST_F(GetCommonTypeNameTest, PointerToDoubleNamesDouble)
{
    Record record{};
    DataInfo pointer(DataTag("p", &record, DataTypeEnum::Float64 | DataTypePointerBit, TypeIdentifier(), false));
    EXPECT_EQ(GetCommonTypeName(pointer), "double");
    double* target = &record.value;
    EXPECT_EQ(GetCommonTypeName(VariableOf("target", target)), "double");
}

TEST_F(GetCommonTypeNameTest, FlagLeftWithoutThePointerBitLeadsToTheFailureBranch)
{
    DataInfo flagged(DataTag("x", nullptr, DataTypeEnum::Float64 | 0x1000, TypeIdentifier(), false));
    EXPECT_EQ(GetCommonTypeName(flagged), "");
    EXPECT_EQ(Capture().Count(Level::Error, "### GetCommonTypeName: " + std::to_string(DataTypeEnum::Float64 | 0x1000)),
              1u);
}

TEST_F(GetCommonTypeNameTest, UserTypesGiveTheNameThatTheMetaDataHolds)
{
    Record record{};
    EXPECT_EQ(GetCommonTypeName(VariableOf("record", record)), "Record");
    Record* pointer = &record;
    EXPECT_EQ(GetCommonTypeName(VariableOf("pointer", pointer)), "Record");
}

TEST_F(GetCommonTypeNameTest, VariablesOfEveryValueTypeNameTheirCppType)
{
    ExpectNameOfVariable<bool>();
    ExpectNameOfVariable<signed char>();
    ExpectNameOfVariable<unsigned char>();
    ExpectNameOfVariable<short>();
    ExpectNameOfVariable<unsigned short>();
    ExpectNameOfVariable<int>();
    ExpectNameOfVariable<unsigned int>();
    ExpectNameOfVariable<long>();
    ExpectNameOfVariable<unsigned long>();
    ExpectNameOfVariable<float>();
    ExpectNameOfVariable<double>();
}

TEST_F(GetCommonTypeNameTest, FixedStringVariablesNameTheStringAdapters)
{
    Narrow narrow;
    Wide wide;
    EXPECT_EQ(GetCommonTypeName(VariableOf("narrow", narrow)),
              Zon::CommonTypeName<VarnixBase::Commons::Gds::StaticStringAdapter<char>>());
    EXPECT_EQ(GetCommonTypeName(VariableOf("wide", wide)),
              Zon::CommonTypeName<VarnixBase::Commons::Gds::StaticStringAdapter<char16_t>>());
}
