#include "ozlist.h"

#include "ozrcobj.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
/// A value that counts how many of its kind are alive, and whose copy fails when it is told to.
class Counted
{
public:
  explicit Counted(int v)
    : value(v)
  {
    ++alive;
  }
  Counted(Counted const& other)
    : value(other.value)
  {
    if (copies_left == 0)
      throw std::runtime_error("no more copies");
    --copies_left;
    ++alive;
  }
  Counted& operator=(Counted const&) = default;
  ~Counted() { --alive; }

  bool operator==(Counted const& other) const { return value == other.value; }

  int value;
  static inline int alive = 0;
  static inline int copies_left = -1;
};

class Referenced : public OzRCObj
{
public:
  explicit Referenced(bool& gone_flag)
    : gone(gone_flag)
  {
  }
  ~Referenced() override { gone = true; }
  void add_ref() const override { ++count; }
  void remove_ref() const override { --count; }
  int n_refs() const override { return count; }

private:
  bool& gone;
  mutable int count = 0;
};

/// Opens what a list keeps for derived classes.
template <class T>
class Probe : public OzList<T>
{
public:
  using OzLinkList::array;
  using OzLinkList::cursor;
  using OzLinkList::head;
  using OzLinkList::size;
  using OzLinkList::tail;
  using OzList<T>::OzList;
  Probe() = default;
};

template <class T>
class QueueProbe : public OzQueue<T>
{
public:
  using OzQueue<T>::depth;
  using OzQueue<T>::list;
};

template <class T>
class StackProbe : public OzStack<T>
{
public:
  using OzStack<T>::depth;
  using OzStack<T>::list;
};

template <class List>
List make(std::vector<int> const& values)
{
  List list;
  for (int const value : values)
    list.append(value);
  return list;
}

Probe<int> make_list(std::vector<int> const& values)
{
  return make<Probe<int>>(values);
}

template <class T>
std::vector<T> values(OzList<T> const& list)
{
  std::vector<T> result;
  for (T const& value : list)
    result.push_back(value);
  return result;
}

/// The values in order, after a look at the links backwards and at the count.
std::vector<int> checked(Probe<int> const& list)
{
  std::vector<int> back;
  for (OzLink* link = list.tail(); link != nullptr; link = link->prev())
    back.push_back(static_cast<OzItem<int>*>(link)->value);
  std::vector<int> const result = values(list);
  EXPECT_EQ(std::vector<int>(back.rbegin(), back.rend()), result);
  EXPECT_EQ(list.count(), result.size());
  EXPECT_EQ(list.size(), result.size());
  return result;
}

/// Stops an operation at its first report.
[[noreturn]] void stop(char const* file, int)
{
  throw std::runtime_error(file);
}

class StopAtReport
{
public:
  StopAtReport() { dkb_assertion_handler = &stop; }
  ~StopAtReport() { dkb_assertion_handler = nullptr; }
};

/// The unit that the first report of `operation` comes from. The operation goes no further.
template <class Operation>
std::string first_report(Operation operation)
{
  StopAtReport const stopper;
  try
  {
    operation();
  }
  catch (std::runtime_error const& report)
  {
    std::string const path = report.what();
    return path.substr(path.rfind('/') + 1);
  }
  return "none";
}

typedef std::vector<int> Ints;
} // namespace

TEST(OzStdCompare, TellsEqualFromDifferentAndNothingElse)
{
  OzStdCompare<int> comparison;

  EXPECT_EQ(comparison.compare(3, 3), 0);
  EXPECT_EQ(comparison.compare(2, 3), -1);
  EXPECT_EQ(comparison.compare(3, 2), -1);
  EXPECT_FALSE(comparison.ordered());
}

