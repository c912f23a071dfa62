#pragma once

#include "Zon/Exception.hpp"

namespace Zon::System::Commons {

/// An argument does not fit what the operation accepts.
ZON_DECLARE_EXCEPTION(ArgumentException);

} // namespace Zon::System::Commons
