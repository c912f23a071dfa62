#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/Parameter.hpp"
#include "VarnixBase/Core/PortSystem/ParameterProvider.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/ParseException.hpp"

#include "ConnectorTestSupport.hpp"

using namespace ConnectorTest;
using namespace VarnixBase::Core::PortSystem;
using Zon::System::Commons::ArgumentException;
using Zon::System::Commons::InvalidConfigException;
using Zon::System::Commons::InvalidOperationException;
using Zon::System::Commons::ParseException;

namespace {

class ParameterTest : public ConnectorFixture {};

/// Counts the parameters of `provider` named `name`, through the provider's own look-ups only.
std::size_t CountNamed(const ParameterProvider& provider, const String& name)
{
    std::shared_ptr<IParameter> found;
    return provider.TryGetParameter(name, found) ? 1 : 0;
}

/// A parameter that refuses every bind, as a derived class may.
class RefusingParameter : public Parameter<double> {
public:
    RefusingParameter() : Parameter<double>(String("limit"), 1.0) {}
    bool TryBind(String const&) override
    {
        ++tries;
        return false;
    }
    int tries = 0;
};

} // namespace

TEST_F(ParameterTest, AddParameterCreatesTheParameterWithItsDefaultAndAppendsIt)
{
    ParameterProvider provider;
    Parameter<double>& gain = provider.AddParameter<double>(String("gain"), 1.5);
    Parameter<bool>& invert = provider.AddParameter<bool>(String("invert"), true);
    EXPECT_EQ(provider.Count(), 2u);
    EXPECT_EQ(gain.GetName(), String("gain"));
    EXPECT_EQ(gain.GetValue(), 1.5);
    EXPECT_TRUE(invert.GetValue());
    EXPECT_EQ(provider.GetParameter(String("gain")).get(), static_cast<IParameter*>(&gain));
    EXPECT_EQ(provider.GetParameter(String("invert")).get(), static_cast<IParameter*>(&invert));
}

TEST_F(ParameterTest, AddParameterTwiceWithOneNameThrowsAndKeepsTheFirstWithItsDefault)
{
    ParameterProvider provider;
    Parameter<double>& first = provider.AddParameter<double>(String("gain"), 2.0);
    try {
        provider.AddParameter<double>(String("gain"), 3.0);
        FAIL() << "no exception";
    } catch (const ArgumentException& error) {
        EXPECT_EQ(error.GetMessage(), String("Parameter `gain` already exists"));
    }
    EXPECT_THROW(provider.AddParameter<bool>(String("gain"), true), ArgumentException);
    EXPECT_EQ(provider.Count(), 1u);
    EXPECT_EQ(CountNamed(provider, String("gain")), 1u);
    EXPECT_EQ(provider.GetParameter(String("gain")).get(), static_cast<IParameter*>(&first));
    EXPECT_EQ(first.GetValue(), 2.0);
}

TEST_F(ParameterTest, AddParameterAcceptsAnEmptyNameAndRejectsASecondEmptyNameAsDuplicate)
{
    ParameterProvider provider;
    Parameter<bool>& unnamed = provider.AddParameter<bool>(String(""), true);
    EXPECT_EQ(unnamed.GetName(), String(""));
    EXPECT_TRUE(provider.HasParameter(String("")));
    EXPECT_THROW(provider.AddParameter<double>(String(""), 0.0), ArgumentException);
    EXPECT_EQ(provider.Count(), 1u);
}

TEST_F(ParameterTest, TheReferenceFromAddParameterStaysValidWhileTheProviderLives)
{
    ParameterProvider provider;
    Parameter<double>& offset = provider.AddParameter<double>(String("offset"), 0.5);
    for (int i = 0; i < 20; ++i) {
        provider.AddParameter<double>(String("p") + String(std::to_string(i)), i);
    }
    EXPECT_EQ(offset.GetName(), String("offset"));
    EXPECT_EQ(offset.GetValue(), 0.5);
}

