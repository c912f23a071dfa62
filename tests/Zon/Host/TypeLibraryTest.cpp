#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Zon/CommonTypeName.hpp"
#include "Zon/Host/StructBuilder.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"

using namespace Zon::Plc::Commons::Meta;
using Zon::Host::TypeLibrary;
using Zon::Plc::Commons::DataTypeEnum;
using Zon::Plc::Commons::DataTypePointerBit;

namespace {

struct Element {
    int x;
    int b;
};

struct Root {
    double d;
    std::int64_t n;
    Element a[3][4];
    int* p;
    short m[2][3];
};

enum class Mode : std::uint8_t { Off, On };

struct WithEnum {
    Mode mode;
    Mode modes[4];
};

struct Node {
    int value;
    Node* next;
};

struct Text16 {
    std::uint16_t capacity;
    std::uint16_t length;
    char data[17];
};

struct WideText16 {
    std::uint16_t capacity;
    std::uint16_t length;
    char16_t data[17];
};

// The shape of a value with time stamp and quality, registered for several value types by one
// template, as an application registers every instantiation of such a record.
enum class Flags : std::uint32_t {};
enum class State : std::uint8_t {};
struct Stamp {
    Flags flags;
    State state;
};
template <class T>
struct Sample {
    std::int64_t timestamp;
    Stamp quality;
    T value;
};

template <class T>
void AddSample(TypeLibrary& library)
{
    library.AddStruct<Sample<T>>()
        .Member("Timestamp", &Sample<T>::timestamp)
        .Member("Quality", &Sample<T>::quality)
        .Member("Value", &Sample<T>::value);
}

std::vector<ChildTypeInfo> Children(TypeLibrary& library, const TypeIdentifier& type)
{
    std::vector<ChildTypeInfo> result;
    auto enumerator = library.GetChildren(type);
    while (enumerator->MoveNext()) {
        result.push_back(enumerator->GetCurrent());
    }
    return result;
}

template <class F>
std::string FailureOf(F&& action)
{
    try {
        action();
    } catch (const Zon::System::Commons::ArgumentException& exception) {
        return exception.what();
    }
    return "no exception";
}

} // namespace

TEST(TypeLibrary, IsALibraryWithANamespace)
{
    TypeLibrary library("DemoLibrary", "Demo");
    EXPECT_EQ(library.GetLibraryName(), "DemoLibrary");
    EXPECT_STREQ(library.GetNamespaceName(), "Demo");
    EXPECT_EQ(&library.GetTypeInfoProvider(false), static_cast<ITypeInfoProvider*>(&library));
}

TEST(TypeLibrary, KnowsTheBaseTypesByTheirCommonTypeNames)
{
    TypeLibrary library("DemoLibrary", "Demo");
    auto info = library.GetTypeInfo(TypeIdentifier("Demo", "int"));
    EXPECT_EQ(info.dataType, DataTypeEnum::Int32);
    EXPECT_EQ(info.size, 0u);
    EXPECT_EQ(info.alignment, alignof(int));
    EXPECT_EQ(library.GetTypeInfo(TypeIdentifier("Demo", "double")).dataType, DataTypeEnum::Float64);
    EXPECT_EQ(library.GetTypeInfo(TypeIdentifier("Demo", "unsigned long")).dataType, DataTypeEnum::UInt64);
    EXPECT_EQ(library.GetTypeInfo(TypeIdentifier("Demo", "char16_t")).dataType, DataTypeEnum::Char16);
    EXPECT_EQ(library.GetTypeInfo(TypeIdentifier("Demo", "signed char")).dataType, DataTypeEnum::Int8);
    EXPECT_EQ(library.Describe<bool>().dataType, DataTypeEnum::Boolean);
    EXPECT_EQ(library.Describe<std::int64_t>().typeIdentifier, TypeIdentifier("Demo", "long"));
}

