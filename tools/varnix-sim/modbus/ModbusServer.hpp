#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ModbusMap.hpp"
#include "VarnixBase/Sim/Simulation.hpp"

namespace VarnixSim::Modbus {

struct Endpoint {
    std::string host = "127.0.0.1";
    std::uint16_t port = 502;
};

/// Parses "[HOST:]PORT": HOST an IPv4 address or "localhost" (default 127.0.0.1), PORT 0..65535
/// (0: any free port). Throws `UsageError` naming `--modbus` for anything else.
Endpoint ParseEndpoint(const std::string& text);

struct ServerOptions {
    Endpoint endpoint;
    /// The unit the server answers as; requests for unit 0 and 255 are answered too, as a Modbus
    /// TCP device is usually addressed.
    std::uint8_t unitId = 1;
    WordOrder wordOrder = WordOrder::Big;
    /// Connections served at once; further ones are closed right after they are accepted.
    std::size_t maxClients = 16;
};

/// Serves an address map to Modbus TCP clients on a thread of its own, beside the cycles.
///
/// The server never touches the program's memory. After every cycle the cycle's thread encodes all
/// items into a snapshot of the four tables and hands it over through an atomic exchange of three
/// buffers: the server answers every request from the last whole snapshot, and the cycle never
/// waits for the server. Writes are checked on the server's thread and queued; the cycle's thread
/// applies them before the next cycle, as a stimulus is applied.
class Server final {
public:
    /// Listens on the endpoint. Throws `UsageError` when the address cannot be bound (a port in use,
    /// a port that needs privileges, an address of no interface).
    Server(const AddressMap& map, const ServerOptions& options);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// The port listened on (the one the system chose for port 0).
    std::uint16_t GetPort() const noexcept { return port; }
    /// Takes the first snapshot on the calling thread and starts serving.
    void Start();
    /// Stops serving and closes every connection; waits for the server's thread.
    void Stop();

    /// On the cycle's thread, before a cycle: writes the queued values into the ports.
    void BeforeCycle();
    /// On the cycle's thread, after a cycle: takes the snapshot the next requests are answered from.
    void AfterCycle();

    struct Statistics {
        std::uint64_t requests = 0;
        std::uint64_t exceptions = 0;
        std::uint64_t writes = 0;
        std::uint64_t connections = 0;
        std::uint64_t refused = 0;
        std::uint64_t dropped = 0; ///< connections closed for a malformed frame or a failed send
    };
    Statistics GetStatistics() const noexcept;

private:
    struct Tables {
        std::vector<std::uint8_t> coils, discreteInputs;
        std::vector<std::uint16_t> inputRegisters, holdingRegisters;
    };
    struct PendingWrite {
        std::uint32_t item;
        std::array<unsigned char, 8> value;
    };
    struct Client;

    void Serve();
    void Accept();
    /// False when the connection is to be closed.
    bool Receive(Client& client);
    /// Answers one whole frame of `size` bytes received on `client`'s connection.
    bool Answer(const Client& client, const std::uint8_t* frame, std::size_t size);
    /// 0 when the request can be answered, else the exception code. Queues the writes it holds.
    std::uint8_t Check(const std::uint8_t* pdu, std::size_t length);
    std::uint8_t CheckWrite(Table table, std::uint16_t address, std::uint16_t count, const std::uint8_t* data,
                            bool bits);
    void Snapshot(Tables& tables) const;

    AddressMap map;
    ServerOptions options;
    int listener = -1;
    int wakeRead = -1, wakeWrite = -1;
    std::uint16_t port = 0;
    struct ContextDeleter {
        void operator()(void* context) const noexcept;
    };
    std::unique_ptr<void, ContextDeleter> context;
    std::thread thread;
    std::vector<std::unique_ptr<Client>> clients;

    // Three snapshots: the cycle fills `back`, the server reads `front`, `middle` is exchanged
    // between them (its index, with `Fresh` set when the cycle has put a new one there).
    static constexpr unsigned Fresh = 4;
    std::array<Tables, 3> buffers;
    unsigned back = 0, front = 1;
    std::atomic<unsigned> middle{2};
    /// What write requests are answered from: libmodbus echoes them, the snapshot stays as it is.
    Tables scratch;

    std::mutex queueMutex;
    std::vector<PendingWrite> queue, applying;
    std::vector<PendingWrite> request;

    std::atomic<std::uint64_t> requests{0}, exceptions{0}, writes{0}, connections{0}, refused{0}, dropped{0};
};

void WriteStatistics(std::ostream& out, const Server::Statistics& statistics);

} // namespace VarnixSim::Modbus
