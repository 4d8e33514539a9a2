#include "oztrianglepar.h"

#include "operations.h"
#include "report_recorder.h"
#include "text_journal.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

template <>
struct PartnerOf<OzTrianglePar>
{
  using type = OzTriangleVec;
};

namespace
{
double const INF = std::numeric_limits<double>::infinity();
double const NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> const NO_REPORT;
std::vector<std::string> const ONE_REPORT = reports(1, "oztrianglepar.cpp");

using Numbers = std::array<double, 3>;

Numbers numbers(OzTrianglePar const& value)
{
  double const* const components = value.as_array();
  return {components[0], components[1], components[2]};
}

TEST(OzTrianglePar, IsAPlainValueOfAdjacentNumbers)
{
  static_assert(is_plain_value<OzTrianglePar, 3>);
  OzTrianglePar const value(0.5, 0.25, 0.25);

  EXPECT_EQ(static_cast<void const*>(value.as_array()), static_cast<void const*>(&value));
  EXPECT_EQ(numbers(value), (Numbers{0.5, 0.25, 0.25}));
  EXPECT_EQ(value.u(), 0.5);
  EXPECT_EQ(value.v(), 0.25);
  EXPECT_EQ(value.w(), 0.25);
}

TEST(OzTrianglePar, IsMadeFromNothingFromNumbersFromAnArrayOrAsACopy)
{
  double const array[] = {0.5, 0.25, 0.25, 99.0};
  OzTrianglePar const value(array);
  OzTrianglePar const copy(value);
  OzTrianglePar assigned;

  OzTrianglePar const before = assigned;
  OzTrianglePar& result = (assigned = value);

  EXPECT_EQ(numbers(before), (Numbers{0.33333333333333331, 0.33333333333333331, 0.33333333333333331}));
  EXPECT_EQ(numbers(value), (Numbers{0.5, 0.25, 0.25}));
  EXPECT_EQ(numbers(copy), (Numbers{0.5, 0.25, 0.25}));
  EXPECT_EQ(numbers(assigned), (Numbers{0.5, 0.25, 0.25}));
  EXPECT_EQ(&result, &assigned);
}

TEST(OzTrianglePar, IndexReadsAComponent)
{
  ReportRecorder const recorder;
  OzTrianglePar const value(0.5, 0.25, 0.25);

  EXPECT_EQ(value[0], 0.5);
  EXPECT_EQ(value[1], 0.25);
  EXPECT_EQ(value[2], 0.25);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzTrianglePar, BadIndexIsReportedOnceAndUsed)
{
  OzTrianglePar const values[3] = {OzTrianglePar(0.5, 0.25, 0.25), OzTrianglePar(0.5, 0.25, 0.25),
                                   OzTrianglePar(0.5, 0.25, 0.25)};
  int volatile below = -1;
  int volatile above = 3;
  ReportRecorder recorder;

  EXPECT_EQ(values[1][below], 0.25);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(values[1][above], 0.5);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzTrianglePar, BadIndexIsUsedWithoutAHandlerToo)
{
  OzTrianglePar const values[2] = {OzTrianglePar(0.5, 0.25, 0.25), OzTrianglePar(0.5, 0.25, 0.25)};
  int volatile above = 3;

  EXPECT_EQ(values[0][above], 0.5);
}

TEST(OzTrianglePar, HasItsOperationsAndNoOther)
{
  static_assert(
      has_all<OzTrianglePar, U, V, W, AsArray, ConstantIndex, PlusPartner, MinusPartner, MinusSame, Debug>);
  static_assert(has_none<OzTrianglePar, Dim, SetU, SetV, SetW, Du, Dv, Dw, SetDu, SetDv, SetDw, PlusSame,
                         Negation, Reverse, TimesNumber, NumberTimes, TimesSame, TimesPartner, RemainderSame,
                         OverNumber, AddSame, AddPartner, SubtractSame, SubtractPartner, MultiplyBy, DivideBy,
                         Length, NumericalZero, Normalize, Angle, Ortho, Turn, Equals>);
  static_assert(std::is_same_v<ConstantIndex<OzTrianglePar>, double const&>);
  static_assert(std::is_same_v<VariableIndex<OzTrianglePar>, double const&>,
                "coordinates are for reading only");
  static_assert(std::is_same_v<AsArray<OzTrianglePar>, double const*>);
  static_assert(std::is_same_v<PlusPartner<OzTrianglePar>, OzTrianglePar>);
  static_assert(std::is_same_v<MinusPartner<OzTrianglePar>, OzTrianglePar>);
  static_assert(std::is_same_v<MinusSame<OzTrianglePar>, OzTriangleVec>);
}

Numbers const MIDDLE{0.33333333333333331, 0.33333333333333331, 0.33333333333333331};

TEST(OzTrianglePar, NumbersAreTakenAsProportions)
{
  struct
  {
    char const* what;
    double proportions[3];
    Numbers coordinates;
  } const cases[] = {
      {"a sum of 1", {0.5, 0.25, 0.25}, {0.5, 0.25, 0.25}},
      {"a sum of 4", {2.0, 1.0, 1.0}, {0.5, 0.25, 0.25}},
      {"a sum of 8, all different", {1.0, 2.0, 5.0}, {0.125, 0.25, 0.625}},
      {"all equal", {7.0, 7.0, 7.0}, MIDDLE},
      {"a corner", {3.0, 0.0, 0.0}, {1.0, 0.0, 0.0}},
      {"outside the triangle", {4.0, -1.0, -1.0}, {2.0, -0.5, -0.5}},
      {"a sum just above the limit", {1.5e-12, 0.0, 0.0}, {1.0, 0.0, 0.0}},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    double const* const p = c.proportions;
    EXPECT_EQ(numbers(OzTrianglePar(p[0], p[1], p[2])), c.coordinates) << c.what;
    EXPECT_EQ(numbers(OzTrianglePar(p)), c.coordinates) << c.what << ", from an array";
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzTrianglePar, NumbersWithoutAPositiveSumAreReportedAndGiveTheMiddle)
{
  struct
  {
    char const* what;
    double proportions[3];
  } const cases[] = {
      {"all zero", {0.0, 0.0, 0.0}},           {"all negative", {-1.0, -1.0, -1.0}},
      {"cancelling", {1.0, -1.0, 0.0}},        {"the limit itself", {1e-12, 0.0, 0.0}},
      {"no number", {1.0, NOT_A_NUMBER, 0.0}}, {"minus infinity", {1.0, -INF, 0.0}},
      {"two infinities", {INF, -INF, 0.0}},
  };
  for (auto const& c : cases)
  {
    double const* const p = c.proportions;
    EXPECT_EQ(numbers(OzTrianglePar(p[0], p[1], p[2])), MIDDLE) << c.what << ", without a handler";
    ReportRecorder recorder;
    EXPECT_EQ(numbers(OzTrianglePar(p[0], p[1], p[2])), MIDDLE) << c.what;
    EXPECT_EQ(recorder.units(), ONE_REPORT) << c.what;
    recorder.clear();
    EXPECT_EQ(numbers(OzTrianglePar(p)), MIDDLE) << c.what << ", from an array";
    EXPECT_EQ(recorder.units(), ONE_REPORT) << c.what << ", from an array";
  }
}

TEST(OzTrianglePar, AnInfiniteSumIsDividedByLikeAnyOther)
{
  ReportRecorder const recorder;
  OzTrianglePar const position(INF, 1.0, 1.0);

  EXPECT_TRUE(std::isnan(position.u()));
  EXPECT_EQ(position.v(), 0.0);
  EXPECT_EQ(position.w(), 0.0);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzTrianglePar, ComputesByComponents)
{
  ReportRecorder const recorder;
  OzTrianglePar const a(0.5, 0.25, 0.25);
  OzTrianglePar const b(0.125, 0.125, 0.75);
  OzTriangleVec const way = b - a;

  EXPECT_EQ(way.du(), -0.375);
  EXPECT_EQ(way.dv(), -0.125);
  EXPECT_EQ(way.dw(), 0.5);
  EXPECT_EQ(numbers(a + way), numbers(b));
  EXPECT_EQ(numbers(b - way), numbers(a));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzTrianglePar, StepsThatDriftAreMadeUpFor)
{
  // The step's sum is within its bound and not zero.
  OzTriangleVec const step(0.5, -0.5, 8e-13);
  OzTrianglePar const position(0.25, 0.25, 0.5);

  OzTrianglePar const after = position + step;
  OzTrianglePar const before = position - step;

  EXPECT_EQ(numbers(after), (Numbers{0.7499999999994, -0.2499999999998, 0.5000000000004}));
  EXPECT_EQ(numbers(before), (Numbers{-0.2500000000002, 0.7500000000006001, 0.4999999999996}));
}

TEST(OzTrianglePar, RandomPositionsHaveASumOf1AndDifferencesLeadFromOneToTheOther)
{
  std::mt19937 random(20240612);
  std::uniform_real_distribution<double> share(0.0, 5.0);
  ReportRecorder const recorder;
  for (int step = 0; step < 10000; ++step)
  {
    OzTrianglePar const a(share(random), share(random), share(random));
    OzTrianglePar const b(share(random), share(random), share(random));
    OzTrianglePar const reached = a + (b - a);

    ASSERT_NEAR(a.u() + a.v() + a.w(), 1.0, 1e-15) << "step " << step;
    ASSERT_NEAR(reached.u() + reached.v() + reached.w(), 1.0, 1e-15) << "step " << step;
    ASSERT_NEAR(reached.u(), b.u(), 1e-15) << "step " << step;
    ASSERT_NEAR(reached.v(), b.v(), 1e-15) << "step " << step;
    ASSERT_NEAR(reached.w(), b.w(), 1e-15) << "step " << step;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzTrianglePar, StepsFromAPositionWithoutANumberAreReportedOnce)
{
  OzTrianglePar const broken(INF, 1.0, 1.0);
  OzTriangleVec const step(0.5, -0.5, 0.0);
  ReportRecorder recorder;

  EXPECT_EQ(numbers(broken + step), MIDDLE);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(numbers(broken - step), MIDDLE);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ((broken - OzTrianglePar()).dv(), 0.0);
  EXPECT_EQ(recorder.units(), reports(1, "oztrianglevec.cpp")) << "the vector holds its sum";
}

TEST(OzTrianglePar, StreamsItsComponentsWithoutEndingTheLine)
{
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  OzJournal& result = journal << OzTrianglePar(0.5, 0.125, 0.375);

  EXPECT_EQ(&result, &journal);
  EXPECT_EQ(journal.text(), "OzTrianglePar( 0.500, 0.125, 0.375)");
}

TEST(OzTrianglePar, DebugWritesOneLineFromContentsOn)
{
  OzTrianglePar const value = OzTrianglePar(0.5, 0.125, 0.375);
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  value.debug(journal, OZ_DEBUG_OFF, true, 2);
  value.debug(journal, OZ_DEBUG_SUMMARY, true, 2);
  EXPECT_EQ(journal.take(), "");
  value.debug(journal, OZ_DEBUG_CONTENTS, true, 0);
  EXPECT_EQ(journal.take(), "OzTrianglePar( 0.500, 0.125, 0.375)\n");
  value.debug(journal, OZ_DEBUG_DETAIL, false, 2);
  EXPECT_EQ(journal.take(), "  OzTrianglePar( 0.500, 0.125, 0.375)\n");
  value.debug(journal, OZ_DEBUG_CONTENTS, false, -1);
  EXPECT_EQ(journal.take(), "OzTrianglePar( 0.500, 0.125, 0.375)\n");
}
} // namespace
