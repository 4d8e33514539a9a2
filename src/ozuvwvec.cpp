#include "ozuvwvec.h"

#include "ozassert.h"
#include "ozjournal.h"

#include <cmath>
#include <type_traits>

// Indexing goes over the components as over an array.
static_assert(std::is_standard_layout_v<OzUVWVec> && sizeof(OzUVWVec) == 3 * sizeof(double),
              "the components must be adjacent");

double& OzUVWVec::operator[](int index)
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 3);
  return reinterpret_cast<double*>(this)[index];
}

double const& OzUVWVec::operator[](int index) const
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 3);
  return as_array()[index];
}

OzUVWVec OzUVWVec::operator+(OzUVWVec const& other) const
{
  return OzUVWVec(du_ + other.du_, dv_ + other.dv_, dw_ + other.dw_);
}

OzUVWVec OzUVWVec::operator-(OzUVWVec const& other) const
{
  return OzUVWVec(du_ - other.du_, dv_ - other.dv_, dw_ - other.dw_);
}

OzUVWVec OzUVWVec::operator*(OzUVWVec const& other) const
{
  return OzUVWVec(dv_ * other.dw_ - dw_ * other.dv_, dw_ * other.du_ - du_ * other.dw_,
                  du_ * other.dv_ - dv_ * other.du_);
}

OzUVWVec& OzUVWVec::operator+=(OzUVWVec const& other)
{
  du_ += other.du_;
  dv_ += other.dv_;
  dw_ += other.dw_;
  return *this;
}

OzUVWVec& OzUVWVec::operator-=(OzUVWVec const& other)
{
  du_ -= other.du_;
  dv_ -= other.dv_;
  dw_ -= other.dw_;
  return *this;
}

double OzUVWVec::length() const
{
  return std::sqrt(*this % *this);
}

void OzUVWVec::normalize()
{
  bool const long_enough = *this % *this >= 1e-40; // false where a component is no number
  OZ_ASSERT(long_enough);
  if (!long_enough)
    return;

  double const old_length = length();
  du_ /= old_length;
  dv_ /= old_length;
  dw_ /= old_length;
}

void OzUVWVec::debug(OzJournal& journal, OzDebug level, bool, int indent) const
{
  if (level < OZ_DEBUG_CONTENTS)
    return;

  Oz_DebugIndentation(journal, indent);
  journal << "OzUVWVec  ( " << du_ << ", " << dv_ << ", " << dw_ << " )" << ozEndExpr;
}

OzJournal& operator<<(OzJournal& journal, OzUVWVec const& vector)
{
  return journal << "OzUVWVec( " << vector.du() << ", " << vector.dv() << ", " << vector.dw() << ")";
}
