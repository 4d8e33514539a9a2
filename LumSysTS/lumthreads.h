#ifndef LUMTHREADS_H
#define LUMTHREADS_H

#include <memory>
#include <mutex>

#ifndef LUM_EXPORT
#define LUM_EXPORT __attribute__((visibility("default")))
#endif

/// A thread of the platform, started by `Run` and waited for by `Join`, as often as wanted.
///
/// A derived class overrides ThreadMain, and keeps the object alive until the thread has left it. Or a
/// function is set, which then runs in its place and needs the object no more: destroying the object, joined
/// or not, lets such a thread finish on its own.
///
/// Threads: `Run` and the setters are for one thread at a time; `Join` and the queries for any.
class LUM_EXPORT LumThreads
{
public:
  /// What GetStatus answers.
  enum Status : int
  {
    STATUS_NEVER_RUN = 0,
    STATUS_RUNNING = 1,
    STATUS_ENDED = 2,
    STATUS_NOT_STARTED = 3 ///< the platform had no thread for the last `Run`
  };

  /// The arguments are kept for the interface's sake and have no meaning here.
  LumThreads(char const* name, void* argument, int, int, int);
  LumThreads(LumThreads const&) = delete;
  LumThreads& operator=(LumThreads const&) = delete;
  virtual ~LumThreads();

  /// The calling thread: the object that started it, or an object that stands for it as long as it lives if
  /// the thread was started otherwise. Never null.
  static LumThreads* GetCurrentThread();
  /// The process's initial thread, whichever thread loaded this library.
  static LumThreads* GetMainThread();
  /// How many processors this process may run on, by its affinity mask; at least 1.
  static long GetProcessorsNumber();

  /// Starts a thread that calls the function that was set, or ThreadMain if there is none. Does nothing while
  /// the last run is under way. Whether the platform could start the thread says GetStatus.
  virtual void Run(unsigned long long);
  /// What the thread does; its result becomes the return code. Here: nothing, 0.
  virtual int ThreadMain();
  /// Sets what the next `Run` calls, null for ThreadMain again. Answers 0.
  virtual int SetFunction(int (*function_to_run)(void*), void* argument);
  virtual int SetFunction(int (*function_to_run)(void*));
  /// Waits until the run that it finds has ended; returns at once if there is none. Several threads may wait
  /// for the same run.
  virtual void Join();
  /// A thread is not ended from outside: does nothing and answers -1.
  virtual int End(int);
  /// A thread is not ended from outside: does nothing and answers -1.
  virtual int Kill(int);
  /// 1 while a run is under way, else 0.
  virtual int IsRunning();
  virtual int GetStatus();
  /// The platform's number of the last run's thread; 0 before it runs.
  virtual unsigned long GetThreadId();
  /// The result of the last run that ended; 0 before.
  virtual int GetThreadReturnCode();
  /// For derived classes; does nothing here.
  virtual void EmitTrace(char* text);

private:
  struct RunState;

  static void enter(std::shared_ptr<RunState> const& run);
  std::shared_ptr<RunState> last_run() const;

  mutable std::mutex state_mutex;
  std::shared_ptr<RunState> state; // of the last run; shared with its thread; guarded by state_mutex
  int (*function)(void*) = nullptr;
  void* function_argument = nullptr;
};

#endif
