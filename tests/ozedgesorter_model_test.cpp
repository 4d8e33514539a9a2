#include "literal_edge_sorter.h"

#include "ozedgesorter.h"
#include "ozedgesorter_p.h"
#include "ozjournal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

// Holds the sorter against its plain definition, with inputs in which equal gaps are common: chain for chain,
// direction for direction, and with the state of both ends.

namespace
{
// Lets the tests see what shows nowhere outside: whether an end is closed, which decides what counts as a
// ring, and how long the lists are.
template <class Name, auto Member>
struct Reach
{
  friend auto member(Name) { return Member; }
};

struct Chains
{
};
struct Neighbours
{
};
struct NeighbourGaps
{
};
struct Gaps
{
};
struct Initialized
{
};
struct Mp
{
};
auto member(Chains);
auto member(Neighbours);
auto member(NeighbourGaps);
auto member(Gaps);
auto member(Initialized);
auto member(Mp);
template struct Reach<Chains, &OzEdgeSorter::chains>;
template struct Reach<Neighbours, &OzEdgeSorter::neighbours>;
template struct Reach<NeighbourGaps, &OzEdgeSorter::neighbour_gaps>;
template struct Reach<Gaps, &OzEdgeSorter::gaps>;
template struct Reach<Initialized, &OzEdgeSorter::initialized>;
template struct Reach<Mp, &OzEdgeSorter::mp>;

class MatrixSorter : public OzEdgeSorter
{
public:
  MatrixSorter(int n_edges, bool sparse, std::vector<double> const& gaps_to_give)
    : OzEdgeSorter(static_cast<std::uint64_t>(n_edges), sparse)
    , n_points(2 * static_cast<std::uint64_t>(n_edges))
    , given(gaps_to_give)
  {
  }

  using OzEdgeSorter::set_redefine_start_of_closed_chains;

  double edge_gap(std::uint64_t a, std::uint64_t b, bool start_a, bool start_b) const override
  {
    return given[(2 * a + (start_a ? 0 : 1)) * n_points + 2 * b + (start_b ? 0 : 1)];
  }

  std::vector<LiteralEdgeSorter::Chain> state()
  {
    std::vector<LiteralEdgeSorter::Chain> result;
    OzArray<OzEdgeChain*> const& own = this->*member(Chains());
    for (OzEdgeChain const* chain : own)
      result.push_back({{chain->edges.begin(), chain->edges.end()},
                        {chain->orientations.begin(), chain->orientations.end()},
                        chain->start_point,
                        chain->end_point});
    return result;
  }

  std::string text() const
  {
    class Journal : public OzJournal
    {
    public:
      void flush() override {}
      std::string collected;

    protected:
      void append_to_journal(OzString const& text) override { collected += text.as_const_c_string(); }
    } journal;
    debug(journal, OZ_DEBUG_OFF, 0);
    return journal.collected;
  }

private:
  std::uint64_t n_points;
  std::vector<double> const& given;
};

std::string in_words(std::vector<LiteralEdgeSorter::Chain> const& chains)
{
  std::string text;
  for (LiteralEdgeSorter::Chain const& chain : chains)
  {
    text += "[" + std::to_string(chain.start_point) + ":";
    for (std::size_t k = 0; k < chain.edges.size(); ++k)
      text += (chain.orientations[k] < 0 ? " -" : " ") + std::to_string(chain.edges[k]);
    text += " :" + std::to_string(chain.end_point) + "] ";
  }
  return text;
}

class Inputs
{
public:
  explicit Inputs(unsigned seed)
    : random(seed)
  {
  }

  int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }
  bool chance(int percent) { return below(100) < percent; }

  int n_edges() { return chance(20) ? below(4) : below(41); }

  // Gaps as from nowhere: a few values, each of them often. Not the same from either side, since a sorter
  // asks from one side only.
  std::vector<double> scattered(int n_edges)
  {
    double const special[] = {-1.0,  -1.0, -0.5,   -2.0, 0.0,      -0.0,
                              1e-13, 1e20, 9.9e19, 3e20, infinity, -infinity};
    int const density = below(4) == 0 ? 100 : 1 + below(40);
    int const values = 1 + below(6);
    int const specials = below(3) * 15;
    std::vector<double> gaps(static_cast<std::size_t>(4 * n_edges * n_edges), -1.0);
    for (double& g : gaps)
    {
      if (chance(density))
        g = chance(specials) ? special[below(12)] : below(values);
    }
    close_few(gaps, n_edges);
    return gaps;
  }

