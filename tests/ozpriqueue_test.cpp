#include "ozpriqueue.h"

#include "report_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <queue>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{
template <class Queue>
auto extract_all(Queue& queue)
{
  std::vector<decltype(queue.extract())> result;
  while (queue.count() > 0)
    result.push_back(queue.extract());
  return result;
}

/// Opens what a queue keeps for derived classes.
class Probe : public OzPriQueue<int, int>
{
public:
  using OzPriQueue<int, int>::descending;
  using OzPriQueue<int, int>::heap_size;
  using OzPriQueue<int, int>::nodes;
  using OzPriQueue<int, int>::OzPriQueue;
};

[[noreturn]] void stop(char const* file, int)
{
  throw std::runtime_error(file);
}
} // namespace

TEST(OzPriQueueNode, PrecedesByPriorityAloneAndNeverAnEqual)
{
  OzPriQueueNode<int, int> const low(9, 1);
  OzPriQueueNode<int, int> const high(1, 2);
  OzPriQueueNode<int, int> const also_high(5, 2);

  EXPECT_TRUE(high.precedes(&low, true));
  EXPECT_FALSE(low.precedes(&high, true));
  EXPECT_TRUE(low.precedes(&high, false));
  EXPECT_FALSE(high.precedes(&low, false));
  EXPECT_FALSE(high.precedes(&also_high, true));
  EXPECT_FALSE(high.precedes(&also_high, false));
}

TEST(OzPriQueueNode, ACloneHasBothFields)
{
  OzPriQueueNode<std::string, int> const node("seven", 7);

  std::unique_ptr<OzHeapNode> const clone(node.clone());

  auto const* const copy = dynamic_cast<OzPriQueueNode<std::string, int> const*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->value, "seven");
  EXPECT_EQ(copy->priority, 7);
}

TEST(OzPriQueue, GivesTheHighestPriorityFirstUnlessToldOtherwise)
{
  OzPriQueue<char, int> queue;
  OzPriQueue<char, int> smallest_first(false);
  for (auto const& entry : {std::make_pair('c', 3), std::make_pair('a', 1), std::make_pair('b', 2)})
  {
    queue.insert(entry.first, entry.second);
    smallest_first.insert(entry.first, entry.second);
  }

  EXPECT_EQ(extract_all(queue), (std::vector<char>{'c', 'b', 'a'}));
  EXPECT_EQ(extract_all(smallest_first), (std::vector<char>{'a', 'b', 'c'}));
}

TEST(OzPriQueue, CountsItsEntries)
{
  OzPriQueue<int, int> queue;
  EXPECT_EQ(queue.count(), 0);

  queue.insert(1, 1);
  queue.add(2, 2);
  EXPECT_EQ(queue.count(), 2) << "also while the array is no heap";

  queue.build_heap();
  queue.extract();
  EXPECT_EQ(queue.count(), 1);
}

TEST(OzPriQueue, AddedValuesAreExtractedAfterBuilding)
{
  Probe queue(false);
  queue.add(30, 3);
  queue.add(10, 1);
  queue.add(20, 2);
  EXPECT_EQ(queue.heap_size, -1);

  queue.build_heap();

  EXPECT_EQ(extract_all(queue), (std::vector<int>{10, 20, 30}));
}

TEST(OzPriQueue, ExtractionFromAnEmptyQueueIsReportedAndGivesTheDefaultValue)
{
  OzPriQueue<std::string, int> queue;
  OzPriQueue<int, int> numbers;
  ReportRecorder const recorder;

  EXPECT_EQ(queue.extract(), "");
  EXPECT_EQ(numbers.extract(), 0);

  EXPECT_EQ(recorder.units(),
            (std::vector<std::string>{"ozheap.cpp", "ozpriqueue_t.h", "ozheap.cpp", "ozpriqueue_t.h"}));
  EXPECT_EQ(queue.count(), 0);
}

TEST(OzPriQueue, ExtractionBeforeBuildingIsReportedAndKeepsTheCount)
{
  OzPriQueue<int, int> queue;
  queue.add(7, 1);
  {
    ReportRecorder const recorder;
    EXPECT_EQ(queue.extract(), 0);
    EXPECT_EQ(recorder.units(), (std::vector<std::string>{"ozheap.cpp", "ozpriqueue_t.h"}));
  }
  EXPECT_EQ(queue.extract(), 0) << "without a handler too";

  EXPECT_EQ(queue.count(), 1);
  queue.build_heap();
  EXPECT_EQ(queue.extract(), 7);
}

