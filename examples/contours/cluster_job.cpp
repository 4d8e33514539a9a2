#include "cluster_job.h"

#include <ozjob.h>
#include <ozsequential.h>
#include <oztaskserver.h>
#include <oztsprocessor.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace contours
{

namespace
{

// A bar that is drawn ten times a second moves smoothly.
constexpr std::chrono::milliseconds BETWEEN_DRAWINGS(100);

// Contours that wait to be taken over need memory. So many clusters may, before a thread takes them over in place of
// sorting the next.
constexpr std::size_t MOST_WAITING = 16;

/// What all parts of a job share. An exception would end the process if it left a task or a service: the first one is
/// kept here until the job has ended, and nothing more is begun.
class Shared
{
public:
  Shared(ClusterWork const& its_work, StopFlag& its_stop)
    : work(its_work)
    , stop(its_stop)
  {
  }

  /// Inside the handler of an exception.
  void keep_failure()
  {
    std::lock_guard<std::mutex> const hold(mutex);
    if (!failure)
      failure = std::current_exception();
    stop.request();
  }

  /// When all threads have ended.
  void throw_failure() const
  {
    if (failure)
      std::rethrow_exception(failure);
  }

  ClusterWork const& work;
  StopFlag& stop;
  std::size_t sorted = 0; ///< the service's

private:
  std::mutex mutex;
  std::exception_ptr failure; // guarded by mutex
};

/// A cluster that was sorted, on its way to be taken over.
class SortedCluster : public OzTaskServiceRequest
{
public:
  SortedCluster(std::size_t its_number, std::vector<Contour>&& its_contours)
    : number(its_number)
    , contours(std::move(its_contours))
  {
  }

  std::size_t number;
  std::vector<Contour> contours;
};

class SortCluster : public OzTask
{
public:
  SortCluster(std::size_t its_number, Shared& its_job)
    : number(its_number)
    , job(its_job)
  {
  }

  bool Execute(OzTaskService* service) override
  {
    try
    {
      std::vector<Contour> contours = job.work.sort(number);
      if (job.stop.requested())
        return false; // perhaps only half sorted
      OzTaskServiceRequest* request = new SortedCluster(number, std::move(contours));
      return service->Process(request);
    }
    catch (...)
    {
      job.keep_failure();
      return false;
    }
  }
  bool Execute() override { return false; } // nobody to take the contours over

private:
  std::size_t number;
  Shared& job;
};

/// Hands the clusters on in their order: those that come early wait here.
class TakeInOrder : public OzTaskService
{
public:
  explicit TakeInOrder(Shared& its_job)
    : job(its_job)
  {
  }

  bool Process(OzTaskServiceRequest*& request) override
  {
    std::unique_ptr<SortedCluster> const cluster(static_cast<SortedCluster*>(request));
    request = nullptr;
    try
    {
      ++job.sorted;
      early.emplace(cluster->number, std::move(cluster->contours));
      while (!early.empty() && early.begin()->first == next && !job.stop.requested())
      {
        job.work.take(std::move(early.begin()->second));
        early.erase(early.begin());
        ++next;
      }
      return true;
    }
    catch (...)
    {
      job.keep_failure();
      return false;
    }
  }

private:
  Shared& job;
  std::size_t next = 0;
  std::map<std::size_t, std::vector<Contour>> early;
};

/// The client of a job: the one thread on which all of the job's operations are called.
class Client
{
public:
  Client(Shared& its_shared, std::size_t its_threads, Progress& its_progress)
    : shared(its_shared)
    , threads(its_threads)
    , progress(its_progress)
  {
  }

  /// From the making of the job to its end. `after_task` is called where the job has no threads, after each task.
  void run(std::function<void()> const& after_task)
  {
    try
    {
      run_tasks(after_task);
    }
    catch (...)
    {
      shared.keep_failure();
    }
  }

  JobFigures figures;

private:
  void run_tasks(std::function<void()> const& after_task)
  {
    std::unique_ptr<OzJob> job;
    if (threads != 1)
      job.reset(OzTSProcessor::CreateJob(threads, false, &progress));
    // There is none while eight others are open.
    bool const on_threads = job != nullptr;
    if (!on_threads)
      job.reset(OzSequential::CreateJob(0, false));
    OzTaskService* service = new TakeInOrder(shared);
    std::unique_ptr<OzTaskService> const server(job->SetService(service, MOST_WAITING));

    add_tasks(*job, on_threads, after_task);
    job->Wait();
    progress.finish();
    auto& statistics = dynamic_cast<OzJobStatistics&>(*job);
    figures = {statistics.Name(), statistics.TaskCount(), statistics.PeakConcurrency(),
               statistics.ServerRunCount(), statistics.ElapsedTime()};
  }

  /// Whatever happens, the job can be waited for afterwards.
  void add_tasks(OzJob& job, bool on_threads, std::function<void()> const& after_task)
  {
    try
    {
      for (std::size_t number = 0; number < shared.work.clusters && !shared.stop.requested(); ++number)
      {
        OzTask* task = new SortCluster(number, shared);
        if (!job.AddTask(task))
        {
          delete task;
          return;
        }
        if (on_threads)
          continue;
        progress.update_progress(1);
        after_task();
      }
    }
    catch (...)
    {
      shared.keep_failure();
    }
  }

  Shared& shared;
  std::size_t threads;
  Progress& progress;
};

struct JoinedThread
{
  JoinedThread() = default;
  ~JoinedThread()
  {
    if (thread.joinable())
      thread.join();
  }
  JoinedThread(JoinedThread const&) = delete;
  JoinedThread& operator=(JoinedThread const&) = delete;

  std::thread thread;
};

/// Runs `action` on a thread of its own, and draws the bar on this one meanwhile. False, and nothing was done, if there
/// is no thread to be had.
bool run_beside(std::function<void()> const& action, Progress const& progress, ProgressBar& bar)
{
  std::mutex mutex;
  std::condition_variable ended;
  bool has_ended = false; // guarded by mutex
  auto const run = [&]
  {
    action();
    std::lock_guard<std::mutex> const hold(mutex);
    has_ended = true;
    ended.notify_one();
  };
  JoinedThread other;
  try
  {
    other.thread = std::thread(run);
  }
  catch (std::system_error const&)
  {
    return false;
  }

  std::unique_lock<std::mutex> hold(mutex);
  while (!ended.wait_for(hold, BETWEEN_DRAWINGS, [&] { return has_ended; }))
    bar.show(progress.percentage());
  return true;
}

} // namespace

Cancelled::Cancelled(std::size_t sorted, std::size_t clusters)
  : std::runtime_error("cancelled after " + std::to_string(sorted) + " of " + std::to_string(clusters) +
                       (clusters == 1 ? " cluster" : " clusters") + "; nothing was written")
{
}

JobFigures run_job(ClusterWork const& work, std::size_t threads, StopFlag& stop, ProgressBar& bar)
{
  Shared shared(work, stop);
  Progress progress(stop);
  std::size_t const countable = std::numeric_limits<unsigned>::max();
  progress.initialize(static_cast<unsigned>(std::min(work.clusters, countable)));
  bar.show(progress.percentage());

  Client client(shared, threads, progress);
  auto const draw = [&] { bar.show(progress.percentage()); };
  // With a single thread the tasks run on this one, and it draws between them. With a bar the job has its client on
  // another thread: this one could not draw while it waits for the job.
  bool const beside = threads != 1 && bar.is_visible();
  if (!beside || !run_beside([&] { client.run([] {}); }, progress, bar))
    client.run(draw);
  if (!stop.requested())
    draw();
  bar.erase();

  shared.throw_failure();
  if (stop.requested() || shared.sorted < work.clusters)
    throw Cancelled(shared.sorted, work.clusters);
  return client.figures;
}

} // namespace contours
