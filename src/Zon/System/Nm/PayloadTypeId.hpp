#pragma once

#include <fmt/ostream.h>

#include "Zon/EnumStrings.hpp"
#include "Zon/System/Nm/IdType.hpp"

namespace Zon::System::Nm {

/// Tells payload type ids apart from other ids.
struct PayloadTypeIdTag {};

/// The id that the notification manager gives a payload type; 0 means "not known".
using PayloadTypeId = IdType<unsigned short, PayloadTypeIdTag>;

} // namespace Zon::System::Nm

ZON_FORMAT_AS_OSTREAM(Zon::System::Nm::PayloadTypeId);
