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

TEST(CommonTypeName, ARepeatedCallGivesTheSameText)
{
    // The name is formed once and remembered; every later call gives the same text.
    auto first = Zon::CommonTypeName<Outer::Inner::Box<Outer::Inner::Color>>();
    EXPECT_EQ(first, "Outer.Inner.Box<Outer.Inner.Color>");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Zon::CommonTypeName<Outer::Inner::Box<Outer::Inner::Color>>(), first);
        EXPECT_EQ(Zon::CommonTypeNameOf(typeid(Outer::Inner::Box<Outer::Inner::Color>)), first);
    }
    // The remembered text is one object: its address does not change between calls.
    const Zon::String& remembered = Zon::CommonTypeNameRefOf(typeid(Outer::Inner::Box<Outer::Inner::Color>));
    EXPECT_EQ(&remembered, &Zon::CommonTypeNameRefOf(typeid(Outer::Inner::Box<Outer::Inner::Color>)));
    EXPECT_EQ(remembered, first);
    // Distinct types keep distinct names.
    EXPECT_EQ(Zon::CommonTypeNameRefOf(typeid(Outer::Inner::Box<Outer::Inner::Record>)),
              "Outer.Inner.Box<Outer.Inner.Record>");
}
