#ifndef CONTOURS_CONTOURS_H
#define CONTOURS_CONTOURS_H

#include "chains.h"
#include "curve.h"
#include "drawing.h"
#include "layers.h"
#include "meetings.h"
#include "stop_flag.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace contours
{

/// A part of the history of a contour: an entity it comes from.
struct Source
{
  std::size_t entity;
  bool reversed; ///< the contour runs against the entity
};

struct Contour
{
  std::string layer;
  bool closed = false;
  std::vector<Link> links;          ///< without doubles
  std::vector<std::size_t> doubles; ///< edges that lie on those of the contour
  Point start;
  Point end;
  double length_mm = 0.0;
  double area_mm2 = 0.0;   ///< of a closed contour
  double max_gap_mm = 0.0; ///< the longest way from an edge to the next

  // Of an open contour: the end that is farther from any other free end of its layer, how far that is, and the contour
  // that the other end belongs to, which may be this one.
  double open_gap_mm = 0.0;
  Point open_at;
  std::size_t open_towards = 0;

  std::vector<Source> sources; ///< in order of the entities
};

/// An entity that lies on another one, or on itself.
struct Duplicate
{
  std::size_t entity;
  std::size_t of;
  bool whole; ///< no edge of it is left
};

/// Edges too short for the tolerance: how many, and the shortest.
struct ShortEdges
{
  std::size_t count = 0;
  std::size_t shortest = 0;
};

/// How the edges of a layer fell apart before they were sorted.
struct LayerClusters
{
  std::string layer;
  std::size_t clusters;
  std::size_t largest; ///< edges in the largest one
};

/// What a drawing comes to.
struct Outcome
{
  std::vector<Edge> edges;
  std::vector<Contour> contours;
  std::vector<Duplicate> duplicates;
  std::vector<Branch> branches;
  std::map<std::string, std::size_t> skipped; ///< entities of the chosen layers that were not cut, by type
  std::size_t not_supported = 0;              ///< those of them that could be cut
  std::size_t entities_used = 0;
  std::size_t edges_used = 0;
  ShortEdges short_edges;
  std::vector<LayerClusters> clusters;

  std::size_t closed() const;
  double cut_length_mm() const;
};

/// Joins the curves of the chosen layers to contours, in three steps: it finds the clusters of edges that touch, sorts
/// each of them for itself, and adds what came out of one after the other. Contours are numbered by their lowest edge;
/// a closed one starts with that edge and runs in its direction.
///
/// Threads: any number may sort at once; all else belongs to one thread at a time.
class ContourFinder
{
public:
  /// Finds the clusters. The drawing is in millimetres and its entities are in order; it stays the caller's and must
  /// outlive this.
  ContourFinder(Drawing const& its_drawing, LayerChoice const& layers, double its_tolerance,
                std::optional<Strategy> its_strategy);

  /// How many there are. They stand in the order of their lowest edges.
  std::size_t clusters() const { return cluster_edges.size(); }

  /// The contours of a cluster, doubles included. Ends soon once `stop` is set, and is of no use then.
  std::vector<Contour> sort(std::size_t cluster, StopFlag const& stop) const;

  /// Takes the contours of the next cluster over. They go into the outcome as soon as their numbers are certain, with
  /// the last cluster at the latest, and in the order of their numbers.
  void add(std::vector<Contour>&& contours);

  /// Measures what lies between the contours. To be called when all clusters were added.
  void finish();

  /// At first all that is known before sorting, edges above all. `sources` of contours are left empty: they are for
  /// the history to say.
  Outcome& outcome() { return found; }
  Outcome const& outcome() const { return found; }

private:
  std::vector<std::size_t> doubles_of(std::vector<Link> const& links) const;

  Drawing const& drawing;
  double tolerance;
  std::optional<Strategy> strategy;
  Outcome found;
  Places places;
  std::vector<std::vector<std::size_t>> cluster_edges;
  std::map<std::size_t, std::vector<std::size_t>> doubles; // of edges that have any
  std::size_t added = 0;                                   // clusters
  std::map<std::size_t, Contour> without_number;           // of those clusters, by lowest edge
};

} // namespace contours

#endif
