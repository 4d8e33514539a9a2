#include "ozobjdependency.h"

#include "ozassert.h"
#include "ozjournal.h"
#include "ozobjdependency_hubs_p.h"
#include "ozobjdependency_p.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

// Simplification takes the nodes between roots and leaves out, one at a time, and puts a direct dependency
// in the place of each path through such a node. In all of this unit n2 is the node about to go, n1 one of
// its sources, n3 one of its targets, and rn1 the root whose turn it is.

namespace
{
struct NodePair
{
  bool operator==(NodePair const& other) const { return first == other.first && second == other.second; }

  OzObjDepNode const* first;
  OzObjDepNode const* second;
};

struct NodePairHash
{
  std::size_t operator()(NodePair const& pair) const
  {
    // Nodes lie side by side: multiplication spreads the two addresses before they are mixed.
    return (reinterpret_cast<std::size_t>(pair.first) * 0x9E3779B97F4A7C15u) ^
           (reinterpret_cast<std::size_t>(pair.second) * 0xC2B2AE3D27D4EB4Fu) >> 17;
  }
};

/// A link from n1 that leads to n3, or that may lead there through the node at its end.
struct Way
{
  OzObjDepLink* link;
  bool is_existing;       // or else one of the new links
  std::uint64_t position; // among the new links
};
} // namespace

/// What one phase of a step has decided and not yet done. The walk over n1's forward records must not meet
/// changes of that set, so forward records wait here, both the new and the old ones, until commit_changes.
/// Backward records of new links are in their place at once.
struct OzObjDepSimplifyContext
{
  static constexpr std::uint64_t NONE = ~std::uint64_t(0);

  OzObjDepSimplifyContext(bool split_is_modificational, OzJournal* journal)
    : split_modificational(split_is_modificational)
    , trace(journal)
  {
  }

  void add_new_link(OzObjDepNode* source, OzObjDepLink* link)
  {
    new_link_sources.append(source);
    new_links.append(link);
  }

  void add_old_link(OzObjDepNode* source, OzObjDepLink* link)
  {
    old_link_sources.append(source);
    old_links.append(link);
  }

  /// The place of the link from `source` to `target` among the new links, or NONE.
  std::uint64_t position_of_new_link(OzObjDepNode const* source, OzObjDepNode const* target)
  {
    if (index_new_links())
    {
      auto const found = new_link_index.find(NodePair{source, target});
      return found != new_link_index.end() ? found->second : NONE;
    }
    for (std::uint64_t i = 0; i < new_links.size(); ++i)
      if (new_link_sources[i] == source && new_links[i]->node == target)
        return i;
    return NONE;
  }

  /// The forward record from `source` to `target` that waits to be entered, or null.
  OzObjDepLink* new_link(OzObjDepNode const* source, OzObjDepNode const* target)
  {
    std::uint64_t const position = position_of_new_link(source, target);
    return position != NONE ? new_links[position] : nullptr;
  }

  /// At least the number of new links from `source`, and not far above it.
  std::uint64_t new_links_bound(OzObjDepNode const* source)
  {
    if (!index_new_links())
      return new_links.size();
    auto const found = new_links_of.find(source);
    return found != new_links_of.end() ? found->second.size() : 0;
  }

  /// Calls `visit` with the place of each new link from `source`, in their order.
  template <class Visit>
  void visit_new_links(OzObjDepNode const* source, Visit visit)
  {
    if (!index_new_links())
    {
      for (std::uint64_t i = 0; i < new_links.size(); ++i)
        if (new_link_sources[i] == source)
          visit(i);
      return;
    }
    auto const found = new_links_of.find(source);
    if (found == new_links_of.end())
      return;
    for (std::uint64_t i : found->second)
      visit(i);
  }

  /// Calls `visit` with each node that holds a record to be dropped to `target`.
  template <class Visit>
  void visit_old_sources(OzObjDepNode const* target, Visit visit)
  {
    if (!index_old_links())
    {
      for (std::uint64_t i = 0; i < old_links.size(); ++i)
        if (old_links[i]->node == target)
          visit(old_link_sources[i]);
      return;
    }
    auto const found = old_sources_of.find(target);
    if (found == old_sources_of.end())
      return;
    for (OzObjDepNode* source : found->second)
      visit(source);
  }

  void forget_new_links()
  {
    new_link_sources.resize(0, true);
    new_links.resize(0, true);
    // A table that has once been large is dear to clear, and the next root may be a small one.
    if (n_new_indexed != 0)
    {
      n_new_indexed = 0;
      decltype(new_link_index)().swap(new_link_index);
      decltype(new_links_of)().swap(new_links_of);
    }
  }

  void forget_old_links()
  {
    old_link_sources.resize(0, true);
    old_links.resize(0, true);
    if (n_old_indexed != 0)
    {
      n_old_indexed = 0;
      decltype(old_sources_of)().swap(old_sources_of);
    }
  }

  /// Can a record to `target` wait to be dropped while `target` has lost its own? Only if it was an n2 before in
  /// the same turn, and that are the targets of the root; each of the later ones has a commit to itself.
  bool may_have_old_sources(OzObjDepNode const* target) const
  {
    return root != nullptr && root->target_link_map.contains(const_cast<OzObjDepNode*>(target));
  }
  /// False if there is surely no new link from `source` to `target`: its backward record is in place at once,
  /// and stays until `target` is an n2.
  bool may_have_new_link(OzObjDepNode const* source, OzObjDepNode const* target) const
  {
    return target->source_link_map.contains(const_cast<OzObjDepNode*>(source)) ||
           may_have_old_sources(target);
  }

