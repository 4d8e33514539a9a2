#ifndef CONTOURS_ENDS_H
#define CONTOURS_ENDS_H

#include "curve.h"

#include <cstddef>
#include <vector>

namespace contours
{

/// Sets of numbers that grow together (union and find).
class DisjointSets
{
public:
  explicit DisjointSets(std::size_t size);

  /// The number that stands for the set of `i`: its lowest.
  std::size_t find(std::size_t i);
  void unite(std::size_t a, std::size_t b);

private:
  std::vector<std::size_t> parents; // a parent is never above its child
};

/// For each point the lowest number among those that it is connected with: points no farther apart than `tolerance`,
/// and those connected with these. The places where ends meet.
std::vector<std::size_t> places_of(std::vector<Point> const& points, double tolerance);

/// An edge whose ends lie this near to each other, in millimetres, while it is bent by more than half a turn, is a
/// ring of its own and joins nothing. It is the bound by which the edge sorter tells such edges.
constexpr double RING_GAP = 0.001;

bool is_ring(Curve const& curve);

/// Whether a run of this length, whose ends lie `gap` apart, has come back to where it started. A short run whose
/// ends are near each other only because it is short has not.
bool is_closed(double gap, double length, double tolerance);

} // namespace contours

#endif
