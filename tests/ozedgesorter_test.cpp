#include "ozedgesorter.h"

#include "memory_refusal.h"
#include "ozjournal.h"
#include "report_recorder.h"
#include "vtable_slot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
using ::testing::ElementsAre;
using Strategy = OzEdgeSorter::OzSortStrategy;
using Call = std::tuple<std::uint64_t, std::uint64_t, bool, bool>;

constexpr Strategy ALL_STRATEGIES[] = {OzEdgeSorter::OzSortClosestFirst, OzEdgeSorter::OzSortGrowChains,
                                       OzEdgeSorter::OzSortSequential, OzEdgeSorter::OzSortFirstFit};

/// Edges as pairs of places on a line: equal places are 0 apart, and places less than `reach` apart may be
/// joined. Every question is noted.
class LineSorter : public OzEdgeSorter
{
public:
  LineSorter(std::vector<std::pair<double, double>> ends, bool sparse, double reach_of_ends = 0.5)
    : OzEdgeSorter(ends.size(), sparse)
    , edges(std::move(ends))
    , reach(reach_of_ends)
  {
  }

  using OzEdgeSorter::set_redefine_start_of_closed_chains;

  double edge_gap(std::uint64_t a, std::uint64_t b, bool start_a, bool start_b) const override
  {
    calls.emplace_back(a, b, start_a, start_b);
    double const from = start_a ? edges[a].first : edges[a].second;
    double const to = start_b ? edges[b].first : edges[b].second;
    double const distance = std::fabs(from - to);
    return distance < reach ? distance : -1.0;
  }

  std::vector<std::pair<double, double>> edges;
  double reach;
  mutable std::vector<Call> calls;
};

/// Gaps are told pair by pair of end points, all others being -1. The gaps of an edge with itself too.
class TableSorter : public OzEdgeSorter
{
public:
  TableSorter(std::uint64_t n_edges, bool sparse)
    : OzEdgeSorter(n_edges, sparse)
  {
  }

  using OzEdgeSorter::set_redefine_start_of_closed_chains;

  TableSorter& gap(std::uint64_t a, std::uint64_t b, double g)
  {
    table[{a, b}] = g;
    table[{b, a}] = g;
    return *this;
  }

  double edge_gap(std::uint64_t a, std::uint64_t b, bool start_a, bool start_b) const override
  {
    auto const found = table.find({2 * a + (start_a ? 0 : 1), 2 * b + (start_b ? 0 : 1)});
    return found == table.end() ? -1.0 : found->second;
  }

  std::map<std::pair<std::uint64_t, std::uint64_t>, double> table;
};

/// The gap that joins the end of `a` to the start of `b`.
void follow(TableSorter& sorter, std::uint64_t a, std::uint64_t b, double g)
{
  sorter.gap(2 * a + 1, 2 * b, g);
}

/// The chains in words: edges in order, a reversed one with a minus in front.
std::vector<std::string> chains_of(OzEdgeSorter const& sorter)
{
  std::vector<std::string> chains;
  for (std::uint64_t i = 0; i < sorter.n_chain(); ++i)
  {
    std::string text;
    for (std::uint64_t k = 0; k < sorter.n_link(i); ++k)
    {
      text += k == 0 ? "" : " ";
      text += (sorter.reversed(i, k) ? "-" : "") + std::to_string(sorter.edge_index(i, k));
    }
    chains.push_back(text);
  }
  return chains;
}

template <class Sorter>
std::vector<std::string> sorted(Sorter&& sorter, Strategy strategy, bool keep_order = false)
{
  sorter.sort(strategy, keep_order);
  return chains_of(sorter);
}

// Sequences of dense and sparse, since every behaviour is that of both forms unless a name says otherwise.
constexpr bool BOTH_FORMS[] = {false, true};

TEST(OzEdgeSorter, HasNoChainsBeforeTheFirstSort)
{
  for (bool const sparse : BOTH_FORMS)
  {
    LineSorter const sorter({{0, 1}}, sparse);

    EXPECT_EQ(sorter.n_chain(), 0u);
    EXPECT_FALSE(sorter.reversed(0));
    EXPECT_TRUE(sorter.calls.empty());
  }
}

TEST(OzEdgeSorter, SortsNoEdgesIntoNoChains)
{
  for (bool const sparse : BOTH_FORMS)
  {
    for (Strategy const strategy : ALL_STRATEGIES)
      EXPECT_THAT(sorted(LineSorter({}, sparse), strategy), ElementsAre());
  }
}

TEST(OzEdgeSorter, SortsOneEdgeIntoOneChain)
{
  for (bool const sparse : BOTH_FORMS)
  {
    for (Strategy const strategy : ALL_STRATEGIES)
    {
      LineSorter sorter({{0, 1}}, sparse);

      EXPECT_THAT(sorted(sorter, strategy), ElementsAre("0"));
      EXPECT_FALSE(sorter.reversed(0));
    }
  }
}

