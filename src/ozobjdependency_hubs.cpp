#include "ozobjdependency_hubs_p.h"

namespace
{
constexpr OzObjectDependency::Type ABSORPTION = OzObjectDependency::ABSORPTION;
constexpr OzObjectDependency::Type SPLIT = OzObjectDependency::SPLIT;

bool are_all_absorptions(OzObjDepLinkSet const& links)
{
  for (OzObjDepLink const* link : links)
    if (link == nullptr || link->dependency_type != ABSORPTION)
      return false;
  return !links.empty();
}

/// Does the map beside a set say the same?
bool agree(OzObjDepLinkSet const& links, OzObjDepLinkMap const& map)
{
  if (links.size() != map.size())
    return false;
  for (OzObjDepLink const* link : links)
    if (link == nullptr || link->node == nullptr || map.value(link->node) != link)
      return false;
  return true;
}
} // namespace

OzObjDepHubs::Hub* OzObjDepHubs::known(OzObjDepNode const* node)
{
  if (!any())
    return nullptr;
  auto const found = hubs.find(node);
  return found != hubs.end() ? &found->second : nullptr;
}

OzObjDepHubs::Hub* OzObjDepHubs::find(OzObjDepNode const* node)
{
  if (!is_sound || (!are_many(node->target_links) && !are_many(node->source_links)))
    return nullptr;
  if (Hub* const hub = known(node))
    return hub;

  if (!agree(node->target_links, node->target_link_map) || !agree(node->source_links, node->source_link_map))
  {
    give_up();
    return nullptr;
  }
  Hub& hub = hubs[node];
  for (OzObjDepLink const* link : node->target_links)
  {
    hub.forward_absorptions += link->dependency_type == ABSORPTION;
    hub.forward_splits += link->dependency_type == SPLIT;
  }
  for (OzObjDepLink const* link : node->source_links)
    hub.backward_absorptions += link->dependency_type == ABSORPTION;
  return &hub;
}

void OzObjDepHubs::forward_enters(OzObjDepNode const* node, OzObjDepLink const* record)
{
  if (!any())
    return;
  Hub* hub = known(node);
  if (hub != nullptr)
  {
    hub->forward_absorptions += record->dependency_type == ABSORPTION;
    hub->forward_splits += record->dependency_type == SPLIT;
  }
  if (record->dependency_type == ABSORPTION)
    return;

  // The record is in the set already, so the node was pure if all others there are absorptions.
  if (hub == nullptr)
    hub = find(node);
  if (hub == nullptr ||
      (hub->forward_absorptions != 0 && hub->forward_absorptions + 1 == node->target_links.size()))
    source_becomes_mixed(node);
}

void OzObjDepHubs::forward_leaves(OzObjDepNode const* node, OzObjDepLink const* record)
{
  Hub* const hub = known(node);
  if (hub == nullptr)
    return;
  hub->forward_absorptions -= record->dependency_type == ABSORPTION;
  hub->forward_splits -= record->dependency_type == SPLIT;
}

void OzObjDepHubs::backward_enters(OzObjDepNode const* node, OzObjDepLink const* record)
{
  Hub* const hub = known(node);
  if (hub == nullptr)
    return;
  hub->backward_absorptions += record->dependency_type == ABSORPTION;
  // Links are made for sources whose turn it is, or that have none.
  if (hub->has_open_sources)
    hub->open_sources.insert(const_cast<OzObjDepLink*>(record));
}

void OzObjDepHubs::backward_leaves(OzObjDepNode const* node, OzObjDepLink const* record)
{
  Hub* const hub = known(node);
  if (hub == nullptr)
    return;
  hub->backward_absorptions -= record->dependency_type == ABSORPTION;
  if (hub->has_open_sources)
    hub->open_sources.erase(const_cast<OzObjDepLink*>(record));
}

void OzObjDepHubs::node_goes(OzObjDepNode const* node)
{
  if (any())
    hubs.erase(node);
}

void OzObjDepHubs::absorption_ends(OzObjDepNode const* n1, OzObjDepLink const* forward,
                                   OzObjDepNode const* n3, OzObjDepLink const* backward)
{
  if (!any())
    return;
  if (backward == nullptr || backward->dependency_type != ABSORPTION)
  {
    give_up();
    return;
  }

  // n3 becomes mixed, and its sources are in order no longer, nor are those that absorb them.
  if (n3->source_links.size() > 1 && is_pure_target(n3))
    for (OzObjDepLink const* link : n3->source_links)
      source_becomes_mixed(link->node);
  if (Hub* const hub = known(n3))
    --hub->backward_absorptions;

  if (forward == nullptr)
    return;
  if (is_pure_source(n1))
    source_becomes_mixed(n1);
  if (Hub* const hub = known(n1))
    --hub->forward_absorptions;
}

void OzObjDepHubs::absorption_of_source_ends(OzObjDepNode const* n1, OzObjDepNode const* n3)
{
  if (Hub* const hub = known(n1))
    --hub->forward_absorptions;
  if (Hub* const hub = known(n3))
    --hub->backward_absorptions;
}

void OzObjDepHubs::absorption_of_target_ends(OzObjDepNode const* n1, OzObjDepNode const* n3)
{
  if (!any())
    return;
  // A source that was mixed before has no mark, nor has anything that absorbs it.
  if (n1->target_links.size() > 1 && is_pure_source(n1))
    source_becomes_mixed(n1);
  absorption_of_source_ends(n1, n3);
}

bool OzObjDepHubs::is_pure_source(OzObjDepNode const* node)
{
  if (Hub const* const hub = find(node))
    return hub->forward_absorptions != 0 && hub->forward_absorptions == node->target_links.size();
  return are_all_absorptions(node->target_links);
}

bool OzObjDepHubs::is_pure_target(OzObjDepNode const* node)
{
  if (Hub const* const hub = find(node))
    return hub->backward_absorptions != 0 && hub->backward_absorptions == node->source_links.size();
  return are_all_absorptions(node->source_links);
}

void OzObjDepHubs::source_becomes_mixed(OzObjDepNode const* node)
{
  if (Hub* const hub = known(node))
    hub->is_source_in_order = false;
  for (OzObjDepLink const* link : node->target_links)
  {
    if (link == nullptr || link->dependency_type != ABSORPTION || link->node == nullptr)
      continue;
    if (Hub* const hub = known(link->node))
      hub->is_target_in_order = false;
  }
}
