#include "VarnixBase/Sim/Simulation.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>
#include <thread>

#include <fmt/format.h>

#include "VarnixBase/Sim/Inject.hpp"
#include "VarnixBase/Sim/Analysis.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConfigurableProgramBuilder.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/PortSystem/HostedProgram.hpp"
#include "VarnixBase/Core/PortSystem/Factories/PortFactory.hpp"
#include "VarnixBase/Core/QualitySystem/QualityTypeDescription.hpp"
#include "Zon/Exception.hpp"
#include "Zon/Host/Clock.hpp"
#include "Zon/Host/PortPublisher.hpp"
#include "Zon/Host/PrivateDirectory.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/Plc/Commons/DataType.hpp"
#include "Zon/Plc/Commons/Meta/TypeSystem/TypeDomain.hpp"
#include "Zon/System/Commons/Io/Path.hpp"

namespace VarnixBase::Sim {

namespace fs = std::filesystem;
using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Commons::Meta::MetaInfoProvider;
using Zon::System::Commons::Diagnostics::Logging::CaptureSink;
using Zon::System::Commons::Diagnostics::Logging::LogEntry;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

/// A private directory that stands in for the controller's file system, removed at the end.
Zon::Host::PrivateDirectory MakePrivateRoot()
{
    try {
        return Zon::Host::PrivateDirectory("varnix-sim");
    } catch (const std::system_error& error) {
        throw UsageError(fmt::format("cannot create a private directory for the simulated controller ({}); "
                                     "set TMPDIR to a writable directory",
                                     error.what()));
    }
}

struct PreparedStimulus {
    std::uint64_t cycle;
    Zon::Plc::Commons::Meta::DataInfo variable;
    std::string literal;
    std::string origin;
};

std::string ChooseType(const DocumentOutline& outline, const std::string& wanted)
{
    auto types = outline.ProgramTypes();
    std::string list;
    for (const auto& type : types) {
        list += (list.empty() ? "" : ", ") + type;
    }
    if (!wanted.empty()) {
        if (std::find(types.begin(), types.end(), wanted) == types.end()) {
            throw UsageError(fmt::format("{}: no Program of type '{}' (the document has: {})", outline.file, wanted,
                                         list.empty() ? std::string("none") : list));
        }
        return wanted;
    }
    if (types.empty()) {
        throw UsageError(fmt::format("{}: the document has no Program element", outline.file));
    }
    if (types.size() > 1) {
        throw UsageError(
            fmt::format("{}: the document has {} program types ({}): choose one with --type", outline.file, types.size(), list));
    }
    return types.front();
}

} // namespace

struct Simulation::Impl {
    SimulationOptions options;
    DocumentOutline outline;
    OutlineProgram program;
    std::string type;
    Zon::Host::PrivateDirectory root = MakePrivateRoot();
    std::unique_ptr<Zon::Host::Runtime> runtime;
    std::unique_ptr<Zon::Host::TypeLibrary> library;
    std::unique_ptr<Zon::Host::PortPublisher> publisher;
    Zon::Plc::Commons::Meta::TypeSystem::TypeDomain domain;
    std::unique_ptr<HostedProgram> hosted;
    Zon::Host::Component* component = nullptr;
    std::vector<PreparedStimulus> stimuli;
    /// The first stimulus not yet due.
    std::size_t nextStimulus = 0;
    /// Cycles run so far.
    std::uint64_t cycle = 0;
    /// The controller time of the first cycle.
    std::int64_t start = 0;

    ~Impl()
    {
        // In reverse: the program withdraws its ports, the component leaves the meta data, then the
        // publisher, the types and the runtime go.
        hosted.reset();
        if (component != nullptr) {
            MetaInfoProvider::GetInstance().Remove(*component);
        }
        publisher.reset();
        library.reset();
        runtime.reset();
        Zon::Host::Clock::UseReal();
    }

    Zon::Plc::Commons::Meta::DataInfo Resolve(const std::string& path) const
    {
        return MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(Zon::String(path));
    }

    /// "App/Main.level" for a plain port, "App/Main.level.Value" for a qualified one.
    std::string PortPath(const std::shared_ptr<IPort>& port) const
    {
        std::string path = options.instance + "." + port->GetName().ToStdString();
        std::string relative = port->GetRelativeDataPath().ToStdString();
        return relative.empty() ? path : path + "." + relative;
    }

