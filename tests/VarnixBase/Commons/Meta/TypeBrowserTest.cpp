#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "MetaTestSupport.hpp"
#include "VarnixBase/Commons/Meta/TypeBrowser.hpp"
#include "Zon/Exception.hpp"

using namespace MetaTest;
using VarnixBase::Commons::Meta::TypeBrowser;
using Zon::Plc::Commons::DataTypeEnum;
using Zon::Plc::Commons::Meta::ChildTypeInfo;
using Zon::Plc::Commons::Meta::TypeIdentifier;
using Zon::Plc::Commons::Meta::TypeInfo;

namespace {

const std::string Logger = "VarnixBase.Commons.Meta.TypeBrowser";

class TypeBrowserTest : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        VarnixTest::HostTest::SetUp();
        browser = std::make_unique<TypeBrowser>();
        DescribeTypes(demo);
    }

    std::vector<std::string> Namespaces()
    {
        std::vector<std::string> names;
        auto namespaces = browser->GetNamespaces();
        while (namespaces->MoveNext()) {
            names.push_back(namespaces->GetCurrent().ToStdString());
        }
        return names;
    }

    using Level = Zon::System::Commons::Diagnostics::Logging::LogLevel;

    Zon::Host::TypeLibrary demo{"DemoLibrary", "Demo"};
    std::unique_ptr<TypeBrowser> browser;
};

/// A provider whose every answer is a failure.
class FailingProvider : public Zon::Plc::Commons::Meta::IMetaLibrary,
                        public Zon::Plc::Commons::Meta::ITypeInfoProvider {
public:
    const char* GetNamespaceName() const override { return "Failing"; }
    ITypeInfoProvider& GetTypeInfoProvider(bool) override { return *this; }
    Zon::IEnumerator<TypeInfo>::Ptr GetTypes() override { throw Zon::Exception("types"); }
    Zon::IEnumerator<ChildTypeInfo>::Ptr GetChildren(const TypeIdentifier&) override { throw Zon::Exception("children"); }
    TypeInfo GetTypeInfo(const TypeIdentifier&) override { throw Zon::Exception("type"); }
    bool HasType(const TypeIdentifier&) override { throw Zon::Exception("has"); }
    ChildTypeInfo GetChildInfo(const TypeIdentifier&, const Zon::String&) override { throw Zon::Exception("child"); }
};

/// The lines captured so far, each as its logger's name and its message.
std::vector<std::string> LogLines(Zon::System::Commons::Diagnostics::Logging::CaptureSink& capture)
{
    std::vector<std::string> lines;
    for (const auto& entry : capture.GetEntries()) {
        lines.push_back(entry.loggerName + " " + entry.message);
    }
    return lines;
}

} // namespace

TEST_F(TypeBrowserTest, NamespacesOfAnEmptyBrowserEndAtOnce)
{
    EXPECT_FALSE(browser->GetNamespaces()->MoveNext());
}

TEST_F(TypeBrowserTest, NamespacesComeInAscendingOrder)
{
    Zon::Host::TypeLibrary b("LibraryB", "b");
    Zon::Host::TypeLibrary a("LibraryA", "a");
    browser->Add(b);
    browser->Add(a);
    EXPECT_EQ(Namespaces(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(Capture().GetEntries(Level::Trace).size(), 0u);
}

TEST_F(TypeBrowserTest, AddLogsTheNamespaceAtInfoLevel)
{
    browser->Add(demo);
    auto entries = Capture().GetEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].level, Level::Info);
    EXPECT_EQ(entries[0].loggerName, Logger);
    EXPECT_EQ(entries[0].message, "Add type namespace: Demo");
}

TEST_F(TypeBrowserTest, AddingANamespaceTwiceLogsOnceAndKeepsTheFirstProvider)
{
    Zon::Host::TypeLibrary other("OtherLibrary", "Demo");
    browser->Add(demo);
    browser->Add(other);
    EXPECT_EQ(Capture().Count(Level::Debug, "Namespace was already added: Demo"), 1u);
    EXPECT_EQ(Capture().Count(Level::Info, "Add type namespace: Demo"), 1u);
    EXPECT_EQ(browser->GetTypeInfo(TypeIdentifier("Demo", "Root")).size, sizeof(Root));
}

TEST_F(TypeBrowserTest, RemoveOfAnUnknownNamespaceDoesNothingAndLogsNothing)
{
    Zon::Host::TypeLibrary other("OtherLibrary", "Other");
    browser->Add(demo);
    Capture().Clear();
    browser->Remove(other);
    EXPECT_EQ(Capture().Size(), 0u);
    EXPECT_EQ(Namespaces(), (std::vector<std::string>{"Demo"}));
}

TEST_F(TypeBrowserTest, RemoveLogsAtDebugLevelAndForgetsTheNamespace)
{
    browser->Add(demo);
    Capture().Clear();
    browser->Remove(demo);
    EXPECT_EQ(Capture().Count(Level::Debug, "Remove namespace Demo"), 1u);
    EXPECT_TRUE(Namespaces().empty());
}

