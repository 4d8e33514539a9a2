#ifndef CONTOURS_STOP_FLAG_H
#define CONTOURS_STOP_FLAG_H

#include <atomic>

namespace contours
{

/// Whether the work is to end before it is done. Once set it stays.
///
/// Any thread and any signal handler may set it and look at it. It orders nothing else: who hands results from one
/// thread to another needs a lock besides.
class StopFlag
{
public:
  void request() noexcept { set.store(true, std::memory_order_relaxed); }
  bool requested() const noexcept { return set.load(std::memory_order_relaxed); }

private:
  static_assert(std::atomic<bool>::is_always_lock_free, "signal handlers must not wait");

  std::atomic<bool> set{false};
};

} // namespace contours

#endif
