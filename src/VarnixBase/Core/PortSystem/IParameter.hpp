#pragma once

#include "Zon/BasicString.hpp"

namespace VarnixBase::Core::PortSystem {

using Zon::String;

/// A named setting of a port or a connector, whose value is owned or bound to a controller
/// variable by path.
///
/// The interface has no virtual destructor: a parameter is always owned through a
/// `std::shared_ptr` made from its concrete type, whose deleter runs the right destructor. The
/// destructor is protected so that nobody deletes a parameter through this interface.
class IParameter {
public:
    /// The parameter's name.
    virtual const String& GetName() const = 0;
    /// Binds the value to the controller variable at `reference`; throws on failure.
    virtual void Bind(String const& reference) = 0;
    /// Binds the value to the controller variable at `reference`; the result tells success.
    virtual bool TryBind(String const& reference) = 0;
    /// Sets the value from its text form; throws on failure.
    virtual void SetValueByString(String const& value) = 0;

protected:
    IParameter() = default;
    IParameter(const IParameter&) = default;
    IParameter& operator=(const IParameter&) = default;
    ~IParameter() = default;
};

} // namespace VarnixBase::Core::PortSystem
