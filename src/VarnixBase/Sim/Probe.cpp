#include "VarnixBase/Sim/Probe.hpp"

#include <iterator>
#include <mutex>
#include <optional>
#include <typeindex>
#include <typeinfo>
#include <unordered_map>

#include <fmt/format.h>

#include "VarnixBase/Core/PortSystem/AnalogInPort.hpp"
#include "VarnixBase/Core/PortSystem/PnDeviceStatePort.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "Zon/EnumStrings.hpp"

namespace VarnixBase::Sim {

using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Core::QualitySystem::Quality;
using VarnixBase::Core::QualitySystem::QualityFlags;
using VarnixBase::Core::QualitySystem::QualityState;
using Zon::Plc::Commons::Gds::StaticString;

namespace {

template <class T>
std::string ValueText(const T& value)
{
    if constexpr (std::is_same_v<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_same_v<T, signed char> || std::is_same_v<T, unsigned char>) {
        return std::to_string(static_cast<int>(value));
    } else if constexpr (std::is_arithmetic_v<T>) {
        return fmt::format("{}", value);
    } else if constexpr (std::is_same_v<typename T::CharType, char>) {
        return std::string(value.data, value.Size());
    } else {
        return Utf16ToUtf8(value.data, value.Size());
    }
}

template <class T>
TraceColumn ColumnFor(const std::string& name)
{
    TraceColumn column;
    column.name = name;
    if constexpr (std::is_same_v<T, bool>) {
        column.kind = ValueKind::Bool;
        column.bits = 1;
    } else if constexpr (std::is_integral_v<T>) {
        column.kind = std::is_signed_v<T> ? ValueKind::Signed : ValueKind::Unsigned;
        column.bits = static_cast<unsigned>(sizeof(T) * 8);
    } else if constexpr (std::is_floating_point_v<T>) {
        column.kind = ValueKind::Real;
        column.bits = static_cast<unsigned>(sizeof(T) * 8);
    } else {
        column.kind = ValueKind::Text;
        column.bits = 8;
    }
    return column;
}

template <class T>
bool AsNumber(const T& value, long double& number)
{
    if constexpr (std::is_arithmetic_v<T>) {
        number = static_cast<long double>(value);
        return true;
    } else if constexpr (std::is_enum_v<T>) {
        number = static_cast<long double>(static_cast<std::underlying_type_t<T>>(value));
        return true;
    } else {
        (void)value;
        (void)number;
        return false;
    }
}

/// The probe's quality readers for a port of class `P`, which `probe.object` points to.
template <class P>
void AddQualityReaders(const std::shared_ptr<P>& port, PortProbe& probe)
{
    probe.qualityOf = [](void* object, Quality& quality) {
        quality = static_cast<P*>(object)->GetQuality();
        return true;
    };
    std::weak_ptr<P> weak = port;
    probe.quality = [weak](Quality& quality) {
        auto locked = weak.lock();
        if (!locked) {
            return false;
        }
        quality = locked->GetQuality();
        return true;
    };
}

/// The probe's number and quality readers for a port of class `P`: plain functions of the port for
/// checks on every cycle, and the same behind a lock of a weak pointer for everyone else.
template <class P>
void AddCheckReaders(const std::shared_ptr<P>& port, PortProbe& probe, bool withQuality)
{
    probe.object = port.get();
    probe.numberOf = [](void* object, long double& number) {
        return AsNumber(static_cast<P*>(object)->GetValue(), number);
    };
    std::weak_ptr<P> weak = port;
    probe.number = [weak](long double& number) {
        auto locked = weak.lock();
        return locked && AsNumber(locked->GetValue(), number);
    };
    if (withQuality) {
        AddQualityReaders(port, probe);
    }
}

template <class T>
bool TryPlain(const std::shared_ptr<IPort>& port, const std::int64_t*, PortProbe& probe)
{
    auto plain = std::dynamic_pointer_cast<Port<T>>(port);
    if (!plain) {
        return false;
    }
    probe.column = ColumnFor<T>(port->GetName().ToStdString());
    std::weak_ptr<Port<T>> weak = plain;
    probe.read = [weak](TraceSample& sample) {
        if (auto locked = weak.lock()) {
            sample.value = ValueText(locked->GetValue());
        }
    };
    AddCheckReaders(plain, probe, false);
    return true;
}

template <class T>
bool TryQualified(const std::shared_ptr<IPort>& port, const std::int64_t* timestamp, PortProbe& probe)
{
    auto qualified = std::dynamic_pointer_cast<QualifiedPort<T>>(port);
    if (!qualified) {
        return false;
    }
    probe.column = ColumnFor<T>(port->GetName().ToStdString());
    probe.column.hasQuality = true;
    probe.column.hasTimestamp = timestamp != nullptr;
    probe.timestamp = timestamp;
    std::weak_ptr<QualifiedPort<T>> weak = qualified;
    probe.read = [weak, timestamp](TraceSample& sample) {
        if (auto locked = weak.lock()) {
            sample.value = ValueText(locked->GetValue());
            sample.quality = QualityText(locked->GetQuality());
            sample.timestamp = timestamp != nullptr ? *timestamp : 0;
        }
    };
    AddCheckReaders(qualified, probe, true);
    return true;
}

bool TryAnalogIn(const std::shared_ptr<IPort>& port, const std::int64_t*, PortProbe& probe)
{
    auto analog = std::dynamic_pointer_cast<AnalogInPort>(port);
    if (!analog) {
        return false;
    }
    probe.column = ColumnFor<unsigned short>(port->GetName().ToStdString());
    probe.column.hasQuality = true;
    std::weak_ptr<AnalogInPort> weak = analog;
    probe.read = [weak](TraceSample& sample) {
        if (auto locked = weak.lock()) {
            sample.value = ValueText(locked->GetValue());
            sample.quality = QualityText(locked->GetQuality());
        }
    };
    AddCheckReaders(analog, probe, true);
    return true;
}

bool TryDeviceState(const std::shared_ptr<IPort>& port, const std::int64_t*, PortProbe& probe)
{
    auto device = std::dynamic_pointer_cast<PnDeviceStatePort>(port);
    if (!device) {
        return false;
    }
    probe.column = ColumnFor<unsigned char>(port->GetName().ToStdString());
    probe.column.hasQuality = true;
    std::weak_ptr<PnDeviceStatePort> weak = device;
    probe.read = [weak](TraceSample& sample) {
        if (auto locked = weak.lock()) {
            sample.value = std::to_string(static_cast<unsigned>(locked->GetValue()));
            sample.quality = QualityText(locked->GetQuality());
        }
    };
    AddCheckReaders(device, probe, true);
    return true;
}

using ProbeMaker = bool (*)(const std::shared_ptr<IPort>&, const std::int64_t*, PortProbe&);

/// The port classes the simulator knows, in the order they are tried: the first class the port
/// is an instance of makes its probe.
constexpr ProbeMaker ProbeMakers[] = {
    &TryAnalogIn,
    &TryDeviceState,
    &TryPlain<bool>, &TryQualified<bool>,
    &TryPlain<signed char>, &TryQualified<signed char>,
    &TryPlain<unsigned char>, &TryQualified<unsigned char>,
    &TryPlain<short>, &TryQualified<short>,
    &TryPlain<unsigned short>, &TryQualified<unsigned short>,
    &TryPlain<int>, &TryQualified<int>,
    &TryPlain<unsigned int>, &TryQualified<unsigned int>,
    &TryPlain<long>, &TryQualified<long>,
    &TryPlain<unsigned long>, &TryQualified<unsigned long>,
    &TryPlain<float>, &TryQualified<float>,
    &TryPlain<double>, &TryQualified<double>,
    &TryPlain<StaticString<80, char>>, &TryQualified<StaticString<80, char>>,
    &TryPlain<StaticString<512, char>>, &TryQualified<StaticString<512, char>>,
    &TryPlain<StaticString<80, char16_t>>, &TryQualified<StaticString<80, char16_t>>,
    &TryPlain<StaticString<512, char16_t>>, &TryQualified<StaticString<512, char16_t>>,
};
constexpr std::size_t ProbeMakerCount = std::size(ProbeMakers);

/// Which of `ProbeMakers` took a port, by the port's own (most derived) class: whether a cast
/// succeeds depends on that class alone, so the walk down the list is done once per class, and
/// every further port of the class costs one cast. `ProbeMakerCount` means none took it.
class ProbeMakerChoice {
public:
    /// The maker for ports of `type`, or nothing yet known.
    std::optional<std::size_t> Find(const std::type_info& type)
    {
        std::lock_guard guard(lock);
        auto found = chosen.find(std::type_index(type));
        return found != chosen.end() ? std::optional<std::size_t>(found->second) : std::nullopt;
    }

