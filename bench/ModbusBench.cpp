// The simulator's Modbus TCP server under load: read requests of 125 registers per second for 0, 1
// and 8 clients on loopback while the program cycles every 1 ms in real time, and the lateness of
// the cycle starts meanwhile (p50, p99, max, overruns). Clients are libmodbus clients, each on a
// thread of its own, each sending its next request when the answer to the last has come.
//
// The baseline is the same traffic without the server: a thread that answers every 12-byte request
// with 259 bytes on a loopback connection, which is what the operating system alone costs.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <benchmark/benchmark.h>
#include <modbus/modbus.h>

#include "ModbusServer.hpp"
#include "VarnixBase/Sim/Simulation.hpp"

namespace {

using namespace VarnixBase::Sim;
namespace Modbus = VarnixSim::Modbus;
using Clock = std::chrono::steady_clock;

constexpr int Registers = 125;
constexpr auto Duration = std::chrono::seconds(2);

/// 130 16-bit outputs: 130 input registers, of which a client reads 125 at a time.
std::filesystem::path WriteDocument()
{
    auto directory = std::filesystem::temp_directory_path() / ("varnix-modbus-bench-" + std::to_string(::getpid()));
    std::filesystem::create_directories(directory);
    auto path = directory / "Wide.prog.config";
    std::ofstream out(path);
    out << "<?xml version=\"1.0\"?>\n<ConfigurableProgram>\n  <Program type=\"Wide\">\n    <Ports>\n";
    for (int i = 0; i < 130; ++i) {
        out << "      <Port name=\"p" << i << "\" type=\"int16\" attributes=\"Output\"/>\n";
    }
    out << "    </Ports>\n  </Program>\n</ConfigurableProgram>\n";
    return path;
}

/// Clients reading 125 input registers in a loop until `stop`; returns the answers they got.
std::uint64_t RunClients(int count, std::uint16_t port, const std::atomic<bool>& stop, bool& failed)
{
    std::atomic<std::uint64_t> reads{0};
    std::atomic<bool> error{false};
    std::vector<std::thread> threads;
    for (int k = 0; k < count; ++k) {
        threads.emplace_back([&] {
            modbus_t* client = modbus_new_tcp("127.0.0.1", port);
            modbus_set_response_timeout(client, 2, 0);
            if (modbus_connect(client) != 0) {
                error = true;
                modbus_free(client);
                return;
            }
            std::uint16_t registers[Registers];
            std::uint64_t mine = 0;
            while (!stop.load(std::memory_order_relaxed)) {
                if (modbus_read_input_registers(client, 0, Registers, registers) != Registers) {
                    error = true;
                    break;
                }
                ++mine;
            }
            reads += mine;
            modbus_close(client);
            modbus_free(client);
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    failed = error;
    return reads;
}

double Percentile(std::vector<double> samples, double fraction)
{
    if (samples.empty()) {
        return 0;
    }
    std::sort(samples.begin(), samples.end());
    auto index = static_cast<std::size_t>(fraction * static_cast<double>(samples.size() - 1));
    return samples[index];
}

void BM_ModbusReads125(benchmark::State& state)
{
    const int clients = static_cast<int>(state.range(0));
    auto document = WriteDocument();
    for (auto _ : state) {
        SimulationOptions options;
        options.document = document.string();
        options.consoleLevel.reset();
        options.realTime = true;
        Simulation simulation(options);
        auto map = Modbus::BuildAddressMap(simulation);
        Modbus::ServerOptions serverOptions;
        serverOptions.endpoint.port = 0;
        Modbus::Server server(map, serverOptions);
        server.Start();

        std::atomic<bool> stop{false};
        std::vector<double> lateness;
        lateness.reserve(20000);
        Simulation::Summary summary;
        std::thread cycles([&] {
            Simulation::RunOptions run;
            run.cycles = 0;
            run.cycleTime = std::chrono::microseconds(1000);
            run.beforeCycle = [&server](std::uint64_t) { server.BeforeCycle(); };
            run.afterCycle = [&server](std::uint64_t) { server.AfterCycle(); };
            run.stop = &stop;
            run.lateness = &lateness;
            summary = simulation.Run(run);
        });
        std::atomic<bool> clientsStop{false};
        bool failed = false;
        std::uint64_t reads = 0;
        auto started = Clock::now();
        std::thread timer([&] {
            std::this_thread::sleep_for(Duration);
            clientsStop = true;
        });
        if (clients > 0) {
            reads = RunClients(clients, server.GetPort(), clientsStop, failed);
        }
        timer.join();
        double seconds = std::chrono::duration<double>(Clock::now() - started).count();
        stop = true;
        cycles.join();
        server.Stop();
        state.SetIterationTime(seconds);
        if (failed) {
            state.SkipWithError("a client's request failed");
            break;
        }
        state.counters["reads_per_s"] = static_cast<double>(reads) / seconds;
        state.counters["cycles"] = static_cast<double>(summary.cycles);
        state.counters["overruns"] = summary.realTime ? static_cast<double>(summary.realTime->overruns) : 0;
        state.counters["lateness_p50_us"] = Percentile(lateness, 0.50);
        state.counters["lateness_p99_us"] = Percentile(lateness, 0.99);
        state.counters["lateness_max_us"] = summary.realTime ? summary.realTime->maximum : 0;
    }
    std::filesystem::remove_all(document.parent_path());
}
BENCHMARK(BM_ModbusReads125)->Arg(0)->Arg(1)->Arg(8)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

/// The same request and answer sizes on loopback, answered by a thread that only echoes lengths.
void BM_ModbusReads125_Baseline(benchmark::State& state)
{
    const int clients = static_cast<int>(state.range(0));
    int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 || ::listen(listener, 16) != 0 ||
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        state.SkipWithError("cannot listen on loopback");
        ::close(listener);
        return;
    }
    std::vector<std::thread> answering;
    for (int k = 0; k < clients; ++k) {
        answering.emplace_back([listener] {
            int s = ::accept(listener, nullptr, nullptr);
            int yes = 1;
            ::setsockopt(s, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
            unsigned char request[12], answer[9 + 2 * Registers] = {};
            while (::recv(s, request, sizeof(request), MSG_WAITALL) == static_cast<ssize_t>(sizeof(request))) {
                answer[0] = request[0];
                answer[1] = request[1];
                answer[5] = 3 + 2 * Registers;
                answer[6] = request[6];
                answer[7] = 4;
                answer[8] = 2 * Registers;
                if (::send(s, answer, sizeof(answer), MSG_NOSIGNAL) != static_cast<ssize_t>(sizeof(answer))) {
                    break;
                }
            }
            ::close(s);
        });
    }
    for (auto _ : state) {
        std::atomic<bool> stop{false};
        bool failed = false;
        auto started = Clock::now();
        std::thread timer([&] {
            std::this_thread::sleep_for(Duration);
            stop = true;
        });
        auto reads = RunClients(clients, ntohs(address.sin_port), stop, failed);
        timer.join();
        double seconds = std::chrono::duration<double>(Clock::now() - started).count();
        state.SetIterationTime(seconds);
        if (failed) {
            state.SkipWithError("a request failed");
            break;
        }
        state.counters["reads_per_s"] = static_cast<double>(reads) / seconds;
    }
    for (auto& thread : answering) {
        thread.join();
    }
    ::close(listener);
}
BENCHMARK(BM_ModbusReads125_Baseline)->Arg(1)->Arg(8)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

} // namespace
