#include "Zon/CommonTypeName.hpp"

#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <typeindex>

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

const String& CommonTypeNameRefOf(const std::type_info& type)
{
    // A type's name never changes, so it is demangled and rewritten once. The map's nodes never
    // move and are never removed, so the references handed out stay valid. Leaked on purpose: the
    // names are asked for by objects destroyed at exit, after static destructors could have run.
    static auto* const names = new std::map<std::type_index, String>();
    static auto* const namesLock = new std::mutex();
    std::lock_guard guard(*namesLock);
    auto found = names->find(std::type_index(type));
    if (found == names->end()) {
        found = names->emplace(std::type_index(type), CommonTypeNameFromMangled(type.name())).first;
    }
    return found->second;
}

String CommonTypeNameOf(const std::type_info& type)
{
    return CommonTypeNameRefOf(type);
}

} // namespace Zon
