#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MetaTestSupport.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "Zon/Exception.hpp"
#include "Zon/Host/Runtime.hpp"

using namespace MetaTest;
using VarnixBase::Commons::Meta::MetaInfoProvider;
using Zon::Plc::Commons::Meta::DataInfo;
using Zon::Plc::Commons::Meta::TypeIdentifier;

namespace {

/// A library without type meta data.
class PlainLibrary : public Zon::System::Acf::ILibrary {
public:
    const Zon::String& GetLibraryName() const override { return name; }

private:
    Zon::String name = "PlainLibrary";
};

/// A component without variable meta data.
class PlainComponent : public Zon::System::Acf::IComponent {
public:
    explicit PlainComponent(Zon::System::Acf::ILibrary& library) : library(library) {}
    const Zon::String& GetComponentName() const override { return name; }
    Zon::System::Acf::ILibrary& GetLibrary() const override { return library; }

private:
    Zon::String name = "Plain";
    Zon::System::Acf::ILibrary& library;
};

/// A host component that belongs to a library without type meta data; its variables are still
/// typed through a host type library.
class ComponentOfAPlainLibrary : public Zon::Host::Component {
public:
    ComponentOfAPlainLibrary(Zon::Host::TypeLibrary& types, Zon::System::Acf::ILibrary& library)
        : Zon::Host::Component("Untyped", types), library(library)
    {
    }
    Zon::System::Acf::ILibrary& GetLibrary() const override { return library; }

private:
    Zon::System::Acf::ILibrary& library;
};

class MetaInfoProviderTest : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        VarnixTest::HostTest::SetUp();
        DescribeTypes(library);
        component.AddVariable("Root", root);
    }

    std::vector<std::string> Roots()
    {
        std::vector<std::string> names;
        auto roots = Provider().GetDataBrowser().GetRoots();
        while (roots->MoveNext()) {
            names.push_back(roots->GetCurrent().name.ToStdString());
        }
        return names;
    }

    std::vector<std::string> Namespaces()
    {
        std::vector<std::string> names;
        auto namespaces = Provider().GetTypeBrowser().GetNamespaces();
        while (namespaces->MoveNext()) {
            names.push_back(namespaces->GetCurrent().ToStdString());
        }
        return names;
    }

    static MetaInfoProvider& Provider() { return MetaInfoProvider::GetInstance(); }

    using Level = Zon::System::Commons::Diagnostics::Logging::LogLevel;

    Zon::Host::TypeLibrary library{"DemoLibrary", "Demo"};
    Zon::Host::Component component{"Comp", library};
    Root root{};
};

} // namespace

TEST_F(MetaInfoProviderTest, GetInstanceGivesTheSameObjectAndTheSameBrowsers)
{
    MetaInfoProvider& first = MetaInfoProvider::GetInstance();
    MetaInfoProvider& second = MetaInfoProvider::GetInstance();
    EXPECT_EQ(&first, &second);
    EXPECT_EQ(&first.GetDataBrowser(), &second.GetDataBrowser());
    EXPECT_EQ(&first.GetTypeBrowser(), &second.GetTypeBrowser());
}

TEST_F(MetaInfoProviderTest, AddRegistersVariablesAndTypes)
{
    Provider().Add(component);
    EXPECT_EQ(Roots(), (std::vector<std::string>{"Root"}));
    EXPECT_EQ(Namespaces(), (std::vector<std::string>{"Demo"}));
    EXPECT_EQ(Capture().Count(Level::Info, "Add type namespace: Demo"), 1u);
    EXPECT_EQ(Capture().Count(Level::Info, "Add data info provider for Comp"), 1u);
    EXPECT_EQ(Provider().GetDataBrowser().GetDataInfo("Comp/Root.a[1][2].b").address, &root.a[1][2].b);
    Provider().Remove(component);
}

TEST_F(MetaInfoProviderTest, ComponentWithoutMetaDataLeavesBothBrowsersUnchangedWithOneWarning)
{
    PlainComponent plain(library);
    Provider().Add(plain);
    auto entries = Capture().GetEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].level, Level::Warning);
    EXPECT_EQ(entries[0].loggerName, "VarnixBase.Commons.Meta.MetaInfoProvider");
    EXPECT_EQ(entries[0].message, "Unable to register component. Needs to be derived from IMetaComponent and IComponent");
    EXPECT_TRUE(Roots().empty());
    EXPECT_TRUE(Namespaces().empty());
}

