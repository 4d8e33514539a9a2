#include "ozmap.h"

#include "literal_map.h"
#include "ozdebug.h"
#include "ozstring.h"
#include "rbt_checker.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
/// Reads what the node of a map holds, which only nodes may.
template <class K, class V>
class NodeReader : public OzMapNode<K, V>
{
public:
  static K const& key_of(OzRBTreeNode const* n) { return node(n)->*(&NodeReader::key); }
  static V const& value_of(OzRBTreeNode const* n) { return node(n)->*(&NodeReader::value); }

private:
  static OzMapNode<K, V> const* node(OzRBTreeNode const* n) { return static_cast<OzMapNode<K, V> const*>(n); }
};

/// A map that shows its tree, and enters a key again when told to.
template <class K, class V>
class OpenMap : public OzMap<K, V>
{
public:
  typedef OzMapNode<K, V> Node;
  typedef NodeReader<K, V> Reader;

  using OzMap<K, V>::found;
  using OzMap<K, V>::nil;
  using OzMap<K, V>::root;
  using OzMap<K, V>::stack;

  void insert_again(K const& key, V const& value)
  {
    this->rb_insert(new Node(nil, key, value));
    ++this->size_;
  }

  OzRBTreeNode* node_of(K const& key) const
  {
    Node const query(nil, key);
    return this->rb_find(&query);
  }

  std::string shape() const { return rbt_shape(root, nil, Reader::key_of); }

  /// What is wrong with the tree, the number of entries or the scratch lists; empty if nothing is.
  std::string error() const
  {
    RBTChecker const checker(root, nil, Reader::key_of);
    if (checker.error().empty() && checker.count() != this->size())
      return "the size is not the number of nodes";
    if (checker.error().empty() && (found.count() != 0 || !stack.is_empty()))
      return "a scratch list is not empty";
    return checker.error();
  }
};

template <class K, class V>
std::vector<K> keys_of(OzMap<K, V> const& map)
{
  std::vector<K> keys;
  OzMapKeyIterator<K, V> i(&map);
  for (i.reset(); !i.done(); i.next())
    keys.push_back(i.current());
  return keys;
}

template <class K, class V>
std::vector<std::pair<K, V>> entries_of(OzMap<K, V> const& map)
{
  std::vector<std::pair<K, V>> entries;
  OzMapIterator<K, V> i(&map);
  for (i.reset(); !i.done(); i.next())
    entries.emplace_back(i.key(), i.current());
  return entries;
}

template <class T>
std::vector<T> values_in(OzList<T>& list)
{
  std::vector<T> values;
  while (list.count() != 0)
    values.push_back(list.pop_first());
  return values;
}

typedef std::vector<std::pair<int, int>> Entries;

TEST(OzMapNode, ComparesKeysAndTheKeysOfRightMostNodes)
{
  OpenMap<int, int> map;
  for (int const key : {2, 1, 3})
    map[key];
  OzRBTreeNode const* const one = map.node_of(1);
  OzRBTreeNode const* const two = map.node_of(2);
  OzMapNode<int, int> const other_two(map.nil, 2);
  OzMapNode<int, int> const three(map.nil, 3);
  OzMapNode<int, int> const four(map.nil, 4);

  EXPECT_TRUE(two->greater_equal(one));
  EXPECT_TRUE(two->greater_equal(&other_two));
  EXPECT_FALSE(one->greater_equal(two));
  EXPECT_TRUE(two->equal(&other_two));
  EXPECT_FALSE(two->equal(one));
  EXPECT_FALSE(one->equal(two));
  EXPECT_TRUE(two->right_most_ge(one));
  EXPECT_TRUE(two->right_most_ge(map.node_of(3)));
  EXPECT_FALSE(one->right_most_ge(two));
  EXPECT_TRUE(three.below_right_most(two));
  EXPECT_TRUE(other_two.below_right_most(two));
  EXPECT_FALSE(four.below_right_most(two));
}

TEST(OzMapNode, AssignCopiesValueAndKeyAndLeavesTheLinks)
{
  OpenMap<int, int> map;
  for (int const key : {2, 1, 3})
    map[key] = key * 10;
  OzRBTreeNode* const two = map.node_of(2);
  OzRBTreeNode* const one = map.node_of(1);
  OzRBTreeNode* const three = map.node_of(3);

  one->assign(three);

  EXPECT_EQ((NodeReader<int, int>::key_of(one)), 3);
  EXPECT_EQ((NodeReader<int, int>::value_of(one)), 30);
  EXPECT_EQ(one->parent(), two);
  EXPECT_EQ(one->left(), map.nil);
  EXPECT_EQ(one->right(), map.nil);
  EXPECT_EQ(one->right_most(), one);
}

