#include "ModbusServer.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fmt/format.h>
#include <modbus/modbus.h>

#include "VarnixBase/Sim/Stimulus.hpp"

namespace VarnixSim::Modbus {

namespace {

/// The MBAP header before the unit id: transaction, protocol, length.
constexpr std::size_t HeaderBytes = 6;
constexpr std::size_t MaxFrame = MODBUS_TCP_MAX_ADU_LENGTH;
/// Values waiting for the next cycle; a request beyond it is answered "server busy".
constexpr std::size_t MaxQueued = 4096;
/// What one read from a connection takes in: two whole frames. Every whole frame read is answered
/// before the other connections get their turn, so this also bounds a turn (at most 65 of the
/// smallest frames).
constexpr std::size_t ReceiveBytes = 2 * MaxFrame;

std::uint16_t Word(const std::uint8_t* bytes) noexcept
{
    return static_cast<std::uint16_t>((bytes[0] << 8) | bytes[1]);
}

bool AllDigits(const std::string& text)
{
    return !text.empty() && text.size() <= 5 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

struct Server::Client {
    int socket = -1;
    /// Bytes received and not yet answered: whole frames, then the start of the next one.
    std::size_t filled = 0;
    std::uint8_t received[ReceiveBytes] = {};

    ~Client()
    {
        if (socket >= 0) {
            ::close(socket);
        }
    }
};

void Server::ContextDeleter::operator()(void* context) const noexcept
{
    modbus_free(static_cast<modbus_t*>(context));
}

Endpoint ParseEndpoint(const std::string& text)
{
    auto refuse = [&text]() {
        return UsageError(fmt::format("--modbus {}: expected [HOST:]PORT, such as 5020 or 127.0.0.1:5020, with HOST an "
                                      "IPv4 address and PORT from 0 to 65535 (0: any free port)",
                                      text));
    };
    Endpoint endpoint;
    std::string portText = text;
    std::size_t colon = text.rfind(':');
    if (colon != std::string::npos) {
        endpoint.host = text.substr(0, colon);
        portText = text.substr(colon + 1);
        if (endpoint.host == "localhost") {
            endpoint.host = "127.0.0.1";
        }
        in_addr address{};
        if (::inet_pton(AF_INET, endpoint.host.c_str(), &address) != 1) {
            throw refuse();
        }
    }
    if (!AllDigits(portText) || std::stoul(portText) > 65535) {
        throw refuse();
    }
    endpoint.port = static_cast<std::uint16_t>(std::stoul(portText));
    return endpoint;
}

Server::Server(const AddressMap& map, const ServerOptions& options) : map(map), options(options)
{
    std::string where = fmt::format("{}:{}", options.endpoint.host, options.endpoint.port);
    listener = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (listener < 0) {
        throw UsageError(fmt::format("--modbus {}: cannot open a socket: {}", where, std::strerror(errno)));
    }
    int yes = 1;
    ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(options.endpoint.port);
    ::inet_pton(AF_INET, options.endpoint.host.c_str(), &address.sin_addr);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
        ::listen(listener, 64) != 0) {
        int error = errno;
        ::close(listener);
        if (error == EADDRINUSE) {
            throw UsageError(fmt::format("--modbus {}: the port is in use by another program; choose another one, "
                                         "such as --modbus {}:5020",
                                         where, options.endpoint.host));
        }
        if (error == EACCES) {
            throw UsageError(fmt::format("--modbus {}: port {} needs privileges; choose one from 1024 up, such as "
                                         "--modbus {}:5020",
                                         where, options.endpoint.port, options.endpoint.host));
        }
        if (error == EADDRNOTAVAIL) {
            throw UsageError(
                fmt::format("--modbus {}: no network interface of this machine has the address {}; use 127.0.0.1",
                            where, options.endpoint.host));
        }
        throw UsageError(fmt::format("--modbus {}: cannot listen: {}", where, std::strerror(error)));
    }
    socklen_t length = sizeof(address);
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
    port = ntohs(address.sin_port);

    int pipeEnds[2];
    if (::pipe2(pipeEnds, O_NONBLOCK | O_CLOEXEC) != 0) {
        ::close(listener);
        throw UsageError(fmt::format("--modbus {}: cannot create a pipe: {}", where, std::strerror(errno)));
    }
    wakeRead = pipeEnds[0];
    wakeWrite = pipeEnds[1];
    // The context only frames answers: each is sent on the socket of the request's connection.
    context.reset(modbus_new_tcp("127.0.0.1", port));

    for (Tables* tables : {&buffers[0], &buffers[1], &buffers[2], &scratch}) {
        tables->coils.assign(map.Size(Table::Coil), 0);
        tables->discreteInputs.assign(map.Size(Table::DiscreteInput), 0);
        tables->inputRegisters.assign(map.Size(Table::InputRegister), 0);
        tables->holdingRegisters.assign(map.Size(Table::HoldingRegister), 0);
    }
    queue.reserve(MaxQueued);
    applying.reserve(MaxQueued);
    request.reserve(MODBUS_MAX_WRITE_BITS);
}

Server::~Server()
{
    Stop();
    ::close(listener);
    ::close(wakeRead);
    ::close(wakeWrite);
}

void Server::Start()
{
    AfterCycle();
    thread = std::thread([this] {
        // Signals (Ctrl-C) go to the cycle's thread, which ends the run.
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGINT);
        sigaddset(&signals, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        Serve();
    });
}

void Server::Stop()
{
    if (!thread.joinable()) {
        return;
    }
    char byte = 1;
    while (::write(wakeWrite, &byte, 1) < 0 && errno == EINTR) {
    }
    thread.join();
}

void Server::Serve()
{
    while (true) {
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(listener, &readable);
        FD_SET(wakeRead, &readable);
        int highest = std::max(listener, wakeRead);
        for (const auto& client : clients) {
            FD_SET(client->socket, &readable);
            highest = std::max(highest, client->socket);
        }
        int ready = ::select(highest + 1, &readable, nullptr, nullptr, nullptr);
        if (ready < 0) {
            if (errno == EINTR) {
                continue;
            }
            break;
        }
        if (FD_ISSET(wakeRead, &readable)) {
            break;
        }
        if (FD_ISSET(listener, &readable)) {
            Accept();
        }
        for (auto it = clients.begin(); it != clients.end();) {
            if (FD_ISSET((*it)->socket, &readable) && !Receive(**it)) {
                it = clients.erase(it);
            } else {
                ++it;
            }
        }
    }
    clients.clear();
}

void Server::Accept()
{
    while (true) {
        int socket = ::accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (socket < 0) {
            return;
        }
        // Beyond the limit (or beyond what select can watch) a connection is closed at once: its
        // client sees the connection end, the others go on as before.
        if (clients.size() >= options.maxClients || socket >= FD_SETSIZE) {
            ::close(socket);
            refused.fetch_add(1, std::memory_order_relaxed);
            continue;
        }
        int yes = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
        auto client = std::make_unique<Client>();
        client->socket = socket;
        clients.push_back(std::move(client));
        connections.fetch_add(1, std::memory_order_relaxed);
    }
}

bool Server::Receive(Client& client)
{
    // One read takes whatever the connection holds (a request, several, or part of one): a request
    // costs one readiness wait, one read and one send.
    ssize_t got = ::recv(client.socket, client.received + client.filled, ReceiveBytes - client.filled, 0);
    if (got == 0) {
        return false; // the client has gone, perhaps in the middle of a request
    }
    if (got < 0) {
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    }
    client.filled += static_cast<std::size_t>(got);
    std::size_t at = 0;
    while (client.filled - at >= HeaderBytes) {
        const std::uint8_t* frame = client.received + at;
        // Protocol 0 and a length that holds a unit id and a function and fits a frame: anything
        // else is no Modbus TCP, and the connection is closed.
        std::uint16_t length = Word(frame + 4);
        if (Word(frame + 2) != 0 || length < 2 || HeaderBytes + length > MaxFrame) {
            dropped.fetch_add(1, std::memory_order_relaxed);
            return false;
        }
        if (client.filled - at < HeaderBytes + length) {
            break;
        }
        if (!Answer(client, frame, HeaderBytes + length)) {
            return false;
        }
        at += HeaderBytes + length;
    }
    // The start of a frame not yet whole waits for the rest at the front of the buffer.
    std::memmove(client.received, client.received + at, client.filled - at);
    client.filled -= at;
    return true;
}

bool Server::Answer(const Client& client, const std::uint8_t* frame, std::size_t size)
{
    requests.fetch_add(1, std::memory_order_relaxed);
    auto* modbus = static_cast<modbus_t*>(context.get());
    modbus_set_socket(modbus, client.socket);
    const std::uint8_t* pdu = frame + HeaderBytes + 1;
    std::size_t pduLength = size - HeaderBytes - 1;
    std::uint8_t unit = frame[HeaderBytes];
    std::uint8_t exception = 0;
    if (unit != options.unitId && unit != 0 && unit != 255) {
        exception = MODBUS_EXCEPTION_GATEWAY_TARGET;
    } else {
        exception = Check(pdu, pduLength);
    }
    int sent = 0;
    if (exception != 0) {
        exceptions.fetch_add(1, std::memory_order_relaxed);
        sent = modbus_reply_exception(modbus, frame, exception);
    } else {
        if (middle.load(std::memory_order_acquire) & Fresh) {
            front = middle.exchange(front, std::memory_order_acq_rel) & ~Fresh;
        }
        bool write = pdu[0] == 5 || pdu[0] == 6 || pdu[0] == 15 || pdu[0] == 16;
        Tables& tables = write ? scratch : buffers[front];
        modbus_mapping_t mapping{};
        mapping.nb_bits = static_cast<int>(tables.coils.size());
        mapping.tab_bits = tables.coils.data();
        mapping.nb_input_bits = static_cast<int>(tables.discreteInputs.size());
        mapping.tab_input_bits = tables.discreteInputs.data();
        mapping.nb_input_registers = static_cast<int>(tables.inputRegisters.size());
        mapping.tab_input_registers = tables.inputRegisters.data();
        mapping.nb_registers = static_cast<int>(tables.holdingRegisters.size());
        mapping.tab_registers = tables.holdingRegisters.data();
        sent = modbus_reply(modbus, frame, static_cast<int>(size), &mapping);
    }
    if (sent < 0) {
        dropped.fetch_add(1, std::memory_order_relaxed);
        return false;
    }
    return true;
}

std::uint8_t Server::Check(const std::uint8_t* pdu, std::size_t length)
{
    std::uint8_t function = pdu[0];
    switch (function) {
    case 1:
    case 2:
    case 3:
    case 4: {
        if (length != 5) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE;
        }
        std::uint16_t address = Word(pdu + 1), count = Word(pdu + 3);
        bool bits = function <= 2;
        if (count < 1 || count > (bits ? MODBUS_MAX_READ_BITS : MODBUS_MAX_READ_REGISTERS)) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE;
        }
        static constexpr Table tables[] = {Table::Coil, Table::DiscreteInput, Table::HoldingRegister,
                                           Table::InputRegister};
        if (std::size_t{address} + count > map.Size(tables[function - 1])) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_ADDRESS;
        }
        return 0;
    }
    case 5: {
        if (length != 5) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE;
        }
        std::uint16_t address = Word(pdu + 1), value = Word(pdu + 3);
        if (address >= map.Size(Table::Coil)) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_ADDRESS;
        }
        if (value != 0xFF00 && value != 0x0000) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE;
        }
        std::uint8_t bit = value == 0xFF00 ? 1 : 0;
        return CheckWrite(Table::Coil, address, 1, &bit, true);
    }
    case 6:
        if (length != 5) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE;
        }
        return CheckWrite(Table::HoldingRegister, Word(pdu + 1), 1, pdu + 3, false);
    case 15:
    case 16: {
        if (length < 6) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE;
        }
        std::uint16_t address = Word(pdu + 1), count = Word(pdu + 3);
        std::size_t bytes = pdu[5];
        bool bits = function == 15;
        if (count < 1 || count > (bits ? MODBUS_MAX_WRITE_BITS : MODBUS_MAX_WRITE_REGISTERS) ||
            bytes != (bits ? (count + 7u) / 8u : 2u * count) || length != 6 + bytes) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE;
        }
        return CheckWrite(bits ? Table::Coil : Table::HoldingRegister, address, count, pdu + 6, bits);
    }
    default:
        return MODBUS_EXCEPTION_ILLEGAL_FUNCTION;
    }
}