TEST_F(MetaInfoProviderTest, ComponentOfALibraryWithoutTypesIsRegisteredWithoutNamespace)
{
    PlainLibrary plainLibrary;
    ComponentOfAPlainLibrary untyped(library, plainLibrary);
    untyped.AddVariable("Root", root);
    Provider().Add(untyped);
    EXPECT_EQ(Capture().GetEntries(Level::Warning).size(), 1u);
    EXPECT_EQ(Capture().Count(Level::Warning,
                              "Unable to register library. Needs to be derived from IMetaLibrary and ILibrary"),
              1u);
    EXPECT_EQ(Roots(), (std::vector<std::string>{"Root"}));
    EXPECT_TRUE(Namespaces().empty());
    Capture().Clear();
    DataInfo member = Provider().GetDataBrowser().GetDataInfo("Untyped/Root.d");
    EXPECT_EQ(member.dataType, 0u);
    EXPECT_EQ(member.address, &root);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: type=Demo::Root not available"), 1u);
    EXPECT_EQ(Capture().Count(Level::Trace, "  browse: child=d not available"), 1u);
    auto children = Provider().GetTypeBrowser().GetChildren(member.typeIdentifier);
    EXPECT_FALSE(children->MoveNext());
    Capture().Clear();
    Provider().Remove(untyped);
    EXPECT_EQ(Capture().Count(Level::Warning,
                              "Unable to remove library. Needs to be derived from IMetaLibrary and ILibrary"),
              1u);
    EXPECT_TRUE(Roots().empty());
}

TEST_F(MetaInfoProviderTest, AddingTwiceLogsTheNamespaceOnlyAndChangesNothing)
{
    Provider().Add(component);
    Capture().Clear();
    Provider().Add(component);
    auto entries = Capture().GetEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].level, Level::Debug);
    EXPECT_EQ(entries[0].message, "Namespace was already added: Demo");
    EXPECT_EQ(Roots(), (std::vector<std::string>{"Root"}));
    EXPECT_EQ(Namespaces(), (std::vector<std::string>{"Demo"}));
    Provider().Remove(component);
}

TEST_F(MetaInfoProviderTest, RemoveOfAComponentNeverAddedHasNoEffectAndNoMessage)
{
    Zon::Host::TypeLibrary otherLibrary("OtherLibrary", "Other");
    Zon::Host::Component other("Other", otherLibrary);
    Provider().Add(component);
    Capture().Clear();
    Provider().Remove(other);
    EXPECT_EQ(Capture().Size(), 0u);
    EXPECT_EQ(Roots(), (std::vector<std::string>{"Root"}));
    EXPECT_EQ(Namespaces(), (std::vector<std::string>{"Demo"}));
    Provider().Remove(component);
}

TEST_F(MetaInfoProviderTest, RemoveTakesVariablesAndNamespaceAway)
{
    Provider().Add(component);
    Capture().Clear();
    Provider().Remove(component);
    auto entries = Capture().GetEntries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].message, "Remove component Comp");
    EXPECT_EQ(entries[1].message, "Remove namespace Demo");
    EXPECT_TRUE(Roots().empty());
    EXPECT_TRUE(Namespaces().empty());
}

TEST_F(MetaInfoProviderTest, RemoveTakesTheNamespaceAlsoWhenAnotherComponentSharesTheLibrary)
{
    Zon::Host::Component sibling("Sibling", library);
    Provider().Add(component);
    Provider().Add(sibling);
    Provider().Remove(sibling);
    EXPECT_TRUE(Namespaces().empty());
    EXPECT_EQ(Roots(), (std::vector<std::string>{"Root"}));
    Provider().Remove(component);
}

TEST_F(MetaInfoProviderTest, RemoveOfAComponentWithoutMetaDataWarns)
{
    PlainComponent plain(library);
    Provider().Remove(plain);
    EXPECT_EQ(Capture().Count(Level::Warning,
                              "Unable to remove component. Needs to be derived from IMetaComponent and IComponent"),
              1u);
    EXPECT_EQ(Capture().Size(), 1u);
}

TEST(MetaInfoProviderStartUp, WithoutApplicationDomainGetInstanceFailsAndTriesAgainLater)
{
    try {
        MetaInfoProvider::GetInstance();
        FAIL() << "no exception";
    } catch (const Zon::Exception& exception) {
        EXPECT_STREQ(exception.what(), "Singleton instance of type 'Zon.AppDomain' was not created yet!");
    }
    Zon::Host::RuntimeOptions options;
    options.consoleLevel.reset();
    Zon::Host::Runtime runtime(options);
    MetaInfoProvider& provider = MetaInfoProvider::GetInstance();
    EXPECT_EQ(&provider, &MetaInfoProvider::GetInstance());
}

TEST(MetaInfoProviderStartUp, WithoutLogManagerGetInstanceFails)
{
    Zon::Host::RuntimeOptions options;
    options.consoleLevel.reset();
    options.createLogManager = false;
    Zon::Host::Runtime runtime(options);
    try {
        MetaInfoProvider::GetInstance();
        FAIL() << "no exception";
    } catch (const Zon::Exception& exception) {
        EXPECT_STREQ(exception.what(),
                     "AppDomain Singleton instance of type "
                     "'Zon.System.Commons.Diagnostics.Logging.LogManager' was not created yet!");
    }
}
