#include "ozobjdependency.h"

#include "ozassert.h"
#include "ozobjdependency_p.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace
{
typedef OzIterator<OzDynObj const*> Objects;

int count(Objects* objects)
{
  int n = 0;
  if (objects != nullptr)
    for (objects->reset(); !objects->done(); objects->next())
      ++n;
  return n;
}

/// The object under the cursor. A null or empty set of objects stands for the null object.
OzDynObj const* current_or_null(Objects const* objects, bool& delivered)
{
  delivered = objects != nullptr && !objects->done();
  return delivered ? objects->current() : nullptr;
}

/// Is there a link from n1 to n2? Either may be null.
bool is_linked(OzObjDepNode const* n1, OzObjDepNode* n2)
{
  return n1 != nullptr && n2 != nullptr && n1->target_link_map.contains(n2);
}

bool has_repetition(Objects* objects)
{
  if (objects == nullptr)
    return false;

  OzAddressSet<OzDynObj const*> seen;
  for (objects->reset(); !objects->done(); objects->next())
    if (!seen.insert(objects->current()))
      return true;
  return false;
}

std::unique_ptr<OzObjDepLink> make_link(OzObjDepShelf& shelf, OzObjectDependency::Type type,
                                        int const* target_qualifier, OzObjectDependencyRole const* role,
                                        int separator)
{
  std::unique_ptr<OzObjDepLink> link(new (shelf) OzObjDepLink);
  link->dependency_type = type;
  link->has_target_qualifier = target_qualifier != nullptr;
  if (target_qualifier != nullptr)
    link->target_qualifier = *target_qualifier;
  link->separator = separator;
  if (role != nullptr)
  {
    OzDynObj* const clone = role->clone();
    link->role = OzObjectDependencyRole::cast(clone);
    if (link->role == nullptr)
      delete clone;
  }
  return link;
}
/// Stands for a role of which as many clones as are needed were made at once, and hands these out.
class ReadyClones : public OzObjectDependencyRole
{
public:
  ReadyClones(OzObjectDependencyRole const& role, std::size_t n)
    : OzObjectDependencyRole(role) // no identity is drawn for it
  {
    clones.reserve(n);
    while (clones.size() < n)
      clones.emplace_back(role.clone());
  }

  OzDynObj* clone() const override { return clones[next++].release(); }

private:
  mutable std::vector<std::unique_ptr<OzDynObj>> clones;
  mutable std::size_t next = 0;
};
} // namespace

OzObjDependency::OzObjDependency()
  : records(std::make_shared<OzObjDepRecords>())
{
}
OzObjDependency::OzObjDependency(OzObjDependency const&) = default;

OzObjDependency& OzObjDependency::operator=(OzObjDependency const& other)
{
  if (this == &other)
    return *this;

  NodeSet new_roots(other.roots);
  NodeSet new_leaves(other.leaves);
  ObjectNodeMap new_nodes(other.object_node_map);
  debug_node_filter_types.reserve(
      std::max(debug_node_filter_types.size(), other.debug_node_filter_types.size()), true);
  debug_node_filters.reserve(std::max(debug_node_filters.size(), other.debug_node_filters.size()), true);

  // Nothing throws from here on. Nodes that a copy has too are left to it.
  if (records.use_count() == 1)
    delete_nodes();
  roots.swap(new_roots);
  leaves.swap(new_leaves);
  object_node_map.swap(new_nodes);
  absorption_inherits = other.absorption_inherits;
  split_modificational = other.split_modificational;
  current_separator = other.current_separator;
  dotty_output = other.dotty_output;
  debug_node_filter_types = other.debug_node_filter_types;
  debug_node_filters = other.debug_node_filters;
  debug_link_filter = other.debug_link_filter;
  simplify_trace = other.simplify_trace;
  records = other.records;
  return *this;
}

OzObjDependency::~OzObjDependency()
{
  delete_nodes();
}

void OzObjDependency::delete_nodes()
{
  for (auto const& entry : object_node_map)
    delete entry.value;
}

/// What one pair has entered in the graph, and what is needed to take it out again.
struct OzObjDependency::Entry
{
  OzObjDepNode* n1 = nullptr;
  OzObjDepNode* n2 = nullptr;
  bool is_new_n1 = false;
  bool is_new_n2 = false;
  bool is_new_root = false; // the null object, for n1
  bool is_new_leaf = false; // the null object, for n2
  std::unique_ptr<OzObjDepLink> forward;
  std::unique_ptr<OzObjDepLink> backward;
};

