#include "ozlinklist.h"

#include "report_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
/// A link with a name, which counts the links that are alive.
class Named : public OzLink
{
public:
  explicit Named(int n)
    : name(n)
  {
    ++alive;
  }
  Named(Named const& other)
    : OzLink(other)
    , name(other.name)
  {
    ++alive;
  }
  Named& operator=(Named const&) = default;
  ~Named() override { --alive; }

  int name;
  static inline int alive = 0;
};

/// Opens what a list keeps for derived classes.
class Chain : public OzLinkList
{
public:
  using OzLinkList::array;
  using OzLinkList::cursor;
  using OzLinkList::head;
  using OzLinkList::set_head;
  using OzLinkList::set_tail;
  using OzLinkList::size;
  using OzLinkList::splice_out;
  using OzLinkList::splice_sequence;
  using OzLinkList::tail;

  Chain() = default;
  explicit Chain(std::vector<int> const& values)
  {
    for (int const value : values)
      add(value);
  }
  Chain(Chain const&) = default;
  Chain& operator=(Chain const&) = default;

  void add(int name)
  {
    Named* const link = new Named(name);
    if (tail() != nullptr)
      tail()->insert_next(link);
    else
      set_head(link);
    set_tail(link);
  }
  int name_at(std::uint64_t i) const
  {
    OzLink* const link = array(i);
    return link != nullptr ? static_cast<Named*>(link)->name : -1;
  }
};

std::vector<int> forwards(Chain const& chain)
{
  std::vector<int> names;
  for (OzLink* link = chain.head(); link != nullptr; link = link->next())
    names.push_back(static_cast<Named*>(link)->name);
  return names;
}

std::vector<int> backwards(Chain const& chain)
{
  std::vector<int> names;
  for (OzLink* link = chain.tail(); link != nullptr; link = link->prev())
    names.push_back(static_cast<Named*>(link)->name);
  return names;
}

/// The names in order, after a look at the links in the other direction and at both ends.
std::vector<int> names(Chain const& chain)
{
  std::vector<int> const result = forwards(chain);
  EXPECT_EQ(backwards(chain), std::vector<int>(result.rbegin(), result.rend()));
  EXPECT_EQ(chain.size(), result.size());
  if (chain.head() != nullptr)
  {
    EXPECT_EQ(chain.head()->prev(), nullptr);
    EXPECT_EQ(chain.tail()->next(), nullptr);
  }
  return result;
}

typedef std::vector<int> Names;
} // namespace

TEST(OzLink, BeginsFree)
{
  OzLink const link;

  EXPECT_EQ(link.next(), nullptr);
  EXPECT_EQ(link.prev(), nullptr);
}

TEST(OzLink, SettersStoreThePointerAndTouchNothingElse)
{
  OzLink a;
  OzLink b;

  a.set_next(&b);
  EXPECT_EQ(a.next(), &b);
  EXPECT_EQ(a.prev(), nullptr);
  EXPECT_EQ(b.prev(), nullptr);

  a.set_prev(&b);
  EXPECT_EQ(a.prev(), &b);
  EXPECT_EQ(b.next(), nullptr);
}

TEST(OzLink, InsertNextPutsALinkBetweenTwoNeighbours)
{
  OzLink a;
  OzLink b;
  OzLink c;
  a.insert_next(&c);

  a.insert_next(&b);

  EXPECT_EQ(a.next(), &b);
  EXPECT_EQ(b.prev(), &a);
  EXPECT_EQ(b.next(), &c);
  EXPECT_EQ(c.prev(), &b);
  EXPECT_EQ(c.next(), nullptr);
  EXPECT_EQ(a.prev(), nullptr);
}

TEST(OzLink, InsertPrevPutsALinkBetweenTwoNeighbours)
{
  OzLink a;
  OzLink b;
  OzLink c;
  c.insert_prev(&a);

  c.insert_prev(&b);

  EXPECT_EQ(a.next(), &b);
  EXPECT_EQ(b.prev(), &a);
  EXPECT_EQ(b.next(), &c);
  EXPECT_EQ(c.prev(), &b);
  EXPECT_EQ(a.prev(), nullptr);
  EXPECT_EQ(c.next(), nullptr);
}

