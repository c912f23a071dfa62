// The three places of a program's configuration file, brought up to date when the program is
// constructed: the current project's delivery, the older delivery place, the library's working
// copy. Which file was written, and in which order, is watched through the kernel's file
// notifications on the two destination directories.
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "Zon/System/Commons/Io/File.hpp"
#include "Zon/System/Commons/Io/FileSystemInfo.hpp"

#include "ProgramHost.hpp"

using namespace VarnixBase::Core::PortSystem;
using Zon::DateTime;
using Zon::System::Commons::Io::File;
using Zon::System::Commons::Io::FileSystemInfo;

namespace {

/// The files written completely in watched directories, in order, as "directory/file".
class WriteWatch {
public:
    WriteWatch() : descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}
    ~WriteWatch()
    {
        if (descriptor >= 0) {
            ::close(descriptor);
        }
    }
    WriteWatch(const WriteWatch&) = delete;
    WriteWatch& operator=(const WriteWatch&) = delete;

    void Watch(const std::filesystem::path& directory, const std::string& label)
    {
        std::filesystem::create_directories(directory);
        int watch = ::inotify_add_watch(descriptor, directory.c_str(), IN_CLOSE_WRITE);
        ASSERT_GE(watch, 0);
        labels[watch] = label;
    }

    std::vector<std::string> Written()
    {
        alignas(inotify_event) char buffer[8192];
        for (;;) {
            ssize_t length = ::read(descriptor, buffer, sizeof buffer);
            if (length <= 0) {
                break;
            }
            for (char* at = buffer; at < buffer + length;) {
                auto* event = reinterpret_cast<inotify_event*>(at);
                written.push_back(labels[event->wd] + "/" + (event->len > 0 ? event->name : ""));
                at += sizeof(inotify_event) + event->len;
            }
        }
        return written;
    }

private:
    int descriptor;
    std::map<int, std::string> labels;
    std::vector<std::string> written;
};

class UpdateConfiguration : public VarnixTest::ProgramHostTest {
protected:
    static std::string Document(const std::string& portName)
    {
        return R"(<Configuration><Program type="Tank"><Ports><Port name=")" + portName +
               R"(" type="int32"/></Ports></Program></Configuration>)";
    }

    static std::string ProjectFile() { return std::string(ProjectDirectory) + "/Tank.prog.config"; }
    static std::string LegacyFile() { return std::string(LegacyDirectory) + "/Tank.prog.config"; }
    static std::string LocalFile() { return std::string(DataDirectory) + "/Tank.prog.config"; }

    /// Writes the file at `path` with a document whose one port is `portName`, and sets its time.
    void Put(const std::string& path, const std::string& portName, DateTime time)
    {
        WritePlatformFile(path, Document(portName));
        FileSystemInfo::SetLastWriteTime(path, time);
    }

    std::string Content(const std::string& path)
    {
        std::ifstream stream(MachinePath(path));
        std::stringstream content;
        content << stream.rdbuf();
        return content.str();
    }

    void WatchDestinations()
    {
        watch.Watch(MachinePath(LegacyDirectory), "legacy");
        watch.Watch(MachinePath(DataDirectory), "local");
    }

    static DateTime At(std::int64_t seconds) { return DateTime::FromUnixTimeMicroseconds(seconds * 1'000'000); }

    WriteWatch watch;
};

} // namespace

