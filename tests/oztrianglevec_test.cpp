#include "oztrianglevec.h"

#include "operations.h"
#include "oztrianglepar.h"
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
struct PartnerOf<OzTriangleVec>
{
  using type = OzTrianglePar;
};

namespace
{
double const PI = 3.141592653589793;
double const INF = std::numeric_limits<double>::infinity();
double const NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> const NO_REPORT;
std::vector<std::string> const ONE_REPORT = reports(1, "oztrianglevec.cpp");

using Numbers = std::array<double, 3>;

Numbers numbers(OzTriangleVec const& value)
{
  double const* const components = value.as_array();
  return {components[0], components[1], components[2]};
}

TEST(OzTriangleVec, IsAPlainValueOfAdjacentNumbers)
{
  static_assert(is_plain_value<OzTriangleVec, 3>);
  OzTriangleVec const value(1.0, 2.0, -3.0);

  EXPECT_EQ(static_cast<void const*>(value.as_array()), static_cast<void const*>(&value));
  EXPECT_EQ(numbers(value), (Numbers{1.0, 2.0, -3.0}));
  EXPECT_EQ(value.du(), 1.0);
  EXPECT_EQ(value.dv(), 2.0);
  EXPECT_EQ(value.dw(), -3.0);
}

TEST(OzTriangleVec, IsMadeFromNothingFromNumbersFromAnArrayOrAsACopy)
{
  double const array[] = {1.0, 2.0, -3.0, 99.0};
  OzTriangleVec const value(array);
  OzTriangleVec const copy(value);
  OzTriangleVec assigned;

  OzTriangleVec const before = assigned;
  OzTriangleVec& result = (assigned = value);

  EXPECT_EQ(numbers(before), (Numbers{0.0, 0.0, 0.0}));
  EXPECT_EQ(numbers(value), (Numbers{1.0, 2.0, -3.0}));
  EXPECT_EQ(numbers(copy), (Numbers{1.0, 2.0, -3.0}));
  EXPECT_EQ(numbers(assigned), (Numbers{1.0, 2.0, -3.0}));
  EXPECT_EQ(&result, &assigned);
}

TEST(OzTriangleVec, IndexReadsAComponent)
{
  ReportRecorder const recorder;
  OzTriangleVec const value(1.0, 2.0, -3.0);

  EXPECT_EQ(value[0], 1.0);
  EXPECT_EQ(value[1], 2.0);
  EXPECT_EQ(value[2], -3.0);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzTriangleVec, BadIndexIsReportedOnceAndUsed)
{
  OzTriangleVec const values[3] = {OzTriangleVec(1.0, 2.0, -3.0), OzTriangleVec(1.0, 2.0, -3.0),
                                   OzTriangleVec(1.0, 2.0, -3.0)};
  int volatile below = -1;
  int volatile above = 3;
  ReportRecorder recorder;

  EXPECT_EQ(values[1][below], -3.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(values[1][above], 1.0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzTriangleVec, BadIndexIsUsedWithoutAHandlerToo)
{
  OzTriangleVec const values[2] = {OzTriangleVec(1.0, 2.0, -3.0), OzTriangleVec(1.0, 2.0, -3.0)};
  int volatile above = 3;

  EXPECT_EQ(values[0][above], 1.0);
}

TEST(OzTriangleVec, HasItsOperationsAndNoOther)
{
  static_assert(has_all<OzTriangleVec, Du, Dv, Dw, AsArray, ConstantIndex, PlusSame, MinusSame, Negation,
                        Reverse, TimesNumber, Ortho, Turn, Debug>);
  static_assert(has_none<OzTriangleVec, Dim, SetDu, SetDv, SetDw, U, V, W, SetU, SetV, SetW, PlusPartner,
                         MinusPartner, TimesSame, TimesPartner, RemainderSame, AddSame, AddPartner,
                         SubtractSame, SubtractPartner, MultiplyBy, DivideBy, Length, NumericalZero,
                         Normalize, Angle, NumberTimes, OverNumber, Equals>);
  static_assert(std::is_same_v<ConstantIndex<OzTriangleVec>, double const&>);
  static_assert(std::is_same_v<VariableIndex<OzTriangleVec>, double const&>,
                "components are for reading only");
  static_assert(std::is_same_v<AsArray<OzTriangleVec>, double const*>);
  static_assert(std::is_same_v<PlusSame<OzTriangleVec>, OzTriangleVec>);
  static_assert(std::is_same_v<MinusSame<OzTriangleVec>, OzTriangleVec>);
  static_assert(std::is_same_v<Negation<OzTriangleVec>, OzTriangleVec>);
  static_assert(std::is_same_v<Reverse<OzTriangleVec>, OzTriangleVec>);
  static_assert(std::is_same_v<TimesNumber<OzTriangleVec>, OzTriangleVec>);
}

TEST(OzTriangleVec, ComponentsWithASumOfZeroAreKept)
{
  struct
  {
    char const* what;
    double components[3];
  } const cases[] = {
      {"exactly zero", {1.0, -1.0, 0.0}},
      {"just below the limit", {9.9e-13, 0.0, 0.0}},
      {"just below the limit, negative", {0.0, -9.9e-13, 0.0}},
      {"all zero", {0.0, 0.0, 0.0}},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    Numbers const wanted{c.components[0], c.components[1], c.components[2]};
    EXPECT_EQ(numbers(OzTriangleVec(wanted[0], wanted[1], wanted[2])), wanted) << c.what;
    EXPECT_EQ(numbers(OzTriangleVec(c.components)), wanted) << c.what;
  }
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzTriangleVec, ComponentsWithAnotherSumAreReportedAndBecomeZero)
{
  struct
  {
    char const* what;
    double components[3];
  } const cases[] = {
      {"all one", {1.0, 1.0, 1.0}},
      {"the limit itself", {1e-12, 0.0, 0.0}},
      {"the limit itself, negative", {0.0, 0.0, -1e-12}},
      {"no number", {NOT_A_NUMBER, 0.0, 0.0}},
      {"infinity", {INF, 0.0, 0.0}},
      {"two infinities", {INF, -INF, 0.0}},
  };
  for (auto const& c : cases)
  {
    double const* const n = c.components;
    EXPECT_EQ(numbers(OzTriangleVec(n[0], n[1], n[2])), (Numbers{0.0, 0.0, 0.0})) << c.what;
    ReportRecorder recorder;
    EXPECT_EQ(numbers(OzTriangleVec(n[0], n[1], n[2])), (Numbers{0.0, 0.0, 0.0})) << c.what;
    EXPECT_EQ(recorder.units(), ONE_REPORT) << c.what;
    recorder.clear();
    EXPECT_EQ(numbers(OzTriangleVec(n)), (Numbers{0.0, 0.0, 0.0})) << c.what << ", from an array";
    EXPECT_EQ(recorder.units(), ONE_REPORT) << c.what << ", from an array";
  }
}

TEST(OzTriangleVec, ComputesByComponents)
{
  ReportRecorder const recorder;
  OzTriangleVec const a(5.0, -3.0, -2.0);
  OzTriangleVec const b(0.5, 8.0, -8.5);

  EXPECT_EQ(numbers(a + b), (Numbers{5.5, 5.0, -10.5}));
  EXPECT_EQ(numbers(a - b), (Numbers{4.5, -11.0, 6.5}));
  EXPECT_EQ(numbers(-a), (Numbers{-5.0, 3.0, 2.0}));
  EXPECT_EQ(numbers(a.reverse()), (Numbers{-5.0, 3.0, 2.0}));
  EXPECT_EQ(numbers(a * 2.0), (Numbers{10.0, -6.0, -4.0}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzTriangleVec, EveryResultIsHeldToTheSum)
{
  // Each is kept by itself, and its double is not.
  OzTriangleVec const drifted(9e-13, 0.0, 0.0);
  OzTriangleVec const other_way(0.0, -9e-13, 0.0);
  Numbers const zero{0.0, 0.0, 0.0};
  ReportRecorder recorder;

  EXPECT_EQ(numbers(drifted + drifted), zero);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(numbers(drifted - other_way), zero);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(numbers(drifted * 2.0), zero);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
  recorder.clear();
  EXPECT_EQ(numbers(drifted * -1.0), (Numbers{-9e-13, 0.0, 0.0}));
  EXPECT_EQ(numbers(-drifted), (Numbers{-9e-13, 0.0, 0.0}));
  EXPECT_EQ(numbers(drifted * INF), zero) << "infinity times zero";
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzTriangleVec, OrthoIsAtARightAngleAndOfTheSameLength)
{
  ReportRecorder const recorder;
  OzTriangleVec const vector(0.5, 0.25, -0.75);
  OzTriangleVec const ortho = vector.ortho();

  EXPECT_EQ(numbers(OzTriangleVec(1.0, -1.0, 0.0).ortho()),
            (Numbers{0.5773502691896257, 0.5773502691896257, -1.1547005383792515}));
  EXPECT_EQ(numbers(ortho), (Numbers{-0.5773502691896257, 0.7216878364870322, -0.14433756729740643}));
  EXPECT_NEAR(vector.du() * ortho.du() + vector.dv() * ortho.dv() + vector.dw() * ortho.dw(), 0.0, 1e-15);
  EXPECT_DOUBLE_EQ(ortho.du() * ortho.du() + ortho.dv() * ortho.dv() + ortho.dw() * ortho.dw(), 0.875);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzTriangleVec, TurnsTowardsItsOrtho)
{
  ReportRecorder const recorder;
  OzTriangleVec const vector(0.5, 0.25, -0.75);
  OzTriangleVec const turned = vector.turn(1.0);
  OzTriangleVec const back = vector.turn(-PI / 2.0);

  EXPECT_EQ(numbers(vector.turn(0.0)), (Numbers{0.5, 0.25, -0.75}));
  EXPECT_DOUBLE_EQ(turned.du(), -0.2156723466600286);
  EXPECT_DOUBLE_EQ(turned.dv(), 0.7423549509596581);
  EXPECT_DOUBLE_EQ(turned.dw(), -0.5266826042996294);
  EXPECT_NEAR(back.du(), 0.5773502691896257, 1e-15);
  EXPECT_NEAR(back.dv(), -0.721687836487032, 1e-15);
  EXPECT_NEAR(back.dw(), 0.14433756729740643, 1e-15);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzTriangleVec, LongVectorsFallToTheSumByRounding)
{
  // Rounding makes another part of the turn fall each time; the rest of it goes on with zero.
  struct
  {
    char const* what;
    double components[3];
    double angle;
    Numbers result;
  } const cases[] = {
      {"the ortho",
       {36339.35, 70819.41, -107158.76000000001},
       2.0,
       {-15122.5055446794, -29471.273437635064, 44593.77898231446}},
      {"the scaled vector",
       {38073.77, 2063.87, -40137.64},
       0.5,
       {-11681.22873373395, 21648.64171442791, -9967.412980693962}},
      {"the sum", {5968.54, 8885.99, -14854.529999999999}, 0.5, {0.0, 0.0, 0.0}},
      {"the scaled ortho",
       {11170.72, 9594.99, -20765.71},
       2.0,
       {-4648.659789953895, -3992.924735201466, 8641.58452515536}},
  };
  for (auto const& c : cases)
  {
    OzTriangleVec const vector(c.components);
    ReportRecorder const recorder;

    OzTriangleVec const turned = vector.turn(c.angle);

    EXPECT_DOUBLE_EQ(turned.du(), c.result[0]) << c.what;
    EXPECT_DOUBLE_EQ(turned.dv(), c.result[1]) << c.what;
    EXPECT_DOUBLE_EQ(turned.dw(), c.result[2]) << c.what;
    EXPECT_EQ(recorder.units(), ONE_REPORT) << c.what;
  }
}

TEST(OzTriangleVec, StreamsItsComponentsWithoutEndingTheLine)
{
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  OzJournal& result = journal << OzTriangleVec(1.5, -2.0, 0.5);

  EXPECT_EQ(&result, &journal);
  EXPECT_EQ(journal.text(), "OzTriangleVec( 1.500, -2.000, 0.500)");
}

TEST(OzTriangleVec, DebugWritesOneLineFromContentsOn)
{
  OzTriangleVec const value = OzTriangleVec(1.5, -2.0, 0.5);
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  value.debug(journal, OZ_DEBUG_OFF, true, 2);
  value.debug(journal, OZ_DEBUG_SUMMARY, true, 2);
  EXPECT_EQ(journal.take(), "");
  value.debug(journal, OZ_DEBUG_CONTENTS, true, 0);
  EXPECT_EQ(journal.take(), "OzTriangleVec( 1.500, -2.000, 0.500 )\n");
  value.debug(journal, OZ_DEBUG_DETAIL, false, 2);
  EXPECT_EQ(journal.take(), "  OzTriangleVec( 1.500, -2.000, 0.500 )\n");
  value.debug(journal, OZ_DEBUG_CONTENTS, false, -1);
  EXPECT_EQ(journal.take(), "OzTriangleVec( 1.500, -2.000, 0.500 )\n");
}
} // namespace
