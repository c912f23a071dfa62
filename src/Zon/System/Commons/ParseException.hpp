#pragma once

#include "Zon/Exception.hpp"

namespace Zon::System::Commons {

/// A text could not be parsed.
ZON_DECLARE_EXCEPTION(ParseException);

} // namespace Zon::System::Commons
