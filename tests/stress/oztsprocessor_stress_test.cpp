// The scheduler under load. Each of the first tests aims at one way in which threads could come between each
// other's steps; the last ones let everything happen at once and count.

#include "oztsprocessor.h"

#include "deadline.h"
#include "job_fixtures.h"
#include "ozevent.h"
#include "oztaskprocessor.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace
{
class OzTSJobStress : public testing::Test
{
protected:
  void SetUp() override
  {
    FunctionService::entered_twice = false;
    FunctionService::stopped = false;
  }

  TaskCounts counts;
  Deadline const deadline{std::chrono::seconds(100)};
};

std::unique_ptr<OzTaskService> serve(OzTSJob& job, FunctionService::Work work, std::size_t limit)
{
  OzTaskService* service = new FunctionService(std::move(work));
  return std::unique_ptr<OzTaskService>(job.SetService(service, limit));
}

void give_way(int times)
{
  for (int i = 0; i < times; ++i)
    std::this_thread::yield();
}

FunctionTask::Work wait_at(Gate& gate)
{
  return [&gate](OzTaskService*)
  {
    gate.pass();
    return true;
  };
}

/// Waits for `count` tasks to be deleted by threads that nobody joins.
void await_deletion(TaskCounts const& counts, int count)
{
  while (counts.deleted < count)
    std::this_thread::yield();
}

/// Waits for all tasks that closed and cancelled jobs have left at any of the places.
void empty_all_places()
{
  std::vector<std::unique_ptr<OzTSJob>> jobs;
  for (std::size_t place = 0; place < OzTSJobProcessor::MAX_JOBS; ++place)
    jobs.push_back(make_job(2));
  for (std::size_t place = jobs.size(); place-- > 0;)
    jobs[place]->Wait(); // the first place last: it gets the cancelled tasks of the others
}

/// Runs `body` on `count` threads that begin together.
template <class Body>
void on_threads(int count, Body body)
{
  Gate gate;
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i)
    threads.emplace_back(
        [&gate, &body, i]
        {
          gate.pass();
          body(i);
        });
  gate.await(count);
  gate.open();
  for (std::thread& thread : threads)
    thread.join();
}

/// A value whose end takes a while, and that tells whether any thread has left it behind.
struct SlowToGo
{
  SlowToGo() { ++live; }
  ~SlowToGo()
  {
    give_way(20);
    --live;
  }
  static inline std::atomic<int> live{0};
};
OzTaskProcessorDkbLocal<SlowToGo>& slow_to_go = *new OzTaskProcessorDkbLocal<SlowToGo>;

/// A value whose end needs the scheduler, when the client is about to join its thread.
struct AsksScheduler
{
  ~AsksScheduler()
  {
    leaving = true;
    while (!client_comes)
      std::this_thread::yield();
    give_way(20);
    ts_job_processor.Synchronize();
  }
  static inline std::atomic<bool> leaving{false};
  static inline std::atomic<bool> client_comes{false};
};
OzTaskProcessorDkbLocal<AsksScheduler>& asks_scheduler = *new OzTaskProcessorDkbLocal<AsksScheduler>;

/// A value that keeps its thread from leaving until a gate is opened.
struct KeepsThread
{
  ~KeepsThread() { gate->pass(); }
  static inline Gate* gate = nullptr;
};
OzTaskProcessorDkbLocal<KeepsThread>& keeps_thread = *new OzTaskProcessorDkbLocal<KeepsThread>;
} // namespace

TEST_F(OzTSJobStress, WaitEntersTheServiceOnlyWhenNoWorkerIsInIt)
{
  for (int pass = 0; pass < 200; ++pass)
  {
    std::unique_ptr<OzTSJob> const job = make_job(2);
    std::atomic<int> served{0};
    std::unique_ptr<OzTaskService> const server = serve(
        *job,
        [&](int)
        {
          give_way(5);
          ++served;
          return true;
        },
        0);
    for (int i = 0; i < 4; ++i)
      add_task(*job, counts, [](OzTaskService* service) { return send(service, 0) && send(service, 1); });

    ASSERT_EQ(job->Wait(), OzJob::JobDone);

    ASSERT_EQ(served, 8);
    ASSERT_FALSE(FunctionService::entered_twice) << "pass " << pass;
  }
}

