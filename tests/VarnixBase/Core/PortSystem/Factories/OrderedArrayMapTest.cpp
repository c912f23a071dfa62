#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/Factories/MapTypeInfo.hpp"
#include "VarnixBase/Core/PortSystem/Factories/OrderedArrayMap.hpp"

using VarnixBase::Core::PortSystem::MapTypeInfo;
using VarnixBase::Core::PortSystem::OrderedArrayMap;
using Zon::String;

namespace {

std::vector<int> Keys(const OrderedArrayMap<int, char>& map)
{
    std::vector<int> keys;
    for (const auto& entry : map) {
        keys.push_back(entry.first);
    }
    return keys;
}

MapTypeInfo Key(const char* input, const char* output)
{
    return MapTypeInfo{String(input), String(output)};
}

} // namespace

TEST(OrderedArrayMap, UnderAStrictWeakOrderItKeepsTheEntriesSortedAndFindsEachOne)
{
    OrderedArrayMap<int, char> map;
    for (int key : {5, 1, 9, 3, 7}) {
        EXPECT_TRUE(map.Insert(key, static_cast<char>('a' + key)));
    }
    EXPECT_EQ(Keys(map), (std::vector<int>{1, 3, 5, 7, 9}));
    for (int key : {1, 3, 5, 7, 9}) {
        auto found = map.Find(key);
        ASSERT_NE(found, map.end());
        EXPECT_EQ(found->second, static_cast<char>('a' + key));
    }
    EXPECT_EQ(map.Find(4), map.end());
    EXPECT_EQ(map.Size(), 5u);
}

TEST(OrderedArrayMap, InsertRefusesAKeyThatIsThereAndKeepsTheFirstValue)
{
    OrderedArrayMap<int, char> map;
    EXPECT_TRUE(map.Insert(2, 'x'));
    EXPECT_FALSE(map.Insert(2, 'y'));
    EXPECT_EQ(map.Size(), 1u);
    EXPECT_EQ(map.Find(2)->second, 'x');
}

TEST(OrderedArrayMap, ClearEmptiesTheMap)
{
    OrderedArrayMap<int, char> map;
    map.Insert(1, 'a');
    map.Clear();
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(map.begin(), map.end());
}

TEST(OrderedArrayMap, UnderTheKeyOrderOfConnectorPairsEveryKeyStaysButTheSearchCanMissOne)
{
    // (int, long) is before (long, int) and (long, int) is before (int, long).
    OrderedArrayMap<MapTypeInfo, int> map;
    const std::vector<MapTypeInfo> keys = {Key("long", "int"), Key("int", "long"), Key("bool", "short"),
                                           Key("short", "bool"), Key("int", "int")};
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_TRUE(map.Insert(keys[i], static_cast<int>(i)));
    }
    EXPECT_EQ(map.Size(), keys.size());
    std::size_t found = 0;
    std::size_t walked = 0;
    for (const auto& key : keys) {
        bool seen = false;
        for (const auto& entry : map) {
            seen = seen || entry.first == key;
        }
        walked += seen ? 1 : 0;
        found += map.Find(key) != map.end() ? 1 : 0;
    }
    EXPECT_EQ(walked, keys.size());
    EXPECT_LT(found, keys.size());
}

TEST(OrderedArrayMap, ASearchNeverAnswersWithADifferentKey)
{
    OrderedArrayMap<MapTypeInfo, int> map;
    map.Insert(Key("long", "int"), 1);
    map.Insert(Key("int", "long"), 2);
    for (const auto& probe : {Key("int", "int"), Key("long", "long"), Key("bool", "bool")}) {
        EXPECT_EQ(map.Find(probe), map.end());
    }
    EXPECT_EQ(map.Size(), 2u);
}
