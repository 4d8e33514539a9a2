#include "ozrbt.h"

#include "ozassert.h"
#include "ozdebug.h"

OzRBTreeNode::OzRBTreeNode(OzRBTreeNode* nil)
  : parent_(nil)
  , left_(nil)
  , right_(nil)
  , right_most_(nil)
  , color(BLACK)
{
}

OzRBTreeNode::~OzRBTreeNode()
{
  // A compiler may leave out what is written into an object that ends here, unless the write is volatile.
  auto const kill_link = [](OzRBTreeNode* volatile& link) { link = nullptr; };
  kill_link(parent_);
  kill_link(left_);
  kill_link(right_);
  kill_link(right_most_);
  std::int32_t volatile& dead_color = color;
  dead_color = Oz_BogusInt();
}

OzRBTree::OzRBTree(OzRBTreeNode* nil_node)
  : root(nil_node)
  , nil(nil_node)
{
  nil->parent_ = nil;
  nil->left_ = nil;
  nil->right_ = nil;
  nil->right_most_ = nil;
}

OzRBTree::OzRBTree(OzRBTree const&)
  : OzRBTree()
{
}

OzRBTree& OzRBTree::operator=(OzRBTree const&)
{
  return *this;
}

OzRBTree::~OzRBTree()
{
  remove_all_elements();
  delete nil;
  root = nullptr;
  nil = nullptr;
}

void OzRBTree::attach(OzRBTreeNode* z, OzRBTreeNode* parent, bool on_the_right)
{
  z->parent_ = parent;
  if (!is_node(parent))
    root = z;
  else if (on_the_right)
    parent->right_ = z;
  else
    parent->left_ = z;
}

void OzRBTree::attach_in_order(OzRBTreeNode* z)
{
  OzRBTreeNode* y = nil;
  bool on_the_right = false;
  for (OzRBTreeNode* x = root; is_node(x); x = on_the_right ? x->right_ : x->left_)
  {
    y = x;
    on_the_right = z->greater_equal(x);
  }
  attach(z, y, on_the_right);
}

void OzRBTree::rb_insert(OzRBTreeNode* z)
{
  OZ_ASSERT(is_node(z));
  if (!is_node(z))
    return;

  attach_in_order(z);
  update_max(z);
  z->color = RED;
  insert_fixup<Records::ALL>(z);
}

void OzRBTree::insert_below(OzRBTreeNode* z, OzRBTreeNode* parent, bool on_the_right)
{
  attach(z, parent, on_the_right);
  z->right_most_ = z;
  record_last(z);
  z->color = RED;
  insert_fixup<Records::CHANGED>(z);
}

void OzRBTree::append_unrecorded(OzRBTreeNode* z, OzRBTreeNode* last)
{
  attach(z, last, true);
  z->color = RED;
  insert_fixup<Records::NONE>(z);
}

void OzRBTree::renew_all(OzRBTreeNode* x)
{
  if (!is_node(x))
    return;

  renew_all(x->left_);
  renew_all(x->right_);
  renew_in_strict_order(x);
}

// Invariant: z is red, and the only violation of the rules is that z's parent may be red too.
template <OzRBTree::Records RECORDS>
void OzRBTree::insert_fixup(OzRBTreeNode* z)
{
  while (z != root && z->parent_->color == RED)
  {
    OzRBTreeNode* const grandparent = z->parent_->parent_;
    bool const parent_is_left = z->parent_ == grandparent->left_;
    OzRBTreeNode* const uncle = parent_is_left ? grandparent->right_ : grandparent->left_;
    // Only a tree that was set up without nil has no uncle at all. It stays unbalanced.
    if (uncle == nullptr)
      break;

    if (uncle->color == RED)
    {
      z->parent_->color = BLACK;
      uncle->color = BLACK;
      grandparent->color = RED;
      z = grandparent;
    }
    else if (parent_is_left)
    {
      if (z == z->parent_->right_)
      {
        z = z->parent_;
        turn_left<RECORDS>(z);
      }
      z->parent_->color = BLACK;
      z->parent_->parent_->color = RED;
      turn_right<RECORDS>(z->parent_->parent_);
    }
    else
    {
      if (z == z->parent_->left_)
      {
        z = z->parent_;
        turn_right<RECORDS>(z);
      }
      z->parent_->color = BLACK;
      z->parent_->parent_->color = RED;
      turn_left<RECORDS>(z->parent_->parent_);
    }
  }
  root->color = BLACK;
}

