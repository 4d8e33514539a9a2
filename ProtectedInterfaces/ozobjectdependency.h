#ifndef OZOBJECTDEPENDENCY_H
#define OZOBJECTDEPENDENCY_H

#include "ozarray.h"
#include "ozdebug.h"
#include "ozdynobj.h"
#include "ozexport.h"
#include "oziterator.h"
#include "ozrcobj.h"

#include <cstddef>

class OzJournal;
class OzObjectDependencyFilter;
class OzObjectDependencyNodeFilter;

/// An annotation that a caller attaches to a dependency. The graph keeps clones of it, hands them to link
/// filters, and never looks inside.
///
/// A copy keeps the identity of its original, so that the clones in a graph are recognised by it.
class OZ_EXPORT OzObjectDependencyRole : public OzDynObj
{
public:
  OzObjectDependencyRole();
  OzObjectDependencyRole(OzObjectDependencyRole const& other);
  OzObjectDependencyRole& operator=(OzObjectDependencyRole const& other);
  ~OzObjectDependencyRole() override;

  OzString const& class_name() const override;
  OzString const* type() const override;
  OzDynObj* clone() const override = 0;
  bool isA(OzString const* t) const override;
  int identity() const override;

  static OzString const* type_id() { return &class_name_; }
  static OzObjectDependencyRole* cast(OzDynObj* object) { return cast_to<OzObjectDependencyRole>(object); }
  static OzObjectDependencyRole const* cast(OzDynObj const* object)
  {
    return cast_to<OzObjectDependencyRole const>(object);
  }
  static OzObjectDependencyRole* cast(std::nullptr_t) { return nullptr; }

  static OzString const class_name_;

private:
  int identity_;
};

/// Marks a dependency as artificial: one that an operation had to record although no object came from
/// another in the sense of the model. The class is the whole message.
///
/// Unlike other roles, a copy draws an identity of its own.
class OZ_EXPORT OzArtificialObjectDependency : public OzObjectDependencyRole
{
public:
  OzArtificialObjectDependency();
  OzArtificialObjectDependency(OzArtificialObjectDependency const& other);
  OzArtificialObjectDependency& operator=(OzArtificialObjectDependency const& other);
  ~OzArtificialObjectDependency() override;

  OzString const& class_name() const override;
  OzString const* type() const override;
  OzDynObj* clone() const override;
  bool isA(OzString const* t) const override;

  static OzString const* type_id() { return &class_name_; }
  static OzArtificialObjectDependency* cast(OzDynObj* object)
  {
    return cast_to<OzArtificialObjectDependency>(object);
  }
  static OzArtificialObjectDependency const* cast(OzDynObj const* object)
  {
    return cast_to<OzArtificialObjectDependency const>(object);
  }
  static OzArtificialObjectDependency* cast(std::nullptr_t) { return nullptr; }

  static OzString const class_name_;
};

/// The history of a modelling operation: which objects became which, and how.
///
/// An operation records dependencies while it runs; whoever called it asks afterwards from which objects
/// of the input a result comes. Objects are known by their address alone and never belong to the history.
/// The null object is meaningful: as a source it says that the target came from nothing, as a target that
/// the source went to nothing.
///
/// This is the interface; OzObjDependency implements it.
class OZ_EXPORT OzObjectDependency
{
public:
  /// What became of the sources. Recording admits each type with these numbers of objects only:
  ///
  /// | type         | sources   | targets   |
  /// |--------------|-----------|-----------|
  /// | TRANSFER     | 1 or more | 0         |
  /// | CREATION     | 0 or more | 1         |
  /// | DELETION     | 1 or more | 0         |
  /// | MODIFICATION | 1         | 1         |
  /// | SPLIT        | 1         | 2 or more |
  /// | ABSORPTION   | 0 or more | 1         |
  /// | CONVERSION   | 1         | 1         |
  /// | CONTAINMENT  | 1         | 2 or more |
  enum Type : int
  {
    UNSPECIFIED = 0,  ///< never admitted
    TRANSFER = 1,     ///< handed on as it is: accepted, and nothing is stored
    CREATION = 2,     ///< the target is new
    DELETION = 3,     ///< the sources are gone
    MODIFICATION = 4, ///< the target is the changed source
    SPLIT = 5,        ///< the source fell into the targets
    ABSORPTION = 6,   ///< the sources were taken up by the target
    CONVERSION = 7,   ///< as MODIFICATION, but transparent where dependencies are composed
    CONTAINMENT = 8   ///< as SPLIT, but composed differently
  };

  /// About which objects a node filter is asked before a dump shows a node.
  enum DebugNodeFilterType : int
  {
    NODE_FILTER_SELF = 0,                ///< the node's own object
    NODE_FILTER_SOURCES = 1,             ///< the roots it comes from: one must pass
    NODE_FILTER_TARGETS = 2,             ///< the leaves it leads to: one must pass
    NODE_FILTER_SOURCES_AND_TARGETS = 3, ///< one of each must pass
  };

  OzObjectDependency();
  OzObjectDependency(OzObjectDependency const&);
  OzObjectDependency& operator=(OzObjectDependency const&);
  virtual ~OzObjectDependency();

