#include "Zon/System/Commons/Xml/XmlException.hpp"

namespace Zon::System::Commons::Xml {

XmlException::~XmlException() = default;

} // namespace Zon::System::Commons::Xml
