#include "ozhash.h"

#include "ozstring.h"
#include "report_recorder.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <pthread.h>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace
{
/// A node whose hash value is its key. The name tells equal nodes apart and takes no part in anything.
class Node : public OzHashTableNode
{
public:
  explicit Node(std::uint32_t k, int n = 0)
    : key(k)
    , name(n)
  {
    ++alive;
  }
  Node(Node const& other)
    : OzHashTableNode(other)
    , key(other.key)
    , name(other.name)
  {
    if (clones_left == 0)
      throw std::runtime_error("no more clones");
    --clones_left;
    ++alive;
  }
  Node& operator=(Node const&) = default;
  ~Node() override
  {
    --alive;
    free_at_end = free_at_end && next() == nullptr && prev() == nullptr;
    if (deleted != nullptr)
      deleted->push_back(name);
  }

  bool equal(OzHashTableNode const* query) const override
  {
    asked.push_back(name);
    return static_cast<Node const*>(query)->key == key;
  }
  OzHashTableNode* clone() const override { return new Node(*this); }

  std::uint32_t key;
  int name;
  static inline int alive = 0;
  static inline int clones_left = -1;
  static inline bool free_at_end = true; // was every node that was deleted out of its chain by then?
  static inline std::vector<int>* deleted = nullptr;
  static inline std::vector<int> asked; // names of the nodes that were asked whether they equal a query
};

typedef std::vector<int> Names;

int name_of(OzHashTableNode const* node)
{
  return node != nullptr ? static_cast<Node const*>(node)->name : -1;
}

/// Opens what a table keeps for derived classes.
class Table : public OzHashTable
{
public:
  using OzHashTable::best_case;
  using OzHashTable::cells;
  using OzHashTable::find_index;
  using OzHashTable::find_node;
  using OzHashTable::first_node;
  using OzHashTable::get_cell_distribution;
  using OzHashTable::insert_node;
  using OzHashTable::next_node;
  using OzHashTable::OzHashTable;
  using OzHashTable::remove_all_elements;
  using OzHashTable::remove_chain;
  using OzHashTable::splice_node;
  using OzHashTable::worst_cast;

  Table() = default;
  Table(Table const& other) = default;
  Table& operator=(Table const& other) = default;

  std::uint32_t hash_value(OzHashTableNode const* node) const override
  {
    ++hashed;
    return static_cast<Node const*>(node)->key;
  }

  /// Puts a node in, which the table owns from now on.
  Node* put(std::uint32_t key, int name = 0)
  {
    Node* const node = new Node(key, name);
    insert_node(node);
    return node;
  }

  static inline int hashed = 0;
};

/// The names of the nodes in the order of iteration.
Names names(Table const& table)
{
  Names result;
  int cell = 0;
  for (OzHashTableNode* node = table.first_node(cell); node != nullptr; node = table.next_node(node, cell))
    result.push_back(name_of(node));
  return result;
}

/// The names in one cell, after a look at the links in both directions.
Names chain(Table const& table, std::uint64_t cell)
{
  Names result;
  OzLink const* before = nullptr;
  for (OzLink const* link = table.cells[cell]; link != nullptr; link = link->next())
  {
    EXPECT_EQ(link->prev(), before);
    result.push_back(name_of(static_cast<OzHashTableNode const*>(link)));
    before = link;
  }
  return result;
}

bool is_free(OzLink const* link)
{
  return link->next() == nullptr && link->prev() == nullptr;
}

/// Holds that each node that was made was deleted, and was out of its chain by then.
class OzHashTableTest : public testing::Test
{
protected:
  OzHashTableTest()
  {
    Node::deleted = nullptr;
    Node::asked.clear();
    Node::free_at_end = true;
    Node::clones_left = -1;
    Table::hashed = 0;
  }
  ~OzHashTableTest() override
  {
    EXPECT_EQ(Node::alive, 0);
    EXPECT_TRUE(Node::free_at_end);
  }
};

/// Three equal nodes in cell 1 of four, newest first: 3, 2, 1.
class OzHashTableWithAChain : public OzHashTableTest
{
protected:
  OzHashTableWithAChain()
    : table(4)
    , last(table.put(1, 1))
    , middle(table.put(1, 2))
    , head(table.put(1, 3))
  {
  }

  Table table;
  Node* last;
  Node* middle;
  Node* head;
};
} // namespace

TEST(OzHashTableNode, ItsVirtualFunctionsStandInTheirOrder)
{
  EXPECT_EQ(vtable_slot(&OzHashTableNode::equal), 2);
  EXPECT_EQ(vtable_slot(&OzHashTableNode::clone), 3);
  EXPECT_EQ(sizeof(OzHashTableNode), sizeof(OzLink));
  EXPECT_TRUE(std::is_abstract_v<OzHashTableNode>);
}

TEST(OzHashTableNode, ACopyIsInNoChain)
{
  Node a(1);
  Node b(2);
  a.insert_next(&b);

  Node const copy(a);
  EXPECT_TRUE(is_free(&copy));
  EXPECT_EQ(a.next(), &b);

  Node target(3);
  Node neighbour(4);
  target.insert_next(&neighbour);
  target = a;
  EXPECT_TRUE(is_free(&target));
  a.set_next(nullptr);
  b.set_prev(nullptr);
  neighbour.set_prev(nullptr);
}

