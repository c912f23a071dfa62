#include "Zon/System/Nm/NotificationManagerInfo.hpp"

#include <limits>

#include "Zon/System/Commons/InvalidOperationException.hpp"

namespace Zon::System::Nm {

NotificationManagerInfo::~NotificationManagerInfo() = default;

PayloadTypeId NotificationManagerInfo::GetPayloadTypeId(const String& payloadTypeName)
{
    std::lock_guard guard(lock);
    ++lookups;
    auto found = entries.find(payloadTypeName.ToStdString());
    if (found == entries.end()) {
        if (lastId == std::numeric_limits<unsigned short>::max()) {
            throw Commons::InvalidOperationException("No payload type id is left for `{0}`.", payloadTypeName);
        }
        found = entries.emplace(payloadTypeName.ToStdString(), Entry{PayloadTypeId(++lastId), 0}).first;
    }
    ++found->second.lookups;
    return found->second.id;
}

std::size_t NotificationManagerInfo::GetLookupCount() const
{
    std::lock_guard guard(lock);
    return lookups;
}

std::size_t NotificationManagerInfo::GetLookupCount(const String& payloadTypeName) const
{
    std::lock_guard guard(lock);
    auto found = entries.find(payloadTypeName.ToStdString());
    return found != entries.end() ? found->second.lookups : 0;
}

std::size_t NotificationManagerInfo::GetRegisteredCount() const
{
    std::lock_guard guard(lock);
    return entries.size();
}

} // namespace Zon::System::Nm