TEST(OzStdCompare, ComparesThePointersOfCountedReferences)
{
  bool gone = false;
  bool other_gone = false;
  OzRCPtr<Referenced> const a(new Referenced(gone));
  OzRCPtr<Referenced> const same(a);
  OzRCPtr<Referenced> const other(new Referenced(other_gone));
  OzStdCompare<OzRCPtr<Referenced>> comparison;

  EXPECT_EQ(comparison.compare(a, same), 0);
  EXPECT_EQ(comparison.compare(a, other), -1);
}

TEST(OzStdCompare, ClonesThroughTheInterface)
{
  OzStdCompare<int> comparison;
  OzCompare<int>* const base = &comparison;

  OzCompare<int>* const clone = base->clone();

  EXPECT_NE(clone, base);
  EXPECT_NE(dynamic_cast<OzStdCompare<int>*>(clone), nullptr);
  EXPECT_EQ(clone->compare(1, 1), 0);
  EXPECT_EQ(clone->compare(1, 2), -1);
  EXPECT_FALSE(clone->ordered());
  delete clone;
}

TEST(OzItem, ACopyCarriesTheValueAndIsFree)
{
  OzItem<int> item(7);
  OzLink other;
  item.insert_next(&other);

  OzItem<int> const copy(item);

  EXPECT_EQ(copy.value, 7);
  EXPECT_EQ(copy.next(), nullptr);
}

TEST(OzList, BeginsEmpty)
{
  Probe<int> const list;

  EXPECT_EQ(list.count(), 0u);
  EXPECT_EQ(list.head(), nullptr);
  EXPECT_EQ(list.tail(), nullptr);
}

TEST(OzList, AppendGoesBehindTheLast)
{
  Probe<int> list;

  list.append(1);
  EXPECT_EQ(list.head(), list.tail());
  list.append(2);
  list.append(3);

  EXPECT_EQ(checked(list), (Ints{1, 2, 3}));
}

TEST(OzList, PrependGoesBeforeTheFirst)
{
  Probe<int> list;

  list.prepend(1);
  EXPECT_EQ(list.head(), list.tail());
  list.prepend(2);
  list.prepend(3);

  EXPECT_EQ(checked(list), (Ints{3, 2, 1}));
}

TEST(OzList, FirstIsTheValueItselfNotACopy)
{
  OzList<int> list = make_list({1, 2});

  list.first() = 5;

  EXPECT_EQ(values(list), (Ints{5, 2}));
}

TEST(OzList, FirstOfAnEmptyListIsReported)
{
  OzList<int> const list;

  EXPECT_EQ(first_report([&list] { list.first(); }), "ozlist_t.h");
}

TEST(OzList, RemoveFirstTakesTheFirstAway)
{
  Probe<int> list = make_list({1, 2});

  list.remove_first();
  EXPECT_EQ(checked(list), (Ints{2}));

  list.remove_first();
  EXPECT_EQ(checked(list), Ints{});
  EXPECT_EQ(list.tail(), nullptr);
}

TEST(OzList, RemoveFirstOfAnEmptyListIsReportedTwiceAndTheCountWraps)
{
  OzList<int> list;
  ReportRecorder const recorder;

  list.remove_first();

  EXPECT_EQ(recorder.units(), (std::vector<std::string>{"ozlist_t.h", "ozlinklist.cpp"}));
  EXPECT_EQ(list.count(), 18446744073709551615u);
}

TEST(OzList, RemoveFirstOfAnEmptyListStaysHarmlessWithoutAHandler)
{
  Probe<int> list;

  list.remove_first();

  EXPECT_EQ(list.count(), 18446744073709551615u);
  EXPECT_EQ(list.head(), nullptr);
}

TEST(OzList, PopFirstReturnsWhatItTakesAway)
{
  Probe<int> list = make_list({1, 2});

  EXPECT_EQ(list.pop_first(), 1);
  EXPECT_EQ(checked(list), (Ints{2}));
  EXPECT_EQ(list.pop_first(), 2);
  EXPECT_EQ(checked(list), Ints{});
}

