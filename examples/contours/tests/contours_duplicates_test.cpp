#include "duplicates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace contours;
using testing::ElementsAre;

namespace
{

double const TOLERANCE = 0.01;

std::vector<std::size_t> first_of(std::vector<Curve> const& curves)
{
  return first_in_place(curves, TOLERANCE);
}

} // namespace

TEST(Duplicates, LinesInEitherDirection)
{
  EXPECT_THAT(first_of({Curve::line({0, 0}, {10, 0}), Curve::line({0, 0}, {10, 0}),
                        Curve::line({10, 0}, {0, 0}), Curve::line({0, 0}, {0, 10})}),
              ElementsAre(0, 0, 0, 3));
}

TEST(Duplicates, EndsMayBeOffByTheTolerance)
{
  Curve const line = Curve::line({0, 0}, {10, 0});
  EXPECT_THAT(first_of({line, Curve::line({0, 0.009}, {10, -0.009})}), ElementsAre(0, 0));
  EXPECT_THAT(first_of({line, Curve::line({0, 0.011}, {10, 0})}), ElementsAre(0, 1));
  EXPECT_THAT(first_of({line, Curve::line({0, 0}, {10.011, 0})}), ElementsAre(0, 1));
}

TEST(Duplicates, CellBoundariesDoNotSeparateThem)
{
  for (double const x : {-0.02, -0.01, 0.0, 0.01, 0.0099999, 1.23456})
    EXPECT_THAT(first_of({Curve::line({x - 0.004, 0}, {x, 10}), Curve::line({x, 10.004}, {x + 0.004, 0})}),
                ElementsAre(0, 0))
        << x;
}

TEST(Duplicates, AnArcAndItsChordAreDifferent)
{
  EXPECT_THAT(first_of({Curve::line({0, 0}, {10, 0}), Curve::bulged({0, 0}, {10, 0}, 0.001)}),
              ElementsAre(0, 1));
}

TEST(Duplicates, ArcsAreComparedByTheirMiddlesToo)
{
  Curve const upper = Curve::arc({0, 0}, 5, 0, 180);
  EXPECT_THAT(
      first_of({upper, Curve::arc({0, 0}, 5, 180, 360), Curve::arc({0, 0}, 5, 0, 180), upper.reversed()}),
      ElementsAre(0, 1, 0, 0));
}

TEST(Duplicates, CirclesMayBeginAnywhere)
{
  EXPECT_THAT(first_of({Curve::circle({0, 0}, 5), Curve::arc({0, 0}, 5, 90, 450),
                        Curve::circle({0, 0}, 5.005), Curve::circle({0, 0.02}, 5), Curve::circle({0, 0}, 6)}),
              ElementsAre(0, 0, 0, 3, 4));
}

TEST(Duplicates, ShortEdgesAreNotSwallowedByALongTolerance)
{
  // Neighbours in a fine polyline, far nearer to each other than the tolerance.
  EXPECT_THAT(first_in_place({Curve::line({0, 0}, {0.003, 0}), Curve::line({0.003, 0}, {0.006, 0})}, 0.01),
              ElementsAre(0, 1));
  // The two long sides of a narrow slit.
  EXPECT_THAT(first_in_place({Curve::line({0, 0}, {5, 0}), Curve::line({5, 0.3}, {0, 0.3})}, 10.0),
              ElementsAre(0, 1));
}

TEST(Duplicates, TheFirstOneIsKeptWhereSeveralAreNear)
{
  Curve const middle = Curve::line({0, 0}, {10, 0});
  EXPECT_THAT(
      first_of({Curve::line({0, 0.008}, {10, 0.008}), Curve::line({0, -0.008}, {10, -0.008}), middle}),
      ElementsAre(0, 1, 0));
}

TEST(Duplicates, ManyLinesThroughOnePointAreNoTrouble)
{
  std::vector<Curve> curves;
  for (int i = 0; i < 3000; ++i)
    curves.push_back(Curve::line({0, 0}, {100.0, 0.05 * i}));
  curves.push_back(curves[1500].reversed());

  std::vector<std::size_t> const first = first_of(curves);
  EXPECT_EQ(first[3000], 1500u);
  EXPECT_EQ(first[2999], 2999u);
}
