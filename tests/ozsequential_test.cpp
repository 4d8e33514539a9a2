#include "ozsequential.h"
#include "oztaskserver.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <ctime>
#include <memory>
#include <string>
#include <thread>

namespace
{
struct Log
{
  std::string text;
  int deleted = 0;
};

/// Notes that it ran, on which thread, and with what.
class Task : public OzTask
{
public:
  Task(Log& task_log, char task_name, bool task_result)
    : log(task_log)
    , name(task_name)
    , result(task_result)
  {
  }
  ~Task() override { ++log.deleted; }

  bool Execute(OzTaskService* service) override
  {
    thread = std::this_thread::get_id();
    log.text += name;
    if (service != nullptr)
    {
      OzTaskServiceRequest* request = new OzTaskServiceRequest;
      service->Process(request);
    }
    return result;
  }
  bool Execute() override { return false; }

  static inline std::thread::id thread;

private:
  Log& log;
  char name;
  bool result;
};

class Service : public OzTaskService
{
public:
  explicit Service(Log& service_log)
    : log(service_log)
  {
  }
  ~Service() override { log.text += "~"; }

  bool Process(OzTaskServiceRequest*& request) override
  {
    log.text += "s";
    delete request;
    request = nullptr;
    return true;
  }

private:
  Log& log;
};

std::unique_ptr<OzJob> sequential_job()
{
  return std::unique_ptr<OzJob>(OzSequential::CreateJob(7, true));
}

OzJobStatistics& statistics(OzJob& job)
{
  return dynamic_cast<OzJobStatistics&>(job);
}

bool add(OzJob& job, Log& log, char name, bool result)
{
  OzTask* task = new Task(log, name, result);
  bool const accepted = job.AddTask(task);
  EXPECT_EQ(task, nullptr);
  return accepted;
}
} // namespace

TEST(OzSequentialJob, RunsAndDeletesEachTaskAsItIsAdded)
{
  Log log;
  std::unique_ptr<OzJob> const job = sequential_job();

  EXPECT_TRUE(add(*job, log, 'a', true));
  EXPECT_EQ(log.text, "a");
  EXPECT_EQ(log.deleted, 1);
  EXPECT_TRUE(add(*job, log, 'b', true));

  EXPECT_EQ(log.text, "ab");
  EXPECT_EQ(Task::thread, std::this_thread::get_id());
  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(statistics(*job).TaskCount(), 2u);
}

TEST(OzSequentialJob, GoesOnAfterAFailureAndFails)
{
  Log log;
  std::unique_ptr<OzJob> const job = sequential_job();

  EXPECT_TRUE(add(*job, log, 'a', false));
  EXPECT_TRUE(add(*job, log, 'b', true));

  EXPECT_EQ(log.text, "ab");
  EXPECT_EQ(job->Wait(), OzJob::JobFailed);
  EXPECT_EQ(statistics(*job).TaskCount(), 2u);
  EXPECT_EQ(job->Wait(), OzJob::JobDone) << "the failure is told once";
}

TEST(OzSequentialJob, CountsAnewAfterWait)
{
  Log log;
  std::unique_ptr<OzJob> const job = sequential_job();
  add(*job, log, 'a', true);
  add(*job, log, 'b', true);
  job->Wait();

  add(*job, log, 'c', true);
  job->Wait();

  EXPECT_EQ(statistics(*job).TaskCount(), 1u);
}

TEST(OzSequentialJob, IsStartedByANullTask)
{
  std::unique_ptr<OzJob> const job = sequential_job();
  OzTask* none = nullptr;

  EXPECT_TRUE(job->AddTask(none));

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
  EXPECT_EQ(statistics(*job).TaskCount(), 0u);
}

TEST(OzSequentialJob, IsDoneWhenNothingWasAdded)
{
  std::unique_ptr<OzJob> const job = sequential_job();

  EXPECT_EQ(job->Wait(), OzJob::JobDone);
}

