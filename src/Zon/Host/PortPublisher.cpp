#include "Zon/Host/PortPublisher.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "Zon/Plc/Commons/DataType.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"

namespace Zon::Host {

using Zon::Plc::Commons::DataType;
using Zon::Plc::Commons::DataTypePointerBit;
using Zon::Plc::Commons::Meta::ArrayDimension;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::TypeIdentifier;
using Zon::Plc::Commons::Meta::TypeInfo;
using Zon::System::Commons::ArgumentException;

namespace {

constexpr DataType BaseMask = 0xFF;

bool IsUserCode(DataType code)
{
    return code >= 65 && code <= 254;
}

/// Base codes must be equal. A structure is published with the first user code, whatever code the
/// type library gave it: any user code matches any other.
bool SameKind(DataType described, DataType published)
{
    return described == published || (IsUserCode(described) && IsUserCode(published));
}

/// The type name of one element: an array's common type name without its extents ("int [2][3]"
/// gives "int"); any other name as it is.
String ElementTypeName(const DynamicPortsBuilder::Entry& entry)
{
    const std::string& name = entry.typeName.ToStdString();
    if (entry.arrayDimensions.empty()) {
        return entry.typeName;
    }
    std::size_t end = name.size();
    while (end > 0 && name[end - 1] == ']') {
        std::size_t open = name.rfind('[', end - 1);
        if (open == std::string::npos) {
            break;
        }
        end = open;
    }
    while (end > 0 && name[end - 1] == ' ') {
        --end;
    }
    return end == 0 ? entry.typeName : String(name.substr(0, end));
}

/// The size of one element: the whole size shared out over the elements of every dimension.
std::size_t ElementSize(const DynamicPortsBuilder::Entry& entry)
{
    std::size_t count = 1;
    for (std::uint32_t extent : entry.arrayDimensions) {
        count *= extent;
    }
    return count == 0 ? entry.size : entry.size / count;
}

struct Publication {
    String component;
    String root;
    String typeName;
    std::unique_ptr<void*[]> addresses;
};

} // namespace

struct PortPublisher::Impl {
    explicit Impl(TypeLibrary& library) : library(library) {}

    TypeLibrary& library;
    std::map<String, std::unique_ptr<Component>> components;
    std::map<String, Publication> publications;

    /// The description of the memory one entry points at. For an array, that is its element type
    /// with the array's dimensions: the walk of a path steps from element to element by the size
    /// of the type, so the size is the element's, and the name is the element type's, by which
    /// connectors are matched.
    TypeInfo DescribeEntry(const DynamicPortsBuilder::Entry& entry) const
    {
        const String typeName = ElementTypeName(entry);
        const std::size_t elementSize = ElementSize(entry);
        TypeInfo type = library.GetTypeInfo(typeName);
        DataType base = entry.dataType & BaseMask;
        if (type.dataType == 0) {
            if (base == 0 || base > 64) {
                throw ArgumentException("Port `{0}` has type `{1}`, which the type library does not describe",
                                        entry.name, entry.typeName);
            }
            // A base type or a fixed string of a capacity nobody registered: the code says it all.
            type.dataType = entry.dataType;
            type.typeIdentifier = TypeIdentifier(String(library.GetNamespaceName()), typeName);
            type.size = elementSize;
            type.alignment = entry.alignment;
        } else if (!SameKind(type.dataType & BaseMask, base)) {
            throw ArgumentException("Port `{0}` is published with data type code {1}, but the type library describes "
                                    "`{2}` with code {3}",
                                    entry.name, base, entry.typeName, type.dataType & BaseMask);
        }
        type.arrayDimensions.clear();
        for (std::uint32_t extent : entry.arrayDimensions) {
            type.arrayDimensions.push_back(ArrayDimension{extent, 0});
        }
        type.dataType |= DataTypePointerBit;
        return type;
    }
};

PortPublisher::PortPublisher(TypeLibrary& library) : impl(std::make_unique<Impl>(library)) {}

PortPublisher::~PortPublisher() = default;

TypeLibrary& PortPublisher::GetTypeLibrary() const noexcept
{
    return impl->library;
}

Component& PortPublisher::Publish(const String& instancePath, const DynamicPortsBuilder& builder)
{
    std::size_t slash = instancePath.Find('/');
    if (slash == String::NPos || slash == 0 || slash + 1 >= instancePath.Length() ||
        instancePath.Find('/', slash + 1) != String::NPos) {
        throw ArgumentException("Instance path `{0}` must have the form COMPONENT/PROGRAM", instancePath);
    }
    if (impl->publications.count(instancePath) != 0) {
        throw ArgumentException("Instance path `{0}` is published already", instancePath);
    }
    String componentName = instancePath.Substr(0, slash);
    String rootName = instancePath.Substr(slash + 1);
    std::string typeName = instancePath.ToStdString();
    std::replace(typeName.begin(), typeName.end(), '/', '.');

    const auto& entries = builder.GetEntries();
    std::vector<TypeInfo> memberTypes;
    memberTypes.reserve(entries.size());
    for (const auto& entry : entries) {
        memberTypes.push_back(impl->DescribeEntry(entry));
    }

    Publication publication;
    publication.component = componentName;
    publication.root = rootName;
    publication.typeName = String(typeName);
    std::size_t slots = std::max<std::size_t>(entries.size(), 1);
    publication.addresses = std::make_unique<void*[]>(slots);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        publication.addresses[i] = entries[i].address;
    }

    auto description = impl->library.AddStruct(publication.typeName, slots * sizeof(void*), alignof(void*));
    try {
        for (std::size_t i = 0; i < entries.size(); ++i) {
            description.MemberAt(entries[i].name, i * sizeof(void*), memberTypes[i]);
        }
        auto& slot = impl->components[componentName];
        if (!slot) {
            slot = std::make_unique<Component>(componentName, impl->library);
        }
        slot->AddVariable(rootName, publication.addresses.get(), description.GetTypeInfo());
    } catch (...) {
        impl->library.RemoveType(publication.typeName);
        throw;
    }
    Component& component = *impl->components[componentName];
    impl->publications.emplace(instancePath, std::move(publication));
    return component;
}

bool PortPublisher::Withdraw(const String& instancePath)
{
    auto found = impl->publications.find(instancePath);
    if (found == impl->publications.end()) {
        return false;
    }
    if (Component* component = FindComponent(found->second.component)) {
        component->RemoveVariable(found->second.root);
    }
    impl->library.RemoveType(found->second.typeName);
    impl->publications.erase(found);
    return true;
}

Component* PortPublisher::FindComponent(const String& name) const
{
    auto found = impl->components.find(name);
    return found != impl->components.end() ? found->second.get() : nullptr;
}

} // namespace Zon::Host
