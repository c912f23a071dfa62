#pragma once

#include "Zon/BasicString.hpp"

namespace Zon::System::Acf {

/// A library of the component framework: the unit in which components and their type
/// descriptions are shipped. A library that carries type meta data also derives from
/// `Zon::Plc::Commons::Meta::IMetaLibrary`.
class ILibrary {
public:
    virtual ~ILibrary() = default;

    /// The library's name.
    virtual const String& GetLibraryName() const = 0;
};

} // namespace Zon::System::Acf
