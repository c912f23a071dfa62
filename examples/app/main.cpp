// motor-app: an application built against the installed VarnixBase package. It adds a port type
// and two connector types of its own to the factories, hosts a component "Drive" whose variable
// is a structure of its own, and runs the configurable program "MotorProgram" on the host
// platform the way a controller runs it, printing the program's ports after every cycle.
//
//   motor-app [--cycles N] [DOCUMENT]
//
// DOCUMENT defaults to the MotorProgram.prog.config beside this source file. Time is virtual:
// every run prints the same table.
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "MotorStatus.hpp"
#include "MotorTypes.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConfigurableProgramBuilder.hpp"
#include "VarnixBase/Core/PortSystem/GetCommonTypeName.hpp"
#include "VarnixBase/Core/PortSystem/HostedProgram.hpp"
#include "VarnixBase/Core/QualitySystem/QualifiedValue.hpp"
#include "VarnixBase/Core/QualitySystem/QualityTypeDescription.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/Exception.hpp"
#include "Zon/Host/Clock.hpp"
#include "Zon/Host/Component.hpp"
#include "Zon/Host/PortPublisher.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/Plc/Commons/Meta/TypeSystem/TypeDomain.hpp"
#include "Zon/System/Commons/Io/Path.hpp"

#ifndef MOTOR_APP_DOCUMENT
#define MOTOR_APP_DOCUMENT "MotorProgram.prog.config"
#endif

namespace fs = std::filesystem;
using namespace MotorApp;
using VarnixBase::Commons::Meta::MetaInfoProvider;
using VarnixBase::Core::PortSystem::HostedProgram;
using VarnixBase::Core::QualitySystem::QualifiedValue;

namespace {

constexpr const char* ProgramType = "MotorProgram";
constexpr const char* InstancePath = "App/Main";
constexpr std::chrono::microseconds CycleTime{10000};
/// The virtual clock starts at 2026-01-01T00:00:00Z.
constexpr std::int64_t StartMicroseconds = 1767225600LL * 1000000;

/// A directory that stands in for the controller's file system, removed at the end.
class PrivateRoot {
public:
    PrivateRoot()
    {
        std::string pattern = (fs::temp_directory_path() / "motor-app-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("cannot create a private directory for the controller's file system");
        }
        path = pattern;
    }
    ~PrivateRoot()
    {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    PrivateRoot(const PrivateRoot&) = delete;
    PrivateRoot& operator=(const PrivateRoot&) = delete;

    fs::path path;
};

/// The address of the variable that `path` names, through the library's data browser.
void* Resolve(const std::string& path)
{
    auto info = MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(Zon::String(path));
    if (info.address == nullptr) {
        throw std::runtime_error("variable " + path + " does not resolve");
    }
    return info.address;
}

/// What the controller's data flow does between variables of different components: once per cycle,
/// before the programs run, each link copies one variable onto another. Both ends are named by
/// variable path and must have the same type.
class DataFlow {
public:
    template <class T>
    void Connect(const std::string& from, const std::string& to)
    {
        // Both ends must be a `T`, as the meta data names types, so that copying sizeof(T) bytes
        // stays inside both variables.
        const Zon::String expected = Zon::CommonTypeName<T>();
        auto& browser = MetaInfoProvider::GetInstance().GetDataBrowser();
        for (const auto& path : {from, to}) {
            auto type = VarnixBase::Core::PortSystem::GetCommonTypeName(browser.GetDataInfo(Zon::String(path)));
            if (type != expected) {
                throw std::runtime_error("data flow " + from + " -> " + to + ": " + path + " is " +
                                         type.ToStdString() + ", not " + expected.ToStdString());
            }
        }
        links.push_back({Resolve(from), Resolve(to), sizeof(T)});
    }

