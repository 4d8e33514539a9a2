#ifndef OZRBT_H
#define OZRBT_H

#include "ozexport.h"
#include "ozlist.h"

#include <cstdint>

/// A node of an OzRBTree: its links, its colour, and the node with the greatest key below it.
///
/// A tree never sees a key. All that it wants to know about order and equality it asks the nodes, so a
/// derived class decides what these mean. An end of the tree is no null pointer but the tree's one `nil`
/// node, whose own links lead back to itself.
///
/// Ownership: a node owns nothing; it belongs to the tree that it was inserted into.
/// Threads: as the tree.
/// Dead nodes: the destructor sets the four links to null and the colour to Oz_BogusInt(), and these stores
/// are really made, so that a stale node shows in a dump of memory.
class OZ_EXPORT OzRBTreeNode
{
public:
  /// The links and the colour are copied as they stand: a copy refers to the same neighbours, but these do
  /// not refer to it.
  OzRBTreeNode(OzRBTreeNode const& other) = default;
  OzRBTreeNode& operator=(OzRBTreeNode const& other) = default;
  virtual ~OzRBTreeNode();

  /// This key >= the key of `other`: a new node then goes to the right of `other`.
  virtual bool greater_equal(OzRBTreeNode const* other) const = 0;
  /// This key and the key of `other` are the same: a search ends here.
  virtual bool equal(OzRBTreeNode const* other) const = 0;
  /// The key of this right_most() >= the key of `other`'s right_most().
  virtual bool right_most_ge(OzRBTreeNode const* other) const = 0;
  /// This key <= the key of `other`'s right_most(): a node like this one may lie at or below `other`.
  virtual bool below_right_most(OzRBTreeNode const* other) const = 0;
  /// Takes over the key, and whatever goes with it, from `other`. The links stay.
  virtual void assign(OzRBTreeNode const* other) = 0;

  OzRBTreeNode* left() const { return left_; }
  OzRBTreeNode* right() const { return right_; }
  OzRBTreeNode* parent() const { return parent_; }
  /// The node with the greatest key at or below this one. Where several have it, the node itself comes
  /// first, then what its left child names, then what its right child names.
  OzRBTreeNode* right_most() const { return right_most_; }

protected:
  static constexpr std::int32_t BLACK = 1;
  static constexpr std::int32_t RED = 2;

  /// A black node, all links of which lead to `nil`.
  explicit OzRBTreeNode(OzRBTreeNode* nil);

  bool less_than(OzRBTreeNode const* other) const { return !greater_equal(other); }

  OzRBTreeNode* parent_;
  OzRBTreeNode* left_;
  OzRBTreeNode* right_;
  OzRBTreeNode* right_most_;
  std::int32_t color;

  friend class OzRBTree;
};

/// A red-black tree over nodes that know their own keys; the base of OzMap.
///
/// Equal keys are welcome: a new one goes behind those that are there. Each node records the node with the
/// greatest key in its subtree, and a search goes by these records instead of the order of the nodes
/// themselves. So one search can deliver every node that matches, leaving out the subtrees whose greatest
/// key lies below the one that is looked for.
///
/// Derived classes only: everything but the destructor is protected.
///
/// Ownership: the tree owns its nodes and `nil`, all made with new. A node that is inserted belongs to the
/// tree, one that is deleted is gone.
/// Threads: one at a time, and that includes searches, which are const but share one stack of subtrees.
/// Reports: a null node handed to `rb_insert`, `rb_delete`, `rb_delete_fixup`, `tree_maximum` or
/// `tree_successor`, and a node without a parent in `tree_successor`; the operation then changes nothing or
/// returns null. `nil` is no node to insert or delete either, and is refused in the same way.
/// Cost: search, insertion and deletion O(log n) questions to the nodes. Each rotation asks up to the root
/// twice, because the records are renewed all the way. `rb_find` for one node allocates nothing.
class OZ_EXPORT OzRBTree
{
public:
  /// Deletes all nodes, and `nil`.
  virtual ~OzRBTree();

protected:
  /// No root and no `nil`: for a derived class that sets them up later.
  OzRBTree() = default;
  /// Takes possession of `nil`, whose links are tied to itself.
  explicit OzRBTree(OzRBTreeNode* nil);
  /// A tree is not copied at this level: the new one has no root and no `nil`.
  OzRBTree(OzRBTree const& other);
  /// Leaves this tree as it is.
  OzRBTree& operator=(OzRBTree const& other);

  OzRBTreeNode* tree_root() { return root; }
  void set_tree_root(OzRBTreeNode* node) { root = node; }
  OzRBTreeNode* tree_nil() { return nil; }

  /// Adds `z`, whose children are `nil`, behind all nodes with the same key.
  void rb_insert(OzRBTreeNode* z);