__attribute__((noinline)) void destroy(OzRBTreeNode* node)
{
  node->~OzRBTreeNode();
}

TEST(OzMapNode, ADestroyedOneShowsItsDeadLinksAndTheBogusColour)
{
  typedef OzMapNode<int, int> Node;
  alignas(Node) static unsigned char memory[sizeof(Node)];
  Node nil(nullptr);
  Node* const node = new (memory) Node(&nil, 7, 70);

  destroy(node);

  struct Image
  {
    void* table;
    void* links[4];
    std::int32_t color;
  };
  // The memory is read as it is, not as what the language says of an object that has ended.
  unsigned char const volatile* const raw = memory;
  unsigned char bytes[sizeof(Image)];
  std::copy(raw, raw + sizeof bytes, bytes);
  Image after;
  std::memcpy(&after, bytes, sizeof after);
  for (void* const link : after.links)
    EXPECT_EQ(link, nullptr);
  EXPECT_EQ(after.color, 42424242);
}

TEST(OzMap, StartsEmptyWithANilOfItsOwnThatHoldsADefaultValue)
{
  OpenMap<int, int> const map;
  OpenMap<int, int> const other;

  EXPECT_EQ(map.size(), 0u);
  EXPECT_EQ(map.root, map.nil);
  EXPECT_NE(map.nil, other.nil);
  EXPECT_NE((dynamic_cast<OzMapNode<int, int> const*>(map.nil)), nullptr);
  EXPECT_EQ((NodeReader<int, int>::value_of(map.nil)), 0);
  EXPECT_EQ(map.error(), "");
}

TEST(OzMap, IndexingAMissingKeyEntersItOnceWithADefaultValue)
{
  OpenMap<int, short> map;

  short& value = map[5];

  EXPECT_EQ(value, 0);
  EXPECT_EQ(map.size(), 1u);
  EXPECT_EQ(&map[5], &value);
  EXPECT_EQ(map.size(), 1u);
  value = 7;
  EXPECT_EQ(map[5], 7);
  EXPECT_EQ(map.at(5), 7);
  EXPECT_EQ(map.error(), "");
}

TEST(OzMap, AtGivesTheValueOfAKey)
{
  OzMap<int, int> map;
  map[1] = 10;
  map[2] = 20;
  map[3] = 30;
  ReportRecorder const recorder;

  map.at(2) = 21;

  EXPECT_EQ(map.at(1), 10);
  EXPECT_EQ(map.at(2), 21);
  EXPECT_EQ(map.at(3), 30);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzMap, AtReportsAMissingKeyAndGivesASpareValue)
{
  OpenMap<int, int> map;
  {
    ReportRecorder const recorder;
    EXPECT_EQ(map.at(5), 0);
    EXPECT_EQ(recorder.units(), reports(1, "ozmap_t.h"));

    map[4] = 40;
    map[6] = 60;
    EXPECT_EQ(map.at(5), 0);
    EXPECT_EQ(recorder.units(), reports(2, "ozmap_t.h"));
  }
  EXPECT_EQ(map.at(5), 0);
  EXPECT_EQ(&map.at(5), &map.at(99));
  EXPECT_EQ(&map.at(5), &(NodeReader<int, int>::value_of(map.nil)));
  EXPECT_EQ(map.size(), 2u);
  EXPECT_EQ(map.error(), "");
}

// The spare entry has that key, and no search may take it for one of the map's.
TEST(OzMap, TheDefaultKeyIsMissingUntilItIsEntered)
{
  OzMap<int, int> map;
  for (int key = -20; key <= 20; ++key)
  {
    if (key != 0)
      map[key] = key;
  }
  map.remove(0);
  EXPECT_EQ(map.size(), 40u);
  {
    ReportRecorder const recorder;
    EXPECT_EQ(map.at(0), 0);
    EXPECT_EQ(recorder.units(), reports(1, "ozmap_t.h"));
  }

  map[0] = 7;
  ReportRecorder const recorder;
  EXPECT_EQ(map.at(0), 7);
  EXPECT_EQ(map.at(-20), -20);
  EXPECT_EQ(map.at(20), 20);
  map.remove(0);
  EXPECT_EQ(map.size(), 40u);
  EXPECT_EQ(recorder.units(), reports(0, "ozmap_t.h"));
}

