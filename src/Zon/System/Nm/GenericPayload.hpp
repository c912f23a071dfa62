#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Zon/BasicString.hpp"
#include "Zon/System/Nm/PayloadTypeId.hpp"
#include "Zon/System/Nm/RscType.hpp"
#include "Zon/System/Nm/RscVariant.hpp"

namespace Zon::System::Nm {

/// The values of a payload as they travel: one variant per field, the format string first.
using RawPayloadType = std::vector<RscVariant<512>>;

/// A notification payload that any receiver can read and print without knowing its sender's
/// classes: a type id, a type name and a list of typed fields.
///
/// Field 0 holds the format string (declared `RscType::String`); `GetFieldIndexFormatString()`
/// gives its index. `AddField` declares the fields after it, numbered 1, 2, ... in order of
/// declaration. Every field starts without a value (tag `None`). `ToString` applies the format
/// string to the declared fields: `{0}` is the first field added, `{1}` the second, and so on.
///
/// Values are stored as they are given, whatever the field's declared type, with one exception:
/// text handed over as a `std::string` (`SetFieldValue<std::string>`, tag `StdString`) and stored
/// in a field declared with a zero-terminated string tag (`String`, `AnsiString`, `Utf8String`)
/// takes over the field's declared tag. The text itself is zero-terminated in either case, so
/// whoever reads the field by its declared type finds what was set.
class GenericPayload {
public:
    GenericPayload(PayloadTypeId id, const String& name);
    ~GenericPayload();
    GenericPayload(const GenericPayload& other);
    GenericPayload& operator=(const GenericPayload& other);
    GenericPayload(GenericPayload&& other) noexcept;
    GenericPayload& operator=(GenericPayload&& other) noexcept;

    PayloadTypeId GetId() const noexcept;
    const String& GetName() const noexcept;

    /// Declares the next field with its type; returns the field's index.
    std::size_t AddField(RscType type);
    /// The index of the field that holds the format string (0).
    std::size_t GetFieldIndexFormatString() const noexcept;
    /// The number of fields, the format string's included.
    std::size_t GetFieldCount() const noexcept;
    /// The declared type of a field. Throws `IndexOutOfRangeException` for an unknown index.
    RscType GetFieldType(std::size_t index) const;

    /// Stores a field's value (see the class comment for the one conversion). Throws
    /// `IndexOutOfRangeException` "Payload field index {0} is out of range, the payload has {1}
    /// fields." for an unknown index.
    void SetFieldValue(std::size_t index, const RscVariant<512>& value);
    /// Stores a value of another C++ type; only `std::string` is offered (below).
    template <class T>
    void SetFieldValue(std::size_t index, const T& value);
    /// The stored value of a field. Throws `IndexOutOfRangeException` for an unknown index.
    const RscVariant<512>& GetFieldValue(std::size_t index) const;

    /// All field values, the format string first.
    const RawPayloadType& GetAsRawPayloadType() const noexcept;

    /// The format string applied to the declared fields: a 16-bit number prints as a number, a
    /// text as its text, a field without a value, or with a tag this host does not know, as
    /// nothing. Without a format string the result is empty; a format string that does not fit
    /// the fields comes back as it stands.
    String ToString() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

/// Text from a `std::string`: a variant with the tag `StdString` that holds the text
/// zero-terminated, stored with `SetFieldValue`. A text longer than 511 characters gives
/// `ArgumentException` "Cannot copy string: argument string length {} exceeds MaxStringSize {}"
/// and leaves the field as it was.
template <>
void GenericPayload::SetFieldValue<std::string>(std::size_t index, const std::string& value);

} // namespace Zon::System::Nm
