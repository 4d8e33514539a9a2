#include "lumthreads.h"

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

/// One run of a thread. Both the thread and the object hold it, so either may go first.
struct LumThreads::RunState
{
  std::mutex mutex; // guards what follows
  std::condition_variable ended;
  int status = STATUS_RUNNING;
  int return_code = 0;
  unsigned long thread_id = 0;

  // Set before the thread starts.
  LumThreads* object = nullptr; // null for a run of a function alone
  int (*function)(void*) = nullptr;
  void* function_argument = nullptr;
};

namespace
{
thread_local LumThreads* current_thread = nullptr; // null: not started here, or not asked for yet

unsigned long platform_thread_id()
{
  return static_cast<unsigned long>(syscall(SYS_gettid));
}

bool is_initial_thread()
{
  return platform_thread_id() == static_cast<unsigned long>(getpid());
}
} // namespace

LumThreads::LumThreads(char const*, void*, int, int, int) {}

LumThreads::~LumThreads() = default;

LumThreads* LumThreads::GetCurrentThread()
{
  if (current_thread != nullptr)
    return current_thread;

  if (is_initial_thread())
  {
    current_thread = GetMainThread();
  }
  else
  {
    static thread_local LumThreads stranger(nullptr, nullptr, -1, 0, 0);
    current_thread = &stranger;
  }
  return current_thread;
}

LumThreads* LumThreads::GetMainThread()
{
  // Never destroyed: threads may still ask at the very end of the process.
  static LumThreads* const main_thread = new LumThreads(nullptr, nullptr, -1, 0, 0);
  return main_thread;
}

long LumThreads::GetProcessorsNumber()
{
  cpu_set_t processors;
  CPU_ZERO(&processors);
  if (sched_getaffinity(0, sizeof processors, &processors) == 0 && CPU_COUNT(&processors) > 0)
    return CPU_COUNT(&processors);

  // More processors than the mask has room for.
  long const online = sysconf(_SC_NPROCESSORS_ONLN);
  return online > 0 ? online : 1;
}

void LumThreads::Run(unsigned long long)
{
  if (IsRunning() != 0)
    return;

  auto const run = std::make_shared<RunState>();
  run->object = this;
  run->function = function;
  run->function_argument = function_argument;
  {
    std::lock_guard<std::mutex> const hold(state_mutex);
    state = run;
  }
  try
  {
    std::thread(&LumThreads::enter, run).detach();
  }
  catch (std::system_error const&)
  {
    std::lock_guard<std::mutex> const hold(run->mutex);
    run->status = STATUS_NOT_STARTED;
    run->ended.notify_all();
  }
}

/// The body of every thread started here.
void LumThreads::enter(std::shared_ptr<RunState> const& run)
{
  current_thread = run->object;
  {
    std::lock_guard<std::mutex> const hold(run->mutex);
    run->thread_id = platform_thread_id();
  }

  // A function needs no object, which may be gone by now.
  int const code =
      run->function != nullptr ? run->function(run->function_argument) : run->object->ThreadMain();

  std::lock_guard<std::mutex> const hold(run->mutex);
  run->return_code = code;
  run->status = STATUS_ENDED;
  run->ended.notify_all();
}

std::shared_ptr<LumThreads::RunState> LumThreads::last_run() const
{
  std::lock_guard<std::mutex> const hold(state_mutex);
  return state;
}

int LumThreads::ThreadMain()
{
  return 0;
}

int LumThreads::SetFunction(int (*function_to_run)(void*), void* argument)
{
  function = function_to_run;
  function_argument = argument;
  return 0;
}

int LumThreads::SetFunction(int (*function_to_run)(void*))
{
  return SetFunction(function_to_run, nullptr);
}

void LumThreads::Join()
{
  std::shared_ptr<RunState> const run = last_run();
  if (run == nullptr)
    return;

  std::unique_lock<std::mutex> hold(run->mutex);
  run->ended.wait(hold, [&run] { return run->status != STATUS_RUNNING; });
}

int LumThreads::End(int)
{
  return -1;
}

int LumThreads::Kill(int)
{
  return -1;
}

int LumThreads::IsRunning()
{
  return GetStatus() == STATUS_RUNNING ? 1 : 0;
}

int LumThreads::GetStatus()
{
  std::shared_ptr<RunState> const run = last_run();
  if (run == nullptr)
    return STATUS_NEVER_RUN;

  std::lock_guard<std::mutex> const hold(run->mutex);
  return run->status;
}

unsigned long LumThreads::GetThreadId()
{
  std::shared_ptr<RunState> const run = last_run();
  if (run == nullptr)
    return 0;

  std::lock_guard<std::mutex> const hold(run->mutex);
  return run->thread_id;
}

int LumThreads::GetThreadReturnCode()
{
  std::shared_ptr<RunState> const run = last_run();
  if (run == nullptr)
    return 0;

  std::lock_guard<std::mutex> const hold(run->mutex);
  return run->return_code;
}

void LumThreads::EmitTrace(char*) {}