TEST(OzEdgeSorter, JoinsEdgesInOrderIntoOneChainUnderEveryStrategy)
{
  for (bool const sparse : BOTH_FORMS)
  {
    for (Strategy const strategy : ALL_STRATEGIES)
    {
      for (bool const keep_order : {false, true})
        EXPECT_THAT(sorted(LineSorter({{0, 1}, {1, 2}, {2, 3}, {3, 4}}, sparse), strategy, keep_order),
                    ElementsAre("0 1 2 3"));
    }
  }
}

static_assert(!std::is_copy_constructible_v<OzEdgeSorter> && !std::is_copy_assignable_v<OzEdgeSorter>);
static_assert(std::is_abstract_v<OzEdgeSorter>);
static_assert(OzEdgeSorter::OzSortClosestFirst == 0 && OzEdgeSorter::OzSortGrowChains == 1 &&
              OzEdgeSorter::OzSortSequential == 2 && OzEdgeSorter::OzSortFirstFit == 3);

TEST(OzEdgeSorter, HasTheGapInFrontOfItsDestructor)
{
  EXPECT_EQ(vtable_slot(&TableSorter::edge_gap), 0);
  EXPECT_EQ(vtable_slot(&OzEdgeSorter::debug), 3);
}

TEST(OzEdgeSorter, RefusesMoreEdgesThanEndPointsCanBeNumbered)
{
  for (std::uint64_t const n_edges :
       {(std::uint64_t(1) << 30) + 1, std::uint64_t(1) << 63, ~std::uint64_t(0)})
  {
    EXPECT_THROW(TableSorter(n_edges, true), std::bad_alloc) << n_edges;
    EXPECT_THROW(TableSorter(n_edges, false), std::bad_alloc) << n_edges;
  }
  EXPECT_THROW(TableSorter(std::uint64_t(1) << 30, false), std::bad_alloc) << "the table is too large";
}

TEST(OzEdgeSorter, AsksForOwnEndsFirstThenForAllPairsOfEndsInNestedOrder)
{
  std::vector<Call> const one_sort{
      {0, 0, true, false}, {1, 1, true, false}, {2, 2, true, false},  {1, 0, true, true},
      {1, 0, true, false}, {1, 0, false, true}, {1, 0, false, false}, {2, 0, true, true},
      {2, 0, true, false}, {2, 0, false, true}, {2, 0, false, false}, {2, 1, true, true},
      {2, 1, true, false}, {2, 1, false, true}, {2, 1, false, false},
  };
  for (bool const sparse : BOTH_FORMS)
  {
    for (Strategy const strategy : ALL_STRATEGIES)
    {
      LineSorter sorter({{0, 1}, {1, 2}, {2, 3}}, sparse);

      sorter.sort(strategy, false);
      EXPECT_EQ(sorter.calls, one_sort);

      sorter.calls.clear();
      sorter.sort(strategy, false);
      EXPECT_EQ(sorter.calls, one_sort);
    }
  }
}

TEST(OzEdgeSorter, AsksNothingMoreAboutAnEdgeClosedInItself)
{
  for (bool const sparse : BOTH_FORMS)
  {
    LineSorter sorter({{0, 1}, {1, 1}, {1, 2}}, sparse);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortSequential), ElementsAre("0 2", "1"));

    EXPECT_EQ(sorter.calls, (std::vector<Call>{{0, 0, true, false},
                                               {1, 1, true, false},
                                               {2, 2, true, false},
                                               {2, 0, true, true},
                                               {2, 0, true, false},
                                               {2, 0, false, true},
                                               {2, 0, false, false}}));
  }
}

TEST(OzEdgeSorter, AsksEachCallOnceInALargerSet)
{
  LineSorter sorter({{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 5}, {5, 6}, {6, 7}, {7, 8}, {8, 9}, {9, 10}}, true);

  sorter.sort(OzEdgeSorter::OzSortGrowChains, false);

  EXPECT_EQ(sorter.calls.size(), 10u + 4u * 45u);
}

TEST(OzEdgeSorter, TakesAnEdgeForClosedUpToAFixedBound)
{
  struct
  {
    double own_gap;
    bool closed;
  } const cases[] = {
      {0.0, true},    {0.0005, true}, {0.001, true},    {0.0010000001, false},
      {0.002, false}, {-1.0, false},  {-0.0005, false}, {std::nan(""), false},
  };
  for (bool const sparse : BOTH_FORMS)
  {
    for (auto const& c : cases)
    {
      TableSorter sorter(2, sparse);
      sorter.gap(0, 1, c.own_gap);
      follow(sorter, 0, 1, 0.0);

      for (Strategy const strategy : ALL_STRATEGIES)
        EXPECT_EQ(sorted(sorter, strategy).size(), c.closed ? 2u : 1u) << c.own_gap;
    }
  }
}

