#include "ozheap.h"

#include "report_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
class Node : public OzHeapNode
{
public:
  explicit Node(int p, int n = 0)
    : priority(p)
    , name(n)
  {
    ++alive;
  }
  Node(Node const& other)
    : OzHeapNode(other)
    , priority(other.priority)
    , name(other.name)
  {
    if (clones_left == 0)
      throw std::runtime_error("no more clones");
    --clones_left;
    ++alive;
  }
  Node& operator=(Node const&) = default;
  ~Node() override { --alive; }

  bool precedes(OzHeapNode const* other, bool descending) const override
  {
    int const other_priority = static_cast<Node const*>(other)->priority;
    return descending ? priority > other_priority : priority < other_priority;
  }
  OzHeapNode* clone() const override { return new Node(*this); }

  int priority;
  int name; // tells nodes of equal priority apart
  static inline int alive = 0;
  static inline int clones_left = -1;
};

typedef std::vector<int> Ints;
constexpr int NOTHING = -1; // how a null entry is written

int priority_of(OzHeapNode const* node)
{
  return node != nullptr ? static_cast<Node const*>(node)->priority : NOTHING;
}

/// Opens what a heap keeps for derived classes.
class Probe : public OzHeap
{
public:
  using OzHeap::attach;
  using OzHeap::delete_heap_node;
  using OzHeap::descending;
  using OzHeap::detach;
  using OzHeap::exchange;
  using OzHeap::heap_size;
  using OzHeap::heapify;
  using OzHeap::left_child;
  using OzHeap::move;
  using OzHeap::nodes;
  using OzHeap::OzHeap;
  using OzHeap::parent;
  using OzHeap::right_child;

  Probe() = default;

  Node* node(std::uint64_t i) const { return static_cast<Node*>(nodes[i]); }
  Ints priorities() const
  {
    Ints result;
    for (void* const entry : nodes)
      result.push_back(priority_of(static_cast<Node*>(entry)));
    return result;
  }
};

void insert(OzHeap& heap, Ints const& priorities)
{
  for (int const priority : priorities)
    heap.insert_node(new Node(priority));
}

void add(OzHeap& heap, Ints const& priorities)
{
  for (int const priority : priorities)
    heap.add_node(priority != NOTHING ? new Node(priority) : nullptr);
}

Ints extract_all(Probe& heap)
{
  Ints result;
  while (heap.heap_size > 0)
  {
    OzHeapNode* const node = heap.extract_first_node();
    result.push_back(priority_of(node));
    delete node;
  }
  return result;
}

int extract(OzHeap& heap)
{
  std::unique_ptr<OzHeapNode> const node(heap.extract_first_node());
  return priority_of(node.get());
}

[[noreturn]] void stop(char const* file, int)
{
  throw std::runtime_error(file);
}

/// Stops an operation at its first report.
class StopAtReport
{
public:
  StopAtReport() { dkb_assertion_handler = &stop; }
  ~StopAtReport() { dkb_assertion_handler = nullptr; }
  StopAtReport(StopAtReport const&) = delete;
  StopAtReport& operator=(StopAtReport const&) = delete;
};

/// Writes down every change of its entries.
class Observed : public Probe
{
public:
  using Probe::Probe;

  std::vector<std::string> log;

protected:
  void move(int i, void* node) override
  {
    note("move", i, node);
    Probe::move(i, node);
  }
  void attach(int i, void* node) override
  {
    note("attach", i, node);
    Probe::attach(i, node);
  }
  void detach(int i, void* node) override
  {
    note("detach", i, node);
    Probe::detach(i, node);
  }
  void exchange(void*& a, void*& b) override
  {
    log.push_back("exchange " + std::to_string(&a - nodes.begin()) + " " +
                  std::to_string(&b - nodes.begin()));
    Probe::exchange(a, b);
  }

private:
  void note(char const* what, int i, void* node)
  {
    log.push_back(what + (" " + std::to_string(i)) + " " +
                  std::to_string(priority_of(static_cast<Node*>(node))));
  }
};

typedef std::vector<std::string> Log;
} // namespace

TEST(OzHeap, BeginsEmptyAndDescending)
{
  Probe const heap;

  EXPECT_EQ(heap.heap_size, 0);
  EXPECT_TRUE(heap.descending);
  EXPECT_EQ(heap.nodes.size(), 0u);
  EXPECT_FALSE(Probe(false).descending);
  EXPECT_TRUE(Probe(true).descending);
}

TEST(OzHeap, ItsDirectionIsNotConvertedFromOtherValues)
{
  EXPECT_FALSE((std::is_convertible_v<bool, OzHeap>));
}

