#include <cstddef>
#include <random>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include <gtest/gtest.h>

#include "MetaTestSupport.hpp"
#include "VarnixBase/Commons/Meta/DataBrowser.hpp"
#include "VarnixBase/Commons/Meta/TypeBrowser.hpp"
#include "Zon/Enumerator.hpp"
#include "Zon/Exception.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/IndexOutOfRangeException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/ParseException.hpp"

using namespace MetaTest;
using VarnixBase::Commons::Meta::DataBrowser;
using Zon::Plc::Commons::DataTypeEnum;
using Zon::Plc::Commons::DataTypeIndirectMask;
using Zon::Plc::Commons::Meta::ArrayDimensions;
using Zon::Plc::Commons::Meta::ChildTypeInfo;
using Zon::Plc::Commons::Meta::DataInfo;
using Zon::Plc::Commons::Meta::TypeIdentifier;
using Zon::System::Commons::Diagnostics::Logging::LogEntry;

namespace {

const std::string DataBrowserLogger = "VarnixBase.Commons.Meta.DataBrowser";
const std::string TypeBrowserLogger = "VarnixBase.Commons.Meta.TypeBrowser";
const std::string ParseText = "Invalid variable path: Unexpected character at position ";

class VariablePathTest : public MetaBrowsingTest {
protected:
    void DeclareVariables() override
    {
        rootPointer = &root;
        root.node = &first;
        first.next = &second;
        root.holders[1].target = &second;
        root.none = nullptr;
        component.AddVariable("Root", root)
            .AddIndirectVariable("Indirect", &rootPointer)
            .AddIndirectVariable<Root>("Missing", nullptr)
            .AddVariable("a/b", letters);
    }

    /// The message of the `ParseException` that resolving `path` throws.
    std::string ParseFailure(const std::string& path)
    {
        try {
            Browser().GetDataInfo(path);
        } catch (const Zon::System::Commons::ParseException& exception) {
            return exception.what();
        }
        return "no ParseException";
    }

    std::string IndexFailure(const std::string& path)
    {
        try {
            Browser().GetDataInfo(path);
        } catch (const Zon::System::Commons::IndexOutOfRangeException& exception) {
            return exception.what();
        }
        return "no IndexOutOfRangeException";
    }

    std::string OperationFailure(const std::string& path)
    {
        try {
            Browser().GetDataInfo(path);
        } catch (const Zon::System::Commons::InvalidOperationException& exception) {
            return exception.what();
        }
        return "no InvalidOperationException";
    }

    void ExpectEmptyWithoutComponentInformation(const std::string& path)
    {
        SCOPED_TRACE(path);
        Capture().Clear();
        DataInfo info = Browser().GetDataInfo(path);
        EXPECT_EQ(info.name, "");
        EXPECT_EQ(info.dataType, 0u);
        EXPECT_EQ(info.address, nullptr);
        EXPECT_TRUE(info.typeIdentifier.IsEmpty());
        EXPECT_EQ(Capture().Count(Level::Error, "Variable name does not contain component information: " + path), 1u);
        EXPECT_EQ(Capture().GetEntries(Level::Error).size(), 1u);
    }

    Root* rootPointer = nullptr;
    Node first{1, nullptr};
    Node second{2, nullptr};
    Letters letters{};
};

} // namespace

// The worked case ---------------------------------------------------------------------------------

TEST_F(VariablePathTest, WorkedCaseResolvesToTheMemberOfTheArrayElement)
{
    DataInfo info = Browser().GetDataInfo("Comp/Root.a[1][2].b");
    EXPECT_EQ(info.name, "b");
    EXPECT_EQ(info.address, Bytes(&root) + 68);
    EXPECT_EQ(info.address, &root.a[1][2].b);
    EXPECT_EQ(info.dataType, DataTypeEnum::Int32);
    EXPECT_EQ(info.typeIdentifier, TypeIdentifier("Demo", "int"));
}

