#ifndef CONTOURS_CHAINS_H
#define CONTOURS_CHAINS_H

#include "curve.h"
#include "stop_flag.h"

#include <ozedgesorter.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace contours
{

/// An edge within a chain.
struct Link
{
  std::size_t edge;
  bool reversed;
};

/// Edges that follow each other end to start: a single edge before sorting, and a whole contour at the end.
struct Chain
{
  Point start;
  Point end;
  bool ring = false; ///< a single edge that is closed in itself; nothing joins it
  std::vector<Link> links;
};

using Strategy = OzEdgeSorter::OzSortStrategy;

/// Up to so many chains of one cluster are joined closest first, more by growing chains. Results depend on this number
/// where ends leave a choice, so it stays.
constexpr std::size_t MOST_CLOSEST_FIRST = 500;

/// Up to so many go to one sorter, which asks for the gap of every pair of ends.
constexpr std::size_t MOST_IN_ONE_SORTER = 2000;

/// Joins chains whose ends are no farther apart than `tolerance`. What can be joined depends on `tolerance` alone;
/// what is joined where there is a choice depends on the strategy and on where the chains lie, but not on their
/// order. Without a strategy the one is taken that the number of chains allows.
///
/// Once `stop` is set nothing is joined any more, so that this ends soon. The result is of no use then.
std::vector<Chain> join_chains(std::vector<Chain> const& chains, double tolerance,
                               std::optional<Strategy> strategy, StopFlag const& stop = {});

void reverse(Chain& chain);

} // namespace contours

#endif
