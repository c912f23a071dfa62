#pragma once

#include "Zon/Plc/Commons/Gds/StaticString.hpp"
#include "VarnixBase/Core/PortSystem/PortBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/PortValueTraits.hpp"

namespace VarnixBase::Core::PortSystem {

/// A port with a value of type `T`: adds the typed pair `SetValue` and `GetValue`. Fixed
/// strings are taken by const reference, everything else by value.
template <class T>
class PortBase : public PortBaseImpl {
public:
    using ValueType = T;
    using ArgumentType = typename PortValueTraits<T>::ArgumentType;

    PortBase(const String& name, unsigned long dimension) : PortBaseImpl(name, dimension) {}
    ~PortBase() override = default;

    /// Stores `value`.
    virtual void SetValue(ArgumentType value) = 0;
    /// The stored value, by value.
    virtual T GetValue() const = 0;
};

extern template class PortBase<bool>;
extern template class PortBase<signed char>;
extern template class PortBase<unsigned char>;
extern template class PortBase<short>;
extern template class PortBase<unsigned short>;
extern template class PortBase<int>;
extern template class PortBase<unsigned int>;
extern template class PortBase<long>;
extern template class PortBase<unsigned long>;
extern template class PortBase<float>;
extern template class PortBase<double>;
extern template class PortBase<Zon::Plc::Commons::Gds::StaticString<80, char>>;
extern template class PortBase<Zon::Plc::Commons::Gds::StaticString<512, char>>;
extern template class PortBase<Zon::Plc::Commons::Gds::StaticString<80, char16_t>>;
extern template class PortBase<Zon::Plc::Commons::Gds::StaticString<512, char16_t>>;

} // namespace VarnixBase::Core::PortSystem
