#include "ozobjdependency.h"

#include "ozassert.h"
#include "ozdebug.h"
#include "ozjournal.h"
#include "ozobjdependency_p.h"
#include "ozobject.h"
#include "ozpriqueue.h"
#include "ozstandardattribs.h"

#include <iterator>
#include <utility>

namespace
{
typedef OzPriQueue<OzObjDepNode const*, int> NodeQueue;
typedef OzPriQueue<OzObjDepLink const*, int> LinkQueue;

constexpr bool ASCENDING = false; // the lowest priority comes first

char const* type_text(OzObjectDependency::Type type)
{
  static char const* const TEXTS[] = {"UNSPECIFIED", "TRANSFER",   "CREATION",   "DELETION",   "MODIFICATION",
                                      "SPLIT",       "ABSORPTION", "CONVERSION", "CONTAINMENT"};
  return type >= 0 && type < static_cast<int>(std::size(TEXTS)) ? TEXTS[type] : "unknown";
}

char const* colour(int separator)
{
  static char const* const COLOURS[] = {"black",     "green",     "blue",       "yellow2",        "magenta",
                                        "cyan",      "burlywood", "gray",       "yellow3",        "DarkGreen",
                                        "SteelBlue", "yellow4",   "BlueViolet", "MediumSeaGreen", "brown"};
  return separator >= 0 && separator < static_cast<int>(std::size(COLOURS)) ? COLOURS[separator] : COLOURS[0];
}

OzString id_of(OzObjDepNode const* node)
{
  return node->object != nullptr ? OzString(node->object->identity(), 1, ' ') : OzString("NULL");
}

/// Dumps go by identity, which is the same from run to run where addresses are not.
int priority_of(OzObjDepNode const* node)
{
  return node != nullptr && node->object != nullptr ? node->object->identity() : 0;
}

/// The start of a line of a plain dump.
OzJournal& at(OzJournal& journal, int indent)
{
  Oz_DebugIndentation(journal, indent);
  return journal;
}

/// Does one of the objects pass? Where there is none, the node's own object is asked about.
bool any_passes(OzObjectDependencyNodeFilter const& filter, OzArray<OzDynObj const*> const& objects,
                OzDynObj const* own_object)
{
  if (objects.size() == 0)
    return filter.accept(own_object);

  for (OzDynObj const* object : objects)
    if (filter.accept(object))
      return true;
  return false;
}
} // namespace

void OzObjDependency::debug(OzJournal& journal, OzDebug level, bool check_integrity, int indent) const
{
  int const indent_1 = indent + Oz_DebugIndentStep();
  int const indent_2 = indent_1 + Oz_DebugIndentStep();

  if (dotty_output)
  {
    journal << "strict digraph ObjectDependency {" << ozEndExpr;
    if (!is_valid(&journal))
      journal << "xxx [label=\"OzObjDependecy is invalid\",color=\"red\"];" << ozEndExpr;
  }
  else
  {
    if (check_integrity)
    {
      at(journal, indent) << "check integrity of OzObjDependency" << ozEndExpr;
      bool const valid = is_valid(&journal);
      at(journal, indent) << (valid ? "OzObjDependency is valid" : "OzObjDependency is not valid")
                          << ozEndExpr;
    }
    if (level >= OZ_DEBUG_SUMMARY)
    {
      at(journal, indent) << "OzObjDependency" << ozEndExpr;
      at(journal, indent_1) << "number of nodes               : " << object_node_map.size() << ozEndExpr;
      at(journal, indent_1) << "number of roots               : " << roots.size() << ozEndExpr;
      at(journal, indent_1) << "number of leafs               : " << leaves.size() << ozEndExpr;
    }
  }

  // A drawing at a lower level stays without its closing brace: it is no complete graph.
  if (level < OZ_DEBUG_CONTENTS)
    return;

  if (!dotty_output)
    at(journal, indent_1) << "contents                      :" << ozEndExpr;
  debug_levels(journal, level, indent_2);
  if (dotty_output)
    journal << "}" << ozEndExpr;
}

