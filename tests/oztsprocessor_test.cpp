#include "oztsprocessor.h"

#include "job_fixtures.h"
#include "ozdynobj.h"
#include "oztaskprocessor.h"
#include "thread_refusal.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace
{
class OzTSJobTest : public testing::Test
{
protected:
  void SetUp() override
  {
    FunctionService::entered_twice = false;
    FunctionService::stopped = false;
  }

  /// Gives `job` a service; the server goes at the end of the test.
  OzTaskService* serve(OzTSJob& job, FunctionService::Work work, std::size_t limit)
  {
    OzTaskService* service = new FunctionService(std::move(work));
    servers.emplace_back(job.SetService(service, limit));
    EXPECT_EQ(service, nullptr);
    return servers.back().get();
  }

  TaskCounts counts;
  std::vector<std::unique_ptr<OzTaskService>> servers;
};

/// The most tasks of `job` that run at once when all wait for each other.
std::size_t peak_of(OzTSJob& job, int tasks, int expected)
{
  TaskCounts counts;
  Gate gate;
  for (int i = 0; i < tasks; ++i)
    add_task(job, counts,
             [&gate](OzTaskService*)
             {
               gate.pass();
               return true;
             });
  gate.await(expected);
  gate.open();
  EXPECT_EQ(job.Wait(), OzJob::JobDone);
  EXPECT_EQ(counts.run, tasks);
  return job.PeakConcurrency();
}

/// A value that tells whether any thread has left it behind.
struct Kept
{
  Kept() { ++live; }
  ~Kept() { --live; }
  static inline std::atomic<int> live{0};
};

// Never destroyed: a worker may use it as long as the process lives.
OzTaskProcessorDkbLocal<Kept>& kept_by_thread = *new OzTaskProcessorDkbLocal<Kept>;
} // namespace

TEST_F(OzTSJobTest, RunsEachTaskOnceAndDeletesItAtTheEnd)
{
  std::unique_ptr<OzTSJob> const job = make_job(2);

  for (int i = 0; i < 100; ++i)
    EXPECT_TRUE(add_task(*job, counts, &succeed));

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(counts.run, 100);
  EXPECT_EQ(counts.deleted, 100);
  EXPECT_EQ(job->TaskCount(), 100u);
  EXPECT_STREQ(job->Name(), "OzTSJob");
  EXPECT_GE(job->ElapsedTime(), 0.0);
}

TEST_F(OzTSJobTest, IsDoneWithoutAThreadWhenNothingWasAdded)
{
  std::unique_ptr<OzTSJob> const job = make_job(2);

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(job->TaskCount(), 0u);
  EXPECT_EQ(job->PeakConcurrency(), 0u);
}

TEST_F(OzTSJobTest, FailsWhenATaskDoesAndRunsTheOthers)
{
  std::unique_ptr<OzTSJob> const job = make_job(1);

  add_task(*job, counts, [](OzTaskService*) { return false; });
  add_task(*job, counts, &succeed);

  EXPECT_EQ(job->Wait(), OzJob::JobFailed);
  EXPECT_EQ(counts.run, 2);
  EXPECT_EQ(counts.deleted, 2);
  EXPECT_EQ(job->Wait(), OzJob::JobDone) << "the failure is told once";
}

TEST_F(OzTSJobTest, TakesOneTaskForEachProcessorWhenAskedForNoThreads)
{
  std::unique_ptr<OzTSJob> const job = make_job(0);
  int const processors = static_cast<int>(LumThreads::GetProcessorsNumber());

  EXPECT_EQ(peak_of(*job, processors + 2, processors), static_cast<std::size_t>(processors));
}

TEST_F(OzTSJobTest, RunsNoMoreThan64TasksAtOnce)
{
  std::unique_ptr<OzTSJob> const job = make_job(1000);

  EXPECT_EQ(peak_of(*job, 70, 64), 64u);
}

TEST_F(OzTSJobTest, NeverRunsMoreTasksThanItsLimitTheServerAmongThem)
{
  std::unique_ptr<OzTSJob> const job = make_job(1);
  std::atomic<int> served{0};
  serve(
      *job,
      [&](int)
      {
        ++served;
        return true;
      },
      3);

  for (int i = 0; i < 200; ++i)
    add_task(*job, counts, [i](OzTaskService* service) { return send(service, i); });

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(served, 200);
  EXPECT_EQ(job->PeakConcurrency(), 1u);
}

