#include <gtest/gtest.h>

#include "Zon/Format.hpp"
#include "Zon/Plc/Commons/Meta/ChildTypeInfo.hpp"
#include "Zon/Plc/Commons/Meta/DataInfo.hpp"
#include "Zon/Plc/Commons/Meta/DataTag.hpp"
#include "Zon/Plc/Commons/Meta/TypeIdentifier.hpp"
#include "Zon/Plc/Commons/Meta/TypeInfo.hpp"

using namespace Zon::Plc::Commons::Meta;
using Zon::Plc::Commons::DataTypeEnum;

TEST(TypeIdentifier, GivesNamespaceNameAndFullName)
{
    TypeIdentifier identifier("Demo", "Root");
    EXPECT_EQ(identifier.GetNamespace(), "Demo");
    EXPECT_EQ(identifier.GetName(), "Root");
    EXPECT_EQ(identifier.GetFullName(), "Demo::Root");
    EXPECT_EQ(fmt::format("{}", identifier), "Demo::Root");
}

TEST(TypeIdentifier, FullNameOfTheEmptyNamespaceIsTheNameAlone)
{
    EXPECT_EQ(TypeIdentifier("", "int").GetFullName(), "int");
    EXPECT_EQ(TypeIdentifier().GetFullName(), "");
    EXPECT_TRUE(TypeIdentifier().IsEmpty());
    EXPECT_FALSE(TypeIdentifier("", "x").IsEmpty());
}

TEST(DataTag, ConstructorTakesNameAddressTypeAndIdentifier)
{
    int value = 0;
    DataTag tag("value", &value, DataTypeEnum::Int32, TypeIdentifier("Demo", "int"), false);
    EXPECT_EQ(tag.name, "value");
    EXPECT_EQ(tag.address, &value);
    EXPECT_EQ(tag.dataType, DataTypeEnum::Int32);
    EXPECT_EQ(tag.typeIdentifier, TypeIdentifier("Demo", "int"));
    EXPECT_FALSE(tag.isConstant);
    EXPECT_EQ(tag.reserved1, 0u);
    EXPECT_EQ(tag.reserved2, 0u);
}

TEST(DataInfo, EmptyHasNoNameNoTypeAndNoAddress)
{
    EXPECT_EQ(DataInfo::Empty.name, "");
    EXPECT_EQ(DataInfo::Empty.dataType, 0u);
    EXPECT_TRUE(DataInfo::Empty.typeIdentifier.IsEmpty());
    EXPECT_EQ(DataInfo::Empty.address, nullptr);
    EXPECT_TRUE(DataInfo::Empty.arrayDimensions.empty());
}

TEST(DataInfo, IsATagWithArrayDimensions)
{
    double values[2][3] = {};
    DataInfo info(DataTag("values", values, DataTypeEnum::Float64, TypeIdentifier("Demo", "double"), false),
                  {{2, 0}, {3, 0}});
    EXPECT_EQ(info.address, values);
    ASSERT_EQ(info.arrayDimensions.size(), 2u);
    EXPECT_EQ(info.arrayDimensions[0].elementCount, 2u);
    EXPECT_EQ(info.arrayDimensions[1].elementCount, 3u);
    DataInfo plain(DataTag("values", values, DataTypeEnum::Float64, TypeIdentifier(), false));
    EXPECT_TRUE(plain.arrayDimensions.empty());
}

TEST(TypeInfo, EmptyHasDataTypeZeroAndSizeZero)
{
    EXPECT_EQ(TypeInfo::Empty.dataType, 0u);
    EXPECT_EQ(TypeInfo::Empty.size, 0u);
    EXPECT_TRUE(TypeInfo::Empty.typeIdentifier.IsEmpty());
}

TEST(TypeInfo, EffectiveSizeFallsBackToTheSizeOfTheDataType)
{
    TypeInfo info;
    info.dataType = DataTypeEnum::Float32;
    EXPECT_EQ(info.GetEffectiveSize(), 4u);
    info.size = 12;
    EXPECT_EQ(info.GetEffectiveSize(), 12u);
}

TEST(ChildTypeInfo, EmptyHasDataTypeZeroAndOffsetZero)
{
    EXPECT_EQ(ChildTypeInfo::Empty.dataType, 0u);
    EXPECT_EQ(ChildTypeInfo::Empty.offset, 0u);
    EXPECT_EQ(ChildTypeInfo::Empty.name, "");
    EXPECT_TRUE(ChildTypeInfo::Empty.GetArrayDimensions().empty());
}

TEST(ChildTypeInfo, GetArrayDimensionsGivesTheDimensionsOfTheType)
{
    ChildTypeInfo child;
    child.arrayDimensions = {{3, 0}, {4, 1}};
    ASSERT_EQ(child.GetArrayDimensions().size(), 2u);
    EXPECT_EQ(child.GetArrayDimensions()[1].elementCount, 4u);
    EXPECT_EQ(child.GetArrayDimensions()[1].lowerBound, 1u);
}
