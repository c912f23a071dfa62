#include "VarnixBase/Commons/Meta/TypeBrowser.hpp"

#include <memory>

#include "Zon/Enumerator.hpp"
#include "Zon/Plc/Commons/DataTypeEnum.hpp"

namespace VarnixBase::Commons::Meta {

using Zon::String;
using Zon::Plc::Commons::DataTypeEnum;
using Zon::Plc::Commons::Meta::ChildTypeInfo;
using Zon::Plc::Commons::Meta::IMetaLibrary;
using Zon::Plc::Commons::Meta::TypeIdentifier;
using Zon::Plc::Commons::Meta::TypeInfo;

namespace {

// The field counts shown in the trace lines of the two descriptions.
constexpr int TypeInfoFieldCount = 7;
constexpr int ChildTypeInfoFieldCount = 10;

struct KeyOf {
    template <class Entry>
    const String& operator()(const Entry& entry) const noexcept
    {
        return entry.first;
    }
};

// The size for a trace line: the record's own, or that of its data type when the record has 0.
std::uint64_t SizeForTrace(const TypeInfo& info)
{
    return info.size != 0 ? info.size : DataTypeEnum(info.dataType).GetSize();
}

/// Whether trace lines are written at all: the type names in them are formed only then.
bool Tracing() noexcept
{
    using Zon::System::Commons::Diagnostics::Logging::LoggerBase;
    using Zon::System::Commons::Diagnostics::Logging::LogLevel;
    return LoggerBase::IsEnabled(LogLevel::Trace);
}

} // namespace

TypeBrowser::TypeBrowser() = default;

TypeBrowser::~TypeBrowser() = default;

Zon::IEnumerator<String>::Ptr TypeBrowser::GetNamespaces()
{
    using Adapter = Zon::Enumerator<String>::StlAdapter<ProviderMap::const_iterator, KeyOf>;
    return std::make_shared<Adapter>(typeProviders.cbegin(), typeProviders.cend());
}

Zon::IEnumerator<TypeInfo>::Ptr TypeBrowser::GetTypes(const String& nameSpace)
{
    auto found = typeProviders.find(nameSpace);
    if (found == typeProviders.end()) {
        GetLogger().Trace("  browse: namespace={} not available", nameSpace);
        return std::make_shared<Zon::Enumerator<TypeInfo>::Empty>();
    }
    GetLogger().Trace("  browse: namespace={}", nameSpace);
    return found->second.get().GetTypes();
}

Zon::IEnumerator<ChildTypeInfo>::Ptr TypeBrowser::GetChildren(const TypeIdentifier& type)
{
    auto found = typeProviders.find(type.GetNamespace());
    if (found == typeProviders.end()) {
        if (Tracing()) {
            GetLogger().Trace("  browse: type={} not available", type.GetFullName());
        }
        return std::make_shared<Zon::Enumerator<ChildTypeInfo>::Empty>();
    }
    if (Tracing()) {
        GetLogger().Trace("  browse: type={}", type.GetFullName());
    }
    return found->second.get().GetChildren(type);
}

TypeInfo TypeBrowser::GetTypeInfo(const TypeIdentifier& type)
{
    auto found = typeProviders.find(type.GetNamespace());
    if (found == typeProviders.end()) {
        if (Tracing()) {
            GetLogger().Trace("  browse: type={} not available", type.GetFullName());
        }
        return TypeInfo::Empty;
    }
    TypeInfo info = found->second.get().GetTypeInfo(type);
    if (Tracing()) {
        GetLogger().Trace("  browse: type={}, size={}, alignment={}, fields={}", type.GetFullName(),
                          SizeForTrace(info), info.alignment, TypeInfoFieldCount);
    }
    return info;
}

ChildTypeInfo TypeBrowser::GetChildInfo(const TypeIdentifier& type, const String& name)
{
    auto found = typeProviders.find(type.GetNamespace());
    if (found == typeProviders.end()) {
        GetLogger().Trace("  browse: child={} not available", name);
        return ChildTypeInfo::Empty;
    }
    ChildTypeInfo child = found->second.get().GetChildInfo(type, name);
    TraceChild(name, child);
    return child;
}

const ChildTypeInfo& TypeBrowser::FindChildInfo(const TypeIdentifier& type, std::string_view name,
                                                ChildTypeInfo& storage)
{
    auto found = typeProviders.find(type.GetNamespace());
    if (found == typeProviders.end()) {
        GetLogger().Trace("  browse: child={} not available", name);
        return ChildTypeInfo::Empty;
    }
    const ChildTypeInfo& child = found->second.get().FindChildInfo(type, name, storage);
    TraceChild(name, child);
    return child;
}

void TypeBrowser::TraceChild(std::string_view name, const ChildTypeInfo& child)
{
    if (Tracing()) {
        GetLogger().Trace("  browse: child={}, name={}, offset={}, size={}, fields={}", name,
                          child.typeIdentifier.GetFullName(), child.offset, SizeForTrace(child),
                          ChildTypeInfoFieldCount);
    }
}

void TypeBrowser::Add(IMetaLibrary& library)
{
    String name(library.GetNamespaceName());
    if (typeProviders.find(name) != typeProviders.end()) {
        GetLogger().Debug("Namespace was already added: {0}", name);
        return;
    }
    GetLogger().Info("Add type namespace: {0}", name);
    typeProviders.emplace(name, std::ref(library.GetTypeInfoProvider(false)));
}

void TypeBrowser::Remove(IMetaLibrary& library)
{
    String name(library.GetNamespaceName());
    auto found = typeProviders.find(name);
    if (found == typeProviders.end()) {
        return;
    }
    GetLogger().Debug("Remove namespace {0}", name);
    typeProviders.erase(found);
}

} // namespace VarnixBase::Commons::Meta
