// Requests of running tasks pass through a deque under a lock, so that every nanosecond in it is one that the
// other threads wait. The peer is the standard deque, whose blocks have the same size.

#include "ozdeque.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <deque>
#include <vector>

namespace
{
std::vector<int> const targets(1024);

int const* front(OzDeque<int const*>& deque)
{
  return deque.front();
}
int const* front(std::deque<int const*>& deque)
{
  return deque.front();
}

// All in, then all out.
template <class Deque>
void FillAndDrain(benchmark::State& state)
{
  std::int64_t const n = state.range(0);
  for (auto _ : state)
  {
    Deque deque;
    for (std::int64_t i = 0; i < n; ++i)
      deque.push_back(&targets[static_cast<std::size_t>(i) % targets.size()]);
    for (std::int64_t i = 0; i < n; ++i)
    {
      benchmark::DoNotOptimize(front(deque));
      deque.pop_front();
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(FillAndDrain<OzDeque<int const*>>)->Arg(1000)->Arg(1000000);
BENCHMARK(FillAndDrain<std::deque<int const*>>)->Arg(1000)->Arg(1000000);

// One in, one out, at a constant length: what a queue in use does.
template <class Deque>
void PassThrough(benchmark::State& state)
{
  Deque deque;
  for (std::int64_t i = 0; i < state.range(0); ++i)
    deque.push_back(&targets[static_cast<std::size_t>(i) % targets.size()]);
  std::size_t next = 0;
  for (auto _ : state)
  {
    deque.push_back(&targets[next++ % targets.size()]);
    benchmark::DoNotOptimize(front(deque));
    deque.pop_front();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(PassThrough<OzDeque<int const*>>)->Arg(10)->Arg(10000);
BENCHMARK(PassThrough<std::deque<int const*>>)->Arg(10)->Arg(10000);
} // namespace
