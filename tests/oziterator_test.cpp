#include "oziterator.h"

#include "report_recorder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{
OzArray<int> make_array(std::initializer_list<int> elements)
{
  OzArray<int> array;
  for (int element : elements)
    array.append(element);
  return array;
}

template <class T>
std::vector<T> walk(OzIterator<T>& cursor)
{
  std::vector<T> seen;
  for (cursor.reset(); !cursor.done(); cursor.next())
    seen.push_back(cursor.current());
  return seen;
}

TEST(OzArrayIterator, WalksTheElementsInOrderAsOftenAsWanted)
{
  OzArray<int> const array = make_array({4, 5, 6});
  OzArrayIterator<int> cursor(&array);

  EXPECT_EQ(walk(cursor), (std::vector<int>{4, 5, 6}));
  EXPECT_TRUE(cursor.done());
  EXPECT_EQ(walk(cursor), (std::vector<int>{4, 5, 6}));
}

TEST(OzArrayIterator, StartsOnTheFirstElement)
{
  OzArray<int> const array = make_array({4, 5});
  OzArrayIterator<int> const cursor(&array);

  EXPECT_FALSE(cursor.done());
  EXPECT_EQ(&cursor.current(), &array[0]);
}

TEST(OzArrayIterator, FirstIsElement0WhereverTheCursorStands)
{
  OzArray<int> const array = make_array({4, 5, 6});
  OzArrayIterator<int> cursor(&array);
  cursor.next();
  cursor.next();

  EXPECT_EQ(cursor.first(), 4);
  EXPECT_EQ(&cursor.first(), &array[0]);
  EXPECT_EQ(cursor.current(), 6);
  cursor.next();
  EXPECT_EQ(cursor.first(), 4);
  EXPECT_TRUE(cursor.done());
}

TEST(OzArrayIterator, ResetGoesBackToTheFirstElement)
{
  OzArray<int> const array = make_array({4, 5, 6});
  OzArrayIterator<int> cursor(&array);
  cursor.next();

  cursor.reset();

  EXPECT_EQ(cursor.current(), 4);
}

TEST(OzArrayIterator, OverANullArrayIsDoneAtOnceAndForEver)
{
  OzArrayIterator<int> cursor(nullptr);

  EXPECT_TRUE(cursor.done());
  cursor.next();
  EXPECT_TRUE(cursor.done());
  cursor.reset();
  EXPECT_TRUE(cursor.done());
  EXPECT_TRUE(walk(cursor).empty());
}

TEST(OzArrayIterator, OverAnEmptyArrayIsDoneAtOnce)
{
  OzArray<int> const array;
  OzArrayIterator<int> cursor(&array);

  EXPECT_TRUE(cursor.done());
  EXPECT_TRUE(walk(cursor).empty());
}

TEST(OzArrayIterator, WalksAnArrayThatGrowsToItsNewEnd)
{
  OzArray<int> array = make_array({4, 5});
  OzArrayIterator<int> cursor(&array);
  cursor.next();
  cursor.next();
  EXPECT_TRUE(cursor.done());

  array.append(6);

  EXPECT_FALSE(cursor.done());
  EXPECT_EQ(cursor.current(), 6);
}

TEST(OzArrayIterator, IsDoneWhenTheArrayShrinksBelowIt)
{
  OzArray<int> array = make_array({4, 5, 6});
  OzArrayIterator<int> cursor(&array);
  cursor.next();
  cursor.next();

  array.resize(1, true);

  EXPECT_TRUE(cursor.done());
}

TEST(OzArrayIterator, FirstOfAnEmptyArrayAndCurrentPastTheEndAreReportedByTheArray)
{
  OzArray<int> empty = make_array({4});
  empty.remove_last();
  OzArray<int> const array = make_array({4, 5, 6});
  OzArrayIterator<int> const at_nothing(&empty);
  OzArrayIterator<int> past(&array);
  past.next();
  past.next();
  past.next();
  ReportRecorder recorder;

  EXPECT_EQ(at_nothing.first(), 0);
  EXPECT_EQ(recorder.units(), reports(1, "ozarray_i.h"));
  recorder.clear();

  EXPECT_EQ(past.current(), 0);
  EXPECT_EQ(recorder.units(), reports(1, "ozarray_i.h"));
}

