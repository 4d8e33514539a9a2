#ifndef SIMPLIFY_MODEL_H
#define SIMPLIFY_MODEL_H

#include "growing_addresses.h"
#include "ozobjectdependency.h"

#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// What simplification does, told in the plainest way: lists that are searched from one end to the other,
/// no index, no look-up that a walk could do. Nodes and records are numbers that are as large as their
/// addresses: nodes are numbered in the order in which they are made, and so are records, but for one that
/// takes the place of the record that was deleted last. In a descending model each lies below those that were
/// made before it.
class SimplifyModel
{
public:
  enum Addresses
  {
    ASCENDING,
    DESCENDING
  };
  explicit SimplifyModel(Addresses addresses = ASCENDING)
    : step(addresses == ASCENDING ? 1 : -1)
    , next_node(addresses == ASCENDING ? 1 : HIGHEST)
    , next_record(addresses == ASCENDING ? 1 : HIGHEST)
  {
  }

  typedef OzObjectDependency::Type Type;

  struct Record
  {
    int node; // at the other end
    Type type;
    bool has_qualifier;
    int qualifier;
    int separator;
  };

  /// Object 0 is the null object.
  void record(int source, int target, Type type, int const* qualifier, int separator)
  {
    Record const backward{0, type, qualifier != nullptr, qualifier != nullptr ? *qualifier : -1, separator};
    int const backward_record = new_record(backward);
    int const forward_record = new_record(backward);

    int const n1 = source_node(source);
    int const n2 = target_node(target);
    records.at(backward_record).node = n1;
    records.at(forward_record).node = n2;
    nodes.at(n1).targets.insert(forward_record);
    nodes.at(n2).sources.insert(backward_record);
  }

  bool simplify_step()
  {
    Context a;
    std::set<int> unchecked_roots = roots;
    line("\"simplify_step\" with " + std::to_string(roots.size()) + " roots.");
    bool changed = false;
    for (int rn1 : roots)
    {
      line("rn1 = " + identity(rn1));
      unchecked_roots.erase(rn1);
      for (int l : nodes.at(rn1).targets)
      {
        int const n2 = records.at(l).node;
        line("   n2 = " + identity(n2));
        if (prepare_removal_of_n2(a, n2, rn1, unchecked_roots))
          changed = true;
      }
      commit_changes(a);
    }

    line("remove n2s to remove later");
    Context b;
    for (int n2 : a.n2s_to_remove_later)
    {
      line("   n2 = " + identity(n2));
      if (prepare_removal_of_n2(b, n2, NO_NODE, {}))
        changed = true;
      if (!b.n2s_to_remove_later.empty())
      {
        report();
        line("   _ASSERTION_: removal of n2 produced new n2s to remove!!!");
      }
      commit_changes(b);
    }

    if (changed)
      clean_up_null_node();
    return changed;
  }

  std::map<std::pair<int, int>, Record> links() const
  {
    std::map<std::pair<int, int>, Record> result;
    for (auto const& node : nodes)
      for (int l : node.second.targets)
        result.insert({{node.second.object, nodes.at(records.at(l).node).object}, records.at(l)});
    return result;
  }
  std::set<int> objects() const { return objects_of_all(); }
  std::set<int> root_objects() const { return objects_of(roots); }
  std::set<int> leaf_objects() const { return objects_of(leaves); }

  bool split_modificational = true;
  std::string trace;
  int n_reports = 0;
  std::map<std::string, int> lines; // how often each line was written, without its identities

private:
  static constexpr int NO_NODE = -1;
  static constexpr int HIGHEST = 1 << 30;

  static constexpr Type UNSPECIFIED = OzObjectDependency::UNSPECIFIED;
  static constexpr Type CREATION = OzObjectDependency::CREATION;
  static constexpr Type DELETION = OzObjectDependency::DELETION;
  static constexpr Type MODIFICATION = OzObjectDependency::MODIFICATION;
  static constexpr Type SPLIT = OzObjectDependency::SPLIT;
  static constexpr Type ABSORPTION = OzObjectDependency::ABSORPTION;
  static constexpr Type CONVERSION = OzObjectDependency::CONVERSION;
  static constexpr Type CONTAINMENT = OzObjectDependency::CONTAINMENT;

