#include "VarnixBase/Example/DemoStringConnector.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace VarnixBase::Example {

DemoStringConnector::DemoStringConnector(const Zon::String& name, const Zon::String& startPath,
                                         const Zon::String& endPath)
    : ConnectorBase(name, startPath, endPath)
{
}

DemoStringConnector::~DemoStringConnector() = default;

void DemoStringConnector::Execute()
{
    const StringPort_s& input = *source.GetDataPointer();
    Commons::Gds::StaticStringAdapter<char>& output = *destination.GetDataPointer();

    // The source text up to its first zero byte, within its 81-byte buffer.
    const char* text = input.text.GetData();
    const std::size_t textLength = strnlen(text, sizeof(input.text.data));

    const std::uint16_t capacity = output.GetCapacity();
    const std::uint16_t length =
        capacity < static_cast<std::uint16_t>(textLength) ? capacity : static_cast<std::uint16_t>(textLength);
    output.length = length;

    // Only the first eight bytes are cleared; the buffer holds capacity + 1 bytes.
    char* data = output.GetData();
    const std::size_t bufferSize = static_cast<std::size_t>(capacity) + 1;
    std::memset(data, 0, bufferSize < 8 ? bufferSize : 8);
    if (length != 0) {
        std::memmove(data, text, length);
    }
    changed(*this);
}

} // namespace VarnixBase::Example
