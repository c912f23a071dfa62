#include "Zon/Plc/Commons/Meta/StandardAttribute.hpp"

#include <array>
#include <cstring>
#include <ios>
#include <string>
#include <utility>

namespace Zon::Plc::Commons::Meta {

namespace {

constexpr std::array<std::pair<StandardAttribute, const char*>, 8> Names = {{
    {StandardAttribute::Input, "Input"},
    {StandardAttribute::Output, "Output"},
    {StandardAttribute::Retain, "Retain"},
    {StandardAttribute::ReadOnly, "ReadOnly"},
    {StandardAttribute::Hidden, "Hidden"},
    {StandardAttribute::Server, "Server"},
    {StandardAttribute::Archive, "Archive"},
    {StandardAttribute::Diagnostic, "Diagnostic"},
}};

} // namespace

std::ostream& operator<<(std::ostream& stream, StandardAttribute attributes)
{
    auto bits = static_cast<std::uint64_t>(attributes);
    if (bits == 0) {
        return stream << "None";
    }
    std::string text;
    for (const auto& [flag, name] : Names) {
        auto flagBits = static_cast<std::uint64_t>(flag);
        if ((bits & flagBits) != 0) {
            if (!text.empty()) {
                text += '|';
            }
            text += name;
            bits &= ~flagBits;
        }
    }
    if (bits != 0) {
        char number[24];
        std::snprintf(number, sizeof(number), "0x%llx", static_cast<unsigned long long>(bits));
        if (!text.empty()) {
            text += '|';
        }
        text += number;
    }
    return stream << text;
}

std::istream& operator>>(std::istream& stream, StandardAttribute& attributes)
{
    std::string word;
    if (!(stream >> word)) {
        return stream;
    }
    if (word == "None") {
        attributes = StandardAttribute::None;
        return stream;
    }
    for (const auto& [flag, name] : Names) {
        if (word == name) {
            attributes = flag;
            return stream;
        }
    }
    stream.setstate(std::ios::failbit);
    return stream;
}

} // namespace Zon::Plc::Commons::Meta
