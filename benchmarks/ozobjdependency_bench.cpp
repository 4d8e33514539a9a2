// What does an operation pay for keeping its history, and its caller for asking about it?
//
// Each run records a history, layer by layer as an operation does it, perhaps reduces it to direct links
// from roots to results, asks for the sources of every result, and destroys the history. The counters tell the phases apart, in
// nanoseconds for each link, and what a link takes in memory. Peers: an adjacency list of Boost.Graph, and the tables that one would
// write by hand.

#include "history_workloads.h"

#include <benchmark/benchmark.h>
#include <boost/graph/adjacency_list.hpp>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <unordered_map>
#include <utility>
#include <vector>

namespace
{
/// n objects, each split in three; the pieces are modified, and three by three, from anywhere, absorbed.
Workload patchwork(std::uint64_t n)
{
  Workload work;
  std::vector<Object> const whole = work.make(n);
  std::vector<Object> pieces;
  for (Object object : whole)
  {
    std::vector<Object> const split = work.make(3);
    work.add({object}, split, Dep::SPLIT);
    pieces.insert(pieces.end(), split.begin(), split.end());
  }
  for (Object& piece : pieces)
  {
    Object const modified = work.make();
    work.add({piece}, {modified}, Dep::MODIFICATION);
    piece = modified;
  }
  std::mt19937 random(1);
  std::shuffle(pieces.begin(), pieces.end(), random);
  for (std::uint64_t i = 0; i < n; ++i)
  {
    work.results.push_back(work.make());
    work.add({pieces[3 * i], pieces[3 * i + 1], pieces[3 * i + 2]}, {work.results.back()}, Dep::ABSORPTION);
  }
  return work;
}

/// n objects created from nothing and then modified: the null object has n targets.
Workload creations(std::uint64_t n)
{
  Workload work;
  std::vector<Object> const created = work.make(n);
  work.results = work.make(n);
  for (Object object : created)
    work.add({nullptr}, {object}, Dep::CREATION);
  for (std::uint64_t i = 0; i < n; ++i)
    work.add({created[i]}, {work.results[i]}, Dep::MODIFICATION);
  return work;
}

class OzHistory
{
public:
  void record(Workload::Step const& step) { ::record(graph, step); }
  void simplify(Workload const&) { graph.simplify_it(); }
  std::uint64_t count_sources(Object object) { return ::count_sources(graph, object); }

private:
  OzObjDependency graph;
};

/// What each link of the peers carries.
struct Stamp
{
  Dep::Type type;
  bool has_qualifier;
  int qualifier;
  int separator;
  void* role;
};

class BoostHistory
{
public:
  void record(Workload::Step const& step)
  {
    for (Object source : step.sources)
      for (Object target : step.targets)
      {
        Vertex const from = vertex(source), to = vertex(target);
        // The null object has too many targets to look through.
        if (source != nullptr && boost::edge(from, to, *graph).second)
          return;
        boost::add_edge(from, to, Stamp{step.type, false, -1, 0, nullptr}, *graph);
      }
  }
  /// A new history of what the walks find, each pair once.
  void simplify(Workload const& work)
  {
    BoostHistory simple;
    Workload::Step step{{}, {}, Dep::CREATION};
    for (Object result : work.results)
    {
      count_sources(result);
      step.targets.resize(0, true);
      step.targets.append(result);
      step.sources.resize(0, true);
      std::sort(found.begin(), found.end());
      found.erase(std::unique(found.begin(), found.end()), found.end());
      for (Object source : found)
        step.sources.append(source);
      if (found.empty())
        step.sources.append(nullptr);
      simple.record(step);
    }
    std::swap(graph, simple.graph);
    std::swap(vertices, simple.vertices);
  }
  std::uint64_t count_sources(Object object)
  {
    found.clear();
    collect(vertices.at(object));
    return found.size();
  }

private:
  typedef boost::adjacency_list<boost::vecS, boost::vecS, boost::bidirectionalS, Object, Stamp> Graph;
  typedef boost::graph_traits<Graph>::vertex_descriptor Vertex;

  Vertex vertex(Object object)
  {
    auto const [at, is_new] = vertices.emplace(object, 0);
    if (is_new)
      at->second = boost::add_vertex(object, *graph);
    return at->second;
  }
  void collect(Vertex at)
  {
    auto const [first, last] = boost::in_edges(at, *graph);
    if (first == last && (*graph)[at] != nullptr)
      found.push_back((*graph)[at]);
    for (auto edge = first; edge != last; ++edge)
      collect(boost::source(*edge, *graph));
  }

  std::unique_ptr<Graph> graph = std::make_unique<Graph>();
  std::unordered_map<Object, Vertex> vertices;
  std::vector<Object> found;
};

class HandWrittenHistory
{
public:
  void record(Workload::Step const& step)
  {
    for (Object source : step.sources)
      for (Object target : step.targets)
      {
        Node& to = nodes[target];
        for (Link const& link : to.sources)
          if (link.object == source)
            return;
        to.sources.push_back({source, {step.type, false, -1, 0, nullptr}});
        nodes[source].targets.push_back({target, {step.type, false, -1, 0, nullptr}});
      }
  }
  /// A new history of what the walks find, each pair once.
  void simplify(Workload const& work)
  {
    HandWrittenHistory simple;
    Workload::Step step{{}, {}, Dep::CREATION};
    for (Object result : work.results)
    {
      count_sources(result);
      step.targets.resize(0, true);
      step.targets.append(result);
      step.sources.resize(0, true);
      std::sort(found.begin(), found.end());
      found.erase(std::unique(found.begin(), found.end()), found.end());
      for (Object source : found)
        step.sources.append(source);
      if (found.empty())
        step.sources.append(nullptr);
      simple.record(step);
    }
    std::swap(nodes, simple.nodes);
  }
  std::uint64_t count_sources(Object object)
  {
    found.clear();
    collect(object);
    return found.size();
  }

private:
  struct Link
  {
    Object object;
    Stamp stamp;
  };
  struct Node
  {
    std::vector<Link> sources, targets;
  };