  // Gaps of ends that lie at a few places of a line: rings, branches, and chains that nearly meet.
  std::vector<double> placed(int n_edges)
  {
    int const n_places = 1 + below(2 * n_edges + 1);
    int const step = 1 + below(3);
    int const reach = below(4);
    std::vector<int> places(static_cast<std::size_t>(2 * n_edges));
    if (chance(50))
    {
      for (int& place : places)
        place = step * below(n_places);
    }
    else
    {
      // One ring or path of edges in random order and direction.
      std::vector<int> order(static_cast<std::size_t>(n_edges));
      std::iota(order.begin(), order.end(), 0);
      std::shuffle(order.begin(), order.end(), random);
      bool const ring = chance(50);
      for (int k = 0; k < n_edges; ++k)
      {
        std::size_t const start = 2 * static_cast<std::size_t>(order[static_cast<std::size_t>(k)]);
        std::size_t const flip = chance(50) ? 1 : 0;
        places[start + flip] = step * k;
        places[start + 1 - flip] = ring && k + 1 == n_edges ? 0 : step * (k + 1);
      }
    }
    std::vector<double> gaps(places.size() * places.size());
    for (std::size_t p = 0; p < places.size(); ++p)
    {
      for (std::size_t q = 0; q < places.size(); ++q)
      {
        int const distance = std::abs(places[p] - places[q]);
        gaps[p * places.size() + q] = distance <= reach ? distance : -1.0;
      }
    }
    if (chance(30))
      close_few(gaps, n_edges);
    return gaps;
  }

  std::vector<double> any(int n_edges) { return chance(50) ? scattered(n_edges) : placed(n_edges); }

  static constexpr double infinity = std::numeric_limits<double>::infinity();
  std::mt19937 random;

private:
  // An edge whose own ends happen to meet takes no part; here few do.
  void close_few(std::vector<double>& gaps, int n_edges)
  {
    double const own[] = {0.0, 0.0005, 0.001};
    for (int e = 0; e < n_edges; ++e)
      gaps[static_cast<std::size_t>(2 * e * 2 * n_edges + 2 * e + 1)] = chance(5) ? own[below(3)] : 0.002;
  }
};

struct Setting
{
  bool sparse;
  int strategy;
  bool keep_order;
  bool redefine;
};

std::vector<Setting> all_settings()
{
  std::vector<Setting> settings;
  for (bool const sparse : {false, true})
  {
    for (bool const redefine : {false, true})
    {
      settings.push_back({sparse, 0, false, redefine});
      settings.push_back({sparse, 1, redefine, redefine});
      settings.push_back({sparse, 2, redefine, redefine});
      for (bool const keep_order : {false, true})
        settings.push_back({sparse, 3, keep_order, redefine});
    }
    settings.push_back({sparse, 9, true, true});
  }
  return settings;
}

// One object of each kind, sorted once or several times over the gaps, which change in between.
void compare(Setting const& setting, int n_edges, std::vector<std::vector<double>> const& rounds,
             std::string const& where)
{
  std::vector<double> gaps;
  MatrixSorter sorter(n_edges, setting.sparse, gaps);
  LiteralEdgeSorter model(n_edges, setting.sparse);
  if (setting.redefine)
    sorter.set_redefine_start_of_closed_chains();
  model.redefine_start = setting.redefine;

  for (std::vector<double> const& round : rounds)
  {
    gaps = round;
    sorter.sort(static_cast<OzEdgeSorter::OzSortStrategy>(setting.strategy), setting.keep_order);
    model.sort([&](int p, int q) { return gaps[static_cast<std::size_t>(2 * n_edges * p + q)]; },
               setting.strategy, setting.keep_order);

    ASSERT_EQ(in_words(sorter.state()), in_words(model.chains))
        << where << (setting.sparse ? ", sparse" : ", dense") << ", strategy " << setting.strategy
        << ", keep order " << setting.keep_order << ", redefine " << setting.redefine;
    ASSERT_EQ(sorter.text(), model.text()) << where;
  }
}

void compare_over_random_inputs(int strategy)
{
  for (unsigned seed = 0; seed < 2000; ++seed)
  {
    Inputs inputs(seed);
    int const n_edges = inputs.n_edges();
    std::vector<double> const gaps = inputs.any(n_edges);
    for (Setting const& setting : all_settings())
    {
      if (setting.strategy == strategy)
        compare(setting, n_edges, {gaps}, "seed " + std::to_string(seed));
      if (::testing::Test::HasFatalFailure())
        return;
    }
  }
}

TEST(OzEdgeSorterModel, ClosestFirstAgreesWithASearchOfAllPairsBeforeEachJoin)
{
  compare_over_random_inputs(0);
}