void OzRBTree::insert(OzRBTreeNode* z)
{
  if (is_node(z))
    attach_in_order(z);
}

void OzRBTree::replace_child(OzRBTreeNode* parent, OzRBTreeNode* child, OzRBTreeNode* replacement)
{
  if (!is_node(parent))
    root = replacement;
  else if (child == parent->left_)
    parent->left_ = replacement;
  else
    parent->right_ = replacement;
}

void OzRBTree::rb_delete(OzRBTreeNode* z)
{
  OZ_ASSERT(is_node(z));
  if (is_node(z))
    remove_node<Records::ALL>(z);
}

void OzRBTree::delete_node(OzRBTreeNode* z)
{
  remove_node<Records::CHANGED>(z);
}

template <OzRBTree::Records RECORDS>
void OzRBTree::remove_node(OzRBTreeNode* z)
{
  OzRBTreeNode* const y = is_node(z->left_) && is_node(z->right_) ? tree_minimum(z->right_) : z;
  OzRBTreeNode* const x = is_node(y->left_) ? y->left_ : y->right_;
  OzRBTreeNode* const parent = y->parent_;

  // Also where x is nil: the repair starts from there and needs a way up.
  if (x != nullptr)
    x->parent_ = parent;
  replace_child(parent, y, x);

  if (y != z)
    z->assign(y);
  if (RECORDS == Records::CHANGED)
  {
    // Before the repair, since its rotations rely on records that are right.
    renew_while_changing(parent);
    if (y != z)
      renew_while_changing(z);
  }
  if (y->color == BLACK)
    delete_fixup<RECORDS>(x);
  if (RECORDS == Records::ALL)
  {
    // The second walk is for the key that z has taken over; its first step is idle if z itself goes.
    update_max(parent);
    update_max(z);
  }

  y->left_ = nullptr;
  y->right_ = nullptr;
  if (nil != nullptr)
    nil->parent_ = nil;
  delete y;
}

void OzRBTree::rb_delete_fixup(OzRBTreeNode* x)
{
  delete_fixup<Records::ALL>(x);
}

// Invariant: all paths through x have one black node too few, and x may be nil, with its parent set.
template <OzRBTree::Records RECORDS>
void OzRBTree::delete_fixup(OzRBTreeNode* x)
{
  OZ_ASSERT(x != nullptr);
  if (x == nullptr)
    return;

  while (x != root && x->color == BLACK)
  {
    OzRBTreeNode* const parent = x->parent_;
    if (x == parent->left_)
    {
      OzRBTreeNode* sibling = parent->right_;
      if (sibling->color == RED)
      {
        sibling->color = BLACK;
        parent->color = RED;
        turn_left<RECORDS>(parent);
        sibling = parent->right_;
      }
      if (sibling->left_->color == BLACK && sibling->right_->color == BLACK)
      {
        sibling->color = RED;
        x = parent;
        continue;
      }
      if (sibling->right_->color == BLACK)
      {
        sibling->left_->color = BLACK;
        sibling->color = RED;
        turn_right<RECORDS>(sibling);
        sibling = parent->right_;
      }
      sibling->color = parent->color;
      parent->color = BLACK;
      sibling->right_->color = BLACK;
      turn_left<RECORDS>(parent);
    }
    else
    {
      OzRBTreeNode* sibling = parent->left_;
      if (sibling->color == RED)
      {
        sibling->color = BLACK;
        parent->color = RED;
        turn_right<RECORDS>(parent);
        sibling = parent->left_;
      }
      if (sibling->right_->color == BLACK && sibling->left_->color == BLACK)
      {
        sibling->color = RED;
        x = parent;
        continue;
      }
      if (sibling->left_->color == BLACK)
      {
        sibling->right_->color = BLACK;
        sibling->color = RED;
        turn_left<RECORDS>(sibling);
        sibling = parent->left_;
      }
      sibling->color = parent->color;
      parent->color = BLACK;
      sibling->left_->color = BLACK;
      turn_right<RECORDS>(parent);
    }
    x = root;
  }
  x->color = BLACK;
}

