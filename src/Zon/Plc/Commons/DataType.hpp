#pragma once

#include <cstdint>

#include "Zon/Plc/Commons/DataTypeEnum.hpp"

namespace Zon::Plc::Commons {

/// The 32-bit data type of a variable, a member or a type: the low 8 bits are the base type
/// (a `DataTypeEnum` code, 0 for none), the bits above are flags.
using DataType = std::uint32_t;

/// The place holds a pointer to the data, not the data itself.
inline constexpr DataType DataTypePointerBit = 0x0200;

/// Tested on a root or start record: with either bit set, the recorded address is the address of
/// a pointer to the data.
inline constexpr DataType DataTypeIndirectMask = 0x1200;

/// The mask of the base type bits.
inline constexpr DataType DataTypeBaseMask = 0x00FF;

} // namespace Zon::Plc::Commons
