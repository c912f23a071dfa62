#pragma once

#include "VarnixBase/Commons/Meta/DataFilter.hpp"
#include "Zon/BasicString.hpp"
#include "Zon/IEnumerator.hpp"
#include "Zon/Plc/Commons/Meta/DataInfo.hpp"
#include "Zon/Plc/Commons/Meta/DataTag.hpp"
#include "Zon/Plc/Commons/Meta/TypeInfo.hpp"

namespace VarnixBase::Commons::Meta {

/// Access to the variables of the registered components: all root variables, and the record of
/// one variable path ("Component/Root.member[1][2].member").
class IDataBrowser {
public:
    virtual ~IDataBrowser() = default;

    /// The root variables of all components, by component name, each in its component's order.
    virtual Zon::IEnumerator<const Zon::Plc::Commons::Meta::DataInfo&>::Ptr GetRoots() = 0;
    /// The members of a variable.
    virtual Zon::IEnumerator<const Zon::Plc::Commons::Meta::DataInfo&>::Ptr
    GetChildren(const Zon::Plc::Commons::Meta::DataTag& parent) = 0;
    /// The variables that pass a filter.
    virtual Zon::IEnumerator<const Zon::Plc::Commons::Meta::DataInfo&>::Ptr Find(const DataFilter& filter) = 0;
    /// The record of the variable a path names: name, data type, type and address.
    virtual Zon::Plc::Commons::Meta::DataInfo GetDataInfo(const Zon::String& variablePath) = 0;
    /// The description of the type of the variable a path names.
    virtual Zon::Plc::Commons::Meta::TypeInfo GetTypeInfo(const Zon::String& variablePath) = 0;
};

} // namespace VarnixBase::Commons::Meta
