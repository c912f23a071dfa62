#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/Parameter.hpp"
#include "VarnixBase/Core/PortSystem/ScaleConnector.hpp"
#include "VarnixBase/Core/QualitySystem/QualityFlags.hpp"
#include "VarnixBase/Core/QualitySystem/QualityState.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"

#include "ConnectorTestSupport.hpp"
#include "GraphDoubles.hpp"

using namespace ConnectorTest;
using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Core::QualitySystem::QualityFlags;
using VarnixBase::Core::QualitySystem::QualityState;
using VarnixTest::Graph::FixedQualityProvider;
using VarnixTest::Graph::MakeQuality;

namespace {

struct EventCounter {
    void OnChanged(IConnector&) { ++count; }
    int count = 0;
};

class ScaleConnectorTest : public ConnectorFixture {
protected:
    template <class I, class O>
    std::unique_ptr<ScaleConnector<I, O>> Make()
    {
        return std::make_unique<ScaleConnector<I, O>>("scale", InPath<I>(), OutPath<O>());
    }

    /// Sets the parameter `name` of `connector` from a literal.
    static void Set(IConnector& connector, const char* name, const char* literal)
    {
        connector.GetParameterProvider().GetParameter(String(name))->SetValueByString(String(literal));
    }

    /// The value of the parameter `name` of type `T`.
    template <class T>
    static T Value(IConnector& connector, const char* name)
    {
        auto parameter = connector.GetParameterProvider().GetParameter(String(name));
        return static_cast<Parameter<T>&>(*parameter).GetValue();
    }

    /// With `invert` true and `gain` 0.0, the value a `ScaleConnector<int, O>` writes.
    template <class O>
    O LimitOf()
    {
        auto connector = Make<int, O>();
        Set(*connector, "invert", "true");
        Set(*connector, "gain", "0.0");
        in.i = 5;
        connector->Execute();
        return Slot<O>(out);
    }
};

} // namespace

// Edge cases ---------------------------------------------------------------------------------------

TEST_F(ScaleConnectorTest, AFreshlyConstructedScaleConnectorHasTheIdentitySettings)
{
    auto connector = Make<int, int>();
    EXPECT_EQ((Value<double>(*connector, "gain")), 1.0);
    EXPECT_EQ((Value<double>(*connector, "offset")), 0.0);
    EXPECT_EQ((Value<double>(*connector, "replacementValue")), 0.0);
    EXPECT_FALSE((Value<bool>(*connector, "invert")));
    EXPECT_EQ(connector->GetParameterProvider().Count(), 4u);
}

TEST_F(ScaleConnectorTest, WithDefaultParametersAnIntToIntScaleConnectorPassesTheValueThrough)
{
    auto connector = Make<int, int>();
    in.i = -123456;
    connector->Execute();
    EXPECT_EQ(out.i, -123456);
    in.i = 2147483647;
    connector->Execute();
    EXPECT_EQ(out.i, 2147483647);
}

TEST_F(ScaleConnectorTest, FloatWithGainZeroAndInvertWritesPositiveInfinityAndGetQualityStaysTheProvidersAggregate)
{
    auto connector = Make<float, float>();
    connector->AddQualityProvider(
        std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Questionable, QualityFlags::Overflow)));
    Set(*connector, "gain", "0.0");
    Set(*connector, "invert", "true");
    in.f = 3.0f;
    connector->Execute();
    EXPECT_TRUE(std::isinf(out.f));
    EXPECT_GT(out.f, 0.0f);
    EXPECT_EQ(connector->GetQuality(), MakeQuality(QualityState::Questionable, QualityFlags::Overflow));
}

TEST_F(ScaleConnectorTest, DoubleWithGainZeroAndInvertWritesTheLargestFiniteDouble)
{
    auto connector = Make<double, double>();
    Set(*connector, "gain", "0.0");
    Set(*connector, "invert", "true");
    in.d = -7.0;
    connector->Execute();
    EXPECT_EQ(out.d, 1.7976931348623157e308);
    EXPECT_EQ(connector->GetQuality(), MakeQuality(QualityState::Good, QualityFlags::None));
}

