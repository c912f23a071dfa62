#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"

#include <typeinfo>

#include "VarnixBase/Commons/Meta/DataBrowser.hpp"
#include "VarnixBase/Commons/Meta/TypeBrowser.hpp"
#include "Zon/Plc/Commons/Meta/IMetaComponent.hpp"
#include "Zon/Plc/Commons/Meta/IMetaLibrary.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogManager.hpp"

namespace VarnixBase::Commons::Meta {

using Zon::Plc::Commons::Meta::IMetaComponent;
using Zon::Plc::Commons::Meta::IMetaLibrary;
using Zon::System::Acf::IComponent;
using Logger = Zon::System::Commons::Diagnostics::Logging::Loggable<MetaInfoProvider>;

struct MetaInfoProvider::Impl {
    DataBrowser dataBrowser;
    TypeBrowser typeBrowser;
};

MetaInfoProvider& MetaInfoProvider::GetInstance()
{
    static MetaInfoProvider instance;
    return instance;
}

MetaInfoProvider::MetaInfoProvider()
{
    Zon::System::Commons::Diagnostics::Logging::LogManager::GetInstance();
    Logger::GetLogger();
    impl = std::make_unique<Impl>();
}

MetaInfoProvider::~MetaInfoProvider() = default;

IDataBrowser& MetaInfoProvider::GetDataBrowser()
{
    return impl->dataBrowser;
}

ITypeBrowser& MetaInfoProvider::GetTypeBrowser()
{
    return impl->typeBrowser;
}

void MetaInfoProvider::Add(IComponent& component)
{
    try {
        (void)dynamic_cast<IMetaComponent&>(component);
    } catch (const std::bad_cast&) {
        Logger::GetLogger().Warning("Unable to register component. Needs to be derived from IMetaComponent and IComponent");
        return;
    }
    IMetaLibrary* library = nullptr;
    try {
        library = &dynamic_cast<IMetaLibrary&>(component.GetLibrary());
    } catch (const std::bad_cast&) {
        Logger::GetLogger().Warning("Unable to register library. Needs to be derived from IMetaLibrary and ILibrary");
    }
    if (library != nullptr) {
        impl->typeBrowser.Add(*library);
    }
    impl->dataBrowser.Add(component);
}

void MetaInfoProvider::Remove(IComponent& component)
{
    try {
        (void)dynamic_cast<IMetaComponent&>(component);
    } catch (const std::bad_cast&) {
        Logger::GetLogger().Warning("Unable to remove component. Needs to be derived from IMetaComponent and IComponent");
        return;
    }
    impl->dataBrowser.Remove(component);
    IMetaLibrary* library = nullptr;
    try {
        library = &dynamic_cast<IMetaLibrary&>(component.GetLibrary());
    } catch (const std::bad_cast&) {
        Logger::GetLogger().Warning("Unable to remove library. Needs to be derived from IMetaLibrary and ILibrary");
        return;
    }
    impl->typeBrowser.Remove(*library);
}

} // namespace VarnixBase::Commons::Meta
