#pragma once

#include "Zon/Exception.hpp"

namespace Zon::System::Commons {

/// An operation exists in an interface but has no implementation.
/// Thrown as `NotImplementedException(NotImplementedException::defaultMessage, signature)`.
class NotImplementedException : public Zon::Exception {
public:
    /// The format into which an operation's signature goes.
    static constexpr const char* defaultMessage = "The operation '{0}' is not implemented.";

    using Zon::Exception::Exception;
    ~NotImplementedException() override;
};

} // namespace Zon::System::Commons