TEST(OzHashTable, ItsVirtualFunctionAndFieldAreInPlace)
{
  class Opened : public OzHashTable
  {
  public:
    static int slot() { return vtable_slot(&Opened::hash_value); }
  };
  Table const table;

  EXPECT_EQ(Opened::slot(), 2);
  EXPECT_EQ(reinterpret_cast<char const*>(&table.cells) - reinterpret_cast<char const*>(&table), 8);
  EXPECT_EQ(sizeof(OzHashTable), sizeof(void*) + sizeof(OzArray<OzHashTableNode*>));
  EXPECT_TRUE(std::is_abstract_v<OzHashTable>);
  EXPECT_FALSE(std::is_copy_assignable_v<OzHashTable>);
  EXPECT_FALSE((std::is_convertible_v<int, Table>));
}

TEST(OzHashTable, TheDefaultSizeHasAnAddress)
{
  int const& size = OzHashTable::DEFAULT_SIZE;

  EXPECT_EQ(size, 100);
}

TEST_F(OzHashTableTest, ADefaultTableHasAHundredEmptyCells)
{
  Table const table;

  ASSERT_EQ(table.cells.size(), 100u);
  EXPECT_EQ(std::count(table.cells.begin(), table.cells.end(), nullptr), 100);
}

TEST_F(OzHashTableTest, HasTheCellsThatItIsGivenAndTheCapacityOfAGrownArray)
{
  class Capacity : public OzArray<OzHashTableNode*>
  {
  public:
    using OzArray<OzHashTableNode*>::capacity;
  };
  Table const table(5);

  EXPECT_EQ(table.cells.size(), 5u);
  EXPECT_EQ(std::count(table.cells.begin(), table.cells.end(), nullptr), 5);
  EXPECT_EQ(table.cells.*(&Capacity::capacity), 8u);
}

TEST_F(OzHashTableTest, ANegativeNumberOfCellsIsBadAlloc)
{
  EXPECT_THROW(Table const table(-1), std::bad_alloc);
  EXPECT_THROW(Table const table(std::numeric_limits<int>::min()), std::bad_alloc);
}

TEST_F(OzHashTableTest, ATableOfNoCellsCanBeBuiltCopiedAndMeasured)
{
  Table const table(0);
  Table const copy(table);
  int cell = 7;

  EXPECT_EQ(copy.cells.size(), 0u);
  EXPECT_EQ(copy.best_case(), 0);
  EXPECT_EQ(copy.worst_cast(), 0);
  EXPECT_EQ(copy.first_node(cell), nullptr);
  EXPECT_EQ(cell, 0);
  OzPriQueue<int, int> queue;
  copy.get_cell_distribution(queue);
  EXPECT_EQ(queue.count(), 0);
}

TEST_F(OzHashTableTest, ACellIsTheHashValueModuloTheNumberOfCells)
{
  Table const table(7);
  struct
  {
    std::uint32_t hash;
    int cell;
  } const cases[] = {{0, 0}, {6, 6}, {7, 0}, {22, 1}, {2147483648u, 2}, {4294967295u, 3}};

  for (auto const& c : cases)
  {
    Node const node(c.hash);
    EXPECT_EQ(table.find_index(&node), c.cell) << c.hash;
  }
}

TEST_F(OzHashTableTest, InsertTellsWhetherTheCellWasEmpty)
{
  Table table(4);

  EXPECT_TRUE(table.insert_node(new Node(1, 1)));
  EXPECT_FALSE(table.insert_node(new Node(5, 2)));
  EXPECT_TRUE(table.insert_node(new Node(2, 3)));
  EXPECT_FALSE(table.insert_node(new Node(1, 4)));

  EXPECT_EQ(chain(table, 1), (Names{4, 2, 1}));
  EXPECT_EQ(chain(table, 2), (Names{3}));
}

TEST_F(OzHashTableTest, InsertDoesNotAskForEquality)
{
  Table table(1);

  table.put(1);
  table.put(1);

  EXPECT_EQ(Node::asked, Names());
  EXPECT_EQ(Table::hashed, 2);
}

TEST_F(OzHashTableWithAChain, FindGivesTheNewestEqualNode)
{
  Node const query(1);

  EXPECT_EQ(table.find_node(&query), head);
}

TEST_F(OzHashTableWithAChain, FindAsksStoredNodesDownToTheFirstMatch)
{
  table.put(5, 4);
  table.put(5, 5);
  Node const query(1, 77);

  EXPECT_EQ(table.find_node(&query), head);

  EXPECT_EQ(Node::asked, (Names{5, 4, 3}));
}

TEST_F(OzHashTableWithAChain, FindGivesNullWhereNothingIsEqual)
{
  Node const in_its_cell(5);
  Node const in_an_empty_cell(2);

  EXPECT_EQ(table.find_node(&in_its_cell), nullptr);
  EXPECT_EQ(table.find_node(&in_an_empty_cell), nullptr);
  EXPECT_EQ(table.find_node(&in_its_cell, nullptr), 0);
  EXPECT_EQ(table.find_node(&in_an_empty_cell, nullptr), 0);
}

