// What does a history cost from its recording to the answers from its simplified form, and how does each
// phase grow with the size?
//
// Six histories: many short chains; one object that is split again and again; layers of which every tenth
// absorbs pairs; creations from nothing, all of which have the null object as their source; and a contour
// that absorbs the edges of thousands of entities, one edge each, and four each. The
// counters are nanoseconds of the thread's processor time for each recorded link, and the bytes that a link
// takes. No peer does the same work: none composes types or settles several paths. What storing and asking
// costs beside others is measured in ozobjdependency_bench.

#include "history_workloads.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace
{
/// One object that falls in two, and each piece again, until there are n pieces.
Workload split_tree(std::uint64_t n)
{
  Workload work;
  std::vector<Object> layer = work.make(1);
  while (layer.size() < n)
  {
    std::vector<Object> next;
    for (Object object : layer)
    {
      std::vector<Object> const halves = work.make(2);
      work.add({object}, halves, Dep::SPLIT);
      next.insert(next.end(), halves.begin(), halves.end());
    }
    layer = next;
  }
  work.results = layer;
  return work;
}

/// 20 layers of n objects: in every tenth each object takes two neighbours of the layer above up, and so
/// each object is taken up by two; in the others each is the changed one of the layer above.
Workload layers(std::uint64_t n)
{
  Workload work;
  std::vector<Object> layer = work.make(n);
  for (int depth = 1; depth <= 20; ++depth)
  {
    std::vector<Object> const next = work.make(n);
    for (std::uint64_t i = 0; i < n; ++i)
    {
      if (depth % 10 != 0)
      {
        work.add({layer[i]}, {next[i]}, Dep::MODIFICATION);
        continue;
      }
      work.add({layer[i]}, {next[i]}, Dep::ABSORPTION);
      work.add({layer[(i + 1) % n]}, {next[i]}, Dep::ABSORPTION);
    }
    layer = next;
  }
  work.results = layer;
  return work;
}

/// n objects created from nothing, each modified twice.
Workload creations(std::uint64_t n)
{
  Workload work;
  std::vector<Object> layer = work.make(n);
  for (Object object : layer)
    work.add({nullptr}, {object}, Dep::CREATION);
  for (int depth = 0; depth < 2; ++depth)
    for (Object& object : layer)
    {
      Object const next = work.make();
      work.add({object}, {next}, Dep::MODIFICATION);
      object = next;
    }
  work.results = layer;
  return work;
}

template <Workload (*make_workload)(std::uint64_t)>
void RecordValidateSimplifyAsk(benchmark::State& state)
{
  Workload work = make_workload(static_cast<std::uint64_t>(state.range(0)));
  double recording = 0, validating = 0, simplifying = 0, asking = 0, bytes = 0;

  for (auto _ : state)
  {
    double const bytes_before = bytes_in_use();
    Stopwatch watch;
    auto graph = std::make_unique<OzObjDependency>();
    for (Workload::Step const& step : work.steps)
      record(*graph, step);
    recording += watch.lap();
    bytes = bytes_in_use() - bytes_before;

    watch.lap();
    benchmark::DoNotOptimize(graph->is_valid(nullptr));
    validating += watch.lap();
    graph->simplify_it();
    simplifying += watch.lap();

    std::uint64_t found = 0;
    for (Object result : work.results)
      found += count_sources(*graph, result);
    benchmark::DoNotOptimize(found);
    asking += watch.lap();
  }

  double const links = static_cast<double>(work.links);
  double const runs = static_cast<double>(state.iterations());
  state.counters["record_ns"] = recording / runs / links;
  state.counters["validate_ns"] = validating / runs / links;
  state.counters["simplify_ns"] = simplifying / runs / links;
  state.counters["ask_ns"] = asking / runs / links;
  state.counters["bytes"] = bytes / links;
  state.counters["links"] = links;
}

void sizes(benchmark::internal::Benchmark* bench, std::int64_t small, std::int64_t large)
{
  bench->Arg(small)->Arg(large)->Unit(benchmark::kMillisecond);
}
void sizes_of_chains(benchmark::internal::Benchmark* bench)
{
  sizes(bench, 1000, 100000);
}
void sizes_of_trees(benchmark::internal::Benchmark* bench)
{
  sizes(bench, 1 << 11, 1 << 17);
}
void sizes_of_layers(benchmark::internal::Benchmark* bench)
{
  sizes(bench, 100, 5000);
}
void sizes_of_contours(benchmark::internal::Benchmark* bench)
{
  sizes(bench, 2000, 200000);
}
void sizes_of_shapes(benchmark::internal::Benchmark* bench)
{
  sizes(bench, 500, 50000);
}
void sizes_of_creations(benchmark::internal::Benchmark* bench)
{
  sizes(bench, 200, 20000);
}

BENCHMARK(RecordValidateSimplifyAsk<chains>)->Apply(sizes_of_chains);
BENCHMARK(RecordValidateSimplifyAsk<split_tree>)->Apply(sizes_of_trees);
BENCHMARK(RecordValidateSimplifyAsk<layers>)->Apply(sizes_of_layers);
BENCHMARK(RecordValidateSimplifyAsk<creations>)->Apply(sizes_of_creations);
BENCHMARK(RecordValidateSimplifyAsk<contour_of_edges>)->Apply(sizes_of_contours);
BENCHMARK(RecordValidateSimplifyAsk<contour_of_shapes>)->Apply(sizes_of_shapes);
} // namespace
