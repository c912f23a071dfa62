// The simulator's Modbus TCP server in the test's process, driven by a libmodbus client on loopback:
// reads come from the snapshot of the last whole cycle, writes take effect before the next cycle,
// bad requests get the protocol's exception answers and leave the server serving.
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <modbus/modbus.h>

#include "ModbusServer.hpp"
#include "VarnixBase/Sim/Simulation.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Sim;
using namespace VarnixSim::Modbus;

namespace {

const char* const Document = R"(<?xml version="1.0"?>
<ConfigurableProgram>
  <Program type="Tank">
    <Ports>
      <Port name="raw" type="AnalogIn" attributes="Input"/>
      <Port name="level" type="qualified.float64" attributes="Output"/>
      <Port name="small" type="int8" attributes="Input"/>
      <Port name="wide" type="int32" attributes="Input"/>
      <Port name="pump" type="boolean" attributes="Input"/>
    </Ports>
    <Connectors>
      <Connector startPort="raw" endPort="level" type="scale">
        <Parameter name="gain" value="0.01"/>
      </Connector>
    </Connectors>
  </Program>
</ConfigurableProgram>
)";

struct ClientDeleter {
    void operator()(modbus_t* client) const
    {
        modbus_close(client);
        modbus_free(client);
    }
};
using Client = std::unique_ptr<modbus_t, ClientDeleter>;

class ModbusServerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        SimulationOptions options;
        options.document = dir.WriteFile("Tank.prog.config", Document).string();
        options.consoleLevel.reset();
        simulation = std::make_unique<Simulation>(options);
        map = BuildAddressMap(*simulation);
        ServerOptions serverOptions;
        serverOptions.endpoint.port = 0;
        serverOptions.maxClients = 3;
        server = std::make_unique<Server>(map, serverOptions);
        server->Start();
    }

    void TearDown() override
    {
        server.reset();
        simulation.reset();
    }

    Client Connect()
    {
        Client client(modbus_new_tcp("127.0.0.1", server->GetPort()));
        modbus_set_response_timeout(client.get(), 2, 0);
        modbus_set_slave(client.get(), 1);
        EXPECT_EQ(modbus_connect(client.get()), 0) << modbus_strerror(errno);
        return client;
    }

    void Cycle()
    {
        Simulation::RunOptions run;
        run.cycles = 1;
        Server* serving = server.get();
        run.beforeCycle = [serving](std::uint64_t) { serving->BeforeCycle(); };
        run.afterCycle = [serving](std::uint64_t) { serving->AfterCycle(); };
        simulation->Run(run);
    }

    /// Sends a raw PDU and gives the errno of the answer: 0, or an exception's EMBX... code.
    int Raw(modbus_t* client, std::vector<std::uint8_t> request)
    {
        request.insert(request.begin(), 1); // unit id
        if (modbus_send_raw_request(client, request.data(), static_cast<int>(request.size())) < 0) {
            return errno;
        }
        std::uint8_t answer[MODBUS_TCP_MAX_ADU_LENGTH];
        return modbus_receive_confirmation(client, answer) < 0 ? errno : (answer[7] & 0x80 ? EMBXILFUN + answer[8] - 1 : 0);
    }

    /// A plain connection to the server (answers time out after 2 s) that has sent `bytes`.
    int SendRaw(const std::vector<std::uint8_t>& bytes)
    {
        int s = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(server->GetPort());
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(::connect(s, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        timeval timeout{2, 0};
        ::setsockopt(s, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
        EXPECT_EQ(::send(s, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
        return s;
    }

    VarnixTest::TempDir dir;
    std::unique_ptr<Simulation> simulation;
    AddressMap map;
    std::unique_ptr<Server> server;
};

double Level(modbus_t* client)
{
    std::uint16_t registers[4] = {};
    EXPECT_EQ(modbus_read_input_registers(client, 0, 4, registers), 4) << modbus_strerror(errno);
    std::uint64_t bits = 0;
    for (auto word : registers) {
        bits = (bits << 16) | word;
    }
    double value = 0;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

} // namespace

TEST_F(ModbusServerTest, AWriteTakesEffectBeforeTheNextCycleAndReadsShowTheLastWholeCycle)
{
    auto client = Connect();
    ASSERT_EQ(modbus_write_register(client.get(), 0, 2500), 1) << modbus_strerror(errno);
    EXPECT_EQ(Level(client.get()), 0.0) << "no cycle has run since the write";
    Cycle();
    EXPECT_EQ(Level(client.get()), 25.0);
    std::uint16_t state = 0;
    ASSERT_EQ(modbus_read_input_registers(client.get(), 4, 1, &state), 1);
    EXPECT_EQ(state, 1) << "Good";

    ASSERT_EQ(modbus_write_register(client.get(), 0, 0x8001), 1);
    Cycle();
    std::uint16_t quality[3] = {};
    ASSERT_EQ(modbus_read_input_registers(client.get(), 4, 3, quality), 3);
    EXPECT_EQ(quality[0], 255) << "Bad";
    EXPECT_EQ((static_cast<std::uint32_t>(quality[1]) << 16) | quality[2], 0x40u) << "Overrange";
    auto statistics = server->GetStatistics();
    EXPECT_EQ(statistics.writes, 2u);
    EXPECT_EQ(statistics.exceptions, 0u);
}

TEST_F(ModbusServerTest, CoilsAndMultiRegisterValuesAreWrittenWhole)
{
    auto client = Connect();
    ASSERT_EQ(modbus_write_bit(client.get(), 0, 1), 1) << modbus_strerror(errno);
    std::uint16_t wide[2] = {0xFFFF, 0xFFFE}; // -2, most significant word first
    ASSERT_EQ(modbus_write_registers(client.get(), 2, 2, wide), 2) << modbus_strerror(errno);
    Cycle();
    std::uint8_t pump = 0;
    ASSERT_EQ(modbus_read_bits(client.get(), 0, 1, &pump), 1);
    EXPECT_EQ(pump, 1);
    std::uint16_t back[2] = {};
    ASSERT_EQ(modbus_read_registers(client.get(), 2, 2, back), 2);
    EXPECT_EQ(back[0], 0xFFFF);
    EXPECT_EQ(back[1], 0xFFFE);
}

TEST_F(ModbusServerTest, BadRequestsGetTheProtocolsExceptionsAndTheServerGoesOn)
{
    auto client = Connect();
    std::uint16_t registers[4];
    // Outside the map.
    EXPECT_EQ(modbus_read_input_registers(client.get(), 11, 2, registers), -1);
    EXPECT_EQ(errno, EMBXILADD);
    // Into the middle of a 32-bit value.
    EXPECT_EQ(modbus_write_register(client.get(), 3, 7), -1);
    EXPECT_EQ(errno, EMBXILADD);
    // A value the int8 port cannot hold.
    EXPECT_EQ(modbus_write_register(client.get(), 1, 300), -1);
    EXPECT_EQ(errno, EMBXILVAL);
    // A count beyond the protocol's limit (the client library would refuse to send it).
    EXPECT_EQ(Raw(client.get(), {0x04, 0x00, 0x00, 0x00, 126}), EMBXILVAL);
    EXPECT_EQ(Raw(client.get(), {0x04, 0x00, 0x00, 0x00, 0x00}), EMBXILVAL);
    // A frame shorter than its function needs.
    EXPECT_EQ(Raw(client.get(), {0x03, 0x00, 0x00}), EMBXILVAL);
    // Functions the server does not offer.
    EXPECT_EQ(Raw(client.get(), {0x2B, 0x0E, 0x01, 0x00}), EMBXILFUN);
    EXPECT_EQ(Raw(client.get(), {0x17, 0, 0, 0, 1, 0, 0, 0, 1, 2, 0, 0}), EMBXILFUN);
    // A coil value other than on or off.
    EXPECT_EQ(Raw(client.get(), {0x05, 0x00, 0x00, 0x12, 0x34}), EMBXILVAL);
    // And a good request is still answered.
    EXPECT_EQ(modbus_read_input_registers(client.get(), 0, 4, registers), 4);
    EXPECT_EQ(server->GetStatistics().exceptions, 9u);
}

TEST_F(ModbusServerTest, AMalformedFrameOrAHalfRequestClosesThatConnectionOnly)
{
    auto good = Connect();
    // Protocol id 1: no Modbus TCP; the server closes the connection (the read sees its end).
    int bad = SendRaw({0, 1, 0, 1, 0, 6, 1, 3, 0, 0, 0, 1});
    // The connection's end: an orderly close, or a reset for the bytes the server left unread
    // (not a time-out, EAGAIN, which would mean the server kept it open).
    auto ended = [](int s) {
        char byte;
        ssize_t got = ::recv(s, &byte, 1, 0);
        return got == 0 || (got < 0 && errno == ECONNRESET);
    };
    EXPECT_TRUE(ended(bad));
    ::close(bad);
    // A length beyond any frame.
    bad = SendRaw({0, 1, 0, 0, 0xFF, 0xFF, 1, 3});
    EXPECT_TRUE(ended(bad));
    ::close(bad);
    // Half a request, then the client goes.
    int half = SendRaw({0, 1, 0, 0, 0, 6, 1, 3, 0});
    ::close(half);
    std::uint16_t registers[4];
    EXPECT_EQ(modbus_read_input_registers(good.get(), 0, 4, registers), 4) << modbus_strerror(errno);
    EXPECT_EQ(server->GetStatistics().dropped, 2u);
}

TEST_F(ModbusServerTest, RequestsSentTogetherOrInPiecesAreEachAnsweredInTheirOrder)
{
    // 100 requests of 12 bytes in one send (more than one read of the server takes in), each
    // reading one input register more than the one before, then a request in two pieces.
    constexpr int Together = 100;
    auto request = [](int transaction, int count) {
        return std::vector<std::uint8_t>{static_cast<std::uint8_t>(transaction >> 8),
                                         static_cast<std::uint8_t>(transaction), 0, 0, 0, 6, 1, 4, 0, 0, 0,
                                         static_cast<std::uint8_t>(count)};
    };
    std::vector<std::uint8_t> burst;
    for (int k = 0; k < Together; ++k) {
        auto one = request(k, 1 + k % 4);
        burst.insert(burst.end(), one.begin(), one.end());
    }
    int s = SendRaw(burst);
    auto last = request(Together, 2);
    ASSERT_EQ(::send(s, last.data(), 5, MSG_NOSIGNAL), 5);
    ASSERT_EQ(::send(s, last.data() + 5, last.size() - 5, MSG_NOSIGNAL), static_cast<ssize_t>(last.size() - 5));
    for (int k = 0; k <= Together; ++k) {
        int count = k < Together ? 1 + k % 4 : 2;
        std::vector<std::uint8_t> answer(9 + 2 * count);
        ASSERT_EQ(::recv(s, answer.data(), answer.size(), MSG_WAITALL), static_cast<ssize_t>(answer.size()))
            << "answer " << k;
        EXPECT_EQ((answer[0] << 8) | answer[1], k) << "answers come in the order of the requests";
        EXPECT_EQ(answer[7], 4) << "answer " << k;
        EXPECT_EQ(answer[8], 2 * count) << "answer " << k;
    }
    ::close(s);
    EXPECT_EQ(server->GetStatistics().requests, static_cast<std::uint64_t>(Together + 1));
    EXPECT_EQ(server->GetStatistics().dropped, 0u);
}

TEST_F(ModbusServerTest, ConnectionsBeyondTheLimitAreRefusedAndTheOthersServed)
{
    auto first = Connect();
    auto second = Connect();
    auto third = Connect();
    std::uint16_t registers[4];
    // All three are served (the server has accepted them) before the fourth comes.
    for (auto* client : {first.get(), second.get(), third.get()}) {
        ASSERT_EQ(modbus_read_input_registers(client, 0, 4, registers), 4);
    }
    Client fourth(modbus_new_tcp("127.0.0.1", server->GetPort()));
    modbus_set_response_timeout(fourth.get(), 2, 0);
    ASSERT_EQ(modbus_connect(fourth.get()), 0);
    EXPECT_EQ(modbus_read_input_registers(fourth.get(), 0, 4, registers), -1) << "closed by the server";
    for (auto* client : {first.get(), second.get(), third.get()}) {
        EXPECT_EQ(modbus_read_input_registers(client, 0, 4, registers), 4);
    }
    EXPECT_EQ(server->GetStatistics().refused, 1u);
    // A slot freed is a slot for the next.
    first.reset();
    for (int attempt = 0; attempt < 50; ++attempt) {
        Client again(modbus_new_tcp("127.0.0.1", server->GetPort()));
        modbus_set_response_timeout(again.get(), 2, 0);
        ASSERT_EQ(modbus_connect(again.get()), 0);
        if (modbus_read_input_registers(again.get(), 0, 4, registers) == 4) {
            return;
        }
        ::usleep(20000);
    }
    FAIL() << "the freed slot was never given to a new connection";
}

TEST_F(ModbusServerTest, RequestsForAnotherUnitAreAnsweredAsAGatewayWithoutThatTarget)
{
    auto client = Connect();
    modbus_set_slave(client.get(), 7);
    std::uint16_t registers[4];
    EXPECT_EQ(modbus_read_input_registers(client.get(), 0, 4, registers), -1);
    EXPECT_EQ(errno, EMBXGTAR);
    modbus_set_slave(client.get(), 255);
    EXPECT_EQ(modbus_read_input_registers(client.get(), 0, 4, registers), 4);
}

TEST(ModbusEndpoint, HostAndPortAreParsedAndAnythingElseIsRefusedWithAnExample)
{
    auto endpoint = ParseEndpoint("5020");
    EXPECT_EQ(endpoint.host, "127.0.0.1");
    EXPECT_EQ(endpoint.port, 5020);
    endpoint = ParseEndpoint("0.0.0.0:502");
    EXPECT_EQ(endpoint.host, "0.0.0.0");
    EXPECT_EQ(endpoint.port, 502);
    EXPECT_EQ(ParseEndpoint("localhost:7").host, "127.0.0.1");
    for (const char* bad : {"", "x", "65536", "1.2.3:80", "host:80", ":80", "127.0.0.1:", "127.0.0.1:-1", "99999999"}) {
        try {
            ParseEndpoint(bad);
            ADD_FAILURE() << "accepted: " << bad;
        } catch (const UsageError& error) {
            EXPECT_NE(std::string(error.what()).find("expected [HOST:]PORT"), std::string::npos) << error.what();
        }
    }
}

TEST(ModbusEndpoint, APortInUseIsAClearError)
{
    AddressMap map;
    ServerOptions options;
    options.endpoint.port = 0;
    Server first(map, options);
    options.endpoint.port = first.GetPort();
    try {
        Server second(map, options);
        FAIL() << "bound twice";
    } catch (const UsageError& error) {
        EXPECT_NE(std::string(error.what()).find("the port is in use by another program"), std::string::npos)
            << error.what();
    }
}