TEST(OzEdgeSorterModel, GrowChainsAgreesWithASearchOfAllPairsBeforeEachJoin)
{
  compare_over_random_inputs(1);
}

TEST(OzEdgeSorterModel, SequentialAgreesWithASearchOfAllPairsBeforeEachJoin)
{
  compare_over_random_inputs(2);
}

TEST(OzEdgeSorterModel, FirstFitAgreesWithASearchOfAllPairsBeforeEachJoin)
{
  compare_over_random_inputs(3);
}

TEST(OzEdgeSorterModel, AgreesWhenOneSorterSortsSeveralTimes)
{
  for (unsigned seed = 0; seed < 250; ++seed)
  {
    Inputs inputs(10000 + seed);
    int const n_edges = inputs.n_edges();
    std::vector<std::vector<double>> rounds{inputs.any(n_edges)};
    rounds.push_back(inputs.chance(50) ? rounds[0] : inputs.any(n_edges));
    rounds.push_back(inputs.any(n_edges));
    for (Setting const& setting : all_settings())
    {
      compare(setting, n_edges, rounds, "seed " + std::to_string(seed));
      if (HasFatalFailure())
        return;
    }
  }
}

// Not a number is taken by neither as a gap.
TEST(OzEdgeSorterModel, AgreesWhereGapsAreNotNumbers)
{
  for (unsigned seed = 0; seed < 250; ++seed)
  {
    Inputs inputs(20000 + seed);
    int const n_edges = inputs.n_edges();
    std::vector<double> gaps = inputs.any(n_edges);
    int const percent = inputs.chance(20) ? 100 : 1 + inputs.below(50);
    for (double& g : gaps)
      g = inputs.chance(percent) ? std::nan("") : g;
    for (Setting const& setting : all_settings())
    {
      compare(setting, n_edges, {gaps, gaps}, "seed " + std::to_string(seed));
      if (HasFatalFailure())
        return;
    }
  }
}
// Where nearly all ends may be joined, far more gaps are acceptable than are ever looked at again.
TEST(OzEdgeSorterModel, AgreesWhereNearlyAllEndsMayBeJoined)
{
  for (unsigned seed = 0; seed < 32; ++seed)
  {
    Inputs inputs(30000 + seed);
    int const n_edges = 60 + inputs.below(40);
    std::size_t const n_points = 2 * static_cast<std::size_t>(n_edges);
    unsigned const kind = seed % 8;
    std::vector<double> gaps(n_points * n_points);
    for (std::size_t p = 0; p < n_points; ++p)
    {
      for (std::size_t q = 0; q < n_points; ++q)
      {
        double const random_gaps[] = {
            1e-3 * inputs.below(1000000),          // seldom equal
            1.0 * inputs.below(50),                // often equal
            7.0,                                   // all equal
            0.0,                                   // all equal and the least there is
            static_cast<double>(p * n_points + q), // rising
            1e6 - static_cast<double>(p + q),      // falling, some equal
            inputs.chance(60) ? 5.0 : 0.0,         // two values
            inputs.chance(90) ? 9.9999999999999e19 : 1.0 * inputs.below(9), // nearly all at the upper bound
        };
        gaps[p * n_points + q] = inputs.chance(97) ? random_gaps[kind] : -1.0;
      }
    }
    for (std::size_t e = 0; e < n_points; e += 2)
      gaps[e * n_points + e + 1] = 1.0;
    for (Setting const& setting :
         {Setting{false, 0, false, true}, Setting{true, 0, false, false}, Setting{false, 1, false, false},
          Setting{true, 1, false, false}, Setting{true, 3, true, false}})
    {
      compare(setting, n_edges, {gaps}, "seed " + std::to_string(seed));
      if (HasFatalFailure())
        return;
    }
  }
}

/// The gaps of a ring of edges given as pairs of places.
std::vector<double> ring_gaps(std::vector<std::pair<int, int>> const& edges)
{
  std::vector<int> places;
  for (auto const& edge : edges)
  {
    places.push_back(edge.first);
    places.push_back(edge.second);
  }
  std::vector<double> gaps;
  for (int const p : places)
  {
    for (int const q : places)
      gaps.push_back(p == q ? 0.0 : -1.0);
  }
  return gaps;
}

