#pragma once

#include "Zon/Exception.hpp"

namespace Zon::System::Commons {

/// The operation is not valid in the object's current state.
ZON_DECLARE_EXCEPTION(InvalidOperationException);

} // namespace Zon::System::Commons
