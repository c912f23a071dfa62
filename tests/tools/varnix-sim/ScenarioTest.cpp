// Scenarios: stimulus files with expectation columns, checked in-process against a simulated
// program, and their verdicts as failure lines and JUnit XML.
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Sim/Scenario.hpp"
#include "VarnixBase/Sim/Simulation.hpp"
#include "TankDocument.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Sim;

namespace {

class ScenarioTest : public ::testing::Test {
protected:
    SimulationOptions Options()
    {
        SimulationOptions options;
        options.document = dir.WriteFile("Tank.prog.config", VarnixSimTest::TankDocument).string();
        options.consoleLevel.reset();
        return options;
    }

    std::string ErrorOf(const std::string& text)
    {
        try {
            Simulation simulation(Options());
            CheckScenario(simulation, ParseScenario(text, "s.csv"));
        } catch (const UsageError& error) {
            return error.what();
        }
        return "no error";
    }

    VarnixTest::TempDir dir;
};

} // namespace

TEST(ScenarioParse, ExpectColumnsSitBesideStimuliAndEmptyCellsDoNothing)
{
    auto scenario = ParseScenario("# c\ncycle,raw,expect level,expect level.quality,expect level.time\n"
                                  "1,0,0,Good,\n3,,25~0.5,,\n4,7,,,\n",
                                  "s.csv");
    ASSERT_EQ(scenario.columns.size(), 3u);
    EXPECT_EQ(scenario.columns[0].port, "level");
    EXPECT_EQ(scenario.columns[0].field, ExpectedField::Value);
    EXPECT_EQ(scenario.columns[1].name, "level.quality");
    EXPECT_EQ(scenario.columns[1].field, ExpectedField::Quality);
    EXPECT_EQ(scenario.columns[2].field, ExpectedField::Time);
    EXPECT_EQ(scenario.headerLine, 2);
    ASSERT_EQ(scenario.rows.size(), 2u); // line 5 holds a stimulus only
    EXPECT_EQ(scenario.rows[0].line, 3);
    EXPECT_EQ(scenario.rows[0].count, 2u);
    EXPECT_EQ(scenario.rows[1].cycle, 3u); // expectations only
    EXPECT_EQ(scenario.expectations[scenario.rows[1].first].text, "25~0.5");
    ASSERT_EQ(scenario.stimuli.size(), 2u);
    EXPECT_EQ(scenario.stimuli[1].origin, "s.csv:5");
    EXPECT_EQ(scenario.lastCycle, 4u);
}

TEST(ScenarioParse, CyclesRiseAndAppearOnceWhileAStimulusFileMayListThemInAnyOrder)
{
    EXPECT_THROW(ParseScenario("cycle,raw\n2,1\n1,1\n", "s.csv"), UsageError);
    EXPECT_THROW(ParseScenario("cycle,raw\n2,1\n2,1\n", "s.csv"), UsageError);
    EXPECT_EQ(ParseStimulus("cycle,raw\n2,1\n1,1\n", "s.csv").size(), 2u);
    EXPECT_EQ(ParseStimulus("cycle,raw,expect level\n1,1,5\n", "s.csv").size(), 1u);
}

TEST_F(ScenarioTest, EveryExpectationIsCheckedAfterItsCycle)
{
    Simulation simulation(Options());
    auto result = RunScenario(simulation,
                              ParseScenario("cycle,raw,label,expect raw.quality,expect level,expect level.quality,"
                                            "expect level.time,expect display,expect label\n"
                                            "1,2500,pump,Good,25~0.001,Good,T#0ms,25,pump\n"
                                            "3,16#8001,,Bad Overrange,327.69~0.001,Bad Overrange,"
                                            "1767225600020000~T#1us,327,\n"
                                            "4,,,,327.69~0.001,,,,\n",
                                            "s.csv"));
    EXPECT_TRUE(result.Passed());
    EXPECT_EQ(result.cycles, 4u);
    EXPECT_EQ(result.expectations, 12u);
    ASSERT_EQ(result.rows.size(), 3u);
    EXPECT_EQ(RowName(result, result.rows[2]), "line 4 (cycle 4): level");
    EXPECT_EQ(RowName(result, result.rows[0]),
              "line 2 (cycle 1): raw.quality, level, level.quality, level.time, display, label");
}

TEST_F(ScenarioTest, AFailureSaysWhatWasExpectedAndWhatThePortHeld)
{
    Simulation simulation(Options());
    auto result = RunScenario(simulation, ParseScenario("cycle,raw,expect level,expect level.quality,expect "
                                                        "level.time,expect display\n"
                                                        "1,2500,25.1~0.05,Bad,T#10ms,25\n"
                                                        "2,,25.04~0.05,,,24\n",
                                                        "s.csv"));
    EXPECT_FALSE(result.Passed());
    std::ostringstream out;
    WriteFailures(out, result);
    EXPECT_EQ(out.str(), "s.csv:2: cycle 1: level: expected 25.1~0.05, got 25\n"
                         "s.csv:2: cycle 1: level.quality: expected Bad, got Good\n"
                         "s.csv:2: cycle 1: level.time: expected T#10ms, got T#0ms\n"
                         "s.csv:3: cycle 2: display: expected 24, got 25\n");
    EXPECT_EQ(result.rows[0].failureCount, 3u);
    EXPECT_EQ(result.rows[1].firstFailure, 3u);
}

