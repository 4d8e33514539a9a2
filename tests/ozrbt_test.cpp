#include "ozrbt.h"

#include "ozdebug.h"
#include "rbt_checker.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace
{
/// A node with a number as its key. Each has a serial number, which moves with the key, and a name for the
/// object, which does not.
class NumberNode : public OzRBTreeNode
{
public:
  NumberNode(OzRBTreeNode* nil, int node_key, int node_serial = 0)
    : OzRBTreeNode(nil)
    , key(node_key)
    , serial(node_serial)
  {
  }
  NumberNode(NumberNode const&) = default;
  NumberNode& operator=(NumberNode const&) = default;
  ~NumberNode() override
  {
    if (deleted != nullptr)
      deleted->push_back(key);
  }

  bool greater_equal(OzRBTreeNode const* other) const override { return key >= of(other)->key; }
  bool equal(OzRBTreeNode const* other) const override { return key == of(other)->key; }
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
    key = of(other)->key;
    serial = of(other)->serial;
  }

  bool is_less_than(OzRBTreeNode const* other) const { return less_than(other); }
  void paint_red() { color = RED; }

  static NumberNode const* of(OzRBTreeNode const* node) { return static_cast<NumberNode const*>(node); }

  int key;
  int serial;
  static std::vector<int>* deleted; // told the key of each node that goes, if there is one to tell
};

std::vector<int>* NumberNode::deleted = nullptr;

/// Collects the keys of the nodes that are deleted while it lives.
class DeletionRecorder
{
public:
  DeletionRecorder() { NumberNode::deleted = &keys; }
  ~DeletionRecorder() { NumberNode::deleted = nullptr; }
  DeletionRecorder(DeletionRecorder const&) = delete;
  DeletionRecorder& operator=(DeletionRecorder const&) = delete;

  std::vector<int> keys;
};

int key_of(OzRBTreeNode const* node)
{
  return NumberNode::of(node)->key;
}

/// Matches any of several keys. Between two of them, both sides of a node may hold a match.
class AnyOfNode : public NumberNode
{
public:
  explicit AnyOfNode(std::vector<int> ascending_keys)
    : NumberNode(nullptr, 0)
    , keys(std::move(ascending_keys))
  {
  }

  bool equal(OzRBTreeNode const* other) const override
  {
    return std::find(keys.begin(), keys.end(), key_of(other)) != keys.end();
  }
  bool below_right_most(OzRBTreeNode const* other) const override
  {
    return keys.front() <= key_of(other->right_most());
  }
  bool greater_equal(OzRBTreeNode const* other) const override { return keys.back() >= key_of(other); }

  std::vector<int> keys;
};

/// As AnyOfNode, but tells the tree that nothing above `bound` is looked for.
class BoundedNode : public AnyOfNode
{
public:
  BoundedNode(std::vector<int> ascending_keys, int greatest)
    : AnyOfNode(std::move(ascending_keys))
    , bound(greatest)
  {
  }

  bool greater_equal(OzRBTreeNode const* other) const override { return bound >= key_of(other); }

  int bound;
};

/// Notes what is seen of its children when it is deleted, and how often greatest keys are compared.
class WatchedNode : public NumberNode
{
public:
  WatchedNode(OzRBTreeNode* nil, int node_key)
    : NumberNode(nil, node_key)
  {
  }
  ~WatchedNode() override { children_at_end.assign({left(), right()}); }

  bool right_most_ge(OzRBTreeNode const* other) const override
  {
    ++comparisons;
    return NumberNode::right_most_ge(other);
  }

  static inline std::vector<OzRBTreeNode*> children_at_end;
  static inline int comparisons = 0;
};

class NumberTree : public OzRBTree
{
public:
  NumberTree()
    : NumberTree(new NumberNode(nullptr, -1))
  {
  }
  explicit NumberTree(OzRBTreeNode* nil_node)
    : OzRBTree(nil_node)
  {
  }
  NumberTree(NumberTree const&) = default;
  NumberTree& operator=(NumberTree const&) = default;

  using OzRBTree::insert;
  using OzRBTree::insert_below;
  using OzRBTree::left_rotate;
  using OzRBTree::nil;
  using OzRBTree::rb_delete;
  using OzRBTree::rb_delete_fixup;
  using OzRBTree::rb_find;
  using OzRBTree::rb_insert;
  using OzRBTree::remove_all_elements;
  using OzRBTree::remove_all_elements_aux;
  using OzRBTree::right_rotate;
  using OzRBTree::root;
  using OzRBTree::set_tree_root;
  using OzRBTree::stack;
  using OzRBTree::tree_maximum;
  using OzRBTree::tree_minimum;
  using OzRBTree::tree_nil;
  using OzRBTree::tree_root;
  using OzRBTree::tree_successor;
  using OzRBTree::update_max;

  NumberNode* add(int key, int serial = 0)
  {
    NumberNode* const node = new NumberNode(nil, key, serial);
    rb_insert(node);
    return node;
  }

  NumberNode* hang(int key)
  {
    NumberNode* const node = new NumberNode(nil, key);
    insert(node);
    return node;
  }

  NumberNode* find(int key) const
  {
    NumberNode const query(nil, key);
    return static_cast<NumberNode*>(rb_find(&query));
  }

