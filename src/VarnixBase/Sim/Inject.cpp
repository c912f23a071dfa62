#include "VarnixBase/Sim/Inject.hpp"

#include <cstring>
#include <limits>

#include <fmt/format.h>

#include "VarnixBase/Sim/Probe.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "VarnixBase/Commons/Iec61131/Convert.hpp"
#include "VarnixBase/Core/PortSystem/GetCommonTypeName.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/Plc/Commons/Gds/StaticStringBase.hpp"

namespace VarnixBase::Sim {

using VarnixBase::Commons::Gds::StaticStringAdapter;
using VarnixBase::Commons::Iec61131::Convert;

namespace {

[[noreturn]] void Refuse(const std::string& origin, const std::string& literal, const std::string& type)
{
    throw UsageError(fmt::format("{}: '{}' is not a value of type {}", origin, literal, type));
}

template <class T>
void WriteInteger(void* address, const std::string& literal, const std::string& origin, const std::string& type)
{
    T value{};
    if constexpr (std::is_signed_v<T>) {
        long parsed = 0;
        if (!Convert::TryParse(Zon::String(literal), parsed) || parsed < std::numeric_limits<T>::min() ||
            parsed > std::numeric_limits<T>::max()) {
            Refuse(origin, literal, type);
        }
        value = static_cast<T>(parsed);
    } else {
        unsigned long parsed = 0;
        if (!Convert::TryParse(Zon::String(literal), parsed) || parsed > std::numeric_limits<T>::max()) {
            Refuse(origin, literal, type);
        }
        value = static_cast<T>(parsed);
    }
    std::memcpy(address, &value, sizeof(T));
}

template <class T>
void WriteReal(void* address, const std::string& literal, const std::string& origin, const std::string& type)
{
    double parsed = 0;
    long whole = 0;
    if (Convert::TryParse(Zon::String(literal), parsed)) {
    } else if (Convert::TryParse(Zon::String(literal), whole)) {
        parsed = static_cast<double>(whole);
    } else {
        Refuse(origin, literal, type);
    }
    T value = static_cast<T>(parsed);
    std::memcpy(address, &value, sizeof(T));
}

} // namespace

void WriteLiteral(const Zon::Plc::Commons::Meta::DataInfo& variable, const std::string& literal,
                  const std::string& origin)
{
    if (variable.address == nullptr) {
        throw UsageError(fmt::format("{}: the variable has no memory", origin));
    }
    std::string type = VarnixBase::Core::PortSystem::GetCommonTypeName(variable).ToStdString();
    void* address = variable.address;
    if (type == "bool") {
        bool value = false;
        if (!Convert::TryParse(Zon::String(literal), value)) {
            Refuse(origin, literal, type);
        }
        std::memcpy(address, &value, sizeof(value));
    } else if (type == "signed char") {
        WriteInteger<signed char>(address, literal, origin, type);
    } else if (type == "unsigned char") {
        WriteInteger<unsigned char>(address, literal, origin, type);
    } else if (type == "short") {
        WriteInteger<short>(address, literal, origin, type);
    } else if (type == "unsigned short") {
        WriteInteger<unsigned short>(address, literal, origin, type);
    } else if (type == "int") {
        WriteInteger<int>(address, literal, origin, type);
    } else if (type == "unsigned int") {
        WriteInteger<unsigned int>(address, literal, origin, type);
    } else if (type == "long") {
        WriteInteger<long>(address, literal, origin, type);
    } else if (type == "unsigned long") {
        WriteInteger<unsigned long>(address, literal, origin, type);
    } else if (type == "float") {
        WriteReal<float>(address, literal, origin, type);
    } else if (type == "double") {
        WriteReal<double>(address, literal, origin, type);
    } else if (type == Zon::CommonTypeName<StaticStringAdapter<char>>().ToStdString()) {
        auto* text = static_cast<StaticStringAdapter<char>*>(address);
        auto length = Zon::Plc::Commons::Gds::StaticStringBase::AssignStaticString(
            text->GetData(), text->GetCapacity(), Zon::String(literal));
        std::uint16_t stored = static_cast<std::uint16_t>(length);
        std::memcpy(static_cast<char*>(address) + sizeof(std::uint16_t), &stored, sizeof(stored));
    } else if (type == Zon::CommonTypeName<StaticStringAdapter<char16_t>>().ToStdString()) {
        auto* text = static_cast<StaticStringAdapter<char16_t>*>(address);
        std::u16string units = Utf8ToUtf16(literal);
        std::size_t capacity = text->GetCapacity();
        std::size_t count = std::min(units.size(), capacity);
        char16_t* data = text->GetData16();
        for (std::size_t i = 0; i <= capacity; ++i) {
            data[i] = i < count ? units[i] : u'\0';
        }
        std::uint16_t stored = static_cast<std::uint16_t>(count);
        std::memcpy(static_cast<char*>(address) + sizeof(std::uint16_t), &stored, sizeof(stored));
    } else {
        throw UsageError(fmt::format("{}: the simulator cannot write a variable of type {}", origin,
                                     type.empty() ? std::string("(unknown)") : type));
    }
}

} // namespace VarnixBase::Sim
