#pragma once

#include <list>
#include <memory>

#include "Zon/BasicString.hpp"
#include "VarnixBase/Core/PortSystem/IParameter.hpp"

namespace VarnixBase::Core::PortSystem {

template <class T>
class Parameter;

/// The parameters of one port or connector, by name, in order of adding. No two have the same
/// name; names compare exactly (length, then bytes, so case-sensitively). Look-ups walk the list
/// from the front and the first match wins.
class ParameterProvider {
public:
    ParameterProvider() = default;

    /// True and `parameter` set on a match; false and `parameter` emptied otherwise.
    bool TryGetParameter(String const& name, std::shared_ptr<IParameter>& parameter) const;
    /// The parameter of that name. Throws `Zon::System::Commons::ArgumentException`
    /// "Parameter `{0}` not found" when there is none.
    std::shared_ptr<IParameter> GetParameter(String const& name) const;
    /// True when a parameter of that name exists.
    bool HasParameter(String const& name) const;
    /// True when a parameter of the argument's name exists: it compares names, not identity.
    /// An empty argument throws `Zon::System::Commons::ArgumentException`.
    bool HasParameter(std::shared_ptr<IParameter> parameter) const;

    /// Number of parameters.
    std::size_t Count() const noexcept { return parameters.size(); }

    /// Creates the parameter `name` of type `T` (`bool` or `double`) holding `defaultValue` in a
    /// cell of its own, appends it at the end and returns it. The provider keeps shared ownership,
    /// so the reference stays valid as long as the provider lives. A name that is taken throws
    /// `Zon::System::Commons::ArgumentException` "Parameter `{0}` already exists" before anything
    /// is created; the first parameter of that name stays. No other check is made on the name:
    /// the empty name is a name like any other.
    template <class T>
    Parameter<T>& AddParameter(String const& name, T defaultValue);

protected:
    /// Appends `parameter` at the end. Throws `Zon::System::Commons::ArgumentException`
    /// "Parameter `{0}` already exists" when the name is taken (the list is then unchanged), and
    /// when `parameter` is empty.
    void Append(std::shared_ptr<IParameter> parameter);

private:
    std::list<std::shared_ptr<IParameter>> parameters;
};

} // namespace VarnixBase::Core::PortSystem
