#include "ozoperationdefaultbehaviour.h"

#include "ozassert.h"
#include "ozmutex.h"

namespace
{
// Made at the first use, which may come from a static object of another unit, and never destroyed: threads
// that still run while the process ends may ask it.
OzOperationDefaultBehaviour& default_behaviour()
{
  static OzOperationDefaultBehaviour& behaviour = *new OzOperationDefaultBehaviour;
  return behaviour;
}

// Without a client's use the library is loaded with it all the same.
[[maybe_unused]] OzOperationDefaultBehaviour const& made_at_load = default_behaviour();

OzArray<int> const& make_no_services()
{
  OzArray<int>& none = *new OzArray<int>;
  // A cursor on it is always done; whoever reads it all the same is reported and then reads this slot.
  none.reserve(1, false);
  return none;
}

// The services of a package that is unknown.
OzArray<int> const& no_services()
{
  static OzArray<int> const& none = make_no_services();
  return none;
}
} // namespace

OzOperationBehaviour* OzOperationBehaviour::the_instance_ = nullptr;

OzOperationBehaviour::~OzOperationBehaviour() = default;

short OzOperationBehaviour::determine_flavour_to_apply(OzString const* package, int service, short flavour)
{
  set_best_flavour(package, service, flavour);
  return get_actual_flavour(package, service);
}

int OzOperationBehaviour::is_a_lumdkb_op_behaviour() const
{
  return 0;
}

int OzOperationBehaviour::is_additional_level_active(int) const
{
  return 0;
}

OzOperationBehaviour* OzOperationBehaviour::get_instance()
{
  // Before the region, since making it takes the lock.
  OzOperationBehaviour* const fallback = get_default_behaviour();
  OzCriticalDkbRegion const region;
  if (the_instance_ == nullptr)
    the_instance_ = fallback;
  return the_instance_;
}

void OzOperationBehaviour::set_instance(OzOperationBehaviour* behaviour)
{
  if (behaviour == nullptr)
  {
    behaviour = get_default_behaviour();
    behaviour->clear();
  }
  OzCriticalDkbRegion const region;
  the_instance_ = behaviour;
}

OzOperationBehaviour* OzOperationBehaviour::get_default_behaviour()
{
  return &default_behaviour();
}

OzOperationDefaultBehaviour::OzOperationDefaultBehaviour()
{
  OzCriticalDkbRegion const region;
  locked_ = false;
}

OzOperationDefaultBehaviour::OzOperationDefaultBehaviour(OzOperationDefaultBehaviour const& other)
  : OzOperationBehaviour(other)
{
  copy(other);
}

OzOperationDefaultBehaviour& OzOperationDefaultBehaviour::operator=(OzOperationDefaultBehaviour const& other)
{
  copy(other);
  return *this;
}

void OzOperationDefaultBehaviour::copy(OzOperationDefaultBehaviour const& other)
{
  OzCriticalDkbRegion const region;
  locked_ = other.locked_;
  known_behaviours_ = other.known_behaviours_;
}

OzOperationDefaultBehaviour::OzOperationDefaultBehaviour(OzOperationBehaviour const& other)
  : OzOperationDefaultBehaviour()
{
  *this = other;
}

OzOperationDefaultBehaviour& OzOperationDefaultBehaviour::operator=(OzOperationBehaviour const& other)
{
  if (&other == this)
    return *this;

  clear();
  OzAutoPtr<OzIterator<OzString const*>> packages;
  OzAutoPtr<OzIterator<int>> services;
  other.get_packages(packages);
  packages->reset();
  if (!packages->done())
  {
    other.get_services(packages->current(), services);

    // The cursor of services stays on the first one of the first package, and the flavour is the one that
    // this behaviour has, which has just been cleared.
    for (packages->reset(); !packages->done(); packages->next())
    {
      short const flavour = get_actual_flavour(packages->current(), services->current());
      set_best_flavour(packages->current(), services->current(), flavour);
    }
    packages->next();
  }

  if (other.is_locked())
    lock();
  return *this;
}

OzOperationDefaultBehaviour::~OzOperationDefaultBehaviour() = default;

void OzOperationDefaultBehaviour::set_best_flavour(OzString const* package, int service, short flavour)
{
  if (is_locked())
    return;

  bool differs = false;
  {
    OzCriticalDkbRegion const region;
    if (knows(package))
    {
      OzMap<int, short>& services = known_behaviours_.at(package);
      if (services.find(service, nullptr) != 0)
        differs = services.at(service) != flavour;
      else
        services[service] = flavour;
    }
    else
    {
      OzMap<int, short> services;
      services[service] = flavour;
      known_behaviours_[package] = services;
    }
  }
  // Outside the lock, which the handler may need.
  OZ_ASSERT(!differs);
}

short OzOperationDefaultBehaviour::get_actual_flavour(OzString const* package, int service) const
{
  OzCriticalDkbRegion const region;
  if (!knows(package))
    return 0;

  OzMap<int, short>& services = known_behaviours_.at(package);
  return services.find(service, nullptr) != 0 ? services.at(service) : short(0);
}

bool OzOperationDefaultBehaviour::apply_change(char const*) const
{
  return true;
}

bool OzOperationDefaultBehaviour::is_activated(OzVersionStamp const&)
{
  return true;
}

void OzOperationDefaultBehaviour::lock()
{
  OzCriticalDkbRegion const region;
  locked_ = true;
}

bool OzOperationDefaultBehaviour::is_locked() const
{
  OzCriticalDkbRegion const region;
  return locked_;
}

void OzOperationDefaultBehaviour::clear()
{
  OzCriticalDkbRegion const region;
  known_behaviours_.clear();
  locked_ = false;
}

void OzOperationDefaultBehaviour::get_packages(OzAutoPtr<OzIterator<OzString const*>>& packages) const
{
  OzIterator<OzString const*>* made = nullptr;
  {
    OzCriticalDkbRegion const region;
    made = new OzMapKeyIterator<OzString const*, OzMap<int, short>>(&known_behaviours_);
  }
  packages = made;
}

void OzOperationDefaultBehaviour::get_services(OzString const* package,
                                               OzAutoPtr<OzIterator<int>>& services) const
{
  bool known = false;
  {
    OzCriticalDkbRegion const region;
    known = knows(package);
  }

  OzIterator<int>* made = nullptr;
  {
    // The package may have been forgotten since.
    OzCriticalDkbRegion const region;
    if (known && knows(package))
      made = new OzMapKeyIterator<int, short>(&known_behaviours_.at(package));
    else
      made = new OzArrayIterator<int>(&no_services());
  }
  services = made;
}

OzOperationDefaultBehaviour::KnownBehaviours const&
OzOperationDefaultBehaviour::get_known_operation_behaviours() const
{
  OzCriticalDkbRegion const region;
  return known_behaviours_;
}

OzOperationDefaultBehaviour::KnownBehaviours& OzOperationDefaultBehaviour::get_known_operation_behaviours()
{
  OzCriticalDkbRegion const region;
  return known_behaviours_;
}

// The lock is held.
bool OzOperationDefaultBehaviour::knows(OzString const* package) const
{
  return known_behaviours_.find(package, nullptr) != 0;
}
