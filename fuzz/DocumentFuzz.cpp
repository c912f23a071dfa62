// Fuzz target: every input is written as a `.prog.config` file below a temporary host root and
// loaded through `ConfigurableProgramDocument::Load`.
//
// What counts as a finding, besides what the sanitizers report (memory errors, undefined
// behaviour, leaks):
// - any exception out of `Load` other than the document's own `InvalidConfigException` (the file
//   is always there, so not even `NotExistException` may come);
// - a successful load whose result changes when the same file is loaded again into the same
//   document (a second load replaces the first one's content and never adds to it).
//
// Every load releases its libxml2 tree, also one that ends in a `Parameter` without exactly one of
// `value` and `ref`: the leak checker reports any block a load leaves behind.
//
// Set-up is paid once per run, not per input: one host runtime, one file that each input
// overwrites in place (on a memory file system when there is one, so that no input waits for a
// disk), and a quarantine of freed memory small enough to be reused while it is still in the
// processor's caches (see __asan_default_options).

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>


#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramDocument.hpp"
#include "Zon/Host/PrivateDirectory.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"

using VarnixBase::Core::PortSystem::Configuration::ConfigurableProgramDocument;
using VarnixBase::Core::PortSystem::Configuration::ConfigurableProgramSettings;
using Zon::System::Commons::InvalidConfigException;

namespace {

constexpr const char* documentPath = "/opt/varnix/data/Fuzz.prog.config";

/// The host runtime for the whole run: a temporary file-system root, no console log and no
/// captured log (the capture would grow with every warning of every input). The root lies where
/// Zon::Host::PrivateDirectoryBase() says: a memory file system where the machine has one.
class Host {
public:
    Host()
    {
        std::filesystem::create_directories(root / "opt/varnix/data");
        std::filesystem::path file = root / "opt/varnix/data/Fuzz.prog.config";
        descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        if (descriptor < 0) {
            std::perror(file.c_str());
            std::abort();
        }

        Zon::Host::RuntimeOptions options;
        options.fileSystemRoot = root.string();
        options.consoleLevel.reset();
        options.captureLevel.reset();
        runtime.emplace(options);
    }

    ~Host()
    {
        runtime.reset();
        ::close(descriptor);
    }

    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Makes the file hold exactly the input: written over the old content from the start, then
    /// cut to the input's length (never opened anew or emptied first, which costs a file system
    /// far more than the write).
    void Write(const std::uint8_t* data, std::size_t size) const
    {
        std::size_t done = 0;
        while (done < size) {
            ssize_t written = ::pwrite(descriptor, data + done, size - done, static_cast<off_t>(done));
            if (written < 0 && errno == EINTR) {
                continue;
            }
            if (written <= 0) {
                std::perror("cannot write the document");
                std::abort();
            }
            done += static_cast<std::size_t>(written);
        }
        if (::ftruncate(descriptor, static_cast<off_t>(size)) != 0) {
            std::perror("cannot cut the document to its length");
            std::abort();
        }
    }

private:
    Zon::Host::PrivateDirectory directory{"varnix-fuzz"};
    const std::filesystem::path& root = directory.Path();
    int descriptor = -1;
    std::optional<Zon::Host::Runtime> runtime;
};

Host* host = nullptr;

/// Loads the file; true when it loaded, false when it ended in the document's own exception.
/// Anything else is a finding.
bool Load(ConfigurableProgramDocument& document)
{
    try {
        document.Load(documentPath);
        return true;
    } catch (const InvalidConfigException&) {
        return false;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "Load let an unexpected exception out: %s\n", e.what());
        std::abort();
    } catch (...) {
        std::fprintf(stderr, "Load let an unexpected exception out\n");
        std::abort();
    }
}

} // namespace

/// AddressSanitizer's defaults for this target (ASAN_OPTIONS still overrides them). A quarantine of
/// 16 MB instead of 256 MB holds the freed blocks of dozens of inputs, so a use after free within
/// one input is still caught, while the memory of every load is reused instead of being touched
/// for the first time: with the default, page faults cost more than the load itself.
extern "C" const char* __asan_default_options()
{
    return "quarantine_size_mb=16";
}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    host = new Host();
    std::atexit([] {
        delete host;
        host = nullptr;
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    host->Write(data, size);
    ConfigurableProgramDocument document;
    if (!Load(document)) {
        return 0;
    }
    std::vector<ConfigurableProgramSettings> first = document.GetPrograms();
    if (!Load(document) || document.GetPrograms() != first) {
        std::fprintf(stderr, "loading the same file a second time gave another result\n");
        std::abort();
    }
    return 0;
}
