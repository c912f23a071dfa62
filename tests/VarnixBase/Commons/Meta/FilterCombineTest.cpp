#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Meta/FilterCombine.hpp"
#include "Zon/Exception.hpp"

using VarnixBase::Commons::Meta::FilterCombine;
using VarnixBase::Commons::Meta::FilterCombineDictionary;

TEST(FilterCombine, ValuesAreEightBitsWithTheirNumbers)
{
    static_assert(sizeof(FilterCombine) == 1);
    EXPECT_EQ(static_cast<int>(FilterCombine::None), 0);
    EXPECT_EQ(static_cast<int>(FilterCombine::Or), 1);
    EXPECT_EQ(static_cast<int>(FilterCombine::And), 2);
    EXPECT_EQ(static_cast<int>(FilterCombine::Not), 4);
}

TEST(FilterCombine, GetEnumStringGivesTheNames)
{
    EXPECT_STREQ(GetEnumString(FilterCombine::None), "None");
    EXPECT_STREQ(GetEnumString(FilterCombine::Or), "Or");
    EXPECT_STREQ(GetEnumString(FilterCombine::And), "And");
    EXPECT_STREQ(GetEnumString(FilterCombine::Not), "Not");
}

TEST(FilterCombine, GetEnumStringOfACombinationThrows)
{
    try {
        GetEnumString(static_cast<FilterCombine>(3));
        FAIL() << "no exception";
    } catch (const Zon::Exception& exception) {
        EXPECT_STREQ(exception.what(),
                     "Could not find enum string of enum 'VarnixBase.Commons.Meta.FilterCombine' for value '3'.");
    }
}

TEST(FilterCombine, TryGetEnumValueIsExactAndCaseSensitive)
{
    FilterCombine value = FilterCombine::None;
    EXPECT_FALSE(TryGetEnumValue("or", value));
    EXPECT_EQ(value, FilterCombine::None);
    EXPECT_TRUE(TryGetEnumValue("Or", value));
    EXPECT_EQ(value, FilterCombine::Or);
    EXPECT_FALSE(TryGetEnumValue("Or ", value));
    EXPECT_FALSE(TryGetEnumValue(nullptr, value));
}

TEST(FilterCombine, InvalidValuesHaveTheEmptyText)
{
    EXPECT_STREQ(FilterCombineDictionary.GetInvalidText(), "");
    EXPECT_STREQ(FilterCombineDictionary.GetText(static_cast<FilterCombine>(3)), "");
    EXPECT_STREQ(FilterCombineDictionary.GetText(FilterCombine::And), "And");
}

TEST(FilterCombine, StreamWritesTheName)
{
    std::ostringstream stream;
    stream << FilterCombine::And;
    EXPECT_EQ(stream.str(), "And");
    EXPECT_FALSE(stream.fail());
}

TEST(FilterCombine, StreamWritesTheSingleByteOfAnUnknownValueAndFails)
{
    std::ostringstream stream;
    stream << static_cast<FilterCombine>('A');
    EXPECT_EQ(stream.str(), "A");
    EXPECT_TRUE(stream.fail());
}

TEST(FilterCombine, StreamReadsOneWordByExactName)
{
    std::istringstream stream("Not And");
    FilterCombine value = FilterCombine::None;
    stream >> value;
    EXPECT_EQ(value, FilterCombine::Not);
    stream >> value;
    EXPECT_EQ(value, FilterCombine::And);
}

TEST(FilterCombine, StreamReadOfAnUnknownWordFailsAndKeepsTheValue)
{
    std::istringstream stream("AND");
    FilterCombine value = FilterCombine::Or;
    stream >> value;
    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(value, FilterCombine::Or);
}
