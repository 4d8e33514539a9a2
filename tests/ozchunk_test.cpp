#include "ozchunk.h"

#include "deadline.h"
#include "text_journal.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define CHUNKS_ARE_GUARDED
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define CHUNKS_ARE_GUARDED
#endif
#ifdef CHUNKS_ARE_GUARDED
#include <sanitizer/asan_interface.h>
#endif

// A block that the machine cannot give is a null pointer here too, instead of the end of the process.
extern "C" OZ_EXPORT char const* __asan_default_options()
{
  return "allocator_may_return_null=1";
}
extern "C" OZ_EXPORT char const* __tsan_default_options()
{
  return "allocator_may_return_null=1";
}

namespace
{
constexpr std::uint64_t HEADER = 72;
constexpr std::uint64_t HUGE_NUMBER = ~std::uint64_t(0);
constexpr std::uint64_t NO_SUCH_MEMORY = std::uint64_t(1) << 62;

/// What a caller of the chunks holds.
struct Caller
{
  Caller() = default;
  ~Caller()
  {
    OzChunk::OzChunkClear(active, nullptr);
    OzChunk::OzChunkClear(spare, nullptr);
  }
  Caller(Caller const&) = delete;
  Caller& operator=(Caller const&) = delete;

  char* allocate(std::uint64_t size, OzJournal* journal = nullptr)
  {
    return static_cast<char*>(OzChunk::OzChunkMalloc(counter, active, spare, min_size, size, journal));
  }
  void release(void* block, bool keep, OzJournal* journal = nullptr)
  {
    OzChunk::OzChunkFree(active, block, keep, spare, journal);
  }
  void reinit(bool keep, OzJournal* journal = nullptr)
  {
    OzChunk::OzChunkReinit(active, spare, keep, journal);
  }

  std::uint64_t counter = 0;
  OzChunk* active = nullptr;
  OzChunk* spare = nullptr;
  std::uint64_t min_size = 0;
};

std::vector<std::uint64_t> numbers(OzChunk const* list)
{
  std::vector<std::uint64_t> found;
  for (; list != nullptr; list = list->next)
    found.push_back(list->nr);
  return found;
}

std::uint64_t bytes(OzChunk const* chunk)
{
  return static_cast<std::uint64_t>(chunk->upper - reinterpret_cast<char const*>(chunk)) + 1;
}

std::string hex(void const* address)
{
  char text[32];
  std::snprintf(text, sizeof text, "0x%llx",
                static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(address)));
  return text;
}

using Numbers = std::vector<std::uint64_t>;

void expect_same_fields(OzChunk const& a, OzChunk const& b)
{
  EXPECT_EQ(a.cursor, b.cursor);
  EXPECT_EQ(a.last_block, b.last_block);
  EXPECT_EQ(a.lower, b.lower);
  EXPECT_EQ(a.upper, b.upper);
  EXPECT_EQ(a.next, b.next);
  EXPECT_EQ(a.n_alloced, b.n_alloced);
  EXPECT_EQ(a.n_freed, b.n_freed);
  EXPECT_EQ(a.full, b.full);
  EXPECT_EQ(a.nr, b.nr);
}

TEST(OzChunk, IsAPlainStructureOfFieldsInAFixedOrder)
{
  static_assert(std::is_standard_layout_v<OzChunk>);
  static_assert(std::is_trivially_copyable_v<OzChunk>);
  static_assert(offsetof(OzChunk, cursor) == 0);
  static_assert(offsetof(OzChunk, last_block) == 8);
  static_assert(offsetof(OzChunk, lower) == 16);
  static_assert(offsetof(OzChunk, upper) == 24);
  static_assert(offsetof(OzChunk, next) == 32);
  static_assert(offsetof(OzChunk, n_alloced) == 40);
  static_assert(offsetof(OzChunk, n_freed) == 48);
  static_assert(offsetof(OzChunk, full) == 56);
  static_assert(offsetof(OzChunk, nr) == 64);
  static_assert(sizeof(OzChunk) == HEADER);
  static_assert(std::is_same_v<decltype(OzChunk::full), bool>);
  static_assert(std::is_same_v<decltype(OzChunk::nr), std::uint64_t>);
}