TEST(OzArrayIterator, NextAndDoneReportNothing)
{
  OzArray<int> const array = make_array({4});
  OzArrayIterator<int> cursor(&array);
  ReportRecorder const recorder;

  cursor.next();
  cursor.next();
  cursor.next();

  EXPECT_TRUE(cursor.done());
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzArrayIterator, CopyAndAssignmentKeepThePlace)
{
  OzArray<int> const array = make_array({4, 5, 6});
  OzArrayIterator<int> cursor(&array);
  cursor.next();
  OzArrayIterator<int> assigned(nullptr);

  OzArrayIterator<int> const copy(cursor);
  assigned = cursor;
  cursor.next();

  EXPECT_EQ(copy.current(), 5);
  EXPECT_EQ(assigned.current(), 5);
  EXPECT_EQ(cursor.current(), 6);
}

TEST(OzArrayIterator, DoesNotOwnItsArray)
{
  OzArray<int> const array = make_array({4, 5});
  {
    std::unique_ptr<OzIterator<int>> const cursor = std::make_unique<OzArrayIterator<int>>(&array);
    EXPECT_EQ(cursor->current(), 4);
  }

  EXPECT_EQ(array[1], 5);
}

TEST(OzArrayIterator, WalksPointersToConstantObjects)
{
  int const one = 1;
  int const two = 2;
  OzArray<int const*> array;
  array.append(&one);
  array.append(&two);
  OzArrayIterator<int const*> cursor(&array);

  EXPECT_EQ(walk(cursor), (std::vector<int const*>{&one, &two}));
}

/// Notes which of the virtual operations is called.
class Noting : public OzIterator<int>
{
public:
  explicit Noting(std::vector<std::string>* list)
    : calls(list)
  {
  }
  ~Noting() override { calls->push_back("destructor"); }
  int const& first() const override { return noted("first"); }
  void next() override { noted("next"); }
  bool done() const override { return noted("done") != 0; }
  void reset() override { noted("reset"); }
  int const& current() const override { return noted("current"); }

private:
  int const& noted(char const* name) const
  {
    static int const zero = 0;
    calls->push_back(name);
    return zero;
  }

  std::vector<std::string>* calls;
};

TEST(OzIterator, IsDeletedThroughTheInterface)
{
  std::vector<std::string> calls;
  OzIterator<int>* const cursor = new Noting(&calls);

  delete cursor;

  EXPECT_EQ(calls, std::vector<std::string>{"destructor"});
}

// The table of the platform's ABI: two entries for the destructor, then the functions in their order. The
// binary interface of the library depends on it. Each is called as one that returns a pointer, which a
// reference and a bool are in the registers of a call.
TEST(OzIterator, VirtualFunctionsStandInTheirOrder)
{
  using Operation = void const* (*)(void*);
  std::vector<std::string> calls;
  Noting cursor(&calls);
  OzIterator<int>* const base = &cursor;
  void** table = nullptr;
  std::memcpy(&table, static_cast<void*>(base), sizeof table);

  for (int slot = 2; slot <= 6; ++slot)
    reinterpret_cast<Operation>(table[slot])(base);

  EXPECT_EQ(calls, (std::vector<std::string>{"first", "next", "done", "reset", "current"}));
}

/// Shows where the fields of a cursor lie.
class Probe : public OzArrayIterator<int>
{
public:
  using OzArrayIterator<int>::OzArrayIterator;

  std::ptrdiff_t offset_of_array() const { return offset(&array); }
  std::ptrdiff_t offset_of_index() const { return offset(&index); }

private:
  std::ptrdiff_t offset(void const* member) const
  {
    return static_cast<char const*>(member) -
           reinterpret_cast<char const*>(static_cast<OzArrayIterator<int> const*>(this));
  }
};

TEST(OzArrayIterator, FieldsStandInTheirOrder)
{
  Probe const cursor(nullptr);

  EXPECT_EQ(cursor.offset_of_array(), 8);
  EXPECT_EQ(cursor.offset_of_index(), 16);
  EXPECT_EQ(sizeof(OzArrayIterator<int>), 24u);
}
} // namespace
