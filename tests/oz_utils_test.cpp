#include "oz_utils.h"

#include "ozinterval.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
double const PI = 3.141592653589793;
double const INF = std::numeric_limits<double>::infinity();
double const NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> const NO_REPORT;
std::vector<std::string> const ONE_REPORT = reports(1, "oz_utils.cpp");

OzArray<double> array_of(std::initializer_list<double> numbers)
{
  return OzArray<double>(numbers.begin(), numbers.size(), numbers.size());
}

std::vector<double> numbers_of(OzArray<double> const& array)
{
  return std::vector<double>(array.begin(), array.end());
}

std::vector<std::string> split(char const* text, char const* delimiter)
{
  std::vector<std::string> parts;
  for (OzString const& part : oz_split(OzString(text), delimiter))
  {
    EXPECT_EQ(part.length(), std::string(part.as_const_c_string()).size());
    parts.emplace_back(part.as_const_c_string());
  }
  return parts;
}

TEST(OzBlankstring, HasAsManyBlanksAsAskedFor)
{
  EXPECT_EQ(oz_blankstring(1), " ");
  EXPECT_EQ(oz_blankstring(4), "    ");
  EXPECT_EQ(oz_blankstring(4).length(), 4u);
  EXPECT_EQ(oz_blankstring(1000), std::string(1000, ' ').c_str());
}

TEST(OzBlankstring, OfLessThanOneIsEmpty)
{
  EXPECT_TRUE(oz_blankstring(0).null());
  EXPECT_TRUE(oz_blankstring(-1).null());
  EXPECT_TRUE(oz_blankstring(INT_MIN).null());
}

TEST(OzTolower, MakesALoweredCopyOfAConstantString)
{
  OzString const text("Plate 7A_Z[");

  OzString const lowered = oz_tolower(text);

  EXPECT_EQ(lowered, "plate 7a_z[");
  EXPECT_EQ(text, "Plate 7A_Z[");
  EXPECT_EQ(oz_tolower("ABC"), "abc");
}

TEST(OzTolower, LowersAVariableInPlace)
{
  static_assert(std::is_same_v<decltype(oz_tolower(std::declval<OzString&>())), void>);
  OzString text("Plate");

  oz_tolower(text);

  EXPECT_EQ(text, "plate");
}

TEST(OzTolower, LeavesBytesAboveAsciiAlone)
{
  OzString text("\xC3\x89\xFF\x80 A");

  oz_tolower(text);

  EXPECT_EQ(text, "\xC3\x89\xFF\x80 a");
}

TEST(OzTolower, StopsAtTheFirstZero)
{
  OzString text("ABCD");
  text[1] = '\0';

  oz_tolower(text);

  EXPECT_EQ(text[0], 'a');
  EXPECT_EQ(text[2], 'C');
  EXPECT_EQ(text.length(), 4u);
}

TEST(OzTolower, OfAnEmptyStringIsEmptyAndReportsNothing)
{
  OzString text;
  ReportRecorder const recorder;

  oz_tolower(text);

  EXPECT_TRUE(text.null());
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzSplit, CutsAtEachDelimiter)
{
  using Parts = std::vector<std::string>;
  struct
  {
    char const* what;
    char const* text;
    char const* delimiter;
    Parts parts;
  } const cases[] = {
      {"two parts", "a,b", ",", {"a", "b"}},
      {"three longer parts", "ab,cde,f", ",", {"ab", "cde", "f"}},
      {"delimiter at the end", "a,b,", ",", {"a", "b"}},
      {"delimiter in front", ",a", ",", {"", "a"}},
      {"twice in a row", "a,,b", ",", {"a", "", "b"}},
      {"delimiters only", ",,", ",", {"", ""}},
      {"one delimiter", ",", ",", {""}},
      {"no delimiter", "ab", ",", {}},
      {"empty", "", ",", {}},
      {"a longer delimiter leaves its rest", "aXYb", "XY", {"a", "Yb"}},
      {"a longer delimiter at the end", "aXY", "XY", {"a", "Y"}},
      {"one that overlaps itself", "aaa", "aa", {"", "", "a"}},
      {"half a delimiter", "aXb", "XY", {}},
  };
  for (auto const& c : cases)
    EXPECT_EQ(split(c.text, c.delimiter), c.parts) << c.what;
}

