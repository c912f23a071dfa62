#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MetaTestSupport.hpp"
#include "VarnixBase/Commons/Meta/DataBrowser.hpp"
#include "VarnixBase/Commons/Meta/FilterCombine.hpp"
#include "Zon/Exception.hpp"
#include "Zon/System/Commons/NotImplementedException.hpp"

using namespace MetaTest;
using VarnixBase::Commons::Meta::DataBrowser;
using VarnixBase::Commons::Meta::DataFilter;
using Zon::Plc::Commons::Meta::DataInfo;
using Zon::Plc::Commons::Meta::DataTag;

namespace {

const std::string GetChildrenSignature =
    "virtual Zon::IEnumerator<const Zon::Plc::Commons::Meta::DataInfo&>::Ptr "
    "VarnixBase::Commons::Meta::DataBrowser::GetChildren(const Zon::Plc::Commons::Meta::DataTag&)";
const std::string FindSignature =
    "virtual Zon::IEnumerator<const Zon::Plc::Commons::Meta::DataInfo&>::Ptr "
    "VarnixBase::Commons::Meta::DataBrowser::Find(const VarnixBase::Commons::Meta::DataFilter&)";

/// A component without variable meta data.
class PlainComponent : public Zon::System::Acf::IComponent {
public:
    PlainComponent(Zon::String name, Zon::System::Acf::ILibrary& library) : name(std::move(name)), library(library) {}
    const Zon::String& GetComponentName() const override { return name; }
    Zon::System::Acf::ILibrary& GetLibrary() const override { return library; }

private:
    Zon::String name;
    Zon::System::Acf::ILibrary& library;
};

/// A browser of its own, with components "b" and "a" (each with two variables), "c" without
/// variables and "d" with one.
class DataBrowserTest : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        VarnixTest::HostTest::SetUp();
        browser = std::make_unique<DataBrowser>();
        b.AddVariable("b1", values[0]).AddVariable("b2", values[1]);
        a.AddVariable("a1", values[2]).AddVariable("a2", values[3]);
        d.AddVariable("d1", values[4]);
    }

    std::vector<std::string> Roots()
    {
        std::vector<std::string> names;
        auto roots = browser->GetRoots();
        while (roots->MoveNext()) {
            names.push_back(roots->GetCurrent().name.ToStdString());
        }
        return names;
    }

    std::string NotImplementedText(const std::string& signature)
    {
        return "The operation '" + signature + "' is not implemented.";
    }

    using Level = Zon::System::Commons::Diagnostics::Logging::LogLevel;

    Zon::Host::TypeLibrary library{"DemoLibrary", "Demo"};
    Zon::Host::Component a{"a", library};
    Zon::Host::Component b{"b", library};
    Zon::Host::Component c{"c", library};
    Zon::Host::Component d{"d", library};
    int values[5] = {};
    std::unique_ptr<DataBrowser> browser;
};

} // namespace

TEST_F(DataBrowserTest, RootsOfAnEmptyBrowserEndAtOnceAndRefuseGetCurrent)
{
    auto roots = browser->GetRoots();
    EXPECT_FALSE(roots->MoveNext());
    try {
        roots->GetCurrent();
        FAIL() << "no exception";
    } catch (const Zon::Exception& exception) {
        EXPECT_STREQ(exception.what(), "IEnumerator::GetCurrent() is not supported by empty enumerators");
    }
}

TEST_F(DataBrowserTest, RootsComeInOrderOfComponentNames)
{
    browser->Add(b);
    browser->Add(a);
    EXPECT_EQ(Roots(), (std::vector<std::string>{"a1", "a2", "b1", "b2"}));
}

TEST_F(DataBrowserTest, ComponentWithoutRootsDoesNotEndTheSequence)
{
    browser->Add(d);
    browser->Add(c);
    browser->Add(b);
    EXPECT_EQ(Roots(), (std::vector<std::string>{"b1", "b2", "d1"}));
}

TEST_F(DataBrowserTest, RootsPointAtTheVariables)
{
    browser->Add(a);
    auto roots = browser->GetRoots();
    ASSERT_TRUE(roots->MoveNext());
    EXPECT_EQ(roots->GetCurrent().address, &values[2]);
}

TEST_F(DataBrowserTest, ComponentsAddedLaterDoNotAppearInAnEnumeratorHandedOut)
{
    browser->Add(a);
    auto roots = browser->GetRoots();
    browser->Add(b);
    std::vector<std::string> names;
    while (roots->MoveNext()) {
        names.push_back(roots->GetCurrent().name.ToStdString());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"a1", "a2"}));
}

