#ifndef OZDEQUE_T_H
#define OZDEQUE_T_H

#include "ozdeque.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

template <class T>
T* OzDequeBase<T>::new_block()
{
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>,
                "slots are neither constructed nor destroyed");
  return static_cast<T*>(::operator new(BLOCK_BYTES));
}

template <class T>
T** OzDequeBase<T>::new_map(std::uint64_t n)
{
  return static_cast<T**>(::operator new(n * sizeof(T*)));
}

template <class T>
void OzDequeBase<T>::set_node(Position& position, T** node)
{
  position.node = node;
  position.first = *node;
  position.last = *node + BLOCK_SIZE;
}

template <class T>
OzDequeBase<T>::OzDequeBase()
  : map(new_map(8))
  , map_size(8)
{
  // The middle of the map. Should there be no memory for the block, the map goes again.
  T** const middle = map + ((map_size - 1) >> 1);
  struct FreeMap
  {
    void operator()(T** p) const { ::operator delete(p); }
  };
  std::unique_ptr<T*, FreeMap> guard(map);
  *middle = new_block();
  static_cast<void>(guard.release());

  set_node(start, middle);
  start.cur = start.first;
  finish = start;
}

template <class T>
OzDequeBase<T>::~OzDequeBase()
{
  for (T** node = start.node; node <= finish.node; ++node)
    ::operator delete(*node);
  ::operator delete(map);
}

template <class T>
inline void OzDequeBase<T>::push_back(T value)
{
  if (finish.cur == finish.last - 1)
  {
    push_back_and_open_block(value);
    return;
  }
  *finish.cur = value;
  ++finish.cur;
}

template <class T>
inline void OzDequeBase<T>::pop_front()
{
  if (is_empty())
    return;
  if (start.cur == start.last - 1)
  {
    leave_first_block();
    return;
  }
  ++start.cur;
}

template <class T>
std::uint64_t OzDequeBase<T>::size() const
{
  return static_cast<std::uint64_t>(finish.node - start.node) * BLOCK_SIZE +
         static_cast<std::uint64_t>(finish.cur - finish.first) +
         static_cast<std::uint64_t>(start.last - start.cur) - BLOCK_SIZE;
}

/// Fills the last slot of the last block. The next block comes at once, so that there is always a slot for
/// `finish` to stand on.
template <class T>
void OzDequeBase<T>::push_back_and_open_block(T value)
{
  if (map_size - static_cast<std::uint64_t>(finish.node - map) < 2)
    reallocate_map(1);
  *(finish.node + 1) = new_block();
  *finish.cur = value;
  set_node(finish, finish.node + 1);
  finish.cur = finish.first;
}

/// Frees the block whose last element goes. A block behind it exists, since it was opened when the last slot
/// of this one was filled.
template <class T>
void OzDequeBase<T>::leave_first_block()
{
  ::operator delete(start.first);
  set_node(start, start.node + 1);
  start.cur = start.first;
}

/// Makes room in the map for `added` more nodes at the back: in the middle of the same map if less than half
/// of it is needed, else in a larger one. Blocks don't move.
template <class T>
void OzDequeBase<T>::reallocate_map(std::uint64_t added)
{
  std::uint64_t const old_nodes = static_cast<std::uint64_t>(finish.node - start.node) + 1;
  std::uint64_t const new_nodes = old_nodes + added;
  T** target;
  if (map_size <= 2 * new_nodes)
  {
    std::uint64_t const new_size = map_size + std::max(map_size, added) + 2;
    T** const larger = new_map(new_size);
    target = larger + (new_size - new_nodes) / 2;
    std::memcpy(target, start.node, old_nodes * sizeof(T*));
    ::operator delete(map);
    map = larger;
    map_size = new_size;
  }
  else
  {
    target = map + (map_size - new_nodes) / 2;
    std::memmove(target, start.node, old_nodes * sizeof(T*)); // old and new places may overlap
  }
  set_node(start, target);
  set_node(finish, target + old_nodes - 1);
}

#endif