/// Lists the nodes by their shortest distance from a root.
void OzObjDependency::debug_levels(OzJournal& journal, OzDebug level, int indent) const
{
  NodeQueue queues[2] = {NodeQueue(ASCENDING), NodeQueue(ASCENDING)};
  NodeQueue* present = &queues[0];
  NodeQueue* next = &queues[1];
  NodeSet queued;
  for (OzObjDepNode* root : roots)
  {
    present->insert(root, priority_of(root));
    queued.insert(root);
  }

  int level_number = 0;
  bool level_begins = true;
  while (present->count() > 0)
  {
    if (level_begins && !dotty_output)
    {
      level_begins = false;
      journal << ozEndExpr;
      at(journal, indent) << "level " << level_number << ":" << ozEndExpr;
    }

    OzObjDepNode const* const node = present->extract();
    if (node != nullptr)
    {
      debug_node(node, journal, level, indent, dotty_output, debug_node_filter_types, debug_node_filters,
                 debug_link_filter);
      for (OzObjDepLink const* link : node->target_links)
        if (link != nullptr && link->node != nullptr && queued.insert(link->node))
          next->insert(link->node, priority_of(link->node));
    }
    else if (!dotty_output)
    {
      journal << ozEndExpr;
      at(journal, indent) << "node object id: NULL node" << ozEndExpr;
    }

    if (present->count() == 0)
    {
      std::swap(present, next);
      ++level_number;
      level_begins = true;
    }
  }
}

void OzObjDependency::set_dotty_output_format(bool dotty)
{
  dotty_output = dotty;
}

void OzObjDependency::add_debug_node_filter(DebugNodeFilterType type,
                                            OzObjectDependencyNodeFilter const* filter)
{
  debug_node_filter_types.append(type);
  debug_node_filters.append(filter);
}

void OzObjDependency::remove_debug_node_filters()
{
  debug_node_filter_types.resize(0, false);
  debug_node_filter_types.reserve(0, false);
  debug_node_filters.resize(0, false);
  debug_node_filters.reserve(0, false);
}

void OzObjDependency::set_debug_link_filter(OzObjectDependencyFilter* filter)
{
  debug_link_filter = filter;
}

void OzObjDependency::reset_debug_link_filter()
{
  debug_link_filter = nullptr;
}

void OzObjDependency::debug_node(OzObjDepNode const* node, OzJournal& journal, int level, int indent,
                                 bool dotty, NodeFilterTypes const& types, NodeFilters const& filters,
                                 OzObjectDependencyFilter* link_filter)
{
  if (level < OZ_DEBUG_SUMMARY || !passes_debug_filters(node, types, filters))
    return;

  bool skipped = false;
  // The filter gets the node's own object first for both sides. For a source this is the opposite of what a
  // query hands it.
  auto const collect = [&](OzObjDepLinkSet const& links, LinkQueue& shown)
  {
    for (OzObjDepLink const* link : links)
    {
      if (link == nullptr)
        continue;
      OzDynObj const* const other = link->node != nullptr ? link->node->object : nullptr;
      bool const accepted =
          (link_filter == nullptr || link_filter->accept(node->object, other, link->dependency_type,
                                                         link->separator, link->qualifier(), link->role)) &&
          (link->node == nullptr || passes_debug_filters(link->node, types, filters));
      if (accepted)
        shown.insert(link, priority_of(link->node));
      else
        skipped = true;
    }
  };
  LinkQueue targets(ASCENDING);
  LinkQueue sources(ASCENDING);
  collect(node->target_links, targets);
  collect(node->source_links, sources);
  if (skipped && targets.count() == 0 && sources.count() == 0)
    return;

  int const indent_1 = indent + Oz_DebugIndentStep();
  int const indent_2 = indent_1 + Oz_DebugIndentStep();
  if (dotty)
  {
    journal << id_of(node) << " [label=\"" << id_of(node) << " " << node_name(node) << "\"];" << ozEndExpr;
    while (level == OZ_DEBUG_DETAIL && targets.count() > 0)
    {
      OzObjDepLink const* const link = targets.extract();
      if (link->node != nullptr)
        journal << id_of(node) << " ";
      debug_link(link, journal, OZ_DEBUG_DETAIL, indent_2, true);
    }
    return; // each dependency is drawn once, from its source
  }

  journal << ozEndExpr;
  at(journal, indent) << "node object id: " << id_of(node) << ozEndExpr;
  at(journal, indent) << "OzObjDepNode" << ozEndExpr;
  at(journal, indent_1) << "object name                   : " << node_name(node) << ozEndExpr;
  at(journal, indent_1) << "target links                  : " << targets.count() << ozEndExpr;
  while (level == OZ_DEBUG_DETAIL && targets.count() > 0)
    debug_link(targets.extract(), journal, OZ_DEBUG_CONTENTS, indent_2, false);
  at(journal, indent_1) << "source links                  : " << sources.count() << ozEndExpr;
  while (level == OZ_DEBUG_DETAIL && sources.count() > 0)
    debug_link(sources.extract(), journal, OZ_DEBUG_CONTENTS, indent_2, false);
}

