#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "ModbusServer.hpp"
#include "VarnixBase/Sim/Simulation.hpp"

namespace VarnixSim::Modbus {

/// The command line's wishes for serving a run: `--modbus [HOST:]PORT`, `--unit-id N`,
/// `--word-order big|little`.
struct ServeArguments {
    std::string endpoint;
    unsigned unitId = 1;
    std::string wordOrder = "big";
};

/// `run ... --modbus`: builds the program's address map, listens, and serves from before the
/// first cycle to after the last. Throws `UsageError` for bad arguments or an address that cannot
/// be bound, before any cycle runs.
class ServedRun {
public:
    ServedRun(const Simulation& simulation, const ServeArguments& arguments);
    ~ServedRun();

    /// Writes where it listens ("serving Modbus TCP on 127.0.0.1:5020 ..."), then serves.
    void Start(std::ostream& notice);
    /// Hooks the server into a run: writes before each cycle, the snapshot after it.
    void Attach(Simulation::RunOptions& run);
    /// Stops serving and writes the server's line of the summary.
    void Finish(std::ostream& summary);

private:
    AddressMap map;
    ServerOptions options;
    std::unique_ptr<Server> server;
};

/// `map DOCUMENT [--format table|csv]`: builds the program without running it and prints its
/// address map; ports the map has no place for are named on `notes`.
void PrintMap(const Simulation& simulation, const std::string& format, std::ostream& out, std::ostream& notes);

} // namespace VarnixSim::Modbus