TEST(OzLink, InsertNextOfNullCutsTheChainBehindIt)
{
  OzLink a;
  OzLink b;
  OzLink c;
  a.insert_next(&b);
  b.insert_next(&c);

  a.insert_next(nullptr);

  EXPECT_EQ(a.next(), nullptr);
  EXPECT_EQ(b.prev(), nullptr);
  EXPECT_EQ(b.next(), &c);
  EXPECT_EQ(c.prev(), &b);
}

TEST(OzLink, InsertPrevOfNullCutsTheChainInFrontOfIt)
{
  OzLink a;
  OzLink b;
  OzLink c;
  a.insert_next(&b);
  b.insert_next(&c);

  c.insert_prev(nullptr);

  EXPECT_EQ(c.prev(), nullptr);
  EXPECT_EQ(b.next(), nullptr);
  EXPECT_EQ(a.next(), &b);
  EXPECT_EQ(b.prev(), &a);
}

TEST(OzLink, InsertingNullBesideAFreeLinkDoesNothing)
{
  OzLink a;

  a.insert_next(nullptr);
  a.insert_prev(nullptr);

  EXPECT_EQ(a.next(), nullptr);
  EXPECT_EQ(a.prev(), nullptr);
}

TEST(OzLink, ACopyIsFree)
{
  OzLink a;
  OzLink b;
  OzLink c;
  a.insert_next(&b);
  b.insert_next(&c);

  OzLink const copy(b);

  EXPECT_EQ(copy.next(), nullptr);
  EXPECT_EQ(copy.prev(), nullptr);
  EXPECT_EQ(a.next(), &b);
  EXPECT_EQ(c.prev(), &b);
}

TEST(OzLink, AssignmentFreesTheTargetAndCopiesNothing)
{
  OzLink a;
  OzLink b;
  OzLink c;
  OzLink other;
  OzLink other_next;
  a.insert_next(&b);
  b.insert_next(&c);
  other.insert_next(&other_next);

  OzLink& result = (b = other);

  EXPECT_EQ(&result, &b);
  EXPECT_EQ(b.next(), nullptr);
  EXPECT_EQ(b.prev(), nullptr);
  EXPECT_EQ(a.next(), &b) << "neighbours are left alone";
  EXPECT_EQ(c.prev(), &b) << "neighbours are left alone";
  EXPECT_EQ(other.next(), &other_next);
}

TEST(OzLink, SelfAssignmentDoesNothing)
{
  OzLink a;
  OzLink b;
  OzLink c;
  a.insert_next(&b);
  b.insert_next(&c);
  OzLink const& same = b;

  b = same;

  EXPECT_EQ(b.next(), &c);
  EXPECT_EQ(b.prev(), &a);
}

TEST(OzLink, DestructionLeavesTheNeighboursAlone)
{
  OzLink a;
  OzLink c;
  OzLink* const b = new OzLink;
  a.insert_next(b);
  b->insert_next(&c);

  delete b;

  EXPECT_NE(a.next(), nullptr);
  EXPECT_NE(c.prev(), nullptr);
}

/// Ends an object in a place where the compiler doesn't see what becomes of its memory.
template <class Object>
__attribute__((noinline)) void destroy(Object* object)
{
  object->~Object();
}

/// What memory holds at a pointer's place number `i`, as it is and not as what the language says of an object
/// that has ended.
void* pointer_at(unsigned char const volatile* memory, std::size_t i)
{
  unsigned char bytes[sizeof(void*)];
  std::copy(memory + i * sizeof(void*), memory + (i + 1) * sizeof(void*), bytes);
  void* pointer;
  std::memcpy(&pointer, bytes, sizeof pointer);
  return pointer;
}

TEST(OzLink, ADestroyedOneShowsItsDeadLinks)
{
  alignas(OzLink) static unsigned char memory[sizeof(OzLink)];
  OzLink other;
  OzLink* const link = new (memory) OzLink;
  link->set_next(&other);
  link->set_prev(&other);

  destroy(link);

  EXPECT_EQ(pointer_at(memory, 1), nullptr);
  EXPECT_EQ(pointer_at(memory, 2), nullptr);
}