    void Transfer() const
    {
        for (const auto& link : links) {
            std::memcpy(link.to, link.from, link.size);
        }
    }

private:
    struct Link {
        const void* from;
        void* to;
        std::size_t size;
    };
    std::vector<Link> links;
};

/// What the drive reports in each cycle: it is switched on, speeds up, warns, trips, coasts down,
/// is reset and started again after its gear has been changed. The last step holds.
struct DriveStep {
    bool enabled;
    bool fault;
    std::uint16_t errorCode;
    float speed;
    double gearRatio;
};

constexpr DriveStep DriveProfile[] = {
    {false, false, 0x0000, 0.0F, 12.5},   // switched off
    {true, false, 0x0000, 300.0F, 12.5},  // switched on, speeding up
    {true, false, 0x0000, 600.0F, 12.5},
    {true, false, 0x0000, 900.0F, 12.5},
    {true, false, 0x0000, 1200.0F, 12.5},
    {true, false, 0x0000, 1500.0F, 12.5},
    {true, false, 0x4210, 1500.0F, 12.5}, // a temperature warning
    {true, true, 0x2310, 800.0F, 12.5},   // tripped on over-current, coasting down
    {true, true, 0x2310, 200.0F, 12.5},
    {false, false, 0x0000, 0.0F, 10.0},   // reset and switched off; the gear is changed
    {true, false, 0x0000, 3.0F, 10.0},    // switched on, below the running threshold
    {true, false, 0x0000, 400.0F, 10.0},
};

const DriveStep& DriveAt(std::uint64_t cycle)
{
    constexpr std::uint64_t steps = sizeof(DriveProfile) / sizeof(DriveProfile[0]);
    return DriveProfile[(cycle < steps ? cycle : steps) - 1];
}

std::string QualityText(const VarnixBase::Core::QualitySystem::Quality& quality)
{
    std::ostringstream text;
    text << quality;
    return text.str();
}

/// Everything a controller brings up for one program, in order, and takes down in reverse.
class ControllerHost {
public:
    explicit ControllerHost(const fs::path& document)
    {
        try {
            BringUp(document);
        } catch (...) {
            TakeDown();
            throw;
        }
    }

    ~ControllerHost() { TakeDown(); }

    ControllerHost(const ControllerHost&) = delete;
    ControllerHost& operator=(const ControllerHost&) = delete;

    VarnixBase::Core::PortSystem::ConfigurableProgramBaseImpl& GetProgram() { return program->GetProgram(); }
    HostedProgram& GetHostedProgram() { return *program; }
    DriveAxis& GetAxis() { return axis; }

private:
    void BringUp(const fs::path& document)
    {
        // The firmware's part: application domain, logging, domain proxy, file system, clock.
        Zon::Host::RuntimeOptions options;
        options.fileSystemRoot = root.path.string();
        options.captureLevel.reset();
        runtime = std::make_unique<Zon::Host::Runtime>(options);
        Zon::Host::Clock::UseVirtual(Zon::DateTime::FromUnixTimeMicroseconds(StartMicroseconds));

        // The application's port and connector types, under the names its document uses.
        AddMotorTypes();

        // The document goes where the library reads a program type's configuration.
        Zon::String directory = Zon::System::Commons::Io::Path::Combine(
            VarnixBase::Core::Info::GetDataDirectory(), "Core/PortSystem");
        fs::path target = root.path / fs::path(directory.ToStdString()).relative_path() /
                          (std::string(ProgramType) + ".prog.config");
        fs::create_directories(target.parent_path());
        fs::copy_file(document, target, fs::copy_options::overwrite_existing);

        // Type meta data: what qualified ports publish, and the application's structures member by
        // member, so that variable paths walk into them.
        library = std::make_unique<Zon::Host::TypeLibrary>("MotorApp", "MotorApp");
        VarnixBase::Core::QualitySystem::DescribeQualityTypes(*library);
        DescribeMotorTypes(*library);

        // The application's component: "Drive/Axis1" is the structure `axis` in this process.
        drive = std::make_unique<Zon::Host::Component>("Drive", *library);
        drive->AddVariable("Axis1", axis);
        MetaInfoProvider::GetInstance().Add(*drive);

        // The program: construction reads the document and creates the ports, publishing makes
        // "App/Main.<port>" resolve, and the event builds the connectors.
        publisher = std::make_unique<Zon::Host::PortPublisher>(*library);
        program = std::make_unique<HostedProgram>(Zon::String(InstancePath), Zon::String(ProgramType), domain);
        component = &program->Publish(*publisher);
        runtime->RaisePortsPublished();
    }

    /// In reverse: the program withdraws its ports, the components leave the meta data, then the
    /// publisher, the component, the types and the runtime go.
    void TakeDown() noexcept
    {
        program.reset();
        if (component != nullptr) {
            MetaInfoProvider::GetInstance().Remove(*component);
            component = nullptr;
        }
        if (drive) {
            MetaInfoProvider::GetInstance().Remove(*drive);
        }
        publisher.reset();
        drive.reset();
        library.reset();
        runtime.reset();
        Zon::Host::Clock::UseReal();
    }

