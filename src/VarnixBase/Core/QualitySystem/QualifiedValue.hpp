#pragma once

#include <cstdint>

#include "Zon/Plc/Commons/Meta/PortDataType.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"

namespace VarnixBase::Core::QualitySystem {

/// A value with the time of its last change and its quality, published to the controller as one
/// structure. The order and widths of the fields are what the controller sees:
/// `timestamp` (signed 64-bit, microseconds since the Unix epoch), `quality`, then `value`.
/// A new record has time stamp 0, quality `Good`/`None` and a zero or empty value.
template <class T>
struct QualifiedValue {
    std::int64_t timestamp = 0;
    Quality quality{};
    T value{};
};

} // namespace VarnixBase::Core::QualitySystem

/// A qualified value is published as a structure: it carries the user-type code.
template <class T>
struct Zon::Plc::Commons::Meta::PortDataType<VarnixBase::Core::QualitySystem::QualifiedValue<T>>
    : Zon::Plc::Commons::Meta::PortDataTypeCode<Zon::Plc::Commons::Meta::UserTypeCode> {};
