#pragma once

// Registration of connector classes over a matrix of value types, for the connector factory's
// built-in pairs. Not part of the public interface.

#include "Zon/BasicString.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"

namespace VarnixBase::Core::PortSystem::detail {

template <class... T>
struct TypeList {};

/// The numeric value types, in the order in which their pairs are registered.
using NumericTypes = TypeList<bool, signed char, unsigned char, short, unsigned short, int, unsigned int, long,
                              unsigned long, float, double>;
/// The numeric value types without `bool`, in the same order.
using ScaleTypes = TypeList<signed char, unsigned char, short, unsigned short, int, unsigned int, long,
                            unsigned long, float, double>;

/// Registers `Connector<In, Out>` for every `Out`, in order.
template <template <class, class> class Connector, class In, class... Out>
void AddRow(ConnectorFactory& factory, const Zon::String& type, TypeList<Out...>)
{
    (factory.AddFactoryMethod<Connector<In, Out>>(type), ...);
}

/// Registers `Connector<In, Out>` for every pair, the input in the outer loop.
template <template <class, class> class Connector, class... In, class Outputs>
void AddMatrix(ConnectorFactory& factory, const Zon::String& type, TypeList<In...>, Outputs outputs)
{
    (AddRow<Connector, In>(factory, type, outputs), ...);
}

} // namespace VarnixBase::Core::PortSystem::detail
