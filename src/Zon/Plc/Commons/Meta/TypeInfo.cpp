#include "Zon/Plc/Commons/Meta/TypeInfo.hpp"

namespace Zon::Plc::Commons::Meta {

const TypeInfo TypeInfo::Empty{};

std::uint64_t TypeInfo::GetEffectiveSize() const noexcept
{
    return size != 0 ? size : DataTypeEnum(dataType).GetSize();
}

} // namespace Zon::Plc::Commons::Meta
