#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "Zon/Plc/Commons/Gds/StaticString.hpp"

using Zon::String;
using Zon::Plc::Commons::Gds::StaticString;
using Zon::Plc::Commons::Gds::StaticStringBase;

namespace {

template <int N, class C>
bool AllZeroFrom(const StaticString<N, C>& text, std::size_t from)
{
    for (std::size_t i = from; i <= static_cast<std::size_t>(N); ++i) {
        if (text.data[i] != C()) {
            return false;
        }
    }
    return true;
}

} // namespace

TEST(StaticString, FieldsAreCapacityLengthDataInThatOrder)
{
    using Narrow = StaticString<80, char>;
    using Wide = StaticString<80, char16_t>;
    EXPECT_EQ(offsetof(Narrow, capacity), 0u);
    EXPECT_EQ(offsetof(Narrow, length), 2u);
    EXPECT_EQ(offsetof(Narrow, data), 4u);
    EXPECT_EQ(sizeof(Narrow::data), 81u);
    EXPECT_EQ(offsetof(Wide, capacity), 0u);
    EXPECT_EQ(offsetof(Wide, length), 2u);
    EXPECT_EQ(offsetof(Wide, data), 4u);
    EXPECT_EQ(sizeof(Wide::data), 81u * 2u);
    EXPECT_EQ(sizeof(StaticString<512, char>::data), 513u);
}

TEST(StaticString, ANewStringIsEmptyWithItsCapacityAndAllUnitsZero)
{
    StaticString<80, char16_t> text;
    EXPECT_EQ(text.capacity, 80u);
    EXPECT_EQ(text.length, 0u);
    EXPECT_TRUE(AllZeroFrom(text, 0));
}

TEST(StaticString, ConstructionFromACStringCutsAtTheCapacity)
{
    StaticString<4, char> cut("abcdefg");
    EXPECT_EQ(cut.length, 4u);
    EXPECT_EQ(std::string(cut.data), "abcd");
    EXPECT_EQ(cut.data[4], '\0');

    StaticString<80, char16_t> wide(u"w\u00e4rme");
    EXPECT_EQ(wide.length, 5u);
    EXPECT_EQ(wide.data[1], u'\u00e4');
    EXPECT_TRUE(AllZeroFrom(wide, 5));

    StaticString<8, char> none(static_cast<const char*>(nullptr));
    EXPECT_EQ(none.length, 0u);
}

TEST(StaticString, EqualityComparesTheTextUpToTheLength)
{
    EXPECT_TRUE((StaticString<80, char>("abc") == StaticString<80, char>("abc")));
    EXPECT_TRUE((StaticString<80, char>("abc") == StaticString<512, char>("abc")));
    EXPECT_FALSE((StaticString<80, char>("abc") == StaticString<80, char>("abd")));
    EXPECT_FALSE((StaticString<80, char>("abc") == StaticString<80, char>("ab")));
    EXPECT_TRUE((StaticString<80, char16_t>(u"x") == StaticString<80, char16_t>(u"x")));
}

TEST(StaticString, GetDataIsTheAddressOfTheDataField)
{
    StaticString<80, char> narrow("abc");
    StaticString<80, char16_t> wide(u"AB");
    const StaticStringBase& narrowBase = narrow;
    StaticStringBase& wideBase = wide;
    EXPECT_EQ(narrowBase.GetData(), narrow.data);
    EXPECT_EQ(wideBase.GetData16(), wide.data);
    EXPECT_EQ(static_cast<const void*>(wideBase.GetData()), static_cast<const void*>(wide.data));
    EXPECT_EQ(narrowBase.GetCapacity(), 80u);
    EXPECT_EQ(narrowBase.GetLength(), 3u);
    EXPECT_EQ(wideBase.GetLength(), 2u);
}

TEST(StaticString, TheEightBitViewOfAWideStringSeesItsBytes)
{
    StaticString<80, char16_t> wide(u"AB");
    const StaticStringBase& base = wide;
    // Little-endian units: 'A', 0, 'B', 0; the 8-bit text ends at the first zero byte.
    EXPECT_EQ(StaticStringBase::ConvertStaticString(base.GetData()), String("A"));
}

TEST(StaticString, ConvertTakesTheTextUpToItsTerminator)
{
    EXPECT_EQ(StaticStringBase::ConvertStaticString("level"), String("level"));
    EXPECT_EQ(StaticStringBase::ConvertStaticString(""), String(""));
    EXPECT_EQ(StaticStringBase::ConvertStaticString(nullptr), String(""));
}

