#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "Zon/Host/PrivateDirectory.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogSink.hpp"

namespace VarnixTest {

/// A fresh directory where Zon::Host::PrivateDirectoryBase() says, removed with its content when
/// the object goes.
class TempDir {
public:
    TempDir() = default;

    const std::filesystem::path& Path() const noexcept { return directory.Path(); }
    /// Writes `content` to `relative` below the directory, creating directories as needed.
    std::filesystem::path WriteFile(const std::string& relative, const std::string& content) const;

private:
    Zon::Host::PrivateDirectory directory{"varnix-test"};
};

/// A test with a host runtime whose file-system root is a fresh temporary directory and whose
/// log goes to a capture sink (and not to the console).
class HostTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    Zon::Host::Runtime& Runtime() { return *runtime; }
    Zon::System::Commons::Diagnostics::Logging::CaptureSink& Capture() { return runtime->GetCapture(); }
    /// The machine path of a platform path under the test's root.
    std::filesystem::path MachinePath(const std::string& platformPath) const;
    /// Writes a file at a platform path (such as "/opt/varnix/data/x") under the test's root.
    std::filesystem::path WritePlatformFile(const std::string& platformPath, const std::string& content) const;

    TempDir root;
    std::unique_ptr<Zon::Host::Runtime> runtime;
};

} // namespace VarnixTest