TEST_F(OzTSJobTest, IsRefusedWhileEightAreOpen)
{
  std::vector<std::unique_ptr<OzTSJob>> jobs;
  for (int i = 0; i < 8; ++i)
    jobs.push_back(make_job(1));
  EXPECT_EQ(OzTSProcessor::CreateJob(1, false, nullptr), nullptr);

  jobs[5]->Close();
  jobs[2]->Close();
  std::unique_ptr<OzTSJob> const next = make_job(1);
  OzTaskService* const server = serve(
      *next, [](int) { return true; }, 0);

  EXPECT_EQ(ts_job_processor.JobServer(2), server) << "the lowest free place is taken";
  EXPECT_NE(make_job(1), nullptr);
  EXPECT_TRUE(add_task(*next, counts, &succeed));
  EXPECT_EQ(next->Wait(), OzJob::JobDone);
}

TEST_F(OzTSJobTest, CountsOnlyTheTasksSinceTheLastWait)
{
  std::unique_ptr<OzTSJob> const job = make_job(2);
  for (int i = 0; i < 5; ++i)
    add_task(*job, counts, &succeed);
  job->Wait();
  EXPECT_EQ(job->TaskCount(), 5u);

  add_task(*job, counts, &succeed);
  job->Wait();

  EXPECT_EQ(job->TaskCount(), 1u);
  EXPECT_EQ(job->PeakConcurrency(), 1u);
}

TEST_F(OzTSJobTest, IsStartedByANullTaskThatIsNotCounted)
{
  std::unique_ptr<OzTSJob> const job = make_job(2);
  OzTask* none = nullptr;

  EXPECT_TRUE(job->AddTask(none));

  OzTaskService* service = new FunctionService([](int) { return true; });
  OzTaskService* const refused = job->SetService(service, 0);
  EXPECT_EQ(refused, service) << "the job is running";
  delete service;
  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(job->TaskCount(), 0u);
}

TEST_F(OzTSJobTest, ReturnsAServiceUnchangedThatComesTooLateOrSecond)
{
  std::unique_ptr<OzTSJob> const job = make_job(2);
  serve(
      *job, [](int) { return true; }, 0);
  OzTaskService* second = new FunctionService([](int) { return true; });
  std::unique_ptr<OzTaskService> const owned(second);

  EXPECT_EQ(job->SetService(second, 0), owned.get());
  EXPECT_EQ(second, owned.get()) << "the caller's pointer stays";
  add_task(*job, counts, &succeed);
  EXPECT_EQ(job->SetService(second, 0), owned.get());
  EXPECT_EQ(second, owned.get());

  job->Wait();
}

TEST_F(OzTSJobTest, NeverSchedulesAServerAroundNothing)
{
  std::unique_ptr<OzTSJob> const job = make_job(2);
  OzTaskService* none = nullptr;
  std::unique_ptr<OzTaskService> const server(job->SetService(none, 0));
  ASSERT_NE(server, nullptr);
  NumberedRequest request(1);

  add_task(*job, counts,
           [&](OzTaskService* service)
           {
             OzTaskServiceRequest* sent = &request;
             return service == server.get() && service->Process(sent);
           });

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(job->ServerRunCount(), 0u);
}

TEST_F(OzTSJobTest, TakesAnotherServiceOnceTheServerWasDeleted)
{
  std::unique_ptr<OzTSJob> const job = make_job(1);
  serve(
      *job, [](int) { return true; }, 0);
  servers.clear();

  EXPECT_EQ(ts_job_processor.JobServer(0), nullptr);
  serve(
      *job, [](int) { return true; }, 0);
  EXPECT_NE(ts_job_processor.JobServer(0), nullptr);
}

TEST_F(OzTSJobTest, RunsTheServerBeforeTasksWhenItsQueueOutgrowsTheLimit)
{
  std::unique_ptr<OzTSJob> const job = make_job(1);
  std::string order;
  serve(
      *job,
      [&](int)
      {
        order += 's';
        return true;
      },
      1);
  Gate gate;

  for (int i = 0; i < 4; ++i)
    add_task(*job, counts,
             [&](OzTaskService* service)
             {
               gate.pass();
               order += 't';
               return send(service, 0);
             });
  gate.open();

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(order, "ttssttss");
  EXPECT_EQ(job->ServerRunCount(), 2u);
  EXPECT_EQ(job->TaskCount(), 4u) << "runs of the server are no tasks";
}

