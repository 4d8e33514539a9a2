#include "duplicates.h"

#include "ends.h"
#include "point_grid.h"

#include <algorithm>
#include <cmath>

namespace contours
{

namespace
{

/// The part of a curve's length by which its double may lie off.
constexpr double LENGTH_PART = 0.05;

/// So many curves are looked at for each one. More than that have an end in the same few cells only where the
/// tolerance is far too long for the drawing, and then the square of them must not be the price.
constexpr std::size_t MOST_CANDIDATES = 1000;

bool same_place(Curve const& a, Curve const& b, double tolerance)
{
  if (a.is_arc() != b.is_arc() || is_ring(a) != is_ring(b))
    return false;
  double const bound = std::min(tolerance, LENGTH_PART * a.length());
  auto const near = [bound](Point p, Point q) { return distance(p, q) <= bound; };
  if (is_ring(a))
    return near(a.center, b.center) && std::abs(a.radius - b.radius) <= bound;
  bool const ends =
      (near(a.start, b.start) && near(a.end, b.end)) || (near(a.start, b.end) && near(a.end, b.start));
  return ends && near(a.middle(), b.middle());
}

std::size_t count(std::vector<std::vector<std::size_t> const*> const& cells)
{
  std::size_t numbers = 0;
  for (std::vector<std::size_t> const* const cell : cells)
    numbers += cell->size();
  return numbers;
}

/// Curves that were kept, found by where they begin and end.
class KeptCurves
{
public:
  KeptCurves(std::vector<Curve> const& all, double join_tolerance)
    : curves(all)
    , tolerance(join_tolerance)
    , grid(join_tolerance)
  {
  }

  void add(std::size_t number)
  {
    Curve const& curve = curves[number];
    if (is_ring(curve))
    {
      // Equal circles may begin anywhere. Their lowest points are as near as the circles are.
      grid.add(lowest_point(curve), number);
      return;
    }
    grid.add(curve.start, number);
    grid.add(curve.end, number);
  }

  /// The first kept curve in the place of `number`; `number` if there is none.
  std::size_t find(std::size_t number) const
  {
    Curve const& curve = curves[number];
    auto cells = grid.near(is_ring(curve) ? lowest_point(curve) : curve.start, 2);
    if (!is_ring(curve))
    {
      // Both ends must be near. Where many curves meet at one of them, few do at the other.
      auto at_end = grid.near(curve.end, 2);
      if (count(at_end) < count(cells))
        cells.swap(at_end);
    }

    std::size_t first = number;
    std::size_t candidates = 0;
    for (std::vector<std::size_t> const* const cell : cells)
      for (std::size_t const other : *cell)
        if (candidates++ < MOST_CANDIDATES && other < first && same_place(curves[other], curve, tolerance))
          first = other;
    return first;
  }

private:
  static Point lowest_point(Curve const& circle)
  {
    return {circle.center.x, circle.center.y - circle.radius};
  }

  std::vector<Curve> const& curves;
  double tolerance;
  PointGrid grid;
};

} // namespace

std::vector<std::size_t> first_in_place(std::vector<Curve> const& curves, double tolerance)
{
  std::vector<std::size_t> first(curves.size());
  KeptCurves kept(curves, tolerance);
  for (std::size_t i = 0; i < curves.size(); ++i)
  {
    first[i] = kept.find(i);
    if (first[i] == i)
      kept.add(i);
  }
  return first;
}

} // namespace contours
