#include "VarnixBase/Core/PortSystem/ParameterProvider.hpp"

#include <utility>

#include "Zon/System/Commons/ArgumentException.hpp"
#include "VarnixBase/Core/PortSystem/Parameter.hpp"

namespace VarnixBase::Core::PortSystem {

using Zon::System::Commons::ArgumentException;

bool ParameterProvider::TryGetParameter(String const& name, std::shared_ptr<IParameter>& parameter) const
{
    for (const auto& entry : parameters) {
        if (entry->GetName() == name) {
            parameter = entry;
            return true;
        }
    }
    parameter.reset();
    return false;
}

std::shared_ptr<IParameter> ParameterProvider::GetParameter(String const& name) const
{
    std::shared_ptr<IParameter> parameter;
    if (!TryGetParameter(name, parameter)) {
        throw ArgumentException("Parameter `{0}` not found", name);
    }
    return parameter;
}

bool ParameterProvider::HasParameter(String const& name) const
{
    for (const auto& entry : parameters) {
        if (entry->GetName() == name) {
            return true;
        }
    }
    return false;
}

bool ParameterProvider::HasParameter(std::shared_ptr<IParameter> parameter) const
{
    if (parameter == nullptr) {
        throw ArgumentException("Parameter argument is empty");
    }
    return HasParameter(parameter->GetName());
}

void ParameterProvider::Append(std::shared_ptr<IParameter> parameter)
{
    if (HasParameter(parameter)) {
        throw ArgumentException("Parameter `{0}` already exists", parameter->GetName());
    }
    parameters.push_back(std::move(parameter));
}

template <class T>
Parameter<T>& ParameterProvider::AddParameter(String const& name, T defaultValue)
{
    if (HasParameter(name)) {
        throw ArgumentException("Parameter `{0}` already exists", name);
    }
    auto parameter = std::make_shared<Parameter<T>>(name, defaultValue);
    Parameter<T>& result = *parameter;
    Append(std::move(parameter));
    return result;
}

template Parameter<bool>& ParameterProvider::AddParameter<bool>(String const& name, bool defaultValue);
template Parameter<double>& ParameterProvider::AddParameter<double>(String const& name, double defaultValue);

} // namespace VarnixBase::Core::PortSystem
