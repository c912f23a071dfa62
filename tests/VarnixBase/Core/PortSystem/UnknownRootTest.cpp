// A path whose root a host component does not have (a mistyped program instance) gets the
// library's own answers: the empty record from the path walk, and the failures that connectors and
// value access give for it, never the enumerator's complaint about a missing element.
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Meta/DataAccessValue.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"

#include "ConnectorTestSupport.hpp"

using namespace ConnectorTest;
using VarnixBase::Core::PortSystem::ConnectorFactory;

namespace {

using UnknownRoot = PublishedPortsFixture;

TEST_F(UnknownRoot, PathResolvesToTheEmptyRecord)
{
    auto& browser = Provider().GetDataBrowser();
    auto root = browser.GetDataInfo(String("App/Mian"));
    EXPECT_EQ(root.dataType, 0u);
    EXPECT_EQ(root.address, nullptr);
    auto member = browser.GetDataInfo(String("App/Mian.in_Int32"));
    EXPECT_EQ(member.dataType, 0u);
    EXPECT_EQ(member.address, nullptr);
    // The right root still resolves.
    EXPECT_NE(browser.GetDataInfo(StartPortPath<int>()).address, nullptr);
}

TEST_F(UnknownRoot, ConnectorFromItIsRefusedWithTheFactorysMessage)
{
    for (const char* start : {"App/Mian.in_Int32", "App/Mian"}) {
        SCOPED_TRACE(start);
        std::string message = "no exception";
        try {
            ConnectorFactory::GetInstance().Create(String("copy"), String("c"), String(start), EndPortPath<int>());
        } catch (const Zon::System::Commons::InvalidConfigException& error) {
            message = error.GetMessage().ToStdString();
        }
        EXPECT_EQ(message, "Connector type `copy` not available: inputType=`<unknown-type>` outputType=`int`");
    }
}

TEST_F(UnknownRoot, ValueAccessThroughItHasNoAddress)
{
    VarnixBase::Commons::Meta::DataAccessValue<int> value(String("App/Mian.in_Int32"));
    EXPECT_EQ(value.GetDataPointer(), nullptr);
    try {
        value.Set(5);
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::InvalidOperationException& error) {
        EXPECT_STREQ(error.what(), "Value access without a variable address");
    }
}

} // namespace
