#include "chains.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace contours;

namespace
{

Chain chain(std::size_t edge, Point start, Point end)
{
  return {start, end, false, {{edge, false}}};
}

/// A ring of chains in random order and directions.
std::vector<Chain> scattered_ring(std::size_t count, unsigned seed)
{
  std::mt19937 random(seed);
  auto const corner = [count](std::size_t i)
  {
    double const angle = 2.0 * 3.14159265358979 * static_cast<double>(i % count) / static_cast<double>(count);
    return Point{100.0 * std::cos(angle), 100.0 * std::sin(angle)};
  };
  std::vector<Chain> chains;
  for (std::size_t i = 0; i < count; ++i)
    chains.push_back(random() % 2 == 0 ? chain(i, corner(i), corner(i + 1))
                                       : chain(i, corner(i + 1), corner(i)));
  std::shuffle(chains.begin(), chains.end(), random);
  return chains;
}

/// Whether `joined` has all edges of a ring, one after the other.
void expect_ring(std::vector<Chain> const& joined, std::size_t count)
{
  ASSERT_EQ(joined.size(), 1u);
  ASSERT_EQ(joined[0].links.size(), count);
  for (std::size_t i = 0; i + 1 < count; ++i)
  {
    std::size_t const step = (joined[0].links[i + 1].edge + count - joined[0].links[i].edge) % count;
    ASSERT_TRUE(step == 1 || step == count - 1) << i;
  }
  EXPECT_LT(distance(joined[0].start, joined[0].end), 1e-9);
}

std::vector<std::size_t> sizes(std::vector<Chain> const& chains)
{
  std::vector<std::size_t> result;
  for (Chain const& chain : chains)
    result.push_back(chain.links.size());
  std::sort(result.begin(), result.end());
  return result;
}

} // namespace

TEST(Chains, EveryStrategyJoinsARing)
{
  for (int const strategy : {0, 1, 2, 3})
    expect_ring(join_chains(scattered_ring(60, 7), 0.001, static_cast<Strategy>(strategy)), 60);
}

TEST(Chains, LargeClustersAreJoinedByGrowthAndInPieces)
{
  expect_ring(join_chains(scattered_ring(MOST_CLOSEST_FIRST + 100, 1), 0.001, std::nullopt),
              MOST_CLOSEST_FIRST + 100);
  expect_ring(join_chains(scattered_ring(MOST_IN_ONE_SORTER + 1000, 2), 0.001, std::nullopt),
              MOST_IN_ONE_SORTER + 1000);
}

TEST(Chains, PiecesLeaveNothingThatCouldBeJoined)
{
  // A lattice: every crossing has four ends, and is larger than one sorter takes.
  std::vector<Chain> chains;
  for (int x = 0; x < 40; ++x)
    for (int y = 0; y < 40; ++y)
    {
      double const px = x;
      double const py = y;
      chains.push_back(chain(chains.size(), {px, py}, {px + 1, py}));
      chains.push_back(chain(chains.size(), {px, py}, {px, py + 1}));
    }
  ASSERT_GT(chains.size(), MOST_IN_ONE_SORTER);

  std::vector<Chain> const joined = join_chains(chains, 0.001, std::nullopt);

  std::size_t edges = 0;
  for (std::size_t i = 0; i < joined.size(); ++i)
  {
    edges += joined[i].links.size();
    for (std::size_t j = 0; j < i; ++j)
      for (Point const a : {joined[i].start, joined[i].end})
        for (Point const b : {joined[j].start, joined[j].end})
        {
          bool const rings = distance(joined[i].start, joined[i].end) < 0.5 ||
                             distance(joined[j].start, joined[j].end) < 0.5;
          EXPECT_TRUE(rings || distance(a, b) > 0.5);
        }
  }
  EXPECT_EQ(edges, chains.size());
}

