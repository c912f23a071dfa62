#pragma once

#include <memory>
#include <type_traits>

#include "Zon/BasicString.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/IEnumerator.hpp"
#include "Zon/Plc/Commons/DataType.hpp"
#include "Zon/Plc/Commons/Meta/DataInfo.hpp"
#include "Zon/Plc/Commons/Meta/IDataInfoProvider.hpp"
#include "Zon/Plc/Commons/Meta/IMetaComponent.hpp"
#include "Zon/Plc/Commons/Meta/TypeInfo.hpp"
#include "Zon/System/Acf/IComponent.hpp"

namespace Zon::Host {

/// A component on the host: a name, the type library it belongs to, and root variables that
/// live in the application's own memory. Its variables are typed through its library:
///
///     Zon::Host::TypeLibrary library("DemoLibrary", "Demo");
///     library.AddStruct<Root>("Root").Member("a", &Root::a);
///     Zon::Host::Component component("Comp", library);
///     component.AddVariable("Root", root);                 // "Comp/Root" is `root`
///     component.AddIndirectVariable("Current", &current);  // "Comp/Current" is `*current`
///
/// The component records addresses only: the variables must outlive their declaration here
/// (or be removed first), and the component must be removed from browsing before it goes.
/// Failures of declaration throw `Zon::System::Commons::ArgumentException`.
class Component : public System::Acf::IComponent,
                  public Plc::Commons::Meta::IMetaComponent,
                  public Plc::Commons::Meta::IDataInfoProvider {
public:
    Component(String name, TypeLibrary& library);
    ~Component() override;
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;

    /// Declares the root variable `name` that is `object`, with the description of `T` from the
    /// library. A pointer variable is an indirect root (`DataTypePointerBit` in its data type):
    /// browsing follows the pointer that it holds.
    template <class T>
    Component& AddVariable(const String& name, T& object)
    {
        return AddVariable(name, static_cast<const void*>(std::addressof(object)), library().Describe<T>());
    }

    /// Declares the root variable `name` that is the `T` to which `*pointerAddress` points at the
    /// time of browsing. The record holds `pointerAddress` with the flags `DataTypeIndirectMask`
    /// (0x1200). A null `pointerAddress` is recorded as it is.
    template <class T>
    Component& AddIndirectVariable(const String& name, T* const* pointerAddress)
    {
        auto type = library().Describe<T>();
        type.dataType |= Plc::Commons::DataTypeIndirectMask;
        return AddVariable(name, static_cast<const void*>(pointerAddress), type);
    }

    /// Declares the root variable `name` at `address` with a description from the library
    /// (`Describe<T>()`, `GetTypeInfo(name)`, a `StructDescription`'s `GetTypeInfo()`), flags
    /// included. Throws for a name declared already or a type without data type.
    Component& AddVariable(const String& name, const void* address, const Plc::Commons::Meta::TypeInfo& type);

    /// Removes the root variable `name`; false if there is none.
    bool RemoveVariable(const String& name);

    /// The record of the root variable `name`, or null.
    const Plc::Commons::Meta::DataInfo* FindVariable(const String& name) const;

    // IComponent, IMetaComponent, IDataInfoProvider ------------------------------------------

    const String& GetComponentName() const override;
    System::Acf::ILibrary& GetLibrary() const override;
    /// This component itself; `reload` has no effect, as the variables are always current.
    Plc::Commons::Meta::IDataInfoProvider& GetDataInfoProvider(bool reload) override;
    /// The root variables in order of declaration. A variable declared while an enumeration runs
    /// appears in it if the enumeration has not ended; one removed must not be the current one.
    /// Past the end, `GetCurrent()` gives `DataInfo::Empty`: an unknown root is answered with the
    /// empty record.
    IEnumerator<const Plc::Commons::Meta::DataInfo&>::Ptr GetRootEnumerator() override;

    /// The type library the variables are typed with.
    TypeLibrary& GetTypeLibrary() const;

private:
    TypeLibrary& library() const { return GetTypeLibrary(); }

    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace Zon::Host