TEST(OzLinkList, ADestroyedOneShowsItsDeadEnds)
{
  alignas(Chain) static unsigned char memory[sizeof(Chain)];
  Chain* const chain = new (memory) Chain({1, 2});

  destroy(chain);

  // Behind the table come the two parts of the cursor, then head and tail.
  EXPECT_EQ(pointer_at(memory, 3), nullptr);
  EXPECT_EQ(pointer_at(memory, 4), nullptr);
}

TEST(OzListIndex, BeginsAtZeroAndGoesBackThereOnReset)
{
  OzLink link;
  OzListIndex index;
  EXPECT_EQ(index.index, 0u);
  EXPECT_EQ(index.link, nullptr);
  index.index = 7;
  index.link = &link;
  OzListIndex other;

  other = index;
  index.reset();

  EXPECT_EQ(index.index, 0u);
  EXPECT_EQ(index.link, nullptr);
  EXPECT_EQ(other.index, 7u);
  EXPECT_EQ(other.link, &link);
}

TEST(OzListIndex, IsAPlainStructure)
{
  EXPECT_FALSE(std::is_polymorphic_v<OzListIndex>);
  EXPECT_TRUE(std::is_standard_layout_v<OzListIndex>);
}

TEST(OzLinkList, CanOnlyBeDerivedFrom)
{
  EXPECT_FALSE(std::is_default_constructible_v<OzLinkList>);
  EXPECT_FALSE(std::is_copy_constructible_v<OzLinkList>);
  EXPECT_FALSE(std::is_copy_assignable_v<OzLinkList>);
  EXPECT_FALSE(std::is_destructible_v<OzLinkList>);
  EXPECT_TRUE(std::has_virtual_destructor_v<Chain>);
}

TEST(OzLinkList, BeginsEmpty)
{
  Chain const chain;

  EXPECT_EQ(chain.head(), nullptr);
  EXPECT_EQ(chain.tail(), nullptr);
  EXPECT_EQ(chain.size(), 0u);
  EXPECT_EQ(chain.cursor.index, 0u);
  EXPECT_EQ(chain.cursor.link, nullptr);
}

TEST(OzLinkList, SettersOfItsEndsOnlyStoreThePointer)
{
  OzLink link;
  Chain chain;

  chain.set_head(&link);
  EXPECT_EQ(chain.head(), &link);
  EXPECT_EQ(chain.tail(), nullptr);
  chain.set_head(nullptr);
  chain.set_tail(&link);
  EXPECT_EQ(chain.tail(), &link);
  EXPECT_EQ(chain.head(), nullptr);
  chain.set_tail(nullptr);

  EXPECT_EQ(link.next(), nullptr);
  EXPECT_EQ(link.prev(), nullptr);
}

TEST(OzLinkList, DeletesItsLinksThroughTheirVirtualDestructor)
{
  {
    Chain const chain({1, 2, 3});
    ASSERT_EQ(Named::alive, 3);
  }

  EXPECT_EQ(Named::alive, 0);
}

TEST(OzLinkList, IsDestroyedWithoutRecursionAtAnyLength)
{
  {
    Chain chain;
    for (int i = 0; i < 1000000; ++i)
      chain.add(i);
  }

  EXPECT_EQ(Named::alive, 0);
}

TEST(OzLinkList, ACopyIsEmpty)
{
  Chain const chain({1, 2, 3});
  chain.array(1);

  Chain const copy(chain);

  EXPECT_EQ(copy.head(), nullptr);
  EXPECT_EQ(copy.tail(), nullptr);
  EXPECT_EQ(copy.cursor.index, 0u);
  EXPECT_EQ(copy.cursor.link, nullptr);
  EXPECT_EQ(names(chain), (Names{1, 2, 3}));
}

TEST(OzLinkList, AssignmentLeavesTheTargetAsItWas)
{
  Chain const source({1, 2, 3});
  Chain target({4, 5});
  OzLink* const link = target.array(1);

  Chain& result = (target = source);

  EXPECT_EQ(&result, &target);
  EXPECT_EQ(names(target), (Names{4, 5}));
  EXPECT_EQ(names(source), (Names{1, 2, 3}));
  EXPECT_EQ(target.cursor.index, 1u);
  EXPECT_EQ(target.cursor.link, link);
}