TEST_F(OzTSJobStress, WaitDeletesTasksOnlyWhenAllHaveRun)
{
  std::unique_ptr<OzTSJob> const job = make_job(3);
  for (int pass = 0; pass < 300; ++pass)
  {
    TaskCounts own;
    std::atomic<int> ended{0};
    for (int i = 0; i < 6; ++i)
      add_task(*job, own,
               [&](OzTaskService*)
               {
                 give_way(3);
                 ++ended;
                 return true;
               });

    ASSERT_EQ(job->Wait(), OzJob::JobDone);

    ASSERT_EQ(ended, 6) << "pass " << pass;
    ASSERT_EQ(own.deleted, 6) << "pass " << pass;
  }
}

TEST_F(OzTSJobStress, WaitStartsWorkersThatACancelledJobHasKeptFromIt)
{
  for (int pass = 0; pass < 20; ++pass)
  {
    Handler handler;
    std::unique_ptr<OzTSJob> const greedy = make_job(64, &handler);
    std::unique_ptr<OzTSJob> const starved = make_job(2);
    TaskCounts greedy_counts;
    TaskCounts own;
    Gate gate;
    for (int i = 0; i < 64; ++i)
      add_task(*greedy, greedy_counts, wait_at(gate));
    for (int i = 0; i < 3; ++i)
      add_task(*starved, own, &succeed); // no worker is free

    // Its workers leave without looking for other tasks, before the other client waits or while it does.
    handler.cancel = true;
    std::thread opener([&gate] { gate.open(); });
    if (pass % 2 == 0)
      opener.join();
    EXPECT_EQ(starved->Wait(), OzJob::JobDone);
    if (opener.joinable())
      opener.join();

    EXPECT_EQ(own.run, 3);
    EXPECT_EQ(greedy->Wait(), OzJob::JobCancelled);
    EXPECT_EQ(greedy_counts.run, 64);
  }
}

TEST_F(OzTSJobStress, WaitReturnsThoughAWorkerOfItsJobHasMovedOn)
{
  for (int pass = 0; pass < 20; ++pass)
  {
    std::unique_ptr<OzTSJob> const holding = make_job(63);
    std::unique_ptr<OzTSJob> const first = make_job(1);
    std::unique_ptr<OzTSJob> const second = make_job(1);
    Gate held;
    Gate before;
    Gate after;
    for (int i = 0; i < 63; ++i)
      add_task(*holding, counts, wait_at(held));
    add_task(*first, counts, wait_at(before));
    add_task(*second, counts, wait_at(after)); // no worker is left: the first job's takes it

    std::thread opener([&before] { before.open(); });
    if (pass % 2 == 0)
    {
      opener.join();
      after.await(1); // it has moved before the client waits
    }
    EXPECT_EQ(first->Wait(), OzJob::JobDone) << "the task at the gate is another job's";
    if (opener.joinable())
      opener.join();

    after.open();
    EXPECT_EQ(second->Wait(), OzJob::JobDone);
    held.open();
    EXPECT_EQ(holding->Wait(), OzJob::JobDone);
  }
  EXPECT_EQ(counts.run, 20 * 65);
}

TEST_F(OzTSJobStress, WaitReturnsWhenItsWorkersHaveLeftTheirLocals)
{
  std::unique_ptr<OzTSJob> const job = make_job(4);
  int const before = SlowToGo::live;
  for (int pass = 0; pass < 100; ++pass)
  {
    for (int i = 0; i < 4; ++i)
      add_task(*job, counts, [](OzTaskService*) { return slow_to_go.Value() != nullptr; });
    ASSERT_EQ(job->Wait(), OzJob::JobDone);
    ASSERT_EQ(SlowToGo::live, before) << "pass " << pass;
  }
}

