// Maps stand under every look-up of the library: processors by thread, values by processor, nodes by object.
// The question is what a look-up and a change cost beside the standard library's map, which is a red-black
// tree too, and beside a B-tree and a sorted array where there is one to compare with.

#include "ozmap.h"

#include <benchmark/benchmark.h>

#ifdef OZ_BENCHMARK_BTREE
#include <absl/container/btree_map.h>
#endif

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
/// The operations as each peer spells them.
template <class K>
class OzPeer
{
public:
  typedef K Key;
  void insert(K key, int value) { map[key] = value; }
  int find(K key) { return map.at(key); }
  void remove(K key) { map.remove(key); }
  int sum() const
  {
    int total = 0;
    OzMapIterator<K, int> i(&map);
    for (i.reset(); !i.done(); i.next())
      total += i.current();
    return total;
  }

private:
  OzMap<K, int> map;
};

template <class Map>
class StandardPeer
{
public:
  typedef typename Map::key_type Key;
  void insert(Key key, int value) { map[key] = value; }
  int find(Key key) { return map.find(key)->second; }
  void remove(Key key) { map.erase(key); }
  int sum() const
  {
    int total = 0;
    for (auto const& entry : map)
      total += entry.second;
    return total;
  }

private:
  Map map;
};

/// What a look-up in sorted memory costs, for a collection that is complete before it is asked.
template <class K>
class SortedArrayPeer
{
public:
  typedef K Key;
  void insert(K key, int value) { entries.emplace_back(key, value); }
  void complete() { std::sort(entries.begin(), entries.end()); }
  int find(K key)
  {
    return std::lower_bound(entries.begin(), entries.end(), key,
                            [](std::pair<K, int> const& entry, K wanted) { return entry.first < wanted; })
        ->second;
  }
  int sum() const
  {
    int total = 0;
    for (auto const& entry : entries)
      total += entry.second;
    return total;
  }

private:
  std::vector<std::pair<K, int>> entries;
};

template <class Peer>
auto complete(Peer& peer, int) -> decltype(peer.complete())
{
  peer.complete();
}
template <class Peer>
void complete(Peer&, long)
{
}

/// `n` different keys in random order.
template <class K>
std::vector<K> random_keys(std::int64_t n)
{
  std::vector<K> keys;
  if constexpr (std::is_pointer_v<K>)
  {
    // Addresses as objects on the heap have them, 32 bytes apart.
    static std::vector<char> const memory(std::size_t(32) << 20);
    for (std::int64_t i = 0; i < n; ++i)
      keys.push_back(memory.data() + 32 * i);
  }
  else
  {
    for (std::int64_t i = 0; i < n; ++i)
      keys.push_back(static_cast<K>(i * 7));
  }
  std::shuffle(keys.begin(), keys.end(), std::mt19937(12345));
  return keys;
}

/// The same keys in as many orders as it takes that no branch predictor learns them by heart.
template <class K>
std::vector<std::vector<K>> random_orders(std::vector<K> keys, unsigned seed)
{
  std::mt19937 random(seed);
  std::vector<std::vector<K>> orders;
  for (std::size_t total = 0; total < (1 << 17); total += keys.size())
  {
    std::shuffle(keys.begin(), keys.end(), random);
    orders.push_back(keys);
  }
  return orders;
}

/// More questions than a branch predictor can learn by heart.
template <class K>
std::vector<K> random_questions(std::vector<K> const& keys)
{
  std::mt19937 random(54321);
  std::vector<K> questions;
  for (std::size_t i = std::max<std::size_t>(keys.size(), 1 << 16); i != 0; --i)
    questions.push_back(keys[random() % keys.size()]);
  return questions;
}

template <class Peer, class Keys>
void fill(Peer& peer, Keys const& keys)
{
  int value = 0;
  for (auto const key : keys)
    peer.insert(key, ++value);
  complete(peer, 0);
}

