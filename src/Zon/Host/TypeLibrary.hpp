#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <type_traits>
#include <typeinfo>

#include "Zon/BasicString.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/IEnumerator.hpp"
#include "Zon/Plc/Commons/DataType.hpp"
#include "Zon/Plc/Commons/Meta/ChildTypeInfo.hpp"
#include "Zon/Plc/Commons/Meta/IMetaLibrary.hpp"
#include "Zon/Plc/Commons/Meta/ITypeInfoProvider.hpp"
#include "Zon/Plc/Commons/Meta/TypeIdentifier.hpp"
#include "Zon/Plc/Commons/Meta/TypeInfo.hpp"
#include "Zon/System/Acf/ILibrary.hpp"

namespace Zon::Host {

class StructDescription;
template <class T>
class StructBuilder;

/// A library of type meta data on the host: the one place where the host describes types to the
/// controller's meta data browsing. All its types lie in one namespace.
///
/// It knows from the start the base types `bool`, `unsigned char`, `signed char`, `char`,
/// `char16_t`, `unsigned short`, `short`, `unsigned int`, `int`, `unsigned long`, `long`, `float`
/// and `double`, each named by its common type name ("int") with the matching base code and
/// size 0 (the size follows from the code). Further C++ types are registered once, and from then
/// on every member and variable of that type refers to the registration:
///
///     library.AddStruct<Inner>("Inner").Member("b", &Inner::b);
///     library.AddStruct<Root>("Root").Member("a", &Root::a).Array("m", &Root::m, {3, 4}).Pointer("p", &Root::p);
///     library.AddFixedString<Text80>("Text80");
///     library.AddType<Mode>("Mode", DataTypeEnum::UInt8);
///
/// A structure gets the next free user type code (65 up to 254) and its `sizeof` and `alignof`.
/// Members are described with member pointers, so their offsets come from the compiler; C arrays
/// get their dimensions from their extents, pointers get `DataTypePointerBit` and the type they
/// point to. An enumeration that is not registered is described as its underlying type. A
/// structure whose layout exists only at run time (no C++ type) is built with the non-template
/// `AddStruct(name, size, alignment)` and `MemberAt`/`PointerAt`.
///
/// Registration and browsing must not overlap; enumerators handed out keep the descriptions they
/// started with. Failures of registration throw `Zon::System::Commons::ArgumentException`.
class TypeLibrary : public System::Acf::ILibrary,
                    public Plc::Commons::Meta::IMetaLibrary,
                    public Plc::Commons::Meta::ITypeInfoProvider {
public:
    /// A library named `libraryName` whose types lie in the namespace `namespaceName`.
    TypeLibrary(String libraryName, String namespaceName);
    ~TypeLibrary() override;
    TypeLibrary(const TypeLibrary&) = delete;
    TypeLibrary& operator=(const TypeLibrary&) = delete;

    // Registration ---------------------------------------------------------------------------

    /// Registers the structure `T` under `name` (its common type name by default) and returns a
    /// builder for its members. Throws when `T` or the name is registered already.
    template <class T>
    StructBuilder<T> AddStruct(const String& name = CommonTypeName<T>());

    /// A builder for the members of the structure `T` registered before.
    template <class T>
    StructBuilder<T> GetStruct();

    /// Registers a structure that exists only as a layout of `size` bytes: its members are
    /// described with offsets.
    StructDescription AddStruct(const String& name, std::uint64_t size, std::uint64_t alignment);

    /// A builder for the members of the structure named `name` registered before.
    StructDescription GetStruct(const String& name);

    /// Registers the C++ type `T` under `name` with a base type code (1 to 64): an enumeration
    /// with a code of its own name, a record that the controller treats as a base type.
    template <class T>
    TypeLibrary& AddType(const String& name, Plc::Commons::DataType code)
    {
        AddTypeEntry(typeid(std::remove_cv_t<T>), CommonTypeName<T>(), name, code, sizeof(T), alignof(T));
        return *this;
    }

    /// Registers the fixed-capacity string `T`, whose units are `Unit` (`char` gives code 42,
    /// `char16_t` code 46), under `name` (its common type name by default).
    template <class T, class Unit = char>
    TypeLibrary& AddFixedString(const String& name = CommonTypeName<T>())
    {
        static_assert(std::is_same_v<Unit, char> || std::is_same_v<Unit, char16_t>,
                      "a fixed string has 8-bit (char) or 16-bit (char16_t) units");
        constexpr Plc::Commons::DataType code = std::is_same_v<Unit, char> ? Plc::Commons::DataTypeEnum::StaticString
                                                                           : Plc::Commons::DataTypeEnum::StaticWString;
        return AddType<T>(name, code);
    }

    /// Removes the type named `name`; members of other types that refer to it keep their
    /// description. False when there is no such type.
    bool RemoveType(const String& name);

    /// Lets members and variables refer to the types of `other` (looked up after this library's
    /// own). Their identifiers keep `other`'s namespace, so `other` must be registered for
    /// browsing too, and must outlive this library.
    TypeLibrary& Uses(const TypeLibrary& other);

    // Description of C++ types ---------------------------------------------------------------

    /// The description of the C++ type `T` as a member or variable has it: registered types and
    /// base types as registered, enumerations as their underlying type, C arrays as their element
    /// type with the array's dimensions, pointers as the type pointed to with
    /// `DataTypePointerBit`. Throws when `T` (or its element) is not registered.
    template <class T>
    Plc::Commons::Meta::TypeInfo Describe() const;

    /// The description of a registered C++ type, found by its run-time type information.
    /// False when the type is registered neither here nor in a library that this one uses.
    bool TryDescribe(const std::type_info& type, Plc::Commons::Meta::TypeInfo& result) const;

    /// The description of the type named `name` of this library; `TypeInfo::Empty` if none.
    Plc::Commons::Meta::TypeInfo GetTypeInfo(const String& name) const;

    // ILibrary, IMetaLibrary ----------------------------------------------------------------

    const String& GetLibraryName() const override;
    const char* GetNamespaceName() const override;
    /// This library itself; `reload` has no effect, as the descriptions are always current.
    Plc::Commons::Meta::ITypeInfoProvider& GetTypeInfoProvider(bool reload) override;

    // ITypeInfoProvider (types of other namespaces are unknown here) --------------------------

    /// Every type, base types first, then in order of registration.
    IEnumerator<Plc::Commons::Meta::TypeInfo>::Ptr GetTypes() override;
    IEnumerator<Plc::Commons::Meta::ChildTypeInfo>::Ptr GetChildren(const Plc::Commons::Meta::TypeIdentifier& type) override;
    Plc::Commons::Meta::TypeInfo GetTypeInfo(const Plc::Commons::Meta::TypeIdentifier& type) override;
    bool HasType(const Plc::Commons::Meta::TypeIdentifier& type) override;
    Plc::Commons::Meta::ChildTypeInfo GetChildInfo(const Plc::Commons::Meta::TypeIdentifier& type,
                                                   const String& name) override;
    /// The member's record as the library keeps it, or `ChildTypeInfo::Empty`; `storage` is not
    /// used. The record stays valid until a member is added to the type or the type is removed.
    const Plc::Commons::Meta::ChildTypeInfo& FindChildInfo(const Plc::Commons::Meta::TypeIdentifier& type,
                                                           std::string_view name,
                                                           Plc::Commons::Meta::ChildTypeInfo& storage) override;

private:
    friend class StructDescription;
    template <class T>
    friend class StructBuilder;
    struct Entry;
    struct Impl;

    Entry& AddTypeEntry(const std::type_info& cppType, const String& cppName, const String& name,
                        Plc::Commons::DataType code, std::uint64_t size, std::uint64_t alignment);
    Entry& AddStructEntry(const std::type_info* cppType, const String& cppName, const String& name, std::uint64_t size,
                          std::uint64_t alignment);
    /// The structure registered for `cppType`, or (when it is null) under `name`; throws if none.
    Entry& GetStructEntry(const std::type_info* cppType, const String& name);
    [[noreturn]] void ThrowNotDescribed(const String& cppName) const;

    template <class T>
    static void AppendExtents(Plc::Commons::Meta::ArrayDimensions& dimensions)
    {
        if constexpr (std::is_array_v<T>) {
            dimensions.push_back({static_cast<std::uint32_t>(std::extent_v<T>), 0});
            AppendExtents<std::remove_extent_t<T>>(dimensions);
        }
    }

    std::unique_ptr<Impl> impl;
};

template <class T>
Plc::Commons::Meta::TypeInfo TypeLibrary::Describe() const
{
    if constexpr (std::is_array_v<T>) {
        using Element = std::remove_cv_t<std::remove_all_extents_t<T>>;
        static_assert(std::extent_v<T> > 0, "arrays of unknown bound cannot be described");
        static_assert(!std::is_pointer_v<Element>,
                      "arrays of pointers cannot be described: a pointer member with dimensions points to an array");
        auto info = Describe<Element>();
        info.arrayDimensions.clear();
        AppendExtents<T>(info.arrayDimensions);
        return info;
    } else if constexpr (std::is_pointer_v<T>) {
        using Target = std::remove_cv_t<std::remove_pointer_t<T>>;
        static_assert(!std::is_pointer_v<Target> && !std::is_array_v<Target> && !std::is_void_v<Target>
                          && !std::is_function_v<Target>,
                      "a pointer member points to one described value (or the first of an array)");
        auto info = Describe<Target>();
        info.dataType |= Plc::Commons::DataTypePointerBit;
        return info;
    } else {
        using Plain = std::remove_cv_t<T>;
        Plc::Commons::Meta::TypeInfo info;
        if (TryDescribe(typeid(Plain), info)) {
            return info;
        }
        if constexpr (std::is_enum_v<Plain>) {
            return Describe<std::underlying_type_t<Plain>>();
        } else {
            ThrowNotDescribed(CommonTypeName<Plain>());
        }
    }
}

} // namespace Zon::Host

#include "Zon/Host/StructBuilder.hpp"

namespace Zon::Host {

template <class T>
StructBuilder<T> TypeLibrary::AddStruct(const String& name)
{
    static_assert(std::is_class_v<T>, "a structure is a class type");
    return StructBuilder<T>(*this, AddStructEntry(&typeid(T), CommonTypeName<T>(), name, sizeof(T), alignof(T)));
}

template <class T>
StructBuilder<T> TypeLibrary::GetStruct()
{
    return StructBuilder<T>(*this, GetStructEntry(&typeid(T), CommonTypeName<T>()));
}

} // namespace Zon::Host
