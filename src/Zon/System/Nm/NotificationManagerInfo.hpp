#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>

#include "Zon/System/Nm/INotificationManagerInfo.hpp"

namespace Zon::System::Nm {

/// The host's registry of payload types: ids are handed out from 1 upwards in order of first
/// request and kept for the life of the object. It counts the requests it answers, so that a
/// caller that promises to ask only once can be checked.
class NotificationManagerInfo : public INotificationManagerInfo {
public:
    NotificationManagerInfo() = default;
    ~NotificationManagerInfo() override;

    /// See `INotificationManagerInfo`. When all 65535 ids are given out, a new name gets
    /// `InvalidOperationException` "No payload type id is left for `{0}`.".
    PayloadTypeId GetPayloadTypeId(const String& payloadTypeName) override;

    /// The number of `GetPayloadTypeId` requests answered so far, for all names.
    std::size_t GetLookupCount() const;
    /// The number of `GetPayloadTypeId` requests answered so far for `payloadTypeName`.
    std::size_t GetLookupCount(const String& payloadTypeName) const;
    /// The number of names that have an id.
    std::size_t GetRegisteredCount() const;

private:
    struct Entry {
        PayloadTypeId id;
        std::size_t lookups = 0;
    };

    mutable std::mutex lock;
    std::map<std::string, Entry> entries;
    std::size_t lookups = 0;
    unsigned short lastId = 0;
};

} // namespace Zon::System::Nm
