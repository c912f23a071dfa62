#pragma once

#include <cstdint>
#include <vector>

#include "Zon/Plc/Commons/DataType.hpp"
#include "Zon/Plc/Commons/Meta/ArrayDimension.hpp"
#include "Zon/Plc/Commons/Meta/CustomAttribute.hpp"
#include "Zon/Plc/Commons/Meta/TypeIdentifier.hpp"

namespace Zon::Plc::Commons::Meta {

/// What the controller knows of a type.
struct TypeInfo {
    DataType dataType = 0;
    TypeIdentifier typeIdentifier;
    /// Carried along in copies; the host sets them to 0.
    std::uint64_t reserved1 = 0;
    std::uint64_t reserved2 = 0;
    /// Bytes of one value; 0 means that the size follows from the data type
    /// (`DataTypeEnum::GetSize()`).
    std::uint64_t size = 0;
    std::uint64_t alignment = 0;
    ArrayDimensions arrayDimensions;
    /// Carried along in copies; the host sets it to 0.
    std::uint64_t reserved3 = 0;
    std::vector<CustomAttribute> customAttributes;

    /// `size`, or the size of the data type when `size` is 0.
    std::uint64_t GetEffectiveSize() const noexcept;

    /// The empty record: data type 0, empty identifier, size 0.
    static const TypeInfo Empty;
};

} // namespace Zon::Plc::Commons::Meta
