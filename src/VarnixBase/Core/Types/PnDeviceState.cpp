#include "VarnixBase/Core/Types/PnDeviceState.hpp"

using VarnixBase::Core::Types::PnDeviceState;

template <>
const std::map<PnDeviceState, const char*> Zon::EnumStrings<PnDeviceState>::Values = {
    {PnDeviceState::None, "None"},
    {PnDeviceState::IS_PRIMARY, "IS_PRIMARY"},
    {PnDeviceState::AR_VALID, "AR_VALID"},
    {PnDeviceState::APPL_RUN, "APPL_RUN"},
    {PnDeviceState::PN_NO_DIAG, "PN_NO_DIAG"},
};