    void Remember(const std::type_info& type, std::size_t maker)
    {
        std::lock_guard guard(lock);
        chosen.emplace(std::type_index(type), maker);
    }

private:
    std::mutex lock;
    std::unordered_map<std::type_index, std::size_t> chosen;
};

ProbeMakerChoice& Choices()
{
    static ProbeMakerChoice choices;
    return choices;
}

/// Tries the makers in order; the index of the one that took the port, or `ProbeMakerCount`.
std::size_t WalkProbeMakers(const std::shared_ptr<IPort>& port, const std::int64_t* timestamp, PortProbe& probe)
{
    for (std::size_t maker = 0; maker < ProbeMakerCount; ++maker) {
        if (ProbeMakers[maker](port, timestamp, probe)) {
            return maker;
        }
    }
    return ProbeMakerCount;
}

} // namespace

std::string QualityText(const Quality& quality)
{
    std::string text;
    if (auto found = Zon::EnumStrings<QualityState>::Values.find(quality.state);
        found != Zon::EnumStrings<QualityState>::Values.end()) {
        text = found->second;
    } else {
        text = std::to_string(static_cast<unsigned>(quality.state));
    }
    auto flags = static_cast<std::uint32_t>(quality.flags);
    std::string names;
    for (std::uint32_t bit = 1; bit != 0; bit <<= 1) {
        if ((flags & bit) == 0) {
            continue;
        }
        auto found = Zon::EnumStrings<QualityFlags>::Values.find(static_cast<QualityFlags>(bit));
        if (found != Zon::EnumStrings<QualityFlags>::Values.end()) {
            if (!names.empty()) {
                names += '|';
            }
            names += found->second;
            flags &= ~bit;
        }
    }
    if (flags != 0) {
        if (!names.empty()) {
            names += '|';
        }
        names += fmt::format("0x{:x}", flags);
    }
    return names.empty() ? text : fmt::format("{} {}", text, names);
}

std::string Utf16ToUtf8(const char16_t* units, std::size_t count)
{
    std::string out;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t code = units[i];
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < count && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
            code = 0x10000 + ((code - 0xD800) << 10) + (units[i + 1] - 0xDC00);
            ++i;
        } else if (code >= 0xD800 && code <= 0xDFFF) {
            code = 0xFFFD;
        }
        if (code < 0x80) {
            out += static_cast<char>(code);
        } else if (code < 0x800) {
            out += static_cast<char>(0xC0 | (code >> 6));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += static_cast<char>(0xE0 | (code >> 12));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (code >> 18));
            out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
        }
    }
    return out;
}

