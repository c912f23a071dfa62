#pragma once

// Sample values for the typed port tests: one non-zero value per port value type.

#include "Zon/Plc/Commons/Gds/StaticString.hpp"

#include <gtest/gtest.h>

namespace VarnixTest::Graph {

using Zon::Plc::Commons::Gds::StaticString;

using PortValueTypes =
    ::testing::Types<bool, signed char, unsigned char, short, unsigned short, int, unsigned int, long, unsigned long,
                     float, double, StaticString<80, char>, StaticString<512, char>, StaticString<80, char16_t>,
                     StaticString<512, char16_t>>;

template <class T>
T SampleValue()
{
    if constexpr (std::is_same_v<T, bool>) {
        return true;
    } else if constexpr (std::is_arithmetic_v<T>) {
        return static_cast<T>(42);
    } else if constexpr (std::is_same_v<typename T::CharType, char>) {
        return T("sample");
    } else {
        return T(u"sample");
    }
}

template <class T>
T ZeroValue()
{
    return T{};
}

} // namespace VarnixTest::Graph