TEST_F(VariablePathTest, WorkedCaseWritesItsTraceLinesInOrder)
{
    Browser().GetDataInfo("Comp/Root.a[1][2].b");
    const std::string a = AddressText(&root);
    const std::string member = AddressText(Bytes(&root) + 16);
    const std::string element = AddressText(Bytes(&root) + 64);
    const std::string b = AddressText(Bytes(&root) + 68);
    std::vector<std::pair<std::string, std::string>> expected = {
        {DataBrowserLogger, " browse: component=Comp, root=Root, variable=a[1][2].b"},
        {DataBrowserLogger, "  browse: path=a[1][2].b, startAddress=" + a},
        {TypeBrowserLogger, "  browse: child=a, name=Demo::Element, offset=16, size=8, fields=10"},
        {DataBrowserLogger, "   browse: address=" + a + "+16"},
        {DataBrowserLogger, "  browse: name=a, address: " + member},
        {DataBrowserLogger, "   child: type=Demo::Element, basetype=" + std::to_string(library.Describe<Element>().dataType)
                                + ", offset=16"},
        {DataBrowserLogger, "  browse: name=a[1], address=" + member + "+32"},
        {DataBrowserLogger, "  browse: name=a[1][2], address=" + member + "+48"},
        {TypeBrowserLogger, "  browse: type=Demo::Element"},
        {TypeBrowserLogger, "  browse: child=b, name=Demo::int, offset=4, size=4, fields=10"},
        {DataBrowserLogger, "   browse: address=" + element + "+4"},
        {DataBrowserLogger, "  browse: name=b, address: " + b},
        {DataBrowserLogger, "   child: type=Demo::int, basetype=Int32, offset=4"},
    };
    auto trace = Capture().GetEntries(Level::Trace);
    ASSERT_EQ(trace.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(trace[i].loggerName, expected[i].first) << i;
        EXPECT_EQ(trace[i].message, expected[i].second) << i;
    }
    auto debug = Capture().GetEntries(Level::Debug);
    ASSERT_EQ(debug.size(), 1u);
    EXPECT_EQ(debug[0].loggerName, DataBrowserLogger);
    EXPECT_EQ(debug[0].message, "Root.a[1][2].b: address=" + b);
}

// Splitting the path ------------------------------------------------------------------------------

TEST_F(VariablePathTest, PathsWithoutRootGiveTheEmptyRecordAndAnErrorLine)
{
    ExpectEmptyWithoutComponentInformation("Name");
    ExpectEmptyWithoutComponentInformation("");
    ExpectEmptyWithoutComponentInformation("Comp/");
    ExpectEmptyWithoutComponentInformation("Comp/.x");
    ExpectEmptyWithoutComponentInformation("Comp/[1]");
}

TEST_F(VariablePathTest, PathWithoutSlashIsNotSplit)
{
    Browser().GetDataInfo("Comp.Root");
    EXPECT_EQ(Capture().Count(Level::Trace, " browse: component=, root=, variable=Comp.Root"), 1u);
}

TEST_F(VariablePathTest, EmptyComponentIsLookedUpAsSuch)
{
    DataInfo info = Browser().GetDataInfo("/Root");
    EXPECT_EQ(info.dataType, 0u);
    EXPECT_EQ(info.address, nullptr);
    EXPECT_EQ(Capture().Count(Level::Error, "Component is not available: "), 1u);
}

TEST_F(VariablePathTest, ComponentRegisteredUnderTheEmptyNameIsFoundByAPathThatStartsWithSlash)
{
    Zon::Host::Component unnamed("", library);
    unnamed.AddVariable("Root", root);
    Provider().Add(unnamed);
    DataInfo info = Browser().GetDataInfo("/Root.d");
    Provider().Remove(unnamed);
    EXPECT_EQ(info.address, &root.d);
}

TEST_F(VariablePathTest, UnknownComponentGivesTheEmptyRecordAndAnErrorLine)
{
    DataInfo info = Browser().GetDataInfo("Other/Root.d");
    EXPECT_EQ(info.dataType, 0u);
    EXPECT_EQ(info.address, nullptr);
    EXPECT_EQ(Capture().Count(Level::Error, "Component is not available: Other"), 1u);
}

TEST_F(VariablePathTest, ComponentNameMayHoldDots)
{
    Zon::Host::Component dotted("App.Unit", library);
    dotted.AddVariable("Root", root);
    Provider().Add(dotted);
    DataInfo info = Browser().GetDataInfo("App.Unit/Root.n");
    Provider().Remove(dotted);
    EXPECT_EQ(info.address, &root.n);
}