TEST_F(OzTSJobStress, WorkersThatHaveBeenStartedAgainAreNotFreed)
{
  // Workers pass between the clients all the time, and each client joins those that it finds leaving.
  std::atomic<int> ended{0};
  on_threads(6,
             [&](int)
             {
               std::unique_ptr<OzTSJob> const job = make_job(2);
               for (int pass = 0; pass < 150; ++pass)
               {
                 TaskCounts own;
                 for (int i = 0; i < 3; ++i)
                   add_task(*job, own,
                            [&ended](OzTaskService*)
                            {
                              give_way(1);
                              ++ended;
                              return true;
                            });
                 EXPECT_EQ(job->Wait(), OzJob::JobDone);
                 EXPECT_EQ(own.run, 3);
                 EXPECT_EQ(own.deleted, 3);
               }
             });
  EXPECT_EQ(ended, 6 * 150 * 3);

  // None was lost: all 64 can be at work at once.
  std::unique_ptr<OzTSJob> const all = make_job(64);
  Gate gate;
  for (int i = 0; i < 64; ++i)
    add_task(*all, counts, wait_at(gate));
  gate.await(64);
  gate.open();
  EXPECT_EQ(all->Wait(), OzJob::JobDone);
  EXPECT_EQ(all->PeakConcurrency(), 64u);
}

TEST_F(OzTSJobStress, AWorkerThatIsStartedAgainAsItIsJoinedIsNotFree)
{
  for (int pass = 0; pass < 20; ++pass)
  {
    Gate leaving;
    Gate at_work;
    KeepsThread::gate = &leaving;
    std::unique_ptr<OzTSJob> const waiting_job = make_job(1);
    std::unique_ptr<OzTSJob> const adding_job = make_job(1);
    std::unique_ptr<OzTSJob> const third_job = make_job(1);
    add_task(*waiting_job, counts, [](OzTaskService*) { return keeps_thread.Value() != nullptr; });
    leaving.await(1); // its task has ended, and its thread cannot leave

    // One client joins the worker, another one looks for a worker meanwhile.
    std::thread waits([&] { EXPECT_EQ(waiting_job->Wait(), OzJob::JobDone); });
    give_way(200);
    std::thread adds([&] { add_task(*adding_job, counts, wait_at(at_work)); });
    give_way(200);
    leaving.open();
    waits.join();
    adds.join();
    at_work.await(1);

    // A third one would wait for the task at the gate if it got that worker.
    add_task(*third_job, counts, &succeed);
    EXPECT_EQ(third_job->Wait(), OzJob::JobDone);
    at_work.open();
    EXPECT_EQ(adding_job->Wait(), OzJob::JobDone);
  }
  EXPECT_EQ(counts.deleted, 60);
}

TEST_F(OzTSJobStress, ProgressThatDrawsIdentitiesMeetsJobsThatAreMade)
{
  std::atomic<bool> stop{false};
  std::thread maker(
      [&stop]
      {
        while (!stop)
          make_job(1);
      });
  Handler handler;
  handler.callback = [] { OzObjectModified(1).identity(); };
  std::unique_ptr<OzTSJob> const job = make_job(2, &handler);
  for (int pass = 0; pass < 200; ++pass)
  {
    handler.initialize(6);
    for (int i = 0; i < 6; ++i)
      add_task(*job, counts, &succeed);
    ASSERT_EQ(job->Wait(), OzJob::JobDone);
  }
  stop = true;
  maker.join();
  EXPECT_EQ(counts.run, 1200);
}

TEST_F(OzTSJobStress, WorkersThatLeaveMayNeedTheScheduler)
{
  // Whoever joins a leaving worker lets it have the lock, adding a task as well as waiting.
  std::unique_ptr<OzTSJob> const job = make_job(1);
  for (int pass = 0; pass < 50; ++pass)
  {
    for (bool const adds : {true, false})
    {
      AsksScheduler::leaving = false;
      AsksScheduler::client_comes = false;
      add_task(*job, counts, [](OzTaskService*) { return asks_scheduler.Value() != nullptr; });
      while (!AsksScheduler::leaving)
        std::this_thread::yield();
      AsksScheduler::client_comes = true;
      if (adds)
        add_task(*job, counts, &succeed);
      EXPECT_EQ(job->Wait(), OzJob::JobDone);
    }
  }
  EXPECT_EQ(counts.deleted, 150);
}

