#include "ozuvpar.h"

#include "ozassert.h"
#include "ozjournal.h"

#include <type_traits>

// Indexing goes over the components as over an array.
static_assert(std::is_standard_layout_v<OzUVPar> && sizeof(OzUVPar) == 2 * sizeof(double),
              "the components must be adjacent");

double& OzUVPar::operator[](int index)
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 2);
  return reinterpret_cast<double*>(this)[index];
}

double const& OzUVPar::operator[](int index) const
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 2);
  return as_array()[index];
}

OzUVPar& OzUVPar::operator+=(OzUVPar const& other)
{
  u_ += other.u_;
  v_ += other.v_;
  return *this;
}

OzUVPar& OzUVPar::operator+=(OzUVVec const& step)
{
  u_ += step.du();
  v_ += step.dv();
  return *this;
}

OzUVPar& OzUVPar::operator-=(OzUVPar const& other)
{
  u_ -= other.u_;
  v_ -= other.v_;
  return *this;
}

OzUVPar& OzUVPar::operator-=(OzUVVec const& step)
{
  u_ -= step.du();
  v_ -= step.dv();
  return *this;
}

OzUVPar& OzUVPar::operator*=(double factor)
{
  u_ *= factor;
  v_ *= factor;
  return *this;
}

void OzUVPar::debug(OzJournal& journal, OzDebug level, bool, int indent) const
{
  if (level < OZ_DEBUG_CONTENTS)
    return;

  Oz_DebugIndentation(journal, indent);
  journal << "OzUVPar  ( " << u_ << ", " << v_ << " )" << ozEndExpr;
}

OzJournal& operator<<(OzJournal& journal, OzUVPar const& position)
{
  return journal << "OzUVPar( " << position.u() << ", " << position.v() << ")";
}
