#ifndef OZOBJDEPENDENCY_H
#define OZOBJDEPENDENCY_H

#include "ozaddressset.h"
#include "ozarray.h"
#include "ozobjectdependency.h"
#include "ozstring.h"

#include <memory>

struct OzObjDepLink;
struct OzObjDepNode;
struct OzObjDepRecords;
struct OzObjDepSimplifyContext;

/// The history of an operation as a graph: a node for each object, a pair of link records, one at either
/// end, for each dependency.
///
/// All null references meet in one node, the null-object node. Roots are the nodes without sources, leaves
/// those without targets; the null-object node is a root once it has served as a source and a leaf once it
/// has served as a target. While an operation records, the graph has as many layers as the history has;
/// simplification leaves two.
///
/// Ownership: nodes, links and clones of roles belong to the graph; objects and filters do not. An object
/// must live as long as the graph is used to read its identity (dumps), but need not for anything else.
/// Copying and assigning copy addresses: the copy shares the nodes with its original, and each would
/// delete them. So only one of the two may be destroyed and neither may be changed. A graph that is assigned to
/// deletes what it held, unless a copy shares it.
/// Threads: one at a time.
/// Reports: recording a dependency twice, nulls and repetitions in sets of objects, and the reserved
/// removal operations; all of them refused. An ABSORPTION from nothing, if the graph knows the null object
/// already; that is recorded all the same. A call that throws, since memory runs out or a role cannot be
/// cloned, has recorded nothing. Inconsistencies that simplification and validation meet.
/// Cost: recording and look-up of an object O(1) on average, O(log n) at a node with n links. A query walks
/// all paths, and one that leads to a node several times walks on from there each time: simplify first
/// where histories branch and meet again. Depth is limited by memory, not by the machine's stack. Where
/// recorded dependencies form a cycle, a query that runs into it never ends.
class OZ_EXPORT OzObjDependency : public OzObjectDependency
{
public:
  OzObjDependency();
  OzObjDependency(OzObjDependency const& other);
  OzObjDependency& operator=(OzObjDependency const& other);
  ~OzObjDependency() override;

  bool record_dependency(OzDynObj const* source, OzDynObj const* target, Type type,
                         int const* target_qualifier, OzObjectDependencyRole const* role) override;
  bool record_dependency(OzIterator<OzDynObj const*>* sources, OzIterator<OzDynObj const*>* targets,
                         Type type, int const* target_qualifier, OzObjectDependencyRole const* role) override;

  bool absorption_inherits_target_qualifier() const override;
  void set_absorption_inherits_target_qualifier(bool inherits) override;
  bool consider_split_modificational() const override;
  void set_consider_split_modificational(bool modificational) override;

  bool get_source_objects(OzDynObj const* object, OzAutoPtr<OzIterator<OzDynObj const*>>& result,
                          OzObjectDependencyFilter* filter, bool* filtered_out) const override;
  bool get_target_objects(OzDynObj const* object, OzAutoPtr<OzIterator<OzDynObj const*>>& result,
                          OzObjectDependencyFilter* filter, bool* filtered_out) const override;

  void simplify_it() override;

  bool remove_source_object(OzDynObj const* object, bool) override;
  bool remove_target_object(OzDynObj const* object, bool) override;

  void debug(OzJournal& journal, OzDebug level, bool check_integrity, int indent) const override;
  void set_dotty_output_format(bool dotty) override;
  void add_debug_node_filter(DebugNodeFilterType type, OzObjectDependencyNodeFilter const* filter) override;
  void remove_debug_node_filters() override;
  void set_debug_link_filter(OzObjectDependencyFilter* filter) override;
  void reset_debug_link_filter() override;

  bool is_valid(OzJournal* journal) const override;

  int new_separator() override;

  /// Where simplification writes what it does; null for nowhere. The journal is not owned.
  void set_simplify_trace(OzJournal* journal) { simplify_trace = journal; }

protected:
  /// Does `object` come directly from another object? False for null, for an object that the graph does
  /// not know, and for one that came from nothing.
  bool has_direct_source(OzDynObj const* object) const;

private:
  friend class OzObjDependencyProbe; // how the project's own tests reach inside

  typedef OzAddressSet<OzObjDepNode*> NodeSet;
  typedef OzAddressMap<OzDynObj const*, OzObjDepNode*> ObjectNodeMap;
  typedef OzArray<DebugNodeFilterType> NodeFilterTypes;
  typedef OzArray<OzObjectDependencyNodeFilter const*> NodeFilters;

  // Recording.

  /// Does `type` admit that many sources and targets?
  static bool check_dependency(int sources, int targets, Type type);
  /// False if there is a link from `source` to `target` already.
  bool check_dependency_pair(OzDynObj const* source, OzDynObj const* target) const;
  /// Checks all pairs and writes the result to `ok`, or adds all pairs. A null or empty iterator stands for
  /// one null object. `ok` may be null.
  void check_or_add_dependency(bool check, OzIterator<OzDynObj const*>* sources,
                               OzIterator<OzDynObj const*>* targets, Type type, int const* target_qualifier,
                               OzObjectDependencyRole const* role, bool* ok);
  void add_dependency_pair(OzDynObj const* source, OzDynObj const* target, Type type,
                           int const* target_qualifier, OzObjectDependencyRole const* role);
  struct Entry;
  class Entries;
  /// The same where the nodes have been looked up; null for one that there isn't. What it does is written to
  /// `entry`, as far as it comes.
  void add_link(Entry& entry, OzDynObj const* source, OzObjDepNode* n1, OzDynObj const* target,
                OzObjDepNode* n2, Type type, int const* target_qualifier, OzObjectDependencyRole const* role);
  OzObjDepNode* make_node(OzDynObj const* object);
  void delete_nodes();
  /// The node `known`, or a new one if that is null, as a source, or as a target, of a dependency of `type`.
  void enter_source(Entry& entry, OzDynObj const* object, OzObjDepNode* known, Type type);
  void enter_target(Entry& entry, OzDynObj const* object, OzObjDepNode* known, Type type);
  /// True if all sources of the object, or of each of the objects, carry one and the same qualifier, which
  /// is then written to `qualifier`.
  bool have_direct_sources_same_target_qualifier(OzDynObj const* object, int& qualifier) const;
  bool have_direct_sources_same_target_qualifier(OzIterator<OzDynObj const*>* objects, int& qualifier) const;