TEST(OzList, PopFirstOfAnEmptyListIsReported)
{
  OzList<int> list;

  EXPECT_EQ(first_report([&list] { list.pop_first(); }), "ozlist_t.h");

  EXPECT_EQ(list.count(), 0u);
}

TEST(OzList, RemoveTakesOnlyTheFirstOfEqualValues)
{
  struct
  {
    char const* what;
    Ints before;
    int value;
    Ints after;
  } const cases[] = {
      {"in the middle", {1, 2, 3, 2}, 2, {1, 3, 2}},
      {"at the head", {2, 1, 2}, 2, {1, 2}},
      {"at the tail", {1, 3, 2}, 2, {1, 3}},
      {"the only one", {2}, 2, {}},
      {"not held", {1, 3}, 2, {1, 3}},
      {"empty", {}, 2, {}},
  };
  for (auto const& c : cases)
  {
    Probe<int> list = make_list(c.before);

    list.remove(c.value);

    EXPECT_EQ(checked(list), c.after) << c.what;
  }
}

TEST(OzList, RemoveAcceptsAValueOfTheListItself)
{
  Probe<std::string> list;
  list.append("one");
  list.append("two");

  list.remove(list.first());

  EXPECT_EQ(values(list), (std::vector<std::string>{"two"}));
}

TEST(OzList, EveryChangeResetsTheCursor)
{
  struct
  {
    char const* what;
    void (*change)(Probe<int>&);
  } const cases[] = {
      {"prepend", [](Probe<int>& list) { list.prepend(9); }},
      {"append", [](Probe<int>& list) { list.append(9); }},
      {"remove_first", [](Probe<int>& list) { list.remove_first(); }},
      {"pop_first", [](Probe<int>& list) { list.pop_first(); }},
      {"remove", [](Probe<int>& list) { list.remove(2); }},
      {"remove without a match", [](Probe<int>& list) { list.remove(8); }},
      {"clear", [](Probe<int>& list) { list.clear(); }},
      {"assignment", [](Probe<int>& list) { list = make_list({5}); }},
  };
  for (auto const& c : cases)
  {
    Probe<int> list = make_list({1, 2, 3});
    list.array(2);
    ASSERT_NE(list.cursor.link, nullptr);

    c.change(list);

    EXPECT_EQ(list.cursor.link, nullptr) << c.what;
    EXPECT_EQ(list.cursor.index, 0u) << c.what;
  }
}

TEST(OzList, ClearDeletesAllItems)
{
  OzList<Counted> list;
  list.append(Counted(1));
  list.append(Counted(2));
  ASSERT_EQ(Counted::alive, 2);

  list.clear();
  EXPECT_EQ(Counted::alive, 0);
  EXPECT_EQ(list.count(), 0u);

  list.clear();
  list.append(Counted(3));
  EXPECT_EQ(list.count(), 1u);
  EXPECT_EQ(list.first().value, 3);
}

TEST(OzList, DestroysItsValues)
{
  {
    OzList<Counted> list;
    list.append(Counted(1));
    list.prepend(Counted(2));
    ASSERT_EQ(Counted::alive, 2);
  }

  EXPECT_EQ(Counted::alive, 0);
}

TEST(OzList, DropsTheReferencesThatItHolds)
{
  bool gone = false;
  {
    OzList<OzRCPtr<Referenced>> list;
    list.append(OzRCPtr<Referenced>(new Referenced(gone)));
    OzRCPtr<Referenced> const kept(list.first());
    list.remove(kept);
    EXPECT_EQ(list.count(), 0u);
    EXPECT_FALSE(gone);
    list.append(kept);
  }

  EXPECT_TRUE(gone);
}

TEST(OzList, DoesNotDeleteWhatAPointerPointsTo)
{
  Counted counted(1);
  {
    OzList<Counted*> list;
    list.append(&counted);
    list.clear();
    list.append(&counted);
  }

  EXPECT_EQ(Counted::alive, 1);
}

