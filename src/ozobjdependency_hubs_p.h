#ifndef OZOBJDEPENDENCY_HUBS_P_H
#define OZOBJDEPENDENCY_HUBS_P_H

#include "ozobjdependency_p.h"

#include <cstdint>
#include <unordered_map>

/// What simplification knows of the nodes with many links.
///
/// Where thousands of roots lead into one object, each root's turn touches that object, and whoever looked
/// through all its links in each turn would need the square of their number. So what such a look finds is
/// kept, and kept up: the numbers of records of the types that matter, and whether all is in order around a
/// node as far as absorptions go.
///
/// A node is *mixed* on one of its sides if it has ABSORPTION records there and others too. A source is *in
/// order* if it isn't mixed and nothing that absorbs it is; a target, if all sources that it absorbs are in
/// order. A commit has nothing to do for nodes in order but to look at the links that are new. Whatever
/// makes a node mixed takes the mark off those around it.
///
/// All this holds for a graph in which both ends of each link agree. The first trace of damage ends it: from
/// then on nothing is known of any node, and everything is looked through each time.
class OzObjDepHubs
{
public:
  typedef OzObjectDependency::Type Type;

  struct Hub
  {
    std::uint64_t forward_absorptions = 0;
    std::uint64_t forward_splits = 0;
    std::uint64_t backward_absorptions = 0;
    bool is_source_in_order = false;
    bool is_target_in_order = false;
    // Backward records whose sources are no root that waits for its turn, if `has_open_sources`.
    bool has_open_sources = false;
    OzObjDepLinkSet open_sources;
  };

  static bool are_many(OzObjDepLinkSet const& links) { return links.size() > FEW; }

  /// Null if the node has few links, or if the graph is damaged.
  Hub* find(OzObjDepNode const* node);
  /// Null if nothing is known of the node.
  Hub* known(OzObjDepNode const* node);
  /// Is anything known of any node?
  bool any() const { return is_sound && !hubs.empty(); }
  /// The graph is damaged.
  void give_up() { is_sound = false; }
  bool has_given_up() const { return !is_sound; }

  /// To be told of each record that has entered the sets of a node or is about to leave them.
  void forward_enters(OzObjDepNode const* node, OzObjDepLink const* record);
  void forward_leaves(OzObjDepNode const* node, OzObjDepLink const* record);
  void backward_enters(OzObjDepNode const* node, OzObjDepLink const* record);
  void backward_leaves(OzObjDepNode const* node, OzObjDepLink const* record);
  void node_goes(OzObjDepNode const* node);

  /// To be told of each ABSORPTION from n1 to n3 before it gets another type. `forward` is null if that
  /// record isn't in n1's set yet.
  void absorption_ends(OzObjDepNode const* n1, OzObjDepLink const* forward, OzObjDepNode const* n3,
                       OzObjDepLink const* backward);
  /// The same where all absorptions of n1, which is mixed, end; and where all those of n3 do.
  void absorption_of_source_ends(OzObjDepNode const* n1, OzObjDepNode const* n3);
  void absorption_of_target_ends(OzObjDepNode const* n1, OzObjDepNode const* n3);

  /// Is each record of the set an ABSORPTION, and is there one?
  bool is_pure_source(OzObjDepNode const* node);
  bool is_pure_target(OzObjDepNode const* node);

private:
  // Up to here a look at all of them costs less.
  static constexpr std::uint64_t FEW = 8;

  void source_becomes_mixed(OzObjDepNode const* node);

  std::unordered_map<OzObjDepNode const*, Hub> hubs;
  bool is_sound = true;
};

#endif
