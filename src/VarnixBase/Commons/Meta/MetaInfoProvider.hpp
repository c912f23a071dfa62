#pragma once

#include <memory>

#include "VarnixBase/Commons/Meta/IDataBrowser.hpp"
#include "VarnixBase/Commons/Meta/ITypeBrowser.hpp"
#include "Zon/System/Acf/IComponent.hpp"

namespace VarnixBase::Commons::Meta {

/// The single entry to meta data browsing: owns the one `DataBrowser` and the one
/// `TypeBrowser`, and is where the application that hosts components announces them. A
/// component that offers meta data derives from `IComponent` and `IMetaComponent`; its library,
/// if it describes types, from `ILibrary` and `IMetaLibrary`.
///
/// Wrongly typed components are reported at warning level and otherwise ignored. No lock is
/// taken: `Add` and `Remove` must not overlap with each other or with browsing, and a component
/// must be removed before it or its library goes.
class MetaInfoProvider {
public:
    /// The one instance, created on the first call. Its creation sets up class loggers and so
    /// needs the platform's application domain with its log manager; if that fails, the next
    /// call tries again.
    static MetaInfoProvider& GetInstance();

    ~MetaInfoProvider();
    MetaInfoProvider(const MetaInfoProvider&) = delete;
    MetaInfoProvider& operator=(const MetaInfoProvider&) = delete;

    IDataBrowser& GetDataBrowser();
    ITypeBrowser& GetTypeBrowser();

    /// Registers the component's library with the type browser (if it is an `IMetaLibrary`) and
    /// the component with the data browser.
    void Add(Zon::System::Acf::IComponent& component);
    /// Takes the component from the data browser and its library's namespace from the type
    /// browser, also when other registered components share that library.
    void Remove(Zon::System::Acf::IComponent& component);

private:
    MetaInfoProvider();

    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace VarnixBase::Commons::Meta
