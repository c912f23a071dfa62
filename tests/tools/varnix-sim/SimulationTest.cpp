// Runs of a simulated program without a trace: the cycles are timed together, and stimuli still
// reach the ports before their cycles.
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "Simulation.hpp"
#include "Stimulus.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixSim;

namespace {

const char* const Tank = R"(<?xml version="1.0"?>
<ConfigurableProgram>
  <Program type="Tank">
    <Ports>
      <Port name="raw" type="AnalogIn"/>
      <Port name="level" type="qualified.float64"/>
      <Port name="display" type="int16"/>
    </Ports>
    <Connectors>
      <Connector startPort="raw" endPort="level" type="scale">
        <Parameter name="gain" value="0.01"/>
      </Connector>
      <Connector startPort="level" endPort="display" type="copy"/>
    </Connectors>
  </Program>
</ConfigurableProgram>
)";

template <class T>
T Published(const std::string& path)
{
    void* address =
        VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(path.c_str()).address;
    if (address == nullptr) {
        throw std::runtime_error("not published: " + path);
    }
    return *static_cast<const T*>(address);
}

class SimulationTest : public ::testing::Test {
protected:
    SimulationOptions Options()
    {
        SimulationOptions options;
        options.document = dir.WriteFile("Tank.prog.config", Tank).string();
        options.consoleLevel.reset();
        return options;
    }

    VarnixTest::TempDir dir;
};

} // namespace

TEST_F(SimulationTest, WithoutATraceStimuliAreWrittenBeforeTheirCyclesAndNoLater)
{
    Simulation simulation(Options());
    simulation.AddStimuli({ParseSetOption("raw=2500@1"), ParseSetOption("raw=5000@3")});
    Simulation::RunOptions run;
    run.cycles = 2;
    auto summary = simulation.Run(run);
    EXPECT_EQ(summary.cycles, 2u);
    EXPECT_EQ(Published<short>("App/Main.display"), 25);
    EXPECT_EQ(Published<std::uint16_t>("App/Main.raw"), 2500);
}

TEST_F(SimulationTest, WithoutATraceAStimulusAfterAnUntimedStretchStillTakesEffectInItsCycle)
{
    Simulation simulation(Options());
    simulation.AddStimuli({ParseSetOption("raw=2500@1"), ParseSetOption("raw=5000@3000")});
    Simulation::RunOptions run;
    run.cycles = 3000;
    auto summary = simulation.Run(run);
    EXPECT_EQ(summary.cycles, 3000u);
    EXPECT_EQ(Published<short>("App/Main.display"), 50);
}
