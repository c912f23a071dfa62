#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "Zon/System/Commons/Io/File.hpp"
#include "Zon/System/Commons/Io/FileSystemInfo.hpp"
#include "Zon/System/Commons/Io/NotExistException.hpp"
#include "Zon/System/Commons/Io/Path.hpp"
#include "support/HostFixture.hpp"

using namespace Zon::System::Commons::Io;

namespace {
std::string ReadAll(const std::filesystem::path& path)
{
    std::ifstream stream(path);
    std::stringstream content;
    content << stream.rdbuf();
    return content.str();
}
} // namespace

TEST(Path, CombineJoinsWithOneSeparator)
{
    EXPECT_EQ(Path::Combine("/opt/varnix/apps", "60002172000495"), "/opt/varnix/apps/60002172000495");
    EXPECT_EQ(Path::Combine("/opt/varnix/data/", "/Core/PortSystem"), "/opt/varnix/data/Core/PortSystem");
    EXPECT_EQ(Path::Combine("a//", "b"), "a/b");
    EXPECT_EQ(Path::Combine("", "b"), "b");
    EXPECT_EQ(Path::Combine("a", ""), "a");
}

class FileUnderRoot : public VarnixTest::HostTest {};

TEST_F(FileUnderRoot, AbsolutePathsResolveUnderTheRoot)
{
    WritePlatformFile("/opt/varnix/data/x.txt", "hello");
    EXPECT_TRUE(File::Exists("/opt/varnix/data/x.txt"));
    EXPECT_FALSE(File::Exists("/opt/varnix/data/missing.txt"));
    EXPECT_FALSE(File::Exists("/opt/varnix/data")); // a directory is no file
}

TEST_F(FileUnderRoot, CopyWritesTheDestinationAndCreatesItsDirectory)
{
    WritePlatformFile("/src/a.txt", "content");
    EXPECT_TRUE(File::Copy("/src/a.txt", "/deep/new/dir/b.txt", true, true));
    EXPECT_EQ(ReadAll(MachinePath("/deep/new/dir/b.txt")), "content");
}

TEST_F(FileUnderRoot, CopyOverwritesOnlyWhenAsked)
{
    WritePlatformFile("/a.txt", "new");
    WritePlatformFile("/b.txt", "old");
    EXPECT_FALSE(File::Copy("/a.txt", "/b.txt", false, false));
    EXPECT_EQ(ReadAll(MachinePath("/b.txt")), "old");
    EXPECT_TRUE(File::Copy("/a.txt", "/b.txt", true, false));
    EXPECT_EQ(ReadAll(MachinePath("/b.txt")), "new");
}

TEST_F(FileUnderRoot, CopyOfAMissingSourceThrows)
{
    EXPECT_THROW(File::Copy("/none.txt", "/b.txt", true, true), NotExistException);
}

TEST_F(FileUnderRoot, ModificationTimesReadAndSet)
{
    WritePlatformFile("/t.txt", "x");
    auto time = Zon::DateTime::FromUnixTimeMicroseconds(1'600'000'000'250'000);
    FileSystemInfo::SetLastWriteTime("/t.txt", time);
    EXPECT_EQ(FileSystemInfo::GetLastWriteTime("/t.txt").ToUnixTimeMicroseconds(), time.ToUnixTimeMicroseconds());
    EXPECT_EQ(FileSystemInfo::GetLastWriteTime("/t.txt").GetKind(), Zon::DateTime::Kind::Utc);
    EXPECT_THROW(FileSystemInfo::GetLastWriteTime("/none.txt"), NotExistException);
}

TEST_F(FileUnderRoot, ATimeSetWithAnotherKindReadsBackWithThatKindAndTheSameTicks)
{
    WritePlatformFile("/k.txt", "x");
    auto utc = Zon::DateTime::FromUnixTimeMicroseconds(1'600'000'000'250'000);
    auto local = Zon::DateTime::FromTicks(utc.GetTicks(), Zon::DateTime::Kind::Local);
    FileSystemInfo::SetLastWriteTime("/k.txt", local);
    Zon::DateTime read = FileSystemInfo::GetLastWriteTime("/k.txt");
    EXPECT_EQ(read.GetValue(), local.GetValue());
    EXPECT_NE(read.GetValue(), utc.GetValue());
    EXPECT_EQ(read.GetValue() & Zon::DateTime::TicksMask, utc.GetValue() & Zon::DateTime::TicksMask);

    FileSystemInfo::SetLastWriteTime("/k.txt", utc);
    EXPECT_EQ(FileSystemInfo::GetLastWriteTime("/k.txt").GetValue(), utc.GetValue());
}

TEST_F(FileUnderRoot, AFileWrittenAfterItsTimeWasSetWithAnotherKindReadsAsUtcAgain)
{
    WritePlatformFile("/k.txt", "x");
    auto local = Zon::DateTime::FromUnixTimeMicroseconds(1'600'000'000'000'000, Zon::DateTime::Kind::Local);
    FileSystemInfo::SetLastWriteTime("/k.txt", local);
    ASSERT_EQ(FileSystemInfo::GetLastWriteTime("/k.txt").GetKind(), Zon::DateTime::Kind::Local);
    WritePlatformFile("/a.txt", "y");
    ASSERT_TRUE(File::Copy("/a.txt", "/k.txt", true, true));
    EXPECT_EQ(FileSystemInfo::GetLastWriteTime("/k.txt").GetKind(), Zon::DateTime::Kind::Utc);
}
