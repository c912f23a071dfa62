#include "Zon/Host/TypeLibrary.hpp"

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <typeindex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Zon/Enumerator.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"

namespace Zon::Host {

using Plc::Commons::DataType;
using Plc::Commons::DataTypeEnum;
using Plc::Commons::DataTypePointerBit;
using Plc::Commons::Meta::ArrayDimensions;
using Plc::Commons::Meta::ChildTypeInfo;
using Plc::Commons::Meta::TypeIdentifier;
using Plc::Commons::Meta::TypeInfo;
using System::Commons::ArgumentException;

/// One described type. Its members are kept in a list that enumerators share: a member added while
/// an enumerator holds the list goes into a copy that replaces it, so that enumerators handed out
/// before keep a consistent view; with no enumerator out, it is appended in place (a structure of
/// many members, such as a program instance with thousands of ports, is then built in linear time).
/// Beside the list, an index maps each member's name to its place, so that the check for a
/// duplicate name and the search of a member by name do not walk the list; members are never
/// removed and a copy of the list keeps the places, so the index stays true for every copy.
struct TypeLibrary::Entry {
    struct NameHash {
        using is_transparent = void;
        /// FNV-1a over the bytes, inline: type and member names are short, and the path walk
        /// hashes two of them per member.
        std::size_t operator()(std::string_view name) const noexcept
        {
            std::uint64_t hash = 14695981039346656037ULL;
            for (const char character : name) {
                hash = (hash ^ static_cast<unsigned char>(character)) * 1099511628211ULL;
            }
            return static_cast<std::size_t>(hash);
        }
    };

    TypeInfo info;
    bool isStruct = false;
    const std::type_info* cppType = nullptr;
    std::shared_ptr<std::vector<ChildTypeInfo>> children = std::make_shared<std::vector<ChildTypeInfo>>();
    std::unordered_map<std::string, std::size_t, NameHash, std::equal_to<>> childPlaces;

    /// The member named `name`, or null.
    const ChildTypeInfo* FindChild(std::string_view name) const
    {
        auto found = childPlaces.find(name);
        return found != childPlaces.end() ? &(*children)[found->second] : nullptr;
    }
};

struct TypeLibrary::Impl {
    String libraryName;
    String namespaceName;
    std::vector<std::unique_ptr<Entry>> entries;
    /// Each entry's name to the entry (names are unique in a library), so that finding a type by
    /// name does not walk the entries.
    std::unordered_map<std::string, Entry*, Entry::NameHash, std::equal_to<>> byName;
    std::map<std::type_index, Entry*> byCppType;
    std::vector<const TypeLibrary*> used;
    DataType nextUserCode = DataTypeEnum::FirstUserType;

    Entry* FindByName(const String& name) const
    {
        auto found = byName.find(name.View());
        return found != byName.end() ? found->second : nullptr;
    }

    /// Appends `entry` to the entries and enters its name.
    Entry& Append(std::unique_ptr<Entry> entry)
    {
        Entry& result = *entry;
        byName.emplace(result.info.typeIdentifier.GetName().ToStdString(), &result);
        try {
            entries.push_back(std::move(entry));
        } catch (...) {
            byName.erase(result.info.typeIdentifier.GetName().ToStdString());
            throw;
        }
        return result;
    }

    Entry* Find(const TypeIdentifier& type) const
    {
        if (type.GetNamespace() != namespaceName) {
            return nullptr;
        }
        return FindByName(type.GetName());
    }

    /// The member `name` of `type` as kept in its entry, or `ChildTypeInfo::Empty`.
    const ChildTypeInfo& FindChild(const TypeIdentifier& type, std::string_view name) const
    {
        if (const Entry* entry = Find(type)) {
            if (const ChildTypeInfo* child = entry->FindChild(name)) {
                return *child;
            }
        }
        return ChildTypeInfo::Empty;
    }

    Entry* FindByCppType(const std::type_info& type) const
    {
        auto found = byCppType.find(std::type_index(type));
        return found != byCppType.end() ? found->second : nullptr;
    }