TEST_F(ScaleConnectorTest, WithInvertFalseAndGainZeroTheOffsetIsWritten)
{
    auto connector = Make<double, double>();
    Set(*connector, "gain", "0.0");
    Set(*connector, "offset", "4.25");
    in.d = 1000.0;
    connector->Execute();
    EXPECT_EQ(out.d, 4.25);
    auto integral = Make<long, short>();
    Set(*integral, "gain", "0.0");
    Set(*integral, "offset", "-12.0");
    in.l = 99;
    integral->Execute();
    EXPECT_EQ(out.s, -12);
}

TEST_F(ScaleConnectorTest, InvertedIntToSignedCharWithSource200WritesMinus56SinceTheWrapComesBeforeTheDivision)
{
    auto connector = Make<int, signed char>();
    Set(*connector, "invert", "true");
    Set(*connector, "gain", "1.0");
    Set(*connector, "offset", "0.0");
    in.i = 200;
    connector->Execute();
    EXPECT_EQ(out.sc, -56);
}

TEST_F(ScaleConnectorTest, AProviderReportingBadWithAReplacementValueStillGetsTheScaledValue)
{
    auto connector = Make<int, int>();
    connector->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Bad)));
    Set(*connector, "replacementValue", "5.0");
    Set(*connector, "gain", "3.0");
    in.i = 7;
    connector->Execute();
    EXPECT_EQ(out.i, 21);
    EXPECT_EQ(connector->GetQuality().state, QualityState::Bad);
}

TEST_F(ScaleConnectorTest, TheEventFiresOncePerExecuteOnEveryPath)
{
    auto connector = Make<double, double>();
    EventCounter counter;
    connector->changed += Zon::make_delegate(&counter, &EventCounter::OnChanged);
    connector->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Bad)));
    in.d = 8.0;
    connector->Execute(); // forwards
    EXPECT_EQ(counter.count, 1);
    Set(*connector, "invert", "true");
    Set(*connector, "gain", "2.0");
    connector->Execute(); // backwards
    EXPECT_EQ(counter.count, 2);
    EXPECT_EQ(out.d, 4.0);
    Set(*connector, "gain", "0.0");
    connector->Execute(); // the limit
    EXPECT_EQ(counter.count, 3);
    EXPECT_EQ(out.d, std::numeric_limits<double>::max());
}

// Arithmetic ----------------------------------------------------------------------------------------

TEST_F(ScaleConnectorTest, ForwardsTheSourceIsMultipliedByGainThenOffsetIsAdded)
{
    auto connector = Make<int, int>();
    Set(*connector, "gain", "2.0");
    Set(*connector, "offset", "1.0");
    in.i = 7;
    connector->Execute();
    EXPECT_EQ(out.i, 15);
    auto toDouble = Make<short, double>();
    Set(*toDouble, "gain", "0.5");
    Set(*toDouble, "offset", "-0.25");
    in.s = -3;
    toDouble->Execute();
    EXPECT_EQ(out.d, -1.75);
}

TEST_F(ScaleConnectorTest, ForwardsTheResultIsConvertedToTheOutputTypeByTruncation)
{
    auto connector = Make<double, int>();
    Set(*connector, "gain", "1.5");
    in.d = -3.0;
    connector->Execute();
    EXPECT_EQ(out.i, -4);
    auto narrow = Make<int, unsigned char>();
    Set(*narrow, "gain", "10.0");
    in.i = 30;
    narrow->Execute();
    EXPECT_EQ(out.uc, 44);
}

TEST_F(ScaleConnectorTest, BackwardsWithIntegersTheValueTruncatesTwice)
{
    auto connector = Make<int, int>();
    Set(*connector, "invert", "true");
    Set(*connector, "gain", "2.0");
    in.i = 7;
    connector->Execute();
    EXPECT_EQ(out.i, 3);
    Set(*connector, "offset", "0.5");
    in.i = 10;
    connector->Execute(); // 9.5 -> 9 -> 4.5 -> 4
    EXPECT_EQ(out.i, 4);
}

