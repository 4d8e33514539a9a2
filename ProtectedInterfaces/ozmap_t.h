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
  if (this != &other)
  {
    clear();
    copy_nodes(other);
  }
  return *this;
}

template <class K, class V>
void OzMap<K, V>::copy_nodes(OzMap const& other)
{
  // In strict order the place of each node is known: behind the one before it. The records are made up for
  // at the end, also if a value cannot be copied; what has come so far is then a sound map.
  struct Recorded
  {
    OzMap& map;
    ~Recorded()
    {
      if constexpr (STRICT_ORDER)
        map.renew_all(map.root);
    }
  } const recorded{*this};

  OzRBTreeNode* last = nil;
  for (OzRBTreeNode* from = other.tree_minimum(other.root); from != other.nil;
       from = other.tree_successor(from))
  {
    Node* const added = new Node(nil, node(from)->key, node(from)->value);
    if constexpr (STRICT_ORDER)
      append_unrecorded(added, last);
    else
      rb_insert(added);
    last = added;
    ++size_;
  }
}

// The next node on the way down from `x`, whose key is `here`: the right child if `here` < `wanted`.
//
// Which way a search goes is as good as random, so a branch would be guessed wrong every other time, and a
// compiler makes one of a conditional expression here, and of a selection by bits too. One comparison and one
// selection take half the time. Each instruction stands in both spellings of assemblers, since the one in use
// is the client's choice and turns the operands round.
template <class K, class V>
inline OzRBTreeNode* OzMap<K, V>::child(OzRBTreeNode const* x, K here, K wanted)
{
#if defined(__x86_64__) && defined(__GNUC__)
  OzRBTreeNode* selected = x->left();
  if constexpr (std::is_pointer_v<K>)
    __asm__("{cmp %2, %1|cmp %1, %2}\n\t{cmovb %3, %0|cmovb %0, %3}"
            : "+r"(selected)
            : "r"(here), "r"(wanted), "r"(x->right())
            : "cc");
  else if constexpr (std::is_signed_v<K>)
  {
    std::int64_t const a = here;
    std::int64_t const b = wanted;
    __asm__("{cmp %2, %1|cmp %1, %2}\n\t{cmovl %3, %0|cmovl %0, %3}"
            : "+r"(selected)
            : "r"(a), "r"(b), "r"(x->right())
            : "cc");
  }
  else
  {
    std::uint64_t const a = here;
    std::uint64_t const b = wanted;
    __asm__("{cmp %2, %1|cmp %1, %2}\n\t{cmovb %3, %0|cmovb %0, %3}"
            : "+r"(selected)
            : "r"(a), "r"(b), "r"(x->right())
            : "cc");
  }
  return selected;
#else
  return here < wanted ? x->right() : x->left();
#endif
}

// One step of a search: from `x` to the next node on the way down. A node with the very key becomes `match`, and
// the match before it, if any, `former`. Without a branch, as `child`.
template <class K, class V>
inline OzRBTreeNode* OzMap<K, V>::step(OzRBTreeNode* x, K wanted, OzRBTreeNode*& match, OzRBTreeNode*& former)
{
  K const here = node(x)->key;
#if defined(__x86_64__) && defined(__GNUC__)
  OzRBTreeNode* next = x->left();
  if constexpr (std::is_signed_v<K>)
  {
    std::int64_t const a = here;
    std::int64_t const b = wanted;
    __asm__("{cmp %4, %3|cmp %3, %4}\n\t{cmovl %5, %0|cmovl %0, %5}\n\t"
            "{cmove %1, %2|cmove %2, %1}\n\t{cmove %6, %1|cmove %1, %6}"
            : "+&r"(next), "+&r"(match), "+&r"(former)
            : "r"(a), "r"(b), "r"(x->right()), "r"(x)
            : "cc");
  }
  else
  {
    std::uint64_t a;
    std::uint64_t b;
    if constexpr (std::is_pointer_v<K>)
    {
      a = reinterpret_cast<std::uint64_t>(here);
      b = reinterpret_cast<std::uint64_t>(wanted);
    }
    else
    {
      a = here;
      b = wanted;
    }
    __asm__("{cmp %4, %3|cmp %3, %4}\n\t{cmovb %5, %0|cmovb %0, %5}\n\t"
            "{cmove %1, %2|cmove %2, %1}\n\t{cmove %6, %1|cmove %1, %6}"
            : "+&r"(next), "+&r"(match), "+&r"(former)
            : "r"(a), "r"(b), "r"(x->right()), "r"(x)
            : "cc");
  }
  return next;
#else
  if (here == wanted)
  {
    former = match;
    match = x;
  }
  return here < wanted ? x->right() : x->left();
#endif
}