  OzObjDepNode const* root = nullptr; // rn1, or null when the later ones have their turn
  bool const split_modificational;    // what becomes of a lone SPLIT
  OzArray<OzObjDepNode*> new_link_sources;
  OzArray<OzObjDepLink*> new_links; // beside new_link_sources: forward records to be entered there
  OzArray<OzObjDepNode*> old_link_sources;
  OzArray<OzObjDepLink*> old_links;     // beside old_link_sources: forward records to be dropped there
  OzArray<OzObjDepNode*> removed_nodes; // without links, to be deleted
  OzAddressSet<OzObjDepNode*> n2s_to_remove_later;
  // From a pair n1, n3 that has been settled by one path to the other intermediate nodes n2a whose paths
  // therefore need no link. Whether some n2a does not lie below a given node is all that is ever asked, so
  // the highest one stands for all.
  std::unordered_map<NodePair, OzObjDepNode*, NodePairHash> triples_to_skip;
  std::vector<Way> ways; // of the path at hand; here so that its memory serves for all
  OzObjDepHubs hubs;
  OzJournal* const trace; // not owned, may be null

private:
  // Up to here the links are searched one by one.
  static constexpr std::uint64_t FEW = 8;

  /// False while there are few. Where nobody asks, links are never entered in the tables.
  bool index_new_links()
  {
    if (new_links.size() <= FEW)
      return false;
    for (; n_new_indexed < new_links.size(); ++n_new_indexed)
    {
      OzObjDepNode const* const source = new_link_sources[n_new_indexed];
      new_link_index.emplace(NodePair{source, new_links[n_new_indexed]->node}, n_new_indexed);
      new_links_of[source].push_back(n_new_indexed);
    }
    return true;
  }
  bool index_old_links()
  {
    if (old_links.size() <= FEW)
      return false;
    for (; n_old_indexed < old_links.size(); ++n_old_indexed)
      old_sources_of[old_links[n_old_indexed]->node].push_back(old_link_sources[n_old_indexed]);
    return true;
  }

  std::uint64_t n_new_indexed = 0;
  std::uint64_t n_old_indexed = 0;
  std::unordered_map<NodePair, std::uint64_t, NodePairHash> new_link_index; // by both ends
  std::unordered_map<OzObjDepNode const*, std::vector<std::uint64_t>> new_links_of;
  std::unordered_map<OzObjDepNode const*, std::vector<OzObjDepNode*>> old_sources_of; // by target
};

namespace
{
typedef OzObjectDependency::Type Type;

int identity(OzObjDepNode const* node)
{
  return node != nullptr && node->object != nullptr ? node->object->identity() : 0;
}

/// Writes one line, if there is a trace.
template <class... Pieces>
void trace_line(OzJournal* trace, Pieces const&... pieces)
{
  if (trace != nullptr)
    (*trace << ... << pieces) << ozEndExpr;
}

bool have_equal_qualifiers(OzObjDepLink const& link, bool has_target_qualifier, int target_qualifier)
{
  return link.has_target_qualifier == has_target_qualifier &&
         (!has_target_qualifier || link.target_qualifier == target_qualifier);
}

std::uint64_t count_type(OzObjDepLinkSet const& links, Type type)
{
  std::uint64_t n = 0;
  for (OzObjDepLink const* link : links)
    if (link != nullptr && link->dependency_type == type)
      ++n;
  return n;
}

/// The only record of `type`; null if there is none, or another.
OzObjDepLink* only_one(OzObjDepLinkSet const& links, Type type)
{
  OzObjDepLink* one = nullptr;
  for (OzObjDepLink* link : links)
  {
    if (link == nullptr || link->dependency_type != type)
      continue;
    if (one != nullptr)
      return nullptr;
    one = link;
  }
  return one;
}

/// The nodes of a list, each once and in the order of the walks.
std::vector<OzObjDepNode*> each_once(std::vector<OzObjDepNode*> nodes)
{
  std::sort(nodes.begin(), nodes.end(), std::less<OzObjDepNode*>());
  nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
  return nodes;
}

/// The links that a commit has entered, by either end.
class NewLinks
{
public:
  void add(OzObjDepNode* source, OzObjDepNode* target) { links.push_back({source, target}); }

  std::vector<OzObjDepNode*> targets() const
  {
    std::vector<OzObjDepNode*> nodes;
    for (Ends const& ends : links)
      nodes.push_back(ends.target);
    return nodes;
  }

  /// The backward records of `target` that are new and of type ABSORPTION.
  std::vector<OzObjDepLink*> absorptions_of_target(OzObjDepNode* target)
  {
    sort(by_target, &Ends::target);
    return absorptions(by_target, target, &Ends::target,
                       [](Ends const& ends) { return ends.target->source_link_map.value(ends.source); });
  }
  /// The same for the forward records of `source`.
  std::vector<OzObjDepLink*> absorptions_of_source(OzObjDepNode* source)
  {
    sort(by_source, &Ends::source);
    return absorptions(by_source, source, &Ends::source,
                       [](Ends const& ends) { return ends.source->target_link_map.value(ends.target); });
  }

private:
  struct Ends
  {
    OzObjDepNode* source;
    OzObjDepNode* target;
  };