TEST(OzSplit, ReportsNothing)
{
  ReportRecorder const recorder;

  oz_split("a,,b,", ",");
  oz_split("", ",");

  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzCongruenceInfo, SplitsAnIntegerIntoARepresentativeAndPeriods)
{
  struct
  {
    char const* what;
    int value;
    int period;
    int base;
    int result;
    int count;
  } const cases[] = {
      {"within the period", 7, 10, 0, 7, 0},
      {"at the base", 0, 10, 0, 0, 0},
      {"one period above", 10, 10, 0, 0, 1},
      {"above", 25, 10, 0, 5, 2},
      {"below", -1, 10, 0, 9, -1},
      {"one period below gives the upper end", -10, 10, 0, 10, -2},
      {"three periods below", -30, 10, 0, 10, -4},
      {"just above one period below", -9, 10, 0, 1, -1},
      {"another base", 25, 10, 3, 5, 2},
      {"at another base", 13, 10, 3, 3, 1},
      {"below another base", 2, 10, 3, 12, -1},
      {"whole periods below another base", -7, 10, 3, 13, -2},
      {"a negative base", -4, 10, -5, -4, 0},
      {"below a negative base", -6, 10, -5, 4, -1},
      {"period 1", 5, 1, 0, 0, 5},
      {"period 1, below", -5, 1, 0, 1, -6},
      {"a negative period, above", 25, -10, 0, 5, -2},
      {"a negative period, below", -25, -10, 0, -15, 1},
      {"the whole range", INT_MAX, 10, INT_MIN, INT_MIN + 5, 429496729},
      {"the whole range downwards is cut", INT_MIN, 10, INT_MAX, INT_MIN + 4, -429496730},
      {"most negative number and period -1", INT_MIN, -1, 0, -1, INT_MAX},
      {"most negative period", 5, INT_MIN, 0, 5, 0},
      {"a count beyond 32 bits is cut", INT_MAX, 1, INT_MIN, INT_MIN, -1},
  };
  for (auto const& c : cases)
  {
    int result = 4711;
    int count = 4711;
    oz_congruence_info(c.value, c.period, c.base, result, count);

    EXPECT_EQ(result, c.result) << c.what;
    EXPECT_EQ(count, c.count) << c.what;
  }
}

TEST(OzCongruenceInfo, OfAnIntegerKeepsItsClassAndStaysInThePeriod)
{
  std::mt19937 random(77);
  for (int step = 0; step < 200000; ++step)
  {
    // Small numbers half of the time, so that whole periods are common.
    int const range = step % 2 == 0 ? 20 : 1000000000;
    std::uniform_int_distribution<int> number(-range, range);
    int const value = number(random);
    int const base = number(random);
    int const period = std::abs(number(random)) + 1;
    int result = 0;
    int count = 0;

    oz_congruence_info(value, period, base, result, count);

    ASSERT_EQ(value, result + std::int64_t(count) * period) << "step " << step;
    std::int64_t const offset = std::int64_t(result) - base;
    if (value >= base)
      ASSERT_TRUE(0 <= offset && offset < period) << "step " << step;
    else
      ASSERT_TRUE(0 < offset && offset <= period) << "step " << step;
  }
}

