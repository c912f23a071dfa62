#pragma once

#include <ostream>

#include "Zon/Format.hpp"
#include "VarnixBase/Core/QualitySystem/QualityFlags.hpp"
#include "VarnixBase/Core/QualitySystem/QualityState.hpp"

namespace VarnixBase::Core::QualitySystem {

/// A statement of how far a value can be trusted: reasons, then state. It fits one machine word
/// and is passed by value. In that word the flags are the low 32 bits and the state bits 32 to 39.
/// A new record is the perfect quality: state `Good`, flags `None`.
struct Quality {
    QualityFlags flags = QualityFlags::None;
    QualityState state = QualityState::Good;

    friend constexpr bool operator==(const Quality& a, const Quality& b) noexcept = default;
};

static_assert(sizeof(Quality) == 8, "a quality fits one 64-bit word");

/// Writes "<state>/<flags>", e.g. "Good/None" or "Bad/WireBreak".
std::ostream& operator<<(std::ostream& stream, const Quality& quality);

} // namespace VarnixBase::Core::QualitySystem

ZON_FORMAT_AS_OSTREAM(VarnixBase::Core::QualitySystem::Quality);