TEST_F(OzTSJobTest, RunsTheServerAfterTheTasksWhileItsQueueIsShort)
{
  std::unique_ptr<OzTSJob> const job = make_job(1);
  std::string order;
  serve(
      *job,
      [&](int)
      {
        order += 's';
        return true;
      },
      100);
  Gate gate;

  for (int i = 0; i < 4; ++i)
    add_task(*job, counts,
             [&](OzTaskService* service)
             {
               gate.pass();
               order += 't';
               return send(service, 0);
             });
  gate.open();

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(order, "ttttssss");
  EXPECT_EQ(job->ServerRunCount(), 1u);
}

TEST_F(OzTSJobTest, KeepsTheOrderOfEachTasksRequests)
{
  std::unique_ptr<OzTSJob> const job = make_job(4);
  std::vector<int> next(8, 0);
  bool in_order = true;
  serve(
      *job,
      [&](int number)
      {
        in_order = in_order && number % 1000 == next[static_cast<std::size_t>(number / 1000)]++;
        return true;
      },
      5);

  for (int task = 0; task < 8; ++task)
    add_task(*job, counts,
             [task](OzTaskService* service)
             {
               for (int i = 0; i < 100; ++i)
                 send(service, task * 1000 + i);
               return true;
             });

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_TRUE(in_order);
  EXPECT_EQ(next, std::vector<int>(8, 100));
  EXPECT_FALSE(FunctionService::entered_twice);
  EXPECT_TRUE(FunctionService::stopped);
}

TEST_F(OzTSJobTest, IsNotFailedByARequestThatFails)
{
  std::unique_ptr<OzTSJob> const job = make_job(1);
  serve(
      *job, [](int) { return false; }, 0);

  add_task(*job, counts, [](OzTaskService* service) { return send(service, 1); });

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
}

TEST_F(OzTSJobTest, RefusesTasksDuringWait)
{
  std::unique_ptr<OzTSJob> const job = make_job(1);
  bool accepted = true;
  OzTaskService* const server = serve(
      *job,
      [&](int)
      {
        accepted = add_task(*job, counts, &succeed);
        return true;
      },
      0);
  send(server, 1); // nobody runs the server but Wait

  EXPECT_EQ(job->Wait(), OzJob::JobDone);

  EXPECT_FALSE(accepted);
  EXPECT_EQ(counts.deleted, 1) << "by the one who kept it";
  EXPECT_EQ(counts.run, 0);
}

TEST_F(OzTSJobTest, RefusesTasksAfterCancelling)
{
  Handler handler;
  std::unique_ptr<OzTSJob> const job = make_job(1, &handler);
  handler.cancel = true;

  EXPECT_FALSE(add_task(*job, counts, &succeed));

  OzTaskService* service = nullptr;
  EXPECT_EQ(job->SetService(service, 0), nullptr);
  EXPECT_EQ(ts_job_processor.JobServer(0), nullptr) << "the refused task has set the job running";
  EXPECT_EQ(job->Wait(), OzJob::JobCancelled);
  EXPECT_EQ(counts.run, 0);
}

TEST_F(OzTSJobTest, LeavesPendingTasksUnrunWhenCancelled)
{
  Handler handler;
  std::unique_ptr<OzTSJob> const job = make_job(1, &handler);
  Gate gate;
  add_task(*job, counts,
           [&](OzTaskService*)
           {
             gate.pass();
             handler.cancel = true;
             return false;
           });
  for (int i = 0; i < 5; ++i)
    add_task(*job, counts, &succeed);
  gate.open();

  EXPECT_EQ(job->Wait(), OzJob::JobCancelled) << "which outranks the failure";
  EXPECT_EQ(counts.run, 1);
  EXPECT_EQ(counts.deleted, 6);
}

