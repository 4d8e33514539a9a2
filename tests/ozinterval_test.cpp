#include "ozinterval.h"

#include "report_recorder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
double const INF = std::numeric_limits<double>::infinity();
double const NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> const NO_REPORT;
std::vector<std::string> const ONE_REPORT = reports(1, "ozinterval_i.h");

/// The ends of an interval, for comparison with literals.
std::pair<double, double> ends(OzInterval const& interval)
{
  return {interval.start(), interval.end()};
}

using Ends = std::pair<double, double>;

TEST(OzInterval, IsAPlainValueOfTwoAdjacentNumbers)
{
  static_assert(sizeof(OzInterval) == 2 * sizeof(double));
  static_assert(std::is_standard_layout_v<OzInterval>);
  static_assert(std::is_trivially_copyable_v<OzInterval>);
  static_assert(!std::is_polymorphic_v<OzInterval>);
  OzInterval const interval(3.0, 4.0);

  double const* const numbers = reinterpret_cast<double const*>(&interval);

  EXPECT_EQ(numbers[0], 3.0);
  EXPECT_EQ(numbers[1], 4.0);
}

TEST(OzInterval, DefaultIsTheCanonicalEmptyInterval)
{
  OzInterval const interval;

  EXPECT_EQ(ends(interval), Ends(1.0, 0.0));
  EXPECT_TRUE(interval.is_empty());
  EXPECT_EQ(interval.length(), 0.0);
  EXPECT_EQ(interval.middle(), 0.5);
}

TEST(OzInterval, IsMadeFromANumberTwoNumbersOrAnArray)
{
  static_assert(std::is_convertible_v<double, OzInterval>);
  static_assert(!std::is_convertible_v<double const*, OzInterval>);
  double const numbers[] = {7.0, 2.0, 9.0};

  EXPECT_EQ(ends(OzInterval(2.5)), Ends(2.5, 2.5));
  EXPECT_EQ(ends(OzInterval(1.0, 2.0)), Ends(1.0, 2.0));
  EXPECT_EQ(ends(OzInterval(3.0, 1.0)), Ends(3.0, 1.0));
  EXPECT_EQ(ends(OzInterval(numbers)), Ends(7.0, 2.0));
}

TEST(OzInterval, CopiesAndAssignsBothEnds)
{
  OzInterval const interval(1.0, 2.0);
  OzInterval const copy(interval);
  OzInterval assigned;

  OzInterval& result = (assigned = interval);

  EXPECT_EQ(&result, &assigned);
  EXPECT_EQ(ends(copy), Ends(1.0, 2.0));
  EXPECT_EQ(ends(assigned), Ends(1.0, 2.0));
}

TEST(OzInterval, EqualityComparesBothEndsExactly)
{
  OzInterval const interval(1.0, 2.0);

  EXPECT_TRUE(interval == OzInterval(1.0, 2.0));
  EXPECT_FALSE(interval == OzInterval(1.0, 2.0000000000000004));
  EXPECT_FALSE(interval == OzInterval(1.0000000000000002, 2.0));
  EXPECT_TRUE(OzInterval(0.0, 0.0) == OzInterval(-0.0, -0.0));
  EXPECT_FALSE(OzInterval(3.0, 1.0) == OzInterval()) << "both empty";
  EXPECT_FALSE(OzInterval(NOT_A_NUMBER) == OzInterval(NOT_A_NUMBER));
}