TEST_F(ParameterTest, SetValueByStringStoresAParsedLiteral)
{
    ParameterProvider provider;
    Parameter<double>& gain = provider.AddParameter<double>(String("gain"), 1.0);
    Parameter<bool>& invert = provider.AddParameter<bool>(String("invert"), false);
    gain.SetValueByString(String(" LREAL#-2.5e1 "));
    invert.SetValueByString(String("TRUE"));
    EXPECT_EQ(gain.GetValue(), -25.0);
    EXPECT_TRUE(invert.GetValue());
    invert.SetValueByString(String("bool#0"));
    EXPECT_FALSE(invert.GetValue());
}

TEST_F(ParameterTest, SetValueByStringWithABadLiteralAfterAGoodOneLeavesTheGoodValueInPlace)
{
    ParameterProvider provider;
    Parameter<double>& gain = provider.AddParameter<double>(String("gain"), 1.0);
    gain.SetValueByString(String("4.5"));
    try {
        gain.SetValueByString(String("four"));
        FAIL() << "no exception";
    } catch (const InvalidConfigException& error) {
        EXPECT_EQ(error.GetMessage(), String("Parameter `gain` of type `double` has invalid configuration `four`"));
    }
    EXPECT_EQ(gain.GetValue(), 4.5);
}

TEST_F(ParameterTest, SetValueByStringNamesTheCommonTypeNameOfBool)
{
    ParameterProvider provider;
    Parameter<bool>& invert = provider.AddParameter<bool>(String("invert"), true);
    try {
        invert.SetValueByString(String("2"));
        FAIL() << "no exception";
    } catch (const InvalidConfigException& error) {
        EXPECT_EQ(error.GetMessage(), String("Parameter `invert` of type `bool` has invalid configuration `2`"));
    }
    EXPECT_TRUE(invert.GetValue());
}

TEST_F(ParameterTest, TryBindPointsTheParameterAtTheVariable)
{
    ParameterProvider provider;
    Parameter<double>& gain = provider.AddParameter<double>(String("gain"), 1.0);
    settings.factor = 7.25;
    EXPECT_TRUE(gain.TryBind(String("Conn/Settings.factor")));
    EXPECT_EQ(gain.GetDataAccessValue().GetDataPointer(), &settings.factor);
    EXPECT_EQ(gain.GetValue(), 7.25);
    settings.factor = -1.0;
    EXPECT_EQ(gain.GetValue(), -1.0);
}

TEST_F(ParameterTest, SetValueByStringOnABoundParameterChangesTheBoundVariable)
{
    ParameterProvider provider;
    Parameter<bool>& enabled = provider.AddParameter<bool>(String("enabled"), false);
    enabled.Bind(String("Conn/Settings.enabled"));
    enabled.SetValueByString(String("true"));
    EXPECT_TRUE(settings.enabled);
    Parameter<double>& gain = provider.AddParameter<double>(String("gain"), 1.0);
    gain.Bind(String("Conn/Settings.factor"));
    gain.SetValueByString(String("3.5"));
    EXPECT_EQ(settings.factor, 3.5);
}

TEST_F(ParameterTest, AfterTryBindTheValueHeldBeforeIsGone)
{
    ParameterProvider provider;
    Parameter<double>& gain = provider.AddParameter<double>(String("gain"), 1.0);
    gain.SetValueByString(String("9.5"));
    const double* ownCell = gain.GetDataAccessValue().GetDataPointer();
    settings.factor = 2.0;
    ASSERT_TRUE(gain.TryBind(String("Conn/Settings.factor")));
    EXPECT_NE(gain.GetDataAccessValue().GetDataPointer(), ownCell);
    EXPECT_EQ(gain.GetValue(), 2.0);
    // A new literal goes to the variable, and a second bind moves on: 9.5 is reached no more.
    gain.SetValueByString(String("4.0"));
    EXPECT_EQ(settings.factor, 4.0);
    ASSERT_TRUE(gain.TryBind(String("Conn/In.Float64")));
    EXPECT_EQ(gain.GetDataAccessValue().GetDataPointer(), &in.d);
    EXPECT_EQ(gain.GetValue(), 0.0);
    EXPECT_EQ(settings.factor, 4.0);
}

