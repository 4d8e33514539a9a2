#ifndef OZLIST_H
#define OZLIST_H

#include "ozcompare.h"
#include "ozlinklist.h"

#include <cstddef>
#include <cstdint>
#include <iterator>

/// A link that carries a value.
template <class T>
class OZ_EXPORT OzItem : public OzLink
{
public:
  explicit OzItem(T const& v)
    : value(v)
  {
  }

  T value;
};

/// A sequence of values, linked in both directions: cheap to change at its ends, and values stay where they
/// are in memory as long as they are in the list.
///
/// `const` speaks of the sequence, not of the values: those of a const list may be written.
///
/// Ownership: the list owns its items and with them the values; of a pointer, not what it points to. A copy
/// has items of its own, with copies of the values.
/// Threads: one at a time, reading included, since `operator[]` moves the list's cursor.
/// Reports: `first`, `pop_first` and `remove_first` on an empty list, and a bad index of `operator[]`. The
/// item that is not there is then read all the same; `remove_first` reads nothing, is reported once more
/// by splice_out, and leaves a count below 0, which wraps. Look at `count` first.
/// Failure: what the copy of a value throws passes through, and the list is as it was.
/// Cost: all O(1) with one allocation for a new item, except `remove`, `clear` and copies, O(n), and
/// `operator[]`, which goes forward from where it was asked last, or from the head.
template <class T>
class OZ_EXPORT OzList : public OzLinkList
{
public:
  /// A forward cursor over a list, on the stack of its user: range-for and the standard algorithms that read
  /// once work with it.
  ///
  /// Two iterators are equal only if both are at their end, and their list had the same first and last item
  /// when each was made. On an item no iterator equals another one, nor itself. So a walk during which the
  /// list changes asks `at_end` rather than for an end taken before. Items may come and go during a walk,
  /// but not the one that the iterator stands on.
  class OZ_EXPORT iterator
  {
  public:
    typedef std::input_iterator_tag iterator_category;
    typedef T value_type;
    typedef std::ptrdiff_t difference_type;
    typedef T* pointer;
    typedef T& reference;

    iterator(iterator const& other) { *this = other; }
    iterator& operator=(iterator const& other);

    bool at_end() const { return at_end_; }

    /// The value of the item; not to be asked for at the end.
    T& operator*() const { return static_cast<OzItem<T>*>(cur)->value; }
    T* operator->() const { return &**this; }

    iterator& operator++();
    iterator operator++(int);

    bool operator==(iterator const& other) const;
    bool operator!=(iterator const& other) const { return !(*this == other); }

  private:
    friend class OzList;
    iterator(OzList const& list, OzLink* link);

    OzLink* cur;     // an item of the list, or the sentinel
    OzLink sentinel; // stands for the end and remembers the ends of the list, but is not in it
    bool at_end_;
  };

  OzList() = default;
  OzList(OzList const& other);
  OzList& operator=(OzList const& other);

  void prepend(T const& value);
  void append(T const& value);

  /// The first value.
  T& first() const;
  void remove_first();
  /// Removes the first value and returns it.
  T pop_first();

  /// Removes the first item whose value is equal by OzStdCompare, if there is one. Further ones stay.
  void remove(T const& value);
  void clear();

  std::uint64_t count() const { return count_; }

  /// Value number `index`, counted from 0. A rising loop costs one step each.
  T& operator[](std::uint64_t index) const;

  iterator begin() const { return iterator(*this, this->head_); }
  iterator end() const { return iterator(*this, nullptr); }

protected:
  std::uint64_t count_ = 0;
};

/// First in, first out.
///
/// Ownership, threads, cost: as OzList. `depth` falls before the list is asked, so taking from an empty queue
/// leaves it below 0 and reads an item that is not there, after the list's report.
template <class T>
class OZ_EXPORT OzQueue
{
public:
  OzQueue() = default;
  OzQueue(OzQueue const&) = default;
  OzQueue& operator=(OzQueue const&) = default;
  virtual ~OzQueue() = default;

  void enqueue(T const& value);
  T dequeue();
  bool is_empty() const { return depth == 0; }

protected:
  OzList<T> list;
  int depth = 0;
};

/// Last in, first out. Otherwise as OzQueue.
template <class T>
class OZ_EXPORT OzStack
{
public:
  OzStack() = default;
  OzStack(OzStack const&) = default;
  OzStack& operator=(OzStack const&) = default;
  virtual ~OzStack() = default;
  virtual void clear();

  void push(T const& value);
  T pop();
  bool is_empty() const { return depth == 0; }

protected:
  OzList<T> list;
  int depth = 0;
};

#include "ozlist_t.h"

#endif
