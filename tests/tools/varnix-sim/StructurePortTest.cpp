// An application's own port type, whose value is a structure, in a simulated program: its
// structure described to the simulated controller through `SimulationOptions::describeTypes`, its
// members written by name ("pump.level") with `Set` and with stimuli, and read through a copy
// connector from the member's path.
#include <cstdint>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/Factories/PortFactory.hpp"
#include "VarnixBase/Core/PortSystem/PortBase.hpp"
#include "VarnixBase/Sim/Scenario.hpp"
#include "VarnixBase/Sim/Simulation.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "Zon/Plc/Commons/Meta/PortDataType.hpp"
#include "support/HostFixture.hpp"

namespace StructurePortTest {

struct PumpState {
    bool on = false;
    std::uint16_t level = 0;
    float rate = 0.0F;
};
static_assert(std::is_standard_layout_v<PumpState> && std::is_trivially_copyable_v<PumpState>);

} // namespace StructurePortTest

template <>
struct Zon::Plc::Commons::Meta::PortDataType<StructurePortTest::PumpState>
    : Zon::Plc::Commons::Meta::PortDataTypeCode<Zon::Plc::Commons::Meta::UserTypeCode> {};

namespace StructurePortTest {

using namespace VarnixBase::Sim;

/// A port that publishes its `PumpState` as one structure.
class PumpPort : public VarnixBase::Core::PortSystem::PortBase<PumpState> {
public:
    PumpPort(const Zon::String& name, unsigned long dimension) : PortBase<PumpState>(name, dimension) {}
    void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder) override
    {
        builder.AddPort<PumpState>(GetName(), state, GetAttributes());
    }
    void SetValue(PumpState value) override { state = value; }
    PumpState GetValue() const override { return state; }

private:
    PumpState state{};
};

const char* const PumpDocument = R"(<?xml version="1.0"?>
<ConfigurableProgram>
  <Program type="Pump">
    <Ports>
      <Port name="pump" type="pumpState"/>
      <Port name="level" type="uint16"/>
    </Ports>
    <Connectors>
      <Connector startPort="pump.level" endPort="level" type="copy"/>
    </Connectors>
  </Program>
</ConfigurableProgram>
)";

class StructurePort : public ::testing::Test {
protected:
    SimulationOptions Options()
    {
        SimulationOptions options;
        options.document = dir.WriteFile("Pump.prog.config", PumpDocument).string();
        options.consoleLevel.reset();
        options.describeTypes = [](Zon::Host::TypeLibrary& library) {
            static const bool added =
                VarnixBase::Core::PortSystem::PortFactory::GetInstance().AddFactoryMethod<PumpPort>("pumpState");
            (void)added;
            library.AddStruct<PumpState>()
                .Member("on", &PumpState::on)
                .Member("level", &PumpState::level)
                .Member("rate", &PumpState::rate);
        };
        return options;
    }

    VarnixTest::TempDir dir;
};

TEST_F(StructurePort, TheApplicationsStructureIsDescribedBeforeTheProgramIsBuilt)
{
    bool described = false;
    SimulationOptions options = Options();
    auto describe = options.describeTypes;
    options.describeTypes = [&](Zon::Host::TypeLibrary& library) {
        describe(library);
        described = true;
    };
    Simulation simulation(options);
    EXPECT_TRUE(described);
    EXPECT_EQ(simulation.Complete(), "");
    EXPECT_EQ(simulation.GetConnectorCount(), 1u); // the copy from the member path resolved
}

TEST_F(StructurePort, SetWritesAMemberOfAStructurePortByName)
{
    Simulation simulation(Options());
    simulation.Set("pump.level", "16#1234");
    simulation.Step();
    EXPECT_EQ(simulation.Read("level").value, "4660");
    simulation.Set("pump.level", "7");
    simulation.Step();
    EXPECT_EQ(simulation.Read("level").value, "7");
}

TEST_F(StructurePort, AnUnknownMemberOrPortAndABadLiteralAreRefusedWithTheirNames)
{
    Simulation simulation(Options());
    auto errorOf = [&](const std::string& port, const std::string& literal) -> std::string {
        try {
            simulation.Set(port, literal);
        } catch (const UsageError& error) {
            return error.what();
        }
        return "no error";
    };
    EXPECT_EQ(errorOf("pump.pressure", "1"), "pump.pressure=1: port 'pump' has no member 'pressure'");
    EXPECT_EQ(errorOf("tank.level", "1"), "tank.level=1: the program has no port 'tank.level'");
    EXPECT_EQ(errorOf("pump.level", "70000"), "pump.level=70000: '70000' is not a value of type unsigned short");
    EXPECT_EQ(errorOf("level.x", "1"), "level.x=1: port 'level' has no member 'x'");
}

TEST_F(StructurePort, StimuliAndScenariosWriteMembersBeforeTheirCycles)
{
    Simulation simulation(Options());
    auto result = RunScenario(simulation, ParseScenario("cycle,pump.on,pump.level,expect level\n"
                                                        "1,TRUE,3,3\n2,,,3\n3,,9,9\n",
                                                        "pump.csv"));
    EXPECT_TRUE(result.Passed());
    EXPECT_EQ(result.expectations, 3u);
    try {
        CheckScenario(simulation, ParseScenario("cycle,pump.flow\n4,2\n", "pump.csv"));
        FAIL() << "a stimulus of a member that the structure does not have was accepted";
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "pump.csv:2: port 'pump' has no member 'flow'");
    }
}

} // namespace StructurePortTest
