#include "ozaddressset.h"

#include "memory_refusal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <new>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace
{
struct Thing;
typedef OzAddressSet<Thing*> Set;
typedef OzAddressMap<Thing*, Thing*> Map;

/// The address of the n-th thing of an imagined row. None of them is ever read.
Thing* thing(std::uint64_t n)
{
  return reinterpret_cast<Thing*>(n * 8);
}

std::vector<Thing*> things_in(Set const& set)
{
  return std::vector<Thing*>(set.begin(), set.end());
}

std::map<Thing*, Thing*> entries_in(Map const& map)
{
  std::map<Thing*, Thing*> entries;
  for (auto const& entry : map)
    EXPECT_TRUE(entries.emplace(entry.key, entry.value).second);
  return entries;
}

TEST(OzAddressSet, IsOneWord)
{
  EXPECT_EQ(sizeof(Set), 8u);
}

TEST(OzAddressSet, IsEmptyAtFirst)
{
  Set set;

  EXPECT_TRUE(set.empty());
  EXPECT_EQ(set.size(), 0u);
  EXPECT_TRUE(set.begin() == set.end());
  EXPECT_FALSE(set.contains(thing(1)));
  EXPECT_FALSE(set.contains(nullptr));
  EXPECT_FALSE(set.erase(thing(1)));
  EXPECT_TRUE(set.above(nullptr) == set.end());
}

TEST(OzAddressSet, TellsWhetherItChanged)
{
  Set set;

  EXPECT_TRUE(set.insert(thing(2)));
  EXPECT_FALSE(set.insert(thing(2)));
  EXPECT_TRUE(set.insert(thing(1)));
  EXPECT_FALSE(set.insert(thing(1)));
  EXPECT_FALSE(set.erase(thing(3)));
  EXPECT_TRUE(set.erase(thing(2)));
  EXPECT_FALSE(set.erase(thing(2)));
  EXPECT_TRUE(set.erase(thing(1)));
  EXPECT_TRUE(set.empty());
}

TEST(OzAddressSet, HoldsNullAsItsLeastAddress)
{
  Set set;
  set.insert(nullptr);
  EXPECT_FALSE(set.empty());
  EXPECT_EQ(set.size(), 1u);
  EXPECT_TRUE(set.contains(nullptr));
  EXPECT_EQ(things_in(set), std::vector<Thing*>{nullptr});

  set.insert(thing(5));
  set.insert(thing(3));
  EXPECT_EQ(things_in(set), (std::vector<Thing*>{nullptr, thing(3), thing(5)}));
  EXPECT_EQ(*set.above(nullptr), thing(3));
}

TEST(OzAddressSet, ComparesAddressesAsUnsignedNumbers)
{
  Thing* const high = reinterpret_cast<Thing*>(~std::uintptr_t(7));
  Set set;
  set.insert(high);
  set.insert(thing(1));

  EXPECT_EQ(things_in(set), (std::vector<Thing*>{thing(1), high}));
}

/// The numbers from 0 to `count` - 1 in one of several orders.
std::vector<std::uint64_t> numbers(std::uint64_t count, int order)
{
  std::vector<std::uint64_t> result;
  for (std::uint64_t n = 0; n < count; ++n)
    result.push_back(n);
  std::mt19937 random(4);
  if (order == 1)
    std::reverse(result.begin(), result.end());
  if (order == 2)
    std::shuffle(result.begin(), result.end(), random);
  return result;
}

TEST(OzAddressSet, HoldsManyInWhateverOrderTheyComeAndGo)
{
  for (std::uint64_t const count : {2u, 3u, 5u, 17u, 128u, 129u, 600u, 5000u})
    for (int coming = 0; coming < 3; ++coming)
      for (int going = 0; going < 3; ++going)
      {
        SCOPED_TRACE(std::to_string(count) + " things, order " + std::to_string(coming) + ", " +
                     std::to_string(going));
        Set set;
        for (std::uint64_t n : numbers(count, coming))
          ASSERT_TRUE(set.insert(thing(2 * n)));
        ASSERT_EQ(set.size(), count);

        std::uint64_t next = 0;
        for (Thing* held : set)
          ASSERT_EQ(held, thing(2 * next++));
        ASSERT_EQ(next, count);
        for (std::uint64_t n = 0; n < count; ++n)
        {
          ASSERT_TRUE(set.contains(thing(2 * n)));
          ASSERT_FALSE(set.contains(thing(2 * n + 1)));
          ASSERT_FALSE(set.insert(thing(2 * n)));
          if (n + 1 < count)
          {
            ASSERT_EQ(*set.above(thing(2 * n)), thing(2 * n + 2));
            ASSERT_EQ(*set.above(thing(2 * n + 1)), thing(2 * n + 2));
          }
        }
        ASSERT_TRUE(set.above(thing(2 * count - 2)) == set.end());

        std::uint64_t left = count;
        for (std::uint64_t n : numbers(count, going))
        {
          ASSERT_FALSE(set.erase(thing(2 * n + 1)));
          ASSERT_TRUE(set.erase(thing(2 * n)));
          ASSERT_EQ(set.size(), --left);
        }
        ASSERT_TRUE(set.empty());
      }
}

TEST(OzAddressSet, IsWalkedWhileItShrinksThroughAbove)
{
  Set set;
  for (std::uint64_t n = 0; n < 2000; ++n)
    set.insert(thing(n));

  std::uint64_t steps = 0;
  for (Set::const_iterator at = set.begin(); at != set.end(); ++steps)
  {
    Thing* const here = *at;
    set.erase(here);
    at = set.above(here);
  }

  EXPECT_EQ(steps, 2000u);
  EXPECT_TRUE(set.empty());
}

TEST(OzAddressSet, StepsBehindAnIteratorThatIsCopied)
{
  Set set;
  set.insert(thing(1));
  set.insert(thing(2));
  Set::const_iterator at = set.begin();

  EXPECT_EQ(*at++, thing(1));
  EXPECT_EQ(*at++, thing(2));
  EXPECT_TRUE(at == set.end());
}

TEST(OzAddressSet, IsCopiedByValue)
{
  for (std::uint64_t const count : {0u, 1u, 2u, 100u, 3000u})
  {
    SCOPED_TRACE(count);
    Set set;
    for (std::uint64_t n : numbers(count, 2))
      set.insert(thing(n));
    std::vector<Thing*> const held = things_in(set);

    Set const copy(set);
    Set assigned;
    assigned.insert(thing(9000));
    assigned = set;
    Set& same = assigned;
    assigned = same;
    set.insert(thing(7000));
    set.erase(thing(0));

    EXPECT_EQ(things_in(copy), held);
    EXPECT_EQ(things_in(assigned), held);
    EXPECT_EQ(assigned.size(), count);
    assigned.clear();
    EXPECT_TRUE(assigned.empty());
    EXPECT_EQ(things_in(copy), held);
  }
}

TEST(OzAddressSet, AgreesWithAStandardSet)
{
  for (unsigned seed = 1; seed <= 12; ++seed)
  {
    std::mt19937 random(seed);
    Set set;
    std::set<Thing*> model;
    unsigned const range = seed % 3 == 0 ? 6 : seed % 3 == 1 ? 300 : 4000;
    for (int step = 0; step < 20000; ++step)
    {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
      Thing* const some = thing(random() % range);
      // The set grows for some thousand steps, then shrinks.
      bool const grows = step / 4000 % 2 == 0;
      if ((random() % 4 != 0) == grows)
        ASSERT_EQ(set.insert(some), model.insert(some).second);
      else
        ASSERT_EQ(set.erase(some), model.erase(some) == 1);
      ASSERT_EQ(set.size(), model.size());
      Thing* const other = thing(random() % range);
      ASSERT_EQ(set.contains(other), model.count(other) == 1);
      auto const above = model.upper_bound(other);
      ASSERT_EQ(set.above(other) == set.end(), above == model.end());
      if (above != model.end())
      {
        ASSERT_EQ(*set.above(other), *above);
      }
      if (step % 100 == 0)
      {
        ASSERT_EQ(things_in(set), std::vector<Thing*>(model.begin(), model.end()));
      }
    }
  }
}

/// Runs `change` with ever more memory until that is enough. Before it each time, `prepare` makes what is to
/// be changed; after a change that ran out of memory, `look` is called. Says how often that was.
template <class Prepare, class Change, class Look>
int with_scarce_memory(Prepare prepare, Change change, Look look)
{
  for (int met = 0;; ++met)
  {
    auto object = prepare();
    try
    {
      MemoryRefusal const refusal(met);
      change(object);
      return met;
    }
    catch (std::bad_alloc const&)
    {
    }
    look(object);
  }
}

TEST(OzAddressSet, KeepsItsAddressesWhenMemoryRunsOut)
{
  SKIP_UNLESS_MEMORY_CAN_BE_REFUSED();
  int refused = 0;
  for (std::uint64_t const count : {0u, 1u, 2u, 8u, 64u, 127u, 128u, 129u, 255u, 256u, 257u, 3000u})
  {
    auto const prepare = [count]
    {
      Set set;
      for (std::uint64_t n = 0; n < count; ++n)
        set.insert(thing(2 * n + 2));
      return set;
    };
    Set const before = prepare();
    std::vector<Thing*> const held = things_in(before);
    auto const look = [&](Set& set)
    {
      EXPECT_EQ(things_in(set), held) << count;
      EXPECT_EQ(set.size(), count);
      EXPECT_EQ(set.contains(thing(2 * count)), count != 0);
      EXPECT_TRUE(set.insert(thing(1))) << "it goes on as before";
      EXPECT_EQ(set.size(), count + 1);
    };
    for (std::uint64_t const added : {std::uint64_t(1), count / 2 * 2 + 1, 2 * count + 1})
      refused += with_scarce_memory(
          prepare, [&](Set& set) { EXPECT_TRUE(set.insert(thing(added))); }, look);
    refused += with_scarce_memory(
        prepare, [&](Set&) { Set const copy(before); }, look);
    refused += with_scarce_memory(
        prepare, [&](Set& set) { set = before; }, look);
  }
  EXPECT_GT(refused, 20);
}

TEST(OzAddressMap, IsTwoWords)
{
  EXPECT_EQ(sizeof(Map), 16u);
}

TEST(OzAddressMap, IsEmptyAtFirst)
{
  Map map;

  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.size(), 0u);
  EXPECT_TRUE(map.begin() == map.end());
  EXPECT_FALSE(map.contains(nullptr));
  EXPECT_EQ(map.value(thing(1)), nullptr);
  EXPECT_FALSE(map.erase(thing(1)));
}

