// Dumps of a graph order its nodes and links by a priority queue, and whatever works best first is built on
// one. The peer is the standard queue over pointers to nodes with the same virtual comparison: what a program
// would have that keeps its nodes in place and lets them say their order.

#include "ozpriqueue.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <queue>
#include <random>
#include <vector>

namespace
{
typedef OzPriQueueNode<int, int> Node;

struct Below
{
  bool operator()(Node const* a, Node const* b) const { return a->priority < b->priority; }
};

/// The standard queue, which owns its nodes as the library's does.
class PointerQueue
{
public:
  void insert(int value, int priority) { queue.push(new Node(value, priority)); }
  int extract()
  {
    Node* const node = queue.top();
    queue.pop();
    int const value = node->value;
    delete node;
    return value;
  }

private:
  std::priority_queue<Node*, std::vector<Node*>, Below> queue;
};

std::vector<int> random_priorities(std::int64_t n)
{
  std::mt19937 random(4711);
  std::vector<int> priorities(static_cast<std::size_t>(n));
  for (int& priority : priorities)
    priority = static_cast<int>(random() >> 1);
  return priorities;
}

template <class Queue>
void PushThenPop(benchmark::State& state)
{
  std::vector<int> const priorities = random_priorities(state.range(0));
  for (auto _ : state)
  {
    Queue queue;
    for (int const priority : priorities)
      queue.insert(priority, priority);
    for (std::size_t i = 0; i < priorities.size(); ++i)
      benchmark::DoNotOptimize(queue.extract());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(PushThenPop<OzPriQueue<int, int>>)->Arg(1000)->Arg(1000000);
BENCHMARK(PushThenPop<PointerQueue>)->Arg(1000)->Arg(1000000);

// Bulk loading beside insertion one by one.
void AddAndBuild(benchmark::State& state)
{
  std::vector<int> const priorities = random_priorities(state.range(0));
  for (auto _ : state)
  {
    OzPriQueue<int, int> queue;
    for (int const priority : priorities)
      queue.add(priority, priority);
    queue.build_heap();
    benchmark::DoNotOptimize(queue.first_node());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(AddAndBuild)->Arg(1000)->Arg(1000000);

void MakeStandardHeap(benchmark::State& state)
{
  std::vector<int> const priorities = random_priorities(state.range(0));
  for (auto _ : state)
  {
    std::vector<Node*> nodes;
    for (int const priority : priorities)
      nodes.push_back(new Node(priority, priority));
    std::make_heap(nodes.begin(), nodes.end(), Below());
    benchmark::DoNotOptimize(nodes.front());
    for (Node const* const node : nodes)
      delete node;
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(MakeStandardHeap)->Arg(1000)->Arg(1000000);
} // namespace
