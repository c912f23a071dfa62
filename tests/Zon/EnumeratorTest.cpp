#include <map>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "Zon/BasicString.hpp"
#include "Zon/Enumerator.hpp"
#include "Zon/Exception.hpp"

namespace {

using IntEnumerator = Zon::IEnumerator<int>;

IntEnumerator::Ptr Over(std::vector<int> values)
{
    return Zon::Enumerator<int>::Over(std::make_shared<const std::vector<int>>(std::move(values)));
}

std::vector<int> Drain(IntEnumerator& enumerator)
{
    std::vector<int> result;
    while (enumerator.MoveNext()) {
        result.push_back(enumerator.GetCurrent());
    }
    return result;
}

} // namespace

TEST(Enumerator, EmptyHasNoElementAndRefusesGetCurrent)
{
    Zon::Enumerator<int>::Empty empty;
    EXPECT_FALSE(empty.MoveNext());
    EXPECT_FALSE(empty.MoveNext());
    try {
        empty.GetCurrent();
        FAIL() << "no exception";
    } catch (const Zon::Exception& exception) {
        EXPECT_STREQ(exception.what(), "IEnumerator::GetCurrent() is not supported by empty enumerators");
    }
}

TEST(Enumerator, EmptyOfReferencesRefusesGetCurrentToo)
{
    Zon::Enumerator<const Zon::String&>::Empty empty;
    EXPECT_FALSE(empty.MoveNext());
    EXPECT_THROW(empty.GetCurrent(), Zon::Exception);
}

TEST(Enumerator, StlAdapterStepsThroughItsRangeInOrder)
{
    auto enumerator = Over({1, 2, 3});
    EXPECT_EQ(Drain(*enumerator), (std::vector<int>{1, 2, 3}));
    EXPECT_FALSE(enumerator->MoveNext());
}

TEST(Enumerator, StlAdapterOverAnEmptyRangeEndsAtOnce)
{
    auto enumerator = Over({});
    EXPECT_FALSE(enumerator->MoveNext());
}

TEST(Enumerator, StlAdapterRefusesGetCurrentPastTheEndInsteadOfReadingThere)
{
    auto enumerator = Over({7});
    ASSERT_TRUE(enumerator->MoveNext());
    EXPECT_EQ(enumerator->GetCurrent(), 7);
    EXPECT_FALSE(enumerator->MoveNext());
    try {
        enumerator->GetCurrent();
        FAIL() << "no exception";
    } catch (const Zon::Exception& exception) {
        EXPECT_STREQ(exception.what(), "IEnumerator::GetCurrent() has no current element");
    }
}

TEST(Enumerator, StlAdapterProjectsElementsSuchAsTheKeysOfAMap)
{
    std::map<Zon::String, int> map{{"b", 2}, {"a", 1}};
    auto key = [](const auto& entry) -> const Zon::String& { return entry.first; };
    Zon::Enumerator<Zon::String>::StlAdapter<std::map<Zon::String, int>::const_iterator, decltype(key)> enumerator(
        map.cbegin(), map.cend(), key);
    ASSERT_TRUE(enumerator.MoveNext());
    EXPECT_EQ(enumerator.GetCurrent(), "a");
    ASSERT_TRUE(enumerator.MoveNext());
    EXPECT_EQ(enumerator.GetCurrent(), "b");
    EXPECT_FALSE(enumerator.MoveNext());
}

TEST(Enumerator, StlAdapterOfReferencesGivesTheElementsThemselves)
{
    std::vector<int> values{4, 5};
    Zon::Enumerator<const int&>::StlAdapter<std::vector<int>::const_iterator> enumerator(values.cbegin(),
                                                                                          values.cend());
    ASSERT_TRUE(enumerator.MoveNext());
    EXPECT_EQ(&enumerator.GetCurrent(), &values[0]);
}

TEST(Enumerator, OverKeepsItsContainerAlive)
{
    auto values = std::make_shared<const std::vector<int>>(std::vector<int>{9});
    auto enumerator = Zon::Enumerator<int>::Over(values);
    std::weak_ptr<const std::vector<int>> watch = values;
    values.reset();
    EXPECT_FALSE(watch.expired());
    ASSERT_TRUE(enumerator->MoveNext());
    EXPECT_EQ(enumerator->GetCurrent(), 9);
    enumerator.reset();
    EXPECT_TRUE(watch.expired());
}

TEST(Enumerator, CompositeGivesTheFirstSequenceThenTheSecond)
{
    Zon::Enumerator<int>::Composite composite(Over({1, 2}), Over({3}));
    EXPECT_EQ(Drain(composite), (std::vector<int>{1, 2, 3}));
}

TEST(Enumerator, CompositeReleasesTheFirstForGoodWhenItEnds)
{
    auto first = Over({1});
    std::weak_ptr<IntEnumerator> watch = first;
    Zon::Enumerator<int>::Composite composite(std::move(first), Over({2}));
    ASSERT_TRUE(composite.MoveNext());
    EXPECT_FALSE(watch.expired());
    ASSERT_TRUE(composite.MoveNext());
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(composite.GetCurrent(), 2);
}

TEST(Enumerator, CompositeWithAnEmptyFirstPassesOnToTheSecond)
{
    Zon::Enumerator<int>::Composite composite(std::make_shared<Zon::Enumerator<int>::Empty>(), Over({5}));
    ASSERT_TRUE(composite.MoveNext());
    EXPECT_EQ(composite.GetCurrent(), 5);
    EXPECT_FALSE(composite.MoveNext());
}

TEST(Enumerator, ExhaustedCompositeAnswersGetCurrentFromItsSecond)
{
    Zon::Enumerator<int>::Composite composite(Over({1}), std::make_shared<Zon::Enumerator<int>::Empty>());
    ASSERT_TRUE(composite.MoveNext());
    EXPECT_FALSE(composite.MoveNext());
    try {
        composite.GetCurrent();
        FAIL() << "no exception";
    } catch (const Zon::Exception& exception) {
        EXPECT_STREQ(exception.what(), "IEnumerator::GetCurrent() is not supported by empty enumerators");
    }
}