TEST_F(VariablePathTest, RootAloneGivesACopyOfTheRootRecordWithoutAWalk)
{
    const DataInfo* declared = component.FindVariable("Root");
    ASSERT_NE(declared, nullptr);
    for (const char* path : {"Comp/Root", "Comp/Root."}) {
        SCOPED_TRACE(path);
        Capture().Clear();
        DataInfo info = Browser().GetDataInfo(path);
        EXPECT_EQ(info.name, "Root");
        EXPECT_EQ(info.address, &root);
        EXPECT_EQ(info.dataType, declared->dataType);
        EXPECT_EQ(info.typeIdentifier, declared->typeIdentifier);
        EXPECT_EQ(Capture().GetEntries(Level::Debug).size(), 0u);
        EXPECT_EQ(Capture().Size(), 1u);
    }
}

TEST_F(VariablePathTest, FurtherSlashesBelongToTheRoot)
{
    DataInfo info = Browser().GetDataInfo("Comp/a/b.c");
    EXPECT_EQ(Capture().Count(Level::Trace, " browse: component=Comp, root=a/b, variable=c"), 1u);
    EXPECT_EQ(info.name, "c");
    EXPECT_EQ(info.address, &letters.c);
}

TEST_F(VariablePathTest, UnknownRootGivesWhatTheExhaustedEnumeratorGivesTheEmptyRecord)
{
    // The host component's exhausted enumerator answers with the empty record: the root alone
    // is that record, and a walk below it finds no member and no address.
    DataInfo root = Browser().GetDataInfo("Comp/Nosuch");
    EXPECT_EQ(root.name, DataInfo::Empty.name);
    EXPECT_EQ(root.dataType, 0u);
    EXPECT_EQ(root.address, nullptr);
    DataInfo member = Browser().GetDataInfo("Comp/Nosuch.d");
    EXPECT_EQ(member.name, "d");
    EXPECT_EQ(member.dataType, 0u);
    EXPECT_EQ(member.address, nullptr);
    // An index on it ends in the walk's own message for a member without type.
    try {
        Browser().GetDataInfo("Comp/Nosuch.d[1]");
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::ArgumentException& exception) {
        EXPECT_STREQ(exception.what(), "Invalid variable path: Child type info is empty");
    }
}

namespace {

/// A component whose provider hands out the platform's empty enumerator.
class ComponentWithoutRoots : public Zon::System::Acf::IComponent,
                              public Zon::Plc::Commons::Meta::IMetaComponent,
                              public Zon::Plc::Commons::Meta::IDataInfoProvider {
public:
    explicit ComponentWithoutRoots(Zon::System::Acf::ILibrary& library) : library(library) {}
    const Zon::String& GetComponentName() const override { return name; }
    Zon::System::Acf::ILibrary& GetLibrary() const override { return library; }
    IDataInfoProvider& GetDataInfoProvider(bool) override { return *this; }
    Zon::IEnumerator<const DataInfo&>::Ptr GetRootEnumerator() override
    {
        return std::make_shared<Zon::Enumerator<const DataInfo&>::Empty>();
    }

private:
    Zon::String name = "Void";
    Zon::System::Acf::ILibrary& library;
};

} // namespace

TEST_F(VariablePathTest, UnknownRootOfAProviderWithTheEmptyEnumeratorThrowsItsText)
{
    ComponentWithoutRoots empty(library);
    Provider().Add(empty);
    std::string message;
    try {
        Browser().GetDataInfo("Void/Root");
    } catch (const Zon::Exception& exception) {
        message = exception.what();
    }
    Provider().Remove(empty);
    EXPECT_EQ(message, "IEnumerator::GetCurrent() is not supported by empty enumerators");
}

// Members -------------------------------------------------------------------------------------

TEST_F(VariablePathTest, MembersResolveToTheirAddressAndType)
{
    DataInfo d = Browser().GetDataInfo("Comp/Root.d");
    EXPECT_EQ(d.address, &root.d);
    EXPECT_EQ(d.name, "d");
    EXPECT_EQ(d.dataType, DataTypeEnum::Float64);
    DataInfo n = Browser().GetDataInfo("Comp/Root.n");
    EXPECT_EQ(n.address, &root.n);
    EXPECT_EQ(n.dataType, DataTypeEnum::Int64);
}

