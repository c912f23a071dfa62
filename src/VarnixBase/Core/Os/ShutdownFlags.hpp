#pragma once

#include <cstdint>

#include "Zon/EnumStrings.hpp"

namespace VarnixBase::Core::Os {

/// Why the controller shuts an application down. 2 has no name.
enum class ShutdownFlags : std::uint8_t {
    Undefined = 0,
    Abnormal = 1,
    PowerCycle = 3,
    ProcessShutdown = 4,
};

ZON_ENUM_STREAM_OPERATORS(ShutdownFlags)

} // namespace VarnixBase::Core::Os

ZON_DECLARE_ENUM_STRINGS(VarnixBase::Core::Os::ShutdownFlags);