    std::shared_ptr<IPort> FindPort(const std::string& name, const std::string& origin) const
    {
        std::shared_ptr<IPort> port;
        if (!hosted->GetProgram().GetPortProvider().TryGetPort(Zon::String(name), port)) {
            throw UsageError(fmt::format("{}: the program has no port '{}'", origin, name));
        }
        return port;
    }

    /// The published variable of the port named `name`, or of a member of a port whose value is a
    /// structure ("motor.speed": the member `speed` of the port "motor").
    Zon::Plc::Commons::Meta::DataInfo Variable(const std::string& name, const std::string& origin) const
    {
        std::shared_ptr<IPort> port;
        auto& ports = hosted->GetProgram().GetPortProvider();
        if (ports.TryGetPort(Zon::String(name), port)) {
            return Resolve(PortPath(port));
        }
        std::size_t dot = name.find('.');
        if (dot == std::string::npos || !ports.TryGetPort(Zon::String(name.substr(0, dot)), port)) {
            throw UsageError(fmt::format("{}: the program has no port '{}'", origin, name));
        }
        // The data browser answers an unknown member with data type 0 (and still an address).
        auto member = Resolve(PortPath(port) + name.substr(dot));
        if (member.address == nullptr || member.dataType == 0) {
            throw UsageError(fmt::format("{}: port '{}' has no member '{}'", origin, name.substr(0, dot),
                                         name.substr(dot + 1)));
        }
        return member;
    }

    /// A probe with the port's published time stamp, when it has one.
    PortProbe Probe(const std::shared_ptr<IPort>& port) const
    {
        const std::int64_t* timestamp = nullptr;
        if (!port->GetRelativeDataPath().IsEmpty()) {
            timestamp = static_cast<const std::int64_t*>(
                Resolve(options.instance + "." + port->GetName().ToStdString() + ".Timestamp").address);
        }
        return MakeProbe(port, timestamp);
    }

    /// The stimulus resolved to its variable, its literal tried on a scratch copy of the variable's
    /// memory, so that a bad one stops the run before its first cycle.
    PreparedStimulus Prepare(const StimulusEntry& entry) const
    {
        auto variable = Variable(entry.port, entry.origin);
        alignas(16) unsigned char scratch[4096] = {};
        const auto base = variable.dataType & Zon::Plc::Commons::DataTypeBaseMask;
        if (variable.address != nullptr && (base == Zon::Plc::Commons::DataTypeEnum::StaticString ||
                                            base == Zon::Plc::Commons::DataTypeEnum::StaticWString)) {
            std::memcpy(scratch, variable.address, 4); // a fixed string's capacity and length
        }
        auto trial = variable;
        trial.address = variable.address != nullptr ? scratch : nullptr;
        WriteLiteral(trial, entry.literal, entry.origin);
        return {entry.cycle, variable, entry.literal, entry.origin};
    }

    bool StimulusDue(std::uint64_t number) const
    {
        return nextStimulus < stimuli.size() && stimuli[nextStimulus].cycle <= number;
    }

    /// Writes the stimuli of cycle `number`; those of earlier cycles that were passed over (added
    /// after their cycle ran) are dropped.
    void ApplyStimuli(std::uint64_t number)
    {
        while (StimulusDue(number)) {
            const auto& stimulus = stimuli[nextStimulus++];
            if (stimulus.cycle == number) {
                WriteLiteral(stimulus.variable, stimulus.literal, stimulus.origin);
            }
        }
    }
};

