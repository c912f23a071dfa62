#include "Zon/Exception.hpp"

namespace Zon {

Exception::~Exception() = default;

} // namespace Zon
