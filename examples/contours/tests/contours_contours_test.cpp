#include "contours.h"
#include "drawing_text.h"
#include "dxf_reader.h"
#include "find_contours.h"
#include "history.h"
#include "units.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace contours;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

struct Found
{
  Drawing drawing;
  Outcome outcome;
};

Found find_in(std::string const& entities, LayerChoice const& layers = {}, double tolerance = 0.01,
              std::optional<Strategy> strategy = std::nullopt)
{
  Found found;
  found.drawing = read_drawing(dxf_drawing(entities));
  scale_to_millimetres(found.drawing, 1.0);
  order_entities(found.drawing);
  ContourFinder finder(found.drawing, layers, tolerance, strategy);
  History history(found.drawing, finder.outcome());
  find_contours(finder, history);
  add_sources(finder.outcome(), history);
  found.outcome = finder.outcome();
  return found;
}

/// The sources of a contour, "#1 #2*".
std::string sources(Found const& found, std::size_t contour)
{
  std::string text;
  for (Source const& source : found.outcome.contours[contour].sources)
    text += (text.empty() ? "" : " ") + found.drawing.entities[source.entity].name() +
            (source.reversed ? "*" : "");
  return text;
}

std::string const SQUARE = line_entity("A", 0, 0, 10, 0) + line_entity("A", 10, 10, 10, 0) +
                           line_entity("A", 10, 10, 0, 10) + line_entity("A", 0, 10, 0, 0);

} // namespace

TEST(FindContours, ASquareIsClosed)
{
  Found const found = find_in(SQUARE);

  ASSERT_EQ(found.outcome.contours.size(), 1u);
  Contour const& square = found.outcome.contours[0];
  EXPECT_TRUE(square.closed);
  EXPECT_EQ(square.layer, "A");
  EXPECT_DOUBLE_EQ(square.length_mm, 40);
  EXPECT_DOUBLE_EQ(square.area_mm2, 100);
  EXPECT_DOUBLE_EQ(square.max_gap_mm, 0);
  EXPECT_EQ(sources(found, 0), "#1 #2* #3 #4");
  EXPECT_EQ(found.outcome.entities_used, 4u);
  EXPECT_EQ(found.outcome.edges_used, 4u);
  EXPECT_EQ(found.outcome.closed(), 1u);
}

TEST(FindContours, AClosedContourStartsWithItsLowestEdgeAndRunsItsWay)
{
  // The lowest edge runs against all others.
  Found const found = find_in(line_entity("A", 10, 0, 0, 0) + line_entity("A", 10, 0, 10, 10) +
                              line_entity("A", 10, 10, 0, 10) + line_entity("A", 0, 10, 0, 0));

  Contour const& square = found.outcome.contours[0];
  EXPECT_EQ(square.start.x, 10);
  EXPECT_EQ(square.start.y, 0);
  EXPECT_EQ(square.links[0].edge, 0u);
  EXPECT_FALSE(square.links[0].reversed);
  EXPECT_EQ(sources(found, 0), "#1 #2* #3* #4*");
  EXPECT_DOUBLE_EQ(square.area_mm2, 100) << "the area has no sign";
}

TEST(FindContours, AnOpenContourRunsAsMostOfItsEdges)
{
  Found const found = find_in(line_entity("A", 10, 0, 0, 0) + line_entity("A", 10, 0, 20, 0) +
                              line_entity("A", 20, 0, 30, 0));
  EXPECT_EQ(sources(found, 0), "#1* #2 #3");

  Found const tie = find_in(line_entity("A", 10, 0, 0, 0) + line_entity("A", 10, 0, 20, 0));
  EXPECT_EQ(sources(tie, 0), "#1 #2*") << "where there is no majority, as the lowest";
}

TEST(FindContours, GapsAreMeasuredAndBridged)
{
  // A square of 10 whose right side is 0.006 off at both ends.
  Found const found = find_in(line_entity("A", 0, 0, 10, 0) + line_entity("A", 10.006, 0, 10.006, 10) +
                              line_entity("A", 10, 10, 0, 10) + line_entity("A", 0, 10, 0, 0));

  Contour const& square = found.outcome.contours[0];
  EXPECT_TRUE(square.closed);
  EXPECT_NEAR(square.max_gap_mm, 0.006, 1e-12);
  EXPECT_NEAR(square.area_mm2, 100.06, 1e-9) << "the ways across the gaps are part of the border";
  EXPECT_NEAR(square.length_mm, 40, 1e-9) << "but are not counted as cut";
}

