#include "ozarray.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

// Almost everything in the library is stored in arrays: what do growing, and the check on each access,
// cost against std::vector, which does not check?

namespace
{
constexpr std::int64_t SMALL = 1000;
constexpr std::int64_t LARGE = 1000000;

void add(OzArray<int>& array, int value)
{
  array.append(value);
}

void add(std::vector<int>& vector, int value)
{
  vector.push_back(value);
}

template <class Array>
Array make_numbers(std::int64_t n)
{
  Array array;
  for (int i = 0; i < n; ++i)
    add(array, i % 7);
  return array;
}

template <class Array>
void Append(benchmark::State& state)
{
  int const n = static_cast<int>(state.range(0));
  for (auto _ : state)
  {
    Array array;
    for (int i = 0; i < n; ++i)
      add(array, i);
    benchmark::DoNotOptimize(array.begin());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

// The sums are functions of their own, at the start of a cache line: where a loop of four instructions lies can
// double its time, and that is not what is asked here.

// The usual loop. That the index is in range follows from its condition, so the check falls away.
template <class Array>
__attribute__((noinline, aligned(64))) std::int64_t sum_by_index(Array const& array)
{
  std::int64_t sum = 0;
  for (std::uint64_t i = 0; i < array.size(); ++i)
    sum += array[i];
  return sum;
}

// The end comes from elsewhere, so each access is checked.
template <class Array>
__attribute__((noinline, aligned(64))) std::int64_t sum_up_to(Array const& array, std::uint64_t n)
{
  std::int64_t sum = 0;
  for (std::uint64_t i = 0; i < n; ++i)
    sum += array[i];
  return sum;
}

template <class Array>
__attribute__((noinline, aligned(64))) std::int64_t sum_of_range(Array const& array)
{
  std::int64_t sum = 0;
  for (int element : array)
    sum += element;
  return sum;
}

template <class Array>
void ReadByIndex(benchmark::State& state)
{
  Array const array = make_numbers<Array>(state.range(0));
  for (auto _ : state)
    benchmark::DoNotOptimize(sum_by_index(array));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Array>
void ReadUpTo(benchmark::State& state)
{
  Array const array = make_numbers<Array>(state.range(0));
  for (auto _ : state)
    benchmark::DoNotOptimize(sum_up_to(array, static_cast<std::uint64_t>(state.range(0))));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ignore(char const*, int) {}

// With a handler each access also compares its index. Two peers are of interest: the same loop over a vector,
// and this one without a handler.
void ReadUpToUnderAHandler(benchmark::State& state)
{
  dkb_assertion_handler = &ignore;
  ReadUpTo<OzArray<int>>(state);
  dkb_assertion_handler = nullptr;
}

template <class Array>
void Iterate(benchmark::State& state)
{
  Array const array = make_numbers<Array>(state.range(0));
  for (auto _ : state)
    benchmark::DoNotOptimize(sum_of_range(array));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(Append<OzArray<int>>)->Arg(SMALL)->Arg(LARGE);
BENCHMARK(Append<std::vector<int>>)->Arg(SMALL)->Arg(LARGE);
BENCHMARK(ReadByIndex<OzArray<int>>)->Arg(SMALL)->Arg(LARGE);
BENCHMARK(ReadByIndex<std::vector<int>>)->Arg(SMALL)->Arg(LARGE);
BENCHMARK(ReadUpTo<OzArray<int>>)->Arg(SMALL)->Arg(LARGE);
BENCHMARK(ReadUpToUnderAHandler)->Arg(SMALL)->Arg(LARGE);
BENCHMARK(ReadUpTo<std::vector<int>>)->Arg(SMALL)->Arg(LARGE);
BENCHMARK(Iterate<OzArray<int>>)->Arg(SMALL)->Arg(LARGE);
BENCHMARK(Iterate<std::vector<int>>)->Arg(SMALL)->Arg(LARGE);
} // namespace
