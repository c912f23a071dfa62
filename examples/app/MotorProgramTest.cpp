// The motor program's own tests: the program is built from its document with the application's
// port and connector types, in this process, by the simulation engine (VarnixBase::Sim), exactly
// as the controller builds it. Each test gets a fresh program; time is virtual, 10 ms per cycle.
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MotorTypes.hpp"
#include "VarnixBase/Sim/Sim.hpp"

#ifndef MOTOR_APP_DIR
#error "MOTOR_APP_DIR must name the directory of the motor program's document"
#endif

using namespace VarnixBase::Sim;

namespace {

class MotorProgramTest : public ::testing::Test {
protected:
    static SimulationOptions Options()
    {
        SimulationOptions options;
        options.document = MOTOR_APP_DIR "/MotorProgram.prog.config";
        // The application's types, as main() brings them to the controller.
        options.describeTypes = [](Zon::Host::TypeLibrary& library) {
            MotorApp::AddMotorTypes();
            MotorApp::DescribeMotorTypes(library);
        };
        return options;
    }

    /// The drive switched on at `rpm`, behind a gear of 12.5.
    static void Drive(Simulation& simulation, const std::string& rpm)
    {
        simulation.Set("gearRatio", "12.5");
        simulation.Set("motor.enabled", "TRUE");
        simulation.Set("motor.speed", rpm);
    }

    static std::string FailureLines(const ScenarioResult& result)
    {
        std::ostringstream lines;
        WriteFailures(lines, result);
        return lines.str();
    }
};

} // namespace

TEST_F(MotorProgramTest, TheDocumentBuildsWithTheApplicationsOwnPortAndConnectorTypes)
{
    Simulation simulation(Options());
    EXPECT_EQ(simulation.Complete(), "");
    EXPECT_EQ(simulation.GetType(), "MotorProgram");
    EXPECT_EQ(simulation.GetPortNames(),
              (std::vector<std::string>{"motor", "gearRatio", "running", "speed", "errorCode", "display"}));
    EXPECT_EQ(simulation.GetConnectorCount(), 4u);
}

TEST_F(MotorProgramTest, TheShaftTurnsAtTheMotorSpeedOverTheGearRatio)
{
    Simulation simulation(Options());
    Drive(simulation, "300");
    simulation.Step();
    EXPECT_EQ(simulation.Read("running").value, "true");
    EXPECT_EQ(simulation.Read("speed").value, "24");
    EXPECT_EQ(simulation.Read("speed").quality, "Good");
    EXPECT_EQ(simulation.Read("display").value, "24");

    // A new gear ratio, read by reference, takes effect in the next cycle.
    simulation.Set("gearRatio", "10");
    simulation.Step();
    EXPECT_EQ(simulation.Read("speed").value, "30");
    EXPECT_EQ(simulation.GetCycle(), 2u);
}

TEST_F(MotorProgramTest, BelowTheThresholdTheMotorDoesNotCountAsRunning)
{
    Simulation simulation(Options());
    Drive(simulation, "4.5");
    simulation.Step();
    EXPECT_EQ(simulation.Read("running").value, "false");
    Drive(simulation, "5");
    simulation.Step();
    EXPECT_EQ(simulation.Read("running").value, "true");
}

TEST_F(MotorProgramTest, ATripMakesTheSpeedBadAndCopiesTheErrorCodeOut)
{
    Simulation simulation(Options());
    Drive(simulation, "800");
    simulation.Set("motor.fault", "TRUE");
    simulation.Set("motor.errorCode", "16#2310");
    simulation.Step();
    EXPECT_EQ(simulation.Read("running").value, "false");
    EXPECT_EQ(simulation.Read("speed").value, "64");
    EXPECT_EQ(simulation.Read("speed").quality, "Bad DeviceDefect");
    EXPECT_EQ(simulation.Read("motor").quality, "Bad DeviceDefect");
    EXPECT_EQ(simulation.Read("errorCode").value, "8976"); // 16#2310
}

TEST_F(MotorProgramTest, PortsAndMembersThatDoNotExistAreNamedInTheError)
{
    Simulation simulation(Options());
    try {
        simulation.Set("motor.torque", "1");
        FAIL() << "a member that the structure does not have was written";
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "motor.torque=1: port 'motor' has no member 'torque'");
    }
    EXPECT_THROW(simulation.Set("pump.speed", "1"), UsageError);
    EXPECT_THROW(simulation.Set("motor.speed", "fast"), UsageError);
}

TEST_F(MotorProgramTest, TheScenarioBesideTheProgramPasses)
{
    Simulation simulation(Options());
    Scenario scenario = LoadScenario(MOTOR_APP_DIR "/MotorProgram.scenario.csv");
    ScenarioResult result = RunScenario(simulation, scenario);
    EXPECT_TRUE(result.Passed()) << FailureLines(result);
    EXPECT_EQ(result.cycles, 12u);
    EXPECT_EQ(result.rows.size(), 12u);
    EXPECT_EQ(result.expectations, scenario.expectations.size());
    EXPECT_GT(result.expectations, 50u);
}

TEST_F(MotorProgramTest, AWrongExpectationIsAFailureWithItsCyclePortExpectedAndActualValue)
{
    Simulation simulation(Options());
    ScenarioResult result = RunScenario(simulation, ParseScenario("cycle,gearRatio,motor.enabled,motor.speed,"
                                                                  "expect running,expect speed,expect speed.quality\n"
                                                                  "1,12.5,TRUE,300,TRUE,24,Good\n"
                                                                  "2,,,600,TRUE,50~0.5,Good\n",
                                                                  "wrong.csv"));
    EXPECT_FALSE(result.Passed());
    ASSERT_EQ(result.failures.size(), 1u);
    const ExpectationFailure& failure = result.failures[0];
    EXPECT_EQ(result.rows[failure.row].cycle, 2u);
    EXPECT_EQ(result.rows[failure.row].line, 3);
    EXPECT_EQ(failure.column, "speed");
    EXPECT_EQ(failure.expected, "50~0.5");
    EXPECT_EQ(failure.actual, "48");
    EXPECT_EQ(FailureLines(result), "wrong.csv:3: cycle 2: speed: expected 50~0.5, got 48\n");
}
