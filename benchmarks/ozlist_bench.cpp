// Attributes and reactors of a model object are held in lists, and every notification walks one. The peer is
// the standard list; for indexed access, which it hasn't got, a walk from its beginning.

#include "ozlist.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <list>

namespace
{
void append(OzList<int>& list, int value)
{
  list.append(value);
}
void append(std::list<int>& list, int value)
{
  list.push_back(value);
}

template <class List>
List make(std::int64_t n)
{
  List list;
  for (std::int64_t i = 0; i < n; ++i)
    append(list, static_cast<int>(i));
  return list;
}

// Building and destroying, one allocation an item.
template <class List>
void Build(benchmark::State& state)
{
  for (auto _ : state)
    benchmark::DoNotOptimize(make<List>(state.range(0)));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Build<OzList<int>>)->Arg(10)->Arg(10000);
BENCHMARK(Build<std::list<int>>)->Arg(10)->Arg(10000);

template <class List>
void Walk(benchmark::State& state)
{
  List const list = make<List>(state.range(0));
  for (auto _ : state)
  {
    int sum = 0;
    for (int const value : list)
      sum += value;
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Walk<OzList<int>>)->Arg(10)->Arg(10000);
BENCHMARK(Walk<std::list<int>>)->Arg(10)->Arg(10000);

// A rising loop over the indices.
void WalkByIndex(benchmark::State& state)
{
  OzList<int> const list = make<OzList<int>>(state.range(0));
  for (auto _ : state)
  {
    int sum = 0;
    for (std::uint64_t i = 0; i < list.count(); ++i)
      sum += list[i];
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(WalkByIndex)->Arg(10)->Arg(10000);

// Looking for the last value, and putting it back.
void remove_first_equal(OzList<int>& list, int value)
{
  list.remove(value);
}
void remove_first_equal(std::list<int>& list, int value)
{
  list.erase(std::find(list.begin(), list.end(), value));
}

template <class List>
void RemoveLast(benchmark::State& state)
{
  List list = make<List>(state.range(0));
  int const last = static_cast<int>(state.range(0)) - 1;
  for (auto _ : state)
  {
    remove_first_equal(list, last);
    append(list, last);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(RemoveLast<OzList<int>>)->Arg(10)->Arg(10000);
BENCHMARK(RemoveLast<std::list<int>>)->Arg(10)->Arg(10000);

// The walk of a graph, breadth first.
void PassThroughOzQueue(benchmark::State& state)
{
  OzQueue<int> queue;
  for (std::int64_t i = 0; i < state.range(0); ++i)
    queue.enqueue(0);
  for (auto _ : state)
  {
    queue.enqueue(1);
    benchmark::DoNotOptimize(queue.dequeue());
  }
}
BENCHMARK(PassThroughOzQueue)->Arg(10)->Arg(10000);

void PassThroughStdList(benchmark::State& state)
{
  std::list<int> list(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state)
  {
    list.push_back(1);
    int front = list.front();
    benchmark::DoNotOptimize(front);
    list.pop_front();
  }
}
BENCHMARK(PassThroughStdList)->Arg(10)->Arg(10000);
} // namespace
