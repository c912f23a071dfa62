#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "Zon/Plc/Commons/Gds/StaticString.hpp"

namespace Zon::Plc::Commons::Meta {

/// The controller's data type code of a type that can be published as a port:
/// `PortDataType<T>::Code`. The base types and the fixed strings have their codes here; a
/// structure that is published as a whole specialises the trait with `UserTypeCode`:
///
///     template <> struct Zon::Plc::Commons::Meta::PortDataType<MyRecord>
///         : Zon::Plc::Commons::Meta::PortDataTypeCode<Zon::Plc::Commons::Meta::UserTypeCode> {};
///
/// A type without a code cannot be published.
template <class T>
struct PortDataType {
    static_assert(!std::is_same_v<T, T>, "no data type code for this type: specialise Zon::Plc::Commons::Meta::PortDataType");
};

/// Base of the specialisations: carries the code.
template <std::uint32_t C>
struct PortDataTypeCode {
    static constexpr std::uint32_t Code = C;
};

/// The first code of user types (structures). Codes from 65 to 254 name user types.
inline constexpr std::uint32_t UserTypeCode = 65;

template <> struct PortDataType<bool> : PortDataTypeCode<3> {};
template <> struct PortDataType<unsigned char> : PortDataTypeCode<4> {};
template <> struct PortDataType<signed char> : PortDataTypeCode<5> {};
template <> struct PortDataType<char> : PortDataTypeCode<6> {};
template <> struct PortDataType<char16_t> : PortDataTypeCode<7> {};
template <> struct PortDataType<unsigned short> : PortDataTypeCode<8> {};
template <> struct PortDataType<short> : PortDataTypeCode<9> {};
template <> struct PortDataType<unsigned int> : PortDataTypeCode<10> {};
template <> struct PortDataType<int> : PortDataTypeCode<11> {};
template <> struct PortDataType<unsigned long> : PortDataTypeCode<12> {};
template <> struct PortDataType<long> : PortDataTypeCode<13> {};
template <> struct PortDataType<float> : PortDataTypeCode<14> {};
template <> struct PortDataType<double> : PortDataTypeCode<15> {};

/// Fixed strings of 8-bit units, whatever their capacity.
template <int N>
struct PortDataType<Gds::StaticString<N, char>> : PortDataTypeCode<42> {};

/// Fixed strings of 16-bit units, whatever their capacity.
template <int N>
struct PortDataType<Gds::StaticString<N, char16_t>> : PortDataTypeCode<46> {};

/// An array has the code of its element type; its extents are its array dimensions.
template <class T, std::size_t N>
struct PortDataType<T[N]> : PortDataTypeCode<PortDataType<T>::Code> {};

} // namespace Zon::Plc::Commons::Meta
