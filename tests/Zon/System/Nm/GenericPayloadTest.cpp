#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/IndexOutOfRangeException.hpp"
#include "Zon/System/Nm/GenericPayload.hpp"

using namespace Zon::System::Nm;

namespace {

RscVariant<512> Number(std::uint16_t value)
{
    RscVariant<512> variant;
    variant.SetValue(value, RscType::Uint16);
    return variant;
}

RscVariant<512> Text(const std::string& text, RscType type = RscType::String)
{
    RscVariant<512> variant;
    variant.SetText(text, type);
    return variant;
}

} // namespace

TEST(GenericPayload, KeepsItsIdAndName)
{
    GenericPayload payload(PayloadTypeId(12), "Some::Payload");
    EXPECT_EQ(payload.GetId(), PayloadTypeId(12));
    EXPECT_EQ(payload.GetName(), "Some::Payload");
}

TEST(GenericPayload, FormatStringIsTheFirstFieldAndAddedFieldsFollow)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    EXPECT_EQ(payload.GetFieldIndexFormatString(), 0u);
    EXPECT_EQ(payload.GetFieldCount(), 1u);
    EXPECT_EQ(payload.GetFieldType(0), RscType::String);
    EXPECT_EQ(payload.AddField(RscType::Uint16), 1u);
    EXPECT_EQ(payload.AddField(RscType::String), 2u);
    EXPECT_EQ(payload.GetFieldCount(), 3u);
    EXPECT_EQ(payload.GetFieldType(1), RscType::Uint16);
    EXPECT_EQ(payload.GetFieldType(2), RscType::String);
}

TEST(GenericPayload, FieldsStartWithoutAValue)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    auto index = payload.AddField(RscType::Uint16);
    EXPECT_EQ(payload.GetFieldValue(index).GetType(), RscType::None);
    EXPECT_EQ(payload.GetFieldValue(payload.GetFieldIndexFormatString()).GetType(), RscType::None);
}

TEST(GenericPayload, StoresValuesAsGiven)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    auto number = payload.AddField(RscType::Uint16);
    payload.SetFieldValue(number, Number(513));
    EXPECT_EQ(payload.GetFieldValue(number).GetType(), RscType::Uint16);
    EXPECT_EQ(payload.GetFieldValue(number).GetValue<std::uint16_t>(), 513);
    // A value of another type than declared is kept as it is: its reader decides.
    payload.SetFieldValue(number, Text("oops"));
    EXPECT_EQ(payload.GetFieldValue(number).GetType(), RscType::String);
}

TEST(GenericPayload, StdStringTakesOverTheDeclaredStringTag)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    auto plain = payload.AddField(RscType::String);
    auto utf8 = payload.AddField(RscType::Utf8String);
    auto number = payload.AddField(RscType::Uint16);
    payload.SetFieldValue<std::string>(plain, "beta");
    payload.SetFieldValue<std::string>(utf8, "gamma");
    payload.SetFieldValue<std::string>(number, "delta");
    EXPECT_EQ(payload.GetFieldValue(plain).GetType(), RscType::String);
    EXPECT_EQ(payload.GetFieldValue(plain).GetText(), "beta");
    EXPECT_EQ(payload.GetFieldValue(utf8).GetType(), RscType::Utf8String);
    EXPECT_EQ(payload.GetFieldValue(utf8).GetText(), "gamma");
    // No string field: the value keeps the tag it came with.
    EXPECT_EQ(payload.GetFieldValue(number).GetType(), RscType::StdString);
    EXPECT_EQ(payload.GetFieldValue(number).GetText(), "delta");
}

TEST(GenericPayload, TooLongStdStringIsRefusedAndTheFieldKept)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    auto index = payload.AddField(RscType::String);
    payload.SetFieldValue<std::string>(index, "kept");
    try {
        payload.SetFieldValue<std::string>(index, std::string(600, 's'));
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::ArgumentException& e) {
        EXPECT_STREQ(e.what(), "Cannot copy string: argument string length 600 exceeds MaxStringSize 512");
    }
    EXPECT_EQ(payload.GetFieldValue(index).GetText(), "kept");
}

TEST(GenericPayload, UnknownIndexIsOutOfRange)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    payload.AddField(RscType::Uint16);
    try {
        payload.GetFieldValue(2);
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::IndexOutOfRangeException& e) {
        EXPECT_STREQ(e.what(), "Payload field index 2 is out of range, the payload has 2 fields.");
    }
    EXPECT_THROW(payload.SetFieldValue(5, Number(1)), Zon::System::Commons::IndexOutOfRangeException);
    EXPECT_THROW(payload.GetFieldType(9), Zon::System::Commons::IndexOutOfRangeException);
}

TEST(GenericPayload, RawPayloadIsTheFieldValuesWithTheFormatStringFirst)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    payload.SetFieldValue(payload.GetFieldIndexFormatString(), Text("{0}"));
    payload.SetFieldValue(payload.AddField(RscType::Uint16), Number(9));
    const RawPayloadType& raw = payload.GetAsRawPayloadType();
    ASSERT_EQ(raw.size(), 2u);
    EXPECT_EQ(raw[0].GetText(), "{0}");
    EXPECT_EQ(raw[1].GetValue<std::uint16_t>(), 9);
}

TEST(GenericPayload, ToStringAppliesTheFormatStringToTheAddedFields)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    payload.SetFieldValue(payload.GetFieldIndexFormatString(), Text("{1} has {0} items, {2}{3}."));
    payload.SetFieldValue(payload.AddField(RscType::Uint16), Number(3));
    payload.SetFieldValue(payload.AddField(RscType::String), Text("the box"));
    payload.AddField(RscType::Uint16); // no value: prints as nothing
    payload.SetFieldValue<std::string>(payload.AddField(RscType::AnsiString), "ok");
    EXPECT_EQ(payload.ToString(), "the box has 3 items, ok.");
}

TEST(GenericPayload, ToStringWithoutFormatStringIsEmpty)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    payload.SetFieldValue(payload.AddField(RscType::Uint16), Number(3));
    EXPECT_EQ(payload.ToString(), "");
}

TEST(GenericPayload, FormatStringThatDoesNotFitComesBackAsItStands)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    payload.SetFieldValue(payload.GetFieldIndexFormatString(), Text("{0} and {1"));
    payload.SetFieldValue(payload.AddField(RscType::Uint16), Number(3));
    EXPECT_EQ(payload.ToString(), "{0} and {1");
    payload.SetFieldValue(payload.GetFieldIndexFormatString(), Text("{0} and {5}"));
    EXPECT_EQ(payload.ToString(), "{0} and {5}");
}

TEST(GenericPayload, CopiesAreIndependent)
{
    GenericPayload payload(PayloadTypeId(1), "P");
    auto index = payload.AddField(RscType::Uint16);
    payload.SetFieldValue(index, Number(1));
    GenericPayload copy = payload;
    copy.SetFieldValue(index, Number(2));
    EXPECT_EQ(payload.GetFieldValue(index).GetValue<std::uint16_t>(), 1);
    EXPECT_EQ(copy.GetFieldValue(index).GetValue<std::uint16_t>(), 2);
}