TEST(OzList, IsDestroyedAndClearedWithoutRecursionAtAnyLength)
{
  {
    OzList<int> list;
    for (int i = 0; i < 500000; ++i)
      list.append(i);
    list.clear();
    for (int i = 0; i < 500000; ++i)
      list.prepend(i);
    ASSERT_EQ(list.count(), 500000u);
  }
  SUCCEED();
}

TEST(OzList, ACopyHasItemsOfItsOwn)
{
  Probe<int> list = make_list({1, 2, 3});

  Probe<int> copy(list);
  copy.first() = 9;
  list.remove_first();

  EXPECT_EQ(checked(copy), (Ints{9, 2, 3}));
  EXPECT_EQ(checked(list), (Ints{2, 3}));
}

TEST(OzList, AssignmentReplacesTheValues)
{
  Probe<int> const source = make_list({1, 2, 3});
  Probe<int> target = make_list({4, 5});

  Probe<int>& result = (target = source);

  EXPECT_EQ(&result, &target);
  EXPECT_EQ(checked(target), (Ints{1, 2, 3}));
  EXPECT_EQ(checked(source), (Ints{1, 2, 3}));
}

TEST(OzList, SelfAssignmentKeepsTheItems)
{
  Probe<int> list = make_list({1, 2});
  OzLink* const head = list.head();
  Probe<int> const& same = list;

  list = same;

  EXPECT_EQ(list.head(), head);
  EXPECT_EQ(checked(list), (Ints{1, 2}));
}

TEST(OzList, ACopyThatThrowsLeavesEveryListAsItWas)
{
  {
    OzList<Counted> list;
    list.append(Counted(1));
    list.append(Counted(2));
    OzList<Counted> target;
    target.append(Counted(3));
    Counted const value(4);

    Counted::copies_left = 1;
    EXPECT_THROW(OzList<Counted>{list}, std::runtime_error);
    Counted::copies_left = 1;
    EXPECT_THROW(target = list, std::runtime_error);
    Counted::copies_left = 0;
    EXPECT_THROW(list.append(value), std::runtime_error);
    EXPECT_THROW(list.prepend(value), std::runtime_error);
    EXPECT_THROW(list.pop_first(), std::runtime_error);
    Counted::copies_left = -1;

    EXPECT_EQ(list.count(), 2u);
    EXPECT_EQ(list[0].value, 1);
    EXPECT_EQ(list[1].value, 2);
    EXPECT_EQ(target.count(), 1u);
    EXPECT_EQ(target.first().value, 3);
  }

  EXPECT_EQ(Counted::alive, 0);
}

TEST(OzList, IndexedAccessGoesThroughTheCursor)
{
  Probe<int> const list = make_list({10, 11, 12, 13});

  EXPECT_EQ(list[2], 12);
  EXPECT_EQ(list.cursor.index, 2u);
  EXPECT_EQ(list[3], 13);
  EXPECT_EQ(list[0], 10);
  list[1] = 5;
  EXPECT_EQ(checked(list), (Ints{10, 5, 12, 13}));
}

TEST(OzList, ABadIndexIsReported)
{
  OzList<int> const list = make_list({10});

  EXPECT_EQ(first_report([&list] { list[1]; }), "ozlist_t.h");
  EXPECT_EQ(first_report([&list] { list[0]; }), "none");
}

TEST(OzListIterator, IsAtItsEndAtOnceOnAnEmptyList)
{
  OzList<int> const list;

  EXPECT_TRUE(list.begin().at_end());
  EXPECT_TRUE(list.begin() == list.end());
  EXPECT_FALSE(list.begin() != list.end());
}

TEST(OzListIterator, WalksToTheEndAndStaysThere)
{
  OzList<int> const list = make_list({1, 2});

  OzList<int>::iterator it = list.begin();
  EXPECT_FALSE(it.at_end());
  EXPECT_EQ(*it, 1);
  ++it;
  EXPECT_FALSE(it.at_end());
  EXPECT_EQ(*it, 2);
  ++it;
  EXPECT_TRUE(it.at_end());
  EXPECT_TRUE(it == list.end());
  ++it;
  EXPECT_TRUE(it.at_end());
  EXPECT_TRUE(it == list.end());
}

