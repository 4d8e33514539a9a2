#ifndef OZINTERVAL_I_H
#define OZINTERVAL_I_H

#include "ozinterval.h"

#include <type_traits>

// Indexing goes over both ends as over an array.
static_assert(std::is_standard_layout_v<OzInterval> && sizeof(OzInterval) == 2 * sizeof(double),
              "the ends must be adjacent");

inline OzInterval::OzInterval()
  : start_(1.0)
  , end_(0.0)
{
}

inline OzInterval::OzInterval(double x)
  : start_(x)
  , end_(x)
{
}

inline OzInterval::OzInterval(double start, double end)
  : start_(start)
  , end_(end)
{
}

inline OzInterval::OzInterval(double const* ends)
  : start_(ends[0])
  , end_(ends[1])
{
}

inline bool OzInterval::operator==(OzInterval const& other) const
{
  return start_ == other.start_ && end_ == other.end_;
}

inline double& OzInterval::operator[](int index)
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 2);
  return reinterpret_cast<double*>(this)[index];
}

inline double const& OzInterval::operator[](int index) const
{
  OZ_ASSERT(index >= 0);
  OZ_ASSERT(index < 2);
  return reinterpret_cast<double const*>(this)[index];
}

inline double OzInterval::length() const
{
  return is_empty() ? 0.0 : end_ - start_;
}

inline bool OzInterval::contains(double x) const
{
  return x >= start_ && end_ >= x;
}

inline bool OzInterval::contains(OzInterval const& other) const
{
  if (is_empty())
    return false;
  return other.is_empty() || (other.start_ >= start_ && end_ >= other.end_);
}

inline bool OzInterval::overlapping(OzInterval const& other) const
{
  return !is_empty() && !other.is_empty() && other.end_ >= start_ && end_ >= other.start_;
}

inline bool OzInterval::overlapping(OzInterval const& other, double tolerance) const
{
  if (tolerance <= 0.0)
    return overlapping(other);
  return !is_empty() && !other.is_empty() && tolerance >= start_ - other.end_ &&
         tolerance >= other.start_ - end_;
}

inline OzInterval& OzInterval::include(double x)
{
  if (is_empty())
    start_ = end_ = x;
  else if (x < start_)
    start_ = x;
  else if (x > end_)
    end_ = x;
  return *this;
}

inline OzInterval& OzInterval::combine(OzInterval const& other)
{
  if (other.is_empty())
    return *this;
  if (is_empty())
    return *this = other;

  if (other.start_ < start_)
    start_ = other.start_;
  if (other.end_ > end_)
    end_ = other.end_;
  return *this;
}

inline OzInterval const OzInterval::intersect(OzInterval const& other) const
{
  OzInterval common(*this);
  return common.intersect_with(other);
}

inline OzInterval& OzInterval::intersect_with(OzInterval const& other)
{
  if (other.start_ > start_)
    start_ = other.start_;
  if (other.end_ < end_)
    end_ = other.end_;
  return *this;
}

#endif
