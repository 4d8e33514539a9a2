#include "ozdeque.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <iterator>
#include <new>
#include <random>
#include <type_traits>

namespace
{
// Memory as the deque asks for it: blocks of 512 bytes are counted while somebody wants to know, and memory
// can be made to run out.
constexpr std::size_t BLOCK_BYTES = 512;
void* blocks[4096];
std::size_t blocks_alive = 0;
std::size_t blocks_ever = 0;
bool counting = false;
int allocations_left = -1;

void* allocate(std::size_t bytes)
{
  if (allocations_left == 0)
    throw std::bad_alloc();
  if (allocations_left > 0)
    --allocations_left;
  void* const memory = std::malloc(bytes);
  if (memory == nullptr)
    throw std::bad_alloc();
  if (counting && bytes == BLOCK_BYTES && blocks_alive < std::size(blocks))
  {
    blocks[blocks_alive++] = memory;
    ++blocks_ever;
  }
  return memory;
}

void release(void* memory)
{
  void** const end = blocks + blocks_alive;
  void** const found = std::find(blocks, end, memory);
  if (memory != nullptr && found != end)
  {
    --blocks_alive;
    *found = *(end - 1);
  }
  std::free(memory);
}

class BlockCount
{
public:
  BlockCount()
  {
    blocks_alive = 0;
    blocks_ever = 0;
    counting = true;
  }
  ~BlockCount() { counting = false; }
  BlockCount(BlockCount const&) = delete;
  BlockCount& operator=(BlockCount const&) = delete;

  std::size_t alive() const { return blocks_alive; }
  std::size_t ever() const { return blocks_ever; }
};

/// Lets `n` more allocations succeed while it lives.
class ScarceMemory
{
public:
  explicit ScarceMemory(int n) { allocations_left = n; }
  ~ScarceMemory() { allocations_left = -1; }
  ScarceMemory(ScarceMemory const&) = delete;
  ScarceMemory& operator=(ScarceMemory const&) = delete;
};

/// Opens what a deque keeps for derived classes.
class Probe : public OzDeque<int*>
{
public:
  using OzDequeBase<int*>::finish;
  using OzDequeBase<int*>::map;
  using OzDequeBase<int*>::map_size;
  using OzDequeBase<int*>::start;

  std::ptrdiff_t start_entry() const { return start.node - map; }
  std::ptrdiff_t finish_entry() const { return finish.node - map; }
};

int values[100000];

void push(Probe& deque, int n)
{
  static int next = 0;
  for (int i = 0; i < n; ++i)
    deque.push_back(&values[next++ % 100000]);
}

void pop(Probe& deque, int n)
{
  for (int i = 0; i < n; ++i)
    deque.pop_front();
}

void expect_sound(Probe const& deque)
{
  ASSERT_LE(deque.start.node, deque.finish.node);
  ASSERT_GE(deque.start_entry(), 0);
  ASSERT_LT(deque.finish_entry(), static_cast<std::ptrdiff_t>(deque.map_size));
  for (auto const& position : {deque.start, deque.finish})
  {
    ASSERT_EQ(position.first, *position.node);
    ASSERT_EQ(position.last - position.first, 64);
    ASSERT_GE(position.cur, position.first);
    ASSERT_LT(position.cur, position.last);
  }
}
} // namespace

