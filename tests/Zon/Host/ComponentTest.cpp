#include <cstdint>

#include <gtest/gtest.h>

#include "Zon/Exception.hpp"
#include "Zon/Host/Component.hpp"
#include "Zon/Host/StructBuilder.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"

using namespace Zon::Plc::Commons::Meta;
using Zon::Host::Component;
using Zon::Host::TypeLibrary;
using Zon::Plc::Commons::DataTypeEnum;
using Zon::Plc::Commons::DataTypeIndirectMask;
using Zon::Plc::Commons::DataTypePointerBit;

namespace {

struct Root {
    int a;
    double b;
};

struct Unregistered {
    int x;
};

class ComponentTest : public ::testing::Test {
protected:
    ComponentTest() { library.AddStruct<Root>("Root").Member("a", &Root::a).Member("b", &Root::b); }

    TypeLibrary library{"DemoLibrary", "Demo"};
    Component component{"Comp", library};
};

} // namespace

TEST_F(ComponentTest, IsAComponentOfItsLibrary)
{
    EXPECT_EQ(component.GetComponentName(), "Comp");
    EXPECT_EQ(&component.GetLibrary(), static_cast<Zon::System::Acf::ILibrary*>(&library));
    EXPECT_EQ(&component.GetTypeLibrary(), &library);
    EXPECT_EQ(&component.GetDataInfoProvider(false), static_cast<IDataInfoProvider*>(&component));
}

TEST_F(ComponentTest, VariablesPointAtTheirMemoryWithTheirTypeFromTheLibrary)
{
    Root root{};
    double values[2][5] = {};
    component.AddVariable("Root", root).AddVariable("values", values);
    const DataInfo* info = component.FindVariable("Root");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->name, "Root");
    EXPECT_EQ(info->address, &root);
    EXPECT_EQ(info->dataType, library.Describe<Root>().dataType);
    EXPECT_EQ(info->typeIdentifier, TypeIdentifier("Demo", "Root"));
    const DataInfo* array = component.FindVariable("values");
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(array->dataType, DataTypeEnum::Float64);
    ASSERT_EQ(array->arrayDimensions.size(), 2u);
    EXPECT_EQ(array->arrayDimensions[1].elementCount, 5u);
}

TEST_F(ComponentTest, APointerVariableIsAnIndirectRoot)
{
    Root root{};
    Root* pointer = &root;
    component.AddVariable("Current", pointer);
    const DataInfo* info = component.FindVariable("Current");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->address, &pointer);
    EXPECT_EQ(info->dataType & DataTypePointerBit, DataTypePointerBit);
    EXPECT_EQ(info->typeIdentifier, TypeIdentifier("Demo", "Root"));
}

TEST_F(ComponentTest, IndirectVariablesCarryTheIndirectMaskAndMayHaveANullAddress)
{
    Root root{};
    Root* pointer = &root;
    component.AddIndirectVariable("Current", &pointer).AddIndirectVariable<Root>("Missing", nullptr);
    const DataInfo* current = component.FindVariable("Current");
    ASSERT_NE(current, nullptr);
    EXPECT_EQ(current->address, &pointer);
    EXPECT_EQ(current->dataType, library.Describe<Root>().dataType | DataTypeIndirectMask);
    const DataInfo* missing = component.FindVariable("Missing");
    ASSERT_NE(missing, nullptr);
    EXPECT_EQ(missing->address, nullptr);
    EXPECT_EQ(missing->dataType & DataTypeIndirectMask, DataTypeIndirectMask);
}

TEST_F(ComponentTest, RootEnumeratorGivesTheVariablesInOrderOfDeclaration)
{
    int first = 0;
    int second = 0;
    component.AddVariable("first", first).AddVariable("second", second);
    auto roots = component.GetRootEnumerator();
    ASSERT_TRUE(roots->MoveNext());
    EXPECT_EQ(roots->GetCurrent().name, "first");
    EXPECT_EQ(&roots->GetCurrent(), component.FindVariable("first"));
    ASSERT_TRUE(roots->MoveNext());
    EXPECT_EQ(roots->GetCurrent().name, "second");
    EXPECT_FALSE(roots->MoveNext());
}

TEST_F(ComponentTest, ExhaustedRootEnumeratorAnswersTheEmptyRecord)
{
    int value = 0;
    component.AddVariable("value", value);
    auto roots = component.GetRootEnumerator();
    ASSERT_TRUE(roots->MoveNext());
    ASSERT_FALSE(roots->MoveNext());
    EXPECT_EQ(&roots->GetCurrent(), &DataInfo::Empty);
    EXPECT_FALSE(roots->MoveNext());
    EXPECT_EQ(&roots->GetCurrent(), &DataInfo::Empty);
    Component none("None", library);
    auto empty = none.GetRootEnumerator();
    EXPECT_FALSE(empty->MoveNext());
    EXPECT_EQ(&empty->GetCurrent(), &DataInfo::Empty);
    EXPECT_EQ(empty->GetCurrent().dataType, 0u);
    EXPECT_EQ(empty->GetCurrent().address, nullptr);
}

TEST_F(ComponentTest, RefusesANameTwiceAndUndescribedTypes)
{
    int value = 0;
    Unregistered unregistered{};
    component.AddVariable("value", value);
    EXPECT_THROW(component.AddVariable("value", value), Zon::System::Commons::ArgumentException);
    EXPECT_THROW(component.AddVariable("other", unregistered), Zon::System::Commons::ArgumentException);
    EXPECT_THROW(component.AddVariable("none", &value, TypeInfo::Empty), Zon::System::Commons::ArgumentException);
    EXPECT_EQ(component.FindVariable("other"), nullptr);
}

TEST_F(ComponentTest, RemoveVariableTakesItOut)
{
    int value = 0;
    component.AddVariable("value", value);
    EXPECT_TRUE(component.RemoveVariable("value"));
    EXPECT_FALSE(component.RemoveVariable("value"));
    EXPECT_EQ(component.FindVariable("value"), nullptr);
    EXPECT_FALSE(component.GetRootEnumerator()->MoveNext());
}

TEST_F(ComponentTest, RuntimeLayoutsServeAsVariableTypes)
{
    void* table[1] = {nullptr};
    auto main = library.AddStruct("Main", sizeof(table), alignof(void*));
    main.PointerAt<int>("level", 0);
    component.AddVariable("Main", table, main.GetTypeInfo());
    const DataInfo* info = component.FindVariable("Main");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->address, table);
    EXPECT_EQ(info->typeIdentifier, TypeIdentifier("Demo", "Main"));
}