TEST(OzMap, TheSpareValueKeepsWhatIsWrittenAndIsNotCopied)
{
  OpenMap<int, int> map;
  map[1] = 10;
  map.at(5) = 55;

  OpenMap<int, int> copy(map);
  EXPECT_EQ(copy.at(5), 0);
  EXPECT_EQ(map.at(6), 55);
  map.clear();
  EXPECT_EQ(map.at(6), 55);
  map = copy;
  EXPECT_EQ(map.at(6), 55);
  EXPECT_EQ(map[6], 0) << "a new entry has a default value all the same";
}

TEST(OzMap, FindCountsAKeyAndAppendsItsValue)
{
  OpenMap<int, int> map;
  for (int const key : {4, 2, 6, 1, 3, 5, 7})
    map[key] = key * 10;
  OzList<int> values;
  values.append(-1);

  EXPECT_EQ(map.find(3, &values), 1);
  EXPECT_EQ(map.find(8, &values), 0);
  EXPECT_EQ(map.find(0, &values), 0);
  EXPECT_EQ(map.find(4, &values), 1);
  EXPECT_EQ(map.find(4, nullptr), 1);

  EXPECT_EQ(values.count(), 3u);
  EXPECT_EQ(values_in(values), (std::vector<int>{-1, 30, 40}));
  EXPECT_EQ(map.error(), "");
}

TEST(OzMap, FindOfAMissingKeyIsNoneAndNoReport)
{
  OpenMap<int, int> map;
  ReportRecorder const recorder;

  EXPECT_EQ(map.find(1, nullptr), 0);
  map[2];
  EXPECT_EQ(map.find(1, nullptr), 0);
  EXPECT_EQ(map.find(3, nullptr), 0);

  EXPECT_EQ(recorder.units(), reports(0, ""));
  EXPECT_EQ(map.found.count(), 0u);
  EXPECT_EQ(map.size(), 1u);
}

TEST(OzMap, FindAppendsToAListWhoseCursorStandsSomewhere)
{
  OzMap<int, int> map;
  map[1] = 10;
  OzList<int> values;
  values.append(7);
  values.append(8);
  EXPECT_EQ(values[1], 8);

  map.find(1, &values);

  EXPECT_EQ(values[2], 10);
  EXPECT_EQ(values[0], 7);
}

TEST(OzMap, EqualKeysAreAllFoundAndAllRemoved)
{
  OpenMap<int, int> map;
  map[5] = 50;
  map[3] = 30;
  map[8] = 80;
  map.insert_again(5, 51);
  map.insert_again(5, 52);
  OzList<int> values;
  EXPECT_EQ(map.shape(), "((3b)5b((5r)5b(8r)))");

  EXPECT_EQ(map[5], 50);
  EXPECT_EQ(map.size(), 5u);
  EXPECT_EQ(map.find(5, nullptr), 3);
  EXPECT_EQ(map.find(5, &values), 3);
  EXPECT_EQ(values_in(values), (std::vector<int>{50, 52, 51}));
  map.remove(5);

  EXPECT_EQ(entries_of(map), (Entries{{3, 30}, {8, 80}}));
  EXPECT_EQ(map.size(), 2u);
  EXPECT_EQ(map.find(5, nullptr), 0);
  EXPECT_EQ(map.error(), "");
}

TEST(OzMap, RemoveTakesAKeyAwayAndNothingElse)
{
  OpenMap<int, int> map;
  for (int const key : {1, 2, 3, 4, 5, 6, 7})
    map[key] = key * 10;

  map.remove(4);
  map.remove(4);
  map.remove(9);
  map.remove(0);
  map.remove(1);

  EXPECT_EQ(entries_of(map), (Entries{{2, 20}, {3, 30}, {5, 50}, {6, 60}, {7, 70}}));
  EXPECT_EQ(map.size(), 5u);
  EXPECT_EQ(map.error(), "");
}

TEST(OzMap, RemoveAllowsAKeyOfTheMapItself)
{
  OpenMap<int, int> map;
  for (int key = 0; key < 20; ++key)
    map[key] = key;

  while (map.size() != 0)
  {
    OzMapIterator<int, int> i(&map);
    map.remove(i.key());
    ASSERT_EQ(map.error(), "");
  }

  EXPECT_EQ(map.root, map.nil);
  EXPECT_EQ(map.nil->parent(), map.nil);

  // A node with two children stays and takes over the next key, which isn't asked to go.
  OzMap<double, int> halves;
  for (int i = 0; i < 20; ++i)
    halves[i / 2.0] = i;
  for (std::uint64_t left = 20; left != 0; --left)
  {
    ASSERT_EQ(halves.size(), left);
    OzMapIterator<double, int> i(&halves);
    for (std::uint64_t steps = left / 2; steps != 0; --steps)
      i.next();
    halves.remove(i.key());
  }
  EXPECT_EQ(halves.size(), 0u);
}

