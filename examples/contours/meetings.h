#ifndef CONTOURS_MEETINGS_H
#define CONTOURS_MEETINGS_H

#include "edge.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace contours
{

/// Where the ends of edges meet, by number of the end: ends at one place have the same value, the number of one of
/// them. Rings and doubles have ends that meet nothing, with the value NO_PLACE.
using Places = std::vector<std::size_t>;
constexpr std::size_t NO_PLACE = static_cast<std::size_t>(-1);

/// Enters the places at which the ends of `layer_edges` meet; ends of different layers do not. `places` has room for
/// the ends of all `edges`.
void find_places(std::vector<Edge> const& edges, std::vector<std::size_t> const& layer_edges,
                 double tolerance, Places& places);

/// The edges other than doubles in clusters that touch, directly or over others.
std::vector<std::vector<std::size_t>> find_clusters(std::vector<Edge> const& edges, Places const& places);

/// A place where more than two ends meet, so that there is a choice of what follows what.
struct Branch
{
  Point at;
  std::vector<std::size_t> entities; ///< whose ends meet, in order, each once
  std::vector<std::pair<std::size_t, std::size_t>>
      joined; ///< entities that follow each other in a contour here
};

/// The branches among `places`, in order of the lowest edge that has an end there.
///
/// An edge that begins and ends at one place only because it is shorter than the tolerance makes no branch.
/// `partners` has for each end the end that it was joined with, or NO_PLACE.
std::vector<Branch> find_branches(std::vector<Edge> const& edges, Places const& places,
                                  std::vector<std::size_t> const& partners);

} // namespace contours

#endif
