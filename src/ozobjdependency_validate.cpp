#include "ozobjdependency.h"

#include "ozassert.h"
#include "ozdebug.h"
#include "ozjournal.h"
#include "ozlist.h"
#include "ozobjdependency_p.h"

#include <cstddef>
#include <iterator>

namespace
{
char const* const MESSAGES[] = {
    "no error",
    "node n1 is not stored in object-node-map",
    "null-object-node n1 neither root nor leaf",
    "node n1 without sources not in roots",
    "node n1 with sources in roots",
    "node n1 without targets not in leaves",
    "node n1 with targets in leaves",
    "more than one link exists between n1 and target n2",
    "more than one link exists between n2 and source n1",
    "target n2 has no link to source n1",
    "link from target n2 to source n1 has wrong node",
    "pair of links between source n1 and target n2 have different dependency types",
    "pair of links between source n1 and target n2 do not both have a target qualifier",
    "pair of links between source n1 and target n2 have different target qualifiers",
    "null-object-node n1 linked to target n2 with dependency type which is not CREATION",
    "null-object-node n2 linked to source n1 with dependency type which is not DELETION",
    "target n2 of DELETION link to source n1 is not null-object-node",
    "target n2 of MODIFICATION has more than one source",
    "target n2 of CONVERSION has more than one source",
    "target n2 of SPLIT has more than one source",
    "target n2 of CONTAINMENT has more than one source",
    "source n1 of SPLIT has only one target n2",
    "source n1 of CONTAINMENT has only one target n2",
    "unsupported dependency type between source n1 and target n2",
    "sources of n1 have different dependency types",
    "not all sources of n1 have target qualifiers",
    "sources of n1 have different target qualifiers",
    "node n1 (source of n2) has no sources but is not in roots",
};

char const* message(int code)
{
  return code >= 0 && code < static_cast<int>(std::size(MESSAGES)) ? MESSAGES[code] : "";
}

OzString id_of(OzObjDepNode const& node)
{
  return node.object != nullptr ? OzString(node.object->identity(), 1, ' ') : OzString("NULL");
}

/// Has the source, for its `link`, another target of the same type and the same qualifier?
bool has_sibling(OzObjDepNode const& source, OzObjDepLink const& link)
{
  for (OzObjDepLink const* other : source.target_links)
  {
    if (other == nullptr || other == &link)
      continue;
    if (other->dependency_type == link.dependency_type &&
        other->has_target_qualifier == link.has_target_qualifier &&
        other->target_qualifier == link.target_qualifier)
      return true;
  }
  return false;
}
} // namespace

/// One check of a whole graph. Every fault is told, and none ends the walk.
class OzObjDependency::Validation
{
public:
  Validation(OzObjDependency const& graph_to_check, OzJournal* journal_for_faults)
    : graph(graph_to_check)
    , journal(journal_for_faults)
  {
  }

  bool run()
  {
    walk_down();
    walk_up();
    return valid;
  }

private:
  void fault(int code, OzObjDepNode const* n1, OzObjDepNode const* n2)
  {
    report_error(valid, code, journal, graph.dotty_output, n1, n2);
  }

  /// From the roots to all that they lead to.
  void walk_down()
  {
    OzQueue<OzObjDepNode*> queue;
    for (OzObjDepNode* root : graph.roots)
    {
      visited_down.insert(root);
      queue.enqueue(root);
    }
    while (!queue.is_empty())
    {
      OzObjDepNode* const n1 = queue.dequeue();
      OZ_ASSERT(n1 != nullptr);
      if (n1 == nullptr)
        continue;

      check_place(*n1);
      NodeSet seen_targets;
      for (OzObjDepLink const* link : n1->target_links)
      {
        bool const usable = link != nullptr && link->node != nullptr;
        OZ_ASSERT(usable);
        if (!usable)
          continue;

        if (visited_down.insert(link->node))
          queue.enqueue(link->node);
        if (!seen_targets.insert(link->node))
          fault(7, n1, link->node);
        check_partner(*n1, *link);
        check_type(*n1, *link);
      }
      check_sources(*n1);
    }
  }

  /// Is the node in the map, and among roots and leaves just where its links say?
  void check_place(OzObjDepNode const& n1)
  {
    if (!graph.object_node_map.contains(n1.object))
      fault(1, &n1, nullptr);

    OzObjDepNode* const key = const_cast<OzObjDepNode*>(&n1);
    bool const in_roots = graph.roots.contains(key);
    bool const in_leaves = graph.leaves.contains(key);
    if (n1.object == nullptr)
    {
      if (!in_roots && !in_leaves)
        fault(2, &n1, nullptr);
      return;
    }
    if (n1.source_links.empty() != in_roots)
      fault(in_roots ? 4 : 3, &n1, nullptr);
    if (n1.target_links.empty() != in_leaves)
      fault(in_leaves ? 6 : 5, &n1, nullptr);
  }

