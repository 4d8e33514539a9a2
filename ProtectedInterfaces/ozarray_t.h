#ifndef OZARRAY_T_H
#define OZARRAY_T_H

#include "ozarray.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

constexpr std::uint64_t oz_grown_capacity(std::uint64_t capacity, std::uint64_t n)
{
  // Above this size doubling would overshoot by half the array.
  constexpr std::uint64_t linear_from = 64000;
  constexpr std::uint64_t step = 4096;
  if (n >= linear_from)
    return capacity + step + ((n - capacity - 1) & ~(step - 1));

  std::uint64_t const start = capacity == 0 ? 1 : capacity;
  if (start >= n)
    return start;

  // As many doublings as `n` - 1 has more binary digits; one more if that falls short.
  std::uint64_t const grown = start << (__builtin_clzll(start) - __builtin_clzll(n - 1));
  return grown < n ? grown * 2 : grown;
}

/// What arrays use inside; no part of their interface.
namespace oz_array_detail
{
// Types whose T() is zero bytes. Pointers to members are not among them.
template <class T>
constexpr bool is_plain = std::is_arithmetic_v<T> || std::is_enum_v<T> || std::is_pointer_v<T>;

// Throws std::bad_alloc for a size whose bytes a pointer difference could not count.
template <class T>
void check_size(std::uint64_t n)
{
  constexpr std::uint64_t most_bytes = ~std::uint64_t(0) >> 1;
  if (n > most_bytes / sizeof(T))
    throw std::bad_alloc();
}

inline void* checked(void* storage)
{
  if (storage == nullptr)
    throw std::bad_alloc();
  return storage;
}

// Blocks below this size come from malloc and move by copying: malloc hands out at once what was freed last,
// where calloc and realloc do not look. From this size on these two win, since they know of fresh pages that
// are zero and of pages that can be moved as they are.
constexpr std::uint64_t large_block = 1024;

inline void* zeroed_block(std::uint64_t bytes)
{
  if (bytes >= large_block)
    return checked(std::calloc(bytes, 1));
  return std::memset(checked(std::malloc(bytes)), 0, bytes);
}

// Moves the first `kept` bytes of `block`, which is freed, to one of `bytes`. What is behind them is not set.
inline void* moved_block(void* block, std::uint64_t kept, std::uint64_t bytes)
{
  if (bytes >= large_block)
    return checked(std::realloc(block, bytes));
  void* const moved = std::memcpy(checked(std::malloc(bytes)), block, kept);
  std::free(block);
  return moved;
}

/// A block of slots under construction. It is filled from its upper end downwards, so that the part that
/// holds live elements is always one run up to the end, and destroys that run unless it is released.
template <class T>
class Block
{
public:
  explicit Block(std::uint64_t n)
    : end_(n)
    , built_from(n)
  {
    static_assert(alignof(T) <= alignof(std::max_align_t), "malloc does not align this type");
    check_size<T>(n);
    if (n != 0)
      slots = static_cast<T*>(checked(std::malloc(n * sizeof(T))));
  }
  ~Block()
  {
    if (slots == nullptr)
      return;
    std::destroy(slots + built_from, slots + end_);
    std::free(slots);
  }
  Block(Block const&) = delete;
  Block& operator=(Block const&) = delete;

  void fill_from(std::uint64_t from)
  {
    std::uninitialized_value_construct(slots + from, slots + built_from);
    built_from = from;
  }
  void put_before(T const& value)
  {
    ::new (static_cast<void*>(slots + built_from - 1)) T(value);
    --built_from;
  }
  // The rest of the block, moved only where moving cannot throw: `from` is whole until all is done.
  void transfer(T* from)
  {
    if constexpr (std::is_nothrow_move_constructible_v<T>)
      std::uninitialized_move(from, from + built_from, slots);
    else
      std::uninitialized_copy(from, from + built_from, slots);
    built_from = 0;
  }
  void copy(T const* from)
  {
    std::uninitialized_copy(from, from + built_from, slots);
    built_from = 0;
  }
  T* release() { return std::exchange(slots, nullptr); }

private:
  T* slots = nullptr;
  std::uint64_t end_;
  std::uint64_t built_from;
};
} // namespace oz_array_detail

template <class T, class A>
OzArray<T, A>::OzArray(T const* elements, std::uint64_t n, std::uint64_t slots)
{
  std::uint64_t const room = std::max(n, slots);
  if (room == 0)
    return;
  if constexpr (oz_array_detail::is_plain<T>)
  {
    oz_array_detail::check_size<T>(room);
    data = static_cast<T*>(oz_array_detail::checked(std::malloc(room * sizeof(T))));
    std::copy(elements, elements + n, data);
    std::memset(static_cast<void*>(data + n), 0, (room - n) * sizeof(T));
  }
  else
  {
    oz_array_detail::Block<T> block(room);
    block.fill_from(n);
    block.copy(elements);
    data = block.release();
  }
  capacity = room;
  size_ = n;
}

template <class T, class A>
OzArray<T, A>::OzArray(OzArray const& other)
{
  copy_elements(other);
}

template <class T, class A>
OzArray<T, A>::OzArray(OzArray const& other, std::uint64_t slots)
{
  if constexpr (oz_array_detail::is_plain<T>)
  {
    std::uint64_t const room = std::max(other.size_, slots);
    if (room == 0)
      return;
    oz_array_detail::check_size<T>(room);
    data = static_cast<T*>(oz_array_detail::checked(std::malloc(room * sizeof(T))));
    // The clear slots come along, which is one piece of work instead of two.
    std::uint64_t const copied = std::min(room, other.capacity);
    std::copy(other.data, other.data + copied, data);
    if (copied < room)
      std::memset(static_cast<void*>(data + copied), 0, (room - copied) * sizeof(T));
    capacity = room;
    size_ = other.size_;
  }
  else
  {
    OzArray copy(other.data, other.size_, slots);
    std::swap(data, copy.data);
    std::swap(capacity, copy.capacity);
    std::swap(size_, copy.size_);
  }
}