Simulation::Simulation(const SimulationOptions& options) : impl(std::make_unique<Impl>())
{
    impl->options = options;
    impl->outline = ReadOutline(options.document);
    impl->type = ChooseType(impl->outline, options.type);
    impl->program = impl->outline.Merged(impl->type);
    std::size_t slash = options.instance.find('/');
    if (slash == std::string::npos || slash == 0 || slash + 1 == options.instance.size() ||
        options.instance.find('/', slash + 1) != std::string::npos) {
        throw UsageError(fmt::format("--instance {}: expected COMPONENT/PROGRAM", options.instance));
    }

    Zon::Host::RuntimeOptions runtimeOptions;
    runtimeOptions.fileSystemRoot = impl->root.Path().string();
    runtimeOptions.consoleLevel = options.consoleLevel;
    if (options.captureLog) {
        runtimeOptions.captureLevel = LogLevel::Trace;
    } else {
        runtimeOptions.captureLevel.reset();
    }
    impl->runtime = std::make_unique<Zon::Host::Runtime>(runtimeOptions);
    if (options.realTime) {
        Zon::Host::Clock::UseReal();
    } else {
        Zon::Host::Clock::UseVirtual(Zon::DateTime::FromUnixTimeMicroseconds(VirtualStartMicroseconds));
    }
    impl->start = Zon::DateTime::Now().ToUnixTimeMicroseconds();

    // The document goes where the library reads a program type's configuration.
    Zon::String directory = Zon::System::Commons::Io::Path::Combine(VarnixBase::Core::Info::GetDataDirectory(),
                                                                     "Core/PortSystem");
    fs::path target = impl->root.Path() / fs::path(directory.ToStdString()).relative_path() / (impl->type + ".prog.config");
    try {
        fs::create_directories(target.parent_path());
        fs::copy_file(options.document, target, fs::copy_options::overwrite_existing);
    } catch (const fs::filesystem_error& error) {
        // A memory file system may be small (a container's /dev/shm has 64 MB).
        throw UsageError(fmt::format("{}: cannot copy the document into the simulated controller's file system "
                                     "in {} ({}); set TMPDIR to a directory with room",
                                     options.document, impl->root.Path().parent_path().string(),
                                     error.code().message()));
    }

    std::string componentName = options.instance.substr(0, slash);
    impl->library = std::make_unique<Zon::Host::TypeLibrary>(componentName, componentName);
    VarnixBase::Core::QualitySystem::DescribeQualityTypes(*impl->library);
    if (options.describeTypes) {
        options.describeTypes(*impl->library);
    }
    impl->publisher = std::make_unique<Zon::Host::PortPublisher>(*impl->library);
    impl->hosted = std::make_unique<HostedProgram>(Zon::String(options.instance), Zon::String(impl->type), impl->domain);
    impl->component = &impl->hosted->Publish(*impl->publisher);
    impl->runtime->RaisePortsPublished();
}

Simulation::~Simulation() = default;

const std::string& Simulation::GetType() const noexcept
{
    return impl->type;
}

const DocumentOutline& Simulation::GetOutline() const noexcept
{
    return impl->outline;
}

const OutlineProgram& Simulation::GetProgramOutline() const noexcept
{
    return impl->program;
}

const std::string& Simulation::GetInstance() const noexcept
{
    return impl->options.instance;
}

std::vector<std::shared_ptr<IPort>> Simulation::GetPorts() const
{
    const auto& ports = impl->hosted->GetProgram().GetPortProvider().GetPorts();
    return {ports.begin(), ports.end()};
}

std::size_t Simulation::GetPortCount() const
{
    return impl->hosted->GetProgram().GetPortProvider().Count();
}

std::size_t Simulation::GetConnectorCount() const
{
    return impl->hosted->GetProgram().GetConnectorProvider().Count();
}

std::vector<LogEntry> Simulation::GetLog() const
{
    return impl->runtime->GetCapture().GetEntries();
}

std::string Simulation::Complete()
{
    try {
        impl->hosted->GetProgram().GetBuilder().Complete();
    } catch (const Zon::Exception& error) {
        return error.what();
    }
    return std::string();
}

std::vector<std::string> Simulation::PortTypes()
{
    std::vector<std::string> names;
    for (const auto& name : PortFactory::GetInstance().GetTypeNames()) {
        names.push_back(name.ToStdString());
    }
    return names;
}

std::vector<std::string> Simulation::ConnectorTypes()
{
    std::vector<std::string> pairs;
    for (const auto& pair : ConnectorFactory::GetInstance().GetTypePairs()) {
        pairs.push_back(fmt::format("{}: {} -> {}", pair.type, pair.inputType, pair.outputType));
    }
    return pairs;
}

void Simulation::CheckStimuli(const std::vector<StimulusEntry>& entries) const
{
    for (const auto& entry : entries) {
        impl->Prepare(entry);
    }
}