TEST(OzEdgeSorter, KeepsTheDirectionOfTheJoiningWhereAsManyEdgesAreReversed)
{
  std::vector<std::pair<double, double>> const end_to_end{{0, 1}, {2, 1}};
  for (bool const sparse : BOTH_FORMS)
  {
    EXPECT_THAT(sorted(LineSorter(end_to_end, sparse), OzEdgeSorter::OzSortClosestFirst),
                ElementsAre("1 -0"));
    EXPECT_THAT(sorted(LineSorter(end_to_end, sparse), OzEdgeSorter::OzSortGrowChains), ElementsAre("1 -0"));
    EXPECT_THAT(sorted(LineSorter(end_to_end, sparse), OzEdgeSorter::OzSortSequential), ElementsAre("0 -1"));
    EXPECT_THAT(sorted(LineSorter(end_to_end, sparse), OzEdgeSorter::OzSortFirstFit, false),
                ElementsAre("1 -0"));
    EXPECT_THAT(sorted(LineSorter(end_to_end, sparse), OzEdgeSorter::OzSortFirstFit, true),
                ElementsAre("0 -1"));

    EXPECT_THAT(sorted(LineSorter({{0, 1}, {2, 1}, {2, 3}, {4, 3}}, sparse), OzEdgeSorter::OzSortSequential),
                ElementsAre("0 -1 2 -3"));
  }
}

TEST(OzEdgeSorter, TurnsAChainThatRunsAgainstMostOfItsEdges)
{
  for (bool const sparse : BOTH_FORMS)
  {
    for (Strategy const strategy : ALL_STRATEGIES)
    {
      for (bool const keep_order : {false, true})
        EXPECT_THAT(sorted(LineSorter({{0, 1}, {2, 1}, {3, 2}}, sparse), strategy, keep_order),
                    ElementsAre("2 1 -0"));
    }
    EXPECT_THAT(
        sorted(LineSorter({{0, 1}, {2, 1}, {3, 2}, {4, 3}, {4, 5}}, sparse), OzEdgeSorter::OzSortSequential),
        ElementsAre("-4 3 2 1 -0"));
  }
}

TEST(OzEdgeSorter, ClosestFirstJoinsTheClosestTwoOfThreeEndsAndLeavesTheThird)
{
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(3, sparse);
    sorter.gap(1, 2, 0.3).gap(1, 4, 0.1).gap(2, 4, 0.2);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("1", "0 2"));
  }
}

TEST(OzEdgeSorter, ClosestFirstTakesTheLaterPairOfEqualGaps)
{
  for (bool const sparse : BOTH_FORMS)
  {
    EXPECT_THAT(sorted(LineSorter({{0, 1}, {1, 2}, {1, 3}}, sparse), OzEdgeSorter::OzSortClosestFirst),
                ElementsAre("0", "-2 1"))
        << "the later chains";
    EXPECT_THAT(sorted(LineSorter({{0, 1}, {1, 0}}, sparse), OzEdgeSorter::OzSortClosestFirst),
                ElementsAre("1 0"))
        << "the later ends of two chains";
  }
}

TEST(OzEdgeSorter, ClosestFirstJudgesEqualGapsByTheChainsThatAreThereByThen)
{
  // The end of 0 is as near to 1 and to 2, after 0 has become part of the last chain: the later of the two
  // wins.
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(4, sparse);
    sorter.gap(0, 7, 0.1).gap(1, 2, 0.5).gap(1, 4, 0.5);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("1", "3 0 2"));
  }
}

TEST(OzEdgeSorter, AnUnknownStrategyIsClosestFirst)
{
  for (bool const sparse : BOTH_FORMS)
  {
    for (int const value : {9, 4, -1})
    {
      TableSorter sorter(3, sparse);
      sorter.gap(1, 2, 0.3).gap(1, 4, 0.1).gap(2, 4, 0.2);
      EXPECT_THAT(sorted(sorter, static_cast<Strategy>(value), true), ElementsAre("1", "0 2")) << value;

      LineSorter ring({{2, 3}, {0, 1}, {1, 2}, {3, 0}}, sparse);
      ring.set_redefine_start_of_closed_chains();
      EXPECT_THAT(sorted(ring, static_cast<Strategy>(value)), ElementsAre("0 3 1 2")) << value;
    }
  }
}

