#include "oztsprocessor.h"

#include "ozhold_p.h"
#include "ozprogress.h"

#include <algorithm>
#include <chrono>

namespace
{
// What a worker's ThreadMain returns. Nothing reads it.
constexpr int WORKER_RETURN_CODE = 32;

// How long `WaitJob` waits before it tries again to start a thread that the platform had none for.
constexpr std::chrono::milliseconds RETRY_AFTER(10);

void delete_tasks(OzArray<OzTask*> const& tasks)
{
  for (OzTask* const task : tasks)
    delete task;
}
} // namespace

/// One of the 8 places for jobs.
struct OzTSJobProcessor::Job
{
  OzTSJob* job = nullptr;   // null: the place is free
  std::uint64_t serial = 0; // which of all jobs ever made it is; 0 while the place is free
  OzProgressHandler* handler = nullptr;
  std::size_t running = 0; // tasks under way, the server's among them
  std::size_t thread_limit = MAX_WORKERS;
  bool flag = false;
  OzDeque<OzTask*> pending;
  OzArray<OzTask*> returned; // tasks whose thread could not be started; they go before pending
  OzArray<OzTask*> finished;
  OzArray<OzTask*> failed;
  OzArray<OzTask*> cancelled; // at place 0, of the jobs at all places
  bool fresh = true;          // the counters are those of the last pass
  OzTSTaskServer* server = nullptr;
  std::size_t server_limit = 0;
  bool server_running = false;
  std::size_t tasks_started = 0;
  std::size_t peak = 0;
  std::size_t server_runs = 0;

  bool has_pending() const { return returned.size() != 0 || !pending.is_empty(); }

  OzTask* take_pending()
  {
    OzTask* task = nullptr;
    if (returned.size() != 0)
    {
      task = returned.last();
      returned.remove_last();
    }
    else
    {
      task = pending.front();
      pending.pop_front();
    }
    return task;
  }

  /// A long queue of requests outranks tasks; a short one waits until the tasks have run out.
  bool server_is_due() const
  {
    if (server == nullptr || server_running || !server->has_service())
      return false;

    std::size_t const requests = server->Size();
    return requests > server_limit || (requests != 0 && !has_pending());
  }

  bool may_run_more() const { return job != nullptr && running < thread_limit; }

  bool is_cancelled() const { return handler != nullptr && handler->is_cancelled(); }

  void reset_counters()
  {
    tasks_started = 0;
    peak = 0;
    server_runs = 0;
  }

  void count_run()
  {
    ++running;
    peak = std::max(peak, running);
  }
};

/// One of the 64 workers. It is free, or has a task, or is ended: then it has no task, and its thread is
/// leaving or has left. Whoever takes it out of the free and the ended ones may join it and run it again.
struct OzTSJobProcessor::Worker
{
  OzTSTaskProcessor* processor = nullptr; // owned
  std::size_t place = 0;
  bool runs_server = false;
  std::uint64_t serial = 0;  // of the job that it serves, or served last
  std::uint64_t leaving = 0; // that job, from the end of the last task until the thread was joined; else 0

  std::uint64_t bit() const { return std::uint64_t(1) << place; }

  void assign(OzTask const* task, Job const& entry)
  {
    serial = entry.serial;
    runs_server = entry.server != nullptr && task == static_cast<OzTask*>(entry.server);
  }
};

/// Tasks that have ended, on their way to be deleted.
struct OzTSJobProcessor::Tasks
{
  OzArray<OzTask*> finished;
  OzArray<OzTask*> failed;
  OzArray<OzTask*> cancelled;

  /// Runs client code, so no lock is held.
  void delete_all()
  {
    delete_tasks(finished);
    delete_tasks(failed);
    delete_tasks(cancelled);
  }
};

OzTSJobProcessor& ts_job_processor = *new OzTSJobProcessor;

OzJob* OzTSProcessor::CreateJob(std::size_t threads, bool flag, OzProgressHandler* handler)
{
  // Without the global lock: a progress callback runs with the scheduler's lock held and may want the global
  // one, so nobody waits for the scheduler while holding that.
  return ts_job_processor.CreateJob(threads, flag, handler);
}

