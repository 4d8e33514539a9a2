#include "ozsequential.h"

#include "oztaskserver.h"

OzJob::~OzJob() = default;

OzJobStatistics::~OzJobStatistics() = default;

OzSequentialJob::OzSequentialJob() = default;

OzSequentialJob::~OzSequentialJob() = default;

bool OzSequentialJob::AddTask(OzTask*& task)
{
  if (state == JobIdle)
  {
    timer.reset_time();
    task_count = 0;
    state = JobRunning;
  }
  if (task == nullptr)
    return true;

  ++task_count;
  bool const ok = task->Execute(service);
  delete task;
  task = nullptr;
  if (!ok)
    state = JobFailed;
  return true;
}

int OzSequentialJob::Wait()
{
  int const result = state == JobFailed ? JobFailed : JobDone;
  elapsed = timer.get_time();
  state = JobIdle;
  return result;
}

OzTaskService* OzSequentialJob::SetService(OzTaskService*& new_service, std::size_t)
{
  if (new_service == nullptr)
    return nullptr;

  service = new Faked_OzTaskServer(new_service);
  new_service = nullptr;
  return service;
}

void OzSequentialJob::Synchronize() {}

char const* OzSequentialJob::Name()
{
  return "OzSequentialJob";
}

double OzSequentialJob::ElapsedTime()
{
  return elapsed;
}

std::size_t OzSequentialJob::TaskCount()
{
  return task_count;
}

std::size_t OzSequentialJob::PeakConcurrency()
{
  return peak_concurrency;
}

std::size_t OzSequentialJob::ServerRunCount()
{
  return server_runs;
}

OzJob* OzSequential::CreateJob(std::size_t, bool)
{
  return new OzSequentialJob;
}

OzJob* OzEKProcessor::CreateJob(std::size_t, bool)
{
  return nullptr;
}