TEST_F(OzTSJobStress, TasksOfAClosedJobEndOnceAndCountForNobody)
{
  for (int pass = 0; pass < 200; ++pass)
  {
    TaskCounts own;
    Gate gate;
    std::unique_ptr<OzTSJob> closed = make_job(3);
    for (int i = 0; i < 3; ++i)
      add_task(*closed, own,
               [&gate](OzTaskService*)
               {
                 gate.pass();
                 return false;
               });
    gate.await(3);
    closed.reset();

    // Reports come to a place that is free, or that another job has, or whose new job waits.
    std::unique_ptr<OzTSJob> next;
    if (pass % 3 != 0)
      next = make_job(3);
    gate.open();
    if (next != nullptr)
    {
      add_task(*next, own, &succeed);
      ASSERT_EQ(next->Wait(), OzJob::JobDone) << "pass " << pass;
      ASSERT_EQ(next->TaskCount(), 1u) << "pass " << pass;
    }
    int const tasks = next != nullptr ? 4 : 3;
    await_deletion(own, tasks);
    ASSERT_EQ(own.run, tasks) << "pass " << pass;
  }
}

TEST_F(OzTSJobStress, TheServerOfAClosedJobStaysWithTheClientAlsoWhenItRuns)
{
  /// A service that lives as long as its server.
  class Watched : public OzTaskService
  {
  public:
    Watched(Gate& gate_to_pass, std::atomic<int>& deleted_services)
      : gate(gate_to_pass)
      , deleted(deleted_services)
    {
    }
    ~Watched() override { ++deleted; }
    bool Process(OzTaskServiceRequest*& request) override
    {
      delete request;
      slow_to_go.Value(); // goes when the worker's report has been heard
      gate.pass();
      return true;
    }

  private:
    Gate& gate;
    std::atomic<int>& deleted;
  };

  int const before = SlowToGo::live;
  for (int pass = 0; pass < 50; ++pass)
  {
    Gate gate;
    std::atomic<int> deleted{0};
    std::unique_ptr<OzTSJob> closed = make_job(1);
    OzTaskService* service = new Watched(gate, deleted);
    OzTaskService* const server = closed->SetService(service, 0);
    add_task(*closed, counts, [](OzTaskService* its_server) { return send(its_server, 0); });
    gate.await(1); // the server runs
    closed.reset();

    // The report comes to a place that is free or that another job has.
    std::unique_ptr<OzTSJob> const next = pass % 2 == 0 ? nullptr : make_job(1);
    gate.open();
    while (SlowToGo::live != before)
      std::this_thread::yield();

    ASSERT_EQ(deleted, 0) << "pass " << pass;
    delete server;
    ASSERT_EQ(deleted, 1);
  }
}

TEST_F(OzTSJobStress, NullTasksAndNullServicesLeaveNothingToWaitFor)
{
  for (int pass = 0; pass < 200; ++pass)
  {
    std::unique_ptr<OzTSJob> const job = make_job(2);
    OzTaskService* nothing = nullptr;
    std::unique_ptr<OzTaskService> const server(job->SetService(nothing, 0));
    NumberedRequest request(0);
    for (int i = 0; i < 3; ++i)
    {
      OzTask* none = nullptr;
      ASSERT_TRUE(job->AddTask(none));
      add_task(*job, counts,
               [&request](OzTaskService* service)
               {
                 OzTaskServiceRequest* sent = &request;
                 return service->Process(sent);
               });
    }

    ASSERT_EQ(job->Wait(), OzJob::JobDone);
    ASSERT_EQ(job->TaskCount(), 3u);
    ASSERT_EQ(job->ServerRunCount(), 0u);
  }
}

