#include "ozversionedalgorithm.h"

#include "ozassert.h"
#include "ozoperationbehaviour.h"

// The library has the constants as objects too, for clients that refer to them rather than to their values.
constexpr short OzVersionStamp::bl_base;
constexpr short OzVersionStamp::fl_base;

OzVersionStamp::OzVersionStamp()
  : OzVersionStamp(0, 0, 0)
{
}

OzVersionStamp::OzVersionStamp(int trunk, short branch, short fix)
  : trunk_version(trunk)
  , branch_niveau(static_cast<short>(branch / bl_base))
  , branch_version(static_cast<short>(branch % bl_base))
  , fdpinpoint_niveau(static_cast<short>(fix / fl_base))
  , fdpinpoint_version(static_cast<short>(fix % fl_base))
{
}

OzVersionStamp& OzVersionStamp::operator=(OzVersionStamp const& other) = default;

OzVersionStamp& OzVersionStamp::operator=(OzVersionStamp&& other) = default;

int OzVersionStamp::get_trunk_version()
{
  return trunk_version;
}

short OzVersionStamp::get_branch_niveau()
{
  return branch_niveau;
}

short OzVersionStamp::get_branch_version()
{
  return branch_version;
}

short OzVersionStamp::get_fdpinpoint_niveau()
{
  return fdpinpoint_niveau;
}

short OzVersionStamp::get_fdpinpoint_version()
{
  return fdpinpoint_version;
}

bool OzVersionStamp::operator>=(OzVersionStamp const& other)
{
  if (!is_active())
    return false;

  bool const other_has_fix = other.fdpinpoint_niveau != 0 || other.fdpinpoint_version != 0;
  bool const other_has_branch = other.branch_niveau != 0 || other.branch_version != 0;
  if (!other_has_branch && !other_has_fix)
    return trunk_version >= other.trunk_version;

  // Niveaus of real branches and lines of fixes are positive; where two are equal, one of them tells.
  if (branch_niveau <= 0 || branch_niveau != other.branch_niveau || trunk_version != other.trunk_version)
    return false;
  if (!other_has_fix)
    return branch_version >= other.branch_version;

  if (fdpinpoint_niveau <= 0 || fdpinpoint_niveau != other.fdpinpoint_niveau ||
      branch_version != other.branch_version)
    return false;
  return fdpinpoint_version >= other.fdpinpoint_version;
}

bool OzVersionStamp::is_active()
{
  return trunk_version > 0;
}

OzVersionedAlgorithm::OzVersionedAlgorithm(OzOperationBehaviour* behaviour)
  : behaviour_(behaviour)
{
}

OzVersionedAlgorithm::~OzVersionedAlgorithm() = default;

OzOperationBehaviour* OzVersionedAlgorithm::get_operation_behaviour() const
{
  return behaviour_;
}

void OzVersionedAlgorithm::set_best_flavour(OzString const* package, int service, short flavour) const
{
  OZ_ASSERT(behaviour_ != nullptr);
  if (behaviour_ != nullptr)
    behaviour_->set_best_flavour(package, service, flavour);
}

short OzVersionedAlgorithm::get_actual_flavour(OzString const* package, int service) const
{
  OZ_ASSERT(behaviour_ != nullptr);
  return behaviour_ != nullptr ? behaviour_->get_actual_flavour(package, service) : short(0);
}

short OzVersionedAlgorithm::determine_flavour_to_apply(OzString const* package, int service,
                                                       short flavour) const
{
  OZ_ASSERT(behaviour_ != nullptr);
  return behaviour_ != nullptr ? behaviour_->determine_flavour_to_apply(package, service, flavour) : short(0);
}

bool OzVersionedAlgorithm::apply_change(char const* change) const
{
  // Not a check of anything: whoever has a handler is told of each call, with a behaviour and without.
  OZ_ASSERT(false);
  return behaviour_ == nullptr || behaviour_->apply_change(change);
}

OzVersionedAlgorithm::OzVersionedAlgorithm(OzVersionedAlgorithm const& other) = default;

OzVersionedAlgorithm& OzVersionedAlgorithm::operator=(OzVersionedAlgorithm const& other) = default;

bool OzVersioning::active_modification(OzOperationBehaviour* behaviour, OzVersionStamp const& stamp)
{
  return behaviour == nullptr || behaviour->is_activated(stamp);
}
