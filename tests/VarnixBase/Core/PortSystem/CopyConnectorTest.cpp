#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/CopyConnector.hpp"
#include "VarnixBase/Core/QualitySystem/QualityState.hpp"

#include "ConnectorTestSupport.hpp"
#include "GraphDoubles.hpp"

using namespace ConnectorTest;
using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Core::QualitySystem::QualityState;
using VarnixTest::Graph::FixedQualityProvider;
using VarnixTest::Graph::MakeQuality;

namespace {

/// Counts the raises of a connector's change event.
struct EventCounter {
    void OnChanged(IConnector& connector)
    {
        ++count;
        last = &connector;
    }
    int count = 0;
    IConnector* last = nullptr;
};

class CopyConnectorTest : public ConnectorFixture {
protected:
    /// Copies `value` from the input variable of type `I` to the output variable of type `O`
    /// through a `CopyConnector<I, O>` and returns what arrived.
    template <class I, class O>
    O Copy(I value)
    {
        Slot<I>(in) = value;
        CopyConnector<I, O> connector("copy", InPath<I>(), OutPath<O>());
        connector.Execute();
        return Slot<O>(out);
    }
};

} // namespace

// Edge cases ---------------------------------------------------------------------------------------

TEST_F(CopyConnectorTest, DoubleToBoolWithNaNWritesTrue)
{
    EXPECT_TRUE((Copy<double, bool>(std::numeric_limits<double>::quiet_NaN())));
}

TEST_F(CopyConnectorTest, IntToUnsignedCharWith300Writes44)
{
    EXPECT_EQ((Copy<int, unsigned char>(300)), 44);
}

TEST_F(CopyConnectorTest, IntToSignedCharWith200WritesMinus56)
{
    EXPECT_EQ((Copy<int, signed char>(200)), -56);
}

// The conversion table, row by row -------------------------------------------------------------------

TEST_F(CopyConnectorTest, ConversionToTheSameTypeKeepsTheValue)
{
    EXPECT_TRUE((Copy<bool, bool>(true)));
    EXPECT_EQ((Copy<signed char, signed char>(-128)), -128);
    EXPECT_EQ((Copy<int, int>(-123456)), -123456);
    EXPECT_EQ((Copy<unsigned long, unsigned long>(std::numeric_limits<unsigned long>::max())),
              std::numeric_limits<unsigned long>::max());
    EXPECT_EQ((Copy<float, float>(-2.5f)), -2.5f);
    EXPECT_EQ((Copy<double, double>(1e300)), 1e300);
}

TEST_F(CopyConnectorTest, ConversionToAWiderIntegerSignExtendsSignedAndZeroExtendsUnsignedSources)
{
    EXPECT_EQ((Copy<signed char, long>(-5)), -5);
    EXPECT_EQ((Copy<short, int>(-2)), -2);
    EXPECT_EQ((Copy<signed char, unsigned int>(-1)), 0xFFFFFFFFu);
    EXPECT_EQ((Copy<int, unsigned long>(-1)), std::numeric_limits<unsigned long>::max());
    EXPECT_EQ((Copy<unsigned char, short>(200)), 200);
    EXPECT_EQ((Copy<unsigned short, long>(65535)), 65535);
    EXPECT_EQ((Copy<unsigned int, long>(4294967295u)), 4294967295L);
}

TEST_F(CopyConnectorTest, ConversionToANarrowerOrSameWidthIntegerKeepsTheLowBits)
{
    EXPECT_EQ((Copy<unsigned int, int>(4294967295u)), -1);
    EXPECT_EQ((Copy<long, int>(0x100000005L)), 5);
    EXPECT_EQ((Copy<unsigned short, short>(65535)), -1);
    EXPECT_EQ((Copy<short, unsigned char>(-1)), 255);
    EXPECT_EQ((Copy<long, unsigned short>(-65535L)), 1);
    EXPECT_EQ((Copy<unsigned long, signed char>(0x80ul)), -128);
}

TEST_F(CopyConnectorTest, ConversionOfAnIntegerToBoolIsTrueIfNotZero)
{
    EXPECT_TRUE((Copy<int, bool>(256)));
    EXPECT_TRUE((Copy<long, bool>(std::numeric_limits<long>::min())));
    EXPECT_TRUE((Copy<signed char, bool>(-1)));
    EXPECT_FALSE((Copy<unsigned long, bool>(0)));
}

