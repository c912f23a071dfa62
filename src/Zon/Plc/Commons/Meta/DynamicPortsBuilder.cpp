#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"

#include <utility>

namespace Zon::Plc::Commons::Meta {

void DynamicPortsBuilder::AddPort(const String& name, std::uint32_t dataType, const String& typeName,
                                  std::size_t size, std::size_t alignment, std::vector<std::uint32_t> arrayDimensions,
                                  StandardAttribute attributes, void* address)
{
    Entry entry;
    entry.name = name;
    entry.dataType = dataType;
    entry.typeName = typeName;
    entry.size = size;
    entry.alignment = alignment;
    entry.arrayDimensions = std::move(arrayDimensions);
    entry.attributes = attributes;
    entry.address = address;
    entries.push_back(std::move(entry));
}

} // namespace Zon::Plc::Commons::Meta
