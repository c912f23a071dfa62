#pragma once

#include <atomic>
#include <typeinfo>

#include "Zon/BasicString.hpp"
#include "Zon/SecureStrncpy.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Nm/GenericPayload.hpp"
#include "Zon/System/Nm/IPayload.hpp"
#include "Zon/System/Nm/SpecializedPayloadHelper.hpp"

namespace Zon::System::Nm {

/// The base of a typed payload class `T`: it holds a `GenericPayload` with the type's name and
/// id and forwards to it, so that receivers need not know `T`. `T` declares its fields on the
/// generic payload (`GetGenericPayload()`) and offers typed getters over them.
///
/// The destructor is abstract: only the derived payload class can be instantiated.
template <class T>
class SpecializedPayload : public IPayload {
public:
    ~SpecializedPayload() override = 0;

    /// The id of `T`, as `GetPayloadTypeId()`.
    PayloadTypeId GetId() const override { return GetPayloadTypeId(); }
    /// The full class name of `T`, demangled, namespaces included.
    String GetName() const override { return SpecializedPayloadHelper::GetPayloadTypeName(typeid(T)); }
    const RawPayloadType& GetAsRawPayloadType() const override { return payload.GetAsRawPayloadType(); }
    String ToString() const override { return payload.ToString(); }

    /// The id of `T` from the notification manager's registry. The registry is asked once per
    /// process: the answer is kept, and only an answer of 0 ("not known") makes the next call
    /// ask again. There is no lock: callers on several threads may each ask the registry while
    /// the id is not yet kept, and they get the same id.
    static PayloadTypeId GetPayloadTypeId()
    {
        unsigned short known = typeId.load(std::memory_order_relaxed);
        if (known != 0) {
            return PayloadTypeId(known);
        }
        PayloadTypeId id = SpecializedPayloadHelper::GetINotificationManagerInfo().GetPayloadTypeId(
            SpecializedPayloadHelper::GetPayloadTypeName(typeid(T)));
        typeId.store(id.GetValue(), std::memory_order_relaxed);
        return id;
    }

protected:
    /// Constructs the generic payload from the type's name and id and stores `formatString` in
    /// its format string field. A format string longer than 511 characters (one less than the
    /// variant's storage, so that the terminator fits) gives `ArgumentException`
    /// "Cannot copy string: argument string length {} exceeds MaxStringSize {}" with the length
    /// and 512.
    explicit SpecializedPayload(const String& formatString)
        : payload(GetPayloadTypeId(), SpecializedPayloadHelper::GetPayloadTypeName(typeid(T)))
    {
        constexpr std::size_t storageSize = RscVariant<512>::StorageSize;
        const std::size_t length = formatString.Length();
        if (length > storageSize - 1) {
            throw Commons::ArgumentException("Cannot copy string: argument string length {} exceeds MaxStringSize {}",
                                             length, storageSize);
        }
        RscVariant<512> variant;
        SecureStrncpy(variant.GetChars(), storageSize, formatString.CStr(), length);
        variant.GetChars()[length] = '\0';
        variant.SetType(RscType::String);
        payload.SetFieldValue(payload.GetFieldIndexFormatString(), variant);
    }

    SpecializedPayload(const SpecializedPayload&) = default;
    SpecializedPayload& operator=(const SpecializedPayload&) = default;

    GenericPayload& GetGenericPayload() noexcept { return payload; }
    const GenericPayload& GetGenericPayload() const noexcept { return payload; }

private:
    // The id of `T`, 16 bits; 0 while it is not known.
    static inline std::atomic<unsigned short> typeId{0};

    GenericPayload payload;
};

template <class T>
SpecializedPayload<T>::~SpecializedPayload() = default;

} // namespace Zon::System::Nm