TEST(OzAddressMap, KeepsTheFirstValueOfAKey)
{
  Map map;

  EXPECT_TRUE(map.insert(thing(1), thing(10)));
  EXPECT_FALSE(map.insert(thing(1), thing(11)));
  EXPECT_EQ(map.value(thing(1)), thing(10));
  EXPECT_TRUE(map.insert(thing(2), thing(20)));
  EXPECT_FALSE(map.insert(thing(2), thing(21)));
  EXPECT_EQ(map.value(thing(2)), thing(20));
  EXPECT_EQ(map.size(), 2u);
}

TEST(OzAddressMap, HoldsNullAsKeyAndAsValue)
{
  Map map;
  map.insert(nullptr, thing(10));
  map.insert(thing(1), nullptr);

  EXPECT_EQ(map.value(nullptr), thing(10));
  EXPECT_TRUE(map.contains(thing(1)));
  EXPECT_EQ(map.value(thing(1)), nullptr);
  EXPECT_TRUE(map.erase(nullptr));
  EXPECT_FALSE(map.contains(nullptr));
}

TEST(OzAddressMap, HoldsManyInWhateverOrderTheyComeAndGo)
{
  for (std::uint64_t const count : {2u, 3u, 8u, 9u, 12u, 13u, 600u, 5000u})
    for (int coming = 0; coming < 3; ++coming)
      for (int going = 0; going < 3; ++going)
      {
        SCOPED_TRACE(std::to_string(count) + " things, order " + std::to_string(coming) + ", " +
                     std::to_string(going));
        Map map;
        for (std::uint64_t n : numbers(count, coming))
          ASSERT_TRUE(map.insert(thing(n), thing(10000 + n)));
        ASSERT_EQ(map.size(), count);
        ASSERT_EQ(entries_in(map).size(), count);
        ASSERT_FALSE(map.contains(thing(count)));

        std::uint64_t left = count;
        for (std::uint64_t n : numbers(count, going))
        {
          ASSERT_EQ(map.value(thing(n)), thing(10000 + n));
          ASSERT_TRUE(map.erase(thing(n)));
          ASSERT_FALSE(map.erase(thing(n)));
          ASSERT_EQ(map.size(), --left);
        }
        ASSERT_TRUE(map.empty());
        ASSERT_TRUE(map.begin() == map.end());
      }
}