/// The pairs that one call enters. They are taken out again, the last one first, if something throws before
/// all are kept.
///
/// Roots that are none any more, and leaves, stay among them until then: to take them out cannot fail, and to
/// put them back could.
class OzObjDependency::Entries
{
public:
  explicit Entries(OzObjDependency& graph_to_change)
    : graph(graph_to_change)
  {
  }
  Entries(Entries const&) = delete;
  Entries& operator=(Entries const&) = delete;
  ~Entries()
  {
    for (; n_entries != 0; --n_entries)
      take_out(at(n_entries - 1));
  }

  Entry& next()
  {
    if (n_entries >= FEW && (n_entries - FEW) % CHUNK == 0)
      others.push_back(std::make_unique<Entry[]>(CHUNK));
    ++n_entries;
    return at(n_entries - 1);
  }

  void keep()
  {
    for (std::size_t i = 0; i < n_entries; ++i)
      keep(at(i));
    n_entries = 0;
  }

private:
  static constexpr std::size_t FEW = 4;
  static constexpr std::size_t CHUNK = 64;

  Entry& at(std::size_t i) { return i < FEW ? few[i] : others[(i - FEW) / CHUNK][(i - FEW) % CHUNK]; }

  void keep(Entry& entry)
  {
    if (entry.n1->object != nullptr && !entry.is_new_n1)
      graph.leaves.erase(entry.n1);
    if (entry.n2->object != nullptr && !entry.is_new_n2)
      graph.roots.erase(entry.n2);
    static_cast<void>(entry.forward.release());
    static_cast<void>(entry.backward.release());
  }

  void take_out(Entry& entry)
  {
    if (entry.n1 != nullptr && entry.n2 != nullptr)
    {
      if (entry.n1->target_links.erase(entry.forward.get()) &&
          entry.n1->target_link_map.value(entry.n2) == entry.forward.get())
        entry.n1->target_link_map.erase(entry.n2);
      if (entry.n2->source_links.erase(entry.backward.get()) &&
          entry.n2->source_link_map.value(entry.n1) == entry.backward.get())
        entry.n2->source_link_map.erase(entry.n1);
    }
    if (entry.is_new_n2 || entry.is_new_leaf)
      graph.leaves.erase(entry.n2);
    if (entry.is_new_n2)
      delete_node(entry.n2);
    if (entry.is_new_n1 || entry.is_new_root)
      graph.roots.erase(entry.n1);
    if (entry.is_new_n1)
      delete_node(entry.n1);
  }

  void delete_node(OzObjDepNode* node)
  {
    graph.object_node_map.erase(node->object);
    delete node;
  }

  OzObjDependency& graph;
  std::size_t n_entries = 0;
  Entry few[FEW];
  std::vector<std::unique_ptr<Entry[]>> others; // a chunk each
};

bool OzObjDependency::record_dependency(OzDynObj const* source, OzDynObj const* target, Type type,
                                        int const* target_qualifier, OzObjectDependencyRole const* role)
{
  if (!check_dependency(source != nullptr ? 1 : 0, target != nullptr ? 1 : 0, type))
    return false;
  if (type == TRANSFER)
    return true;

  OzObjDepNode* const n1 = object_node_map.value(source);
  OzObjDepNode* const n2 = object_node_map.value(target);
  bool const is_new = !is_linked(n1, n2);
  OZ_ASSERT(is_new);
  if (!is_new)
    return false;

  int inherited = 0;
  if (absorption_inherits && target_qualifier == nullptr && type == ABSORPTION &&
      have_direct_sources_same_target_qualifier(source, inherited))
    target_qualifier = &inherited;

  Entries entries(*this);
  add_link(entries.next(), source, n1, target, n2, type, target_qualifier, role);
  entries.keep();
  return true;
}

bool OzObjDependency::record_dependency(Objects* sources, Objects* targets, Type type,
                                        int const* target_qualifier, OzObjectDependencyRole const* role)
{
  int const source_count = count(sources);
  int const target_count = count(targets);
  if (!check_dependency(source_count, target_count, type))
    return false;
  if (type == TRANSFER)
    return true;

  bool ok = true;
  check_or_add_dependency(true, sources, targets, type, target_qualifier, role, &ok);
  OZ_ASSERT(ok);
  if (!ok)
    return false;

  int inherited = 0;
  if (absorption_inherits && target_qualifier == nullptr && type == ABSORPTION &&
      have_direct_sources_same_target_qualifier(sources, inherited))
    target_qualifier = &inherited;

  if (role == nullptr)
  {
    check_or_add_dependency(false, sources, targets, type, target_qualifier, nullptr, nullptr);
    return true;
  }

  // All clones come first: a role that cannot be cloned leaves the graph as it was. Each pair has two records,
  // and a side without objects stands for the null object.
  std::size_t const pairs = static_cast<std::size_t>(std::max(source_count, 1)) *
                            static_cast<std::size_t>(std::max(target_count, 1));
  ReadyClones const clones(*role, 2 * pairs);
  check_or_add_dependency(false, sources, targets, type, target_qualifier, &clones, nullptr);
  return true;
}