  typedef OzObjDepNode* Ends::*End;

  void sort(std::vector<Ends>& sorted, End end)
  {
    if (!sorted.empty())
      return;
    sorted = links;
    std::sort(sorted.begin(), sorted.end(),
              [&](Ends const& a, Ends const& b) { return std::less<OzObjDepNode*>()(a.*end, b.*end); });
  }
  template <class Record>
  static std::vector<OzObjDepLink*> absorptions(std::vector<Ends> const& sorted, OzObjDepNode* node, End end,
                                                Record record)
  {
    std::vector<OzObjDepLink*> list;
    auto at = std::lower_bound(sorted.begin(), sorted.end(), node,
                               [&](Ends const& ends, OzObjDepNode* wanted)
                               { return std::less<OzObjDepNode*>()(ends.*end, wanted); });
    for (; at != sorted.end() && (*at).*end == node; ++at)
    {
      // One that went again in the same commit is not there any more.
      OzObjDepLink* const link = record(*at);
      if (link != nullptr && link->dependency_type == OzObjectDependency::ABSORPTION)
        list.push_back(link);
    }
    return list;
  }

  std::vector<Ends> links;
  std::vector<Ends> by_target;
  std::vector<Ends> by_source;
};

/// An ABSORPTION stays one only where both ends are pure: all targets of the source and all sources of the
/// target are ABSORPTION. Elsewhere it becomes CREATION.
///
/// Looked at are the sources that the targets of new links absorb, and then all that absorbs these sources, no
/// farther: what a change there makes impure waits until a new link comes near it.
class AbsorptionCleanUp
{
public:
  AbsorptionCleanUp(OzObjDepSimplifyContext& context, NewLinks& links_of_the_commit)
    : hubs(context.hubs)
    , root(context.root)
    , new_links(links_of_the_commit)
  {
  }

  void run()
  {
    for (OzObjDepNode* target : each_once(new_links.targets()))
      collect_sources(target);
    for (OzObjDepNode* source : each_once(sources))
      clean_up_source(source);
    for (OzObjDepNode* target : each_once(targets))
      clean_up_target(target);
  }

private:
  static bool is_absorption(OzObjDepLink const* link)
  {
    return link != nullptr && link->dependency_type == OzObjectDependency::ABSORPTION;
  }

  void collect_sources(OzObjDepNode* target)
  {
    OzObjDepHubs::Hub* const hub = hubs.find(target);
    if (hub != nullptr && hub->backward_absorptions == 0)
      return;

    if (hub != nullptr)
    {
      std::vector<OzObjDepLink*> const absorptions = new_links.absorptions_of_target(target);
      bool const are_all_new = absorptions.size() == hub->backward_absorptions;
      if (hub->is_target_in_order || are_all_new)
      {
        targets.push_back(target);
        for (OzObjDepLink const* link : absorptions)
          sources.push_back(link->node);
        hub->is_target_in_order = true;
        return;
      }
      // From here on it is: whatever is not is put in order, or takes the mark off again.
      hub->is_target_in_order = true;
    }

    for (OzObjDepLink const* link : target->source_links)
    {
      if (!is_absorption(link))
        continue;
      targets.push_back(target);
      OZ_ASSERT(link->node != nullptr);
      if (link->node == nullptr)
        continue;
      sources.push_back(link->node);
      if (hubs.any() && !has_forward_partner(target, link))
        hubs.give_up();
    }
  }

  void clean_up_source(OzObjDepNode* source)
  {
    // A root has its turn once, so that it is looked through once.
    OzObjDepHubs::Hub* const hub = source == root ? hubs.known(source) : hubs.find(source);
    std::uint64_t const n_targets = source->target_links.size();
    if (hub != nullptr && hub->forward_absorptions == n_targets && hub->is_source_in_order)
      return;

    if (hub != nullptr && hub->forward_absorptions != n_targets)
    {
      std::vector<OzObjDepLink*> const absorptions = new_links.absorptions_of_source(source);
      if (!absorptions.empty() && absorptions.size() == hub->forward_absorptions)
      {
        // Their targets are looked at already.
        for (OzObjDepLink* link : absorptions)
          retype_forward(source, link);
        return;
      }
    }

    std::uint64_t absorptions = 0;
    for (OzObjDepLink const* link : source->target_links)
    {
      if (!is_absorption(link))
        continue;
      ++absorptions;
      OZ_ASSERT(link->node != nullptr);
      if (link->node == nullptr)
        continue;
      targets.push_back(link->node);
      if (hubs.any() && !has_backward_partner(source, link))
        hubs.give_up();
    }
    OZ_ASSERT(absorptions != 0);
    if (hub != nullptr)
      hub->is_source_in_order = true;
    if (absorptions == n_targets)
      return;
    for (OzObjDepLink* link : source->target_links)
      if (is_absorption(link))
        retype_forward(source, link);
  }

  void clean_up_target(OzObjDepNode* target)
  {
    OzObjDepHubs::Hub* const hub = hubs.find(target);
    std::uint64_t const absorptions = hub != nullptr
                                          ? hub->backward_absorptions
                                          : count_type(target->source_links, OzObjectDependency::ABSORPTION);
    if (absorptions == 0 || absorptions == target->source_links.size())
      return;

    if (hub != nullptr)
    {
      std::vector<OzObjDepLink*> const news = new_links.absorptions_of_target(target);
      if (news.size() == absorptions)
      {
        for (OzObjDepLink* link : news)
          retype_backward(target, link);
        return;
      }
    }
    for (OzObjDepLink* link : target->source_links)
      if (is_absorption(link))
        retype_backward(target, link);
  }

