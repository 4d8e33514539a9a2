// Does it pay to cut small blocks from chunks? They are 16 to 256 bytes large, in multiples of 8 and in random
// order. Three lives: all blocks are made and go at once; all are made and go one by one, the last first; and
// a window slides over them, in which each new block lets the oldest one go. Peers are malloc and the two pools
// of the standard library. A pool that goes at once gives its memory back to the system, or keeps it.

#include "ozchunk.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory_resource>
#include <random>
#include <vector>

namespace
{
constexpr std::uint64_t CHUNK_BYTES = 64 * 1024;
constexpr std::size_t WINDOW = 1000;

std::vector<std::uint64_t> random_sizes(std::int64_t n)
{
  std::mt19937 random(11);
  std::uniform_int_distribution<std::uint64_t> units(2, 32);
  std::vector<std::uint64_t> sizes;
  for (std::int64_t i = 0; i < n; ++i)
    sizes.push_back(8 * units(random));
  return sizes;
}

class Malloc
{
public:
  explicit Malloc(std::uint64_t) {}
  void* allocate(std::uint64_t size) { return std::malloc(size); }
  void release(void* block, std::uint64_t) { std::free(block); }
};

template <bool Keep>
class Chunks
{
public:
  explicit Chunks(std::uint64_t) {}
  ~Chunks()
  {
    OzChunk::OzChunkClear(active, nullptr);
    OzChunk::OzChunkClear(spare, nullptr);
  }
  Chunks(Chunks const&) = delete;
  Chunks& operator=(Chunks const&) = delete;

  void* allocate(std::uint64_t size)
  {
    return OzChunk::OzChunkMalloc(counter, active, spare, CHUNK_BYTES, size, nullptr);
  }
  void release(void* block, std::uint64_t) { OzChunk::OzChunkFree(active, block, Keep, spare, nullptr); }
  void release_all() { OzChunk::OzChunkReinit(active, spare, Keep, nullptr); }

private:
  std::uint64_t counter = 0;
  OzChunk* active = nullptr;
  OzChunk* spare = nullptr;
};

class Monotonic
{
public:
  explicit Monotonic(std::uint64_t)
    : resource(CHUNK_BYTES)
  {
  }
  void* allocate(std::uint64_t size) { return resource.allocate(size, 8); }
  void release_all() { resource.release(); }

private:
  std::pmr::monotonic_buffer_resource resource;
};

/// Keeps its memory by beginning with a buffer that all blocks fit into.
class MonotonicInBuffer
{
public:
  explicit MonotonicInBuffer(std::uint64_t bytes)
    : buffer(bytes)
    , resource(buffer.data(), buffer.size())
  {
  }
  void* allocate(std::uint64_t size) { return resource.allocate(size, 8); }
  void release_all() { resource.release(); }

private:
  std::vector<std::byte> buffer;
  std::pmr::monotonic_buffer_resource resource;
};

class Pool
{
public:
  explicit Pool(std::uint64_t) {}
  void* allocate(std::uint64_t size) { return resource.allocate(size, 8); }
  void release(void* block, std::uint64_t size) { resource.deallocate(block, size, 8); }
  void release_all() { resource.release(); }

private:
  std::pmr::unsynchronized_pool_resource resource;
};

std::uint64_t sum(std::vector<std::uint64_t> const& sizes)
{
  std::uint64_t total = 0;
  for (std::uint64_t const size : sizes)
    total += size;
  return total;
}

template <class Source>
void ReleaseAtOnce(benchmark::State& state)
{
  std::vector<std::uint64_t> const sizes = random_sizes(state.range(0));
  Source source(sum(sizes));
  for (auto _ : state)
  {
    for (std::uint64_t const size : sizes)
      benchmark::DoNotOptimize(source.allocate(size));
    source.release_all();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Source>
void LastInFirstOut(benchmark::State& state)
{
  std::vector<std::uint64_t> const sizes = random_sizes(state.range(0));
  std::vector<void*> blocks(sizes.size());
  Source source(sum(sizes));
  for (auto _ : state)
  {
    for (std::size_t i = 0; i < sizes.size(); ++i)
      blocks[i] = source.allocate(sizes[i]);
    for (std::size_t i = sizes.size(); i-- > 0;)
      source.release(blocks[i], sizes[i]);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Source>
void SlidingWindow(benchmark::State& state)
{
  std::vector<std::uint64_t> const sizes = random_sizes(state.range(0));
  std::vector<void*> blocks(sizes.size());
  Source source(sum(sizes));
  for (auto _ : state)
  {
    for (std::size_t i = 0; i < sizes.size(); ++i)
    {
      blocks[i] = source.allocate(sizes[i]);
      if (i >= WINDOW)
        source.release(blocks[i - WINDOW], sizes[i - WINDOW]);
    }
    for (std::size_t i = sizes.size() - WINDOW; i < sizes.size(); ++i)
      source.release(blocks[i], sizes[i]);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
} // namespace

BENCHMARK(ReleaseAtOnce<Chunks<false>>)->Arg(1000)->Arg(10000);
BENCHMARK(ReleaseAtOnce<Monotonic>)->Arg(1000)->Arg(10000);
BENCHMARK(ReleaseAtOnce<Chunks<true>>)->Arg(1000)->Arg(10000);
BENCHMARK(ReleaseAtOnce<MonotonicInBuffer>)->Arg(1000)->Arg(10000);
BENCHMARK(ReleaseAtOnce<Pool>)->Arg(1000)->Arg(10000);
BENCHMARK(LastInFirstOut<Chunks<true>>)->Arg(1000)->Arg(10000);
BENCHMARK(LastInFirstOut<Pool>)->Arg(1000)->Arg(10000);
BENCHMARK(LastInFirstOut<Malloc>)->Arg(1000)->Arg(10000);
BENCHMARK(SlidingWindow<Chunks<true>>)->Arg(10000)->Arg(100000);
BENCHMARK(SlidingWindow<Pool>)->Arg(10000)->Arg(100000);
BENCHMARK(SlidingWindow<Malloc>)->Arg(10000)->Arg(100000);
