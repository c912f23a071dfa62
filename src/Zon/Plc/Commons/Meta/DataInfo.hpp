#pragma once

#include "Zon/Plc/Commons/Meta/ArrayDimension.hpp"
#include "Zon/Plc/Commons/Meta/DataTag.hpp"

namespace Zon::Plc::Commons::Meta {

/// A `DataTag` together with the array dimensions of the variable.
struct DataInfo : DataTag {
    DataInfo() = default;
    explicit DataInfo(const DataTag& tag) : DataTag(tag) {}
    DataInfo(const DataTag& tag, ArrayDimensions arrayDimensions);

    ArrayDimensions arrayDimensions;

    /// The empty record: no name, data type 0, empty type identifier, null address.
    static const DataInfo Empty;
};

} // namespace Zon::Plc::Commons::Meta