  void retype_forward(OzObjDepNode* source, OzObjDepLink* link)
  {
    OzObjDepLink* const partner = link->node != nullptr ? link->node->source_link_map.value(source) : nullptr;
    OZ_ASSERT(partner != nullptr);
    if (!is_absorption(partner))
      hubs.give_up();
    else
      hubs.absorption_of_source_ends(source, link->node);
    link->dependency_type = OzObjectDependency::CREATION;
    if (partner != nullptr)
      partner->dependency_type = OzObjectDependency::CREATION;
  }

  void retype_backward(OzObjDepNode* target, OzObjDepLink* link)
  {
    OzObjDepLink* const partner = link->node != nullptr ? link->node->target_link_map.value(target) : nullptr;
    OZ_ASSERT(partner != nullptr);
    if (!is_absorption(partner))
      hubs.give_up();
    else
      hubs.absorption_of_target_ends(link->node, target);
    link->dependency_type = OzObjectDependency::CREATION;
    if (partner != nullptr)
      partner->dependency_type = OzObjectDependency::CREATION;
  }

  static bool has_forward_partner(OzObjDepNode* target, OzObjDepLink const* link)
  {
    OzObjDepLink* const partner = link->node->target_link_map.value(target);
    return is_absorption(partner) && link->node->target_links.contains(partner) &&
           target->source_link_map.value(link->node) == link;
  }
  static bool has_backward_partner(OzObjDepNode* source, OzObjDepLink const* link)
  {
    OzObjDepLink* const partner = link->node->source_link_map.value(source);
    return is_absorption(partner) && link->node->source_links.contains(partner) &&
           source->target_link_map.value(link->node) == link;
  }

  OzObjDepHubs& hubs;
  OzObjDepNode const* const root;
  NewLinks& new_links;
  std::vector<OzObjDepNode*> sources; // that a target of a new link absorbs
  std::vector<OzObjDepNode*> targets; // that absorb one of these
};

/// A split with a single product is no split.
void clean_up_lone_split(OzObjDepSimplifyContext& context, OzObjDepNode* source)
{
  OzObjDepHubs::Hub* const hub =
      source == context.root ? context.hubs.known(source) : context.hubs.find(source);
  if (hub != nullptr && hub->forward_splits != 1)
    return;
  OzObjDepLink* const link = only_one(source->target_links, OzObjectDependency::SPLIT);
  if (link == nullptr)
    return;

  Type const type =
      context.split_modificational ? OzObjectDependency::MODIFICATION : OzObjectDependency::CREATION;
  link->dependency_type = type;
  if (hub != nullptr)
    hub->forward_splits = 0;
  OzObjDepLink* const partner = link->node != nullptr ? link->node->source_link_map.value(source) : nullptr;
  OZ_ASSERT(partner != nullptr);
  if (partner == nullptr || partner->dependency_type != OzObjectDependency::SPLIT)
    context.hubs.give_up();
  if (partner != nullptr)
    partner->dependency_type = type;
}
} // namespace

void OzObjDependency::simplify_it()
{
  NodeSet turns = roots;
  bool changed = false;
  do
  {
    OZ_ASSERT(is_valid(nullptr));
    changed = simplify_roots(turns);
  } while (changed);
}

bool OzObjDependency::simplify_step()
{
  NodeSet turns = roots;
  return simplify_roots(turns);
}

bool OzObjDependency::simplify_roots(NodeSet& turns)
{
  OzObjDepSimplifyContext context(consider_split_modificational(), simplify_trace);
  NodeSet unchecked_roots = turns;
  NodeSet unfinished;
  trace_line(simplify_trace, "\"simplify_step\" with ", roots.size(), " roots.");
  bool changed = false;

  for (OzObjDepNode* rn1 : turns)
  {
    OZ_ASSERT(rn1 != nullptr);
    if (rn1 == nullptr)
      continue;

    trace_line(simplify_trace, "rn1 = ", identity(rn1));
    bool const was_unchecked = unchecked_roots.erase(rn1);
    OZ_ASSERT(was_unchecked);
    context.root = rn1;
    bool has_changed = false;
    for (OzObjDepLink const* link : rn1->target_links)
    {
      if (link == nullptr)
        continue;
      trace_line(simplify_trace, "   n2 = ", identity(link->node));
      if (prepare_removal_of_n2(context, link->node, rn1, &unchecked_roots))
        has_changed = true;
    }
    changed = changed || has_changed;
    if (has_changed)
      unfinished.insert(rn1);
    commit_changes(context, object_node_map);
  }

  trace_line(simplify_trace, "remove n2s to remove later");
  OzObjDepSimplifyContext later(consider_split_modificational(), simplify_trace);
  for (OzObjDepNode* n2 : context.n2s_to_remove_later)
  {
    trace_line(simplify_trace, "   n2 = ", identity(n2));
    if (prepare_removal_of_n2(later, n2, nullptr, nullptr))
      changed = true;
    OZ_ASSERT(later.n2s_to_remove_later.empty());
    if (!later.n2s_to_remove_later.empty())
      trace_line(simplify_trace, "   _ASSERTION_: ", "removal of n2 produced new n2s to remove!!!");
    commit_changes(later, object_node_map);
  }

  if (changed && object_node_map.contains(nullptr))
    clean_up_null_node();

  // Nodes without targets never get any, so a root that has only such targets has nothing to do in later
  // steps. It is passed over there, unless somebody reads along or the graph is damaged.
  if (simplify_trace != nullptr || dkb_assertion_handler != nullptr || context.hubs.has_given_up() ||
      later.hubs.has_given_up())
  {
    turns = roots;
    return changed;
  }
  turns.clear();
  for (OzObjDepNode* root : unfinished)
    if (roots.contains(root))
      turns.insert(root);
  return changed;
}

