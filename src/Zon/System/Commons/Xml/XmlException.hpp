#pragma once

#include "Zon/Exception.hpp"

namespace Zon::System::Commons::Xml {

/// An XML document cannot be opened, read or written: it is not well-formed, it does not have the
/// shape that the operation expects, or the parser or writer failed.
ZON_DECLARE_EXCEPTION(XmlException);

} // namespace Zon::System::Commons::Xml