std::uint8_t Server::CheckWrite(Table table, std::uint16_t address, std::uint16_t count, const std::uint8_t* data,
                                bool bits)
{
    std::size_t end = std::size_t{address} + count;
    if (end > map.Size(table)) {
        return MODBUS_EXCEPTION_ILLEGAL_DATA_ADDRESS;
    }
    request.clear();
    for (std::size_t at = address; at < end;) {
        auto index = map.ItemAt(table, static_cast<std::uint16_t>(at));
        const MapItem& item = map.Items()[static_cast<std::size_t>(index)];
        // A value is written whole or not at all: a request that starts or ends inside one is refused.
        if (item.start != at || at + item.count > end) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_ADDRESS;
        }
        std::size_t offset = at - address;
        PendingWrite write{static_cast<std::uint32_t>(index), {}};
        std::uint16_t registers[4] = {};
        if (bits) {
            registers[0] = (data[offset / 8] >> (offset % 8)) & 1;
        } else {
            for (std::size_t i = 0; i < item.count; ++i) {
                registers[i] = Word(data + 2 * (offset + i));
            }
        }
        if (!DecodeRegisters(item.type, options.wordOrder, registers, write.value.data())) {
            return MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE;
        }
        request.push_back(write);
        at += item.count;
    }
    std::lock_guard<std::mutex> lock(queueMutex);
    if (queue.size() + request.size() > MaxQueued) {
        return MODBUS_EXCEPTION_SLAVE_OR_SERVER_BUSY;
    }
    queue.insert(queue.end(), request.begin(), request.end());
    writes.fetch_add(request.size(), std::memory_order_relaxed);
    return 0;
}