OzRBTreeNode* OzRBTree::rb_find(OzRBTreeNode const* query) const
{
  if (query == nullptr)
    return is_node(root) ? root : nullptr;

  OzRBTreeNode* x = root;
  while (is_node(x) && !query->equal(x))
    x = is_node(x->left_) && query->below_right_most(x->left_) ? x->left_ : x->right_;
  return is_node(x) ? x : nullptr;
}

// Goes down from `x` to the first match, or to an end. Subtrees on the right that may hold matches too are
// put aside on the stack.
OzRBTreeNode* OzRBTree::find_all_step(OzRBTreeNode const* query, OzRBTreeNode* x) const
{
  while (is_node(x) && !query->equal(x))
  {
    if (is_node(x->left_) && query->below_right_most(x->left_))
    {
      if (is_node(x->right_) && query->greater_equal(tree_minimum(x->right_)))
        stack.push(x->right_);
      x = x->left_;
    }
    else
      x = x->right_;
  }
  return x;
}

int OzRBTree::rb_find(OzRBTreeNode const* query, OzList<void*>* list, OzRBTreeNode* start) const
{
  OzRBTreeNode* x = start != nullptr ? start : root;
  if (query != nullptr)
    x = find_all_step(query, x);

  // The searches called from here take from the same stack: the first one empties it.
  int count = 0;
  while (!stack.is_empty())
    count += rb_find(query, list, static_cast<OzRBTreeNode*>(stack.pop()));
  if (!is_node(x))
    return count;

  if (list != nullptr)
    list->append(x);
  int const on_the_right = is_node(x->right_) ? rb_find(query, list, x->right_) : 0;
  int const on_the_left = is_node(x->left_) ? rb_find(query, list, x->left_) : 0;
  return on_the_left + 1 + count + on_the_right;
}

OzRBTreeNode* OzRBTree::tree_minimum(OzRBTreeNode* x) const
{
  if (x == nullptr)
    return nullptr;

  while (is_node(x->left_))
    x = x->left_;
  return x;
}

OzRBTreeNode* OzRBTree::tree_maximum(OzRBTreeNode* x) const
{
  OZ_ASSERT(x != nullptr);
  if (x == nullptr)
    return nullptr;

  while (is_node(x->right_))
    x = x->right_;
  return x;
}

OzRBTreeNode* OzRBTree::tree_successor(OzRBTreeNode* x) const
{
  OZ_ASSERT(x != nullptr);
  if (x == nullptr)
    return nullptr;
  if (x->right_ != nil)
    return tree_minimum(x->right_);

  OzRBTreeNode* y = x->parent_;
  OZ_ASSERT(y != nullptr);
  while (is_node(y) && x == y->right_)
  {
    x = y;
    y = y->parent_;
  }
  return y;
}

void OzRBTree::left_rotate(OzRBTreeNode* x)
{
  if (x != nullptr && is_node(x->right_))
    turn_left<Records::ALL>(x);
}

void OzRBTree::right_rotate(OzRBTreeNode* x)
{
  if (x != nullptr && is_node(x->left_))
    turn_right<Records::ALL>(x);
}