void Simulation::AddStimuli(const std::vector<StimulusEntry>& entries)
{
    for (const auto& entry : entries) {
        impl->stimuli.push_back(impl->Prepare(entry));
    }
    std::stable_sort(impl->stimuli.begin(), impl->stimuli.end(),
                     [](const auto& a, const auto& b) { return a.cycle < b.cycle; });
    impl->nextStimulus = 0;
    while (impl->nextStimulus < impl->stimuli.size() && impl->stimuli[impl->nextStimulus].cycle <= impl->cycle) {
        ++impl->nextStimulus;
    }
}

void Simulation::Set(const std::string& port, const std::string& literal)
{
    std::string origin = port + "=" + literal;
    WriteLiteral(impl->Variable(port, origin), literal, origin);
}

TraceSample Simulation::Read(const std::string& port) const
{
    TraceSample sample;
    impl->Probe(impl->FindPort(port, port)).read(sample);
    return sample;
}

void Simulation::Step(std::uint64_t cycles)
{
    auto& program = impl->hosted->GetProgram();
    for (std::uint64_t i = 0; i < cycles; ++i) {
        std::uint64_t number = ++impl->cycle;
        impl->ApplyStimuli(number);
        program.Execute();
        if (impl->options.realTime) {
            std::this_thread::sleep_for(impl->options.cycleTime);
        } else {
            Zon::Host::Clock::Advance(impl->options.cycleTime);
        }
    }
}

PortProbe Simulation::GetProbe(const std::string& port, const std::string& origin) const
{
    return impl->Probe(impl->FindPort(port, origin));
}

std::int64_t Simulation::GetStartMicroseconds() const noexcept
{
    return impl->start;
}

std::uint64_t Simulation::GetCycle() const noexcept
{
    return impl->cycle;
}

std::vector<std::string> Simulation::GetPortNames() const
{
    std::vector<std::string> names;
    for (const auto& port : impl->hosted->GetProgram().GetPortProvider().GetPorts()) {
        names.push_back(port->GetName().ToStdString());
    }
    return names;
}

