#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

#include "VarnixBase/Core/QualitySystem/CombineQuality.hpp"
#include "support/ResourceCounter.hpp"

using namespace VarnixBase::Core::QualitySystem;

namespace {

class FixedProvider : public IQualityProvider {
public:
    FixedProvider(QualityState state, QualityFlags flags = QualityFlags::None)
    {
        quality.state = state;
        quality.flags = flags;
    }
    Quality GetQuality() override
    {
        ++calls;
        return quality;
    }
    Quality quality;
    int calls = 0;
};

class ThrowingProvider : public IQualityProvider {
public:
    Quality GetQuality() override { throw std::runtime_error("provider failed"); }
};

QualityProviderList Providers(std::initializer_list<std::shared_ptr<IQualityProvider>> items)
{
    return QualityProviderList(items);
}

std::shared_ptr<IQualityProvider> Fixed(QualityState state, QualityFlags flags = QualityFlags::None)
{
    return std::make_shared<FixedProvider>(state, flags);
}

} // namespace

TEST(CombineQuality, NoProvidersGiveGoodWithoutFlags)
{
    Quality result = CombineQuality(QualityProviderList{});
    EXPECT_EQ(result.state, QualityState::Good);
    EXPECT_EQ(result.flags, QualityFlags::None);
}

TEST(CombineQuality, QuestionableWithInvalidGivesInvalid)
{
    auto result = CombineQuality(Providers({Fixed(QualityState::Questionable), Fixed(QualityState::Invalid)}));
    EXPECT_EQ(result.state, QualityState::Invalid);
}

TEST(CombineQuality, InvalidWithBadGivesBad)
{
    auto result = CombineQuality(Providers({Fixed(QualityState::Invalid), Fixed(QualityState::Bad)}));
    EXPECT_EQ(result.state, QualityState::Bad);
    // The order of the providers does not matter.
    result = CombineQuality(Providers({Fixed(QualityState::Bad), Fixed(QualityState::Invalid)}));
    EXPECT_EQ(result.state, QualityState::Bad);
}

TEST(CombineQuality, OverrangeWithUnderrangeGivesTheValueOfOutOfRange)
{
    auto result = CombineQuality(Providers({Fixed(QualityState::Good, QualityFlags::Overrange),
                                            Fixed(QualityState::Good, QualityFlags::Underrange)}));
    EXPECT_EQ(result.flags, QualityFlags::OutOfRange);
}

TEST(CombineQuality, AProviderReportingState0LeavesGoodInPlace)
{
    auto result = CombineQuality(Providers({Fixed(QualityState::None)}));
    EXPECT_EQ(result.state, QualityState::Good);
    EXPECT_EQ(CombineQuality(Quality{}, Quality{QualityFlags::None, QualityState::None}).state, QualityState::Good);
}

TEST(CombineQuality, StatesCompareAsUnsignedEightBitNumbers)
{
    // 255 is the largest state, also where a signed byte would read it as -1.
    Quality result = CombineQuality(Quality{QualityFlags::None, QualityState::Invalid},
                                    Quality{QualityFlags::None, QualityState::Bad});
    EXPECT_EQ(result.state, QualityState::Bad);
}

TEST(CombineQuality, FlagsOfAllProvidersAreOred)
{
    auto result = CombineQuality(Providers({Fixed(QualityState::Good, QualityFlags::WireBreak),
                                            Fixed(QualityState::Questionable, QualityFlags::Overflow),
                                            Fixed(QualityState::Good, QualityFlags::WireBreak)}));
    EXPECT_EQ(result.flags, QualityFlags::WireBreak | QualityFlags::Overflow);
    EXPECT_EQ(result.state, QualityState::Questionable);
}

TEST(CombineQuality, AProviderExceptionLeavesTheWalkAndLaterProvidersAreNotAsked)
{
    auto later = std::make_shared<FixedProvider>(QualityState::Good);
    QualityProviderList providers{Fixed(QualityState::Good), std::make_shared<ThrowingProvider>(), later};
    EXPECT_THROW(CombineQuality(providers), std::runtime_error);
    EXPECT_EQ(later->calls, 0);
}

TEST(CombineQuality, CombiningAllocatesNothingAndTakesNoLock)
{
    QualityProviderList providers{Fixed(QualityState::Questionable, QualityFlags::Test), Fixed(QualityState::Bad)};
    Quality result;
    {
        VarnixTest::ResourceCounter counter;
        result = CombineQuality(providers);
        EXPECT_EQ(counter.Allocations(), 0u);
        EXPECT_EQ(counter.Locks(), 0u);
    }
    EXPECT_EQ(result.state, QualityState::Bad);
}
