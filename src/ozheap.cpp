#include "ozheap.h"

#include "ozassert.h"

#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace
{
std::uint64_t entry(int i)
{
  return static_cast<std::uint64_t>(i);
}

/// Whether `a` must stand above `b`. Either may be null, which belongs below everything else.
bool must_stand_above(void const* a, void const* b, bool descending)
{
  if (a == nullptr)
    return false;
  return b == nullptr ||
         static_cast<OzHeapNode const*>(a)->precedes(static_cast<OzHeapNode const*>(b), descending);
}

/// Where the way from entry `i` over the better child of each entry leaves the part of the tree in which
/// entries have two children. Of equal children the left one is the better.
int follow_way(void* const* entries, int size, int i, bool descending)
{
  // The choice is an addition rather than a branch: it would be predicted wrongly each other time.
  while (i < (size - 1) / 2)
  {
    int const left = 2 * i + 1;
    i = left + static_cast<int>(must_stand_above(entries[left + 1], entries[left], descending));
  }
  return i;
}

/// The same in a heap whose nodes no cache holds, where waiting for memory is all that counts.
int follow_long_way(void* const* entries, int size, int i, bool descending)
{
  while (i < (size - 1) / 2)
  {
    // Nodes are asked for three levels before they are compared, and the entries that point to them two
    // levels earlier.
    std::int64_t const nodes_from = (std::int64_t(i) + 1) * 8 - 1;
    std::int64_t const entries_from = (std::int64_t(i) + 1) * 32 - 1;
    if (nodes_from + 8 <= size)
    {
      for (std::int64_t j = nodes_from; j < nodes_from + 8; ++j)
        __builtin_prefetch(entries[j]);
    }
    if (entries_from + 32 <= size)
    {
      for (std::int64_t j = entries_from; j < entries_from + 32; j += 8)
        __builtin_prefetch(entries + j);
    }

    // Here the choice is a branch: the processor then goes on with the likelier child while it waits.
    int const left = 2 * i + 1;
    i = left;
    if (must_stand_above(entries[left + 1], entries[left], descending))
    {
      __asm__ volatile("" ::: "memory"); // keeps the compiler from making it an addition again
      i = left + 1;
    }
  }
  return i;
}

/// The last entry of the way down from entry `i` over the better child of each.
int last_of_way(void* const* entries, int size, int i, bool descending)
{
  constexpr int in_cache = 1 << 15; // nodes of 32 bytes
  i = size > in_cache ? follow_long_way(entries, size, i, descending)
                      : follow_way(entries, size, i, descending);
  // The way has left the entries with two children, so the last entry that has a child at all has but one.
  bool const only_child = i == size / 2 - 1;
  return only_child ? 2 * i + 1 : i;
}

/// The level of entry `i` in the tree.
int level(int i)
{
  return 31 - __builtin_clz(static_cast<unsigned>(i) + 1);
}
} // namespace

OzHeapNode::OzHeapNode() = default;
OzHeapNode::OzHeapNode(OzHeapNode const&) {}
OzHeapNode& OzHeapNode::operator=(OzHeapNode const&)
{
  return *this;
}
OzHeapNode::~OzHeapNode() = default;

OzHeap::OzHeap()
  : OzHeap(true)
{
}

OzHeap::OzHeap(bool descending_order)
  : descending(descending_order)
{
}

OzHeap::OzHeap(OzHeap const& other)
  : OzHeap(true)
{
  *this = other;
}

OzHeap& OzHeap::operator=(OzHeap const& other)
{
  if (this == &other)
    return *this;

  // All that can fail is done before the first of the old nodes goes.
  std::uint64_t const n = other.nodes.size();
  std::vector<std::unique_ptr<OzHeapNode>> clones(n);
  for (std::uint64_t i = 0; i < n; ++i)
  {
    if (other.nodes[i] != nullptr)
      clones[i].reset(static_cast<OzHeapNode const*>(other.nodes[i])->clone());
  }
  if (n > nodes.size())
    nodes.resize(n, true);

  remove_all_nodes();
  descending = other.descending;
  heap_size = other.heap_size;
  nodes.resize(n, true);
  for (std::uint64_t i = 0; i < n; ++i)
    attach(static_cast<int>(i), clones[i].release());
  return *this;
}

