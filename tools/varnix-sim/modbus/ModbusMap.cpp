#include "ModbusMap.hpp"

#include <algorithm>
#include <cstring>
#include <limits>

#include <fmt/format.h>

#include "VarnixBase/Sim/Simulation.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Core/PortSystem/GetCommonTypeName.hpp"
#include "Zon/CommonTypeName.hpp"

namespace VarnixSim::Modbus {

using VarnixBase::Commons::Gds::StaticStringAdapter;

namespace {

constexpr std::size_t TableAddresses = 65536;

template <class T>
T Load(const void* memory)
{
    T value;
    std::memcpy(&value, memory, sizeof(T));
    return value;
}

/// Spreads the `words` 16-bit words of `bits` (most significant first) over registers in `order`.
void SpreadWords(std::uint64_t bits, std::size_t words, WordOrder order, std::uint16_t* registers)
{
    for (std::size_t i = 0; i < words; ++i) {
        auto word = static_cast<std::uint16_t>(bits >> (16 * (words - 1 - i)));
        registers[order == WordOrder::Big ? i : words - 1 - i] = word;
    }
}

std::uint64_t GatherWords(const std::uint16_t* registers, std::size_t words, WordOrder order)
{
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < words; ++i) {
        bits = (bits << 16) | registers[order == WordOrder::Big ? i : words - 1 - i];
    }
    return bits;
}

bool TypeOf(const std::string& commonName, ItemType& type)
{
    static const std::pair<const char*, ItemType> names[] = {
        {"bool", ItemType::Bool},        {"signed char", ItemType::Int8},     {"unsigned char", ItemType::UInt8},
        {"short", ItemType::Int16},      {"unsigned short", ItemType::UInt16}, {"int", ItemType::Int32},
        {"unsigned int", ItemType::UInt32}, {"long", ItemType::Int64},      {"unsigned long", ItemType::UInt64},
        {"float", ItemType::Float32},    {"double", ItemType::Float64},
    };
    for (const auto& [name, itemType] : names) {
        if (commonName == name) {
            type = itemType;
            return true;
        }
    }
    if (commonName == Zon::CommonTypeName<StaticStringAdapter<char>>().ToStdString()) {
        type = ItemType::String;
        return true;
    }
    if (commonName == Zon::CommonTypeName<StaticStringAdapter<char16_t>>().ToStdString()) {
        type = ItemType::WString;
        return true;
    }
    return false;
}

std::string Csv(const std::string& field)
{
    if (field.find_first_of(",\"\n") == std::string::npos) {
        return field;
    }
    std::string quoted = "\"";
    for (char c : field) {
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    }
    return quoted + "\"";
}

} // namespace

const char* TableName(Table table)
{
    switch (table) {
    case Table::Coil:
        return "coil";
    case Table::DiscreteInput:
        return "discrete input";
    case Table::InputRegister:
        return "input register";
    case Table::HoldingRegister:
        return "holding register";
    }
    return "?";
}

std::string TypeName(ItemType type, std::uint16_t capacity)
{
    static const char* const names[] = {"bool",  "int8",   "uint8", "int16",   "uint16",  "int32",  "uint32",
                                        "int64", "uint64", "float32", "float64", "string", "wstring"};
    std::string name = names[static_cast<std::size_t>(type)];
    return type == ItemType::String || type == ItemType::WString ? fmt::format("{}({})", name, capacity) : name;
}

std::uint16_t Width(ItemType type, std::uint16_t capacity)
{
    switch (type) {
    case ItemType::Int32:
    case ItemType::UInt32:
    case ItemType::Float32:
        return 2;
    case ItemType::Int64:
    case ItemType::UInt64:
    case ItemType::Float64:
        return 4;
    case ItemType::String:
        return static_cast<std::uint16_t>((capacity + 1) / 2);
    case ItemType::WString:
        return capacity;
    default:
        return 1;
    }
}

std::size_t ValueSize(ItemType type)
{
    switch (type) {
    case ItemType::Bool:
    case ItemType::Int8:
    case ItemType::UInt8:
        return 1;
    case ItemType::Int16:
    case ItemType::UInt16:
        return 2;
    case ItemType::Int32:
    case ItemType::UInt32:
    case ItemType::Float32:
        return 4;
    case ItemType::Int64:
    case ItemType::UInt64:
    case ItemType::Float64:
        return 8;
    default:
        return 0;
    }
}