  std::string shape() const { return rbt_shape(root, nil, key_of); }
  std::string error() const { return RBTChecker(root, nil, key_of).error(); }
};

void add_all(NumberTree& tree, std::vector<int> const& keys)
{
  for (int const key : keys)
    tree.add(key);
}

std::vector<int> keys_in(OzList<void*>& list)
{
  std::vector<int> keys;
  while (list.count() != 0)
    keys.push_back(key_of(static_cast<OzRBTreeNode*>(list.pop_first())));
  return keys;
}

std::vector<int> serials_in_order(NumberTree const& tree)
{
  std::vector<int> serials;
  for (OzRBTreeNode* n = tree.tree_minimum(tree.root); n != tree.nil; n = tree.tree_successor(n))
    serials.push_back(NumberNode::of(n)->serial);
  return serials;
}

TEST(OzRBTreeNode, StartsBlackWithAllLinksToNil)
{
  NumberNode nil(nullptr, 0);
  NumberNode const node(&nil, 1);

  EXPECT_EQ(node.parent(), &nil);
  EXPECT_EQ(node.left(), &nil);
  EXPECT_EQ(node.right(), &nil);
  EXPECT_EQ(node.right_most(), &nil);
  EXPECT_EQ(ColorReader::of(&node), 1);
}

TEST(OzRBTreeNode, CopiesLinksAndColour)
{
  NumberTree tree;
  add_all(tree, {1, 2, 3, 4});
  NumberNode const* const three = tree.find(3);

  NumberNode const copy(*three);
  NumberNode assigned(nullptr, 9);
  assigned.paint_red();
  assigned = *three;

  for (NumberNode const* const node : {&copy, static_cast<NumberNode const*>(&assigned)})
  {
    EXPECT_EQ(node->parent(), tree.find(2));
    EXPECT_EQ(node->left(), tree.nil);
    EXPECT_EQ(node->right(), tree.find(4));
    EXPECT_EQ(node->right_most(), tree.find(4));
    EXPECT_EQ(ColorReader::of(node), 1);
  }
  EXPECT_EQ(ColorReader::of(tree.find(4)), 2);
  EXPECT_EQ(ColorReader::of(std::make_unique<NumberNode>(*tree.find(4)).get()), 2);
}

TEST(OzRBTreeNode, LessThanIsTheNegationOfGreaterEqual)
{
  NumberNode const one(nullptr, 1);
  NumberNode const two(nullptr, 2);

  EXPECT_TRUE(one.is_less_than(&two));
  EXPECT_FALSE(two.is_less_than(&one));
  EXPECT_FALSE(one.is_less_than(&one));
}

/// What lies in memory where a node was: table of virtual functions, links, colour.
struct NodeImage
{
  void* table;
  void* parent;
  void* left;
  void* right;
  void* right_most;
  std::int32_t color;
};

__attribute__((noinline)) void destroy(OzRBTreeNode* node)
{
  node->~OzRBTreeNode();
}

TEST(OzRBTreeNode, ADestroyedOneShowsItsDeadLinksAndTheBogusColour)
{
  alignas(NumberNode) static unsigned char memory[sizeof(NumberNode)];
  NumberNode nil(nullptr, 0);
  NumberNode* const node = new (memory) NumberNode(&nil, 1);
  NodeImage before;
  std::memcpy(&before, memory, sizeof before);

  destroy(node);

  // The memory is read as it is, not as what the language says of an object that has ended.
  unsigned char const volatile* const raw = memory;
  unsigned char bytes[sizeof(NodeImage)];
  std::copy(raw, raw + sizeof bytes, bytes);
  NodeImage after;
  std::memcpy(&after, bytes, sizeof after);
  EXPECT_EQ(before.parent, &nil);
  EXPECT_EQ(before.right_most, &nil);
  EXPECT_EQ(before.color, 1);
  EXPECT_EQ(after.parent, nullptr);
  EXPECT_EQ(after.left, nullptr);
  EXPECT_EQ(after.right, nullptr);
  EXPECT_EQ(after.right_most, nullptr);
  EXPECT_EQ(after.color, 42424242);
  EXPECT_EQ(after.color, Oz_BogusInt());
}

TEST(OzRBTree, TiesItsNilToItselfAndHasItAsItsRoot)
{
  NumberNode elsewhere(nullptr, 0);
  NumberNode* const nil = new NumberNode(&elsewhere, 0);

  NumberTree tree(nil);

  EXPECT_EQ(nil->parent(), nil);
  EXPECT_EQ(nil->left(), nil);
  EXPECT_EQ(nil->right(), nil);
  EXPECT_EQ(nil->right_most(), nil);
  EXPECT_EQ(tree.tree_nil(), nil);
  EXPECT_EQ(tree.tree_root(), nil);
  EXPECT_EQ(tree.error(), "");
}

TEST(OzRBTree, IsNotCopied)
{
  NumberTree filled;
  add_all(filled, {1, 2, 3});
  NumberTree other;
  NumberNode const* const seven = other.add(7);

  NumberTree copy(filled);
  NumberTree& assigned = other = filled;

  EXPECT_EQ(copy.tree_root(), nullptr);
  EXPECT_EQ(copy.tree_nil(), nullptr);
  EXPECT_EQ(&assigned, &other);
  EXPECT_EQ(other.tree_root(), seven);
  EXPECT_EQ(other.shape(), "(7b)");
  EXPECT_EQ(filled.shape(), "((1r)2b(3r))");
}

