#ifndef RBT_CHECKER_H
#define RBT_CHECKER_H

#include "ozrbt.h"

#include <cstdint>
#include <string>

/// Reads the colour of any node, which only nodes may.
class ColorReader : public OzRBTreeNode
{
public:
  static std::int32_t of(OzRBTreeNode const* node) { return node->*(&ColorReader::color); }
  static bool is_black(OzRBTreeNode const* node) { return of(node) == BLACK; }
  static bool is_red(OzRBTreeNode const* node) { return of(node) == RED; }
};

/// Checks all that holds for a red-black tree between two operations, without a look at its code.
///
/// `key_of` gives the key of a node. The first thing that is wrong stays in `error`, which is empty if
/// nothing is.
template <class KeyOf>
class RBTChecker
{
public:
  RBTChecker(OzRBTreeNode const* root, OzRBTreeNode const* nil, KeyOf key_of_node)
    : root_(root)
    , nil_(nil)
    , key_of(key_of_node)
  {
    expect(nil->parent() == nil, "nil's parent is not nil");
    expect(nil->left() == nil && nil->right() == nil, "nil has a child");
    expect(nil->right_most() == nil, "nil's right_most is not nil");
    expect(ColorReader::is_black(nil), "nil is not black");
    expect(ColorReader::is_black(root), "the root is not black");
    expect(root == nil || root->parent() == nil, "the root has a parent");
    walk(root);
  }

  std::string const& error() const { return error_; }
  std::uint64_t count() const { return count_; }

private:
  struct Subtree
  {
    int black_height;
    OzRBTreeNode const* greatest; // null if empty
  };

  Subtree walk(OzRBTreeNode const* n)
  {
    if (n == nil_ || !error_.empty())
      return {1, nullptr};

    bool const red = ColorReader::is_red(n);
    expect(red || ColorReader::is_black(n), "a node is neither red nor black");
    expect(!red || (ColorReader::is_black(n->left()) && ColorReader::is_black(n->right())),
           "a red node has a red child");
    expect(n->left() == nil_ || n->left()->parent() == n, "a left child has another parent");
    expect(n->right() == nil_ || n->right()->parent() == n, "a right child has another parent");

    Subtree const left = walk(n->left());
    expect(last == nullptr || !(key_of(n) < key_of(last)), "the keys are not in order");
    last = n;
    ++count_;
    Subtree const right = walk(n->right());
    expect(left.black_height == right.black_height, "the black heights differ");

    // Of equal keys the node's own wins, then that on the left.
    OzRBTreeNode const* greatest = n;
    if (left.greatest != nullptr && key_of(greatest) < key_of(left.greatest))
      greatest = left.greatest;
    if (right.greatest != nullptr && key_of(greatest) < key_of(right.greatest))
      greatest = right.greatest;
    expect(n->right_most() == greatest, "a right_most is not the greatest node of its subtree");
    return {left.black_height + (red ? 0 : 1), greatest};
  }

  void expect(bool holds, char const* otherwise)
  {
    if (!holds && error_.empty())
      error_ = otherwise;
  }

  OzRBTreeNode const* root_;
  OzRBTreeNode const* nil_;
  KeyOf key_of;
  OzRBTreeNode const* last = nullptr;
  std::uint64_t count_ = 0;
  std::string error_;
};

/// The shape of a tree: `(left key-and-colour right)`, with nothing where there is no child.
template <class KeyOf>
std::string rbt_shape(OzRBTreeNode const* n, OzRBTreeNode const* nil, KeyOf key_of)
{
  if (n == nil || n == nullptr)
    return "";
  char const* const color = ColorReader::is_black(n) ? "b" : ColorReader::is_red(n) ? "r" : "?";
  return "(" + rbt_shape(n->left(), nil, key_of) + std::to_string(key_of(n)) + color +
         rbt_shape(n->right(), nil, key_of) + ")";
}

#endif
