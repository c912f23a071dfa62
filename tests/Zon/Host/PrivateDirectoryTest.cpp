#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "Zon/Host/PrivateDirectory.hpp"

namespace {

namespace fs = std::filesystem;

/// Sets (or, with no value, removes) environment variables for one test and puts them back after.
class Environment {
public:
    ~Environment()
    {
        for (auto it = saved.rbegin(); it != saved.rend(); ++it) {
            if (it->second) {
                ::setenv(it->first.c_str(), it->second->c_str(), 1);
            } else {
                ::unsetenv(it->first.c_str());
            }
        }
    }
    void Set(const std::string& name, const std::optional<std::string>& value)
    {
        const char* old = std::getenv(name.c_str());
        saved.emplace_back(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
    /// No temporary directory named by the environment.
    void ClearTemporary()
    {
        for (const char* name : {"TMPDIR", "TMP", "TEMP", "TEMPDIR"}) {
            Set(name, std::nullopt);
        }
    }

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> saved;
};

/// A directory made for the test below the system's temporary directory.
fs::path MakeDirectory(const std::string& name)
{
    fs::path path = fs::temp_directory_path() / (name + "-" + std::to_string(::getpid()));
    fs::create_directories(path);
    return path;
}

bool WritableDirectory(const char* path)
{
    std::error_code error;
    return fs::is_directory(path, error) && ::access(path, W_OK | X_OK) == 0;
}

TEST(PrivateDirectoryTest, IsMadeUniqueAndPrivateAndGoesWithEverythingInIt)
{
    fs::path kept;
    {
        Zon::Host::PrivateDirectory first("varnix-private-test");
        Zon::Host::PrivateDirectory second("varnix-private-test");
        kept = first.Path();
        EXPECT_NE(first.Path(), second.Path());
        EXPECT_TRUE(fs::is_directory(first.Path()));
        EXPECT_EQ(first.Path().parent_path(), Zon::Host::PrivateDirectoryBase());
        const std::string name = first.Path().filename().string();
        EXPECT_EQ(name.rfind("varnix-private-test-", 0), 0u) << name;
        EXPECT_EQ(name.size(), std::string("varnix-private-test-XXXXXX").size()) << name;
        struct stat info {};
        ASSERT_EQ(::stat(first.Path().c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, 0700u);

        fs::create_directories(first.Path() / "opt/varnix/data");
        std::ofstream(first.Path() / "opt/varnix/data/A.prog.config") << "<Configuration/>";
    }
    EXPECT_FALSE(fs::exists(kept));
}

TEST(PrivateDirectoryTest, ATemporaryDirectoryNamedByTheEnvironmentIsTheUsersChoice)
{
    const fs::path chosen = MakeDirectory("varnix-chosen");
    Environment environment;
    environment.ClearTemporary();
    environment.Set("XDG_RUNTIME_DIR", std::nullopt);
    for (const char* name : {"TMPDIR", "TMP", "TEMP", "TEMPDIR"}) {
        environment.Set(name, chosen.string());
        EXPECT_EQ(Zon::Host::PrivateDirectoryBase(), chosen) << name;
        Zon::Host::PrivateDirectory directory("varnix-private-test");
        EXPECT_EQ(directory.Path().parent_path(), chosen) << name;
        environment.Set(name, std::nullopt);
    }
    fs::remove_all(chosen);
}

TEST(PrivateDirectoryTest, WithoutOneTheUsersRuntimeDirectoryComesFirst)
{
    const fs::path runtime = MakeDirectory("varnix-runtime");
    Environment environment;
    environment.ClearTemporary();
    environment.Set("XDG_RUNTIME_DIR", runtime.string());
    EXPECT_EQ(Zon::Host::PrivateDirectoryBase(), runtime);
    fs::remove_all(runtime);
}

TEST(PrivateDirectoryTest, ARuntimeDirectoryThatIsMissingOrRelativeIsPassedOver)
{
    Environment environment;
    environment.ClearTemporary();
    const fs::path expected = WritableDirectory("/dev/shm") ? fs::path("/dev/shm") : fs::path("/tmp");
    for (const char* runtime : {"/nonexistent/varnix-runtime", "relative/runtime", ""}) {
        environment.Set("XDG_RUNTIME_DIR", std::string(runtime));
        EXPECT_EQ(Zon::Host::PrivateDirectoryBase(), expected) << runtime;
    }
    environment.Set("XDG_RUNTIME_DIR", std::nullopt);
    EXPECT_EQ(Zon::Host::PrivateDirectoryBase(), expected);
}

TEST(PrivateDirectoryTest, ABaseThatIsNotThereIsReportedAsItStands)
{
    Environment environment;
    environment.ClearTemporary();
    environment.Set("TMPDIR", std::string("/nonexistent/varnix-tmp"));
    EXPECT_EQ(Zon::Host::PrivateDirectoryBase(), fs::path("/nonexistent/varnix-tmp"));
    try {
        Zon::Host::PrivateDirectory directory("varnix-private-test");
        ADD_FAILURE() << "made " << directory.Path();
    } catch (const std::system_error& error) {
        EXPECT_EQ(std::string(error.what()),
                  "cannot create a directory in /nonexistent/varnix-tmp: No such file or directory");
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
}

TEST(PrivateDirectoryTest, ABaseThatCannotTakeADirectorySaysWhereItFailed)
{
    Environment environment;
    environment.ClearTemporary();
    // A regular file as the temporary directory: no directory can be made in it.
    const fs::path chosen = MakeDirectory("varnix-not-a-base");
    const fs::path file = chosen / "file";
    std::ofstream(file) << "x";
    environment.Set("TMPDIR", file.string());
    try {
        Zon::Host::PrivateDirectory directory("varnix-private-test");
        ADD_FAILURE() << "made " << directory.Path();
    } catch (const std::system_error& error) {
        EXPECT_EQ(std::string(error.what()), "cannot create a directory in " + file.string() + ": Not a directory");
    }
    fs::remove_all(chosen);
}

} // namespace
