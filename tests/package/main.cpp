// A program outside the project, built against the installed package.
#include <cstdio>

#include "VarnixBase/VarnixBase.hpp"
#include "Zon/Zon.hpp"

int main()
{
    Zon::Host::RuntimeOptions options;
    options.consoleLevel.reset();
    Zon::Host::Runtime runtime(options);
    auto version = VarnixBase::Core::Info::GetVersion();
    std::printf("%s %u.%u.%u\n", version.GetName().CStr(), version.GetMajor(), version.GetMinor(), version.GetPatch());
    return version.GetName() == "VarnixBase.Core" ? 0 : 1;
}