TEST_F(TypeBrowserTest, RemoveByALibraryThatWasIgnoredTakesTheEntryOfTheFirst)
{
    Zon::Host::TypeLibrary other("OtherLibrary", "Demo");
    browser->Add(demo);
    browser->Add(other);
    browser->Remove(other);
    EXPECT_TRUE(Namespaces().empty());
}

TEST_F(TypeBrowserTest, TypesOfAnUnknownNamespaceAreAnEmptyEnumerator)
{
    auto types = browser->GetTypes("Nosuch");
    ASSERT_NE(types, nullptr);
    EXPECT_FALSE(types->MoveNext());
    EXPECT_THROW(types->GetCurrent(), Zon::Exception);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: namespace=Nosuch not available"), 1u);
}

TEST_F(TypeBrowserTest, TypesOfAKnownNamespaceComeFromItsProvider)
{
    browser->Add(demo);
    Capture().Clear();
    auto types = browser->GetTypes("Demo");
    std::size_t count = 0;
    while (types->MoveNext()) {
        ++count;
    }
    EXPECT_EQ(count, 13u + 6u);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: namespace=Demo"), 1u);
}

TEST_F(TypeBrowserTest, ChildrenOfAKnownTypeComeFromItsProvider)
{
    browser->Add(demo);
    Capture().Clear();
    auto children = browser->GetChildren(TypeIdentifier("Demo", "Element"));
    ASSERT_TRUE(children->MoveNext());
    EXPECT_EQ(children->GetCurrent().name, "x");
    ASSERT_TRUE(children->MoveNext());
    EXPECT_EQ(children->GetCurrent().name, "b");
    EXPECT_FALSE(children->MoveNext());
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: type=Demo::Element"), 1u);
}

TEST_F(TypeBrowserTest, ChildrenOfAnUnknownNamespaceAreAnEmptyEnumerator)
{
    auto children = browser->GetChildren(TypeIdentifier("Nosuch", "Element"));
    EXPECT_FALSE(children->MoveNext());
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: type=Nosuch::Element not available"), 1u);
}

TEST_F(TypeBrowserTest, TypeInfoTraceShowsSizeAlignmentAndFields)
{
    browser->Add(demo);
    Capture().Clear();
    TypeInfo root = browser->GetTypeInfo(TypeIdentifier("Demo", "Root"));
    EXPECT_EQ(root.size, sizeof(Root));
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: type=Demo::Root, size=" + std::to_string(sizeof(Root))
                                                + ", alignment=" + std::to_string(alignof(Root)) + ", fields=7"),
              1u);
}

TEST_F(TypeBrowserTest, TypeInfoWithSizeZeroComesBackWithSizeZeroWhileTheTraceShowsTheSizeOfItsDataType)
{
    browser->Add(demo);
    Capture().Clear();
    TypeInfo info = browser->GetTypeInfo(TypeIdentifier("Demo", "double"));
    EXPECT_EQ(info.size, 0u);
    EXPECT_EQ(info.dataType, DataTypeEnum::Float64);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: type=Demo::double, size=8, alignment=8, fields=7"), 1u);
}

TEST_F(TypeBrowserTest, TypeInfoOfAnUnknownNamespaceIsEmpty)
{
    TypeInfo info = browser->GetTypeInfo(TypeIdentifier("Nosuch", "Root"));
    EXPECT_EQ(info.dataType, 0u);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: type=Nosuch::Root not available"), 1u);
}

TEST_F(TypeBrowserTest, ChildInfoTraceShowsNameTypeOffsetSizeAndFields)
{
    browser->Add(demo);
    Capture().Clear();
    ChildTypeInfo child = browser->GetChildInfo(TypeIdentifier("Demo", "Root"), "n");
    EXPECT_EQ(child.offset, offsetof(Root, n));
    EXPECT_EQ(child.size, 0u);
    auto entries = Capture().GetEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].level, Level::Trace);
    EXPECT_EQ(entries[0].loggerName, Logger);
    EXPECT_EQ(entries[0].message, "  browse: child=n, name=Demo::long, offset=8, size=8, fields=10");
}

TEST_F(TypeBrowserTest, ChildInfoOfAnEmptyRecordsTypeIsEmpty)
{
    browser->Add(demo);
    Capture().Clear();
    ChildTypeInfo child = browser->GetChildInfo(TypeIdentifier(), "x");
    EXPECT_EQ(child.dataType, 0u);
    EXPECT_EQ(child.offset, 0u);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: child=x not available"), 1u);
}

TEST_F(TypeBrowserTest, ChildInfoOfTheEmptyNamespaceComesFromALibraryRegisteredUnderIt)
{
    Zon::Host::TypeLibrary unnamed("UnnamedLibrary", "");
    unnamed.AddStruct<Element>("").Member("x", &Element::x);
    browser->Add(unnamed);
    ChildTypeInfo child = browser->GetChildInfo(TypeIdentifier(), "x");
    EXPECT_EQ(child.dataType, DataTypeEnum::Int32);
    EXPECT_EQ(child.name, "x");
}