TEST(OzLinkList, ArrayOfAnEmptyListIsNull)
{
  Chain const chain;
  chain.cursor.index = 9;

  EXPECT_EQ(chain.array(1), nullptr);
  EXPECT_EQ(chain.cursor.index, 9u) << "the cursor stays";

  EXPECT_EQ(chain.array(0), nullptr);
  EXPECT_EQ(chain.cursor.index, 0u);
  EXPECT_EQ(chain.cursor.link, nullptr);
}

TEST(OzLinkList, ArrayFindsALinkAndMovesTheCursorThere)
{
  Chain const chain({10, 11, 12, 13, 14, 15});

  EXPECT_EQ(chain.name_at(5), 15);
  EXPECT_EQ(chain.cursor.index, 5u);
  EXPECT_EQ(chain.cursor.link, chain.tail());

  EXPECT_EQ(chain.name_at(3), 13);
  EXPECT_EQ(chain.cursor.index, 3u);
  EXPECT_EQ(static_cast<Named*>(chain.cursor.link)->name, 13);

  EXPECT_EQ(chain.name_at(3), 13);
  EXPECT_EQ(chain.name_at(4), 14);
  EXPECT_EQ(chain.name_at(0), 10);
}

TEST(OzLinkList, ArrayWalksFromTheCursorUpwardsAndFromTheHeadDownwards)
{
  Chain const chain({10, 11, 12, 13, 14, 15});
  // A cursor that lies about its number shows where a walk begins.
  chain.cursor.index = 3;
  chain.cursor.link = chain.head()->next();

  EXPECT_EQ(chain.name_at(3), 11) << "an equal index is where the cursor is";
  EXPECT_EQ(chain.name_at(4), 12) << "a higher one is counted from the cursor";
  EXPECT_EQ(chain.name_at(2), 12) << "a lower one is counted from the head";
}

TEST(OzLinkList, ArrayJustBehindTheEndMovesTheCursorThereAndTheNextCallStartsFromTheHead)
{
  Chain const chain({10, 11, 12});
  chain.array(1);

  EXPECT_EQ(chain.array(3), nullptr);
  EXPECT_EQ(chain.cursor.index, 3u);
  EXPECT_EQ(chain.cursor.link, nullptr);

  EXPECT_EQ(chain.name_at(2), 12);
  EXPECT_EQ(chain.cursor.index, 2u);
  EXPECT_EQ(chain.cursor.link, chain.tail());
}

TEST(OzLinkList, ArrayFarBehindTheEndIsNullAndTheCursorStays)
{
  Chain const chain({10, 11, 12});
  OzLink* const second = chain.array(1);

  EXPECT_EQ(chain.array(4), nullptr);
  EXPECT_EQ(chain.array(~std::uint64_t(0)), nullptr);

  EXPECT_EQ(chain.cursor.index, 1u);
  EXPECT_EQ(chain.cursor.link, second);
}

TEST(OzLinkList, SpliceOutTakesALinkOutAndLeavesItFree)
{
  struct
  {
    char const* what;
    std::uint64_t index;
    Names left;
  } const cases[] = {
      {"first", 0, {2, 3}},
      {"middle", 1, {1, 3}},
      {"last", 2, {1, 2}},
  };
  for (auto const& c : cases)
  {
    Chain chain({1, 2, 3});
    OzLink* const link = chain.array(c.index);

    chain.splice_out(link);

    EXPECT_EQ(names(chain), c.left) << c.what;
    EXPECT_EQ(link->next(), nullptr) << c.what;
    EXPECT_EQ(link->prev(), nullptr) << c.what;
    EXPECT_EQ(chain.cursor.index, c.index) << c.what << ": the cursor is not reset";
    EXPECT_EQ(chain.cursor.link, link) << c.what << ": the cursor is not reset";
    EXPECT_EQ(Named::alive, 3) << c.what << ": the link is not deleted";
    delete link;
  }
}

TEST(OzLinkList, SpliceOutOfTheOnlyLinkEmptiesTheList)
{
  Chain chain({1});
  OzLink* const link = chain.head();

  chain.splice_out(link);

  EXPECT_EQ(chain.head(), nullptr);
  EXPECT_EQ(chain.tail(), nullptr);
  delete link;
}

