#include "ozedgesorter.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

// What does sorting cost beyond the questions that nobody can spare: the gaps of all pairs of ends? The peer
// asks for the same gaps through the same virtual operation, in the same order, and only keeps them: in a
// table as the dense form does, or in a list of those that may be joined as the sparse form does.

namespace
{
struct Point
{
  double x;
  double y;
};

/// Lets the peer ask as the sorter does.
class AskedSorter : public OzEdgeSorter
{
public:
  using OzEdgeSorter::OzEdgeSorter;

  double edge_gap(std::uint64_t a, std::uint64_t b, bool start_a, bool start_b) const override = 0;
};

double straight(double x, double y)
{
  return std::sqrt(x * x + y * y);
}

double along_axes(double x, double y)
{
  return std::fabs(x) + std::fabs(y);
}

/// Edges between points of the plane, whose ends may be joined where they are at most `reach` apart.
template <double (*Distance)(double, double)>
class PlaneSorter : public AskedSorter
{
public:
  PlaneSorter(std::vector<Point> const& end_points, double reach_of_ends, bool sparse)
    : AskedSorter(end_points.size() / 2, sparse)
    , points(end_points)
    , reach(reach_of_ends)
  {
  }

  double edge_gap(std::uint64_t a, std::uint64_t b, bool start_a, bool start_b) const override
  {
    Point const& p = points[2 * a + (start_a ? 0 : 1)];
    Point const& q = points[2 * b + (start_b ? 0 : 1)];
    double const distance = Distance(p.x - q.x, p.y - q.y);
    return distance <= reach ? distance : -1.0;
  }

private:
  std::vector<Point> const& points;
  double reach;
};

// With two classes to choose from no compiler puts a direct call in the place of the virtual one, which it
// could do for the peer alone.
std::unique_ptr<AskedSorter> make_sorter(std::vector<Point> const& points, double reach, bool sparse,
                                         bool straight_lines = true)
{
  if (straight_lines)
    return std::make_unique<PlaneSorter<straight>>(points, reach, sparse);
  return std::make_unique<PlaneSorter<along_axes>>(points, reach, sparse);
}

constexpr double TOUCHING = 1e-6;
constexpr double ANYWHERE = 10.0;

/// Rings of 50 edges whose ends nearly meet, in random order and direction.
std::vector<Point> make_rings(std::size_t n_edges)
{
  std::mt19937 random(1);
  std::uniform_real_distribution<double> place(0.0, 1.0);
  std::uniform_real_distribution<double> jitter(-1e-7, 1e-7);
  std::vector<std::size_t> order(n_edges);
  std::iota(order.begin(), order.end(), std::size_t(0));
  std::shuffle(order.begin(), order.end(), random);

  std::vector<Point> points(2 * n_edges);
  std::vector<Point> corners(50);
  for (std::size_t k = 0; k < n_edges; ++k)
  {
    if (k % corners.size() == 0)
    {
      for (Point& corner : corners)
        corner = {place(random), place(random)};
    }
    Point const from = corners[k % corners.size()];
    Point const to = corners[(k + 1) % corners.size()];
    std::size_t const flip = random() % 2;
    points[2 * order[k] + flip] = {from.x + jitter(random), from.y + jitter(random)};
    points[2 * order[k] + 1 - flip] = {to.x + jitter(random), to.y + jitter(random)};
  }
  return points;
}

template <class Keep>
void ask_for_all_gaps(AskedSorter const& sorter, std::uint64_t n_edges, Keep keep)
{
  for (std::uint64_t i = 0; i < n_edges; ++i)
  {
    for (std::uint64_t j = 0; j < i; ++j)
    {
      for (std::uint64_t a = 0; a < 2; ++a)
      {
        for (std::uint64_t b = 0; b < 2; ++b)
          keep(2 * i + a, 2 * j + b, sorter.edge_gap(i, j, a == 0, b == 0));
      }
    }
  }
}

void AskAndFillTable(benchmark::State& state, double reach)
{
  std::uint64_t const n_edges = static_cast<std::uint64_t>(state.range(0));
  std::vector<Point> const points = make_rings(n_edges);
  bool straight_lines = true;
  benchmark::DoNotOptimize(straight_lines);
  std::unique_ptr<AskedSorter> const asked = make_sorter(points, reach, true, straight_lines);
  std::vector<double> table(4 * n_edges * n_edges);
  for (auto _ : state)
  {
    std::fill(table.begin(), table.end(), -1.0);
    ask_for_all_gaps(*asked, n_edges,
                     [&](std::uint64_t p, std::uint64_t q, double g)
                     {
                       table[p * 2 * n_edges + q] = g;
                       table[q * 2 * n_edges + p] = g;
                     });
    benchmark::ClobberMemory();
  }
}

void AskAndKeepJoinable(benchmark::State& state, double reach)
{
  struct Found
  {
    double gap;
    int p;
    int q;
  };
  std::uint64_t const n_edges = static_cast<std::uint64_t>(state.range(0));
  std::vector<Point> const points = make_rings(n_edges);
  bool straight_lines = true;
  benchmark::DoNotOptimize(straight_lines);
  std::unique_ptr<AskedSorter> const asked = make_sorter(points, reach, true, straight_lines);
  for (auto _ : state)
  {
    std::vector<Found> found;
    ask_for_all_gaps(*asked, n_edges,
                     [&](std::uint64_t p, std::uint64_t q, double g)
                     {
                       if (g >= 0.0)
                         found.push_back({g, static_cast<int>(p), static_cast<int>(q)});
                     });
    benchmark::DoNotOptimize(found.data());
  }
}

void SortDense(benchmark::State& state, OzEdgeSorter::OzSortStrategy strategy, double reach)
{
  std::vector<Point> const points = make_rings(static_cast<std::size_t>(state.range(0)));
  std::unique_ptr<AskedSorter> const sorter = make_sorter(points, reach, false);
  for (auto _ : state)
  {
    sorter->sort(strategy, false);
    benchmark::DoNotOptimize(sorter->n_chain());
  }
}

// A new sorter each time, since its lists grow with each sort.
void SortSparse(benchmark::State& state, OzEdgeSorter::OzSortStrategy strategy, double reach)
{
  std::vector<Point> const points = make_rings(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state)
  {
    std::unique_ptr<AskedSorter> const sorter = make_sorter(points, reach, true);
    sorter->sort(strategy, false);
    benchmark::DoNotOptimize(sorter->n_chain());
  }
}

void sizes(benchmark::internal::Benchmark* run)
{
  for (int const n_edges : {250, 500, 1000, 2000})
    run->Arg(n_edges);
  run->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(AskAndFillTable, touching, TOUCHING)->Apply(sizes);
BENCHMARK_CAPTURE(SortDense, closest_first, OzEdgeSorter::OzSortClosestFirst, TOUCHING)->Apply(sizes);
BENCHMARK_CAPTURE(SortDense, grow_chains, OzEdgeSorter::OzSortGrowChains, TOUCHING)->Apply(sizes);
BENCHMARK_CAPTURE(SortDense, sequential, OzEdgeSorter::OzSortSequential, TOUCHING)->Apply(sizes);
BENCHMARK_CAPTURE(SortDense, first_fit, OzEdgeSorter::OzSortFirstFit, TOUCHING)->Apply(sizes);

BENCHMARK_CAPTURE(AskAndKeepJoinable, touching, TOUCHING)->Apply(sizes);
BENCHMARK_CAPTURE(SortSparse, closest_first, OzEdgeSorter::OzSortClosestFirst, TOUCHING)->Apply(sizes);
BENCHMARK_CAPTURE(SortSparse, grow_chains, OzEdgeSorter::OzSortGrowChains, TOUCHING)->Apply(sizes);
BENCHMARK_CAPTURE(SortSparse, sequential, OzEdgeSorter::OzSortSequential, TOUCHING)->Apply(sizes);
BENCHMARK_CAPTURE(SortSparse, first_fit, OzEdgeSorter::OzSortFirstFit, TOUCHING)->Apply(sizes);

// The other extreme: any two ends may be joined, and only how far apart they are decides.
BENCHMARK_CAPTURE(AskAndFillTable, anywhere, ANYWHERE)->Apply(sizes);
BENCHMARK_CAPTURE(SortDense, closest_first_anywhere, OzEdgeSorter::OzSortClosestFirst, ANYWHERE)
    ->Apply(sizes);
BENCHMARK_CAPTURE(AskAndKeepJoinable, anywhere, ANYWHERE)->Apply(sizes);
BENCHMARK_CAPTURE(SortSparse, closest_first_anywhere, OzEdgeSorter::OzSortClosestFirst, ANYWHERE)
    ->Apply(sizes);
} // namespace