  /// Records what became of one object. False if the type does not admit these objects, and then silently;
  /// or if there is a dependency between the two already, and then with a report. Nothing has changed in
  /// either case. `target_qualifier` and `role` may be null; a role is cloned.
  virtual bool record_dependency(OzDynObj const* source, OzDynObj const* target, Type type,
                                 int const* target_qualifier, OzObjectDependencyRole const* role) = 0;
  /// The same from each source to each target, all or nothing. A null iterator stands for no objects. A
  /// null among the objects, or one of them twice on the same side, is reported and refused too. The
  /// iterators are walked several times and not owned.
  virtual bool record_dependency(OzIterator<OzDynObj const*>* sources, OzIterator<OzDynObj const*>* targets,
                                 Type type, int const* target_qualifier,
                                 OzObjectDependencyRole const* role) = 0;

  /// Does an ABSORPTION that is recorded without a qualifier take the one that the sources of its sources
  /// have in common? False at first. Takes effect on what is recorded from then on.
  virtual bool absorption_inherits_target_qualifier() const = 0;
  virtual void set_absorption_inherits_target_qualifier(bool inherits) = 0;
  /// Does a SPLIT of which simplification leaves a single target become a MODIFICATION (true at first) or a
  /// CREATION? Takes effect on what is simplified from then on.
  virtual bool consider_split_modificational() const = 0;
  virtual void set_consider_split_modificational(bool modificational) = 0;

  /// The roots from which `object` comes, once for each path, in no meaningful order; with a null object
  /// all roots. A root delivers itself. The null object is never delivered. True if there are any, or if
  /// a path starts from nothing.
  ///
  /// `result` gets a new iterator in every case, and what it held is deleted. Each link is shown to
  /// `filter`, unless that is null, just before the walk follows it; `filtered_out`, unless null, tells
  /// whether the filter turned one down.
  virtual bool get_source_objects(OzDynObj const* object, OzAutoPtr<OzIterator<OzDynObj const*>>& result,
                                  OzObjectDependencyFilter* filter, bool* filtered_out) const = 0;
  /// The leaves that `object` became, likewise; with a null object all leaves. Here a path that ends in
  /// nothing makes no difference to the answer: an object that was deleted answers false, just as one that
  /// was never recorded.
  virtual bool get_target_objects(OzDynObj const* object, OzAutoPtr<OzIterator<OzDynObj const*>>& result,
                                  OzObjectDependencyFilter* filter, bool* filtered_out) const = 0;

  /// Replaces each path from a root to a leaf by one direct dependency, so that only roots and leaves stay.
  virtual void simplify_it() = 0;

  /// Reserved: reports, changes nothing and gives false.
  virtual bool remove_source_object(OzDynObj const* object, bool) = 0;
  virtual bool remove_target_object(OzDynObj const* object, bool) = 0;

  /// Writes the graph to `journal`, plain or as input for the dotty drawing tool.
  virtual void debug(OzJournal& journal, OzDebug level, bool check_integrity, int indent) const = 0;
  virtual void set_dotty_output_format(bool dotty) = 0;
  /// Adds a condition that nodes must meet to be dumped. The filter is not owned.
  virtual void add_debug_node_filter(DebugNodeFilterType type,
                                     OzObjectDependencyNodeFilter const* filter) = 0;
  virtual void remove_debug_node_filters() = 0;
  /// Sets the condition that links must meet to be dumped. The filter is not owned.
  virtual void set_debug_link_filter(OzObjectDependencyFilter* filter) = 0;
  virtual void reset_debug_link_filter() = 0;

  /// True if the graph keeps its invariants. Otherwise says in words on `journal`, unless that is null,
  /// what is wrong.
  virtual bool is_valid(OzJournal* journal) const = 0;

  /// Opens a new group of recordings and returns its number; the first call gives 1. Each link carries the
  /// number of its group, for filters and dumps.
  virtual int new_separator() = 0;
};

/// A caller's condition on dependencies.
class OZ_EXPORT OzObjectDependencyFilter
{
public:
  virtual ~OzObjectDependencyFilter();

  /// True to let the dependency through. `target_qualifier` and `role` are null where it has none.
  virtual bool accept(OzDynObj const* source, OzDynObj const* target, OzObjectDependency::Type type,
                      int separator, int const* target_qualifier, OzObjectDependencyRole const* role) = 0;
};

/// A caller's condition on objects.
class OZ_EXPORT OzObjectDependencyNodeFilter
{
public:
  virtual ~OzObjectDependencyNodeFilter();

  virtual bool accept(OzDynObj const* object) const = 0;
};

/// A cursor over an array of objects that it owns: what queries hand out. The objects themselves are not
/// owned.
class OZ_EXPORT OzDynObjArrayIterator : public OzIterator<OzDynObj const*>
{
public:
  /// Takes over the elements of `objects_to_own`.
  explicit OzDynObjArrayIterator(OzArray<OzDynObj const*>&& objects_to_own);
  OzDynObjArrayIterator(OzDynObjArrayIterator const&) = delete;
  OzDynObjArrayIterator& operator=(OzDynObjArrayIterator const&) = delete;
  ~OzDynObjArrayIterator() override;

  OzDynObj const* const& first() const override;
  void next() override;
  bool done() const override;
  void reset() override;
  OzDynObj const* const& current() const override;

private:
  OzArray<OzDynObj const*> objects;
  OzArrayIterator<OzDynObj const*> cursor; // over `objects`
};

#endif