TEST(TypeLibrary, ListsBaseTypesFirstThenTypesInOrderOfRegistration)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element");
    library.AddStruct<Node>("Node");
    std::vector<Zon::String> names;
    auto types = library.GetTypes();
    while (types->MoveNext()) {
        names.push_back(types->GetCurrent().typeIdentifier.GetName());
    }
    ASSERT_EQ(names.size(), 15u);
    EXPECT_EQ(names.front(), "bool");
    EXPECT_EQ(names[12], "double");
    EXPECT_EQ(names[13], "Element");
    EXPECT_EQ(names[14], "Node");
}

TEST(TypeLibrary, StructuresGetUserTypeCodesTheirSizeAndAlignment)
{
    TypeLibrary library("DemoLibrary", "Demo");
    auto element = library.AddStruct<Element>("Element").GetTypeInfo();
    auto root = library.AddStruct<Root>("Root").GetTypeInfo();
    EXPECT_EQ(element.dataType, 65u);
    EXPECT_EQ(root.dataType, 66u);
    EXPECT_EQ(root.size, sizeof(Root));
    EXPECT_EQ(root.alignment, alignof(Root));
    EXPECT_EQ(root.typeIdentifier, TypeIdentifier("Demo", "Root"));
}

TEST(TypeLibrary, StructureNameDefaultsToTheCommonTypeName)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Stamp>("Stamp");
    AddSample<double>(library);
    EXPECT_EQ(library.Describe<Sample<double>>().typeIdentifier.GetName(), Zon::CommonTypeName<Sample<double>>());
}

TEST(TypeLibrary, MembersGetTheirOffsetsFromTheCompiler)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element").Member("x", &Element::x).Member("b", &Element::b);
    library.AddStruct<Root>("Root").Member("d", &Root::d).Member("n", &Root::n).Member("a", &Root::a);
    auto d = library.GetChildInfo(TypeIdentifier("Demo", "Root"), "d");
    auto n = library.GetChildInfo(TypeIdentifier("Demo", "Root"), "n");
    auto b = library.GetChildInfo(TypeIdentifier("Demo", "Element"), "b");
    EXPECT_EQ(d.offset, offsetof(Root, d));
    EXPECT_EQ(d.dataType, DataTypeEnum::Float64);
    EXPECT_EQ(d.typeIdentifier, TypeIdentifier("Demo", "double"));
    EXPECT_EQ(d.size, 0u);
    EXPECT_EQ(d.name, "d");
    EXPECT_EQ(n.offset, offsetof(Root, n));
    EXPECT_EQ(n.dataType, DataTypeEnum::Int64);
    EXPECT_EQ(b.offset, offsetof(Element, b));
}

TEST(TypeLibrary, ArrayMembersAreDescribedByElementTypeAndExtents)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element");
    library.AddStruct<Root>("Root").Member("a", &Root::a);
    auto a = library.GetChildInfo(TypeIdentifier("Demo", "Root"), "a");
    EXPECT_EQ(a.offset, offsetof(Root, a));
    EXPECT_EQ(a.typeIdentifier, TypeIdentifier("Demo", "Element"));
    EXPECT_EQ(a.dataType, 65u);
    EXPECT_EQ(a.size, sizeof(Element));
    ASSERT_EQ(a.GetArrayDimensions().size(), 2u);
    EXPECT_EQ(a.GetArrayDimensions()[0].elementCount, 3u);
    EXPECT_EQ(a.GetArrayDimensions()[1].elementCount, 4u);
}

TEST(TypeLibrary, ArrayTakesDimensionsThatCoverTheElements)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Root>("Root").Array("m", &Root::m, {6});
    auto m = library.GetChildInfo(TypeIdentifier("Demo", "Root"), "m");
    ASSERT_EQ(m.GetArrayDimensions().size(), 1u);
    EXPECT_EQ(m.GetArrayDimensions()[0].elementCount, 6u);
    EXPECT_EQ(m.dataType, DataTypeEnum::Int16);
    EXPECT_EQ(FailureOf([&] { library.GetStruct<Root>().Array("m2", &Root::m, {2, 2}); }),
              "Dimensions of member 'm2' of type 'Demo::Root' cover 4 elements instead of 6");
}