TEST(OzListIterator, PostIncrementReturnsWhereItStood)
{
  OzList<int> const list = make_list({1, 2});
  OzList<int>::iterator it = list.begin();

  EXPECT_EQ(*it++, 1);
  EXPECT_EQ(*it++, 2);
  EXPECT_TRUE(it.at_end());
}

TEST(OzListIterator, GivesAccessToTheMembersOfAValue)
{
  OzList<std::string> list;
  list.append("four");

  EXPECT_EQ(list.begin()->size(), 4u);
  *list.begin() = "x";
  EXPECT_EQ(list.first(), "x");
}

TEST(OzListIterator, TwoOnItemsAreNeverEqual)
{
  OzList<int> const list = make_list({1});
  OzList<int>::iterator const it = list.begin();

  EXPECT_FALSE(it == list.begin());
  EXPECT_FALSE(it == it);
  EXPECT_TRUE(it != it);
  EXPECT_FALSE(it == list.end());
  EXPECT_FALSE(list.end() == it);
}

TEST(OzListIterator, EndsAreEqualWhileTheListHasTheSameEnds)
{
  OzList<int> list = make_list({1, 2, 3});
  OzList<int> const other = make_list({1, 2, 3});
  OzList<int>::iterator const end = list.end();

  EXPECT_TRUE(end == list.end());
  EXPECT_FALSE(end == other.end());
  list.remove(2);
  EXPECT_TRUE(end == list.end()) << "an inner item is not looked at";
  list.append(4);
  EXPECT_FALSE(end == list.end()) << "another last item";
}

TEST(OzListIterator, AnotherFirstItemAloneMakesEndsDifferent)
{
  OzList<int> list = make_list({1, 2});
  OzList<int>::iterator const end = list.end();

  list.prepend(0);

  EXPECT_FALSE(end == list.end());
  EXPECT_TRUE(end != list.end());
}

TEST(OzListIterator, TheEndsOfEmptyListsAreEqual)
{
  EXPECT_TRUE(OzList<int>().end() == OzList<int>().end());
}

TEST(OzListIterator, ACopyMovesOnItsOwn)
{
  OzList<int> const list = make_list({1, 2});
  OzList<int>::iterator it = list.begin();
  OzList<int>::iterator copy(it);

  ++it;

  EXPECT_EQ(*it, 2);
  EXPECT_EQ(*copy, 1);
  ++copy;
  ++copy;
  EXPECT_TRUE(copy == list.end());
}

TEST(OzListIterator, ACopyAtTheEndOutlivesItsOriginal)
{
  OzList<int> const list = make_list({1});
  OzList<int>::iterator* const original = new OzList<int>::iterator(list.end());
  OzList<int>::iterator copy(*original);
  OzList<int>::iterator assigned = list.begin();
  assigned = *original;
  delete original;

  EXPECT_TRUE(copy.at_end());
  EXPECT_TRUE(copy == list.end());
  EXPECT_TRUE(assigned == list.end());
  ++copy;
  EXPECT_TRUE(copy == list.end());
}

TEST(OzListIterator, AssignmentFromAnItemLeavesTheEnd)
{
  OzList<int> const list = make_list({1});
  OzList<int>::iterator it = list.end();

  it = list.begin();

  EXPECT_FALSE(it.at_end());
  EXPECT_EQ(*it, 1);
}

TEST(OzListIterator, AssignmentToItselfStaysWhereItIs)
{
  OzList<int> const list = make_list({1, 2});
  OzList<int>::iterator on_item = list.begin();
  OzList<int>::iterator at_end = list.end();
  OzList<int>::iterator const& same_item = on_item;
  OzList<int>::iterator const& same_end = at_end;

  on_item = same_item;
  at_end = same_end;

  EXPECT_EQ(*on_item, 1);
  EXPECT_EQ(*++on_item, 2);
  EXPECT_TRUE(at_end.at_end());
  EXPECT_TRUE(at_end == list.end());
}