TEST_F(OzTSJobTest, LeavesItsCancelledTasksWithTheFirstPlace)
{
  Handler handler;
  std::unique_ptr<OzTSJob> const first = make_job(1);
  std::unique_ptr<OzTSJob> const second = make_job(1, &handler);
  Gate gate;
  add_task(*second, counts,
           [&](OzTaskService*)
           {
             gate.pass();
             return true;
           });
  add_task(*second, counts, &succeed);
  gate.await(1);
  handler.cancel = true;
  gate.open();

  EXPECT_EQ(second->Wait(), OzJob::JobCancelled) << "by the handler's answer";
  EXPECT_EQ(counts.deleted, 1);
  EXPECT_EQ(first->Wait(), OzJob::JobCancelled) << "it has got the other job's task";
  EXPECT_EQ(counts.deleted, 2);
  EXPECT_EQ(first->Wait(), OzJob::JobDone);
}

TEST_F(OzTSJobTest, TellsItsHandlerOfEachTaskThatHasEnded)
{
  Handler handler;
  std::unique_ptr<OzTSJob> const job = make_job(2, &handler);
  handler.initialize(99);

  for (int i = 0; i < 99; ++i)
    add_task(*job, counts, [i](OzTaskService*) { return i % 2 == 0; });

  EXPECT_EQ(job->Wait(), OzJob::JobFailed);
  EXPECT_EQ(handler.shown, 99u);
}

TEST_F(OzTSJobTest, RunsTasksOnProcessorsFromTheHighestDown)
{
  std::unique_ptr<OzTSJob> const job = make_job(2);
  Gate gate;
  std::vector<std::uint64_t> ids(2, 0);
  for (std::size_t i = 0; i < 2; ++i)
  {
    add_task(*job, counts,
             [&gate, &ids, i](OzTaskService*)
             {
               ids[i] = OzTaskProcessor::TaskProcessor()->Id();
               gate.pass();
               return true;
             });
    gate.await(static_cast<int>(i) + 1);
  }
  gate.open();
  job->Wait();

  EXPECT_EQ(ids, (std::vector<std::uint64_t>{64, 63}));
}

TEST_F(OzTSJobTest, LeavesNoProcessorLocalBehindWhenWaitReturns)
{
  int const before = Kept::live;
  std::unique_ptr<OzTSJob> const job = make_job(4);

  for (int pass = 0; pass < 20; ++pass)
  {
    for (int i = 0; i < 4; ++i)
      add_task(*job, counts, [](OzTaskService*) { return kept_by_thread.Value() != nullptr; });
    EXPECT_EQ(job->Wait(), OzJob::JobDone);
    EXPECT_EQ(Kept::live, before);
  }
}

TEST_F(OzTSJobTest, CannotBeUsedOnceClosed)
{
  std::unique_ptr<OzTSJob> const job = make_job(1);

  job->Close();
  job->Close();

  EXPECT_FALSE(add_task(*job, counts, &succeed));
  OzTaskService* service = new FunctionService([](int) { return true; });
  EXPECT_EQ(job->Wait(), OzJob::JobWaiting);
  EXPECT_EQ(job->SetService(service, 0), service);
  delete service;
  job->Synchronize();
  EXPECT_EQ(job->TaskCount(), 0u);
}

TEST_F(OzTSJobTest, LetsATaskThatRunsWhileItIsClosedEndByItself)
{
  std::unique_ptr<OzTSJob> closed = make_job(1);
  Gate gate;
  add_task(*closed, counts,
           [&](OzTaskService*)
           {
             gate.pass();
             return false;
           });
  gate.await(1);

  closed.reset();
  std::unique_ptr<OzTSJob> const next = make_job(1);
  gate.open();
  while (counts.deleted == 0)
    std::this_thread::yield();

  EXPECT_EQ(counts.run, 1) << "it is not run again";
  EXPECT_EQ(next->Wait(), OzJob::JobDone) << "and counts for nobody";
}

TEST_F(OzTSJobTest, RunsTasksThatAClosedJobHasLeftForTheNextOneInItsPlace)
{
  std::unique_ptr<OzTSJob> closed = make_job(1);
  Gate gate;
  add_task(*closed, counts,
           [&](OzTaskService*)
           {
             gate.pass();
             return true;
           });
  add_task(*closed, counts, &succeed);
  gate.await(1);
  closed.reset();
  gate.open();
  std::unique_ptr<OzTSJob> const next = make_job(1);

  EXPECT_EQ(next->Wait(), OzJob::JobDone);

  EXPECT_EQ(counts.run, 2);
}

