#include "ozmutex.h"

// The compiler initialises it, and it has no destructor: a static object of any unit may use it.
LumMutex dkb_critical_mutex(0, 1, 0);

void (*dkb_deadlock_detector)(OzArray<std::size_t> const&, OzArray<std::size_t> const&,
                              OzArray<std::size_t> const&) = nullptr;

OzCriticalDkbRegion::OzCriticalDkbRegion()
{
  dkb_critical_mutex.Lock();
}

OzCriticalDkbRegion::~OzCriticalDkbRegion()
{
  dkb_critical_mutex.Unlock();
}

OzRaceConditionProtection::Type OzRaceConditionProtection::Mode_ =
    OzRaceConditionProtection::OzRaceProtectionOn;

OzRaceConditionProtection& OzRaceConditionProtection::operator=(OzRaceConditionProtection const&)
{
  return *this;
}

OzRaceConditionProtection& OzRaceConditionProtection::operator=(OzRaceConditionProtection&&)
{
  return *this;
}

void OzRaceConditionProtection::Lock()
{
  dkb_critical_mutex.Lock();
}

void OzRaceConditionProtection::Unlock()
{
  dkb_critical_mutex.Unlock();
}

OzRaceConditionProtection::Type OzRaceConditionProtection::Mode()
{
  return Mode_;
}

void OzRaceConditionProtection::SetMode(Type mode)
{
  Mode_ = mode;
}

std::uint64_t OzMutexId::MUTEX_ID_ = 0;

OzMutexId::OzMutexId()
  : id(0)
{
  OzCriticalDkbRegion const region;
  id = ++MUTEX_ID_;
}

OzMutexId& OzMutexId::operator=(OzMutexId const& other)
{
  id = other.id;
  return *this;
}

OzMutexId& OzMutexId::operator=(OzMutexId&& other)
{
  id = other.id;
  return *this;
}