Simulation::Summary Simulation::Run(const RunOptions& options)
{
    auto& program = impl->hosted->GetProgram();
    std::vector<PortProbe> probes;
    std::vector<TraceColumn> columns;
    if (options.trace != nullptr) {
        for (const auto& port : program.GetPortProvider().GetPorts()) {
            probes.push_back(impl->Probe(port));
            columns.push_back(probes.back().column);
        }
        options.trace->Begin(columns);
    }

    // With --profile the executables run one by one, in the program's order (executable ports,
    // then connectors), so that each can be timed; otherwise the program's own Execute runs.
    struct Timed {
        std::string name;
        VarnixBase::Commons::IExecutable* executable;
        ExecutableTiming timing;
    };
    std::vector<Timed> timed;
    if (options.profile) {
        for (const auto& port : program.GetPortProvider().GetPorts()) {
            if (auto* executable = dynamic_cast<VarnixBase::Commons::IExecutable*>(port.get())) {
                timed.push_back({port->GetName().ToStdString(), executable, {}});
            }
        }
        for (const auto& connector : program.GetConnectorProvider().GetConnectors()) {
            timed.push_back({connector->GetName().ToStdString(), connector.get(), {}});
        }
        for (auto& entry : timed) {
            entry.timing.name = entry.name;
            entry.timing.minimum = std::numeric_limits<double>::max();
        }
    }

    std::vector<TraceSample> samples(probes.size());
    using Clock = std::chrono::steady_clock;
    auto started = Clock::now();
    auto lastProgress = started;
    bool progressShown = false;
    double executeSeconds = 0;
    // The program's time is taken over runs of cycles that nothing else interrupts. Reading the
    // clock around every single Execute costs more than the cycle of a small program, and part of
    // that cost lands inside what it measures. So without a trace, real time or profiling, a span
    // stays open from cycle to cycle, and closes only for a stimulus, a progress line and the end;
    // its time then also holds the step of the virtual clock, a few nanoseconds per cycle.
    const bool timeEachCycle = options.trace != nullptr || impl->options.realTime || options.profile;
    bool spanOpen = false;
    Clock::time_point spanStart;
    auto closeSpan = [&] {
        if (spanOpen) {
            executeSeconds += std::chrono::duration<double>(Clock::now() - spanStart).count();
            spanOpen = false;
        }
    };
    std::optional<RealTimePacer> pacer;
    if (impl->options.realTime) {
        pacer.emplace(options.cycleTime, options.lateness);
    }
    const bool endless = options.cycles == 0;
    const std::uint64_t first = impl->cycle + 1;
    std::uint64_t step = 1;
    for (; endless || step <= options.cycles; ++step) {
        if (options.stop != nullptr && options.stop->load(std::memory_order_relaxed)) {
            break;
        }
        if (pacer) {
            pacer->WaitForNextCycle();
        }
        const std::uint64_t cycle = first + step - 1;
        impl->cycle = cycle;
        if (options.beforeCycle) {
            options.beforeCycle(cycle);
        }
        if (impl->StimulusDue(cycle)) {
            closeSpan();
            impl->ApplyStimuli(cycle);
        }
        if (!spanOpen) {
            spanStart = Clock::now();
            spanOpen = true;
        }
        if (options.profile) {
            for (auto& entry : timed) {
                auto start = Clock::now();
                entry.executable->Execute();
                double micros = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
                entry.timing.count += 1;
                entry.timing.minimum = std::min(entry.timing.minimum, micros);
                entry.timing.maximum = std::max(entry.timing.maximum, micros);
                entry.timing.mean += micros;
            }
        } else {
            program.Execute();
        }
        if (timeEachCycle) {
            closeSpan();
        }

        if (options.trace != nullptr) {
            for (std::size_t i = 0; i < probes.size(); ++i) {
                probes[i].read(samples[i]);
            }
            options.trace->Cycle(cycle, Zon::DateTime::Now().ToUnixTimeMicroseconds(), samples);
        }
        if (options.afterCycle) {
            options.afterCycle(cycle);
        }
        if (pacer) {
            pacer->EndOfCycle();
        } else {
            Zon::Host::Clock::Advance(options.cycleTime);
        }
        // The progress line looks at the clock every cycle that is timed anyway, else every 1024th.
        if (options.progress != nullptr && (timeEachCycle || step % 1024 == 0)) {
            closeSpan();
            auto now = Clock::now();
            if (now - lastProgress > std::chrono::milliseconds(200) && now - started > std::chrono::seconds(1)) {
                *options.progress << (endless ? fmt::format("\rcycle {}", step)
                                              : fmt::format("\rcycle {}/{} ({}%)", step, options.cycles,
                                                            step * 100 / options.cycles))
                                  << std::flush;
                lastProgress = now;
                progressShown = true;
            }
        }
    }
    closeSpan();
    if (progressShown) {
        *options.progress << "\r\033[K" << std::flush;
    }
    if (options.trace != nullptr) {
        options.trace->End();
    }

    const std::uint64_t ran = step - 1;
    Summary summary;
    summary.cycles = ran;
    summary.ports = GetPortCount();
    summary.connectors = GetConnectorCount();
    summary.wallSeconds = std::chrono::duration<double>(Clock::now() - started).count();
    summary.meanCycleMicroseconds = ran > 0 ? executeSeconds * 1e6 / static_cast<double>(ran) : 0;
    if (pacer) {
        summary.realTime = pacer->Report();
    }
    for (auto& entry : timed) {
        if (entry.timing.count > 0) {
            entry.timing.mean /= static_cast<double>(entry.timing.count);
        } else {
            entry.timing.minimum = 0;
        }
        summary.timings.push_back(entry.timing);
    }
    return summary;
}

void WriteSummary(std::ostream& out, const Simulation::Summary& summary)
{
    out << fmt::format("{} cycles, {} ports, {} connectors, {:.3f} s wall time, {:.3f} us per cycle (program)\n",
                       summary.cycles, summary.ports, summary.connectors, summary.wallSeconds,
                       summary.meanCycleMicroseconds);
    if (summary.realTime) {
        WriteRealTimeReport(out, *summary.realTime);
    }
    if (!summary.timings.empty()) {
        std::size_t width = 10;
        for (const auto& timing : summary.timings) {
            width = std::max(width, timing.name.size());
        }
        out << fmt::format("{:<{}}  {:>10}  {:>10}  {:>10}\n", "executable", width, "min us", "mean us", "max us");
        for (const auto& timing : summary.timings) {
            out << fmt::format("{:<{}}  {:>10.3f}  {:>10.3f}  {:>10.3f}\n", timing.name, width, timing.minimum,
                               timing.mean, timing.maximum);
        }
    }
}

} // namespace VarnixBase::Sim