  struct Node
  {
    int object;
    std::set<int> targets; // forward records
    std::set<int> sources; // backward records
  };

  struct Context
  {
    std::vector<std::pair<int, int>> new_links; // source node, forward record
    std::vector<std::pair<int, int>> old_links; // source node, forward record
    std::vector<int> removed_nodes;
    std::set<int> n2s_to_remove_later;
    std::map<int, std::multimap<int, int>> triples_to_skip;
  };

  struct Composed
  {
    Type type;
    bool has_qualifier;
    int qualifier;
    int separator;
  };

  void report() { ++n_reports; }
  void line(std::string const& text)
  {
    trace += text + "\n";
    ++lines[text.substr(0, text.find('='))];
  }
  std::string identity(int node) const { return std::to_string(nodes.at(node).object); }
  bool is_null(int node) const { return nodes.at(node).object == 0; }

  // Memory.

  int new_record(Record const& content)
  {
    int number = next_record;
    if (free_records.empty())
    {
      next_record += step;
    }
    else
    {
      number = free_records.back();
      free_records.pop_back();
    }
    records.insert({number, content});
    return number;
  }
  void delete_record(int record)
  {
    records.erase(record);
    if (growing_addresses::DELETED_RECORDS_ARE_USED_AGAIN)
      free_records.push_back(record);
  }

  // Recording.

  int node_of(int object) const
  {
    for (auto const& node : nodes)
      if (node.second.object == object)
        return node.first;
    return NO_NODE;
  }
  int source_node(int object)
  {
    int const known = node_of(object);
    if (known == NO_NODE)
    {
      nodes.insert({next_node, {object, {}, {}}});
      roots.insert(next_node);
      next_node += step;
      return next_node - step;
    }
    if (object == 0)
      roots.insert(known);
    else
      leaves.erase(known);
    return known;
  }
  int target_node(int object)
  {
    int const known = node_of(object);
    if (known == NO_NODE)
    {
      nodes.insert({next_node, {object, {}, {}}});
      leaves.insert(next_node);
      next_node += step;
      return next_node - step;
    }
    if (object == 0)
      leaves.insert(known);
    else
      roots.erase(known);
    return known;
  }

  // Links.

  /// The forward record from n1 to n2 in n1, or 0.
  int forward_record(int n1, int n2) const
  {
    for (int l : nodes.at(n1).targets)
      if (records.at(l).node == n2)
        return l;
    return 0;
  }
  int backward_record(int n1, int n2) const
  {
    for (int l : nodes.at(n2).sources)
      if (records.at(l).node == n1)
        return l;
    return 0;
  }
  bool remove_source_link(int node, int record)
  {
    if (nodes.at(node).sources.erase(record) == 0)
      return false;
    delete_record(record);
    return true;
  }
  bool remove_target_link(int node, int record)
  {
    if (nodes.at(node).targets.erase(record) == 0)
      return false;
    delete_record(record);
    return true;
  }

  // Steps.

