#include "oztrianglevec.h"

#include "ozassert.h"
#include "ozjournal.h"

#include <cmath>
#include <type_traits>

// Indexing goes over the components as over an array.
static_assert(std::is_standard_layout_v<OzTriangleVec> && sizeof(OzTriangleVec) == 3 * sizeof(double),
              "the components must be adjacent");

namespace
{
constexpr double LARGEST_SUM = 1e-12;
constexpr double ONE_BY_ROOT_3 = 0.5773502691896257;
} // namespace

OzTriangleVec::OzTriangleVec(double du, double dv, double dw)
  : du_(du)
  , dv_(dv)
  , dw_(dw)
{
  OZ_ASSERT(sums_to_zero());
  if (!sums_to_zero())
    du_ = dv_ = dw_ = 0.0;
}

OzTriangleVec::OzTriangleVec(double const* components)
  : du_(components[0])
  , dv_(components[1])
  , dw_(components[2])
{
  OZ_ASSERT(sums_to_zero());
  if (!sums_to_zero())
    du_ = dv_ = dw_ = 0.0;
}

double const& OzTriangleVec::operator[](int index) const
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 3);
  return as_array()[index];
}

OzTriangleVec OzTriangleVec::operator+(OzTriangleVec const& other) const
{
  return OzTriangleVec(du_ + other.du_, dv_ + other.dv_, dw_ + other.dw_);
}

OzTriangleVec OzTriangleVec::operator-(OzTriangleVec const& other) const
{
  return OzTriangleVec(du_ - other.du_, dv_ - other.dv_, dw_ - other.dw_);
}

OzTriangleVec OzTriangleVec::operator-() const
{
  return OzTriangleVec(-du_, -dv_, -dw_);
}

OzTriangleVec OzTriangleVec::operator*(double factor) const
{
  return OzTriangleVec(du_ * factor, dv_ * factor, dw_ * factor);
}

OzTriangleVec OzTriangleVec::reverse() const
{
  return -*this;
}

OzTriangleVec OzTriangleVec::ortho() const
{
  return OzTriangleVec((dw_ - dv_) * ONE_BY_ROOT_3, (du_ - dw_) * ONE_BY_ROOT_3, (dv_ - du_) * ONE_BY_ROOT_3);
}

OzTriangleVec OzTriangleVec::turn(double angle) const
{
  return *this * std::cos(angle) + ortho() * std::sin(angle);
}

void OzTriangleVec::debug(OzJournal& journal, OzDebug level, bool, int indent) const
{
  if (level < OZ_DEBUG_CONTENTS)
    return;

  Oz_DebugIndentation(journal, indent);
  journal << "OzTriangleVec( " << du_ << ", " << dv_ << ", " << dw_ << " )" << ozEndExpr;
}

OzJournal& operator<<(OzJournal& journal, OzTriangleVec const& vector)
{
  return journal << "OzTriangleVec( " << vector.du() << ", " << vector.dv() << ", " << vector.dw() << ")";
}

bool OzTriangleVec::sums_to_zero() const
{
  return std::fabs(du_ + dv_ + dw_) < LARGEST_SUM;
}
