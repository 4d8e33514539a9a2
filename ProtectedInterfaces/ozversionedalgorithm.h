#ifndef OZVERSIONEDALGORITHM_H
#define OZVERSIONEDALGORITHM_H

#include "ozexport.h"

class OzOperationBehaviour;
class OzString;

/// A level of the software at which a modification was made: on the trunk, on a branch that left the trunk,
/// or on a line of fixes that left the branch.
///
/// A trunk level has a trunk version alone; a branch level also says which branch (`niveau`) and how far
/// along it (`version`); a fix level says the same of the line of fixes. The niveaus of real branches and
/// lines of fixes count from 1.
///
/// Threads: as a plain value.
class OZ_EXPORT OzVersionStamp
{
public:
  // By these the packed numbers of the constructor are split.
  static constexpr short bl_base = 100;
  static constexpr short fl_base = 16;

  /// No level at all: all fields are 0. It contains nothing.
  OzVersionStamp();
  /// `branch` is niveau * bl_base + version, and `fix` is niveau * fl_base + version. A negative number is
  /// split as division and remainder split it, toward 0.
  OzVersionStamp(int trunk, short branch, short fix);
  OzVersionStamp(OzVersionStamp const&) = default;
  OzVersionStamp(OzVersionStamp&&) = default;
  OzVersionStamp& operator=(OzVersionStamp const& other);
  OzVersionStamp& operator=(OzVersionStamp&& other);

  int get_trunk_version();
  short get_branch_niveau();
  short get_branch_version();
  short get_fdpinpoint_niveau();
  short get_fdpinpoint_version();

  /// Whether software of this level contains the modification that was made at the level `other`. That is no
  /// order of numbers: levels form a tree.
  ///
  /// - A trunk level is contained from its version on, in branches and fixes that left there too.
  /// - A branch level is contained only on its own branch of the same trunk version. A later trunk does not
  ///   contain it, since nothing says that the modification ever reached the trunk.
  /// - A fix level is contained only on its own line of fixes of the same version of that branch.
  ///
  /// A level without a positive trunk version contains nothing, itself included. A level with a branch
  /// version but without a positive branch niveau is contained nowhere, and so is a fix without a positive
  /// niveau.
  bool operator>=(OzVersionStamp const& other);

protected:
  bool is_active();

private:
  int trunk_version;
  short branch_niveau;
  short branch_version;
  short fdpinpoint_niveau;
  short fdpinpoint_version;
};

/// An algorithm that obeys an operation behaviour: it keeps the behaviour that it was made with and asks that
/// one for its flavours.
///
/// Ownership: the behaviour is not owned and outlives the algorithm.
/// Threads: as the behaviour; the algorithm adds no state of its own.
/// Reports: every question without a behaviour, which is then answered as each operation says; and every call
/// of `apply_change`, with a behaviour or without.
class OZ_EXPORT OzVersionedAlgorithm
{
public:
  /// `behaviour` may be null.
  explicit OzVersionedAlgorithm(OzOperationBehaviour* behaviour);
  virtual ~OzVersionedAlgorithm();

  OzOperationBehaviour* get_operation_behaviour() const;

  /// Does nothing without a behaviour.
  void set_best_flavour(OzString const* package, int service, short flavour) const;
  /// 0 without a behaviour.
  short get_actual_flavour(OzString const* package, int service) const;
  /// 0 without a behaviour.
  short determine_flavour_to_apply(OzString const* package, int service, short flavour) const;

  /// True without a behaviour. Each call is reported once, before the behaviour is asked.
  bool apply_change(char const* change) const;

protected:
  // A copy obeys the same behaviour.
  OzVersionedAlgorithm(OzVersionedAlgorithm const& other);
  OzVersionedAlgorithm& operator=(OzVersionedAlgorithm const& other);

private:
  OzOperationBehaviour* behaviour_; // not owned, may be null
};

/// Asks behaviours about modifications.
class OZ_EXPORT OzVersioning
{
public:
  /// Whether the modification made at the level `stamp` is active under `behaviour`; true if that is null.
  static bool active_modification(OzOperationBehaviour* behaviour, OzVersionStamp const& stamp);
};

#endif