TEST(OzPriQueue, ExtractionOfANullEntryIsReportedByTheQueueAlone)
{
  OzPriQueue<int, int> queue;
  queue.add_node(nullptr);
  queue.build_heap();
  ReportRecorder const recorder;

  EXPECT_EQ(queue.extract(), 0);

  EXPECT_EQ(recorder.units(), reports(1, "ozpriqueue_t.h"));
  EXPECT_EQ(queue.count(), 0);
}

TEST(OzPriQueue, TheCountFollowsInsertAddAndExtractOnly)
{
  OzPriQueue<int, int> queue;
  OzPriQueue<int, int> other;
  queue.insert(1, 1);
  other.insert(2, 2);

  queue.merge_nodes(other);
  EXPECT_EQ(queue.count(), 1);
  EXPECT_EQ(other.count(), 1);

  queue.remove_all_nodes();
  EXPECT_EQ(queue.count(), 1);
}

TEST(OzPriQueue, ACopyExtractsTheSameFromNodesOfItsOwn)
{
  OzPriQueue<int, int> queue(false);
  for (int const priority : {5, 2, 4, 2, 1})
    queue.insert(priority * 10, priority);

  OzPriQueue<int, int> copy(queue);
  OzPriQueue<int, int> assigned;
  assigned.insert(9, 9);
  assigned = queue;

  EXPECT_EQ(copy.count(), 5);
  EXPECT_EQ(assigned.count(), 5);
  EXPECT_EQ(extract_all(queue), (std::vector<int>{10, 20, 20, 40, 50}));
  EXPECT_EQ(extract_all(copy), (std::vector<int>{10, 20, 20, 40, 50}));
  EXPECT_EQ(extract_all(assigned), (std::vector<int>{10, 20, 20, 40, 50}));
}

TEST(OzPriQueue, AnInsertionThatIsStoppedNeitherCountsNorLeaks)
{
  OzPriQueue<std::string, int> queue;
  queue.add("one", 1);

  dkb_assertion_handler = &stop;
  EXPECT_THROW(queue.insert("two", 2), std::runtime_error);
  dkb_assertion_handler = nullptr;

  EXPECT_EQ(queue.count(), 1);
  queue.build_heap();
  EXPECT_EQ(queue.extract(), "one");
}

TEST(OzPriQueue, HoldsPointersWithoutOwningThem)
{
  int const a = 1;
  int const b = 2;
  OzPriQueue<int const*, int> queue(false);

  queue.insert(&b, b);
  queue.insert(&a, a);

  EXPECT_EQ(queue.extract(), &a);
  EXPECT_EQ(queue.extract(), &b);
}

TEST(OzPriQueue, SortsThroughTheHeap)
{
  Probe queue;
  for (int const priority : {2, 3, 1})
    queue.insert(priority, priority);

  queue.sort_nodes();

  std::vector<int> values;
  for (void* const node : queue.nodes)
    values.push_back(static_cast<OzPriQueueNode<int, int>*>(static_cast<OzHeapNode*>(node))->value);
  EXPECT_EQ(values, (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(queue.count(), 3);
}

TEST(OzPriQueue, AgreesWithTheStandardQueueUnderRandomChanges)
{
  unsigned const seed = 50505;
  std::mt19937 random(seed);
  OzPriQueue<int, int> highest_first;
  OzPriQueue<int, int> lowest_first(false);
  std::priority_queue<int> highest_model;
  std::priority_queue<int, std::vector<int>, std::greater<int>> lowest_model;
  for (int step = 0; step < 30000; ++step)
  {
    SCOPED_TRACE(testing::Message() << "seed " << seed << " step " << step);
    int const priority = static_cast<int>(random() % 50);
    bool const grows = random() % 5 < ((step / 3000) % 2 == 0 ? 3u : 2u);
    if (grows || highest_model.empty())
    {
      // The value tells its priority, so that equal priorities may come in any order.
      highest_model.push(priority);
      lowest_model.push(priority);
      if (step % 3 == 0)
      {
        highest_first.add(priority, priority);
        lowest_first.add(priority, priority);
        highest_first.build_heap();
        lowest_first.build_heap();
      }
      else
      {
        highest_first.insert(priority, priority);
        lowest_first.insert(priority, priority);
      }
    }
    else
    {
      ASSERT_EQ(highest_first.extract(), highest_model.top());
      ASSERT_EQ(lowest_first.extract(), lowest_model.top());
      highest_model.pop();
      lowest_model.pop();
    }
    ASSERT_EQ(highest_first.count(), static_cast<int>(highest_model.size()));
    ASSERT_EQ(lowest_first.count(), static_cast<int>(lowest_model.size()));
  }
}
