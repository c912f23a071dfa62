// The Modbus address map of a program and the encoding of values in registers.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "ModbusMap.hpp"
#include "VarnixBase/Sim/Simulation.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Sim;
using namespace VarnixSim::Modbus;

namespace {

const char* const Document = R"(<?xml version="1.0"?>
<ConfigurableProgram>
  <Program type="Plant">
    <Ports>
      <Port name="raw" type="AnalogIn" attributes="Input"/>
      <Port name="level" type="qualified.float64" attributes="Output"/>
      <Port name="pump" type="boolean" attributes="Input"/>
      <Port name="running" type="boolean"/>
      <Port name="label" type="string80" attributes="Input"/>
      <Port name="count" type="int32" attributes="Input"/>
      <Port name="display" type="int16" attributes="Output"/>
    </Ports>
    <Connectors>
      <Connector startPort="raw" endPort="level" type="scale">
        <Parameter name="gain" value="0.01"/>
      </Connector>
    </Connectors>
  </Program>
</ConfigurableProgram>
)";

template <class T>
std::vector<std::uint16_t> Encode(ItemType type, T value, WordOrder order = WordOrder::Big)
{
    std::vector<std::uint16_t> registers(Width(type, 0));
    EncodeRegisters(type, 0, &value, order, registers.data());
    return registers;
}

template <class T>
T RoundTrip(ItemType type, T value, WordOrder order)
{
    auto registers = Encode(type, value, order);
    T back{};
    EXPECT_TRUE(DecodeRegisters(type, order, registers.data(), &back));
    return back;
}

using Registers = std::vector<std::uint16_t>;

} // namespace

TEST(ModbusEncoding, WideValuesPutTheMostSignificantWordFirstUnlessLittleIsAsked)
{
    EXPECT_EQ(Encode(ItemType::Int32, std::int32_t{0x12345678}), (Registers{0x1234, 0x5678}));
    EXPECT_EQ(Encode(ItemType::Int32, std::int32_t{0x12345678}, WordOrder::Little), (Registers{0x5678, 0x1234}));
    EXPECT_EQ(Encode(ItemType::UInt64, std::uint64_t{0x0102030405060708}),
              (Registers{0x0102, 0x0304, 0x0506, 0x0708}));
    EXPECT_EQ(Encode(ItemType::UInt64, std::uint64_t{0x0102030405060708}, WordOrder::Little),
              (Registers{0x0708, 0x0506, 0x0304, 0x0102}));
    EXPECT_EQ(Encode(ItemType::Float64, 25.0), (Registers{0x4039, 0, 0, 0}));
    EXPECT_EQ(Encode(ItemType::Float32, 1.5f), (Registers{0x3FC0, 0}));
}

TEST(ModbusEncoding, NarrowSignedValuesAreSignExtendedIntoTheirRegister)
{
    EXPECT_EQ(Encode(ItemType::Int8, std::int8_t{-5}), (Registers{0xFFFB}));
    EXPECT_EQ(Encode(ItemType::UInt8, std::uint8_t{250}), (Registers{250}));
    EXPECT_EQ(Encode(ItemType::Int16, std::int16_t{-1}), (Registers{0xFFFF}));
    EXPECT_EQ(Encode(ItemType::Bool, true), (Registers{1}));
}

