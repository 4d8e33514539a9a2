#include "lumthreads.h"
#include "ozdynobj.h"
#include "ozmutex.h"
#include "oztaskprocessor.h"
#include "oztaskprocessor_p.h"

#include "deadline.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <memory>
#include <new>
#include <thread>
#include <vector>

namespace
{
class Processor : public OzTaskProcessor
{
public:
  using OzTaskProcessor::AddProcessor;
  using OzTaskProcessor::ReleaseProcessorLocals;
  using OzTaskProcessor::RemoveProcessor;
};

/// Runs `work` on a thread that is bound to `processor`, as a worker would.
void run_bound(Processor& processor, std::function<void()> const& work)
{
  std::thread thread(
      [&]
      {
        Processor::AddProcessor(&processor);
        work();
        processor.ReleaseProcessorLocals();
        Processor::RemoveProcessor(&processor);
      });
  thread.join();
}

void run_unbound(std::function<void()> const& work)
{
  std::thread thread(work);
  thread.join();
}

/// Counts how many live, and needs the global lock to come and go.
struct Counted
{
  Counted()
  {
    OzMutexId const takes_the_lock;
    ++live;
  }
  ~Counted()
  {
    OzMutexId const takes_the_lock;
    --live;
  }
  Counted(Counted const&) = delete;
  Counted& operator=(Counted const&) = delete;
  int number = 0;
  static inline int live = 0;
};

template <class T>
class Local : public OzTaskProcessorDkbLocal<T>
{
public:
  using OzTaskProcessorDkbLocal<T>::OzTaskProcessorDkbLocal;
  using OzTaskProcessorDkbLocal<T>::main_value_;
  using OzTaskProcessorDkbLocal<T>::peak_count_;
  using OzTaskProcessorDkbLocal<T>::values_;
};

void set_to_minus_one(int* value)
{
  *value = -1;
}

void take_the_lock(Counted* value)
{
  OzMutexId const takes_the_lock;
  value->number = 5;
}

/// A value that there is never memory for, other than as a part of something.
struct Unaffordable
{
  int number = 4;
  static void* operator new(std::size_t, std::nothrow_t const&) noexcept { return nullptr; }
  static void operator delete(void*) noexcept {}
};

/// Notes in which order it is released.
class Released : public OzReleaseTaskProcessorLocal
{
public:
  Released(std::vector<int>& order, int released_number)
    : log(order)
    , number(released_number)
  {
  }
  void Release(OzTaskProcessor*) override { log.push_back(number); }

private:
  std::vector<int>& log;
  int number;
};
} // namespace

TEST(OzTaskProcessor, HasANumberOfItsOwnCountedUp)
{
  Processor const first;
  Processor const second;

  EXPECT_EQ(second.Id(), first.Id() + 1);
  EXPECT_EQ(second.Id(), OzTaskProcessor::Id_);
}

TEST(OzTaskProcessor, LeavesTheFirstNumbersToTheWorkersOfTheLibrary)
{
  Processor const processor;

  EXPECT_GE(processor.Id(), 65u);
}

TEST(OzTaskProcessor, KeepsItsNumberInACopy)
{
  Processor processor;
  int something = 0;
  processor.WaitFor(&something);

  Processor const copy(processor);
  Processor other;
  other = processor;

  EXPECT_EQ(copy.Id(), processor.Id());
  EXPECT_EQ(copy.WaitsFor(), &something);
  EXPECT_EQ(other.Id(), processor.Id());
  EXPECT_EQ(other.WaitsFor(), &something);
}

TEST(OzTaskProcessor, WaitsForNothingAtFirst)
{
  Processor const processor;

  EXPECT_EQ(processor.WaitsFor(), nullptr);
}

TEST(OzTaskProcessor, IsFoundByTheThreadThatIsBoundToIt)
{
  Processor processor;
  OzTaskProcessor* found = nullptr;

  run_bound(processor, [&] { found = OzTaskProcessor::TaskProcessor(); });

  EXPECT_EQ(found, &processor);
}

TEST(OzTaskProcessor, IsNotFoundByAThreadThatNobodyBound)
{
  OzTaskProcessor* found = nullptr;
  Processor processor;

  run_unbound([&] { found = OzTaskProcessor::TaskProcessor(); });
  EXPECT_EQ(found, nullptr);

  run_unbound(
      [&]
      {
        Processor::AddProcessor(&processor);
        Processor::RemoveProcessor(nullptr); // what it is handed is not looked at
        found = OzTaskProcessor::TaskProcessor();
      });
  EXPECT_EQ(found, nullptr);
}

TEST(OzTaskProcessor, IsNotFoundOnTheMainThreadEvenIfItWasBound)
{
  Processor processor;

  Processor::AddProcessor(&processor);
  EXPECT_EQ(OzTaskProcessor::TaskProcessor(), nullptr);
  Processor::RemoveProcessor(&processor);
}

TEST(OzTaskProcessor, IsUnboundWithoutEffectWhereNothingIsBound)
{
  Processor processor;

  run_unbound(
      [&]
      {
        Processor::RemoveProcessor(&processor);
        EXPECT_EQ(OzTaskProcessor::TaskProcessor(), nullptr);
      });
}

TEST(OzTaskProcessor, ReleasesItsLocalsInTheOrderOfTheirRecordingOnce)
{
  std::vector<int> order;
  Released first(order, 1);
  Released second(order, 2);
  Processor processor;
  processor.RecordProcessorLocal(&second);
  processor.RecordProcessorLocal(nullptr);
  processor.RecordProcessorLocal(&first);
  processor.RecordProcessorLocal(&second);

  processor.ReleaseProcessorLocals();
  EXPECT_EQ(order, (std::vector<int>{2, 1, 2}));

  processor.ReleaseProcessorLocals();
  EXPECT_EQ(order.size(), 3u);
}

