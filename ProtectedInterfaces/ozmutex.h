#ifndef OZMUTEX_H
#define OZMUTEX_H

#include "lummutex.h"
#include "ozarray.h"
#include "ozexport.h"

#include <cstddef>
#include <cstdint>

/// The one lock of the whole process. It guards what is counted or registered once: identities, the table
/// of processors, processor-local values, the operation behaviour. It is outermost in the order of locks
/// and held briefly: for a counter or one look into a table. No check runs while it is held, because the
/// handler of a report may itself need it.
///
/// Usable before any constructor has run and after all destructors have.
extern OZ_EXPORT LumMutex dkb_critical_mutex;

/// Holds `dkb_critical_mutex` from its construction to its destruction. Regions do not nest on a thread.
class OZ_EXPORT OzCriticalDkbRegion
{
public:
  OzCriticalDkbRegion();
  ~OzCriticalDkbRegion();
  OzCriticalDkbRegion(OzCriticalDkbRegion const&) = delete;
  OzCriticalDkbRegion& operator=(OzCriticalDkbRegion const&) = delete;
};

/// Takes and gives back `dkb_critical_mutex` by explicit calls.
class OZ_EXPORT OzRaceConditionProtection
{
public:
  /// What a client declares about its use of threads. The library stores it and never looks at it.
  enum Type : int
  {
    OzRaceProtectionOn = 0,
    OzRaceProtectionOff = 1
  };

  OzRaceConditionProtection() = default;
  OzRaceConditionProtection(OzRaceConditionProtection const&) = default;
  OzRaceConditionProtection& operator=(OzRaceConditionProtection const&);
  OzRaceConditionProtection& operator=(OzRaceConditionProtection&&);

  /// Takes the lock whatever the mode is.
  void Lock();
  void Unlock();

  // Not synchronised: set before threads start.
  static Type Mode();
  static void SetMode(Type mode);

  static Type Mode_;
};

/// A number that names one mutex in the process, for clients that look for deadlocks. The first id is 1;
/// 0 names no mutex. Copying and assigning copy the number, so that two objects can bear one id.
///
/// Threads: ids may be drawn on any thread.
class OZ_EXPORT OzMutexId
{
public:
  OzMutexId();
  OzMutexId(OzMutexId const&) = default;
  OzMutexId& operator=(OzMutexId const&);
  OzMutexId& operator=(OzMutexId&&);

  std::uint64_t Id() const { return id; }

  static std::uint64_t MUTEX_ID_; // the last id drawn; guarded by dkb_critical_mutex

private:
  std::uint64_t id;
};

/// A place for a client's deadlock detection; null after loading. The library never reads it. What the
/// three arrays hold is for the client to say who sets it.
extern OZ_EXPORT void (*dkb_deadlock_detector)(OzArray<std::size_t> const&, OzArray<std::size_t> const&,
                                               OzArray<std::size_t> const&);

#endif
