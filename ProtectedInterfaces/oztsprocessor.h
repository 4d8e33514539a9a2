#ifndef OZTSPROCESSOR_H
#define OZTSPROCESSOR_H

#include "lummutex.h"
#include "lumthreads.h"
#include "ozarray.h"
#include "ozdeque.h"
#include "ozexport.h"
#include "ozjob.h"
#include "oztaskprocessor.h"
#include "oztaskserver.h"
#include "oztimer.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>

class OzHold;
class OzProgressHandler;
class OzTSJob;
class OzTSJobProcessor;

/// The factory of jobs that run on worker threads.
class OZ_EXPORT OzTSProcessor
{
public:
  /// A new job, owned by the caller, or null while 8 jobs are open. `threads` is the most tasks that run at
  /// once: 0 means one for each processor, and more than 64 means 64. `flag` is stored and never read.
  /// `handler` is told about each task that has ended, is asked for cancellation, and may be null. It is not
  /// owned and outlives the job; its operations are called on any thread, with the scheduler's lock held, so
  /// they must not call back into jobs.
  static OzJob* CreateJob(std::size_t threads, bool flag, OzProgressHandler* handler);
};

/// A worker: a processor and its thread in one object. The thread starts when a task was given to the worker,
/// runs tasks until the scheduler has none left for it, and ends.
class OZ_EXPORT OzTSTaskProcessor : public OzTaskProcessor, public LumThreads
{
public:
  OzTSTaskProcessor(OzTSJobProcessor* processor, std::size_t place_in_pool);
  ~OzTSTaskProcessor() override;

  /// Runs `first_task` for the job at `job_index` on a new thread. False if the platform has no thread; the
  /// task then stays with the caller.
  virtual bool Start(OzTask* first_task, std::size_t job_index);

  int ThreadMain() override;

private:
  friend class OzTSJobProcessor;

  OzTask* task = nullptr; // what the thread runs
  std::size_t job = 0;    // the index of its job
  OzTSJobProcessor* owner;
  std::size_t place;
  OzTaskService* service = nullptr; // what the job's tasks are handed; set with the task
};

/// The server of a job on threads. Deleting it takes it off its job.
class OZ_EXPORT OzTSTaskServer : public OzTaskServer
{
public:
  OzTSTaskServer(OzTaskService* service, OzTSJobProcessor* processor);
  ~OzTSTaskServer() override;

  /// A server around nothing refuses to run, for ever, and is never scheduled.
  bool has_service() const { return service_ != nullptr; }

private:
  OzTSJobProcessor* processor;
};

/// A job on threads. It can be waited for and used again until it is closed. Closing it while tasks run lets
/// these end by themselves; they count for nobody then.
class OZ_EXPORT OzTSJob : public OzJob, public OzJobStatistics
{
public:
  OzTSJob(OzTSJobProcessor* processor, std::size_t index);
  ~OzTSJob() override;

  /// Refuses tasks during `Wait`, after cancelling (the job is running all the same), and after Close.
  bool AddTask(OzTask*& task) override;
  int Wait() override;
  /// Takes a service while the job is idle and has none yet.
  OzTaskService* SetService(OzTaskService*& service, std::size_t limit) override;
  void Synchronize() override;
  /// Gives the job's place among the 8 back.
  virtual void Close();

  char const* Name() override;
  double ElapsedTime() override;
  /// How many tasks were started.
  std::size_t TaskCount() override;
  /// The most tasks that ran at once, the server among them.
  std::size_t PeakConcurrency() override;
  std::size_t ServerRunCount() override;

private:
  OzTSJobProcessor* processor; // null once closed
  std::size_t index;
  int state = JobIdle;
  OzTaskService* server = nullptr; // not owned
  OzTimer timer;
  double elapsed = 0;
  std::size_t tasks_started = 0;
  std::size_t peak_concurrency = 0;
  std::size_t server_runs = 0;
};

/// The scheduler: up to 8 jobs, 64 workers. There is one in the process, `ts_job_processor`.
///
/// Tasks wait in a queue for each job, first in first out. A task that is added starts a worker if one is
/// free and the job runs fewer tasks than it may. A worker that has ended a task takes the job's server, if
/// that is due, or else the next task of the first job that has one to run; so it can move between jobs. If
/// there is none, its thread ends. Nothing idles.
///
/// All state is guarded by one lock. It is held while a client's progress handler is called, and let go
/// while threads are started or joined, requests are processed and tasks are run or deleted.
class OZ_EXPORT OzTSJobProcessor
{
public:
  static constexpr std::size_t MAX_JOBS = 8;
  static constexpr std::size_t MAX_WORKERS = 64;

  OzTSJobProcessor();
  OzTSJobProcessor(OzTSJobProcessor const&) = delete;
  OzTSJobProcessor& operator=(OzTSJobProcessor const&) = delete;
  virtual ~OzTSJobProcessor();

  virtual OzTSJob* CreateJob(std::size_t threads, bool flag, OzProgressHandler* handler);
  virtual OzTaskService* AddService(OzTaskService*& service, std::size_t limit, std::size_t job);
  virtual bool AddTask(OzTask*& task, std::size_t job);
  virtual void Synchronize();
  virtual int WaitJob(std::size_t job);
  virtual void RemoveJob(std::size_t job);
  virtual void ForgetServer(OzTSTaskServer* server);
  virtual OzTSTaskServer* JobServer(std::size_t job);
  /// Sorts away what `worker` has run, and gives it what it runs next: null ends its thread.
  virtual void TaskFinished(OzTSTaskProcessor* worker, bool& result, OzTask*& task, std::size_t& job);
  virtual void JobStatistics(std::size_t job, std::size_t& tasks_started, std::size_t& peak,
                             std::size_t& server_runs);
  /// The lock is held. Null in `task` if there is nothing to run.
  virtual void NextTask(OzTask*& task, std::size_t& job);
  /// The lock is held; let go while the thread is started, so all must be read again after it.
  virtual void StartWorker(std::size_t job);
  /// The lock is held; let go while tasks are deleted.
  virtual void ResetJob(std::size_t job);

private:
  struct Job;
  struct Worker;
  struct Tasks;
  enum class StartResult
  {
    STARTED,
    NOTHING_TO_START,
    NO_THREAD
  };

  // The lock is held on entry of all of these.
  bool has_job(std::size_t job) const;
  OzTSTaskProcessor* FindWorker(std::size_t job);
  StartResult start_worker(std::size_t job); // let go while the thread is started
  void sort_away(Job& entry, Worker const& worker, bool result, OzTask* task);
  void cancel_pending(Job& entry);
  void end_run(Worker& worker);
  void free_worker(Worker& worker);
  void run_to_end(std::size_t job, OzHold& hold);        // let go while waiting
  void join_leaving(std::uint64_t serial, OzHold& hold); // let go while waiting
  Tasks take_tasks(Job& entry);
  void wake_waiters();

  LumMutex mutex{0, 1, 0};
  // The rest is guarded by mutex.
  std::condition_variable_any changed; // what a `WaitJob` waits for may have come about
  std::size_t waiters = 0;
  std::uint64_t last_serial = 0;
  std::uint64_t free_workers;      // a bit for each worker without a task whose thread has ended
  std::uint64_t ended_workers = 0; // a bit for each worker without a task whose thread may be leaving
  Job* jobs;                       // MAX_JOBS
  Worker* workers;                 // MAX_WORKERS
};

/// The scheduler of the process. It is never destroyed: at the end of the process a worker that still runs
/// finds it in place.
extern OZ_EXPORT OzTSJobProcessor& ts_job_processor;

#endif
