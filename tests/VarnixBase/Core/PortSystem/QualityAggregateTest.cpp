// Ports and connectors aggregate their providers' qualities without copying each provider's shared
// pointer. The aggregate that copies them (QualitySystem::CombineQuality over the list) is the
// oracle: both must give the same quality and ask the providers in the same order.
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/QualityAggregate.hpp"
#include "VarnixBase/Core/QualitySystem/CombineQuality.hpp"

using namespace VarnixBase::Core::QualitySystem;
using VarnixBase::Core::PortSystem::AggregateQuality;

namespace {

/// A provider of a fixed quality that records the order in which it is asked.
class RecordingProvider : public IQualityProvider {
public:
    RecordingProvider(Quality quality, int id, std::vector<int>& journal) : quality(quality), id(id), journal(journal)
    {
    }
    Quality GetQuality() override
    {
        journal.push_back(id);
        return quality;
    }

private:
    Quality quality;
    int id;
    std::vector<int>& journal;
};

} // namespace

TEST(QualityAggregate, AgreesWithTheCombinationOverCopiedPointersForRandomProviderLists)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> count(0, 6);
    std::uniform_int_distribution<int> state(0, 255);
    std::uniform_int_distribution<std::uint32_t> flags;
    for (int round = 0; round < 2000; ++round) {
        std::vector<int> journal;
        QualityProviderList providers;
        for (int n = count(random), id = 0; id < n; ++id) {
            Quality quality;
            quality.state = static_cast<QualityState>(state(random));
            quality.flags = static_cast<QualityFlags>(flags(random) & (round % 2 == 0 ? 0xFu : 0xFFFFFFFFu));
            providers.push_back(std::make_shared<RecordingProvider>(quality, id, journal));
        }
        const Quality expected = CombineQuality(providers);
        const std::vector<int> expectedOrder = journal;
        journal.clear();
        const Quality actual = AggregateQuality(providers);
        EXPECT_EQ(actual.state, expected.state) << "round " << round;
        EXPECT_EQ(actual.flags, expected.flags) << "round " << round;
        EXPECT_EQ(journal, expectedOrder);
    }
}

TEST(QualityAggregate, AnEmptyListIsGoodWithoutFlags)
{
    const Quality quality = AggregateQuality(QualityProviderList{});
    EXPECT_EQ(quality.state, QualityState::Good);
    EXPECT_EQ(quality.flags, QualityFlags::None);
}