TEST_F(VariablePathTest, TrailingDotWalksAMemberWithAnEmptyName)
{
    DataInfo info = Browser().GetDataInfo("Comp/Root.a.");
    EXPECT_EQ(info.name, "");
    EXPECT_EQ(info.dataType, 0u);
    EXPECT_EQ(info.address, &root.a);
}

TEST_F(VariablePathTest, UnknownMemberGivesARecordWithDataTypeZeroAtTheParentAddress)
{
    DataInfo info = Browser().GetDataInfo("Comp/Root.nosuch");
    EXPECT_EQ(info.name, "nosuch");
    EXPECT_EQ(info.dataType, 0u);
    EXPECT_EQ(info.address, &root);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: child=nosuch, name=, offset=0, size=0, fields=10"), 1u);
}

TEST_F(VariablePathTest, MemberNamesAreComparedExactly)
{
    EXPECT_EQ(Browser().GetDataInfo("Comp/Root.D").dataType, 0u);
    EXPECT_EQ(Browser().GetDataInfo("Comp/Root. d").dataType, 0u);
}

TEST_F(VariablePathTest, IndexOnTheRootWalksAMemberWithAnEmptyName)
{
    try {
        Browser().GetDataInfo("Comp/Root[1]");
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::ArgumentException& exception) {
        EXPECT_STREQ(exception.what(), "Invalid variable path: Child type info is empty");
    }
    auto errors = Capture().GetEntries(Level::Error);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].message, "Child type info is empty");
    EXPECT_EQ(errors[0].loggerName, DataBrowserLogger);
}

TEST_F(VariablePathTest, IndexOnTheRootFindsAMemberWithTheEmptyNameWhenTheTypeHasOne)
{
    int cells[4] = {};
    auto blank = library.AddStruct("Blank", sizeof(cells), alignof(int));
    blank.MemberAt<int[4]>("", 0);
    component.AddVariable("Blank", cells, blank.GetTypeInfo());
    DataInfo info = Browser().GetDataInfo("Comp/Blank[2]");
    EXPECT_EQ(info.address, &cells[2]);
    EXPECT_EQ(info.name, "[2]");
}

TEST_F(VariablePathTest, TypeInfoOfAPathIsTheTypeOfTheResolvedVariable)
{
    auto element = Browser().GetTypeInfo("Comp/Root.a[1][2]");
    EXPECT_EQ(element.typeIdentifier, TypeIdentifier("Demo", "Element"));
    EXPECT_EQ(element.size, sizeof(Element));
    auto d = Browser().GetTypeInfo("Comp/Root.d");
    EXPECT_EQ(d.dataType, DataTypeEnum::Float64);
    EXPECT_EQ(d.size, 0u);
    auto none = Browser().GetTypeInfo("Comp/Root.nosuch");
    EXPECT_EQ(none.dataType, 0u);
    auto missing = Browser().GetTypeInfo("Other/Root");
    EXPECT_EQ(missing.dataType, 0u);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: type= not available"), 2u);
}

// Indices -------------------------------------------------------------------------------------

TEST_F(VariablePathTest, ElementNameKeepsEveryIndexAsWritten)
{
    DataInfo info = Browser().GetDataInfo("Comp/Root.a[01][2]");
    EXPECT_EQ(info.name, "a[01][2]");
    EXPECT_EQ(info.address, &root.a[1][2]);
    EXPECT_EQ(info.typeIdentifier, TypeIdentifier("Demo", "Element"));
}

TEST_F(VariablePathTest, NinthElementPassesAndTenthThrowsWhateverTheDeclaredLength)
{
    DataInfo line = Browser().GetDataInfo("Comp/Root.line[9]");
    EXPECT_EQ(line.address, Bytes(&root.line) + 9 * sizeof(int));
    EXPECT_EQ(IndexFailure("Comp/Root.line[10]"), "Port Root/lin out of range");
    DataInfo hundred = Browser().GetDataInfo("Comp/Root.hundred[9]");
    EXPECT_EQ(hundred.address, &root.hundred[9]);
    EXPECT_EQ(IndexFailure("Comp/Root.hundred[10]"), "Port Root/hun out of range");
    EXPECT_EQ(IndexFailure("Comp/Root.hundred[99]"), "Port Root/hun out of range");
}

