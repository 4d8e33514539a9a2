#include "ozevent.h"
#include "ozmutex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace
{
constexpr int THREADS = 8;
constexpr int DRAWS = 20000;

/// What eight threads draw together, in ascending order.
template <class Number, class Draw>
std::vector<Number> draw_in_threads(Draw draw)
{
  std::atomic<int> arrived = 0;
  std::vector<std::vector<Number>> drawn(THREADS);
  std::vector<std::thread> threads;
  for (std::vector<Number>& own : drawn)
    threads.emplace_back(
        [&]
        {
          own.reserve(DRAWS);
          for (++arrived; arrived < THREADS;)
            std::this_thread::yield();
          for (int i = 0; i < DRAWS; ++i)
            own.push_back(draw());
        });
  for (std::thread& thread : threads)
    thread.join();

  std::vector<Number> all;
  for (std::vector<Number> const& own : drawn)
  {
    EXPECT_TRUE(std::is_sorted(own.begin(), own.end())); // a thread's own numbers rise
    all.insert(all.end(), own.begin(), own.end());
  }
  std::sort(all.begin(), all.end());
  return all;
}

template <class Number>
std::vector<Number> consecutive_from(Number first)
{
  std::vector<Number> numbers(THREADS * DRAWS);
  for (Number& number : numbers)
    number = first++;
  return numbers;
}
} // namespace

TEST(Identities, DrawnByManyThreadsAtOnceAreUniqueAndWithoutGaps)
{
  int const next = OzDynObj::IDENTITY_INDEX_;

  std::vector<int> const drawn = draw_in_threads<int>([] { return OzObjectModified(1).identity(); });

  EXPECT_EQ(drawn, consecutive_from(next));
  EXPECT_EQ(OzDynObj::IDENTITY_INDEX_, next + THREADS * DRAWS);
}

TEST(Identities, OfMutexesDrawnByManyThreadsAtOnceAreUniqueAndWithoutGaps)
{
  std::uint64_t const last = OzMutexId::MUTEX_ID_;

  std::vector<std::uint64_t> const drawn = draw_in_threads<std::uint64_t>([] { return OzMutexId().Id(); });

  EXPECT_EQ(drawn, consecutive_from(last + 1));
}