TEST(OzAddressMap, IsCopiedByValue)
{
  for (std::uint64_t const count : {0u, 1u, 2u, 100u})
  {
    SCOPED_TRACE(count);
    Map map;
    for (std::uint64_t n = 0; n < count; ++n)
      map.insert(thing(n), thing(n + 1));
    std::map<Thing*, Thing*> const held = entries_in(map);

    Map const copy(map);
    Map assigned;
    assigned.insert(thing(9000), nullptr);
    assigned = map;
    Map& same = assigned;
    assigned = same;
    map.insert(thing(7000), nullptr);
    map.erase(thing(0));

    EXPECT_EQ(entries_in(copy), held);
    EXPECT_EQ(entries_in(assigned), held);
    assigned.clear();
    EXPECT_TRUE(assigned.empty());
    EXPECT_EQ(entries_in(copy), held);
  }
}

TEST(OzAddressMap, KeepsItsEntriesWhenMemoryRunsOut)
{
  SKIP_UNLESS_MEMORY_CAN_BE_REFUSED();
  int refused = 0;
  for (std::uint64_t const count : {0u, 1u, 2u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 32u, 100u, 3000u})
  {
    auto const prepare = [count]
    {
      Map map;
      for (std::uint64_t n = 0; n < count; ++n)
        map.insert(thing(2 * n + 2), thing(n));
      return map;
    };
    Map const before = prepare();
    std::map<Thing*, Thing*> const held = entries_in(before);
    auto const look = [&](Map& map)
    {
      EXPECT_EQ(entries_in(map), held) << count;
      EXPECT_EQ(map.size(), count);
      for (std::uint64_t n = 0; n < count; ++n)
        ASSERT_EQ(map.value(thing(2 * n + 2)), thing(n));
      EXPECT_TRUE(map.insert(thing(1), thing(5))) << "it goes on as before";
      EXPECT_EQ(map.value(thing(1)), thing(5));
      EXPECT_EQ(map.size(), count + 1);
    };
    for (std::uint64_t const added : {std::uint64_t(1), 2 * count + 1})
      refused += with_scarce_memory(
          prepare, [&](Map& map) { EXPECT_TRUE(map.insert(thing(added), nullptr)); }, look);
    refused += with_scarce_memory(
        prepare, [&](Map&) { Map const copy(before); }, look);
    refused += with_scarce_memory(
        prepare, [&](Map& map) { map = before; }, look);
  }
  EXPECT_GT(refused, 10);
}

TEST(OzAddressMap, AgreesWithAStandardMap)
{
  for (unsigned seed = 1; seed <= 12; ++seed)
  {
    std::mt19937 random(seed);
    Map map;
    std::map<Thing*, Thing*> model;
    unsigned const range = seed % 3 == 0 ? 12 : seed % 3 == 1 ? 100 : 3000;
    std::uint64_t const stride = seed % 2 == 0 ? 1 : 512;
    for (int step = 0; step < 20000; ++step)
    {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
      Thing* const key = thing(random() % range * stride);
      Thing* const value = thing(random() % 5);
      bool const grows = step / 4000 % 2 == 0;
      if ((random() % 4 != 0) == grows)
        ASSERT_EQ(map.insert(key, value), model.emplace(key, value).second);
      else
        ASSERT_EQ(map.erase(key), model.erase(key) == 1);
      ASSERT_EQ(map.size(), model.size());
      Thing* const other = thing(random() % range * stride);
      auto const found = model.find(other);
      ASSERT_EQ(map.contains(other), found != model.end());
      ASSERT_EQ(map.value(other), found != model.end() ? found->second : nullptr);
      if (step % 100 == 0)
      {
        ASSERT_EQ(entries_in(map), model);
      }
    }
  }
}
} // namespace