void* operator new(std::size_t bytes)
{
  return allocate(bytes);
}
void operator delete(void* memory) noexcept
{
  release(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
  release(memory);
}

TEST(OzDeque, BeginsWithOneBlockInTheMiddleOfAMapOfEight)
{
  BlockCount const count;

  Probe const deque;

  EXPECT_EQ(count.alive(), 1u);
  EXPECT_EQ(deque.map_size, 8u);
  EXPECT_EQ(deque.start_entry(), 3);
  EXPECT_EQ(deque.finish_entry(), 3);
  EXPECT_EQ(deque.start.cur, deque.start.first);
  EXPECT_EQ(deque.finish.cur, deque.finish.first);
  EXPECT_TRUE(deque.is_empty());
  EXPECT_EQ(deque.size(), 0u);
  expect_sound(deque);
}

TEST(OzDeque, GivesBackInTheOrderOfComing)
{
  int a = 1;
  int b = 2;
  OzDeque<int*> deque;

  deque.push_back(&a);
  deque.push_back(&b);
  EXPECT_FALSE(deque.is_empty());
  EXPECT_EQ(deque.size(), 2u);
  EXPECT_EQ(deque.front(), &a);
  EXPECT_EQ(deque.front(), &a) << "looking takes nothing";

  deque.pop_front();
  EXPECT_EQ(deque.front(), &b);
  EXPECT_EQ(deque.size(), 1u);
  deque.pop_front();
  EXPECT_TRUE(deque.is_empty());
  EXPECT_EQ(deque.size(), 0u);
}

TEST(OzDeque, PopOfAnEmptyDequeDoesNothing)
{
  Probe deque;

  deque.pop_front();

  EXPECT_TRUE(deque.is_empty());
  EXPECT_EQ(deque.size(), 0u);
  EXPECT_EQ(deque.start.cur, deque.start.first);
}

TEST(OzDeque, PopOfADequeThatIsEmptyInTheMiddleOfABlockDoesNothing)
{
  Probe deque;
  push(deque, 63);
  pop(deque, 63);
  ASSERT_EQ(deque.start.cur, deque.start.last - 1);

  deque.pop_front();

  EXPECT_EQ(deque.start.cur, deque.start.last - 1);
  EXPECT_EQ(deque.size(), 0u);
  expect_sound(deque);
}

TEST(OzDeque, OpensABlockAsSoonAsTheLastSlotIsFilled)
{
  BlockCount const count;
  Probe deque;

  push(deque, 63);
  EXPECT_EQ(count.alive(), 1u);
  EXPECT_EQ(deque.finish.cur, deque.finish.last - 1);

  push(deque, 1);
  EXPECT_EQ(count.alive(), 2u);
  EXPECT_EQ(deque.finish_entry(), 4);
  EXPECT_EQ(deque.finish.cur, deque.finish.first);
  EXPECT_EQ(deque.size(), 64u);
  expect_sound(deque);
}

TEST(OzDeque, FreesABlockAsSoonAsTheFrontHasLeftIt)
{
  BlockCount const count;
  Probe deque;
  push(deque, 64);
  ASSERT_EQ(count.alive(), 2u);

  pop(deque, 63);
  EXPECT_EQ(count.alive(), 2u);
  EXPECT_EQ(deque.start_entry(), 3);

  pop(deque, 1);
  EXPECT_EQ(count.alive(), 1u);
  EXPECT_EQ(deque.start_entry(), 4);
  EXPECT_EQ(deque.start.cur, deque.start.first);
  EXPECT_TRUE(deque.is_empty());
  expect_sound(deque);
}

TEST(OzDeque, IsEmptyAfterAsManyPopsAsPushes)
{
  BlockCount const count;
  Probe deque;
  push(deque, 1000);
  EXPECT_EQ(count.alive(), 16u);
  EXPECT_EQ(deque.size(), 1000u);

  pop(deque, 1000);
  EXPECT_EQ(deque.size(), 0u);
  EXPECT_TRUE(deque.is_empty());
  EXPECT_EQ(count.alive(), 1u);

  deque.pop_front();
  EXPECT_EQ(deque.size(), 0u);
  EXPECT_EQ(count.alive(), 1u);
}

TEST(OzDeque, FreesAllItsBlocksAtItsEnd)
{
  BlockCount const count;
  {
    Probe deque;
    push(deque, 1000);
    pop(deque, 100);
    ASSERT_EQ(count.alive(), 15u);
  }

  EXPECT_EQ(count.alive(), 0u);
}

TEST(OzDeque, IsDeletedThroughItsBase)
{
  BlockCount const count;
  OzDequeBase<int*>* const base = new OzDeque<int*>;
  ASSERT_EQ(count.alive(), 1u);

  delete base;

  EXPECT_EQ(count.alive(), 0u);
}

TEST(OzDeque, DoesNotDeleteWhatItsElementsPointTo)
{
  int* const number = new int(7);
  {
    OzDeque<int*> deque;
    deque.push_back(number);
  }

  EXPECT_EQ(*number, 7);
  delete number;
}

TEST(OzDeque, IsNotCopied)
{
  EXPECT_FALSE(std::is_copy_constructible_v<OzDeque<int*>>);
  EXPECT_FALSE(std::is_copy_assignable_v<OzDeque<int*>>);
  EXPECT_TRUE(std::has_virtual_destructor_v<OzDeque<int*>>);
}

TEST(OzDeque, ElementsDoNotMove)
{
  int value = 0;
  Probe deque;
  deque.push_back(&value);
  int** const slot = &deque.front();

  push(deque, 5000);

  EXPECT_EQ(&deque.front(), slot);
  EXPECT_EQ(deque.front(), &value);
}

TEST(OzDeque, GetsALargerMapWhereMoreThanHalfOfItIsNeeded)
{
  Probe deque;
  push(deque, 5 * 64 - 1);
  EXPECT_EQ(deque.map_size, 8u);
  EXPECT_EQ(deque.finish_entry(), 7) << "the last entry is in use";
  int** const front = &deque.front();

  push(deque, 1);

  // 6 blocks in the middle of 8 + 8 + 2 entries.
  EXPECT_EQ(deque.map_size, 18u);
  EXPECT_EQ(deque.start_entry(), 6);
  EXPECT_EQ(deque.finish_entry(), 11);
  EXPECT_EQ(&deque.front(), front);
  EXPECT_EQ(deque.size(), 320u);
  expect_sound(deque);

  push(deque, 12 * 64 - 320);

  // 13 blocks in the middle of 18 + 18 + 2 entries: the odd one is free at the back.
  EXPECT_EQ(deque.map_size, 38u);
  EXPECT_EQ(deque.start_entry(), 12);
  EXPECT_EQ(deque.finish_entry(), 24);
  expect_sound(deque);
}

TEST(OzDeque, MovesToTheMiddleOfTheSameMapWhereItsFrontIsFree)
{
  Probe deque;
  push(deque, 5 * 64 - 1);
  pop(deque, 3 * 64 + 10);
  int*** const map = deque.map;
  int** const front = &deque.front();
  ASSERT_EQ(deque.start_entry(), 6);
  ASSERT_EQ(deque.finish_entry(), 7);

  push(deque, 1);

  // 3 blocks in the middle of 8 entries.
  EXPECT_EQ(deque.map, map);
  EXPECT_EQ(deque.map_size, 8u);
  EXPECT_EQ(deque.start_entry(), 2);
  EXPECT_EQ(deque.finish_entry(), 4);
  EXPECT_EQ(&deque.front(), front);
  EXPECT_EQ(deque.size(), 320u - 202u);
  expect_sound(deque);
}

TEST(OzDeque, NeedingExactlyHalfOfTheMapGetsALargerOne)
{
  Probe deque;
  push(deque, 5 * 64 - 1);
  pop(deque, 2 * 64);
  int*** const map = deque.map;
  ASSERT_EQ(deque.start_entry(), 5);

  push(deque, 1);

  // 4 blocks in the middle of 18 entries.
  EXPECT_NE(deque.map, map);
  EXPECT_EQ(deque.map_size, 18u);
  EXPECT_EQ(deque.start_entry(), 7);
  EXPECT_EQ(deque.finish_entry(), 10);
  expect_sound(deque);
}

TEST(OzDeque, MovesWithinItsMapAlsoWhereOldAndNewPlacesOverlap)
{
  Probe deque;
  std::deque<int*> model;
  auto const push_both = [&](int n)
  {
    for (int i = 0; i < n; ++i)
    {
      deque.push_back(&values[i]);
      model.push_back(&values[i]);
    }
  };
  push_both(11 * 64);
  ASSERT_EQ(deque.map_size, 18u);
  ASSERT_EQ(deque.finish_entry(), 17);
  push_both(63);
  for (int i = 0; i < 5 * 64; ++i)
  {
    deque.pop_front();
    model.pop_front();
  }
  ASSERT_EQ(deque.start_entry(), 11);

  push_both(1);

  // Entries 11 to 17 went to 5 to 11.
  EXPECT_EQ(deque.map_size, 18u);
  EXPECT_EQ(deque.start_entry(), 5);
  EXPECT_EQ(deque.finish_entry(), 12);
  while (!model.empty())
  {
    ASSERT_EQ(deque.front(), model.front());
    deque.pop_front();
    model.pop_front();
  }
  EXPECT_TRUE(deque.is_empty());
}

TEST(OzDeque, ALongLivedQueueStaysSmall)
{
  BlockCount const count;
  Probe deque;
  push(deque, 10);

  for (int i = 0; i < 100000; ++i)
  {
    push(deque, 1);
    deque.pop_front();
    ASSERT_LE(count.alive(), 2u);
  }

  EXPECT_EQ(deque.map_size, 8u);
  EXPECT_EQ(deque.size(), 10u);
  EXPECT_EQ(count.ever(), 1u + 100010u / 64u) << "one for every 64 elements, and the one at the beginning";
}

TEST(OzDeque, ConstructionWithoutMemoryThrowsAndLeaksNothing)
{
  for (int n = 0; n < 2; ++n)
  {
    ScarceMemory const scarce(n);
    EXPECT_THROW(OzDeque<int*>(), std::bad_alloc) << n;
  }
}

TEST(OzDeque, PushWithoutMemoryThrowsAndLeavesTheElements)
{
  for (int n = 0; n < 2; ++n)
  {
    int value = 0;
    Probe deque;
    deque.push_back(&value);
    push(deque, 5 * 64 - 2);
    {
      ScarceMemory const scarce(n);
      EXPECT_THROW(deque.push_back(&value), std::bad_alloc) << n;
    }

    EXPECT_EQ(deque.size(), 319u) << n;
    EXPECT_EQ(deque.front(), &value) << n;
    expect_sound(deque);
    deque.push_back(&value);
    EXPECT_EQ(deque.size(), 320u) << n;
    pop(deque, 319);
    EXPECT_EQ(deque.front(), &value) << n;
    expect_sound(deque);
  }
}

TEST(OzDeque, AgreesWithAStandardDequeUnderRandomChanges)
{
  unsigned const seed = 40417;
  std::mt19937 random(seed);
  BlockCount const count;
  {
    Probe deque;
    std::deque<int*> model;
    int next = 0;
    for (int step = 0; step < 3000; ++step)
    {
      SCOPED_TRACE(testing::Message() << "seed " << seed << " step " << step);
      // Long runs, so that blocks and maps change; by turns the deque rather grows or rather shrinks.
      bool const growing = (step / 200) % 2 == 0;
      int const run = static_cast<int>(random() % (step % 7 == 0 ? 400 : 20));
      bool const pushes = random() % 5 < (growing ? 3u : 2u);
      for (int i = 0; i < run; ++i)
      {
        if (pushes)
        {
          deque.push_back(&values[next % 100000]);
          model.push_back(&values[next % 100000]);
          ++next;
          continue;
        }
        if (!model.empty())
        {
          ASSERT_EQ(deque.front(), model.front());
          model.pop_front();
        }
        deque.pop_front();
      }
      ASSERT_EQ(deque.size(), model.size());
      ASSERT_EQ(deque.is_empty(), model.empty());
      expect_sound(deque);
    }
    ASSERT_GT(next, 10000);
  }
}