TEST(OzHeap, NumbersItsTreeFromZero)
{
  Probe const heap;
  struct
  {
    int i;
    int parent;
    int left;
    int right;
  } const cases[] = {
      {0, -1, 1, 2}, {1, 0, 3, 4}, {2, 0, 5, 6}, {3, 1, 7, 8}, {4, 1, 9, 10}, {5, 2, 11, 12},
  };
  for (auto const& c : cases)
  {
    EXPECT_EQ(heap.parent(c.i), c.parent) << c.i;
    EXPECT_EQ(heap.left_child(c.i), c.left) << c.i;
    EXPECT_EQ(heap.right_child(c.i), c.right) << c.i;
  }
}

TEST(OzHeap, GivesItsNodesInTheOrderOfItsDirection)
{
  Probe ascending(false);
  insert(ascending, {3, 1, 2});
  EXPECT_EQ(extract_all(ascending), (Ints{1, 2, 3}));

  Probe descending(true);
  insert(descending, {3, 1, 2});
  EXPECT_EQ(extract_all(descending), (Ints{3, 2, 1}));
}

TEST(OzHeap, InsertionPutsANodeBelowTheFirstThatItDoesNotPrecede)
{
  Probe heap;

  insert(heap, {5, 4, 3, 2});
  EXPECT_EQ(heap.priorities(), (Ints{5, 4, 3, 2}));
  insert(heap, {6});
  EXPECT_EQ(heap.priorities(), (Ints{6, 5, 3, 2, 4}));
  insert(heap, {3});
  EXPECT_EQ(heap.priorities(), (Ints{6, 5, 3, 2, 4, 3}));
  EXPECT_EQ(heap.heap_size, 6);
}

TEST(OzHeap, InsertionOfNullIsIgnoredSilently)
{
  Probe heap;
  insert(heap, {1});
  ReportRecorder const recorder;

  heap.insert_node(nullptr);
  EXPECT_EQ(heap.heap_size, 1);
  heap.add_node(new Node(2));
  heap.insert_node(nullptr);

  EXPECT_EQ(heap.nodes.size(), 2u);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzHeap, InsertionIntoAnUnorderedArrayIsReportedAndAppends)
{
  Probe heap;
  add(heap, {1, 2});
  ReportRecorder const recorder;

  heap.insert_node(new Node(3));

  EXPECT_EQ(recorder.units(), reports(1, "ozheap.cpp"));
  EXPECT_EQ(heap.heap_size, -1);
  EXPECT_EQ(heap.priorities(), (Ints{1, 2, 3}));
  heap.build_heap();
  EXPECT_EQ(extract_all(heap), (Ints{3, 2, 1}));
}

TEST(OzHeap, InsertionIntoAnUnorderedArrayLosesNothingWithoutAHandler)
{
  Probe heap;
  insert(heap, {2, 3, 1});
  heap.sort_nodes();

  heap.insert_node(new Node(0));

  EXPECT_EQ(heap.heap_size, -1);
  EXPECT_EQ(heap.priorities(), (Ints{1, 2, 3, 0}));
}

TEST(OzHeap, EqualPrioritiesNeitherSwapNorGetLost)
{
  Probe heap;
  for (int name = 0; name < 7; ++name)
    heap.insert_node(new Node(5, name));

  for (int i = 0; i < 7; ++i)
    EXPECT_EQ(heap.node(static_cast<std::uint64_t>(i))->name, i);
  heap.heapify(0);
  heap.build_heap();
  for (int i = 0; i < 7; ++i)
    EXPECT_EQ(heap.node(static_cast<std::uint64_t>(i))->name, i);
  EXPECT_EQ(extract_all(heap), (Ints{5, 5, 5, 5, 5, 5, 5}));
}

TEST(OzHeap, OfTwoEqualChildrenTheLeftOneRises)
{
  Probe heap;
  heap.add_node(new Node(1, 0));
  heap.add_node(new Node(2, 1));
  heap.add_node(new Node(2, 2));

  heap.build_heap();

  EXPECT_EQ(heap.node(0)->name, 1);
  EXPECT_EQ(heap.node(1)->name, 0);
  EXPECT_EQ(heap.node(2)->name, 2);
}

TEST(OzHeap, AddAppendsUnsorted)
{
  Probe heap;
  insert(heap, {2});

  add(heap, {1, 3});

  EXPECT_EQ(heap.heap_size, -1);
  EXPECT_EQ(heap.priorities(), (Ints{2, 1, 3}));
}

