#ifndef CONTOURS_HISTORY_H
#define CONTOURS_HISTORY_H

#include "contours.h"
#include "drawing.h"
#include "named_object.h"

#include <ozobjdependency.h>

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace contours
{

/// How entities became edges and edges became contours, recorded in a dependency graph. It belongs to one thread at a
/// time.
///
/// An entity is converted to its edge, or contains its edges. A contour absorbs its edges, and the doubles that lie on
/// them. From this the graph answers which entities are behind a contour, and where an entity went. Simplified, it has
/// the entities and the contours alone: each entity is absorbed by the contours that it went into.
class History
{
public:
  /// Records how the entities became the edges of `outcome`. Both stay the caller's and must outlive the history.
  History(Drawing const& drawing, Outcome const& outcome);

  /// Records what the contours absorb that have come to `outcome` since the last time.
  void record_new_contours();

  /// Takes the edges out of the history. What it answers stays the same.
  void simplify();

  /// A text from which Graphviz draws the history, or only that of some contours. Names in it have no quotes and no
  /// backslashes. The objects stand in the order of their identities, which are drawn in the order of entities, edges
  /// and contours: the same drawing gives the same text.
  std::string picture(std::set<std::size_t> const& only_contours);

  /// The entities that `contour` comes from, in order, each once.
  std::vector<std::size_t> entities_of(std::size_t contour) const;
  /// The contours that `entity` went into, in order, each once.
  std::vector<std::size_t> contours_of(std::size_t entity) const;

private:
  using Objects = std::vector<std::unique_ptr<NamedObject>>;

  void record_entity(std::size_t entity, std::vector<std::size_t> const& entity_edges);
  void record_contour(Contour const& contour, std::size_t number);

  Outcome const& outcome;
  // The graph knows the objects by their addresses.
  Objects entities; // null for entities without edges
  Objects edges;
  Objects contours;
  OzObjDependency graph;
};

/// Fills in the sources of all contours: what the history says, and in which direction each entity was taken.
void add_sources(Outcome& outcome, History const& history);

} // namespace contours

#endif