/// An object that has a source besides the null object was not created from nothing, and one that has a
/// target besides it was not deleted. The null-object node itself goes with its last link.
void OzObjDependency::clean_up_null_node()
{
  OzObjDepNode* const node = object_node_map.value(nullptr);
  OZ_ASSERT(node != nullptr);
  if (node == nullptr)
    return;

  prune_null_node_links(node, false);
  prune_null_node_links(node, true);
  if (node->source_links.empty())
    leaves.erase(node);
  if (node->target_links.empty())
    roots.erase(node);
  if (node->source_links.empty() && node->target_links.empty())
  {
    object_node_map.erase(nullptr);
    delete node;
  }
}

bool OzObjDependency::prepare_removal_of_n2(OzObjDepSimplifyContext& context, OzObjDepNode* n2,
                                            OzObjDepNode* rn1, NodeSet* unchecked_roots)
{
  trace_line(context.trace, "   \"prepare_removal_of_n2\"");
  OZ_ASSERT(n2 != nullptr);
  if (n2 == nullptr)
    return false;
  if (n2->target_links.empty() || n2->object == nullptr)
  {
    trace_line(context.trace, "   no targets => return");
    return false;
  }

  OzArray<OzObjDepLink*> done_sources;
  OzObjDepLinkSet const& sources = open_sources(context, n2, rn1, unchecked_roots);
  bool complete = sources.size() == n2->source_links.size();
  for (OzObjDepLink* s : sources)
  {
    if (s == nullptr || s->node == nullptr)
      continue;
    OzObjDepNode* const n1 = s->node;
    trace_line(context.trace, "      n1 = ", identity(n1));
    if (unchecked_roots != nullptr && unchecked_roots->contains(n1))
    {
      complete = false; // n1 will have its own turn
      trace_line(context.trace, "      is unchecked root => skip n1, remove n2 later");
      continue;
    }

    OzObjDepLink* l12 = n1->target_link_map.value(n2);
    if (l12 == nullptr)
    {
      l12 = context.new_link(n1, n2);
      if (l12 != nullptr)
        trace_line(context.trace, "      link between n1 and n2 is a new one");
    }
    OZ_ASSERT(l12 != nullptr);
    if (l12 == nullptr)
    {
      trace_line(context.trace, "      _ASSERTION_:", " link from n1 to n2 missing!!!");
      continue;
    }

    // When n1 goes in its turn, n1 and n2 may come to stand as an n2 and its n3.
    if (rn1 != nullptr && n1 != rn1 && rn1->target_link_map.contains(n1))
    {
      complete = false;
      context.n2s_to_remove_later.insert(n2);
      trace_line(context.trace, "      (n1 and n2) may become (n2 and n3)",
                 " => skip n1, store n2 to remove it later");
      continue;
    }

    for (OzObjDepLink const* t : n2->target_links)
      if (t != nullptr && t->node != nullptr)
        link_n1_to_n3(context, n1, n2, l12, t);
    context.add_old_link(n1, l12);
    done_sources.append(s);
  }

  for (OzObjDepLink*& link : done_sources)
  {
    context.hubs.backward_leaves(n2, link);
    bool const removed = remove_source_link(n2, link);
    OZ_ASSERT(removed);
  }
  if (complete)
    remove_n2(context, n2);
  return true;
}

/// The backward records of n2 that rn1's turn may have to do with: all of them; or, where nobody reads along and
/// there are many, all but those of roots that wait for their turn. Thousands of these may have n2 in common.
OzObjDepLinkSet const& OzObjDependency::open_sources(OzObjDepSimplifyContext& context, OzObjDepNode* n2,
                                                     OzObjDepNode* rn1, NodeSet const* unchecked_roots)
{
  if (context.trace != nullptr || unchecked_roots == nullptr || !OzObjDepHubs::are_many(n2->source_links))
    return n2->source_links;
  OzObjDepHubs::Hub* const hub = context.hubs.find(n2);
  if (hub == nullptr)
    return n2->source_links;

  if (hub->has_open_sources)
  {
    if (OzObjDepLink* const link = n2->source_link_map.value(rn1))
      hub->open_sources.insert(link);
    return hub->open_sources;
  }

  for (OzObjDepLink* s : n2->source_links)
  {
    if (!unchecked_roots->contains(s->node))
    {
      hub->open_sources.insert(s);
      continue;
    }
    // Its root will come by only if it knows n2.
    OzObjDepLink* const partner = s->node->target_link_map.value(n2);
    if (partner == nullptr || !s->node->target_links.contains(partner))
    {
      context.hubs.give_up();
      return n2->source_links;
    }
  }
  hub->has_open_sources = true;
  return hub->open_sources;
}

