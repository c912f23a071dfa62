#include "Zon/CommonTypeName.hpp"

#include <cstdlib>
#include <memory>
#include <string>

#include <boost/algorithm/string/replace.hpp>
#include <cxxabi.h>

#include "Zon/Exception.hpp"

namespace Zon {

String CommonTypeNameFromMangled(const char* mangledName)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> demangled(
        abi::__cxa_demangle(mangledName, nullptr, nullptr, &status), std::free);
    if (demangled == nullptr || demangled.get()[0] == '\0') {
        throw Exception("Demangling of type name '{0}' failed.", mangledName != nullptr ? mangledName : "");
    }
    std::string name(demangled.get());
    boost::algorithm::replace_all(name, "class ", "");
    boost::algorithm::replace_all(name, "struct ", "");
    boost::algorithm::replace_all(name, "enum ", "");
    boost::algorithm::replace_all(name, "::", ".");
    return String(std::move(name));
}

String CommonTypeNameOf(const std::type_info& type)
{
    return CommonTypeNameFromMangled(type.name());
}

} // namespace Zon
