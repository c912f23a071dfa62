#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "Zon/Plc/Commons/Gds/StaticString.hpp"

namespace VarnixBase::Example {

/// An example of a user-defined structure that a connector reads: a text of at most 80
/// characters, followed by a 16-bit and an 8-bit field that travel with it. The text comes first,
/// so the structure begins with the fixed string's `capacity`, `length` and 81-byte buffer.
///
/// Setting one `StringPort_s` from another (through `DataAccessValue<StringPort_s>::Set`) copies
/// the text up to its first zero byte, cut to the destination's capacity, clears the whole buffer
/// behind it, and copies `code` and `state` as they stand.
struct StringPort_s {
    /// The text.
    Zon::Plc::Commons::Gds::StaticString<80, char> text;
    /// A number that travels with the text, such as a message code.
    std::uint16_t code = 0;
    /// A small state that travels with the text.
    std::uint8_t state = 0;
};

static_assert(std::is_standard_layout_v<StringPort_s> && std::is_trivially_copyable_v<StringPort_s>);
static_assert(offsetof(StringPort_s, text) == 0, "the structure begins with its text");
static_assert(sizeof(StringPort_s::text.data) == 81, "the text buffer holds 80 characters and a terminator");

} // namespace VarnixBase::Example
