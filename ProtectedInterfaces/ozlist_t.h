#ifndef OZLIST_T_H
#define OZLIST_T_H

#include "ozlist.h"

#include "ozassert.h"

#include <utility>

template <class T>
OzList<T>::iterator::iterator(OzList const& list, OzLink* link)
  : cur(link != nullptr ? link : &sentinel)
  , at_end_(link == nullptr)
{
  sentinel.set_next(list.head_);
  sentinel.set_prev(list.tail_);
}

template <class T>
typename OzList<T>::iterator& OzList<T>::iterator::operator=(iterator const& other)
{
  if (this == &other)
    return *this;

  cur = other.at_end_ ? &sentinel : other.cur;
  sentinel.set_next(other.sentinel.next());
  sentinel.set_prev(other.sentinel.prev());
  at_end_ = other.at_end_;
  return *this;
}

template <class T>
typename OzList<T>::iterator& OzList<T>::iterator::operator++()
{
  // At the end there is nothing to follow: the sentinel's next is the head.
  if (at_end_)
    return *this;

  cur = cur->next();
  if (cur == nullptr)
  {
    cur = &sentinel;
    at_end_ = true;
  }
  return *this;
}

template <class T>
typename OzList<T>::iterator OzList<T>::iterator::operator++(int)
{
  iterator const before = *this;
  ++*this;
  return before;
}

template <class T>
bool OzList<T>::iterator::operator==(iterator const& other) const
{
  return at_end_ && other.at_end_ && sentinel.next() == other.sentinel.next() &&
         sentinel.prev() == other.sentinel.prev();
}

template <class T>
OzList<T>::OzList(OzList const& other)
  : OzLinkList(other)
{
  for (T const& value : other)
    append(value);
}

template <class T>
OzList<T>& OzList<T>::operator=(OzList const& other)
{
  if (this == &other)
    return *this;

  // The copy is whole before anything goes, and the old items go with it.
  OzList copy(other);
  this->cursor.reset();
  std::swap(this->head_, copy.head_);
  std::swap(this->tail_, copy.tail_);
  std::swap(count_, copy.count_);
  return *this;
}

template <class T>
void OzList<T>::prepend(T const& value)
{
  this->cursor.reset();
  OzLink* const item = new OzItem<T>(value);
  if (this->head_ != nullptr)
    this->head_->insert_prev(item);
  else
    this->tail_ = item;
  this->head_ = item;
  ++count_;
}

template <class T>
void OzList<T>::append(T const& value)
{
  this->cursor.reset();
  OzLink* const item = new OzItem<T>(value);
  if (this->tail_ != nullptr)
    this->tail_->insert_next(item);
  else
    this->head_ = item;
  this->tail_ = item;
  ++count_;
}

template <class T>
T& OzList<T>::first() const
{
  OZ_ASSERT(this->head_ != nullptr);
  return static_cast<OzItem<T>*>(this->head_)->value;
}

template <class T>
void OzList<T>::remove_first()
{
  this->cursor.reset();
  OZ_ASSERT(this->head_ != nullptr);
  OzLink* const item = this->head_;
  this->splice_out(item);
  --count_;
  delete item;
}

template <class T>
T OzList<T>::pop_first()
{
  T value(first());
  remove_first();
  return value;
}

template <class T>
void OzList<T>::remove(T const& value)
{
  this->cursor.reset();
  OzStdCompare<T> comparison;
  for (OzLink* link = this->head_; link != nullptr; link = link->next())
  {
    if (comparison.compare(static_cast<OzItem<T>*>(link)->value, value) == 0)
    {
      this->splice_out(link);
      --count_;
      delete link;
      return;
    }
  }
}

template <class T>
void OzList<T>::clear()
{
  OzList nothing;
  std::uint64_t const n = count_;
  count_ -= n;
  this->splice_sequence(0, n, &nothing, nullptr);
}

template <class T>
T& OzList<T>::operator[](std::uint64_t index) const
{
  OzLink* const link = this->array(index);
  OZ_ASSERT(link != nullptr);
  return static_cast<OzItem<T>*>(link)->value;
}

template <class T>
void OzQueue<T>::enqueue(T const& value)
{
  list.append(value);
  ++depth;
}

template <class T>
T OzQueue<T>::dequeue()
{
  --depth;
  return list.pop_first();
}

template <class T>
void OzStack<T>::clear()
{
  depth = 0;
  list.clear();
}

template <class T>
void OzStack<T>::push(T const& value)
{
  list.prepend(value);
  ++depth;
}

template <class T>
T OzStack<T>::pop()
{
  --depth;
  return list.pop_first();
}

#endif
