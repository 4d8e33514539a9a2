#ifndef OZMAP_T_H
#define OZMAP_T_H

#include "ozmap.h"

template <class K, class V>
OzMapNode<K, V>::OzMapNode(OzRBTreeNode* nil)
  : OzRBTreeNode(nil)
  , value()
  , key()
{
}

template <class K, class V>
OzMapNode<K, V>::OzMapNode(OzRBTreeNode* nil, K const& node_key)
  : OzRBTreeNode(nil)
  , value()
  , key(node_key)
{
}

template <class K, class V>
OzMapNode<K, V>::OzMapNode(OzRBTreeNode* nil, K const& node_key, V const& node_value)
  : OzRBTreeNode(nil)
  , value(node_value)
  , key(node_key)
{
}

template <class K, class V>
bool OzMapNode<K, V>::greater_equal(OzRBTreeNode const* other) const
{
  return key >= node(other)->key;
}

template <class K, class V>
bool OzMapNode<K, V>::equal(OzRBTreeNode const* other) const
{
  return greater_equal(other) && other->greater_equal(this);
}

template <class K, class V>
bool OzMapNode<K, V>::right_most_ge(OzRBTreeNode const* other) const
{
  return node(right_most())->key >= node(other->right_most())->key;
}

template <class K, class V>
bool OzMapNode<K, V>::below_right_most(OzRBTreeNode const* other) const
{
  return key <= node(other->right_most())->key;
}

template <class K, class V>
void OzMapNode<K, V>::assign(OzRBTreeNode const* other)
{
  value = node(other)->value;
  key = node(other)->key;
}

template <class K, class V>
OzMap<K, V>::OzMap()
  : OzRBTree(new Node(nullptr))
{
}

template <class K, class V>
OzMap<K, V>::OzMap(OzMap const& other)
  : OzMap()
{
  *this = other;
}

template <class K, class V>
OzMap<K, V>& OzMap<K, V>::operator=(OzMap const& other)
{
  if (this == &other)
    return *this;

  clear();
  for (OzRBTreeNode* from = other.tree_minimum(other.root); from != other.nil;
       from = other.tree_successor(from))
  {
    rb_insert(new Node(nil, node(from)->key, node(from)->value));
    ++size_;
  }
  return *this;
}

template <class K, class V>
V& OzMap<K, V>::operator[](K const& key)
{
  Node const query(nil, key);
  if (OzRBTreeNode* const there = rb_find(&query))
    return node(there)->value;

  Node* const added = new Node(query);
  rb_insert(added);
  ++size_;
  return added->value;
}

template <class K, class V>
V& OzMap<K, V>::at(K const& key)
{
  Node const query(nil, key);
  OzRBTreeNode* const there = rb_find(&query);
  OZ_ASSERT(there != nullptr);
  return node(there != nullptr ? there : nil)->value;
}

template <class K, class V>
int OzMap<K, V>::find(K const& key, OzList<V>* values)
{
  // The scratch list is empty afterwards even if a value cannot be copied.
  struct Emptied
  {
    OzList<void*>& list;
    ~Emptied() { list.clear(); }
  } const emptied{found};

  Node const query(nil, key);
  int const count = rb_find(&query, &found, nullptr);
  if (values != nullptr)
  {
    while (found.count() != 0)
      values->append(static_cast<Node*>(found.pop_first())->value);
  }
  return count;
}

template <class K, class V>
void OzMap<K, V>::remove(K const& key)
{
  // A key of the map itself may be handed in, and would go with its node.
  Node const query(nil, key);
  while (OzRBTreeNode* const there = rb_find(&query))
  {
    rb_delete(there);
    --size_;
  }
}

template <class K, class V>
void OzMap<K, V>::clear()
{
  remove_all_elements();
  size_ = 0;
}

template <class K, class V>
OzMapIterator<K, V>::OzMapIterator(OzMap<K, V> const* map_to_walk)
  : map(map_to_walk)
  , cursor(map->tree_minimum(map->root))
  , first_node(cursor)
{
}

template <class K, class V>
V const& OzMapIterator<K, V>::first() const
{
  return node(first_node)->value;
}

template <class K, class V>
void OzMapIterator<K, V>::next()
{
  cursor = map->tree_successor(cursor);
}

template <class K, class V>
bool OzMapIterator<K, V>::done() const
{
  return cursor == map->nil;
}

template <class K, class V>
void OzMapIterator<K, V>::reset()
{
  first_node = map->tree_minimum(map->root);
  cursor = first_node;
}

template <class K, class V>
V const& OzMapIterator<K, V>::current() const
{
  return node(cursor)->value;
}

template <class K, class V>
K const& OzMapIterator<K, V>::key() const
{
  return node(cursor)->key;
}

template <class K, class V>
OzMapKeyIterator<K, V>::OzMapKeyIterator(OzMap<K, V> const* map_to_walk)
  : iterator(map_to_walk)
{
}

template <class K, class V>
K const& OzMapKeyIterator<K, V>::first() const
{
  return iterator.key();
}

template <class K, class V>
void OzMapKeyIterator<K, V>::next()
{
  iterator.next();
}

template <class K, class V>
bool OzMapKeyIterator<K, V>::done() const
{
  return iterator.done();
}

template <class K, class V>
void OzMapKeyIterator<K, V>::reset()
{
  iterator.reset();
}

template <class K, class V>
K const& OzMapKeyIterator<K, V>::current() const
{
  return iterator.key();
}

#endif