TEST_F(VariablePathTest, BoundCountsAllDimensionsTogether)
{
    EXPECT_EQ(Browser().GetDataInfo("Comp/Root.a[2][1]").address, &root.a[2][1]);
    EXPECT_EQ(IndexFailure("Comp/Root.a[2][2]"), "Port Root/a[ out of range");
}

TEST_F(VariablePathTest, TwoDimensionalIndicesAreRowMajor)
{
    DataInfo element = Browser().GetDataInfo("Comp/Root.grid[1][2]");
    EXPECT_EQ(element.address, Bytes(&root.grid) + 5 * sizeof(short));
    EXPECT_EQ(element.address, &root.grid[1][2]);
    DataInfo row = Browser().GetDataInfo("Comp/Root.grid[1]");
    EXPECT_EQ(row.address, Bytes(&root.grid) + 3 * sizeof(short));
    EXPECT_EQ(row.dataType, DataTypeEnum::Int16);
}

TEST_F(VariablePathTest, EmptyIndexThrowsInvalidArgument)
{
    try {
        Browser().GetDataInfo("Comp/Root.a[]");
        FAIL() << "no exception";
    } catch (const std::invalid_argument& exception) {
        EXPECT_STREQ(exception.what(), "stol");
    }
}

TEST_F(VariablePathTest, IndexBeyondSixtyFourBitsThrowsOutOfRange)
{
    try {
        Browser().GetDataInfo("Comp/Root.a[99999999999999999999]");
        FAIL() << "no exception";
    } catch (const std::out_of_range& exception) {
        EXPECT_STREQ(exception.what(), "stol");
    }
}

// Malformed paths -----------------------------------------------------------------------------

TEST_F(VariablePathTest, UnexpectedCharactersThrowParseExceptionCutAtTheirPosition)
{
    EXPECT_EQ(ParseFailure("Comp/Root.a]"), ParseText);
    EXPECT_EQ(ParseFailure("Comp/Root.a[x]"), ParseText.substr(2));
    EXPECT_EQ(ParseFailure("Comp/Root.a[-1]"), ParseText.substr(2));
    EXPECT_EQ(ParseFailure("Comp/Root.a[1"), ParseText.substr(2));
    EXPECT_EQ(ParseFailure("Comp/Root.a[1]b"), ParseText.substr(4));
    EXPECT_EQ(ParseFailure("Comp/Root.a[1]b"), "lid variable path: Unexpected character at position ");
    EXPECT_EQ(ParseFailure("Comp/Root.a[1]]"), ParseText.substr(4));
    EXPECT_EQ(ParseFailure("Comp/Root.a[ 1]"), ParseText.substr(2));
    EXPECT_EQ(ParseFailure("Comp/Root.a[1,2]"), ParseText.substr(2));
    EXPECT_EQ(ParseFailure("Comp/Root.d.x]"), ParseText.substr(2));
}

TEST_F(VariablePathTest, PositionEightCutsTheFirstEightCharacters)
{
    EXPECT_EQ(ParseFailure("Comp/Root.hundred[x]"), "variable path: Unexpected character at position ");
}

TEST_F(VariablePathTest, ParseTextIsEmptyFromTheEndOfTheLiteralOn)
{
    const std::string before(54, 'q');
    EXPECT_EQ(ParseFailure("Comp/Root." + before + ".z]"), " ");
    const std::string at(55, 'q');
    EXPECT_EQ(ParseFailure("Comp/Root." + at + ".z]"), "");
    const std::string beyond(300, 'q');
    EXPECT_EQ(ParseFailure("Comp/Root." + beyond + ".z]"), "");
}

TEST_F(VariablePathTest, PathEndsAtAnEmbeddedNul)
{
    DataInfo info = Browser().GetDataInfo(Zon::String(std::string("Comp/Root.d\0.x", 14)));
    EXPECT_EQ(info.name, "d");
    EXPECT_EQ(info.address, &root.d);
    EXPECT_EQ(ParseFailure(std::string("Comp/Root.a[1\0]", 16)), ParseText.substr(2));
}

// Pointers ------------------------------------------------------------------------------------

