#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "VarnixBase/Sim/Trace.hpp"
#include "VarnixBase/Core/PortSystem/IPort.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"

namespace VarnixBase::Sim {

/// Reads one port for the trace: its value, and for qualified and device ports its quality (and
/// for qualified ports its time stamp), through the port's own operations.
struct PortProbe {
    TraceColumn column;
    std::function<void(TraceSample&)> read;
    /// For checks that must not format text: the value as a number (false for text ports and ports
    /// the simulator does not know; `long double` holds every 64-bit integer exactly), and the quality
    /// (false for ports without one). Both are false once the port is gone.
    std::function<bool(long double&)> number;
    std::function<bool(VarnixBase::Core::QualitySystem::Quality&)> quality;
    /// The same two readers as plain functions of the port, for checks made on every cycle: no call
    /// through `std::function`, no lock of a weak pointer, nothing allocated. `object` is the port
    /// as its own class and is valid only while the port lives, so whoever calls them holds the port
    /// (`Simulation::GetPorts`) for as long. Null where `number` or `quality` is empty.
    void* object = nullptr;
    bool (*numberOf)(void* object, long double& number) = nullptr;
    bool (*qualityOf)(void* object, VarnixBase::Core::QualitySystem::Quality& quality) = nullptr;
    /// The published time stamp of a qualified port (what `read` puts into `TraceSample::timestamp`),
    /// or null.
    const std::int64_t* timestamp = nullptr;
};

/// A probe for any port the library's factory makes. A port of a class the simulator does not know
/// (an application's own) is traced by its quality only, with the value "?". `timestamp` is the
/// address of a qualified port's published time stamp (resolved by path, "App/Main.level.Timestamp"),
/// or null.
PortProbe MakeProbe(const std::shared_ptr<VarnixBase::Core::PortSystem::IPort>& port,
                    const std::int64_t* timestamp = nullptr);

/// "Good", or the state followed by the named flags, e.g. "Bad Overrange", "Invalid WireBreak|Failure";
/// flags without a name are written as one hexadecimal number.
std::string QualityText(const VarnixBase::Core::QualitySystem::Quality& quality);

/// The value of a fixed string as UTF-8 text (16-bit units are taken as UTF-16).
std::string Utf16ToUtf8(const char16_t* units, std::size_t count);
std::u16string Utf8ToUtf16(const std::string& text);

} // namespace VarnixBase::Sim
