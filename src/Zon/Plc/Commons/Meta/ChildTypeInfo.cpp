#include "Zon/Plc/Commons/Meta/ChildTypeInfo.hpp"

namespace Zon::Plc::Commons::Meta {

const ChildTypeInfo ChildTypeInfo::Empty{};

} // namespace Zon::Plc::Commons::Meta
