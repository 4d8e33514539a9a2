#include "ozarray.h"

#include "element_types.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// A block that the machine cannot give is a null pointer here too, instead of the end of the process.
extern "C" OZ_EXPORT char const* __asan_default_options()
{
  return "allocator_may_return_null=1";
}
extern "C" OZ_EXPORT char const* __tsan_default_options()
{
  return "allocator_may_return_null=1";
}

namespace
{
constexpr std::uint64_t HUGE_NUMBER = ~std::uint64_t(0);

/// Shows what is inside an array.
template <class T>
class Probe : public OzArray<T>
{
public:
  using OzArray<T>::OzArray;
  Probe() = default;
  Probe(std::initializer_list<T> elements)
  {
    for (T const& element : elements)
      this->append(element);
  }

  T const* block() const { return this->data; }
  std::uint64_t slots() const { return this->capacity; }
  T const& slot(std::uint64_t i) const { return this->data[i]; }

  std::vector<T> elements() const { return std::vector<T>(this->begin(), this->end()); }
  std::vector<T> all_slots() const { return std::vector<T>(this->data, this->data + this->capacity); }

  std::ptrdiff_t offset_of_allocator() const { return offset(&this->allocator); }
  std::ptrdiff_t offset_of_data() const { return offset(&this->data); }
  std::ptrdiff_t offset_of_capacity() const { return offset(&this->capacity); }
  std::ptrdiff_t offset_of_size() const { return offset(&this->size_); }

private:
  std::ptrdiff_t offset(void const* member) const
  {
    return static_cast<char const*>(member) -
           reinterpret_cast<char const*>(static_cast<OzArray<T> const*>(this));
  }
};

std::uint64_t capacity_of(OzArray<int> const& array)
{
  struct Peek : OzArray<int>
  {
    using OzArray<int>::capacity;
  };
  return array.*(&Peek::capacity);
}

// Construction

TEST(OzArray, StartsWithoutStorage)
{
  Probe<int> const array;

  EXPECT_EQ(array.block(), nullptr);
  EXPECT_EQ(array.slots(), 0u);
  EXPECT_EQ(array.size(), 0u);
  EXPECT_EQ(array.begin(), array.end());
}

TEST(OzArray, CopyHasTheElementsAndTheCapacityOfGrowingFromNothing)
{
  Probe<int> original{1, 2, 3};
  original.reserve(100, true);

  Probe<int> const copy(original);

  EXPECT_EQ(copy.elements(), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(copy.slots(), 4u);
  EXPECT_NE(copy.block(), original.block());
  EXPECT_EQ(copy.slot(3), 0);
}

TEST(OzArray, CopyOfAnEmptyArrayHasNoStorage)
{
  Probe<int> original;
  original.reserve(8, true);

  Probe<int> const copy(original);

  EXPECT_EQ(copy.block(), nullptr);
  EXPECT_EQ(copy.slots(), 0u);
}

TEST(OzArray, CopyOfElementsThatMayThrowHasTheSameCapacity)
{
  Probe<CountedElement> original{1, 2, 3, 4, 5};
  original.reserve(100, true);

  Probe<CountedElement> const copy(original);

  EXPECT_EQ(copy.elements(), (std::vector<CountedElement>{1, 2, 3, 4, 5}));
  EXPECT_EQ(copy.slots(), 8u);
}

TEST(OzArray, IsBuiltFromElementsInABlockOfTheSlotsAskedFor)
{
  int const numbers[] = {1, 2, 3};
  CountedElement const counted[] = {1, 2, 3};

  Probe<int> const roomy(numbers, 3, 5);
  Probe<int> const tight(numbers, 3, 0);
  Probe<int> const blank(nullptr, 0, 2);
  Probe<int> const nothing(nullptr, 0, 0);
  Probe<CountedElement> const copies(counted, 3, 5);

  EXPECT_EQ(roomy.size(), 3u);
  EXPECT_EQ(roomy.all_slots(), (std::vector<int>{1, 2, 3, 0, 0}));
  EXPECT_EQ(tight.all_slots(), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(blank.size(), 0u);
  EXPECT_EQ(blank.all_slots(), (std::vector<int>{0, 0}));
  EXPECT_EQ(nothing.block(), nullptr);
  EXPECT_EQ(copies.size(), 3u);
  EXPECT_EQ(copies.all_slots(), (std::vector<CountedElement>{1, 2, 3, 0, 0}));
  EXPECT_THROW(Probe<int>(numbers, 3, HUGE_NUMBER), std::bad_alloc);
}

TEST(OzArray, GrownCapacityIsTheFirstDoublingThatReaches)
{
  for (std::uint64_t capacity = 0; capacity < 300; ++capacity)
  {
    for (std::uint64_t n = capacity + 1; n < 1200; ++n)
    {
      std::uint64_t doubled = std::max<std::uint64_t>(capacity, 1);
      while (doubled < n)
        doubled *= 2;

      ASSERT_EQ(oz_grown_capacity(capacity, n), doubled) << capacity << " to " << n;
    }
  }
}

TEST(OzArray, IsCopiedIntoABlockOfTheSlotsAskedFor)
{
  Probe<int> original{1, 2, 3};
  original.reserve(6, true);

  struct
  {
    char const* what;
    std::uint64_t slots;
    std::vector<int> all;
  } const cases[] = {
      {"fewer than elements", 0, {1, 2, 3}},
      {"as many as elements", 3, {1, 2, 3}},
      {"fewer than the original's", 5, {1, 2, 3, 0, 0}},
      {"as many as the original's", 6, {1, 2, 3, 0, 0, 0}},
      {"more than the original's", 8, {1, 2, 3, 0, 0, 0, 0, 0}},
  };
  for (auto const& c : cases)
  {
    Probe<int> const copy(original, c.slots);

    EXPECT_EQ(copy.all_slots(), c.all) << c.what;
    EXPECT_EQ(copy.size(), 3u) << c.what;
    EXPECT_NE(copy.block(), original.block()) << c.what;
  }

  Probe<int> const none;
  EXPECT_EQ(Probe<int>(none, 0).block(), nullptr);
  Probe<int> const blank(none, 2);
  EXPECT_EQ(blank.all_slots(), (std::vector<int>{0, 0}));
  EXPECT_EQ(blank.size(), 0u);
  EXPECT_THROW(Probe<int>(original, HUGE_NUMBER), std::bad_alloc);
}

TEST(OzArray, ObjectsAreCopiedIntoABlockOfTheSlotsAskedFor)
{
  CountedElement::reset();
  {
    Probe<CountedElement> original{1, 2, 3};
    original.reserve(6, true);
    int const live = CountedElement::live;

    Probe<CountedElement> const copy(original, 5);
    EXPECT_EQ(copy.all_slots(), (std::vector<CountedElement>{1, 2, 3, 0, 0}));
    EXPECT_EQ(copy.size(), 3u);
    EXPECT_EQ(CountedElement::live, live + 5);
    EXPECT_EQ(Probe<CountedElement>(original, 0).slots(), 3u);
    EXPECT_THROW(Probe<CountedElement>(original, HUGE_NUMBER), std::bad_alloc);

    CountedElement::copies_until_throw = 2;
    EXPECT_THROW(Probe<CountedElement>(original, 5), std::runtime_error);
    EXPECT_EQ(CountedElement::live, live + 5);
  }
  EXPECT_EQ(CountedElement::live, 0);
}

TEST(OzArray, MovingTakesTheBlockAndLeavesTheOtherWithoutStorage)
{
  static_assert(std::is_nothrow_move_constructible_v<OzArray<int>>);
  Probe<int> original{1, 2, 3};
  int const* const block = original.block();

  Probe<int> const moved(std::move(original));

  EXPECT_EQ(moved.block(), block);
  EXPECT_EQ(moved.elements(), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(moved.slots(), 4u);
  EXPECT_EQ(original.block(), nullptr); // NOLINT(bugprone-use-after-move): what is left is defined
  EXPECT_EQ(original.slots(), 0u);
  EXPECT_EQ(original.size(), 0u);
}

TEST(OzArray, AssignmentUsesTheStorageThereIs)
{
  Probe<int> const source{1, 2};
  Probe<int> target{9, 8, 7, 6, 5};
  int const* const block = target.block();

  OzArray<int>& result = target = source;

  EXPECT_EQ(&result, &target);
  EXPECT_EQ(target.block(), block);
  EXPECT_EQ(target.all_slots(), (std::vector<int>{1, 2, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(target.size(), 2u);
}

TEST(OzArray, AssignmentOfMoreElementsGrowsFromTheCapacityThereIs)
{
  Probe<int> const source{1, 2, 3, 4, 5, 6, 7};
  Probe<int> target;
  target.reserve(3, true);

  target = source;

  EXPECT_EQ(target.elements(), (std::vector<int>{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(target.slots(), 12u);
}

TEST(OzArray, AssignmentOfElementsThatMayThrowHasTheSameCapacities)
{
  Probe<CountedElement> const two{1, 2};
  Probe<CountedElement> const seven{1, 2, 3, 4, 5, 6, 7};
  Probe<CountedElement> target;
  target.reserve(3, true);

  target = seven;

  EXPECT_EQ(target.elements(), (std::vector<CountedElement>{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(target.slots(), 12u);

  target = two;

  EXPECT_EQ(target.all_slots(), (std::vector<CountedElement>{1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(target.size(), 2u);
}

TEST(OzArray, AssignmentToItselfDoesNothing)
{
  Probe<CountedElement> array{1, 2, 3};
  CountedElement::reset();
  CountedElement const* const block = array.block();
  OzArray<CountedElement> const& same = array;

  static_cast<OzArray<CountedElement>&>(array) = same;

  EXPECT_EQ(CountedElement::copies, 0);
  EXPECT_EQ(array.block(), block);
  EXPECT_EQ(array.elements(), (std::vector<CountedElement>{1, 2, 3}));
}

// Capacities

struct Growth
{
  std::uint64_t from;
  std::uint64_t n;
  std::uint64_t to;
};

Growth const GROWTHS[] = {
    {0, 1, 1},
    {0, 2, 2},
    {0, 3, 4},
    {0, 5, 8},
    {10, 100, 160},
    {10, 11, 20},
    {3, 49, 96},
    {40000, 63999, 80000},
    {0, 63999, 65536},
    {63000, 63999, 126000},
    {63000, 64000, 67096},
    {63999, 64000, 68095},
    {0, 64000, 65536},
    {0, 100000, 102400},
    {65536, 65537, 69632},
    {65536, 69632, 69632},
    {65536, 69633, 73728},
    {1, 64000, 65537},
    {64000, 64001, 68096},
};

TEST(OzArray, ResizeGrowsTheCapacityByDoublingAndFrom64000OnByStepsOf4096)
{
  for (Growth const& growth : GROWTHS)
  {
    Probe<int> array;
    array.reserve(growth.from, true);

    array.resize(growth.n, true);

    EXPECT_EQ(array.slots(), growth.to) << growth.from << " to " << growth.n;
    EXPECT_EQ(array.size(), growth.n);
  }
}

TEST(OzArray, GrowthCountsElementsAndNotBytes)
{
  for (Growth const& growth : GROWTHS)
  {
    Probe<char> bytes;
    bytes.reserve(growth.from, true);
    Probe<std::pair<double, double>> pairs;
    pairs.reserve(growth.from, true);

    bytes.resize(growth.n, false);
    pairs.resize(growth.n, false);

    EXPECT_EQ(bytes.slots(), growth.to) << growth.from << " to " << growth.n;
    EXPECT_EQ(pairs.slots(), growth.to) << growth.from << " to " << growth.n;
  }
}

TEST(OzArray, GrownCapacityIsKnownToTheCompiler)
{
  static_assert(oz_grown_capacity(10, 100) == 160);
  static_assert(oz_grown_capacity(63999, 64000) == 68095);
  EXPECT_EQ(oz_grown_capacity(0, 3), 4u);
}

std::vector<std::uint64_t> capacities_of_growing_to(std::uint64_t n, void (*add)(OzArray<int>&))
{
  std::vector<std::uint64_t> capacities;
  OzArray<int> array;
  while (array.size() < n)
  {
    add(array);
    if (capacities.empty() || capacities.back() != capacity_of(array))
      capacities.push_back(capacity_of(array));
  }
  return capacities;
}

TEST(OzArray, AppendAndResizeByOneTakeTheSameCapacities)
{
  std::vector<std::uint64_t> const expected{1,     2,     4,     8,     16,    32,    64,
                                            128,   256,   512,   1024,  2048,  4096,  8192,
                                            16384, 32768, 65536, 69632, 73728, 77824, 81920};

  EXPECT_EQ(capacities_of_growing_to(80000, [](OzArray<int>& array) { array.append(7); }), expected);
  EXPECT_EQ(
      capacities_of_growing_to(80000, [](OzArray<int>& array) { array.resize(array.size() + 1, true); }),
      expected);
}

TEST(OzArray, AppendSwitchesToStepsWhereTheNewSizeReaches64000)
{
  struct
  {
    std::uint64_t full;
    std::uint64_t grown;
  } const cases[] = {{0, 1}, {1, 2}, {3, 6}, {63998, 127996}, {63999, 68095}, {64000, 68096}, {70000, 74096}};
  for (auto const& c : cases)
  {
    Probe<int> array;
    array.reserve(c.full, true);
    array.resize(c.full, true);

    array.append(1);

    EXPECT_EQ(array.slots(), c.grown) << c.full;
    EXPECT_EQ(array.size(), c.full + 1);
    EXPECT_EQ(array.slot(c.full), 1);
  }
}

// resize

TEST(OzArray, ResizeBeyondTheCapacityKeepsTheContentsOnlyIfAsked)
{
  Probe<int> kept{1, 2, 3};
  Probe<int> dropped{1, 2, 3};

  kept.resize(6, true);
  dropped.resize(6, false);

  EXPECT_EQ(kept.all_slots(), (std::vector<int>{1, 2, 3, 0, 0, 0, 0, 0}));
  EXPECT_EQ(dropped.all_slots(), (std::vector<int>{0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(OzArray, ResizeWithinTheCapacityKeepsTheContentsWhateverIsAsked)
{
  Probe<int> array{1, 2, 3, 4, 5};
  array.resize(3, true);
  int const* const block = array.block();

  array.resize(6, false);

  EXPECT_EQ(array.elements(), (std::vector<int>{1, 2, 3, 0, 0, 0}));
  EXPECT_EQ(array.block(), block);
  EXPECT_EQ(array.slots(), 8u);
}

TEST(OzArray, ResizeToNothingKeepsTheCapacityAndClearsEverySlot)
{
  Probe<int> array{1, 2, 3, 4, 5};

  array.resize(0, true);

  EXPECT_EQ(array.size(), 0u);
  EXPECT_EQ(array.all_slots(), std::vector<int>(8, 0));
}

TEST(OzArray, ResizeToTheSizeThereIsChangesNothing)
{
  Probe<int> array{1, 2, 3};

  array.resize(3, false);

  EXPECT_EQ(array.all_slots(), (std::vector<int>{1, 2, 3, 0}));
}

TEST(OzArray, ShrinkingClearsStringsAndPointersToo)
{
  int target = 0;
  Probe<int*> pointers{&target, &target, &target};
  Probe<std::string> texts{"a text that has its own block", "b", "c"};
  Probe<MovingElement> moving{1, 2, 3};

  pointers.resize(1, true);
  texts.resize(1, true);
  moving.resize(1, true);

  EXPECT_EQ(pointers.all_slots(), (std::vector<int*>{&target, nullptr, nullptr, nullptr}));
  EXPECT_EQ(texts.all_slots(), (std::vector<std::string>{"a text that has its own block", "", "", ""}));
  EXPECT_EQ(moving.all_slots(), (std::vector<MovingElement>{1, 0, 0, 0}));
}

TEST(OzArray, ShrinkingLeavesElementsInPlaceWhereMovingCannotThrow)
{
  Probe<std::string> texts{"a", "b", "c"};
  std::string const* const block = texts.block();

  texts.resize(1, true);

  EXPECT_EQ(texts.block(), block);
}

// A type that is written over without its copy or its move telling, with a default value that is not zero.
struct Pen
{
  int colour = 3;
  bool operator==(Pen const& other) const { return colour == other.colour; }
};

TEST(OzArray, SlotsOfAClassHoldItsDefaultValueAndNotZeroBytes)
{
  Probe<Pen> pens;
  pens.append({5});
  pens.append({6});
  pens.append({7});
  EXPECT_EQ(pens.slot(3), Pen{3});

  pens.resize(1, true);

  EXPECT_EQ(pens.all_slots(), (std::vector<Pen>{{5}, {3}, {3}, {3}}));

  pens.reserve(2, false);

  EXPECT_EQ(pens.all_slots(), (std::vector<Pen>{{3}, {3}}));
}

TEST(OzArray, NullPointersToMembersAreNotTakenForZeroBytes)
{
  struct Point
  {
    double x;
    double y;
  };
  Probe<double Point::*> members;

  members.resize(2, true);

  EXPECT_TRUE(members.slot(0) == nullptr);
  EXPECT_TRUE(members.slot(1) == nullptr);
  EXPECT_FALSE(members.slot(1) == &Point::x) << "the bytes of this one are zero";
}

TEST(OzArray, PlainSlotsAreZeroAfterGrowingByAnyWay)
{
  for (std::uint64_t n : {3u, 200u, 5000u, 70000u})
  {
    Probe<double> reserved;
    reserved.reserve(n, false);
    Probe<double> resized{1.0};
    resized.resize(n, true);
    Probe<double> appended{1.0};
    appended.reserve(n - 1, true);
    appended.resize(n - 1, true);
    appended.append(0.0);

    EXPECT_EQ(std::count(reserved.block(), reserved.block() + n, 0.0), static_cast<std::ptrdiff_t>(n));
    for (Probe<double> const* array : {&resized, &appended})
    {
      EXPECT_EQ(array->slot(0), 1.0);
      EXPECT_EQ(std::count(array->block(), array->block() + array->slots(), 0.0),
                static_cast<std::ptrdiff_t>(array->slots() - 1));
    }
  }
}

// reserve

TEST(OzArray, ReserveOfNothingLeavesAnEmptyArrayWithoutStorage)
{
  Probe<int> fresh;
  fresh.reserve(0, true);
  Probe<int> emptied{1};
  emptied.resize(0, true);
  Probe<CountedElement> counted{1};
  counted.resize(0, true);

  emptied.reserve(0, true);
  counted.reserve(0, true);

  EXPECT_EQ(fresh.block(), nullptr);
  EXPECT_EQ(fresh.slots(), 0u);
  EXPECT_EQ(emptied.block(), nullptr);
  EXPECT_EQ(emptied.slots(), 0u);
  EXPECT_EQ(counted.block(), nullptr);
  EXPECT_EQ(counted.slots(), 0u);
}

TEST(OzArray, ReserveBelowTheSizeIsReportedAndRefused)
{
  Probe<int> array{1, 2, 3};
  int const* const block = array.block();
  ReportRecorder const recorder;

  array.reserve(2, true);
  array.reserve(0, false);

  EXPECT_EQ(recorder.units(), reports(2, "ozarray_t.h"));
  EXPECT_EQ(array.block(), block);
  EXPECT_EQ(array.all_slots(), (std::vector<int>{1, 2, 3, 0}));
}

TEST(OzArray, ReserveBelowTheSizeIsRefusedWithoutAHandlerToo)
{
  Probe<int> array{1, 2, 3};

  array.reserve(2, false);

  EXPECT_EQ(array.elements(), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(array.slots(), 4u);
}

TEST(OzArray, ReserveOfTheCapacityRebuildsTheBlockAndKeepsTheContents)
{
  Probe<CountedElement> array{1, 2, 3};
  CountedElement const* const block = array.block();
  CountedElement::reset();

  array.reserve(4, true);

  EXPECT_NE(array.block(), block);
  EXPECT_EQ(CountedElement::copies, 3);
  EXPECT_EQ(CountedElement::defaults, 1);
  EXPECT_EQ(CountedElement::destroyed, 4);
  EXPECT_EQ(array.all_slots(), (std::vector<CountedElement>{1, 2, 3, 0}));
}

TEST(OzArray, ReserveOfTheCapacityKeepsPlainElements)
{
  Probe<int> array{1, 2, 3};

  array.reserve(4, true);

  EXPECT_EQ(array.all_slots(), (std::vector<int>{1, 2, 3, 0}));
}

TEST(OzArray, ReserveMayLowerTheCapacityToTheSize)
{
  Probe<int> array{1, 2, 3, 4, 5};
  ReportRecorder const recorder;

  array.reserve(5, true);

  EXPECT_EQ(array.all_slots(), (std::vector<int>{1, 2, 3, 4, 5}));
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzArray, ReserveWithoutKeepingTurnsAllElementsIntoDefaultsAndKeepsTheSize)
{
  Probe<int> numbers{1, 2, 3};
  Probe<std::string> texts{"a", "b", "c"};

  numbers.reserve(8, false);
  texts.reserve(8, false);

  EXPECT_EQ(numbers.elements(), (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(numbers.all_slots(), std::vector<int>(8, 0));
  EXPECT_EQ(texts.elements(), (std::vector<std::string>{"", "", ""}));
  EXPECT_EQ(texts.slots(), 8u);
}

// Access

TEST(OzArray, AnIndexBelowTheSizeIsNotReported)
{
  Probe<int> array{1, 2, 3};
  OzArray<int> const& constant = array;
  ReportRecorder const recorder;

  array[2] = 5;

  EXPECT_EQ(array[2], 5);
  EXPECT_EQ(constant[0], 1);
  EXPECT_EQ(&constant[1], &array[1]);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzArray, AnIndexAtTheSizeIsReportedAndTheSlotBehindIsUsed)
{
  Probe<int> array{1, 2, 3};
  OzArray<int> const& constant = array;
  ReportRecorder recorder;

  array[3] = 4;

  EXPECT_EQ(recorder.units(), reports(1, "ozarray_i.h"));
  recorder.clear();

  EXPECT_EQ(constant[3], 4);

  EXPECT_EQ(recorder.units(), reports(1, "ozarray_i.h"));
  EXPECT_EQ(array.size(), 3u);
}

TEST(OzArray, AnIndexAtTheSizeGivesTheSlotBehindWithoutAHandler)
{
  Probe<int> array{1, 2, 3};
  OzArray<int> const& constant = array;

  EXPECT_EQ(&array[3], array.block() + 3);
  EXPECT_EQ(&constant[3], array.block() + 3);
}

std::vector<int> lines_of_reports;

void note_line(char const*, int line)
{
  lines_of_reports.push_back(line);
}

TEST(OzArray, TheTwoFormsOfAccessAreSeparateChecks)
{
  Probe<int> array{1, 2, 3};
  OzArray<int> const& constant = array;
  lines_of_reports.clear();
  dkb_assertion_handler = &note_line;

  static_cast<void>(array[3]);
  static_cast<void>(constant[3]);
  dkb_assertion_handler = nullptr;

  ASSERT_EQ(lines_of_reports.size(), 2u);
  EXPECT_NE(lines_of_reports[0], lines_of_reports[1]);
}

TEST(OzArray, FirstAndLastAreTheEnds)
{
  Probe<int> array{1, 2, 3};
  OzArray<int> const& constant = array;
  ReportRecorder const recorder;

  array.first() = 7;
  array.last() = 9;

  EXPECT_EQ(array.elements(), (std::vector<int>{7, 2, 9}));
  EXPECT_EQ(&constant.first(), &array.first());
  EXPECT_EQ(&constant.last(), &array.last());
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzArray, FirstOfAnEmptyArrayWithStorageIsNotReported)
{
  Probe<int> array;
  array.reserve(2, true);
  ReportRecorder const recorder;

  EXPECT_EQ(array.first(), 0);

  EXPECT_EQ(recorder.units(), reports(0, ""));
}

/// What a handler throws in order not to go on with what was reported.
struct Refused
{
  std::string unit;
};

void refuse(char const* file, int)
{
  std::string const path(file);
  throw Refused{path.substr(path.rfind('/') + 1)};
}

template <class Action>
std::string refusal_of(Action const& action)
{
  dkb_assertion_handler = &refuse;
  std::string unit = "nothing";
  try
  {
    action();
  }
  catch (Refused const& refused)
  {
    unit = refused.unit;
  }
  dkb_assertion_handler = nullptr;
  return unit;
}

TEST(OzArray, FirstAndLastWithoutStorageAreReportedAndAHandlerMayThrow)
{
  OzArray<int> array;
  OzArray<int> const& constant = array;

  EXPECT_EQ(refusal_of([&] { array.first(); }), "ozarray_i.h");
  EXPECT_EQ(refusal_of([&] { array.last(); }), "ozarray_i.h");
  EXPECT_EQ(refusal_of([&] { constant.first(); }), "ozarray_i.h");
  EXPECT_EQ(refusal_of([&] { constant.last(); }), "ozarray_i.h");
  EXPECT_EQ(refusal_of([&] { array[0]; }), "ozarray_i.h");
  EXPECT_EQ(refusal_of([&] { constant[0]; }), "ozarray_i.h");
}

TEST(OzArray, IsARangeOfItsElements)
{
  Probe<int> array{3, 1, 2};
  OzArray<int> const& constant = array;

  std::sort(array.begin(), array.end());
  std::vector<int> walked;
  for (int element : constant)
    walked.push_back(element);

  EXPECT_EQ(walked, (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(array.end() - array.begin(), 3);
}

// append and remove_last

TEST(OzArray, AppendFillsTheSlotBehindTheLastElement)
{
  Probe<int> array;
  ReportRecorder const recorder;

  array.append(1);
  array.append(2);
  array.append(3);

  EXPECT_EQ(array.all_slots(), (std::vector<int>{1, 2, 3, 0}));
  EXPECT_EQ(array.size(), 3u);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzArray, AppendTakesAnElementOfItsOwn)
{
  Probe<int> numbers{5, 6};
  Probe<std::string> texts{"a text that is too long for an inline buffer", "b"};
  Probe<CountedElement> counted{5, 6};

  numbers.append(numbers[0]);
  texts.append(texts[0]);
  counted.append(counted[0]);
  numbers.append(numbers[1]);

  EXPECT_EQ(numbers.elements(), (std::vector<int>{5, 6, 5, 6}));
  EXPECT_EQ(texts[2], "a text that is too long for an inline buffer");
  EXPECT_EQ(texts[0], "a text that is too long for an inline buffer");
  EXPECT_EQ(counted.elements(), (std::vector<CountedElement>{5, 6, 5}));
}

TEST(OzArray, GrowingMovesElementsWhereMovingCannotThrow)
{
  Probe<MovingElement> array{1, 2, 3, 4};
  MovingElement::reset();

  array.append(5);

  EXPECT_EQ(MovingElement::moves, 4);
  EXPECT_EQ(MovingElement::copies, 1);
  EXPECT_EQ(array.all_slots(), (std::vector<MovingElement>{1, 2, 3, 4, 5, 0, 0, 0}));
}

TEST(OzArray, RemoveLastClearsTheSlot)
{
  int target = 0;
  Probe<int*> array{&target, &target};
  Probe<CountedElement> counted{1, 2};
  CountedElement const* const block = counted.block();
  ReportRecorder const recorder;

  array.remove_last();
  counted.remove_last();

  EXPECT_EQ(array.size(), 1u);
  EXPECT_EQ(array.all_slots(), (std::vector<int*>{&target, nullptr}));
  EXPECT_EQ(counted.all_slots(), (std::vector<CountedElement>{1, 0}));
  EXPECT_EQ(counted.block(), block);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzArray, RemoveLastOfAnEmptyArrayIsReportedAndRefused)
{
  Probe<int> array;
  ReportRecorder const recorder;

  array.remove_last();

  EXPECT_EQ(recorder.units(), reports(1, "ozarray_t.h"));
  EXPECT_EQ(array.size(), 0u);
}

TEST(OzArray, RemoveLastOfAnEmptyArrayIsRefusedWithoutAHandlerToo)
{
  Probe<int> array;
  array.reserve(1, true);

  array.remove_last();

  EXPECT_EQ(array.size(), 0u);
}

// Live elements

TEST(OzArray, EverySlotUpToTheCapacityHoldsALiveElement)
{
  CountedElement::reset();
  {
    Probe<CountedElement> array;

    array.resize(5, true);
    EXPECT_EQ(CountedElement::live, 8);
    array.reserve(20, true);
    EXPECT_EQ(CountedElement::live, 20);
    array.resize(2, true);
    EXPECT_EQ(CountedElement::live, 20);
    array.append(1);
    EXPECT_EQ(CountedElement::live, 20);
    array.remove_last();
    EXPECT_EQ(CountedElement::live, 20);
    array.reserve(3, false);
    EXPECT_EQ(CountedElement::live, 3);

    Probe<CountedElement> const copy(array);
    EXPECT_EQ(CountedElement::live, 5);
  }
  EXPECT_EQ(CountedElement::live, 0);
}

TEST(OzArray, DestructionRunsOverTheCapacity)
{
  {
    Probe<CountedElement> array;
    array.resize(5, true);
    CountedElement::reset();
  }

  EXPECT_EQ(CountedElement::destroyed, 8);
}

TEST(OzArray, ShrinkingDestroysAndRebuildsTheSlotsOfAClass)
{
  struct Noted
  {
    Noted() = default;
    Noted(Noted const& other) noexcept
      : value(other.value)
    {
      ++built();
    }
    Noted& operator=(Noted const&) = default;
    ~Noted() { ++destroyed(); }
    static int& built()
    {
      static int n = 0;
      return n;
    }
    static int& destroyed()
    {
      static int n = 0;
      return n;
    }
    int value = 0;
  };
  Probe<Noted> array;
  array.resize(4, true);
  Noted::built() = Noted::destroyed() = 0;

  array.resize(1, true);

  EXPECT_EQ(Noted::built(), 3);
  EXPECT_EQ(Noted::destroyed(), 4); // and the one that was copied from
}

// Failure

/// Runs `action` on an array of 5 in 8 slots so often that each of its copies throws once. Each time the
/// array is as it was, and nothing is left over. Returns how many copies there are to fail.
template <class Action>
int fails_at_each_copy_without_a_trace(Action const& action)
{
  for (int n = 1;; ++n)
  {
    Probe<CountedElement> array{1, 2, 3, 4, 5};
    CountedElement::reset();
    CountedElement::live = 8;
    CountedElement::copies_until_throw = n;
    try
    {
      action(array);
      CountedElement::copies_until_throw = 0;
      return n - 1;
    }
    catch (std::runtime_error const&)
    {
    }
    EXPECT_EQ(CountedElement::live, 8) << "copy " << n;
    EXPECT_EQ(array.size(), 5u) << "copy " << n;
    EXPECT_EQ(array.all_slots(), (std::vector<CountedElement>{1, 2, 3, 4, 5, 0, 0, 0})) << "copy " << n;
  }
}

TEST(OzArray, IsAsItWasWhenACopyThrows)
{
  Probe<CountedElement> const longer{11, 12, 13, 14, 15, 16, 17, 18, 19};
  Probe<CountedElement> const shorter{11, 12};

  EXPECT_EQ(fails_at_each_copy_without_a_trace([](auto& array) { array.reserve(10, true); }), 5);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([](auto& array) { array.reserve(8, true); }), 5);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([](auto& array) { array.resize(9, true); }), 5);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([](auto& array) { array.resize(2, true); }), 2);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([](auto& array) { array.append(6); }), 1);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([](auto& array) { array.remove_last(); }), 1);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([&](auto& array) { array = longer; }), 9);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([&](auto& array) { array = shorter; }), 2);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([](auto& array) { Probe<CountedElement> const copy(array); }),
            5);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([](auto& array) { array.reserve(9, false); }), 0);
}

TEST(OzArray, IsAsItWasWhenTheCopyOfAnAppendedElementThrowsWhileItGrows)
{
  for (int n = 1; n <= 5; ++n)
  {
    Probe<CountedElement> array{1, 2, 3, 4};
    CountedElement const added(5);
    CountedElement::reset();
    CountedElement::copies_until_throw = n;

    EXPECT_THROW(array.append(added), std::runtime_error);

    EXPECT_EQ(CountedElement::live, 0) << "as many destroyed as made";
    EXPECT_EQ(array.all_slots(), (std::vector<CountedElement>{1, 2, 3, 4}));
    EXPECT_EQ(array.slots(), 4u);
  }
}

template <class T>
void refuses_impossible_sizes()
{
  std::uint64_t const wraps = HUGE_NUMBER / sizeof(T) + 1; // of which the bytes would count as 0 or few
  std::uint64_t const no_difference = (HUGE_NUMBER / 2) / sizeof(T) + 1;
  std::uint64_t const not_there = (HUGE_NUMBER / 8) / sizeof(T);
  for (std::uint64_t n : {HUGE_NUMBER, HUGE_NUMBER - 4095, wraps, no_difference, not_there})
  {
    if (n == 0)
      continue;
    Probe<T> array;
    array.append(T(1));
    array.append(T(2));
    array.append(T(3));
    std::vector<T> const before = array.all_slots();
    T const* const block = array.block();

    EXPECT_THROW(array.resize(n, true), std::bad_alloc) << n;
    EXPECT_THROW(array.resize(n, false), std::bad_alloc) << n;
    EXPECT_THROW(array.reserve(n, true), std::bad_alloc) << n;
    EXPECT_THROW(array.reserve(n, false), std::bad_alloc) << n;

    EXPECT_EQ(array.block(), block);
    EXPECT_EQ(array.size(), 3u);
    EXPECT_EQ(array.all_slots(), before);
  }
}

TEST(OzArray, AnImpossibleSizeThrowsAndChangesNothing)
{
  refuses_impossible_sizes<char>();
  refuses_impossible_sizes<int>();
  refuses_impossible_sizes<double>();
  refuses_impossible_sizes<CountedElement>();
  refuses_impossible_sizes<MovingElement>();
}

// Layout

/// Notes which of the virtual operations is called.
class Overriding : public OzArray<int>
{
public:
  void resize(std::uint64_t n, bool keep) override
  {
    calls.push_back("resize " + std::to_string(n) + (keep ? " keep" : ""));
    OzArray<int>::resize(n, keep);
  }
  void reserve(std::uint64_t n, bool keep) override
  {
    calls.push_back("reserve " + std::to_string(n) + (keep ? " keep" : ""));
    OzArray<int>::reserve(n, keep);
  }

  std::vector<std::string> calls;
};

TEST(OzArray, ResizeReallocatesThroughTheVirtualReserve)
{
  Overriding array;
  OzArray<int>& base = array;

  base.resize(5, true);
  base.resize(7, false);
  base.resize(9, false);

  EXPECT_EQ(array.calls, (std::vector<std::string>{"resize 5 keep", "reserve 8 keep", "resize 7", "resize 9",
                                                   "reserve 16"}));
}

TEST(OzArray, AppendCallsNothingVirtual)
{
  Overriding array;

  for (int i = 0; i < 10; ++i)
    array.append(i);

  EXPECT_TRUE(array.calls.empty());
}

TEST(OzArray, AssignmentResizesThroughTheVirtualTable)
{
  Overriding array;
  Probe<int> const source{1, 2, 3};

  static_cast<OzArray<int>&>(array) = source;

  EXPECT_EQ(array.calls, (std::vector<std::string>{"resize 3", "reserve 4"}));
}

// The table of the platform's ABI: two entries for the destructor, then the functions in their order. The
// binary interface of the library depends on it.
TEST(OzArray, VirtualFunctionsStandInTheirOrder)
{
  using Operation = void (*)(void*, std::uint64_t, bool);
  Overriding array;
  OzArray<int>* const base = &array;
  void** table = nullptr;
  std::memcpy(&table, static_cast<void*>(base), sizeof table);

  reinterpret_cast<Operation>(table[2])(base, 3, true);
  EXPECT_EQ(array.calls, (std::vector<std::string>{"resize 3 keep", "reserve 4 keep"}));
  array.calls.clear();
  reinterpret_cast<Operation>(table[3])(base, 6, false);
  EXPECT_EQ(array.calls, (std::vector<std::string>{"reserve 6"}));
}

TEST(OzArray, FieldsStandInTheirOrderWithTheAllocatorFirst)
{
  Probe<int> const array;

  EXPECT_EQ(array.offset_of_allocator(), 8);
  EXPECT_EQ(array.offset_of_data(), 16);
  EXPECT_EQ(array.offset_of_capacity(), 24);
  EXPECT_EQ(array.offset_of_size(), 32);
  EXPECT_EQ(sizeof(OzArray<int>), 40u);
}

TEST(OzArray, IsDestroyedThroughItsBase)
{
  CountedElement::reset();
  std::unique_ptr<OzArray<CountedElement>> array = std::make_unique<Probe<CountedElement>>();
  array->resize(3, true);

  array.reset();

  EXPECT_EQ(CountedElement::live, 0);
}

// Against a model

/// What an array of T is expected to be: elements, and a capacity by the rule.
template <class T>
struct Model
{
  std::vector<T> elements;
  std::uint64_t capacity = 0;

  void grow(std::uint64_t n)
  {
    if (n >= 64000)
    {
      while (capacity < n)
        capacity += 4096;
      return;
    }
    capacity = std::max<std::uint64_t>(capacity, 1);
    while (capacity < n)
      capacity *= 2;
  }
  void resize(std::uint64_t n, bool keep)
  {
    if (n > capacity)
    {
      if (!keep)
        elements.clear();
      grow(n);
    }
    elements.resize(n);
  }
  void reserve(std::uint64_t n, bool keep)
  {
    if (n < elements.size())
      return;
    if (!keep)
      std::fill(elements.begin(), elements.end(), T());
    capacity = n;
  }
  void append(T const& value)
  {
    if (elements.size() == capacity)
      grow(capacity + 1);
    elements.push_back(value);
  }
};

int value_of(int value)
{
  return value;
}
int value_of(CountedElement const& element)
{
  return element.value;
}
int value_of(MovingElement const& element)
{
  return element.value;
}

template <class T>
void agrees_with_a_vector(unsigned seed, std::uint64_t largest, int steps)
{
  std::mt19937 random(seed);
  auto const below = [&](std::uint64_t n) { return static_cast<std::uint64_t>(random()) % n; };
  Probe<T> array;
  Model<T> model;
  for (int step = 0; step < steps; ++step)
  {
    bool const keep = below(2) == 0;
    T const value(static_cast<int>(below(1000)) + 1);
    switch (below(9))
    {
    case 0:
    case 1:
    case 2:
      array.append(value);
      model.append(value);
      break;
    case 3:
      array.remove_last();
      if (!model.elements.empty())
        model.elements.pop_back();
      break;
    case 4:
    {
      std::uint64_t const n = below(largest);
      array.resize(n, keep);
      model.resize(n, keep);
      break;
    }
    case 5:
    {
      std::uint64_t const n = below(largest);
      array.reserve(n, keep);
      model.reserve(n, keep);
      break;
    }
    case 6:
      if (array.size() != 0)
      {
        std::uint64_t const i = below(array.size());
        array[i] = value;
        model.elements[i] = value;
      }
      break;
    case 7:
      if (array.size() != 0)
      {
        std::uint64_t const i = below(array.size());
        T const own = model.elements[i];
        array.append(array[i]);
        model.append(own);
      }
      break;
    default:
    {
      Probe<T> source;
      for (std::uint64_t n = below(20); n > 0; --n)
        source.append(value);
      array = source;
      model.resize(source.size(), false);
      model.elements.assign(source.size(), value);
      break;
    }
    }

    ASSERT_EQ(array.size(), model.elements.size()) << "seed " << seed << ", step " << step;
    ASSERT_EQ(array.slots(), model.capacity) << "seed " << seed << ", step " << step;
    for (std::uint64_t i = 0; i < array.slots(); ++i)
    {
      int const expected = i < array.size() ? value_of(model.elements[i]) : 0;
      ASSERT_EQ(value_of(array.slot(i)), expected) << "seed " << seed << ", step " << step << ", slot " << i;
    }
  }
}

TEST(OzArray, AgreesWithAVectorAtEachOfManyRandomSteps)
{
  agrees_with_a_vector<int>(1, 40, 20000);
  agrees_with_a_vector<int>(2, 3, 2000);
  agrees_with_a_vector<int>(3, 90000, 100);
  agrees_with_a_vector<MovingElement>(4, 40, 5000);
  CountedElement::reset();
  agrees_with_a_vector<CountedElement>(5, 40, 5000);
  EXPECT_EQ(CountedElement::live, 0);
}
} // namespace