// A descent by the order of the nodes ends on the same node as that of rb_find, which goes by the greatest
// keys: to the left where the key is below that of the node, since no match can lie on the right then.
//
// In a map that the cache holds it goes on to the end of the tree, behind which it may take some more steps from
// nil to nil, and asks only every four steps whether it is there. How many steps there are is then mostly the
// same, so that nothing is guessed wrong, and one search can begin while the one before it is under way. In a
// larger map those last nodes would have to be waited for.
template <class K, class V>
OzRBTreeNode* OzMap<K, V>::search(K const& key) const
{
  if constexpr (STRICT_ORDER)
  {
    K const wanted = key;
    if (size_ > SEARCHED_TO_THE_END || wanted == node(nil)->key)
      return search_with_branches(wanted);

    OzRBTreeNode* match = nullptr;
    OzRBTreeNode* former = nullptr;
    for (OzRBTreeNode* x = root; x != nil;)
    {
      x = step(x, wanted, match, former);
      x = step(x, wanted, match, former);
      x = step(x, wanted, match, former);
      x = step(x, wanted, match, former);
    }
    // Of several matches the highest one is wanted.
    return former == nullptr ? match : search_with_branches(wanted);
  }
  else
  {
    Node const query(nil, key);
    return rb_find(&query);
  }
}

// Ends on the first match, and never looks at the key of nil.
template <class K, class V>
OzRBTreeNode* OzMap<K, V>::search_with_branches(K wanted) const
{
  for (OzRBTreeNode* x = root; x != nil;)
  {
    K const here = node(x)->key;
    if (here == wanted)
      return x;
    x = child(x, here, wanted);
  }
  return nullptr;
}

template <class K, class V>
V& OzMap<K, V>::operator[](K const& key)
{
  if constexpr (STRICT_ORDER)
  {
    K const wanted = key;
    OzRBTreeNode* above = nil;
    bool on_the_right = false;
    for (OzRBTreeNode* x = root; x != nil;)
    {
      K const here = node(x)->key;
      if (here == wanted)
        return node(x)->value;
      above = x;
      on_the_right = here < wanted;
      x = child(x, here, wanted);
    }

    Node* const added = new Node(nil, wanted);
    insert_below(added, above, on_the_right);
    ++size_;
    return added->value;
  }
  else
  {
    Node const query(nil, key);
    if (OzRBTreeNode* const there = rb_find(&query))
      return node(there)->value;

    Node* const added = new Node(query);
    rb_insert(added);
    ++size_;
    return added->value;
  }
}

template <class K, class V>
V& OzMap<K, V>::at(K const& key)
{
  OzRBTreeNode* const there = search(key);
  OZ_ASSERT(there != nullptr);
  return node(there != nullptr ? there : nil)->value;
}

// The matches at and below `x`, in the order of the tree's listing search: a node before those on its right,
// and these before those on its left. The depth of the recursion is that of the tree.
template <class K, class V>
int OzMap<K, V>::list_equal(OzRBTreeNode* x, OzRBTreeNode* nil, K key, OzList<V>* values)
{
  while (x != nil && node(x)->key != key)
    x = child(x, node(x)->key, key);
  if (x == nil)
    return 0;

  if (values != nullptr)
    values->append(node(x)->value);
  int const on_the_right = list_equal(x->right(), nil, key, values);
  return on_the_right + 1 + list_equal(x->left(), nil, key, values);
}

template <class K, class V>
int OzMap<K, V>::find(K const& key, OzList<V>* values)
{
  if constexpr (STRICT_ORDER)
    return list_equal(root, nil, key, values);
  else
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
}

// Whether the highest node with a key is the only one: any other would lie below it.
template <class K, class V>
bool OzMap<K, V>::is_only_one(OzRBTreeNode* x) const
{
  K const key = node(x)->key;
  if (x->left() != nil && node(x->left()->right_most())->key == key)
    return false;
  return x->right() == nil || node(tree_minimum(x->right()))->key != key;
}

template <class K, class V>
void OzMap<K, V>::remove(K const& key)
{
  // A key of the map itself may be handed in, and would go with its node. The search starts again after
  // each deletion, which may have moved another entry into the node that was found.
  K const wanted = key;
  bool more = true;
  while (more)
  {
    OzRBTreeNode* const there = search(wanted);
    if (there == nullptr)
      return;

    if constexpr (STRICT_ORDER)
    {
      more = !is_only_one(there);
      delete_node(there);
    }
    else
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
  // As tree_successor, which would be a call into the library for each step.
  OzRBTreeNode* const nil = map->nil;
  OzRBTreeNode* x = cursor;
  OzRBTreeNode* y = x->right();
  if (y != nil)
  {
    while (y->left() != nil)
      y = y->left();
    cursor = y;
    return;
  }

  y = x->parent();
  while (y != nil && x == y->right())
  {
    x = y;
    y = y->parent();
  }
  cursor = y;
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