TEST_F(OzTSJobTest, LetsAWorkerMoveToAnotherJob)
{
  // One job holds all workers but one; the other's tasks are then run by that one alone.
  std::unique_ptr<OzTSJob> const first = make_job(1);
  std::unique_ptr<OzTSJob> const second = make_job(1);
  Gate gate;
  std::vector<OzTaskProcessor*> processors(2, nullptr);
  add_task(*first, counts,
           [&](OzTaskService*)
           {
             processors[0] = OzTaskProcessor::TaskProcessor();
             gate.pass();
             return true;
           });
  gate.await(1);
  Gate other;
  add_task(*second, counts,
           [&](OzTaskService*)
           {
             other.pass();
             return true;
           });
  add_task(*second, counts,
           [&](OzTaskService*)
           {
             processors[1] = OzTaskProcessor::TaskProcessor();
             return true;
           });
  other.await(1);
  other.open();
  EXPECT_EQ(second->Wait(), OzJob::JobDone);
  gate.open();
  EXPECT_EQ(first->Wait(), OzJob::JobDone);

  EXPECT_NE(processors[0], processors[1]);
  EXPECT_EQ(counts.run, 3);
}

TEST_F(OzTSJobTest, MeasuresFromItsFirstTaskToTheEndOfWait)
{
  std::unique_ptr<OzTSJob> const job = make_job(1);
  OzTask* none = nullptr;
  job->AddTask(none);

  std::clock_t const begin = std::clock();
  while (std::clock() - begin < 2000)
    continue;
  job->Wait();

  double const elapsed = job->ElapsedTime();
  EXPECT_GE(elapsed, 2.0) << "a unit is a thousand ticks";
  job->AddTask(none);
  job->Wait();
  EXPECT_LT(job->ElapsedTime(), elapsed) << "from the first task of the new pass";
}

TEST_F(OzTSJobTest, GetsNoWorkerOfAnotherJobBeyondItsLimit)
{
  std::unique_ptr<OzTSJob> const full = make_job(1);
  std::unique_ptr<OzTSJob> const other = make_job(1);
  TaskCounts full_counts;
  Gate gate;
  add_task(*full, full_counts,
           [&](OzTaskService*)
           {
             gate.pass();
             return true;
           });
  add_task(*full, full_counts, &succeed);
  gate.await(1);

  add_task(*other, counts, &succeed);
  EXPECT_EQ(other->Wait(), OzJob::JobDone); // its worker has looked for more and left

  EXPECT_EQ(full_counts.run, 1);
  gate.open();
  EXPECT_EQ(full->Wait(), OzJob::JobDone);
  EXPECT_EQ(full_counts.run, 2);
  EXPECT_EQ(full->PeakConcurrency(), 1u);
}

TEST_F(OzTSJobTest, ServesLowerPlacesFirstWhenAWorkerMoves)
{
  // All workers are taken, so that tasks of two more jobs wait for one that ends.
  std::unique_ptr<OzTSJob> const holding = make_job(64);
  std::unique_ptr<OzTSJob> const first = make_job(1);
  std::unique_ptr<OzTSJob> const second = make_job(1);
  TaskCounts holding_counts;
  Gate one;
  Gate others;
  for (int i = 0; i < 64; ++i)
    add_task(*holding, holding_counts,
             [&, i](OzTaskService*)
             {
               (i == 0 ? one : others).pass();
               return true;
             });
  std::string order;
  Gate done;
  auto const note = [&](char name)
  {
    return [&, name](OzTaskService*)
    {
      order += name;
      return true;
    };
  };
  add_task(*second, counts, note('c'));
  add_task(*first, counts, note('a'));
  add_task(*first, counts, note('b'));
  add_task(*second, counts,
           [&](OzTaskService*)
           {
             order += 'd';
             done.pass();
             return true;
           });

  one.open();
  done.await(1);

  EXPECT_EQ(order, "abcd");
  done.open();
  others.open();
  EXPECT_EQ(first->Wait(), OzJob::JobDone);
  EXPECT_EQ(second->Wait(), OzJob::JobDone);
  EXPECT_EQ(holding->Wait(), OzJob::JobDone);
}

