#ifndef LUMMUTEX_H
#define LUMMUTEX_H

#include <mutex>

#ifndef LUM_EXPORT
#define LUM_EXPORT __attribute__((visibility("default")))
#endif

/// A mutual exclusion lock of the platform. It is not recursive.
///
/// A mutex with static storage is ready before any constructor of the process runs, and stays usable after
/// all destructors have run: it is initialised by the compiler and has nothing to destroy.
class LUM_EXPORT LumMutex
{
public:
  /// The three numbers are kept for the interface's sake and have no meaning here.
  constexpr LumMutex(int, int, int) noexcept {}
  LumMutex(LumMutex const&) = delete;
  LumMutex& operator=(LumMutex const&) = delete;
  ~LumMutex() = default;

  /// Waits until the lock is held by the calling thread, which must not hold it already.
  void Lock();
  /// Gives the lock back. Called by the thread that holds it.
  void Unlock();

private:
  std::mutex mutex;
};

#endif
