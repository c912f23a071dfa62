#pragma once

#include <cstdint>
#include <ostream>

#include "Zon/BasicString.hpp"

namespace Zon {

/// A version: a name, major, minor and patch as 8-bit numbers, a 32-bit build number and a
/// state text (such as "beta"), in this order.
class BasicVersion {
public:
    BasicVersion() = default;
    BasicVersion(String name, std::uint8_t major, std::uint8_t minor, std::uint8_t patch, std::uint32_t build,
                 String state = String())
        : name(std::move(name)), major(major), minor(minor), patch(patch), build(build), state(std::move(state))
    {
    }

    const String& GetName() const noexcept { return name; }
    std::uint8_t GetMajor() const noexcept { return major; }
    std::uint8_t GetMinor() const noexcept { return minor; }
    std::uint8_t GetPatch() const noexcept { return patch; }
    std::uint32_t GetBuild() const noexcept { return build; }
    const String& GetState() const noexcept { return state; }

    friend bool operator==(const BasicVersion&, const BasicVersion&) = default;

private:
    String name;
    std::uint8_t major = 0;
    std::uint8_t minor = 0;
    std::uint8_t patch = 0;
    std::uint32_t build = 0;
    String state;
};

/// "name major.minor.patch.build", with "-state" appended when the state is not empty.
std::ostream& operator<<(std::ostream& stream, const BasicVersion& version);

} // namespace Zon