TEST(OzHeap, BuildMakesAHeapOfAllEntries)
{
  Probe heap;
  add(heap, {1, 2, 3, 4, 5, 6});

  heap.build_heap();

  EXPECT_EQ(heap.heap_size, 6);
  EXPECT_EQ(heap.priorities(), (Ints{6, 5, 3, 4, 2, 1}));
}

TEST(OzHeap, BuildOfAnEmptyArrayIsAnEmptyHeap)
{
  Probe heap;
  heap.heap_size = -1;

  heap.build_heap();

  EXPECT_EQ(heap.heap_size, 0);
}

TEST(OzHeap, HeapifySinksANodeToItsPlace)
{
  struct
  {
    char const* what;
    Ints before;
    int i;
    Ints after;
  } const cases[] = {
      {"to the end of the way", {1, 9, 8, 7, 6}, 0, {9, 7, 8, 1, 6}},
      {"half of it", {7, 9, 8, 6, 5}, 0, {9, 7, 8, 6, 5}},
      {"right", {1, 8, 9, 7, 6, 5, 4}, 0, {9, 8, 5, 7, 6, 1, 4}},
      {"not at all", {9, 8, 7}, 0, {9, 8, 7}},
      {"equal to its child", {9, 9, 7}, 0, {9, 9, 7}},
      {"to an only child", {1, 2}, 0, {2, 1}},
      {"at an only child", {2, 1}, 0, {2, 1}},
      {"to an only child at the end of the way", {1, 9, 8, 7}, 0, {9, 7, 8, 1}},
      {"from inside", {9, 1, 8, 7, 6}, 1, {9, 7, 8, 1, 6}},
      {"from inside, on the right", {9, 8, 1, 7, 6, 4, 5}, 2, {9, 8, 5, 7, 6, 4, 1}},
      {"a leaf", {1, 2, 3}, 2, {1, 2, 3}},
      {"behind the end", {1, 2, 3}, 3, {1, 2, 3}},
      {"the only one", {1}, 0, {1}},
  };
  for (auto const& c : cases)
  {
    Probe heap;
    add(heap, c.before);
    heap.heap_size = static_cast<int>(c.before.size());

    heap.heapify(c.i);

    EXPECT_EQ(heap.priorities(), c.after) << c.what;
  }
}

TEST(OzHeap, HeapifyLooksAtTheHeapNotAtTheWholeArray)
{
  Probe heap;
  add(heap, {1, 2, 9});
  heap.heap_size = 2;

  heap.heapify(0);
  EXPECT_EQ(heap.priorities(), (Ints{2, 1, 9}));

  heap.heap_size = -1;
  heap.heapify(0);
  EXPECT_EQ(heap.priorities(), (Ints{2, 1, 9}));
}

TEST(OzHeap, NullEntriesSinkBelowTheNodesAndAreNotReported)
{
  Probe heap;
  add(heap, {NOTHING, 2, NOTHING, 5, NOTHING, 4, 3});
  ReportRecorder const recorder;

  heap.build_heap();
  EXPECT_EQ(heap.heap_size, 7);
  insert(heap, {1});

  EXPECT_EQ(extract_all(heap), (Ints{5, 4, 3, 2, 1, NOTHING, NOTHING, NOTHING}));
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzHeap, AnInsertedNodeRisesOverNullEntries)
{
  Probe heap;
  add(heap, {5, NOTHING});
  heap.build_heap();

  insert(heap, {4, 3});

  EXPECT_EQ(heap.priorities(), (Ints{5, 3, 4, NOTHING}));
}

TEST(OzHeap, ExtractionMovesTheLastNodeToTheTopAndSinksIt)
{
  Probe heap;
  insert(heap, {9, 8, 7, 6, 5});

  EXPECT_EQ(extract(heap), 9);

  EXPECT_EQ(heap.priorities(), (Ints{8, 6, 7, 5}));
  EXPECT_EQ(heap.heap_size, 4);
}

TEST(OzHeap, ExtractionOfTheOnlyNodeLeavesAnEmptyArray)
{
  Probe heap;
  Node* const node = new Node(1);
  heap.insert_node(node);

  OzHeapNode* const extracted = heap.extract_first_node();

  EXPECT_EQ(extracted, node);
  EXPECT_EQ(heap.heap_size, 0);
  EXPECT_EQ(heap.nodes.size(), 0u);
  delete extracted;
}

TEST(OzHeap, ExtractionFromAnEmptyHeapIsReportedAndGivesNull)
{
  Probe heap;
  ReportRecorder const recorder;

  EXPECT_EQ(heap.extract_first_node(), nullptr);

  EXPECT_EQ(recorder.units(), reports(1, "ozheap.cpp"));
  EXPECT_EQ(heap.heap_size, 0);
}