TEST(TypeLibrary, PointerMembersCarryThePointerBitAndTheTypePointedTo)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Root>("Root").Pointer("p", &Root::p).Pointer("q", &Root::p, {5});
    auto p = library.GetChildInfo(TypeIdentifier("Demo", "Root"), "p");
    EXPECT_EQ(p.dataType, DataTypeEnum::Int32 | DataTypePointerBit);
    EXPECT_EQ(p.typeIdentifier, TypeIdentifier("Demo", "int"));
    EXPECT_EQ(p.offset, offsetof(Root, p));
    EXPECT_TRUE(p.GetArrayDimensions().empty());
    auto q = library.GetChildInfo(TypeIdentifier("Demo", "Root"), "q");
    ASSERT_EQ(q.GetArrayDimensions().size(), 1u);
    EXPECT_EQ(q.GetArrayDimensions()[0].elementCount, 5u);
}

TEST(TypeLibrary, MemberPointerToAPointerIsAPointerMemberToo)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Node>("Node").Member("value", &Node::value).Member("next", &Node::next);
    auto next = library.GetChildInfo(TypeIdentifier("Demo", "Node"), "next");
    EXPECT_EQ(next.dataType, 65u | DataTypePointerBit);
    EXPECT_EQ(next.typeIdentifier, TypeIdentifier("Demo", "Node"));
    EXPECT_EQ(next.size, sizeof(Node));
}

TEST(TypeLibrary, MembersOfAnUnregisteredTypeAreRefused)
{
    TypeLibrary library("DemoLibrary", "Demo");
    EXPECT_EQ(FailureOf([&] { library.AddStruct<Root>("Root").Member("a", &Root::a); }),
              "Type '" + Zon::CommonTypeName<Element>().ToStdString() + "' is not described in namespace 'Demo'");
    EXPECT_TRUE(Children(library, TypeIdentifier("Demo", "Root")).empty());
}

TEST(TypeLibrary, UnregisteredEnumerationsAreTheirUnderlyingType)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<WithEnum>("WithEnum").Member("mode", &WithEnum::mode).Member("modes", &WithEnum::modes);
    auto mode = library.GetChildInfo(TypeIdentifier("Demo", "WithEnum"), "mode");
    EXPECT_EQ(mode.dataType, DataTypeEnum::UInt8);
    EXPECT_EQ(mode.typeIdentifier, TypeIdentifier("Demo", "unsigned char"));
    auto modes = library.GetChildInfo(TypeIdentifier("Demo", "WithEnum"), "modes");
    EXPECT_EQ(modes.offset, offsetof(WithEnum, modes));
    ASSERT_EQ(modes.GetArrayDimensions().size(), 1u);
    EXPECT_EQ(modes.GetArrayDimensions()[0].elementCount, 4u);
}

TEST(TypeLibrary, AddTypeGivesACppTypeABaseCodeUnderItsOwnName)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddType<Mode>("Mode", DataTypeEnum::UInt8);
    library.AddStruct<WithEnum>("WithEnum").Member("mode", &WithEnum::mode);
    auto mode = library.GetChildInfo(TypeIdentifier("Demo", "WithEnum"), "mode");
    EXPECT_EQ(mode.dataType, DataTypeEnum::UInt8);
    EXPECT_EQ(mode.typeIdentifier, TypeIdentifier("Demo", "Mode"));
    EXPECT_EQ(mode.size, sizeof(Mode));
    EXPECT_EQ(FailureOf([&] { library.AddType<Node>("Node", 70); }),
              "Type 'Node' needs a base type code from 1 to 64, not 70");
}