TEST(OzEdgeSorter, GrowChainsGoesOnWithItsChainThoughOthersAreCloser)
{
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(4, sparse);
    sorter.gap(1, 2, 0.1).gap(3, 4, 0.4).gap(4, 6, 0.3);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortGrowChains), ElementsAre("0 1 2", "3"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("0 1", "-3 2"));
  }
}

TEST(OzEdgeSorter, GrowChainsGrowsAtBothEnds)
{
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(4, sparse);
    follow(sorter, 0, 1, 0.1);
    follow(sorter, 1, 2, 0.3);
    follow(sorter, 3, 0, 0.2);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortGrowChains), ElementsAre("3 0 1 2"));
  }
}

TEST(OzEdgeSorter, GrowChainsTakesTheLaterChainOfEqualGapsAndKeepsItsPlace)
{
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(4, sparse);
    sorter.gap(1, 2, 0.1).gap(3, 4, 0.4).gap(3, 6, 0.4);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortGrowChains), ElementsAre("0 1 3", "2"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("2", "0 1 3"));
  }
}

TEST(OzEdgeSorter, GrowChainsStartsAnotherChainWhenOneIsDone)
{
  for (bool const sparse : BOTH_FORMS)
  {
    EXPECT_THAT(
        sorted(LineSorter({{0, 1}, {10, 11}, {1, 2}, {11, 12}}, sparse), OzEdgeSorter::OzSortGrowChains),
        ElementsAre("0 2", "1 3"));
  }
}

TEST(OzEdgeSorter, SequentialAddsAtTheEndAndThenAtTheStart)
{
  for (bool const sparse : BOTH_FORMS)
  {
    EXPECT_THAT(sorted(LineSorter({{1, 2}, {0, 1}}, sparse), OzEdgeSorter::OzSortSequential),
                ElementsAre("1 0"));
    EXPECT_THAT(sorted(LineSorter({{1, 2}, {1, 0}}, sparse), OzEdgeSorter::OzSortSequential),
                ElementsAre("-1 0"));
    EXPECT_THAT(sorted(LineSorter({{1, 2}, {5, 6}, {0, 1}, {2, 3}}, sparse), OzEdgeSorter::OzSortSequential),
                ElementsAre("2 0 3", "1"))
        << "the chain keeps its place";
  }
}

TEST(OzEdgeSorter, SequentialClosesBranchingEndsOneAfterTheOther)
{
  for (bool const sparse : BOTH_FORMS)
  {
    EXPECT_THAT(sorted(LineSorter({{0, 1}, {1, 2}, {1, 3}}, sparse), OzEdgeSorter::OzSortSequential),
                ElementsAre("0", "-2 1"))
        << "the first of three is closed, and the others then have one candidate each";
    EXPECT_THAT(sorted(LineSorter({{0, 1}, {1, 2}, {1, 3}, {4, 1}}, sparse), OzEdgeSorter::OzSortSequential),
                ElementsAre("0", "1", "3 2"))
        << "of four the first two are closed";
    EXPECT_THAT(sorted(LineSorter({{0, 1}, {1, 2}, {1, 3}, {2, 4}}, sparse), OzEdgeSorter::OzSortSequential),
                ElementsAre("0", "-2 1 3"))
        << "ends elsewhere are not touched";
  }
}

TEST(OzEdgeSorter, SequentialJoinsOneCandidateHoweverFarItIs)
{
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(3, sparse);
    follow(sorter, 0, 1, 1e19);
    follow(sorter, 1, 2, 0.0);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortSequential), ElementsAre("0 1 2"));
  }
}

TEST(OzEdgeSorter, FirstFitJoinsTheFirstPairThoughAnotherIsCloser)
{
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(3, sparse);
    sorter.gap(1, 2, 0.4).gap(1, 4, 0.1);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, false), ElementsAre("0 1", "2"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, true), ElementsAre("0 1", "2"));
  }
}

TEST(OzEdgeSorter, FirstFitTakesTheClosestEndsOfThePair)
{
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(2, sparse);
    sorter.gap(1, 2, 0.4).gap(0, 3, 0.2);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, false), ElementsAre("1 0"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, true), ElementsAre("1 0"));
  }
}

TEST(OzEdgeSorter, FirstFitTakesTheLaterEndsOfEqualGapsInEitherOrder)
{
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(2, sparse);
    sorter.gap(1, 2, 0.4).gap(0, 3, 0.4);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, false), ElementsAre("1 0"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, true), ElementsAre("0 1"));
  }
}

TEST(OzEdgeSorter, FirstFitInOrderStopsAtTheFirstPracticallyExactMatch)
{
  struct
  {
    char const* what;
    double first_gap;
    char const* in_order;
  } const cases[] = {
      {"below the bound", 9.9e-13, "1 0"},
      {"at the bound", 1e-12, "0 1"},
  };
  for (bool const sparse : BOTH_FORMS)
  {
    for (auto const& c : cases)
    {
      TableSorter sorter(2, sparse);
      sorter.gap(0, 3, c.first_gap).gap(1, 2, 0.0);

      EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, true), ElementsAre(c.in_order)) << c.what;
      EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, false), ElementsAre("0 1")) << c.what;
    }
  }
}