  bool prepare_removal_of_n2(Context& context, int n2, int rn1, std::set<int> const& unchecked_roots)
  {
    line("   \"prepare_removal_of_n2\"");
    if (nodes.at(n2).targets.empty() || is_null(n2))
    {
      line("   no targets => return");
      return false;
    }

    std::vector<int> done_sources;
    bool complete = true;
    for (int s : std::set<int>(nodes.at(n2).sources))
    {
      int const n1 = records.at(s).node;
      line("      n1 = " + identity(n1));
      if (unchecked_roots.count(n1) != 0)
      {
        complete = false;
        line("      is unchecked root => skip n1, remove n2 later");
        continue;
      }

      int l12 = forward_record(n1, n2);
      for (std::size_t i = 0; i < context.new_links.size() && l12 == 0; ++i)
        if (context.new_links[i].first == n1 && records.at(context.new_links[i].second).node == n2)
        {
          l12 = context.new_links[i].second;
          line("      link between n1 and n2 is a new one");
        }
      if (l12 == 0)
      {
        report();
        line("      _ASSERTION_: link from n1 to n2 missing!!!");
        continue;
      }

      if (rn1 != NO_NODE && n1 != rn1 && forward_record(rn1, n1) != 0)
      {
        complete = false;
        context.n2s_to_remove_later.insert(n2);
        line("      (n1 and n2) may become (n2 and n3) => skip n1, store n2 to remove it later");
        continue;
      }

      for (int t : std::set<int>(nodes.at(n2).targets))
        connect(context, n1, n2, l12, t);
      context.old_links.push_back({n1, l12});
      done_sources.push_back(s);
    }

    for (int s : done_sources)
      if (!remove_source_link(n2, s))
        report();
    if (complete)
    {
      std::vector<int> done_targets;
      for (int t : nodes.at(n2).targets)
      {
        int const n3 = records.at(t).node;
        done_targets.push_back(t);
        int const partner = backward_record(n2, n3);
        if (partner == 0)
        {
          report();
          line("  _ASSERTION_: removing links between n2 and (n3 = " + identity(n3) +
               "): no link from n3 to n2!!!");
        }
        else if (!remove_source_link(n3, partner))
        {
          report();
          line("  _ASSERTION_: removing link from (n3 = " + identity(n3) + ") to n2 failed!!!");
        }
      }
      for (int t : done_targets)
        if (!remove_target_link(n2, t))
          report();
      context.removed_nodes.push_back(n2);
      context.n2s_to_remove_later.erase(n2);
    }
    return true;
  }

  void connect(Context& context, int n1, int n2, int l12, int t)
  {
    int const n3 = records.at(t).node;
    line("         n3 = " + identity(n3));
    if (is_null(n1) && is_null(n3))
    {
      line("         n1 == n3 == NULL-object => skip n3");
      return;
    }
    Composed composed = compose(records.at(l12), records.at(t));
    if (skip_n3(context, n1, n2, n3, composed))
      return;
    if (is_null(n1) && composed.type != CREATION)
    {
      if (composed.type != ABSORPTION)
      {
        report();
        line("         _ASSERTION_: NULL-object n1 has link with wrong dependency type!!!");
        return;
      }
      composed.type = CREATION;
    }
    if (is_null(n3) && composed.type != DELETION)
    {
      line("         n3 == NULL-object would delete something => skip n3");
      return;
    }
    Record record{n3, composed.type, composed.has_qualifier, composed.qualifier, composed.separator};
    int const forward = new_record(record);
    record.node = n1;
    int const backward = new_record(record);
    context.new_links.push_back({n1, forward});
    nodes.at(n3).sources.insert(backward);
  }

  Composed compose(Record const& first, Record const& second)
  {
    // Rows are the types of the first link from CREATION on without DELETION, columns those of the second.
    struct Cell
    {
      Type type;
      char from;
    };
    static Cell const C_F{CREATION, 'F'}, C_S{CREATION, 'S'}, D_S{DELETION, 'S'}, M_F{MODIFICATION, 'F'},
        M_S{MODIFICATION, 'S'}, SP_F{SPLIT, 'F'}, SP_S{SPLIT, 'S'}, A_F{ABSORPTION, 'F'},
        A_S{ABSORPTION, 'S'}, CV_S{CONVERSION, 'S'}, CT_F{CONTAINMENT, 'F'}, CT_S{CONTAINMENT, 'S'};
    static std::map<Type, std::vector<Cell>> const table = {
        {CREATION, {C_S, D_S, C_F, C_F, C_S, C_F, C_F}},
        {MODIFICATION, {C_S, D_S, M_S, SP_S, A_S, M_F, C_F}},
        {SPLIT, {C_S, D_S, SP_F, SP_F, C_S, SP_F, SP_F}},
        {ABSORPTION, {C_S, D_S, A_F, C_F, A_S, A_F, C_F}},
        {CONVERSION, {C_S, D_S, M_S, SP_S, A_S, CV_S, CT_S}},
        {CONTAINMENT, {C_S, D_S, CT_F, SP_S, A_S, CT_F, CT_F}},
    };

    Cell cell{};
    bool const second_is_known = second.type >= CREATION && second.type <= CONTAINMENT;
    if (first.type == DELETION)
    {
      report();
      cell = {DELETION, 'F'};
    }
    else if (table.count(first.type) == 0)
    {
      report();
      cell = {second.type, 'S'};
    }
    else if (second_is_known)
    {
      cell = table.at(first.type)[static_cast<std::size_t>(second.type - CREATION)];
    }
    else if (first.type == CONVERSION)
    {
      cell = {second.type, 'S'};
    }
    else
    {
      report();
      cell = {first.type, 'F'};
    }
    Record const& from = cell.from == 'F' ? first : second;
    return {cell.type, from.has_qualifier, from.qualifier, second.separator};
  }

