#include <memory>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/PortBaseImpl.hpp"

#include "GraphDoubles.hpp"

using namespace VarnixBase::Core::PortSystem;
using namespace VarnixTest::Graph;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::StandardAttribute;

TEST(PortBaseImpl, KeepsNameAndDimensionFromConstruction)
{
    PortBaseImpl port("level", 7);
    EXPECT_EQ(port.GetName(), String("level"));
    EXPECT_EQ(port.GetDimension(), 7u);
}

TEST(PortBaseImpl, StartsWithoutAttributesParametersOrQualityProviders)
{
    PortBaseImpl port("level", 1);
    EXPECT_EQ(port.GetAttributes(), StandardAttribute::None);
    EXPECT_EQ(port.GetParameterProvider().Count(), 0u);
    EXPECT_TRUE(port.GetQualityProviders().empty());
}

TEST(PortBaseImpl, AddAttributesSetsBits)
{
    PortBaseImpl port("level", 1);
    port.AddAttributes(StandardAttribute::Input);
    port.AddAttributes(StandardAttribute::Retain | StandardAttribute::Hidden);
    EXPECT_EQ(port.GetAttributes(), StandardAttribute::Input | StandardAttribute::Retain | StandardAttribute::Hidden);
}

TEST(PortBaseImpl, HasAttributesWithTwoBitsOfWhichOneIsSetIsFalse)
{
    PortBaseImpl port("level", 1);
    port.AddAttributes(StandardAttribute::Input);
    EXPECT_FALSE(port.HasAttributes(StandardAttribute::Input | StandardAttribute::Output));
    EXPECT_TRUE(port.HasAttributes(StandardAttribute::Input));
}

TEST(PortBaseImpl, HasAttributesOfZeroIsTrue)
{
    PortBaseImpl port("level", 1);
    EXPECT_TRUE(port.HasAttributes(StandardAttribute::None));
}

TEST(PortBaseImpl, RemoveAttributesOfABitThatIsNotSetChangesNothing)
{
    PortBaseImpl port("level", 1);
    port.AddAttributes(StandardAttribute::Input | StandardAttribute::Archive);
    port.RemoveAttributes(StandardAttribute::Output);
    EXPECT_EQ(port.GetAttributes(), StandardAttribute::Input | StandardAttribute::Archive);
    port.RemoveAttributes(StandardAttribute::Input);
    EXPECT_EQ(port.GetAttributes(), StandardAttribute::Archive);
}

TEST(PortBaseImpl, GetQualityIsTheCombinationOfItsProviders)
{
    PortBaseImpl port("level", 1);
    EXPECT_EQ(port.GetQuality(), MakeQuality(QualityState::Good));
    port.AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Questionable, QualityFlags::WireBreak)));
    port.AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::None, QualityFlags::Overflow)));
    EXPECT_EQ(port.GetQuality(), MakeQuality(QualityState::Questionable, QualityFlags::WireBreak | QualityFlags::Overflow));
}

TEST(PortBaseImpl, AddQualityProviderAppendsWithoutCheckingForDuplicates)
{
    PortBaseImpl port("level", 1);
    auto provider = std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Good));
    port.AddQualityProvider(provider);
    port.AddQualityProvider(provider);
    ASSERT_EQ(port.GetQualityProviders().size(), 2u);
    EXPECT_EQ(port.GetQualityProviders().front(), provider);
    EXPECT_EQ(port.GetQualityProviders().back(), provider);
}

TEST(PortBaseImpl, PublishOnChangeAndRelativeDataPathDoNothing)
{
    PortBaseImpl port("level", 1);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    EXPECT_TRUE(builder.GetEntries().empty());
    FakeConnector connector("copy");
    connector.ownQuality = MakeQuality(QualityState::Bad);
    port.OnChange(connector);
    EXPECT_EQ(port.GetQuality(), MakeQuality(QualityState::Good));
    EXPECT_EQ(port.GetRelativeDataPath(), String(""));
}