TEST(OzHeap, ExtractionFromAnUnorderedArrayIsReportedUntilItIsBuilt)
{
  Probe heap;
  add(heap, {1, 2});
  {
    ReportRecorder const recorder;
    EXPECT_EQ(heap.extract_first_node(), nullptr);
    EXPECT_EQ(recorder.units(), reports(1, "ozheap.cpp"));
  }
  EXPECT_EQ(heap.extract_first_node(), nullptr) << "without a handler too";
  EXPECT_EQ(heap.heap_size, -1);
  EXPECT_EQ(heap.nodes.size(), 2u);

  heap.build_heap();
  EXPECT_EQ(extract_all(heap), (Ints{2, 1}));
}

TEST(OzHeap, FirstNodeLooksAtTheTop)
{
  Probe heap;
  insert(heap, {1, 3, 2});
  ReportRecorder const recorder;

  EXPECT_EQ(priority_of(heap.first_node()), 3);

  EXPECT_EQ(heap.heap_size, 3);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzHeap, FirstNodeOfAnUnorderedArrayIsReportedAndItsFirstEntry)
{
  Probe heap;
  add(heap, {1, 3});
  ReportRecorder const recorder;

  EXPECT_EQ(priority_of(heap.first_node()), 1);

  EXPECT_EQ(recorder.units(), reports(1, "ozheap.cpp"));
}

TEST(OzHeap, FirstNodeOfAnEmptyHeapIsReportedByTheArrayAlone)
{
  Probe heap;
  heap.nodes.reserve(1, true);
  ReportRecorder const recorder;

  EXPECT_EQ(heap.first_node(), nullptr);

  EXPECT_EQ(recorder.units(), reports(1, "ozarray_i.h"));
}

TEST(OzHeap, SortLeavesTheNodeThatPrecedesAllLast)
{
  Probe descending(true);
  add(descending, {3, 1, 2, 5, 4, 1});
  descending.sort_nodes();
  EXPECT_EQ(descending.priorities(), (Ints{1, 1, 2, 3, 4, 5}));
  EXPECT_EQ(descending.heap_size, -1);

  Probe ascending(false);
  insert(ascending, {3, 1, 2, 5, 4, 1});
  ascending.sort_nodes();
  EXPECT_EQ(ascending.priorities(), (Ints{5, 4, 3, 2, 1, 1}));
  EXPECT_EQ(ascending.heap_size, -1);
}

TEST(OzHeap, SortOfNoneOrOneLeavesTheArrayAlone)
{
  Probe none;
  none.sort_nodes();
  EXPECT_EQ(none.heap_size, -1);
  EXPECT_EQ(none.nodes.size(), 0u);

  Probe one;
  insert(one, {7});
  one.sort_nodes();
  EXPECT_EQ(one.heap_size, -1);
  EXPECT_EQ(one.priorities(), (Ints{7}));
}

TEST(OzHeap, ASortedArrayBecomesAHeapAgain)
{
  Probe heap;
  insert(heap, {1, 2, 3, 4});
  heap.sort_nodes();

  heap.build_heap();

  EXPECT_EQ(extract_all(heap), (Ints{4, 3, 2, 1}));
}

TEST(OzHeap, MergeTakesAllNodesOver)
{
  Probe heap;
  Probe other(false);
  insert(heap, {5, 1});
  insert(other, {4, 2, 6});
  int const alive = Node::alive;

  heap.merge_nodes(other);

  EXPECT_EQ(other.heap_size, 0);
  EXPECT_EQ(other.nodes.size(), 0u);
  EXPECT_EQ(Node::alive, alive) << "nothing is cloned";
  EXPECT_EQ(extract_all(heap), (Ints{6, 5, 4, 2, 1}));
}

TEST(OzHeap, MergeOfAnEmptyHeapChangesNothing)
{
  Probe heap;
  Probe other;
  insert(heap, {1});
  ReportRecorder const recorder;

  heap.merge_nodes(other);

  EXPECT_EQ(heap.priorities(), (Ints{1}));
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzHeap, MergeWithItselfIsIgnored)
{
  Probe heap;
  insert(heap, {1, 2});
  ReportRecorder const recorder;

  heap.merge_nodes(heap);

  EXPECT_EQ(heap.priorities(), (Ints{2, 1}));
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzHeap, MergeFromAnUnorderedArrayIsReportedAndStopsAtOnce)
{
  Probe heap;
  Probe other;
  insert(heap, {1});
  add(other, {2, 3});
  ReportRecorder const recorder;

  heap.merge_nodes(other);

  EXPECT_EQ(recorder.units(), reports(2, "ozheap.cpp")) << "by the merge, then by the extraction";
  EXPECT_EQ(heap.priorities(), (Ints{1}));
  EXPECT_EQ(other.priorities(), (Ints{2, 3}));
  EXPECT_EQ(other.heap_size, -1);
}

