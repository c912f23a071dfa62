#pragma once

#include <cstdint>

#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/DataType.hpp"
#include "Zon/Plc/Commons/Meta/StandardAttribute.hpp"
#include "Zon/Plc/Commons/Meta/TypeIdentifier.hpp"

namespace Zon::Plc::Commons::Meta {

/// What the controller knows of one variable, or of one member or element inside it: its name,
/// data type, type and address.
struct DataTag {
    DataTag() = default;
    /// `isConstant` marks a variable whose value never changes; browsing always passes false.
    DataTag(const String& name, const void* address, DataType dataType, const TypeIdentifier& typeIdentifier,
            bool isConstant);

    /// The variable's name, or the name of the last member walked with its indices.
    String name;
    /// Base type in the low 8 bits, flags above (`DataTypePointerBit`, `DataTypeIndirectMask`).
    DataType dataType = 0;
    TypeIdentifier typeIdentifier;
    /// Carried along in copies; the host sets them to 0.
    std::uint64_t reserved1 = 0;
    std::uint64_t reserved2 = 0;
    /// Where the variable lies in memory (with an indirect flag: where the pointer to it lies).
    void* address = nullptr;
    /// What the variable is to the controller; carried along, not read while browsing.
    StandardAttribute attributes = StandardAttribute::None;
    bool isConstant = false;
};

} // namespace Zon::Plc::Commons::Meta