TEST_F(CopyConnectorTest, ConversionOfAFloatingPointValueToBoolIsTrueIfNotZero)
{
    EXPECT_TRUE((Copy<double, bool>(0.5)));
    EXPECT_TRUE((Copy<float, bool>(std::numeric_limits<float>::quiet_NaN())));
    EXPECT_TRUE((Copy<float, bool>(-1e-30f)));
    EXPECT_FALSE((Copy<double, bool>(-0.0)));
    EXPECT_FALSE((Copy<float, bool>(0.0f)));
}

TEST_F(CopyConnectorTest, ConversionOfBoolToANumberGivesZeroOrOne)
{
    EXPECT_EQ((Copy<bool, double>(true)), 1.0);
    EXPECT_EQ((Copy<bool, float>(false)), 0.0f);
    EXPECT_EQ((Copy<bool, unsigned char>(true)), 1);
    EXPECT_EQ((Copy<bool, long>(true)), 1);
    EXPECT_EQ((Copy<bool, int>(false)), 0);
}

TEST_F(CopyConnectorTest, ConversionOfAnIntegerToFloatingPointRoundsToNearest)
{
    EXPECT_EQ((Copy<int, float>(16777217)), 16777216.0f);
    EXPECT_EQ((Copy<long, double>(-3)), -3.0);
    EXPECT_EQ((Copy<long, double>((1L << 53) + 1)), 9007199254740992.0);
    // All 64 bits of an unsigned long count, also with the top bit set.
    EXPECT_EQ((Copy<unsigned long, double>(std::numeric_limits<unsigned long>::max())), 18446744073709551616.0);
    EXPECT_EQ((Copy<unsigned long, float>(0x8000000000000000ul)), 9223372036854775808.0f);
    EXPECT_EQ((Copy<unsigned int, float>(4294967295u)), 4294967296.0f);
}

TEST_F(CopyConnectorTest, ConversionOfFloatingPointToSmallIntegersTruncatesToThirtyTwoBitsAndKeepsTheLowBits)
{
    EXPECT_EQ((Copy<double, short>(-3.7)), -3);
    EXPECT_EQ((Copy<double, unsigned char>(300.9)), 44);
    EXPECT_EQ((Copy<float, unsigned short>(-1.5f)), 65535);
    EXPECT_EQ((Copy<double, short>(70000.0)), 4464);
    EXPECT_EQ((Copy<float, signed char>(200.0f)), -56);
    EXPECT_EQ((Copy<double, int>(-2147483648.0)), std::numeric_limits<int>::min());
    EXPECT_EQ((Copy<float, int>(123456.75f)), 123456);
}

TEST_F(CopyConnectorTest, ConversionOfFloatingPointToUnsignedIntAndLongTruncatesToSixtyFourBitsAndKeepsTheLowBits)
{
    EXPECT_EQ((Copy<double, unsigned int>(-1.0)), 4294967295u);
    EXPECT_EQ((Copy<double, unsigned int>(5e9)), 705032704u);
    EXPECT_EQ((Copy<float, unsigned int>(4e9f)), 4000000000u);
    EXPECT_EQ((Copy<double, long>(-1e12)), -1000000000000L);
    EXPECT_EQ((Copy<float, long>(-2.9f)), -2L);
}

TEST_F(CopyConnectorTest, ConversionOfFloatingPointToUnsignedLongTruncatesOverTheFullRange)
{
    EXPECT_EQ((Copy<double, unsigned long>(3.99)), 3ul);
    EXPECT_EQ((Copy<double, unsigned long>(1.5e19)), 15000000000000000000ul);
    EXPECT_EQ((Copy<double, unsigned long>(9223372036854775808.0)), 9223372036854775808ul);
    EXPECT_EQ((Copy<float, unsigned long>(1e19f)), 9999999980506447872ul);
}

TEST_F(CopyConnectorTest, ConversionOfFloatToDoubleIsExact)
{
    EXPECT_EQ((Copy<float, double>(0.1f)), 0.100000001490116119384765625);
    EXPECT_EQ((Copy<float, double>(-16777215.0f)), -16777215.0);
}