TEST_F(OzHashTableWithAChain, FindCountsAllEqualNodesWithoutAList)
{
  table.put(5, 4);
  Node const query(1);

  EXPECT_EQ(table.find_node(&query, nullptr), 3);
  EXPECT_EQ(table.find_node(&query), head);
  EXPECT_EQ(Node::asked, (Names{4, 3, 2, 1, 4, 3}));
}

TEST_F(OzHashTableWithAChain, FindAppendsAllEqualNodesToAList)
{
  table.put(5, 4);
  Node const query(1);
  Node other(9);
  OzList<OzHashTableNode*> list;
  list.append(&other);

  EXPECT_EQ(table.find_node(&query, &list), 3);

  EXPECT_EQ(list.count(), 4u);
  std::vector<OzHashTableNode*> const found(list.begin(), list.end());
  EXPECT_EQ(found, (std::vector<OzHashTableNode*>{&other, head, middle, last}));
}

TEST_F(OzHashTableWithAChain, FindResetsTheCursorOfTheListThatItAppendsTo)
{
  class List : public OzList<OzHashTableNode*>
  {
  public:
    using OzList<OzHashTableNode*>::cursor;
  } list;
  Node other(9);
  list.append(&other);
  list.append(&other);
  list[1];
  ASSERT_NE(list.cursor.link, nullptr);
  Node const query(1);

  table.find_node(&query, &list);

  EXPECT_EQ(list.cursor.link, nullptr);
  EXPECT_EQ(list.cursor.index, 0u);
}

TEST_F(OzHashTableWithAChain, SplicesTheHead)
{
  table.splice_node(head);

  EXPECT_EQ(chain(table, 1), (Names{2, 1}));
  EXPECT_EQ(names(table), (Names{2, 1}));
  EXPECT_TRUE(is_free(head));
  delete head;
}

TEST_F(OzHashTableWithAChain, SplicesAMiddleNode)
{
  table.splice_node(middle);

  EXPECT_EQ(chain(table, 1), (Names{3, 1}));
  EXPECT_TRUE(is_free(middle));
  delete middle;
}

TEST_F(OzHashTableWithAChain, SplicesTheLastNode)
{
  table.splice_node(last);

  EXPECT_EQ(chain(table, 1), (Names{3, 2}));
  EXPECT_TRUE(is_free(last));
  delete last;
}

TEST_F(OzHashTableWithAChain, SplicesTheOnlyNode)
{
  Node* const only = table.put(2, 9);

  table.splice_node(only);

  EXPECT_EQ(table.cells[2], nullptr);
  EXPECT_TRUE(is_free(only));
  EXPECT_TRUE(table.insert_node(only));
}

TEST_F(OzHashTableWithAChain, SplicingANodeThatIsInNoChainLeavesThatOfItsCell)
{
  Node stray(1, 9);

  table.splice_node(&stray);

  EXPECT_EQ(chain(table, 1), (Names{3, 2, 1}));
}

TEST_F(OzHashTableWithAChain, SpliceHashesTheNodeAgain)
{
  Table::hashed = 0;

  table.splice_node(middle);

  EXPECT_EQ(Table::hashed, 1);
  delete middle;
}

