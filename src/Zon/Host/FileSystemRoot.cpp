#include "Zon/Host/FileSystemRoot.hpp"

#include <mutex>

namespace Zon::Host {

namespace {
std::mutex rootMutex;
std::string& RootValue()
{
    static std::string root = "/";
    return root;
}
} // namespace

void FileSystemRoot::Set(const std::string& root)
{
    std::lock_guard guard(rootMutex);
    std::string value = root.empty() ? std::string("/") : root;
    while (value.size() > 1 && value.back() == '/') {
        value.pop_back();
    }
    RootValue() = value;
}

std::string FileSystemRoot::Get()
{
    std::lock_guard guard(rootMutex);
    return RootValue();
}

std::string FileSystemRoot::Map(const String& path)
{
    const std::string& text = path.ToStdString();
    if (text.empty() || text.front() != '/') {
        return text;
    }
    std::string root = Get();
    if (root == "/") {
        return text;
    }
    return root + text;
}

} // namespace Zon::Host