TEST(ModbusEncoding, EveryNumericTypeRoundTripsItsExtremesInBothWordOrders)
{
    for (auto order : {WordOrder::Big, WordOrder::Little}) {
        EXPECT_EQ(RoundTrip(ItemType::Int8, std::numeric_limits<std::int8_t>::min(), order), -128);
        EXPECT_EQ(RoundTrip(ItemType::UInt8, std::numeric_limits<std::uint8_t>::max(), order), 255);
        EXPECT_EQ(RoundTrip(ItemType::Int16, std::numeric_limits<std::int16_t>::min(), order), -32768);
        EXPECT_EQ(RoundTrip(ItemType::UInt16, std::numeric_limits<std::uint16_t>::max(), order), 65535);
        EXPECT_EQ(RoundTrip(ItemType::Int32, std::numeric_limits<std::int32_t>::min(), order),
                  std::numeric_limits<std::int32_t>::min());
        EXPECT_EQ(RoundTrip(ItemType::UInt32, std::numeric_limits<std::uint32_t>::max(), order),
                  std::numeric_limits<std::uint32_t>::max());
        EXPECT_EQ(RoundTrip(ItemType::Int64, std::numeric_limits<std::int64_t>::min(), order),
                  std::numeric_limits<std::int64_t>::min());
        EXPECT_EQ(RoundTrip(ItemType::UInt64, std::numeric_limits<std::uint64_t>::max(), order),
                  std::numeric_limits<std::uint64_t>::max());
        EXPECT_EQ(RoundTrip(ItemType::Float32, -3.25e7f, order), -3.25e7f);
        EXPECT_EQ(RoundTrip(ItemType::Float64, 1.0 / 3.0, order), 1.0 / 3.0);
        EXPECT_TRUE(std::isnan(RoundTrip(ItemType::Float64, std::nan(""), order)));
        EXPECT_EQ(RoundTrip(ItemType::Bool, true, order), true);
    }
}

TEST(ModbusEncoding, RegistersThatHoldNoValueOfANarrowTypeAreRefused)
{
    unsigned char value[8] = {0x5A};
    std::uint16_t tooBigForInt8[] = {128};
    std::uint16_t tooSmallForInt8[] = {static_cast<std::uint16_t>(-129)};
    std::uint16_t tooBigForUInt8[] = {256};
    std::uint16_t notABool[] = {2};
    EXPECT_FALSE(DecodeRegisters(ItemType::Int8, WordOrder::Big, tooBigForInt8, value));
    EXPECT_FALSE(DecodeRegisters(ItemType::Int8, WordOrder::Big, tooSmallForInt8, value));
    EXPECT_FALSE(DecodeRegisters(ItemType::UInt8, WordOrder::Big, tooBigForUInt8, value));
    EXPECT_FALSE(DecodeRegisters(ItemType::Bool, WordOrder::Big, notABool, value));
    EXPECT_EQ(value[0], 0x5A) << "a refused value writes nothing";
    std::uint16_t text[] = {0x4142};
    EXPECT_FALSE(DecodeRegisters(ItemType::String, WordOrder::Big, text, value)) << "strings are read-only";
}

TEST(ModbusEncoding, NarrowStringsTakeTwoBytesPerRegisterHighByteFirstAndZerosAfterTheText)
{
    struct {
        std::uint16_t capacity = 5, length = 3;
        char data[6] = {'A', 'B', 'C', 'x', 'x', 0};
    } text;
    std::uint16_t registers[3] = {0xEEEE, 0xEEEE, 0xEEEE};
    ASSERT_EQ(Width(ItemType::String, 5), 3);
    EncodeRegisters(ItemType::String, 5, &text, WordOrder::Big, registers);
    EXPECT_EQ(registers[0], 0x4142);
    EXPECT_EQ(registers[1], 0x4300);
    EXPECT_EQ(registers[2], 0x0000);
    // A length beyond the capacity (memory written by someone else) is cut to the capacity.
    text.length = 900;
    EncodeRegisters(ItemType::String, 5, &text, WordOrder::Big, registers);
    EXPECT_EQ(registers[2], 0x7800);
}

TEST(ModbusEncoding, WideStringsTakeOneUnitPerRegister)
{
    struct {
        std::uint16_t capacity = 3, length = 2;
        char16_t data[4] = {u'\u00e9', u'Z', u'q', 0};
    } text;
    std::uint16_t registers[3] = {0xEEEE, 0xEEEE, 0xEEEE};
    ASSERT_EQ(Width(ItemType::WString, 3), 3);
    EncodeRegisters(ItemType::WString, 3, &text, WordOrder::Big, registers);
    EXPECT_EQ(registers[0], 0x00E9);
    EXPECT_EQ(registers[1], 0x005A);
    EXPECT_EQ(registers[2], 0x0000);
}