TEST(OzHeap, MergeIntoAnUnorderedArrayIsReportedAndAppends)
{
  Probe heap;
  Probe other;
  add(heap, {1});
  insert(other, {2, 3});
  ReportRecorder const recorder;

  heap.merge_nodes(other);

  EXPECT_EQ(recorder.units(), reports(3, "ozheap.cpp")) << "by the merge, then by each insertion";
  EXPECT_EQ(heap.priorities(), (Ints{1, 3, 2}));
  EXPECT_EQ(heap.heap_size, -1);
  EXPECT_EQ(other.heap_size, 0);
}

TEST(OzHeap, MergeOfTwoUnorderedArraysIsReportedOnceByTheMerge)
{
  Probe heap;
  Probe other;
  add(heap, {1});
  add(other, {2});
  ReportRecorder const recorder;

  heap.merge_nodes(other);

  EXPECT_EQ(recorder.units(), reports(2, "ozheap.cpp")) << "by the merge, then by the extraction";
}

TEST(OzHeap, MergeStopsAtTheFirstNull)
{
  Probe heap;
  Probe other;
  add(other, {NOTHING, 2, NOTHING, 3});
  other.build_heap();

  heap.merge_nodes(other);

  EXPECT_EQ(heap.priorities(), (Ints{3, 2}));
  EXPECT_EQ(other.heap_size, 1);
  EXPECT_EQ(other.priorities(), (Ints{NOTHING}));
}

TEST(OzHeap, AMergeThatIsStoppedLosesNoNode)
{
  {
    Probe heap;
    Probe other;
    add(heap, {1});
    insert(other, {2, 3});
    heap.heap_size = std::numeric_limits<int>::max();

    EXPECT_THROW(heap.merge_nodes(other), std::bad_alloc);

    heap.heap_size = 1;
    EXPECT_EQ(heap.priorities(), (Ints{1}));
    EXPECT_EQ(extract_all(other), (Ints{3, 2}));
  }
  EXPECT_EQ(Node::alive, 0);
}

TEST(OzHeap, RefusesMoreNodesThanItCanCount)
{
  Probe heap;
  insert(heap, {1});
  Node node(2);
  heap.heap_size = std::numeric_limits<int>::max();

  EXPECT_THROW(heap.insert_node(&node), std::bad_alloc);

  EXPECT_EQ(heap.heap_size, 2147483647);
  EXPECT_EQ(heap.priorities(), (Ints{1}));
}

TEST(OzHeap, RemovalDeletesAllNodesAndLeavesNulls)
{
  Probe heap;
  insert(heap, {1, 2, 3});

  heap.remove_all_nodes();

  EXPECT_EQ(Node::alive, 0);
  EXPECT_EQ(heap.heap_size, 0);
  EXPECT_EQ(heap.priorities(), (Ints{NOTHING, NOTHING, NOTHING}));
  ReportRecorder const recorder;
  EXPECT_EQ(heap.first_node(), nullptr);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzHeap, InsertionAfterRemovalDropsTheNulls)
{
  Probe heap;
  insert(heap, {1, 2, 3});
  heap.remove_all_nodes();

  insert(heap, {4});
  EXPECT_EQ(heap.priorities(), (Ints{4}));
  insert(heap, {5});
  EXPECT_EQ(heap.priorities(), (Ints{5, 4}));
}

TEST(OzHeap, RemovalPassesOverNullEntriesAndEndsTheUnorderedState)
{
  Probe heap;
  add(heap, {1, NOTHING, 2});

  heap.remove_all_nodes();

  EXPECT_EQ(Node::alive, 0);
  EXPECT_EQ(heap.heap_size, 0);
}

TEST(OzHeap, DeletesItsNodesAtItsEnd)
{
  {
    Probe heap;
    insert(heap, {1, 2, 3});
    add(heap, {4, NOTHING});
    ASSERT_EQ(Node::alive, 4);
  }

  EXPECT_EQ(Node::alive, 0);
}

TEST(OzHeap, DeleteHeapNodeAcceptsNull)
{
  Probe heap;

  heap.delete_heap_node(nullptr);
  heap.delete_heap_node(new Node(1));

  EXPECT_EQ(Node::alive, 0);
}

