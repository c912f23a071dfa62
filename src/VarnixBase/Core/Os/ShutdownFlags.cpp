#include "VarnixBase/Core/Os/ShutdownFlags.hpp"

template <>
const std::map<VarnixBase::Core::Os::ShutdownFlags, const char*>
    Zon::EnumStrings<VarnixBase::Core::Os::ShutdownFlags>::Values = {
        {VarnixBase::Core::Os::ShutdownFlags::Undefined, "Undefined"},
        {VarnixBase::Core::Os::ShutdownFlags::Abnormal, "Abnormal"},
        {VarnixBase::Core::Os::ShutdownFlags::PowerCycle, "PowerCycle"},
        {VarnixBase::Core::Os::ShutdownFlags::ProcessShutdown, "ProcessShutdown"},
};
