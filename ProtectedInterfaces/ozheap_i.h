#ifndef OZHEAP_I_H
#define OZHEAP_I_H

#include "ozheap.h"

// The implicit tree: the entries below entry i are 2i + 1 and 2i + 2.

inline int OzHeap::parent(int i) const
{
  return (i + 1) / 2 - 1;
}

inline int OzHeap::left_child(int i) const
{
  return 2 * i + 1;
}

inline int OzHeap::right_child(int i) const
{
  return 2 * i + 2;
}

#endif