OzTSTaskProcessor::OzTSTaskProcessor(OzTSJobProcessor* processor, std::size_t place_in_pool)
  : LumThreads(nullptr, nullptr, -1, 0, 0)
  , owner(processor)
  , place(place_in_pool)
{
}

OzTSTaskProcessor::~OzTSTaskProcessor() = default;

bool OzTSTaskProcessor::Start(OzTask* first_task, std::size_t job_index)
{
  task = first_task;
  job = job_index;
  if (owner == nullptr)
    return false;

  Run(0);
  return GetStatus() != STATUS_NOT_STARTED;
}

int OzTSTaskProcessor::ThreadMain()
{
  AddProcessor(this);
  while (task != nullptr)
  {
    // The server was noted together with the task, so a job that has taken the place of a closed one is never
    // sent requests of the old one's tasks.
    bool result = task->Execute(service);
    owner->TaskFinished(this, result, task, job);
  }
  ReleaseProcessorLocals();
  RemoveProcessor(this);
  return WORKER_RETURN_CODE;
}

OzTSTaskServer::OzTSTaskServer(OzTaskService* service, OzTSJobProcessor* job_processor)
  : OzTaskServer(service)
  , processor(job_processor)
{
}

OzTSTaskServer::~OzTSTaskServer()
{
  processor->ForgetServer(this);
}

OzTSJob::OzTSJob(OzTSJobProcessor* job_processor, std::size_t place)
  : processor(job_processor)
  , index(place)
{
}

OzTSJob::~OzTSJob()
{
  OzTSJob::Close();
}

bool OzTSJob::AddTask(OzTask*& task)
{
  if (state == JobWaiting)
    return false;
  if (state == JobIdle)
  {
    timer.reset_time();
    state = JobRunning; // also if the task is refused now
  }
  return processor != nullptr && processor->AddTask(task, index);
}

int OzTSJob::Wait()
{
  state = JobWaiting;
  if (processor != nullptr)
  {
    state = processor->WaitJob(index);
    processor->JobStatistics(index, tasks_started, peak_concurrency, server_runs);
  }
  elapsed = timer.get_time();
  int const result = state;
  state = JobIdle;
  return result;
}

OzTaskService* OzTSJob::SetService(OzTaskService*& service, std::size_t limit)
{
  if (state != JobIdle || processor == nullptr)
    return service;

  OzTaskService* const installed = processor->AddService(service, limit, index);
  if (installed != nullptr)
    server = installed;
  return installed;
}

void OzTSJob::Synchronize()
{
  if (processor != nullptr)
    processor->Synchronize();
}

void OzTSJob::Close()
{
  if (processor != nullptr)
    processor->RemoveJob(index);
  processor = nullptr;
  server = nullptr;
}

char const* OzTSJob::Name()
{
  return "OzTSJob";
}

double OzTSJob::ElapsedTime()
{
  return elapsed;
}

std::size_t OzTSJob::TaskCount()
{
  return tasks_started;
}

std::size_t OzTSJob::PeakConcurrency()
{
  return peak_concurrency;
}

std::size_t OzTSJob::ServerRunCount()
{
  return server_runs;
}

OzTSJobProcessor::OzTSJobProcessor()
  : free_workers(~std::uint64_t(0))
  , jobs(new Job[MAX_JOBS])
  , workers(new Worker[MAX_WORKERS])
{
  static_assert(MAX_WORKERS == 64, "the sets of workers have a bit for each");
  for (std::size_t place = 0; place < MAX_WORKERS; ++place)
  {
    workers[place].processor = new OzTSTaskProcessor(this, place);
    workers[place].place = place;
  }
}

OzTSJobProcessor::~OzTSJobProcessor()
{
  for (std::size_t place = 0; place < MAX_WORKERS; ++place)
    delete workers[place].processor;
  delete[] workers;
  delete[] jobs;
}