bool OzObjDependency::absorption_inherits_target_qualifier() const
{
  return absorption_inherits;
}

void OzObjDependency::set_absorption_inherits_target_qualifier(bool inherits)
{
  absorption_inherits = inherits;
}

bool OzObjDependency::consider_split_modificational() const
{
  return split_modificational;
}

void OzObjDependency::set_consider_split_modificational(bool modificational)
{
  split_modificational = modificational;
}

bool OzObjDependency::get_source_objects(OzDynObj const* object, OzAutoPtr<Objects>& result,
                                         OzObjectDependencyFilter* filter, bool* filtered_out) const
{
  if (filtered_out != nullptr)
    *filtered_out = false;

  bool reached_null = false;
  OzArray<OzDynObj const*> objects;
  if (object == nullptr)
  {
    for (OzObjDepNode const* root : roots)
      if (root != nullptr && root->object != nullptr)
        objects.append(root->object);
  }
  else if (OzObjDepNode const* const node = object_node_map.value(object))
  {
    collect_sources(node, objects, filter, filtered_out, reached_null);
  }

  bool const found = objects.size() != 0 || reached_null;
  result = new OzDynObjArrayIterator(std::move(objects));
  return found;
}

bool OzObjDependency::get_target_objects(OzDynObj const* object, OzAutoPtr<Objects>& result,
                                         OzObjectDependencyFilter* filter, bool* filtered_out) const
{
  if (filtered_out != nullptr)
    *filtered_out = false;

  OzArray<OzDynObj const*> objects;
  if (object == nullptr)
  {
    for (OzObjDepNode const* leaf : leaves)
      if (leaf != nullptr && leaf->object != nullptr)
        objects.append(leaf->object);
  }
  else if (OzObjDepNode const* const node = object_node_map.value(object))
  {
    collect_targets(node, objects, filter, filtered_out);
  }

  bool const found = objects.size() != 0;
  result = new OzDynObjArrayIterator(std::move(objects));
  return found;
}

bool OzObjDependency::remove_source_object(OzDynObj const*, bool)
{
  OZ_ASSERT(false);
  return false;
}

bool OzObjDependency::remove_target_object(OzDynObj const*, bool)
{
  OZ_ASSERT(false);
  return false;
}

int OzObjDependency::new_separator()
{
  return ++current_separator;
}

bool OzObjDependency::has_direct_source(OzDynObj const* object) const
{
  OzObjDepNode const* const node = object != nullptr ? object_node_map.value(object) : nullptr;
  if (node == nullptr)
    return false;

  for (OzObjDepLink const* link : node->source_links)
    if (link->node->object != nullptr)
      return true;
  return false;
}

bool OzObjDependency::check_dependency(int sources, int targets, Type type)
{
  switch (type)
  {
  case TRANSFER:
  case DELETION:
    return sources >= 1 && targets == 0;
  case CREATION:
  case ABSORPTION:
    return sources >= 0 && targets == 1;
  case MODIFICATION:
  case CONVERSION:
    return sources == 1 && targets == 1;
  case SPLIT:
  case CONTAINMENT:
    return sources == 1 && targets >= 2;
  case UNSPECIFIED:
    break;
  }
  return false;
}

bool OzObjDependency::check_dependency_pair(OzDynObj const* source, OzDynObj const* target) const
{
  return !is_linked(object_node_map.value(source), object_node_map.value(target));
}

