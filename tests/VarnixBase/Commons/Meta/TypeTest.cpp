#include <typeinfo>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Meta/Type.hpp"
#include "Zon/CommonTypeName.hpp"

using VarnixBase::Commons::Meta::Type;

namespace {
struct UserRecord {
    int value;
};
} // namespace

TEST(Type, IntHasTheFullNameOfIntAndTheNameIsIgnored)
{
    Type type(&typeid(int), "anything at all");
    EXPECT_EQ(type.GetFullName(), "int");
    EXPECT_EQ(type.GetTypeInfo(), &typeid(int));
}

TEST(Type, EveryListedBaseTypeTakesItsCommonTypeName)
{
    EXPECT_EQ(Type(&typeid(bool), "x").GetFullName(), "bool");
    EXPECT_EQ(Type(&typeid(signed char), "x").GetFullName(), "signed char");
    EXPECT_EQ(Type(&typeid(unsigned char), "x").GetFullName(), "unsigned char");
    EXPECT_EQ(Type(&typeid(short), "x").GetFullName(), "short");
    EXPECT_EQ(Type(&typeid(unsigned short), "x").GetFullName(), "unsigned short");
    EXPECT_EQ(Type(&typeid(unsigned int), "x").GetFullName(), "unsigned int");
    EXPECT_EQ(Type(&typeid(long), "x").GetFullName(), "long");
    EXPECT_EQ(Type(&typeid(unsigned long), "x").GetFullName(), "unsigned long");
    EXPECT_EQ(Type(&typeid(float), "x").GetFullName(), "float");
    EXPECT_EQ(Type(&typeid(double), "x").GetFullName(), "double");
}

TEST(Type, UserClassHasExactlyTheGivenName)
{
    Type type(&typeid(UserRecord), "My.Record");
    EXPECT_EQ(type.GetFullName(), "My.Record");
    EXPECT_NE(type.GetFullName(), Zon::CommonTypeName<UserRecord>());
}

TEST(Type, CharIsNotInTheListAndTakesTheName)
{
    EXPECT_EQ(Type(&typeid(char), "letter").GetFullName(), "letter");
    EXPECT_EQ(Type(&typeid(long long), "wide").GetFullName(), "wide");
}

TEST(Type, NullTypeInformationTakesTheName)
{
    Type type(nullptr, "none");
    EXPECT_EQ(type.GetFullName(), "none");
    EXPECT_EQ(type.GetTypeInfo(), nullptr);
}
