#include "lumthreads.h"

#include "thread_refusal.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include <sched.h>

namespace
{
/// Waits at a gate before it ends.
class Gated : public LumThreads
{
public:
  Gated()
    : LumThreads(nullptr, nullptr, -1, 0, 0)
  {
  }
  ~Gated() override { Gated::Join(); }

  int ThreadMain() override
  {
    seen = GetCurrentThread();
    ++runs;
    gate.get_future().wait();
    return 32;
  }

  /// Lets the thread go on, and waits for it.
  void finish()
  {
    gate.set_value();
    Join();
    gate = std::promise<void>();
  }

  std::atomic<LumThreads*> seen{nullptr};
  std::atomic<int> runs{0};
  std::promise<void> gate;
};

int count_up(void* counter)
{
  return ++*static_cast<std::atomic<int>*>(counter);
}

std::promise<void>* release_late = nullptr;

int wait_for_release(void* ended)
{
  release_late->get_future().wait();
  static_cast<std::promise<void>*>(ended)->set_value();
  return 0;
}

int answer_for_null(void* argument)
{
  return argument == nullptr ? 7 : 8;
}
} // namespace

TEST(LumThreads, RunsItsThreadMainAndKeepsTheReturnCode)
{
  Gated thread;

  thread.Run(0);
  EXPECT_EQ(thread.IsRunning(), 1);
  EXPECT_EQ(thread.GetStatus(), LumThreads::STATUS_RUNNING);
  thread.finish();

  EXPECT_EQ(thread.runs, 1);
  EXPECT_EQ(thread.seen, &thread);
  EXPECT_EQ(thread.IsRunning(), 0);
  EXPECT_EQ(thread.GetStatus(), LumThreads::STATUS_ENDED);
  EXPECT_EQ(thread.GetThreadReturnCode(), 32);
  EXPECT_NE(thread.GetThreadId(), 0ul);
}

TEST(LumThreads, RunsAgainAfterJoin)
{
  Gated thread;

  for (int run = 1; run <= 3; ++run)
  {
    thread.Run(0);
    thread.finish();
    EXPECT_EQ(thread.runs, run);
  }
}

TEST(LumThreads, IgnoresARunWhileOneIsUnderWay)
{
  Gated thread;

  thread.Run(0);
  thread.Run(0);
  thread.finish();

  EXPECT_EQ(thread.runs, 1);
}

TEST(LumThreads, JoinsAtOnceWhatNeverRan)
{
  Gated thread;

  thread.Join();

  EXPECT_EQ(thread.GetStatus(), LumThreads::STATUS_NEVER_RUN);
  EXPECT_EQ(thread.GetThreadId(), 0ul);
  EXPECT_EQ(thread.GetThreadReturnCode(), 0);
}

TEST(LumThreads, LetsSeveralThreadsJoinOneRun)
{
  Gated thread;
  thread.Run(0);
  std::vector<std::future<int>> joins;
  for (int i = 0; i < 4; ++i)
    joins.push_back(std::async(std::launch::async,
                               [&thread]
                               {
                                 thread.Join();
                                 return thread.GetThreadReturnCode();
                               }));

  thread.gate.set_value();

  for (std::future<int>& join : joins)
    EXPECT_EQ(join.get(), 32);
}

TEST(LumThreads, RunsAFunctionInPlaceOfThreadMain)
{
  std::atomic<int> counter{41};
  LumThreads thread(nullptr, nullptr, -1, 0, 0);

  EXPECT_EQ(thread.SetFunction(&count_up, &counter), 0);
  thread.Run(0);
  thread.Join();

  EXPECT_EQ(counter, 42);
  EXPECT_EQ(thread.GetThreadReturnCode(), 42);
}

TEST(LumThreads, HandsAFunctionWithoutArgumentNull)
{
  LumThreads thread(nullptr, nullptr, -1, 0, 0);

  EXPECT_EQ(thread.SetFunction(&answer_for_null), 0);
  thread.Run(0);
  thread.Join();

  EXPECT_EQ(thread.GetThreadReturnCode(), 7);
}

TEST(LumThreads, DoesNothingByItself)
{
  LumThreads thread(nullptr, nullptr, -1, 0, 0);

  thread.Run(0);
  thread.Join();

  EXPECT_EQ(thread.GetThreadReturnCode(), 0);
  EXPECT_EQ(thread.GetStatus(), LumThreads::STATUS_ENDED);
}