template <class T, class A>
OzArray<T, A>::OzArray(OzArray&& other) noexcept
  : data(std::exchange(other.data, nullptr))
  , capacity(std::exchange(other.capacity, 0))
  , size_(std::exchange(other.size_, 0))
{
}

template <class T, class A>
OzArray<T, A>& OzArray<T, A>::operator=(OzArray const& other)
{
  if (this != &other)
    copy_elements(other);
  return *this;
}

template <class T, class A>
OzArray<T, A>::~OzArray()
{
  take_over(nullptr, 0);
  size_ = 0;
}

template <class T, class A>
void OzArray<T, A>::resize(std::uint64_t n, bool keep)
{
  if (n > capacity)
    grow(n, keep);
  else if (n < size_)
    clear_slots(n, size_);
  size_ = n;
}

template <class T, class A>
void OzArray<T, A>::reserve(std::uint64_t n, bool keep)
{
  OZ_ASSERT(n >= size_);
  if (n < size_)
    return;

  replace_block(n, keep ? size_ : 0, nullptr);
}

template <class T, class A>
void OzArray<T, A>::remove_last()
{
  OZ_ASSERT(size_ > 0);
  if (size_ == 0)
    return;

  if constexpr (oz_array_detail::is_plain<T>)
    data[size_ - 1] = T();
  else
    clear_slots(size_ - 1, size_);
  --size_;
}

/// Moves to a block of `n` slots that holds the first `kept` elements, then a copy of `added` if that is
/// not null, then T(). Nothing has changed if it throws.
template <class T, class A>
void OzArray<T, A>::replace_block(std::uint64_t n, std::uint64_t kept, T const* added)
{
  if constexpr (oz_array_detail::is_plain<T>)
  {
    oz_array_detail::check_size<T>(n);
    T const last = added != nullptr ? *added : T(); // `added` may lie in the block that goes
    std::uint64_t const filled = kept + (added != nullptr ? 1 : 0);
    if (n == 0 || kept == 0)
    {
      void* const block = n == 0 ? nullptr : oz_array_detail::zeroed_block(n * sizeof(T));
      take_over(static_cast<T*>(block), n);
    }
    else
    {
      void* const block = oz_array_detail::moved_block(data, kept * sizeof(T), n * sizeof(T));
      data = static_cast<T*>(block);
      capacity = n;
      std::memset(static_cast<void*>(data + filled), 0, (n - filled) * sizeof(T));
    }
    if (added != nullptr)
      data[kept] = last;
  }
  else
  {
    oz_array_detail::Block<T> block(n);
    block.fill_from(kept + (added != nullptr ? 1 : 0));
    if (added != nullptr)
      block.put_before(*added);
    block.transfer(data);
    take_over(block.release(), n);
  }
}

/// Destroys all slots, frees them, and goes on with `block`, which has `n` live slots.
template <class T, class A>
void OzArray<T, A>::take_over(T* block, std::uint64_t n)
{
  std::destroy(data, data + capacity);
  std::free(data);
  data = block;
  capacity = n;
}

/// Sets slots to T(). Out of line, like growing, so that resize is small enough to be inlined.
template <class T, class A>
void OzArray<T, A>::clear_slots(std::uint64_t from, std::uint64_t to)
{
  if constexpr (oz_array_detail::is_plain<T>)
  {
    std::fill(data + from, data + to, T());
  }
  else if constexpr (std::is_nothrow_copy_constructible_v<T>)
  {
    T const blank = T();
    for (T* slot = data + from; slot != data + to; ++slot)
    {
      slot->~T();
      ::new (static_cast<void*>(slot)) T(blank);
    }
  }
  else if constexpr (std::is_nothrow_move_constructible_v<T>)
  {
    // All that can throw is done before the first slot is touched.
    OzArray fresh;
    fresh.replace_block(to - from, 0, nullptr);
    for (std::uint64_t i = from; i < to; ++i)
    {
      data[i].~T();
      ::new (static_cast<void*>(data + i)) T(std::move(fresh.data[i - from]));
    }
  }
  else
  {
    // A slot that was destroyed might not be built again. One element is overwritten as it is; several
    // could be left half done, so the array moves to a block in which they are blank from the start.
    if (to - from == 1)
      data[from] = T();
    else
      replace_block(capacity, from, nullptr);
  }
}

template <class T, class A>
void OzArray<T, A>::copy_elements(OzArray const& other)
{
  if constexpr (std::is_nothrow_copy_assignable_v<T>)
  {
    resize(other.size_, false);
    std::copy(other.data, other.data + other.size_, data);
  }
  else
  {
    // Assigning over the elements could stop half way, so the copy is made beside them.
    std::uint64_t const n = other.size_ > capacity ? oz_grown_capacity(capacity, other.size_) : capacity;
    oz_array_detail::Block<T> block(n);
    block.fill_from(other.size_);
    block.copy(other.data);
    take_over(block.release(), n);
    size_ = other.size_;
  }
}

template <class T, class A>
void OzArray<T, A>::grow(std::uint64_t n, bool keep)
{
  oz_array_detail::check_size<T>(n);
  reserve(oz_grown_capacity(capacity, n), keep);
}

template <class T, class A>
void OzArray<T, A>::grow_and_append(T const& value)
{
  replace_block(oz_grown_capacity(capacity, size_ + 1), size_, &value);
  ++size_;
}

#endif
