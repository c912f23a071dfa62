#include "Zon/System/Nm/GenericPayload.hpp"

#include <fmt/args.h>
#include <fmt/format.h>

#include "Zon/System/Commons/IndexOutOfRangeException.hpp"

namespace Zon::System::Nm {

struct GenericPayload::Impl {
    PayloadTypeId id;
    String name;
    std::vector<RscType> declaredTypes;
    RawPayloadType values;

    const RscVariant<512>& Value(std::size_t index) const
    {
        if (index >= values.size()) {
            throw Commons::IndexOutOfRangeException(
                "Payload field index {0} is out of range, the payload has {1} fields.", index, values.size());
        }
        return values[index];
    }
};

namespace {
constexpr std::size_t FormatStringIndex = 0;
} // namespace

GenericPayload::GenericPayload(PayloadTypeId id, const String& name) : impl(std::make_unique<Impl>())
{
    impl->id = id;
    impl->name = name;
    impl->declaredTypes.push_back(RscType::String);
    impl->values.emplace_back();
}

GenericPayload::~GenericPayload() = default;

GenericPayload::GenericPayload(const GenericPayload& other) : impl(std::make_unique<Impl>(*other.impl)) {}

GenericPayload& GenericPayload::operator=(const GenericPayload& other)
{
    if (this != &other) {
        impl = std::make_unique<Impl>(*other.impl);
    }
    return *this;
}

GenericPayload::GenericPayload(GenericPayload&& other) noexcept = default;
GenericPayload& GenericPayload::operator=(GenericPayload&& other) noexcept = default;

PayloadTypeId GenericPayload::GetId() const noexcept
{
    return impl->id;
}

const String& GenericPayload::GetName() const noexcept
{
    return impl->name;
}

std::size_t GenericPayload::AddField(RscType type)
{
    impl->declaredTypes.push_back(type);
    impl->values.emplace_back();
    return impl->values.size() - 1;
}

std::size_t GenericPayload::GetFieldIndexFormatString() const noexcept
{
    return FormatStringIndex;
}

std::size_t GenericPayload::GetFieldCount() const noexcept
{
    return impl->values.size();
}

RscType GenericPayload::GetFieldType(std::size_t index) const
{
    impl->Value(index);
    return impl->declaredTypes[index];
}

void GenericPayload::SetFieldValue(std::size_t index, const RscVariant<512>& value)
{
    impl->Value(index);
    RscVariant<512>& field = impl->values[index];
    field = value;
    RscType declared = impl->declaredTypes[index];
    if (value.GetType() == RscType::StdString && IsZeroTerminatedString(declared)) {
        field.SetType(declared);
    }
}

template <>
void GenericPayload::SetFieldValue<std::string>(std::size_t index, const std::string& value)
{
    RscVariant<512> variant;
    variant.SetText(value, RscType::StdString);
    SetFieldValue(index, variant);
}

const RscVariant<512>& GenericPayload::GetFieldValue(std::size_t index) const
{
    return impl->Value(index);
}

const RawPayloadType& GenericPayload::GetAsRawPayloadType() const noexcept
{
    return impl->values;
}

String GenericPayload::ToString() const
{
    const RscVariant<512>& format = impl->values[FormatStringIndex];
    if (!IsZeroTerminatedString(format.GetType()) && format.GetType() != RscType::StdString) {
        return String();
    }
    std::string formatText = format.GetText();
    fmt::dynamic_format_arg_store<fmt::format_context> arguments;
    for (std::size_t index = FormatStringIndex + 1; index < impl->values.size(); ++index) {
        const RscVariant<512>& value = impl->values[index];
        RscType type = value.GetType();
        if (type == RscType::Uint16) {
            arguments.push_back(value.GetValue<std::uint16_t>());
        } else if (type == RscType::StdString || IsZeroTerminatedString(type)) {
            arguments.push_back(value.GetText());
        } else {
            arguments.push_back(std::string());
        }
    }
    try {
        return String(fmt::vformat(formatText, arguments));
    } catch (const fmt::format_error&) {
        return String(std::move(formatText));
    }
}

} // namespace Zon::System::Nm