TEST_F(OzTSJobTest, HandsItsTasksNoServiceWhenItHasNone)
{
  std::unique_ptr<OzTSJob> const job = make_job(1);
  OzTaskService* handed = servers.empty() ? reinterpret_cast<OzTaskService*>(this) : nullptr;

  add_task(*job, counts,
           [&](OzTaskService* service)
           {
             handed = service;
             return true;
           });
  job->Wait();

  EXPECT_EQ(handed, nullptr);
}

TEST_F(OzTSJobTest, IsCancelledByWaitWhenNoWorkerEverTookItsTasks)
{
  std::unique_ptr<OzTSJob> const greedy = make_job(64);
  Handler handler;
  std::unique_ptr<OzTSJob> const starved = make_job(1, &handler);
  TaskCounts greedy_counts;
  Gate gate;
  for (int i = 0; i < 64; ++i)
    add_task(*greedy, greedy_counts,
             [&gate](OzTaskService*)
             {
               gate.pass();
               return true;
             });
  for (int i = 0; i < 3; ++i)
    EXPECT_TRUE(add_task(*starved, counts, &succeed));
  handler.cancel = true;

  EXPECT_EQ(starved->Wait(), OzJob::JobCancelled) << "though all workers are taken";

  EXPECT_EQ(counts.run, 0);
  EXPECT_EQ(starved->TaskCount(), 0u);
  gate.open();
  EXPECT_EQ(greedy->Wait(), OzJob::JobCancelled) << "it has got the other job's tasks";
  EXPECT_EQ(counts.deleted, 3);
  EXPECT_EQ(greedy_counts.run, 64);
}

TEST_F(OzTSJobTest, KeepsATaskAtTheFrontWhenThePlatformHasNoThread)
{
  SKIP_UNLESS_THREADS_CAN_BE_REFUSED();
  std::unique_ptr<OzTSJob> const job = make_job(1);
  std::string order;
  threads_to_refuse = 2; // for the first task each time

  EXPECT_TRUE(add_task(*job, counts,
                       [&](OzTaskService*)
                       {
                         order += std::to_string(OzTaskProcessor::TaskProcessor()->Id());
                         return true;
                       }));
  EXPECT_EQ(threads_to_refuse, 1);
  EXPECT_TRUE(add_task(*job, counts,
                       [&](OzTaskService*)
                       {
                         order += " second";
                         return true;
                       }));

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(order, "64 second") << "and the worker stays free";
  EXPECT_EQ(job->TaskCount(), 2u);
}

TEST_F(OzTSJobTest, TriesAgainInWaitUntilThePlatformHasAThread)
{
  SKIP_UNLESS_THREADS_CAN_BE_REFUSED();
  std::unique_ptr<OzTSJob> const job = make_job(2);
  threads_to_refuse = 5;

  for (int i = 0; i < 3; ++i)
    EXPECT_TRUE(add_task(*job, counts, &succeed));
  EXPECT_EQ(counts.run, 0);

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(counts.run, 3);
  EXPECT_EQ(counts.deleted, 3);
  EXPECT_EQ(job->TaskCount(), 3u);
  EXPECT_EQ(threads_to_refuse, 0);
}

TEST_F(OzTSJobTest, CountsNoRunThatThePlatformHadNoThreadFor)
{
  SKIP_UNLESS_THREADS_CAN_BE_REFUSED();
  std::unique_ptr<OzTSJob> const job = make_job(2);
  Gate first;
  Gate second;
  add_task(*job, counts,
           [&](OzTaskService*)
           {
             first.pass();
             return true;
           });
  first.await(1);
  threads_to_refuse = 1;
  add_task(*job, counts,
           [&](OzTaskService*)
           {
             second.pass();
             return true;
           });

  first.open();
  second.await(1); // on the first one's thread
  second.open();

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(job->PeakConcurrency(), 1u);
  EXPECT_EQ(job->TaskCount(), 2u);
}

