#include "VarnixBase/Core/PortSystem/Parameter.hpp"

#include <memory>

#include "Zon/CommonTypeName.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "VarnixBase/Commons/Iec61131/Convert.hpp"

namespace VarnixBase::Core::PortSystem {

template <class T>
Parameter<T>::Parameter(const String& name, T defaultValue) : name(name)
{
    // A zero-initialised cell of its own, then the default in it.
    auto cell = std::make_shared<T>();
    value = Commons::Meta::DataAccessValue<T>(std::move(cell));
    *value.GetDataPointer() = defaultValue;
}

template <class T>
const String& Parameter<T>::GetName() const
{
    return name;
}

template <class T>
void Parameter<T>::Bind(String const& reference)
{
    if (!TryBind(reference)) {
        throw Zon::System::Commons::ArgumentException("Unable to bind parameter `{}` to `{}`.", GetName(), reference);
    }
}

template <class T>
bool Parameter<T>::TryBind(String const& reference)
{
    Commons::Meta::DataAccessValue<T> bound(reference);
    value = bound;
    return true;
}

template <class T>
void Parameter<T>::SetValueByString(String const& text)
{
    T parsed{};
    if (!Commons::Iec61131::Convert::TryParse(text, parsed)) {
        throw Zon::System::Commons::InvalidConfigException("Parameter `{0}` of type `{1}` has invalid configuration `{2}`",
                                                           GetName(), Zon::CommonTypeName<T>(), text);
    }
    T* address = value.GetDataPointer();
    if (address == nullptr) {
        throw Zon::System::Commons::InvalidOperationException("Parameter `{0}` is bound to no variable address",
                                                              GetName());
    }
    *address = parsed;
}

template class Parameter<bool>;
template class Parameter<double>;

} // namespace VarnixBase::Core::PortSystem