TEST_F(OzTSJobStress, TasksAreDeletedWithoutTheLock)
{
  /// Its end needs the scheduler.
  class Asking : public OzTask
  {
  public:
    explicit Asking(Gate* gate_to_pass, std::atomic<int>& deleted_tasks)
      : gate(gate_to_pass)
      , deleted(deleted_tasks)
    {
    }
    ~Asking() override
    {
      ts_job_processor.Synchronize();
      make_job(1);
      ++deleted;
    }
    bool Execute(OzTaskService*) override
    {
      if (gate != nullptr)
        gate->pass();
      return true;
    }
    bool Execute() override { return Execute(nullptr); }

  private:
    Gate* gate;
    std::atomic<int>& deleted;
  };

  std::atomic<int> deleted{0};
  for (int pass = 0; pass < 50; ++pass)
  {
    Gate gate;
    std::unique_ptr<OzTSJob> job = make_job(1);
    OzTask* waited_for = new Asking(nullptr, deleted);
    ASSERT_TRUE(job->AddTask(waited_for));
    ASSERT_EQ(job->Wait(), OzJob::JobDone); // deletes the first
    OzTask* left_behind = new Asking(nullptr, deleted);
    OzTask* under_way = new Asking(&gate, deleted);
    ASSERT_TRUE(job->AddTask(left_behind));
    ASSERT_TRUE(job->AddTask(under_way));
    gate.await(1);
    job.reset(); // deletes the second
    gate.open(); // its worker deletes the third
    while (deleted < 3 * (pass + 1))
      std::this_thread::yield();
  }
}

TEST_F(OzTSJobStress, ServicesAreAskedServedAndStoppedWithoutTheLock)
{
  /// All of its operations need the scheduler.
  class Asking : public OzTaskService
  {
  public:
    explicit Asking(std::atomic<int>& calls_to_count)
      : calls(calls_to_count)
    {
    }
    ~Asking() override { ask(); }
    bool Process(OzTaskServiceRequest*& request) override
    {
      delete request;
      return ask();
    }
    void Stop() override { ask(); }
    bool IsActive() override { return ask(); }

  private:
    bool ask()
    {
      ts_job_processor.Synchronize();
      make_job(1);
      ++calls;
      return true;
    }
    std::atomic<int>& calls;
  };

  for (int pass = 0; pass < 50; ++pass)
  {
    std::atomic<int> calls{0};
    std::unique_ptr<OzTSJob> const job = make_job(2);
    OzTaskService* service = new Asking(calls);
    std::unique_ptr<OzTaskService> server(job->SetService(service, 0));
    EXPECT_EQ(calls, 1) << "asked whether it is active";
    for (int i = 0; i < 3; ++i)
      add_task(*job, counts, [](OzTaskService* its_server) { return send(its_server, 0); });

    ASSERT_EQ(job->Wait(), OzJob::JobDone);
    EXPECT_EQ(calls, 5) << "served three times and stopped";
    server.reset();
    ASSERT_EQ(calls, 6);
  }
}

TEST_F(OzTSJobStress, QueriesMeetJobsThatComeAndGo)
{
  std::atomic<bool> stop{false};
  std::thread curious(
      [&stop]
      {
        while (!stop)
        {
          for (std::size_t place = 0; place < OzTSJobProcessor::MAX_JOBS; ++place)
          {
            std::size_t started = 0;
            std::size_t peak = 0;
            std::size_t server_runs = 0;
            ts_job_processor.JobServer(place);
            ts_job_processor.JobStatistics(place, started, peak, server_runs);
            EXPECT_LE(peak, 64u);
          }
          ts_job_processor.RemoveJob(OzTSJobProcessor::MAX_JOBS - 1); // free all the time
        }
      });
  on_threads(3,
             [](int)
             {
               for (int pass = 0; pass < 100; ++pass)
               {
                 std::unique_ptr<OzTSJob> const job = make_job(2);
                 std::unique_ptr<OzTaskService> const server = serve(
                     *job, [](int) { return true; }, 0);
                 TaskCounts own;
                 add_task(*job, own, [](OzTaskService* service) { return send(service, 0); });
                 EXPECT_EQ(job->Wait(), OzJob::JobDone);
               }
             });
  stop = true;
  curious.join();
}