TEST(OzTaskProcessor, ReleasesItsLocalsWhenDestroyed)
{
  std::vector<int> order;
  Released local(order, 1);
  {
    Processor processor;
    processor.RecordProcessorLocal(&local);
  }

  EXPECT_EQ(order, std::vector<int>{1});
}

TEST(OzTaskProcessorDkbLocal, SharesOneValueAmongAllThreadsWithoutProcessor)
{
  Local<int> local;
  int* elsewhere = nullptr;

  run_unbound([&] { elsewhere = local.Value(); });

  EXPECT_EQ(local.Value(), &local.main_value_);
  EXPECT_EQ(elsewhere, &local.main_value_);
  EXPECT_EQ(*local.Value(), 0);
  EXPECT_EQ(local.values_.size(), 0u);
}

TEST(OzTaskProcessorDkbLocal, GivesEachProcessorOneValueOfItsOwn)
{
  Local<int> local;
  Processor processor;
  int* first = nullptr;
  int* again = nullptr;

  run_bound(processor,
            [&]
            {
              first = local.Value();
              EXPECT_EQ(*first, 0);
              *first = 7;
              again = local.Value();
              EXPECT_EQ(local.values_.size(), 1u);
            });

  EXPECT_EQ(first, again);
  EXPECT_NE(first, &local.main_value_);
  EXPECT_EQ(*local.Value(), 0);
  EXPECT_EQ(local.values_.size(), 0u) << "released with the thread";
}

TEST(OzTaskProcessorDkbLocal, RunsItsInitializerOnEachNewValue)
{
  Local<int> local(&set_to_minus_one);
  Processor processor;
  std::vector<int> values;

  EXPECT_EQ(*local.Value(), -1);
  for (int run = 0; run < 2; ++run)
    run_bound(processor,
              [&]
              {
                values.push_back(*local.Value());
                *local.Value() = 3;
              });

  EXPECT_EQ(values, (std::vector<int>{-1, -1})) << "a later run starts with a fresh value";
}

TEST(OzTaskProcessorDkbLocal, MakesANewValueAfterARelease)
{
  Local<int> local;
  Processor processor;

  run_bound(processor,
            [&]
            {
              *local.Value() = 7;
              processor.ReleaseProcessorLocals();
              EXPECT_EQ(*local.Value(), 0);
            });

  EXPECT_EQ(local.values_.size(), 0u) << "the local was recorded again";
}

TEST(OzTaskProcessorDkbLocal, KeepsTheMostValuesThatItEverHad)
{
  Local<int> local;
  Processor first;
  Processor second;

  run_bound(first, [&] { local.Value(); });
  EXPECT_EQ(local.peak_count_, 1u);
  run_bound(first,
            [&]
            {
              local.Value();
              run_bound(second, [&] { local.Value(); });
            });
  run_bound(first, [&] { local.Value(); });

  EXPECT_EQ(local.peak_count_, 2u);
}

TEST(OzTaskProcessorDkbLocal, BuildsAndFreesValuesOutsideTheGlobalLock)
{
  Local<Counted> local(&take_the_lock);
  Processor processor;
  int number = 0;
  EXPECT_EQ(Counted::live, 1);

  run_bound(processor,
            [&]
            {
              number = local.Value()->number;
              EXPECT_EQ(Counted::live, 2);
            });

  EXPECT_EQ(number, 5);
  EXPECT_EQ(Counted::live, 1);
}

TEST(OzTaskProcessorDkbLocal, ReleasesWithoutEffectWhatItDoesNotHave)
{
  Local<int> local;
  Processor processor;

  local.Release(&processor);

  EXPECT_EQ(local.values_.size(), 0u);
}

TEST(OzTaskProcessorDkbLocal, HasNoValueWhereThereIsNoMemoryForIt)
{
  Local<Unaffordable> local;
  Processor processor;
  Unaffordable* value = &local.main_value_;

  run_bound(processor,
            [&]
            {
              value = local.Value();
              EXPECT_EQ(local.values_.size(), 0u);
            });

  EXPECT_EQ(value, nullptr);
  EXPECT_EQ(local.peak_count_, 0u);
  EXPECT_EQ(local.Value()->number, 4) << "the shared one is a part of the local";
}

TEST(OzTaskProcessorDkbLocal, OfTheLibraryItselfHasThreeNumbersThatAreMinusOneAtFirst)
{
  Processor processor;
  std::vector<int> values;

  for (int i = 0; i < DKB_UNREAD_LOCALS; ++i)
  {
    EXPECT_EQ(*dkb_unread_locals[i].Value(), -1);
    run_bound(processor, [&] { values.push_back(*dkb_unread_locals[i].Value()); });
  }

  EXPECT_EQ(values, (std::vector<int>{-1, -1, -1}));
}

TEST(OzTaskProcessorDkbLocal, HoldsArrays)
{
  Local<OzArray<int>> local;
  Processor processor;

  run_bound(processor,
            [&]
            {
              local.Value()->append(4);
              EXPECT_EQ(local.Value()->size(), 1u);
            });

  EXPECT_EQ(local.Value()->size(), 0u);
}

TEST(OzTaskProcessorDkbLocal, IsReadOnTheMainThreadWhateverHoldsTheGlobalLock)
{
  Local<int> local;
  Deadline const deadline{std::chrono::seconds(100)};
  OzCriticalDkbRegion const region;

  EXPECT_EQ(OzTaskProcessor::TaskProcessor(), nullptr);
  EXPECT_EQ(local.Value(), &local.main_value_);
}
