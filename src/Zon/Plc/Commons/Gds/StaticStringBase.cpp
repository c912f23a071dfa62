#include "Zon/Plc/Commons/Gds/StaticStringBase.hpp"

#include <algorithm>
#include <cstring>

namespace Zon::Plc::Commons::Gds {

namespace {

/// Units of `text` that go into a string of `capacity` units: up to the first zero byte, at
/// most `capacity`.
std::size_t CountUnits(const String& text, std::uint16_t capacity) noexcept
{
    const char* units = text.CStr();
    std::size_t count = 0;
    std::size_t limit = std::min<std::size_t>(text.Length(), capacity);
    while (count < limit && units[count] != '\0') {
        ++count;
    }
    return count;
}

} // namespace

std::uint16_t StaticStringBase::GetCapacity() const noexcept
{
    std::uint16_t capacity = 0;
    std::memcpy(&capacity, reinterpret_cast<const char*>(this) + CapacityOffset, sizeof(capacity));
    return capacity;
}

std::uint16_t StaticStringBase::GetLength() const noexcept
{
    std::uint16_t length = 0;
    std::memcpy(&length, reinterpret_cast<const char*>(this) + LengthOffset, sizeof(length));
    return length;
}

String StaticStringBase::ConvertStaticString(const char* text)
{
    return String(text);
}

std::uint16_t StaticStringBase::AssignStaticString(char* destination, std::uint16_t capacity, const String& text) noexcept
{
    if (destination == nullptr) {
        return 0;
    }
    std::size_t count = CountUnits(text, capacity);
    if (count != 0) {
        std::memcpy(destination, text.CStr(), count);
    }
    std::memset(destination + count, 0, static_cast<std::size_t>(capacity) + 1 - count);
    return static_cast<std::uint16_t>(count);
}

std::uint16_t StaticStringBase::AssignStaticString(char16_t* destination, std::uint16_t capacity, const String& text) noexcept
{
    if (destination == nullptr) {
        return 0;
    }
    std::size_t count = CountUnits(text, capacity);
    const char* units = text.CStr();
    for (std::size_t i = 0; i < count; ++i) {
        destination[i] = static_cast<char16_t>(static_cast<unsigned char>(units[i]));
    }
    for (std::size_t i = count; i <= capacity; ++i) {
        destination[i] = u'\0';
    }
    return static_cast<std::uint16_t>(count);
}

} // namespace Zon::Plc::Commons::Gds