template <class Peer>
void Insert(benchmark::State& state)
{
  auto const orders = random_orders(random_keys<typename Peer::Key>(state.range(0)), 111);
  std::size_t next = 0;
  for (auto _ : state)
  {
    auto peer = std::make_unique<Peer>();
    fill(*peer, orders[next++ % orders.size()]);
    benchmark::DoNotOptimize(*peer);
    state.PauseTiming();
    peer.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Peer>
void Find(benchmark::State& state)
{
  auto const keys = random_keys<typename Peer::Key>(state.range(0));
  auto const questions = random_questions(keys);
  Peer peer;
  fill(peer, keys);
  std::size_t next = 0;
  for (auto _ : state)
  {
    benchmark::DoNotOptimize(peer.find(questions[next]));
    next = next + 1 == questions.size() ? 0 : next + 1;
  }
  state.SetItemsProcessed(state.iterations());
}

template <class Peer>
void Iterate(benchmark::State& state)
{
  Peer peer;
  fill(peer, random_keys<typename Peer::Key>(state.range(0)));
  for (auto _ : state)
    benchmark::DoNotOptimize(peer.sum());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Peer>
void Remove(benchmark::State& state)
{
  auto const keys = random_keys<typename Peer::Key>(state.range(0));
  auto const orders = random_orders(keys, 777);
  std::size_t next = 0;
  for (auto _ : state)
  {
    state.PauseTiming();
    Peer peer;
    fill(peer, keys);
    state.ResumeTiming();
    for (auto const key : orders[next++ % orders.size()])
      peer.remove(key);
    benchmark::DoNotOptimize(peer);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Peer>
void Copy(benchmark::State& state)
{
  Peer peer;
  fill(peer, random_keys<typename Peer::Key>(state.range(0)));
  for (auto _ : state)
  {
    auto copy = std::make_unique<Peer>(peer);
    benchmark::DoNotOptimize(*copy);
    state.PauseTiming();
    copy.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

typedef char const* Pointer;
typedef OzPeer<int> OzMapInt;
typedef OzPeer<Pointer> OzMapPointer;
typedef StandardPeer<std::map<int, int>> StdMapInt;
typedef StandardPeer<std::map<Pointer, int>> StdMapPointer;
typedef SortedArrayPeer<int> SortedArrayInt;
typedef SortedArrayPeer<Pointer> SortedArrayPointer;

#define OZ_SIZES Arg(1000)->Arg(100000)->Arg(1000000)
#define OZ_CHANGES(Peer)                                                                                     \
  BENCHMARK(Insert<Peer>)->OZ_SIZES;                                                                         \
  BENCHMARK(Remove<Peer>)->OZ_SIZES;                                                                         \
  BENCHMARK(Copy<Peer>)->OZ_SIZES
#define OZ_SEARCHES(Peer)                                                                                    \
  BENCHMARK(Find<Peer>)->OZ_SIZES;                                                                           \
  BENCHMARK(Iterate<Peer>)->OZ_SIZES

OZ_CHANGES(OzMapInt);
OZ_CHANGES(StdMapInt);
OZ_CHANGES(OzMapPointer);
OZ_CHANGES(StdMapPointer);
OZ_SEARCHES(OzMapInt);
OZ_SEARCHES(StdMapInt);
OZ_SEARCHES(SortedArrayInt);
OZ_SEARCHES(OzMapPointer);
OZ_SEARCHES(StdMapPointer);
OZ_SEARCHES(SortedArrayPointer);

#ifdef OZ_BENCHMARK_BTREE
typedef StandardPeer<absl::btree_map<int, int>> BTreeInt;
typedef StandardPeer<absl::btree_map<Pointer, int>> BTreePointer;
OZ_CHANGES(BTreeInt);
OZ_CHANGES(BTreePointer);
OZ_SEARCHES(BTreeInt);
OZ_SEARCHES(BTreePointer);
#endif
} // namespace
