#include "ozuvwvec.h"

#include "operations.h"
#include "ozuvwpar.h"
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
struct PartnerOf<OzUVWVec>
{
  using type = OzUVWPar;
};

namespace
{
double const INF = std::numeric_limits<double>::infinity();
double const NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> const NO_REPORT;
std::vector<std::string> const ONE_REPORT = reports(1, "ozuvwvec.cpp");

using Numbers = std::array<double, 3>;

Numbers numbers(OzUVWVec const& value)
{
  double const* const components = value.as_array();
  return {components[0], components[1], components[2]};
}

TEST(OzUVWVec, IsAPlainValueOfAdjacentNumbers)
{
  static_assert(is_plain_value<OzUVWVec, 3>);
  OzUVWVec const value(1.0, 2.0, 3.0);

  EXPECT_EQ(static_cast<void const*>(value.as_array()), static_cast<void const*>(&value));
  EXPECT_EQ(numbers(value), (Numbers{1.0, 2.0, 3.0}));
  EXPECT_EQ(value.du(), 1.0);
  EXPECT_EQ(value.dv(), 2.0);
  EXPECT_EQ(value.dw(), 3.0);
}

TEST(OzUVWVec, IsMadeFromNothingFromNumbersFromAnArrayOrAsACopy)
{
  double const array[] = {1.0, 2.0, 3.0, 99.0};
  OzUVWVec const value(array);
  OzUVWVec const copy(value);
  OzUVWVec assigned;

  OzUVWVec const before = assigned;
  OzUVWVec& result = (assigned = value);

  EXPECT_EQ(numbers(before), (Numbers{0.0, 0.0, 0.0}));
  EXPECT_EQ(numbers(value), (Numbers{1.0, 2.0, 3.0}));
  EXPECT_EQ(numbers(copy), (Numbers{1.0, 2.0, 3.0}));
  EXPECT_EQ(numbers(assigned), (Numbers{1.0, 2.0, 3.0}));
  EXPECT_EQ(&result, &assigned);
}

TEST(OzUVWVec, ComponentsAreSetOneByOne)
{
  OzUVWVec value(1.0, 2.0, 3.0);

  value.set_du(7.0);
  EXPECT_EQ(numbers(value), (Numbers{7.0, 2.0, 3.0}));
  value.set_dv(8.0);
  EXPECT_EQ(numbers(value), (Numbers{7.0, 8.0, 3.0}));
  value.set_dw(9.0);
  EXPECT_EQ(numbers(value), (Numbers{7.0, 8.0, 9.0}));
}

TEST(OzUVWVec, IndexReadsAComponent)
{
  ReportRecorder const recorder;
  OzUVWVec value(1.0, 2.0, 3.0);
  OzUVWVec const& constant_value = value;

  EXPECT_EQ(constant_value[0], 1.0);
  EXPECT_EQ(constant_value[1], 2.0);
  EXPECT_EQ(constant_value[2], 3.0);
  value[0] = 7.0;
  value[1] = 8.0;
  value[2] = 9.0;
  EXPECT_EQ(numbers(value), (Numbers{7.0, 8.0, 9.0}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzUVWVec, BadIndexIsReportedOnceAndUsed)
{
  OzUVWVec values[3] = {OzUVWVec(1.0, 2.0, 3.0), OzUVWVec(1.0, 2.0, 3.0), OzUVWVec(1.0, 2.0, 3.0)};
  int volatile below = -1;
  int volatile above = 3;
  ReportRecorder recorder;
  values[2].set_du(42.0);

  EXPECT_EQ(values[1][below], 3.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(values[1][above], 42.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();

  OzUVWVec const& constant_value = values[1];
  EXPECT_EQ(constant_value[below], 3.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(constant_value[above], 42.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzUVWVec, BadIndexIsUsedWithoutAHandlerToo)
{
  OzUVWVec const values[2] = {OzUVWVec(1.0, 2.0, 3.0), OzUVWVec(1.0, 2.0, 3.0)};
  int volatile above = 3;

  EXPECT_EQ(values[0][above], 1.0);
}

TEST(OzUVWVec, HasItsOperationsAndNoOther)
{
  static_assert(has_all<OzUVWVec, Du, Dv, Dw, SetDu, SetDv, SetDw, AsArray, ConstantIndex, VariableIndex,
                        PlusSame, MinusSame, Negation, Reverse, TimesNumber, TimesSame, RemainderSame,
                        AddSame, SubtractSame, Length, NumericalZero, Normalize, Debug>);
  static_assert(has_none<OzUVWVec, Dim, Ortho, Turn, Angle, MultiplyBy, DivideBy, U, V, W, SetU, SetV, SetW,
                         PlusPartner, MinusPartner, TimesPartner, AddPartner, SubtractPartner, NumberTimes,
                         OverNumber, Equals>);
  static_assert(std::is_same_v<ConstantIndex<OzUVWVec>, double const&>);
  static_assert(std::is_same_v<VariableIndex<OzUVWVec>, double&>);
  static_assert(std::is_same_v<AsArray<OzUVWVec>, double const*>);
  static_assert(std::is_same_v<PlusSame<OzUVWVec>, OzUVWVec>);
  static_assert(std::is_same_v<MinusSame<OzUVWVec>, OzUVWVec>);
  static_assert(std::is_same_v<Negation<OzUVWVec>, OzUVWVec>);
  static_assert(std::is_same_v<Reverse<OzUVWVec>, OzUVWVec>);
  static_assert(std::is_same_v<TimesNumber<OzUVWVec>, OzUVWVec>);
  static_assert(std::is_same_v<TimesSame<OzUVWVec>, OzUVWVec>);
  static_assert(std::is_same_v<RemainderSame<OzUVWVec>, double>);
  static_assert(std::is_same_v<AddSame<OzUVWVec>, OzUVWVec&>);
  static_assert(std::is_same_v<SubtractSame<OzUVWVec>, OzUVWVec&>);
  static_assert(std::is_same_v<Normalize<OzUVWVec>, void>);
}

TEST(OzUVWVec, ComputesByComponents)
{
  OzUVWVec const a(5.0, -3.0, 2.0);
  OzUVWVec const b(0.5, 8.0, 7.0);

  EXPECT_EQ(numbers(a + b), (Numbers{5.5, 5.0, 9.0}));
  EXPECT_EQ(numbers(a - b), (Numbers{4.5, -11.0, -5.0}));
  EXPECT_EQ(numbers(-a), (Numbers{-5.0, 3.0, -2.0}));
  EXPECT_EQ(numbers(a.reverse()), (Numbers{-5.0, 3.0, -2.0}));
  EXPECT_EQ(numbers(a * 2.0), (Numbers{10.0, -6.0, 4.0}));
  EXPECT_EQ(a % b, -7.5);
}

TEST(OzUVWVec, CrossProductIsAtRightAnglesToBoth)
{
  OzUVWVec const a(5.0, -3.0, 2.0);
  OzUVWVec const b(0.5, 8.0, 7.0);

  EXPECT_EQ(numbers(a * b), (Numbers{-37.0, -34.0, 41.5}));
  EXPECT_EQ(numbers(b * a), (Numbers{37.0, 34.0, -41.5}));
  EXPECT_EQ((a * b) % a, 0.0);
  EXPECT_EQ((a * b) % b, 0.0);
  EXPECT_EQ(numbers(OzUVWVec(1.0, 0.0, 0.0) * OzUVWVec(0.0, 1.0, 0.0)), (Numbers{0.0, 0.0, 1.0}));
}

TEST(OzUVWVec, ComputesInPlace)
{
  OzUVWVec value(5.0, -3.0, 2.0);

  EXPECT_EQ(&(value += OzUVWVec(0.5, 8.0, 7.0)), &value);
  EXPECT_EQ(numbers(value), (Numbers{5.5, 5.0, 9.0}));
  EXPECT_EQ(&(value -= OzUVWVec(1.5, 7.0, 1.0)), &value);
  EXPECT_EQ(numbers(value), (Numbers{4.0, -2.0, 8.0}));
  OzUVWVec const& itself = value;
  value += itself;
  EXPECT_EQ(numbers(value), (Numbers{8.0, -4.0, 16.0}));
  value -= itself;
  EXPECT_EQ(numbers(value), (Numbers{0.0, 0.0, 0.0}));
}

TEST(OzUVWVec, LengthIsTheRootOfTheSquares)
{
  EXPECT_EQ(OzUVWVec(2.0, -3.0, 6.0).length(), 7.0);
  EXPECT_EQ(OzUVWVec().length(), 0.0);
  EXPECT_EQ(OzUVWVec(0.0, 0.0, -1e200).length(), INF) << "the square is beyond all numbers";
}

TEST(OzUVWVec, IsNumericallyZeroBelowALengthOf1e20th)
{
  EXPECT_TRUE(OzUVWVec(0.0, 0.0, 1e-21).numerical_zero());
  EXPECT_FALSE(OzUVWVec(0.0, 0.0, 1e-19).numerical_zero());
  EXPECT_FALSE(OzUVWVec(0.0, 0.0, 1e-20).numerical_zero()) << "the limit itself";
  EXPECT_TRUE(OzUVWVec(0.0, 9.9999999999999e-21, 0.0).numerical_zero());
  EXPECT_FALSE(OzUVWVec(0.7e-20, 0.7e-20, 0.7e-20).numerical_zero());
  EXPECT_TRUE(OzUVWVec().numerical_zero());
  EXPECT_FALSE(OzUVWVec(NOT_A_NUMBER, 0.0, 0.0).numerical_zero());
}

TEST(OzUVWVec, NormalizeKeepsTheDirectionAndReportsNothing)
{
  ReportRecorder const recorder;
  OzUVWVec value(4.0, 0.0, -3.0);
  OzUVWVec other(0.0, 8.0, 6.0);
  OzUVWVec shortest(0.0, 1e-20, 0.0);

  value.normalize();
  other.normalize();
  shortest.normalize();

  EXPECT_EQ(numbers(value), (Numbers{0.8, 0.0, -0.6}));
  EXPECT_EQ(numbers(other), (Numbers{0.0, 0.8, 0.6}));
  EXPECT_EQ(numbers(shortest), (Numbers{0.0, 1.0, 0.0}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzUVWVec, NormalizeReportsWhatIsTooShortAndLeavesIt)
{
  for (OzUVWVec const& original : {OzUVWVec(), OzUVWVec(1e-21, 0.0, 0.0), OzUVWVec(0.0, 0.0, -9.9e-21)})
  {
    OzUVWVec value = original;
    value.normalize();
    EXPECT_EQ(numbers(value), numbers(original)) << "without a handler";

    ReportRecorder const recorder;
    value.normalize();
    EXPECT_EQ(numbers(value), numbers(original));
    EXPECT_EQ(recorder.units(), ONE_REPORT);
  }
}

TEST(OzUVWVec, NormalizeDividesByAnInfiniteLengthToo)
{
  ReportRecorder const recorder;
  OzUVWVec value(2.0, 1e200, -3.0);

  value.normalize();

  EXPECT_EQ(numbers(value), (Numbers{0.0, 0.0, 0.0}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzUVWVec, NormalizeReportsWhatIsNoNumber)
{
  ReportRecorder const recorder;
  OzUVWVec value(2.0, 1.0, NOT_A_NUMBER);

  value.normalize();

  EXPECT_EQ(value.du(), 2.0);
  EXPECT_EQ(value.dv(), 1.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzUVWVec, StreamsItsComponentsWithoutEndingTheLine)
{
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  OzJournal& result = journal << OzUVWVec(1.5, -2.0, 0.25);

  EXPECT_EQ(&result, &journal);
  EXPECT_EQ(journal.text(), "OzUVWVec( 1.500, -2.000, 0.250)");
}

TEST(OzUVWVec, DebugWritesOneLineFromContentsOn)
{
  OzUVWVec const value = OzUVWVec(1.5, -2.0, 0.25);
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  value.debug(journal, OZ_DEBUG_OFF, true, 2);
  value.debug(journal, OZ_DEBUG_SUMMARY, true, 2);
  EXPECT_EQ(journal.take(), "");
  value.debug(journal, OZ_DEBUG_CONTENTS, true, 0);
  EXPECT_EQ(journal.take(), "OzUVWVec  ( 1.500, -2.000, 0.250 )\n");
  value.debug(journal, OZ_DEBUG_DETAIL, false, 2);
  EXPECT_EQ(journal.take(), "  OzUVWVec  ( 1.500, -2.000, 0.250 )\n");
  value.debug(journal, OZ_DEBUG_CONTENTS, false, -1);
  EXPECT_EQ(journal.take(), "OzUVWVec  ( 1.500, -2.000, 0.250 )\n");
}
} // namespace
