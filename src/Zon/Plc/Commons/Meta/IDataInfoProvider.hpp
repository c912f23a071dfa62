#pragma once

#include "Zon/IEnumerator.hpp"
#include "Zon/Plc/Commons/Meta/DataInfo.hpp"

namespace Zon::Plc::Commons::Meta {

/// Gives the root variables of a component.
class IDataInfoProvider {
public:
    virtual ~IDataInfoProvider() = default;

    /// An enumerator over the component's root variables, in the component's order. The records
    /// live in the provider: they stay valid while the component keeps the variable.
    virtual IEnumerator<const DataInfo&>::Ptr GetRootEnumerator() = 0;
};

} // namespace Zon::Plc::Commons::Meta
