#pragma once

namespace Zon::Plc::Commons::Meta::TypeSystem {

/// The controller's domain of types that a program instance belongs to. The firmware hands one to
/// each program's constructor; on the host it carries nothing, and a program only stores it.
class TypeDomain {
public:
    TypeDomain() = default;
    TypeDomain(const TypeDomain&) = delete;
    TypeDomain& operator=(const TypeDomain&) = delete;
};

} // namespace Zon::Plc::Commons::Meta::TypeSystem