TEST(TypeLibrary, FixedStringsGetTheirCodeByTheirUnits)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddFixedString<Text16>("Text16").AddFixedString<WideText16, char16_t>("WideText16");
    auto narrow = library.Describe<Text16>();
    auto wide = library.Describe<WideText16>();
    EXPECT_EQ(narrow.dataType, DataTypeEnum::StaticString);
    EXPECT_EQ(narrow.size, sizeof(Text16));
    EXPECT_EQ(narrow.typeIdentifier, TypeIdentifier("Demo", "Text16"));
    EXPECT_EQ(wide.dataType, DataTypeEnum::StaticWString);
    EXPECT_EQ(wide.size, sizeof(WideText16));
}

TEST(TypeLibrary, RecordsWithTimeStampQualityAndValueRegisterForEveryValueType)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Stamp>("Stamp").Member("flags", &Stamp::flags).Member("state", &Stamp::state);
    library.AddFixedString<Text16>("Text16");
    AddSample<bool>(library);
    AddSample<double>(library);
    AddSample<Text16>(library);
    auto type = library.Describe<Sample<double>>().typeIdentifier;
    auto children = Children(library, type);
    ASSERT_EQ(children.size(), 3u);
    EXPECT_EQ(children[0].name, "Timestamp");
    EXPECT_EQ(children[0].dataType, DataTypeEnum::Int64);
    EXPECT_EQ(children[1].name, "Quality");
    EXPECT_EQ(children[1].typeIdentifier, TypeIdentifier("Demo", "Stamp"));
    EXPECT_EQ(children[1].offset, offsetof(Sample<double>, quality));
    EXPECT_EQ(children[2].name, "Value");
    EXPECT_EQ(children[2].dataType, DataTypeEnum::Float64);
    EXPECT_EQ(children[2].offset, offsetof(Sample<double>, value));
    auto text = library.GetChildInfo(library.Describe<Sample<Text16>>().typeIdentifier, "Value");
    EXPECT_EQ(text.dataType, DataTypeEnum::StaticString);
    EXPECT_EQ(text.offset, offsetof(Sample<Text16>, value));
}

TEST(TypeLibrary, RefusesToDescribeATypeOrANameTwice)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element");
    EXPECT_EQ(FailureOf([&] { library.AddStruct<Element>("Other"); }),
              "Type '" + Zon::CommonTypeName<Element>().ToStdString() + "' is already described in namespace 'Demo'");
    EXPECT_EQ(FailureOf([&] { library.AddStruct<Node>("Element"); }),
              "Type name 'Element' is already used in namespace 'Demo'");
    EXPECT_EQ(FailureOf([&] { library.AddStruct("int", 4, 4); }), "Type name 'int' is already used in namespace 'Demo'");
}

TEST(TypeLibrary, RefusesAMemberNameTwice)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element").Member("x", &Element::x);
    EXPECT_EQ(FailureOf([&] { library.GetStruct<Element>().Member("x", &Element::b); }),
              "Member 'x' is already described in type 'Demo::Element'");
}

TEST(TypeLibrary, RefusesMembersOutsideTheStructure)
{
    TypeLibrary library("DemoLibrary", "Demo");
    auto table = library.AddStruct("Table", 16, 8);
    table.MemberAt<double>("last", 8);
    EXPECT_EQ(FailureOf([&] { table.MemberAt<double>("beyond", 12); }),
              "Member 'beyond' at offset 12 with 8 bytes does not fit into type 'Demo::Table' of 16 bytes");
    EXPECT_EQ(FailureOf([&] { table.MemberAt<int>("far", UINT64_MAX); }),
              "Member 'far' at offset 18446744073709551615 with 4 bytes does not fit into type 'Demo::Table' of 16 bytes");
}

