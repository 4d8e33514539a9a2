#include "ozuvvec.h"

#include "operations.h"
#include "ozuvpar.h"
#include "report_recorder.h"
#include "text_journal.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

template <>
struct PartnerOf<OzUVVec>
{
  using type = OzUVPar;
};

namespace
{
double const PI = 3.141592653589793;
double const INF = std::numeric_limits<double>::infinity();
double const NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> const NO_REPORT;
std::vector<std::string> const ONE_REPORT = reports(1, "ozuvvec.cpp");

using Numbers = std::array<double, 2>;

Numbers numbers(OzUVVec const& value)
{
  double const* const components = value.as_array();
  return {components[0], components[1]};
}

TEST(OzUVVec, IsAPlainValueOfAdjacentNumbers)
{
  static_assert(is_plain_value<OzUVVec, 2>);
  OzUVVec const value(1.0, 2.0);

  EXPECT_EQ(static_cast<void const*>(value.as_array()), static_cast<void const*>(&value));
  EXPECT_EQ(numbers(value), (Numbers{1.0, 2.0}));
  EXPECT_EQ(value.du(), 1.0);
  EXPECT_EQ(value.dv(), 2.0);
}

TEST(OzUVVec, IsMadeFromNothingFromNumbersFromAnArrayOrAsACopy)
{
  double const array[] = {1.0, 2.0, 99.0};
  OzUVVec const value(array);
  OzUVVec const copy(value);
  OzUVVec assigned;

  OzUVVec const before = assigned;
  OzUVVec& result = (assigned = value);

  EXPECT_EQ(numbers(before), (Numbers{0.0, 0.0}));
  EXPECT_EQ(numbers(value), (Numbers{1.0, 2.0}));
  EXPECT_EQ(numbers(copy), (Numbers{1.0, 2.0}));
  EXPECT_EQ(numbers(assigned), (Numbers{1.0, 2.0}));
  EXPECT_EQ(&result, &assigned);
}

TEST(OzUVVec, ComponentsAreSetOneByOne)
{
  OzUVVec value(1.0, 2.0);

  value.set_du(7.0);
  EXPECT_EQ(numbers(value), (Numbers{7.0, 2.0}));
  value.set_dv(8.0);
  EXPECT_EQ(numbers(value), (Numbers{7.0, 8.0}));
}

TEST(OzUVVec, IndexReadsAComponent)
{
  ReportRecorder const recorder;
  OzUVVec value(1.0, 2.0);
  OzUVVec const& constant_value = value;

  EXPECT_EQ(constant_value[0], 1.0);
  EXPECT_EQ(constant_value[1], 2.0);
  value[0] = 7.0;
  value[1] = 8.0;
  EXPECT_EQ(numbers(value), (Numbers{7.0, 8.0}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzUVVec, BadIndexIsReportedOnceAndUsed)
{
  OzUVVec values[3] = {OzUVVec(1.0, 2.0), OzUVVec(1.0, 2.0), OzUVVec(1.0, 2.0)};
  int volatile below = -1;
  int volatile above = 2;
  ReportRecorder recorder;
  values[2].set_du(42.0);

  EXPECT_EQ(values[1][below], 2.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(values[1][above], 42.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();

  OzUVVec const& constant_value = values[1];
  EXPECT_EQ(constant_value[below], 2.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(constant_value[above], 42.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzUVVec, BadIndexIsUsedWithoutAHandlerToo)
{
  OzUVVec const values[2] = {OzUVVec(1.0, 2.0), OzUVVec(1.0, 2.0)};
  int volatile above = 2;

  EXPECT_EQ(values[0][above], 1.0);
}

TEST(OzUVVec, HasItsOperationsAndNoOther)
{
  static_assert(
      has_all<OzUVVec, Du, Dv, SetDu, SetDv, Dim, AsArray, ConstantIndex, VariableIndex, PlusSame, MinusSame,
              Negation, Reverse, TimesNumber, TimesSame, RemainderSame, AddSame, SubtractSame, MultiplyBy,
              DivideBy, Length, NumericalZero, Normalize, Angle, Ortho, Turn, Debug>);
  static_assert(has_none<OzUVVec, U, V, W, Dw, SetU, SetV, SetW, SetDw, PlusPartner, MinusPartner,
                         TimesPartner, AddPartner, SubtractPartner, NumberTimes, OverNumber, Equals>);
  static_assert(std::is_same_v<ConstantIndex<OzUVVec>, double const&>);
  static_assert(std::is_same_v<VariableIndex<OzUVVec>, double&>);
  static_assert(std::is_same_v<AsArray<OzUVVec>, double const*>);
  static_assert(std::is_same_v<PlusSame<OzUVVec>, OzUVVec>);
  static_assert(std::is_same_v<MinusSame<OzUVVec>, OzUVVec>);
  static_assert(std::is_same_v<Negation<OzUVVec>, OzUVVec>);
  static_assert(std::is_same_v<Reverse<OzUVVec>, OzUVVec>);
  static_assert(std::is_same_v<TimesNumber<OzUVVec>, OzUVVec>);
  static_assert(std::is_same_v<TimesSame<OzUVVec>, double>);
  static_assert(std::is_same_v<RemainderSame<OzUVVec>, double>);
  static_assert(std::is_same_v<AddSame<OzUVVec>, OzUVVec&>);
  static_assert(std::is_same_v<SubtractSame<OzUVVec>, OzUVVec&>);
  static_assert(std::is_same_v<MultiplyBy<OzUVVec>, OzUVVec&>);
  static_assert(std::is_same_v<DivideBy<OzUVVec>, OzUVVec&>);
  static_assert(std::is_same_v<Normalize<OzUVVec>, void>);
  static_assert(std::is_same_v<Dim<OzUVVec>, int>);

  EXPECT_EQ(OzUVVec::dim(), 2);
}

TEST(OzUVVec, ComputesByComponents)
{
  OzUVVec const a(5.0, -3.0);
  OzUVVec const b(0.5, 8.0);

  EXPECT_EQ(numbers(a + b), (Numbers{5.5, 5.0}));
  EXPECT_EQ(numbers(a - b), (Numbers{4.5, -11.0}));
  EXPECT_EQ(numbers(-a), (Numbers{-5.0, 3.0}));
  EXPECT_EQ(numbers(a.reverse()), (Numbers{-5.0, 3.0}));
  EXPECT_EQ(numbers(a * 2.0), (Numbers{10.0, -6.0}));
  EXPECT_EQ(a * b, 41.5);
  EXPECT_EQ(b * a, -41.5);
  EXPECT_EQ(a % b, -21.5);
}

TEST(OzUVVec, ComputesInPlace)
{
  OzUVVec value(5.0, -3.0);

  EXPECT_EQ(&(value += OzUVVec(0.5, 8.0)), &value);
  EXPECT_EQ(numbers(value), (Numbers{5.5, 5.0}));
  EXPECT_EQ(&(value -= OzUVVec(1.5, 7.0)), &value);
  EXPECT_EQ(numbers(value), (Numbers{4.0, -2.0}));
  EXPECT_EQ(&(value *= 3.0), &value);
  EXPECT_EQ(numbers(value), (Numbers{12.0, -6.0}));
  EXPECT_EQ(&(value /= 4.0), &value);
  EXPECT_EQ(numbers(value), (Numbers{3.0, -1.5}));
  OzUVVec const& itself = value;
  value += itself;
  EXPECT_EQ(numbers(value), (Numbers{6.0, -3.0}));
  value -= itself;
  EXPECT_EQ(numbers(value), (Numbers{0.0, 0.0}));
}

TEST(OzUVVec, DivisionIsNotGuarded)
{
  ReportRecorder const recorder;
  OzUVVec value(1.0, 0.0);

  value /= 0.0;

  EXPECT_EQ(value.du(), INF);
  EXPECT_TRUE(std::isnan(value.dv()));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzUVVec, LengthIsTheRootOfTheSquares)
{
  EXPECT_EQ(OzUVVec(3.0, -4.0).length(), 5.0);
  EXPECT_EQ(OzUVVec().length(), 0.0);
  EXPECT_EQ(OzUVVec(1.0, 1.0).length(), 1.4142135623730951);
  EXPECT_EQ(OzUVVec(1e200, 0.0).length(), INF) << "the square is beyond all numbers";
  EXPECT_TRUE(std::isnan(OzUVVec(NOT_A_NUMBER, 0.0).length()));
}

TEST(OzUVVec, IsNumericallyZeroBelowALengthOf1e20th)
{
  EXPECT_TRUE(OzUVVec(1e-21, 0.0).numerical_zero());
  EXPECT_FALSE(OzUVVec(1e-19, 0.0).numerical_zero());
  EXPECT_FALSE(OzUVVec(1e-20, 0.0).numerical_zero()) << "the limit itself";
  EXPECT_TRUE(OzUVVec(0.0, 9.9999999999999e-21).numerical_zero());
  EXPECT_FALSE(OzUVVec(0.8e-20, 0.8e-20).numerical_zero());
  EXPECT_TRUE(OzUVVec().numerical_zero());
  EXPECT_FALSE(OzUVVec(NOT_A_NUMBER, 0.0).numerical_zero());
}

TEST(OzUVVec, NormalizeKeepsTheDirectionAndReportsNothing)
{
  ReportRecorder const recorder;
  OzUVVec value(3.0, -4.0);
  OzUVVec shortest(0.0, 1e-20);

  value.normalize();
  shortest.normalize();

  EXPECT_EQ(numbers(value), (Numbers{0.6, -0.8}));
  EXPECT_EQ(numbers(shortest), (Numbers{0.0, 1.0}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzUVVec, NormalizeReportsWhatIsTooShortAndLeavesIt)
{
  for (OzUVVec const& original : {OzUVVec(), OzUVVec(1e-21, 0.0), OzUVVec(0.0, -9.9e-21)})
  {
    OzUVVec value = original;
    value.normalize();
    EXPECT_EQ(numbers(value), numbers(original)) << "without a handler";

    ReportRecorder const recorder;
    value.normalize();
    EXPECT_EQ(numbers(value), numbers(original));
    EXPECT_EQ(recorder.units(), ONE_REPORT);
  }
}

TEST(OzUVVec, NormalizeDividesByAnInfiniteLengthToo)
{
  ReportRecorder const recorder;
  OzUVVec value(1e200, -3.0);

  value.normalize();

  EXPECT_EQ(numbers(value), (Numbers{0.0, 0.0}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzUVVec, NormalizeReportsWhatIsNoNumber)
{
  ReportRecorder const recorder;
  OzUVVec value(2.0, NOT_A_NUMBER);

  value.normalize();

  EXPECT_EQ(value.du(), 2.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzUVVec, AngleIsPositiveCounterClockwise)
{
  struct
  {
    char const* what;
    OzUVVec from;
    OzUVVec to;
    double angle;
  } const cases[] = {
      {"a quarter", {1.0, 0.0}, {0.0, 1.0}, PI / 2.0},
      {"a quarter back", {0.0, 1.0}, {1.0, 0.0}, -PI / 2.0},
      {"none", {2.0, 0.0}, {5.0, 0.0}, 0.0},
      {"half a turn", {1.0, 0.0}, {-3.0, 0.0}, PI},
      {"an eighth", {1.0, 0.0}, {2.0, 2.0}, PI / 4.0},
      {"three eighths", {1.0, 0.0}, {-2.0, 2.0}, 3.0 * PI / 4.0},
      {"three eighths back", {1.0, 0.0}, {-2.0, -2.0}, -3.0 * PI / 4.0},
      {"an eighth between others", {0.0, 2.0}, {-3.0, 3.0}, PI / 4.0},
      {"from zero", {0.0, 0.0}, {0.0, 1.0}, 0.0},
      {"to zero", {0.0, 1.0}, {0.0, 0.0}, 0.0},
      {"from nearly zero", {-1e-21, 0.0}, {1.0, 0.0}, 0.0},
      {"to nearly zero", {1.0, 0.0}, {-1e-21, 0.0}, 0.0},
      {"to what is just long enough", {1.0, 0.0}, {-1e-20, 0.0}, PI},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
    EXPECT_EQ(c.from.angle(c.to), c.angle) << c.what;
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzUVVec, OrthoIsAQuarterTurnWithoutRounding)
{
  OzUVVec const ortho = OzUVVec(1.0, 0.0).ortho();

  EXPECT_EQ(numbers(ortho), (Numbers{-0.0, 1.0}));
  EXPECT_TRUE(std::signbit(ortho.du()));
  EXPECT_EQ(numbers(OzUVVec(0.3, 0.7).ortho()), (Numbers{-0.7, 0.3}));
}

TEST(OzUVVec, TurnsCounterClockwise)
{
  OzUVVec const quarter = OzUVVec(1.0, 0.0).turn(PI / 2.0);
  OzUVVec const turned = OzUVVec(2.0, 1.0).turn(0.5);
  OzUVVec const back = OzUVVec(2.0, 1.0).turn(-0.5);

  EXPECT_NEAR(quarter.du(), 0.0, 1e-15);
  EXPECT_EQ(quarter.dv(), 1.0);
  EXPECT_EQ(numbers(OzUVVec(0.3, 0.7).turn(0.0)), (Numbers{0.3, 0.7}));
  EXPECT_DOUBLE_EQ(turned.du(), 1.2757395851765425);
  EXPECT_DOUBLE_EQ(turned.dv(), 1.8364336390987788);
  EXPECT_DOUBLE_EQ(back.du(), 2.2345906623849485);
  EXPECT_DOUBLE_EQ(back.dv(), -0.08126851531803325);
}

TEST(OzUVVec, StreamsItsComponentsWithoutEndingTheLine)
{
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  OzJournal& result = journal << OzUVVec(1.5, -2.0);

  EXPECT_EQ(&result, &journal);
  EXPECT_EQ(journal.text(), "OzUVVec( 1.500, -2.000)");
}

TEST(OzUVVec, DebugWritesOneLineFromContentsOn)
{
  OzUVVec const value = OzUVVec(1.5, -2.0);
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  value.debug(journal, OZ_DEBUG_OFF, true, 2);
  value.debug(journal, OZ_DEBUG_SUMMARY, true, 2);
  EXPECT_EQ(journal.take(), "");
  value.debug(journal, OZ_DEBUG_CONTENTS, true, 0);
  EXPECT_EQ(journal.take(), "OzUVVec  ( 1.500, -2.000 )\n");
  value.debug(journal, OZ_DEBUG_DETAIL, false, 2);
  EXPECT_EQ(journal.take(), "  OzUVVec  ( 1.500, -2.000 )\n");
  value.debug(journal, OZ_DEBUG_CONTENTS, false, -1);
  EXPECT_EQ(journal.take(), "OzUVVec  ( 1.500, -2.000 )\n");
}
} // namespace
