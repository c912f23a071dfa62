#pragma once

#include "Zon/BasicString.hpp"

namespace Zon::Plc::Commons::Meta {

/// A named text attached to a type description (a unit, a display hint). Carried along with the
/// type; browsing does not read it.
struct CustomAttribute {
    String name;
    String value;
};

} // namespace Zon::Plc::Commons::Meta
