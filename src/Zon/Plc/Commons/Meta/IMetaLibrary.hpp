#pragma once

#include "Zon/Plc/Commons/Meta/ITypeInfoProvider.hpp"

namespace Zon::Plc::Commons::Meta {

/// The type meta data side of a library. An object that offers it derives from both
/// `Zon::System::Acf::ILibrary` and `IMetaLibrary`, and is found by a run-time cast.
class IMetaLibrary {
public:
    virtual ~IMetaLibrary() = default;

    /// The namespace of the library's types, never null.
    virtual const char* GetNamespaceName() const = 0;
    /// The library's type descriptions, valid while the library lives. `reload` asks the
    /// library to refresh them first where it caches them from elsewhere.
    virtual ITypeInfoProvider& GetTypeInfoProvider(bool reload) = 0;
};

} // namespace Zon::Plc::Commons::Meta