  template <class Link>
  static bool have_same_qualifier(Link const& link, Composed const& composed)
  {
    if (link.has_qualifier != composed.has_qualifier)
      return false;
    return !link.has_qualifier || link.qualifier == composed.qualifier;
  }

  /// The forward records of a node, then those that wait to be entered there.
  std::vector<int> all_forward_records(Context const& context, int node, std::size_t& n_existing) const
  {
    std::vector<int> list(nodes.at(node).targets.begin(), nodes.at(node).targets.end());
    n_existing = list.size();
    for (auto const& link : context.new_links)
      if (link.first == node)
        list.push_back(link.second);
    return list;
  }

  bool skip_n3(Context& context, int n1, int n2, int n3, Composed& composed)
  {
    if (context.triples_to_skip.count(n1) != 0)
    {
      std::multimap<int, int> const& pairs = context.triples_to_skip.at(n1);
      for (auto pair = pairs.lower_bound(n2); pair != pairs.end(); ++pair)
        if (pair->second == n3)
        {
          line("         already handled n1 and n3 earlier => skip n3");
          return true;
        }
    }

    std::size_t n_existing = 0;
    std::vector<int> const of_n1 = all_forward_records(context, n1, n_existing);
    for (std::size_t i = 0; i < of_n1.size(); ++i)
    {
      int const l = of_n1[i];
      int const n2a = records.at(l).node;
      if (n2a == n3)
      {
        line(std::string("         link between n1 and n3 already ") +
             (i < n_existing ? "existing" : "chosen to create") + " => skip n3");
        if (composed.type != CREATION && composed.type != ABSORPTION)
          report();
        if (composed.type != ABSORPTION && records.at(l).type == ABSORPTION)
        {
          records.at(l).type = CREATION;
          int const partner = backward_record(n1, n3);
          if (partner == 0)
            report();
          else
            records.at(partner).type = CREATION;
        }
        if (!have_same_qualifier(records.at(l), composed))
          report();
        return true;
      }
      if (n2a == n2)
        continue;

      std::size_t n_existing_2a = 0;
      std::vector<int> const of_n2a = all_forward_records(context, n2a, n_existing_2a);
      for (std::size_t j = 0; j < of_n2a.size(); ++j)
      {
        int const k = of_n2a[j];
        if (records.at(k).node != n3)
          continue;
        if (composed.type != CREATION && composed.type != DELETION && composed.type != ABSORPTION)
          report();
        Composed const other = compose(records.at(l), records.at(k));
        if (other.type == CREATION)
        {
          if (composed.type == DELETION)
            report();
          composed.type = CREATION;
        }
        else if (other.type == DELETION)
        {
          if (composed.type != DELETION)
            report();
        }
        else if (other.type == ABSORPTION)
        {
          if (composed.type != ABSORPTION)
            report();
        }
        else
        {
          report();
        }
        if (!have_same_qualifier(other, composed))
          report();
        line(std::string("            remember triple to skip ") +
             (j < n_existing_2a ? "with n2a = " : "via not yet created link with n2a = ") + identity(n2a));
        context.triples_to_skip[n1].insert({n2a, n3});
      }
    }
    return false;
  }

