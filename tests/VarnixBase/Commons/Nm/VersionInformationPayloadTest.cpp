#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Nm/VersionInformationPayload.hpp"
#include "VarnixBase/Core/Info/Info.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/InvalidCastException.hpp"
#include "Zon/System/Nm/SpecializedPayloadHelper.hpp"

using VarnixBase::Commons::Nm::VersionInformationPayload;
using Zon::System::Nm::RscType;
using Zon::System::Nm::RscVariant;

namespace {

const char* const PayloadName = "VarnixBase::Commons::Nm::VersionInformationPayload";

// Payload field numbers: the format string is field 0, Major to State follow in the order they
// were added.
constexpr std::size_t MajorField = 1;
constexpr std::size_t MinorField = 2;
constexpr std::size_t PatchField = 3;
constexpr std::size_t BuildField = 4;
constexpr std::size_t StateField = 5;

/// Lets a test put other values into the fields, the way a receiver might see them.
class TamperedPayload : public VersionInformationPayload {
public:
    using VersionInformationPayload::VersionInformationPayload;

    void Set(std::size_t field, const RscVariant<512>& value) { GetGenericPayload().SetFieldValue(field, value); }
    void Clear(std::size_t field) { Set(field, RscVariant<512>()); }
};

RscVariant<512> Text(const char* text, RscType type)
{
    RscVariant<512> variant;
    variant.SetText(text, type);
    return variant;
}

RscVariant<512> Number(std::uint16_t value)
{
    RscVariant<512> variant;
    variant.SetValue(value, RscType::Uint16);
    return variant;
}

} // namespace

TEST(VersionInformationPayload, PayloadOf1711AndEmptyStateGivesItsValuesAndText)
{
    VersionInformationPayload payload(1, 7, 1, 1, "");
    EXPECT_EQ(payload.GetVersionMajor(), 1);
    EXPECT_EQ(payload.GetVersionMinor(), 7);
    EXPECT_EQ(payload.GetVersionPatch(), 1);
    EXPECT_EQ(payload.GetVersionBuild(), 1);
    EXPECT_EQ(payload.GetVersionState(), "");
    EXPECT_EQ(payload.ToString(), "Version: 1.7.1.1-");
}

TEST(VersionInformationPayload, GettersReadMajorMinorPatchBuildInPayloadOrder)
{
    VersionInformationPayload payload(11, 22, 33, 44, "rc");
    EXPECT_EQ(payload.GetVersionMajor(), 11);
    EXPECT_EQ(payload.GetVersionMinor(), 22);
    EXPECT_EQ(payload.GetVersionPatch(), 33);
    EXPECT_EQ(payload.GetVersionBuild(), 44);

    const auto& raw = payload.GetAsRawPayloadType();
    ASSERT_EQ(raw.size(), 6u);
    EXPECT_EQ(raw[0].GetText(), "Version: {0}.{1}.{2}.{3}-{4}");
    EXPECT_EQ(raw[MajorField].GetValue<std::uint16_t>(), 11);
    EXPECT_EQ(raw[MinorField].GetValue<std::uint16_t>(), 22);
    EXPECT_EQ(raw[PatchField].GetValue<std::uint16_t>(), 33);
    EXPECT_EQ(raw[BuildField].GetValue<std::uint16_t>(), 44);
    EXPECT_EQ(raw[StateField].GetText(), "rc");
    EXPECT_EQ(payload.ToString(), "Version: 11.22.33.44-rc");
}

TEST(VersionInformationPayload, FieldsAreDeclaredAsNumbersAndAString)
{
    VersionInformationPayload payload(1, 2, 3, 4, "beta");
    const auto& raw = payload.GetAsRawPayloadType();
    for (std::size_t field : {MajorField, MinorField, PatchField, BuildField}) {
        EXPECT_EQ(raw[field].GetType(), RscType::Uint16) << field;
    }
    // The state was handed over as a std::string and is held under the field's declared tag.
    EXPECT_EQ(raw[StateField].GetType(), RscType::String);
    EXPECT_EQ(payload.GetVersionState(), "beta");
}

TEST(VersionInformationPayload, NumbersUseTheFull16Bits)
{
    VersionInformationPayload payload(65535, 256, 0, 40000, "x");
    EXPECT_EQ(payload.GetVersionMajor(), 65535);
    EXPECT_EQ(payload.GetVersionMinor(), 256);
    EXPECT_EQ(payload.GetVersionPatch(), 0);
    EXPECT_EQ(payload.GetVersionBuild(), 40000);
    EXPECT_EQ(payload.ToString(), "Version: 65535.256.0.40000-x");
}

TEST(VersionInformationPayload, BuiltFromABasicVersionTakesItsNumbersAndStateButNotItsName)
{
    VersionInformationPayload payload(Zon::BasicVersion("Firmware", 2, 255, 9, 123, "beta"));
    EXPECT_EQ(payload.GetVersionMajor(), 2);
    EXPECT_EQ(payload.GetVersionMinor(), 255);
    EXPECT_EQ(payload.GetVersionPatch(), 9);
    EXPECT_EQ(payload.GetVersionBuild(), 123);
    EXPECT_EQ(payload.GetVersionState(), "beta");
    EXPECT_EQ(payload.ToString(), "Version: 2.255.9.123-beta");
}