TEST(FindContours, TheClosingGapCounts)
{
  Contour const closed = find_in(line_entity("A", 0, 0, 10, 0) + line_entity("A", 10, 0, 5, 5) +
                                 line_entity("A", 5, 5, 0.008, 0))
                             .outcome.contours[0];
  EXPECT_TRUE(closed.closed);
  EXPECT_NEAR(closed.max_gap_mm, 0.008, 1e-12);
}

TEST(FindContours, ALineShorterThanTheToleranceIsNotClosed)
{
  Found const found = find_in(line_entity("A", 0, 0, 0.005, 0));

  EXPECT_FALSE(found.outcome.contours[0].closed);
  EXPECT_EQ(found.outcome.short_edges.count, 1u);
}

TEST(FindContours, OnlyEdgesShorterThanTheToleranceAreShort)
{
  // 2, 3, 2.5 and 2.2 long.
  Found const found = find_in(line_entity("A", 0, 0, 2, 0) + line_entity("A", 2, 0, 2, 3) +
                                  line_entity("A", 9, 0, 11.5, 0) + line_entity("A", 20, 0, 22.2, 0),
                              {}, 2.5);

  EXPECT_EQ(found.outcome.short_edges.count, 2u);
  EXPECT_EQ(found.outcome.short_edges.shortest, 0u);
}

TEST(FindContours, LayersAreApart)
{
  std::string const drawing = SQUARE + line_entity("B", 0, 0, 10, 0);
  LayerChoice only_b;
  only_b.only = {"B"};

  EXPECT_EQ(find_in(drawing).outcome.contours.size(), 2u);
  EXPECT_TRUE(find_in(drawing).outcome.duplicates.empty()) << "nor are there duplicates across them";
  Found const b = find_in(drawing, only_b);
  EXPECT_EQ(b.outcome.contours.size(), 1u);
  EXPECT_EQ(sources(b, 0), "#5");
}

TEST(FindContours, DuplicatesAreSourcesButNotEdges)
{
  // #5 lies on #2, the other way round; #6 lies on two of the sides as a polyline.
  Found const found = find_in(SQUARE + line_entity("A", 10, 0, 10, 10) +
                              "0 LWPOLYLINE\n8 A\n10 10\n20 10\n10 0\n20 10\n10 0\n20 0\n");

  ASSERT_EQ(found.outcome.contours.size(), 1u);
  EXPECT_TRUE(found.outcome.contours[0].closed);
  EXPECT_EQ(found.outcome.contours[0].links.size(), 4u);
  EXPECT_EQ(sources(found, 0), "#1 #2* #3 #4 #5 #6");
  ASSERT_EQ(found.outcome.duplicates.size(), 3u);
  EXPECT_EQ(found.outcome.duplicates[0].entity, 4u);
  EXPECT_EQ(found.outcome.duplicates[0].of, 1u);
  EXPECT_EQ(found.outcome.duplicates[1].entity, 5u);
  EXPECT_EQ(found.outcome.duplicates[1].of, 2u);
  EXPECT_EQ(found.outcome.duplicates[2].of, 3u);
  EXPECT_EQ(found.outcome.entities_used, 4u);
}

TEST(FindContours, ADoubledCircleIsTakenInEitherDirection)
{
  Found const found =
      find_in("0 CIRCLE\n8 A\n10 0\n20 0\n40 1\n0 CIRCLE\n8 A\n10 0\n20 0\n40 1\n210 0\n220 0\n230 -1\n");

  EXPECT_EQ(sources(found, 0), "#1 #2*");
}

