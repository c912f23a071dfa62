#pragma once

#include <cstdint>
#include <vector>

namespace Zon::Plc::Commons::Meta {

/// One dimension of an array.
struct ArrayDimension {
    /// The number of elements of this dimension.
    std::uint32_t elementCount = 0;
    /// The index of the first element as the array was declared. Browsing counts every index
    /// from 0 and does not read this.
    std::uint32_t lowerBound = 0;
};

/// The dimensions of an array, outermost first. Empty for a scalar.
using ArrayDimensions = std::vector<ArrayDimension>;

} // namespace Zon::Plc::Commons::Meta