OzTSJob* OzTSJobProcessor::CreateJob(std::size_t threads, bool flag, OzProgressHandler* handler)
{
  if (threads == 0)
    threads = static_cast<std::size_t>(LumThreads::GetProcessorsNumber());

  OzHold const hold(mutex);
  std::size_t place = 0;
  while (place < MAX_JOBS && jobs[place].job != nullptr)
    ++place;
  if (place == MAX_JOBS)
    return nullptr;

  Job& entry = jobs[place];
  entry.job = new OzTSJob(this, place);
  entry.serial = ++last_serial;
  entry.handler = handler;
  entry.thread_limit = std::min(threads, MAX_WORKERS);
  entry.flag = flag;
  entry.reset_counters(); // those of the job that had this place before
  return entry.job;
}

OzTaskService* OzTSJobProcessor::AddService(OzTaskService*& service, std::size_t limit, std::size_t job)
{
  {
    OzHold const hold(mutex);
    if (!has_job(job) || jobs[job].server != nullptr)
      return service;
  }

  // The server asks the client's service whether it is active, so it is made outside the lock. Only the
  // client's thread gives a job its server.
  OzTSTaskServer* const server = new OzTSTaskServer(service, this);
  service = nullptr;
  OzHold const hold(mutex);
  jobs[job].server = server;
  jobs[job].server_limit = limit;
  return server;
}

bool OzTSJobProcessor::AddTask(OzTask*& task, std::size_t job)
{
  OzHold const hold(mutex);
  if (!has_job(job) || jobs[job].is_cancelled())
    return false;

  Job& entry = jobs[job];
  if (entry.fresh)
  {
    entry.fresh = false;
    entry.reset_counters();
  }
  if (task == nullptr)
    return true;

  entry.pending.push_back(task);
  task = nullptr;
  if (entry.may_run_more()) // mostly not: the first tasks have started as many workers as there may be
    StartWorker(job);
  return true;
}

void OzTSJobProcessor::Synchronize()
{
  OzHold const hold(mutex);
}

int OzTSJobProcessor::WaitJob(std::size_t job)
{
  OzHold hold(mutex);
  if (!has_job(job))
    return OzJob::JobFailed;

  Job& entry = jobs[job];
  ++waiters;
  run_to_end(job, hold);
  join_leaving(entry.serial, hold);
  --waiters;

  // No worker has to do with this job any more, and none will: tasks are added by this thread alone. So the
  // client's service is entered by this thread alone.
  if (entry.server != nullptr)
  {
    OzTSTaskServer* const server = entry.server;
    hold.unlock();
    server->Stop();
    hold.lock();
  }

  int result = OzJob::JobDone;
  if (entry.is_cancelled() || entry.cancelled.size() != 0)
    result = OzJob::JobCancelled;
  else if (entry.failed.size() != 0)
    result = OzJob::JobFailed;
  ResetJob(job);
  return result;
}

void OzTSJobProcessor::RemoveJob(std::size_t job)
{
  OzHold hold(mutex);
  if (!has_job(job))
    return;

  // Tasks that still wait stay in the queue, and are run for the next job that gets this place.
  Job& entry = jobs[job];
  Tasks ended = take_tasks(entry);
  entry.thread_limit = MAX_JOBS;
  entry.flag = false;
  entry.server = nullptr;
  entry.server_limit = 1;
  entry.job = nullptr;
  entry.serial = 0; // workers that still run a task of this job find that it has gone
  hold.unlock();
  ended.delete_all();
  hold.lock();
}

void OzTSJobProcessor::ForgetServer(OzTSTaskServer* server)
{
  OzHold const hold(mutex);
  for (std::size_t place = 0; place < MAX_JOBS; ++place)
  {
    if (jobs[place].job != nullptr && jobs[place].server == server)
      jobs[place].server = nullptr;
  }
}

OzTSTaskServer* OzTSJobProcessor::JobServer(std::size_t job)
{
  OzHold const hold(mutex);
  return job < MAX_JOBS ? jobs[job].server : nullptr;
}