std::u16string Utf8ToUtf16(const std::string& text)
{
    std::u16string out;
    for (std::size_t i = 0; i < text.size();) {
        auto byte = static_cast<unsigned char>(text[i]);
        std::uint32_t code = 0xFFFD;
        std::size_t length = 1;
        if (byte < 0x80) {
            code = byte;
        } else if ((byte >> 5) == 0x6 && i + 1 < text.size()) {
            code = ((byte & 0x1F) << 6) | (static_cast<unsigned char>(text[i + 1]) & 0x3F);
            length = 2;
        } else if ((byte >> 4) == 0xE && i + 2 < text.size()) {
            code = ((byte & 0x0F) << 12) | ((static_cast<unsigned char>(text[i + 1]) & 0x3F) << 6) |
                   (static_cast<unsigned char>(text[i + 2]) & 0x3F);
            length = 3;
        } else if ((byte >> 3) == 0x1E && i + 3 < text.size()) {
            code = ((byte & 0x07) << 18) | ((static_cast<unsigned char>(text[i + 1]) & 0x3F) << 12) |
                   ((static_cast<unsigned char>(text[i + 2]) & 0x3F) << 6) |
                   (static_cast<unsigned char>(text[i + 3]) & 0x3F);
            length = 4;
        }
        if (code >= 0x10000) {
            code -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (code >> 10));
            out += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        } else {
            out += static_cast<char16_t>(code);
        }
        i += length;
    }
    return out;
}

PortProbe MakeProbe(const std::shared_ptr<IPort>& port, const std::int64_t* timestamp)
{
    PortProbe probe;
    const std::type_info& type = typeid(*port);
    std::size_t maker = ProbeMakerCount;
    if (auto known = Choices().Find(type)) {
        maker = *known;
        if (maker < ProbeMakerCount && !ProbeMakers[maker](port, timestamp, probe)) {
            maker = WalkProbeMakers(port, timestamp, probe); // cannot happen: the class decides
        }
    } else {
        maker = WalkProbeMakers(port, timestamp, probe);
        Choices().Remember(type, maker);
    }
    if (maker < ProbeMakerCount) {
        return probe;
    }
    probe.column.name = port->GetName().ToStdString();
    probe.column.kind = ValueKind::Text;
    probe.column.hasQuality = true;
    std::weak_ptr<IPort> weak = port;
    probe.read = [weak](TraceSample& sample) {
        if (auto locked = weak.lock()) {
            sample.value.assign(1, '?');
            sample.quality = QualityText(locked->GetQuality());
        }
    };
    probe.object = port.get();
    AddQualityReaders(port, probe);
    return probe;
}

} // namespace VarnixBase::Sim
