// A host for configurable programs in tests: documents on the host root, programs constructed
// from them, ports published through the host's publisher, the domain proxy's event, cycles on a
// virtual clock.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Core/PortSystem/HostedProgram.hpp"
#include "VarnixBase/Core/QualitySystem/QualityTypeDescription.hpp"
#include "Zon/Host/Clock.hpp"
#include "Zon/Host/PortPublisher.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/Plc/Commons/Meta/TypeSystem/TypeDomain.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"
#include "support/HostFixture.hpp"

namespace VarnixTest {

class ProgramHostTest : public HostTest {
protected:
    /// The virtual clock's start: 2023-11-14T22:13:20Z.
    static constexpr std::int64_t StartMicroseconds = 1'700'000'000'000'000;
    static constexpr const char* DataDirectory = "/opt/varnix/data/VarnixBase/Core/PortSystem";
    static constexpr const char* LegacyDirectory = "/opt/varnix/projects/VarnixBase/Config/Types";
    static constexpr const char* ProjectDirectory = "/opt/varnix/projects/current/Libs/VarnixBase";

    void SetUp() override
    {
        HostTest::SetUp();
        Zon::Host::Clock::UseVirtual(Zon::DateTime::FromUnixTimeMicroseconds(StartMicroseconds));
        library = std::make_unique<Zon::Host::TypeLibrary>("App", "App");
        VarnixBase::Core::QualitySystem::DescribeQualityTypes(*library);
        publisher = std::make_unique<Zon::Host::PortPublisher>(*library);
    }

    void TearDown() override
    {
        programs.clear();
        if (Zon::Host::Component* component = publisher->FindComponent("App")) {
            VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().Remove(*component);
        }
        publisher.reset();
        library.reset();
        Zon::Host::Clock::UseReal();
        HostTest::TearDown();
    }

    /// Writes the working copy of the document of `type`, where the builder reads it when there
    /// is no legacy file.
    void WriteDocument(const std::string& type, const std::string& xml)
    {
        WritePlatformFile(std::string(DataDirectory) + "/" + type + ".prog.config", xml);
    }

    /// Constructs a program of `type` (ports built, no connectors yet). It lives until the test
    /// ends.
    VarnixBase::Core::PortSystem::HostedProgram& Construct(const std::string& type,
                                                           const std::string& instancePath = "App/Main")
    {
        programs.push_back(std::make_unique<VarnixBase::Core::PortSystem::HostedProgram>(
            Zon::String(instancePath), Zon::String(type), domain));
        return *programs.back();
    }

    /// Constructs, publishes and raises the domain proxy's event: the program is initialised.
    VarnixBase::Core::PortSystem::HostedProgram& Start(const std::string& type,
                                                       const std::string& instancePath = "App/Main")
    {
        auto& program = Construct(type, instancePath);
        program.Publish(*publisher);
        Runtime().RaisePortsPublished();
        return program;
    }

    /// One task cycle: the clock moves on by 10 ms, then the program runs.
    void Cycle(VarnixBase::Core::PortSystem::HostedProgram& program)
    {
        Zon::Host::Clock::Advance(std::chrono::milliseconds(10));
        program.Execute();
    }

    /// The memory of a published variable, as the controller reaches it by its path.
    template <class T>
    T& At(const std::string& path)
    {
        void* address =
            VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(path.c_str()).address;
        if (address == nullptr) {
            throw std::runtime_error("variable not published: " + path);
        }
        return *static_cast<T*>(address);
    }

    std::vector<std::string> Messages(Zon::System::Commons::Diagnostics::Logging::LogLevel level)
    {
        return Capture().GetMessages(level);
    }
    std::vector<std::string> Errors() { return Messages(Zon::System::Commons::Diagnostics::Logging::LogLevel::Error); }

    Zon::Plc::Commons::Meta::TypeSystem::TypeDomain domain;
    std::unique_ptr<Zon::Host::TypeLibrary> library;
    std::unique_ptr<Zon::Host::PortPublisher> publisher;
    std::vector<std::unique_ptr<VarnixBase::Core::PortSystem::HostedProgram>> programs;
};

} // namespace VarnixTest
