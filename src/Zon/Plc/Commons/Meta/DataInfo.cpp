#include "Zon/Plc/Commons/Meta/DataInfo.hpp"

#include <utility>

namespace Zon::Plc::Commons::Meta {

const DataInfo DataInfo::Empty{};

DataInfo::DataInfo(const DataTag& tag, ArrayDimensions arrayDimensions)
    : DataTag(tag), arrayDimensions(std::move(arrayDimensions))
{
}

} // namespace Zon::Plc::Commons::Meta
