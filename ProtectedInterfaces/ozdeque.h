#ifndef OZDEQUE_H
#define OZDEQUE_H

#include "ozexport.h"

#include <cstdint>

/// A sequence of pointers that grows at its end and shrinks at its front, in blocks of fixed size that a map
/// holds in order. Only the blocks between front and end exist: one is freed as soon as the front has left
/// it, so that a queue that lives long neither grows without bound nor allocates for each element. Elements
/// never move.
///
/// Ownership: the deque owns its blocks and its map, not what the elements point to. It is not copied.
/// Threads: one at a time.
/// Reports: nothing. `pop_front` on an empty deque does nothing; `front` of one reads a slot that holds
/// nothing meaningful.
/// Failure: where there is no memory `push_back` throws std::bad_alloc, and the elements are as they were.
/// Cost: O(1), with one allocation for 64 elements.
template <class T>
class OZ_EXPORT OzDequeBase
{
  static_assert(sizeof(T) == sizeof(void*), "elements have the size of a pointer");

public:
  OzDequeBase();
  OzDequeBase(OzDequeBase const&) = delete;
  OzDequeBase& operator=(OzDequeBase const&) = delete;
  virtual ~OzDequeBase();

  void push_back(T value);
  void pop_front();
  /// The element that was pushed first; not to be asked of an empty deque.
  T& front() const { return *start.cur; }
  bool is_empty() const { return finish.cur == start.cur; }
  std::uint64_t size() const;

protected:
  static constexpr std::uint64_t BLOCK_BYTES = 512;
  static constexpr std::uint64_t BLOCK_SIZE = BLOCK_BYTES / sizeof(T);

  struct Position
  {
    T* cur;   // the slot
    T* first; // begin of its block
    T* last;  // one past the end of the block
    T** node; // the entry of the map that holds the block
  };

  T** map;
  std::uint64_t map_size;
  Position start;  // the first element
  Position finish; // the slot behind the last element, never past a block's end

private:
  static T* new_block();
  static T** new_map(std::uint64_t n);
  static void set_node(Position& position, T** node);
  void reallocate_map(std::uint64_t added);
  void push_back_and_open_block(T value);
  void leave_first_block();
};

/// The deque that clients use.
template <class T>
class OZ_EXPORT OzDeque : public OzDequeBase<T>
{
public:
  ~OzDeque() override = default;
};

#include "ozdeque_t.h"

#endif
