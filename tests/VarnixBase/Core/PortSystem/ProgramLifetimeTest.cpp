// Nothing of a program outlives it: ports and connectors that hold each other as quality providers
// go with the program, and the quality they report while it runs stays what it was.
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/HostedProgram.hpp"
#include "VarnixBase/Core/PortSystem/IConnector.hpp"
#include "VarnixBase/Core/PortSystem/IPort.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"

#include "ProgramHost.hpp"

using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Core::QualitySystem::Quality;

namespace {

class ProgramLifetime : public VarnixTest::ProgramHostTest {
protected:
    /// Two ports joined in both directions, as a user writes a loop-back.
    static constexpr const char* BothWaysDocument = R"(<Configuration><Program type="BothWays">
  <Ports><Port name="a" type="qualified.int32"/><Port name="b" type="qualified.int32"/></Ports>
  <Connectors>
    <Connector startPort="a" endPort="b" type="copy"/>
    <Connector startPort="b" endPort="a" type="copy"/>
  </Connectors>
</Program></Configuration>)";

    /// Weak references to every port and connector of the program.
    struct Watch {
        std::vector<std::weak_ptr<IPort>> ports;
        std::vector<std::weak_ptr<IConnector>> connectors;

        bool AllGone() const
        {
            for (const auto& port : ports) {
                if (!port.expired()) {
                    return false;
                }
            }
            for (const auto& connector : connectors) {
                if (!connector.expired()) {
                    return false;
                }
            }
            return true;
        }
    };

    static Watch WatchAll(ConfigurableProgramBaseImpl& program)
    {
        Watch watch;
        watch.ports.push_back(program.GetPortProvider().GetPort("a"));
        watch.ports.push_back(program.GetPortProvider().GetPort("b"));
        watch.connectors.push_back(program.GetConnectorProvider().GetConnector("a:b"));
        watch.connectors.push_back(program.GetConnectorProvider().GetConnector("b:a"));
        return watch;
    }
};

TEST_F(ProgramLifetime, ConnectorsInOppositeDirectionsGoWithTheProgram)
{
    WriteDocument("BothWays", BothWaysDocument);
    auto& program = Start("BothWays");
    ASSERT_EQ(program.GetProgram().GetConnectorProvider().Count(), 2u);
    Watch watch = WatchAll(program.GetProgram());
    for (int i = 0; i < 3; ++i) {
        Cycle(program);
    }
    ASSERT_FALSE(watch.AllGone());
    programs.clear();
    EXPECT_TRUE(watch.AllGone());
}

TEST_F(ProgramLifetime, WhileTheProgramRunsEachConnectorKeepsItsStartPortAsProvider)
{
    WriteDocument("BothWays", BothWaysDocument);
    auto& program = Start("BothWays");
    auto& ports = program.GetProgram().GetPortProvider();
    auto& connectors = program.GetProgram().GetConnectorProvider();
    auto forwards = connectors.GetConnector("a:b");
    auto backwards = connectors.GetConnector("b:a");
    ASSERT_EQ(forwards->GetQualityProviders().size(), 1u);
    EXPECT_EQ(forwards->GetQualityProviders().front(), ports.GetPort("a"));
    ASSERT_EQ(backwards->GetQualityProviders().size(), 1u);
    EXPECT_EQ(backwards->GetQualityProviders().front(), ports.GetPort("b"));
    for (int i = 0; i < 3; ++i) {
        Cycle(program);
    }
    // Each connector reports what its start port reports, cycle after cycle.
    Quality start = ports.GetPort("a")->GetQuality();
    Quality forwardsQuality = forwards->GetQuality();
    EXPECT_EQ(forwardsQuality.state, start.state);
    EXPECT_EQ(forwardsQuality.flags, start.flags);
    EXPECT_EQ(forwards->GetQualityProviders().size(), 1u);
}

} // namespace