  /// Does the other end hold the same dependency?
  void check_partner(OzObjDepNode const& n1, OzObjDepLink const& link)
  {
    OzObjDepNode const* const n2 = link.node;
    OzObjDepLink const* const partner = n2->source_link_map.value(const_cast<OzObjDepNode*>(&n1));
    if (partner == nullptr)
    {
      fault(9, &n1, n2);
      return;
    }
    if (partner->node != &n1)
      fault(10, &n1, n2);
    if (partner->dependency_type != link.dependency_type)
      fault(11, &n1, n2);
    if (partner->has_target_qualifier != link.has_target_qualifier)
      fault(12, &n1, n2);
    else if (link.has_target_qualifier && partner->target_qualifier != link.target_qualifier)
      fault(13, &n1, n2);
  }

  /// Does the type fit both ends?
  void check_type(OzObjDepNode const& n1, OzObjDepLink const& link)
  {
    OzObjDepNode const* const n2 = link.node;
    if (n1.object == nullptr && link.dependency_type != CREATION)
      fault(14, &n1, n2);
    if (n2->object == nullptr && link.dependency_type != DELETION)
      fault(15, &n1, n2);

    switch (link.dependency_type)
    {
    case CREATION:
    case ABSORPTION:
      return;
    case DELETION:
      if (n2->object != nullptr)
        fault(16, &n1, n2);
      return;
    case MODIFICATION:
      check_single_source(*n2, 17);
      return;
    case CONVERSION:
      check_single_source(*n2, 18);
      return;
    case SPLIT:
      check_single_source(*n2, 19);
      if (!has_sibling(n1, link))
        fault(21, &n1, n2);
      return;
    case CONTAINMENT:
      check_single_source(*n2, 20);
      if (!has_sibling(n1, link))
        fault(22, &n1, n2);
      return;
    case UNSPECIFIED:
    case TRANSFER:
      break;
    }
    fault(23, &n1, n2);
  }

  void check_single_source(OzObjDepNode const& n2, int code)
  {
    if (n2.source_links.size() > 1)
      fault(code, nullptr, &n2);
  }

  /// Do all sources agree with the first one, and is each there once?
  void check_sources(OzObjDepNode const& n1)
  {
    NodeSet seen_sources;
    OzObjDepLink const* reference = nullptr;
    for (OzObjDepLink const* link : n1.source_links)
    {
      OZ_ASSERT(link != nullptr);
      if (link == nullptr)
        continue;

      if (!seen_sources.insert(link->node))
        fault(8, link->node, &n1);
      if (reference == nullptr)
      {
        reference = link;
        continue;
      }
      if (link->dependency_type != reference->dependency_type)
        fault(24, &n1, nullptr);
      if (link->has_target_qualifier != reference->has_target_qualifier)
        fault(25, &n1, nullptr);
      else if (link->target_qualifier != reference->target_qualifier)
        fault(26, &n1, nullptr);
    }
  }

  /// From the leaves to all that leads to them: what no root leads to comes to light here.
  void walk_up()
  {
    NodeSet visited_up;
    OzQueue<OzObjDepNode*> queue;
    for (OzObjDepNode* leaf : graph.leaves)
    {
      visited_up.insert(leaf);
      queue.enqueue(leaf);
    }
    while (!queue.is_empty())
    {
      OzObjDepNode* const n = queue.dequeue();
      OZ_ASSERT(n != nullptr);
      if (n == nullptr)
        continue;

      for (OzObjDepLink const* link : n->source_links)
      {
        bool const usable = link != nullptr && link->node != nullptr;
        OZ_ASSERT(usable);
        if (!usable)
          continue;

        if (visited_up.insert(link->node))
          queue.enqueue(link->node);
        if (!visited_down.contains(link->node))
          fault(27, link->node, n);
      }
    }
  }

  OzObjDependency const& graph;
  OzJournal* const journal; // may be null
  NodeSet visited_down;
  bool valid = true;
};

bool OzObjDependency::is_valid(OzJournal* journal) const
{
  return Validation(*this, journal).run();
}

void OzObjDependency::report_error(bool& valid, int code, OzJournal* journal, bool dotty,
                                   OzObjDepNode const* n1, OzObjDepNode const* n2)
{
  valid = false;
  if (journal == nullptr)
    return;

  if (!dotty)
  {
    *journal << "error " << code << ": " << message(code) << ozEndExpr;
    auto const tell = [journal](char const* heading, OzObjDepNode const* node)
    {
      if (node == nullptr)
        return;
      *journal << heading << id_of(*node) << ozEndExpr;
      debug_node(node, *journal, OZ_DEBUG_SUMMARY, Oz_DebugIndentStep(), false, NodeFilterTypes(),
                 NodeFilters(), nullptr);
    };
    tell("n1 node object id : ", n1);
    tell("n2 node object id : ", n2);
    return;
  }

  // A node of the picture of its own, with a name that no object's node can have.
  OzString const none("x");
  *journal << "xxx" << code << "n1" << (n1 != nullptr ? id_of(*n1) : none) << "n2"
           << (n2 != nullptr ? id_of(*n2) : none) << " [color=\"red\",label=\"";
  *journal << "error " << code << ": "
           << "\\n"
           << message(code);
  if (n1 != nullptr)
    *journal << "\\nn1 = " << id_of(*n1);
  if (n2 != nullptr)
    *journal << "\\nn2 = " << id_of(*n2);
  *journal << "\"];" << ozEndExpr;
  for (OzObjDepNode const* node : {n1, n2})
    if (node != nullptr)
      *journal << id_of(*node) << " [color=\"red\"];" << ozEndExpr;
}