TEST(OzListIterator, AWalkSeesWhatIsAppendedMeanwhile)
{
  OzList<int> list = make_list({1, 2});
  Ints seen;

  for (OzList<int>::iterator it = list.begin(); !it.at_end(); ++it)
  {
    seen.push_back(*it);
    if (*it < 3)
      list.append(*it + 2);
  }

  EXPECT_EQ(seen, (Ints{1, 2, 3, 4}));
}

TEST(OzListIterator, ServesTheStandardAlgorithmsThatReadOnce)
{
  OzList<int> const list = make_list({4, 5, 6});

  EXPECT_EQ(*std::find(list.begin(), list.end(), 5), 5);
  EXPECT_TRUE(std::find(list.begin(), list.end(), 7) == list.end());
  EXPECT_EQ(std::count_if(list.begin(), list.end(), [](int i) { return i > 4; }), 2);
}

TEST(OzQueue, GivesBackInTheOrderOfComing)
{
  QueueProbe<int> queue;
  EXPECT_TRUE(queue.is_empty());

  queue.enqueue(1);
  queue.enqueue(2);
  EXPECT_EQ(queue.depth, 2);
  EXPECT_EQ(queue.list.count(), 2u);
  EXPECT_FALSE(queue.is_empty());

  EXPECT_EQ(queue.dequeue(), 1);
  EXPECT_EQ(queue.depth, 1);
  EXPECT_EQ(queue.dequeue(), 2);
  EXPECT_TRUE(queue.is_empty());
  EXPECT_EQ(queue.list.count(), 0u);
}

TEST(OzQueue, DequeueOfAnEmptyQueueIsReportedByTheListAndLeavesTheDepthBelowZero)
{
  QueueProbe<int> queue;

  EXPECT_EQ(first_report([&queue] { queue.dequeue(); }), "ozlist_t.h");

  EXPECT_EQ(queue.depth, -1);
  EXPECT_FALSE(queue.is_empty());
}

TEST(OzQueue, LooksAtItsDepthNotAtItsList)
{
  QueueProbe<int> queue;
  queue.enqueue(1);

  queue.depth = 0;

  EXPECT_TRUE(queue.is_empty());
}

TEST(OzQueue, CopiesElementByElement)
{
  QueueProbe<int> queue;
  queue.enqueue(1);
  queue.enqueue(2);
  QueueProbe<int> assigned;
  assigned.enqueue(7);

  QueueProbe<int> copy(queue);
  assigned = queue;
  queue.dequeue();

  EXPECT_EQ(copy.depth, 2);
  EXPECT_EQ(copy.dequeue(), 1);
  EXPECT_EQ(copy.dequeue(), 2);
  EXPECT_EQ(assigned.depth, 2);
  EXPECT_EQ(assigned.dequeue(), 1);
  EXPECT_EQ(queue.dequeue(), 2);
}

TEST(OzQueue, AnElementThatCannotBeCopiedIsNotCounted)
{
  QueueProbe<Counted> queue;
  StackProbe<Counted> stack;
  Counted const value(1);

  Counted::copies_left = 0;
  EXPECT_THROW(queue.enqueue(value), std::runtime_error);
  EXPECT_THROW(stack.push(value), std::runtime_error);
  Counted::copies_left = -1;

  EXPECT_TRUE(queue.is_empty());
  EXPECT_TRUE(stack.is_empty());
}

TEST(OzStack, GivesBackInTheOppositeOrder)
{
  StackProbe<int> stack;
  EXPECT_TRUE(stack.is_empty());

  stack.push(1);
  stack.push(2);
  EXPECT_EQ(stack.depth, 2);
  EXPECT_EQ(stack.list.count(), 2u);

  EXPECT_EQ(stack.pop(), 2);
  EXPECT_EQ(stack.depth, 1);
  EXPECT_FALSE(stack.is_empty());
  EXPECT_EQ(stack.pop(), 1);
  EXPECT_TRUE(stack.is_empty());
}