TEST(OzChunk, CopiesAreOfTheHeader)
{
  Caller caller;
  caller.allocate(10);

  OzChunk copy(*caller.active);
  OzChunk assigned;
  assigned = copy;
  OzChunk moved;
  moved = static_cast<OzChunk&&>(copy);

  for (OzChunk const* same : {&assigned, &moved})
    expect_same_fields(*same, *caller.active);
  EXPECT_EQ(assigned.n_alloced, 1u);
  EXPECT_NE(assigned.last_block, nullptr);
}

TEST(OzChunk, ANewChunkHasAThousandBytesMoreThanTheRequestInMultiplesOfEight)
{
  struct
  {
    char const* what;
    std::uint64_t size, min_size, total;
  } const cases[] = {
      {"rounded up", 10, 0, 1016},
      {"a multiple of 8 already", 8, 0, 1008},
      {"nothing", 0, 0, 1000},
      {"one byte", 1, 0, 1008},
      {"least size wins", 10, 5000, 5000},
      {"least size is rounded up", 10, 5001, 5008},
      {"equal", 16, 1016, 1016},
      {"least size is below", 24, 1016, 1024},
  };
  std::uint64_t counter = 7;
  for (auto const& c : cases)
  {
    std::uint64_t const nr = counter;
    OzChunk* chunk = OzChunk::get_chunk(counter, c.size, c.min_size, nullptr);

    ASSERT_NE(chunk, nullptr) << c.what;
    EXPECT_EQ(bytes(chunk), c.total) << c.what;
    EXPECT_EQ(chunk->lower, reinterpret_cast<char*>(chunk) + HEADER) << c.what;
    EXPECT_EQ(chunk->cursor, chunk->lower) << c.what;
    EXPECT_EQ(chunk->next, nullptr) << c.what;
    EXPECT_EQ(chunk->n_alloced, 0u) << c.what;
    EXPECT_EQ(chunk->n_freed, 0u) << c.what;
    EXPECT_FALSE(chunk->full) << c.what;
    EXPECT_EQ(chunk->nr, nr) << c.what;
    EXPECT_EQ(counter, nr + 1) << c.what;
    OzChunk::OzChunkClear(chunk, nullptr);
  }
}

TEST(OzChunk, ChunksThatCannotBeAreNull)
{
  TextJournal journal;
  std::uint64_t counter = 3;
  struct
  {
    std::uint64_t size, min_size;
  } const cases[] = {
      {HUGE_NUMBER, 0},     {HUGE_NUMBER - 999, 0}, {HUGE_NUMBER - 1000, 0},    {HUGE_NUMBER - 1007, 0},
      {8, HUGE_NUMBER},     {8, HUGE_NUMBER - 6},   {8, HUGE_NUMBER - 7},       {HUGE_NUMBER, HUGE_NUMBER},
      {HUGE_NUMBER / 2, 0}, {8, HUGE_NUMBER / 2},   {HUGE_NUMBER / 2 - 999, 0}, {8, HUGE_NUMBER / 2 - 6},
      {NO_SUCH_MEMORY, 0},  {8, NO_SUCH_MEMORY},
  };
  for (auto const& c : cases)
  {
    OzChunk* active = nullptr;
    OzChunk* spare = nullptr;

    EXPECT_EQ(OzChunk::get_chunk(counter, c.size, c.min_size, &journal), nullptr);
    EXPECT_EQ(OzChunk::OzChunkMalloc(counter, active, spare, c.min_size, c.size, &journal), nullptr);

    EXPECT_EQ(active, nullptr);
    EXPECT_EQ(spare, nullptr);
  }
  EXPECT_EQ(counter, 3u);
  EXPECT_EQ(journal.text(), "");
}

