#include "ozuvpar.h"

#include "operations.h"
#include "report_recorder.h"
#include "text_journal.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

template <>
struct PartnerOf<OzUVPar>
{
  using type = OzUVVec;
};

namespace
{
std::vector<std::string> const NO_REPORT;
std::vector<std::string> const ONE_REPORT = reports(1, "ozuvpar.cpp");

using Numbers = std::array<double, 2>;

Numbers numbers(OzUVPar const& value)
{
  double const* const components = value.as_array();
  return {components[0], components[1]};
}

TEST(OzUVPar, IsAPlainValueOfAdjacentNumbers)
{
  static_assert(is_plain_value<OzUVPar, 2>);
  OzUVPar const value(1.0, 2.0);

  EXPECT_EQ(static_cast<void const*>(value.as_array()), static_cast<void const*>(&value));
  EXPECT_EQ(numbers(value), (Numbers{1.0, 2.0}));
  EXPECT_EQ(value.u(), 1.0);
  EXPECT_EQ(value.v(), 2.0);
}

TEST(OzUVPar, IsMadeFromNothingFromNumbersFromAnArrayOrAsACopy)
{
  double const array[] = {1.0, 2.0, 99.0};
  OzUVPar const value(array);
  OzUVPar const copy(value);
  OzUVPar assigned;

  OzUVPar const before = assigned;
  OzUVPar& result = (assigned = value);

  EXPECT_EQ(numbers(before), (Numbers{0.0, 0.0}));
  EXPECT_EQ(numbers(value), (Numbers{1.0, 2.0}));
  EXPECT_EQ(numbers(copy), (Numbers{1.0, 2.0}));
  EXPECT_EQ(numbers(assigned), (Numbers{1.0, 2.0}));
  EXPECT_EQ(&result, &assigned);
}

TEST(OzUVPar, ComponentsAreSetOneByOne)
{
  OzUVPar value(1.0, 2.0);

  value.set_u(7.0);
  EXPECT_EQ(numbers(value), (Numbers{7.0, 2.0}));
  value.set_v(8.0);
  EXPECT_EQ(numbers(value), (Numbers{7.0, 8.0}));
}

TEST(OzUVPar, IndexReadsAComponent)
{
  ReportRecorder const recorder;
  OzUVPar value(1.0, 2.0);
  OzUVPar const& constant_value = value;

  EXPECT_EQ(constant_value[0], 1.0);
  EXPECT_EQ(constant_value[1], 2.0);
  value[0] = 7.0;
  value[1] = 8.0;
  EXPECT_EQ(numbers(value), (Numbers{7.0, 8.0}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzUVPar, BadIndexIsReportedOnceAndUsed)
{
  OzUVPar values[3] = {OzUVPar(1.0, 2.0), OzUVPar(1.0, 2.0), OzUVPar(1.0, 2.0)};
  int volatile below = -1;
  int volatile above = 2;
  ReportRecorder recorder;
  values[2].set_u(42.0);

  EXPECT_EQ(values[1][below], 2.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(values[1][above], 42.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();

  OzUVPar const& constant_value = values[1];
  EXPECT_EQ(constant_value[below], 2.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(constant_value[above], 42.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzUVPar, BadIndexIsUsedWithoutAHandlerToo)
{
  OzUVPar const values[2] = {OzUVPar(1.0, 2.0), OzUVPar(1.0, 2.0)};
  int volatile above = 2;

  EXPECT_EQ(values[0][above], 1.0);
}

TEST(OzUVPar, HasItsOperationsAndNoOther)
{
  static_assert(has_all<OzUVPar, U, V, SetU, SetV, Dim, AsArray, ConstantIndex, VariableIndex, PlusSame,
                        PlusPartner, MinusSame, MinusPartner, TimesNumber, AddSame, AddPartner, SubtractSame,
                        SubtractPartner, MultiplyBy, Debug>);
  static_assert(has_none<OzUVPar, W, Du, Dv, Dw, SetW, SetDu, SetDv, SetDw, Negation, Reverse, TimesSame,
                         TimesPartner, RemainderSame, DivideBy, Length, NumericalZero, Normalize, Angle,
                         Ortho, Turn, NumberTimes, OverNumber, Equals>);
  static_assert(std::is_same_v<ConstantIndex<OzUVPar>, double const&>);
  static_assert(std::is_same_v<VariableIndex<OzUVPar>, double&>);
  static_assert(std::is_same_v<AsArray<OzUVPar>, double const*>);
  static_assert(std::is_same_v<PlusSame<OzUVPar>, OzUVPar>);
  static_assert(std::is_same_v<PlusPartner<OzUVPar>, OzUVPar>);
  static_assert(std::is_same_v<MinusPartner<OzUVPar>, OzUVPar>);
  static_assert(std::is_same_v<MinusSame<OzUVPar>, OzUVVec>);
  static_assert(std::is_same_v<TimesNumber<OzUVPar>, OzUVPar>);
  static_assert(std::is_same_v<AddSame<OzUVPar>, OzUVPar&>);
  static_assert(std::is_same_v<AddPartner<OzUVPar>, OzUVPar&>);
  static_assert(std::is_same_v<SubtractSame<OzUVPar>, OzUVPar&>);
  static_assert(std::is_same_v<SubtractPartner<OzUVPar>, OzUVPar&>);
  static_assert(std::is_same_v<MultiplyBy<OzUVPar>, OzUVPar&>);
  static_assert(std::is_same_v<Dim<OzUVPar>, int>);

  EXPECT_EQ(OzUVPar::dim(), 2);
}

TEST(OzUVPar, ComputesByComponents)
{
  OzUVPar const a(5.0, -3.0);
  OzUVPar const b(0.5, 8.0);
  OzUVVec const step(0.5, 8.0);
  OzUVVec const way = a - b;

  EXPECT_EQ(numbers(a + b), (Numbers{5.5, 5.0}));
  EXPECT_EQ(numbers(a + step), (Numbers{5.5, 5.0}));
  EXPECT_EQ(numbers(a - step), (Numbers{4.5, -11.0}));
  EXPECT_EQ(way.du(), 4.5);
  EXPECT_EQ(way.dv(), -11.0);
  EXPECT_EQ(numbers(a * 2.0), (Numbers{10.0, -6.0}));
}

TEST(OzUVPar, ComputesInPlace)
{
  OzUVPar value(5.0, -3.0);

  EXPECT_EQ(&(value += OzUVPar(0.5, 8.0)), &value);
  EXPECT_EQ(numbers(value), (Numbers{5.5, 5.0}));
  EXPECT_EQ(&(value += OzUVVec(1.0, 2.0)), &value);
  EXPECT_EQ(numbers(value), (Numbers{6.5, 7.0}));
  EXPECT_EQ(&(value -= OzUVPar(0.5, 8.0)), &value);
  EXPECT_EQ(numbers(value), (Numbers{6.0, -1.0}));
  EXPECT_EQ(&(value -= OzUVVec(2.0, 1.0)), &value);
  EXPECT_EQ(numbers(value), (Numbers{4.0, -2.0}));
  EXPECT_EQ(&(value *= 3.0), &value);
  EXPECT_EQ(numbers(value), (Numbers{12.0, -6.0}));
  OzUVPar const& itself = value;
  value += itself;
  EXPECT_EQ(numbers(value), (Numbers{24.0, -12.0}));
  value -= itself;
  EXPECT_EQ(numbers(value), (Numbers{0.0, 0.0}));
}

TEST(OzUVPar, StreamsItsComponentsWithoutEndingTheLine)
{
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  OzJournal& result = journal << OzUVPar(1.5, 2.0);

  EXPECT_EQ(&result, &journal);
  EXPECT_EQ(journal.text(), "OzUVPar( 1.500, 2.000)");
}

TEST(OzUVPar, DebugWritesOneLineFromContentsOn)
{
  OzUVPar const value = OzUVPar(1.5, 2.0);
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  value.debug(journal, OZ_DEBUG_OFF, true, 2);
  value.debug(journal, OZ_DEBUG_SUMMARY, true, 2);
  EXPECT_EQ(journal.take(), "");
  value.debug(journal, OZ_DEBUG_CONTENTS, true, 0);
  EXPECT_EQ(journal.take(), "OzUVPar  ( 1.500, 2.000 )\n");
  value.debug(journal, OZ_DEBUG_DETAIL, false, 2);
  EXPECT_EQ(journal.take(), "  OzUVPar  ( 1.500, 2.000 )\n");
  value.debug(journal, OZ_DEBUG_CONTENTS, false, -1);
  EXPECT_EQ(journal.take(), "OzUVPar  ( 1.500, 2.000 )\n");
}
} // namespace