  void collect(Object object)
  {
    std::vector<Link> const& sources = nodes.find(object)->second.sources;
    if (sources.empty() && object != nullptr)
      found.push_back(object);
    for (Link const& link : sources)
      collect(link.object);
  }

  std::unordered_map<Object, Node> nodes;
  std::vector<Object> found;
};

template <class History, Workload (*make_workload)(std::uint64_t), bool simplified>
void Run(benchmark::State& state)
{
  Workload const work = make_workload(static_cast<std::uint64_t>(state.range(0)));
  double recording = 0, simplifying = 0, asking = 0, destroying = 0, bytes = 0;

  for (auto _ : state)
  {
    double const bytes_before = bytes_in_use();
    Stopwatch watch;
    auto history = std::make_unique<History>();
    for (Workload::Step const& step : work.steps)
      history->record(step);
    recording += watch.lap();
    bytes = bytes_in_use() - bytes_before;
    watch.lap();
    if (simplified)
      history->simplify(work);
    simplifying += watch.lap();
    std::uint64_t found = 0;
    for (Object result : work.results)
      found += history->count_sources(result);
    benchmark::DoNotOptimize(found);
    asking += watch.lap();
    history.reset();
    destroying += watch.lap();
  }

  double const links = static_cast<double>(work.links);
  double const runs = static_cast<double>(state.iterations());
  state.counters["record_ns"] = recording / runs / links;
  state.counters["total_ns"] = (recording + simplifying + asking) / runs / links;
  if (simplified)
    state.counters["simplify_ns"] = simplifying / runs / links;
  state.counters["ask_ns"] = asking / runs / links;
  state.counters["destroy_ns"] = destroying / runs / links;
  state.counters["bytes_per_link"] = bytes / links;
}

template <class History, Workload (*make_workload)(std::uint64_t)>
void RecordAndAsk(benchmark::State& state)
{
  Run<History, make_workload, false>(state);
}

template <class History, Workload (*make_workload)(std::uint64_t)>
void RecordSimplifyAndAsk(benchmark::State& state)
{
  Run<History, make_workload, true>(state);
}

void sizes(benchmark::internal::Benchmark* bench)
{
  bench->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
}
// What one object absorbs, the peers look through for each of its sources.
void sizes_of_contours(benchmark::internal::Benchmark* bench)
{
  bench->Arg(160)->Arg(16000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(RecordAndAsk<OzHistory, chains>)->Apply(sizes);
BENCHMARK(RecordAndAsk<BoostHistory, chains>)->Apply(sizes);
BENCHMARK(RecordAndAsk<HandWrittenHistory, chains>)->Apply(sizes);
BENCHMARK(RecordSimplifyAndAsk<OzHistory, chains>)->Apply(sizes);
BENCHMARK(RecordSimplifyAndAsk<BoostHistory, chains>)->Apply(sizes);
BENCHMARK(RecordSimplifyAndAsk<HandWrittenHistory, chains>)->Apply(sizes);
BENCHMARK(RecordAndAsk<OzHistory, patchwork>)->Apply(sizes);
BENCHMARK(RecordAndAsk<BoostHistory, patchwork>)->Apply(sizes);
BENCHMARK(RecordAndAsk<HandWrittenHistory, patchwork>)->Apply(sizes);
BENCHMARK(RecordSimplifyAndAsk<OzHistory, patchwork>)->Apply(sizes);
BENCHMARK(RecordSimplifyAndAsk<BoostHistory, patchwork>)->Apply(sizes);
BENCHMARK(RecordSimplifyAndAsk<HandWrittenHistory, patchwork>)->Apply(sizes);
BENCHMARK(RecordAndAsk<OzHistory, creations>)->Apply(sizes);
BENCHMARK(RecordAndAsk<BoostHistory, creations>)->Apply(sizes);
BENCHMARK(RecordAndAsk<HandWrittenHistory, creations>)->Apply(sizes);
BENCHMARK(RecordSimplifyAndAsk<OzHistory, creations>)->Apply(sizes);
BENCHMARK(RecordSimplifyAndAsk<BoostHistory, creations>)->Apply(sizes);
BENCHMARK(RecordSimplifyAndAsk<HandWrittenHistory, creations>)->Apply(sizes);
BENCHMARK(RecordSimplifyAndAsk<OzHistory, contour_of_edges>)->Apply(sizes_of_contours);
BENCHMARK(RecordSimplifyAndAsk<BoostHistory, contour_of_edges>)->Apply(sizes_of_contours);
BENCHMARK(RecordSimplifyAndAsk<HandWrittenHistory, contour_of_edges>)->Apply(sizes_of_contours);
} // namespace
