#ifndef CONTOURS_CONTOURS_H
#define CONTOURS_CONTOURS_H

#include "chains.h"
#include "curve.h"
#include "drawing.h"
#include "layers.h"
#include "meetings.h"

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

/// Joins the curves of the chosen layers to contours.
///
/// The drawing is in millimetres and its entities are in order. Contours are numbered by their lowest edge; a closed
/// one starts with that edge and runs in its direction. `sources` are left empty: they are for the history to say.
Outcome find_contours(Drawing const& drawing, LayerChoice const& layers, double tolerance,
                      std::optional<Strategy> strategy);

} // namespace contours

#endif
