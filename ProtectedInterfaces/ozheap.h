#ifndef OZHEAP_H
#define OZHEAP_H

#include "ozarray.h"
#include "ozexport.h"

#include <cstdint>

/// What a heap orders. Nodes of one heap know how to compare themselves with each other.
class OZ_EXPORT OzHeapNode
{
public:
  OzHeapNode();
  OzHeapNode(OzHeapNode const& other);
  OzHeapNode& operator=(OzHeapNode const& other);
  virtual ~OzHeapNode();

  /// True when this node must stand above `other` in a heap of this direction; false for equals. A strict weak
  /// order: how often and in which pairs nodes are asked is not fixed.
  virtual bool precedes(OzHeapNode const* other, bool descending) const = 0;
  /// A new node of the same type and content, which the caller owns.
  virtual OzHeapNode* clone() const = 0;
};

/// A binary heap of nodes in one array, the first of which precedes all others. The order is that of
/// OzHeapNode::precedes and a direction; of nodes that precede each other in neither way any may be first.
///
/// Bulk loading is cheaper than insertion one by one: after `add_node` the array is in no order, which
/// `heap_size` of -1 says, and `build_heap` makes it a heap. `sort_nodes` leaves the array sorted, so that it
/// is no heap either.
///
/// All writes to entries go through `move`, `attach`, `detach` and `exchange`, so that a derived heap can
/// follow where its nodes are.
///
/// Null entries, which `add_node` and `remove_all_nodes` leave, are not reported: a null precedes nothing, and
/// sinks below the nodes.
///
/// Ownership: the heap owns its nodes. Extraction hands one to the caller, a merge hands them to the other
/// heap, a copy clones them.
/// Threads: one at a time.
/// Reports: use of an array that is no heap, and extraction from an empty one, each as its operation says;
/// a bad index, by the array.
/// Failure: without memory std::bad_alloc, and the heap is as it was; the caller then still owns the node.
/// Cost: `insert_node` and `extract_first_node` O(log n) comparisons, without allocation but for the growth
/// of the array; `build_heap` O(n); `sort_nodes` O(n log n), in place. Nodes never move in memory.
class OZ_EXPORT OzHeap
{
public:
  OzHeap();
  /// With `descending` true the highest priority comes first, with false the lowest.
  explicit OzHeap(bool descending_order);
  /// Clones the nodes. Their order in the array, and whether it is a heap, are as in `other`.
  OzHeap(OzHeap const& other);
  OzHeap& operator=(OzHeap const& other);
  virtual ~OzHeap();

protected:
  /// Entry `i` becomes `node`.
  virtual void move(int i, void* node);
  /// Entry `i`, which may be one past the last, becomes `node`.
  virtual void attach(int i, void* node);
  /// Entry `i`, which is `node`, becomes null.
  virtual void detach(int i, void* node);
  /// Two entries swap their nodes.
  virtual void exchange(void*& a, void*& b);

public:
  /// Null is ignored. Into an array that is no heap the node is appended, after a report, and the array
  /// remains no heap.
  void insert_node(OzHeapNode* node);
  /// Appends the node, which may be null. The array is no heap from now on: `build_heap` ends that.
  void add_node(OzHeapNode* node);

  /// The node that precedes all others, which the heap still owns. If the array is no heap, that is reported
  /// and its first entry returned. An empty one is reported by the array and then read all the same.
  OzHeapNode* first_node() const;
  /// Takes that node out and hands it to the caller. Null, after a report, if there is none or the array is
  /// no heap.
  OzHeapNode* extract_first_node();

  void build_heap();

  /// Sorts the array: the node that would be extracted first is last. It is no heap afterwards.
  void sort_nodes();

  /// Takes over all nodes of `other`, down to the first null. A merge with itself is ignored. Where either
  /// array is no heap, that is reported, and the operations by which nodes go across then do what they do.
  void merge_nodes(OzHeap& other);

  /// Deletes all nodes. The array keeps its size and holds nulls, which the next insertion drops.
  void remove_all_nodes();

protected:
  /// Lets the node of entry `i` sink to where it belongs, if the entries below are in order.
  void heapify(int i);
  int parent(int i) const;
  int left_child(int i) const;
  int right_child(int i) const;
  /// Deletes a node that may be null.
  void delete_heap_node(OzHeapNode* node);

  int heap_size = 0; // entries of `nodes` that are in heap order; -1 while the array is no heap
  bool descending = true;
  OzArray<void*> nodes; // OzHeapNode*, may be null
};

#include "ozheap_i.h"

#endif