TEST(OzChunk, ARequestThatNoChunkCanHoldChangesNothing)
{
  Caller caller;
  caller.allocate(1000);
  caller.allocate(1000);
  caller.reinit(true);
  caller.allocate(1000);
  ASSERT_EQ(numbers(caller.active), Numbers({0}));
  ASSERT_EQ(numbers(caller.spare), Numbers({1}));

  EXPECT_EQ(caller.allocate(HUGE_NUMBER), nullptr);
  EXPECT_EQ(caller.allocate(HUGE_NUMBER - 1000), nullptr);
  // The request alone would be the size of something; with the room that a chunk has beyond it, it is not.
  EXPECT_EQ(caller.allocate(HUGE_NUMBER / 2 - 1007), nullptr);
  EXPECT_EQ(caller.allocate(HUGE_NUMBER / 2 - 8), nullptr);
  for (std::uint64_t const min_size : {HUGE_NUMBER, HUGE_NUMBER - 7})
  {
    caller.min_size = min_size;
    EXPECT_EQ(caller.allocate(2500), nullptr);
  }

  EXPECT_EQ(numbers(caller.active), Numbers({0}));
  EXPECT_EQ(numbers(caller.spare), Numbers({1}));
  EXPECT_FALSE(caller.active->full);
  EXPECT_EQ(caller.active->n_alloced, 1u);
  EXPECT_EQ(caller.counter, 2u);

  // What is there serves all the same, the spare chunk included.
  EXPECT_EQ(caller.allocate(10), caller.active->lower + 1000);
  EXPECT_NE(caller.allocate(1000), nullptr);
  EXPECT_EQ(numbers(caller.active), Numbers({1, 0}));
  EXPECT_EQ(caller.spare, nullptr);
  caller.allocate(900);
  EXPECT_EQ(caller.allocate(800), caller.active->next->lower + 1010);
}

TEST(OzChunk, WithoutMemoryTheChunksThatHaveNoRoomAreMarkedFull)
{
  Caller caller;
  caller.allocate(900);

  EXPECT_EQ(caller.allocate(NO_SUCH_MEMORY), nullptr);

  EXPECT_TRUE(caller.active->full);
  EXPECT_EQ(numbers(caller.active), Numbers({0}));
  EXPECT_EQ(caller.counter, 1u);
  EXPECT_EQ(caller.active->n_alloced, 1u);
}

TEST(OzChunk, BlocksFollowEachOtherWithoutGap)
{
  Caller caller;

  char* const first = caller.allocate(10);
  char* const second = caller.allocate(3);
  char* const empty = caller.allocate(0);
  char* const third = caller.allocate(8);

  EXPECT_EQ(bytes(caller.active), 1016u);
  EXPECT_EQ(first, caller.active->lower);
  EXPECT_EQ(second, first + 10);
  EXPECT_EQ(empty, first + 13);
  EXPECT_EQ(third, first + 13);
  EXPECT_EQ(caller.active->cursor, first + 21);
  EXPECT_EQ(caller.active->last_block, third);
  EXPECT_EQ(caller.active->n_alloced, 4u);
  EXPECT_EQ(caller.active->n_freed, 0u);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first) % 8, 0u);
  EXPECT_EQ(numbers(caller.active), Numbers({0}));
}

TEST(OzChunk, TheEndOfABlockStaysBelowTheLastByte)
{
  // 1,000 bytes: 928 behind the header, the last of them at 927.
  Caller fits;
  fits.allocate(0);
  EXPECT_EQ(fits.allocate(926), fits.active->lower);
  EXPECT_EQ(fits.active->upper - fits.active->cursor, 1);
  EXPECT_FALSE(fits.active->full);
  EXPECT_NE(fits.allocate(0), nullptr);
  EXPECT_EQ(numbers(fits.active), Numbers({0}));

  Caller fails;
  fails.allocate(0);
  EXPECT_NE(fails.allocate(927), nullptr);
  EXPECT_EQ(numbers(fails.active), Numbers({1, 0}));
  EXPECT_FALSE(fails.active->full);
  EXPECT_TRUE(fails.active->next->full);
}

TEST(OzChunk, ALargeRequestGetsAChunkInFrontAndTheOlderOneIsFull)
{
  Caller caller;
  caller.min_size = 2048;
  caller.allocate(10);
  ASSERT_EQ(bytes(caller.active), 2048u);

  char* const large = caller.allocate(3000);

  EXPECT_EQ(numbers(caller.active), Numbers({1, 0}));
  EXPECT_EQ(bytes(caller.active), 4000u);
  EXPECT_EQ(large, caller.active->lower);
  EXPECT_FALSE(caller.active->full);
  EXPECT_TRUE(caller.active->next->full);
}