TEST(FindContours, SkippedEntitiesAreCountedByType)
{
  Found const found = find_in(SQUARE + "0 TEXT\n8 A\n0 TEXT\n8 A\n0 SPLINE\n8 A\n0 SPLINE\n8 B\n" +
                              line_entity("A", 1, 1, 1, 1));

  EXPECT_THAT(found.outcome.skipped,
              ElementsAre(testing::Pair("LINE", 1), testing::Pair("SPLINE", 2), testing::Pair("TEXT", 2)));
  EXPECT_EQ(found.outcome.not_supported, 2u);
  LayerChoice only_a;
  only_a.only = {"A"};
  EXPECT_EQ(find_in(SQUARE + "0 SPLINE\n8 B\n", only_a).outcome.not_supported, 0u)
      << "only those of the chosen layers";
}

TEST(FindContours, AnOpenContourKnowsItsGap)
{
  Found const found = find_in(line_entity("A", 0, 0, 10, 0) + line_entity("A", 10, 0, 10, 10) +
                              line_entity("A", 10, 10, 0, 0.5));

  Contour const& contour = found.outcome.contours[0];
  EXPECT_FALSE(contour.closed);
  EXPECT_NEAR(contour.open_gap_mm, 0.5, 1e-12);
  EXPECT_EQ(contour.open_towards, 0u);
  EXPECT_EQ(contour.open_at.x, 0);
  EXPECT_EQ(contour.open_at.y, 0);
}

TEST(FindContours, TheGapOfAnOpenContourIsThatOfItsLonelierEnd)
{
  // Two halves of a ring, 0.1 apart on one side and 0.2 on the other.
  Found const found = find_in("0 LWPOLYLINE\n8 A\n10 0\n20 0\n10 0\n20 9\n10 5\n20 9\n" +
                              line_entity("A", 5.1, 9, 9, 5) + line_entity("A", 9, 5, 0.2, 0));

  ASSERT_EQ(found.outcome.contours.size(), 2u);
  EXPECT_NEAR(found.outcome.contours[0].open_gap_mm, 0.2, 1e-12);
  EXPECT_EQ(found.outcome.contours[0].open_towards, 1u);
  EXPECT_EQ(found.outcome.contours[0].open_at.y, 0);
  EXPECT_EQ(found.outcome.contours[1].open_towards, 0u);
  EXPECT_NEAR(found.outcome.contours[1].open_at.x, 0.2, 1e-12);
}

TEST(FindContours, BranchesNameWhatMeetsAndWhatWasJoined)
{
  Found const found = find_in(SQUARE + line_entity("A", 10, 10, 20, 20));

  ASSERT_EQ(found.outcome.branches.size(), 1u);
  Branch const& branch = found.outcome.branches[0];
  EXPECT_EQ(branch.at.x, 10);
  EXPECT_EQ(branch.at.y, 10);
  EXPECT_THAT(branch.entities, ElementsAre(1, 2, 4));
  EXPECT_EQ(branch.joined.size(), 1u);
}

TEST(FindContours, ASquareInOnePolylineComesFromOneEntity)
{
  Found const found =
      find_in("0 LWPOLYLINE\n8 A\n70 1\n10 0\n20 0\n10 10\n20 0\n10 10\n20 10\n10 0\n20 10\n");

  EXPECT_EQ(sources(found, 0), "#1") << "though four ways lead there";
  EXPECT_EQ(found.outcome.edges_used, 4u);
}

TEST(FindContours, ShufflingTheEntitiesChangesNothing)
{
  // Handles stay with their entities; squares that touch, one open run, doubles.
  std::vector<std::string> entities;
  int handle = 0x20;
  auto const add = [&](double x1, double y1, double x2, double y2)
  {
    std::string text = line_entity("A", x1, y1, x2, y2);
    entities.push_back(text.insert(7, "5 " + std::to_string(handle++) + "\n"));
  };
  for (int i = 0; i < 5; ++i)
  {
    double const at = 10 * i;
    add(at, at, at + 10, at);
    add(at + 10, at + 10, at + 10, at);
    add(at + 10, at + 10, at, at + 10);
    add(at, at + 10, at, at);
  }
  add(0, 0, 10, 0);
  add(10, 0, 10.005, 10);
  add(100, 0, 120, 0);
  auto const described = [&]
  {
    std::string all;
    for (std::string const& entity : entities)
      all += entity;
    Found const found = find_in(all);
    std::string text;
    for (std::size_t i = 0; i < found.outcome.contours.size(); ++i)
    {
      Contour const& contour = found.outcome.contours[i];
      text += std::to_string(contour.start.x) + " " + std::to_string(contour.start.y) + " " +
              std::to_string(contour.closed) + " " + sources(found, i) + "\n";
    }
    return text;
  };
  std::string const expected = described();
  EXPECT_EQ(std::count(expected.begin(), expected.end(), '\n'), 6);

  std::mt19937 random(11);
  for (int round = 0; round < 30; ++round)
  {
    std::shuffle(entities.begin(), entities.end(), random);
    ASSERT_EQ(described(), expected) << "round " << round;
  }
}