TEST(OzHeap, ACopyHasNodesOfItsOwnInTheSameOrder)
{
  Probe heap(false);
  insert(heap, {3, 1, 2});

  Probe copy(heap);

  EXPECT_FALSE(copy.descending);
  EXPECT_EQ(copy.heap_size, 3);
  EXPECT_EQ(copy.priorities(), heap.priorities());
  for (std::uint64_t i = 0; i < 3; ++i)
    EXPECT_NE(copy.node(i), heap.node(i));
  EXPECT_EQ(extract_all(copy), (Ints{1, 2, 3}));
  EXPECT_EQ(extract_all(heap), (Ints{1, 2, 3}));
}

TEST(OzHeap, ACopyOfAnUnorderedArrayIsUnorderedAndKeepsNulls)
{
  Probe heap;
  add(heap, {1, NOTHING, 2});

  Probe const copy(heap);

  EXPECT_EQ(copy.heap_size, -1);
  EXPECT_EQ(copy.priorities(), (Ints{1, NOTHING, 2}));
}

TEST(OzHeap, AssignmentReplacesNodesAndDirection)
{
  for (Ints const& before : {Ints{}, Ints{9}, Ints{9, 8, 7, 6, 5}})
  {
    Probe source(false);
    insert(source, {1, 2, 3});
    Probe target(true);
    insert(target, before);

    Probe& result = (target = source);

    EXPECT_EQ(&result, &target);
    EXPECT_FALSE(target.descending);
    EXPECT_EQ(target.heap_size, 3);
    EXPECT_EQ(target.priorities(), (Ints{1, 2, 3}));
    EXPECT_EQ(Node::alive, 6);
  }
}

TEST(OzHeap, SelfAssignmentKeepsTheNodes)
{
  Probe heap;
  insert(heap, {1, 2});
  Node* const first = heap.node(0);
  Probe const& same = heap;

  heap = same;

  EXPECT_EQ(heap.node(0), first);
  EXPECT_EQ(Node::alive, 2);
}

TEST(OzHeap, ACloneThatThrowsLeavesTheTargetAsItWas)
{
  Probe source(false);
  Probe target(true);
  insert(source, {1, 2, 3});
  insert(target, {4, 5});

  Node::clones_left = 2;
  EXPECT_THROW(target = source, std::runtime_error);
  Node::clones_left = -1;

  EXPECT_TRUE(target.descending);
  EXPECT_EQ(target.heap_size, 2);
  EXPECT_EQ(target.priorities(), (Ints{5, 4}));
  EXPECT_EQ(Node::alive, 5);
}

TEST(OzHeap, PrimitivesWriteToTheArray)
{
  Probe heap;
  Node a(1);
  Node b(2);

  heap.attach(0, &a);
  EXPECT_EQ(heap.nodes.size(), 1u) << "one past the end grows the array";
  heap.attach(1, &b);
  EXPECT_EQ(heap.nodes.size(), 2u);
  heap.exchange(heap.nodes[0], heap.nodes[1]);
  EXPECT_EQ(heap.priorities(), (Ints{2, 1}));
  heap.attach(0, &a);
  EXPECT_EQ(heap.priorities(), (Ints{1, 1}));
  EXPECT_EQ(heap.nodes.size(), 2u);
  heap.move(0, &b);
  EXPECT_EQ(heap.priorities(), (Ints{2, 1}));
  heap.detach(0, &b);
  heap.detach(1, nullptr);
  EXPECT_EQ(heap.priorities(), (Ints{NOTHING, NOTHING}));
}

TEST(OzHeap, PrimitivesLeaveABadIndexToTheArray)
{
  Probe heap;
  Node a(1);
  heap.nodes.reserve(4, true);
  ReportRecorder const recorder;

  heap.move(0, &a);
  heap.attach(2, &a);
  heap.detach(0, &a);

  EXPECT_EQ(recorder.units(), reports(3, "ozarray_i.h"));
  EXPECT_EQ(heap.nodes.size(), 0u);
  heap.nodes.resize(3, true);
  heap.detach(2, &a);
}

TEST(OzHeap, InsertionIsSeenAsMovesAndOneAttachment)
{
  Observed heap;
  insert(heap, {1, 2, 3, 4});

  EXPECT_EQ(heap.log, (Log{"attach 0 1", "move 1 1", "attach 0 2", "move 2 2", "attach 0 3", "move 3 1",
                           "move 1 3", "attach 0 4"}));
}

