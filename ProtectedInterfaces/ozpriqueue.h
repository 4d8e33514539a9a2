#ifndef OZPRIQUEUE_H
#define OZPRIQUEUE_H

#include "ozheap.h"

/// A value with its priority. Priorities are compared by `>` or `<` and need no other operation.
template <class K, class V>
class OZ_EXPORT OzPriQueueNode : public OzHeapNode
{
public:
  OzPriQueueNode(K const& v, V const& p)
    : value(v)
    , priority(p)
  {
  }

  bool precedes(OzHeapNode const* other, bool descending) const override;
  OzHeapNode* clone() const override;

  K value;
  V priority;
};

/// A queue that gives its values back in the order of their priorities; see OzHeap.
///
/// `count` follows `insert`, `add` and `extract` only: what is done to the nodes by the operations of the
/// heap, merges and removals among them, is not counted.
///
/// Ownership: values are copied in and out; of a pointer, not what it points to.
/// Threads: one at a time.
/// Reports: `extract` from an empty queue, or before build_heap has followed on `add`: the heap reports, then
/// the queue.
/// Cost: one allocation for each value.
template <class K, class V>
class OZ_EXPORT OzPriQueue : public OzHeap
{
public:
  /// With `descending` true the highest priority comes first, with false the lowest.
  explicit OzPriQueue(bool descending_order = true);

  void insert(K const& value, V const& priority);
  /// Adds without keeping order: build_heap must follow before anything is extracted.
  void add(K const& value, V const& priority);
  /// The value that comes first, which is removed. K(), after a report, if there is none.
  K extract();

  int count() const { return count_; }

protected:
  int count_ = 0; // beside heap_size, which is -1 while the array is no heap
};

#include "ozpriqueue_t.h"

#endif