/// Makes the link from n1 to n3 that stands for the path `l12`, `t`, unless it isn't wanted.
void OzObjDependency::link_n1_to_n3(OzObjDepSimplifyContext& context, OzObjDepNode* n1, OzObjDepNode* n2,
                                    OzObjDepLink const* l12, OzObjDepLink const* t)
{
  OzObjDepNode* const n3 = t->node;
  trace_line(context.trace, "         n3 = ", identity(n3));
  if (n1->object == nullptr && n3->object == nullptr)
  {
    trace_line(context.trace, "         n1 == n3 == NULL-object", " => skip n3");
    return;
  }

  Type type = UNSPECIFIED;
  bool has_target_qualifier = false;
  int target_qualifier = -1;
  OzObjectDependencyRole* role = nullptr;
  int separator = 0;
  compose_links(l12, t, type, has_target_qualifier, target_qualifier, role, separator);
  if (skip_n3(context, n1, n2, n3, type, has_target_qualifier, target_qualifier, role, separator))
    return;

  if (n1->object == nullptr && type != CREATION)
  {
    OZ_ASSERT(type == ABSORPTION);
    if (type != ABSORPTION)
    {
      trace_line(context.trace,
                 "         _ASSERTION_:", " NULL-object n1 has link with wrong dependency type!!!");
      return;
    }
    type = CREATION;
  }
  if (n3->object == nullptr && type != DELETION)
  {
    trace_line(context.trace, "         n3 == NULL-object would delete something", " => skip n3");
    return;
  }

  auto const make_link = [&](OzObjDepNode* node)
  {
    std::unique_ptr<OzObjDepLink> link(new (records->links) OzObjDepLink);
    link->node = node;
    link->dependency_type = type;
    link->has_target_qualifier = has_target_qualifier;
    link->target_qualifier = target_qualifier;
    link->separator = separator;
    return link;
  };
  auto forward = make_link(n3);
  auto backward = make_link(n1);
  context.add_new_link(n1, forward.release());
  OzObjDepLink const* const entered = backward.get();
  n3->add_source_link(backward.release());
  context.hubs.backward_enters(n3, entered);
}

/// Takes n2's targets off it; its sources have gone.
void OzObjDependency::remove_n2(OzObjDepSimplifyContext& context, OzObjDepNode* n2)
{
  OzArray<OzObjDepLink*> done_targets;
  for (OzObjDepLink* t : n2->target_links)
  {
    if (t == nullptr || t->node == nullptr)
      continue;
    OzObjDepNode* const n3 = t->node;
    done_targets.append(t);
    OzObjDepLink* partner = n3->source_link_map.value(n2);
    OZ_ASSERT(partner != nullptr);
    if (partner == nullptr)
    {
      trace_line(context.trace, "  _ASSERTION_:", " removing links between n2 and (n3 = ", identity(n3),
                 "): no link from n3 to n2!!!");
      continue;
    }
    if (context.hubs.any() && n3->source_links.contains(partner))
      context.hubs.backward_leaves(n3, partner);
    bool const removed = remove_source_link(n3, partner);
    OZ_ASSERT(removed);
    if (!removed)
      trace_line(context.trace, "  _ASSERTION_:", " removing link from (n3 = ", identity(n3),
                 ") to n2 failed!!!");
  }

  for (OzObjDepLink*& link : done_targets)
  {
    bool const removed = remove_target_link(n2, link);
    OZ_ASSERT(removed);
  }
  context.removed_nodes.append(n2);
  context.n2s_to_remove_later.erase(n2);
}

// A role does not survive composition. The table is no smooth algebra, and each cell is wanted as it stands:
// MODIFICATION then CONTAINMENT, and ABSORPTION then SPLIT or CONTAINMENT, are CREATION, while CONTAINMENT then
// SPLIT is SPLIT.
void OzObjDependency::compose_links(OzObjDepLink const* first, OzObjDepLink const* second, Type& type,
                                    bool& has_target_qualifier, int& target_qualifier,
                                    OzObjectDependencyRole*& role, int& separator)
{
  enum From
  {
    F,
    S
  }; // the link that the qualifier comes from
  struct Cell
  {
    Type type;
    From from;
  };
  constexpr int FIRST_TYPE = CREATION;
  static constexpr Cell CELLS[7][7] = {
      // CREATION, DELETION, MODIFICATION, SPLIT, ABSORPTION, CONVERSION, CONTAINMENT
      {{CREATION, S},
       {DELETION, S},
       {CREATION, F},
       {CREATION, F},
       {CREATION, S},
       {CREATION, F},
       {CREATION, F}},
      {{DELETION, F},
       {DELETION, F},
       {DELETION, F},
       {DELETION, F},
       {DELETION, F},
       {DELETION, F},
       {DELETION, F}},
      {{CREATION, S},
       {DELETION, S},
       {MODIFICATION, S},
       {SPLIT, S},
       {ABSORPTION, S},
       {MODIFICATION, F},
       {CREATION, F}},
      {{CREATION, S}, {DELETION, S}, {SPLIT, F}, {SPLIT, F}, {CREATION, S}, {SPLIT, F}, {SPLIT, F}},
      {{CREATION, S},
       {DELETION, S},
       {ABSORPTION, F},
       {CREATION, F},
       {ABSORPTION, S},
       {ABSORPTION, F},
       {CREATION, F}},
      {{CREATION, S},
       {DELETION, S},
       {MODIFICATION, S},
       {SPLIT, S},
       {ABSORPTION, S},
       {CONVERSION, S},
       {CONTAINMENT, S}},
      {{CREATION, S},
       {DELETION, S},
       {CONTAINMENT, F},
       {SPLIT, S},
       {ABSORPTION, S},
       {CONTAINMENT, F},
       {CONTAINMENT, F}},
  };
  auto const is_composable = [](Type t) { return t >= CREATION && t <= CONTAINMENT; };

  Cell cell{first->dependency_type, F};
  if (first->dependency_type == DELETION)
  {
    OZ_ASSERT(false); // there is nothing behind it to compose with
  }
  else if (!is_composable(first->dependency_type))
  {
    OZ_ASSERT(false);
    cell = {second->dependency_type, S};
  }
  else if (!is_composable(second->dependency_type))
  {
    // CONVERSION is transparent, and hands on whatever stands behind it without a word.
    OZ_ASSERT(first->dependency_type == CONVERSION);
    if (first->dependency_type == CONVERSION)
      cell = {second->dependency_type, S};
  }
  else
  {
    cell = CELLS[first->dependency_type - FIRST_TYPE][second->dependency_type - FIRST_TYPE];
  }

  OzObjDepLink const* const from = cell.from == F ? first : second;
  type = cell.type;
  has_target_qualifier = from->has_target_qualifier;
  target_qualifier = from->target_qualifier;
  role = nullptr;
  separator = second->separator;
}

