#include "oztrianglepar.h"

#include "ozassert.h"
#include "ozjournal.h"

#include <type_traits>

// Indexing goes over the components as over an array.
static_assert(std::is_standard_layout_v<OzTrianglePar> && sizeof(OzTrianglePar) == 3 * sizeof(double),
              "the components must be adjacent");

namespace
{
constexpr double LEAST_SUM = 1e-12;
} // namespace

OzTrianglePar::OzTrianglePar(double u, double v, double w)
  : u_(u)
  , v_(v)
  , w_(w)
{
  OZ_ASSERT(has_proportions());
  normalize();
}

OzTrianglePar::OzTrianglePar(double const* proportions)
  : u_(proportions[0])
  , v_(proportions[1])
  , w_(proportions[2])
{
  OZ_ASSERT(has_proportions());
  normalize();
}

double const& OzTrianglePar::operator[](int index) const
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 3);
  return as_array()[index];
}

OzTrianglePar OzTrianglePar::operator+(OzTriangleVec const& step) const
{
  return OzTrianglePar(u_ + step.du(), v_ + step.dv(), w_ + step.dw());
}

OzTrianglePar OzTrianglePar::operator-(OzTriangleVec const& step) const
{
  return OzTrianglePar(u_ - step.du(), v_ - step.dv(), w_ - step.dw());
}

OzTriangleVec OzTrianglePar::operator-(OzTrianglePar const& other) const
{
  return OzTriangleVec(u_ - other.u_, v_ - other.v_, w_ - other.w_);
}

void OzTrianglePar::debug(OzJournal& journal, OzDebug level, bool, int indent) const
{
  if (level < OZ_DEBUG_CONTENTS)
    return;

  Oz_DebugIndentation(journal, indent);
  journal << "OzTrianglePar( " << u_ << ", " << v_ << ", " << w_ << ")" << ozEndExpr;
}

OzJournal& operator<<(OzJournal& journal, OzTrianglePar const& position)
{
  return journal << "OzTrianglePar( " << position.u() << ", " << position.v() << ", " << position.w() << ")";
}

bool OzTrianglePar::has_proportions() const
{
  return u_ + v_ + w_ > LEAST_SUM;
}

void OzTrianglePar::normalize()
{
  if (!has_proportions())
  {
    *this = OzTrianglePar();
    return;
  }

  double const sum = u_ + v_ + w_;
  u_ /= sum;
  v_ /= sum;
  w_ /= sum;
}
