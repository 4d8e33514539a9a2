#include "oz_utils.h"

#include "ozinterval.h"
#include "report_recorder.h"
#include "text_journal.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <random>
#include <stdexcept>
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

TEST(OzRerange, KeepsTheSignOfZero)
{
  double angle = -0.0;
  double value = -0.0;

  oz_rerange(angle);
  oz_rerange(value, OzInterval(0.0, 1.0));

  EXPECT_TRUE(std::signbit(angle));
  EXPECT_TRUE(std::signbit(value));
}

TEST(OzRerange, WrapsAnEndOfThePeriodItselfAsAnyValue)
{
  ReportRecorder const recorder;
  OzInterval from_end(3.0, 5.0);
  OzInterval from_start(3.0, 5.0);

  oz_rerange(from_end[1], from_end);
  oz_rerange(from_start[0], from_start);

  EXPECT_TRUE(from_end == OzInterval(3.0, 3.0));
  EXPECT_TRUE(from_start == OzInterval(3.0, 5.0));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzRerange, EndsUnderAPeriodThatIsInfiniteOrBeyondAllNumbers)
{
  struct
  {
    char const* what;
    double value;
    OzInterval period;
    double wrapped;
  } const cases[] = {
      {"within a period up to infinity", 5.0, {0.0, INF}, 5.0},
      {"below a period up to infinity", -1.0, {0.0, INF}, INF},
      {"above a period from minus infinity", 1.0, {-INF, 0.0}, -INF},
      {"minus infinity in a period from there", -INF, {-INF, 0.0}, -INF},
      {"minus infinity below a period up to infinity", -INF, {0.0, INF}, NOT_A_NUMBER},
      {"above a period of which the length is infinite", 1.75e308, {-1.7e308, 1.7e308}, NOT_A_NUMBER},
      {"below a period of which the length is infinite", -1.75e308, {-1.7e308, 1.7e308}, INF},
      {"the shortest period there is", 5e-324, {0.0, 5e-324}, 0.0},
      {"below the shortest period", -1e-323, {0.0, 5e-324}, 0.0},
      {"a period of one step", 1.0, {0.99999999999999989, 1.0}, 0.99999999999999989},
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

TEST(OzRerange, BetweenWhatIsNoNumberIsNoNumber)
{
  OzInterval const turn(0.0, 1.0);
  ReportRecorder const recorder;

  EXPECT_TRUE(std::isnan(oz_rerange(NOT_A_NUMBER, 0.5, 0.5, turn)));
  EXPECT_TRUE(std::isnan(oz_rerange(0.5, NOT_A_NUMBER, 0.5, turn)));
  EXPECT_TRUE(std::isnan(oz_rerange(0.5, 0.25, NOT_A_NUMBER, turn)));
  EXPECT_TRUE(std::isnan(oz_rerange(0.5, INF, 0.0, turn))) << "zero times infinity";
  EXPECT_EQ(oz_rerange(0.5, 0.25, 0.5, OzInterval(NOT_A_NUMBER, 1.0)), 0.375) << "without any step";
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
      {"a range at the limit", {0.0, 1e-20}, {10.0, 20.0}, nullptr, 1.0, 1e21},
      {"an empty range at the limit", {1e-20, 0.0}, {10.0, 20.0}, nullptr, 1.0, -1e21},
      {"an empty range below the limit", {9e-21, 0.0}, {10.0, 20.0}, nullptr, 1.0, 15.0},
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

TEST(OzLinearFunctionEvaluate, ReadsTheScaleOnceSoThatItMayBeOneOfTheValues)
{
  OzArray<double> values = array_of({2.0, 6.0, 10.0});

  oz_linear_function_evaluate(values, OzInterval(1.0, 5.0), OzInterval(10.0, 20.0), &values[0]);

  EXPECT_EQ(numbers_of(values), (std::vector<double>{10.0, 30.0, 20.0}));
}

/// Asks that a dump left the number format of a journal as it was made.
void expect_first_format(OzJournal& journal)
{
  EXPECT_EQ(journal.width(), 16);
  EXPECT_EQ(journal.precision(), 10);
  EXPECT_EQ(journal.fp_format_spec(), 'f');
  journal << 1.5;
}
char const* const FIRST_FORMAT = "    1.5000000000";

TEST(OzDebugDoubleArray, WritesNumbersInLinesOfOneOrInOneLine)
{
  struct
  {
    char const* what;
    OzArray<double> array;
    int width;
    int precision;
    int columns;
    int indent;
    char const* text;
  } const cases[] = {
      {"one a line", array_of({1.5, 2.5}), 8, 3, 1, 2, "     1.500 \n     2.500 \n"},
      {"all in a line that is not ended", array_of({1.5, 2.5, -3.0}), 8, 3, 2, 2,
       "     1.500      2.500     -3.000 "},
      {"however many columns", array_of({1.5, 2.5, -3.0}), 8, 3, 100, 0, "   1.500    2.500   -3.000 "},
      {"without indentation", array_of({1.5, 2.5}), 8, 3, 1, 0, "   1.500 \n   2.500 \n"},
      {"a width without effect", array_of({1.5, 2.5}), 4, 3, 1, 1, " 1.500 \n 2.500 \n"},
      {"numbers wider than the field", array_of({1234567.0}), 5, 3, 1, 0, "1234567.000 \n"},
      {"precision 1", array_of({0.26}), 4, 1, 1, 0, " 0.3 \n"},
      {"no number", array_of({}), 8, 3, 1, 2, ""},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    TextJournal journal;
    Oz_debug_double_array(journal, c.array, c.width, c.precision, c.columns, c.indent);

    EXPECT_EQ(journal.take(), c.text) << c.what;
    expect_first_format(journal);
    EXPECT_EQ(journal.take(), FIRST_FORMAT) << c.what;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzDebugDoubleArray, ReportsBadArgumentsAndGoesOn)
{
  std::vector<std::string> const journal_too{"oz_utils.cpp", "ozjournal.cpp"};
  struct
  {
    char const* what;
    int width;
    int precision;
    int columns;
    int indent;
    char const* text;
    std::vector<std::string> reports;
  } const cases[] = {
      {"width as large as the precision", 3, 3, 1, 0, "1.500 \n2.500 \n", ONE_REPORT},
      {"no columns", 8, 3, 0, 1, "    1.500 \n    2.500 \n", ONE_REPORT},
      {"negative columns", 8, 3, -5, 0, "   1.500 \n   2.500 \n", ONE_REPORT},
      {"negative indentation", 8, 3, 1, -1, "   1.500 \n   2.500 \n", ONE_REPORT},
      {"everything", 2, 3, 0, -1, "1.500 \n2.500 \n", reports(3, "oz_utils.cpp")},
      {"a width that the journal refuses, too", -1, 3, 1, 0, "           1.500 \n           2.500 \n",
       journal_too},
      {"a precision that the journal refuses: one digit", 8, 0, 1, 0, "     1.5 \n     2.5 \n",
       reports(1, "ozjournal.cpp")},
  };
  for (auto const& c : cases)
  {
    ReportRecorder const recorder;
    TextJournal journal;

    Oz_debug_double_array(journal, array_of({1.5, 2.5}), c.width, c.precision, c.columns, c.indent);

    EXPECT_EQ(journal.take(), c.text) << c.what;
    EXPECT_EQ(recorder.units(), c.reports) << c.what;
    expect_first_format(journal);
    EXPECT_EQ(journal.take(), FIRST_FORMAT) << c.what;
  }
}

TEST(OzDebugDoubleMatrix, WritesOneRowALineInEitherOrder)
{
  OzArray<double> const six = array_of({1.0, 2.0, 3.0, 4.0, 5.0, 6.0});
  struct
  {
    char const* what;
    int rows;
    int columns;
    int indent;
    bool by_column;
    char const* text;
  } const cases[] = {
      {"by column", 2, 3, 0, true, "  1.0   3.0   5.0 \n  2.0   4.0   6.0 \n"},
      {"by row", 2, 3, 0, false, "  1.0   2.0   3.0 \n  4.0   5.0   6.0 \n"},
      {"indented", 3, 2, 2, true, "    1.0   4.0 \n    2.0   5.0 \n    3.0   6.0 \n"},
      {"indented, by row", 3, 2, 1, false, "   1.0   2.0 \n   3.0   4.0 \n   5.0   6.0 \n"},
      {"a part of the array", 2, 2, 0, true, "  1.0   3.0 \n  2.0   4.0 \n"},
      {"one row", 1, 6, 0, true, "  1.0   2.0   3.0   4.0   5.0   6.0 \n"},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    TextJournal journal;
    Oz_debug_double_matrix(journal, c.rows, c.columns, six, 5, 1, c.indent, c.by_column);

    EXPECT_EQ(journal.take(), c.text) << c.what;
    expect_first_format(journal);
    EXPECT_EQ(journal.take(), FIRST_FORMAT) << c.what;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzDebugDoubleMatrix, ReportsBadArgumentsAndGoesOn)
{
  struct
  {
    char const* what;
    int rows;
    int columns;
    int width;
    int indent;
    char const* text;
    std::size_t reports;
  } const cases[] = {
      {"no rows", 0, 2, 5, 0, "", 1},
      {"no columns", 2, 0, 5, 1, " \n \n", 1},
      {"neither", 0, 0, 5, 0, "", 2},
      {"negative rows and columns, of which the product is too large", -3, -2, 5, 0, "", 3},
      {"a product beyond 32 bits", -65536, -65536, 5, 0, "", 3},
      {"a width as large as the precision", 1, 2, 1, 0, "1.0 2.0 \n", 1},
      {"negative indentation", 1, 2, 5, -2, "  1.0   2.0 \n", 1},
  };
  for (auto const& c : cases)
  {
    ReportRecorder const recorder;
    TextJournal journal;

    Oz_debug_double_matrix(journal, c.rows, c.columns, array_of({1.0, 2.0, 3.0, 4.0}), c.width, 1, c.indent,
                           true);

    EXPECT_EQ(journal.take(), c.text) << c.what;
    EXPECT_EQ(recorder.units(), reports(c.reports, "oz_utils.cpp")) << c.what;
    expect_first_format(journal);
    EXPECT_EQ(journal.take(), FIRST_FORMAT) << c.what;
  }
}

TEST(OzDebugDoubleMatrix, ReportsAnArrayThatIsTooShortAndEachElementThatIsMissing)
{
  // The missing two lie within the capacity.
  double const numbers[] = {1.0, 2.0};
  OzArray<double> const two(numbers, 2, 4);
  ReportRecorder const recorder;
  TextJournal journal;

  Oz_debug_double_matrix(journal, 2, 2, two, 5, 1, 0, false);

  EXPECT_EQ(journal.take(), "  1.0   2.0 \n  0.0   0.0 \n");
  EXPECT_EQ(recorder.units(), (std::vector<std::string>{"oz_utils.cpp", "ozarray_i.h", "ozarray_i.h"}));
}

TEST(OzDebugVectors, WriteNothingAndReportEachCall)
{
  ReportRecorder recorder;
  TextJournal journal;

  Oz_debug_vector_array(journal, 3, 1, array_of({1.0, 2.0, 3.0}), 8, 3, 1, 0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  Oz_debug_vector_matrix(journal, 3, 1, 1, array_of({1.0, 2.0, 3.0}), 8, 3, 0, true);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  EXPECT_EQ(journal.take(), "");
  expect_first_format(journal);
  EXPECT_EQ(journal.take(), FIRST_FORMAT);
}

TEST(OzArraydebug, WritesNumbersUnderAHeadingSoManyALine)
{
  OzArray<double> const five = array_of({1.0, 2.0, 3.0, 4.0, 5.0});
  struct
  {
    char const* what;
    OzArray<double> array;
    int per_line;
    int width;
    int indent;
    char const* text;
  } const cases[] = {
      {"two a line", five, 2, 5, 1, "\n Array of 5 doubles \n   1.0   2.0\n   3.0   4.0\n   5.0\n"},
      {"five a line", five, 5, 5, 0, "\nArray of 5 doubles \n  1.0  2.0  3.0  4.0  5.0\n"},
      {"more a line than there are", five, 6, 5, 0, "\nArray of 5 doubles \n  1.0  2.0  3.0  4.0  5.0\n"},
      {"as many as there can be", five, INT_MAX, 5, 0, "\nArray of 5 doubles \n  1.0  2.0  3.0  4.0  5.0\n"},
      {"one a line", array_of({1.0, 2.0}), 1, 5, 2, "\n  Array of 2 doubles \n    1.0\n    2.0\n"},
      {"none a line counts as one", array_of({1.0, 2.0}), 0, 5, 0, "\nArray of 2 doubles \n  1.0\n  2.0\n"},
      {"less than none too", array_of({1.0, 2.0}), -7, 5, 0, "\nArray of 2 doubles \n  1.0\n  2.0\n"},
      {"nothing between numbers", array_of({1.0, 2.0}), 2, 0, 0, "\nArray of 2 doubles \n1.02.0\n"},
      {"indentation between numbers", array_of({1.0, 2.0}), 2, 0, 3,
       "\n   Array of 2 doubles \n   1.0   2.0\n"},
      {"negative indentation", array_of({1.0, 2.0}), 2, 5, -3, "\nArray of 2 doubles \n  1.0  2.0\n"},
      {"no numbers", array_of({}), 2, 5, 1, "\n Array of 0 doubles \n"},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    TextJournal journal;
    oz_arraydebug(journal, c.array, c.per_line, c.width, 1, c.indent);

    EXPECT_EQ(journal.take(), c.text) << c.what;
    expect_first_format(journal);
    EXPECT_EQ(journal.take(), FIRST_FORMAT) << c.what;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzArraydebug, WritesPointsFromTopToBottom)
{
  OzArray<double> const three = array_of({1.0, 2.0, 3.0});
  OzArray<double> const six = array_of({1.0, 2.0, 3.0, 4.0, 5.0, 6.0});
  struct
  {
    char const* what;
    int dim;
    OzArray<double> array;
    int per_line;
    int indent;
    char const* text;
  } const cases[] = {
      {"one point", 3, three, 2, 1, "\n Point/vector of dimension 3\n   1.0\n   2.0\n   3.0\n\n"},
      {"two points side by side", 3, six, 2, 0,
       "\nArray of 2 points/vectors of dimension 3\n  1.0  4.0\n  2.0  5.0\n  3.0  6.0\n\n"},
      {"two points one below the other", 3, six, 1, 0,
       "\nArray of 2 points/vectors of dimension 3\n  1.0\n  2.0\n  3.0\n\n  4.0\n  5.0\n  6.0\n\n"},
      {"three points in blocks of two", 2, six, 2, 1,
       "\n Array of 3 points/vectors of dimension 2\n   1.0   3.0\n   2.0   4.0\n\n   5.0\n   6.0\n\n"},
      {"none in a block counts as one", 3, six, 0, 0,
       "\nArray of 2 points/vectors of dimension 3\n  1.0\n  2.0\n  3.0\n\n  4.0\n  5.0\n  6.0\n\n"},
      {"dimension 1 has no blank lines", 1, three, 2, 0,
       "\nArray of 3 points/vectors of dimension 1\n  1.0  2.0\n  3.0\n"},
      {"a rest is left out", 2, three, 2, 0, "\nPoint/vector of dimension 2\n  1.0\n  2.0\n\n"},
      {"fewer numbers than a point has", 4, three, 2, 0, "\nArray of 0 points/vectors of dimension 4\n"},
      {"no numbers", 3, array_of({}), 2, 2, "\n  Array of 0 points/vectors of dimension 3\n"},
      {"dimension 0: the heading only", 0, three, 2, 0, "\nArray of 0 points/vectors of dimension 0\n"},
      {"a negative dimension likewise", -1, three, 2, 0, "\nArray of 0 points/vectors of dimension -1\n"},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    TextJournal journal;
    oz_arraydebug(journal, c.dim, c.array, c.per_line, 5, 1, c.indent);

    EXPECT_EQ(journal.take(), c.text) << c.what;
    expect_first_format(journal);
    EXPECT_EQ(journal.take(), FIRST_FORMAT) << c.what;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzArraydebug, WritesATableOfNumbersRowByRowOrColumnByColumn)
{
  // Rows 1 3 5 and 2 4 6.
  OzArray<double> const six = array_of({1.0, 2.0, 3.0, 4.0, 5.0, 6.0});
  struct
  {
    char const* what;
    bool row_wise;
    int rows;
    int per_line;
    int indent;
    char const* text;
  } const cases[] = {
      {"rows", true, 2, 3, 1,
       "\n Matrix with 2 rows and 3 columns.\n Entries are doubles.\n\n"
       " Row with index 0\n   1.0   3.0   5.0\n"
       " Row with index 1\n   2.0   4.0   6.0\n"},
      {"rows in blocks", true, 2, 2, 0,
       "\nMatrix with 2 rows and 3 columns.\nEntries are doubles.\n\n"
       "Row with index 0\n  1.0  3.0\n  5.0\n"
       "Row with index 1\n  2.0  4.0\n  6.0\n"},
      {"columns", false, 2, 3, 0,
       "\nMatrix with 2 rows and 3 columns.\nEntries are doubles.\n\n"
       "Column with index 0\n  1.0  2.0\n"
       "Column with index 1\n  3.0  4.0\n"
       "Column with index 2\n  5.0  6.0\n"},
      {"columns, one a line", false, 3, 1, 0,
       "\nMatrix with 3 rows and 2 columns.\nEntries are doubles.\n\n"
       "Column with index 0\n  1.0\n  2.0\n  3.0\n"
       "Column with index 1\n  4.0\n  5.0\n  6.0\n"},
      {"a rest is left out", true, 4, 3, 0,
       "\nMatrix with 4 rows and 1 columns.\nEntries are doubles.\n\n"
       "Row with index 0\n  1.0\nRow with index 1\n  2.0\nRow with index 2\n  3.0\nRow with index 3\n  "
       "4.0\n"},
      {"no rows", true, 0, 3, 0, "\nMatrix with 0 rows and 0 columns.\nEntries are doubles.\n\n"},
      {"no rows, by columns", false, 0, 3, 0,
       "\nMatrix with 0 rows and 0 columns.\nEntries are doubles.\n\n"},
      {"negative rows", false, -2, 3, 0, "\nMatrix with -2 rows and 0 columns.\nEntries are doubles.\n\n"},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    TextJournal journal;
    oz_arraydebug(journal, c.row_wise, 1, c.rows, six, c.per_line, 5, 1, c.indent);

    EXPECT_EQ(journal.take(), c.text) << c.what;
    expect_first_format(journal);
    EXPECT_EQ(journal.take(), FIRST_FORMAT) << c.what;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzArraydebug, WritesATableOfPoints)
{
  // Two rows and three columns of points; the first column holds (1, 2) and (3, 4).
  OzArray<double> const twelve = array_of({1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0, 11.0, 12.0});
  TextJournal journal;
  ReportRecorder const recorder;

  oz_arraydebug(journal, true, 2, 2, twelve, 2, 5, 1, 0);
  EXPECT_EQ(journal.take(), "\nMatrix with 2 rows and 3 columns.\n"
                            "Entries are points/vectors of dimension 2.\n\n"
                            "Row with index 0\n"
                            "  1.0  5.0\n"
                            "  2.0  6.0\n\n"
                            "  9.0\n"
                            " 10.0\n\n"
                            "Row with index 1\n"
                            "  3.0  7.0\n"
                            "  4.0  8.0\n\n"
                            " 11.0\n"
                            " 12.0\n\n");
  oz_arraydebug(journal, false, 2, 2, twelve, 2, 5, 1, 1);
  EXPECT_EQ(journal.take(), "\n Matrix with 2 rows and 3 columns.\n"
                            " Entries are points/vectors of dimension 2.\n\n"
                            " Column with index 0\n"
                            "   1.0   3.0\n"
                            "   2.0   4.0\n\n"
                            " Column with index 1\n"
                            "   5.0   7.0\n"
                            "   6.0   8.0\n\n"
                            " Column with index 2\n"
                            "   9.0  11.0\n"
                            "  10.0  12.0\n\n");
  oz_arraydebug(journal, true, -2, 2, twelve, 2, 5, 1, 0);
  EXPECT_EQ(journal.take(), "\nMatrix with 2 rows and -3 columns.\n"
                            "Entries are points/vectors of dimension -2.\n\n"
                            "Row with index 0\n"
                            "Row with index 1\n");
  EXPECT_EQ(recorder.units(), NO_REPORT);
  expect_first_format(journal);
  EXPECT_EQ(journal.take(), FIRST_FORMAT);
}

TEST(OzArraydebug, WritesOneRowOrOneColumnWithoutAHeading)
{
  OzArray<double> const twelve = array_of({1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0, 10.0, 11.0, 12.0});
  struct
  {
    char const* what;
    bool row_wise;
    int index;
    int dim;
    int rows;
    int per_line;
    int indent;
    char const* text;
  } const cases[] = {
      {"a row of numbers", true, 1, 1, 3, 4, 0, "  2.0  5.0  8.0 11.0\n"},
      {"a row of numbers in blocks", true, 2, 1, 3, 3, 1, "   3.0   6.0   9.0\n  12.0\n"},
      {"a column of numbers", false, 1, 1, 3, 4, 0, "  4.0  5.0  6.0\n"},
      {"a column in blocks of none", false, 3, 1, 3, 0, 0, " 10.0\n 11.0\n 12.0\n"},
      {"a row of points", true, 1, 2, 2, 3, 0, "  3.0  7.0 11.0\n  4.0  8.0 12.0\n\n"},
      {"a column of points", false, 1, 3, 2, 1, 0, "  7.0\n  8.0\n  9.0\n\n 10.0\n 11.0\n 12.0\n\n"},
      {"a row without rows", true, 0, 1, 0, 4, 0, ""},
      {"a column without rows", false, 0, 1, 0, 4, 0, ""},
      {"a column of points of no numbers", false, 0, -1, 2, 4, 0, ""},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    TextJournal journal;
    oz_arraydebug(journal, c.row_wise, c.index, c.dim, c.rows, twelve, c.per_line, 5, 1, c.indent);

    EXPECT_EQ(journal.take(), c.text) << c.what;
    expect_first_format(journal);
    EXPECT_EQ(journal.take(), FIRST_FORMAT) << c.what;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzArraydebug, LeavesWhatIsMissingToTheArrayWhichReportsIt)
{
  // Column 1 of two rows lies within the capacity, but not in the array.
  double const numbers[] = {1.0, 2.0};
  OzArray<double> const two(numbers, 2, 4);
  ReportRecorder const recorder;
  TextJournal journal;

  oz_arraydebug(journal, false, 1, 1, 2, two, 2, 5, 1, 0);

  EXPECT_EQ(journal.take(), "  0.0  0.0\n");
  EXPECT_EQ(recorder.units(), reports(2, "ozarray_i.h"));
}

TEST(OzArraydebug, SettingsThatTheJournalRefusesAreReportedByIt)
{
  ReportRecorder const recorder;
  TextJournal journal;

  oz_arraydebug(journal, array_of({1.5}), 1, -1, 0, 0);

  EXPECT_EQ(journal.take(), "\nArray of 1 doubles \n    1.5000000000\n");
  EXPECT_EQ(recorder.units(), reports(2, "ozjournal.cpp"));
}

TEST(OzArraydebug, KeepsTheLetterOfTheFormat)
{
  TextJournal journal;
  journal.set_fp_format_spec('e');

  oz_arraydebug(journal, array_of({1500.0}), 1, 0, 2, 0);
  Oz_debug_double_array(journal, array_of({1500.0}), 8, 2, 1, 0);

  EXPECT_EQ(journal.take(), "\nArray of 1 doubles \n1.50e+03\n1.50e+03 \n");
  EXPECT_EQ(journal.fp_format_spec(), 'e');
}

TEST(OzArraydebug, WritesNumbersThatAreNoneAsTheJournalDoes)
{
  TextJournal journal;

  oz_arraydebug(journal, array_of({-0.0, NOT_A_NUMBER, INF, -INF, 5e-324, 1e22}), 3, 5, 1, 1);

  EXPECT_EQ(journal.take(), "\n Array of 6 doubles \n  -0.0   nan   inf\n  -inf   0.0"
                            " 10000000000000000000000.0\n");
}

/// Notes what is set in it.
class SettingsJournal : public TextJournal
{
public:
  void set_precision(int const& digits) override
  {
    settings.push_back("precision " + std::to_string(digits));
    TextJournal::set_precision(digits);
  }
  void set_width(int const& least_width) override
  {
    settings.push_back("width " + std::to_string(least_width));
    TextJournal::set_width(least_width);
  }

  std::vector<std::string> settings;
};

using Settings = std::vector<std::string>;

TEST(OzDebugDumps, SetTheLeastPrecisionThenTheWidthThenThePrecisionAndPutBothBack)
{
  Settings const wanted{"precision 1", "width 8", "precision 3", "precision 10", "width 16"};
  SettingsJournal array_journal;
  SettingsJournal matrix_journal;

  Oz_debug_double_array(array_journal, array_of({1.0}), 8, 3, 1, 0);
  Oz_debug_double_matrix(matrix_journal, 1, 1, array_of({1.0}), 8, 3, 0, true);

  EXPECT_EQ(array_journal.settings, wanted);
  EXPECT_EQ(matrix_journal.settings, wanted);
}

TEST(OzDebugDumps, OfVectorsOnlyPutTheSettingsBack)
{
  Settings const wanted{"precision 10", "width 16"};
  SettingsJournal array_journal;
  SettingsJournal matrix_journal;

  Oz_debug_vector_array(array_journal, 3, 1, array_of({1.0}), 8, 3, 1, 0);
  Oz_debug_vector_matrix(matrix_journal, 3, 1, 1, array_of({1.0}), 8, 3, 0, true);

  EXPECT_EQ(array_journal.settings, wanted);
  EXPECT_EQ(matrix_journal.settings, wanted);
}

TEST(OzArraydebug, SetsTheWidthThenThePrecisionAndPutsBothBack)
{
  Settings const alone{"width 8", "precision 3", "precision 10", "width 16"};
  Settings const around_one_row{"width 8",     "precision 3", "width 8",      "precision 3",
                                "precision 3", "width 8",     "precision 10", "width 16"};
  SettingsJournal numbers;
  SettingsJournal points;
  SettingsJournal heading;
  SettingsJournal matrix;
  SettingsJournal row;

  oz_arraydebug(numbers, array_of({1.0}), 1, 8, 3, 0);
  oz_arraydebug(points, 1, array_of({1.0}), 1, 8, 3, 0);
  oz_arraydebug(heading, 0, array_of({1.0}), 1, 8, 3, 0);
  oz_arraydebug(matrix, true, 1, 1, array_of({1.0}), 1, 8, 3, 0);
  oz_arraydebug(row, true, 0, 1, 1, array_of({1.0}), 1, 8, 3, 0);

  EXPECT_EQ(numbers.settings, alone);
  EXPECT_EQ(points.settings, around_one_row);
  EXPECT_EQ(heading.settings, alone);
  EXPECT_EQ(matrix.settings, around_one_row);
  EXPECT_EQ(row.settings, alone);
}

/// A dump that prints, of one number.
struct PrintingDump
{
  char const* what;
  void (*print)(OzJournal&, int width, int precision);
  std::size_t formats; // how often a format is taken over and put back: some dumps go by another one
};
PrintingDump const PRINTING_DUMPS[] = {
    {"array",
     [](OzJournal& journal, int width, int precision)
     { Oz_debug_double_array(journal, array_of({1.0}), width, precision, 1, 0); },
     1},
    {"matrix",
     [](OzJournal& journal, int width, int precision)
     { Oz_debug_double_matrix(journal, 1, 1, array_of({1.0}), width, precision, 0, true); },
     1},
    {"numbers",
     [](OzJournal& journal, int width, int precision)
     { oz_arraydebug(journal, array_of({1.0}), 1, width, precision, 0); },
     1},
    {"points",
     [](OzJournal& journal, int width, int precision)
     { oz_arraydebug(journal, 1, array_of({1.0}), 1, width, precision, 0); },
     2},
    {"table",
     [](OzJournal& journal, int width, int precision)
     { oz_arraydebug(journal, true, 1, 1, array_of({1.0}), 1, width, precision, 0); },
     2},
    {"row",
     [](OzJournal& journal, int width, int precision)
     { oz_arraydebug(journal, true, 0, 1, 1, array_of({1.0}), 1, width, precision, 0); },
     1},
};

/// Installs a handler that throws the number of the report, and puts the former one back.
class ThrowingReports
{
public:
  ThrowingReports()
  {
    count_ = 0;
    dkb_assertion_handler = &throw_report;
  }
  ~ThrowingReports() { dkb_assertion_handler = former; }
  ThrowingReports(ThrowingReports const&) = delete;
  ThrowingReports& operator=(ThrowingReports const&) = delete;

  int count() const { return count_; }

private:
  static void throw_report(char const*, int)
  {
    throw std::runtime_error("report " + std::to_string(++count_));
  }

  OzAssertionHandler const former = dkb_assertion_handler;
  static inline int count_ = 0;
};

/// What the exception of `run` says; empty if there is none.
template <class Run>
std::string exception_of(Run const& run)
{
  try
  {
    run();
  }
  catch (std::exception const& exception)
  {
    return exception.what();
  }
  return std::string();
}

TEST(OzArraydebug, PutsTheFormatBackWhenAHandlerThrows)
{
  TextJournal journal;
  {
    ThrowingReports const throwing;
    EXPECT_THROW(oz_arraydebug(journal, false, 7, 1, 1, array_of({1.0}), 1, 5, 1, 0), std::runtime_error);
    EXPECT_THROW(Oz_debug_vector_array(journal, 3, 1, array_of({1.0}), 8, 3, 1, 0), std::runtime_error);
    EXPECT_THROW(Oz_debug_vector_matrix(journal, 3, 1, 1, array_of({1.0}), 8, 3, 0, true),
                 std::runtime_error);
    // The journal reports the width first where there is one, and the precision behind a good width.
    for (auto const& dump : PRINTING_DUMPS)
    {
      EXPECT_THROW(dump.print(journal, -1, -2), std::runtime_error) << dump.what;
      EXPECT_THROW(dump.print(journal, 8, 0), std::runtime_error) << dump.what;
    }
  }

  journal.take();
  expect_first_format(journal);
  EXPECT_EQ(journal.take(), FIRST_FORMAT);
}

/// Takes no text.
class RefusingJournal : public TextJournal
{
public:
  bool refuses = true;

protected:
  void append_to_journal(OzString const& text) override
  {
    if (refuses)
      throw std::runtime_error("refused");
    TextJournal::append_to_journal(text);
  }
};

TEST(OzArraydebug, PutsTheFormatBackWhenTheJournalThrows)
{
  for (auto const& dump : PRINTING_DUMPS)
  {
    RefusingJournal journal;

    EXPECT_THROW(dump.print(journal, 8, 3), std::runtime_error) << dump.what;

    journal.refuses = false;
    expect_first_format(journal);
    EXPECT_EQ(journal.take(), FIRST_FORMAT) << dump.what;
  }
}

/// Says of its precision what it would not take.
class OddJournal : public TextJournal
{
public:
  int precision() const override { return 0; }
};

TEST(OzArraydebug, OfAJournalThatDoesNotTakeItsPrecisionBackIsReportedByIt)
{
  for (auto const& dump : PRINTING_DUMPS)
  {
    OddJournal journal;
    dump.print(journal, 8, 3);
    EXPECT_EQ(journal.width(), 16) << dump.what;

    ReportRecorder const recorder;
    dump.print(journal, 8, 3);
    EXPECT_EQ(recorder.units(), reports(dump.formats, "ozjournal.cpp")) << dump.what;
  }
}

TEST(OzArraydebug, ThrowsWhatAHandlerThrowsWhileTheFormatIsPutBack)
{
  for (auto const& dump : PRINTING_DUMPS)
  {
    OddJournal journal;
    ThrowingReports const throwing;

    EXPECT_EQ(exception_of([&] { dump.print(journal, 8, 3); }), "report 1") << dump.what;
    EXPECT_EQ(journal.width(), 16) << dump.what;
  }
}

TEST(OzArraydebug, ThrowsTheFirstExceptionWhereThereAreMore)
{
  OddJournal journal;
  ThrowingReports const throwing;

  EXPECT_EQ(exception_of([&] { Oz_debug_vector_array(journal, 3, 1, array_of({1.0}), 8, 3, 1, 0); }),
            "report 1");
  EXPECT_EQ(throwing.count(), 2);
  EXPECT_EQ(exception_of([&] { oz_arraydebug(journal, false, 7, 1, 1, array_of({1.0}), 1, 5, 1, 0); }),
            "report 3");
  EXPECT_EQ(throwing.count(), 4);
  EXPECT_EQ(journal.width(), 16);
}

TEST(OzArraydebug, FindsNumbersByMoreThan32Bits)
{
  // Cut to 32 bits each of these would be number 0, which is there.
  OzArray<double> const one = array_of({1.0});
  TextJournal journal;
  ThrowingReports const throwing;

  EXPECT_THROW(oz_arraydebug(journal, false, 65536, 1, 65536, one, 1, 5, 1, 0), std::runtime_error);
  EXPECT_THROW(oz_arraydebug(journal, false, 65536, 65536, 1, one, 1, 5, 1, 0), std::runtime_error);
  EXPECT_EQ(throwing.count(), 2);
}
} // namespace
