#include "ozedgesorter.h"

#include "report_recorder.h"

#include "ozedgesorter_p.h"
#include "ozfilejournal.h"

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

} // namespace
