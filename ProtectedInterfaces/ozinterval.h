#ifndef OZINTERVAL_H
#define OZINTERVAL_H

#include "ozassert.h"

/// A closed range of numbers, such as the range of a curve's parameter.
///
/// An interval whose start lies above its end is empty. Nothing puts the ends in order: OzInterval(3, 1) stays
/// as it is, empty, and differs from the default value (1, 0), which is empty too. Ends may be infinite. Where
/// an end is not a number the interval is not empty, and no number lies in it.
///
/// A value without virtual functions: two adjacent numbers, the start first.
/// Reports: an index other than 0 and 1, which is then used all the same.
/// Cost: everything is inline.
class OZ_EXPORT OzInterval
{
public:
  /// (1, 0), the empty interval.
  OzInterval();
  /// The point `x`. For the literal 0 write OzInterval(0.0): 0 could be a null pointer as well.
  OzInterval(double x);
  OzInterval(double start, double end);
  /// Reads the start and the end.
  explicit OzInterval(double const* ends);
  OzInterval(OzInterval const&) = default;
  OzInterval& operator=(OzInterval const&) = default;
  ~OzInterval() = default;

  /// Whether both ends are the same numbers. So two empty intervals may differ.
  bool operator==(OzInterval const& other) const;

  /// The start (0) or the end (1). Any other index is reported, and then what lies there in memory is used.
  double& operator[](int index);
  double const& operator[](int index) const;

  double start() const { return start_; }
  double end() const { return end_; }
  void set_start(double start) { start_ = start; }
  void set_end(double end) { end_ = end; }

  bool is_empty() const { return start_ > end_; }
  /// 0 if empty.
  double length() const;
  /// Half the sum of the ends, also if empty.
  double middle() const { return (start_ + end_) * 0.5; }

  /// Both ends belong to the interval.
  bool contains(double x) const;
  /// A non-empty interval contains every empty one; an empty interval contains none.
  bool contains(OzInterval const& other) const;

  /// Whether there is a number in both. So intervals that touch overlap, and an empty one overlaps nothing.
  bool overlapping(OzInterval const& other) const;
  /// Whether the gap between both is at most `tolerance`. One of 0 or below asks for a common number.
  bool overlapping(OzInterval const& other, double tolerance) const;

  /// Moves the nearer end out to `x`, if `x` lies outside. An empty interval becomes the point `x`.
  OzInterval& include(double x);
  /// Becomes the smallest interval that holds both. An empty argument changes nothing.
  OzInterval& combine(OzInterval const& other);

  /// The numbers in both: from the greater start to the lesser end, whether or not the intervals are empty.
  /// For intervals without a common number the result is empty.
  OzInterval const intersect(OzInterval const& other) const;
  OzInterval& intersect_with(OzInterval const& other);

private:
  double start_;
  double end_;
};

#include "ozinterval_i.h"

#endif
