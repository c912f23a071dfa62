#pragma once

#include <functional>
#include <map>
#include <string_view>

#include "VarnixBase/Commons/Meta/ITypeBrowser.hpp"
#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/IMetaLibrary.hpp"
#include "Zon/Plc/Commons/Meta/ITypeInfoProvider.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"

namespace VarnixBase::Commons::Meta {

/// Answers questions about types by forwarding each to the type information provider of the
/// type's namespace. The providers stay with their libraries: the browser holds references to
/// them, one per namespace, and caches nothing. An unknown namespace gets an empty answer (an
/// empty enumerator, `TypeInfo::Empty`, `ChildTypeInfo::Empty`) and a trace line; exceptions of
/// a provider pass through. The one instance lives in `MetaInfoProvider`, which adds and
/// removes the libraries. No lock is taken: registration must not overlap with browsing.
class TypeBrowser : public ITypeBrowser,
                    public Zon::System::Commons::Diagnostics::Logging::Loggable<TypeBrowser> {
public:
    /// An empty browser. Sets up the class logger, which needs the platform's log manager.
    TypeBrowser();
    ~TypeBrowser() override;
    TypeBrowser(const TypeBrowser&) = delete;
    TypeBrowser& operator=(const TypeBrowser&) = delete;

    /// Runs over the namespaces in ascending order, on the live table: it must not be used across
    /// a `Remove` of the namespace it stands on.
    Zon::IEnumerator<Zon::String>::Ptr GetNamespaces() override;
    Zon::IEnumerator<Zon::Plc::Commons::Meta::TypeInfo>::Ptr GetTypes(const Zon::String& nameSpace) override;
    Zon::IEnumerator<Zon::Plc::Commons::Meta::ChildTypeInfo>::Ptr
    GetChildren(const Zon::Plc::Commons::Meta::TypeIdentifier& type) override;
    Zon::Plc::Commons::Meta::TypeInfo GetTypeInfo(const Zon::Plc::Commons::Meta::TypeIdentifier& type) override;
    Zon::Plc::Commons::Meta::ChildTypeInfo GetChildInfo(const Zon::Plc::Commons::Meta::TypeIdentifier& type,
                                                        const Zon::String& name) override;
    const Zon::Plc::Commons::Meta::ChildTypeInfo& FindChildInfo(const Zon::Plc::Commons::Meta::TypeIdentifier& type,
                                                                std::string_view name,
                                                                Zon::Plc::Commons::Meta::ChildTypeInfo& storage) override;

    /// Registers the library's provider under its namespace name. A namespace that is known
    /// already keeps its first provider (debug line "Namespace was already added: {0}").
    void Add(Zon::Plc::Commons::Meta::IMetaLibrary& library);
    /// Forgets the library's namespace, whichever library registered it; silent if unknown.
    void Remove(Zon::Plc::Commons::Meta::IMetaLibrary& library);

private:
    /// The trace line of a member's answer, written only when tracing is on.
    static void TraceChild(std::string_view name, const Zon::Plc::Commons::Meta::ChildTypeInfo& child);

    using ProviderMap = std::map<Zon::String, std::reference_wrapper<Zon::Plc::Commons::Meta::ITypeInfoProvider>>;

    ProviderMap typeProviders;
};

} // namespace VarnixBase::Commons::Meta
