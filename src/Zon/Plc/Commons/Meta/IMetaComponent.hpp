#pragma once

#include "Zon/Plc/Commons/Meta/IDataInfoProvider.hpp"

namespace Zon::Plc::Commons::Meta {

/// The variable meta data side of a component. An object that offers it derives from both
/// `Zon::System::Acf::IComponent` and `IMetaComponent`, and is found by a run-time cast.
class IMetaComponent {
public:
    virtual ~IMetaComponent() = default;

    /// The component's variables, valid while the component lives. `reload` asks the component
    /// to refresh them first where it caches them from elsewhere.
    virtual IDataInfoProvider& GetDataInfoProvider(bool reload) = 0;
};

} // namespace Zon::Plc::Commons::Meta