TEST(TypeLibrary, RuntimeLayoutsDescribePointerTables)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element");
    auto table = library.AddStruct("Main", 2 * sizeof(void*), alignof(void*));
    table.PointerAt<int>("level", 0).PointerAt<Element>("element", sizeof(void*));
    auto level = library.GetChildInfo(table.GetTypeIdentifier(), "level");
    auto element = library.GetChildInfo(table.GetTypeIdentifier(), "element");
    EXPECT_EQ(level.dataType, DataTypeEnum::Int32 | DataTypePointerBit);
    EXPECT_EQ(element.dataType, 65u | DataTypePointerBit);
    EXPECT_EQ(element.offset, sizeof(void*));
    EXPECT_EQ(library.GetTypeInfo("Main").size, 2 * sizeof(void*));
}

TEST(TypeLibrary, GetStructExtendsARegisteredStructure)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element").Member("x", &Element::x);
    library.GetStruct<Element>().Member("b", &Element::b);
    EXPECT_EQ(Children(library, TypeIdentifier("Demo", "Element")).size(), 2u);
    library.GetStruct("Element").MemberAt<int>("b2", offsetof(Element, b));
    EXPECT_EQ(Children(library, TypeIdentifier("Demo", "Element")).size(), 3u);
    EXPECT_EQ(FailureOf([&] { library.GetStruct("int"); }), "Structure 'int' is not described in namespace 'Demo'");
}

TEST(TypeLibrary, EnumeratorsKeepTheMembersTheyStartedWith)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element").Member("x", &Element::x);
    auto children = library.GetChildren(TypeIdentifier("Demo", "Element"));
    library.GetStruct<Element>().Member("b", &Element::b);
    ASSERT_TRUE(children->MoveNext());
    EXPECT_EQ(children->GetCurrent().name, "x");
    EXPECT_FALSE(children->MoveNext());
}

namespace {
struct Triple {
    int a;
    int b;
    int c;
};
} // namespace

TEST(TypeLibrary, MembersAddedBeforeDuringAndAfterAnEnumeratorAreAllListedByALaterOne)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Triple>("Triple").Member("a", &Triple::a);
    auto first = library.GetChildren(TypeIdentifier("Demo", "Triple"));
    library.GetStruct<Triple>().Member("b", &Triple::b);
    first.reset();
    library.GetStruct<Triple>().Member("c", &Triple::c);
    std::vector<std::string> names;
    for (auto children = library.GetChildren(TypeIdentifier("Demo", "Triple")); children->MoveNext();) {
        names.push_back(children->GetCurrent().name.ToStdString());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(library.GetChildInfo(TypeIdentifier("Demo", "Triple"), "c").offset, offsetof(Triple, c));
}

TEST(TypeLibrary, UnknownTypesAndMembersGetEmptyAnswers)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element").Member("x", &Element::x);
    EXPECT_EQ(library.GetChildInfo(TypeIdentifier("Demo", "Element"), "nosuch").dataType, 0u);
    EXPECT_EQ(library.GetChildInfo(TypeIdentifier("Other", "Element"), "x").dataType, 0u);
    EXPECT_EQ(library.GetChildInfo(TypeIdentifier(), "").dataType, 0u);
    EXPECT_EQ(library.GetTypeInfo(TypeIdentifier("Demo", "Nosuch")).dataType, 0u);
    EXPECT_FALSE(library.GetChildren(TypeIdentifier("Demo", "Nosuch"))->MoveNext());
    EXPECT_FALSE(library.GetChildren(TypeIdentifier("Demo", "int"))->MoveNext());
    EXPECT_TRUE(library.HasType(TypeIdentifier("Demo", "Element")));
    EXPECT_FALSE(library.HasType(TypeIdentifier("Other", "Element")));
}

TEST(TypeLibrary, RemoveTypeForgetsTheType)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element");
    EXPECT_TRUE(library.RemoveType("Element"));
    EXPECT_FALSE(library.HasType(TypeIdentifier("Demo", "Element")));
    Zon::Plc::Commons::Meta::TypeInfo info;
    EXPECT_FALSE(library.TryDescribe(typeid(Element), info));
    EXPECT_FALSE(library.RemoveType("Element"));
    library.AddStruct<Element>("Element");
    EXPECT_TRUE(library.HasType(TypeIdentifier("Demo", "Element")));
}

