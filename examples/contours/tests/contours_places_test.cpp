#include "ends.h"
#include "meetings.h"
#include "nearest.h"
#include "point_grid.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

using namespace contours;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

/// Points on a coarse lattice with small errors: many equal, many near, many just too far.
std::vector<Point> random_points(std::mt19937& random, std::size_t count)
{
  std::uniform_int_distribution<int> lattice(-3, 3);
  std::uniform_int_distribution<int> error(-4, 4);
  std::vector<Point> points;
  for (std::size_t i = 0; i < count; ++i)
    points.push_back({lattice(random) + 0.25 * error(random), lattice(random) + 0.25 * error(random)});
  return points;
}

std::vector<Edge> edges_of(std::vector<Curve> const& curves)
{
  std::vector<Edge> edges;
  for (Curve const& curve : curves)
    edges.push_back({edges.size(), curve, edges.size()});
  return edges;
}

Places places_of_all(std::vector<Edge> const& edges, double tolerance)
{
  Places places(2 * edges.size(), NO_PLACE);
  std::vector<std::size_t> all;
  for (std::size_t i = 0; i < edges.size(); ++i)
    all.push_back(i);
  find_places(edges, all, tolerance, places);
  return places;
}

} // namespace

TEST(PointGrid, FindsWhatLiesInTheCellsAround)
{
  PointGrid grid(1.0);
  grid.add({0.5, 0.5}, 10);
  grid.add({-0.5, 0.5}, 11);
  grid.add({2.5, 0.5}, 12);
  grid.add({1e300, 0}, 13);

  std::vector<std::size_t> found;
  for (auto const* const cell : grid.near({0.1, 0.1}, 1))
    found.insert(found.end(), cell->begin(), cell->end());
  EXPECT_THAT(found, testing::UnorderedElementsAre(10, 11));
  EXPECT_EQ(grid.near({0.1, 0.1}, 2).size(), 3u);
  EXPECT_THAT(grid.near({1e300, 0}, 0).front()->front(), 13u);
}

TEST(PlacesOf, PointsWithinTheToleranceShareAPlace)
{
  EXPECT_THAT(places_of({{0, 0}, {5, 5}, {0, 1}, {0, 2.5}}, 1.0), ElementsAre(0, 1, 0, 3));
  EXPECT_THAT(places_of({{0, 0}, {0, 1}, {0, 2}}, 1.0), ElementsAre(0, 0, 0)) << "over others too";
  EXPECT_THAT(places_of({}, 1.0), IsEmpty());
}