template <OzRBTree::Records RECORDS>
void OzRBTree::turn_left(OzRBTreeNode* x)
{
  OzRBTreeNode* const y = x->right_;
  x->right_ = y->left_;
  // nil keeps its parent: while a deletion is repaired, that is the way up from the gap.
  if (is_node(y->left_))
    y->left_->parent_ = x;
  y->parent_ = x->parent_;
  replace_child(x->parent_, x, y);
  y->left_ = x;
  x->parent_ = y;
  renew_turned<RECORDS>(x, y, x);
}

template <OzRBTree::Records RECORDS>
void OzRBTree::turn_right(OzRBTreeNode* x)
{
  OzRBTreeNode* const y = x->left_;
  x->left_ = y->right_;
  if (is_node(y->right_))
    y->right_->parent_ = x;
  y->parent_ = x->parent_;
  replace_child(x->parent_, x, y);
  y->right_ = x;
  x->parent_ = y;
  renew_turned<RECORDS>(x, y, y);
}

// After `upper` has been turned up into the place of `lower`, by which `other_right` has got another child on
// the right.
template <OzRBTree::Records RECORDS>
void OzRBTree::renew_turned(OzRBTreeNode* lower, OzRBTreeNode* upper, OzRBTreeNode* other_right)
{
  if (RECORDS == Records::ALL)
  {
    update_max(lower);
    update_max(upper);
  }
  if (RECORDS == Records::CHANGED)
  {
    // The place stands for the same nodes as before. Only of equal keys another one may come first now.
    OzRBTreeNode* const before = lower->right_most_;
    renew_in_strict_order(other_right);
    if (upper->right_most_ != before)
      renew_while_changing(upper->parent_);
  }
}

void OzRBTree::renew_right_most(OzRBTreeNode* n)
{
  n->right_most_ = n;
  if (is_node(n->left_) && !n->right_most_ge(n->left_))
    n->right_most_ = n->left_->right_most_;
  if (is_node(n->right_) && !n->right_most_ge(n->right_))
    n->right_most_ = n->right_->right_most_;
}

// Nothing on the left is greater than `n`, and of equal keys that of `n` comes first. So the record follows
// from the node on the right alone. If that one has a greater node below it, it is greater than `n` too:
// then no key is looked at, which would often not be in the cache.
void OzRBTree::renew_in_strict_order(OzRBTreeNode* n)
{
  OzRBTreeNode* const right = n->right_;
  n->right_most_ = n;
  if (right != nil && (right->right_most_ != right || !n->right_most_ge(right)))
    n->right_most_ = right->right_most_;
}

// `z` has become a child where there was none. On the left it changes no record. On the right it is the last
// node of each subtree up to the first that is a left one, and so the greatest, unless all from the top of the
// subtree on are equal to it.
void OzRBTree::record_last(OzRBTreeNode* z)
{
  OzRBTreeNode* n = z;
  for (OzRBTreeNode* above = n->parent_; is_node(above) && n == above->right_; above = n->parent_)
  {
    if (above->right_most_ == above && above->right_most_ge(z))
      return;
    above->right_most_ = z;
    n = above;
  }
}

// Goes up from `n` as long as a record changes. Further up every record follows from what it followed from
// before.
void OzRBTree::renew_while_changing(OzRBTreeNode* n)
{
  for (; is_node(n); n = n->parent_)
  {
    OzRBTreeNode* const before = n->right_most_;
    renew_in_strict_order(n);
    if (n->right_most_ == before)
      return;
  }
}

void OzRBTree::update_max(OzRBTreeNode* x)
{
  for (OzRBTreeNode* n = x; is_node(n); n = n->parent_)
    renew_right_most(n);
}

void OzRBTree::remove_all_elements()
{
  remove_all_elements_aux(root);
  root = nil;
}

void OzRBTree::remove_all_elements_aux(OzRBTreeNode* x)
{
  if (!is_node(x))
    return;

  remove_all_elements_aux(x->left_);
  remove_all_elements_aux(x->right_);
  delete x;
}
