#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "Zon/CommonTypeName.hpp"

using VarnixBase::Commons::Gds::StaticStringAdapter;

namespace {

template <std::size_t N, class C>
struct FixedText {
    std::uint16_t capacity = N;
    std::uint16_t length = 0;
    C data[N + 1] = {};
};

} // namespace

TEST(StaticStringAdapter, CommonTypeNamesNameTheUnit)
{
    EXPECT_EQ(Zon::CommonTypeName<StaticStringAdapter<char>>(), "VarnixBase.Commons.Gds.StaticStringAdapter<char>");
    EXPECT_EQ(Zon::CommonTypeName<StaticStringAdapter<char16_t>>(),
              "VarnixBase.Commons.Gds.StaticStringAdapter<char16_t>");
}

TEST(StaticStringAdapter, ReadsCapacityLengthAndTextOfANarrowString)
{
    FixedText<8, char> text;
    std::memcpy(text.data, "abc", 4);
    text.length = 3;
    auto* view = reinterpret_cast<StaticStringAdapter<char>*>(&text);
    EXPECT_EQ(view->GetCapacity(), 8u);
    EXPECT_EQ(view->GetLength(), 3u);
    EXPECT_EQ(view->GetData(), text.data);
    EXPECT_STREQ(view->GetData(), "abc");
}

TEST(StaticStringAdapter, GivesBothViewsOfAWideString)
{
    FixedText<4, char16_t> text;
    text.data[0] = u'x';
    text.length = 1;
    auto* view = reinterpret_cast<StaticStringAdapter<char16_t>*>(&text);
    EXPECT_EQ(view->GetCapacity(), 4u);
    EXPECT_EQ(view->GetData16(), text.data);
    EXPECT_EQ(view->GetData16()[0], u'x');
    EXPECT_EQ(static_cast<const void*>(view->GetData()), static_cast<const void*>(text.data));
}

TEST(StaticStringAdapter, WritesGoToTheStringsMemory)
{
    FixedText<8, char> text;
    auto* view = reinterpret_cast<StaticStringAdapter<char>*>(&text);
    std::memcpy(view->GetData(), "hi", 3);
    view->length = 2;
    EXPECT_STREQ(text.data, "hi");
    EXPECT_EQ(text.length, 2u);
}

TEST(StaticStringAdapter, DataFollowsTheTwoCounts)
{
    EXPECT_EQ(StaticStringAdapter<char>::DataOffset, 4u);
    using Narrow = FixedText<80, char>;
    using Wide = FixedText<80, char16_t>;
    EXPECT_EQ(offsetof(Narrow, data), StaticStringAdapter<char>::DataOffset);
    EXPECT_EQ(offsetof(Wide, data), StaticStringAdapter<char16_t>::DataOffset);
}
