#ifndef CONTOURS_NEAREST_H
#define CONTOURS_NEAREST_H

#include "curve.h"

#include <cstddef>
#include <vector>

namespace contours
{

/// For each point the number of the nearest other one; of equally near ones the lowest, unless they lie on the point
/// itself. The only point there is gets its own number. Costs about n log n, however the points lie.
std::vector<std::size_t> nearest_others(std::vector<Point> const& points);

} // namespace contours

#endif