TEST(TypeLibrary, UsedLibrariesLendTheirTypesWithTheirNamespace)
{
    TypeLibrary shared("SharedLibrary", "Shared");
    shared.AddStruct<Element>("Element").Member("b", &Element::b);
    TypeLibrary library("DemoLibrary", "Demo");
    library.Uses(shared).AddStruct<Root>("Root").Member("a", &Root::a).Member("d", &Root::d);
    auto a = library.GetChildInfo(TypeIdentifier("Demo", "Root"), "a");
    EXPECT_EQ(a.typeIdentifier, TypeIdentifier("Shared", "Element"));
    auto d = library.GetChildInfo(TypeIdentifier("Demo", "Root"), "d");
    EXPECT_EQ(d.typeIdentifier, TypeIdentifier("Demo", "double"));
}

// The member search and the duplicate check go through an index by name beside the member list;
// the walk of the list from the front (what GetChildren enumerates) is the oracle they must agree
// with, also while enumerators handed out earlier keep their own copies of the list.
TEST(TypeLibrary, MemberLookUpsAgreeWithAWalkOfTheMembersOverRandomAdditions)
{
    TypeLibrary library("DemoLibrary", "Demo");
    auto big = library.AddStruct("Big", 1 << 20, 8);
    const TypeIdentifier type = big.GetTypeIdentifier();
    std::mt19937 random(424242);
    const char alphabet[] = {'x', 'X', 'y', '.'};
    auto randomName = [&] {
        std::string name;
        for (int n = std::uniform_int_distribution<int>(0, 3)(random); n > 0; --n) {
            name += alphabet[std::uniform_int_distribution<int>(0, 3)(random)];
        }
        return Zon::String(name);
    };
    auto walkFor = [&](const Zon::String& name) -> std::optional<ChildTypeInfo> {
        for (const auto& member : Children(library, type)) {
            if (member.name == name) {
                return member;
            }
        }
        return std::nullopt;
    };
    Zon::IEnumerator<ChildTypeInfo>::Ptr heldEnumerator;
    std::size_t heldCount = 0;
    for (int step = 0; step < 400; ++step) {
        if (step % 50 == 0) {
            // An enumerator that is held makes the next member go into a copy of the list.
            heldEnumerator = library.GetChildren(type);
            heldCount = Children(library, type).size();
        }
        Zon::String name = randomName();
        const std::uint64_t offset = static_cast<std::uint64_t>(step) * 8;
        if (walkFor(name).has_value()) {
            EXPECT_EQ(FailureOf([&] { big.MemberAt<double>(name, offset); }),
                      "Member '" + name.ToStdString() + "' is already described in type 'Demo::Big'");
        } else {
            big.MemberAt<double>(name, offset);
        }
        Zon::String probe = randomName();
        const std::optional<ChildTypeInfo> expected = walkFor(probe);
        ChildTypeInfo found = library.GetChildInfo(type, probe);
        ChildTypeInfo storage;
        const ChildTypeInfo& kept = library.FindChildInfo(type, probe.View(), storage);
        EXPECT_TRUE(storage.name.IsEmpty() && storage.dataType == 0) << "step " << step;
        if (!expected) {
            EXPECT_EQ(found.dataType, 0) << "step " << step;
            EXPECT_TRUE(found.name.IsEmpty());
            EXPECT_EQ(&kept, &ChildTypeInfo::Empty) << "step " << step;
        } else {
            EXPECT_EQ(found.name, expected->name) << "step " << step;
            EXPECT_EQ(found.offset, expected->offset);
            EXPECT_EQ(found.dataType, expected->dataType);
            EXPECT_EQ(kept.name, expected->name) << "step " << step;
            EXPECT_EQ(kept.offset, expected->offset);
            EXPECT_EQ(kept.dataType, expected->dataType);
        }
    }
    std::size_t seen = 0;
    while (heldEnumerator->MoveNext()) {
        ++seen;
    }
    EXPECT_EQ(seen, heldCount);
}