TEST(OzTSJobProcessor, AnswersIndicesWithoutAJob)
{
  OzTask* task = nullptr;
  OzTaskService* service = nullptr;
  std::size_t started = 7;
  std::size_t peak = 7;
  std::size_t server_runs = 7;

  for (std::size_t const index : {std::size_t(3), OzTSJobProcessor::MAX_JOBS, ~std::size_t(0)})
  {
    EXPECT_FALSE(ts_job_processor.AddTask(task, index));
    EXPECT_EQ(ts_job_processor.AddService(service, 0, index), nullptr);
    EXPECT_EQ(ts_job_processor.WaitJob(index), OzJob::JobFailed);
    EXPECT_EQ(ts_job_processor.JobServer(index), nullptr);
    ts_job_processor.RemoveJob(index);
  }
  ts_job_processor.JobStatistics(OzTSJobProcessor::MAX_JOBS, started, peak, server_runs);
  EXPECT_EQ(started, 7u);
  ts_job_processor.Synchronize();
}

TEST(OzTSJobProcessor, IgnoresAReportOfNoWorker)
{
  bool result = true;
  OzTask* task = nullptr;
  std::size_t job = 0;

  ts_job_processor.TaskFinished(nullptr, result, task, job);

  EXPECT_TRUE(result);
}

TEST(OzTSJobProcessorDeathTest, LetsTheProcessExitWithItsOwnCodeWhileTasksRun)
{
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  auto const exit_with_running_tasks = []
  {
    // Both outlive this scope: they belong to threads that are never waited for.
    TaskCounts& counts = *new TaskCounts;
    std::atomic<bool>& stop = *new std::atomic<bool>(false);
    std::unique_ptr<OzTSJob> job = make_job(4);
    for (int i = 0; i < 4; ++i)
      add_task(*job, counts,
               [&stop](OzTaskService*)
               {
                 while (!stop)
                   std::this_thread::yield();
                 return true;
               });
    while (counts.run < 4)
      std::this_thread::yield();
    // They end, and leave, while the process does.
    std::atexit([] {});
    stop = true;
    job.release();
    std::exit(0);
  };

  EXPECT_EXIT(exit_with_running_tasks(), testing::ExitedWithCode(0), "");
}

TEST(OzTSJobProcessor, HasItsVirtualOperationsInAFixedOrderAndSoHaveJobsAndWorkers)
{
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::CreateJob), 2);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::AddService), 3);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::AddTask), 4);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::Synchronize), 5);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::WaitJob), 6);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::RemoveJob), 7);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::ForgetServer), 8);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::JobServer), 9);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::TaskFinished), 10);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::JobStatistics), 11);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::NextTask), 12);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::StartWorker), 13);
  EXPECT_EQ(vtable_slot(&OzTSJobProcessor::ResetJob), 14);

  EXPECT_EQ(vtable_slot(&OzTSJob::Close), 6) << "behind those of OzJob";
  EXPECT_EQ(vtable_slot(&OzTSTaskProcessor::Start), 2);

  EXPECT_EQ(vtable_slot(&LumThreads::Run), 2);
  EXPECT_EQ(vtable_slot(&LumThreads::ThreadMain), 3);
  EXPECT_EQ(vtable_slot(static_cast<int (LumThreads::*)(int (*)(void*), void*)>(&LumThreads::SetFunction)),
            4);
  EXPECT_EQ(vtable_slot(static_cast<int (LumThreads::*)(int (*)(void*))>(&LumThreads::SetFunction)), 5);
  EXPECT_EQ(vtable_slot(&LumThreads::Join), 6);
  EXPECT_EQ(vtable_slot(&LumThreads::End), 7);
  EXPECT_EQ(vtable_slot(&LumThreads::Kill), 8);
  EXPECT_EQ(vtable_slot(&LumThreads::IsRunning), 9);
  EXPECT_EQ(vtable_slot(&LumThreads::GetStatus), 10);
  EXPECT_EQ(vtable_slot(&LumThreads::GetThreadId), 11);
  EXPECT_EQ(vtable_slot(&LumThreads::GetThreadReturnCode), 12);
  EXPECT_EQ(vtable_slot(&LumThreads::EmitTrace), 13);
}

TEST(OzTSTaskProcessor, EndsWithItsCodeWhenItHasNoTask)
{
  OzTSTaskProcessor worker(nullptr, 0);
  std::thread thread([&worker] { EXPECT_EQ(worker.ThreadMain(), 32); });
  thread.join();

  EXPECT_FALSE(worker.Start(nullptr, 0)) << "it runs for nobody";
  EXPECT_EQ(worker.IsRunning(), 0);
}