TEST(OzRBTree, DeletesItsNodesChildrenFirstAndThenNil)
{
  DeletionRecorder const deletions;
  {
    NumberTree tree;
    add_all(tree, {2, 1, 3, 4});
  }
  EXPECT_EQ(deletions.keys, (std::vector<int>{1, 4, 3, 2, -1}));
}

TEST(OzRBTree, RemoveAllElementsLeavesNil)
{
  NumberTree tree;
  add_all(tree, {2, 1, 3});
  OzRBTreeNode* const nil = tree.nil;
  DeletionRecorder const deletions;

  tree.remove_all_elements();

  EXPECT_EQ(deletions.keys, (std::vector<int>{1, 3, 2}));
  EXPECT_EQ(tree.tree_root(), nil);
  EXPECT_EQ(tree.tree_nil(), nil);
  tree.add(5);
  EXPECT_EQ(tree.shape(), "(5b)");
}

TEST(OzRBTree, RemoveAllElementsAuxIgnoresNullAndNil)
{
  NumberTree tree;
  tree.add(1);
  DeletionRecorder const deletions;
  ReportRecorder const recorder;

  tree.remove_all_elements_aux(nullptr);
  tree.remove_all_elements_aux(tree.nil);

  EXPECT_EQ(deletions.keys, std::vector<int>());
  EXPECT_EQ(recorder.units(), reports(0, ""));
  EXPECT_EQ(tree.shape(), "(1b)");
}

TEST(OzRBTree, InsertsWithColoursAndRotations)
{
  struct
  {
    char const* what;
    std::vector<int> keys;
    char const* shape;
  } const cases[] = {
      {"the root is black", {1}, "(1b)"},
      {"children are red", {2, 1, 3}, "((1r)2b(3r))"},
      {"one rotation to the left", {1, 2, 3}, "((1r)2b(3r))"},
      {"one rotation to the right", {3, 2, 1}, "((1r)2b(3r))"},
      {"two rotations, the inner one to the left", {3, 1, 2}, "((1r)2b(3r))"},
      {"two rotations, the inner one to the right", {1, 3, 2}, "((1r)2b(3r))"},
      {"a red uncle on the right turns black", {2, 1, 3, 0}, "(((0r)1b)2b(3b))"},
      {"a red uncle on the left turns black", {2, 1, 3, 4}, "((1b)2b(3b(4r)))"},
      {"ascending", {1, 2, 3, 4, 5, 6, 7}, "((1b)2b((3b)4r((5r)6b(7r))))"},
      {"descending", {7, 6, 5, 4, 3, 2, 1}, "((((1r)2b(3r))4r(5b))6b(7b))"},
      {"the repair moves up by two levels", {1, 2, 3, 4, 5, 6, 7, 8}, "(((1b)2r(3b))4b((5b)6r(7b(8r))))"},
  };
  for (auto const& c : cases)
  {
    NumberTree tree;
    add_all(tree, c.keys);
    EXPECT_EQ(tree.shape(), c.shape) << c.what;
    EXPECT_EQ(tree.error(), "") << c.what;
  }
}

TEST(OzRBTree, PutsANewEqualKeyBehindTheOthers)
{
  NumberTree tree;
  tree.add(5, 1);
  tree.add(3, 2);
  tree.add(5, 3);
  tree.add(7, 4);
  tree.add(5, 5);
  tree.add(3, 6);
  tree.add(5, 7);

  EXPECT_EQ(serials_in_order(tree), (std::vector<int>{2, 6, 1, 3, 5, 7, 4}));
  EXPECT_EQ(tree.error(), "");
}

TEST(OzRBTree, ReportsAndRefusesToInsertNullOrNil)
{
  NumberTree tree;
  add_all(tree, {1, 2, 3});
  {
    ReportRecorder const recorder;
    tree.rb_insert(nullptr);
    EXPECT_EQ(recorder.units(), reports(1, "ozrbt.cpp"));
    tree.rb_insert(tree.nil);
    EXPECT_EQ(recorder.units(), reports(2, "ozrbt.cpp"));
  }
  tree.rb_insert(nullptr);

  EXPECT_EQ(tree.shape(), "((1r)2b(3r))");
  EXPECT_EQ(tree.error(), "");
}

TEST(OzRBTree, InsertionBelowAKnownPlaceLeavesTheRecordsToTheFirstOfEqualKeys)
{
  NumberTree tree;
  tree.add(3, 1);
  NumberNode* const top = tree.add(5, 2);
  NumberNode* const last = tree.add(7, 3);
  ASSERT_EQ(tree.root, top);

  NumberNode* const equal = new NumberNode(tree.nil, 7, 4);
  tree.insert_below(equal, last, true);
  EXPECT_EQ(last->right_most(), last);
  EXPECT_EQ(top->right_most(), last);
  EXPECT_EQ(equal->right_most(), equal);

  NumberNode* const greater = new NumberNode(tree.nil, 8, 5);
  tree.insert_below(greater, equal, true);
  EXPECT_EQ(top->right_most(), greater);
  EXPECT_EQ(tree.error(), "");
}