bool OzObjDependency::skip_n3(OzObjDepSimplifyContext& context, OzObjDepNode* n1, OzObjDepNode* n2,
                              OzObjDepNode* n3, Type& type, bool& has_target_qualifier, int& target_qualifier,
                              OzObjectDependencyRole*&, int&)
{
  OZ_ASSERT(n1 != nullptr && n2 != nullptr && n3 != nullptr);
  if (n1 == nullptr || n2 == nullptr || n3 == nullptr)
    return true;

  auto const settled = context.triples_to_skip.find(NodePair{n1, n3});
  if (settled != context.triples_to_skip.end() && !std::less<OzObjDepNode*>()(settled->second, n2))
  {
    trace_line(context.trace, "         already handled n1 and n3 earlier", " => skip n3");
    return true;
  }

  collect_ways(context, n1, n2, n3);
  for (Way const& way : context.ways)
  {
    OzObjDepLink* const link = way.link;
    if (link->node == n3)
    {
      trace_line(context.trace,
                 way.is_existing ? "         link between n1 and n3 already existing"
                                 : "         link between n1 and n3 already chosen to create",
                 " => skip n3");
      OZ_ASSERT(type == CREATION || type == ABSORPTION);
      if (type != ABSORPTION && link->dependency_type == ABSORPTION)
      {
        OzObjDepLink* const partner = n3->source_link_map.value(n1);
        OZ_ASSERT(partner != nullptr);
        context.hubs.absorption_ends(n1, way.is_existing ? link : nullptr, n3, partner);
        link->dependency_type = CREATION;
        if (partner != nullptr)
          partner->dependency_type = CREATION;
      }
      OZ_ASSERT(have_equal_qualifiers(*link, has_target_qualifier, target_qualifier));
      return true;
    }
    if (link->node != n2)
      settle_path(context, n1, link, n3, type, has_target_qualifier, target_qualifier);
  }
  return false;
}

/// Writes to the context's `ways` the forward records of n1 that lead to n3, directly or through one node:
/// those that n1 holds by ascending address, then the new ones in their order. Others may be among them.
///
/// Either end may have very many links, and hardly ever both have: the search begins at the one with fewer.
/// In a damaged graph n3 may not know of a node that leads to it. Then the path through that node is passed over
/// where n3 is searched, and is not noted as settled; when its turn comes, it meets the link that was made.
void OzObjDependency::collect_ways(OzObjDepSimplifyContext& context, OzObjDepNode const* n1,
                                   OzObjDepNode const* n2, OzObjDepNode const* n3)
{
  std::vector<Way>& ways = context.ways;
  ways.clear();
  std::uint64_t const n_sources = n3->source_links.size();
  if (n1->target_links.size() <= n_sources &&
      n1->target_links.size() + context.new_links_bound(n1) <= n_sources)
  {
    for (OzObjDepLink* link : n1->target_links)
      if (link != nullptr && link->node != nullptr)
        ways.push_back({link, true, 0});
    context.visit_new_links(n1,
                            [&](std::uint64_t position) {
                              ways.push_back({context.new_links[position], false, position});
                            });
    return;
  }

  auto const add_way_to = [&](OzObjDepNode const* node)
  {
    if (OzObjDepLink* const existing = n1->target_link_map.value(const_cast<OzObjDepNode*>(node)))
    {
      ways.push_back({existing, true, 0});
      return;
    }
    if (!context.may_have_new_link(n1, node))
      return;
    std::uint64_t const position = context.position_of_new_link(n1, node);
    if (position != OzObjDepSimplifyContext::NONE)
      ways.push_back({context.new_links[position], false, position});
  };
  add_way_to(n3);
  for (OzObjDepLink const* link : n3->source_links)
    if (link != nullptr && link->node != nullptr && link->node != n2)
      add_way_to(link->node);
  // Where n3 was an n2 itself, its sources still hold their records, and it has none of them any more.
  if (context.may_have_old_sources(n3))
    context.visit_old_sources(n3, add_way_to);

  auto const is_before = [](Way const& a, Way const& b)
  {
    if (a.is_existing != b.is_existing)
      return a.is_existing;
    return a.is_existing ? std::less<OzObjDepLink*>()(a.link, b.link) : a.position < b.position;
  };
  std::sort(ways.begin(), ways.end(), is_before);
  ways.erase(
      std::unique(ways.begin(), ways.end(), [](Way const& a, Way const& b) { return a.link == b.link; }),
      ways.end());
}

