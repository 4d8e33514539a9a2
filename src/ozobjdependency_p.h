#ifndef OZOBJDEPENDENCY_P_H
#define OZOBJDEPENDENCY_P_H

#include "ozobjdependency.h"

/// One end's record of a dependency. The one in the source node names the target, the one in the target
/// node names the source; all else is the same in both.
struct OzObjDepLink
{
  OzObjDepLink() = default;
  OzObjDepLink(OzObjDepLink const&) = delete;
  OzObjDepLink& operator=(OzObjDepLink const&) = delete;
  ~OzObjDepLink() { delete role; }

  /// The qualifier as filters get it: null if there is none.
  int const* qualifier() const { return has_target_qualifier ? &target_qualifier : nullptr; }

  OzObjDepNode* node = nullptr; // at the other end; not owned
  OzObjectDependency::Type dependency_type = OzObjectDependency::UNSPECIFIED;
  bool has_target_qualifier = false;
  int target_qualifier = -1;              // -1 where there is none
  OzObjectDependencyRole* role = nullptr; // owned; a clone of this record's own
  int separator = 0;
};

typedef OzAddressSet<OzObjDepLink*> OzObjDepLinkSet;
typedef OzAddressMap<OzObjDepNode*, OzObjDepLink*> OzObjDepLinkMap;

/// An object and its dependencies. Each link record is in a set, which owns it and is what is walked, and
/// in the map beside it under the node at its other end, which is what is looked up.
struct OzObjDepNode
{
  explicit OzObjDepNode(OzDynObj const* object_to_stand_for)
    : object(object_to_stand_for)
  {
  }
  OzObjDepNode(OzObjDepNode const&) = delete;
  OzObjDepNode& operator=(OzObjDepNode const&) = delete;
  ~OzObjDepNode()
  {
    for (OzObjDepLink* link : target_links)
      delete link;
    for (OzObjDepLink* link : source_links)
      delete link;
  }

  void add_target_link(OzObjDepLink* link)
  {
    target_links.insert(link);
    target_link_map.insert(link->node, link);
  }
  void add_source_link(OzObjDepLink* link)
  {
    source_links.insert(link);
    source_link_map.insert(link->node, link);
  }

  OzDynObj const* object; // null for the null-object node; not owned
  OzObjDepLinkSet target_links;
  OzObjDepLinkSet source_links;
  OzObjDepLinkMap target_link_map; // from the target node
  OzObjDepLinkMap source_link_map; // from the source node
};

#endif