TEST(Chains, ReversedPartsSayWhichWayTheyRun)
{
  std::vector<Chain> const joined = join_chains(
      {chain(0, {0, 0}, {1, 0}), chain(1, {2, 0}, {1, 0}), chain(2, {2, 0}, {3, 0})}, 0.01, std::nullopt);

  ASSERT_EQ(joined.size(), 1u);
  for (Link const link : joined[0].links)
    EXPECT_EQ(link.reversed, link.edge == 1);
  EXPECT_EQ(joined[0].start.x, 0);
  EXPECT_EQ(joined[0].end.x, 3);
}

TEST(Chains, EndsFartherApartThanTheToleranceStayApart)
{
  std::vector<Chain> const chains = {chain(0, {0, 0}, {1, 0}), chain(1, {1.5, 0}, {2, 0})};

  EXPECT_EQ(join_chains(chains, 0.5, std::nullopt).size(), 1u) << "the tolerance itself joins";
  EXPECT_EQ(join_chains(chains, 0.499, std::nullopt).size(), 2u);
}

TEST(Chains, ARingJoinsNothingAndAStraightStumpDoes)
{
  Chain const ring = {{1, 0}, {1, 0}, true, {{0, false}}};
  EXPECT_EQ(join_chains({ring, chain(1, {1, 0}, {5, 0})}, 0.01, std::nullopt).size(), 2u);

  // Shorter than the bound below which the sorter would take an edge for a ring.
  std::vector<Chain> const joined =
      join_chains({chain(0, {0, 0}, {1, 0}), chain(1, {1, 0}, {1.0005, 0}), chain(2, {1.0005, 0}, {3, 0})},
                  0.0001, std::nullopt);
  EXPECT_EQ(joined.size(), 1u);
}

TEST(Chains, TheClosestEndsJoinWhereSeveralAreNear)
{
  // Ends at 0, 0.006 and 0.008: the last two are closest, and the first is left.
  std::vector<Chain> const joined =
      join_chains({chain(0, {-5, 0}, {0, 0}), chain(1, {0.006, 0}, {5, 5}), chain(2, {0.008, 0}, {5, -5})},
                  0.01, OzEdgeSorter::OzSortClosestFirst);

  ASSERT_EQ(joined.size(), 2u);
  for (Chain const& chain : joined)
    EXPECT_EQ(chain.links.size() == 1, chain.links[0].edge == 0);
}

TEST(Chains, TheOrderOfTheInputDoesNotMatter)
{
  std::vector<Chain> chains;
  for (int i = 0; i < 12; ++i)
    chains.push_back(
        chain(chains.size(), {std::cos(i), std::sin(i)}, {5 * std::cos(i), 5 * std::sin(2 * i)}));
  for (int i = 0; i < 6; ++i) // and six that meet in one point, all equally near
    chains.push_back(chain(chains.size(), {0, 0}, {0.1 * i, 1}));
  auto const joined = [](std::vector<Chain> const& input)
  {
    std::vector<std::vector<std::size_t>> edges;
    for (Chain const& chain : join_chains(input, 0.3, std::nullopt))
    {
      edges.emplace_back();
      for (Link const link : chain.links)
        edges.back().push_back(link.edge);
      if (edges.back().front() > edges.back().back())
        std::reverse(edges.back().begin(), edges.back().end());
    }
    std::sort(edges.begin(), edges.end());
    return edges;
  };
  auto const expected = joined(chains);

  std::mt19937 random(3);
  for (int round = 0; round < 20; ++round)
  {
    std::shuffle(chains.begin(), chains.end(), random);
    ASSERT_EQ(joined(chains), expected) << "round " << round;
  }
}

TEST(Chains, SequentialLeavesBranchesAlone)
{
  std::vector<Chain> const star = {chain(0, {0, 0}, {1, 0}), chain(1, {0, 0}, {0, 1}),
                                   chain(2, {0, 0}, {-1, 0}), chain(3, {0, 0}, {0, -1})};
  EXPECT_THAT(sizes(join_chains(star, 0.01, OzEdgeSorter::OzSortClosestFirst)), testing::ElementsAre(2, 2));
  EXPECT_THAT(sizes(join_chains(star, 0.01, OzEdgeSorter::OzSortSequential)), testing::ElementsAre(1, 1, 2));
}