TEST(OzMap, RemovingAKeyWithTwoChildrenMovesTheNextEntryIntoItsNode)
{
  OzMap<int, int> map;
  for (int const key : {2, 1, 3})
    map[key] = key * 10;
  int const& two = map[2];

  map.remove(2);

  EXPECT_EQ(two, 30);
  EXPECT_EQ(&map[3], &two);
}

TEST(OzMap, RightMostOfTheRootIsSevenAfterOneToSevenWithoutFour)
{
  OpenMap<int, int> map;
  for (int const key : {1, 2, 3, 4, 5, 6, 7})
    map[key];

  map.remove(4);

  EXPECT_EQ((NodeReader<int, int>::key_of(map.root->right_most())), 7);
  EXPECT_EQ(map.shape(), "((1b)2b((3b)5r(6b(7r))))");
}

TEST(OzMap, ClearRemovesEverything)
{
  OpenMap<int, int> map;
  map[1];
  map[2];

  map.clear();

  EXPECT_EQ(map.size(), 0u);
  EXPECT_EQ(map.root, map.nil);
  EXPECT_EQ(map.error(), "");
  map[3] = 30;
  EXPECT_EQ(entries_of(map), (Entries{{3, 30}}));
}

TEST(OzMap, ACopyIsItsOwnAndBuiltAnewInTheOrderOfTheKeys)
{
  OpenMap<int, int> map;
  for (int const key : {4, 2, 6, 1, 3, 5, 7})
    map[key] = key * 10;
  ASSERT_EQ(map.shape(), "(((1r)2b(3r))4b((5r)6b(7r)))");

  OpenMap<int, int> copy(map);
  map[1] = -1;
  map.remove(7);

  EXPECT_EQ(copy.shape(), "((1b)2b((3b)4r((5r)6b(7r))))");
  EXPECT_EQ(copy.size(), 7u);
  EXPECT_EQ(entries_of(copy), (Entries{{1, 10}, {2, 20}, {3, 30}, {4, 40}, {5, 50}, {6, 60}, {7, 70}}));
  EXPECT_EQ(copy.error(), "");
  EXPECT_NE(copy.nil, map.nil);
}

TEST(OzMap, ACopyHasTheShapeOfInsertionInAscendingOrderWhateverItsSize)
{
  for (int size = 0; size < 70; ++size)
  {
    OpenMap<int, int> ascending;
    OpenMap<int, int> descending;
    for (int key = 0; key < size; ++key)
    {
      ascending[key];
      descending[size - 1 - key];
    }

    OpenMap<int, int> const copy(descending);

    EXPECT_EQ(copy.shape(), ascending.shape()) << size;
    EXPECT_EQ(copy.error(), "") << size;
  }
}

TEST(OzMap, AssignmentReplacesTheContents)
{
  OpenMap<int, int> from;
  from[1] = 10;
  from[2] = 20;
  OpenMap<int, int> map;
  map[2] = 0;
  map[9] = 90;

  OzMap<int, int>& result = map = from;

  EXPECT_EQ(&result, &map);
  EXPECT_EQ(entries_of(map), (Entries{{1, 10}, {2, 20}}));
  EXPECT_EQ(map.size(), 2u);
  EXPECT_EQ(map.error(), "");
  map = OpenMap<int, int>();
  EXPECT_EQ(map.size(), 0u);
  EXPECT_EQ(map.root, map.nil);
}

TEST(OzMap, AssignmentToItselfDoesNothing)
{
  OpenMap<int, int> map;
  for (int const key : {4, 2, 6, 1, 3, 5, 7})
    map[key] = key;
  int const& four = map[4];
  OpenMap<int, int> const& same = map;

  map = same;

  EXPECT_EQ(map.shape(), "(((1r)2b(3r))4b((5r)6b(7r)))");
  EXPECT_EQ(&map[4], &four);
}

TEST(OzMap, ACopyKeepsTheOrderOfEqualKeys)
{
  OpenMap<int, int> map;
  map.insert_again(5, 1);
  map.insert_again(5, 2);
  map.insert_again(4, 0);
  map.insert_again(5, 3);

  OpenMap<int, int> copy;
  copy = map;

  EXPECT_EQ(entries_of(copy), (Entries{{4, 0}, {5, 1}, {5, 2}, {5, 3}}));
  EXPECT_EQ(copy.size(), 4u);
  EXPECT_EQ(copy.error(), "");
}