void OzTSJobProcessor::TaskFinished(OzTSTaskProcessor* processor, bool& result, OzTask*& task,
                                    std::size_t& job)
{
  if (processor == nullptr)
    return;

  OzTask* nobodys = nullptr;
  {
    OzHold const hold(mutex);
    Worker& worker = workers[processor->place];
    std::size_t const former_job = job;
    if (jobs[job].serial != worker.serial)
    {
      // The job was closed, and another one may have its place. The server belongs to the client, a task to
      // nobody but this worker.
      nobodys = worker.runs_server ? nullptr : task;
      task = nullptr;
    }
    else
    {
      Job& entry = jobs[job];
      sort_away(entry, worker, result, task);
      task = nullptr;
      if (entry.is_cancelled())
        cancel_pending(entry);
      else
        NextTask(task, job);
    }
    result = false;

    if (task != nullptr)
    {
      Job& next = jobs[job];
      next.count_run();
      worker.assign(task, next);
      processor->service = next.server;
      if (worker.runs_server)
      {
        ++next.server_runs;
        next.server_running = true;
      }
      else
      {
        ++next.tasks_started;
      }
    }
    else
    {
      end_run(worker);
    }
    if (task == nullptr || job != former_job)
      wake_waiters();
  }
  delete nobodys;
}

void OzTSJobProcessor::JobStatistics(std::size_t job, std::size_t& tasks_started, std::size_t& peak,
                                     std::size_t& server_runs)
{
  OzHold const hold(mutex);
  if (job >= MAX_JOBS)
    return;

  tasks_started = jobs[job].tasks_started;
  peak = jobs[job].peak;
  server_runs = jobs[job].server_runs;
}

void OzTSJobProcessor::NextTask(OzTask*& task, std::size_t& job)
{
  if (has_job(job) && jobs[job].server_is_due())
  {
    task = jobs[job].server;
    return;
  }

  // A job whose handler was cancelled, but has not been asked since, is not left out.
  for (std::size_t place = 0; place < MAX_JOBS; ++place)
  {
    Job& entry = jobs[place];
    if (entry.may_run_more() && entry.has_pending())
    {
      task = entry.take_pending();
      job = place;
      return;
    }
  }
  task = nullptr;
}

void OzTSJobProcessor::StartWorker(std::size_t job)
{
  // Where there is no thread the task waits, and `WaitJob` or a worker that ends another one takes it.
  start_worker(job);
}

void OzTSJobProcessor::ResetJob(std::size_t job)
{
  if (!has_job(job))
    return;

  Tasks ended = take_tasks(jobs[job]);
  mutex.Unlock();
  ended.delete_all();
  mutex.Lock();
}

bool OzTSJobProcessor::has_job(std::size_t job) const
{
  return job < MAX_JOBS && jobs[job].job != nullptr;
}

/// Takes the highest worker without a task, or null if there is none or the job may not run more. The caller
/// joins it before running it: its last thread may be leaving.
OzTSTaskProcessor* OzTSJobProcessor::FindWorker(std::size_t job)
{
  std::uint64_t const idle = free_workers | ended_workers;
  if (!has_job(job) || !jobs[job].may_run_more() || idle == 0)
    return nullptr;

  Worker const& worker = workers[63 - __builtin_clzll(idle)];
  free_workers &= ~worker.bit();
  ended_workers &= ~worker.bit();
  return worker.processor;
}

