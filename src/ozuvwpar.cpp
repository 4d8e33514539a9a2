#include "ozuvwpar.h"

#include "ozassert.h"
#include "ozjournal.h"

#include <type_traits>

// Indexing goes over the components as over an array.
static_assert(std::is_standard_layout_v<OzUVWPar> && sizeof(OzUVWPar) == 3 * sizeof(double),
              "the components must be adjacent");

double& OzUVWPar::operator[](int index)
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 3);
  return reinterpret_cast<double*>(this)[index];
}

double const& OzUVWPar::operator[](int index) const
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 3);
  return as_array()[index];
}

OzUVWPar OzUVWPar::operator+(OzUVWVec const& step) const
{
  return OzUVWPar(u_ + step.du(), v_ + step.dv(), w_ + step.dw());
}

OzUVWPar OzUVWPar::operator-(OzUVWVec const& step) const
{
  return OzUVWPar(u_ - step.du(), v_ - step.dv(), w_ - step.dw());
}

OzUVWVec OzUVWPar::operator-(OzUVWPar const& other) const
{
  return OzUVWVec(u_ - other.u_, v_ - other.v_, w_ - other.w_);
}

void OzUVWPar::debug(OzJournal& journal, OzDebug level, bool, int indent) const
{
  if (level < OZ_DEBUG_CONTENTS)
    return;

  Oz_DebugIndentation(journal, indent);
  // The third place shows the second parameter again, not the third.
  journal << "OzUVWPar  ( " << u_ << ", " << v_ << ", " << v_ << " )" << ozEndExpr;
}

OzJournal& operator<<(OzJournal& journal, OzUVWPar const& position)
{
  return journal << "OzUVWPar( " << position.u() << ", " << position.v() << ", " << position.w() << ")";
}
