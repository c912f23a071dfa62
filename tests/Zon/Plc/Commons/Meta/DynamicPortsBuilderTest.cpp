#include <cstdint>

#include <gtest/gtest.h>

#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"

using Zon::String;
using Zon::Plc::Commons::Gds::StaticString;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::PortDataType;
using Zon::Plc::Commons::Meta::PortDataTypeCode;
using Zon::Plc::Commons::Meta::StandardAttribute;
using Zon::Plc::Commons::Meta::UserTypeCode;

namespace Sample {
struct Record {
    int a;
    double b;
};
} // namespace Sample

template <>
struct Zon::Plc::Commons::Meta::PortDataType<Sample::Record> : PortDataTypeCode<UserTypeCode> {};

TEST(PortDataType, BaseTypesHaveTheControllerCodes)
{
    EXPECT_EQ(PortDataType<bool>::Code, 3u);
    EXPECT_EQ(PortDataType<unsigned char>::Code, 4u);
    EXPECT_EQ(PortDataType<signed char>::Code, 5u);
    EXPECT_EQ(PortDataType<unsigned short>::Code, 8u);
    EXPECT_EQ(PortDataType<short>::Code, 9u);
    EXPECT_EQ(PortDataType<unsigned int>::Code, 10u);
    EXPECT_EQ(PortDataType<int>::Code, 11u);
    EXPECT_EQ(PortDataType<unsigned long>::Code, 12u);
    EXPECT_EQ(PortDataType<long>::Code, 13u);
    EXPECT_EQ(PortDataType<float>::Code, 14u);
    EXPECT_EQ(PortDataType<double>::Code, 15u);
}

TEST(PortDataType, FixedStringsHaveTheNarrowAndWideCodesWhateverTheirCapacity)
{
    EXPECT_EQ((PortDataType<StaticString<80, char>>::Code), 42u);
    EXPECT_EQ((PortDataType<StaticString<512, char>>::Code), 42u);
    EXPECT_EQ((PortDataType<StaticString<80, char16_t>>::Code), 46u);
    EXPECT_EQ((PortDataType<StaticString<512, char16_t>>::Code), 46u);
}

TEST(PortDataType, AStructureSpecialisesTheTraitWithTheUserTypeCode)
{
    EXPECT_EQ(PortDataType<Sample::Record>::Code, 65u);
}

TEST(DynamicPortsBuilder, ANewBuilderHasNoEntries)
{
    DynamicPortsBuilder builder;
    EXPECT_TRUE(builder.GetEntries().empty());
}

TEST(DynamicPortsBuilder, AddPortRecordsOneEntryWithEveryField)
{
    DynamicPortsBuilder builder;
    double level = 0.0;
    builder.AddPort(String("level"), level, StandardAttribute::Input | StandardAttribute::Retain);
    ASSERT_EQ(builder.GetEntries().size(), 1u);
    const auto& entry = builder.GetEntries()[0];
    EXPECT_EQ(entry.name, String("level"));
    EXPECT_EQ(entry.dataType, 15u);
    EXPECT_EQ(entry.typeName, String("double"));
    EXPECT_EQ(entry.size, sizeof(double));
    EXPECT_EQ(entry.alignment, alignof(double));
    EXPECT_TRUE(entry.arrayDimensions.empty());
    EXPECT_EQ(entry.attributes, StandardAttribute::Input | StandardAttribute::Retain);
    EXPECT_EQ(entry.address, static_cast<void*>(&level));
}

TEST(DynamicPortsBuilder, EntriesKeepTheOrderOfAdding)
{
    DynamicPortsBuilder builder;
    bool first = false;
    StaticString<80, char16_t> second;
    Sample::Record third{};
    builder.AddPort(String("first"), first, StandardAttribute::None);
    builder.AddPort(String("second"), second, StandardAttribute::Output);
    builder.AddPort(String("third"), third, StandardAttribute::None);
    const auto& entries = builder.GetEntries();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].name, String("first"));
    EXPECT_EQ(entries[0].dataType, 3u);
    EXPECT_EQ(entries[1].name, String("second"));
    EXPECT_EQ(entries[1].dataType, 46u);
    EXPECT_EQ(entries[1].typeName, (Zon::CommonTypeName<StaticString<80, char16_t>>()));
    EXPECT_EQ(entries[1].size, (sizeof(StaticString<80, char16_t>)));
    EXPECT_EQ(entries[1].alignment, 2u);
    EXPECT_EQ(entries[1].address, static_cast<void*>(&second));
    EXPECT_EQ(entries[2].dataType, 65u);
    EXPECT_EQ(entries[2].typeName, String("Sample.Record"));
    EXPECT_EQ(entries[2].alignment, alignof(Sample::Record));
}

TEST(DynamicPortsBuilder, AnArrayRecordsItsExtentsAndTheCodeOfItsElements)
{
    DynamicPortsBuilder builder;
    int matrix[3][4] = {};
    builder.AddPort(String("matrix"), matrix, StandardAttribute::None);
    const auto& entry = builder.GetEntries().at(0);
    EXPECT_EQ(entry.dataType, 11u);
    EXPECT_EQ(entry.arrayDimensions, (std::vector<std::uint32_t>{3u, 4u}));
    EXPECT_EQ(entry.size, sizeof(matrix));
    EXPECT_EQ(entry.address, static_cast<void*>(&matrix));
}

TEST(DynamicPortsBuilder, TheFieldFormRecordsWhatItIsGiven)
{
    DynamicPortsBuilder builder;
    int cell = 0;
    builder.AddPort(String("raw"), 65u, String("Some.Type"), 24u, 8u, {2u}, StandardAttribute::Hidden, &cell);
    const auto& entry = builder.GetEntries().at(0);
    EXPECT_EQ(entry.dataType, 65u);
    EXPECT_EQ(entry.typeName, String("Some.Type"));
    EXPECT_EQ(entry.size, 24u);
    EXPECT_EQ(entry.alignment, 8u);
    EXPECT_EQ(entry.arrayDimensions, (std::vector<std::uint32_t>{2u}));
    EXPECT_EQ(entry.attributes, StandardAttribute::Hidden);
    EXPECT_EQ(entry.address, static_cast<void*>(&cell));
}