TEST(StaticString, AssigningEightyOneUnitsOnCapacityEightyStoresEightyAndATerminator)
{
    StaticString<80, char> text;
    String source(std::string(81, 'x'));
    std::uint16_t length = StaticStringBase::AssignStaticString(text.GetData(), text.capacity, source);
    EXPECT_EQ(length, 80u);
    EXPECT_EQ(std::strlen(text.data), 80u);
    EXPECT_EQ(text.data[79], 'x');
    EXPECT_EQ(text.data[80], '\0');
}

TEST(StaticString, AssignmentNeverWritesPastTheCapacity)
{
    // A capacity of 4 inside a larger buffer: units 0..4 are the string, the rest must stay.
    char buffer[16];
    std::memset(buffer, '#', sizeof(buffer));
    std::uint16_t length = StaticStringBase::AssignStaticString(buffer, 4, String("abcdefgh"));
    EXPECT_EQ(length, 4u);
    EXPECT_EQ(std::string(buffer, 5), std::string("abcd\0", 5));
    for (std::size_t i = 5; i < sizeof(buffer); ++i) {
        EXPECT_EQ(buffer[i], '#') << i;
    }

    char16_t wide[16];
    std::fill(std::begin(wide), std::end(wide), u'#');
    length = StaticStringBase::AssignStaticString(wide, 4, String("abcdefgh"));
    EXPECT_EQ(length, 4u);
    EXPECT_EQ(wide[3], u'd');
    EXPECT_EQ(wide[4], u'\0');
    for (std::size_t i = 5; i < 16; ++i) {
        EXPECT_EQ(wide[i], u'#') << i;
    }
}

TEST(StaticString, AssigningAShorterTextAfterALongerOneLeavesAllLaterUnitsZero)
{
    StaticString<80, char> text;
    text.length = StaticStringBase::AssignStaticString(text.GetData(), text.capacity, String("a much longer text"));
    text.length = StaticStringBase::AssignStaticString(text.GetData(), text.capacity, String("short"));
    EXPECT_EQ(text.length, 5u);
    EXPECT_EQ(std::string(text.data), "short");
    EXPECT_TRUE(AllZeroFrom(text, 5));

    StaticString<80, char16_t> wide;
    wide.length = StaticStringBase::AssignStaticString(wide.GetData16(), wide.capacity, String("a much longer text"));
    wide.length = StaticStringBase::AssignStaticString(wide.GetData16(), wide.capacity, String("ab"));
    EXPECT_EQ(wide.length, 2u);
    EXPECT_TRUE(AllZeroFrom(wide, 2));
}

TEST(StaticString, WideAssignmentWidensEachByteToOneUnit)
{
    StaticString<80, char16_t> wide;
    // "w" 0xC3 0xA4 "rme": two bytes of a UTF-8 sequence become two units.
    String source("w\xC3\xA4rme");
    wide.length = StaticStringBase::AssignStaticString(wide.GetData16(), wide.capacity, source);
    ASSERT_EQ(wide.length, 6u);
    EXPECT_EQ(wide.data[0], u'w');
    EXPECT_EQ(wide.data[1], char16_t(0x00C3));
    EXPECT_EQ(wide.data[2], char16_t(0x00A4));
    EXPECT_EQ(wide.data[5], u'e');
    EXPECT_EQ(wide.data[6], u'\0');
}

TEST(StaticString, WideAssignmentOfEightyOneBytesOnCapacityEightyStoresEighty)
{
    StaticString<80, char16_t> wide;
    std::uint16_t length = StaticStringBase::AssignStaticString(wide.GetData16(), wide.capacity, String(std::string(81, 'y')));
    EXPECT_EQ(length, 80u);
    EXPECT_EQ(wide.data[79], u'y');
    EXPECT_EQ(wide.data[80], u'\0');
}

TEST(StaticString, AssignmentStopsAtAZeroByteInsideTheText)
{
    StaticString<80, char> text;
    String source(std::string("ab\0cd", 5));
    EXPECT_EQ(StaticStringBase::AssignStaticString(text.GetData(), text.capacity, source), 2u);
    EXPECT_TRUE(AllZeroFrom(text, 2));
}

TEST(StaticString, AssignmentToCapacityZeroOnlyTerminates)
{
    char buffer[2] = {'#', '#'};
    EXPECT_EQ(StaticStringBase::AssignStaticString(buffer, 0, String("abc")), 0u);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(buffer[1], '#');
}

TEST(StaticString, AssignmentToANullDestinationWritesNothing)
{
    EXPECT_EQ(StaticStringBase::AssignStaticString(static_cast<char*>(nullptr), 80, String("abc")), 0u);
    EXPECT_EQ(StaticStringBase::AssignStaticString(static_cast<char16_t*>(nullptr), 80, String("abc")), 0u);
}
