#pragma once

#include "Zon/Exception.hpp"

namespace Zon::System::Commons::Io {

/// A file or directory that an operation needs does not exist.
ZON_DECLARE_EXCEPTION(NotExistException);

} // namespace Zon::System::Commons::Io
