#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "VarnixBase/Commons/Meta/DataFilter.hpp"
#include "VarnixBase/Commons/Meta/IDataBrowser.hpp"
#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/ArrayDimension.hpp"
#include "Zon/Plc/Commons/Meta/ChildTypeInfo.hpp"
#include "Zon/Plc/Commons/Meta/IDataInfoProvider.hpp"
#include "Zon/System/Acf/IComponent.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"

namespace VarnixBase::Commons::Meta {

/// Access to the variables of the registered components. It keeps, under each component's
/// name, a reference to the component's data information provider (the component owns it and
/// must be removed before it goes), and resolves variable paths to `DataInfo` records.
///
/// A variable path is the component, "/", the root variable, then members separated by ".",
/// each directly followed by any number of indices "[digits]": "Comp/Root.a[1][2].b". The
/// component is everything before the first "/" (dots included, possibly empty); the root runs
/// to the first "." or "[" (a further "/" belongs to it); member names are any characters but
/// ".", "[" and "]", compared exactly. Indices count from 0 in row-major order.
///
/// Resolution asks the type browser of `MetaInfoProvider` for each member it walks and adds
/// offsets; it follows pointer members and indirect roots, and reads nothing else. The one
/// instance lives in `MetaInfoProvider`. No lock is taken: registration must not overlap with
/// browsing.
class DataBrowser : public IDataBrowser, public Zon::System::Commons::Diagnostics::Logging::Loggable<DataBrowser> {
public:
    /// An empty browser. Sets up the class logger, which needs the platform's log manager.
    DataBrowser();
    ~DataBrowser() override;
    DataBrowser(const DataBrowser&) = delete;
    DataBrowser& operator=(const DataBrowser&) = delete;

    /// The root variables of all components: a chain of `Composite` enumerators over the
    /// components' root enumerators, in ascending order of component name, starting from an
    /// `Empty` one. Every provider is asked now; later registrations do not appear in it.
    Zon::IEnumerator<const Zon::Plc::Commons::Meta::DataInfo&>::Ptr GetRoots() override;

    /// Not offered: throws `Zon::System::Commons::NotImplementedException`.
    Zon::IEnumerator<const Zon::Plc::Commons::Meta::DataInfo&>::Ptr
    GetChildren(const Zon::Plc::Commons::Meta::DataTag& parent) override;

    /// Not offered: throws `Zon::System::Commons::NotImplementedException`.
    Zon::IEnumerator<const Zon::Plc::Commons::Meta::DataInfo&>::Ptr Find(const DataFilter& filter) override;

    /// Resolves a variable path. A path without a root (no "/", "Comp/", "Comp/.x", "Comp/[1]")
    /// and an unknown component give a copy of `DataInfo::Empty` and an error line. The root is
    /// the first record of the component's provider with its name; for a root that is not
    /// there, the answer is what the provider's exhausted enumerator gives (the platform's
    /// enumerators throw). Without a remainder the root record itself comes back, else the walk
    /// of the remainder below the root.
    Zon::Plc::Commons::Meta::DataInfo GetDataInfo(const Zon::String& variablePath) override;

    /// The description of the type of the variable a path names, from the type browser.
    Zon::Plc::Commons::Meta::TypeInfo GetTypeInfo(const Zon::String& variablePath) override;

    /// Walks `remainder` ("a[1][2].b") below `parent` and gives the record of the member or
    /// element that it names. An unknown member does not fail: it gives a record with data
    /// type 0 at the address reached so far. Failures:
    /// - an unexpected character: `ParseException`;
    /// - "[]": `std::invalid_argument`, an index beyond a signed 64-bit number: `std::out_of_range`;
    /// - an index on a member without type: `ArgumentException`;
    /// - an element that ends beyond 10 element sizes from the start of its array (whatever
    ///   the declared dimensions): `IndexOutOfRangeException`;
    /// - an indirect start record with a null address: `InvalidOperationException`;
    /// - a pointer member that would be read from memory not known to hold its object (below a
    ///   null pointer or an unknown member, or in an element beyond its array's declared
    ///   dimensions): `InvalidOperationException`, instead of reading there.
    Zon::Plc::Commons::Meta::DataInfo GetDataInfo(const Zon::Plc::Commons::Meta::DataInfo& parent,
                                                  const std::string& remainder);

    /// Registers the component's data information provider under the component's name. A name
    /// that is known already keeps its first registration.
    void Add(Zon::System::Acf::IComponent& component);
    /// Forgets the component's name; silent if unknown.
    void Remove(Zon::System::Acf::IComponent& component);

    /// The offset of an element from the start of its array, row-major: each index multiplied
    /// by the element counts of all later dimensions and by the element size, summed, in
    /// wrapping unsigned 64-bit arithmetic. Indices are not checked against their dimensions;
    /// indices past the last dimension count with the element size alone, and fewer indices
    /// than dimensions address the start of a sub-array.
    static unsigned long CalculateArrayElementOffset(const std::vector<unsigned long>& indices,
                                                     const Zon::Plc::Commons::Meta::ArrayDimensions& dimensions,
                                                     unsigned long elementSize);

    /// The address of a member of the object at `address`: for a pointer member the pointer
    /// stored there (null included), otherwise `address` plus the member's offset. Reading a
    /// pointer member of an object at null throws `InvalidOperationException`.
    static unsigned char* CalculateChildMemberAddress(unsigned char* address,
                                                      const Zon::Plc::Commons::Meta::ChildTypeInfo& child);

private:
    /// The walk itself, over a view of the remainder: the text ends at its first NUL, or at the
    /// end of the view.
    Zon::Plc::Commons::Meta::DataInfo Walk(const Zon::Plc::Commons::Meta::DataInfo& parent, std::string_view remainder);

    /// `CalculateChildMemberAddress`, with its trace line written only when `tracing` is set.
    static unsigned char* ChildMemberAddress(unsigned char* address, const Zon::Plc::Commons::Meta::ChildTypeInfo& child,
                                             bool tracing);

    /// The bytewise order of `Zon::String`, also between a string and a view, so that a path's
    /// component is looked up without a copy.
    struct NameOrder {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const noexcept { return a < b; }
    };

    std::map<Zon::String, std::reference_wrapper<Zon::Plc::Commons::Meta::IDataInfoProvider>, NameOrder> providers;
};

} // namespace VarnixBase::Commons::Meta