OzTSJobProcessor::StartResult OzTSJobProcessor::start_worker(std::size_t job)
{
  if (!has_job(job) || !jobs[job].has_pending())
    return StartResult::NOTHING_TO_START;
  OzTSTaskProcessor* const processor = FindWorker(job);
  if (processor == nullptr)
    return StartResult::NOTHING_TO_START;

  Job& entry = jobs[job];
  Worker& worker = workers[processor->place];
  OzTask* const task = entry.take_pending();
  std::size_t const former_peak = entry.peak;
  entry.count_run();
  ++entry.tasks_started;
  worker.assign(task, entry);
  OzTaskService* const service = entry.server;

  // Nothing slow under the lock. A thread that leaves needs the global lock, and a progress callback may hold
  // that while it waits for ours.
  mutex.Unlock();
  processor->Join();
  mutex.Lock();
  worker.leaving = 0;
  wake_waiters();
  mutex.Unlock();
  processor->service = service;
  bool const started = processor->Start(task, job);
  mutex.Lock();
  if (started)
    return StartResult::STARTED;

  // All runs that were counted meanwhile were counted with this one, which was none.
  entry.peak = std::max(former_peak, entry.peak - 1);
  --entry.running;
  --entry.tasks_started;
  entry.returned.append(task);
  free_worker(worker);
  return StartResult::NO_THREAD;
}

/// Books the end of a task of a job that is still there.
void OzTSJobProcessor::sort_away(Job& entry, Worker const& worker, bool result, OzTask* task)
{
  if (worker.runs_server)
  {
    entry.server_running = false;
  }
  else
  {
    (result ? entry.finished : entry.failed).append(task);
    if (entry.handler != nullptr)
      entry.handler->update_progress(1);
  }
  --entry.running;
}

/// Takes what waits off a job that was cancelled. All such tasks go to place 0, whichever the job's is, and
/// are deleted with that place's own.
void OzTSJobProcessor::cancel_pending(Job& entry)
{
  while (entry.has_pending())
    jobs[0].cancelled.append(entry.take_pending());
}

/// The worker has no task any more; its thread is about to leave.
void OzTSJobProcessor::end_run(Worker& worker)
{
  worker.runs_server = false;
  worker.leaving = worker.serial;
  ended_workers |= worker.bit();
}

/// The worker's thread was joined, or never started.
void OzTSJobProcessor::free_worker(Worker& worker)
{
  worker.leaving = 0;
  free_workers |= worker.bit();
  wake_waiters();
}

/// Waits until no task of the job is pending or under way. Starts workers itself: those of another job that
/// was cancelled or closed have left without taking this one's tasks.
void OzTSJobProcessor::run_to_end(std::size_t job, OzHold& hold)
{
  Job& entry = jobs[job];
  for (;;)
  {
    // Tasks may be pending with no worker at work that would find the job cancelled.
    if (entry.has_pending() && entry.is_cancelled())
      cancel_pending(entry);

    StartResult started = StartResult::STARTED;
    while (started == StartResult::STARTED)
      started = start_worker(job);

    if (!entry.has_pending() && entry.running == 0)
      return;
    if (started == StartResult::NO_THREAD)
      changed.wait_for(hold, RETRY_AFTER);
    else
      changed.wait(hold);
  }
}

/// Waits until each thread that served the job last has left, and its processor locals with it.
void OzTSJobProcessor::join_leaving(std::uint64_t serial, OzHold& hold)
{
  auto const serves = [serial](Worker const& worker) { return worker.leaving == serial; };
  Worker* const end = workers + MAX_WORKERS;
  for (Worker* worker = std::find_if(workers, end, serves); worker != end;
       worker = std::find_if(workers, end, serves))
  {
    if ((ended_workers & worker->bit()) == 0)
    {
      // Somebody else has taken it and joins it.
      changed.wait(hold);
      continue;
    }
    ended_workers &= ~worker->bit();
    hold.unlock();
    worker->processor->Join();
    hold.lock();
    free_worker(*worker);
  }
}

/// Ends a pass of a job. What the caller gets is to be deleted outside the lock.
OzTSJobProcessor::Tasks OzTSJobProcessor::take_tasks(Job& entry)
{
  entry.running = 0;
  entry.server_running = false;
  entry.fresh = true;
  return {OzArray<OzTask*>(std::move(entry.finished)), OzArray<OzTask*>(std::move(entry.failed)),
          OzArray<OzTask*>(std::move(entry.cancelled))};
}

void OzTSJobProcessor::wake_waiters()
{
  if (waiters != 0)
    changed.notify_all();
}
