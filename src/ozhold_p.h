#ifndef OZHOLD_P_H
#define OZHOLD_P_H

#include "lummutex.h"

/// Holds a mutex of the platform from its construction to its destruction. A condition variable may let it
/// go in between.
class OzHold
{
public:
  explicit OzHold(LumMutex& mutex_to_hold)
    : mutex(mutex_to_hold)
  {
    lock();
  }
  ~OzHold() { unlock(); }
  OzHold(OzHold const&) = delete;
  OzHold& operator=(OzHold const&) = delete;

  // Spelled as condition variables want it.
  void lock() { mutex.Lock(); }
  void unlock() { mutex.Unlock(); }

private:
  LumMutex& mutex;
};

#endif
