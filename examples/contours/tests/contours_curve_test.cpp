#include "curve.h"
#include "plane.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace contours;

namespace
{

constexpr double PI = 3.14159265358979323846;
constexpr double NEAR = 1e-12;

#define EXPECT_POINT(point, px, py)                                                                          \
  do                                                                                                         \
  {                                                                                                          \
    Point const actual_point = (point);                                                                      \
    EXPECT_NEAR(actual_point.x, px, NEAR);                                                                   \
    EXPECT_NEAR(actual_point.y, py, NEAR);                                                                   \
  } while (false)

} // namespace

TEST(Curve, ALineHasItsEndsItsLengthAndItsMiddle)
{
  Curve const line = Curve::line({1, 2}, {4, 6});

  EXPECT_FALSE(line.is_arc());
  EXPECT_DOUBLE_EQ(line.length(), 5.0);
  EXPECT_POINT(line.middle(), 2.5, 4.0);
  EXPECT_POINT(line.reversed().start, 4, 6);
  EXPECT_POINT(line.reversed().end, 1, 2);
}

TEST(Curve, AnArcRunsAgainstTheClockFromItsFirstAngle)
{
  Curve const arc = Curve::arc({10, 0}, 2, 0, 90);

  EXPECT_POINT(arc.start, 12, 0);
  EXPECT_POINT(arc.end, 10, 2);
  EXPECT_POINT(arc.middle(), 10 + std::sqrt(2.0), std::sqrt(2.0));
  EXPECT_NEAR(arc.length(), PI, NEAR);
}

TEST(Curve, AnArcMayPassZeroDegrees)
{
  Curve const arc = Curve::arc({0, 0}, 1, 270, 90);

  EXPECT_POINT(arc.start, 0, -1);
  EXPECT_POINT(arc.middle(), 1, 0);
  EXPECT_NEAR(arc.sweep, PI, NEAR);
  EXPECT_NEAR(Curve::arc({0, 0}, 1, -90, 450).sweep, PI, NEAR) << "angles need not be between 0 and 360";
}

TEST(Curve, AnArcBetweenEqualAnglesIsAFullCircle)
{
  Curve const circle = Curve::arc({0, 0}, 3, 30, 390);

  EXPECT_NEAR(circle.length(), 6 * PI, NEAR);
  EXPECT_EQ(circle.start.x, circle.end.x);
  EXPECT_EQ(circle.start.y, circle.end.y);
  EXPECT_NEAR(circle.area({7, 7}), 9 * PI, 1e-10);
}

TEST(Curve, ABulgeOfOneIsHalfACircleToTheRightOfItsChord)
{
  // From (0, 0) up to (0, 2), turning left: the belly is on the right.
  Curve const arc = Curve::bulged({0, 0}, {0, 2}, 1.0);

  EXPECT_POINT(arc.center, 0, 1);
  EXPECT_NEAR(arc.radius, 1, NEAR);
  EXPECT_NEAR(arc.sweep, PI, NEAR);
  EXPECT_POINT(arc.middle(), 1, 1);
}

TEST(Curve, ANegativeBulgeTurnsRight)
{
  Curve const arc = Curve::bulged({0, 0}, {0, 2}, -1.0);

  EXPECT_NEAR(arc.sweep, -PI, NEAR);
  EXPECT_POINT(arc.middle(), -1, 1);
}

TEST(Curve, ASmallBulgeHasItsCentreOnTheOtherSideThanALargeOne)
{
  // A quarter circle of radius 1 about (0, 0), and the three quarters that complete it.
  Curve const quarter = Curve::bulged({1, 0}, {0, 1}, std::tan(PI / 8));
  Curve const rest = Curve::bulged({0, 1}, {1, 0}, std::tan(3 * PI / 8));

  EXPECT_POINT(quarter.center, 0, 0);
  EXPECT_POINT(rest.center, 0, 0);
  EXPECT_NEAR(quarter.length() + rest.length(), 2 * PI, NEAR);
  EXPECT_NEAR(quarter.area({0, 0}) + rest.area({0, 0}), PI, NEAR);
}

TEST(Curve, ABulgeThatCannotBeSeenIsALine)
{
  EXPECT_FALSE(Curve::bulged({0, 0}, {10, 0}, 0.0).is_arc());
  EXPECT_FALSE(Curve::bulged({0, 0}, {10, 0}, 1e-12).is_arc());
  EXPECT_FALSE(Curve::bulged({5, 5}, {5, 5}, 1.0).is_arc()) << "no chord";
}

TEST(Curve, AreaOfARunOfCurvesIsIndependentOfTheOrigin)
{
  // A square of side 2 whose right side is a half circle outwards: 4 + PI / 2.
  Curve const sides[] = {Curve::line({0, 0}, {2, 0}), Curve::bulged({2, 0}, {2, 2}, 1.0),
                         Curve::line({2, 2}, {0, 2}), Curve::line({0, 2}, {0, 0})};
  for (Point const origin : {Point{0, 0}, Point{1, 1}, Point{-100, 50}})
  {
    double area = 0.0;
    double reversed = 0.0;
    for (Curve const& side : sides)
    {
      area += side.area(origin);
      reversed += side.reversed().area(origin);
    }
    EXPECT_NEAR(area, 4 + PI / 2, 1e-10);
    EXPECT_NEAR(reversed, -(4 + PI / 2), 1e-10);
  }
}

TEST(Plane, TheUprightDirectionChangesNothing)
{
  Plane const plane(Direction{0, 0, 5});

  EXPECT_TRUE(plane.is_level());
  EXPECT_POINT(plane.to_drawing(Point{3, 4}), 3, 4);
}

TEST(Plane, SeenFromBehindTheXAxisIsTurned)
{
  Plane const plane(Direction{0, 0, -1});
  Curve const arc = plane.to_drawing(Curve::arc({10, 0}, 2, 0, 90));

  EXPECT_TRUE(plane.is_level());
  EXPECT_POINT(arc.center, -10, 0);
  EXPECT_POINT(arc.start, -12, 0);
  EXPECT_POINT(arc.end, -10, 2);
  EXPECT_NEAR(arc.sweep, -PI / 2, NEAR);
  EXPECT_POINT(arc.middle(), -10 - std::sqrt(2.0), std::sqrt(2.0));
}

TEST(Plane, ATiltedPlaneFollowsTheRuleOfTheAxes)
{
  // Towards x: the own x axis is the y axis of the drawing, the own y axis its z axis.
  Plane const side(Direction{1, 0, 0});
  EXPECT_FALSE(side.is_level());
  EXPECT_POINT(side.to_drawing(Point{3, 4}), 0, 3);

  // Less than 1/64 off the z axis the y axis of the drawing decides, beyond that the z axis.
  EXPECT_POINT(Plane(Direction{0.01, 0, 1}).to_drawing(Point{0, 1}), 0, 1);
  EXPECT_POINT(Plane(Direction{0.02, 0, 1}).to_drawing(Point{1, 0}), 0, 1);
  EXPECT_FALSE(Plane(Direction{0.01, 0, 1}).is_level());
}

TEST(Plane, ADirectionOfHugeNumbersIsADirection)
{
  EXPECT_TRUE(Plane(Direction{0, 0, -1e308}).is_level());
  EXPECT_FALSE(Plane(Direction{1e308, 1e308, 1e308}).is_level());
}

TEST(Plane, ADirectionWithoutLengthIsNotValid)
{
  EXPECT_FALSE(Plane(Direction{0, 0, 0}).is_valid());
  EXPECT_TRUE(Plane(Direction{0, 0, 1e-300}).is_valid());
}