TEST_F(OzHashTableWithAChain, SpliceAndRemoveIgnoreNull)
{
  ReportRecorder const recorder;

  table.splice_node(nullptr);
  table.remove_chain(nullptr);

  EXPECT_EQ(chain(table, 1), (Names{3, 2, 1}));
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST_F(OzHashTableWithAChain, RemovesAChainFromAnyOfItsNodes)
{
  Names deleted;
  Node::deleted = &deleted;
  struct
  {
    char const* what;
    int from; // place in the chain, from the head
    Names order;
  } const cases[] = {
      {"from the head", 0, {4, 3, 2, 1}},
      {"from within: first what stands behind, then what stands before", 2, {2, 1, 3, 4}},
      {"from the end", 3, {1, 2, 3, 4}},
  };
  table.put(1, 4);
  for (auto const& c : cases)
  {
    Table copy(table);
    OzLink* node = copy.cells[1];
    for (int i = 0; i < c.from; ++i)
      node = node->next();
    copy.cells[1] = nullptr;
    deleted.clear();

    copy.remove_chain(static_cast<OzHashTableNode*>(node));

    EXPECT_EQ(deleted, c.order) << c.what;
  }
  Node::deleted = nullptr;
}

TEST_F(OzHashTableTest, RemovesARingOnce)
{
  for (int const n : {1, 2, 3, 5})
  {
    std::vector<Node*> ring;
    for (int i = 0; i < n; ++i)
      ring.push_back(new Node(1, i));
    for (int i = 0; i < n; ++i)
    {
      Node* const next = ring[static_cast<std::size_t>((i + 1) % n)];
      ring[static_cast<std::size_t>(i)]->set_next(next);
      next->set_prev(ring[static_cast<std::size_t>(i)]);
    }
    Names deleted;
    Node::deleted = &deleted;
    Table table(1);

    table.remove_chain(ring[0]);

    Node::deleted = nullptr;
    EXPECT_EQ(deleted.size(), static_cast<std::size_t>(n));
  }
}

TEST_F(OzHashTableTest, RemovesAllElementsCellByCellFromTheHead)
{
  Table table(3);
  for (int i = 0; i < 7; ++i)
    table.put(static_cast<std::uint32_t>(i), i);
  Names deleted;
  Node::deleted = &deleted;

  table.remove_all_elements();

  Node::deleted = nullptr;
  EXPECT_EQ(deleted, (Names{6, 3, 0, 4, 1, 5, 2}));
  EXPECT_EQ(table.cells.size(), 3u);
  EXPECT_EQ(names(table), Names());
  EXPECT_TRUE(table.insert_node(new Node(0)));
}

TEST_F(OzHashTableTest, ANodeThatGoesWithAllFindsItsCellEmpty)
{
  class Witness : public Node
  {
  public:
    Witness(Table const& home, std::vector<OzHashTableNode const*>& heads)
      : Node(1)
      , table(home)
      , found(heads)
    {
    }
    ~Witness() override { found.push_back(table.cells[1]); }

  private:
    Table const& table;
    std::vector<OzHashTableNode const*>& found;
  };
  Table table(2);
  std::vector<OzHashTableNode const*> found;
  table.insert_node(new Witness(table, found));
  table.insert_node(new Witness(table, found));

  table.remove_all_elements();

  EXPECT_EQ(found, (std::vector<OzHashTableNode const*>{nullptr, nullptr}));
}

TEST_F(OzHashTableTest, DeletesItsNodesAtItsEndWithoutHashing)
{
  Table* const table = new Table(3);
  std::unique_ptr<OzHashTable> owner(table);
  for (std::uint32_t i = 0; i < 7; ++i)
    table->put(i);
  Table::hashed = 0;

  owner.reset();

  EXPECT_EQ(Node::alive, 0);
  EXPECT_EQ(Table::hashed, 0);
}

namespace
{
struct LongChain
{
  Table table{1};
  OzHashTableNode* in_the_middle = nullptr;
};

void* remove_long_chains(void* argument)
{
  LongChain& chain = *static_cast<LongChain*>(argument);
  Table copy(chain.table);
  copy.remove_all_elements();
  chain.table.cells[0] = nullptr;
  chain.table.remove_chain(chain.in_the_middle);
  return nullptr;
}
} // namespace

TEST_F(OzHashTableTest, AChainOfAMillionNodesGoesOnASmallStack)
{
  LongChain chain;
  for (int i = 0; i < 1000000; ++i)
  {
    Node* const node = chain.table.put(0, i);
    if (i == 500000)
      chain.in_the_middle = node;
  }

  // Below 100,000 bytes thread sanitizers do not start; one frame for each node would take 16 million.
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, &remove_long_chains, &chain), 0);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);

  EXPECT_EQ(Node::alive, 0);
}

TEST_F(OzHashTableTest, IteratesByRisingCellAndInACellFromNewestToOldest)
{
  Table table(5);
  table.put(4, 1);
  table.put(1, 2);
  table.put(9, 3);
  table.put(6, 4);
  int cell = 99;

  OzHashTableNode* node = table.first_node(cell);
  EXPECT_EQ(name_of(node), 4);
  EXPECT_EQ(cell, 1);
  node = table.next_node(node, cell);
  EXPECT_EQ(name_of(node), 2);
  EXPECT_EQ(cell, 1);
  node = table.next_node(node, cell);
  EXPECT_EQ(name_of(node), 3);
  EXPECT_EQ(cell, 4);
  node = table.next_node(node, cell);
  EXPECT_EQ(name_of(node), 1);
  EXPECT_EQ(cell, 4);
  EXPECT_EQ(table.next_node(node, cell), nullptr);
  EXPECT_EQ(cell, 5);
}

TEST_F(OzHashTableTest, IterationOverNothingEndsBehindTheLastCell)
{
  Table const table(5);
  int cell = 2;

  EXPECT_EQ(table.first_node(cell), nullptr);
  EXPECT_EQ(cell, 5);
}

TEST_F(OzHashTableTest, IterationNeedsNoHashValue)
{
  Table table(5);
  table.put(3);
  table.put(2);
  Table::hashed = 0;

  EXPECT_EQ(names(table).size(), 2u);

  EXPECT_EQ(Table::hashed, 0);
}

TEST_F(OzHashTableTest, TheNodeAfterNullIsReportedAndNull)
{
  Table table(5);
  table.put(3);
  int cell = 1;
  {
    ReportRecorder const recorder;
    EXPECT_EQ(table.next_node(nullptr, cell), nullptr);
    EXPECT_EQ(recorder.units(), reports(1, "ozhash.cpp"));
  }

  EXPECT_EQ(table.next_node(nullptr, cell), nullptr);
  EXPECT_EQ(cell, 1);
}

TEST_F(OzHashTableTest, AHandlerMayThrowAndTheCellStays)
{
  Table table(5);
  table.put(3);
  int cell = 1;
  OzAssertionHandler const former = dkb_assertion_handler;
  dkb_assertion_handler = [](char const*, int) { throw 7; };

  EXPECT_THROW(table.next_node(nullptr, cell), int);

  dkb_assertion_handler = former;
  EXPECT_EQ(cell, 1);
}