TEST_F(CopyConnectorTest, ConversionOfDoubleToFloatRoundsToNearest)
{
    EXPECT_EQ((Copy<double, float>(0.1)), 0.1f);
    EXPECT_EQ((Copy<double, float>(3.14159265358979)), 3.14159274f);
    EXPECT_EQ((Copy<double, float>(16777217.0)), 16777216.0f);
    EXPECT_EQ((Copy<double, float>(16777219.0)), 16777220.0f);
}

// Behaviour ---------------------------------------------------------------------------------------

TEST_F(CopyConnectorTest, ExecuteRaisesTheEventOnceWithTheConnector)
{
    CopyConnector<int, long> connector("copy", InPath<int>(), OutPath<long>());
    EventCounter counter;
    connector.changed += Zon::make_delegate(&counter, &EventCounter::OnChanged);
    in.i = 5;
    connector.Execute();
    EXPECT_EQ(counter.count, 1);
    EXPECT_EQ(counter.last, &connector);
    // Also when the value is the same as before.
    connector.Execute();
    EXPECT_EQ(counter.count, 2);
    EXPECT_EQ(out.l, 5);
}

TEST_F(CopyConnectorTest, ExecuteWritesWhateverTheQualityAndReadsTheSourceAnewEachTime)
{
    CopyConnector<short, short> connector("copy", InPath<short>(), OutPath<short>());
    connector.AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Bad)));
    in.s = 1;
    connector.Execute();
    EXPECT_EQ(out.s, 1);
    in.s = 2;
    out.s = 9;
    connector.Execute();
    EXPECT_EQ(out.s, 2);
}

TEST_F(CopyConnectorTest, ACopyConnectorHasNoParameters)
{
    CopyConnector<int, int> connector("copy", InPath<int>(), OutPath<int>());
    EXPECT_EQ(connector.GetParameterProvider().Count(), 0u);
    EXPECT_EQ(connector.GetName(), String("copy"));
}

TEST_F(CopyConnectorTest, ANarrowTextIsCopiedWithItsLengthAndTheRestCleared)
{
    in.text = Narrow80("pump 1 running");
    out.text = Narrow80("a text that was longer than the new one");
    CopyConnector<NarrowText, NarrowText> connector("text", InPath<NarrowText>(), OutPath<NarrowText>());
    EventCounter counter;
    connector.changed += Zon::make_delegate(&counter, &EventCounter::OnChanged);
    connector.Execute();
    EXPECT_EQ(out.text.length, 14u);
    EXPECT_STREQ(out.text.data, "pump 1 running");
    for (std::size_t i = 14; i <= 80; ++i) {
        EXPECT_EQ(out.text.data[i], '\0') << i;
    }
    EXPECT_EQ(counter.count, 1);
}

TEST_F(CopyConnectorTest, ANarrowTextIsCutToTheCapacityOfTheDestination)
{
    in.text = Narrow80("abcdefgh");
    CopyConnector<NarrowText, NarrowText> connector("text", InPath<NarrowText>(), String("Conn/Tiny"));
    connector.Execute();
    EXPECT_EQ(tiny.length, 4u);
    EXPECT_EQ(std::string(tiny.data, 5), std::string("abcd\0", 5));
}

TEST_F(CopyConnectorTest, AWideTextIsReadThroughItsEightBitView)
{
    // u"Hi" is the bytes 'H', 0, 'i', 0: read as 8-bit units, the text is "H".
    in.wide = Wide80(u"Hi");
    out.wide = Wide80(u"previous");
    CopyConnector<WideText, WideText> connector("text", InPath<WideText>(), OutPath<WideText>());
    EventCounter counter;
    connector.changed += Zon::make_delegate(&counter, &EventCounter::OnChanged);
    connector.Execute();
    EXPECT_EQ(out.wide.length, 1u);
    EXPECT_EQ(out.wide.data[0], u'H');
    for (std::size_t i = 1; i <= 80; ++i) {
        EXPECT_EQ(out.wide.data[i], u'\0') << i;
    }
    EXPECT_EQ(counter.count, 1);
}
