#include "input_error.h"
#include "units.h"

#include <gtest/gtest.h>

using namespace contours;

namespace
{

Drawing drawing_with(std::vector<Curve> const& curves)
{
  Entity entity;
  entity.number = 1;
  entity.line = 7;
  entity.type = "LWPOLYLINE";
  entity.curves = curves;
  Drawing drawing;
  drawing.entities.push_back(entity);
  return drawing;
}

} // namespace

TEST(Units, UsersNameFour)
{
  EXPECT_EQ(unit_by_name("mm"), 1.0);
  EXPECT_EQ(unit_by_name("cm"), 10.0);
  EXPECT_EQ(unit_by_name("m"), 1000.0);
  EXPECT_EQ(unit_by_name("in"), 25.4);
  EXPECT_EQ(unit_by_name("MM"), std::nullopt);
  EXPECT_EQ(unit_by_name(""), std::nullopt);
}

TEST(Units, DrawingsNumberThem)
{
  struct
  {
    int code;
    double mm;
  } const cases[] = {{0, 1.0},    {1, 25.4},      {2, 304.8},  {3, 1609344.0}, {4, 1.0},    {5, 10.0},
                     {6, 1000.0}, {7, 1000000.0}, {9, 0.0254}, {10, 914.4},    {13, 0.001}, {14, 100.0}};
  for (auto const& c : cases)
    EXPECT_DOUBLE_EQ(unit_by_code(c.code).value_or(0.0), c.mm) << c.code;
  EXPECT_DOUBLE_EQ(unit_by_code(8).value_or(0.0), 0.0000254);
  EXPECT_EQ(unit_by_code(-1), std::nullopt);
  EXPECT_EQ(unit_by_code(17), std::nullopt);
}

TEST(Units, ScalingBringsEverythingToMillimetres)
{
  Drawing drawing = drawing_with({Curve::line({1, 2}, {3, 4}), Curve::circle({1, 0}, 2)});

  scale_to_millimetres(drawing, 25.4);

  std::vector<Curve> const& curves = drawing.entities[0].curves;
  EXPECT_DOUBLE_EQ(curves[0].start.y, 50.8);
  EXPECT_DOUBLE_EQ(curves[0].end.x, 76.2);
  EXPECT_DOUBLE_EQ(curves[1].center.x, 25.4);
  EXPECT_DOUBLE_EQ(curves[1].radius, 50.8);
}

TEST(Units, ScalingDropsWhatHasNoLength)
{
  Drawing some =
      drawing_with({Curve::line({1, 1}, {1, 1}), Curve::line({1, 1}, {2, 1}), Curve::circle({0, 0}, 1e-9)});
  scale_to_millimetres(some, 1.0);
  EXPECT_EQ(some.entities[0].curves.size(), 1u);
  EXPECT_EQ(some.entities[0].use, Use::CUT);

  Drawing all = drawing_with({Curve::line({1, 1}, {1 + 9e-7, 1})});
  scale_to_millimetres(all, 1.0);
  EXPECT_TRUE(all.entities[0].curves.empty());
  EXPECT_EQ(all.entities[0].use, Use::NO_LENGTH);

  Drawing tiny_unit = drawing_with({Curve::line({1, 1}, {1 + 9e-7, 1})});
  scale_to_millimetres(tiny_unit, 1000.0);
  EXPECT_EQ(tiny_unit.entities[0].use, Use::CUT) << "the length in millimetres decides";
}

TEST(Units, ScalingRefusesWhatReachesTooFar)
{
  struct
  {
    char const* what;
    Curve curve;
  } const cases[] = {{"x", Curve::line({0, 0}, {1.1e9, 0})},
                     {"y", Curve::line({0, -1.1e9}, {0, 0})},
                     {"infinite", Curve::line({0, 0}, {1e308 * 10, 0})},
                     {"radius", Curve::bulged({0, 0}, {100, 0}, 2e-9)},
                     {"centre", Curve::bulged({0, 0}, {1, 0}, 1e300)}};
  for (auto const& c : cases)
  {
    Drawing drawing = drawing_with({c.curve});
    try
    {
      scale_to_millimetres(drawing, 1.0);
      ADD_FAILURE() << c.what;
    }
    catch (InputError const& error)
    {
      EXPECT_EQ(error.line(), 7u);
      EXPECT_STREQ(error.what(),
                   "LWPOLYLINE #1: it reaches farther out than 1000 km, the most that can be handled");
    }
  }
}
