#include "meetings.h"

#include "ends.h"

#include <algorithm>
#include <limits>
#include <map>

namespace contours
{

namespace
{

/// Whether an edge whose ends are at one place is there only because it is short.
bool is_short(Curve const& curve)
{
  return !is_closed(distance(curve.start, curve.end), curve.length(),
                    std::numeric_limits<double>::infinity());
}

std::map<std::size_t, std::vector<std::size_t>> ends_by_place(std::vector<Edge> const& edges,
                                                              Places const& places)
{
  std::map<std::size_t, std::vector<std::size_t>> ends;
  for (std::size_t edge = 0; edge < edges.size(); ++edge)
  {
    std::size_t const at_start = places[start_of(edge)];
    std::size_t const at_end = places[end_of(edge)];
    if (at_start == NO_PLACE || (at_start == at_end && is_short(edges[edge].curve)))
      continue;
    ends[at_start].push_back(start_of(edge));
    ends[at_end].push_back(end_of(edge));
  }
  return ends;
}

} // namespace

void find_places(std::vector<Edge> const& edges, std::vector<std::size_t> const& layer_edges,
                 double tolerance, Places& places)
{
  std::vector<Point> points;
  std::vector<std::size_t> ends;
  for (std::size_t const edge : layer_edges)
  {
    Curve const& curve = edges[edge].curve;
    if (is_ring(curve))
      continue;
    points.insert(points.end(), {curve.start, curve.end});
    ends.insert(ends.end(), {start_of(edge), end_of(edge)});
  }
  std::vector<std::size_t> const lowest = places_of(points, tolerance);
  for (std::size_t i = 0; i < ends.size(); ++i)
    places[ends[i]] = ends[lowest[i]];
}

std::vector<std::vector<std::size_t>> find_clusters(std::vector<Edge> const& edges, Places const& places)
{
  DisjointSets sets(edges.size());
  for (std::size_t end = 0; end < places.size(); ++end)
    if (places[end] != NO_PLACE)
      sets.unite(edge_of(end), edge_of(places[end]));

  std::map<std::size_t, std::vector<std::size_t>> by_lowest;
  for (std::size_t edge = 0; edge < edges.size(); ++edge)
    if (edges[edge].original == edge)
      by_lowest[sets.find(edge)].push_back(edge);
  std::vector<std::vector<std::size_t>> clusters;
  clusters.reserve(by_lowest.size());
  for (auto& [lowest, members] : by_lowest)
    clusters.push_back(std::move(members));
  return clusters;
}

std::vector<Branch> find_branches(std::vector<Edge> const& edges, Places const& places,
                                  std::vector<std::size_t> const& partners)
{
  std::vector<Branch> branches;
  for (auto const& [place, ends] : ends_by_place(edges, places))
  {
    if (ends.size() <= 2)
      continue;
    Branch branch;
    Curve const& lowest = edges[edge_of(ends.front())].curve;
    branch.at = ends.front() == start_of(edge_of(ends.front())) ? lowest.start : lowest.end;
    for (std::size_t const end : ends)
    {
      branch.entities.push_back(edges[edge_of(end)].entity);
      // Both ends of a pair are here; it is named once.
      if (partners[end] != NO_PLACE && end < partners[end])
        branch.joined.emplace_back(edges[edge_of(end)].entity, edges[edge_of(partners[end])].entity);
    }
    std::sort(branch.entities.begin(), branch.entities.end());
    branch.entities.erase(std::unique(branch.entities.begin(), branch.entities.end()), branch.entities.end());
    branches.push_back(std::move(branch));
  }
  return branches;
}

} // namespace contours
