#include "ModbusCommand.hpp"

#include <fmt/format.h>

#include "VarnixBase/Sim/Stimulus.hpp"

namespace VarnixSim::Modbus {

ServedRun::ServedRun(const Simulation& simulation, const ServeArguments& arguments)
    : map(BuildAddressMap(simulation))
{
    options.endpoint = ParseEndpoint(arguments.endpoint);
    if (arguments.unitId < 1 || arguments.unitId > 255) {
        throw UsageError(fmt::format("--unit-id {}: expected a unit id from 1 to 255", arguments.unitId));
    }
    options.unitId = static_cast<std::uint8_t>(arguments.unitId);
    if (!TryParseWordOrder(arguments.wordOrder, options.wordOrder)) {
        throw UsageError(fmt::format("--word-order {}: expected big (most significant word first) or little",
                                     arguments.wordOrder));
    }
    server = std::make_unique<Server>(map, options);
}

ServedRun::~ServedRun() = default;

void ServedRun::Start(std::ostream& notice)
{
    notice << fmt::format("varnix-sim: serving Modbus TCP on {}:{} as unit {}, {} items ({} coils, {} discrete "
                          "inputs, {} input registers, {} holding registers); varnix-sim map shows them\n",
                          options.endpoint.host, server->GetPort(), options.unitId, map.Items().size(),
                          map.Size(Table::Coil), map.Size(Table::DiscreteInput), map.Size(Table::InputRegister),
                          map.Size(Table::HoldingRegister))
           << std::flush;
    server->Start();
}

void ServedRun::Attach(Simulation::RunOptions& run)
{
    Server* serving = server.get();
    run.beforeCycle = [serving](std::uint64_t) { serving->BeforeCycle(); };
    run.afterCycle = [serving](std::uint64_t) { serving->AfterCycle(); };
}

void ServedRun::Finish(std::ostream& summary)
{
    server->Stop();
    WriteStatistics(summary, server->GetStatistics());
}

void PrintMap(const Simulation& simulation, const std::string& format, std::ostream& out, std::ostream& notes)
{
    MapFormat chosen = MapFormat::Table;
    if (!TryParseMapFormat(format, chosen)) {
        throw UsageError(fmt::format("--format {}: expected table or csv", format));
    }
    auto map = BuildAddressMap(simulation);
    WriteMap(out, map, chosen);
    if (chosen == MapFormat::Csv) {
        for (const auto& skipped : map.Skipped()) {
            notes << fmt::format("varnix-sim: not served: {}\n", skipped);
        }
    }
}

} // namespace VarnixSim::Modbus