TEST(OzLinkList, SpliceOutOfNullIsReportedAndDoesNothing)
{
  Chain chain({1, 2});
  ReportRecorder const recorder;

  chain.splice_out(nullptr);

  EXPECT_EQ(recorder.units(), reports(1, "ozlinklist.cpp"));
  EXPECT_EQ(names(chain), (Names{1, 2}));
}

TEST(OzLinkList, SpliceOutOfNullDoesNothingWithoutAHandler)
{
  Chain chain({1, 2});

  chain.splice_out(nullptr);

  EXPECT_EQ(names(chain), (Names{1, 2}));
}

TEST(OzLinkList, SpliceSequenceDeletesARunWhereNobodyWantsIt)
{
  Chain chain({1, 2, 3});

  chain.splice_sequence(0, 2, nullptr, nullptr);

  EXPECT_EQ(names(chain), (Names{3}));
  EXPECT_EQ(chain.head(), chain.tail());
  EXPECT_EQ(Named::alive, 1);
}

TEST(OzLinkList, SpliceSequencePastTheEndAppends)
{
  for (std::uint64_t const index : {3u, 4u, 7u})
  {
    Chain chain({1, 2, 3});
    Chain insert({4, 5});

    chain.splice_sequence(index, 1, &insert, nullptr);

    EXPECT_EQ(names(chain), (Names{1, 2, 3, 4, 5})) << index;
    EXPECT_EQ(names(insert), Names{}) << index;
    EXPECT_EQ(insert.head(), nullptr) << index;
    EXPECT_EQ(insert.tail(), nullptr) << index;
    EXPECT_EQ(Named::alive, 5) << index;
  }
}

TEST(OzLinkList, SpliceSequenceSwapsALinkForAnother)
{
  Chain chain({1, 2, 3});
  Chain insert({9});
  Chain removed;

  chain.splice_sequence(1, 1, &insert, &removed);

  EXPECT_EQ(names(chain), (Names{1, 9, 3}));
  EXPECT_EQ(names(insert), Names{});
  EXPECT_EQ(names(removed), (Names{2}));
}

TEST(OzLinkList, SpliceSequencePutsAndTakesAtEveryPlace)
{
  struct
  {
    char const* what;
    std::uint64_t index;
    std::uint64_t n;
    Names insert;
    Names result;
    Names removed; // behind the 20 that is there before
  } const cases[] = {
      {"nothing at all", 1, 0, {}, {1, 2, 3}, {20}},
      {"before the head", 0, 0, {8, 9}, {8, 9, 1, 2, 3}, {20}},
      {"before a link", 2, 0, {8, 9}, {1, 2, 8, 9, 3}, {20}},
      {"behind the tail", 3, 0, {8, 9}, {1, 2, 3, 8, 9}, {20}},
      {"at the head", 0, 1, {8}, {8, 2, 3}, {20, 1}},
      {"at the tail", 2, 1, {8, 9}, {1, 2, 8, 9}, {20, 3}},
      {"up to the tail", 1, 2, {}, {1}, {20, 2, 3}},
      {"more than there are", 1, 100, {8}, {1, 8}, {20, 2, 3}},
      {"as many as can be said", 1, ~std::uint64_t(0), {}, {1}, {20, 2, 3}},
      {"all", 0, 3, {}, {}, {20, 1, 2, 3}},
      {"all for others", 0, 3, {7, 8, 9}, {7, 8, 9}, {20, 1, 2, 3}},
      {"past the end nothing is taken", 3, 2, {}, {1, 2, 3}, {20}},
  };
  for (auto const& c : cases)
  {
    Chain chain({1, 2, 3});
    Chain insert(c.insert);
    Chain removed({20});

    chain.splice_sequence(c.index, c.n, &insert, &removed);

    EXPECT_EQ(names(chain), c.result) << c.what;
    EXPECT_EQ(names(insert), Names{}) << c.what;
    EXPECT_EQ(names(removed), c.removed) << c.what;
    if (c.result.empty())
    {
      EXPECT_EQ(chain.tail(), nullptr) << c.what;
    }
  }
}