TEST(OzMap, AMapOfMapsCopiesTheInnerOnes)
{
  OzString const outer_a("a");
  OzString const outer_b("b");
  typedef OzMap<int, short> Inner;
  OzMap<OzString const*, Inner> map;
  map[&outer_a][1] = 11;
  map[&outer_a][2] = 12;
  map[&outer_b][1] = 21;

  OzMap<OzString const*, Inner> copy(map);
  OzMap<OzString const*, Inner> assigned;
  assigned[&outer_a][9] = 99;
  assigned = map;
  map[&outer_a][1] = 0;
  map[&outer_b].clear();

  for (auto* const kept : {&copy, &assigned})
  {
    EXPECT_EQ(kept->size(), 2u);
    EXPECT_EQ(entries_of(kept->at(&outer_a)), (std::vector<std::pair<int, short>>{{1, 11}, {2, 12}}));
    EXPECT_EQ(entries_of(kept->at(&outer_b)), (std::vector<std::pair<int, short>>{{1, 21}}));
  }
}

TEST(OzMap, RemovingFromAMapOfMapsMovesTheInnerOnes)
{
  OzMap<int, OzMap<int, int>> map;
  for (int outer = 0; outer < 16; ++outer)
    for (int inner = 0; inner <= outer; ++inner)
      map[outer][inner] = outer * 100 + inner;

  for (int outer = 0; outer < 16; outer += 2)
    map.remove(outer);

  EXPECT_EQ(keys_of(map), (std::vector<int>{1, 3, 5, 7, 9, 11, 13, 15}));
  for (int outer = 1; outer < 16; outer += 2)
  {
    EXPECT_EQ(map.at(outer).size(), static_cast<std::uint64_t>(outer) + 1);
    EXPECT_EQ(map.at(outer).at(outer), outer * 101);
  }
}

TEST(OzMap, PointerKeysAreOrderedByAddressAndAreNotLookedInto)
{
  OzString const texts[] = {OzString("b"), OzString("c"), OzString("a")};
  OzString const other_a("a");
  OzMap<OzString const*, int> map;
  map[&texts[2]] = 2;
  map[&texts[0]] = 0;
  map[&texts[1]] = 1;

  EXPECT_EQ(keys_of(map), (std::vector<OzString const*>{&texts[0], &texts[1], &texts[2]}));
  EXPECT_EQ(map.at(&texts[2]), 2);
  EXPECT_EQ(map.find(&other_a, nullptr), 0);
  EXPECT_EQ(map.find(nullptr, nullptr), 0);
}

template <class Number>
class OzMapOfNumbers : public testing::Test
{
};

typedef testing::Types<bool, signed char, unsigned char, short, unsigned, long, unsigned long, float> Numbers;
TYPED_TEST_SUITE(OzMapOfNumbers, Numbers, );

TYPED_TEST(OzMapOfNumbers, AreOrderedByTheirTypeFromTheLeastToTheGreatest)
{
  typedef std::numeric_limits<TypeParam> Limits;
  TypeParam const least = Limits::lowest();
  TypeParam const greatest = Limits::max();
  OzMap<TypeParam, int> map;
  map[greatest] = 3;
  map[static_cast<TypeParam>(1)] = std::is_same<TypeParam, bool>::value ? 3 : 2;
  map[static_cast<TypeParam>(0)] = std::is_signed<TypeParam>::value ? 1 : 0;
  map[least] = 0;

  std::vector<int> values;
  OzMapIterator<TypeParam, int> i(&map);
  for (i.reset(); !i.done(); i.next())
    values.push_back(i.current());
  std::vector<int> expected = {0, 1, 2, 3};
  if (!std::is_signed<TypeParam>::value)
    expected = {0, 2, 3};
  if (std::is_same<TypeParam, bool>::value)
    expected = {0, 3};
  EXPECT_EQ(values, expected);
  EXPECT_EQ(map.at(least), 0);
  EXPECT_EQ(map.at(greatest), 3);
  map.remove(greatest);
  EXPECT_EQ(map.find(greatest, nullptr), 0);
  EXPECT_EQ(map.find(least, nullptr), 1);
}

/// A key that can be compared in the two ways that a map needs, and in no other.
struct Name
{
  std::string text;
  bool operator>=(Name const& other) const { return text >= other.text; }
  bool operator<=(Name const& other) const { return text <= other.text; }
};

TEST(OzMap, TakesKeysOfAClass)
{
  OzMap<Name, std::string> map;
  for (char const* const text : {"one", "two", "three", "four", "five", "six", "seven"})
    map[Name{text}] = std::string("the ") + text;
  map.remove(Name{"four"});
  map.remove(Name{"eight"});
  OzMap<Name, std::string> copy(map);
  OzList<std::string> values;

  EXPECT_EQ(copy.size(), 6u);
  EXPECT_EQ(copy.at(Name{"seven"}), "the seven");
  EXPECT_EQ(copy.find(Name{"six"}, &values), 1);
  EXPECT_EQ(copy.find(Name{"four"}, &values), 0);
  EXPECT_EQ(values_in(values), std::vector<std::string>{"the six"});
  std::string text;
  OzMapIterator<Name, std::string> i(&copy);
  for (i.reset(); !i.done(); i.next())
    text += i.key().text + " ";
  EXPECT_EQ(text, "five one seven six three two ");
}