TEST(OzChunk, AFullChunkStillServesSmallerRequestsWhenThoseInFrontAreUsedUp)
{
  Caller caller;
  caller.allocate(100);  // 932 bytes are left behind it
  caller.allocate(1000); // 928 bytes are left
  ASSERT_EQ(numbers(caller.active), Numbers({1, 0}));
  caller.allocate(920);
  EXPECT_FALSE(caller.active->full);

  char* const small = caller.allocate(50);

  EXPECT_TRUE(caller.active->full);
  EXPECT_EQ(small, caller.active->next->lower + 100);
  EXPECT_EQ(numbers(caller.active), Numbers({1, 0}));
  EXPECT_EQ(caller.active->next->n_alloced, 2u);
}

TEST(OzChunk, AllChunksPassedOverAreFull)
{
  Caller caller;
  for (int i = 0; i < 4; ++i)
    caller.allocate(5000);
  for (OzChunk* chunk = caller.active; chunk != nullptr; chunk = chunk->next)
    chunk->full = false;

  caller.allocate(2000);

  EXPECT_EQ(numbers(caller.active), Numbers({4, 3, 2, 1, 0}));
  EXPECT_FALSE(caller.active->full);
  for (OzChunk const* chunk = caller.active->next; chunk != nullptr; chunk = chunk->next)
    EXPECT_TRUE(chunk->full) << chunk->nr;
}

TEST(OzChunk, AFreedBlockIsCountedAndItsChunkStaysWhileItIsNotFull)
{
  Caller caller;
  char* const first = caller.allocate(16);
  char* const second = caller.allocate(16);

  caller.release(first, true);
  caller.release(second, true);

  EXPECT_EQ(numbers(caller.active), Numbers({0}));
  EXPECT_EQ(caller.spare, nullptr);
  EXPECT_EQ(caller.active->n_alloced, 2u);
  EXPECT_EQ(caller.active->n_freed, 2u);
  EXPECT_EQ(caller.allocate(16), second + 16); // nothing is handed out again
}

TEST(OzChunk, ADrainedFullChunkIsKeptAsSpareAndServesAgain)
{
  Caller caller;
  char* const first = caller.allocate(16);
  char* const second = caller.allocate(16);
  char* const large = caller.allocate(2000);
  ASSERT_EQ(numbers(caller.active), Numbers({1, 0}));
  OzChunk* const old = caller.active->next;

  caller.release(first, true);
  EXPECT_EQ(numbers(caller.active), Numbers({1, 0}));
  caller.release(second, true);

  EXPECT_EQ(numbers(caller.active), Numbers({1}));
  EXPECT_EQ(caller.spare, old);
  EXPECT_EQ(numbers(caller.spare), Numbers({0}));
  EXPECT_EQ(old->n_alloced, 0u);
  EXPECT_EQ(old->n_freed, 0u);
  EXPECT_FALSE(old->full);
  EXPECT_EQ(old->cursor, old->lower);
  EXPECT_EQ(old->last_block, second);

  caller.release(large, true);
  OzChunk::OzChunkClear(caller.active, nullptr);

  EXPECT_EQ(caller.allocate(24), old->lower);
  EXPECT_EQ(caller.active, old);
  EXPECT_EQ(caller.spare, nullptr);
  EXPECT_EQ(caller.counter, 2u);
}

TEST(OzChunk, ADrainedFullChunkGoesBackToTheSystemUnlessItIsKept)
{
  Caller caller;
  char* const first = caller.allocate(16);
  caller.allocate(2000);
  ASSERT_EQ(numbers(caller.active), Numbers({1, 0}));

  caller.release(first, false);

  EXPECT_EQ(numbers(caller.active), Numbers({1}));
  EXPECT_EQ(caller.spare, nullptr);
}

TEST(OzChunk, AChunkLeavesTheMiddleOrTheHeadOfTheList)
{
  Caller caller;
  char* blocks[4];
  for (char*& block : blocks)
    block = caller.allocate(3000);
  ASSERT_EQ(numbers(caller.active), Numbers({3, 2, 1, 0}));

  caller.release(blocks[1], true);
  EXPECT_EQ(numbers(caller.active), Numbers({3, 2, 0}));
  caller.active->full = true;
  caller.release(blocks[3], true);
  EXPECT_EQ(numbers(caller.active), Numbers({2, 0}));
  caller.release(blocks[0], true);

  EXPECT_EQ(numbers(caller.active), Numbers({2}));
  EXPECT_EQ(numbers(caller.spare), Numbers({0, 3, 1}));
}

