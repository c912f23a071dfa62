#include <cstddef>
#include <cstdint>
#include <type_traits>

#include <gtest/gtest.h>

#include "VarnixBase/Core/QualitySystem/QualifiedValue.hpp"
#include "Zon/Plc/Commons/Gds/StaticString.hpp"

using namespace VarnixBase::Core::QualitySystem;
using Zon::Plc::Commons::Gds::StaticString;

namespace {

template <class T>
class QualifiedValueLayout : public ::testing::Test {};

using LayoutTypes = ::testing::Types<bool, signed char, unsigned char, short, unsigned short, int, unsigned int, long,
                                     unsigned long, float, double, StaticString<80, char>, StaticString<512, char>,
                                     StaticString<80, char16_t>, StaticString<512, char16_t>>;
TYPED_TEST_SUITE(QualifiedValueLayout, LayoutTypes);

} // namespace

TYPED_TEST(QualifiedValueLayout, FieldsAreTimestampQualityValueAtFixedOffsets)
{
    using Q = QualifiedValue<TypeParam>;
    static_assert(std::is_standard_layout_v<Q>);
    static_assert(std::is_same_v<decltype(Q::timestamp), std::int64_t>);
    static_assert(std::is_same_v<decltype(Q::quality), Quality>);
    static_assert(std::is_same_v<decltype(Q::value), TypeParam>);
    EXPECT_EQ(offsetof(Q, timestamp), 0u);
    EXPECT_EQ(offsetof(Q, quality), 8u);
    EXPECT_EQ(offsetof(Q, quality) + offsetof(Quality, flags), 8u);
    EXPECT_EQ(offsetof(Q, quality) + offsetof(Quality, state), 12u);
    EXPECT_EQ(offsetof(Q, value), 16u);
    EXPECT_EQ(sizeof(Q) % alignof(std::int64_t), 0u);
}

TEST(QualifiedValue, ANewRecordHasTimestamp0GoodQualityAndAZeroValue)
{
    QualifiedValue<double> number;
    EXPECT_EQ(number.timestamp, 0);
    EXPECT_EQ(number.quality.state, QualityState::Good);
    EXPECT_EQ(number.quality.flags, QualityFlags::None);
    EXPECT_EQ(number.value, 0.0);

    QualifiedValue<StaticString<80, char16_t>> text;
    EXPECT_EQ(text.value.capacity, 80u);
    EXPECT_EQ(text.value.length, 0u);
}

TEST(QualifiedValue, IsPublishedWithTheUserTypeCode)
{
    EXPECT_EQ(Zon::Plc::Commons::Meta::PortDataType<QualifiedValue<int>>::Code, 65u);
    EXPECT_EQ((Zon::Plc::Commons::Meta::PortDataType<QualifiedValue<StaticString<80, char>>>::Code), 65u);
}
