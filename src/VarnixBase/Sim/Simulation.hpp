#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "VarnixBase/Sim/Outline.hpp"
#include "VarnixBase/Sim/Probe.hpp"
#include "VarnixBase/Sim/RealTimePacer.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "VarnixBase/Sim/Trace.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogSink.hpp"

namespace Zon::Host {
class TypeLibrary;
}

namespace VarnixBase::Sim {

struct SimulationOptions {
    /// The `.prog.config` on this machine.
    std::string document;
    /// Program type; empty: the document's only one.
    std::string type;
    /// Instance path "COMPONENT/PROGRAM".
    std::string instance = "App/Main";
    /// Level up to which the library's log goes to standard error; none when empty.
    std::optional<Zon::System::Commons::Diagnostics::Logging::LogLevel> consoleLevel =
        Zon::System::Commons::Diagnostics::Logging::LogLevel::Warning;
    /// Real time on the real clock instead of virtual time.
    bool realTime = false;
    /// The step of the clock per cycle for `Step` (`Run` takes its own from `RunOptions`).
    std::chrono::microseconds cycleTime{10000};
    /// Keep every line the library logs, down to its trace lines, for `GetLog` (what a check
    /// attributes to the document's lines). Without it the library formats only the lines that the
    /// console shows, which makes the start-up of a large program several times faster.
    bool captureLog = true;
    /// Describes the application's own types to the simulated controller's type library before the
    /// program is built, as the application does on the controller: the structures its port types
    /// publish, member by member, so that their variables and members resolve ("App/Main.motor.speed").
    /// None when empty. The application's port and connector types must be in their factories by
    /// then; this is a place to add them, as the host runtime is up.
    std::function<void(Zon::Host::TypeLibrary& library)> describeTypes;
};

/// Time on the virtual clock at the start of every simulated run: 2026-01-01T00:00:00Z.
inline constexpr std::int64_t VirtualStartMicroseconds = 1767225600LL * 1000000;

/// One simulated controller with one configurable program, built exactly as a controller builds it:
/// the host runtime on a private file-system root (removed at the end), the document put where the
/// library looks for it, the program constructed (configuration files, document, ports), its ports
/// published, the domain proxy's event raised (connectors, parameters, quality providers).
/// Everything the program does goes through the library's own operations.
///
/// Only one simulation may exist in a process at a time: the host runtime and the library's meta
/// data are process-wide.
///
/// In a test:
///
///     Simulation simulation({.document = "Tank.prog.config"});
///     simulation.Set("raw", "2500");
///     simulation.Step();
///     EXPECT_EQ(simulation.Read("display").value, "25");
class Simulation {
public:
    /// Builds the program. Throws `UsageError` for a document that is missing, not XML, or holds no
    /// (or more than one, without `type`) program type.
    explicit Simulation(const SimulationOptions& options);
    ~Simulation();
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;

    const std::string& GetType() const noexcept;
    const DocumentOutline& GetOutline() const noexcept;
    /// The outline of the simulated program type (all its `Program` entries merged).
    const OutlineProgram& GetProgramOutline() const noexcept;
    /// The instance path "COMPONENT/PROGRAM"; a port's variable is this, ".", its name.
    const std::string& GetInstance() const noexcept;
    /// The program's ports in the order of the document.
    std::vector<std::shared_ptr<VarnixBase::Core::PortSystem::IPort>> GetPorts() const;
    std::size_t GetPortCount() const;
    std::size_t GetConnectorCount() const;
    /// Everything the library logged so far, in order. Needs `SimulationOptions::captureLog`;
    /// without it this throws `Zon::System::Commons::InvalidOperationException`.
    std::vector<Zon::System::Commons::Diagnostics::Logging::LogEntry> GetLog() const;
    /// The builder's verdict: empty when `Complete` accepts the configuration, else its message.
    std::string Complete();
    /// The names of the registered port types and connector type pairs ("copy: int -> double").
    static std::vector<std::string> PortTypes();
    static std::vector<std::string> ConnectorTypes();

    /// Stimuli to apply during `Run`; each is resolved and checked now (port name, literal), so that
    /// a bad one fails before the first cycle with `UsageError`.
    void AddStimuli(const std::vector<StimulusEntry>& entries);
    /// Checks stimuli as `AddStimuli` does, without keeping them.
    void CheckStimuli(const std::vector<StimulusEntry>& entries) const;

    /// Writes `literal` into the published memory of the port named `port` now, as the controller
    /// writes it between cycles (an IEC 61131-3 literal, or the text for a string port). A port whose
    /// value is a structure is written member by member: "motor.speed" is the member `speed` of the
    /// port "motor" (stimuli name them alike). Throws `UsageError` for an unknown port or member, or
    /// a literal that does not fit the type.
    void Set(const std::string& port, const std::string& literal);
    /// What the port named `port` holds now, as the trace shows it. Throws `UsageError` for an
    /// unknown port.
    TraceSample Read(const std::string& port) const;
    /// Runs `cycles` task cycles: the stimuli due before each, the program's `Execute`, then the clock
    /// steps by `SimulationOptions::cycleTime`.
    void Step(std::uint64_t cycles = 1);
    /// The cycles run so far (by `Step` and `Run`); the next cycle has this number plus one.
    std::uint64_t GetCycle() const noexcept;
    /// The names of the program's ports, in the program's order.
    std::vector<std::string> GetPortNames() const;
    /// A probe of the port named `port` (with its published time stamp, when it has one). Throws
    /// `UsageError` starting with `origin` for an unknown port.
    PortProbe GetProbe(const std::string& port, const std::string& origin) const;
    /// The controller time of the first cycle, in microseconds since the Unix epoch.
    std::int64_t GetStartMicroseconds() const noexcept;

    struct RunOptions {
        /// 0: until `stop` is set.
        std::uint64_t cycles = 20;
        std::chrono::microseconds cycleTime{10000};
        /// Receives the trace after every cycle; none when null.
        TraceWriter* trace = nullptr;
        /// Time each executable on its own.
        bool profile = false;
        /// Where a progress line goes for long runs (a terminal); none when null.
        std::ostream* progress = nullptr;
        /// Called with the cycle's number before its stimuli are written, and after its `Execute`
        /// and trace; none when empty. Their time counts into the program's time of the summary.
        std::function<void(std::uint64_t cycle)> beforeCycle;
        std::function<void(std::uint64_t cycle)> afterCycle;
        /// Looked at before every cycle: the run ends when it is set (a signal handler sets it).
        const std::atomic<bool>* stop = nullptr;
        /// In real time, receives the lateness of every cycle start in microseconds; none when null.
        std::vector<double>* lateness = nullptr;
    };

    struct ExecutableTiming {
        std::string name;
        std::uint64_t count = 0;
        double minimum = 0, mean = 0, maximum = 0; ///< microseconds
    };

    struct Summary {
        std::uint64_t cycles = 0;
        std::size_t ports = 0;
        std::size_t connectors = 0;
        double wallSeconds = 0;
        double meanCycleMicroseconds = 0;
        std::vector<ExecutableTiming> timings;
        /// In real time: overruns and the lateness of cycle starts.
        std::optional<RealTimeReport> realTime;
    };

    /// Runs `options.cycles` task cycles after those already run, numbered on from `GetCycle()`.
    Summary Run(const RunOptions& options);

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

void WriteSummary(std::ostream& out, const Simulation::Summary& summary);

} // namespace VarnixBase::Sim
