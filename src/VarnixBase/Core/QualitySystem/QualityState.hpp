#pragma once

#include <cstdint>

#include "Zon/EnumStrings.hpp"
#include "Zon/Format.hpp"

namespace VarnixBase::Core::QualitySystem {

/// How far a value can be trusted, on a scale where a larger number is worse. Combining takes the
/// largest state, so `None` (0) never lowers `Good`.
enum class QualityState : std::uint8_t {
    None = 0,
    Good = 1,
    Questionable = 2,
    Invalid = 128,
    Bad = 255,
};

ZON_ENUM_STREAM_OPERATORS(QualityState)

} // namespace VarnixBase::Core::QualitySystem

ZON_DECLARE_ENUM_STRINGS(VarnixBase::Core::QualitySystem::QualityState);
ZON_FORMAT_AS_OSTREAM(VarnixBase::Core::QualitySystem::QualityState);
