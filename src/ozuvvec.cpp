#include "ozuvvec.h"

#include "ozassert.h"
#include "ozjournal.h"

#include <cmath>
#include <type_traits>

// Indexing goes over the components as over an array.
static_assert(std::is_standard_layout_v<OzUVVec> && sizeof(OzUVVec) == 2 * sizeof(double),
              "the components must be adjacent");

double& OzUVVec::operator[](int index)
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 2);
  return reinterpret_cast<double*>(this)[index];
}

double const& OzUVVec::operator[](int index) const
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 2);
  return as_array()[index];
}

OzUVVec& OzUVVec::operator+=(OzUVVec const& other)
{
  du_ += other.du_;
  dv_ += other.dv_;
  return *this;
}

OzUVVec& OzUVVec::operator-=(OzUVVec const& other)
{
  du_ -= other.du_;
  dv_ -= other.dv_;
  return *this;
}

OzUVVec& OzUVVec::operator*=(double factor)
{
  du_ *= factor;
  dv_ *= factor;
  return *this;
}

OzUVVec& OzUVVec::operator/=(double divisor)
{
  du_ /= divisor;
  dv_ /= divisor;
  return *this;
}

double OzUVVec::length() const
{
  return std::sqrt(*this % *this);
}

void OzUVVec::normalize()
{
  bool const long_enough = *this % *this >= 1e-40; // false where a component is no number
  OZ_ASSERT(long_enough);
  if (!long_enough)
    return;

  double const old_length = length();
  du_ /= old_length;
  dv_ /= old_length;
}

double OzUVVec::angle(OzUVVec const& other) const
{
  if (numerical_zero() || other.numerical_zero())
    return 0.0;
  return std::atan2(*this * other, *this % other);
}

OzUVVec OzUVVec::turn(double angle) const
{
  double const cosine = std::cos(angle);
  double const sine = std::sin(angle);
  return OzUVVec(du_ * cosine - dv_ * sine, du_ * sine + dv_ * cosine);
}

void OzUVVec::debug(OzJournal& journal, OzDebug level, bool, int indent) const
{
  if (level < OZ_DEBUG_CONTENTS)
    return;

  Oz_DebugIndentation(journal, indent);
  journal << "OzUVVec  ( " << du_ << ", " << dv_ << " )" << ozEndExpr;
}

OzJournal& operator<<(OzJournal& journal, OzUVVec const& vector)
{
  return journal << "OzUVVec( " << vector.du() << ", " << vector.dv() << ")";
}
