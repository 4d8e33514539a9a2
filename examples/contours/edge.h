#ifndef CONTOURS_EDGE_H
#define CONTOURS_EDGE_H

#include "curve.h"

#include <cstddef>

namespace contours
{

// Entities, edges and contours are known by their places in the vectors that hold them. Entities stand in the order
// in which results name them, edges in that of their entities.

/// One curve of an entity.
struct Edge
{
  std::size_t entity;
  Curve curve;
  std::size_t original; ///< the edge of which this is a double, or this edge itself

  Curve directed(bool reversed) const { return reversed ? curve.reversed() : curve; }
};

/// The two ends of an edge are numbered across all edges.
inline std::size_t start_of(std::size_t edge)
{
  return 2 * edge;
}
inline std::size_t end_of(std::size_t edge)
{
  return 2 * edge + 1;
}
inline std::size_t edge_of(std::size_t end)
{
  return end / 2;
}

} // namespace contours

#endif