TEST(OzMap, AKeyThatIsNoNumberIsNeverFoundAgain)
{
  double const nan = std::nan("");
  OzMap<double, int> map;
  map[nan] = 1;
  map[nan] = 2;
  map[2.0] = 20;
  map.remove(nan);
  ReportRecorder const recorder;

  EXPECT_EQ(map.size(), 3u);
  EXPECT_EQ(map.find(nan, nullptr), 0);
  map.at(nan);
  EXPECT_EQ(recorder.units(), reports(1, "ozmap_t.h"));
}

/// Counts those that live, and throws from a copy when told to.
struct Guest
{
  Guest() { ++alive; }
  Guest(Guest const& other)
    : number(other.number)
  {
    if (copies_left == 0)
      throw std::runtime_error("no more copies");
    --copies_left;
    ++alive;
  }
  Guest& operator=(Guest const&) = default;
  ~Guest() { --alive; }

  int number = 0;
  static int alive;
  static int copies_left; // negative: any number
};

int Guest::alive = 0;
int Guest::copies_left = -1;

TEST(OzMap, EachValueIsDestroyedOnce)
{
  {
    OpenMap<int, Guest> map;
    for (int key = 0; key < 30; ++key)
      map[key].number = key;
    EXPECT_EQ(Guest::alive, 31);
    for (int key = 0; key < 30; key += 3)
      map.remove(key);
    EXPECT_EQ(Guest::alive, 21);
    OpenMap<int, Guest> copy(map);
    EXPECT_EQ(Guest::alive, 42);
    copy.clear();
    EXPECT_EQ(Guest::alive, 22);
    EXPECT_EQ(map.at(29).number, 29);
  }
  EXPECT_EQ(Guest::alive, 0);
}

