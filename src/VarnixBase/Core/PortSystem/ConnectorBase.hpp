#pragma once

#include "Zon/BasicString.hpp"
#include "VarnixBase/Commons/Meta/DataAccessValue.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorBaseImpl.hpp"

namespace VarnixBase::Core::PortSystem {

/// A connector that reads an `I` at one variable path and writes an `O` at another. Both paths
/// are resolved once, at construction, through the meta data (`DataAccessValue`), so the variables
/// must exist then: ports are published before connectors are made. A path that does not resolve
/// fails here with the browser's exception; one that resolves to no address is refused (see
/// `ConnectorBaseImpl::CheckDataAddress`). `Execute` stays pure.
///
/// `I` and `O` are numeric value types, or for text `StaticStringAdapter<char>` or
/// `StaticStringAdapter<char16_t>` on both sides.
template <class I, class O>
class ConnectorBase : public ConnectorBaseImpl {
public:
    using InputType = I;
    using OutputType = O;

    ConnectorBase(const String& name, const String& startPath, const String& endPath)
        : ConnectorBaseImpl(name), source(startPath), destination(endPath)
    {
        CheckDataAddress(source.GetDataPointer(), startPath);
        CheckDataAddress(destination.GetDataPointer(), endPath);
    }
    ~ConnectorBase() override = default;

protected:
    /// Handle on the start port's data.
    Commons::Meta::DataAccessValue<I> source;
    /// Handle on the end port's data.
    Commons::Meta::DataAccessValue<O> destination;
};

} // namespace VarnixBase::Core::PortSystem