TEST(OzSequentialJob, HandsTasksAServerThatServesAtOnce)
{
  Log log;
  std::unique_ptr<OzJob> const job = sequential_job();
  OzTaskService* service = new Service(log);

  std::unique_ptr<OzTaskService> const server(job->SetService(service, 100));

  EXPECT_EQ(service, nullptr);
  add(*job, log, 'a', true);
  add(*job, log, 'b', true);
  EXPECT_EQ(log.text, "asbs");
  EXPECT_EQ(job->Wait(), OzJob::JobDone);
}

TEST(OzSequentialJob, LeavesItsServerToTheClient)
{
  Log log;
  std::unique_ptr<OzTaskService> server;
  {
    std::unique_ptr<OzJob> const job = sequential_job();
    OzTaskService* service = new Service(log);
    server.reset(job->SetService(service, 0));
  }
  EXPECT_EQ(log.text, "");

  server.reset();

  EXPECT_EQ(log.text, "~");
}

TEST(OzSequentialJob, TakesAnotherServiceAtAnyTime)
{
  Log first;
  Log second;
  std::unique_ptr<OzJob> const job = sequential_job();
  OzTaskService* service = new Service(first);
  std::unique_ptr<OzTaskService> const first_server(job->SetService(service, 0));
  add(*job, first, 'a', true);

  service = new Service(second);
  std::unique_ptr<OzTaskService> const second_server(job->SetService(service, 0));
  add(*job, first, 'b', true);

  EXPECT_NE(first_server, second_server);
  EXPECT_EQ(first.text, "asb");
  EXPECT_EQ(second.text, "s");
  job->Wait();
}

TEST(OzSequentialJob, AnswersANullServiceNull)
{
  std::unique_ptr<OzJob> const job = sequential_job();
  OzTaskService* none = nullptr;

  EXPECT_EQ(job->SetService(none, 0), nullptr);
}

TEST(OzSequentialJob, MeasuresFromItsFirstTaskToTheEndOfWait)
{
  std::unique_ptr<OzJob> const job = sequential_job();
  OzTask* none = nullptr;
  job->AddTask(none);

  std::clock_t const begin = std::clock();
  while (std::clock() - begin < 2000)
    continue;
  job->Wait();

  double const elapsed = statistics(*job).ElapsedTime();
  EXPECT_GE(elapsed, 2.0) << "a unit is a thousand ticks";
  job->AddTask(none);
  job->Wait();
  EXPECT_LT(statistics(*job).ElapsedTime(), elapsed) << "from the first task of the new pass";
}

TEST(OzSequentialJob, TellsItsNameAndFixedFigures)
{
  std::unique_ptr<OzJob> const job = sequential_job();
  OzJobStatistics& told = statistics(*job);

  EXPECT_STREQ(told.Name(), "OzSequentialJob");
  EXPECT_EQ(told.PeakConcurrency(), 1u);
  EXPECT_EQ(told.ServerRunCount(), 0u);
  EXPECT_EQ(told.ElapsedTime(), 0.0);
  job->Synchronize();
  job->Wait();
  EXPECT_GE(told.ElapsedTime(), 0.0);
}

TEST(OzEKProcessor, HasNoJobToGive)
{
  EXPECT_EQ(OzEKProcessor::CreateJob(0, false), nullptr);
  EXPECT_EQ(OzEKProcessor::CreateJob(8, true), nullptr);
}

TEST(OzJob, HasItsVirtualOperationsInAFixedOrder)
{
  EXPECT_EQ(vtable_slot(&OzJob::AddTask), 2);
  EXPECT_EQ(vtable_slot(&OzJob::Wait), 3);
  EXPECT_EQ(vtable_slot(&OzJob::SetService), 4);
  EXPECT_EQ(vtable_slot(&OzJob::Synchronize), 5);

  EXPECT_EQ(vtable_slot(&OzJobStatistics::Name), 2);
  EXPECT_EQ(vtable_slot(&OzJobStatistics::ElapsedTime), 3);
  EXPECT_EQ(vtable_slot(&OzJobStatistics::TaskCount), 4);
  EXPECT_EQ(vtable_slot(&OzJobStatistics::PeakConcurrency), 5);
  EXPECT_EQ(vtable_slot(&OzJobStatistics::ServerRunCount), 6);
}