TEST(LumThreads, LetsAThreadFinishOnItsOwnWhenDestroyedWhileItRuns)
{
  std::promise<void> release;
  std::promise<void> ended;
  release_late = &release;
  {
    LumThreads thread(nullptr, nullptr, -1, 0, 0);
    thread.SetFunction(&wait_for_release, &ended);
    thread.Run(0);
  }

  release.set_value();

  ended.get_future().wait();
}

TEST(LumThreads, CanBeDestroyedUnjoined)
{
  std::atomic<int> counter{0};
  {
    LumThreads thread(nullptr, nullptr, -1, 0, 0);
    thread.SetFunction(&count_up, &counter);
    thread.Run(0);
    while (thread.IsRunning() != 0)
      std::this_thread::yield();
  }

  EXPECT_EQ(counter, 1);
}

TEST(LumThreads, CanBeRunAgainWhenThePlatformHadNoThread)
{
  SKIP_UNLESS_THREADS_CAN_BE_REFUSED();
  Gated thread;
  threads_to_refuse = 1;

  thread.Run(0);

  EXPECT_EQ(thread.GetStatus(), LumThreads::STATUS_NOT_STARTED);
  EXPECT_EQ(thread.IsRunning(), 0);
  thread.Join(); // at once
  EXPECT_EQ(thread.runs, 0);
  thread.Run(0);
  thread.finish();
  EXPECT_EQ(thread.runs, 1);
  EXPECT_EQ(thread.GetStatus(), LumThreads::STATUS_ENDED);
}

TEST(LumThreads, IsNotEndedFromOutside)
{
  Gated thread;
  thread.Run(0);

  EXPECT_EQ(thread.End(1), -1);
  EXPECT_EQ(thread.Kill(9), -1);
  EXPECT_EQ(thread.IsRunning(), 1);
  char text[] = "text";
  thread.EmitTrace(text);

  thread.finish();
}

TEST(LumThreads, TakesTheProcessesInitialThreadForTheMainOne)
{
  // Tests run on it.
  EXPECT_EQ(LumThreads::GetCurrentThread(), LumThreads::GetMainThread());
}

TEST(LumThreads, GivesAThreadStartedElsewhereAnObjectOfItsOwn)
{
  LumThreads* first = nullptr;
  LumThreads* again = nullptr;
  std::thread other(
      [&]
      {
        first = LumThreads::GetCurrentThread();
        again = LumThreads::GetCurrentThread();
      });
  other.join();

  EXPECT_NE(first, nullptr);
  EXPECT_EQ(first, again);
  EXPECT_NE(first, LumThreads::GetMainThread());
}

TEST(LumThreads, TellsThreadsThatRunAtOnceApart)
{
  std::promise<void> release;
  std::shared_future<void> const go = release.get_future().share();
  std::vector<std::future<LumThreads*>> others;
  std::vector<std::promise<LumThreads*>> keys(2);
  std::vector<std::thread> threads;
  for (std::promise<LumThreads*>& key : keys)
  {
    others.push_back(key.get_future());
    threads.emplace_back(
        [&key, go]
        {
          key.set_value(LumThreads::GetCurrentThread());
          go.wait();
        });
  }

  EXPECT_NE(others[0].get(), others[1].get());

  release.set_value();
  for (std::thread& thread : threads)
    thread.join();
}

TEST(LumThreads, CountsTheProcessorsThatThisProcessMayUse)
{
  cpu_set_t before;
  ASSERT_EQ(sched_getaffinity(0, sizeof before, &before), 0);
  EXPECT_EQ(LumThreads::GetProcessorsNumber(), CPU_COUNT(&before));
  cpu_set_t one;
  CPU_ZERO(&one);
  for (int processor = 0; processor < CPU_SETSIZE && CPU_COUNT(&one) == 0; ++processor)
  {
    if (CPU_ISSET(processor, &before))
      CPU_SET(processor, &one);
  }

  ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
  long const restricted = LumThreads::GetProcessorsNumber();
  ASSERT_EQ(sched_setaffinity(0, sizeof before, &before), 0);

  EXPECT_EQ(restricted, 1);
}