  // Queries. Both append to `objects`; `filter`, `filtered_out` may be null.

  /// Sets `reached_null` if a path from `node` leads to the null-object node, and leaves it alone otherwise.
  static void collect_sources(OzObjDepNode const* node, OzArray<OzDynObj const*>& objects,
                              OzObjectDependencyFilter* filter, bool* filtered_out, bool& reached_null);
  static void collect_targets(OzObjDepNode const* node, OzArray<OzDynObj const*>& objects,
                              OzObjectDependencyFilter* filter, bool* filtered_out);

  // Removal.

  /// Takes `link` off `node`, deletes it with its role, and nulls it. False, with nothing changed, if `node`
  /// does not hold it; it is not read then. The record at the other end, `roots` and `leaves` are for the
  /// caller to put right.
  static bool remove_source_link(OzObjDepNode* node, OzObjDepLink*& link);
  static bool remove_target_link(OzObjDepNode* node, OzObjDepLink*& link);

  // Simplification. n1 is a source of n2, the node about to go, and n3 one of its targets.

  bool simplify_step();
  /// A step in which only the roots in `turns` have one; `turns` is then those that need one in the next step.
  bool simplify_roots(NodeSet& turns);
  /// `rn1` and `unchecked_roots` may be null.
  bool prepare_removal_of_n2(OzObjDepSimplifyContext& context, OzObjDepNode* n2, OzObjDepNode* rn1,
                             NodeSet* unchecked_roots);
  static void compose_links(OzObjDepLink const* first, OzObjDepLink const* second, Type& type,
                            bool& has_target_qualifier, int& target_qualifier, OzObjectDependencyRole*& role,
                            int& separator);
  bool skip_n3(OzObjDepSimplifyContext& context, OzObjDepNode* n1, OzObjDepNode* n2, OzObjDepNode* n3,
               Type& type, bool& has_target_qualifier, int& target_qualifier, OzObjectDependencyRole*& role,
               int& separator);
  static void commit_changes(OzObjDepSimplifyContext& context, ObjectNodeMap& nodes);
  static void prune_null_node_links(OzObjDepNode* node, bool sources);
  void clean_up_null_node();
  static OzAddressSet<OzObjDepLink*> const& open_sources(OzObjDepSimplifyContext& context, OzObjDepNode* n2,
                                                         OzObjDepNode* rn1, NodeSet const* unchecked_roots);
  void link_n1_to_n3(OzObjDepSimplifyContext& context, OzObjDepNode* n1, OzObjDepNode* n2,
                     OzObjDepLink const* l12, OzObjDepLink const* t);
  static void remove_n2(OzObjDepSimplifyContext& context, OzObjDepNode* n2);
  static void collect_ways(OzObjDepSimplifyContext& context, OzObjDepNode const* n1, OzObjDepNode const* n2,
                           OzObjDepNode const* n3);
  static void settle_path(OzObjDepSimplifyContext& context, OzObjDepNode* n1, OzObjDepLink const* link,
                          OzObjDepNode* n3, Type& type, bool has_target_qualifier, int target_qualifier);

  // Validation.

  class Validation;
  /// Makes `valid` false and describes the fault on `journal`. `journal`, `n1` and `n2` may be null.
  static void report_error(bool& valid, int code, OzJournal* journal, bool dotty, OzObjDepNode const* n1,
                           OzObjDepNode const* n2);

  // Dumps.

  void debug_levels(OzJournal& journal, OzDebug level, int indent) const;
  static void debug_node(OzObjDepNode const* node, OzJournal& journal, int level, int indent, bool dotty,
                         NodeFilterTypes const& types, NodeFilters const& filters,
                         OzObjectDependencyFilter* link_filter);
  static void debug_link(OzObjDepLink const* link, OzJournal& journal, int level, int indent, bool dotty);
  static OzString node_name(OzObjDepNode const* node);
  static bool passes_debug_filters(OzObjDepNode const* node, NodeFilterTypes const& types,
                                   NodeFilters const& filters);

  NodeSet roots;
  NodeSet leaves;
  ObjectNodeMap object_node_map; // owns the nodes
  bool absorption_inherits = false;
  bool split_modificational = true;
  int current_separator = 0;
  bool dotty_output = false;
  NodeFilterTypes debug_node_filter_types;
  NodeFilters debug_node_filters; // beside debug_node_filter_types; not owned
  OzObjectDependencyFilter* debug_link_filter = nullptr;
  OzJournal* simplify_trace = nullptr;
  std::shared_ptr<OzObjDepRecords> records; // the memory of nodes and links
};

#endif
