#ifndef ELEMENT_TYPES_H
#define ELEMENT_TYPES_H

#include <stdexcept>
#include <utility>

/// An element that counts its kind: how many live, how often one was made and destroyed. On request the
/// n-th copy from now on throws, by constructor or by assignment. It has no move.
class CountedElement
{
public:
  CountedElement()
  {
    ++live;
    ++defaults;
  }
  CountedElement(int v) // NOLINT(google-explicit-constructor): reads as a number in the tests
    : value(v)
  {
    ++live;
  }
  CountedElement(CountedElement const& other)
    : value(other.value)
  {
    count_copy();
    ++live;
  }
  CountedElement& operator=(CountedElement const& other)
  {
    count_copy();
    value = other.value;
    return *this;
  }
  ~CountedElement()
  {
    value = -1;
    --live;
    ++destroyed;
  }

  bool operator==(CountedElement const& other) const { return value == other.value; }

  static void reset()
  {
    live = defaults = copies = destroyed = 0;
    copies_until_throw = 0;
  }

  int value = 0;

  static inline int live = 0;
  static inline int defaults = 0;
  static inline int copies = 0;
  static inline int destroyed = 0;
  static inline int copies_until_throw = 0; // 0: none throws

private:
  static void count_copy()
  {
    ++copies;
    if (copies_until_throw > 0 && --copies_until_throw == 0)
      throw std::runtime_error("no copy");
  }
};

/// An element whose copies may throw and whose moves do not, and which counts both.
class MovingElement
{
public:
  MovingElement() = default;
  MovingElement(int v) // NOLINT(google-explicit-constructor): reads as a number in the tests
    : value(v)
  {
  }
  MovingElement(MovingElement const& other)
    : value(other.value)
  {
    ++copies;
  }
  MovingElement(MovingElement&& other) noexcept
    : value(std::exchange(other.value, -2))
  {
    ++moves;
  }
  MovingElement& operator=(MovingElement const& other)
  {
    ++copies;
    value = other.value;
    return *this;
  }
  ~MovingElement() = default;

  bool operator==(MovingElement const& other) const { return value == other.value; }

  static void reset() { copies = moves = 0; }

  int value = 0;

  static inline int copies = 0;
  static inline int moves = 0;
};

#endif