TEST(TypeLibrary, FindsEachOfThousandsOfMembersByName)
{
    TypeLibrary library("DemoLibrary", "Demo");
    auto big = library.AddStruct("Big", 8 * 5000, 8);
    for (int i = 0; i < 5000; ++i) {
        big.MemberAt<double>(Zon::String("p" + std::to_string(i)), static_cast<std::uint64_t>(i) * 8);
    }
    const TypeIdentifier type = big.GetTypeIdentifier();
    for (int i = 0; i < 5000; i += 7) {
        ChildTypeInfo member = library.GetChildInfo(type, Zon::String("p" + std::to_string(i)));
        EXPECT_EQ(member.offset, static_cast<std::uint64_t>(i) * 8);
        EXPECT_EQ(member.name, Zon::String("p" + std::to_string(i)));
    }
    EXPECT_EQ(library.GetChildInfo(type, Zon::String("P1")).dataType, 0);
    EXPECT_EQ(FailureOf([&] { big.MemberAt<double>("p4999", 0); }),
              "Member 'p4999' is already described in type 'Demo::Big'");
}

// The walk of a path asks for members without copying them: the record that FindChildInfo gives
// is the one the library keeps, field for field what GetChildInfo copies out.
TEST(TypeLibrary, FindChildInfoGivesTheKeptRecordThatGetChildInfoCopies)
{
    TypeLibrary library("DemoLibrary", "Demo");
    library.AddStruct<Element>("Element").Member("x", &Element::x).Member("b", &Element::b);
    library.AddStruct<Root>("Root").Member("d", &Root::d).Member("a", &Root::a).Pointer("p", &Root::p);
    const TypeIdentifier root("Demo", "Root");
    for (const char* name : {"d", "a", "p"}) {
        ChildTypeInfo storage;
        const ChildTypeInfo& kept = library.FindChildInfo(root, name, storage);
        const ChildTypeInfo copy = library.GetChildInfo(root, name);
        EXPECT_NE(&kept, &storage) << name;
        EXPECT_EQ(&library.FindChildInfo(root, name, storage), &kept) << name;
        EXPECT_TRUE(storage.name.IsEmpty()) << name;
        EXPECT_EQ(kept.name, copy.name);
        EXPECT_EQ(kept.dataType, copy.dataType) << name;
        EXPECT_EQ(kept.typeIdentifier, copy.typeIdentifier) << name;
        EXPECT_EQ(kept.offset, copy.offset) << name;
        EXPECT_EQ(kept.size, copy.size) << name;
        EXPECT_EQ(kept.alignment, copy.alignment) << name;
        ASSERT_EQ(kept.arrayDimensions.size(), copy.arrayDimensions.size()) << name;
        for (std::size_t i = 0; i < kept.arrayDimensions.size(); ++i) {
            EXPECT_EQ(kept.arrayDimensions[i].elementCount, copy.arrayDimensions[i].elementCount);
        }
    }
    ChildTypeInfo storage;
    EXPECT_EQ(library.FindChildInfo(root, "a", storage).arrayDimensions.size(), 2u);
    EXPECT_EQ(&library.FindChildInfo(root, "nosuch", storage), &ChildTypeInfo::Empty);
    EXPECT_EQ(&library.FindChildInfo(TypeIdentifier("Other", "Root"), "d", storage), &ChildTypeInfo::Empty);
    EXPECT_EQ(&library.FindChildInfo(TypeIdentifier("Demo", "Nosuch"), "d", storage), &ChildTypeInfo::Empty);
}
