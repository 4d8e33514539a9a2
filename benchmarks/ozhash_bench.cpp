// Records are kept by keys without an order: how dear is it to put one in, to find it, and to walk over all? The
// peer is the standard multiset of pointers to the same records, with the same hash function and equality,
// asked through the same virtual functions, and with as many buckets.

#include "ozhash.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <unordered_set>
#include <vector>

// Not in the unnamed namespace: there the compiler would see that no class derives from it, and call its functions
// directly where the peer asks for them.
class Record : public OzHashTableNode
{
public:
  explicit Record(std::uint32_t k)
    : key(k)
  {
  }
  bool equal(OzHashTableNode const* query) const override
  {
    return static_cast<Record const*>(query)->key == key;
  }
  OzHashTableNode* clone() const override { return new Record(*this); }

  std::uint32_t key;
};

namespace
{
class OzTable : public OzHashTable
{
public:
  explicit OzTable(std::int64_t n)
    : OzHashTable(static_cast<int>(n))
  {
  }
  void insert(Record* record) { insert_node(record); }
  bool contains(Record const& query) const { return find_node(&query) != nullptr; }
  std::uint32_t sum() const
  {
    std::uint32_t result = 0;
    int cell = 0;
    for (OzHashTableNode* node = first_node(cell); node != nullptr; node = next_node(node, cell))
      result += static_cast<Record*>(node)->key;
    return result;
  }

protected:
  std::uint32_t hash_value(OzHashTableNode const* node) const override
  {
    return static_cast<Record const*>(node)->key;
  }
};

class StdTable
{
public:
  explicit StdTable(std::int64_t n)
    : records(static_cast<std::size_t>(n))
  {
    records.max_load_factor(1000.0f);
  }
  StdTable(StdTable const&) = delete;
  StdTable& operator=(StdTable const&) = delete;
  ~StdTable()
  {
    for (Record* const record : records)
      delete record;
  }
  void insert(Record* record) { records.insert(record); }
  bool contains(Record const& query) const
  {
    return records.find(const_cast<Record*>(&query)) != records.end();
  }
  std::uint32_t sum() const
  {
    std::uint32_t result = 0;
    for (Record const* const record : records)
      result += record->key;
    return result;
  }

private:
  struct Hash
  {
    std::size_t operator()(Record const* record) const { return record->key; }
  };
  struct Equal
  {
    bool operator()(Record const* a, Record const* b) const { return a->equal(b); }
  };
  std::unordered_multiset<Record*, Hash, Equal> records;
};

std::vector<std::uint32_t> random_keys(std::int64_t n)
{
  std::mt19937 random(4711);
  std::vector<std::uint32_t> keys(static_cast<std::size_t>(n));
  for (std::uint32_t& key : keys)
    key = static_cast<std::uint32_t>(random());
  return keys;
}

/// One record for each cell on the average.
template <class Table>
std::unique_ptr<Table> filled(std::vector<std::uint32_t> const& keys)
{
  std::unique_ptr<Table> table = std::make_unique<Table>(static_cast<std::int64_t>(keys.size()));
  for (std::uint32_t const key : keys)
    table->insert(new Record(key));
  return table;
}

template <class Table>
void FillAndDestroy(benchmark::State& state)
{
  std::vector<std::uint32_t> const keys = random_keys(state.range(0));
  for (auto _ : state)
    benchmark::DoNotOptimize(filled<Table>(keys).get());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(FillAndDestroy<OzTable>)->Arg(1000)->Arg(100000);
BENCHMARK(FillAndDestroy<StdTable>)->Arg(1000)->Arg(100000);

// Every other key that is asked for is in the table.
template <class Table>
void Find(benchmark::State& state)
{
  std::vector<std::uint32_t> const keys = random_keys(2 * state.range(0));
  std::vector<std::uint32_t> stored;
  for (std::size_t i = 0; i < keys.size(); i += 2)
    stored.push_back(keys[i]);
  std::unique_ptr<Table> const table = filled<Table>(stored);
  std::size_t next = 0;
  for (auto _ : state)
  {
    Record const query(keys[next]);
    benchmark::DoNotOptimize(table->contains(query));
    next = next + 1 < keys.size() ? next + 1 : 0;
  }
}
BENCHMARK(Find<OzTable>)->Arg(1000)->Arg(100000);
BENCHMARK(Find<StdTable>)->Arg(1000)->Arg(100000);

template <class Table>
void WalkOverAll(benchmark::State& state)
{
  std::unique_ptr<Table> const table = filled<Table>(random_keys(state.range(0)));
  for (auto _ : state)
    benchmark::DoNotOptimize(table->sum());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(WalkOverAll<OzTable>)->Arg(1000)->Arg(100000);
BENCHMARK(WalkOverAll<StdTable>)->Arg(1000)->Arg(100000);
} // namespace