TEST(OzEdgeSorter, FirstFitInOrderLeavesTheChainOfTheLowestEdgeInFront)
{
  for (bool const sparse : BOTH_FORMS)
  {
    LineSorter sorter({{0, 1}, {10, 11}, {1, 2}}, sparse);
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, true), ElementsAre("0 2", "1"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, false), ElementsAre("1", "0 2"));

    LineSorter rings({{0, 1}, {12, 13}, {2, 3}, {10, 11}, {1, 2}, {13, 10}, {3, 0}, {11, 12}}, sparse);
    EXPECT_THAT(sorted(rings, OzEdgeSorter::OzSortFirstFit, true), ElementsAre("6 0 4 2", "7 1 5 3"));
  }
}

TEST(OzEdgeSorter, KeepOrderMattersToFirstFitOnly)
{
  for (bool const sparse : BOTH_FORMS)
  {
    for (Strategy const strategy :
         {OzEdgeSorter::OzSortClosestFirst, OzEdgeSorter::OzSortGrowChains, OzEdgeSorter::OzSortSequential})
    {
      LineSorter sorter({{0, 1}, {10, 11}, {1, 2}, {2.25, 3}, {3, 0}, {11, 10}}, sparse);

      EXPECT_EQ(sorted(sorter, strategy, true), sorted(sorter, strategy, false));
    }
  }
}

TEST(OzEdgeSorter, AGapOfTheLargestNumberOrMoreJoinsNothing)
{
  double const infinity = std::numeric_limits<double>::infinity();
  for (bool const sparse : BOTH_FORMS)
  {
    for (Strategy const strategy : ALL_STRATEGIES)
    {
      for (bool const keep_order : {false, true})
      {
        for (double const g : {1e20, 1.0000001e20, 1e300, infinity, -infinity, -1e-300, -1.0})
        {
          TableSorter sorter(2, sparse);
          follow(sorter, 0, 1, g);
          EXPECT_THAT(sorted(sorter, strategy, keep_order), ElementsAre("0", "1")) << g;
        }
        for (double const g : {99999999999999983616.0, 1.0, 0.0, -0.0})
        {
          TableSorter sorter(2, sparse);
          follow(sorter, 0, 1, g);
          EXPECT_THAT(sorted(sorter, strategy, keep_order), ElementsAre("0 1")) << g;
        }
      }
    }
  }
}

TEST(OzEdgeSorter, SequentialCountsAGapThatIsTooLargeAsACandidateAllTheSame)
{
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(3, sparse);
    follow(sorter, 0, 1, 0.1);
    follow(sorter, 0, 2, 1e20);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortSequential), ElementsAre("0", "1", "2"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, true), ElementsAre("0 1", "2"));
  }
}

TEST(OzEdgeSorter, AGapThatIsNotANumberJoinsNothing)
{
  for (bool const sparse : BOTH_FORMS)
  {
    for (Strategy const strategy : ALL_STRATEGIES)
    {
      for (bool const keep_order : {false, true})
      {
        TableSorter sorter(3, sparse);
        sorter.set_redefine_start_of_closed_chains();
        for (std::uint64_t a = 0; a < 6; ++a)
        {
          for (std::uint64_t b = 0; b < 6; ++b)
            sorter.gap(a, b, std::nan(""));
        }
        EXPECT_THAT(sorted(sorter, strategy, keep_order), ElementsAre("0", "1", "2"));

        follow(sorter, 0, 1, 0.1);
        EXPECT_EQ(sorted(sorter, strategy, keep_order).size(), 2u);
      }
    }
  }
}

TEST(OzEdgeSorter, StartsARingAtItsLowestEdgeIfAskedTo)
{
  std::vector<std::pair<double, double>> const ring{{2, 3}, {0, 1}, {1, 2}, {3, 0}};
  for (bool const sparse : BOTH_FORMS)
  {
    LineSorter sorter(ring, sparse);
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("3 1 2 0"));

    sorter.set_redefine_start_of_closed_chains();
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("0 3 1 2"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("0 3 1 2"))
        << "stays asked for";
  }
}

TEST(OzEdgeSorter, StartsARingOfTwoAtItsLowestEdge)
{
  for (bool const sparse : BOTH_FORMS)
  {
    LineSorter sorter({{0, 1}, {1, 0}}, sparse);
    sorter.set_redefine_start_of_closed_chains();

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("0 1"));
  }
}