TEST(OzInterval, IndexZeroIsTheStartAndOneTheEnd)
{
  static_assert(std::is_same_v<decltype(std::declval<OzInterval&>()[0]), double&>);
  static_assert(std::is_same_v<decltype(std::declval<OzInterval const&>()[0]), double const&>);
  ReportRecorder const recorder;
  OzInterval interval(1.0, 2.0);
  OzInterval const& constant = interval;

  interval[0] = 5.0;
  interval[1] = 6.0;

  EXPECT_EQ(ends(interval), Ends(5.0, 6.0));
  EXPECT_EQ(constant[0], 5.0);
  EXPECT_EQ(constant[1], 6.0);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzInterval, BadIndexIsReportedOnceAndUsed)
{
  OzInterval intervals[] = {{1.0, 2.0}, {3.0, 4.0}, {5.0, 6.0}};
  OzInterval& middle = intervals[1];
  OzInterval const& constant = middle;
  int volatile below = -1;
  int volatile above = 2;
  ReportRecorder recorder;

  EXPECT_EQ(middle[below], 2.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(middle[above], 5.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(constant[below], 2.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(constant[above], 5.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);

  middle[above] = 7.0;
  EXPECT_EQ(intervals[2].start(), 7.0);
}

TEST(OzInterval, BadIndexIsUsedWithoutAHandlerToo)
{
  OzInterval const intervals[] = {{1.0, 2.0}, {3.0, 4.0}};
  int volatile above = 2;

  EXPECT_EQ(intervals[0][above], 3.0);
}

TEST(OzInterval, EndsAreSetOneByOneWithoutPuttingThemInOrder)
{
  OzInterval interval(1.0, 2.0);

  interval.set_start(5.0);
  EXPECT_EQ(ends(interval), Ends(5.0, 2.0));
  interval.set_end(9.0);
  EXPECT_EQ(ends(interval), Ends(5.0, 9.0));
}

TEST(OzInterval, IsEmptyWhereTheStartLiesAboveTheEnd)
{
  struct
  {
    char const* what;
    OzInterval interval;
    bool empty;
    double length;
    double middle;
  } const cases[] = {
      {"a range", {1.0, 4.0}, false, 3.0, 2.5},
      {"a point", {2.0}, false, 0.0, 2.0},
      {"ends in the wrong order", {3.0, 1.0}, true, 0.0, 2.0},
      {"ends in the wrong order by one step", {1.0000000000000002, 1.0}, true, 0.0, 1.0},
      {"below zero", {-4.0, -1.0}, false, 3.0, -2.5},
      {"up to infinity", {0.0, INF}, false, INF, INF},
      {"from infinity down", {INF, 0.0}, true, 0.0, INF},
  };
  for (auto const& c : cases)
  {
    EXPECT_EQ(c.interval.is_empty(), c.empty) << c.what;
    EXPECT_EQ(c.interval.length(), c.length) << c.what;
    EXPECT_EQ(c.interval.middle(), c.middle) << c.what;
  }
}

TEST(OzInterval, WithAnEndThatIsNoNumberIsNotEmptyAndHoldsNoNumber)
{
  for (OzInterval const& interval : {OzInterval(NOT_A_NUMBER, 1.0), OzInterval(0.0, NOT_A_NUMBER)})
  {
    EXPECT_FALSE(interval.is_empty());
    EXPECT_FALSE(interval.contains(0.5));
    EXPECT_TRUE(std::isnan(interval.length()));
    EXPECT_TRUE(std::isnan(interval.middle()));
    EXPECT_FALSE(interval.overlapping(OzInterval(0.0, 1.0)));
    EXPECT_FALSE(interval.overlapping(OzInterval(0.0, 1.0), 5.0));
  }
}

TEST(OzInterval, ContainsTheNumbersBetweenItsEndsAndTheEnds)
{
  struct
  {
    char const* what;
    OzInterval interval;
    double x;
    bool contained;
  } const cases[] = {
      {"inside", {1.0, 2.0}, 1.5, true},
      {"at the start", {1.0, 2.0}, 1.0, true},
      {"at the end", {1.0, 2.0}, 2.0, true},
      {"just below", {1.0, 2.0}, 0.99999999999999989, false},
      {"just above", {1.0, 2.0}, 2.0000000000000004, false},
      {"a point", {2.0}, 2.0, true},
      {"between the ends of an empty one", {1.0, 0.0}, 0.5, false},
      {"at the start of an empty one", {1.0, 0.0}, 1.0, false},
      {"at the end of an empty one", {1.0, 0.0}, 0.0, false},
      {"no number", {1.0, 2.0}, NOT_A_NUMBER, false},
      {"no number in all numbers", {-INF, INF}, NOT_A_NUMBER, false},
      {"infinity", {0.0, INF}, INF, true},
      {"infinity, in a finite one", {0.0, 1e308}, INF, false},
  };
  for (auto const& c : cases)
    EXPECT_EQ(c.interval.contains(c.x), c.contained) << c.what;
}

TEST(OzInterval, ContainsIntervalsWithBothEndsInside)
{
  struct
  {
    char const* what;
    OzInterval interval;
    OzInterval other;
    bool contained;
  } const cases[] = {
      {"inside", {1.0, 4.0}, {2.0, 3.0}, true},
      {"itself", {1.0, 4.0}, {1.0, 4.0}, true},
      {"below at the start", {1.0, 4.0}, {0.5, 3.0}, false},
      {"above at the end", {1.0, 4.0}, {2.0, 4.5}, false},
      {"around", {1.0, 4.0}, {0.0, 5.0}, false},
      {"apart", {1.0, 4.0}, {6.0, 7.0}, false},
      {"an empty one", {1.0, 4.0}, {}, true},
      {"an empty one far away", {1.0, 4.0}, {9.0, 8.0}, true},
      {"an empty one in a point", {2.0}, {}, true},
      {"an empty one in an empty one", {}, {}, false},
      {"a point in an empty one", {3.0, 1.0}, {2.0}, false},
  };
  for (auto const& c : cases)
    EXPECT_EQ(c.interval.contains(c.other), c.contained) << c.what;
}

TEST(OzInterval, OverlapsWhereThereIsACommonNumber)
{
  struct
  {
    char const* what;
    OzInterval a;
    OzInterval b;
    bool overlap;
  } const cases[] = {
      {"touching", {1.0, 2.0}, {2.0, 3.0}, true},
      {"apart", {1.0, 2.0}, {2.5, 3.0}, false},
      {"just apart", {1.0, 2.0}, {2.0000000000000004, 3.0}, false},
      {"one in the other", {1.0, 4.0}, {2.0, 3.0}, true},
      {"in part", {1.0, 3.0}, {2.0, 4.0}, true},
      {"equal points", {2.0}, {2.0}, true},
      {"an empty one across", {1.0, 4.0}, {3.0, 2.0}, false},
      {"the canonical empty one", {-1.0, 4.0}, {}, false},
      {"two empty ones", {}, {}, false},
      {"meeting at infinity", {0.0, INF}, {INF, INF}, true},
  };
  for (auto const& c : cases)
  {
    EXPECT_EQ(c.a.overlapping(c.b), c.overlap) << c.what;
    EXPECT_EQ(c.b.overlapping(c.a), c.overlap) << c.what << ", the other way";
    EXPECT_EQ(c.a.overlapping(c.b, 0.0), c.overlap) << c.what << ", tolerance 0";
    EXPECT_EQ(c.a.overlapping(c.b, -1.0), c.overlap) << c.what << ", tolerance -1";
  }
}

TEST(OzInterval, OverlapsAcrossAGapUpToTheTolerance)
{
  struct
  {
    char const* what;
    OzInterval a;
    OzInterval b;
    double tolerance;
    bool overlap;
  } const cases[] = {
      {"gap as wide as the tolerance", {1.0, 2.0}, {2.5, 3.0}, 0.5, true},
      {"gap wider by one step", {1.0, 2.0}, {2.5, 3.0}, 0.49999999999999994, false},
      {"gap narrower", {1.0, 2.0}, {2.25, 3.0}, 0.5, true},
      {"no gap", {1.0, 2.0}, {1.5, 3.0}, 0.5, true},
      {"an empty one", {1.0, 4.0}, {3.0, 2.0}, 100.0, false},
      {"an empty one, any tolerance", {1.0, 4.0}, {}, INF, false},
      {"two empty ones", {}, {}, INF, false},
      {"a tolerance that is no number", {1.0, 4.0}, {2.0, 3.0}, NOT_A_NUMBER, false},
      {"any gap", {1.0, 2.0}, {1e300, 1e301}, INF, true},
      {"a gap up to infinity", {1.0, 2.0}, {INF, INF}, 1e308, false},
  };
  for (auto const& c : cases)
  {
    EXPECT_EQ(c.a.overlapping(c.b, c.tolerance), c.overlap) << c.what;
    EXPECT_EQ(c.b.overlapping(c.a, c.tolerance), c.overlap) << c.what << ", the other way";
  }
}

TEST(OzInterval, IncludeMovesTheNearerEndOut)
{
  struct
  {
    char const* what;
    OzInterval interval;
    double x;
    Ends result;
  } const cases[] = {
      {"below", {1.0, 2.0}, 0.0, {0.0, 2.0}},
      {"above", {1.0, 2.0}, 5.0, {1.0, 5.0}},
      {"inside", {1.0, 2.0}, 1.5, {1.0, 2.0}},
      {"at the start", {1.0, 2.0}, 1.0, {1.0, 2.0}},
      {"in an empty one", {}, 0.25, {0.25, 0.25}},
      {"in an empty one with other ends", {9.0, 8.0}, 1.0, {1.0, 1.0}},
      {"no number", {1.0, 2.0}, NOT_A_NUMBER, {1.0, 2.0}},
      {"infinity", {1.0, 2.0}, -INF, {-INF, 2.0}},
  };
  for (auto const& c : cases)
  {
    OzInterval interval = c.interval;
    OzInterval& result = interval.include(c.x);

    EXPECT_EQ(&result, &interval) << c.what;
    EXPECT_EQ(ends(interval), c.result) << c.what;
  }
}

TEST(OzInterval, CombineGivesTheSmallestIntervalAroundBoth)
{
  struct
  {
    char const* what;
    OzInterval interval;
    OzInterval other;
    Ends result;
  } const cases[] = {
      {"apart", {1.0, 2.0}, {5.0, 6.0}, {1.0, 6.0}},
      {"apart, the other below", {5.0, 6.0}, {1.0, 2.0}, {1.0, 6.0}},
      {"one inside", {1.0, 6.0}, {2.0, 3.0}, {1.0, 6.0}},
      {"one around", {2.0, 3.0}, {1.0, 6.0}, {1.0, 6.0}},
      {"an empty argument", {1.0, 2.0}, {9.0, 0.0}, {1.0, 2.0}},
      {"an empty target", {9.0, 0.0}, {1.0, 2.0}, {1.0, 2.0}},
      {"both empty", {9.0, 0.0}, {8.0, 1.0}, {9.0, 0.0}},
  };
  for (auto const& c : cases)
  {
    OzInterval interval = c.interval;
    OzInterval& result = interval.combine(c.other);

    EXPECT_EQ(&result, &interval) << c.what;
    EXPECT_EQ(ends(interval), c.result) << c.what;
  }
}

TEST(OzInterval, WithItselfStaysAsItIs)
{
  for (OzInterval const& original : {OzInterval(1.0, 2.0), OzInterval(3.0, 1.0), OzInterval()})
  {
    OzInterval interval = original;
    OzInterval const& itself = interval;

    EXPECT_EQ(ends(interval.combine(itself)), ends(original));
    EXPECT_EQ(ends(interval.intersect_with(itself)), ends(original));
    EXPECT_EQ(ends(interval.intersect(itself)), ends(original));
    EXPECT_EQ(interval.overlapping(itself), !original.is_empty());
    EXPECT_EQ(interval.contains(itself), !original.is_empty());
  }
}

TEST(OzInterval, ChangesAnEndOnlyForANumberBeyondIt)
{
  OzInterval interval(0.0, 0.0);

  interval.include(-0.0).combine(OzInterval(-0.0)).intersect_with(OzInterval(-0.0));
  EXPECT_FALSE(std::signbit(interval.start()));
  EXPECT_FALSE(std::signbit(interval.end()));

  interval.combine(OzInterval(NOT_A_NUMBER, 5.0));
  EXPECT_EQ(ends(interval), Ends(0.0, 5.0));
  interval.intersect_with(OzInterval(NOT_A_NUMBER, 4.0));
  EXPECT_EQ(ends(interval), Ends(0.0, 4.0));
}

TEST(OzInterval, IntersectTakesTheGreaterStartAndTheLesserEnd)
{
  static_assert(
      std::is_same_v<decltype(std::declval<OzInterval const&>().intersect(OzInterval())), OzInterval const>);
  struct
  {
    char const* what;
    OzInterval interval;
    OzInterval other;
    Ends result;
  } const cases[] = {
      {"in part", {1.0, 3.0}, {2.0, 4.0}, {2.0, 3.0}},
      {"one inside", {1.0, 6.0}, {2.0, 3.0}, {2.0, 3.0}},
      {"touching", {1.0, 2.0}, {2.0, 3.0}, {2.0, 2.0}},
      {"apart", {1.0, 2.0}, {5.0, 6.0}, {5.0, 2.0}},
      {"with an empty one", {0.0, 9.0}, {3.0, 2.0}, {3.0, 2.0}},
      {"with the canonical empty one", {-5.0, 5.0}, {}, {1.0, 0.0}},
      {"two empty ones", {4.0, 1.0}, {3.0, 2.0}, {4.0, 1.0}},
  };
  for (auto const& c : cases)
  {
    OzInterval const original = c.interval;
    OzInterval interval = c.interval;
    OzInterval& result = interval.intersect_with(c.other);

    EXPECT_EQ(&result, &interval) << c.what;
    EXPECT_EQ(ends(interval), c.result) << c.what;
    EXPECT_EQ(ends(original.intersect(c.other)), c.result) << c.what;
    EXPECT_EQ(ends(c.other.intersect(original)), c.result) << c.what << ", the other way";
    EXPECT_EQ(original, c.interval) << c.what;
  }
}

/// Intervals over few numbers, so that ends meet often; about a third of them are empty.
TEST(OzInterval, AgreesWithSetsOfNumbers)
{
  std::mt19937 random(20240611);
  std::uniform_int_distribution<int> digit(0, 7);
  auto const set_of = [](OzInterval const& interval)
  {
    std::vector<bool> members;
    for (int x = -1; x < 9; ++x)
      members.push_back(interval.start() <= x && x <= interval.end());
    return members;
  };

  for (int step = 0; step < 20000; ++step)
  {
    OzInterval const a(digit(random), digit(random));
    OzInterval const b(digit(random), digit(random));
    std::vector<bool> const in_a = set_of(a);
    std::vector<bool> const in_b = set_of(b);
    std::vector<bool> in_both;
    bool any = false;
    bool all_of_b = true;
    for (std::size_t i = 0; i < in_a.size(); ++i)
    {
      in_both.push_back(in_a[i] && in_b[i]);
      any = any || in_both.back();
      all_of_b = all_of_b && (in_a[i] || !in_b[i]);
      ASSERT_EQ(a.contains(static_cast<double>(i) - 1.0), in_a[i]) << "step " << step;
    }

    ASSERT_EQ(a.overlapping(b), any) << "step " << step;
    ASSERT_EQ(b.overlapping(a), any) << "step " << step;
    ASSERT_EQ(a.contains(b), !a.is_empty() && all_of_b) << "step " << step;
    ASSERT_EQ(set_of(a.intersect(b)), in_both) << "step " << step;

    double const tolerance = digit(random);
    ASSERT_EQ(a.overlapping(b, tolerance), b.overlapping(a, tolerance)) << "step " << step;
    OzInterval wider(a.start() - tolerance, a.end() + tolerance);
    ASSERT_EQ(a.overlapping(b, tolerance), !a.is_empty() && wider.overlapping(b)) << "step " << step;

    OzInterval both(a);
    both.combine(b);
    ASSERT_TRUE(a.is_empty() || both.contains(a)) << "step " << step;
    ASSERT_TRUE(b.is_empty() || both.contains(b)) << "step " << step;
    ASSERT_EQ(both.is_empty(), a.is_empty() && b.is_empty()) << "step " << step;
    OzInterval one_by_one(a);
    if (!b.is_empty())
      one_by_one.include(b.start()).include(b.end());
    ASSERT_EQ(one_by_one, both) << "step " << step;
  }
}
} // namespace
