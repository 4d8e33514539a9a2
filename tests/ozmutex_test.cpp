#include "ozmutex.h"

#include "lummutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <future>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
// Built before main, like the static objects of a client: ids can be drawn then, and these are the first.
OzMutexId const first_id;
std::uint64_t const counter_after_first_id = OzMutexId::MUTEX_ID_;

/// Draws an id after main, when the static objects of this file are destroyed. A lock that no longer worked
/// would end the process.
struct DrawsAnIdAtTheEnd
{
  ~DrawsAnIdAtTheEnd()
  {
    OzMutexId const id;
    if (id.Id() == 0)
      std::abort();
  }
} const draws_an_id_at_the_end;

std::uint64_t id_of_another_thread()
{
  return std::async(std::launch::async, [] { return OzMutexId().Id(); }).get();
}

/// Lets four threads count together, each step split in two with a turn for the others in between, while
/// `Section` lives. The result is the number of steps only if steps of different threads exclude each other.
template <class Section>
int count_in_threads()
{
  constexpr int THREADS = 4;
  constexpr int STEPS = 1000;
  std::atomic<int> arrived = 0;
  int counter = 0;
  auto const work = [&]
  {
    for (++arrived; arrived < THREADS;)
      std::this_thread::yield();
    for (int i = 0; i < STEPS; ++i)
    {
      Section const section;
      int const seen = counter;
      std::this_thread::yield();
      counter = seen + 1;
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < THREADS; ++i)
    threads.emplace_back(work);
  for (std::thread& thread : threads)
    thread.join();
  return counter;
}

/// The lock by explicit calls, for as long as it lives.
struct ProtectedSection
{
  ProtectedSection() { OzRaceConditionProtection().Lock(); }
  ~ProtectedSection() { OzRaceConditionProtection().Unlock(); }
};
} // namespace

TEST(OzMutexId, TheFirstIdOfAProcessIsOne)
{
  EXPECT_EQ(first_id.Id(), 1u);
  EXPECT_EQ(counter_after_first_id, 1u);
}

TEST(OzMutexId, IdsAreConsecutiveAcrossThreads)
{
  std::uint64_t const last = OzMutexId::MUTEX_ID_;

  OzMutexId const here;
  std::uint64_t const there = id_of_another_thread();
  OzMutexId const here_again;

  EXPECT_EQ(here.Id(), last + 1);
  EXPECT_EQ(there, last + 2);
  EXPECT_EQ(here_again.Id(), last + 3);
  EXPECT_EQ(OzMutexId::MUTEX_ID_, last + 3);
}

TEST(OzMutexId, IdsAreDrawnUnderTheGlobalLock)
{
  constexpr std::uint64_t STEPS = 100;
  std::uint64_t const last = OzMutexId::MUTEX_ID_;
  std::atomic<bool> counting = false;
  std::atomic<bool> stop = false;
  std::uint64_t drawn = 0;
  std::thread drawing(
      [&]
      {
        while (!counting)
          std::this_thread::yield();
        for (; !stop; ++drawn)
          OzMutexId();
      });

  // Each step is split in two with a turn for the other thread in between, which must not draw then.
  counting = true;
  for (std::uint64_t i = 0; i < STEPS; ++i)
  {
    OzCriticalDkbRegion const region;
    std::uint64_t const seen = OzMutexId::MUTEX_ID_;
    std::this_thread::yield();
    OzMutexId::MUTEX_ID_ = seen + 1;
  }
  stop = true;
  drawing.join();

  EXPECT_EQ(OzMutexId::MUTEX_ID_, last + STEPS + drawn);
}

TEST(OzMutexId, CopiesAndAssignedIdsBearTheSameNumber)
{
  OzMutexId const source;
  OzMutexId copied(source);
  OzMutexId assigned;
  OzMutexId moved;
  std::uint64_t const last = OzMutexId::MUTEX_ID_;

  EXPECT_EQ(&(assigned = source), &assigned);
  EXPECT_EQ(&(moved = std::move(copied)), &moved);

  EXPECT_EQ(copied.Id(), source.Id());
  EXPECT_EQ(assigned.Id(), source.Id());
  EXPECT_EQ(moved.Id(), source.Id());
  EXPECT_EQ(OzMutexId::MUTEX_ID_, last);
}

TEST(OzCriticalDkbRegion, ExcludesOtherThreadsForItsLife)
{
  EXPECT_EQ(count_in_threads<OzCriticalDkbRegion>(), 4000);
}

TEST(OzCriticalDkbRegion, IsNotCopied)
{
  EXPECT_FALSE(std::is_copy_constructible_v<OzCriticalDkbRegion>);
  EXPECT_FALSE(std::is_copy_assignable_v<OzCriticalDkbRegion>);
}

TEST(OzRaceConditionProtection, LocksWhateverTheModeIs)
{
  OzRaceConditionProtection::Type const modes[] = {OzRaceConditionProtection::OzRaceProtectionOn,
                                                   OzRaceConditionProtection::OzRaceProtectionOff,
                                                   static_cast<OzRaceConditionProtection::Type>(99)};
  for (OzRaceConditionProtection::Type const mode : modes)
  {
    OzRaceConditionProtection::SetMode(mode);
    EXPECT_EQ(OzRaceConditionProtection::Mode(), mode);
    EXPECT_EQ(OzRaceConditionProtection::Mode_, mode);

    EXPECT_EQ(count_in_threads<ProtectedSection>(), 4000) << mode;
  }
  OzRaceConditionProtection::SetMode(OzRaceConditionProtection::OzRaceProtectionOn);
}

TEST(OzRaceConditionProtection, TheModeAfterLoadingIsTheOneWithValueZero)
{
  EXPECT_EQ(static_cast<int>(OzRaceConditionProtection::Mode()), 0);
  EXPECT_EQ(static_cast<int>(OzRaceConditionProtection::OzRaceProtectionOn), 0);
  EXPECT_EQ(static_cast<int>(OzRaceConditionProtection::OzRaceProtectionOff), 1);
}

TEST(OzRaceConditionProtection, AssignmentGivesTheTarget)
{
  OzRaceConditionProtection source;
  OzRaceConditionProtection target;

  EXPECT_EQ(&(target = source), &target);
  EXPECT_EQ(&(target = OzRaceConditionProtection()), &target);
}

TEST(GlobalLock, NeedsNeitherAConstructorToHaveRunNorADestructor)
{
  EXPECT_TRUE(std::is_trivially_destructible_v<LumMutex>);
  EXPECT_FALSE(std::is_copy_constructible_v<LumMutex>);
}

TEST(DeadlockDetector, IsNullUntilAClientSetsItAndThenNeverCalled)
{
  EXPECT_EQ(dkb_deadlock_detector, nullptr);
  static int calls;
  calls = 0;
  dkb_deadlock_detector = [](OzArray<std::size_t> const&, OzArray<std::size_t> const&,
                             OzArray<std::size_t> const&) { ++calls; };

  {
    OzCriticalDkbRegion const region;
  }
  OzRaceConditionProtection protection;
  protection.Lock();
  protection.Unlock();
  id_of_another_thread();

  EXPECT_EQ(calls, 0);
  dkb_deadlock_detector = nullptr;
}
