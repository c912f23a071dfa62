#include "VarnixBase/Commons/Meta/DataAccessValue.hpp"

#include <cstddef>
#include <cstring>

#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "Zon/Plc/Commons/Gds/StaticStringBase.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"

namespace VarnixBase::Commons::Meta {

using Zon::Plc::Commons::Gds::StaticStringBase;

namespace {

/// The text of a fixed string as a `String`, read through its 8-bit view. The text ends at its
/// first zero byte; a buffer of `byteCount` bytes without one is taken whole rather than read past
/// its end.
Zon::String ReadText(const char* data, std::size_t byteCount)
{
    if (std::memchr(data, 0, byteCount) != nullptr) {
        return StaticStringBase::ConvertStaticString(data);
    }
    return Zon::String(data, byteCount);
}

template <class C>
void AssignText(Gds::StaticStringAdapter<C>& destination, const Gds::StaticStringAdapter<C>& source)
{
    // The source is read through its 8-bit view for both widths, so a string of 16-bit units
    // gives the bytes of its units up to the first zero byte.
    const std::size_t sourceBytes = (static_cast<std::size_t>(source.GetCapacity()) + 1) * sizeof(C);
    Zon::String text = ReadText(source.GetData(), sourceBytes);
    std::uint16_t length = 0;
    if constexpr (std::is_same_v<C, char>) {
        length = StaticStringBase::AssignStaticString(destination.GetData(), destination.GetCapacity(), text);
    } else {
        length = StaticStringBase::AssignStaticString(destination.GetData16(), destination.GetCapacity(), text);
    }
    destination.length = length;
}

void AssignStringPort(Example::StringPort_s& destination, const Example::StringPort_s& source)
{
    constexpr std::size_t bufferSize = sizeof(source.text.data);
    const char* text = source.text.GetData();
    // The text's length up to its first zero byte, within the 81 bytes of the buffer.
    const std::size_t textLength = strnlen(text, bufferSize);
    const std::uint16_t capacity = destination.text.capacity;
    const std::size_t length =
        capacity > static_cast<std::uint16_t>(textLength) ? textLength : static_cast<std::size_t>(capacity);
    char* buffer = destination.text.GetData();
    std::memset(buffer, 0, bufferSize);
    destination.text.length = static_cast<std::uint16_t>(length);
    if (length != 0) {
        // A capacity field larger than the buffer cannot make the copy leave it: the length is at
        // most the source text's, which the buffer bounds.
        std::memmove(buffer, text, length < bufferSize ? length : bufferSize);
    }
    destination.code = source.code;
    destination.state = source.state;
}

} // namespace

template <class T>
DataAccessValue<T>::DataAccessValue(const Zon::String& variablePath)
{
    auto info = MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(variablePath);
    dataPointer = static_cast<T*>(info.address);
}

template <class T>
void DataAccessValue<T>::CheckAddress() const
{
    if (dataPointer == nullptr) {
        throw Zon::System::Commons::InvalidOperationException("Value access without a variable address");
    }
}

template <class T>
const T& DataAccessValue<T>::Get() const
{
    CheckAddress();
    return *dataPointer;
}

template <class T>
void DataAccessValue<T>::Set(T const& value)
{
    CheckAddress();
    if constexpr (std::is_same_v<T, Gds::StaticStringAdapter<char>> || std::is_same_v<T, Gds::StaticStringAdapter<char16_t>>) {
        AssignText(*dataPointer, value);
    } else if constexpr (std::is_same_v<T, Example::StringPort_s>) {
        AssignStringPort(*dataPointer, value);
    } else {
        *dataPointer = value;
    }
}

template class DataAccessValue<bool>;
template class DataAccessValue<signed char>;
template class DataAccessValue<unsigned char>;
template class DataAccessValue<short>;
template class DataAccessValue<unsigned short>;
template class DataAccessValue<int>;
template class DataAccessValue<unsigned int>;
template class DataAccessValue<long>;
template class DataAccessValue<unsigned long>;
template class DataAccessValue<float>;
template class DataAccessValue<double>;
template class DataAccessValue<Gds::StaticStringAdapter<char>>;
template class DataAccessValue<Gds::StaticStringAdapter<char16_t>>;
template class DataAccessValue<Example::StringPort_s>;

} // namespace VarnixBase::Commons::Meta
