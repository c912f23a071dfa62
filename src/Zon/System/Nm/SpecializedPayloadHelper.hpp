#pragma once

#include <typeinfo>

#include "Zon/BasicString.hpp"
#include "Zon/System/Nm/INotificationManagerInfo.hpp"
#include "Zon/System/Nm/NotificationManagerInfo.hpp"

namespace Zon::System::Nm {

/// What `SpecializedPayload<T>` needs from the notification manager, kept out of the template.
class SpecializedPayloadHelper {
public:
    /// The registry of payload types that payloads ask for their ids: the one set with
    /// `SetINotificationManagerInfo`, or else the host's own registry.
    static INotificationManagerInfo& GetINotificationManagerInfo();

    /// The host's own registry, process-wide, created at first use.
    static NotificationManagerInfo& GetHostNotificationManagerInfo();

    /// Puts another registry in the host's place (a firmware stand-in, a test double); null
    /// brings the host's own back. The caller keeps `info` alive while it is set.
    static void SetINotificationManagerInfo(INotificationManagerInfo* info) noexcept;

    /// The full class name of a payload type, demangled, namespaces included
    /// ("VarnixBase::Commons::Nm::VersionInformationPayload"). Throws `Zon::Exception`
    /// "Demangling of type name '{0}' failed." when demangling gives nothing.
    static String GetPayloadTypeName(const std::type_info& type);
};

} // namespace Zon::System::Nm
