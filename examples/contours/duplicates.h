#ifndef CONTOURS_DUPLICATES_H
#define CONTOURS_DUPLICATES_H

#include "curve.h"

#include <cstddef>
#include <vector>

namespace contours
{

/// For each curve the number of the first one that lies where it lies, in either direction: its own number, if it is
/// that first one. A curve and its double would otherwise be sorted into an empty ring.
///
/// Curves lie in the same place if they are of the same kind and their ends and middles are no farther apart than
/// `tolerance`, and no farther than a small part of their length: a long tolerance must not swallow short edges.
std::vector<std::size_t> first_in_place(std::vector<Curve> const& curves, double tolerance);

} // namespace contours

#endif