TEST_F(VariablePathTest, PointerMembersAreFollowedOnTheWay)
{
    DataInfo node = Browser().GetDataInfo("Comp/Root.node");
    EXPECT_EQ(node.address, &first);
    EXPECT_EQ(node.typeIdentifier, TypeIdentifier("Demo", "Node"));
    EXPECT_EQ(Browser().GetDataInfo("Comp/Root.node.value").address, &first.value);
    EXPECT_EQ(Browser().GetDataInfo("Comp/Root.node.next.value").address, &second.value);
    EXPECT_EQ(Capture().Count(Level::Trace, "   browse: pointer=" + AddressText(&root) + "+"
                                                + std::to_string(offsetof(Root, node)) + ", address="
                                                + AddressText(&first)),
              3u);
}

TEST_F(VariablePathTest, PointerInsideAnElementIsFollowedAndTheElementIsNot)
{
    DataInfo holder = Browser().GetDataInfo("Comp/Root.holders[1]");
    EXPECT_EQ(holder.address, &root.holders[1]);
    DataInfo target = Browser().GetDataInfo("Comp/Root.holders[1].target");
    EXPECT_EQ(target.address, &second);
    EXPECT_EQ(Browser().GetDataInfo("Comp/Root.holders[1].target.value").address, &second.value);
}

TEST_F(VariablePathTest, NullPointerMemberFollowedByAFurtherMemberCountsFromZero)
{
    DataInfo none = Browser().GetDataInfo("Comp/Root.none");
    EXPECT_EQ(none.address, nullptr);
    DataInfo second = Browser().GetDataInfo("Comp/Root.none.second");
    EXPECT_EQ(second.address, reinterpret_cast<void*>(offsetof(Pair, second)));
    EXPECT_EQ(second.dataType, DataTypeEnum::Int32);
}

TEST_F(VariablePathTest, PointerMemberBelowANullPointerIsRefusedInsteadOfRead)
{
    EXPECT_EQ(OperationFailure("Comp/Root.none.link"),
              "Attempt to read a pointer member outside of described memory: address=0x0+8");
    EXPECT_EQ(OperationFailure("Comp/Root.none.link.value"),
              "Attempt to read a pointer member outside of described memory: address=0x0+8");
}

TEST_F(VariablePathTest, PointerMemberOfAnElementBeyondTheDeclaredArrayIsRefusedInsteadOfRead)
{
    EXPECT_EQ(Browser().GetDataInfo("Comp/Root.holders[5]").address, Bytes(&root.holders) + 5 * sizeof(Holder));
    EXPECT_EQ(OperationFailure("Comp/Root.holders[5].target"),
              "Attempt to read a pointer member outside of described memory: address="
                  + AddressText(Bytes(&root.holders) + 5 * sizeof(Holder)) + "+" + std::to_string(offsetof(Holder, target)));
}

TEST_F(VariablePathTest, IndirectRootIsFollowedToItsObject)
{
    EXPECT_EQ(Browser().GetDataInfo("Comp/Indirect.d").address, &root.d);
    EXPECT_EQ(Browser().GetDataInfo("Comp/Indirect.a[1][2].b").address, &root.a[1][2].b);
    DataInfo record = Browser().GetDataInfo("Comp/Indirect");
    EXPECT_EQ(record.address, &rootPointer);
    EXPECT_EQ(record.dataType & DataTypeIndirectMask, DataTypeIndirectMask);
}

TEST_F(VariablePathTest, IndirectRootWithANullAddressThrowsOnAWalk)
{
    const auto dataType = library.Describe<Root>().dataType | DataTypeIndirectMask;
    EXPECT_EQ(OperationFailure("Comp/Missing.d"),
              "Attempt to dereference variableAddress == nullptr for DataTag: name=Missing, dataType="
                  + std::to_string(dataType));
    EXPECT_EQ(Browser().GetDataInfo("Comp/Missing").address, nullptr);
}

TEST_F(VariablePathTest, IndirectRootThatHoldsNullCountsFromZeroAndReadsNoPointer)
{
    rootPointer = nullptr;
    EXPECT_EQ(Browser().GetDataInfo("Comp/Indirect.n").address, reinterpret_cast<void*>(offsetof(Root, n)));
    EXPECT_EQ(OperationFailure("Comp/Indirect.node"),
              "Attempt to read a pointer member outside of described memory: address=0x0+"
                  + std::to_string(offsetof(Root, node)));
}

// The walk on its own -------------------------------------------------------------------------