TEST(OzRBTree, InsertOnlyHangsANodeIntoItsPlace)
{
  NumberTree tree;
  NumberNode const* const one = tree.hang(1);
  NumberNode const* const two = tree.hang(2);
  tree.hang(3);
  NumberNode const* const other_two = tree.hang(2);
  tree.hang(0);

  EXPECT_EQ(tree.shape(), "((0b)1b(2b((2b)3b)))");
  EXPECT_EQ(two->right()->left(), other_two);
  EXPECT_EQ(two->parent(), one);
  EXPECT_EQ(one->parent(), tree.nil);
  EXPECT_EQ(one->right_most(), tree.nil);
}

TEST(OzRBTree, InsertIgnoresNullSilently)
{
  NumberTree tree;
  ReportRecorder const recorder;

  tree.insert(nullptr);

  EXPECT_EQ(recorder.units(), reports(0, ""));
  EXPECT_EQ(tree.tree_root(), tree.nil);
}

TEST(OzRBTree, UpdateMaxRenewsEveryRecordUpToTheRoot)
{
  NumberTree tree;
  NumberNode* const one = tree.hang(1);
  NumberNode* const four = tree.hang(4);
  NumberNode* const two = tree.hang(2);
  NumberNode* const three = tree.hang(3);
  NumberNode* const zero = tree.hang(0);

  tree.update_max(nullptr);
  tree.update_max(tree.nil);
  EXPECT_EQ(one->right_most(), tree.nil);
  EXPECT_EQ(tree.nil->right_most(), tree.nil);

  tree.update_max(zero);
  tree.update_max(three);

  EXPECT_EQ(zero->right_most(), zero);
  EXPECT_EQ(three->right_most(), three);
  EXPECT_EQ(two->right_most(), three);
  EXPECT_EQ(four->right_most(), four);
  EXPECT_EQ(one->right_most(), four);
}

TEST(OzRBTree, UpdateMaxDoesNotStopWhereARecordStaysTheSame)
{
  NumberTree tree;
  NumberNode* const one = tree.hang(1);
  NumberNode* const two = tree.hang(2);
  NumberNode* const three = tree.hang(3);
  tree.update_max(three);
  one->key = 9; // as if the order had another meaning now: the record of the root is out of date

  tree.update_max(three);

  EXPECT_EQ(three->right_most(), three);
  EXPECT_EQ(two->right_most(), three);
  EXPECT_EQ(one->right_most(), one);
}

TEST(OzRBTree, OfEqualKeysTheNodeItselfIsRightMostThenTheLeftOneThenTheRightOne)
{
  NumberTree tree;
  NumberNode* const top = tree.hang(5);
  NumberNode* const right = tree.hang(5);
  NumberNode* const left = tree.hang(4);
  left->key = 5;
  tree.update_max(left);
  tree.update_max(right);
  EXPECT_EQ(top->right_most(), top);

  top->key = 4;
  tree.update_max(top);
  EXPECT_EQ(top->right_most(), left);

  left->key = 4;
  tree.update_max(top);
  EXPECT_EQ(top->right_most(), right);
}

TEST(OzRBTree, ARotationTurnsTwoNodesAndRenewsTheRecordsUpToTheRoot)
{
  NumberTree tree;
  NumberNode const* const nine = tree.hang(9);
  NumberNode* const two = tree.hang(2);
  NumberNode* const four = tree.hang(4);
  NumberNode* const three = tree.hang(3);
  NumberNode* const one = tree.hang(1);
  tree.update_max(three);
  tree.update_max(one);
  EXPECT_EQ(tree.shape(), "(((1b)2b((3b)4b))9b)");

  tree.left_rotate(two);

  EXPECT_EQ(tree.shape(), "((((1b)2b(3b))4b)9b)");
  EXPECT_EQ(three->parent(), two);
  EXPECT_EQ(two->parent(), four);
  EXPECT_EQ(four->parent(), nine);
  EXPECT_EQ(two->right_most(), three);
  EXPECT_EQ(four->right_most(), four);
  EXPECT_EQ(nine->right_most(), nine);

  tree.right_rotate(four);

  EXPECT_EQ(tree.shape(), "(((1b)2b((3b)4b))9b)");
  EXPECT_EQ(three->parent(), four);
  EXPECT_EQ(four->parent(), two);
  EXPECT_EQ(two->parent(), nine);
  EXPECT_EQ(one->parent(), two);
  EXPECT_EQ(two->right_most(), four);
}

TEST(OzRBTree, ARotationAtTheRootSetsTheRootAndLeavesNilAlone)
{
  NumberTree tree;
  NumberNode* const one = tree.hang(1);
  NumberNode* const two = tree.hang(2);

  tree.left_rotate(one);
  EXPECT_EQ(tree.tree_root(), two);
  EXPECT_EQ(two->parent(), tree.nil);
  EXPECT_EQ(one->right(), tree.nil);

  tree.right_rotate(two);
  EXPECT_EQ(tree.tree_root(), one);
  EXPECT_EQ(one->parent(), tree.nil);
  EXPECT_EQ(two->left(), tree.nil);
  EXPECT_EQ(tree.nil->parent(), tree.nil);
}