namespace
{
// What runs when all that was loaded with the process has been destroyed: its place among the things to do at
// the end is taken before any library is initialised.
void (*at_the_very_end)() = nullptr;

void run_at_the_very_end()
{
  if (at_the_very_end != nullptr)
    at_the_very_end();
}

void take_the_last_place()
{
  std::atexit(&run_at_the_very_end);
}

__attribute__((section(".preinit_array"), used)) void (*before_all_libraries)() = &take_the_last_place;

Gate* end_of_process = nullptr; // never destroyed, nor is what the tasks use

long threads_of_process()
{
  std::filesystem::directory_iterator const threads("/proc/self/task");
  return std::distance(begin(threads), end(threads));
}

[[noreturn]] void exit_with_tasks_under_way()
{
  long const threads_before = threads_of_process(); // sanitizers have some of their own
  static long threads_at_the_end = threads_before;
  TaskCounts& counts = *new TaskCounts;
  end_of_process = new Gate;
  std::unique_ptr<OzTSJob> job = make_job(4);
  for (int i = 0; i < 8; ++i)
    add_task(*job, counts,
             [](OzTaskService*)
             {
               end_of_process->pass();
               return slow_to_go.Value() != nullptr;
             });
  end_of_process->await(4);
  job.release();
  at_the_very_end = []
  {
    // The tasks end, others are taken, and the threads leave, with nothing left but what is never destroyed.
    end_of_process->open();
    for (int tries = 0; threads_of_process() > threads_at_the_end; ++tries)
    {
      if (tries == 100000)
        std::_Exit(3);
      std::this_thread::yield();
    }
  };
  std::exit(0);
}
} // namespace

TEST_F(OzTSJobStress, WorkersEndQuietlyWhenTheLibraryIsGone)
{
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  for (int pass = 0; pass < 5; ++pass)
    EXPECT_EXIT(exit_with_tasks_under_way(), testing::ExitedWithCode(0), "");
}

TEST_F(OzTSJobStress, TheProcessEndsWithItsOwnCodeWhileTasksEnd)
{
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  auto const exit_while_tasks_end = []
  {
    TaskCounts& many = *new TaskCounts;
    std::unique_ptr<OzTSJob> job = make_job(4);
    for (int i = 0; i < 1000; ++i)
      add_task(*job, many, &succeed);
    job.release();
    std::exit(7);
  };
  for (int pass = 0; pass < 5; ++pass)
    EXPECT_EXIT(exit_while_tasks_end(), testing::ExitedWithCode(7), "");
}

namespace
{
constexpr int ROUNDS = 25;
constexpr int TASKS = 30; // of each job
constexpr int SENT_AT_MOST = 3;

/// What a client's service has been handed.
struct Received
{
  explicit Received(std::size_t tasks)
    : next(tasks, 0)
  {
  }

  std::vector<int> next; // the number that the next request of each task has
  bool in_order = true;
  int requests = 0;
};

/// Eight clients at once, each with one job after the other. What each does comes from a seed.
class Client
{
public:
  explicit Client(unsigned seed)
    : random(seed)
  {
  }

  void run()
  {
    for (int round = 0; round < ROUNDS; ++round)
      run_job();
  }