TEST(OzStack, PopOfAnEmptyStackIsReportedByTheListAndLeavesTheDepthBelowZero)
{
  StackProbe<int> stack;

  EXPECT_EQ(first_report([&stack] { stack.pop(); }), "ozlist_t.h");

  EXPECT_EQ(stack.depth, -1);
}

TEST(OzStack, ClearEmptiesIt)
{
  StackProbe<int> stack;
  stack.push(1);
  stack.push(2);

  stack.clear();

  EXPECT_TRUE(stack.is_empty());
  EXPECT_EQ(stack.list.count(), 0u);
  stack.push(3);
  EXPECT_EQ(stack.pop(), 3);
}

TEST(OzStack, CopiesElementByElement)
{
  StackProbe<int> stack;
  stack.push(1);
  stack.push(2);

  StackProbe<int> copy(stack);
  stack.clear();

  EXPECT_EQ(copy.depth, 2);
  EXPECT_EQ(copy.pop(), 2);
  EXPECT_EQ(copy.pop(), 1);
}

TEST(OzStack, ClearIsVirtual)
{
  class Noting : public OzStack<int>
  {
  public:
    void clear() override
    {
      cleared = true;
      OzStack<int>::clear();
    }
    bool cleared = false;
  };
  Noting noting;
  OzStack<int>& stack = noting;

  stack.clear();

  EXPECT_TRUE(noting.cleared);
}

TEST(OzList, AgreesWithAVectorUnderRandomChanges)
{
  unsigned const seed = 77001;
  std::mt19937 random(seed);
  auto const below = [&random](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
  Probe<int> list;
  Ints model;
  for (int step = 0; step < 20000; ++step)
  {
    SCOPED_TRACE(testing::Message() << "seed " << seed << " step " << step);
    int const value = below(6);
    switch (below(8))
    {
    case 0:
    case 1:
      list.append(value);
      model.push_back(value);
      break;
    case 2:
    case 3:
      list.prepend(value);
      model.insert(model.begin(), value);
      break;
    case 4:
      if (!model.empty())
      {
        ASSERT_EQ(list.pop_first(), model.front());
        model.erase(model.begin());
      }
      break;
    case 5:
    case 6:
    {
      list.remove(value);
      auto const found = std::find(model.begin(), model.end(), value);
      if (found != model.end())
        model.erase(found);
      break;
    }
    default:
      if (below(40) == 0)
      {
        list.clear();
        model.clear();
      }
      else if (!model.empty())
      {
        std::size_t const i = static_cast<std::size_t>(below(static_cast<int>(model.size())));
        ASSERT_EQ(list[i], model[i]);
        list[i] = value;
        model[i] = value;
      }
    }
    ASSERT_EQ(checked(list), model);
  }
}

TEST(OzQueue, QueueAndStackAgreeWithADequeUnderRandomChanges)
{
  unsigned const seed = 77002;
  std::mt19937 random(seed);
  OzQueue<int> queue;
  OzStack<int> stack;
  std::deque<int> queue_model;
  std::deque<int> stack_model;
  for (int step = 0; step < 20000; ++step)
  {
    SCOPED_TRACE(testing::Message() << "seed " << seed << " step " << step);
    ASSERT_EQ(queue.is_empty(), queue_model.empty());
    ASSERT_EQ(stack.is_empty(), stack_model.empty());
    if (random() % 2 == 0 || queue_model.empty())
    {
      queue.enqueue(step);
      queue_model.push_back(step);
      stack.push(step);
      stack_model.push_back(step);
      continue;
    }
    ASSERT_EQ(queue.dequeue(), queue_model.front());
    queue_model.pop_front();
    ASSERT_EQ(stack.pop(), stack_model.back());
    stack_model.pop_back();
  }
}