bool TryParseWordOrder(const std::string& text, WordOrder& order)
{
    if (text == "big" || text == "little") {
        order = text == "big" ? WordOrder::Big : WordOrder::Little;
        return true;
    }
    return false;
}

bool TryParseMapFormat(const std::string& text, MapFormat& format)
{
    if (text == "table" || text == "csv") {
        format = text == "table" ? MapFormat::Table : MapFormat::Csv;
        return true;
    }
    return false;
}

void EncodeRegisters(ItemType type, std::uint16_t capacity, const void* memory, WordOrder order,
                     std::uint16_t* registers)
{
    switch (type) {
    case ItemType::Bool:
        registers[0] = Load<bool>(memory) ? 1 : 0;
        return;
    case ItemType::Int8:
        registers[0] = static_cast<std::uint16_t>(static_cast<std::int16_t>(Load<std::int8_t>(memory)));
        return;
    case ItemType::UInt8:
        registers[0] = Load<std::uint8_t>(memory);
        return;
    case ItemType::Int16:
    case ItemType::UInt16:
        registers[0] = Load<std::uint16_t>(memory);
        return;
    case ItemType::Int32:
    case ItemType::UInt32:
    case ItemType::Float32:
        SpreadWords(Load<std::uint32_t>(memory), 2, order, registers);
        return;
    case ItemType::Int64:
    case ItemType::UInt64:
    case ItemType::Float64:
        SpreadWords(Load<std::uint64_t>(memory), 4, order, registers);
        return;
    case ItemType::String:
    case ItemType::WString: {
        // The units in use, never more than the capacity the map was built with, whatever the
        // length field says; the rest of the registers are zero.
        const auto* text = static_cast<const unsigned char*>(memory);
        std::uint16_t length = std::min(Load<std::uint16_t>(text + sizeof(std::uint16_t)), capacity);
        const unsigned char* units = text + StaticStringAdapter<char>::DataOffset;
        std::uint16_t width = Width(type, capacity);
        std::fill(registers, registers + width, std::uint16_t{0});
        if (type == ItemType::String) {
            for (std::uint16_t i = 0; i < length; ++i) {
                registers[i / 2] |= static_cast<std::uint16_t>(units[i] << ((i % 2) == 0 ? 8 : 0));
            }
        } else {
            for (std::uint16_t i = 0; i < length; ++i) {
                registers[i] = Load<std::uint16_t>(units + 2 * i);
            }
        }
        return;
    }
    }
}

bool DecodeRegisters(ItemType type, WordOrder order, const std::uint16_t* registers, void* value)
{
    auto store = [value](auto typed) { std::memcpy(value, &typed, sizeof(typed)); };
    switch (type) {
    case ItemType::Bool:
        if (registers[0] > 1) {
            return false;
        }
        store(registers[0] == 1);
        return true;
    case ItemType::Int8: {
        auto wide = static_cast<std::int16_t>(registers[0]);
        if (wide < std::numeric_limits<std::int8_t>::min() || wide > std::numeric_limits<std::int8_t>::max()) {
            return false;
        }
        store(static_cast<std::int8_t>(wide));
        return true;
    }
    case ItemType::UInt8:
        if (registers[0] > std::numeric_limits<std::uint8_t>::max()) {
            return false;
        }
        store(static_cast<std::uint8_t>(registers[0]));
        return true;
    case ItemType::Int16:
    case ItemType::UInt16:
        store(registers[0]);
        return true;
    case ItemType::Int32:
    case ItemType::UInt32:
    case ItemType::Float32:
        store(static_cast<std::uint32_t>(GatherWords(registers, 2, order)));
        return true;
    case ItemType::Int64:
    case ItemType::UInt64:
    case ItemType::Float64:
        store(GatherWords(registers, 4, order));
        return true;
    case ItemType::String:
    case ItemType::WString:
        return false;
    }
    return false;
}

