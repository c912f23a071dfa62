// The built-in "scale" pairs of the connector factory, in their own translation unit: each pair
// instantiates its creator, and the two families together make one heavy unit.

#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/PortSystem/Factories/detail/PairMatrix.hpp"
#include "VarnixBase/Core/PortSystem/ScaleConnector.hpp"

namespace VarnixBase::Core::PortSystem {

void ConnectorFactory::AddScaleConnectors()
{
    detail::AddMatrix<ScaleConnector>(*this, String("scale"), detail::ScaleTypes{}, detail::ScaleTypes{});
}

} // namespace VarnixBase::Core::PortSystem
