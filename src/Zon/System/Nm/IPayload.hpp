#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/System/Nm/GenericPayload.hpp"
#include "Zon/System/Nm/PayloadTypeId.hpp"

namespace Zon::System::Nm {

/// A notification payload as the notification manager sees it.
class IPayload {
public:
    virtual ~IPayload() = default;

    /// The id of the payload's type.
    virtual PayloadTypeId GetId() const = 0;
    /// The payload type's full class name.
    virtual String GetName() const = 0;
    /// The field values as they travel, the format string first.
    virtual const RawPayloadType& GetAsRawPayloadType() const = 0;
    /// The payload as text: its format string applied to its fields.
    virtual String ToString() const = 0;
};

} // namespace Zon::System::Nm
