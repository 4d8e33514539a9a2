#include "contours.h"

#include "duplicates.h"
#include "ends.h"
#include "nearest.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace contours
{

namespace
{

Curve directed(Outcome const& outcome, Link link)
{
  return outcome.edges[link.edge].directed(link.reversed);
}

/// The edges of the chosen layers by layer, and the count of what is not cut there.
std::map<std::string, std::vector<std::size_t>> take_edges(Drawing const& drawing, LayerChoice const& layers,
                                                           Outcome& outcome)
{
  std::map<std::string, std::vector<std::size_t>> edges_of_layer;
  for (std::size_t i = 0; i < drawing.entities.size(); ++i)
  {
    Entity const& entity = drawing.entities[i];
    if (!layers.has(entity.layer))
      continue;
    if (entity.use != Use::CUT)
    {
      ++outcome.skipped[entity.type];
      outcome.not_supported += entity.use == Use::NOT_SUPPORTED ? 1 : 0;
      continue;
    }
    for (Curve const& curve : entity.curves)
    {
      edges_of_layer[entity.layer].push_back(outcome.edges.size());
      outcome.edges.push_back({i, curve, outcome.edges.size()});
    }
  }
  return edges_of_layer;
}

/// Notes which of `edges` lie on others, and takes these out.
void remove_duplicates(Outcome& outcome, std::vector<std::size_t>& edges, double tolerance)
{
  std::vector<Curve> curves;
  curves.reserve(edges.size());
  for (std::size_t const edge : edges)
    curves.push_back(outcome.edges[edge].curve);
  std::vector<std::size_t> const first = first_in_place(curves, tolerance);

  std::vector<std::size_t> kept;
  for (std::size_t i = 0; i < edges.size(); ++i)
  {
    outcome.edges[edges[i]].original = edges[first[i]];
    if (first[i] == i)
      kept.push_back(edges[i]);
  }
  edges.swap(kept);
}

/// One entry for each pair of entities, however many edges they share.
std::vector<Duplicate> duplicate_entities(std::vector<Edge> const& edges)
{
  std::set<std::pair<std::size_t, std::size_t>> pairs;
  std::set<std::size_t> with_edges_left;
  for (std::size_t i = 0; i < edges.size(); ++i)
  {
    if (edges[i].original == i)
      with_edges_left.insert(edges[i].entity);
    else
      pairs.insert({edges[i].entity, edges[edges[i].original].entity});
  }
  std::vector<Duplicate> duplicates;
  duplicates.reserve(pairs.size());
  for (auto const& [entity, of] : pairs)
    duplicates.push_back({entity, of, with_edges_left.count(entity) == 0});
  return duplicates;
}

Chain chain_of(Outcome const& outcome, std::size_t edge)
{
  Curve const& curve = outcome.edges[edge].curve;
  return {curve.start, curve.end, is_ring(curve), {{edge, false}}};
}

bool lower_edge(Link a, Link b)
{
  return a.edge < b.edge;
}

/// A closed contour starts with its lowest edge and runs in its direction, so that its description does not depend
/// on how it was joined.
void start_at_lowest_edge(Chain& chain)
{
  auto const lowest = std::min_element(chain.links.begin(), chain.links.end(), lower_edge);
  if (lowest->reversed)
  {
    reverse(chain);
    start_at_lowest_edge(chain);
    return;
  }
  std::rotate(chain.links.begin(), lowest, chain.links.end());
}

/// An open contour runs as most of its edges do, and where there is no majority, as its lowest edge does.
void run_with_majority(Chain& chain)
{
  auto const against =
      2 * std::count_if(chain.links.begin(), chain.links.end(), [](Link link) { return link.reversed; });
  auto const all = static_cast<std::ptrdiff_t>(chain.links.size());
  auto const lowest = std::min_element(chain.links.begin(), chain.links.end(), lower_edge);
  if (against > all || (against == all && lowest->reversed))
    reverse(chain);
}

Contour measure(Outcome const& outcome, Chain chain, std::string const& layer, double tolerance)
{
  Contour contour;
  contour.layer = layer;
  for (Link const link : chain.links)
    contour.length_mm += outcome.edges[link.edge].curve.length();
  contour.closed = is_closed(distance(chain.start, chain.end), contour.length_mm, tolerance);
  if (contour.closed)
    start_at_lowest_edge(chain);
  else
    run_with_majority(chain);
  contour.links = std::move(chain.links);
  contour.start = directed(outcome, contour.links.front()).start;
  contour.end = directed(outcome, contour.links.back()).end;

  // The ways across the gaps belong to the border of the area.
  Point const origin = contour.start;
  Point before = contour.closed ? contour.end : contour.start;
  double area = 0.0;
  for (Link const link : contour.links)
  {
    Curve const curve = directed(outcome, link);
    contour.max_gap_mm = std::max(contour.max_gap_mm, distance(before, curve.start));
    area += area_of_line(before, curve.start, origin) + curve.area(origin);
    before = curve.end;
  }
  if (contour.closed)
    contour.area_mm2 = std::abs(area);
  return contour;
}

/// Fills in how far the ends of the open contours of one layer are from each other.
void measure_openings(std::vector<Contour>& contours, std::vector<std::size_t> const& of_layer)
{
  std::vector<Point> ends;
  std::vector<std::size_t> owners;
  for (std::size_t const contour : of_layer)
  {
    if (contours[contour].closed)
      continue;
    ends.insert(ends.end(), {contours[contour].start, contours[contour].end});
    owners.push_back(contour);
  }
  std::vector<std::size_t> const nearest = nearest_others(ends);
  for (std::size_t end = 0; end < ends.size(); ++end)
  {
    Contour& contour = contours[owners[end / 2]];
    double const gap = distance(ends[end], ends[nearest[end]]);
    bool const at_start = end % 2 == 0;
    if (!at_start && gap <= contour.open_gap_mm)
      continue;
    contour.open_gap_mm = gap;
    contour.open_at = ends[end];
    contour.open_towards = owners[nearest[end] / 2];
  }
}

void count_used(Outcome& outcome, std::vector<std::size_t> const& kept, double tolerance)
{
  std::set<std::size_t> entities;
  for (std::size_t const edge : kept)
  {
    entities.insert(outcome.edges[edge].entity);
    double const length = outcome.edges[edge].curve.length();
    if (length >= tolerance)
      continue;
    ShortEdges& found = outcome.short_edges;
    if (found.count == 0 || length < outcome.edges[found.shortest].curve.length())
      found.shortest = edge;
    ++found.count;
  }
  outcome.entities_used += entities.size();
  outcome.edges_used += kept.size();
}

std::string const& layer_of(Outcome const& outcome, Drawing const& drawing,
                            std::vector<std::size_t> const& cluster)
{
  return drawing.entities[outcome.edges[cluster.front()].entity].layer;
}

std::vector<LayerClusters> count_clusters(Outcome const& outcome, Drawing const& drawing,
                                          std::vector<std::vector<std::size_t>> const& clusters)
{
  std::map<std::string, LayerClusters> counts;
  for (std::vector<std::size_t> const& cluster : clusters)
  {
    std::string const& layer = layer_of(outcome, drawing, cluster);
    LayerClusters& count = counts.emplace(layer, LayerClusters{layer, 0, 0}).first->second;
    ++count.clusters;
    count.largest = std::max(count.largest, cluster.size());
  }
  std::vector<LayerClusters> in_order;
  in_order.reserve(counts.size());
  for (auto const& [layer, count] : counts)
    in_order.push_back(count);
  return in_order;
}

/// For each end of an edge the end that follows it across a join, or NO_PLACE.
std::vector<std::size_t> find_partners(Outcome const& outcome)
{
  std::vector<std::size_t> partners(2 * outcome.edges.size(), NO_PLACE);
  for (Contour const& contour : outcome.contours)
  {
    std::size_t const joins = contour.closed ? contour.links.size() : contour.links.size() - 1;
    for (std::size_t i = 0; i < joins; ++i)
    {
      Link const from = contour.links[i];
      Link const to = contour.links[(i + 1) % contour.links.size()];
      std::size_t const last = from.reversed ? start_of(from.edge) : end_of(from.edge);
      std::size_t const next = to.reversed ? end_of(to.edge) : start_of(to.edge);
      partners[last] = next;
      partners[next] = last;
    }
  }
  return partners;
}

} // namespace

std::size_t Outcome::closed() const
{
  auto const all =
      std::count_if(contours.begin(), contours.end(), [](Contour const& contour) { return contour.closed; });
  return static_cast<std::size_t>(all);
}

double Outcome::cut_length_mm() const
{
  double length = 0.0;
  for (Contour const& contour : contours)
    length += contour.length_mm;
  return length;
}

ContourFinder::ContourFinder(Drawing const& its_drawing, LayerChoice const& layers, double its_tolerance,
                             std::optional<Strategy> its_strategy)
  : drawing(its_drawing)
  , tolerance(its_tolerance)
  , strategy(its_strategy)
{
  auto edges_of_layer = take_edges(drawing, layers, found);
  places.assign(2 * found.edges.size(), NO_PLACE);
  for (auto& [layer, edges] : edges_of_layer)
  {
    remove_duplicates(found, edges, tolerance);
    count_used(found, edges, tolerance);
    find_places(found.edges, edges, tolerance, places);
  }
  found.duplicates = duplicate_entities(found.edges);
  for (std::size_t edge = 0; edge < found.edges.size(); ++edge)
    if (found.edges[edge].original != edge)
      doubles[found.edges[edge].original].push_back(edge);
  cluster_edges = find_clusters(found.edges, places);
  found.clusters = count_clusters(found, drawing, cluster_edges);
}

std::vector<Contour> ContourFinder::sort(std::size_t cluster, StopFlag const& stop) const
{
  std::vector<std::size_t> const& edges = cluster_edges[cluster];
  std::vector<Chain> chains;
  chains.reserve(edges.size());
  for (std::size_t const edge : edges)
    chains.push_back(chain_of(found, edge));

  std::string const& layer = layer_of(found, drawing, edges);
  std::vector<Contour> contours;
  for (Chain& chain : join_chains(chains, tolerance, strategy, stop))
  {
    if (stop.requested())
      break;
    contours.push_back(measure(found, std::move(chain), layer, tolerance));
    contours.back().doubles = doubles_of(contours.back().links);
  }
  return contours;
}

void ContourFinder::add(std::vector<Contour>&& contours)
{
  for (Contour& contour : contours)
  {
    auto const lowest = std::min_element(contour.links.begin(), contour.links.end(), lower_edge);
    without_number.emplace(lowest->edge, std::move(contour));
  }
  ++added;

  // All that is still to come lies above the lowest edge of the next cluster.
  bool const is_last = added == cluster_edges.size();
  std::size_t const next = is_last ? found.edges.size() : cluster_edges[added].front();
  auto const end = without_number.lower_bound(next);
  for (auto contour = without_number.begin(); contour != end; ++contour)
    found.contours.push_back(std::move(contour->second));
  without_number.erase(without_number.begin(), end);
}

void ContourFinder::finish()
{
  std::map<std::string, std::vector<std::size_t>> contours_of_layer;
  for (std::size_t i = 0; i < found.contours.size(); ++i)
    contours_of_layer[found.contours[i].layer].push_back(i);
  for (auto const& [layer, contours] : contours_of_layer)
    measure_openings(found.contours, contours);
  found.branches = find_branches(found.edges, places, find_partners(found));
}

/// In order. Each double goes to the contour that has its original.
std::vector<std::size_t> ContourFinder::doubles_of(std::vector<Link> const& links) const
{
  std::vector<std::size_t> all;
  for (Link const link : links)
    if (auto const found_doubles = doubles.find(link.edge); found_doubles != doubles.end())
      all.insert(all.end(), found_doubles->second.begin(), found_doubles->second.end());
  std::sort(all.begin(), all.end());
  return all;
}

} // namespace contours