TEST(OzHeap, ExtractionIsSeenAsDetachmentMoveAndExchanges)
{
  Observed heap;
  insert(heap, {4, 3, 2, 1});
  heap.log.clear();

  delete heap.extract_first_node();
  EXPECT_EQ(heap.log, (Log{"detach 0 4", "move 0 1", "exchange 0 1"}));
  heap.log.clear();

  delete heap.extract_first_node();
  EXPECT_EQ(heap.log, (Log{"detach 0 3", "move 0 2"}));
  heap.log.clear();

  delete heap.extract_first_node();
  delete heap.extract_first_node();
  EXPECT_EQ(heap.log, (Log{"detach 0 2", "move 0 1", "detach 0 1"}));
}

TEST(OzHeap, ASinkingNodeIsSeenAsExchangesFromAboveDownwards)
{
  Observed heap;
  add(heap, {1, 7, 9, 5, 4, 6, 8, 0});
  heap.heap_size = 8;
  heap.log.clear();

  heap.heapify(0);
  EXPECT_EQ(heap.log, (Log{"exchange 0 2", "exchange 2 6"}));
}

TEST(OzHeap, NullEntriesAreNotExchangedWithEachOther)
{
  Observed heap;
  add(heap, {NOTHING, NOTHING, NOTHING, NOTHING});
  heap.log.clear();

  heap.build_heap();

  EXPECT_EQ(heap.log, Log{});
}

TEST(OzHeap, AddSortRemoveAndCopyAreSeenThroughThePrimitives)
{
  Observed heap;

  add(heap, {1, 2});
  EXPECT_EQ(heap.log, (Log{"attach 0 1", "attach 1 2"}));
  heap.log.clear();

  heap.sort_nodes();
  EXPECT_EQ(heap.log, (Log{"exchange 0 1", "exchange 0 1"})) << "once to build, once to sort";
  heap.log.clear();

  Observed source;
  add(source, {8});
  static_cast<OzHeap&>(heap) = source;
  EXPECT_EQ(heap.log, (Log{"detach 0 1", "detach 1 2", "attach 0 8"}));
  heap.log.clear();

  heap.remove_all_nodes();
  EXPECT_EQ(heap.log, (Log{"detach 0 8"}));
}

TEST(OzHeapNode, CopyingTheBaseDoesNothing)
{
  Node a(1);
  Node const b(2);

  static_cast<OzHeapNode&>(a) = b;

  EXPECT_EQ(a.priority, 1);
}

namespace
{
/// The heap word by word: two comparisons a level from above downwards, on pairs of priority and name. A null
/// entry has the priority NOTHING and belongs below all others.
class SlowHeap
{
public:
  typedef std::pair<int, int> Entry;

  explicit SlowHeap(bool descending_order)
    : descending(descending_order)
  {
  }

  void insert(Entry entry)
  {
    if (size == -1)
    {
      entries.push_back(entry);
      return;
    }
    entries.resize(static_cast<std::size_t>(size));
    entries.push_back(entry);
    ++size;
    for (std::size_t i = entries.size() - 1; i > 0 && above(entries[i], entries[(i - 1) / 2]);
         i = (i - 1) / 2)
      std::swap(entries[i], entries[(i - 1) / 2]);
  }
  void add(Entry entry)
  {
    size = -1;
    entries.push_back(entry);
  }
  void sift(std::size_t i)
  {
    while (true)
    {
      std::size_t best = i;
      for (std::size_t child = 2 * i + 1; child <= 2 * i + 2; ++child)
      {
        if (static_cast<int>(child) < size && above(entries[child], entries[best]))
          best = child;
      }
      if (best == i)
        return;
      std::swap(entries[i], entries[best]);
      i = best;
    }
  }
  void build()
  {
    size = static_cast<int>(entries.size());
    for (std::size_t i = entries.size() / 2; i > 0; --i)
      sift(i - 1);
  }
  bool extract(Entry& entry)
  {
    if (size < 1)
      return false;
    entry = entries.front();
    entries.front() = entries.back();
    entries.pop_back();
    --size;
    sift(0);
    return true;
  }
  void sort()
  {
    build();
    for (std::size_t i = entries.size(); i > 1; --i)
    {
      std::swap(entries[0], entries[i - 1]);
      --size;
      sift(0);
    }
    size = -1;
  }
  void merge(SlowHeap& other)
  {
    Entry entry;
    while (other.size != 0 && other.extract(entry) && entry.first != NOTHING)
      insert(entry);
  }
  void clear()
  {
    std::fill(entries.begin(), entries.end(), Entry(NOTHING, 0));
    size = 0;
  }