OzHeap::~OzHeap()
{
  remove_all_nodes();
}

void OzHeap::move(int i, void* node)
{
  nodes[entry(i)] = node;
}

void OzHeap::attach(int i, void* node)
{
  if (entry(i) == nodes.size())
  {
    nodes.append(node);
    return;
  }
  nodes[entry(i)] = node;
}

void OzHeap::detach(int i, void*)
{
  nodes[entry(i)] = nullptr;
}

void OzHeap::exchange(void*& a, void*& b)
{
  std::swap(a, b);
}

void OzHeap::insert_node(OzHeapNode* node)
{
  if (node == nullptr)
    return;
  OZ_ASSERT(heap_size != -1);
  if (heap_size == -1)
  {
    attach(static_cast<int>(nodes.size()), node);
    return;
  }
  if (heap_size == std::numeric_limits<int>::max())
    throw std::bad_alloc();

  nodes.resize(entry(heap_size) + 1, true);
  ++heap_size;
  // Entry i is the hole that the node goes into; whatever it must stand above comes down into it.
  int i = heap_size - 1;
  while (i > 0)
  {
    int const above = parent(i);
    if (!must_stand_above(node, nodes[entry(above)], descending))
      break;
    move(i, nodes[entry(above)]);
    i = above;
  }
  attach(i, node);
}

void OzHeap::add_node(OzHeapNode* node)
{
  heap_size = -1;
  attach(static_cast<int>(nodes.size()), node);
}

OzHeapNode* OzHeap::first_node() const
{
  OZ_ASSERT(heap_size != -1);
  return static_cast<OzHeapNode*>(nodes[0]);
}

OzHeapNode* OzHeap::extract_first_node()
{
  OZ_ASSERT(heap_size >= 1);
  if (heap_size < 1)
    return nullptr;

  OzHeapNode* const first = static_cast<OzHeapNode*>(nodes[0]);
  detach(0, first);
  if (heap_size > 1)
    move(0, nodes.last());
  nodes.remove_last();
  --heap_size;
  heapify(0);
  return first;
}

void OzHeap::build_heap()
{
  heap_size = static_cast<int>(nodes.size());
  for (int i = heap_size / 2 - 1; i >= 0; --i)
    heapify(i);
}

void OzHeap::sort_nodes()
{
  build_heap();
  for (int i = heap_size - 1; i >= 1; --i)
  {
    exchange(nodes[0], nodes[entry(i)]);
    --heap_size;
    heapify(0);
  }
  heap_size = -1;
}

void OzHeap::merge_nodes(OzHeap& other)
{
  if (this == &other)
    return;

  OZ_ASSERT(heap_size != -1 && other.heap_size != -1);
  while (other.heap_size != 0)
  {
    OzHeapNode* const node = other.extract_first_node();
    if (node == nullptr)
      return;
    try
    {
      insert_node(node);
    }
    catch (...)
    {
      other.insert_node(node); // into the place that it has just left
      throw;
    }
  }
}

void OzHeap::remove_all_nodes()
{
  heap_size = 0;
  int const n = static_cast<int>(nodes.size());
  for (int i = 0; i < n; ++i)
  {
    OzHeapNode* const node = static_cast<OzHeapNode*>(nodes[entry(i)]);
    detach(i, node);
    delete_heap_node(node);
  }
}

void OzHeap::heapify(int i)
{
  // A node that sinks mostly goes far down. So the way of the better children is followed to its end, with one
  // comparison a level, and the place on it is then looked for from below: each node of the way precedes the
  // next one or equals it, so the node goes below all that precede it.
  int const last = last_of_way(nodes.begin(), heap_size, i, descending);
  int place = last;
  while (place > i && !must_stand_above(nodes.begin()[place], nodes.begin()[i], descending))
    place = parent(place);

  // With entries counted from 1, the numbers on the way are the leading bits of the last one.
  int from = i;
  for (int depth = level(place) - level(i); depth > 0; --depth)
  {
    int const to = ((place + 1) >> (depth - 1)) - 1;
    exchange(nodes.begin()[from], nodes.begin()[to]);
    from = to;
  }
}

void OzHeap::delete_heap_node(OzHeapNode* node)
{
  delete node;
}
