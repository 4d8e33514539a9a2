#ifndef OZOPERATIONDEFAULTBEHAVIOUR_H
#define OZOPERATIONDEFAULTBEHAVIOUR_H

#include "ozexport.h"
#include "ozmap.h"
#include "ozoperationbehaviour.h"

/// A behaviour that keeps, for each package and service, the first flavour that is proposed, until it is
/// cleared. All changes and modifications apply.
///
/// So an operation that proposes its newest flavour gets it, unless somebody has recorded an older one
/// before. To have operations behave as they did, record the flavours of that time first and then lock: a
/// service that is unknown to a locked behaviour gets flavour 0, which says that it was not recorded.
///
/// Ownership: the strings that name packages are not owned, and outlive their entries.
/// Threads: all operations may be called on any thread; each takes the global lock briefly, and
/// `set_best_flavour` twice, so that a `lock` in between comes too late for it. The cursors and the map that
/// are handed out are used without the lock, while no other thread records, clears or assigns.
/// Reports: proposing another flavour than the one that is recorded, which then stays. The report is made
/// when the lock is free again.
/// Cost: two searches, one in the map of packages and one in the map of services.
class OZ_EXPORT OzOperationDefaultBehaviour : public OzOperationBehaviour
{
public:
  OzOperationDefaultBehaviour();
  /// Copies the flavours, and whether they are locked.
  OzOperationDefaultBehaviour(OzOperationDefaultBehaviour const& other);
  OzOperationDefaultBehaviour& operator=(OzOperationDefaultBehaviour const& other);

  /// Takes over from any behaviour which packages it has and whether it is locked, but no flavours: each of
  /// its packages gets one service, the first one of its first package, with flavour 0. Clients who want the
  /// flavours copy from an OzOperationDefaultBehaviour, as such.
  explicit OzOperationDefaultBehaviour(OzOperationBehaviour const& other);
  OzOperationDefaultBehaviour& operator=(OzOperationBehaviour const& other);

  ~OzOperationDefaultBehaviour() override;

  /// Records `flavour` for a pair that has none. A recorded flavour stays, and if it differs, that is
  /// reported. While the behaviour is locked nothing is recorded and nothing reported.
  void set_best_flavour(OzString const* package, int service, short flavour) override;
  /// The recorded flavour, or 0.
  short get_actual_flavour(OzString const* package, int service) const override;

  /// True for every change, null included.
  bool apply_change(char const* change) const override;
  /// True for every level.
  bool is_activated(OzVersionStamp const& stamp) override;

  void lock() override;
  bool is_locked() const override;
  void clear() override;

  // Packages come in the order of their addresses, services in that of their numbers. An unknown package has
  // an empty sequence of services.
  void get_packages(OzAutoPtr<OzIterator<OzString const*>>& packages) const override;
  void get_services(OzString const* package, OzAutoPtr<OzIterator<int>>& services) const override;

protected:
  typedef OzMap<OzString const*, OzMap<int, short>> KnownBehaviours;

  /// Waits until no other thread has the lock, and hands out the map, which is then used without it.
  KnownBehaviours const& get_known_operation_behaviours() const;
  KnownBehaviours& get_known_operation_behaviours();

private:
  bool knows(OzString const* package) const;
  void copy(OzOperationDefaultBehaviour const& other);

  bool locked_; // guarded by dkb_critical_mutex
  // From package to service to flavour; guarded by dkb_critical_mutex. Mutable, since the searches of a map
  // are not const.
  mutable KnownBehaviours known_behaviours_;
};

#endif