TEST(OzEdgeSorter, OnlyClosestFirstLooksForTheStartOfARing)
{
  std::vector<std::pair<double, double>> const ring{{2, 3}, {0, 1}, {1, 2}, {3, 0}};
  for (bool const sparse : BOTH_FORMS)
  {
    for (Strategy const strategy :
         {OzEdgeSorter::OzSortGrowChains, OzEdgeSorter::OzSortSequential, OzEdgeSorter::OzSortFirstFit})
    {
      for (bool const keep_order : {false, true})
      {
        LineSorter plain(ring, sparse);
        LineSorter asked(ring, sparse);
        asked.set_redefine_start_of_closed_chains();

        EXPECT_EQ(sorted(asked, strategy, keep_order), sorted(plain, strategy, keep_order));
      }
    }
  }
}

TEST(OzEdgeSorter, DoesNotMoveTheStartOfAnOpenChain)
{
  for (bool const sparse : BOTH_FORMS)
  {
    LineSorter sorter({{2, 3}, {0, 1}, {1, 2}}, sparse);
    sorter.set_redefine_start_of_closed_chains();

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("1 2 0"));
  }
}

TEST(OzEdgeSorter, AnyOtherGapThanMinusOneBetweenOpenEndsClosesAChainInTheDenseForm)
{
  // Both ends of the chain of 0 and 1 may join the start of 2, which the closer 3 takes.
  struct
  {
    bool sparse;
    double gap_of_ends;
    char const* chain;
  } const cases[] = {
      {false, -0.5, "0 1"}, {false, -1.0, "1 0"}, {false, 0.5, "0 1"}, {false, 1e30, "0 1"},
      {true, -0.5, "1 0"},  {true, -1.0, "1 0"},  {true, 0.5, "0 1"},  {true, 1e30, "0 1"},
  };
  for (auto const& c : cases)
  {
    TableSorter sorter(4, c.sparse);
    sorter.set_redefine_start_of_closed_chains();
    follow(sorter, 1, 0, 0.0);
    sorter.gap(4, 6, 0.1).gap(2, 4, 0.5).gap(1, 4, 0.5).gap(1, 2, c.gap_of_ends);

    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre(c.chain, "-3 2"))
        << c.sparse << " " << c.gap_of_ends;
  }
}

TEST(OzEdgeSorter, FindsEdgesByTheirNumber)
{
  for (bool const sparse : BOTH_FORMS)
  {
    LineSorter sorter({{0, 1}, {10, 11}, {2, 1}, {12, 11}, {12, 13}}, sparse);
    ASSERT_THAT(sorted(sorter, OzEdgeSorter::OzSortSequential), ElementsAre("0 -2", "1 -3 4"));

    std::uint64_t chain = 7;
    std::uint64_t link = 8;
    EXPECT_TRUE(sorter.get_indices(3, chain, link));
    EXPECT_EQ(chain, 1u);
    EXPECT_EQ(link, 1u);
    EXPECT_TRUE(sorter.get_indices(0, chain, link));
    EXPECT_EQ(chain, 0u);
    EXPECT_EQ(link, 0u);
    EXPECT_TRUE(sorter.reversed(2));
    EXPECT_TRUE(sorter.reversed(3));
    EXPECT_FALSE(sorter.reversed(0));
    EXPECT_FALSE(sorter.reversed(4));
    EXPECT_EQ(sorter.n_link(0), 2u);
    EXPECT_EQ(sorter.n_link(1), 3u);
  }
}

TEST(OzEdgeSorter, AnswersFalseForAnEdgeThatIsNotThere)
{
  LineSorter sorter({{0, 1}, {2, 1}}, true);
  sorter.sort(OzEdgeSorter::OzSortSequential, false);
  ReportRecorder const recorder;

  for (std::uint64_t const edge : {std::uint64_t(2), (std::uint64_t(1) << 32) + 1, ~std::uint64_t(0)})
  {
    std::uint64_t chain = 7;
    std::uint64_t link = 8;
    EXPECT_FALSE(sorter.get_indices(edge, chain, link)) << edge;
    EXPECT_EQ(chain, 7u);
    EXPECT_EQ(link, 8u);
    EXPECT_FALSE(sorter.reversed(edge)) << edge;
  }
  EXPECT_EQ(recorder.units(), std::vector<std::string>{});
}

TEST(OzEdgeSorter, ReportsNothingInOrdinaryUse)
{
  ReportRecorder const recorder;
  for (bool const sparse : BOTH_FORMS)
  {
    for (Strategy const strategy : ALL_STRATEGIES)
    {
      for (bool const keep_order : {false, true})
      {
        sorted(LineSorter({}, sparse), strategy, keep_order);
        LineSorter sorter({{0, 1}, {2, 1}, {2, 3}, {0, 3}, {5, 5}, {6, 7}}, sparse);
        sorter.set_redefine_start_of_closed_chains();
        sorted(sorter, strategy, keep_order);
        sorted(sorter, strategy, keep_order);
      }
    }
  }
  EXPECT_EQ(recorder.units(), std::vector<std::string>{});
}