void OzObjDependency::debug_link(OzObjDepLink const* link, OzJournal& journal, int level, int indent,
                                 bool dotty)
{
  OZ_ASSERT(link->node != nullptr);
  if (link->node == nullptr || level < OZ_DEBUG_CONTENTS)
    return;

  if (dotty)
  {
    journal << " -> {" << id_of(link->node) << "} [label=\"" << type_text(link->dependency_type);
    if (link->has_target_qualifier)
      journal << " " << link->target_qualifier;
    else
      journal << " -";
    journal << "\\nseparator " << link->separator << "\",color=\"" << colour(link->separator) << "\"];"
            << ozEndExpr;
    return;
  }

  int const indent_1 = indent + Oz_DebugIndentStep();
  at(journal, indent) << "OzObjDepLink" << ozEndExpr;
  at(journal, indent_1) << "object name                : " << node_name(link->node) << ozEndExpr;
  at(journal, indent_1) << "dependency_type            : " << type_text(link->dependency_type) << ozEndExpr;
  at(journal, indent_1) << "target qualifier           : ";
  if (link->has_target_qualifier)
    journal << link->target_qualifier << ozEndExpr;
  else
    journal << "-" << ozEndExpr;
  at(journal, indent_1) << "node object id             : " << id_of(link->node) << ozEndExpr;
  if (level == OZ_DEBUG_DETAIL)
    debug_node(link->node, journal, OZ_DEBUG_CONTENTS, indent_1, false, NodeFilterTypes(), NodeFilters(),
               nullptr);
  at(journal, indent_1) << "separator                  : " << link->separator << ozEndExpr;
}

OzString OzObjDependency::node_name(OzObjDepNode const* node)
{
  if (node->object == nullptr)
    return OzString("NULL");

  OzString name(*node->object->type());
  OzObject const* const object = OzObject::cast(node->object);
  OzAttrib const* const attrib =
      object != nullptr ? object->find_attrib_by_type(OzNameAttrib::type_id()) : nullptr;
  OzNameAttrib const* const name_attrib = OzNameAttrib::cast(attrib);
  if (name_attrib != nullptr)
    name.append(OzString(": ")).append(name_attrib->get_name());
  return name;
}

bool OzObjDependency::passes_debug_filters(OzObjDepNode const* node, NodeFilterTypes const& types,
                                           NodeFilters const& filters)
{
  OZ_ASSERT(types.size() == filters.size());
  std::uint64_t const n = types.size() < filters.size() ? types.size() : filters.size();
  bool passes = true;
  for (std::uint64_t i = 0; i < n && passes; ++i)
  {
    OzObjectDependencyNodeFilter const* const filter = filters[i];
    OZ_ASSERT(filter != nullptr);
    if (filter == nullptr)
      continue;

    DebugNodeFilterType const type = types[i];
    if (type == NODE_FILTER_SELF)
      passes = filter->accept(node->object);
    if (type == NODE_FILTER_SOURCES || type == NODE_FILTER_SOURCES_AND_TARGETS)
    {
      OzArray<OzDynObj const*> sources;
      bool reached_null = false;
      collect_sources(node, sources, nullptr, nullptr, reached_null);
      passes = any_passes(*filter, sources, node->object);
    }
    if (passes && (type == NODE_FILTER_TARGETS || type == NODE_FILTER_SOURCES_AND_TARGETS))
    {
      OzArray<OzDynObj const*> targets;
      collect_targets(node, targets, nullptr, nullptr);
      passes = any_passes(*filter, targets, node->object);
    }
  }
  return passes;
}
