#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace VarnixBase::Sim {
class Simulation;
class UsageError;
} // namespace VarnixBase::Sim

namespace VarnixSim::Modbus {

using VarnixBase::Sim::Simulation;
using VarnixBase::Sim::UsageError;

/// The four data tables a Modbus client addresses, each with its own addresses from 0.
enum class Table { Coil, DiscreteInput, InputRegister, HoldingRegister };

/// What one map item holds, as the program's memory has it.
enum class ItemType { Bool, Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Float32, Float64, String, WString };

/// The order of the 16-bit registers of a value wider than one register. Within a register the
/// high byte always comes first, as the protocol has it.
enum class WordOrder { Big, Little };

enum class MapFormat { Table, Csv };

/// "coil", "discrete input", "input register", "holding register".
const char* TableName(Table table);
/// "bool", "int8", ..., "float64", "string(80)", "wstring(80)".
std::string TypeName(ItemType type, std::uint16_t capacity);
/// The registers an item takes (1 bit for `Bool`): 1, 2 or 4 for numbers; for strings of
/// `capacity` units, two bytes per register for 8-bit units and one unit per register for 16-bit ones.
std::uint16_t Width(ItemType type, std::uint16_t capacity);
/// The bytes of the value in the program's memory (not for strings).
std::size_t ValueSize(ItemType type);
bool TryParseWordOrder(const std::string& text, WordOrder& order);
bool TryParseMapFormat(const std::string& text, MapFormat& format);

/// Reads the value at `memory` (of `type`) into `registers` (`Width` of them).
void EncodeRegisters(ItemType type, std::uint16_t capacity, const void* memory, WordOrder order,
                     std::uint16_t* registers);
/// Turns `Width(type)` registers written by a client into the value's bytes at `value` (`ValueSize`
/// of them). False, with nothing written, when the registers hold no value of `type` (a 16-bit
/// number outside an 8-bit type's range); never for strings, which are not writable.
bool DecodeRegisters(ItemType type, WordOrder order, const std::uint16_t* registers, void* value);

/// One port value, or one part of a qualified port, as a client sees it.
struct MapItem {
    /// The port's name, and for the parts of a qualified port "NAME.Quality.State",
    /// "NAME.Quality.Flags", "NAME.Timestamp".
    std::string name;
    Table table = Table::InputRegister;
    std::uint16_t start = 0;
    /// Registers, or bits in the bit tables.
    std::uint16_t count = 0;
    ItemType type = ItemType::Int16;
    /// Units of a string; 0 for numbers.
    std::uint16_t capacity = 0;
    bool writable = false;
    /// Where the value lies in the program's memory.
    void* address = nullptr;
};

/// The program's published ports as Modbus items, in document order; each table fills from
/// address 0 without gaps. `bool` values go to the bit tables, everything else to registers;
/// items of ports with the `Input` attribute are writable (coils, holding registers), all others
/// and all strings read-only (discrete inputs, input registers).
class AddressMap {
public:
    /// Appends an item at the next free address of its table. Throws `UsageError` when a table
    /// would pass its 65536 addresses.
    void Add(const std::string& name, ItemType type, std::uint16_t capacity, bool inputPort, void* address);
    /// A port (or part) of a type the map has no place for; listed, not served.
    void Skip(const std::string& name, const std::string& type);

    const std::vector<MapItem>& Items() const noexcept { return items; }
    const std::vector<std::string>& Skipped() const noexcept { return skipped; }
    /// Addresses in use in `table`.
    std::size_t Size(Table table) const noexcept { return sizes[static_cast<std::size_t>(table)]; }
    /// The index in `Items()` of the item that covers `address` of `table`, or -1.
    long ItemAt(Table table, std::uint16_t address) const noexcept;

private:
    std::vector<MapItem> items;
    std::vector<std::string> skipped;
    std::size_t sizes[4] = {};
    /// For every address of every table the index of its item.
    std::vector<std::uint32_t> owners[4];
};

/// The map of a built program: each port's variable resolved through the controller's meta data.
AddressMap BuildAddressMap(const Simulation& simulation);

/// Prints the map: a table for people, or CSV with a header line.
void WriteMap(std::ostream& out, const AddressMap& map, MapFormat format);

} // namespace VarnixSim::Modbus
