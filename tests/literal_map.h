#ifndef LITERAL_MAP_H
#define LITERAL_MAP_H

#include "ozrbt.h"

#include <cstdint>
#include <vector>

/// A node that answers the questions of the tree by comparing its key.
template <class K, class V>
class LiteralNode : public OzRBTreeNode
{
public:
  LiteralNode(OzRBTreeNode* nil, K const& node_key, V const& node_value)
    : OzRBTreeNode(nil)
    , key(node_key)
    , value(node_value)
  {
  }

  bool greater_equal(OzRBTreeNode const* other) const override { return key >= of(other)->key; }
  bool equal(OzRBTreeNode const* other) const override
  {
    return greater_equal(other) && other->greater_equal(this);
  }
  bool right_most_ge(OzRBTreeNode const* other) const override
  {
    return of(right_most())->key >= of(other->right_most())->key;
  }
  bool below_right_most(OzRBTreeNode const* other) const override
  {
    return key <= of(other->right_most())->key;
  }
  void assign(OzRBTreeNode const* other) override
  {
    value = of(other)->value;
    key = of(other)->key;
  }

  static LiteralNode const* of(OzRBTreeNode const* any) { return static_cast<LiteralNode const*>(any); }

  K key;
  V value;
};

/// What a map does in its plainest form: every operation asks the tree with a query node, and the tree asks
/// the nodes. Slow and obvious, it is what OzMap is held against.
template <class K, class V>
class LiteralMap : public OzRBTree
{
public:
  LiteralMap()
    : OzRBTree(new Node(nullptr, K(), V()))
  {
  }
  LiteralMap(LiteralMap const&) = delete;

  LiteralMap& operator=(LiteralMap const& other)
  {
    clear();
    for (OzRBTreeNode* n = other.tree_minimum(other.root); n != other.nil; n = other.tree_successor(n))
      insert_again(Node::of(n)->key, Node::of(n)->value);
    return *this;
  }

  V& operator[](K const& key)
  {
    Node const query(nil, key, V());
    if (OzRBTreeNode* const there = rb_find(&query))
      return static_cast<Node*>(there)->value;
    return insert_again(key, V());
  }

  bool contains(K const& key) const
  {
    Node const query(nil, key, V());
    return rb_find(&query) != nullptr;
  }

  std::vector<V> find(K const& key) const
  {
    Node const query(nil, key, V());
    OzList<void*> found;
    rb_find(&query, &found, nullptr);
    std::vector<V> values;
    while (found.count() != 0)
      values.push_back(static_cast<Node*>(found.pop_first())->value);
    return values;
  }

  void remove(K const& key)
  {
    Node const query(nil, key, V());
    while (OzRBTreeNode* const there = rb_find(&query))
    {
      rb_delete(there);
      --size;
    }
  }

  void clear()
  {
    remove_all_elements();
    size = 0;
  }

  /// Adds an entry whether the key is there or not.
  V& insert_again(K const& key, V const& value)
  {
    Node* const added = new Node(nil, key, value);
    rb_insert(added);
    ++size;
    return added->value;
  }

  using OzRBTree::nil;
  using OzRBTree::root;
  std::uint64_t size = 0;

private:
  typedef LiteralNode<K, V> Node;
};

#endif