TEST_F(UpdateConfiguration, ProjectAndLegacyFilesWithTheSameTimeAreNotCopiedBetween)
{
    Put(ProjectFile(), "project", At(1'500'000'000));
    Put(LegacyFile(), "legacy", At(1'500'000'000));
    WatchDestinations();
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_EQ(Content(LegacyFile()), Document("legacy"));
    // The working copy, missing, comes from the project file; the legacy file is then older than
    // it and is not copied.
    EXPECT_EQ(watch.Written(), std::vector<std::string>{"local/Tank.prog.config"});
    EXPECT_EQ(Content(LocalFile()), Document("project"));
    // The builder reads the legacy file.
    EXPECT_TRUE(program.GetPortProvider().HasPort("legacy"));
}

TEST_F(UpdateConfiguration, AProjectFileWithoutLegacyFileLeavesTheLegacyFileAbsentAndWritesTheWorkingCopy)
{
    Put(ProjectFile(), "project", At(1'500'000'000));
    WatchDestinations();
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_FALSE(File::Exists(LegacyFile()));
    EXPECT_EQ(watch.Written(), std::vector<std::string>{"local/Tank.prog.config"});
    EXPECT_EQ(Content(LocalFile()), Document("project"));
    EXPECT_TRUE(program.GetPortProvider().HasPort("project"));
}

TEST_F(UpdateConfiguration, AProjectFileNewerThanBothOverwritesLegacyThenLocalAndTheFreshFilesAreComparedByTheirNewTimes)
{
    // Before the update the legacy file is newer than the working copy; after it, both are fresh
    // copies and the working copy is the later one, so no third copy follows.
    Put(ProjectFile(), "project", At(1'600'000'000));
    Put(LegacyFile(), "legacy", At(1'500'000'000));
    Put(LocalFile(), "local", At(1'400'000'000));
    WatchDestinations();
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_EQ(watch.Written(), (std::vector<std::string>{"legacy/Tank.prog.config", "local/Tank.prog.config"}));
    EXPECT_EQ(Content(LegacyFile()), Document("project"));
    EXPECT_EQ(Content(LocalFile()), Document("project"));
    EXPECT_FALSE((FileSystemInfo::GetLastWriteTime(LegacyFile()).GetTicks() >
                  FileSystemInfo::GetLastWriteTime(LocalFile()).GetTicks()));
    EXPECT_TRUE(program.GetPortProvider().HasPort("project"));
}

TEST_F(UpdateConfiguration, OnlyAWorkingCopyCopiesNothingAndLeavesItUntouched)
{
    Put(LocalFile(), "local", At(1'400'000'000));
    WatchDestinations();
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_TRUE(watch.Written().empty());
    EXPECT_EQ(FileSystemInfo::GetLastWriteTime(LocalFile()).GetValue(), At(1'400'000'000).GetValue());
    EXPECT_EQ(Content(LocalFile()), Document("local"));
    EXPECT_FALSE(File::Exists(ProjectFile()));
    EXPECT_FALSE(File::Exists(LegacyFile()));
    EXPECT_TRUE(program.GetPortProvider().HasPort("local"));
}

TEST_F(UpdateConfiguration, AWorkingCopyNewerThanBothDeliveryFilesIsLeftAsItIsAlsoWithOtherContent)
{
    Put(ProjectFile(), "project", At(1'400'000'000));
    Put(LegacyFile(), "legacy", At(1'500'000'000));
    Put(LocalFile(), "local", At(1'600'000'000));
    WatchDestinations();
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_TRUE(watch.Written().empty());
    EXPECT_EQ(Content(LocalFile()), Document("local"));
    EXPECT_EQ(Content(LegacyFile()), Document("legacy"));
}

TEST_F(UpdateConfiguration, AWorkingCopyNewerThanTheProjectFileWithoutLegacyFileIsLeftAsItIs)
{
    Put(ProjectFile(), "project", At(1'400'000'000));
    Put(LocalFile(), "local", At(1'600'000'000));
    WatchDestinations();
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_TRUE(watch.Written().empty());
    EXPECT_TRUE(program.GetPortProvider().HasPort("local"));
}

TEST_F(UpdateConfiguration, TimesThatDifferOnlyInTheTopTwoBitsCountAsEqual)
{
    const std::int64_t ticks = At(1'500'000'000).GetTicks();
    // UTC against unspecified: the project file's raw value is the greater one.
    Put(ProjectFile(), "project", DateTime::FromTicks(ticks, DateTime::Kind::Utc));
    Put(LegacyFile(), "legacy", DateTime::FromTicks(ticks, DateTime::Kind::Unspecified));
    Put(LocalFile(), "local", DateTime::FromTicks(ticks, DateTime::Kind::Unspecified));
    ASSERT_GT(FileSystemInfo::GetLastWriteTime(ProjectFile()).GetValue(),
              FileSystemInfo::GetLastWriteTime(LegacyFile()).GetValue());
    WatchDestinations();
    {
        ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    }
    EXPECT_TRUE(watch.Written().empty());

    // Local against UTC: the project file's raw value is the greater one unsigned.
    Put(ProjectFile(), "project", DateTime::FromTicks(ticks, DateTime::Kind::Local));
    Put(LegacyFile(), "legacy", DateTime::FromTicks(ticks, DateTime::Kind::Utc));
    Put(LocalFile(), "local", DateTime::FromTicks(ticks, DateTime::Kind::Utc));
    ASSERT_GT(FileSystemInfo::GetLastWriteTime(ProjectFile()).GetValue(),
              FileSystemInfo::GetLastWriteTime(LegacyFile()).GetValue());
    std::size_t writesSoFar = watch.Written().size();
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_EQ(watch.Written().size(), writesSoFar);
    EXPECT_EQ(Content(LegacyFile()), Document("legacy"));
    EXPECT_EQ(Content(LocalFile()), Document("local"));
}

TEST_F(UpdateConfiguration, ALegacyFileNewerThanTheWorkingCopyReplacesIt)
{
    Put(LegacyFile(), "legacy", At(1'500'000'000));
    Put(LocalFile(), "local", At(1'400'000'000));
    WatchDestinations();
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_EQ(watch.Written(), std::vector<std::string>{"local/Tank.prog.config"});
    EXPECT_EQ(Content(LocalFile()), Document("legacy"));
}

TEST_F(UpdateConfiguration, ALegacyFileWithoutWorkingCopyIsCopiedThere)
{
    Put(LegacyFile(), "legacy", At(1'500'000'000));
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_EQ(Content(LocalFile()), Document("legacy"));
}

TEST_F(UpdateConfiguration, AProjectFileOlderThanTheLegacyFileDoesNotReplaceIt)
{
    Put(ProjectFile(), "project", At(1'400'000'000));
    Put(LegacyFile(), "legacy", At(1'500'000'000));
    WatchDestinations();
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_EQ(Content(LegacyFile()), Document("legacy"));
    // The missing working copy comes from the project file first, and the legacy file, older
    // than that fresh copy, is not copied after it.
    EXPECT_EQ(watch.Written(), std::vector<std::string>{"local/Tank.prog.config"});
    EXPECT_EQ(Content(LocalFile()), Document("project"));
}

TEST_F(UpdateConfiguration, AProjectFileNewerThanTheWorkingCopyWithoutLegacyFileReplacesIt)
{
    Put(ProjectFile(), "project", At(1'500'000'000));
    Put(LocalFile(), "local", At(1'400'000'000));
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_EQ(Content(LocalFile()), Document("project"));
    EXPECT_FALSE(File::Exists(LegacyFile()));
    EXPECT_TRUE(program.GetPortProvider().HasPort("project"));
}

TEST_F(UpdateConfiguration, WithNoFileAnywhereItSucceedsSilentlyAndTheBuilderReportsTheMissingDocument)
{
    WatchDestinations();
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_TRUE(watch.Written().empty());
    EXPECT_FALSE(File::Exists(LocalFile()));
    EXPECT_EQ(Errors().size(), 1u);
    Capture().Clear();
    program.UpdateConfiguration();
    EXPECT_EQ(Capture().Size(), 0u);
}

TEST_F(UpdateConfiguration, TheWorkingCopyIsNeverCopiedBack)
{
    Put(ProjectFile(), "project", At(1'400'000'000));
    Put(LegacyFile(), "legacy", At(1'400'000'000));
    Put(LocalFile(), "local", At(1'600'000'000));
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    program.UpdateConfiguration();
    EXPECT_EQ(Content(ProjectFile()), Document("project"));
    EXPECT_EQ(Content(LegacyFile()), Document("legacy"));
}