TEST(ModbusAddressMap, ItemsFillEachTableInOrderAndInputPortsAloneAreWritable)
{
    AddressMap map;
    double a = 0;
    bool b = false;
    std::int16_t c = 0;
    map.Add("a", ItemType::Float64, 0, true, &a);
    map.Add("b", ItemType::Bool, 0, true, &b);
    map.Add("c", ItemType::Int16, 0, true, &c);
    map.Add("d", ItemType::Bool, 0, false, &b);
    map.Add("e", ItemType::Int16, 0, false, &c);
    ASSERT_EQ(map.Items().size(), 5u);
    EXPECT_EQ(map.Items()[0].table, Table::HoldingRegister);
    EXPECT_EQ(map.Items()[2].start, 4);
    EXPECT_EQ(map.Items()[1].table, Table::Coil);
    EXPECT_EQ(map.Items()[3].table, Table::DiscreteInput);
    EXPECT_EQ(map.Items()[4].table, Table::InputRegister);
    EXPECT_EQ(map.Items()[4].start, 0);
    EXPECT_TRUE(map.Items()[0].writable);
    EXPECT_FALSE(map.Items()[4].writable);
    EXPECT_EQ(map.Size(Table::HoldingRegister), 5u);
    EXPECT_EQ(map.ItemAt(Table::HoldingRegister, 3), 0);
    EXPECT_EQ(map.ItemAt(Table::HoldingRegister, 4), 2);
    EXPECT_EQ(map.ItemAt(Table::HoldingRegister, 5), -1);
    EXPECT_EQ(map.ItemAt(Table::InputRegister, 1), -1);
}

TEST(ModbusAddressMap, ATableBeyondItsAddressesIsRefusedWithTheNameOfThePort)
{
    AddressMap map;
    std::uint64_t value = 0;
    for (int i = 0; i < 16384; ++i) {
        map.Add("v", ItemType::UInt64, 0, false, &value);
    }
    EXPECT_EQ(map.Size(Table::InputRegister), 65536u);
    try {
        map.Add("one-more", ItemType::Int16, 0, false, &value);
        FAIL() << "no error";
    } catch (const UsageError& error) {
        EXPECT_NE(std::string(error.what()).find("port 'one-more'"), std::string::npos) << error.what();
    }
}

TEST(ModbusAddressMap, AProgramIsMappedInDocumentOrderWithTheFourPartsOfAQualifiedPort)
{
    VarnixTest::TempDir dir;
    SimulationOptions options;
    options.document = dir.WriteFile("Plant.prog.config", Document).string();
    options.consoleLevel.reset();
    Simulation simulation(options);
    auto map = BuildAddressMap(simulation);
    std::ostringstream csv;
    WriteMap(csv, map, MapFormat::Csv);
    EXPECT_EQ(csv.str(), "name,table,start,count,type,access\n"
                         "raw,holding register,0,1,uint16,read-write\n"
                         "level,input register,0,4,float64,read-only\n"
                         "level.Quality.State,input register,4,1,uint8,read-only\n"
                         "level.Quality.Flags,input register,5,2,uint32,read-only\n"
                         "level.Timestamp,input register,7,4,int64,read-only\n"
                         "pump,coil,0,1,bool,read-write\n"
                         "running,discrete input,0,1,bool,read-only\n"
                         "label,input register,11,40,string(80),read-only\n"
                         "count,holding register,1,2,int32,read-write\n"
                         "display,input register,51,1,int16,read-only\n");
    EXPECT_TRUE(map.Skipped().empty());
    // The items point at the ports' published memory.
    const auto& raw = map.Items()[0];
    *static_cast<std::uint16_t*>(raw.address) = 2500;
    Simulation::RunOptions run;
    run.cycles = 1;
    simulation.Run(run);
    std::uint16_t registers[4];
    EncodeRegisters(map.Items()[1].type, 0, map.Items()[1].address, WordOrder::Big, registers);
    EXPECT_EQ(registers[0], 0x4039) << "level is 25.0";
}