TEST(OzMap, ACopyThatThrowsLeavesASoundMapWithWhatWasCopied)
{
  OpenMap<int, Guest> from;
  for (int key = 0; key < 20; ++key)
    from[key];
  OpenMap<int, Guest> map;
  map[100];
  map[200];
  Guest::copies_left = 11;

  EXPECT_THROW(map = from, std::runtime_error);
  Guest::copies_left = -1;

  EXPECT_EQ(map.error(), "");
  EXPECT_EQ(keys_of(map), (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(Guest::alive, 1 + 20 + 1 + 11);
  map[15];
  EXPECT_EQ(map.error(), "");
}

TEST(OzMap, AnAppendThatThrowsLeavesNothingInTheScratchLists)
{
  OpenMap<int, Guest> map;
  map.insert_again(1, Guest());
  map.insert_again(1, Guest());
  OzList<Guest> values;
  Guest::copies_left = 1;

  EXPECT_THROW(map.find(1, &values), std::runtime_error);
  Guest::copies_left = -1;

  EXPECT_EQ(map.error(), "");
  EXPECT_EQ(map.find(1, nullptr), 2);
}

TEST(OzMapIterator, WalksInAscendingOrderOfTheKeys)
{
  OzMap<int, short> map;
  for (short const key : {short(4), short(-2), short(6), short(0)})
    map[key] = static_cast<short>(key * 10);
  OzMapIterator<int, short> i(&map);
  OzIterator<short>& values = i;

  std::vector<int> keys;
  std::vector<short> walked;
  for (values.reset(); !values.done(); values.next())
  {
    keys.push_back(i.key());
    walked.push_back(values.current());
    EXPECT_EQ(values.first(), -20);
  }

  EXPECT_EQ(keys, (std::vector<int>{-2, 0, 4, 6}));
  EXPECT_EQ(walked, (std::vector<short>{-20, 0, 40, 60}));
  EXPECT_TRUE(i.done());
  i.reset();
  EXPECT_FALSE(i.done());
  EXPECT_EQ(i.current(), -20);
}

TEST(OzMapIterator, StartsOnTheFirstEntryWithoutReset)
{
  OzMap<int, int> map;
  map[2] = 20;
  map[1] = 10;

  OzMapIterator<int, int> i(&map);
  OzMapIterator<int, int> const copy(i);
  i.next();

  EXPECT_EQ(copy.current(), 10);
  EXPECT_EQ(copy.key(), 1);
  EXPECT_EQ(i.current(), 20);
  EXPECT_EQ(i.first(), 10);
}

TEST(OzMapIterator, IsDoneAtOnceOnAnEmptyMap)
{
  OzMap<int, int> map;
  map.at(0) = 7;
  OzMapIterator<int, int> i(&map);
  OzMapKeyIterator<int, int> keys(&map);
  ReportRecorder const recorder;

  EXPECT_TRUE(i.done());
  EXPECT_TRUE(keys.done());
  EXPECT_EQ(i.first(), 7) << "the spare entry";
  EXPECT_EQ(i.current(), 7);
  EXPECT_EQ(i.key(), 0);
  EXPECT_EQ(keys.first(), 0);
  i.reset();
  EXPECT_TRUE(i.done());
  i.next();
  EXPECT_TRUE(i.done());
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzMapIterator, LooksForTheFirstEntryOnlyOnReset)
{
  OzMap<int, int> map;
  map[5] = 50;
  OzMapIterator<int, int> i(&map);

  map[3] = 30;
  map[7] = 70;
  EXPECT_EQ(i.first(), 50);
  i.next();
  EXPECT_EQ(i.key(), 7) << "entries may come during a walk";

  i.reset();
  EXPECT_EQ(i.first(), 30);
  EXPECT_EQ(i.key(), 3);
}

TEST(OzMapKeyIterator, FirstGivesTheKeyUnderTheCursor)
{
  OzMap<int, short> map;
  map[1] = 10;
  map[2] = 20;
  map[3] = 30;
  OzMapIterator<int, short> values(&map);
  OzMapKeyIterator<int, short> keys(&map);
  OzIterator<int>& walk = keys;

  EXPECT_EQ(walk.first(), 1);
  values.next();
  walk.next();

  EXPECT_EQ(walk.first(), 2);
  EXPECT_EQ(walk.current(), 2);
  EXPECT_EQ(values.first(), 10);
  walk.next();
  EXPECT_EQ(walk.first(), 3);
  walk.next();
  EXPECT_TRUE(walk.done());
  walk.reset();
  EXPECT_EQ(walk.first(), 1);
  EXPECT_FALSE(walk.done());
}

TEST(OzMapIterator, TheKeyIsTheLastOfItsVirtualOperations)
{
  static_assert(std::is_base_of<OzIterator<short>, OzMapIterator<int, short>>::value, "values");
  static_assert(std::is_base_of<OzIterator<int>, OzMapKeyIterator<int, short>>::value, "keys");
  static_assert(sizeof(OzMapIterator<int, short>) == 4 * sizeof(void*), "table, map, cursor, first node");
  static_assert(sizeof(OzMapKeyIterator<int, short>) == 5 * sizeof(void*), "table, iterator");

  OzMap<int, short> map;
  map[1] = 10;
  OzMapIterator<int, short> i(&map);
  OzMapIterator<int, short> const& base = i;
  EXPECT_EQ(base.key(), 1);
}

/// Compares two trees node by node: keys, values, colours, shape, and where each right_most leads.
template <class K, class V>
class TwinComparison
{
public:
  TwinComparison(OpenMap<K, V> const& map, LiteralMap<K, V> const& model)
    : map_nil(map.nil)
    , model_nil(model.nil)
  {
    alike_ = map.size() == model.size && same(map.root, model.root);
    for (auto const& pair : twins)
      alike_ = alike_ && twin(pair.first->right_most()) == pair.second->right_most();
  }

  bool alike() const { return alike_; }

private:
  typedef LiteralNode<K, V> ModelNode;

  // Two NaN are the same here.
  static bool same_key(K const& a, K const& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

  bool same(OzRBTreeNode const* a, OzRBTreeNode const* b)
  {
    if (a == map_nil || b == model_nil)
      return a == map_nil && b == model_nil;
    twins[a] = b;
    return same_key(NodeReader<K, V>::key_of(a), ModelNode::of(b)->key) &&
           NodeReader<K, V>::value_of(a) == ModelNode::of(b)->value &&
           ColorReader::of(a) == ColorReader::of(b) && same(a->left(), b->left()) &&
           same(a->right(), b->right());
  }

  OzRBTreeNode const* twin(OzRBTreeNode const* n) const
  {
    auto const found = twins.find(n);
    return found == twins.end() ? nullptr : found->second;
  }

  OzRBTreeNode const* map_nil;
  OzRBTreeNode const* model_nil;
  std::map<OzRBTreeNode const*, OzRBTreeNode const*> twins;
  bool alike_;
};

template <class K>
class OzMapWalk : public testing::Test
{
public:
  static K make_key(unsigned long number);
};

template <>
int OzMapWalk<int>::make_key(unsigned long number)
{
  return static_cast<int>(number) - 20;
}

template <>
double OzMapWalk<double>::make_key(unsigned long number)
{
  return static_cast<double>(number) / 4;
}

template <>
char const* OzMapWalk<char const*>::make_key(unsigned long number)
{
  static char const memory[64] = {};
  return memory + number;
}

typedef testing::Types<int, double, char const*> WalkedKeys;
TYPED_TEST_SUITE(OzMapWalk, WalkedKeys, );

// 24,000 steps over 48 keys: entries, further entries of the same key, removals, searches and copies.
TYPED_TEST(OzMapWalk, AgreesWithThePlainestMapNodeByNode)
{
  typedef TypeParam Key;
  unsigned const seed = 424242;
  std::mt19937 random(seed);
  OpenMap<Key, int> map;
  LiteralMap<Key, int> model;

  for (int step = 0; step < 24000; ++step)
  {
    Key const key = this->make_key(random() % 48);
    bool const growing = step / 400 % 2 == 0;
    unsigned long const dice = random() % 100;
    if (dice < (growing ? 55u : 20u))
      map[key] = model[key] = step;
    else if (dice < (growing ? 70u : 25u))
    {
      map.insert_again(key, step);
      model.insert_again(key, step);
    }
    else if (dice < 99u)
    {
      map.remove(key);
      model.remove(key);
    }
    else
    {
      OpenMap<Key, int> const copy(map);
      LiteralMap<Key, int> model_copy;
      model_copy = model;
      ASSERT_TRUE((TwinComparison<Key, int>(copy, model_copy).alike()))
          << "copy, seed " << seed << ", step " << step;
      map = copy;
      model = model_copy;
    }

    ASSERT_EQ(map.error(), "") << "seed " << seed << ", step " << step;
    ASSERT_TRUE((TwinComparison<Key, int>(map, model).alike())) << "seed " << seed << ", step " << step;

    Key const wanted = this->make_key(random() % 48);
    OzList<int> values;
    std::vector<int> const expected = model.find(wanted);
    ASSERT_EQ(map.find(wanted, &values), static_cast<int>(expected.size()))
        << "seed " << seed << ", step " << step;
    ASSERT_EQ(values_in(values), expected) << "seed " << seed << ", step " << step;
    ASSERT_EQ(map.find(wanted, nullptr), static_cast<int>(expected.size()))
        << "seed " << seed << ", step " << step;
    if (!expected.empty())
    {
      ASSERT_EQ(map.at(wanted), expected.front()) << "seed " << seed << ", step " << step;
    }
  }
}

// Keys that are no numbers have no place in the order: whatever becomes of them, both maps do the same.
TEST(OzMap, AgreesWithThePlainestMapWhereKeysHaveNoOrder)
{
  unsigned const seed = 7;
  std::mt19937 random(seed);
  OpenMap<double, int> map;
  LiteralMap<double, int> model;

  for (int step = 0; step < 3000; ++step)
  {
    unsigned long const number = random() % 24;
    double const key = number == 0 ? std::nan("") : static_cast<double>(number);
    unsigned long const dice = random() % 100;
    if (dice < 60)
      map[key] = model[key] = step;
    else if (dice < 98 || map.size() > 150)
    {
      map.remove(key);
      model.remove(key);
    }
    else
    {
      OpenMap<double, int> const copy(map);
      LiteralMap<double, int> model_copy;
      model_copy = model;
      map = copy;
      model = model_copy;
    }
    if (map.size() > 200)
    {
      map.clear();
      model.clear();
    }
    ASSERT_TRUE((TwinComparison<double, int>(map, model).alike())) << "seed " << seed << ", step " << step;
    ASSERT_EQ(map.find(key, nullptr), static_cast<int>(model.find(key).size()))
        << "seed " << seed << ", step " << step;
  }
}

TEST(OzMap, AgreesWithAStandardMapOverManyKeys)
{
  unsigned const seed = 99;
  std::mt19937 random(seed);
  OpenMap<int, int> map;
  std::map<int, int> model;

  for (int step = 0; step < 100000; ++step)
  {
    int const key = static_cast<int>(random() % 5000);
    if (random() % 3 != 0)
      map[key] = model[key] = step;
    else
    {
      map.remove(key);
      model.erase(key);
    }
    if (step % 5000 == 0)
    {
      ASSERT_EQ(map.error(), "") << "seed " << seed << ", step " << step;
      ASSERT_EQ(entries_of(map), Entries(model.begin(), model.end())) << "seed " << seed << ", step " << step;
    }
  }
}
} // namespace
