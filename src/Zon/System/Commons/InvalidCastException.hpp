#pragma once

#include "Zon/Exception.hpp"

namespace Zon::System::Commons {

/// A value cannot be converted to the type asked for.
ZON_DECLARE_EXCEPTION(InvalidCastException);

} // namespace Zon::System::Commons