TEST(OzEdgeSorter, ReportsALinkOutOfRangeThenUsesIt)
{
  // An array of three elements has a fourth slot, which is 0.
  LineSorter sorter({{0, 1}, {1, 2}, {2, 3}}, true);
  sorter.sort(OzEdgeSorter::OzSortSequential, false);
  ReportRecorder recorder;

  EXPECT_EQ(sorter.edge_index(0, 3), 0u);
  EXPECT_EQ(recorder.units(), (std::vector<std::string>{"ozedgesorter.cpp", "ozarray_i.h"}));

  recorder.clear();
  EXPECT_FALSE(sorter.reversed(0, 3));
  EXPECT_EQ(recorder.units(), (std::vector<std::string>{"ozedgesorter.cpp", "ozarray_i.h"}));
}

/// Notes reports and stops the operation at the last one that is wanted: behind it there is nothing to read.
class StoppingHandler
{
public:
  struct Stop
  {
  };

  explicit StoppingHandler(std::size_t last)
  {
    units.clear();
    stop_at = last;
    dkb_assertion_handler = &note;
  }
  ~StoppingHandler() { dkb_assertion_handler = former; }
  StoppingHandler(StoppingHandler const&) = delete;
  StoppingHandler& operator=(StoppingHandler const&) = delete;

  static inline std::vector<std::string> units;

private:
  static void note(char const* file, int)
  {
    std::string const path(file);
    units.push_back(path.substr(path.rfind('/') + 1));
    if (units.size() == stop_at)
      throw Stop();
  }

  static inline std::size_t stop_at;
  OzAssertionHandler const former = dkb_assertion_handler;
};

TEST(OzEdgeSorter, ReportsAChainOutOfRange)
{
  LineSorter sorter({{0, 1}, {1, 2}}, false);
  sorter.sort(OzEdgeSorter::OzSortSequential, false);
  std::vector<std::string> const wanted{"ozedgesorter.cpp", "ozarray_i.h"};
  StoppingHandler const handler(2);

  EXPECT_THROW(sorter.n_link(1), StoppingHandler::Stop);
  EXPECT_EQ(StoppingHandler::units, wanted);

  StoppingHandler::units.clear();
  EXPECT_THROW(sorter.edge_index(1, 0), StoppingHandler::Stop);
  EXPECT_EQ(StoppingHandler::units, wanted);

  StoppingHandler::units.clear();
  EXPECT_THROW(sorter.reversed(1, 0), StoppingHandler::Stop);
  EXPECT_EQ(StoppingHandler::units, wanted);
}

TEST(OzEdgeSorter, ReportsThatThereAreNoChainsBesides)
{
  LineSorter const sorter({{0, 1}, {1, 2}}, false);
  StoppingHandler const handler(3);

  EXPECT_THROW(sorter.n_link(0), StoppingHandler::Stop);
  EXPECT_EQ(StoppingHandler::units,
            (std::vector<std::string>{"ozedgesorter.cpp", "ozedgesorter.cpp", "ozarray_i.h"}));
}

TEST(OzEdgeSorter, SortsAnewEachTime)
{
  for (bool const sparse : BOTH_FORMS)
  {
    LineSorter sorter({{0, 1}, {1, 2}, {1, 3}}, sparse);
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("0", "-2 1"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortFirstFit, true), ElementsAre("0 1", "2"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortSequential), ElementsAre("0", "-2 1"));
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("0", "-2 1"));
  }
}

TEST(OzEdgeSorter, TheDenseFormGoesByTheGapsOfTheLastSortAndTheSparseOneByTheFirstItSaw)
{
  for (bool const sparse : BOTH_FORMS)
  {
    TableSorter sorter(3, sparse);
    sorter.gap(1, 2, 0.1).gap(1, 4, 0.2);
    EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("0 1", "2"));

    sorter.gap(1, 2, 0.2).gap(1, 4, 0.1);
    if (sparse)
      EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("0 1", "2"));
    else
      EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("1", "0 2"));

    sorter.gap(1, 2, -1.0).gap(1, 4, -1.0);
    EXPECT_EQ(sorted(sorter, OzEdgeSorter::OzSortClosestFirst).size(), sparse ? 2u : 3u);
  }
}

