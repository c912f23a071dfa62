#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <type_traits>

#include "Zon/BasicString.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/Plc/Commons/Meta/ArrayDimension.hpp"
#include "Zon/Plc/Commons/Meta/TypeIdentifier.hpp"
#include "Zon/Plc/Commons/Meta/TypeInfo.hpp"

namespace Zon::Host {

/// Describes the members of a structure of a `TypeLibrary` by their offsets. Obtained from
/// `TypeLibrary::AddStruct` or `GetStruct`; valid while the structure stays registered.
/// Every member must lie inside the structure and have a name of its own, or the call throws
/// `Zon::System::Commons::ArgumentException`. Members are listed in the order they are added.
class StructDescription {
public:
    /// Adds the member `name` at `offset` with the type `type` (a description from the library,
    /// such as `Describe<int>()`; its array dimensions and pointer bit are taken along).
    StructDescription& MemberAt(const String& name, std::uint64_t offset, const Plc::Commons::Meta::TypeInfo& type);

    /// Adds the member `name` of C++ type `M` at `offset`.
    template <class M>
    StructDescription& MemberAt(const String& name, std::uint64_t offset)
    {
        return MemberAt(name, offset, library->Describe<M>());
    }

    /// Adds the member `name` at `offset` that points to a value of C++ type `M`, or to the first
    /// element of an array of `M` with `dimensions`.
    template <class M>
    StructDescription& PointerAt(const String& name, std::uint64_t offset,
                                 std::initializer_list<std::uint32_t> dimensions = {})
    {
        return MemberAt(name, offset, WithDimensions(library->Describe<M*>(), dimensions));
    }

    /// The structure's identifier and description.
    Plc::Commons::Meta::TypeIdentifier GetTypeIdentifier() const;
    Plc::Commons::Meta::TypeInfo GetTypeInfo() const;

protected:
    StructDescription(TypeLibrary& library, TypeLibrary::Entry& entry) : library(&library), entry(&entry) {}

    static Plc::Commons::Meta::TypeInfo WithDimensions(Plc::Commons::Meta::TypeInfo type,
                                                       std::initializer_list<std::uint32_t> dimensions);
    /// Checks that `dimensions` cover exactly `elementCount` elements.
    void CheckDimensions(const String& name, std::initializer_list<std::uint32_t> dimensions,
                         std::uint64_t elementCount) const;

    TypeLibrary* library;
    TypeLibrary::Entry* entry;

    friend class TypeLibrary;
};

/// Describes the members of the C++ structure `T` through member pointers, so that names,
/// types and offsets come from the real type:
///
///     library.AddStruct<Root>("Root").Member("a", &Root::a).Array("m", &Root::m, {3, 4}).Pointer("p", &Root::p);
///
/// The offset of a member is measured on one value-initialised `T` that the builder creates on
/// the heap for this purpose, so `T` must be default-constructible; for other types use
/// `MemberAt<M>(name, offsetof(T, m))`.
template <class T>
class StructBuilder : public StructDescription {
public:
    /// Adds a member with the type of the C++ member: a registered type, a base type, an
    /// enumeration (as its underlying type), a C array (with its extents as dimensions) or a
    /// pointer (with `DataTypePointerBit`).
    template <class M>
    StructBuilder& Member(const String& name, M T::*member)
    {
        StructDescription::MemberAt(name, OffsetOf(member), library->Describe<M>());
        return *this;
    }

    /// Adds a C array member with the given dimensions instead of its extents; together they must
    /// cover exactly the elements of the C array.
    template <class M>
    StructBuilder& Array(const String& name, M T::*member, std::initializer_list<std::uint32_t> dimensions)
    {
        static_assert(std::is_array_v<M>, "Array describes a C array member");
        using Element = std::remove_all_extents_t<M>;
        CheckDimensions(name, dimensions, sizeof(M) / sizeof(Element));
        StructDescription::MemberAt(name, OffsetOf(member), WithDimensions(library->Describe<M>(), dimensions));
        return *this;
    }

    /// Adds a pointer member, pointing to one value or, with `dimensions`, to the first element
    /// of an array of that shape.
    template <class M>
    StructBuilder& Pointer(const String& name, M T::*member, std::initializer_list<std::uint32_t> dimensions = {})
    {
        static_assert(std::is_pointer_v<M>, "Pointer describes a pointer member");
        StructDescription::MemberAt(name, OffsetOf(member), WithDimensions(library->Describe<M>(), dimensions));
        return *this;
    }

    /// Adds a member of C++ type `M` at an offset given by hand (`offsetof(T, m)`).
    template <class M>
    StructBuilder& MemberAt(const String& name, std::uint64_t offset)
    {
        StructDescription::MemberAt<M>(name, offset);
        return *this;
    }

    /// Adds a member described by `type` at an offset given by hand.
    StructBuilder& MemberAt(const String& name, std::uint64_t offset, const Plc::Commons::Meta::TypeInfo& type)
    {
        StructDescription::MemberAt(name, offset, type);
        return *this;
    }

private:
    friend class TypeLibrary;

    StructBuilder(TypeLibrary& library, TypeLibrary::Entry& entry) : StructDescription(library, entry) {}

    template <class M>
    std::uint64_t OffsetOf(M T::*member)
    {
        static_assert(std::is_default_constructible_v<T>,
                      "member pointers need a default-constructible type; use MemberAt with offsetof");
        if (!probe) {
            probe = std::make_shared<T>();
        }
        const auto* base = reinterpret_cast<const unsigned char*>(std::addressof(*probe));
        const auto* place = reinterpret_cast<const unsigned char*>(std::addressof((*probe).*member));
        return static_cast<std::uint64_t>(place - base);
    }

    std::shared_ptr<T> probe;
};

} // namespace Zon::Host
