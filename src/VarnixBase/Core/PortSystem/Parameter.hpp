#pragma once

#include "Zon/BasicString.hpp"
#include "VarnixBase/Commons/Meta/DataAccessValue.hpp"
#include "VarnixBase/Core/PortSystem/IParameter.hpp"

namespace VarnixBase::Core::PortSystem {

/// A named setting of type `T` (`bool` or `double`). Its value lies either in a heap cell of its
/// own (its default, or a literal set by `SetValueByString`) or, after `TryBind`/`Bind`, in the
/// controller variable named by a variable path. There is no way back from bound to owned; a
/// second bind moves the address.
///
/// Parameters are created by `ParameterProvider::AddParameter<T>` and owned through a
/// `std::shared_ptr` of this type. Cyclic code reads the value with `GetValue`, two dependent
/// loads and no look-up, and so follows a bound variable from one cycle to the next.
template <class T>
class Parameter : public IParameter {
public:
    /// A parameter named `name` whose value is a new heap cell holding `defaultValue`.
    Parameter(const String& name, T defaultValue);
    Parameter(const Parameter&) = delete;
    Parameter& operator=(const Parameter&) = delete;
    ~Parameter() = default;

    const String& GetName() const override;
    /// Calls `TryBind`, through the virtual call; when it answers false, throws
    /// `Zon::System::Commons::ArgumentException` "Unable to bind parameter `{}` to `{}`." with the
    /// name and `reference`.
    void Bind(String const& reference) override;
    /// Resolves `reference` as a variable path and points the value at that variable, releasing
    /// the parameter's own cell. Always true: a failure of the resolution leaves as its exception
    /// (the parameter is then unchanged), and a path that resolves to no address (an unknown
    /// component, a path without component) leaves the parameter bound to a null address.
    bool TryBind(String const& reference) override;
    /// Parses `value` as an IEC 61131 literal of `T` and stores it where the value lies (after a
    /// bind, in the controller variable). A text that is no such literal throws
    /// `Zon::System::Commons::InvalidConfigException` "Parameter `{0}` of type `{1}` has invalid
    /// configuration `{2}`" with the name, the common type name of `T` and the text; a parameter
    /// bound to a null address throws `Zon::System::Commons::InvalidOperationException`. Either
    /// way the value is unchanged.
    void SetValueByString(String const& value) override;

    /// The current value, read directly through the address (no look-up, no virtual call). A
    /// parameter bound to a null address reads as zero (`false`, 0.0) rather than touching memory.
    T GetValue() const noexcept
    {
        const T* address = value.GetDataPointer();
        return address != nullptr ? *address : T{};
    }

    /// The handle through which the value is reached.
    const Commons::Meta::DataAccessValue<T>& GetDataAccessValue() const noexcept { return value; }

private:
    String name;
    Commons::Meta::DataAccessValue<T> value;
};

extern template class Parameter<bool>;
extern template class Parameter<double>;

} // namespace VarnixBase::Core::PortSystem
