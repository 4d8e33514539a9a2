#ifndef OZITERATOR_H
#define OZITERATOR_H

#include "ozarray.h"

#include <cstdint>

/// A cursor that walks forward over a sequence, as the library's interfaces hand it out.
///
/// The walk is always the same: `reset`, then, while `done` is false, `current` and `next`. It may be made
/// again at any time. `first` is no part of it and never moves the cursor.
///
/// Ownership: says the operation that hands a cursor out; it is deleted through this interface.
/// Threads: one at a time.
template <class T>
class OZ_EXPORT OzIterator
{
public:
  virtual ~OzIterator() = default;

  /// The first element of the sequence, wherever the cursor stands.
  virtual T const& first() const = 0;
  /// Moves the cursor one element on.
  virtual void next() = 0;
  /// True when the cursor has passed the last element.
  virtual bool done() const = 0;
  /// Puts the cursor back on the first element.
  virtual void reset() = 0;
  /// The element under the cursor.
  virtual T const& current() const = 0;
};

/// A cursor over an array that it does not own.
///
/// The size of the array is read afresh each time, so an array that grows during a walk is walked to its
/// new end. A null array is a legal cursor that is always done. A copy starts where the original stands.
///
/// Reports: `first` on an empty array and `current` on a cursor that is done are reported by the array and
/// then used, as any bad index is.
template <class T>
class OZ_EXPORT OzArrayIterator : public OzIterator<T>
{
public:
  explicit OzArrayIterator(OzArray<T> const* array_to_walk)
    : array(array_to_walk)
  {
  }

  T const& first() const override { return (*array)[0]; }
  void next() override { ++index; }
  bool done() const override { return array == nullptr || index >= array->size(); }
  void reset() override { index = 0; }
  T const& current() const override { return (*array)[index]; }

protected:
  OzArray<T> const* array; // not owned, may be null
  std::uint64_t index = 0;
};

#endif
