#ifndef OZPRIQUEUE_T_H
#define OZPRIQUEUE_T_H

#include "ozpriqueue.h"

#include "ozassert.h"

#include <memory>

template <class K, class V>
bool OzPriQueueNode<K, V>::precedes(OzHeapNode const* other, bool descending) const
{
  V const& other_priority = static_cast<OzPriQueueNode const*>(other)->priority;
  return descending ? priority > other_priority : priority < other_priority;
}

template <class K, class V>
OzHeapNode* OzPriQueueNode<K, V>::clone() const
{
  return new OzPriQueueNode(*this);
}

template <class K, class V>
OzPriQueue<K, V>::OzPriQueue(bool descending_order)
  : OzHeap(descending_order)
{
}

template <class K, class V>
void OzPriQueue<K, V>::insert(K const& value, V const& priority)
{
  std::unique_ptr<OzHeapNode> node(new OzPriQueueNode<K, V>(value, priority));
  this->insert_node(node.get());
  static_cast<void>(node.release()); // the heap has it now
  ++count_;
}

template <class K, class V>
void OzPriQueue<K, V>::add(K const& value, V const& priority)
{
  std::unique_ptr<OzHeapNode> node(new OzPriQueueNode<K, V>(value, priority));
  this->add_node(node.get());
  static_cast<void>(node.release()); // the heap has it now
  ++count_;
}

template <class K, class V>
K OzPriQueue<K, V>::extract()
{
  std::unique_ptr<OzHeapNode> const node(this->extract_first_node());
  OZ_ASSERT(node != nullptr);
  if (node == nullptr)
    return K();

  --count_;
  return static_cast<OzPriQueueNode<K, V>*>(node.get())->value;
}

#endif
