#pragma once

#include <compare>
#include <ostream>

namespace Zon::System::Nm {

/// A number that identifies something of one kind, told apart from numbers of other kinds by
/// `Tag`: an id of one kind does not convert to another or to a plain number by accident.
template <class T, class Tag>
class IdType {
public:
    using ValueType = T;

    constexpr IdType() noexcept = default;
    constexpr explicit IdType(T value) noexcept : value(value) {}

    constexpr T GetValue() const noexcept { return value; }
    /// True for every id but 0, which stands for "not known".
    constexpr bool IsValid() const noexcept { return value != T{}; }

    friend constexpr bool operator==(IdType a, IdType b) noexcept = default;
    friend constexpr auto operator<=>(IdType a, IdType b) noexcept = default;

    friend std::ostream& operator<<(std::ostream& stream, IdType id) { return stream << +id.value; }

private:
    T value{};
};

} // namespace Zon::System::Nm