TEST_F(VariablePathTest, WalkOfAnEmptyRemainderWalksOneMemberWithAnEmptyName)
{
    DataBrowser& browser = dynamic_cast<DataBrowser&>(Browser());
    const DataInfo* parent = component.FindVariable("Root");
    ASSERT_NE(parent, nullptr);
    DataInfo info = browser.GetDataInfo(*parent, std::string());
    EXPECT_EQ(info.name, "");
    EXPECT_EQ(info.dataType, 0u);
    EXPECT_EQ(info.address, &root);
    EXPECT_EQ(Capture().Count(Level::Debug, "Root.: address=" + AddressText(&root)), 1u);
}

TEST(DataBrowserArithmetic, ElementOffsetIsRowMajor)
{
    ArrayDimensions dimensions{{3, 0}, {4, 0}};
    EXPECT_EQ(DataBrowser::CalculateArrayElementOffset({}, dimensions, 8), 0u);
    EXPECT_EQ(DataBrowser::CalculateArrayElementOffset({1}, dimensions, 8), 32u);
    EXPECT_EQ(DataBrowser::CalculateArrayElementOffset({1, 2}, dimensions, 8), 48u);
}

TEST(DataBrowserArithmetic, IndicesPastTheLastDimensionCountWithTheElementSizeAlone)
{
    ArrayDimensions dimensions{{3, 0}};
    EXPECT_EQ(DataBrowser::CalculateArrayElementOffset({2, 1}, dimensions, 8), 24u);
    EXPECT_EQ(DataBrowser::CalculateArrayElementOffset({1, 1, 1}, {}, 4), 12u);
}

TEST(DataBrowserArithmetic, LowerBoundsAndDimensionSizesAreNotApplied)
{
    ArrayDimensions dimensions{{2, 5}, {3, 1}};
    EXPECT_EQ(DataBrowser::CalculateArrayElementOffset({7, 9}, dimensions, 2), (7u * 3u + 9u) * 2u);
}

TEST(DataBrowserArithmetic, ArithmeticWraps)
{
    ArrayDimensions dimensions{{1, 0}, {4, 0}};
    EXPECT_EQ(DataBrowser::CalculateArrayElementOffset({1ul << 63}, {}, 2), 0u);
    EXPECT_EQ(DataBrowser::CalculateArrayElementOffset({(1ul << 62) + 1}, dimensions, 1), 4u);
}

TEST_F(VariablePathTest, ChildMemberAddressAddsTheOffsetOrReadsThePointer)
{
    auto element = library.GetChildInfo(TypeIdentifier("Demo", "Element"), "b");
    auto* base = reinterpret_cast<unsigned char*>(&root.a[0][0]);
    EXPECT_EQ(DataBrowser::CalculateChildMemberAddress(base, element), base + 4);
    EXPECT_EQ(Capture().Count(Level::Trace, "   browse: address=" + AddressText(base) + "+4"), 1u);
    auto node = library.GetChildInfo(TypeIdentifier("Demo", "Root"), "node");
    auto* rootBytes = reinterpret_cast<unsigned char*>(&root);
    EXPECT_EQ(DataBrowser::CalculateChildMemberAddress(rootBytes, node), reinterpret_cast<unsigned char*>(&first));
    auto none = library.GetChildInfo(TypeIdentifier("Demo", "Root"), "none");
    EXPECT_EQ(DataBrowser::CalculateChildMemberAddress(rootBytes, none), nullptr);
    EXPECT_THROW(DataBrowser::CalculateChildMemberAddress(nullptr, node), Zon::System::Commons::InvalidOperationException);
}

// The walk asks for each member's record without copying it out of the host library. The oracle
// is the same walk over a provider that answers only by value, with a copy per member: over the
// paths of these tests and thousands of generated ones, both give the same records, the same
// failures and the same log lines.