TEST(OzChunk, AChunkTakenFromSpareComesAlone)
{
  Caller caller;
  for (int i = 0; i < 3; ++i)
    caller.allocate(1000);
  caller.reinit(true);
  ASSERT_EQ(numbers(caller.spare), Numbers({0, 1, 2}));

  caller.allocate(10);
  EXPECT_EQ(numbers(caller.active), Numbers({0}));
  EXPECT_EQ(numbers(caller.spare), Numbers({1, 2}));

  // 1,928 bytes are behind each header.
  caller.allocate(1920);
  EXPECT_EQ(numbers(caller.active), Numbers({1, 0}));
  EXPECT_EQ(numbers(caller.spare), Numbers({2}));

  caller.allocate(2500);
  EXPECT_EQ(numbers(caller.active), Numbers({3, 2, 1, 0}));
  EXPECT_EQ(caller.spare, nullptr);
}

TEST(OzChunk, SpareChunksThatAreTooSmallBecomeFullMembersOfTheList)
{
  Caller caller;
  caller.allocate(100);
  caller.allocate(1500);
  caller.allocate(2600);
  caller.reinit(true);
  ASSERT_EQ(numbers(caller.spare), Numbers({0, 1, 2}));

  char* const block = caller.allocate(2000);

  EXPECT_EQ(numbers(caller.active), Numbers({1, 0}));
  EXPECT_EQ(numbers(caller.spare), Numbers({2}));
  EXPECT_EQ(block, caller.active->lower);
  EXPECT_FALSE(caller.active->full);
  EXPECT_TRUE(caller.active->next->full);
  EXPECT_EQ(caller.counter, 3u);
}

TEST(OzChunk, ABlockOfMallocsGoesBackToFreeAndChangesNoChunk)
{
  Caller caller;
  caller.allocate(10);
  OzChunk const before = *caller.active;
  TextJournal journal;
  void* const foreign = std::malloc(40);
  std::string const address = hex(foreign);

  caller.release(foreign, true, &journal);

  EXPECT_EQ(journal.text(), "Freeing not chunked malloced blockat " + address + "\n");
  expect_same_fields(*caller.active, before);
  EXPECT_EQ(caller.spare, nullptr);
}

TEST(OzChunk, NoBlockOrNoListIsNothingToFree)
{
  Caller caller;
  TextJournal journal;
  void* const foreign = std::malloc(40);

  caller.release(foreign, false, &journal);
  caller.allocate(10);
  caller.release(nullptr, false, &journal);

  EXPECT_EQ(journal.text(), "");
  EXPECT_EQ(caller.active->n_freed, 0u);
  std::free(foreign);
}

TEST(OzChunk, TheRangeOfAChunkHasBothItsEnds)
{
  Caller caller;
  caller.allocate(10);

  caller.release(caller.active->lower, true);
  EXPECT_EQ(caller.active->n_freed, 1u);
  caller.release(caller.active->upper, true);
  EXPECT_EQ(caller.active->n_freed, 2u);
}

TEST(OzChunk, ReinitKeepsChunksInReverseOrderAndInvalidatesTheirBlocks)
{
  Caller caller;
  for (int i = 0; i < 3; ++i)
    caller.release(caller.allocate(1000), false);
  ASSERT_EQ(numbers(caller.active), Numbers({2, 1, 0}));

  caller.reinit(true);

  EXPECT_EQ(caller.active, nullptr);
  EXPECT_EQ(numbers(caller.spare), Numbers({0, 1, 2}));
  for (OzChunk const* chunk = caller.spare; chunk != nullptr; chunk = chunk->next)
  {
    EXPECT_EQ(chunk->cursor, chunk->lower);
    EXPECT_EQ(chunk->n_alloced, 0u);
    EXPECT_EQ(chunk->n_freed, 0u);
    EXPECT_FALSE(chunk->full);
  }

  // Those that come later are put in front of those that are there.
  caller.allocate(1000);
  caller.allocate(1000);
  ASSERT_EQ(numbers(caller.active), Numbers({1, 0}));
  ASSERT_EQ(numbers(caller.spare), Numbers({2}));
  caller.reinit(true);
  EXPECT_EQ(numbers(caller.spare), Numbers({0, 1, 2}));
}

