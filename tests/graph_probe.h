#ifndef GRAPH_PROBE_H
#define GRAPH_PROBE_H

#include "ozobjdependency.h"
#include "ozobjdependency_p.h"

#include <initializer_list>
#include <set>
#include <vector>

/// An object as a graph knows it: an address and an identity, drawn or chosen.
class Thing : public OzDynObj
{
public:
  Thing()
    : number(draw_identity())
  {
  }
  explicit Thing(int identity_to_have)
    : number(identity_to_have)
  {
  }
  OzDynObj* clone() const override { return new Thing(*this); }
  int identity() const override { return number; }

private:
  int number;
};

/// A role that tells how many of its kind are alive.
class CountingRole : public OzObjectDependencyRole
{
public:
  CountingRole() { ++alive; }
  CountingRole(CountingRole const& other)
    : OzObjectDependencyRole(other)
  {
    ++alive;
    ++clones;
  }
  CountingRole& operator=(CountingRole const&) = delete;
  ~CountingRole() override { --alive; }
  OzDynObj* clone() const override { return new CountingRole(*this); }

  static inline int alive = 0;
  static inline int clones = 0;
};

/// The objects of a call that records sets, walked as a client would walk them.
class ThingList : public OzArrayIterator<OzDynObj const*>
{
public:
  ThingList(std::initializer_list<OzDynObj const*> list)
    : OzArrayIterator<OzDynObj const*>(&things)
  {
    for (OzDynObj const* thing : list)
      things.append(thing);
  }
  explicit ThingList(std::vector<OzDynObj const*> const& list)
    : OzArrayIterator<OzDynObj const*>(&things)
  {
    for (OzDynObj const* thing : list)
      things.append(thing);
  }
  ThingList(ThingList const&) = delete;
  ThingList& operator=(ThingList const&) = delete;

private:
  OzArray<OzDynObj const*> things;
};

/// Opens a graph for tests: to look at its records, to damage them, and to call what it keeps to itself.
class OzObjDependencyProbe
{
public:
  typedef OzObjectDependency::Type Type;

  static OzAddressSet<OzObjDepNode*>& roots(OzObjDependency& graph) { return graph.roots; }
  static OzAddressSet<OzObjDepNode*>& leaves(OzObjDependency& graph) { return graph.leaves; }
  static OzAddressMap<OzDynObj const*, OzObjDepNode*>& nodes(OzObjDependency& graph)
  {
    return graph.object_node_map;
  }
  /// The node of `object`, null if there is none.
  static OzObjDepNode* node(OzObjDependency const& graph, OzDynObj const* object)
  {
    return graph.object_node_map.value(object);
  }
  /// The record of the dependency that the source holds, null if there is none.
  static OzObjDepLink* forward(OzObjDependency const& graph, OzDynObj const* source, OzDynObj const* target)
  {
    OzObjDepNode* const n1 = node(graph, source);
    return n1 != nullptr ? n1->target_link_map.value(node(graph, target)) : nullptr;
  }
  /// The record of the dependency that the target holds, null if there is none.
  static OzObjDepLink* backward(OzObjDependency const& graph, OzDynObj const* source, OzDynObj const* target)
  {
    OzObjDepNode* const n2 = node(graph, target);
    return n2 != nullptr ? n2->source_link_map.value(node(graph, source)) : nullptr;
  }
  static std::set<OzDynObj const*> root_objects(OzObjDependency const& graph)
  {
    return objects_of(graph.roots);
  }
  static std::set<OzDynObj const*> leaf_objects(OzObjDependency const& graph)
  {
    return objects_of(graph.leaves);
  }
  /// The number of dependencies, each of which has two records.
  static std::uint64_t link_count(OzObjDependency const& graph)
  {
    std::uint64_t n = 0;
    for (auto const& entry : graph.object_node_map)
      n += entry.value->target_links.size();
    return n;
  }

  static bool check_dependency(int sources, int targets, Type type)
  {
    return OzObjDependency::check_dependency(sources, targets, type);
  }
  static bool check_dependency_pair(OzObjDependency const& graph, OzDynObj const* source,
                                    OzDynObj const* target)
  {
    return graph.check_dependency_pair(source, target);
  }
  static void check_or_add_dependency(OzObjDependency& graph, bool check,
                                      OzIterator<OzDynObj const*>* sources,
                                      OzIterator<OzDynObj const*>* targets, Type type, bool* ok)
  {
    graph.check_or_add_dependency(check, sources, targets, type, nullptr, nullptr, ok);
  }
  static void add_dependency_pair(OzObjDependency& graph, OzDynObj const* source, OzDynObj const* target,
                                  Type type)
  {
    graph.add_dependency_pair(source, target, type, nullptr, nullptr);
  }
  static bool has_direct_source(OzObjDependency const& graph, OzDynObj const* object)
  {
    return graph.has_direct_source(object);
  }
  static bool have_same_qualifier(OzObjDependency const& graph, OzDynObj const* object, int& qualifier)
  {
    return graph.have_direct_sources_same_target_qualifier(object, qualifier);
  }
  static bool have_same_qualifier(OzObjDependency const& graph, OzIterator<OzDynObj const*>* objects,
                                  int& qualifier)
  {
    return graph.have_direct_sources_same_target_qualifier(objects, qualifier);
  }
  static bool remove_source_link(OzObjDepNode* node, OzObjDepLink*& link)
  {
    return OzObjDependency::remove_source_link(node, link);
  }
  static bool remove_target_link(OzObjDepNode* node, OzObjDepLink*& link)
  {
    return OzObjDependency::remove_target_link(node, link);
  }
  static bool simplify_step(OzObjDependency& graph) { return graph.simplify_step(); }
  static void report_error(bool& valid, int code, OzJournal* journal, bool dotty, OzObjDepNode const* n1,
                           OzObjDepNode const* n2)
  {
    OzObjDependency::report_error(valid, code, journal, dotty, n1, n2);
  }
  /// Writes a node as a dump without filters does.
  static void debug_node(OzObjDepNode const* node, OzJournal& journal, int level, int indent, bool dotty)
  {
    OzObjDependency::debug_node(node, journal, level, indent, dotty, OzObjDependency::NodeFilterTypes(),
                                OzObjDependency::NodeFilters(), nullptr);
  }
  static void debug_link(OzObjDepLink const* link, OzJournal& journal, int level, int indent, bool dotty)
  {
    OzObjDependency::debug_link(link, journal, level, indent, dotty);
  }
  static OzArray<OzObjectDependency::DebugNodeFilterType>& filter_types(OzObjDependency& graph)
  {
    return graph.debug_node_filter_types;
  }
  static OzArray<OzObjectDependencyNodeFilter const*>& filters(OzObjDependency& graph)
  {
    return graph.debug_node_filters;
  }

private:
  static std::set<OzDynObj const*> objects_of(OzAddressSet<OzObjDepNode*> const& some_nodes)
  {
    std::set<OzDynObj const*> objects;
    for (OzObjDepNode const* some_node : some_nodes)
      objects.insert(some_node->object);
    return objects;
  }
};

#endif