TEST(OzEdgeSorter, LetsAnExceptionOfTheGapThroughAndCanBeSortedAgain)
{
  class Moody : public LineSorter
  {
  public:
    using LineSorter::LineSorter;
    double edge_gap(std::uint64_t a, std::uint64_t b, bool start_a, bool start_b) const override
    {
      if (calls.size() == fails_at)
        throw std::runtime_error("no gap today");
      return LineSorter::edge_gap(a, b, start_a, start_b);
    }
    std::size_t fails_at = 0;
  };
  for (bool const sparse : BOTH_FORMS)
  {
    for (std::size_t fails_at = 0; fails_at < 15; ++fails_at)
    {
      Moody sorter({{0, 1}, {1, 2}, {2, 3}}, sparse);
      sorter.fails_at = fails_at;
      EXPECT_THROW(sorter.sort(OzEdgeSorter::OzSortClosestFirst, false), std::runtime_error);

      sorter.fails_at = ~std::size_t(0);
      EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("0 1 2"));
    }
  }
}

TEST(OzEdgeSorter, KeepsGapsAndNeighboursInStepWhenMemoryRunsOut)
{
  SKIP_UNLESS_MEMORY_CAN_BE_REFUSED();
  for (bool const sparse : BOTH_FORMS)
  {
    int refused = 0;
    for (bool sorted_at_last = false; !sorted_at_last; ++refused)
    {
      // Each of the ends in the middle has two candidates, of which the first is the closer one.
      TableSorter sorter(5, sparse);
      sorter.gap(1, 2, 0.1).gap(1, 4, 0.2).gap(3, 6, 0.3).gap(3, 8, 0.4).gap(5, 6, 0.5).gap(5, 8, 0.6);
      try
      {
        MemoryRefusal const refusal(refused);
        sorter.sort(OzEdgeSorter::OzSortClosestFirst, false);
        sorted_at_last = true;
      }
      catch (std::bad_alloc const&)
      {
      }

      EXPECT_THAT(sorted(sorter, OzEdgeSorter::OzSortClosestFirst), ElementsAre("0 1 3", "2 4")) << refused;
    }
    EXPECT_GT(refused, 10) << "nothing was refused";
  }
}

/// Collects what is written and counts the flushes.
class TextJournal : public OzJournal
{
public:
  void flush() override { ++flushes; }

  std::string text;
  int flushes = 0;

protected:
  void append_to_journal(OzString const& piece) override { text += piece.as_const_c_string(); }
};

TEST(OzEdgeSorter, DebugWritesAllChainsAtEveryLevel)
{
  LineSorter sorter({{0, 1}, {10, 11}, {2, 1}}, true);
  sorter.sort(OzEdgeSorter::OzSortSequential, false);

  for (OzDebug const level : {OZ_DEBUG_OFF, OZ_DEBUG_SUMMARY, OZ_DEBUG_CONTENTS, OZ_DEBUG_DETAIL})
  {
    TextJournal journal;
    sorter.debug(journal, level, 2);

    EXPECT_EQ(journal.text, "  OzEdgeSorter begin {\n"
                            "\n"
                            "     n_chain() = 2\n"
                            "     chain(0): \n"
                            "        OzEdgeChain begin {\n"
                            "\n"
                            "           Chain consisting of 2 edges. \n"
                            "           edge-index\torientation\t\n"
                            "           0                 +\n"
                            "           2                 -\n"
                            "\n"
                            "        OzEdgeChain end   }\n"
                            "     chain(1): \n"
                            "        OzEdgeChain begin {\n"
                            "\n"
                            "           Chain consisting of 1 edges. \n"
                            "           edge-index\torientation\t\n"
                            "           1                 +\n"
                            "\n"
                            "        OzEdgeChain end   }\n"
                            "  \n"
                            "OzEdgeSorter end   }\n");
    EXPECT_EQ(journal.flushes, 10);
  }
}

TEST(OzEdgeSorter, DebugWritesASorterWithoutChains)
{
  LineSorter const sorter({{0, 1}}, true);
  TextJournal journal;

  sorter.debug(journal, OZ_DEBUG_DETAIL, 0);

  EXPECT_EQ(journal.text, "OzEdgeSorter begin {\n\n   n_chain() = 0\n\nOzEdgeSorter end   }\n");
}

TEST(OzEdgeSorter, DebugPadsEdgeNumbersByTheirLength)
{
  std::vector<std::pair<double, double>> path;
  for (int i = 0; i < 102; ++i)
    path.emplace_back(i, i + 1);
  LineSorter sorter(path, true);
  sorter.sort(OzEdgeSorter::OzSortSequential, false);
  TextJournal journal;

  sorter.debug(journal, OZ_DEBUG_OFF, 0);

  EXPECT_NE(journal.text.find("\n         9                 +\n         10                +\n"),
            std::string::npos);
  EXPECT_NE(journal.text.find("\n         99                +\n         100               +\n"),
            std::string::npos);
}
} // namespace