    PrivateRoot root;
    std::unique_ptr<Zon::Host::Runtime> runtime;
    std::unique_ptr<Zon::Host::TypeLibrary> library;
    DriveAxis axis{};
    std::unique_ptr<Zon::Host::Component> drive;
    std::unique_ptr<Zon::Host::PortPublisher> publisher;
    Zon::Plc::Commons::Meta::TypeSystem::TypeDomain domain;
    std::unique_ptr<HostedProgram> program;
    Zon::Host::Component* component = nullptr;
};

int Run(const fs::path& document, std::uint64_t cycles)
{
    if (!fs::is_regular_file(document)) {
        std::fprintf(stderr, "motor-app: no document %s\n", document.string().c_str());
        return 2;
    }
    ControllerHost host(document);
    auto& program = host.GetProgram();

    // The builder's verdict: a document with problems stops here (its messages went to stderr).
    try {
        program.GetBuilder().Complete();
    } catch (const Zon::Exception& error) {
        std::fprintf(stderr, "motor-app: %s\n", error.what());
        return 1;
    }

    // The drive's variables reach the program's input ports as the controller's data flow would
    // carry them, by variable path from component to component.
    DataFlow flow;
    flow.Connect<MotorStatus>("Drive/Axis1.status", "App/Main.motor");
    flow.Connect<double>("Drive/Axis1.gearRatio", "App/Main.gearRatio");

    // The ports as the controller sees them: their published memory, by variable path.
    const auto& motor = *static_cast<const MotorStatus*>(Resolve("App/Main.motor"));
    const auto& gearRatio = *static_cast<const double*>(Resolve("App/Main.gearRatio"));
    const auto& running = *static_cast<const bool*>(Resolve("App/Main.running"));
    const auto& speed = *static_cast<const QualifiedValue<double>*>(Resolve("App/Main.speed"));
    const auto& errorCode = *static_cast<const std::uint16_t*>(Resolve("App/Main.errorCode"));
    const auto& display = *static_cast<const short*>(Resolve("App/Main.display"));

    std::printf("%s at %s: %zu ports, %zu connectors, cycle time %lld ms\n", ProgramType, InstancePath,
                program.GetPortProvider().Count(), program.GetConnectorProvider().Count(),
                static_cast<long long>(CycleTime.count() / 1000));
    std::printf("%5s %8s | %-7s %-5s %6s %6s | %9s | %-7s %9s %-17s %8s | %9s %7s\n", "cycle", "time ms", "enabled",
                "fault", "code", "rpm", "gearRatio", "running", "speed", "speed quality", "stamp ms", "errorCode",
                "display");

    DriveAxis& axis = host.GetAxis();
    for (std::uint64_t cycle = 1; cycle <= cycles; ++cycle) {
        // The drive's firmware updates its variables, the data flow carries them, the task runs.
        const DriveStep& step = DriveAt(cycle);
        axis.status = MotorStatus{step.enabled, step.fault, step.errorCode, step.speed};
        axis.gearRatio = step.gearRatio;
        flow.Transfer();
        host.GetHostedProgram().Execute();

        const std::int64_t now = Zon::DateTime::Now().ToUnixTimeMicroseconds();
        char code[8];
        char copiedCode[8];
        std::snprintf(code, sizeof(code), "0x%04X", static_cast<unsigned>(motor.errorCode));
        std::snprintf(copiedCode, sizeof(copiedCode), "0x%04X", static_cast<unsigned>(errorCode));
        std::printf("%5" PRIu64 " %8.3f | %-7s %-5s %6s %6.1f | %9.2f | %-7s %9.3f %-17s %8.3f | %9s %7d\n", cycle,
                    static_cast<double>(now - StartMicroseconds) / 1000.0, motor.enabled ? "true" : "false",
                    motor.fault ? "true" : "false", code, static_cast<double>(motor.speed), gearRatio,
                    running ? "true" : "false", speed.value, QualityText(speed.quality).c_str(),
                    static_cast<double>(speed.timestamp - StartMicroseconds) / 1000.0, copiedCode,
                    static_cast<int>(display));
        Zon::Host::Clock::Advance(CycleTime);
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    fs::path document = MOTOR_APP_DOCUMENT;
    std::uint64_t cycles = 12;
    for (int i = 1; i < argc; ++i) {
        std::string argument = argv[i];
        if (argument == "--cycles" && i + 1 < argc) {
            char* end = nullptr;
            cycles = std::strtoull(argv[++i], &end, 10);
            if (end == nullptr || *end != '\0' || cycles == 0) {
                std::fprintf(stderr, "motor-app: --cycles %s: expected a positive number\n", argv[i]);
                return 2;
            }
        } else if (!argument.empty() && argument[0] != '-') {
            document = argument;
        } else {
            std::fprintf(stderr, "usage: motor-app [--cycles N] [DOCUMENT]\n");
            return 2;
        }
    }
    try {
        return Run(document, cycles);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "motor-app: %s\n", error.what());
        return 1;
    }
}
