#include "support/HostFixture.hpp"

#include <fstream>

namespace VarnixTest {

std::filesystem::path TempDir::WriteFile(const std::string& relative, const std::string& content) const
{
    std::filesystem::path file = Path() / relative;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << content;
    return file;
}

void HostTest::SetUp()
{
    Zon::Host::RuntimeOptions options;
    options.fileSystemRoot = root.Path().string();
    options.consoleLevel.reset();
    runtime = std::make_unique<Zon::Host::Runtime>(options);
}

void HostTest::TearDown()
{
    runtime.reset();
}

std::filesystem::path HostTest::MachinePath(const std::string& platformPath) const
{
    std::string relative = platformPath;
    while (!relative.empty() && relative.front() == '/') {
        relative.erase(relative.begin());
    }
    return root.Path() / relative;
}

std::filesystem::path HostTest::WritePlatformFile(const std::string& platformPath, const std::string& content) const
{
    std::string relative = platformPath;
    while (!relative.empty() && relative.front() == '/') {
        relative.erase(relative.begin());
    }
    return root.WriteFile(relative, content);
}

} // namespace VarnixTest