TEST_F(ScaleConnectorTest, BackwardsTheOffsetIsSubtractedBeforeTheDivision)
{
    auto connector = Make<double, double>();
    Set(*connector, "invert", "true");
    Set(*connector, "gain", "4.0");
    Set(*connector, "offset", "2.0");
    in.d = 10.0;
    connector->Execute();
    EXPECT_EQ(out.d, 2.0);
}

TEST_F(ScaleConnectorTest, BackwardsAFloatOutputRoundsOnceMore)
{
    auto connector = Make<double, float>();
    Set(*connector, "invert", "true");
    Set(*connector, "gain", "3.0");
    in.d = 0.1;
    connector->Execute();
    EXPECT_EQ(out.f, static_cast<float>(static_cast<double>(0.1f) / 3.0));
}

TEST_F(ScaleConnectorTest, BackwardsANaNGainCountsAsNotZero)
{
    auto connector = Make<double, double>();
    Set(*connector, "invert", "true");
    auto gain = connector->GetParameterProvider().GetParameter(String("gain"));
    ASSERT_TRUE(gain->TryBind(String("Conn/Settings.factor")));
    settings.factor = std::numeric_limits<double>::quiet_NaN();
    in.d = 1.0;
    connector->Execute();
    EXPECT_TRUE(std::isnan(out.d));
}

TEST_F(ScaleConnectorTest, BackwardsANegativeZeroGainTakesTheLimit)
{
    auto connector = Make<int, short>();
    Set(*connector, "invert", "true");
    Set(*connector, "gain", "-0.0");
    in.i = 1;
    connector->Execute();
    EXPECT_EQ(out.s, 32767);
}

TEST_F(ScaleConnectorTest, TheLimitIsTheLargestValueOfEachOutputType)
{
    EXPECT_EQ(LimitOf<signed char>(), 127);
    EXPECT_EQ(LimitOf<unsigned char>(), 255);
    EXPECT_EQ(LimitOf<short>(), 32767);
    EXPECT_EQ(LimitOf<unsigned short>(), 65535);
    EXPECT_EQ(LimitOf<int>(), 2147483647);
    EXPECT_EQ(LimitOf<unsigned int>(), 4294967295u);
    EXPECT_EQ(LimitOf<long>(), 9223372036854775807L);
    EXPECT_EQ(LimitOf<unsigned long>(), 18446744073709551615ul);
    EXPECT_EQ(LimitOf<float>(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(LimitOf<double>(), 1.7976931348623157e308);
}

TEST_F(ScaleConnectorTest, BoundParametersAreFollowedFromOneCycleToTheNext)
{
    auto connector = Make<int, int>();
    auto gain = connector->GetParameterProvider().GetParameter(String("gain"));
    auto invert = connector->GetParameterProvider().GetParameter(String("invert"));
    gain->Bind(String("Conn/Settings.factor"));
    invert->Bind(String("Conn/Settings.enabled"));
    in.i = 12;
    settings.factor = 3.0;
    connector->Execute();
    EXPECT_EQ(out.i, 36);
    settings.factor = 4.0;
    settings.enabled = true;
    connector->Execute();
    EXPECT_EQ(out.i, 3);
}

TEST_F(ScaleConnectorTest, TheFourParametersAreTakenAndNoOtherOfTheirNamesCanBeAdded)
{
    auto connector = Make<float, long>();
    auto& provider = connector->GetParameterProvider();
    for (const char* name : {"offset", "gain", "replacementValue", "invert"}) {
        EXPECT_TRUE(provider.HasParameter(String(name))) << name;
        EXPECT_THROW(provider.AddParameter<double>(String(name), 0.0), Zon::System::Commons::ArgumentException)
            << name;
    }
    EXPECT_EQ(provider.Count(), 4u);
}
