#ifndef HISTORY_WORKLOADS_H
#define HISTORY_WORKLOADS_H

#include "ozobjdependency.h"

#include <malloc.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <utility>
#include <vector>

// Histories for benchmarks of the dependency graph, and what these measure with.

typedef OzDynObj const* Object;
typedef OzObjectDependency Dep;

/// An object of the size that a small one has in a model.
class Part : public OzDynObj
{
public:
  OzDynObj* clone() const override { return new Part(*this); }
  int identity() const override { return static_cast<int>(payload[0]); }

private:
  double payload[5] = {};
};

/// What an operation tells its history, and the results that its caller asks about.
struct Workload
{
  struct Step
  {
    OzArray<Object> sources, targets;
    Dep::Type type;
  };

  std::vector<std::unique_ptr<Part>> parts;
  std::vector<Step> steps;
  std::vector<Object> results;
  std::uint64_t links = 0;

  Object make()
  {
    parts.push_back(std::make_unique<Part>());
    return parts.back().get();
  }
  std::vector<Object> make(std::uint64_t n)
  {
    std::vector<Object> made;
    for (std::uint64_t i = 0; i < n; ++i)
      made.push_back(make());
    return made;
  }
  void add(std::vector<Object> const& sources, std::vector<Object> const& targets, Dep::Type type)
  {
    Step step{{}, {}, type};
    for (Object source : sources)
      step.sources.append(source);
    for (Object target : targets)
      step.targets.append(target);
    links += sources.size() * targets.size();
    steps.push_back(step);
  }
};

/// Tells `graph` what an operation tells its history: a pair as a pair, everything else as sets.
inline void record(OzObjDependency& graph, Workload::Step const& step)
{
  if (step.sources.size() == 1 && step.targets.size() == 1)
  {
    graph.record_dependency(step.sources[0], step.targets[0], step.type, nullptr, nullptr);
    return;
  }
  OzArrayIterator<Object> sources(&step.sources), targets(&step.targets);
  graph.record_dependency(&sources, &targets, step.type, nullptr, nullptr);
}
/// The number of sources that it delivers.
inline std::uint64_t count_sources(OzObjDependency const& graph, Object object)
{
  OzAutoPtr<OzIterator<Object>> result;
  graph.get_source_objects(object, result, nullptr, nullptr);
  std::uint64_t n = 0;
  for (result->reset(); !result->done(); result->next())
    n += result->current() != nullptr;
  return n;
}

/// n objects, each modified five times.
inline Workload chains(std::uint64_t n)
{
  Workload work;
  std::vector<Object> layer = work.make(n);
  for (int depth = 0; depth < 5; ++depth)
  {
    std::vector<Object> const next = work.make(n);
    for (std::uint64_t i = 0; i < n; ++i)
      work.add({layer[i]}, {next[i]}, Dep::MODIFICATION);
    layer = next;
  }
  work.results = layer;
  return work;
}

/// n entities, each converted to an edge, and one contour that absorbs all edges.
inline Workload contour_of_edges(std::uint64_t n)
{
  Workload work;
  std::vector<Object> const entities = work.make(n), edges = work.make(n);
  for (std::uint64_t i = 0; i < n; ++i)
    work.add({entities[i]}, {edges[i]}, Dep::CONVERSION);
  work.results = work.make(1);
  work.add(edges, work.results, Dep::ABSORPTION);
  return work;
}

/// n entities, each of which contains four edges, and one contour that absorbs all edges.
inline Workload contour_of_shapes(std::uint64_t n)
{
  Workload work;
  std::vector<Object> edges;
  for (Object entity : work.make(n))
  {
    std::vector<Object> const own = work.make(4);
    work.add({entity}, own, Dep::CONTAINMENT);
    edges.insert(edges.end(), own.begin(), own.end());
  }
  work.results = work.make(1);
  work.add(edges, work.results, Dep::ABSORPTION);
  return work;
}

inline double bytes_in_use()
{
  struct mallinfo2 const info = mallinfo2();
  return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

/// Counts the processor time of this thread, so that neighbours on the machine don't count.
class Stopwatch
{
public:
  /// The nanoseconds since the last call.
  double lap()
  {
    double const before = std::exchange(start, now());
    return start - before;
  }

private:
  static double now()
  {
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
  }

  double start = now();
};

#endif