TEST(OzChunk, ReinitWithoutKeepingFreesAllAndLeavesTheSpareOnes)
{
  Caller caller;
  caller.allocate(1000);
  caller.allocate(1000);
  caller.reinit(true);
  caller.allocate(5);
  ASSERT_EQ(numbers(caller.active), Numbers({0}));
  ASSERT_EQ(numbers(caller.spare), Numbers({1}));

  caller.reinit(false);

  EXPECT_EQ(caller.active, nullptr);
  EXPECT_EQ(numbers(caller.spare), Numbers({1}));
}

TEST(OzChunk, ClearFreesAListAndLeavesNoListAlone)
{
  OzChunk* none = nullptr;
  OzChunk::OzChunkClear(none, nullptr);
  EXPECT_EQ(none, nullptr);
  OzChunk* spare = nullptr;
  OzChunk::OzChunkReinit(none, spare, true, nullptr);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(spare, nullptr);

  Caller caller;
  caller.allocate(1000);
  caller.allocate(1000);
  OzChunk::OzChunkClear(caller.active, nullptr);

  EXPECT_EQ(caller.active, nullptr);
  EXPECT_EQ(caller.counter, 2u);
  caller.allocate(10);
  EXPECT_EQ(numbers(caller.active), Numbers({2})); // numbers are not used again
}

TEST(OzChunk, OneListMayServeAsBoth)
{
  Deadline const deadline(std::chrono::seconds(60));
  std::uint64_t counter = 0;
  OzChunk* list = nullptr;
  auto const allocate = [&](std::uint64_t size)
  { return static_cast<char*>(OzChunk::OzChunkMalloc(counter, list, list, 0, size, nullptr)); };

  char* const first = allocate(900);
  char* const second = allocate(2000);
  EXPECT_EQ(numbers(list), Numbers({1, 0}));
  EXPECT_EQ(allocate(NO_SUCH_MEMORY), nullptr);
  EXPECT_EQ(numbers(list), Numbers({1, 0}));

  OzChunk::OzChunkFree(list, first, true, list, nullptr);
  EXPECT_EQ(numbers(list), Numbers({0, 1}));
  EXPECT_EQ(allocate(900), first);

  OzChunk::OzChunkReinit(list, list, true, nullptr);
  EXPECT_EQ(numbers(list), Numbers({1, 0}));
  EXPECT_EQ(list->n_alloced, 0u);
  EXPECT_EQ(allocate(2000), second);

  OzChunk::OzChunkReinit(list, list, false, nullptr);
  EXPECT_EQ(list, nullptr);
}

TEST(OzChunk, TellsAJournalOfEachChunkAndBlockThatIsMade)
{
  Caller caller;
  caller.counter = 5;
  TextJournal journal;

  char* const block = caller.allocate(10, &journal);

  std::string const chunk = hex(caller.active);
  EXPECT_EQ(journal.take(), "Alloced chunk of1016bytes at " + chunk +
                                "\n"
                                "Header: nr=5 lower=" +
                                hex(reinterpret_cast<char*>(caller.active) + 72) +
                                ", upper=" + hex(reinterpret_cast<char*>(caller.active) + 1015) +
                                "\n"
                                "Alloced 10bytes (chunk 5) at " +
                                hex(block) + "\n");

  char* const next = caller.allocate(0, &journal);
  EXPECT_EQ(journal.take(), "Alloced 0bytes (chunk 5) at " + hex(next) + "\n");
}

TEST(OzChunk, TellsAJournalOfEachBlockAndChunkThatGoes)
{
  Caller caller;
  char* const first = caller.allocate(16);
  char* const second = caller.allocate(16);
  caller.allocate(2000);
  std::string const old = hex(caller.active->next);
  std::string const young = hex(caller.active);
  TextJournal journal;

  caller.release(first, false, &journal);
  EXPECT_EQ(journal.take(), "Freeing malloced block (chunk 0)at " + hex(first) + "\n");

  caller.release(second, false, &journal);
  EXPECT_EQ(journal.take(), "Freeing malloced block (chunk 0)at " + hex(second) +
                                "\n"
                                "Freeing chunk 0at " +
                                old + "\n");

  caller.reinit(false, &journal);
  EXPECT_EQ(journal.take(), "Freeing chunk 1at " + young + "\n");
}

