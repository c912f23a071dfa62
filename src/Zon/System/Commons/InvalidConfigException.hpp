#pragma once

#include "Zon/Exception.hpp"

namespace Zon::System::Commons {

/// A configuration (a document, a literal in it) is not valid.
ZON_DECLARE_EXCEPTION(InvalidConfigException);

} // namespace Zon::System::Commons
