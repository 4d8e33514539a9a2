#ifndef OZMAP_H
#define OZMAP_H

#include "ozassert.h"
#include "oziterator.h"
#include "ozlist.h"
#include "ozrbt.h"

#include <cstdint>
#include <type_traits>

template <class K, class V>
class OzMap;
template <class K, class V>
class OzMapIterator;

/// An entry of an OzMap. Keys compare with their own `>=` and `<=`, and are equal if each is >= the other.
template <class K, class V>
class OZ_EXPORT OzMapNode : public OzRBTreeNode
{
public:
  /// A node with K() and V(), all links of which lead to `nil`.
  explicit OzMapNode(OzRBTreeNode* nil);
  /// A node with V().
  OzMapNode(OzRBTreeNode* nil, K const& node_key);
  OzMapNode(OzRBTreeNode* nil, K const& node_key, V const& node_value);

  // What `other` points to is a node of the same kind of map.
  bool greater_equal(OzRBTreeNode const* other) const override;
  bool equal(OzRBTreeNode const* other) const override;
  bool right_most_ge(OzRBTreeNode const* other) const override;
  bool below_right_most(OzRBTreeNode const* other) const override;
  /// Copies value and key.
  void assign(OzRBTreeNode const* other) override;

protected:
  V value;
  K key;

private:
  static OzMapNode const* node(OzRBTreeNode const* any) { return static_cast<OzMapNode const*>(any); }

  friend class OzMap<K, V>;
  friend class OzMapIterator<K, V>;
};

/// A map from keys to values, in ascending order of the keys.
///
/// Keys compare with the operators of their type. So a pointer orders by its address, and an
/// `OzMap<OzString const*, V>` finds an entry only by the very string object that it was entered with. A
/// key that is not comparable with itself, such as a NaN, is never found again.
///
/// The operations of the map itself enter a key once. A derived class may enter it several times through
/// `rb_insert`; `find` counts all of these and `remove` takes all of them away.
///
/// Ownership: keys and values are copied in; what pointers among them point to is not the map's. A copy is
/// complete: a map of maps copies the inner ones too.
/// References: one to a value holds until its key is removed, or any other: removing a key whose node has
/// two children moves the next greater entry into that node, and the node of that entry goes.
/// Threads: one at a time; the searches too, which share scratch lists in the map.
/// Reports: `at` with a missing key.
/// Cost: O(log n) comparisons each. A copy is O(n).
template <class K, class V>
class OZ_EXPORT OzMap : public OzRBTree
{
public:
  OzMap();
  OzMap(OzMap const& other);
  /// Replaces the contents. Assigning a map to itself does nothing.
  OzMap& operator=(OzMap const& other);

  /// The value of `key`, which is entered with V() if it is missing.
  V& operator[](K const& key);

  /// The value of `key`. A missing one is reported, and answered with a spare value of the map: V() at first,
  /// writable, and keeping what is written, also when the map is cleared or assigned to.
  V& at(K const& key);

  /// How many entries have `key`. Their values are appended to `values` unless that is null; where several
  /// have it, they come in no particular order.
  int find(K const& key, OzList<V>* values);

  /// Removes all entries with `key`. A missing one changes nothing.
  void remove(K const& key);

  void clear();

  std::uint64_t size() const { return size_; }

protected:
  OzList<void*> found; // nodes that a search has found; empty between operations
  std::uint64_t size_ = 0;

private:
  typedef OzMapNode<K, V> Node;
  static Node* node(OzRBTreeNode* any) { return static_cast<Node*>(any); }

  /// Keys of which each two are comparable. Only for these a search may go by the order of the nodes alone;
  /// with others, such as a double, which may be a NaN, the nodes are asked the questions of OzRBTree.
  static constexpr bool STRICT_ORDER = (std::is_integral_v<K> || std::is_pointer_v<K>)&&sizeof(K) <= 8;

  /// The most entries with which a search does best to go down to the end of the tree in any case: they take
  /// 128 KiB, with small keys and values.
  static constexpr std::uint64_t SEARCHED_TO_THE_END = 2048;

  static OzRBTreeNode* child(OzRBTreeNode const* x, K here, K wanted);
  static OzRBTreeNode* step(OzRBTreeNode* x, K wanted, OzRBTreeNode*& match, OzRBTreeNode*& former);
  OzRBTreeNode* search(K const& key) const;
  OzRBTreeNode* search_with_branches(K wanted) const;
  bool is_only_one(OzRBTreeNode* x) const;
  static int list_equal(OzRBTreeNode* x, OzRBTreeNode* nil, K key, OzList<V>* values);
  void copy_nodes(OzMap const& other);

  friend class OzMapIterator<K, V>;
};

/// A cursor over the values of a map, in ascending order of the keys.
///
/// The cursor stands on a node, and so does its notion of the first one, which is looked up when the cursor
/// is made and on `reset`. Entering keys during a walk is allowed; removing one invalidates the cursor if
/// its node or the first one goes (see OzMap about which does).
///
/// On an empty map the cursor is done at once, and `first`, `current` and `key` give the map's spare entry.
///
/// Ownership: the map is not owned and outlives the cursor.
/// Threads: as the map; a walk alone, without searches, changes nothing in it.
/// Cost: a whole walk O(n), without comparisons.
template <class K, class V>
class OZ_EXPORT OzMapIterator : public OzIterator<V>
{
public:
  explicit OzMapIterator(OzMap<K, V> const* map_to_walk);

  V const& first() const override;
  void next() override;
  bool done() const override;
  void reset() override;
  V const& current() const override;
  /// The key under the cursor.
  virtual K const& key() const;

private:
  typedef OzMapNode<K, V> Node;
  static Node const* node(OzRBTreeNode const* any) { return static_cast<Node const*>(any); }

  OzMap<K, V> const* map; // not owned
  OzRBTreeNode* cursor;
  OzRBTreeNode* first_node;
};

/// A cursor over the keys of a map, in ascending order. It behaves as OzMapIterator, but for `first`.
template <class K, class V>
class OZ_EXPORT OzMapKeyIterator : public OzIterator<K>
{
public:
  explicit OzMapKeyIterator(OzMap<K, V> const* map_to_walk);

  /// The key under the cursor, not the first one: it is the first as long as the cursor has not moved.
  K const& first() const override;
  void next() override;
  bool done() const override;
  void reset() override;
  K const& current() const override;

private:
  OzMapIterator<K, V> iterator;
};

#include "ozmap_t.h"

#endif
