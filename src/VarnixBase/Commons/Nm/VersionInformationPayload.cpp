#include "VarnixBase/Commons/Nm/VersionInformationPayload.hpp"

#include <cstdint>

#include "Zon/System/Commons/InvalidCastException.hpp"
#include "Zon/System/Nm/RscVariant.hpp"

namespace VarnixBase::Commons::Nm {

using Zon::System::Nm::RscType;
using Zon::System::Nm::RscVariant;

/// The index of each field in the generic payload. The members are listed Minor first; the
/// fields themselves are added Major first, and that order numbers them in the format string.
struct VersionInformationPayload::Impl {
    std::size_t indexMinor;
    std::size_t indexMajor;
    std::size_t indexPatch;
    std::size_t indexBuild;
    std::size_t indexState;
};

namespace {
RscVariant<512> Uint16Variant(unsigned short value)
{
    RscVariant<512> variant;
    variant.SetValue<std::uint16_t>(value, RscType::Uint16);
    return variant;
}
} // namespace

VersionInformationPayload::VersionInformationPayload(const unsigned short& major, const unsigned short& minor,
                                                     const unsigned short& patch, const unsigned short& build,
                                                     const std::string& state)
    : SpecializedPayload("Version: {0}.{1}.{2}.{3}-{4}"), impl(new Impl{})
{
    auto& payload = GetGenericPayload();
    impl->indexMajor = payload.AddField(RscType::Uint16);
    impl->indexMinor = payload.AddField(RscType::Uint16);
    impl->indexPatch = payload.AddField(RscType::Uint16);
    impl->indexBuild = payload.AddField(RscType::Uint16);
    impl->indexState = payload.AddField(RscType::String);

    payload.SetFieldValue(impl->indexMajor, Uint16Variant(major));
    payload.SetFieldValue(impl->indexMinor, Uint16Variant(minor));
    payload.SetFieldValue(impl->indexPatch, Uint16Variant(patch));
    payload.SetFieldValue(impl->indexBuild, Uint16Variant(build));
    payload.SetFieldValue<std::string>(impl->indexState, state);
}

VersionInformationPayload::VersionInformationPayload(const Zon::BasicVersion& version)
    : VersionInformationPayload(static_cast<unsigned short>(version.GetMajor()),
                                static_cast<unsigned short>(version.GetMinor()),
                                static_cast<unsigned short>(version.GetPatch()),
                                static_cast<unsigned short>(version.GetBuild() & 0xFFFFu),
                                version.GetState().ToStdString())
{
}

VersionInformationPayload::~VersionInformationPayload() = default;

VersionInformationPayload::VersionInformationPayload(const VersionInformationPayload& other)
    : SpecializedPayload(other), impl(new Impl(*other.impl))
{
}

VersionInformationPayload& VersionInformationPayload::operator=(const VersionInformationPayload& other)
{
    if (this != &other) {
        auto copy = std::make_unique<Impl>(*other.impl);
        SpecializedPayload::operator=(other);
        impl = std::move(copy);
    }
    return *this;
}

unsigned short VersionInformationPayload::GetNumber(std::size_t index) const
{
    const RscVariant<512>& value = GetGenericPayload().GetFieldValue(index);
    switch (value.GetType()) {
    case RscType::None:
        return 0;
    case RscType::Uint16:
        return value.GetValue<std::uint16_t>();
    default:
        throw Zon::System::Commons::InvalidCastException(
            "Cannot copy value to argument: RscVariant contains data type {0} but arg is of type {1}", value.GetType(),
            RscType::Uint16);
    }
}

unsigned short VersionInformationPayload::GetVersionMajor() const
{
    return GetNumber(impl->indexMajor);
}

unsigned short VersionInformationPayload::GetVersionMinor() const
{
    return GetNumber(impl->indexMinor);
}

unsigned short VersionInformationPayload::GetVersionPatch() const
{
    return GetNumber(impl->indexPatch);
}

unsigned short VersionInformationPayload::GetVersionBuild() const
{
    return GetNumber(impl->indexBuild);
}

std::string VersionInformationPayload::GetVersionState() const
{
    const RscVariant<512>& value = GetGenericPayload().GetFieldValue(impl->indexState);
    switch (value.GetType()) {
    case RscType::None:
        return std::string();
    case RscType::String:
    case RscType::AnsiString:
    case RscType::Utf8String:
        return value.GetText();
    default:
        throw Zon::System::Commons::InvalidCastException("Cannot convert to string: RscVariant is of type {0}",
                                                         value.GetType());
    }
}

} // namespace VarnixBase::Commons::Nm