TEST_F(ParameterTest, TryBindOnAPathWhoseWalkFailsPassesTheExceptionOnAndLeavesTheParameter)
{
    ParameterProvider provider;
    Parameter<double>& gain = provider.AddParameter<double>(String("gain"), 1.0);
    gain.SetValueByString(String("6.0"));
    const double* ownCell = gain.GetDataAccessValue().GetDataPointer();
    EXPECT_THROW(gain.TryBind(String("Conn/Settings.factor]")), ParseException);
    EXPECT_THROW(gain.Bind(String("Conn/Settings.factor[x]")), ParseException);
    EXPECT_EQ(gain.GetDataAccessValue().GetDataPointer(), ownCell);
    EXPECT_EQ(gain.GetValue(), 6.0);
}

TEST_F(ParameterTest, TryBindOnAPathOfAComponentThatIsNotAvailableReturnsTrueAndLeavesANullAddress)
{
    ParameterProvider provider;
    Parameter<double>& gain = provider.AddParameter<double>(String("gain"), 1.0);
    EXPECT_TRUE(gain.TryBind(String("Elsewhere/Settings.factor")));
    EXPECT_EQ(gain.GetDataAccessValue().GetDataPointer(), nullptr);
    EXPECT_EQ(Capture().Count(Level::Error, "Component is not available: Elsewhere"), 1u);
}

TEST_F(ParameterTest, TryBindOnAPathWithoutComponentReturnsTrueAndLeavesANullAddress)
{
    ParameterProvider provider;
    Parameter<bool>& invert = provider.AddParameter<bool>(String("invert"), true);
    EXPECT_TRUE(invert.TryBind(String("factor")));
    EXPECT_EQ(invert.GetDataAccessValue().GetDataPointer(), nullptr);
}

TEST_F(ParameterTest, AParameterBoundToANullAddressReadsZeroAndRefusesLiterals)
{
    ParameterProvider provider;
    Parameter<double>& gain = provider.AddParameter<double>(String("gain"), 1.0);
    ASSERT_TRUE(gain.TryBind(String("Elsewhere/Settings.factor")));
    EXPECT_EQ(gain.GetValue(), 0.0);
    try {
        gain.SetValueByString(String("2.0"));
        FAIL() << "no exception";
    } catch (const InvalidOperationException& error) {
        EXPECT_EQ(error.GetMessage(), String("Parameter `gain` is bound to no variable address"));
    }
    // A bad literal is reported as such first.
    EXPECT_THROW(gain.SetValueByString(String("x")), InvalidConfigException);
}

TEST_F(ParameterTest, BindGoesThroughTheVirtualTryBindAndThrowsWhenItAnswersFalse)
{
    auto parameter = std::make_shared<RefusingParameter>();
    IParameter& asInterface = *parameter;
    try {
        asInterface.Bind(String("Conn/Settings.factor"));
        FAIL() << "no exception";
    } catch (const ArgumentException& error) {
        EXPECT_EQ(error.GetMessage(), String("Unable to bind parameter `limit` to `Conn/Settings.factor`."));
    }
    EXPECT_EQ(parameter->tries, 1);
    EXPECT_EQ(parameter->GetValue(), 1.0);
}

TEST_F(ParameterTest, BindBindsLikeTryBind)
{
    ParameterProvider provider;
    Parameter<bool>& enabled = provider.AddParameter<bool>(String("enabled"), false);
    settings.enabled = true;
    enabled.Bind(String("Conn/Settings.enabled"));
    EXPECT_EQ(enabled.GetDataAccessValue().GetDataPointer(), &settings.enabled);
    EXPECT_TRUE(enabled.GetValue());
}

TEST_F(ParameterTest, ParametersAreReachedThroughTheProviderByName)
{
    ParameterProvider provider;
    provider.AddParameter<double>(String("gain"), 1.0);
    std::shared_ptr<IParameter> found;
    ASSERT_TRUE(provider.TryGetParameter(String("gain"), found));
    found->SetValueByString(String("8.0"));
    ASSERT_TRUE(found->TryBind(String("Conn/Settings.factor")));
    found->SetValueByString(String("1.25"));
    EXPECT_EQ(settings.factor, 1.25);
    EXPECT_THROW(provider.GetParameter(String("Gain")), ArgumentException);
}