  /// As rb_insert, for a derived class whose nodes are in strict order and which has found the place already:
  /// `z` goes below `parent`, on the side told, or becomes the root of an empty tree if `parent` is nil. The
  /// records of right_most are renewed only as far up as they change. Where all of them were right before,
  /// this leaves the very shape, colours and records that rb_insert leaves.
  ///
  /// The order is strict if no node on the left of another has a greater key than that one: for numbers and
  /// addresses it is, but not where some keys cannot be compared. The same goes for the next three.
  void insert_below(OzRBTreeNode* z, OzRBTreeNode* parent, bool on_the_right);

  /// Adds `z` as the last node in the order, below `last`, which is nil in an empty tree and otherwise the
  /// last node so far. No record of right_most is renewed: when all nodes have been added, `renew_all`
  /// makes up for it. So a whole tree is built in one pass from nodes in ascending order, with the shape and
  /// colours that rb_insert would give it.
  void append_unrecorded(OzRBTreeNode* z, OzRBTreeNode* last);
  /// Renews the records of all nodes at and below `x`.
  void renew_all(OzRBTreeNode* x);
  /// As rb_delete, but the records of right_most are renewed only as far up as they change.
  void delete_node(OzRBTreeNode* z);

  /// Hangs `z` into its place and does nothing more: no colour, no record of right_most, no balance. A null
  /// `z` is ignored.
  void insert(OzRBTreeNode* z);

  /// Removes the key of `z` from the tree. If `z` has two children, the object `z` stays and takes over the
  /// payload of its successor by `assign`, and the successor's object is deleted: a pointer to that one
  /// dangles from then on.
  void rb_delete(OzRBTreeNode* z);

  /// Restores the balance where `x` has taken the place of a black node.
  void rb_delete_fixup(OzRBTreeNode* x);

  /// The highest node on the way down that is equal to `query`, or null. A null `query` finds the root.
  OzRBTreeNode* rb_find(OzRBTreeNode const* query) const;

  /// The number of nodes equal to `query` at and below `start` (null: in the whole tree), which are appended
  /// to `list` unless that is null. A node comes after the matches of the subtrees that were put aside on
  /// the way to it, and before the matches on its right and then those on its left; so the order is neither
  /// that of the keys nor that of insertion. A null `query` matches every node.
  int rb_find(OzRBTreeNode const* query, OzList<void*>* list, OzRBTreeNode* start) const;

  /// The leftmost node at or below `x`: `nil` for `nil`, and null for null.
  OzRBTreeNode* tree_minimum(OzRBTreeNode* x) const;
  /// The rightmost node at or below `x`: `nil` for `nil`. Null is reported and answered with null.
  OzRBTreeNode* tree_maximum(OzRBTreeNode* x) const;
  /// The next node in ascending order, `nil` behind the last one.
  OzRBTreeNode* tree_successor(OzRBTreeNode* x) const;

  /// Turns `x` and its right child, which is there, so that `x` becomes the left child of the other. The
  /// records of both and of all nodes above are renewed. Without a right child nothing happens.
  void left_rotate(OzRBTreeNode* x);
  /// The mirror image of `left_rotate`.
  void right_rotate(OzRBTreeNode* x);

  /// Renews the record of right_most in `x` and in all nodes above it, up to the root.
  void update_max(OzRBTreeNode* x);

  /// Deletes all nodes, children first; `nil` stays.
  void remove_all_elements();
  /// Deletes `x` and all nodes below it without touching any link above. Null and `nil` are ignored.
  void remove_all_elements_aux(OzRBTreeNode* x);

  OzRBTreeNode* root = nullptr;
  OzRBTreeNode* nil = nullptr;
  mutable OzStack<void*>
      stack; // subtrees that a search for all matches has put aside; empty between searches

private:
  static constexpr std::int32_t BLACK = OzRBTreeNode::BLACK;
  static constexpr std::int32_t RED = OzRBTreeNode::RED;

  /// Which records of right_most are renewed after a change: all up to the root, those that change, or none.
  enum class Records
  {
    ALL,
    CHANGED,
    NONE
  };

  bool is_node(OzRBTreeNode const* x) const { return x != nil && x != nullptr; }
  void attach(OzRBTreeNode* z, OzRBTreeNode* parent, bool on_the_right);
  void attach_in_order(OzRBTreeNode* z);
  void replace_child(OzRBTreeNode* parent, OzRBTreeNode* child, OzRBTreeNode* replacement);
  template <Records RECORDS>
  void insert_fixup(OzRBTreeNode* z);
  template <Records RECORDS>
  void remove_node(OzRBTreeNode* z);
  template <Records RECORDS>
  void delete_fixup(OzRBTreeNode* x);
  template <Records RECORDS>
  void turn_left(OzRBTreeNode* x);
  template <Records RECORDS>
  void turn_right(OzRBTreeNode* x);
  template <Records RECORDS>
  void renew_turned(OzRBTreeNode* lower, OzRBTreeNode* upper, OzRBTreeNode* other_right);
  void renew_right_most(OzRBTreeNode* n);
  void renew_in_strict_order(OzRBTreeNode* n);
  void record_last(OzRBTreeNode* z);
  void renew_while_changing(OzRBTreeNode* n);
  OzRBTreeNode* find_all_step(OzRBTreeNode const* query, OzRBTreeNode* x) const;
};

#endif