TEST(OzCongruenceInfo, CountsThePeriodsThatAreAddedToANumberWithAFraction)
{
  OzEvalLimit const below = OzEvalFromBelow;
  OzEvalLimit const above = OzEvalFromAbove;
  OzEvalLimit const neither = static_cast<OzEvalLimit>(2);
  static_assert(OzEvalFromBelow == 0 && OzEvalFromAbove == 1);
  struct
  {
    char const* what;
    double value;
    double period;
    double base;
    OzEvalLimit limit;
    double result;
    int count;
  } const cases[] = {
      {"within", 2.5, 10.0, 0.0, above, 2.5, 0},
      {"below by one", -1.0, 10.0, 0.0, above, 9.0, 1},
      {"above by one", 11.0, 10.0, 0.0, above, 1.0, -1},
      {"far below", -35.0, 10.0, 0.0, below, 5.0, 4},
      {"far above", 35.0, 10.0, 0.0, below, 5.0, -3},
      {"lower end, open below", 0.0, 10.0, 0.0, below, 10.0, 1},
      {"lower end, open above", 0.0, 10.0, 0.0, above, 0.0, 0},
      {"lower end, neither", 0.0, 10.0, 0.0, neither, 0.0, 0},
      {"upper end, open below", 10.0, 10.0, 0.0, below, 10.0, 0},
      {"upper end, open above", 10.0, 10.0, 0.0, above, 0.0, -1},
      {"upper end, neither", 10.0, 10.0, 0.0, neither, 10.0, 0},
      {"whole periods above, open below", 30.0, 10.0, 0.0, below, 10.0, -2},
      {"whole periods above, open above", 30.0, 10.0, 0.0, above, 0.0, -3},
      {"whole periods above, neither", 30.0, 10.0, 0.0, neither, 10.0, -2},
      {"whole periods below, open below", -20.0, 10.0, 0.0, below, 10.0, 3},
      {"whole periods below, open above", -20.0, 10.0, 0.0, above, 0.0, 2},
      {"another base", 3.5, 2.0, 10.0, above, 11.5, 4},
      {"repeated addition rounds each time", -1.0, 0.1, 0.0, neither, 0.09999999999999987, 11},
      {"period 0 within", 3.0, 0.0, 3.0, neither, 3.0, 0},
      {"period 0, open below", 3.0, 0.0, 3.0, below, 3.0, 1},
      {"period 0, open above", 3.0, 0.0, 3.0, above, 3.0, -1},
      {"an infinite period", 3.0, INF, 0.0, above, 3.0, 0},
      {"an infinite period, from below", -3.0, INF, 0.0, below, INF, 1},
  };
  for (auto const& c : cases)
  {
    double result = 4711.0;
    int count = 4711;
    oz_congruence_info(c.value, c.period, c.base, result, count, c.limit);

    EXPECT_EQ(result, c.result) << c.what;
    EXPECT_EQ(count, c.count) << c.what;
  }
}

TEST(OzCongruenceInfo, OfWhatIsNoNumberChangesNothing)
{
  double result = 0.0;
  int count = 4711;

  oz_congruence_info(NOT_A_NUMBER, 10.0, 0.0, result, count, OzEvalFromBelow);

  EXPECT_TRUE(std::isnan(result));
  EXPECT_EQ(count, 0);
}

TEST(OzCongruenceInfo, OfAFractionAddsCountPeriodsAndEndsInThePeriod)
{
  // Quarters, so that all sums are exact.
  std::mt19937 random(78);
  std::uniform_int_distribution<int> quarters(-400, 400);
  std::uniform_int_distribution<int> limits(0, 2);
  for (int step = 0; step < 100000; ++step)
  {
    double const value = quarters(random) * 0.25;
    double const base = quarters(random) * 0.25;
    double const period = (std::abs(quarters(random)) % 40 + 1) * 0.25;
    int const limit = limits(random);
    double result = 0.0;
    int count = 0;

    oz_congruence_info(value, period, base, result, count, static_cast<OzEvalLimit>(limit));

    ASSERT_EQ(result, value + count * period) << "step " << step;
    double const offset = result - base;
    ASSERT_TRUE(0.0 <= offset && offset <= period) << "step " << step;
    ASSERT_TRUE(limit != OzEvalFromBelow || offset > 0.0) << "step " << step;
    ASSERT_TRUE(limit != OzEvalFromAbove || offset < period) << "step " << step;
  }
}

