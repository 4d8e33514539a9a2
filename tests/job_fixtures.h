#ifndef JOB_FIXTURES_H
#define JOB_FIXTURES_H

#include "ozprogress.h"
#include "oztaskserver.h"
#include "oztsprocessor.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

/// A door that threads wait at until it is opened, and that counts them.
class Gate
{
public:
  /// Waits until the gate is open.
  void pass()
  {
    std::unique_lock<std::mutex> hold(mutex);
    ++arrived;
    changed.notify_all();
    changed.wait(hold, [this] { return is_open; });
  }

  void open()
  {
    std::lock_guard<std::mutex> const hold(mutex);
    is_open = true;
    changed.notify_all();
  }

  /// Waits until `count` threads have come to the gate.
  void await(int count)
  {
    std::unique_lock<std::mutex> hold(mutex);
    changed.wait(hold, [this, count] { return arrived >= count; });
  }

private:
  std::mutex mutex;
  std::condition_variable changed;
  int arrived = 0;
  bool is_open = false;
};

/// What became of the tasks of a test.
struct TaskCounts
{
  std::atomic<int> run{0};
  std::atomic<int> deleted{0};
};

/// A task that does what it was given, once, and fails if that answers false.
class FunctionTask : public OzTask
{
public:
  using Work = std::function<bool(OzTaskService*)>;

  FunctionTask(TaskCounts& task_counts, Work task_work)
    : counts(task_counts)
    , work(std::move(task_work))
  {
  }
  ~FunctionTask() override { ++counts.deleted; }

  bool Execute(OzTaskService* service) override
  {
    ++counts.run;
    return work(service);
  }
  bool Execute() override { return Execute(nullptr); }

private:
  TaskCounts& counts;
  Work work;
};

inline bool add_task(OzJob& job, TaskCounts& counts, FunctionTask::Work work)
{
  std::unique_ptr<OzTask> task(new FunctionTask(counts, std::move(work)));
  OzTask* raw = task.release();
  bool const accepted = job.AddTask(raw);
  task.reset(raw); // a refused task stays with the caller
  return accepted;
}

inline bool succeed(OzTaskService*)
{
  return true;
}

class NumberedRequest : public OzTaskServiceRequest
{
public:
  explicit NumberedRequest(int request_number)
    : number(request_number)
  {
  }
  int number;
};

inline bool send(OzTaskService* service, int number)
{
  OzTaskServiceRequest* request = new NumberedRequest(number);
  return service->Process(request);
}

/// A service that does what it was given for each request, and notices if it is entered twice at once.
class FunctionService : public OzTaskService
{
public:
  using Work = std::function<bool(int)>;

  explicit FunctionService(Work service_work)
    : work(std::move(service_work))
  {
  }

  bool Process(OzTaskServiceRequest*& request) override
  {
    if (inside.exchange(true))
      entered_twice = true;
    bool const result = work(static_cast<NumberedRequest*>(request)->number);
    delete request;
    request = nullptr;
    inside = false;
    return result;
  }
  void Stop() override { stopped = true; }

  static inline std::atomic<bool> entered_twice{false};
  static inline std::atomic<bool> stopped{false};

private:
  Work work;
  std::atomic<bool> inside{false};
};

/// A handler that can be cancelled from any thread.
class Handler : public OzProgressHandler
{
public:
  std::atomic<bool> cancel{false};
  std::atomic<unsigned> shown{0};
  std::function<void()> callback; // run with the scheduler's lock held

protected:
  void increase_progress(unsigned percentage) override
  {
    shown = percentage;
    if (callback)
      callback();
  }
  bool check_if_cancelled() const override
  {
    if (callback)
      callback();
    return cancel;
  }
};

/// A job on threads that is closed at the end of the test.
inline std::unique_ptr<OzTSJob> make_job(std::size_t threads, OzProgressHandler* handler = nullptr)
{
  return std::unique_ptr<OzTSJob>(dynamic_cast<OzTSJob*>(OzTSProcessor::CreateJob(threads, false, handler)));
}

#endif