void Server::BeforeCycle()
{
    {
        std::lock_guard<std::mutex> lock(queueMutex);
        if (queue.empty()) {
            return;
        }
        queue.swap(applying);
    }
    for (const auto& write : applying) {
        const MapItem& item = map.Items()[write.item];
        std::memcpy(item.address, write.value.data(), ValueSize(item.type));
    }
    applying.clear();
}

void Server::AfterCycle()
{
    Snapshot(buffers[back]);
    back = middle.exchange(back | Fresh, std::memory_order_acq_rel) & ~Fresh;
}

void Server::Snapshot(Tables& tables) const
{
    for (const auto& item : map.Items()) {
        switch (item.table) {
        case Table::Coil:
            tables.coils[item.start] = *static_cast<const bool*>(item.address) ? 1 : 0;
            break;
        case Table::DiscreteInput:
            tables.discreteInputs[item.start] = *static_cast<const bool*>(item.address) ? 1 : 0;
            break;
        case Table::InputRegister:
            EncodeRegisters(item.type, item.capacity, item.address, options.wordOrder,
                            tables.inputRegisters.data() + item.start);
            break;
        case Table::HoldingRegister:
            EncodeRegisters(item.type, item.capacity, item.address, options.wordOrder,
                            tables.holdingRegisters.data() + item.start);
            break;
        }
    }
}

Server::Statistics Server::GetStatistics() const noexcept
{
    Statistics statistics;
    statistics.requests = requests.load(std::memory_order_relaxed);
    statistics.exceptions = exceptions.load(std::memory_order_relaxed);
    statistics.writes = writes.load(std::memory_order_relaxed);
    statistics.connections = connections.load(std::memory_order_relaxed);
    statistics.refused = refused.load(std::memory_order_relaxed);
    statistics.dropped = dropped.load(std::memory_order_relaxed);
    return statistics;
}

void WriteStatistics(std::ostream& out, const Server::Statistics& statistics)
{
    out << fmt::format("modbus: {} requests ({} exception answers, {} values written), {} connections, {} refused, "
                       "{} closed for bad frames\n",
                       statistics.requests, statistics.exceptions, statistics.writes, statistics.connections,
                       statistics.refused, statistics.dropped);
}

} // namespace VarnixSim::Modbus