TEST_F(ScenarioTest, MistakesAreNamedWithFileAndLineBeforeAnythingRuns)
{
    EXPECT_EQ(ErrorOf("cycle,expect nosuch\n1,1\n"), "s.csv:1: the program has no port 'nosuch'");
    EXPECT_EQ(ErrorOf("cycle,expect display\n1,1\n2,70000\n"),
              "s.csv:3: \"expect display\": '70000' is not a value of port 'display' (16-bit signed integer)");
    EXPECT_EQ(ErrorOf("cycle,expect display\n1,1~x\n"),
              "s.csv:2: \"expect display\": tolerance 'x' is not a number of 0 or more");
    EXPECT_EQ(ErrorOf("cycle,expect display.quality\n1,Good\n"),
              "s.csv:1: \"expect display.quality\": port 'display' has no quality (only qualified and device "
              "ports have one)");
    EXPECT_EQ(ErrorOf("cycle,expect raw.time\n1,T#0ms\n"),
              "s.csv:1: \"expect raw.time\": port 'raw' has no time stamp (only qualified ports have one)");
    EXPECT_NE(ErrorOf("cycle,expect level.time\n1,yesterday\n").find("s.csv:2: \"expect level.time\": 'yesterday' is "
                                                                    "not a time stamp"),
              std::string::npos);
    EXPECT_NE(ErrorOf("cycle,expect level.quality\n1,Good Sunny\n").find("s.csv:2: \"expect level.quality\": 'Good "
                                                                        "Sunny' is not a quality"),
              std::string::npos);
    EXPECT_EQ(ErrorOf("cycle,raw\n1,-1\n"), "s.csv:2: '-1' is not a value of type unsigned short");
}

TEST_F(ScenarioTest, AScenarioCannotCheckCyclesThatHaveRun)
{
    Simulation simulation(Options());
    simulation.Step(2);
    EXPECT_THROW(RunScenario(simulation, ParseScenario("cycle,expect display\n2,0\n", "s.csv")), UsageError);
    auto result = RunScenario(simulation, ParseScenario("cycle,raw,expect display\n3,100,1\n", "s.csv"));
    EXPECT_TRUE(result.Passed());
    EXPECT_EQ(simulation.GetCycle(), 3u);
}

TEST_F(ScenarioTest, TheJUnitReportEscapesMarkupAndReplacesWhatXmlCannotHold)
{
    Simulation simulation(Options());
    auto result = RunScenario(simulation, ParseScenario("cycle,label,expect label\n1,\"<a&b\"\"\x01\xff\",x\n", "s.csv"));
    ASSERT_EQ(result.failures.size(), 1u);
    std::ostringstream out;
    WriteJUnit(out, {result});
    std::string xml = out.str();
    EXPECT_NE(xml.find("got &lt;a&amp;b&quot;\xEF\xBF\xBD\xEF\xBF\xBD\""), std::string::npos) << xml;
    EXPECT_NE(xml.find("<testsuites name=\"varnix-sim test\" tests=\"1\" failures=\"1\" errors=\"0\""),
              std::string::npos);
    EXPECT_NE(xml.find("<testcase classname=\"s\" name=\"line 2 (cycle 1): label\""), std::string::npos);
    EXPECT_EQ(xml.find('\x01'), std::string::npos);
}

TEST_F(ScenarioTest, RowsCloseTogetherShareTheirSpansTimeByTheirCyclesAndFarOnesAreTimedAlone)
{
    auto run = [&](const std::string& text) {
        Simulation simulation(Options()); // one simulation in the process at a time
        return RunScenario(simulation, ParseScenario(text, "s.csv"));
    };
    auto result = run("cycle,raw,expect display\n1,2500,25\n2,,25\n4,,25\n500,,25\n");
    ASSERT_TRUE(result.Passed());
    ASSERT_EQ(result.rows.size(), 4u);
    // Cycles 1, 2 and 4 lie within one reading of the clock, taken at cycle 500 together with the
    // last row's: they share its span by their cycles, 1 : 1 : 2 : 496.
    EXPECT_GT(result.rows[3].seconds, 0);
    EXPECT_DOUBLE_EQ(result.rows[0].seconds, result.rows[1].seconds);
    EXPECT_DOUBLE_EQ(result.rows[2].seconds, 2 * result.rows[0].seconds);
    EXPECT_DOUBLE_EQ(result.rows[3].seconds, 496 * result.rows[0].seconds);

    result = run("cycle,raw,expect display\n1,2500,25\n100,,25\n101,,25\n");
    ASSERT_EQ(result.rows.size(), 3u);
    // Cycle 100 is 64 or more cycles after the start: the clock is read there, and again at the
    // last row, which is timed alone.
    EXPECT_DOUBLE_EQ(result.rows[1].seconds, 99 * result.rows[0].seconds);
    EXPECT_GT(result.rows[2].seconds, 0);
}
