#include "ozlinklist.h"

#include "ozassert.h"

namespace
{
OzLink* last_of_chain(OzLink* link)
{
  while (link->next() != nullptr)
    link = link->next();
  return link;
}

void delete_chain(OzLink* link)
{
  while (link != nullptr)
  {
    OzLink* const next = link->next();
    delete link;
    link = next;
  }
}

/// Clears a link of an object that ends. A compiler may leave out what is written there, unless the write is
/// volatile.
void kill_link(OzLink* volatile& link)
{
  link = nullptr;
}
} // namespace

OzLink::OzLink(OzLink const&) {}

OzLink& OzLink::operator=(OzLink const& other)
{
  if (this != &other)
  {
    next_ = nullptr;
    prev_ = nullptr;
  }
  return *this;
}

OzLink::~OzLink()
{
  kill_link(next_);
  kill_link(prev_);
}

void OzLink::insert_next(OzLink* link)
{
  if (next_ != nullptr)
    next_->prev_ = link;
  if (link != nullptr)
  {
    link->next_ = next_;
    link->prev_ = this;
  }
  next_ = link;
}

void OzLink::insert_prev(OzLink* link)
{
  if (prev_ != nullptr)
    prev_->next_ = link;
  if (link != nullptr)
  {
    link->prev_ = prev_;
    link->next_ = this;
  }
  prev_ = link;
}

OzLinkList::OzLinkList(OzLinkList const&) {}

OzLinkList& OzLinkList::operator=(OzLinkList const&)
{
  return *this;
}

OzLinkList::~OzLinkList()
{
  delete_chain(head_);
  kill_link(head_);
  kill_link(tail_);
}

OzLink* OzLinkList::array(std::uint64_t i) const
{
  bool const from_cursor = cursor.link != nullptr && i >= cursor.index;
  std::uint64_t position = from_cursor ? cursor.index : 0;
  OzLink* link = from_cursor ? cursor.link : head_;
  while (position < i && link != nullptr)
  {
    link = link->next();
    ++position;
  }
  // The position just behind the last link counts as reached, any later one does not.
  if (position == i)
  {
    cursor.index = i;
    cursor.link = link;
  }
  return link;
}

std::uint64_t OzLinkList::size() const
{
  std::uint64_t n = 0;
  for (OzLink const* link = head_; link != nullptr; link = link->next())
    ++n;
  return n;
}

void OzLinkList::splice_out(OzLink* link)
{
  OZ_ASSERT(link != nullptr);
  if (link == nullptr)
    return;

  OzLink* const before = link->prev();
  OzLink* const behind = link->next();
  if (before != nullptr)
    before->set_next(behind);
  else
    head_ = behind;
  if (behind != nullptr)
    behind->set_prev(before);
  else
    tail_ = before;
  link->set_next(nullptr);
  link->set_prev(nullptr);
}

void OzLinkList::splice_sequence(std::uint64_t index, std::uint64_t n, OzLinkList* insert,
                                 OzLinkList* removed)
{
  OzLink* const found = array(index);
  OzLink* const before = found != nullptr ? found->prev() : tail_;
  cursor.reset();

  OzLink* doomed = nullptr;
  if (found != nullptr && n != 0)
  {
    OzLink* const run = take_out_chain(found, n);
    if (removed != nullptr)
      removed->insert_chain(removed->tail_, run, last_of_chain(run));
    else
      doomed = run;
  }
  if (removed != nullptr)
    removed->cursor.reset();

  if (insert != nullptr && insert != this)
  {
    OzLink* const first = insert->head_;
    OzLink* const last = insert->tail_;
    insert->cursor.reset();
    insert->head_ = nullptr;
    insert->tail_ = nullptr;
    if (first != nullptr)
      insert_chain(before, first, last);
  }

  // Last of all: what the links carry may look at the lists as it goes.
  delete_chain(doomed);
}

/// Puts a free chain behind the link `before` of this list, or in front of all if that is null.
void OzLinkList::insert_chain(OzLink* before, OzLink* first, OzLink* last)
{
  OzLink* const behind = before != nullptr ? before->next() : head_;
  first->set_prev(before);
  last->set_next(behind);
  if (before != nullptr)
    before->set_next(first);
  else
    head_ = first;
  if (behind != nullptr)
    behind->set_prev(last);
  else
    tail_ = last;
}

/// Takes out the run of up to `n` links that starts with `first`, and returns it as a free chain. `n` is at
/// least 1.
OzLink* OzLinkList::take_out_chain(OzLink* first, std::uint64_t n)
{
  OzLink* last = first;
  for (std::uint64_t taken = 1; taken < n && last->next() != nullptr; ++taken)
    last = last->next();

  OzLink* const before = first->prev();
  OzLink* const behind = last->next();
  if (before != nullptr)
    before->set_next(behind);
  else
    head_ = behind;
  if (behind != nullptr)
    behind->set_prev(before);
  else
    tail_ = before;
  first->set_prev(nullptr);
  last->set_next(nullptr);
  return first;
}
