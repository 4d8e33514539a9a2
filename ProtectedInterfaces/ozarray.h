#ifndef OZARRAY_H
#define OZARRAY_H

#include "ozassert.h"

#include <cstdint>

/// Stands as the second argument of an array's type and as its first, empty member. Storage always comes
/// from malloc and goes back with free, whatever the policy is.
template <class T>
class OzAllocator
{
};

/// A growable sequence of elements that lie side by side.
///
/// Each of the `capacity` slots holds a live T at all times, those past size() as well: for plain types
/// (numbers, enumerations, pointers) zero bytes, for every other type a T that was constructed. So a slot
/// that comes into use by growing reads as T(), and the destructor destroys `capacity` elements.
///
/// Growth: below 64,000 elements the capacity doubles, from 1; from there on it grows by whole multiples
/// of 4,096, so that a very large array does not overshoot by half.
///
/// Ownership: the array owns its elements, not what an element points to.
/// Threads: one at a time.
/// Reports: an index at or above size(), and then the access is made all the same; `first` and `last`
/// without storage, likewise; `reserve` below size() and `remove_last` on an empty array, which then change
/// nothing.
/// Failure: an impossible size, or no memory, is std::bad_alloc, and what an element's copy throws passes
/// through; in both cases the array is as it was, and nothing leaks.
/// Cost: an access with no handler installed is one load and one branch more than a bare pointer's; that
/// branch keeps compilers from vectorising, so long loops use begin() and end(). Growing moves plain types
/// as a block, and other types by their move constructor where it is noexcept, else by copying; beyond
/// 64,000 elements that happens every 4,096, so reserve() first.
template <class T, class A = OzAllocator<T>>
class OZ_EXPORT OzArray
{
public:
  OzArray() = default;
  /// Copies of `n` elements in one block of `slots` slots, or of `n` if that is more.
  OzArray(T const* elements, std::uint64_t n, std::uint64_t slots);
  OzArray(OzArray const& other);
  /// The same in one block of `slots` slots, or of other.size() if that is more.
  OzArray(OzArray const& other, std::uint64_t slots);
  /// Takes over the block of `other`, which is empty and without storage afterwards.
  OzArray(OzArray&& other) noexcept;
  /// Copies into the storage there is if the elements fit.
  OzArray& operator=(OzArray const& other);
  virtual ~OzArray();

  /// Sets the number of elements. Shrinking keeps the capacity and sets the slots given up to T(); elements
  /// stay where they are, except those of a type that can neither be copied nor moved without throwing.
  /// Growing beyond the capacity reallocates, and then the contents are kept only if `keep` is true. Within
  /// the capacity they stay whatever `keep` is: a caller who wants cleared slots shrinks first.
  virtual void resize(std::uint64_t n, bool keep);

  /// Reallocates to exactly `n` slots, also if that is what there is. With `keep` false all elements become
  /// T() while size() stays. A capacity below size() is reported and refused.
  virtual void reserve(std::uint64_t n, bool keep);

  /// Element `index`. At or above size() it is reported and then used all the same: the handler decides
  /// whether the process goes on.
  T& operator[](std::uint64_t index);
  T const& operator[](std::uint64_t index) const;

  std::uint64_t size() const { return size_; }

  /// Element 0. Reports an array without storage, and then reads it all the same.
  T& first();
  T const& first() const;
  /// Element size() - 1. Reports an array without storage, and then reads it all the same. An empty array
  /// with storage has no last element either, but that is not noticed.
  T& last();
  T const& last() const;

  /// Adds a copy of `value` at the end; `value` may be one of the array's own elements.
  void append(T const& value);

  /// Takes the last element off and sets its slot to T(), so that no pointer is left behind in it. An empty
  /// array is reported and stays empty.
  void remove_last();

  /// The elements as a plain range, for range-for and the standard algorithms. No check is made on it.
  T* begin() { return data; }
  T* end() { return data + size_; }
  T const* begin() const { return data; }
  T const* end() const { return data + size_; }

protected:
  A allocator;
  T* data = nullptr;
  std::uint64_t capacity = 0; // slots allocated, each with a live T
  std::uint64_t size_ = 0;    // slots in use

private:
  void replace_block(std::uint64_t n, std::uint64_t kept, T const* added);
  void take_over(T* block, std::uint64_t n);
  __attribute__((noinline)) void clear_slots(std::uint64_t from, std::uint64_t to);
  void copy_elements(OzArray const& other);
  __attribute__((noinline)) void grow(std::uint64_t n, bool keep);
  __attribute__((noinline)) void grow_and_append(T const& value);
};

/// The capacity that an array of `capacity` slots takes in order to hold `n` elements, `n` being larger:
/// doubled from 1 below 64,000 elements, from there on raised by the smallest multiple of 4,096 that
/// reaches `n`.
constexpr std::uint64_t oz_grown_capacity(std::uint64_t capacity, std::uint64_t n);

#include "ozarray_i.h"
#include "ozarray_t.h"

#endif
