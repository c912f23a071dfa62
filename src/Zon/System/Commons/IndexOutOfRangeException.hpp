#pragma once

#include "Zon/Exception.hpp"

namespace Zon::System::Commons {

/// An index lies outside the range it addresses.
ZON_DECLARE_EXCEPTION(IndexOutOfRangeException);

} // namespace Zon::System::Commons
