#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/System/Nm/PayloadTypeId.hpp"

namespace Zon::System::Nm {

/// The notification manager's registry of payload types.
class INotificationManagerInfo {
public:
    virtual ~INotificationManagerInfo() = default;

    /// The id of the payload type named `payloadTypeName` (its full class name), registering the
    /// name on first sight. The same name gives the same id for the life of the process, and
    /// different names give different ids. 0 means that no id could be given.
    virtual PayloadTypeId GetPayloadTypeId(const String& payloadTypeName) = 0;
};

} // namespace Zon::System::Nm
