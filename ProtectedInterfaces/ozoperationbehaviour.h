#ifndef OZOPERATIONBEHAVIOUR_H
#define OZOPERATIONBEHAVIOUR_H

#include "ozexport.h"
#include "oziterator.h"
#include "ozrcobj.h"
#include "ozstring.h"

class OzVersionStamp;

/// Decides which flavour of an operation applies, so that an operation that was changed can still behave as
/// it did for a model that was made before.
///
/// A package is a set of operations, named by an OzString; a service is one operation within it; a flavour is
/// a numbered variant of how the service behaves. An operation asks `determine_flavour_to_apply` with the
/// best flavour that it knows, its newest, and behaves by the answer.
///
/// A package is identified by the address of its string, not by the text: two equal strings are two packages.
/// So a package has one OzString object for the life of the process. No string is owned, copied or read; null
/// is a package like any other.
///
/// The process has one current behaviour, which any operation finds by `get_instance`.
///
/// Ownership: a behaviour that is made current is not owned; whoever made it puts another in its place before
/// deleting it.
/// Threads: the statics may be called on any thread. A derived class says so of its own operations, and is
/// asked on whatever thread an operation runs.
class OZ_EXPORT OzOperationBehaviour
{
public:
  OzOperationBehaviour() = default;
  OzOperationBehaviour(OzOperationBehaviour const&) = default;
  OzOperationBehaviour& operator=(OzOperationBehaviour const&) = default;
  virtual ~OzOperationBehaviour();

  /// Proposes `flavour` as the one to apply. Whether it becomes that is for the behaviour to decide.
  virtual void set_best_flavour(OzString const* package, int service, short flavour) = 0;
  /// The flavour that applies; 0 if nobody has decided on one.
  virtual short get_actual_flavour(OzString const* package, int service) const = 0;
  /// Proposes `flavour` and returns the one that applies: `set_best_flavour`, then `get_actual_flavour`.
  virtual short determine_flavour_to_apply(OzString const* package, int service, short flavour);

  /// Whether the change with this name applies.
  virtual bool apply_change(char const* change) const = 0;
  /// Whether the modification that was made at this level applies.
  virtual bool is_activated(OzVersionStamp const& stamp) = 0;

  /// Makes the behaviour refuse proposals from now on.
  virtual void lock() = 0;
  virtual bool is_locked() const = 0;
  /// Forgets all flavours, and unlocks.
  virtual void clear() = 0;

  /// Hands out a cursor over the packages that have a flavour. What `packages` held is deleted. The cursor is
  /// for as long as the behaviour lives and nobody proposes to it or clears it.
  virtual void get_packages(OzAutoPtr<OzIterator<OzString const*>>& packages) const = 0;
  /// The same over the services of `package` that have a flavour.
  virtual void get_services(OzString const* package, OzAutoPtr<OzIterator<int>>& services) const = 0;

  // For derived classes to say more about themselves. Here both answer 0, and the library asks neither.
  virtual int is_a_lumdkb_op_behaviour() const;
  virtual int is_additional_level_active(int level) const;

  /// The current behaviour. As long as none has been set that is the default one, which is then made current.
  static OzOperationBehaviour* get_instance();
  /// Makes `behaviour` current. Null stands for the default one, which is cleared first, outside the lock.
  static void set_instance(OzOperationBehaviour* behaviour);
  /// The behaviour that is built in, an OzOperationDefaultBehaviour: always the same object, made when the
  /// library is loaded, and never destroyed. Takes no lock.
  static OzOperationBehaviour* get_default_behaviour();

  static OzOperationBehaviour* the_instance_; // may be null; guarded by dkb_critical_mutex
};

#endif