void OzObjDependency::check_or_add_dependency(bool check, Objects* sources, Objects* targets, Type type,
                                              int const* target_qualifier, OzObjectDependencyRole const* role,
                                              bool* ok)
{
  bool all_ok = true;
  bool delivered = false;
  Entries entries(*this);

  if (sources != nullptr)
    sources->reset();
  do
  {
    OzDynObj const* const source = current_or_null(sources, delivered);
    if (check && delivered && source == nullptr)
      all_ok = false;

    if (targets != nullptr)
      targets->reset();
    do
    {
      OzDynObj const* const target = current_or_null(targets, delivered);
      if (check && delivered && target == nullptr)
        all_ok = false;

      if (!check)
        add_link(entries.next(), source, object_node_map.value(source), target, object_node_map.value(target),
                 type, target_qualifier, role);
      else if (!check_dependency_pair(source, target))
        all_ok = false;

      if (targets != nullptr)
        targets->next();
    } while (targets != nullptr && !targets->done() && all_ok);

    if (sources != nullptr)
      sources->next();
  } while (sources != nullptr && !sources->done() && all_ok);

  if (!check)
  {
    entries.keep();
    return;
  }

  // An object may well stand on both sides: that is for validation to judge.
  all_ok = all_ok && !has_repetition(sources) && !has_repetition(targets);
  if (ok != nullptr)
    *ok = all_ok;
}

void OzObjDependency::add_dependency_pair(OzDynObj const* source, OzDynObj const* target, Type type,
                                          int const* target_qualifier, OzObjectDependencyRole const* role)
{
  if (type == TRANSFER)
    return;
  Entries entries(*this);
  add_link(entries.next(), source, object_node_map.value(source), target, object_node_map.value(target), type,
           target_qualifier, role);
  entries.keep();
}

void OzObjDependency::add_link(Entry& entry, OzDynObj const* source, OzObjDepNode* n1, OzDynObj const* target,
                               OzObjDepNode* n2, Type type, int const* target_qualifier,
                               OzObjectDependencyRole const* role)
{
  entry.backward = make_link(records->links, type, target_qualifier, role, current_separator);
  entry.forward = make_link(records->links, type, target_qualifier, role, current_separator);

  enter_source(entry, source, n1, type);
  enter_target(entry, target, source == target ? entry.n1 : n2, type);
  entry.backward->node = entry.n1;
  entry.forward->node = entry.n2;
  entry.n1->add_target_link(entry.forward.get());
  entry.n2->add_source_link(entry.backward.get());
}

OzObjDepNode* OzObjDependency::make_node(OzDynObj const* object)
{
  std::unique_ptr<OzObjDepNode> made(new (records->nodes) OzObjDepNode(object));
  object_node_map.insert(object, made.get());
  return made.release();
}

void OzObjDependency::enter_source(Entry& entry, OzDynObj const* object, OzObjDepNode* known, Type type)
{
  if (known == nullptr)
  {
    entry.n1 = make_node(object);
    entry.is_new_n1 = true;
    roots.insert(entry.n1);
    return;
  }

  entry.n1 = known;
  if (object == nullptr)
  {
    OZ_ASSERT(type == CREATION);
    entry.is_new_root = roots.insert(known);
  }
}

void OzObjDependency::enter_target(Entry& entry, OzDynObj const* object, OzObjDepNode* known, Type type)
{
  if (known == nullptr)
  {
    entry.n2 = make_node(object);
    entry.is_new_n2 = true;
    leaves.insert(entry.n2);
    return;
  }

  entry.n2 = known;
  if (object == nullptr)
  {
    OZ_ASSERT(type == DELETION);
    entry.is_new_leaf = leaves.insert(known);
  }
}

bool OzObjDependency::have_direct_sources_same_target_qualifier(OzDynObj const* object, int& qualifier) const
{
  OzObjDepNode const* const node = object_node_map.value(object);
  if (node == nullptr || node->source_links.empty())
    return false;

  OzObjDepLink const* const reference = *node->source_links.begin();
  for (OzObjDepLink const* link : node->source_links)
    if (!link->has_target_qualifier || link->target_qualifier != reference->target_qualifier)
      return false;

  qualifier = reference->target_qualifier;
  return true;
}

bool OzObjDependency::have_direct_sources_same_target_qualifier(Objects* objects, int& qualifier) const
{
  if (objects == nullptr)
    return false;
  objects->reset();
  if (objects->done())
    return false;

  int common = 0;
  if (!have_direct_sources_same_target_qualifier(objects->current(), common))
    return false;
  for (objects->next(); !objects->done(); objects->next())
  {
    int other = 0;
    if (!have_direct_sources_same_target_qualifier(objects->current(), other) || other != common)
      return false;
  }

  qualifier = common;
  return true;
}

