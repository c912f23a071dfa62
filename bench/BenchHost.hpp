// A controller on the host for benchmarks of whole programs: a host runtime on a private
// file-system root with logging off, the virtual clock, a type library and a port publisher for the
// component "App", and programs built from generated documents as a controller builds them
// (constructed, published, the domain proxy's event raised).
#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/PortSystem/HostedProgram.hpp"
#include "VarnixBase/Core/QualitySystem/QualityTypeDescription.hpp"
#include "Zon/DateTime.hpp"
#include "Zon/Host/Clock.hpp"
#include "Zon/Host/PortPublisher.hpp"
#include "Zon/Host/PrivateDirectory.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/Plc/Commons/Meta/TypeSystem/TypeDomain.hpp"
#include "Zon/System/Commons/Io/Path.hpp"

namespace Bench {

/// A controller process runs many threads. Starting one (once) makes the process count as
/// multi-threaded for good, so that shared pointer copies pay for their atomic operations as they
/// do on the controller: in a process that never had a second thread the C++ library counts
/// references with plain increments. Every host calls it; a benchmark without one calls it first.
inline void MakeMultiThreaded()
{
    static const bool started = [] {
        std::thread([] {}).join();
        return true;
    }();
    (void)started;
}

/// One simulated controller. Programs are published as instance "App/Main" unless told otherwise.
class Host {
public:
    /// 2026-01-01T00:00:00Z on the virtual clock.
    static constexpr std::int64_t StartMicroseconds = 1767225600LL * 1000000;

    Host()
    {
        MakeMultiThreaded();
        Zon::Host::RuntimeOptions options;
        options.fileSystemRoot = root.Path().string();
        options.consoleLevel.reset();
        options.captureLevel.reset();
        runtime = std::make_unique<Zon::Host::Runtime>(options);
        Zon::Host::Clock::UseVirtual(Zon::DateTime::FromUnixTimeMicroseconds(StartMicroseconds));
        library = std::make_unique<Zon::Host::TypeLibrary>("App", "App");
        VarnixBase::Core::QualitySystem::DescribeQualityTypes(*library);
        publisher = std::make_unique<Zon::Host::PortPublisher>(*library);
    }

    ~Host()
    {
        program.reset();
        if (Zon::Host::Component* component = publisher->FindComponent("App")) {
            VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().Remove(*component);
        }
        publisher.reset();
        library.reset();
        runtime.reset();
        Zon::Host::Clock::UseReal();
    }

    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Writes the document of program type `type` where the library reads it (the working copy
    /// below the data directory).
    void WriteDocument(const std::string& type, const std::string& xml) const
    {
        Zon::String directory = Zon::System::Commons::Io::Path::Combine(
            VarnixBase::Core::Info::GetDataDirectory(), "Core/PortSystem");
        std::filesystem::path file =
            root.Path() / std::filesystem::path(directory.ToStdString()).relative_path() / (type + ".prog.config");
        std::filesystem::create_directories(file.parent_path());
        std::ofstream stream(file, std::ios::binary | std::ios::trunc);
        stream << xml;
    }

    /// Phase one: constructs the program of `type` (document read, ports created). It replaces the
    /// host's earlier program, which is destroyed first.
    VarnixBase::Core::PortSystem::HostedProgram& Construct(const std::string& type)
    {
        program.reset();
        program = std::make_unique<VarnixBase::Core::PortSystem::HostedProgram>(Zon::String("App/Main"),
                                                                                 Zon::String(type), domain);
        return *program;
    }

    /// Phase two: publishes the ports.
    void Publish() { program->Publish(*publisher); }

    /// Phase three: the domain proxy's event, which builds the connectors.
    void RaiseEvent() { runtime->RaisePortsPublished(); }

    /// All three phases.
    VarnixBase::Core::PortSystem::HostedProgram& Start(const std::string& type)
    {
        Construct(type);
        Publish();
        RaiseEvent();
        return *program;
    }

    /// Destroys the program (its ports are withdrawn from the publisher).
    void Stop() { program.reset(); }

    VarnixBase::Core::PortSystem::HostedProgram& Program() { return *program; }

    /// The memory of a published variable, as the controller reaches it by its path.
    template <class T>
    T* At(const std::string& path) const
    {
        void* address =
            VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(path.c_str()).address;
        if (address == nullptr) {
            throw std::runtime_error("variable not published: " + path);
        }
        return static_cast<T*>(address);
    }

private:
    /// Stands in for the controller's file system, removed at the end.
    Zon::Host::PrivateDirectory root{"varnix-bench"};
    std::unique_ptr<Zon::Host::Runtime> runtime;
    std::unique_ptr<Zon::Host::TypeLibrary> library;
    std::unique_ptr<Zon::Host::PortPublisher> publisher;
    Zon::Plc::Commons::Meta::TypeSystem::TypeDomain domain;
    std::unique_ptr<VarnixBase::Core::PortSystem::HostedProgram> program;
};

} // namespace Bench
