#include <gtest/gtest.h>

#include "Zon/AppDomain.hpp"
#include "Zon/CommonTypeName.hpp"

namespace Outer::Inner {
class Sample {};
struct Record {};
enum class Color { Red };
template <class T>
struct Box {};
} // namespace Outer::Inner

TEST(CommonTypeName, BaseTypes)
{
    EXPECT_EQ(Zon::CommonTypeName<int>(), "int");
    EXPECT_EQ(Zon::CommonTypeName<unsigned long>(), "unsigned long");
    EXPECT_EQ(Zon::CommonTypeName<signed char>(), "signed char");
    EXPECT_EQ(Zon::CommonTypeName<double>(), "double");
}

TEST(CommonTypeName, ClassTwoNamespacesDeep)
{
    EXPECT_EQ(Zon::CommonTypeName<Outer::Inner::Sample>(), "Outer.Inner.Sample");
    EXPECT_EQ(Zon::CommonTypeName<Zon::AppDomain>(), "Zon.AppDomain");
}

TEST(CommonTypeName, StructAndEnum)
{
    EXPECT_EQ(Zon::CommonTypeName<Outer::Inner::Record>(), "Outer.Inner.Record");
    EXPECT_EQ(Zon::CommonTypeName<Outer::Inner::Color>(), "Outer.Inner.Color");
}

TEST(CommonTypeName, TemplateArgumentsAreRewrittenToo)
{
    EXPECT_EQ(Zon::CommonTypeName<Outer::Inner::Box<Outer::Inner::Record>>(), "Outer.Inner.Box<Outer.Inner.Record>");
}

TEST(CommonTypeName, FailsWhenDemanglingGivesNothing)
{
    try {
        Zon::CommonTypeNameFromMangled("");
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_STREQ(error.what(), "Demangling of type name '' failed.");
    }
}