TEST(OzChunk, TellsAJournalNothingOfAChunkThatIsKept)
{
  Caller caller;
  char* const first = caller.allocate(16);
  caller.allocate(2000);
  OzChunk const* const old = caller.active->next;
  OzChunk const* const young = caller.active;
  TextJournal journal;

  caller.release(first, true, &journal);
  EXPECT_EQ(journal.take(), "Freeing malloced block (chunk 0)at " + hex(first) + "\n");
  caller.reinit(true, &journal);
  EXPECT_EQ(journal.take(), "");

  std::string const both = "Freeing chunk 1at " + hex(young) + "\nFreeing chunk 0at " + hex(old) + "\n";
  OzChunk::OzChunkClear(caller.spare, &journal);
  EXPECT_EQ(journal.take(), both);
}

/// The chunks as lists of numbers, searched from end to end.
class Model
{
public:
  struct Chunk
  {
    std::uint64_t nr, total, used, n_alloced, n_freed;
    bool full;
  };

  // The chunk and the offset behind its header that a request is served from.
  struct Place
  {
    std::uint64_t nr, offset;
  };

  Place allocate(std::uint64_t size, std::uint64_t min_size)
  {
    if (active.empty())
      renew(size, min_size);
    for (;;)
    {
      for (Chunk& chunk : active)
      {
        if (HEADER + chunk.used + size < chunk.total - 1)
        {
          Place const place = {chunk.nr, chunk.used};
          chunk.used += size;
          ++chunk.n_alloced;
          return place;
        }
        chunk.full = true;
      }
      renew(size, min_size);
    }
  }

  void release(std::uint64_t nr, bool keep)
  {
    for (std::size_t i = 0; i < active.size(); ++i)
      if (active[i].nr == nr)
      {
        ++active[i].n_freed;
        if (active[i].full && active[i].n_freed == active[i].n_alloced)
        {
          Chunk const chunk = active[i];
          active.erase(active.begin() + static_cast<std::ptrdiff_t>(i));
          retire(chunk, keep);
        }
        return;
      }
  }

  void reinit(bool keep)
  {
    for (Chunk const& chunk : active)
      retire(chunk, keep);
    active.clear();
  }

  std::vector<Chunk> active, spare;
  std::uint64_t counter = 0;

private:
  void renew(std::uint64_t size, std::uint64_t min_size)
  {
    if (!spare.empty())
    {
      active.insert(active.begin(), spare.front());
      spare.erase(spare.begin());
      return;
    }
    std::uint64_t total = size + 1000 > min_size ? size + 1000 : min_size;
    while (total % 8 != 0)
      ++total;
    active.insert(active.begin(), Chunk{counter++, total, 0, 0, 0, false});
  }

  void retire(Chunk const& chunk, bool keep)
  {
    if (keep)
      spare.insert(spare.begin(), Chunk{chunk.nr, chunk.total, 0, 0, 0, false});
  }
};

void expect_same(OzChunk const* list, std::vector<Model::Chunk> const& model)
{
  for (Model::Chunk const& expected : model)
  {
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->nr, expected.nr);
    ASSERT_EQ(bytes(list), expected.total);
    ASSERT_EQ(list->lower, reinterpret_cast<char const*>(list) + HEADER);
    ASSERT_EQ(static_cast<std::uint64_t>(list->cursor - list->lower), expected.used);
    ASSERT_EQ(list->n_alloced, expected.n_alloced);
    ASSERT_EQ(list->n_freed, expected.n_freed);
    ASSERT_EQ(list->full, expected.full);
    list = list->next;
  }
  ASSERT_EQ(list, nullptr);
}

// A block, what it is filled with, and the chunk that it came from.
struct Block
{
  char* at;
  std::uint64_t size;
  char fill;
  std::uint64_t nr;
};

bool is_intact(Block const& block)
{
  for (std::uint64_t i = 0; i < block.size; ++i)
    if (block.at[i] != block.fill)
      return false;
  return true;
}

OzChunk const* find(OzChunk const* list, std::uint64_t nr)
{
  while (list != nullptr && list->nr != nr)
    list = list->next;
  return list;
}