    template <class T>
    void AddBase(DataType code)
    {
        auto entry = std::make_unique<Entry>();
        entry->info.dataType = code;
        entry->info.typeIdentifier = TypeIdentifier(namespaceName, CommonTypeName<T>());
        entry->info.size = 0;
        entry->info.alignment = alignof(T);
        entry->cppType = &typeid(T);
        byCppType[std::type_index(typeid(T))] = &Append(std::move(entry));
    }
};

TypeLibrary::TypeLibrary(String libraryName, String namespaceName) : impl(std::make_unique<Impl>())
{
    impl->libraryName = std::move(libraryName);
    impl->namespaceName = std::move(namespaceName);
    impl->AddBase<bool>(DataTypeEnum::Boolean);
    impl->AddBase<unsigned char>(DataTypeEnum::UInt8);
    impl->AddBase<signed char>(DataTypeEnum::Int8);
    impl->AddBase<char>(DataTypeEnum::Char8);
    impl->AddBase<char16_t>(DataTypeEnum::Char16);
    impl->AddBase<unsigned short>(DataTypeEnum::UInt16);
    impl->AddBase<short>(DataTypeEnum::Int16);
    impl->AddBase<unsigned int>(DataTypeEnum::UInt32);
    impl->AddBase<int>(DataTypeEnum::Int32);
    impl->AddBase<unsigned long>(DataTypeEnum::UInt64);
    impl->AddBase<long>(DataTypeEnum::Int64);
    impl->AddBase<float>(DataTypeEnum::Float32);
    impl->AddBase<double>(DataTypeEnum::Float64);
}

TypeLibrary::~TypeLibrary() = default;

TypeLibrary::Entry& TypeLibrary::AddTypeEntry(const std::type_info& cppType, const String& cppName, const String& name,
                                              DataType code, std::uint64_t size, std::uint64_t alignment)
{
    if (code == 0 || code > 64) {
        throw ArgumentException("Type '{0}' needs a base type code from 1 to 64, not {1}", name, code);
    }
    if (impl->FindByCppType(cppType) != nullptr) {
        throw ArgumentException("Type '{0}' is already described in namespace '{1}'", cppName, impl->namespaceName);
    }
    if (impl->FindByName(name) != nullptr) {
        throw ArgumentException("Type name '{0}' is already used in namespace '{1}'", name, impl->namespaceName);
    }
    auto entry = std::make_unique<Entry>();
    entry->info.dataType = code;
    entry->info.typeIdentifier = TypeIdentifier(impl->namespaceName, name);
    entry->info.size = size;
    entry->info.alignment = alignment;
    entry->cppType = &cppType;
    auto& result = impl->Append(std::move(entry));
    impl->byCppType[std::type_index(cppType)] = &result;
    return result;
}

TypeLibrary::Entry& TypeLibrary::AddStructEntry(const std::type_info* cppType, const String& cppName,
                                                const String& name, std::uint64_t size, std::uint64_t alignment)
{
    if (cppType != nullptr && impl->FindByCppType(*cppType) != nullptr) {
        throw ArgumentException("Type '{0}' is already described in namespace '{1}'", cppName, impl->namespaceName);
    }
    if (impl->FindByName(name) != nullptr) {
        throw ArgumentException("Type name '{0}' is already used in namespace '{1}'", name, impl->namespaceName);
    }
    if (impl->nextUserCode > DataTypeEnum::LastUserType) {
        throw ArgumentException("No user type code is left in namespace '{0}' for type '{1}'", impl->namespaceName, name);
    }
    auto entry = std::make_unique<Entry>();
    entry->info.dataType = impl->nextUserCode++;
    entry->info.typeIdentifier = TypeIdentifier(impl->namespaceName, name);
    entry->info.size = size;
    entry->info.alignment = alignment;
    entry->isStruct = true;
    entry->cppType = cppType;
    auto& result = impl->Append(std::move(entry));
    if (cppType != nullptr) {
        impl->byCppType[std::type_index(*cppType)] = &result;
    }
    return result;
}

TypeLibrary::Entry& TypeLibrary::GetStructEntry(const std::type_info* cppType, const String& name)
{
    Entry* entry = cppType != nullptr ? impl->FindByCppType(*cppType) : impl->FindByName(name);
    if (entry == nullptr || !entry->isStruct) {
        throw ArgumentException("Structure '{0}' is not described in namespace '{1}'", name, impl->namespaceName);
    }
    return *entry;
}

StructDescription TypeLibrary::AddStruct(const String& name, std::uint64_t size, std::uint64_t alignment)
{
    return StructDescription(*this, AddStructEntry(nullptr, name, name, size, alignment));
}

StructDescription TypeLibrary::GetStruct(const String& name)
{
    return StructDescription(*this, GetStructEntry(nullptr, name));
}

bool TypeLibrary::RemoveType(const String& name)
{
    auto& entries = impl->entries;
    auto found = std::find_if(entries.begin(), entries.end(),
                              [&](const auto& entry) { return entry->info.typeIdentifier.GetName() == name; });
    if (found == entries.end()) {
        return false;
    }
    if ((*found)->cppType != nullptr) {
        impl->byCppType.erase(std::type_index(*(*found)->cppType));
    }
    impl->byName.erase(name.ToStdString());
    entries.erase(found);
    return true;
}

TypeLibrary& TypeLibrary::Uses(const TypeLibrary& other)
{
    if (&other != this && std::find(impl->used.begin(), impl->used.end(), &other) == impl->used.end()) {
        impl->used.push_back(&other);
    }
    return *this;
}

bool TypeLibrary::TryDescribe(const std::type_info& type, TypeInfo& result) const
{
    if (const Entry* entry = impl->FindByCppType(type)) {
        result = entry->info;
        return true;
    }
    for (const TypeLibrary* other : impl->used) {
        if (const Entry* entry = other->impl->FindByCppType(type)) {
            result = entry->info;
            return true;
        }
    }
    return false;
}

void TypeLibrary::ThrowNotDescribed(const String& cppName) const
{
    throw ArgumentException("Type '{0}' is not described in namespace '{1}'", cppName, impl->namespaceName);
}

TypeInfo TypeLibrary::GetTypeInfo(const String& name) const
{
    const Entry* entry = impl->FindByName(name);
    return entry != nullptr ? entry->info : TypeInfo::Empty;
}

const String& TypeLibrary::GetLibraryName() const
{
    return impl->libraryName;
}

const char* TypeLibrary::GetNamespaceName() const
{
    return impl->namespaceName.CStr();
}

Plc::Commons::Meta::ITypeInfoProvider& TypeLibrary::GetTypeInfoProvider(bool /*reload*/)
{
    return *this;
}

IEnumerator<TypeInfo>::Ptr TypeLibrary::GetTypes()
{
    auto types = std::make_shared<std::vector<TypeInfo>>();
    types->reserve(impl->entries.size());
    for (const auto& entry : impl->entries) {
        types->push_back(entry->info);
    }
    return Enumerator<TypeInfo>::Over(std::shared_ptr<const std::vector<TypeInfo>>(std::move(types)));
}

IEnumerator<ChildTypeInfo>::Ptr TypeLibrary::GetChildren(const TypeIdentifier& type)
{
    const Entry* entry = impl->Find(type);
    if (entry == nullptr) {
        return std::make_shared<Enumerator<ChildTypeInfo>::Empty>();
    }
    return Enumerator<ChildTypeInfo>::Over(std::shared_ptr<const std::vector<ChildTypeInfo>>(entry->children));
}

TypeInfo TypeLibrary::GetTypeInfo(const TypeIdentifier& type)
{
    const Entry* entry = impl->Find(type);
    return entry != nullptr ? entry->info : TypeInfo::Empty;
}

bool TypeLibrary::HasType(const TypeIdentifier& type)
{
    return impl->Find(type) != nullptr;
}

ChildTypeInfo TypeLibrary::GetChildInfo(const TypeIdentifier& type, const String& name)
{
    return impl->FindChild(type, name.View());
}

const ChildTypeInfo& TypeLibrary::FindChildInfo(const TypeIdentifier& type, std::string_view name,
                                                ChildTypeInfo& /*storage*/)
{
    return impl->FindChild(type, name);
}

// StructDescription -----------------------------------------------------------------------------

StructDescription& StructDescription::MemberAt(const String& name, std::uint64_t offset, const TypeInfo& type)
{
    const TypeInfo& parent = entry->info;
    if (type.dataType == 0) {
        throw ArgumentException("Member '{0}' of type '{1}' has no type", name, parent.typeIdentifier.GetFullName());
    }
    if (entry->FindChild(name.View()) != nullptr) {
        throw ArgumentException("Member '{0}' is already described in type '{1}'", name,
                                parent.typeIdentifier.GetFullName());
    }
    // The bytes that the member takes inside the structure: a pointer, or its elements.
    std::uint64_t footprint = sizeof(void*);
    if ((type.dataType & DataTypePointerBit) == 0) {
        footprint = type.GetEffectiveSize();
        for (const auto& dimension : type.arrayDimensions) {
            if (__builtin_mul_overflow(footprint, std::uint64_t{dimension.elementCount}, &footprint)) {
                footprint = UINT64_MAX;
                break;
            }
        }
    }
    if (offset > parent.size || footprint > parent.size - offset) {
        throw ArgumentException("Member '{0}' at offset {1} with {2} bytes does not fit into type '{3}' of {4} bytes",
                                name, offset, footprint, parent.typeIdentifier.GetFullName(), parent.size);
    }
    ChildTypeInfo child;
    static_cast<TypeInfo&>(child) = type;
    child.name = name;
    child.offset = offset;
    if (entry->children.use_count() != 1) {
        entry->children = std::make_shared<std::vector<ChildTypeInfo>>(*entry->children);
    }
    const std::size_t place = entry->children->size();
    entry->children->push_back(std::move(child));
    try {
        entry->childPlaces.emplace(name.ToStdString(), place);
    } catch (...) {
        entry->children->pop_back();
        throw;
    }
    return *this;
}

TypeIdentifier StructDescription::GetTypeIdentifier() const
{
    return entry->info.typeIdentifier;
}

TypeInfo StructDescription::GetTypeInfo() const
{
    return entry->info;
}

TypeInfo StructDescription::WithDimensions(TypeInfo type, std::initializer_list<std::uint32_t> dimensions)
{
    if (dimensions.size() != 0) {
        type.arrayDimensions.clear();
        for (auto count : dimensions) {
            type.arrayDimensions.push_back({count, 0});
        }
    }
    return type;
}

void StructDescription::CheckDimensions(const String& name, std::initializer_list<std::uint32_t> dimensions,
                                        std::uint64_t elementCount) const
{
    std::uint64_t product = 1;
    for (auto count : dimensions) {
        product *= count;
    }
    if (dimensions.size() == 0 || product != elementCount) {
        throw ArgumentException("Dimensions of member '{0}' of type '{1}' cover {2} elements instead of {3}", name,
                                entry->info.typeIdentifier.GetFullName(), dimensions.size() == 0 ? 0 : product,
                                elementCount);
    }
}

} // namespace Zon::Host