  bool descending;
  int size = 0;
  std::vector<Entry> entries;

private:
  bool above(Entry const& a, Entry const& b) const
  {
    if (a.first == NOTHING || b.first == NOTHING)
      return a.first != NOTHING && b.first == NOTHING;
    return descending ? a.first > b.first : a.first < b.first;
  }
};

SlowHeap::Entry entry_of(void const* node)
{
  if (node == nullptr)
    return {NOTHING, 0};
  return {static_cast<Node const*>(node)->priority, static_cast<Node const*>(node)->name};
}

std::vector<SlowHeap::Entry> entries_of(Probe const& heap)
{
  std::vector<SlowHeap::Entry> result;
  for (void* const node : heap.nodes)
    result.push_back(entry_of(node));
  return result;
}

void walk_beside_the_slow_heap(bool descending, unsigned seed)
{
  std::mt19937 random(seed);
  auto const below = [&random](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
  Probe heaps[2] = {Probe(descending), Probe(descending)};
  SlowHeap models[2] = {SlowHeap(descending), SlowHeap(descending)};
  int name = 0;
  for (int step = 0; step < 30000; ++step)
  {
    SCOPED_TRACE(testing::Message() << "seed " << seed << " step " << step);
    int const which = below(2);
    Probe& heap = heaps[which];
    SlowHeap& model = models[which];
    int const priority = below(12);
    ++name;
    int const what = below(100);
    if (what < 45)
    {
      heap.insert_node(new Node(priority, name));
      model.insert({priority, name});
    }
    else if (what < 55)
    {
      for (int i = below(4); i >= 0; --i)
      {
        bool const null = below(10) == 0;
        heap.add_node(null ? nullptr : new Node(priority, name));
        model.add(null ? SlowHeap::Entry(NOTHING, 0) : SlowHeap::Entry(priority, name));
      }
    }
    else if (what < 65)
    {
      heap.build_heap();
      model.build();
    }
    else if (what < 92)
    {
      std::unique_ptr<OzHeapNode> const node(heap.extract_first_node());
      SlowHeap::Entry expected(NOTHING, 0);
      model.extract(expected);
      ASSERT_EQ(entry_of(node.get()), expected);
    }
    else if (what < 94)
    {
      heap.sort_nodes();
      model.sort();
    }
    else if (what < 96)
    {
      heap.merge_nodes(heaps[1 - which]);
      model.merge(models[1 - which]);
    }
    else if (what < 98)
    {
      heaps[1 - which] = heap;
      models[1 - which] = model;
    }
    else if (what < 99)
    {
      Probe const copy(heap);
      ASSERT_EQ(entries_of(copy), model.entries);
    }
    else if (below(3) == 0)
    {
      heap.remove_all_nodes();
      model.clear();
    }
    for (int i = 0; i < 2; ++i)
    {
      ASSERT_EQ(heaps[i].heap_size, models[i].size);
      ASSERT_EQ(entries_of(heaps[i]), models[i].entries);
    }
  }
}
} // namespace

TEST(OzHeap, AgreesEntryByEntryWithTheHeapWordByWordDescending)
{
  walk_beside_the_slow_heap(true, 90001);
  EXPECT_EQ(Node::alive, 0);
}

TEST(OzHeap, AgreesEntryByEntryWithTheHeapWordByWordAscending)
{
  walk_beside_the_slow_heap(false, 90002);
  EXPECT_EQ(Node::alive, 0);
}

// Heaps that no cache holds sink their nodes in another loop.
TEST(OzHeap, ALargeHeapAgreesWithTheHeapWordByWord)
{
  std::mt19937 random(90003);
  Probe heap;
  SlowHeap model(true);
  for (int i = 0; i < 80000; ++i)
  {
    int const priority = static_cast<int>(random() % 5000);
    heap.insert_node(new Node(priority, i));
    model.insert({priority, i});
  }
  ASSERT_EQ(entries_of(heap), model.entries);

  for (int i = 0; i < 50000; ++i)
  {
    std::unique_ptr<OzHeapNode> const node(heap.extract_first_node());
    SlowHeap::Entry expected;
    ASSERT_TRUE(model.extract(expected));
    ASSERT_EQ(entry_of(node.get()), expected) << i;
  }
  ASSERT_EQ(entries_of(heap), model.entries);

  for (int i = 0; i < 60001; ++i)
  {
    heap.add_node(i % 100 == 0 ? nullptr : new Node(i % 700, i));
    model.add(i % 100 == 0 ? SlowHeap::Entry(NOTHING, 0) : SlowHeap::Entry(i % 700, i));
  }
  heap.build_heap();
  model.build();
  ASSERT_EQ(entries_of(heap), model.entries);
  heap.sort_nodes();
  model.sort();
  ASSERT_EQ(entries_of(heap), model.entries);
}