namespace
{
/// A node on the path from the start of a walk, and how far the walk has come among its links.
struct Turn
{
  OzObjDepNode const* node;
  OzObjDepLinkSet::const_iterator next;
};

/// Walks all paths from `start`, depth first, along the links that `Side` names, and shows it each node at
/// which a path ends. The path is kept here rather than on the machine's stack: a history may be deeper
/// than a thread's stack allows. Nothing remembers what was visited before.
template <class Side>
void walk(Side& side, OzObjDepNode const* start, OzObjectDependencyFilter* filter, bool* filtered_out)
{
  if (side.ends_at(*start))
    return;
  OzObjDepLinkSet::const_iterator const end;
  std::vector<Turn> path; // the nodes behind `turn` that have links left
  Turn turn = {start, side.links(*start).begin()};

  for (;;)
  {
    OzObjDepLink const* const link = *turn.next;
    ++turn.next;
    // Dumps walk damaged graphs too.
    bool descends = link != nullptr && link->node != nullptr;
    if (descends && filter != nullptr && !side.accepts(*filter, *turn.node, *link))
    {
      descends = false;
      if (filtered_out != nullptr)
        *filtered_out = true;
    }

    if (descends && !side.ends_at(*link->node))
    {
      if (turn.next != end)
        path.push_back(turn);
      turn = {link->node, side.links(*link->node).begin()};
    }
    else if (turn.next == end)
    {
      if (path.empty())
        return;
      turn = path.back();
      path.pop_back();
    }
  }
}

class SourceSide
{
public:
  SourceSide(OzArray<OzDynObj const*>& objects_to_fill, bool& reached_null_to_set)
    : objects(objects_to_fill)
    , reached_null(reached_null_to_set)
  {
  }

  static OzObjDepLinkSet const& links(OzObjDepNode const& node) { return node.source_links; }

  static bool accepts(OzObjectDependencyFilter& filter, OzObjDepNode const& node, OzObjDepLink const& link)
  {
    return filter.accept(link.node->object, node.object, link.dependency_type, link.separator,
                         link.qualifier(), link.role);
  }

  bool ends_at(OzObjDepNode const& node)
  {
    if (node.object == nullptr)
    {
      reached_null = true;
      return true;
    }
    if (!node.source_links.empty())
      return false;
    objects.append(node.object);
    return true;
  }

private:
  OzArray<OzDynObj const*>& objects;
  bool& reached_null;
};

class TargetSide
{
public:
  explicit TargetSide(OzArray<OzDynObj const*>& objects_to_fill)
    : objects(objects_to_fill)
  {
  }

  static OzObjDepLinkSet const& links(OzObjDepNode const& node) { return node.target_links; }

  static bool accepts(OzObjectDependencyFilter& filter, OzObjDepNode const& node, OzObjDepLink const& link)
  {
    return filter.accept(node.object, link.node->object, link.dependency_type, link.separator,
                         link.qualifier(), link.role);
  }

  // Unlike a path from nothing, one into nothing leaves no mark: what was deleted became nothing, and that
  // is no answer to the question what it became.
  bool ends_at(OzObjDepNode const& node)
  {
    if (node.object == nullptr)
      return true;
    if (!node.target_links.empty())
      return false;
    objects.append(node.object);
    return true;
  }

private:
  OzArray<OzDynObj const*>& objects;
};

/// Takes `link` out of a set of links and of the map beside it. The link is not read before it is known to
/// be in the set: it may have been deleted.
bool remove_link(OzObjDepLinkSet& links, OzObjDepLinkMap& map, OzObjDepLink*& link)
{
  if (link == nullptr || !links.erase(link))
    return false;

  bool const was_in_map = map.erase(link->node);
  OZ_ASSERT(was_in_map);
  delete link;
  link = nullptr;
  return true;
}
} // namespace

void OzObjDependency::collect_sources(OzObjDepNode const* node, OzArray<OzDynObj const*>& objects,
                                      OzObjectDependencyFilter* filter, bool* filtered_out,
                                      bool& reached_null)
{
  SourceSide side(objects, reached_null);
  walk(side, node, filter, filtered_out);
}

void OzObjDependency::collect_targets(OzObjDepNode const* node, OzArray<OzDynObj const*>& objects,
                                      OzObjectDependencyFilter* filter, bool* filtered_out)
{
  TargetSide side(objects);
  walk(side, node, filter, filtered_out);
}

bool OzObjDependency::remove_source_link(OzObjDepNode* node, OzObjDepLink*& link)
{
  return remove_link(node->source_links, node->source_link_map, link);
}

bool OzObjDependency::remove_target_link(OzObjDepNode* node, OzObjDepLink*& link)
{
  return remove_link(node->target_links, node->target_link_map, link);
}
