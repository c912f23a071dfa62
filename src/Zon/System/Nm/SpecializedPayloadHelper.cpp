#include "Zon/System/Nm/SpecializedPayloadHelper.hpp"

#include <atomic>
#include <cstdlib>
#include <memory>

#include <cxxabi.h>

#include "Zon/Exception.hpp"

namespace Zon::System::Nm {

namespace {
std::atomic<INotificationManagerInfo*> replacement{nullptr};
} // namespace

NotificationManagerInfo& SpecializedPayloadHelper::GetHostNotificationManagerInfo()
{
    static NotificationManagerInfo registry;
    return registry;
}

INotificationManagerInfo& SpecializedPayloadHelper::GetINotificationManagerInfo()
{
    INotificationManagerInfo* info = replacement.load(std::memory_order_acquire);
    if (info != nullptr) {
        return *info;
    }
    return GetHostNotificationManagerInfo();
}

void SpecializedPayloadHelper::SetINotificationManagerInfo(INotificationManagerInfo* info) noexcept
{
    replacement.store(info, std::memory_order_release);
}

String SpecializedPayloadHelper::GetPayloadTypeName(const std::type_info& type)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> demangled(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                     std::free);
    if (demangled == nullptr || demangled.get()[0] == '\0') {
        throw Exception("Demangling of type name '{0}' failed.", type.name());
    }
    return String(demangled.get());
}

} // namespace Zon::System::Nm