TEST(OzRBTree, ARotationWithoutTheChildToTurnUpDoesNothing)
{
  NumberTree tree;
  NumberNode* const one = tree.hang(1);
  NumberNode unlinked(nullptr, 5);
  ReportRecorder const recorder;

  tree.left_rotate(nullptr);
  tree.right_rotate(nullptr);
  tree.left_rotate(&unlinked);
  tree.right_rotate(&unlinked);
  tree.left_rotate(one);
  tree.right_rotate(one);

  EXPECT_EQ(recorder.units(), reports(0, ""));
  EXPECT_EQ(tree.shape(), "(1b)");
  EXPECT_EQ(unlinked.right_most(), nullptr);
}

TEST(OzRBTree, DeletingANodeWithTwoChildrenKeepsItsObjectAndDeletesThatOfTheSuccessor)
{
  NumberTree tree;
  add_all(tree, {2, 1, 4, 3, 5});
  NumberNode* const two = tree.find(2);
  NumberNode* const three = tree.find(3);
  EXPECT_EQ(tree.tree_successor(two), three);
  DeletionRecorder const deletions;

  tree.rb_delete(two);

  EXPECT_EQ(deletions.keys, std::vector<int>{3});
  EXPECT_EQ(two->key, 3);
  EXPECT_EQ(tree.find(3), two);
  EXPECT_EQ(tree.find(2), nullptr);
  EXPECT_EQ(tree.shape(), "((1b)3b(4b(5r)))");
  EXPECT_EQ(tree.error(), "");
}

TEST(OzRBTree, ADeletedNodeFindsItselfWithoutChildren)
{
  NumberTree tree;
  WatchedNode* const node = new WatchedNode(tree.nil, 1);
  tree.rb_insert(node);

  tree.rb_delete(node);

  EXPECT_EQ(WatchedNode::children_at_end, (std::vector<OzRBTreeNode*>{nullptr, nullptr}));
}

TEST(OzRBTree, ADeletionRenewsTheRecordsFromTheGapUpAndFromTheNodeThatStays)
{
  NumberTree tree;
  for (int const key : {2, 1, 3})
    tree.rb_insert(new WatchedNode(tree.nil, key));
  WatchedNode::comparisons = 0;

  tree.rb_delete(tree.root); // 3 moves up, so that the gap is below the very node that stays

  EXPECT_EQ(tree.shape(), "((1r)3b)");
  EXPECT_EQ(WatchedNode::comparisons, 2);
}

TEST(OzRBTree, DeletingTheOnlyNodeLeavesNilAsTheRoot)
{
  NumberTree tree;
  NumberNode* const only = tree.add(1);
  DeletionRecorder const deletions;

  tree.rb_delete(only);

  EXPECT_EQ(deletions.keys, std::vector<int>{1});
  EXPECT_EQ(tree.tree_root(), tree.nil);
  EXPECT_EQ(tree.nil->parent(), tree.nil);
  EXPECT_EQ(tree.error(), "");
}

TEST(OzRBTree, RightMostOfTheRootIsSevenAfterOneToSevenWithoutFour)
{
  NumberTree tree;
  add_all(tree, {1, 2, 3, 4, 5, 6, 7});

  tree.rb_delete(tree.find(4));

  EXPECT_EQ(key_of(tree.tree_root()->right_most()), 7);
  EXPECT_EQ(tree.shape(), "((1b)2b((3b)5r(6b(7r))))");
  EXPECT_EQ(tree.error(), "");
}

TEST(OzRBTree, DeletesWithColoursAndRotations)
{
  struct
  {
    char const* what;
    std::vector<int> keys;
    int deleted;
    char const* shape;
  } const cases[] = {
      {"a red leaf", {2, 1, 3}, 1, "(2b(3r))"},
      {"a black node with one red child", {2, 1, 3, 4}, 3, "((1b)2b(4b))"},
      {"the root with one child", {1, 2}, 1, "(2b)"},
      {"a black leaf on the left, far nephew red", {2, 1, 3, 4}, 1, "((2b)3b(4b))"},
      {"a black leaf on the left, near nephew red", {2, 1, 4, 3}, 1, "((2b)3b(4b))"},
      {"a black leaf on the right, far nephew red", {3, 4, 2, 1}, 4, "((1b)2b(3b))"},
      {"a black leaf on the right, near nephew red", {3, 4, 1, 2}, 4, "((1b)2b(3b))"},
      {"a red sibling on the right", {1, 2, 3, 4, 5, 6}, 1, "((2b(3r))4b(5b(6r)))"},
      {"a red sibling on the left", {6, 5, 4, 3, 2, 1}, 6, "(((1r)2b)3b((4r)5b))"},
  };
  for (auto const& c : cases)
  {
    NumberTree tree;
    add_all(tree, c.keys);
    tree.rb_delete(tree.find(c.deleted));
    EXPECT_EQ(tree.shape(), c.shape) << c.what;
    EXPECT_EQ(tree.error(), "") << c.what;
  }
}

TEST(OzRBTree, ReportsAndRefusesToDeleteNullOrNil)
{
  NumberTree tree;
  add_all(tree, {1, 2, 3});
  DeletionRecorder const deletions;
  {
    ReportRecorder const recorder;
    tree.rb_delete(nullptr);
    EXPECT_EQ(recorder.units(), reports(1, "ozrbt.cpp"));
    tree.rb_delete(tree.nil);
    EXPECT_EQ(recorder.units(), reports(2, "ozrbt.cpp"));
  }
  tree.rb_delete(nullptr);

  EXPECT_EQ(deletions.keys, std::vector<int>());
  EXPECT_EQ(tree.shape(), "((1r)2b(3r))");
}