void walk_at_random(unsigned seed)
{
  std::mt19937 random(seed);
  auto const below = [&random](unsigned n) { return static_cast<unsigned>(random() % n); };
  Caller caller;
  Model model;
  std::vector<Block> blocks;

  for (int step = 0; step < 4000; ++step)
  {
    SCOPED_TRACE(testing::Message() << "seed " << seed << ", step " << step);
    unsigned const choice = below(100);
    bool const keep = below(3) != 0;
    if (choice < 50)
    {
      // Most are small; some need a chunk of their own.
      std::uint64_t const size = below(8) == 0 ? below(3000) : below(200);
      caller.min_size = below(4) == 0 ? 4096 : 0;
      Model::Place const place = model.allocate(size, caller.min_size);

      Block const block = {caller.allocate(size), size, static_cast<char>(below(256)), place.nr};

      OzChunk const* const chunk = find(caller.active, place.nr);
      ASSERT_NE(chunk, nullptr);
      ASSERT_EQ(block.at, chunk->lower + place.offset);
      ASSERT_EQ(block.at, chunk->last_block);
      std::memset(block.at, block.fill, size);
      blocks.push_back(block);
    }
    else if (choice < 97 && !blocks.empty())
    {
      std::size_t const i = below(static_cast<unsigned>(blocks.size()));
      ASSERT_TRUE(is_intact(blocks[i]));
      // An empty block shares its address with the next one, but is of the same chunk.
      caller.release(blocks[i].at, keep);
      model.release(blocks[i].nr, keep);
      blocks.erase(blocks.begin() + static_cast<std::ptrdiff_t>(i));
    }
    else if (choice == 97)
    {
      void* const foreign = std::malloc(16);
      if (caller.active == nullptr)
        std::free(foreign);
      else
        caller.release(foreign, keep);
    }
    else if (choice == 98 && below(8) == 0)
    {
      for (Block const& block : blocks)
        ASSERT_TRUE(is_intact(block));
      caller.reinit(keep);
      model.reinit(keep);
      blocks.clear();
    }
    else if (choice == 99 && below(4) == 0)
    {
      OzChunk::OzChunkClear(caller.spare, nullptr);
      model.spare.clear();
    }

    ASSERT_EQ(caller.counter, model.counter);
    expect_same(caller.active, model.active);
    expect_same(caller.spare, model.spare);
    if (testing::Test::HasFatalFailure())
      return;
  }
  for (Block const& block : blocks)
    ASSERT_TRUE(is_intact(block));
}

TEST(OzChunk, AgreesWithListsOfNumbers)
{
  for (unsigned const seed : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u})
    walk_at_random(seed);
}

#ifdef CHUNKS_ARE_GUARDED
bool out_of_bounds(void const* address)
{
  return __asan_address_is_poisoned(address) != 0;
}

TEST(OzChunk, WhatIsFreeInAChunkIsOutOfBounds)
{
  Caller caller;
  char* const first = caller.allocate(13);
  OzChunk* const chunk = caller.active;
  for (int i = 0; i < 13; ++i)
    EXPECT_FALSE(out_of_bounds(first + i)) << i;
  for (char const* byte = first + 13; byte <= chunk->upper; ++byte)
    ASSERT_TRUE(out_of_bounds(byte)) << byte - first;

  char* const second = caller.allocate(4);
  EXPECT_FALSE(out_of_bounds(first + 12));
  EXPECT_FALSE(out_of_bounds(second + 3));
  EXPECT_TRUE(out_of_bounds(second + 4));

  caller.reinit(true);
  for (char const* byte = chunk->lower; byte <= chunk->upper; ++byte)
    ASSERT_TRUE(out_of_bounds(byte)) << byte - first;
  EXPECT_EQ(caller.allocate(5), first);
  EXPECT_FALSE(out_of_bounds(first + 4));
  EXPECT_TRUE(out_of_bounds(first + 5));
}

TEST(OzChunk, ADrainedChunkIsOutOfBounds)
{
  Caller caller;
  char* const block = caller.allocate(16);
  caller.allocate(2000);

  caller.release(block, true);

  EXPECT_TRUE(out_of_bounds(block));
  EXPECT_FALSE(out_of_bounds(caller.spare));
}

TEST(OzChunkDeathTest, AWriteBehindABlockIsCaught)
{
  Caller caller;
  char volatile* const block = caller.allocate(24);
  block[23] = 'a';

  EXPECT_DEATH(block[24] = 'b', "use-after-poison");
}

TEST(OzChunkDeathTest, AWriteIntoABlockAfterItsEndIsCaught)
{
  Caller caller;
  char volatile* const block = caller.allocate(24);
  caller.reinit(true);

  EXPECT_DEATH(block[0] = 'b', "use-after-poison");
}
#endif
} // namespace
