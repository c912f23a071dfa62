#include <memory>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ParameterProvider.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"

#include "GraphDoubles.hpp"

using namespace VarnixBase::Core::PortSystem;
using VarnixTest::Graph::FakeParameter;
using Zon::System::Commons::ArgumentException;

namespace {

/// Reaches the appending step that typed parameters go through.
class FilledProvider : public ParameterProvider {
public:
    using ParameterProvider::Append;
};

std::shared_ptr<IParameter> MakeParameter(const char* name)
{
    return std::make_shared<FakeParameter>(name);
}

} // namespace

TEST(ParameterProvider, ANewProviderIsEmpty)
{
    ParameterProvider provider;
    std::shared_ptr<IParameter> found;
    EXPECT_EQ(provider.Count(), 0u);
    EXPECT_FALSE(provider.HasParameter(String("factor")));
    EXPECT_FALSE(provider.TryGetParameter(String("factor"), found));
}

TEST(ParameterProvider, TryGetParameterFindsByName)
{
    FilledProvider provider;
    auto factor = MakeParameter("factor");
    provider.Append(MakeParameter("offset"));
    provider.Append(factor);
    std::shared_ptr<IParameter> found;
    ASSERT_TRUE(provider.TryGetParameter(String("factor"), found));
    EXPECT_EQ(found, factor);
    EXPECT_EQ(provider.GetParameter(String("factor")), factor);
}

TEST(ParameterProvider, HasParameterGivenADifferentObjectCarryingAnExistingNameAnswersTrue)
{
    FilledProvider provider;
    provider.Append(MakeParameter("factor"));
    auto other = MakeParameter("factor");
    EXPECT_TRUE(provider.HasParameter(other));
    EXPECT_FALSE(provider.HasParameter(MakeParameter("offset")));
}

TEST(ParameterProvider, TryGetParameterWithAMissLeavesAPreviouslyFilledArgumentEmpty)
{
    FilledProvider provider;
    provider.Append(MakeParameter("factor"));
    auto held = MakeParameter("held");
    std::shared_ptr<IParameter> parameter = held;
    EXPECT_FALSE(provider.TryGetParameter(String("offset"), parameter));
    EXPECT_EQ(parameter, nullptr);
    // Whatever it held before is released.
    EXPECT_EQ(held.use_count(), 1);
}

TEST(ParameterProvider, GetParameterWithANameThatDiffersOnlyInCaseThrows)
{
    FilledProvider provider;
    provider.Append(MakeParameter("Factor"));
    try {
        provider.GetParameter(String("factor"));
        FAIL() << "no exception";
    } catch (const ArgumentException& error) {
        EXPECT_EQ(error.GetMessage(), String("Parameter `factor` not found"));
    }
    EXPECT_FALSE(provider.HasParameter(String("factor")));
}

TEST(ParameterProvider, AppendingATakenNameThrowsAndKeepsTheFirst)
{
    FilledProvider provider;
    auto first = MakeParameter("factor");
    provider.Append(first);
    try {
        provider.Append(MakeParameter("factor"));
        FAIL() << "no exception";
    } catch (const ArgumentException& error) {
        EXPECT_EQ(error.GetMessage(), String("Parameter `factor` already exists"));
    }
    EXPECT_EQ(provider.Count(), 1u);
    EXPECT_EQ(provider.GetParameter(String("factor")), first);
}

TEST(ParameterProvider, AnEmptyParameterArgumentIsRefused)
{
    FilledProvider provider;
    EXPECT_THROW(provider.HasParameter(std::shared_ptr<IParameter>()), ArgumentException);
    EXPECT_THROW(provider.Append(std::shared_ptr<IParameter>()), ArgumentException);
    EXPECT_EQ(provider.Count(), 0u);
}

TEST(ParameterProvider, ReleasingTheProviderDestroysItsParametersThroughTheirOwnType)
{
    int before = FakeParameter::alive;
    {
        FilledProvider provider;
        provider.Append(MakeParameter("a"));
        provider.Append(MakeParameter("b"));
        EXPECT_EQ(FakeParameter::alive, before + 2);
    }
    EXPECT_EQ(FakeParameter::alive, before);
}
