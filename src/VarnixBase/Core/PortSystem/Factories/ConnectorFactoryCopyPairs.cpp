// The built-in "copy" pairs of the connector factory, in their own translation unit: each pair
// instantiates its creator, and the two families together make one heavy unit.

#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "VarnixBase/Core/PortSystem/CopyConnector.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/PortSystem/Factories/detail/PairMatrix.hpp"

namespace VarnixBase::Core::PortSystem {

void ConnectorFactory::AddCopyConnectors()
{
    const String copy("copy");
    detail::AddMatrix<CopyConnector>(*this, copy, detail::NumericTypes{}, detail::NumericTypes{});
    using Commons::Gds::StaticStringAdapter;
    AddFactoryMethod<CopyConnector<StaticStringAdapter<char>, StaticStringAdapter<char>>>(copy);
    AddFactoryMethod<CopyConnector<StaticStringAdapter<char16_t>, StaticStringAdapter<char16_t>>>(copy);
}

} // namespace VarnixBase::Core::PortSystem