TEST(OzEdgeSorterModel, TheEndPointsOfARingFollowItsNewStart)
{
  for (bool const sparse : {false, true})
  {
    std::vector<double> const along = ring_gaps({{2, 3}, {0, 1}, {1, 2}, {3, 0}});
    MatrixSorter forward(4, sparse, along);
    forward.sort(OzEdgeSorter::OzSortClosestFirst, false);
    EXPECT_EQ(in_words(forward.state()), "[6: 3 1 2 0 :1] ");
    forward.set_redefine_start_of_closed_chains();
    forward.sort(OzEdgeSorter::OzSortClosestFirst, false);
    EXPECT_EQ(in_words(forward.state()), "[0: 0 3 1 2 :5] ");

    std::vector<double> const against = ring_gaps({{1, 0}, {1, 2}, {2, 3}, {3, 0}});
    MatrixSorter first_reversed(4, sparse, against);
    first_reversed.set_redefine_start_of_closed_chains();
    first_reversed.sort(OzEdgeSorter::OzSortClosestFirst, false);
    EXPECT_EQ(in_words(first_reversed.state()), "[1: -0 1 2 3 :7] ");

    std::vector<double> const last_reversed = ring_gaps({{0, 1}, {1, 2}, {2, 3}, {0, 3}});
    MatrixSorter ring(4, sparse, last_reversed);
    ring.set_redefine_start_of_closed_chains();
    ring.sort(OzEdgeSorter::OzSortClosestFirst, false);
    EXPECT_EQ(in_words(ring.state()), "[0: 0 1 2 -3 :6] ");
  }
}

TEST(OzEdgeSorterModel, IsInitializedOnceThereAreChains)
{
  std::vector<double> const none;
  MatrixSorter empty(0, false, none);
  empty.sort(OzEdgeSorter::OzSortClosestFirst, false);
  EXPECT_FALSE((empty.*member(Initialized()))());

  std::vector<double> const one(4, -1.0);
  MatrixSorter sorter(1, false, one);
  EXPECT_FALSE((sorter.*member(Initialized()))());
  sorter.sort(OzEdgeSorter::OzSortClosestFirst, false);
  EXPECT_TRUE((sorter.*member(Initialized()))());
  EXPECT_EQ((sorter.*member(Mp()))(), &sorter);
}

TEST(OzEdgeSorterModel, ListsHoldBothSidesOfAPairAndGrowWithEachSort)
{
  std::vector<double> const gaps = ring_gaps({{0, 1}, {1, 2}, {3, 4}});
  MatrixSorter sorter(3, true, gaps);
  for (std::uint64_t sorts = 1; sorts <= 3; ++sorts)
  {
    sorter.sort(OzEdgeSorter::OzSortFirstFit, true);

    OzArray<OzArray<int>> const& neighbours = sorter.*member(Neighbours());
    OzArray<OzArray<double>> const& neighbour_gaps = sorter.*member(NeighbourGaps());
    std::uint64_t const sizes[] = {0, sorts, sorts, 0, 0, 0};
    ASSERT_EQ(neighbours.size(), 6u);
    ASSERT_EQ(neighbour_gaps.size(), 6u);
    for (std::uint64_t p = 0; p < 6; ++p)
    {
      EXPECT_EQ(neighbours[p].size(), sizes[p]) << p;
      EXPECT_EQ(neighbour_gaps[p].size(), sizes[p]) << p;
    }
    EXPECT_EQ(neighbours[1].last(), 2);
    EXPECT_EQ(neighbours[2].last(), 1);
    EXPECT_EQ((sorter.*member(Gaps())).rows(), 0u);
  }
}

TEST(OzEdgeSorterModel, TheTableHoldsEachGapTwiceAndMinusOneElsewhere)
{
  // More columns than are copied at once, the second edge closed in itself, some gaps negative.
  int const n_edges = 37;
  std::size_t const n_points = 2 * static_cast<std::size_t>(n_edges);
  std::vector<double> gaps(n_points * n_points);
  for (std::size_t k = 0; k < gaps.size(); ++k)
    gaps[k] = static_cast<double>(k % 1009) - 7.5;
  for (std::size_t e = 0; e < n_points; e += 2)
    gaps[e * n_points + e + 1] = e == 2 ? 0.0 : 1.0;
  MatrixSorter sorter(n_edges, false, gaps);

  for (int sorts = 0; sorts < 2; ++sorts)
  {
    sorter.sort(OzEdgeSorter::OzSortSequential, false);

    OzMatrix<double> const& table = sorter.*member(Gaps());
    ASSERT_EQ(table.rows(), n_points);
    ASSERT_EQ(table.columns(), n_points);
    for (std::size_t p = 0; p < n_points; ++p)
    {
      for (std::size_t q = 0; q < n_points; ++q)
      {
        bool const joinable = p / 2 != q / 2 && p / 2 != 1 && q / 2 != 1;
        double const wanted = joinable ? gaps[std::max(p, q) * n_points + std::min(p, q)] : -1.0;
        ASSERT_EQ(table(p, q), wanted) << p << " " << q;
      }
    }
  }
}
} // namespace