TEST(VersionInformationPayload, ToStringOfThePayloadOfTheLibrarysVersion)
{
    VersionInformationPayload payload(VarnixBase::Core::Info::GetVersion());
    EXPECT_EQ(payload.ToString(), "Version: 1.7.1.1-");
}

TEST(VersionInformationPayload, BuildAbove65535IsCutToItsLow16Bits)
{
    VersionInformationPayload payload(Zon::BasicVersion("v", 1, 0, 0, 0x12345u, ""));
    EXPECT_EQ(payload.GetVersionBuild(), 0x2345);
    VersionInformationPayload wrapped(Zon::BasicVersion("v", 1, 0, 0, 65536u, ""));
    EXPECT_EQ(wrapped.GetVersionBuild(), 0);
    EXPECT_EQ(wrapped.ToString(), "Version: 1.0.0.0-");
}

TEST(VersionInformationPayload, FieldWithoutValueGivesZeroAndAnEmptyState)
{
    TamperedPayload payload(1, 2, 3, 4, "beta");
    for (std::size_t field : {MajorField, MinorField, PatchField, BuildField, StateField}) {
        payload.Clear(field);
    }
    EXPECT_EQ(payload.GetVersionMajor(), 0);
    EXPECT_EQ(payload.GetVersionMinor(), 0);
    EXPECT_EQ(payload.GetVersionPatch(), 0);
    EXPECT_EQ(payload.GetVersionBuild(), 0);
    EXPECT_EQ(payload.GetVersionState(), "");
}

TEST(VersionInformationPayload, NumberFieldOfAnotherTypeCannotBeCopied)
{
    TamperedPayload payload(1, 2, 3, 4, "beta");
    payload.Set(MinorField, Text("2", RscType::String));
    try {
        payload.GetVersionMinor();
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::InvalidCastException& e) {
        EXPECT_STREQ(e.what(), "Cannot copy value to argument: RscVariant contains data type String but arg is of "
                               "type Uint16");
    }
    EXPECT_EQ(payload.GetVersionMajor(), 1);

    RscVariant<512> unnamed;
    unnamed.SetType(static_cast<RscType>(42));
    payload.Set(BuildField, unnamed);
    try {
        payload.GetVersionBuild();
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::InvalidCastException& e) {
        EXPECT_STREQ(e.what(), "Cannot copy value to argument: RscVariant contains data type 42 but arg is of type "
                               "Uint16");
    }
}

TEST(VersionInformationPayload, StateFieldOfAnotherTypeCannotBeConverted)
{
    TamperedPayload payload(1, 2, 3, 4, "beta");
    payload.Set(StateField, Number(5));
    try {
        payload.GetVersionState();
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::InvalidCastException& e) {
        EXPECT_STREQ(e.what(), "Cannot convert to string: RscVariant is of type Uint16");
    }
}

TEST(VersionInformationPayload, StateIsReadFromEachZeroTerminatedStringTag)
{
    TamperedPayload payload(1, 2, 3, 4, "beta");
    payload.Set(StateField, Text("ansi", RscType::AnsiString));
    EXPECT_EQ(payload.GetVersionState(), "ansi");
    payload.Set(StateField, Text("utf8", RscType::Utf8String));
    EXPECT_EQ(payload.GetVersionState(), "utf8");
    payload.Set(StateField, Text("plain", RscType::String));
    EXPECT_EQ(payload.GetVersionState(), "plain");
}

TEST(VersionInformationPayload, StateLongerThanTheVariantIsRefused)
{
    EXPECT_NO_THROW(VersionInformationPayload(1, 0, 0, 0, std::string(511, 's')));
    try {
        VersionInformationPayload payload(1, 0, 0, 0, std::string(512, 's'));
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::ArgumentException& e) {
        EXPECT_STREQ(e.what(), "Cannot copy string: argument string length 512 exceeds MaxStringSize 512");
    }
}

TEST(VersionInformationPayload, NameIsTheFullClassName)
{
    VersionInformationPayload payload(1, 0, 0, 0, "");
    EXPECT_EQ(payload.GetName(), PayloadName);
}

TEST(VersionInformationPayload, IdIsAskedOfTheRegistryOncePerProcess)
{
    auto& registry = Zon::System::Nm::SpecializedPayloadHelper::GetHostNotificationManagerInfo();
    Zon::System::Nm::PayloadTypeId first = VersionInformationPayload::GetPayloadTypeId();
    EXPECT_TRUE(first.IsValid());
    for (unsigned short i = 0; i < 10; ++i) {
        VersionInformationPayload payload(i, i, i, i, "n");
        EXPECT_EQ(payload.GetId(), first);
        EXPECT_EQ(VersionInformationPayload::GetPayloadTypeId(), first);
    }
    EXPECT_EQ(registry.GetLookupCount(PayloadName), 1u);
    EXPECT_EQ(registry.GetPayloadTypeId(PayloadName), first);
}

TEST(VersionInformationPayload, CopiesAreIndependent)
{
    TamperedPayload original(1, 2, 3, 4, "a");
    VersionInformationPayload copy = original;
    original.Clear(MajorField);
    EXPECT_EQ(copy.GetVersionMajor(), 1);
    EXPECT_EQ(copy.GetVersionState(), "a");
    VersionInformationPayload other(9, 9, 9, 9, "z");
    other = copy;
    EXPECT_EQ(other.ToString(), "Version: 1.2.3.4-a");
}
