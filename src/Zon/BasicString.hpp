#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

#include <fmt/format.h>

namespace Zon {

/// A string of code units with value semantics: the platform's text type.
/// `BasicString<char>` (`Zon::String`) holds bytes; no encoding is assumed or checked.
template <class C>
class BasicString {
public:
    using CharType = C;
    using StdString = std::basic_string<C>;
    static constexpr std::size_t NPos = StdString::npos;

    BasicString() = default;
    BasicString(const C* text) : value(text != nullptr ? StdString(text) : StdString()) {}
    BasicString(const C* text, std::size_t length) : value(text, length) {}
    BasicString(const StdString& text) : value(text) {}
    BasicString(StdString&& text) noexcept : value(std::move(text)) {}
    explicit BasicString(std::basic_string_view<C> text) : value(text) {}
    BasicString(std::size_t count, C unit) : value(count, unit) {}

    const C* CStr() const noexcept { return value.c_str(); }
    std::size_t Length() const noexcept { return value.size(); }
    bool IsEmpty() const noexcept { return value.empty(); }
    const StdString& ToStdString() const noexcept { return value; }
    std::basic_string_view<C> View() const noexcept { return value; }
    operator std::basic_string_view<C>() const noexcept { return value; }

    C operator[](std::size_t index) const { return value[index]; }
    C& operator[](std::size_t index) { return value[index]; }

    /// Position of the first `unit` at or after `start`, or `NPos`.
    std::size_t Find(C unit, std::size_t start = 0) const noexcept { return value.find(unit, start); }
    /// Position of the first of `units` at or after `start`, or `NPos`.
    std::size_t FindFirstOf(const C* units, std::size_t start = 0) const noexcept
    {
        return value.find_first_of(units, start);
    }
    /// Up to `count` units from `start`; an empty string when `start` is past the end.
    BasicString Substr(std::size_t start, std::size_t count = NPos) const
    {
        return start >= value.size() ? BasicString() : BasicString(value.substr(start, count));
    }
    bool StartsWith(std::basic_string_view<C> prefix) const noexcept { return value.starts_with(prefix); }
    bool EndsWith(std::basic_string_view<C> suffix) const noexcept { return value.ends_with(suffix); }

    BasicString& Append(const BasicString& other) { value += other.value; return *this; }
    BasicString& operator+=(const BasicString& other) { value += other.value; return *this; }
    BasicString& operator+=(const C* other) { value += other; return *this; }
    BasicString& operator+=(C unit) { value += unit; return *this; }
    void Clear() noexcept { value.clear(); }

    friend BasicString operator+(const BasicString& a, const BasicString& b) { return BasicString(a.value + b.value); }
    friend BasicString operator+(const BasicString& a, const C* b) { return BasicString(a.value + b); }
    friend BasicString operator+(const C* a, const BasicString& b) { return BasicString(a + b.value); }

    // Byte-wise comparison and ordering of the code units.
    friend bool operator==(const BasicString& a, const BasicString& b) noexcept { return a.value == b.value; }
    friend bool operator==(const BasicString& a, const C* b) noexcept { return a.value == b; }
    friend std::strong_ordering operator<=>(const BasicString& a, const BasicString& b) noexcept
    {
        return a.value.compare(b.value) <=> 0;
    }

private:
    StdString value;
};

using String = BasicString<char>;

inline std::ostream& operator<<(std::ostream& stream, const String& text)
{
    return stream << text.ToStdString();
}

} // namespace Zon

template <class C>
struct std::hash<Zon::BasicString<C>> {
    std::size_t operator()(const Zon::BasicString<C>& text) const noexcept
    {
        return std::hash<std::basic_string<C>>()(text.ToStdString());
    }
};

template <>
struct fmt::formatter<Zon::String> : fmt::formatter<fmt::string_view> {
    template <class FormatContext>
    auto format(const Zon::String& text, FormatContext& context) const
    {
        return fmt::formatter<fmt::string_view>::format(fmt::string_view(text.CStr(), text.Length()), context);
    }
};
