#include "Zon/System/Commons/Io/Path.hpp"

#include <string>

namespace Zon::System::Commons::Io {

String Path::Combine(const String& a, const String& b)
{
    if (a.IsEmpty()) {
        return b;
    }
    if (b.IsEmpty()) {
        return a;
    }
    std::string left = a.ToStdString();
    std::string right = b.ToStdString();
    while (!left.empty() && left.back() == '/') {
        left.pop_back();
    }
    std::size_t start = right.find_first_not_of('/');
    right = start == std::string::npos ? std::string() : right.substr(start);
    return String(left + "/" + right);
}

} // namespace Zon::System::Commons::Io