TEST(FindContours, NumbersContoursByTheirLowestEdgeWhateverClusterTheyAreOf)
{
  // Two triangles that meet are one cluster of two contours. A circle stands between them in the drawing.
  Found const found =
      find_in(line_entity("A", 0, 0, 5, 5) + line_entity("A", 5, 5, 5, -5) + line_entity("A", 5, -5, 0, 0) +
              "0 CIRCLE\n8 A\n10 50\n20 0\n40 5\n" + line_entity("A", 0, 0, -5, 5) +
              line_entity("A", -5, 5, -5, -5) + line_entity("A", -5, -5, 0, 0));

  ASSERT_EQ(found.outcome.contours.size(), 3u);
  EXPECT_EQ(sources(found, 0), "#1 #2 #3");
  EXPECT_EQ(sources(found, 1), "#4");
  EXPECT_EQ(sources(found, 2), "#5 #6 #7");
}

TEST(FindContours, TheDoublesOfAContourStandInOrder)
{
  // The right side follows the bottom one, and the top comes after it; their doubles are the other way round.
  Found const found = find_in(line_entity("A", 0, 0, 10, 0) + line_entity("A", 10, 10, 0, 10) +
                              line_entity("A", 10, 0, 10, 10) + line_entity("A", 0, 10, 0, 0) +
                              line_entity("A", 0, 10, 10, 10) + line_entity("A", 10, 10, 10, 0));

  ASSERT_EQ(found.outcome.contours.size(), 1u);
  EXPECT_THAT(found.outcome.contours[0].doubles, ElementsAre(4, 5));
}

TEST(History, AnswersInBothDirections)
{
  Found const found = find_in(SQUARE + line_entity("A", 50, 0, 60, 0) + "0 TEXT\n8 A\n");
  History history(found.drawing, found.outcome);
  history.record_new_contours();

  EXPECT_THAT(history.entities_of(0), ElementsAre(0, 1, 2, 3));
  EXPECT_THAT(history.entities_of(1), ElementsAre(4));
  EXPECT_THAT(history.contours_of(2), ElementsAre(0));
  EXPECT_THAT(history.contours_of(4), ElementsAre(1));
  EXPECT_THAT(history.contours_of(5), IsEmpty()) << "text is in no contour";
}

TEST(History, OneEntityMayBeBehindSeveralContours)
{
  // A triangle with a tail, drawn in one go. Where the tail leaves, the triangle closes.
  Found const found =
      find_in("0 LWPOLYLINE\n8 A\n10 0\n20 0\n10 10\n20 0\n10 10\n20 10\n10 0\n20 0\n10 -9\n20 0\n");
  History history(found.drawing, found.outcome);
  history.record_new_contours();

  ASSERT_EQ(found.outcome.contours.size(), 2u);
  EXPECT_THAT(history.contours_of(0), ElementsAre(0, 1));
  EXPECT_THAT(history.entities_of(0), ElementsAre(0));
  EXPECT_THAT(history.entities_of(1), ElementsAre(0));
}

TEST(NamedObject, IsAnObjectWithANameAttribute)
{
  NamedObject const object("2F", 7);
  std::unique_ptr<OzDynObj> const copy(object.clone());

  EXPECT_STREQ(object.classname(), "NamedObject");
  EXPECT_TRUE(object.isA(OzObject::type_id()));
  EXPECT_TRUE(object.name() == "2F");
  ASSERT_NE(NamedObject::cast(copy.get()), nullptr);
  EXPECT_TRUE(NamedObject::cast(copy.get())->name() == "2F");
  EXPECT_EQ(NamedObject::cast(copy.get())->number(), 7u);
  EXPECT_NE(copy->identity(), object.identity());
}
