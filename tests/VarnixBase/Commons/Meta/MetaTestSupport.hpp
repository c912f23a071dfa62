#pragma once

// Shared pieces of the meta data browsing tests: real C++ structures described through the host
// type library, a component with variables in real memory, and a fixture that registers the
// component with the meta info provider for the duration of a test.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "Zon/Format.hpp"
#include "Zon/Host/Component.hpp"
#include "Zon/Host/StructBuilder.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "support/HostFixture.hpp"

namespace MetaTest {

/// An element of 8 bytes whose member `b` lies at offset 4.
struct Element {
    int x;
    int b;
};

/// A node of a chain of pointers.
struct Node {
    int value;
    Node* next;
};

/// An element that holds a pointer member.
struct Holder {
    int tag;
    Node* target;
};

/// A structure whose members lie at 0, 4 and 8, the last a pointer.
struct Pair {
    int first;
    int second;
    Node* link;
};

/// A structure with one member named "c".
struct Letters {
    int c;
};

/// The root variable of the tests: `a` lies at offset 16 and is a 3 by 4 array of `Element`.
struct Root {
    double d;
    std::int64_t n;
    Element a[3][4];
    int line[1];
    int hundred[100];
    short grid[2][3];
    Node* node;
    Pair* none;
    Holder holders[2];
};

static_assert(sizeof(Element) == 8);
static_assert(offsetof(Element, b) == 4);
static_assert(offsetof(Root, a) == 16);
static_assert(offsetof(Pair, second) == 4 && offsetof(Pair, link) == 8);

/// Describes the test structures in `library`, member by member from the real types.
inline void DescribeTypes(Zon::Host::TypeLibrary& library)
{
    library.AddStruct<Element>("Element").Member("x", &Element::x).Member("b", &Element::b);
    library.AddStruct<Node>("Node").Member("value", &Node::value).Pointer("next", &Node::next);
    library.AddStruct<Holder>("Holder").Member("tag", &Holder::tag).Pointer("target", &Holder::target);
    library.AddStruct<Pair>("Pair").Member("first", &Pair::first).Member("second", &Pair::second).Pointer("link", &Pair::link);
    library.AddStruct<Letters>("Letters").Member("c", &Letters::c);
    library.AddStruct<Root>("Root")
        .Member("d", &Root::d)
        .Member("n", &Root::n)
        .Member("a", &Root::a)
        .Member("line", &Root::line)
        .Member("hundred", &Root::hundred)
        .Member("grid", &Root::grid)
        .Pointer("node", &Root::node)
        .Pointer("none", &Root::none)
        .Member("holders", &Root::holders);
}

/// The text of an address as log lines and messages show it.
inline std::string AddressText(const void* address)
{
    return fmt::format("{}", address);
}

inline const unsigned char* Bytes(const void* address)
{
    return static_cast<const unsigned char*>(address);
}

/// A type provider that answers for a host library, member questions by value only (it leaves
/// `FindChildInfo` as the interface has it), and counts those questions.
class ByValueProvider : public Zon::Plc::Commons::Meta::IMetaLibrary,
                        public Zon::Plc::Commons::Meta::ITypeInfoProvider {
public:
    using TypeInfo = Zon::Plc::Commons::Meta::TypeInfo;
    using ChildTypeInfo = Zon::Plc::Commons::Meta::ChildTypeInfo;
    using TypeIdentifier = Zon::Plc::Commons::Meta::TypeIdentifier;

    explicit ByValueProvider(Zon::Host::TypeLibrary& library) : library(library) {}
    const char* GetNamespaceName() const override { return library.GetNamespaceName(); }
    ITypeInfoProvider& GetTypeInfoProvider(bool) override { return *this; }
    Zon::IEnumerator<TypeInfo>::Ptr GetTypes() override { return library.GetTypes(); }
    Zon::IEnumerator<ChildTypeInfo>::Ptr GetChildren(const TypeIdentifier& type) override
    {
        return library.GetChildren(type);
    }
    TypeInfo GetTypeInfo(const TypeIdentifier& type) override { return library.GetTypeInfo(type); }
    bool HasType(const TypeIdentifier& type) override { return library.HasType(type); }
    ChildTypeInfo GetChildInfo(const TypeIdentifier& type, const Zon::String& name) override
    {
        ++childQuestions;
        return library.GetChildInfo(type, name);
    }

    int childQuestions = 0;

private:
    Zon::Host::TypeLibrary& library;
};

/// A host runtime, a type library "Demo" with the test structures, and a component "Comp"
/// registered with the meta info provider from `SetUp` to `TearDown`.
class MetaBrowsingTest : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        VarnixTest::HostTest::SetUp();
        DescribeTypes(library);
        DeclareVariables();
        Provider().Add(component);
        Capture().Clear();
    }

    void TearDown() override
    {
        Provider().Remove(component);
        VarnixTest::HostTest::TearDown();
    }

    /// Declares the component's variables before it is registered.
    virtual void DeclareVariables() { component.AddVariable("Root", root); }

    static VarnixBase::Commons::Meta::MetaInfoProvider& Provider()
    {
        return VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance();
    }

    static VarnixBase::Commons::Meta::IDataBrowser& Browser() { return Provider().GetDataBrowser(); }

    using Level = Zon::System::Commons::Diagnostics::Logging::LogLevel;

    Zon::Host::TypeLibrary library{"DemoLibrary", "Demo"};
    Zon::Host::Component component{"Comp", library};
    Root root{};
};

} // namespace MetaTest