namespace {

/// What resolving `path` gives: the record or the failure, then every captured line.
std::vector<std::string> Outcome(Zon::System::Commons::Diagnostics::Logging::CaptureSink& capture,
                                 VarnixBase::Commons::Meta::IDataBrowser& browser, const std::string& path)
{
    capture.Clear();
    std::vector<std::string> outcome;
    try {
        DataInfo info = browser.GetDataInfo(path);
        outcome.push_back(fmt::format("{}|{}|{}|{}|{}|{}", info.name, info.dataType, info.typeIdentifier.GetFullName(),
                                      AddressText(info.address), info.arrayDimensions.size(), info.isConstant));
    } catch (const std::exception& exception) {
        outcome.push_back(std::string(typeid(exception).name()) + ": " + exception.what());
    }
    for (const auto& entry : capture.GetEntries()) {
        outcome.push_back(fmt::format("{} {} {}", static_cast<int>(entry.level), entry.loggerName, entry.message));
    }
    return outcome;
}

std::vector<std::string> PathsToCompare()
{
    std::vector<std::string> paths = {
        "Comp/Root.a[1][2].b", "Comp/Root.d", "Comp/Root.n", "Comp/Root.node.next.value", "Comp/Root.node.next.next.value",
        "Comp/Root.holders[1].target.value", "Comp/Root.holders[0].target.value", "Comp/Root.holders[5].target.value",
        "Comp/Root.nosuch", "Comp/Root.a.", "Comp/Root[1]", "Comp/Root.a[10]", "Comp/Root.a[9]", "Comp/Root.grid[1][2]",
        "Comp/Root.none.link", "Comp/Root.none.link.value", "Comp/Root.a]", "Comp/Root.a[x]", "Comp/Root.a[-1]",
        "Comp/Root.a[1", "Comp/Root.a[1]b", "Comp/Root.a[]", "Comp/Root.a[99999999999999999999]", "Comp/Indirect.d",
        "Comp/Indirect.a[2][3].x", "Comp/Missing.d", "Comp/Root.line[9]", "Comp/Root.hundred[10]", "Comp/a/b.c",
        "Comp/Root.", "Comp/Root", "Comp/.x", "Comp/Nosuch.x", "Other/Root.d", "Comp/Root.a[1][2].b.c.d",
    };
    // Generated paths: members of the test structures (and some that are none), indices, and the
    // separators, in random order.
    const std::vector<std::string> names = {"d", "n", "a", "line", "hundred", "grid", "node", "none", "holders",
                                            "x", "b", "value", "next", "tag", "target", "first", "second",
                                            "link", "c", "nosuch", ""};
    const std::vector<std::string> roots = {"Root", "Indirect", "Missing", "a/b"};
    std::mt19937 random(15);
    auto pick = [&](const std::vector<std::string>& from) {
        return from[std::uniform_int_distribution<std::size_t>(0, from.size() - 1)(random)];
    };
    for (int n = 0; n < 3000; ++n) {
        std::string path = "Comp/" + pick(roots);
        const int members = std::uniform_int_distribution<int>(0, 4)(random);
        for (int m = 0; m < members; ++m) {
            path += '.';
            path += pick(names);
            for (int i = std::uniform_int_distribution<int>(-1, 2)(random); i > 0; --i) {
                path += '[' + std::to_string(std::uniform_int_distribution<int>(0, 11)(random)) + ']';
            }
        }
        if (std::uniform_int_distribution<int>(0, 19)(random) == 0) {
            path.insert(std::uniform_int_distribution<std::size_t>(0, path.size())(random), 1, "[].x"[n % 4]);
        }
        paths.push_back(path);
    }
    return paths;
}

} // namespace

TEST_F(VariablePathTest, WalkWithTheLibrarysOwnRecordsAgreesWithAWalkOverCopiesOfThem)
{
    const std::vector<std::string> paths = PathsToCompare();
    std::vector<std::vector<std::string>> expected;
    auto& types = dynamic_cast<VarnixBase::Commons::Meta::TypeBrowser&>(Provider().GetTypeBrowser());
    ByValueProvider byValue(library);
    types.Remove(library);
    types.Add(byValue);
    for (const auto& path : paths) {
        expected.push_back(Outcome(Capture(), Browser(), path));
    }
    types.Remove(byValue);
    types.Add(library);
    EXPECT_GT(byValue.childQuestions, 1000);
    std::size_t differences = 0;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const auto outcome = Outcome(Capture(), Browser(), paths[i]);
        if (outcome != expected[i] && ++differences <= 5) {
            std::string report = paths[i] + "\n  own records:";
            for (const auto& line : outcome) {
                report += "\n    " + line;
            }
            report += "\n  copies:";
            for (const auto& line : expected[i]) {
                report += "\n    " + line;
            }
            ADD_FAILURE() << report;
        }
    }
    EXPECT_EQ(differences, 0u);
}
