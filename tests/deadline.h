#ifndef DEADLINE_H
#define DEADLINE_H

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

/// Ends the process as failed if this still lives after the given time: a test that hangs cannot say so
/// itself. The time is far above what the test needs, so nothing depends on how fast the machine is. Whoever runs
/// the tests in a way that makes them many times slower sets OZ_TEST_PATIENCE, by which it is multiplied.
class Deadline
{
public:
  explicit Deadline(std::chrono::seconds limit)
    : watch([this, limit] { end_process_after(limit * patience()); })
  {
  }
  ~Deadline()
  {
    {
      std::lock_guard<std::mutex> const hold(mutex);
      met = true;
    }
    changed.notify_all();
    watch.join();
  }
  Deadline(Deadline const&) = delete;
  Deadline& operator=(Deadline const&) = delete;

private:
  static int patience()
  {
    char const* const factor = std::getenv("OZ_TEST_PATIENCE");
    return factor != nullptr ? std::max(1, std::atoi(factor)) : 1;
  }

  void end_process_after(std::chrono::seconds limit)
  {
    std::unique_lock<std::mutex> hold(mutex);
    if (changed.wait_for(hold, limit, [this] { return met; }))
      return;
    std::fprintf(stderr, "The test hangs.\n");
    std::_Exit(1);
  }

  std::mutex mutex;
  std::condition_variable changed;
  bool met = false;
  std::thread watch;
};

#endif