TEST_F(OzHashTableTest, CorrectUseIsNotReported)
{
  ReportRecorder const recorder;
  Table table(5);
  table.put(3);
  table.put(3);
  Node const query(3);
  int cell = 0;

  table.find_node(&query);
  table.next_node(table.first_node(cell), cell);
  Table const copy(table);
  table.remove_all_elements();

  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST_F(OzHashTableTest, StatisticsAreTheShortestAndTheLongestChain)
{
  Table table(3);
  EXPECT_EQ(table.best_case(), 0);
  EXPECT_EQ(table.worst_cast(), 0);
  table.put(0);
  table.put(0);
  table.put(1);
  EXPECT_EQ(table.best_case(), 0);
  EXPECT_EQ(table.worst_cast(), 2);
  table.put(2);
  EXPECT_EQ(table.best_case(), 1);
  table.put(2);
  table.put(2);
  EXPECT_EQ(table.best_case(), 1);
  EXPECT_EQ(table.worst_cast(), 3);
  table.put(1);
  EXPECT_EQ(table.best_case(), 2);
}

namespace
{
/// Four cells with chains of 2, 0, 3 and 1 nodes.
void fill_unevenly(Table& table)
{
  for (std::uint32_t const key : {0u, 0u, 2u, 2u, 2u, 3u})
    table.put(key);
}

Names extract_all(OzPriQueue<int, int>& queue)
{
  Names result;
  for (int n = queue.count(); n > 0; --n)
    result.push_back(queue.extract());
  return result;
}
} // namespace

TEST_F(OzHashTableTest, ADescendingQueueGivesTheLongestChainsFirst)
{
  Table table(4);
  fill_unevenly(table);
  OzPriQueue<int, int> queue(true);
  ReportRecorder const recorder;

  table.get_cell_distribution(queue);

  EXPECT_EQ(queue.count(), 4);
  EXPECT_EQ(extract_all(queue), (Names{2, 0, 3, 1}));
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST_F(OzHashTableTest, AnAscendingQueueGivesTheShortestChainsFirst)
{
  Table table(4);
  fill_unevenly(table);
  OzPriQueue<int, int> queue(false);

  table.get_cell_distribution(queue);

  EXPECT_EQ(extract_all(queue), (Names{1, 3, 0, 2}));
}

TEST_F(OzHashTableTest, TheDistributionIsAddedToWhatIsInTheQueue)
{
  Table table(4);
  fill_unevenly(table);
  OzPriQueue<int, int> queue;
  queue.insert(77, 100);

  table.get_cell_distribution(queue);

  EXPECT_EQ(extract_all(queue), (Names{77, 2, 0, 3, 1}));
}

TEST_F(OzHashTableTest, ACopyHasItsOwnNodesInTheSameOrderAndHashesNothing)
{
  Table table(3);
  for (int i = 0; i < 9; ++i)
    table.put(static_cast<std::uint32_t>(i % 4), i);
  Table::hashed = 0;

  Table copy(table);

  EXPECT_EQ(Table::hashed, 0);
  EXPECT_EQ(Node::alive, 18);
  for (std::uint64_t cell = 0; cell < 3; ++cell)
  {
    EXPECT_EQ(chain(copy, cell), chain(table, cell)) << cell;
    EXPECT_NE(copy.cells[cell], table.cells[cell]) << cell;
  }
  EXPECT_EQ(names(table), (Names{8, 7, 4, 3, 0, 5, 1, 6, 2}));
  copy.remove_all_elements();
  EXPECT_EQ(names(table).size(), 9u);
}

TEST_F(OzHashTableTest, AssignmentReplacesNodesAndCells)
{
  Table source(3);
  source.put(0, 1);
  source.put(3, 2);
  source.put(2, 3);
  struct
  {
    int cells;
    Names deleted; // cell by cell
  } const cases[] = {{1, {7, 9, 8}}, {3, {9, 8, 7}}, {50, {9, 8, 7}}};
  for (auto const& c : cases)
  {
    Table target(c.cells);
    target.put(0, 8);
    target.put(0, 9);
    target.put(49, 7);
    Names deleted;
    Node::deleted = &deleted;
    Table::hashed = 0;

    Table const& result = (target = source);

    Node::deleted = nullptr;
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(Table::hashed, 0);
    EXPECT_EQ(deleted, c.deleted) << c.cells;
    EXPECT_EQ(target.cells.size(), 3u);
    EXPECT_EQ(names(target), (Names{2, 1, 3}));
    EXPECT_EQ(chain(target, 0), (Names{2, 1}));
    Node const query(2);
    EXPECT_EQ(name_of(target.find_node(&query)), 3);
  }
  EXPECT_EQ(names(source), (Names{2, 1, 3}));
}

TEST_F(OzHashTableTest, SelfAssignmentKeepsTheNodes)
{
  Table table(3);
  Node* const node = table.put(0, 1);
  Table& same = table;

  table = same;

  EXPECT_EQ(table.cells[0], node);
  EXPECT_EQ(names(table), (Names{1}));
}

TEST_F(OzHashTableTest, ACloneThatThrowsLeavesTheTargetAsItWas)
{
  Table source(2);
  for (int i = 0; i < 6; ++i)
    source.put(static_cast<std::uint32_t>(i), i);
  for (int const clones : {0, 1, 4, 5})
  {
    Table target(1);
    target.put(0, 77);

    Node::clones_left = clones;
    EXPECT_THROW(target = source, std::runtime_error) << clones;
    Node::clones_left = clones;
    EXPECT_THROW(Table copy(source), std::runtime_error) << clones;
    Node::clones_left = -1;

    EXPECT_EQ(target.cells.size(), 1u);
    EXPECT_EQ(names(target), (Names{77}));
    EXPECT_EQ(Node::alive, 7);
  }
}

namespace
{
/// A table that is only cells, each a vector of names with their keys, newest first.
struct Model
{
  explicit Model(std::size_t n)
    : cells(n)
  {
  }

  typedef std::pair<std::uint32_t, int> Entry;
  std::vector<Entry>& cell(std::uint32_t key) { return cells[key % cells.size()]; }

  Names names() const
  {
    Names result;
    for (std::vector<Entry> const& cell : cells)
      for (Entry const& entry : cell)
        result.push_back(entry.second);
    return result;
  }
  int length(bool shortest) const
  {
    std::size_t result = cells.empty() ? 0 : cells[0].size();
    for (std::vector<Entry> const& cell : cells)
      result = shortest ? std::min(result, cell.size()) : std::max(result, cell.size());
    return static_cast<int>(result);
  }

  std::vector<std::vector<Entry>> cells;
};

/// Number `i` of the nodes in the order of iteration.
OzHashTableNode* node_at(Table const& table, std::size_t i)
{
  int cell = 0;
  OzHashTableNode* node = table.first_node(cell);
  while (i-- > 0)
    node = table.next_node(node, cell);
  return node;
}
} // namespace

TEST_F(OzHashTableTest, AgreesWithALinearScan)
{
  std::mt19937 random(2512);
  auto const below = [&random](std::size_t n)
  { return static_cast<std::size_t>(random()) % std::max<std::size_t>(n, 1); };
  std::unique_ptr<Table> tables[2] = {std::make_unique<Table>(3), std::make_unique<Table>(5)};
  Model models[2] = {Model(3), Model(5)};
  for (int step = 0; step < 30000; ++step)
  {
    SCOPED_TRACE(testing::Message() << "seed 2512 step " << step);
    std::size_t const which = below(2);
    Table& table = *tables[which];
    Model& model = models[which];
    std::uint32_t const key = static_cast<std::uint32_t>(below(9)) * 0x1c71c71cu;
    Node const query(key);
    std::vector<Model::Entry>& cell = model.cell(key);
    std::size_t const what = below(100);
    if (what < 40)
    {
      bool const was_empty = cell.empty();
      ASSERT_EQ(table.insert_node(new Node(key, step)), was_empty);
      cell.insert(cell.begin(), {key, step});
    }
    else if (what < 78)
    {
      Names const all = model.names();
      if (!all.empty())
      {
        std::size_t const i = below(all.size());
        OzHashTableNode* const node = node_at(table, i);
        ASSERT_EQ(name_of(node), all[i]);
        table.splice_node(node);
        ASSERT_TRUE(is_free(node));
        delete node;
        for (std::vector<Model::Entry>& chain : model.cells)
          chain.erase(
              std::remove_if(chain.begin(), chain.end(), [&](auto const& e) { return e.second == all[i]; }),
              chain.end());
      }
    }
    else if (what < 92)
    {
      Names equal;
      for (Model::Entry const& entry : cell)
        if (entry.first == key)
          equal.push_back(entry.second);
      OzList<OzHashTableNode*> list;
      ASSERT_EQ(table.find_node(&query, &list), static_cast<int>(equal.size()));
      Names found;
      for (OzHashTableNode* const node : list)
        found.push_back(name_of(node));
      ASSERT_EQ(found, equal);
      ASSERT_EQ(name_of(table.find_node(&query)), equal.empty() ? -1 : equal[0]);
    }
    else if (what < 96)
    {
      *tables[1 - which] = table;
      models[1 - which] = model;
    }
    else if (what < 98)
    {
      tables[1 - which] = std::make_unique<Table>(table);
      models[1 - which] = model;
    }
    else if (what < 99 || below(4) != 0)
    {
      ASSERT_EQ(table.best_case(), model.length(true));
      ASSERT_EQ(table.worst_cast(), model.length(false));
      bool const descending = below(2) == 0;
      OzPriQueue<int, int> queue(descending);
      table.get_cell_distribution(queue);
      std::size_t before = model.cells[static_cast<std::size_t>(queue.extract())].size();
      for (std::size_t i = 1; i < model.cells.size(); ++i)
      {
        std::size_t const length = model.cells[static_cast<std::size_t>(queue.extract())].size();
        ASSERT_TRUE(descending ? before >= length : before <= length);
        before = length;
      }
      ASSERT_EQ(queue.count(), 0);
    }
    else
    {
      table.remove_all_elements();
      for (std::vector<Model::Entry>& chain : model.cells)
        chain.clear();
    }
    for (std::size_t i = 0; i < 2; ++i)
    {
      ASSERT_EQ(tables[i]->cells.size(), models[i].cells.size());
      ASSERT_EQ(names(*tables[i]), models[i].names());
    }
    ASSERT_EQ(Node::alive, 1 + static_cast<int>(models[0].names().size() + models[1].names().size()));
  }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(OzHashTableDeathTest, HashingIntoNoCellsDividesByZero)
{
  Table const table(0);
  Node const node(1);

  EXPECT_DEATH(table.find_index(&node), "");
}
#endif

TEST(OzHashMapFunctor, ItsVirtualFunctionsStandInTheirOrder)
{
  EXPECT_EQ(vtable_slot(&OzHashMapFunctor<int>::hash_function), 2);
  EXPECT_EQ(vtable_slot(&OzHashMapFunctor<int>::clone), 3);
  EXPECT_EQ(sizeof(OzHashMapFunctor<double>), sizeof(void*));
  EXPECT_EQ(sizeof(OzStdIntHashFunctor), 16u);
  EXPECT_EQ(sizeof(OzStdPtrdiffHashFunctor), 16u);
  EXPECT_EQ(sizeof(OzStdDoubleHashFunctor), 16u);
  EXPECT_EQ(sizeof(OzStdStringHashFunctor), 16u);
  EXPECT_TRUE((std::is_base_of_v<OzHashMapFunctor<int>, OzStdIntHashFunctor>));
  EXPECT_TRUE((std::is_base_of_v<OzHashMapFunctor<std::int64_t>, OzStdPtrdiffHashFunctor>));
  EXPECT_TRUE((std::is_base_of_v<OzHashMapFunctor<double>, OzStdDoubleHashFunctor>));
  EXPECT_TRUE((std::is_base_of_v<OzHashMapFunctor<OzString>, OzStdStringHashFunctor>));
  EXPECT_FALSE((std::is_convertible_v<double, OzStdIntHashFunctor>));
}

namespace
{
constexpr double HUGE_NUMBER = 1e300;
constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
} // namespace

TEST(OzStdIntHashFunctor, IsTheWholePartOfTheScaledMagnitude)
{
  struct
  {
    char const* what;
    double factor;
    int value;
    std::uint32_t hash;
  } const cases[] = {
      {"zero", 1.0, 0, 0},
      {"as it is", 1.0, 7, 7},
      {"a half is cut", 0.5, 7, 3},
      {"the sign does not count", 0.5, -7, 3},
      {"nor that of the factor", -0.5, 7, 3},
      {"a factor of zero", 0.0, 7, 0},
      {"the greatest", 1.0, 2147483647, 2147483647u},
      {"the least", 1.0, std::numeric_limits<int>::min(), 2147483648u},
      {"32 bits are full", 3.0, 1431655765, 4294967295u},
      {"32 bits overflow", 3.0, 1431655766, 2},
      {"2^62 + 2^32", 4294967296.0, 1073741825, 0},
      {"2^33 + 5", 1.0 + 2.0 / 3.0, 3, 5},
      {"just below 2^63", 4294967296.0 * 2 - 1, 1073741824, 3221225472u},
      {"2^63", 8589934592.0, 1073741824, 0},
      {"beyond the cap", HUGE_NUMBER, 1, 0},
      {"infinite", INFINITE, 1, 0},
      {"infinite and negative", INFINITE, -1, 0},
      {"infinity times zero", INFINITE, 0, 0},
      {"no number", NOT_A_NUMBER, 1, 0},
  };
  for (auto const& c : cases)
    EXPECT_EQ(OzStdIntHashFunctor(c.factor).hash_function(c.value), c.hash) << c.what;
  EXPECT_EQ(OzStdIntHashFunctor().hash_function(-41), 41u);
}

TEST(OzStdPtrdiffHashFunctor, IsTheWholePartOfTheScaledMagnitude)
{
  struct
  {
    char const* what;
    double factor;
    std::int64_t value;
    std::uint32_t hash;
  } const cases[] = {
      {"zero", 1.0, 0, 0},
      {"the sign does not count", 0.5, -7, 3},
      {"only the low bits", 1.0, 4294967296 * 5 + 12, 12},
      {"odd beyond 2^53: rounded to even", 1.0, 9007199254740993, 0},
      {"odd beyond 2^53: rounded up", 1.0, 9007199254740995, 4},
      {"just below 2^63 is rounded up to it", 1.0, std::numeric_limits<std::int64_t>::max(), 0},
      {"the last double below 2^63", 1.0, 9223372036854774784, 4294966272u},
      {"its negative", 1.0, -9223372036854774784, 4294966272u},
      {"the least is 2^63 too", 1.0, std::numeric_limits<std::int64_t>::min(), 0},
      {"half of the least", 0.5, std::numeric_limits<std::int64_t>::min(), 0},
      {"beyond the cap", 1e46, std::numeric_limits<std::int64_t>::max(), 0},
      {"no number", NOT_A_NUMBER, 1, 0},
  };
  for (auto const& c : cases)
    EXPECT_EQ(OzStdPtrdiffHashFunctor(c.factor).hash_function(c.value), c.hash) << c.what;
  EXPECT_EQ(OzStdPtrdiffHashFunctor().hash_function(-41), 41u);
}

TEST(OzStdDoubleHashFunctor, AppliesItsFactorTwice)
{
  struct
  {
    char const* what;
    double factor;
    double value;
    std::uint32_t hash;
  } const cases[] = {
      {"zero", 1.0, 0.0, 0},
      {"cut", 1.0, 1.999, 1},
      {"3, then twice that", 2.0, 1.6, 6},
      {"the sign does not count", 2.0, -1.6, 6},
      {"3, then half of it", 0.5, 7.9, 1},
      {"a negative factor counts in the second step", -2.0, 1.6, 4294967290u},
      {"low bits between the steps", 2.0, 2147483649.0, 4},
      {"all bits, and twice that", 2.0, 2147483647.75, 4294967294u},
      {"the last double below 2^63", 1.0, 9223372036854774784.0, 4294966272u},
      {"2^63", 1.0, 9223372036854775808.0, 0},
      {"just below the cap", 1.0, 9.9e63, 0},
      {"the cap", 1.0, 1e64, 0},
      {"beyond the cap", 1.0, HUGE_NUMBER, 0},
      {"beyond all numbers", HUGE_NUMBER, HUGE_NUMBER, 0},
      {"only the second step overflows", 1e20, 1e-19, 0},
      {"the second step ends at the least integer", -9223372036854775808.0, 1.0 / 9223372036854775808.0, 0},
      {"infinite", 1.0, -INFINITE, 0},
      {"no number", 1.0, NOT_A_NUMBER, 0},
      {"no factor", NOT_A_NUMBER, 1.0, 0},
      {"zero times infinity", INFINITE, 1e-320 * 0.0, 0},
  };
  for (auto const& c : cases)
    EXPECT_EQ(OzStdDoubleHashFunctor(c.factor).hash_function(c.value), c.hash) << c.what;
  EXPECT_EQ(OzStdDoubleHashFunctor().hash_function(-41.5), 41u);
}

TEST(OzStdStringHashFunctor, AddsTheFirstCharactersAsSignedBytes)
{
  struct
  {
    char const* what;
    int count;
    char const* text;
    std::uint32_t hash;
  } const cases[] = {
      {"three of four", 3, "abcd", 294},
      {"the same three", 3, "abcz", 294},
      {"in another order", 3, "cab", 294},
      {"fewer than wanted", 3, "a", 97},
      {"empty", 3, "", 0},
      {"none wanted", 0, "abc", 0},
      {"a negative number", -1, "abc", 0},
      {"one", 1, "abc", 97},
      {"all", 100, "abcd", 394},
      {"a byte above 127 counts as negative", 3, "\xff", 4294967295u},
      {"and may cancel another", 2, "\x01\xff", 0},
  };
  for (auto const& c : cases)
    EXPECT_EQ(OzStdStringHashFunctor(c.count).hash_function(c.text), c.hash) << c.what;
  EXPECT_EQ(OzStdStringHashFunctor().hash_function("abcd"), 294u);
}

TEST(OzStdStringHashFunctor, GoesByTheLengthNotByTheText)
{
  OzString text("a");
  text.append('\0');
  text.append('b');
  ASSERT_EQ(text.length(), 3u);

  EXPECT_EQ(OzStdStringHashFunctor(3).hash_function(text), 97u + 98u);
}

TEST(OzHashMapFunctor, ClonesHaveTheSameField)
{
  OzStdIntHashFunctor const a(2.0);
  OzStdPtrdiffHashFunctor const b(3.0);
  OzStdDoubleHashFunctor const c(2.0);
  OzStdStringHashFunctor const d(1);

  std::unique_ptr<OzHashMapFunctor<int>> const a2(a.clone());
  std::unique_ptr<OzHashMapFunctor<std::int64_t>> const b2(b.clone());
  std::unique_ptr<OzHashMapFunctor<double>> const c2(c.clone());
  std::unique_ptr<OzHashMapFunctor<OzString>> const d2(d.clone());

  EXPECT_EQ(a2->hash_function(5), 10u);
  EXPECT_EQ(b2->hash_function(5), 15u);
  EXPECT_EQ(c2->hash_function(1.6), 6u);
  EXPECT_EQ(d2->hash_function("abc"), 97u);
}

TEST(OzHashMapFunctor, CopiesHaveTheSameField)
{
  OzStdIntHashFunctor const a(2.0);
  OzStdIntHashFunctor copy(a);
  EXPECT_EQ(copy.hash_function(5), 10u);
  copy = OzStdIntHashFunctor(3.0);
  EXPECT_EQ(copy.hash_function(5), 15u);
}

namespace
{
/// A table of texts that hashes them by a functor which it owns.
class Words : public OzHashTable
{
public:
  struct Word : OzHashTableNode
  {
    explicit Word(OzString const& t)
      : text(t)
    {
    }
    bool equal(OzHashTableNode const* query) const override
    {
      return static_cast<Word const*>(query)->text == text;
    }
    OzHashTableNode* clone() const override { return new Word(*this); }
    OzString text;
  };

  Words(int n, OzHashMapFunctor<OzString> const& f)
    : OzHashTable(n)
    , functor(f.clone())
  {
  }
  void add(char const* text) { insert_node(new Word(text)); }
  int count(char const* text) const
  {
    Word const query(text);
    return find_node(&query, nullptr);
  }
  int longest() const { return worst_cast(); }

protected:
  std::uint32_t hash_value(OzHashTableNode const* node) const override
  {
    return functor->hash_function(static_cast<Word const*>(node)->text);
  }

private:
  std::unique_ptr<OzHashMapFunctor<OzString>> functor;
};
} // namespace

TEST(OzHashTable, ADerivedTableMayHashByAFunctor)
{
  Words words(16, OzStdStringHashFunctor(1));
  for (char const* const text : {"rim", "rod", "rim", "bend", "seam"})
    words.add(text);

  EXPECT_EQ(words.count("rim"), 2);
  EXPECT_EQ(words.count("rod"), 1);
  EXPECT_EQ(words.count("ring"), 0);
  EXPECT_EQ(words.longest(), 4); // 'r' and 'b' are 16 apart
}