TEST(OzRBTree, ReportsAndRefusesToRepairAtNull)
{
  NumberTree tree;
  add_all(tree, {1, 2, 3});
  {
    ReportRecorder const recorder;
    tree.rb_delete_fixup(nullptr);
    EXPECT_EQ(recorder.units(), reports(1, "ozrbt.cpp"));
  }
  tree.rb_delete_fixup(nullptr);

  EXPECT_EQ(tree.shape(), "((1r)2b(3r))");
}

TEST(OzRBTree, TheRepairTurnsARedNodeBlackAndEndsThere)
{
  NumberTree tree;
  add_all(tree, {1, 2, 3});

  tree.rb_delete_fixup(tree.find(3));

  EXPECT_EQ(tree.shape(), "((1r)2b(3b))");
}

TEST(OzRBTree, FindsTheHighestOfSeveralEqualNodes)
{
  NumberTree tree;
  for (int serial = 0; serial < 7; ++serial)
    tree.add(5, serial);
  tree.add(3);
  tree.add(8);

  NumberNode const* const found = tree.find(5);

  EXPECT_EQ(found, tree.tree_root());
  EXPECT_EQ(tree.find(4), nullptr);
  EXPECT_EQ(tree.find(2), nullptr);
  EXPECT_EQ(tree.find(9), nullptr);
  EXPECT_EQ(key_of(tree.find(3)), 3);
  EXPECT_EQ(key_of(tree.find(8)), 8);
}

