#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/System/Acf/ILibrary.hpp"

namespace Zon::System::Acf {

/// A component of the component framework: a named unit that belongs to a library. A component
/// whose variables can be browsed also derives from `Zon::Plc::Commons::Meta::IMetaComponent`.
class IComponent {
public:
    virtual ~IComponent() = default;

    /// The component's name: the part of a variable path before the first "/".
    virtual const String& GetComponentName() const = 0;
    /// The library the component belongs to.
    virtual ILibrary& GetLibrary() const = 0;
};

} // namespace Zon::System::Acf