TEST(OzRerange, WrapsAnAngleIntoOneTurn)
{
  struct
  {
    char const* what;
    double angle;
    double wrapped;
  } const cases[] = {
      {"zero", 0.0, 0.0},
      {"within", 3.0, 3.0},
      {"pi", PI, -PI},
      {"minus pi", -PI, -PI},
      {"just below pi", 3.1415926535897927, 3.1415926535897927},
      {"just below minus pi", -3.1415926535897936, 3.1415926535897927},
      {"one turn", 2.0 * PI, 0.0},
      {"one turn back", -2.0 * PI, 0.0},
      {"four", 4.0, -2.2831853071795862},
      {"minus four", -4.0, 2.2831853071795862},
      {"two turns and one", 13.566370614359172, 1.0},
      {"just below two and a half turns", 15.707963267948964, 3.1415926535897913},
      {"two and a half turns back", -15.707963267948966, -PI},
      {"no number", NOT_A_NUMBER, NOT_A_NUMBER},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    double angle = c.angle;
    oz_rerange(angle);

    if (std::isnan(c.wrapped))
      EXPECT_TRUE(std::isnan(angle)) << c.what;
    else
      EXPECT_EQ(angle, c.wrapped) << c.what;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzRerange, ReportsAnAngleThatHasRunAwayAndReplacesIt)
{
  for (double const far : {15.707963267948966, 16.0, 1e300, INF, -15.707963267948968, -16.0, -1e300, -INF})
  {
    ReportRecorder const recorder;
    double angle = far;

    oz_rerange(angle);

    EXPECT_EQ(angle, -PI) << far;
    EXPECT_EQ(recorder.units(), ONE_REPORT) << far;
  }
}

TEST(OzRerange, ReplacesAnAngleThatHasRunAwayWithoutAHandlerToo)
{
  double above = 100.0;
  double below = -100.0;

  oz_rerange(above);
  oz_rerange(below);

  EXPECT_EQ(above, -PI);
  EXPECT_EQ(below, -PI);
}

TEST(OzRerange, WrapsAValueIntoAPeriod)
{
  struct
  {
    char const* what;
    double value;
    OzInterval period;
    double wrapped;
  } const cases[] = {
      {"within", 0.25, {0.0, 1.0}, 0.25},
      {"at the start", 0.0, {0.0, 1.0}, 0.0},
      {"at the end", 1.0, {0.0, 1.0}, 0.0},
      {"one period above", 1.25, {0.0, 1.0}, 0.25},
      {"two periods above", 2.75, {0.0, 1.0}, 0.75},
      {"just below two periods above the end", 2.9999999999999996, {0.0, 1.0}, 0.99999999999999956},
      {"below", -0.25, {0.0, 1.0}, 0.75},
      {"two periods below the start", -2.0, {0.0, 1.0}, 0.0},
      {"another period", 7.5, {3.0, 5.0}, 3.5},
      {"below another period", -0.5, {3.0, 5.0}, 3.5},
      {"below by so little that the sum rounds to the end", -1e-20, {0.0, 1.0}, 1.0},
      {"a period of no length", 7.5, {3.0, 3.0}, 7.5},
      {"an empty period", 7.5, {3.0, 1.0}, 7.5},
      {"the default empty period", -100.0, {}, -100.0},
      {"no number", NOT_A_NUMBER, {0.0, 1.0}, NOT_A_NUMBER},
      {"a period that is no number", 5.0, {NOT_A_NUMBER, 1.0}, NOT_A_NUMBER},
      {"all numbers", 5.0, {-INF, INF}, 5.0},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    double value = c.value;
    oz_rerange(value, c.period);

    if (std::isnan(c.wrapped))
      EXPECT_TRUE(std::isnan(value)) << c.what;
    else
      EXPECT_EQ(value, c.wrapped) << c.what;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzRerange, ReportsAValueMoreThanTwoPeriodsOutsideAndReplacesIt)
{
  struct
  {
    char const* what;
    double value;
    OzInterval period;
    double wrapped;
  } const cases[] = {
      {"two periods above the end", 3.0, {0.0, 1.0}, 0.0},
      {"far above", 3.75, {0.0, 1.0}, 0.0},
      {"further than two periods below the start", -2.0000000000000004, {0.0, 1.0}, 0.0},
      {"far below", -2.5, {0.0, 1.0}, 0.0},
      {"infinity", INF, {0.0, 1.0}, 0.0},
      {"minus infinity", -INF, {0.0, 1.0}, 0.0},
      {"two periods above the end of another period", 9.0, {3.0, 5.0}, 3.0},
      {"below another period", -1.5, {3.0, 5.0}, 3.0},
  };
  for (auto const& c : cases)
  {
    ReportRecorder recorder;
    double value = c.value;

    oz_rerange(value, c.period);
    EXPECT_EQ(value, c.wrapped) << c.what;
    EXPECT_EQ(recorder.units(), ONE_REPORT) << c.what;

    recorder.clear();
    EXPECT_EQ(oz_rerange(c.value, c.value, 0.5, c.period), c.wrapped) << c.what << ", between";
    EXPECT_EQ(recorder.units(), ONE_REPORT) << c.what << ", between";
  }
}

TEST(OzRerange, OfRandomValuesStaysInThePeriodAndKeepsTheClass)
{
  // Quarters, so that all sums are exact.
  std::mt19937 random(79);
  std::uniform_int_distribution<int> quarters(-400, 400);
  for (int step = 0; step < 100000; ++step)
  {
    double const start = quarters(random) * 0.25;
    double const length = (std::abs(quarters(random)) + 1) * 0.25;
    OzInterval const period(start, start + length);
    double const value = quarters(random) * 0.25;
    ReportRecorder const recorder;

    double wrapped = value;
    oz_rerange(wrapped, period);

    ASSERT_TRUE(period.start() <= wrapped && wrapped < period.end()) << "step " << step;
    bool const far = value >= period.end() + 2.0 * length || value < start - 2.0 * length;
    ASSERT_EQ(recorder.units(), far ? ONE_REPORT : NO_REPORT) << "step " << step;
    ASSERT_EQ(wrapped, far ? start : value - std::floor((value - start) / length) * length)
        << "step " << step;
  }
}

TEST(OzRerange, InterpolatesTheShorterWayRound)
{
  OzInterval const turn(0.0, 1.0);
  struct
  {
    char const* what;
    double a;
    double b;
    double t;
    OzInterval period;
    double result;
  } const cases[] = {
      {"straight on", 0.25, 0.5, 0.5, turn, 0.375},
      {"straight back", 0.5, 0.25, 0.5, turn, 0.375},
      {"up through the seam", 0.9, 0.1, 0.5, turn, 0.0},
      {"up through the seam, less far", 0.75, 0.125, 0.5, turn, 0.9375},
      {"down through the seam", 0.125, 0.75, 0.25, turn, 0.03125},
      {"down through the seam, further", 0.125, 0.75, 0.75, turn, 0.84375},
      {"half a turn up goes up", 0.25, 0.75, 0.5, turn, 0.5},
      {"half a turn down goes up too", 0.75, 0.25, 0.25, turn, 0.875},
      {"at the beginning", 0.25, 0.875, 0.0, turn, 0.25},
      {"at the end, which is wrapped", 0.25, 0.875, 1.0, turn, 0.875},
      {"beyond the end", 0.25, 0.5, 2.0, turn, 0.75},
      {"before the beginning", 0.25, 0.5, -2.0, turn, 0.75},
      {"another period", 11.0, 13.5, 0.5, {10.0, 14.0}, 10.25},
      {"a period of no length, b above", 1.0, 3.0, 0.5, {2.0, 2.0}, 2.0},
      {"a period of no length, b below", 3.0, 1.0, 0.25, {2.0, 2.0}, 2.5},
      {"an empty period, b above by much", 1.0, 9.0, 0.5, {2.0, 1.0}, 5.5},
      {"an empty period, b near", 1.0, 1.25, 0.5, {2.0, 1.0}, 1.125},
      {"an empty period, b below by much", 9.0, 1.0, 0.5, {2.0, 1.0}, 4.5},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
    EXPECT_EQ(oz_rerange(c.a, c.b, c.t, c.period), c.result) << c.what;
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzLinearFunctionEvaluate, MapsARangeToARangeAndItsEndsExactly)
{
  double const one = 1.0;
  double const two = 2.0;
  double const nothing = 0.0;
  struct
  {
    char const* what;
    OzInterval from;
    OzInterval to;
    double const* scale;
    double value;
    double result;
  } const cases[] = {
      {"the start", {0.1, 0.7}, {0.3, 0.9}, nullptr, 0.1, 0.3},
      {"the end", {0.1, 0.7}, {0.3, 0.9}, nullptr, 0.7, 0.9},
      {"the middle", {0.0, 4.0}, {10.0, 20.0}, nullptr, 2.0, 15.0},
      {"a quarter", {0.0, 4.0}, {10.0, 20.0}, nullptr, 1.0, 12.5},
      {"outside", {0.0, 4.0}, {10.0, 20.0}, nullptr, 8.0, 30.0},
      {"below", {0.0, 4.0}, {10.0, 20.0}, nullptr, -4.0, 0.0},
      {"turned round", {0.0, 4.0}, {20.0, 10.0}, nullptr, 1.0, 17.5},
      {"from an empty range", {4.0, 0.0}, {10.0, 20.0}, nullptr, 1.0, 17.5},
      {"near the start", {0.0, 4.0}, {10.0, 20.0}, nullptr, 9e-13, 10.0},
      {"not so near the start", {0.0, 1.0}, {0.0, 1.0}, nullptr, 1e-12, 1e-12},
      {"near the end", {0.0, 4.0}, {10.0, 20.0}, nullptr, 4.0 - 9e-13, 20.0},
      {"not so near the end", {-1.0, 0.0}, {-1.0, 0.0}, nullptr, -1e-12, -1e-12},
      {"a point, away from it", {0.0, 0.0}, {10.0, 20.0}, nullptr, 5.0, 15.0},
      {"a point, at it", {0.0, 0.0}, {10.0, 20.0}, nullptr, 0.0, 10.0},
      {"a point elsewhere", {3.0, 3.0}, {10.0, 20.0}, nullptr, 3.0, 10.0},
      {"a range below the limit", {0.0, 9e-21}, {10.0, 20.0}, nullptr, 1.0, 15.0},
      {"to a point", {0.0, 4.0}, {7.0, 7.0}, nullptr, 1.0, 7.0},
      {"scale 1", {0.0, 4.0}, {10.0, 20.0}, &one, 1.0, 12.5},
      {"scale 2 at the scaled start", {1.0, 5.0}, {10.0, 20.0}, &two, 2.0, 10.0},
      {"scale 2 at the scaled end", {1.0, 5.0}, {10.0, 20.0}, &two, 10.0, 20.0},
      {"scale 2 at the start itself", {1.0, 5.0}, {10.0, 20.0}, &two, 1.0, 17.5},
      {"scale 2 between: the width is not scaled", {1.0, 5.0}, {10.0, 20.0}, &two, 4.0, 25.0},
      {"scale 0: both ends at zero, the start first", {1.0, 5.0}, {10.0, 20.0}, &nothing, 0.0, 10.0},
      {"scale 0 elsewhere", {1.0, 5.0}, {10.0, 20.0}, &nothing, 2.0, 5.0},
      {"infinity", {0.0, 4.0}, {10.0, 20.0}, nullptr, INF, NOT_A_NUMBER},
      {"no number", {0.0, 4.0}, {10.0, 20.0}, nullptr, NOT_A_NUMBER, NOT_A_NUMBER},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    OzArray<double> values = array_of({c.value});
    oz_linear_function_evaluate(values, c.from, c.to, c.scale);

    if (std::isnan(c.result))
      EXPECT_TRUE(std::isnan(values[0])) << c.what;
    else
      EXPECT_EQ(values[0], c.result) << c.what;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzLinearFunctionEvaluate, MapsEachValueInPlace)
{
  OzArray<double> values = array_of({0.0, 1.0, 2.0, 4.0, -2.0});
  OzArray<double> none;

  oz_linear_function_evaluate(values, OzInterval(0.0, 4.0), OzInterval(10.0, 20.0), nullptr);
  oz_linear_function_evaluate(none, OzInterval(0.0, 4.0), OzInterval(10.0, 20.0), nullptr);

  EXPECT_EQ(numbers_of(values), (std::vector<double>{10.0, 12.5, 15.0, 20.0, 5.0}));
  EXPECT_EQ(none.size(), 0u);
}
} // namespace
