#include "ozuvwpar.h"

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
struct PartnerOf<OzUVWPar>
{
  using type = OzUVWVec;
};

namespace
{
std::vector<std::string> const NO_REPORT;
std::vector<std::string> const ONE_REPORT = reports(1, "ozuvwpar.cpp");

using Numbers = std::array<double, 3>;

Numbers numbers(OzUVWPar const& value)
{
  double const* const components = value.as_array();
  return {components[0], components[1], components[2]};
}

TEST(OzUVWPar, IsAPlainValueOfAdjacentNumbers)
{
  static_assert(is_plain_value<OzUVWPar, 3>);
  OzUVWPar const value(1.0, 2.0, 3.0);

  EXPECT_EQ(static_cast<void const*>(value.as_array()), static_cast<void const*>(&value));
  EXPECT_EQ(numbers(value), (Numbers{1.0, 2.0, 3.0}));
  EXPECT_EQ(value.u(), 1.0);
  EXPECT_EQ(value.v(), 2.0);
  EXPECT_EQ(value.w(), 3.0);
}

TEST(OzUVWPar, IsMadeFromNothingFromNumbersFromAnArrayOrAsACopy)
{
  double const array[] = {1.0, 2.0, 3.0, 99.0};
  OzUVWPar const value(array);
  OzUVWPar const copy(value);
  OzUVWPar assigned;

  OzUVWPar const before = assigned;
  OzUVWPar& result = (assigned = value);

  EXPECT_EQ(numbers(before), (Numbers{0.0, 0.0, 0.0}));
  EXPECT_EQ(numbers(value), (Numbers{1.0, 2.0, 3.0}));
  EXPECT_EQ(numbers(copy), (Numbers{1.0, 2.0, 3.0}));
  EXPECT_EQ(numbers(assigned), (Numbers{1.0, 2.0, 3.0}));
  EXPECT_EQ(&result, &assigned);
}

TEST(OzUVWPar, ComponentsAreSetOneByOne)
{
  OzUVWPar value(1.0, 2.0, 3.0);

  value.set_u(7.0);
  EXPECT_EQ(numbers(value), (Numbers{7.0, 2.0, 3.0}));
  value.set_v(8.0);
  EXPECT_EQ(numbers(value), (Numbers{7.0, 8.0, 3.0}));
  value.set_w(9.0);
  EXPECT_EQ(numbers(value), (Numbers{7.0, 8.0, 9.0}));
}

TEST(OzUVWPar, IndexReadsAComponent)
{
  ReportRecorder const recorder;
  OzUVWPar value(1.0, 2.0, 3.0);
  OzUVWPar const& constant_value = value;

  EXPECT_EQ(constant_value[0], 1.0);
  EXPECT_EQ(constant_value[1], 2.0);
  EXPECT_EQ(constant_value[2], 3.0);
  value[0] = 7.0;
  value[1] = 8.0;
  value[2] = 9.0;
  EXPECT_EQ(numbers(value), (Numbers{7.0, 8.0, 9.0}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzUVWPar, BadIndexIsReportedOnceAndUsed)
{
  OzUVWPar values[3] = {OzUVWPar(1.0, 2.0, 3.0), OzUVWPar(1.0, 2.0, 3.0), OzUVWPar(1.0, 2.0, 3.0)};
  int volatile below = -1;
  int volatile above = 3;
  ReportRecorder recorder;
  values[2].set_u(42.0);

  EXPECT_EQ(values[1][below], 3.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(values[1][above], 42.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();

  OzUVWPar const& constant_value = values[1];
  EXPECT_EQ(constant_value[below], 3.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(constant_value[above], 42.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzUVWPar, BadIndexIsUsedWithoutAHandlerToo)
{
  OzUVWPar const values[2] = {OzUVWPar(1.0, 2.0, 3.0), OzUVWPar(1.0, 2.0, 3.0)};
  int volatile above = 3;

  EXPECT_EQ(values[0][above], 1.0);
}

TEST(OzUVWPar, HasItsOperationsAndNoOther)
{
  static_assert(has_all<OzUVWPar, U, V, W, SetU, SetV, SetW, AsArray, ConstantIndex, VariableIndex,
                        PlusPartner, MinusSame, MinusPartner, TimesNumber, Debug>);
  static_assert(has_none<OzUVWPar, Dim, PlusSame, AddSame, AddPartner, SubtractSame, SubtractPartner,
                         MultiplyBy, DivideBy, Du, Dv, Dw, SetDu, SetDv, SetDw, Negation, Reverse, TimesSame,
                         TimesPartner, RemainderSame, Length, NumericalZero, Normalize, Angle, Ortho, Turn,
                         NumberTimes, OverNumber, Equals>);
  static_assert(std::is_same_v<ConstantIndex<OzUVWPar>, double const&>);
  static_assert(std::is_same_v<VariableIndex<OzUVWPar>, double&>);
  static_assert(std::is_same_v<AsArray<OzUVWPar>, double const*>);
  static_assert(std::is_same_v<PlusPartner<OzUVWPar>, OzUVWPar>);
  static_assert(std::is_same_v<MinusPartner<OzUVWPar>, OzUVWPar>);
  static_assert(std::is_same_v<MinusSame<OzUVWPar>, OzUVWVec>);
  static_assert(std::is_same_v<TimesNumber<OzUVWPar>, OzUVWPar>);
}

TEST(OzUVWPar, ComputesByComponents)
{
  OzUVWPar const a(5.0, -3.0, 2.0);
  OzUVWVec const step(0.5, 8.0, 7.0);
  OzUVWVec const way = a - OzUVWPar(0.5, 8.0, 7.0);

  EXPECT_EQ(numbers(a + step), (Numbers{5.5, 5.0, 9.0}));
  EXPECT_EQ(numbers(a - step), (Numbers{4.5, -11.0, -5.0}));
  EXPECT_EQ(way.du(), 4.5);
  EXPECT_EQ(way.dv(), -11.0);
  EXPECT_EQ(way.dw(), -5.0);
  EXPECT_EQ(numbers(a * 2.0), (Numbers{10.0, -6.0, 4.0}));
}

TEST(OzUVWPar, StreamsItsComponentsWithoutEndingTheLine)
{
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  OzJournal& result = journal << OzUVWPar(1.5, 2.0, 0.25);

  EXPECT_EQ(&result, &journal);
  EXPECT_EQ(journal.text(), "OzUVWPar( 1.500, 2.000, 0.250)");
}

TEST(OzUVWPar, DebugWritesOneLineFromContentsOn)
{
  OzUVWPar const value = OzUVWPar(1.5, 2.0, 0.25);
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  value.debug(journal, OZ_DEBUG_OFF, true, 2);
  value.debug(journal, OZ_DEBUG_SUMMARY, true, 2);
  EXPECT_EQ(journal.take(), "");
  value.debug(journal, OZ_DEBUG_CONTENTS, true, 0);
  EXPECT_EQ(journal.take(), "OzUVWPar  ( 1.500, 2.000, 2.000 )\n");
  value.debug(journal, OZ_DEBUG_DETAIL, false, 2);
  EXPECT_EQ(journal.take(), "  OzUVWPar  ( 1.500, 2.000, 2.000 )\n");
  value.debug(journal, OZ_DEBUG_CONTENTS, false, -1);
  EXPECT_EQ(journal.take(), "OzUVWPar  ( 1.500, 2.000, 2.000 )\n");
}
} // namespace
