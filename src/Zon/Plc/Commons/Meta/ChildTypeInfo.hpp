#pragma once

#include <cstdint>

#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/TypeInfo.hpp"

namespace Zon::Plc::Commons::Meta {

/// A member of a structure: its type, name and place. For an array member, the type is that of
/// one element and `arrayDimensions` gives the array's shape. A pointer member has
/// `DataTypePointerBit` in its data type and the type of what it points to.
struct ChildTypeInfo : TypeInfo {
    String name;
    /// Bytes from the start of the parent to the member.
    std::uint64_t offset = 0;
    /// Carried along in copies; the host sets it to 0.
    std::uint8_t reserved4 = 0;

    const ArrayDimensions& GetArrayDimensions() const noexcept { return arrayDimensions; }

    /// The empty record: data type 0, offset 0, no name.
    static const ChildTypeInfo Empty;
};

} // namespace Zon::Plc::Commons::Meta
