#include <string>

#include <gtest/gtest.h>

#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Nm/SpecializedPayload.hpp"

using namespace Zon::System::Nm;

namespace NmTest {

// Payload types of these tests; each test that counts registry requests has a type of its own,
// so that its id is not known yet even when all tests share one process.
template <int Kind>
class FormatPayload : public SpecializedPayload<FormatPayload<Kind>> {
public:
    explicit FormatPayload(const Zon::String& format) : SpecializedPayload<FormatPayload<Kind>>(format) {}
    ~FormatPayload() override = default;
    using SpecializedPayload<FormatPayload<Kind>>::GetGenericPayload;
};

/// A registry that answers what it is told to, and counts the requests.
class ScriptedRegistry : public INotificationManagerInfo {
public:
    PayloadTypeId GetPayloadTypeId(const Zon::String& name) override
    {
        ++requests;
        lastName = name;
        return answer;
    }
    PayloadTypeId answer;
    int requests = 0;
    Zon::String lastName;
};

/// Puts a registry in place for the life of the object.
class RegistryScope {
public:
    explicit RegistryScope(INotificationManagerInfo& info) { SpecializedPayloadHelper::SetINotificationManagerInfo(&info); }
    ~RegistryScope() { SpecializedPayloadHelper::SetINotificationManagerInfo(nullptr); }
};

} // namespace NmTest

using NmTest::FormatPayload;

TEST(SpecializedPayload, StoresTheFormatStringAsAStringField)
{
    FormatPayload<0> payload("Count: {0}");
    const GenericPayload& generic = payload.GetGenericPayload();
    const auto& format = generic.GetFieldValue(generic.GetFieldIndexFormatString());
    EXPECT_EQ(format.GetType(), RscType::String);
    EXPECT_EQ(format.GetText(), "Count: {0}");
}

TEST(SpecializedPayload, FormatStringOf511CharactersIsAccepted)
{
    std::string format(511, 'f');
    FormatPayload<1> payload(format);
    EXPECT_EQ(payload.ToString(), format);
    const GenericPayload& generic = payload.GetGenericPayload();
    EXPECT_EQ(generic.GetFieldValue(generic.GetFieldIndexFormatString()).GetData()[511], 0);
}

TEST(SpecializedPayload, FormatStringOf512CharactersIsRejectedWithBothNumbers)
{
    try {
        FormatPayload<2> payload(std::string(512, 'f'));
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::ArgumentException& e) {
        EXPECT_STREQ(e.what(), "Cannot copy string: argument string length 512 exceeds MaxStringSize 512");
    }
}

TEST(SpecializedPayload, NameIsTheFullDemangledClassName)
{
    FormatPayload<3> payload("x");
    EXPECT_EQ(payload.GetName(), "NmTest::FormatPayload<3>");
    EXPECT_EQ(payload.GetGenericPayload().GetName(), "NmTest::FormatPayload<3>");
}

TEST(SpecializedPayload, ForwardsToTheGenericPayload)
{
    FormatPayload<4> payload("{0}-{1}");
    GenericPayload& generic = payload.GetGenericPayload();
    RscVariant<512> number;
    number.SetValue<std::uint16_t>(42, RscType::Uint16);
    generic.SetFieldValue(generic.AddField(RscType::Uint16), number);
    generic.SetFieldValue<std::string>(generic.AddField(RscType::String), "x");
    const IPayload& base = payload;
    EXPECT_EQ(base.ToString(), "42-x");
    EXPECT_EQ(&base.GetAsRawPayloadType(), &generic.GetAsRawPayloadType());
    EXPECT_EQ(base.GetId(), generic.GetId());
}

TEST(SpecializedPayload, IdComesFromTheRegistryByTypeName)
{
    FormatPayload<5> payload("x");
    auto& host = SpecializedPayloadHelper::GetHostNotificationManagerInfo();
    EXPECT_TRUE(payload.GetId().IsValid());
    EXPECT_EQ(payload.GetId(), host.GetPayloadTypeId("NmTest::FormatPayload<5>"));
    EXPECT_EQ(FormatPayload<5>::GetPayloadTypeId(), payload.GetId());
}

TEST(SpecializedPayload, DifferentPayloadTypesHaveDifferentIds)
{
    EXPECT_NE(FormatPayload<6>::GetPayloadTypeId(), FormatPayload<7>::GetPayloadTypeId());
}

TEST(SpecializedPayload, RegistryIsAskedOncePerProcessForANonZeroAnswer)
{
    NmTest::ScriptedRegistry registry;
    registry.answer = PayloadTypeId(77);
    NmTest::RegistryScope scope(registry);
    for (int i = 0; i < 5; ++i) {
        FormatPayload<8> payload("x");
        EXPECT_EQ(payload.GetId(), PayloadTypeId(77));
        EXPECT_EQ(FormatPayload<8>::GetPayloadTypeId(), PayloadTypeId(77));
    }
    EXPECT_EQ(registry.requests, 1);
    EXPECT_EQ(registry.lastName, "NmTest::FormatPayload<8>");
}

TEST(SpecializedPayload, AnswerOfZeroMakesTheNextCallAskAgain)
{
    NmTest::ScriptedRegistry registry;
    NmTest::RegistryScope scope(registry);
    registry.answer = PayloadTypeId(0);
    EXPECT_EQ(FormatPayload<9>::GetPayloadTypeId(), PayloadTypeId(0));
    EXPECT_EQ(FormatPayload<9>::GetPayloadTypeId(), PayloadTypeId(0));
    EXPECT_EQ(registry.requests, 2);
    registry.answer = PayloadTypeId(5);
    EXPECT_EQ(FormatPayload<9>::GetPayloadTypeId(), PayloadTypeId(5));
    registry.answer = PayloadTypeId(6);
    FormatPayload<9> payload("x");
    EXPECT_EQ(payload.GetId(), PayloadTypeId(5));
    EXPECT_EQ(FormatPayload<9>::GetPayloadTypeId(), PayloadTypeId(5));
    EXPECT_EQ(registry.requests, 3);
}