TEST(OzRBTree, FindsNothingInAnEmptyTree)
{
  NumberTree tree;
  NumberNode const query(nullptr, 1);
  ReportRecorder const recorder;

  EXPECT_EQ(tree.rb_find(&query), nullptr);
  EXPECT_EQ(tree.rb_find(nullptr), nullptr);
  EXPECT_EQ(tree.rb_find(&query, nullptr, nullptr), 0);
  EXPECT_EQ(tree.rb_find(nullptr, nullptr, nullptr), 0);

  tree.set_tree_root(nullptr);
  EXPECT_EQ(tree.rb_find(&query), nullptr);
  EXPECT_EQ(tree.rb_find(nullptr), nullptr);
  EXPECT_EQ(tree.rb_find(&query, nullptr, nullptr), 0);
  EXPECT_EQ(tree.rb_find(nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzRBTree, ANullQueryFindsTheRootAndListsEveryNodeRightBeforeLeft)
{
  NumberTree tree;
  add_all(tree, {1, 2, 3, 4, 5, 6, 7});
  OzList<void*> list;

  EXPECT_EQ(key_of(tree.rb_find(nullptr)), 2);
  EXPECT_EQ(tree.rb_find(nullptr, &list, nullptr), 7);
  EXPECT_EQ(keys_in(list), (std::vector<int>{2, 4, 6, 7, 5, 3, 1}));
  EXPECT_EQ(tree.rb_find(nullptr, &list, tree.find(4)), 5);
  EXPECT_EQ(keys_in(list), (std::vector<int>{4, 6, 7, 5, 3}));
}

TEST(OzRBTree, CountsAndListsAllEqualNodes)
{
  NumberTree tree;
  NumberNode* const first = tree.add(5);
  NumberNode* const second = tree.add(5);
  tree.add(3);
  tree.add(7);
  NumberNode const query(nullptr, 5);
  OzList<void*> list;

  EXPECT_EQ(tree.rb_find(&query, &list, nullptr), 2);
  EXPECT_EQ(list.count(), 2u);
  EXPECT_EQ(list.pop_first(), first);
  EXPECT_EQ(list.pop_first(), second);
  EXPECT_EQ(tree.rb_find(&query, nullptr, nullptr), 2);
  EXPECT_EQ(tree.rb_find(&query, nullptr, second), 1);
  EXPECT_EQ(tree.rb_find(&query, &list, tree.nil), 0);
  EXPECT_EQ(list.count(), 0u);
}

TEST(OzRBTree, AppendsToAListThatHoldsSomething)
{
  NumberTree tree;
  NumberNode* const node = tree.add(5);
  NumberNode const query(nullptr, 5);
  OzList<void*> list;
  list.append(&tree);

  EXPECT_EQ(tree.rb_find(&query, &list, nullptr), 1);

  EXPECT_EQ(list.pop_first(), &tree);
  EXPECT_EQ(list.pop_first(), node);
}

TEST(OzRBTree, ListsTheSubtreesPutAsideBeforeTheMatchThatEndsTheDescent)
{
  NumberTree tree;
  add_all(tree, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
  ASSERT_EQ(tree.shape(), "(((1b)2b(3b))4b((5b)6b((7b)8r((9r)10b(11r)))))");
  struct
  {
    char const* what;
    std::vector<int> query;
    std::vector<int> listed;
  } const cases[] = {
      {"one on either side of the root", {1, 11}, {11, 1}},
      {"the root alone", {4}, {4}},
      {"the root, then its right, then its left side", {1, 4, 5}, {4, 5, 1}},
      {"a search of what was put aside last goes on with what was put aside before", {1, 3, 9}, {9, 3, 1}},
      {"forks in what was put aside", {1, 5, 7, 9, 11}, {11, 9, 7, 5, 1}},
      {"matches below a match", {2, 3, 6, 10, 11}, {6, 10, 11, 2, 3}},
      {"nothing", {0, 12}, {}},
  };
  for (auto const& c : cases)
  {
    OzList<void*> list;
    AnyOfNode const query(c.query);

    int const count = tree.rb_find(&query, &list, nullptr);

    EXPECT_EQ(count, static_cast<int>(c.listed.size())) << c.what;
    EXPECT_EQ(keys_in(list), c.listed) << c.what;
    EXPECT_EQ(tree.rb_find(&query, nullptr, nullptr), count) << c.what;
    EXPECT_TRUE(tree.stack.is_empty()) << c.what;
  }
}

TEST(OzRBTree, ASubtreeWhoseLeastKeyIsAboveTheQueryIsNotPutAside)
{
  NumberTree tree;
  add_all(tree, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
  ASSERT_EQ(tree.shape(), "(((1b)2b(3b))4b((5b)6b((7b)8r((9r)10b(11r)))))");
  OzList<void*> list;

  BoundedNode const below({1, 5}, 4);
  EXPECT_EQ(tree.rb_find(&below, &list, nullptr), 1);
  EXPECT_EQ(keys_in(list), std::vector<int>{1});

  BoundedNode const at({1, 5}, 5);
  EXPECT_EQ(tree.rb_find(&at, &list, nullptr), 2);
  EXPECT_EQ(keys_in(list), (std::vector<int>{5, 1}));
}

TEST(OzRBTree, MinimumMaximumAndSuccessor)
{
  NumberTree tree;
  EXPECT_EQ(tree.tree_minimum(tree.root), tree.nil);
  EXPECT_EQ(tree.tree_maximum(tree.root), tree.nil);
  add_all(tree, {1, 2, 3, 4, 5, 6, 7});

  EXPECT_EQ(key_of(tree.tree_minimum(tree.root)), 1);
  EXPECT_EQ(key_of(tree.tree_minimum(tree.find(4))), 3);
  EXPECT_EQ(key_of(tree.tree_maximum(tree.root)), 7);
  EXPECT_EQ(key_of(tree.tree_maximum(tree.find(1))), 1);
  for (int key = 1; key < 7; ++key)
    EXPECT_EQ(key_of(tree.tree_successor(tree.find(key))), key + 1);
  EXPECT_EQ(tree.tree_successor(tree.find(7)), tree.nil);
}

TEST(OzRBTree, MinimumOfNullIsNullAndNoReport)
{
  NumberTree const tree;
  ReportRecorder const recorder;

  EXPECT_EQ(tree.tree_minimum(nullptr), nullptr);

  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzRBTree, ReportsNullToMaximumAndSuccessor)
{
  NumberTree const tree;
  {
    ReportRecorder const recorder;
    EXPECT_EQ(tree.tree_maximum(nullptr), nullptr);
    EXPECT_EQ(recorder.units(), reports(1, "ozrbt.cpp"));
    EXPECT_EQ(tree.tree_successor(nullptr), nullptr);
    EXPECT_EQ(recorder.units(), reports(2, "ozrbt.cpp"));
  }
  EXPECT_EQ(tree.tree_maximum(nullptr), nullptr);
  EXPECT_EQ(tree.tree_successor(nullptr), nullptr);
}

/// Has the links that a node of a tree never has.
class LooseNode : public NumberNode
{
public:
  LooseNode(OzRBTreeNode* node_parent, OzRBTreeNode* node_right)
    : NumberNode(nullptr, 0)
  {
    parent_ = node_parent;
    right_ = node_right;
  }
};

TEST(OzRBTree, SuccessorReportsAMissingParent)
{
  NumberTree const tree;
  LooseNode const without_parent(nullptr, tree.nil);
  ReportRecorder const recorder;

  EXPECT_EQ(tree.tree_successor(const_cast<LooseNode*>(&without_parent)), nullptr);

  EXPECT_EQ(recorder.units(), reports(1, "ozrbt.cpp"));
}

TEST(OzRBTree, SuccessorIsNullWhereTheRightLinkIsNull)
{
  NumberTree const tree;
  LooseNode without_right(tree.nil, nullptr);
  ReportRecorder const recorder;

  EXPECT_EQ(tree.tree_successor(&without_right), nullptr);

  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzRBTree, WithoutNilATreeTakesNodesInOrderButIsNotBalanced)
{
  NumberTree const filled;
  NumberTree tree(filled);
  NumberNode const query(nullptr, 3);
  OzList<void*> list;

  EXPECT_EQ(tree.rb_find(&query), nullptr);
  add_all(tree, {1, 2, 3});

  EXPECT_EQ(tree.shape(), "(1b(2r(3r)))");
  EXPECT_EQ(key_of(tree.rb_find(&query)), 3);
  EXPECT_EQ(tree.rb_find(&query, &list, nullptr), 1);
  EXPECT_EQ(keys_in(list), std::vector<int>{3});
  EXPECT_EQ(tree.rb_find(nullptr, nullptr, nullptr), 3);
  EXPECT_EQ(key_of(tree.tree_maximum(tree.root)), 3);
  EXPECT_EQ(key_of(tree.root->right_most()), 3);

  tree.rb_delete(tree.tree_maximum(tree.root));
  EXPECT_EQ(tree.shape(), "(1b(2r))");
}

/// Follows the listing search over the links of a tree, with a stack of its own.
class ListingModel
{
public:
  ListingModel(NumberTree const& searched, AnyOfNode const& what)
    : tree(searched)
    , query(what)
  {
    search(tree.root);
  }

  std::vector<OzRBTreeNode const*> listed;

private:
  void search(OzRBTreeNode const* x)
  {
    while (x != tree.nil && !matches(x))
    {
      bool const may_be_left = x->left() != tree.nil && query.keys.front() <= greatest(x->left());
      bool const may_be_right = x->right() != tree.nil && query.keys.back() >= least(x->right());
      if (may_be_left && may_be_right)
        aside.push_back(x->right());
      x = may_be_left ? x->left() : x->right();
    }
    while (!aside.empty())
    {
      OzRBTreeNode const* const subtree = aside.back();
      aside.pop_back();
      search(subtree);
    }
    if (x == tree.nil)
      return;
    listed.push_back(x);
    search(x->right());
    search(x->left());
  }

  bool matches(OzRBTreeNode const* n) const
  {
    return std::count(query.keys.begin(), query.keys.end(), key_of(n)) != 0;
  }

  int greatest(OzRBTreeNode const* n) const
  {
    return n->right() == tree.nil ? key_of(n) : greatest(n->right());
  }
  int least(OzRBTreeNode const* n) const { return n->left() == tree.nil ? key_of(n) : least(n->left()); }

  NumberTree const& tree;
  AnyOfNode const& query;
  std::vector<OzRBTreeNode const*> aside;
};

std::vector<OzRBTreeNode const*> nodes_in(OzList<void*>& list)
{
  std::vector<OzRBTreeNode const*> nodes;
  while (list.count() != 0)
    nodes.push_back(static_cast<OzRBTreeNode*>(list.pop_first()));
  return nodes;
}

struct Entry
{
  int key;
  int serial;
};

// 24,000 steps over at most 40 keys: insertions behind equal keys, deletions of any node, and searches.
TEST(OzRBTree, AgreesWithASortedListOverARandomWalk)
{
  unsigned const seed = 20260711;
  std::mt19937 random(seed);
  NumberTree tree;
  std::vector<Entry> model;
  auto const key_below = [](int key, Entry const& entry) { return key < entry.key; };

  for (int step = 0; step < 24000; ++step)
  {
    // The tree grows and shrinks in turn, up to a few hundred nodes and down to none.
    bool const growing = step / 600 % 2 == 0;
    bool const adds = model.empty() || static_cast<int>(random() % 100) < (growing ? 75 : 25);
    if (adds)
    {
      int const key = static_cast<int>(random() % 40);
      tree.add(key, step);
      model.insert(std::upper_bound(model.begin(), model.end(), key, key_below), Entry{key, step});
    }
    else
    {
      auto const place = static_cast<std::ptrdiff_t>(random() % model.size());
      OzRBTreeNode* node = tree.tree_minimum(tree.root);
      for (std::ptrdiff_t i = 0; i < place; ++i)
        node = tree.tree_successor(node);
      ASSERT_EQ(NumberNode::of(node)->serial, model[static_cast<std::size_t>(place)].serial);
      tree.rb_delete(node);
      model.erase(model.begin() + place);
    }

    RBTChecker const checker(tree.root, tree.nil, key_of);
    ASSERT_EQ(checker.error(), "") << "seed " << seed << ", step " << step;
    ASSERT_EQ(checker.count(), model.size()) << "seed " << seed << ", step " << step;
    std::vector<int> serials;
    for (Entry const& entry : model)
      serials.push_back(entry.serial);
    ASSERT_EQ(serials_in_order(tree), serials) << "seed " << seed << ", step " << step;

    std::vector<int> wanted;
    for (unsigned long i = random() % 4 + 1; i != 0; --i)
      wanted.push_back(static_cast<int>(random() % 42) - 1);
    std::sort(wanted.begin(), wanted.end());
    AnyOfNode const query(wanted);
    OzList<void*> list;
    int const matches = static_cast<int>(std::count_if(
        model.begin(), model.end(),
        [&](Entry const& entry) { return std::count(wanted.begin(), wanted.end(), entry.key) != 0; }));
    ASSERT_EQ(tree.rb_find(&query, &list, nullptr), matches) << "seed " << seed << ", step " << step;
    ASSERT_EQ(nodes_in(list), ListingModel(tree, query).listed) << "seed " << seed << ", step " << step;
    ASSERT_TRUE(tree.stack.is_empty()) << "seed " << seed << ", step " << step;

    NumberNode const* const found = tree.find(wanted.front());
    bool const there = std::any_of(model.begin(), model.end(),
                                   [&](Entry const& entry) { return entry.key == wanted.front(); });
    ASSERT_EQ(found != nullptr, there) << "seed " << seed << ", step " << step;
    if (found != nullptr)
    {
      ASSERT_EQ(found->key, wanted.front()) << "seed " << seed << ", step " << step;
    }
  }
}
} // namespace
