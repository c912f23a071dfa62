// Out-of-line destructors anchor the virtual tables of the exception classes in this library.
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/IndexOutOfRangeException.hpp"
#include "Zon/System/Commons/InvalidCastException.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/NotImplementedException.hpp"
#include "Zon/System/Commons/ParseException.hpp"
#include "Zon/System/Commons/Io/NotExistException.hpp"

namespace Zon::System::Commons {

ArgumentException::~ArgumentException() = default;
InvalidConfigException::~InvalidConfigException() = default;
InvalidOperationException::~InvalidOperationException() = default;
IndexOutOfRangeException::~IndexOutOfRangeException() = default;
ParseException::~ParseException() = default;
InvalidCastException::~InvalidCastException() = default;
NotImplementedException::~NotImplementedException() = default;

namespace Io {
NotExistException::~NotExistException() = default;
} // namespace Io

} // namespace Zon::System::Commons
