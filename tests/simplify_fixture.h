#ifndef SIMPLIFY_FIXTURE_H
#define SIMPLIFY_FIXTURE_H

#include "graph_probe.h"
#include "text_journal.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// The name of a type as the enumerators have it, or its number.
inline std::string name_of_type(int type)
{
  static char const* const NAMES[] = {"UNSPECIFIED", "TRANSFER",   "CREATION",   "DELETION",   "MODIFICATION",
                                      "SPLIT",       "ABSORPTION", "CONVERSION", "CONTAINMENT"};
  return type >= 0 && type < 9 ? NAMES[type] : std::to_string(type);
}

inline int identity_of(OzObjDepNode const* node)
{
  return node->object == nullptr ? 0 : node->object->identity();
}

/// "1>2 SPLIT q5 s3" with "q-" for no qualifier, " role" behind it if there is one, and what is wrong with
/// its partner.
inline std::string text_of_link(OzObjDepNode const* source, OzObjDepLink const* link)
{
  std::string text =
      std::to_string(identity_of(source)) + ">" + std::to_string(identity_of(link->node)) + " " +
      name_of_type(link->dependency_type) +
      (link->has_target_qualifier ? " q" + std::to_string(link->target_qualifier) : std::string(" q-")) +
      " s" + std::to_string(link->separator) + (link->role != nullptr ? " role" : "");

  OzObjDepLink const* const partner = link->node->source_link_map.value(const_cast<OzObjDepNode*>(source));
  if (partner == nullptr || !link->node->source_links.contains(const_cast<OzObjDepLink*>(partner)))
    return text + " without partner";
  if (partner->node != source || partner->dependency_type != link->dependency_type ||
      partner->has_target_qualifier != link->has_target_qualifier ||
      partner->target_qualifier != link->target_qualifier || partner->separator != link->separator ||
      (partner->role == nullptr) != (link->role == nullptr))
    return text + " with another partner";
  if (!link->has_target_qualifier && link->target_qualifier != -1)
    return text + " with a value for no qualifier";
  return text;
}

/// All dependencies of a graph, by ascending identity of source and target; 0 stands for the null object.
inline std::vector<std::string> links_of(OzObjDependency& graph)
{
  std::map<std::pair<int, int>, std::string> texts;
  for (auto const& entry : OzObjDependencyProbe::nodes(graph))
    for (OzObjDepLink const* link : entry.value->target_links)
      texts[{identity_of(entry.value), identity_of(link->node)}] = text_of_link(entry.value, link);
  std::vector<std::string> list;
  for (auto const& text : texts)
    list.push_back(text.second);
  return list;
}

/// The identities of all objects of a graph, with 0 for the null object.
inline std::set<int> identities_of(OzObjDependency& graph)
{
  std::set<int> identities;
  for (auto const& entry : OzObjDependencyProbe::nodes(graph))
    identities.insert(identity_of(entry.value));
  return identities;
}

#endif
