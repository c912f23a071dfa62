// Runs of a simulated program without a trace: the cycles are timed together, and stimuli still
// reach the ports before their cycles.
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/resource.h>

#include <gtest/gtest.h>

#include "VarnixBase/Sim/Check.hpp"
#include "VarnixBase/Sim/Simulation.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "TankDocument.hpp"
#include "support/HostFixture.hpp"
#include "Zon/Host/PrivateDirectory.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"

using namespace VarnixBase::Sim;

namespace {

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
        options.document = dir.WriteFile("Tank.prog.config", VarnixSimTest::TankDocument).string();
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

TEST_F(SimulationTest, StepSetAndReadDriveTheProgramByPortName)
{
    Simulation simulation(Options());
    EXPECT_EQ(simulation.GetCycle(), 0u);
    simulation.Set("raw", "2500");
    simulation.Step();
    EXPECT_EQ(simulation.GetCycle(), 1u);
    EXPECT_EQ(simulation.Read("display").value, "25");
    auto level = simulation.Read("level");
    EXPECT_EQ(level.value, "25");
    EXPECT_EQ(level.quality, "Good");
    EXPECT_EQ(level.timestamp, VirtualStartMicroseconds);

    simulation.Set("raw", "16#8001");
    simulation.Step(2);
    EXPECT_EQ(simulation.GetCycle(), 3u);
    EXPECT_EQ(simulation.Read("raw").quality, "Bad Overrange");
    // The clock stepped by one cycle time after each of the first two cycles.
    EXPECT_EQ(simulation.Read("level").timestamp, VirtualStartMicroseconds + 20000);
}

TEST_F(SimulationTest, SetAndReadRefuseAnUnknownPortAndABadLiteral)
{
    Simulation simulation(Options());
    EXPECT_THROW(simulation.Set("nosuch", "1"), UsageError);
    EXPECT_THROW(simulation.Set("display", "3.5"), UsageError);
    EXPECT_THROW(simulation.Read("nosuch"), UsageError);
    EXPECT_EQ(simulation.GetPortNames(), (std::vector<std::string>{"raw", "level", "display", "label"}));
}

TEST_F(SimulationTest, StimuliAndRunsContinueTheCyclesThatStepRan)
{
    Simulation simulation(Options());
    simulation.AddStimuli({ParseSetOption("raw=2500@2"), ParseSetOption("raw=5000@4")});
    simulation.Step(2);
    EXPECT_EQ(simulation.Read("display").value, "25");
    std::vector<std::uint64_t> seen;
    Simulation::RunOptions run;
    run.cycles = 2;
    run.afterCycle = [&](std::uint64_t cycle) { seen.push_back(cycle); };
    simulation.Run(run);
    EXPECT_EQ(seen, (std::vector<std::uint64_t>{3, 4}));
    EXPECT_EQ(simulation.Read("display").value, "50");
}

TEST_F(SimulationTest, ByDefaultTheLogKeepsEveryLineDownToTheTraceLines)
{
    Simulation simulation(Options());
    auto log = simulation.GetLog();
    using Zon::System::Commons::Diagnostics::Logging::LogLevel;
    EXPECT_TRUE(std::any_of(log.begin(), log.end(), [](const auto& entry) { return entry.level == LogLevel::Trace; }));
    EXPECT_TRUE(std::any_of(log.begin(), log.end(), [](const auto& entry) { return entry.level == LogLevel::Info; }));
}

TEST_F(SimulationTest, WithoutCaptureNoLogIsKeptAndTheProgramRunsAlike)
{
    auto options = Options();
    options.captureLog = false;
    Simulation simulation(options);
    EXPECT_THROW(simulation.GetLog(), Zon::System::Commons::InvalidOperationException);
    simulation.Set("raw", "2500");
    simulation.Step();
    EXPECT_EQ(simulation.Read("display").value, "25");
    EXPECT_EQ(simulation.Read("level").quality, "Good");
}

TEST_F(SimulationTest, TheCycleProblemsAreThoseTheFullCheckReports)
{
    auto options = Options();
    options.document = dir.WriteFile("Cycle.prog.config", R"(<?xml version="1.0" encoding="utf-8"?>
<ConfigurableProgram>
  <Program type="Cycle">
    <Ports>
      <Port name="a" type="int32"/>
      <Port name="b" type="int32"/>
      <Port name="c" type="int32"/>
      <Port name="d" type="int32"/>
    </Ports>
    <Connectors>
      <Connector startPort="c" endPort="d" type="copy">
        <QualityProvider ref="d:c"/>
      </Connector>
      <Connector startPort="d" endPort="c" type="copy">
        <QualityProvider ref="c:d"/>
      </Connector>
      <Connector startPort="a" endPort="b" type="copy">
        <QualityProvider ref="b:c"/>
      </Connector>
      <Connector startPort="b" endPort="c" type="copy">
        <QualityProvider ref="a:b"/>
      </Connector>
    </Connectors>
  </Program>
</ConfigurableProgram>
)").string();
    Simulation simulation(options);
    auto cycles = QualityCycleProblems(simulation.GetProgramOutline());
    ASSERT_EQ(cycles.size(), 2u);
    EXPECT_EQ(cycles[0].line, 11);
    EXPECT_EQ(cycles[0].message,
              "quality providers form a cycle: c:d -> d:c -> c:d; reading a quality would recurse without end");
    EXPECT_EQ(cycles[1].line, 17);
    std::vector<Problem> fromCheck;
    for (const auto& problem : CollectProblems(simulation)) {
        if (problem.message.rfind("quality providers form a cycle", 0) == 0) {
            fromCheck.push_back(problem);
        }
    }
    ASSERT_EQ(fromCheck.size(), cycles.size());
    for (std::size_t i = 0; i < cycles.size(); ++i) {
        EXPECT_EQ(fromCheck[i].line, cycles[i].line);
        EXPECT_EQ(fromCheck[i].message, cycles[i].message);
        EXPECT_EQ(fromCheck[i].severity, "error");
    }
}

namespace {

/// Files written by this process end at `bytes` while the object lives; writing beyond gives an
/// error (the signal that would end the process is ignored meanwhile).
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &saved);
        previous = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = saved;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, previous);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit saved{};
    void (*previous)(int) = SIG_DFL;
};

} // namespace

TEST_F(SimulationTest, ADocumentThatFindsNoRoomInTheControllersFileSystemSaysWhatToDo)
{
    auto options = Options();
    ASSERT_GT(std::filesystem::file_size(options.document), 100u);
    std::string message;
    {
        // The copy into the private root is cut short, as on a full memory file system.
        FileSizeLimit limit(100);
        try {
            Simulation simulation(options);
        } catch (const UsageError& error) {
            message = error.what();
        }
    }
    EXPECT_EQ(message.rfind(options.document + ": cannot copy the document into the simulated controller's file system in " +
                                Zon::Host::PrivateDirectoryBase().string() + " (",
                            0),
              0u)
        << message;
    EXPECT_NE(message.find("); set TMPDIR to a directory with room"), std::string::npos) << message;
}