TEST_F(DataBrowserTest, AddLogsAtInfoLevel)
{
    browser->Add(a);
    auto entries = Capture().GetEntries(Level::Info);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].message, "Add data info provider for a");
    EXPECT_EQ(entries[0].loggerName, "VarnixBase.Commons.Meta.DataBrowser");
}

TEST_F(DataBrowserTest, AddingANameTwiceLogsOnceAndKeepsTheFirstProvider)
{
    Zon::Host::Component other{"a", library};
    other.AddVariable("other", values[0]);
    browser->Add(a);
    browser->Add(other);
    browser->Add(a);
    EXPECT_EQ(Capture().Size(), 1u);
    EXPECT_EQ(Capture().Count(Level::Info, "Add data info provider for a"), 1u);
    EXPECT_EQ(Roots(), (std::vector<std::string>{"a1", "a2"}));
}

TEST_F(DataBrowserTest, AddOfAComponentWithoutMetaDataWarnsAndAddsNothing)
{
    PlainComponent plain("plain", library);
    browser->Add(plain);
    EXPECT_EQ(Capture().Count(Level::Warning, "Unable to register component. Needs to be derived from IComponent"), 1u);
    EXPECT_EQ(Capture().Size(), 1u);
    EXPECT_TRUE(Roots().empty());
}

TEST_F(DataBrowserTest, RemoveLogsAtDebugLevelAndTakesTheComponentOut)
{
    browser->Add(a);
    browser->Add(b);
    Capture().Clear();
    browser->Remove(a);
    EXPECT_EQ(Capture().Count(Level::Debug, "Remove component a"), 1u);
    EXPECT_EQ(Capture().Size(), 1u);
    EXPECT_EQ(Roots(), (std::vector<std::string>{"b1", "b2"}));
}

TEST_F(DataBrowserTest, RemoveOfAnUnknownNameIsSilent)
{
    browser->Remove(a);
    EXPECT_EQ(Capture().Size(), 0u);
}

TEST_F(DataBrowserTest, GetChildrenIsNotImplementedForAnyArgument)
{
    int value = 0;
    for (const DataTag& tag : {DataTag(), DataTag("x", &value, 11, {}, false)}) {
        try {
            browser->GetChildren(tag);
            FAIL() << "no exception";
        } catch (const Zon::System::Commons::NotImplementedException& exception) {
            EXPECT_EQ(exception.what(), NotImplementedText(GetChildrenSignature));
        }
    }
    browser->Add(a);
    EXPECT_THROW(browser->GetChildren(DataTag()), Zon::System::Commons::NotImplementedException);
}

TEST_F(DataBrowserTest, FindIsNotImplementedForAnyArgument)
{
    try {
        browser->Find(DataFilter{});
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::NotImplementedException& exception) {
        EXPECT_EQ(exception.what(), NotImplementedText(FindSignature));
    }
    browser->Add(a);
    EXPECT_THROW(browser->Find(DataFilter{}), Zon::System::Commons::NotImplementedException);
}

TEST_F(DataBrowserTest, ExceptionsOfAProviderInGetRootsPassToTheCaller)
{
    class Failing : public Zon::System::Acf::IComponent,
                    public Zon::Plc::Commons::Meta::IMetaComponent,
                    public Zon::Plc::Commons::Meta::IDataInfoProvider {
    public:
        explicit Failing(Zon::System::Acf::ILibrary& library) : library(library) {}
        const Zon::String& GetComponentName() const override { return name; }
        Zon::System::Acf::ILibrary& GetLibrary() const override { return library; }
        IDataInfoProvider& GetDataInfoProvider(bool) override { return *this; }
        Zon::IEnumerator<const DataInfo&>::Ptr GetRootEnumerator() override { throw Zon::Exception("no roots"); }

    private:
        Zon::String name = "z";
        Zon::System::Acf::ILibrary& library;
    } failing(library);
    browser->Add(a);
    browser->Add(failing);
    EXPECT_THROW(browser->GetRoots(), Zon::Exception);
}

// A browser registered through the meta info provider.
class RegisteredDataBrowserTest : public MetaBrowsingTest {};

TEST_F(RegisteredDataBrowserTest, RemovedComponentIsNotAvailableToPaths)
{
    EXPECT_EQ(Browser().GetDataInfo("Comp/Root.d").address, &root.d);
    Provider().Remove(component);
    Capture().Clear();
    DataInfo info = Browser().GetDataInfo("Comp/Root.d");
    EXPECT_EQ(info.address, nullptr);
    EXPECT_EQ(info.dataType, 0u);
    EXPECT_EQ(info.name, "");
    EXPECT_EQ(Capture().Count(Level::Error, "Component is not available: Comp"), 1u);
    Provider().Add(component);
}
