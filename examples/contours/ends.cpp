#include "ends.h"

#include "point_grid.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace contours
{

DisjointSets::DisjointSets(std::size_t size)
  : parents(size)
{
  std::iota(parents.begin(), parents.end(), std::size_t(0));
}

std::size_t DisjointSets::find(std::size_t i)
{
  while (parents[i] != i)
  {
    parents[i] = parents[parents[i]];
    i = parents[i];
  }
  return i;
}

void DisjointSets::unite(std::size_t a, std::size_t b)
{
  std::size_t const first = find(a);
  std::size_t const second = find(b);
  parents[std::max(first, second)] = std::min(first, second);
}

std::vector<std::size_t> places_of(std::vector<Point> const& points, double tolerance)
{
  // Cells so small that all points in one are within the tolerance of each other. A crowd in one cell, as where a
  // thousand lines meet, then costs one step for each of its points. The cells within the tolerance are two away.
  PointGrid grid(tolerance * 0.7);
  DisjointSets sets(points.size());
  for (std::size_t i = 0; i < points.size(); ++i)
  {
    for (std::vector<std::size_t> const* const cell : grid.near(points[i], 2))
    {
      if (sets.find(cell->front()) == sets.find(i))
        continue;
      auto const within = [&](std::size_t other) { return distance(points[i], points[other]) <= tolerance; };
      if (within(cell->front()) || std::any_of(cell->begin() + 1, cell->end(), within))
        sets.unite(i, cell->front());
    }
    grid.add(points[i], i);
  }

  std::vector<std::size_t> places(points.size());
  for (std::size_t i = 0; i < points.size(); ++i)
    places[i] = sets.find(i);
  return places;
}

bool is_ring(Curve const& curve)
{
  double const half_turn = std::acos(-1.0);
  return curve.is_arc() && std::abs(curve.sweep) > half_turn && distance(curve.start, curve.end) <= RING_GAP;
}

bool is_closed(double gap, double length, double tolerance)
{
  return gap <= tolerance && gap <= length / 2.0;
}

} // namespace contours