/// The link from n1 to n3 is made for the path through n2. If `link` leads to n3 as well, through another
/// node n2a, then that path is noted to need no link of its own, and CREATION wins over ABSORPTION.
void OzObjDependency::settle_path(OzObjDepSimplifyContext& context, OzObjDepNode* n1,
                                  OzObjDepLink const* link, OzObjDepNode* n3, Type& type,
                                  bool has_target_qualifier, int target_qualifier)
{
  OzObjDepNode* const n2a = link->node;
  OzObjDepLink const* const existing = n2a->target_link_map.value(n3);
  OzObjDepLink const* const waiting =
      context.may_have_new_link(n2a, n3) ? context.new_link(n2a, n3) : nullptr;
  for (OzObjDepLink const* onward : {existing, waiting})
  {
    if (onward == nullptr)
      continue;

    OZ_ASSERT(type == CREATION || type == DELETION || type == ABSORPTION);
    Type other_type = UNSPECIFIED;
    bool other_has_target_qualifier = false;
    int other_target_qualifier = -1;
    OzObjectDependencyRole* role = nullptr;
    int separator = 0;
    compose_links(link, onward, other_type, other_has_target_qualifier, other_target_qualifier, role,
                  separator);
    if (other_type == CREATION)
    {
      OZ_ASSERT(type != DELETION);
      type = CREATION;
    }
    else
    {
      OZ_ASSERT((other_type == DELETION || other_type == ABSORPTION) && type == other_type);
    }
    OZ_ASSERT(has_target_qualifier == other_has_target_qualifier &&
              (!has_target_qualifier || target_qualifier == other_target_qualifier));

    if (onward == existing)
      trace_line(context.trace, "            remember triple to skip with n2a = ", identity(n2a));
    else
      trace_line(context.trace, "            remember triple to skip via not yet created",
                 " link with n2a = ", identity(n2a));
    OzObjDepNode*& highest = context.triples_to_skip[NodePair{n1, n3}];
    highest = std::max(highest, n2a, std::less<OzObjDepNode*>());
  }
}

void OzObjDependency::commit_changes(OzObjDepSimplifyContext& context, ObjectNodeMap& nodes)
{
  NewLinks new_links;
  for (std::uint64_t i = 0; i < context.new_links.size(); ++i)
  {
    OzObjDepNode* const source = context.new_link_sources[i];
    OzObjDepLink* const link = context.new_links[i];
    new_links.add(source, link->node);
    if (source->target_links.empty())
      context.hubs.give_up(); // none of its links was in the set
    source->add_target_link(link);
    context.hubs.forward_enters(source, link);
  }
  context.forget_new_links();

  OZ_ASSERT(context.old_link_sources.size() == context.old_links.size());
  for (std::uint64_t i = 0; i < context.old_links.size(); ++i)
  {
    OzObjDepNode* const source = context.old_link_sources[i];
    if (context.hubs.any() && source->target_links.contains(context.old_links[i]))
      context.hubs.forward_leaves(source, context.old_links[i]);
    bool const removed = remove_target_link(source, context.old_links[i]);
    OZ_ASSERT(removed);
    if (!removed)
      context.hubs.give_up();
  }

  AbsorptionCleanUp(context, new_links).run();

  for (OzObjDepNode* source : each_once({context.old_link_sources.begin(), context.old_link_sources.end()}))
    clean_up_lone_split(context, source);
  context.forget_old_links();

  for (OzObjDepNode* node : context.removed_nodes)
  {
    bool const erased = nodes.erase(node->object);
    OZ_ASSERT(erased);
    context.hubs.node_goes(node);
    delete node;
  }
  context.removed_nodes.resize(0, true);
}

void OzObjDependency::prune_null_node_links(OzObjDepNode* node, bool sources)
{
  OzArray<OzObjDepLink*> noted;
  OzArray<OzObjDepNode*> others;
  OzArray<OzObjDepLink*> partners; // beside others
  for (OzObjDepLink* link : sources ? node->source_links : node->target_links)
  {
    if (link == nullptr || link->node == nullptr)
      continue;
    OzObjDepNode* const other = link->node;
    if ((sources ? other->target_links : other->source_links).size() < 2)
      continue;

    OzObjDepLink* const partner = (sources ? other->target_link_map : other->source_link_map).value(node);
    OZ_ASSERT(partner != nullptr);
    noted.append(link);
    others.append(other);
    partners.append(partner);
  }

  for (OzObjDepLink*& link : noted)
  {
    if (sources)
      remove_source_link(node, link);
    else
      remove_target_link(node, link);
  }
  for (std::uint64_t i = 0; i < others.size(); ++i)
  {
    if (sources)
      remove_target_link(others[i], partners[i]);
    else
      remove_source_link(others[i], partners[i]);
  }
}