TEST(OzLinkList, SpliceSequenceFillsAnEmptyList)
{
  Chain chain;
  Chain insert({1, 2});

  chain.splice_sequence(0, 5, &insert, nullptr);

  EXPECT_EQ(names(chain), (Names{1, 2}));
  EXPECT_EQ(names(insert), Names{});
}

TEST(OzLinkList, SpliceSequenceLeavesTheLinksThemselvesInPlace)
{
  Chain chain({1, 2, 3});
  Chain insert({4});
  Chain removed;
  OzLink* const taken = chain.array(1);
  OzLink* const put = insert.head();

  chain.splice_sequence(1, 1, &insert, &removed);

  EXPECT_EQ(chain.array(1), put);
  EXPECT_EQ(removed.head(), taken);
}

TEST(OzLinkList, SpliceSequenceResetsTheCursorsOfAllThreeLists)
{
  Chain chain({1, 2, 3});
  Chain insert({4, 5});
  Chain removed({6, 7});
  chain.array(2);
  insert.array(1);
  removed.array(1);

  chain.splice_sequence(1, 1, &insert, &removed);

  for (Chain const* list : {&chain, &insert, &removed})
  {
    EXPECT_EQ(list->cursor.index, 0u);
    EXPECT_EQ(list->cursor.link, nullptr);
  }
}

TEST(OzLinkList, SpliceSequenceResetsTheCursorAlsoWhereNothingChanges)
{
  Chain chain({1, 2, 3});
  chain.array(2);

  chain.splice_sequence(7, 0, nullptr, nullptr);

  EXPECT_EQ(chain.cursor.index, 0u);
  EXPECT_EQ(chain.cursor.link, nullptr);
}

TEST(OzLinkList, SpliceSequencePassesOverAnInsertionOfTheListItself)
{
  Chain chain({1, 2, 3});

  chain.splice_sequence(1, 1, &chain, nullptr);

  EXPECT_EQ(names(chain), (Names{1, 3}));
}

TEST(OzLinkList, SpliceSequenceMayMoveARunToTheEndOfTheListItself)
{
  Chain chain({1, 2, 3, 4});

  chain.splice_sequence(0, ~std::uint64_t(0), nullptr, &chain);
  EXPECT_EQ(names(chain), (Names{1, 2, 3, 4}));

  chain.splice_sequence(0, 2, nullptr, &chain);
  EXPECT_EQ(names(chain), (Names{3, 4, 1, 2}));
}

TEST(OzLinkList, AgreesWithAVectorUnderRandomSplicing)
{
  unsigned const seed = 20240117;
  std::mt19937 random(seed);
  auto const below = [&random](std::uint64_t n)
  { return std::uniform_int_distribution<std::uint64_t>(0, n - 1)(random); };
  {
    Chain chain;
    Names model;
    int next_name = 0;
    for (int step = 0; step < 4000; ++step)
    {
      SCOPED_TRACE(testing::Message() << "seed " << seed << " step " << step);
      Names added;
      for (std::uint64_t i = below(4); i > 0; --i)
        added.push_back(next_name++);
      Chain insert(added);
      Chain removed;
      std::uint64_t const index = below(model.size() + 3);
      std::uint64_t const n = below(5);
      bool const wanted = below(2) == 0;

      chain.splice_sequence(index, n, &insert, wanted ? &removed : nullptr);

      std::size_t const from = std::min<std::size_t>(index, model.size());
      std::size_t const to = std::min<std::size_t>(from + n, model.size());
      auto const at = [&model](std::size_t i) { return model.begin() + static_cast<std::ptrdiff_t>(i); };
      Names const taken(at(from), at(to));
      model.erase(at(from), at(to));
      model.insert(at(from), added.begin(), added.end());
      ASSERT_EQ(names(chain), model);
      ASSERT_EQ(names(removed), wanted ? taken : Names{});
      ASSERT_EQ(names(insert), Names{});

      // Looking up moves the cursor, which the next splice must not trust.
      for (int look = 0; look < 4; ++look)
      {
        std::uint64_t const i = below(model.size() + 2);
        ASSERT_EQ(chain.name_at(i), i < model.size() ? model[i] : -1) << i;
      }
    }
    ASSERT_EQ(static_cast<std::size_t>(Named::alive), model.size());
  }
  EXPECT_EQ(Named::alive, 0);
}
