#include "VarnixBase/Core/QualitySystem/QualityState.hpp"

template <>
const std::map<VarnixBase::Core::QualitySystem::QualityState, const char*>
    Zon::EnumStrings<VarnixBase::Core::QualitySystem::QualityState>::Values = {
        {VarnixBase::Core::QualitySystem::QualityState::None, "None"},
        {VarnixBase::Core::QualitySystem::QualityState::Good, "Good"},
        {VarnixBase::Core::QualitySystem::QualityState::Questionable, "Questionable"},
        {VarnixBase::Core::QualitySystem::QualityState::Invalid, "Invalid"},
        {VarnixBase::Core::QualitySystem::QualityState::Bad, "Bad"},
};
