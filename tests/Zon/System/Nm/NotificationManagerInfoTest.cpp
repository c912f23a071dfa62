#include <gtest/gtest.h>

#include "Zon/System/Nm/NotificationManagerInfo.hpp"
#include "Zon/System/Nm/SpecializedPayloadHelper.hpp"

using namespace Zon::System::Nm;

TEST(NotificationManagerInfo, GivesOneStableNonZeroIdPerName)
{
    NotificationManagerInfo registry;
    PayloadTypeId a = registry.GetPayloadTypeId("A::Payload");
    PayloadTypeId b = registry.GetPayloadTypeId("B::Payload");
    EXPECT_TRUE(a.IsValid());
    EXPECT_TRUE(b.IsValid());
    EXPECT_NE(a, b);
    EXPECT_EQ(registry.GetPayloadTypeId("A::Payload"), a);
    EXPECT_EQ(registry.GetPayloadTypeId("B::Payload"), b);
    EXPECT_EQ(registry.GetRegisteredCount(), 2u);
}

TEST(NotificationManagerInfo, CountsItsLookUps)
{
    NotificationManagerInfo registry;
    registry.GetPayloadTypeId("A");
    registry.GetPayloadTypeId("A");
    registry.GetPayloadTypeId("B");
    EXPECT_EQ(registry.GetLookupCount(), 3u);
    EXPECT_EQ(registry.GetLookupCount("A"), 2u);
    EXPECT_EQ(registry.GetLookupCount("B"), 1u);
    EXPECT_EQ(registry.GetLookupCount("C"), 0u);
}

TEST(NotificationManagerInfo, HelperGivesTheHostRegistryUnlessReplaced)
{
    INotificationManagerInfo& host = SpecializedPayloadHelper::GetHostNotificationManagerInfo();
    EXPECT_EQ(&SpecializedPayloadHelper::GetINotificationManagerInfo(), &host);
    NotificationManagerInfo other;
    SpecializedPayloadHelper::SetINotificationManagerInfo(&other);
    EXPECT_EQ(&SpecializedPayloadHelper::GetINotificationManagerInfo(), &other);
    SpecializedPayloadHelper::SetINotificationManagerInfo(nullptr);
    EXPECT_EQ(&SpecializedPayloadHelper::GetINotificationManagerInfo(), &host);
}