  void commit_changes(Context& context)
  {
    std::vector<int> touched_targets;
    for (auto const& link : context.new_links)
    {
      touched_targets.push_back(records.at(link.second).node);
      nodes.at(link.first).targets.insert(link.second);
    }
    context.new_links.clear();

    for (auto const& link : context.old_links)
      if (!remove_target_link(link.first, link.second))
        report();

    std::set<int> absorbing_sources;
    std::set<int> absorbing_targets;
    for (int target : touched_targets)
      for (int l : nodes.at(target).sources)
        if (records.at(l).type == ABSORPTION)
        {
          absorbing_sources.insert(records.at(l).node);
          absorbing_targets.insert(target);
        }

    for (int u : absorbing_sources)
    {
      int absorptions = 0;
      int others = 0;
      for (int l : nodes.at(u).targets)
      {
        if (records.at(l).type == ABSORPTION)
        {
          ++absorptions;
          absorbing_targets.insert(records.at(l).node);
        }
        else
        {
          ++others;
        }
      }
      if (absorptions == 0)
        report();
      if (others != 0)
        for (int l : nodes.at(u).targets)
          if (records.at(l).type == ABSORPTION)
            retype(l, backward_record(u, records.at(l).node), CREATION);
    }
    for (int t : absorbing_targets)
    {
      int absorptions = 0;
      int others = 0;
      for (int l : nodes.at(t).sources)
        ++(records.at(l).type == ABSORPTION ? absorptions : others);
      if (absorptions > 0 && others > 0)
        for (int l : nodes.at(t).sources)
          if (records.at(l).type == ABSORPTION)
            retype(l, forward_record(records.at(l).node, t), CREATION);
    }

    for (auto const& link : context.old_links)
    {
      std::vector<int> splits;
      for (int l : nodes.at(link.first).targets)
        if (records.at(l).type == SPLIT)
          splits.push_back(l);
      if (splits.size() == 1)
        retype(splits[0], backward_record(link.first, records.at(splits[0]).node),
               split_modificational ? MODIFICATION : CREATION);
    }
    context.old_links.clear();

    for (int node : context.removed_nodes)
    {
      for (int l : nodes.at(node).targets)
        delete_record(l);
      for (int l : nodes.at(node).sources)
        delete_record(l);
      nodes.erase(node);
    }
    context.removed_nodes.clear();
  }

  void retype(int record, int partner, Type type)
  {
    records.at(record).type = type;
    if (partner == 0)
      report();
    else
      records.at(partner).type = type;
  }

  void clean_up_null_node()
  {
    int const null = node_of(0);
    if (null == NO_NODE)
      return;

    std::vector<int> noted;
    std::vector<std::pair<int, int>> partners;
    for (int l : nodes.at(null).targets)
    {
      int const m = records.at(l).node;
      if (nodes.at(m).sources.size() < 2)
        continue;
      noted.push_back(l);
      partners.push_back({m, backward_record(null, m)});
    }
    for (int l : noted)
      remove_target_link(null, l);
    for (auto const& partner : partners)
      if (partner.second == 0)
        report();
      else
        remove_source_link(partner.first, partner.second);

    noted.clear();
    partners.clear();
    for (int l : nodes.at(null).sources)
    {
      int const m = records.at(l).node;
      if (nodes.at(m).targets.size() < 2)
        continue;
      noted.push_back(l);
      partners.push_back({m, forward_record(m, null)});
    }
    for (int l : noted)
      remove_source_link(null, l);
    for (auto const& partner : partners)
      if (partner.second == 0)
        report();
      else
        remove_target_link(partner.first, partner.second);

    if (nodes.at(null).sources.empty())
      leaves.erase(null);
    if (nodes.at(null).targets.empty())
      roots.erase(null);
    if (nodes.at(null).sources.empty() && nodes.at(null).targets.empty())
      nodes.erase(null);
  }

  std::set<int> objects_of_all() const
  {
    std::set<int> objects;
    for (auto const& node : nodes)
      objects.insert(node.second.object);
    return objects;
  }
  std::set<int> objects_of(std::set<int> const& some_nodes) const
  {
    std::set<int> objects;
    for (int node : some_nodes)
      objects.insert(nodes.at(node).object);
    return objects;
  }

  std::map<int, Node> nodes;
  std::map<int, Record> records;
  std::set<int> roots;
  std::set<int> leaves;
  int const step;
  int next_node;
  int next_record;
  std::vector<int> free_records; // deleted last at the end
};

#endif