TEST(PlacesOf, AgreesWithLookingAtAllPairs)
{
  std::mt19937 random(4711);
  for (int round = 0; round < 200; ++round)
  {
    std::vector<Point> const points = random_points(random, 60);
    double const tolerance = 0.2 + 0.01 * round;

    std::vector<std::size_t> model(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
      model[i] = i;
    for (bool changed = true; changed;)
    {
      changed = false;
      for (std::size_t i = 0; i < points.size(); ++i)
        for (std::size_t j = 0; j < points.size(); ++j)
          if (distance(points[i], points[j]) <= tolerance && model[j] > model[i])
          {
            model[j] = model[i];
            changed = true;
          }
    }
    ASSERT_EQ(places_of(points, tolerance), model) << "seed 4711, round " << round;
  }
}

TEST(NearestOthers, AgreesWithLookingAtAllPairs)
{
  std::mt19937 random(42);
  for (int round = 0; round < 200; ++round)
  {
    std::vector<Point> const points = random_points(random, 1 + static_cast<std::size_t>(round) % 50);
    std::vector<std::size_t> const nearest = nearest_others(points);
    for (std::size_t i = 0; i < points.size(); ++i)
    {
      std::size_t best = i;
      for (std::size_t j = 0; j < points.size(); ++j)
        if (j != i && (best == i || distance(points[i], points[j]) < distance(points[i], points[best])))
          best = j;
      if (best != i && distance(points[i], points[best]) == 0.0)
        ASSERT_EQ(distance(points[i], points[nearest[i]]), 0.0) << "seed 42, round " << round;
      else
        ASSERT_EQ(nearest[i], best) << "seed 42, round " << round;
      ASSERT_TRUE(nearest[i] != i || points.size() == 1);
    }
  }
}

TEST(Rings, AreArcsThatComeBack)
{
  EXPECT_TRUE(is_ring(Curve::circle({0, 0}, 5)));
  EXPECT_TRUE(is_ring(Curve::arc({0, 0}, 5, 0, 359.995))) << "0.0004 open";
  EXPECT_FALSE(is_ring(Curve::arc({0, 0}, 5, 0, 359.9))) << "0.009 open";
  EXPECT_FALSE(is_ring(Curve::arc({0, 0}, 5, 0, 0.005))) << "short, not round";
  EXPECT_FALSE(is_ring(Curve::line({0, 0}, {0.0005, 0})));
}

TEST(IsClosed, AShortRunHasNotComeBack)
{
  EXPECT_TRUE(is_closed(0.0, 40.0, 0.01));
  EXPECT_TRUE(is_closed(0.01, 40.0, 0.01));
  EXPECT_FALSE(is_closed(0.011, 40.0, 0.01));
  EXPECT_FALSE(is_closed(0.005, 0.005, 0.01)) << "a straight line shorter than the tolerance";
  EXPECT_TRUE(is_closed(0.005, 0.01, 0.01));
}

TEST(Clusters, HoldEdgesThatTouch)
{
  std::vector<Edge> edges =
      edges_of({Curve::line({0, 0}, {1, 0}), Curve::line({9, 9}, {8, 8}), Curve::line({2, 0}, {1, 0}),
                Curve::circle({1, 0}, 1), Curve::line({1, 0}, {0, 0})});
  edges[4].original = 0;
  Places places(10, NO_PLACE);
  find_places(edges, {0, 1, 2, 3}, 0.01, places);

  EXPECT_THAT(find_clusters(edges, places), ElementsAre(ElementsAre(0, 2), ElementsAre(1), ElementsAre(3)))
      << "a circle touches nothing, a double is not there";
}

TEST(Clusters, LayersDoNotMeet)
{
  std::vector<Edge> const edges = edges_of({Curve::line({0, 0}, {1, 0}), Curve::line({1, 0}, {2, 0})});
  Places places(4, NO_PLACE);
  find_places(edges, {0}, 0.01, places);
  find_places(edges, {1}, 0.01, places);

  EXPECT_EQ(find_clusters(edges, places).size(), 2u);
}

TEST(Branches, AreWhereMoreThanTwoEndsMeet)
{
  std::vector<Edge> const edges =
      edges_of({Curve::line({0, 0}, {1, 0}), Curve::line({1, 0}, {2, 0}), Curve::line({1, 5}, {1.004, 0})});
  std::vector<std::size_t> const partners = {NO_PLACE, start_of(1), end_of(0), NO_PLACE, NO_PLACE, NO_PLACE};

  std::vector<Branch> const branches = find_branches(edges, places_of_all(edges, 0.01), partners);

  ASSERT_EQ(branches.size(), 1u);
  EXPECT_EQ(branches[0].at.x, 1);
  EXPECT_EQ(branches[0].at.y, 0);
  EXPECT_THAT(branches[0].entities, ElementsAre(0, 1, 2));
  EXPECT_THAT(branches[0].joined, ElementsAre(testing::Pair(0, 1)));
}

TEST(Branches, AnEdgeShorterThanTheToleranceMakesNone)
{
  std::vector<Edge> const edges = edges_of(
      {Curve::line({0, 0}, {1, 0}), Curve::line({1, 0}, {1.005, 0}), Curve::line({1.005, 0}, {2, 0})});

  EXPECT_THAT(find_branches(edges, places_of_all(edges, 0.01), std::vector<std::size_t>(6, NO_PLACE)),
              IsEmpty());
}

TEST(Branches, ALoopCountsWithBothItsEnds)
{
  // Nearly a full circle, and a line that touches where it opens.
  std::vector<Edge> const edges = edges_of({Curve::arc({0, 0}, 5, 0, 359.95), Curve::line({5, 0}, {9, 0})});

  std::vector<Branch> const branches =
      find_branches(edges, places_of_all(edges, 0.01), std::vector<std::size_t>(4, NO_PLACE));
  ASSERT_EQ(branches.size(), 1u);
  EXPECT_THAT(branches[0].entities, ElementsAre(0, 1)) << "each entity once";
}