TEST_F(TypeBrowserTest, UnknownMemberOfAKnownTypeIsTheProvidersAnswer)
{
    browser->Add(demo);
    ChildTypeInfo child = browser->GetChildInfo(TypeIdentifier("Demo", "Root"), "nosuch");
    EXPECT_EQ(child.dataType, 0u);
}

TEST_F(TypeBrowserTest, ExceptionsOfAProviderPassThroughAfterTheTraceLinesOfTheEnumerations)
{
    FailingProvider failing;
    browser->Add(failing);
    Capture().Clear();
    EXPECT_THROW(browser->GetTypes("Failing"), Zon::Exception);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: namespace=Failing"), 1u);
    EXPECT_THROW(browser->GetChildren(TypeIdentifier("Failing", "T")), Zon::Exception);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: type=Failing::T"), 1u);
    Capture().Clear();
    EXPECT_THROW(browser->GetTypeInfo(TypeIdentifier("Failing", "T")), Zon::Exception);
    EXPECT_THROW(browser->GetChildInfo(TypeIdentifier("Failing", "T"), "m"), Zon::Exception);
    EXPECT_EQ(Capture().Size(), 0u);
}

// FindChildInfo answers as GetChildInfo does, trace line included, but without a copy where the
// provider keeps its records; GetChildInfo, which copies, is the oracle.
TEST_F(TypeBrowserTest, FindChildInfoAnswersAsGetChildInfoWithTheProvidersOwnRecord)
{
    browser->Add(demo);
    const TypeIdentifier root("Demo", "Root");
    for (const char* name : {"d", "n", "a", "node", "holders", "nosuch", ""}) {
        Capture().Clear();
        const ChildTypeInfo copy = browser->GetChildInfo(root, name);
        const auto copyTrace = LogLines(Capture());
        Capture().Clear();
        ChildTypeInfo storage;
        const ChildTypeInfo& found = browser->FindChildInfo(root, name, storage);
        EXPECT_EQ(LogLines(Capture()), copyTrace) << name;
        ChildTypeInfo unused;
        EXPECT_EQ(&found, &demo.FindChildInfo(root, name, unused)) << name;
        // The library's own record (which the library's tests compare with its copies field by field).
        EXPECT_EQ(std::tie(found.name, found.dataType, found.offset), std::tie(copy.name, copy.dataType, copy.offset))
            << name;
        EXPECT_TRUE(storage.name.IsEmpty()) << name;
    }
}

TEST_F(TypeBrowserTest, FindChildInfoOfAnUnknownNamespaceIsTheEmptyRecordWithItsTraceLine)
{
    browser->Add(demo);
    Capture().Clear();
    ChildTypeInfo storage;
    const ChildTypeInfo& found = browser->FindChildInfo(TypeIdentifier("Nosuch", "Root"), "x", storage);
    EXPECT_EQ(&found, &ChildTypeInfo::Empty);
    EXPECT_EQ(LogLines(Capture()), std::vector<std::string>{Logger + "   browse: child=x not available"});
}

TEST_F(TypeBrowserTest, FindChildInfoOfAProviderThatAnswersByValueKeepsItsAnswerInTheStorage)
{
    MetaTest::ByValueProvider byValue(demo);
    browser->Add(byValue);
    const TypeIdentifier root("Demo", "Root");
    Capture().Clear();
    const ChildTypeInfo copy = browser->GetChildInfo(root, "holders");
    const auto copyTrace = LogLines(Capture());
    Capture().Clear();
    ChildTypeInfo storage;
    const ChildTypeInfo& found = browser->FindChildInfo(root, "holders", storage);
    EXPECT_EQ(&found, &storage);
    EXPECT_EQ(byValue.childQuestions, 2);
    EXPECT_EQ(LogLines(Capture()), copyTrace);
    EXPECT_EQ(found.name, "holders");
    EXPECT_EQ(found.offset, copy.offset);
    EXPECT_EQ(found.typeIdentifier, TypeIdentifier("Demo", "Holder"));
    ASSERT_EQ(found.arrayDimensions.size(), 1u);
    EXPECT_EQ(found.arrayDimensions[0].elementCount, 2u);
    // The type asked about may lie in the storage itself, as when a walk goes one member deeper.
    const ChildTypeInfo& deeper = browser->FindChildInfo(storage.typeIdentifier, "target", storage);
    EXPECT_EQ(&deeper, &storage);
    EXPECT_EQ(deeper.name, "target");
    EXPECT_EQ(deeper.typeIdentifier, TypeIdentifier("Demo", "Node"));
}

TEST_F(TypeBrowserTest, FindChildInfoPassesExceptionsOfAProviderThrough)
{
    FailingProvider failing;
    browser->Add(failing);
    Capture().Clear();
    ChildTypeInfo storage;
    try {
        browser->FindChildInfo(TypeIdentifier("Failing", "T"), "m", storage);
        FAIL() << "no exception";
    } catch (const Zon::Exception& exception) {
        EXPECT_STREQ(exception.what(), "child");
    }
    EXPECT_EQ(Capture().Size(), 0u);
}