  int accepted() const { return accepted_tasks; }
  /// Tasks of jobs that were neither cancelled nor closed early.
  int must_run() const { return tasks_that_must_run; }
  TaskCounts const& counts() const { return task_counts; }
  bool ran_twice() const
  {
    for (auto const& runs : runs_of_tasks)
      if (*runs > 1)
        return true;
    return false;
  }

private:
  int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); }

  void run_job()
  {
    // Told of tasks as soon as there is a job: a closed one may have left some at its place.
    Handler handler;
    handler.initialize(TASKS);
    std::size_t const limit = static_cast<std::size_t>(1 + below(4));
    std::unique_ptr<OzTSJob> job = make_job(limit, &handler);
    ASSERT_NE(job, nullptr);
    bool const waits = below(4) != 0;
    bool const cancels = below(3) == 0;
    int const cancels_at = below(TASKS);
    bool const fails = below(4) == 0;
    bool const service_fails = below(4) == 0;

    // A job that is closed while its tasks run has no service, since it would have to go with the job.
    Received received(TASKS);
    std::atomic<int> sent{0};
    std::unique_ptr<OzTaskService> server;
    if (waits && below(3) != 0)
      server = serve(
          *job, [&](int number) { return receive(received, number) && !service_fails; },
          static_cast<std::size_t>(below(8)));

    OzTaskService* const own_server = server.get();
    int accepted_by_job = 0;
    for (int i = 0; i < TASKS; ++i)
    {
      int const requests = below(SENT_AT_MOST + 1);
      bool const cancels_here = cancels && i == cancels_at;
      runs_of_tasks.push_back(std::make_unique<std::atomic<int>>(0));
      std::atomic<int>* const runs = runs_of_tasks.back().get();
      if (!waits)
      {
        // May run later than this function, for whichever job has the place then.
        accepted_by_job += add_task(*job, task_counts, [runs](OzTaskService*) { return ++*runs == 1; });
        continue;
      }
      auto const work = [=, &sent, &handler](OzTaskService* service)
      {
        EXPECT_EQ(service, own_server);
        ++*runs;
        if (cancels_here)
          handler.cancel = true;
        for (int k = 0; service != nullptr && k < requests; ++k)
        {
          ++sent;
          send(service, i * SENT_AT_MOST + k);
        }
        return !(fails && i % 7 == 0);
      };
      accepted_by_job += add_task(*job, task_counts, work);
      if (cancels_here && below(2) == 0)
        handler.cancel = true; // by the client, before the task does
    }
    accepted_tasks += accepted_by_job;
    if (!waits)
    {
      job.reset();
      return;
    }

    int const result = job->Wait();
    EXPECT_EQ(received.requests, sent);
    EXPECT_TRUE(received.in_order);
    EXPECT_LE(job->PeakConcurrency(), limit);
    EXPECT_LE(job->ServerRunCount(), static_cast<std::size_t>(received.requests));
    if (handler.cancel)
    {
      EXPECT_EQ(result, OzJob::JobCancelled);
    }
    // The first place gets the cancelled tasks of all.
    else if (result != OzJob::JobCancelled)
    {
      EXPECT_EQ(result, fails ? OzJob::JobFailed : OzJob::JobDone);
    }
    // Tasks that a closed job has left at this place count for this one.
    if (!handler.cancel)
    {
      EXPECT_GE(job->TaskCount(), static_cast<std::size_t>(accepted_by_job));
      tasks_that_must_run += accepted_by_job;
    }
  }

  static bool receive(Received& received, int number)
  {
    int& next = received.next[static_cast<std::size_t>(number / SENT_AT_MOST)];
    received.in_order = received.in_order && number % SENT_AT_MOST == next;
    ++next;
    ++received.requests;
    return true;
  }

  std::mt19937 random;
  TaskCounts task_counts;
  std::vector<std::unique_ptr<std::atomic<int>>> runs_of_tasks;
  int accepted_tasks = 0;
  int tasks_that_must_run = 0;
};
} // namespace

TEST_F(OzTSJobStress, AccountsForEveryTaskOfEightClients)
{
  std::array<std::unique_ptr<Client>, 8> clients;
  for (unsigned i = 0; i < clients.size(); ++i)
    clients[i] = std::make_unique<Client>(1000 + i);

  on_threads(8, [&clients](int i) { clients[static_cast<std::size_t>(i)]->run(); });

  // Closed jobs have left tasks pending and under way.
  empty_all_places();
  empty_all_places();
  for (auto const& client : clients)
  {
    await_deletion(client->counts(), ROUNDS * TASKS);
    EXPECT_EQ(client->counts().deleted, ROUNDS * TASKS) << "refused ones by the client itself";
    EXPECT_FALSE(client->ran_twice());
    EXPECT_LE(client->counts().run, client->accepted());
    EXPECT_GE(client->counts().run, client->must_run());
  }
  EXPECT_FALSE(FunctionService::entered_twice);
}

TEST_F(OzTSJobStress, NeverHasMoreAtWorkThanTheLimitTheServiceIncluded)
{
  std::unique_ptr<OzTSJob> const job = make_job(3);
  std::atomic<int> at_work{0};
  std::atomic<int> most{0};
  auto const work = [&]
  {
    int const now = ++at_work;
    for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);)
      continue;
    give_way(2);
    --at_work;
  };
  std::unique_ptr<OzTaskService> const server = serve(
      *job,
      [&](int)
      {
        work();
        return true;
      },
      2);

  for (int i = 0; i < 2000; ++i)
    add_task(*job, counts,
             [&](OzTaskService* service)
             {
               work();
               return send(service, 0);
             });

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_LE(most, 3);
  EXPECT_LE(job->PeakConcurrency(), 3u);
  EXPECT_GE(job->PeakConcurrency(), static_cast<std::size_t>(most.load()));
  EXPECT_EQ(counts.deleted, 2000);
}