void AddressMap::Add(const std::string& name, ItemType type, std::uint16_t capacity, bool inputPort, void* address)
{
    MapItem item;
    item.name = name;
    item.type = type;
    item.capacity = capacity;
    bool text = type == ItemType::String || type == ItemType::WString;
    item.writable = inputPort && !text;
    if (type == ItemType::Bool) {
        item.table = item.writable ? Table::Coil : Table::DiscreteInput;
    } else {
        item.table = item.writable ? Table::HoldingRegister : Table::InputRegister;
    }
    item.count = Width(type, capacity);
    item.address = address;
    auto table = static_cast<std::size_t>(item.table);
    if (sizes[table] + item.count > TableAddresses) {
        throw UsageError(fmt::format("port '{}': the program's ports need more than {} {}s, the most a Modbus table "
                                     "has; publish fewer or shorter ports",
                                     name, TableAddresses, TableName(item.table)));
    }
    item.start = static_cast<std::uint16_t>(sizes[table]);
    sizes[table] += item.count;
    owners[table].insert(owners[table].end(), item.count, static_cast<std::uint32_t>(items.size()));
    items.push_back(std::move(item));
}

void AddressMap::Skip(const std::string& name, const std::string& type)
{
    skipped.push_back(fmt::format("{} ({})", name, type.empty() ? std::string("unknown type") : type));
}

long AddressMap::ItemAt(Table table, std::uint16_t address) const noexcept
{
    const auto& owner = owners[static_cast<std::size_t>(table)];
    return address < owner.size() ? static_cast<long>(owner[address]) : -1;
}

AddressMap BuildAddressMap(const Simulation& simulation)
{
    auto& browser = VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().GetDataBrowser();
    AddressMap map;
    auto add = [&](const std::string& name, const std::string& path, bool inputPort) {
        auto info = browser.GetDataInfo(Zon::String(path));
        std::string common = VarnixBase::Core::PortSystem::GetCommonTypeName(info).ToStdString();
        ItemType type{};
        if (info.address == nullptr || !info.arrayDimensions.empty() || !TypeOf(common, type)) {
            map.Skip(name, info.arrayDimensions.empty() ? common : common + " array");
            return;
        }
        std::uint16_t capacity = 0;
        if (type == ItemType::String || type == ItemType::WString) {
            capacity = Load<std::uint16_t>(info.address);
        }
        map.Add(name, type, capacity, inputPort, info.address);
    };
    for (const auto& port : simulation.GetPorts()) {
        std::string name = port->GetName().ToStdString();
        std::string variable = simulation.GetInstance() + "." + name;
        bool inputPort = (port->GetAttributes() & Zon::Plc::Commons::Meta::StandardAttribute::Input) ==
                         Zon::Plc::Commons::Meta::StandardAttribute::Input;
        std::string relative = port->GetRelativeDataPath().ToStdString();
        if (relative.empty()) {
            add(name, variable, inputPort);
            continue;
        }
        add(name, variable + "." + relative, inputPort);
        add(name + ".Quality.State", variable + ".Quality.State", false);
        add(name + ".Quality.Flags", variable + ".Quality.Flags", false);
        add(name + ".Timestamp", variable + ".Timestamp", false);
    }
    return map;
}

void WriteMap(std::ostream& out, const AddressMap& map, MapFormat format)
{
    if (format == MapFormat::Csv) {
        out << "name,table,start,count,type,access\n";
        for (const auto& item : map.Items()) {
            out << fmt::format("{},{},{},{},{},{}\n", Csv(item.name), TableName(item.table), item.start, item.count,
                               TypeName(item.type, item.capacity), item.writable ? "read-write" : "read-only");
        }
        return;
    }
    std::size_t width = 4;
    for (const auto& item : map.Items()) {
        width = std::max(width, item.name.size());
    }
    out << fmt::format("{:<{}}  {:<16}  {:>5}  {:>5}  {:<12}  {}\n", "name", width, "table", "start", "count", "type",
                       "access");
    for (const auto& item : map.Items()) {
        out << fmt::format("{:<{}}  {:<16}  {:>5}  {:>5}  {:<12}  {}\n", item.name, width, TableName(item.table),
                           item.start, item.count, TypeName(item.type, item.capacity),
                           item.writable ? "read-write" : "read-only");
    }
    for (const auto& skipped : map.Skipped()) {
        out << fmt::format("not served: {}\n", skipped);
    }
}

} // namespace VarnixSim::Modbus
