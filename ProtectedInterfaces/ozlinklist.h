#ifndef OZLINKLIST_H
#define OZLINKLIST_H

#include "ozexport.h"

#include <cstdint>

/// One member of a chain, linked in both directions. It is derived from in order to carry something.
///
/// A link knows nothing about the list that holds it: its operations keep its neighbours right, never a
/// list's head, tail, cursor or count. A position in a chain is never copied, so a copy is a free link, and
/// assigning to a link frees it.
///
/// Ownership: a list owns its links; a link owns nothing. Destroying one leaves its neighbours alone, which
/// makes unlinking the list's business, and the end of a list of any length free of recursion.
/// Threads: one at a time.
class OZ_EXPORT OzLink
{
public:
  OzLink() = default;
  /// A free link.
  OzLink(OzLink const& other);
  /// Clears both fields and copies nothing. The neighbours still point here.
  OzLink& operator=(OzLink const& other);
  virtual ~OzLink();

  OzLink* next() const { return next_; }
  OzLink* prev() const { return prev_; }

  /// Stores the pointer and does nothing else.
  void set_next(OzLink* link) { next_ = link; }
  void set_prev(OzLink* link) { prev_ = link; }

  /// Puts `link` between this link and the next one. Null cuts the chain behind this link: the old successor
  /// then begins a chain of its own.
  void insert_next(OzLink* link);
  /// The mirror image of insert_next.
  void insert_prev(OzLink* link);

private:
  OzLink* next_ = nullptr;
  OzLink* prev_ = nullptr;
};

/// A position in a list: a number, counted from 0, and the link that has it, or null past the end.
struct OZ_EXPORT OzListIndex
{
  void reset() { *this = OzListIndex(); }

  std::uint64_t index = 0;
  OzLink* link = nullptr;
};

/// A chain of links with both its ends: what lists have in common that does not depend on their elements.
/// Only for derivation. The chain is not circular and has no sentinel.
///
/// The list remembers where it was asked for a link last, so that a rising run of `array` calls costs one
/// step each. An operation of a derived class that changes the chain resets `cursor` first.
///
/// Ownership: the list owns its links and deletes them through their virtual destructor.
/// Threads: one at a time, reading included, since `array` moves the cursor.
/// Reports: `splice_out` of a null link, which then does nothing.
/// Cost: `array` from the cursor or the head, never backwards; `size` counts by walking.
class OZ_EXPORT OzLinkList
{
protected:
  OzLinkList() = default;
  /// An empty list. A derived list that wants the elements copies them.
  OzLinkList(OzLinkList const& other);
  /// Leaves the target as it was.
  OzLinkList& operator=(OzLinkList const& other);
  virtual ~OzLinkList();

  OzLink* head() const { return head_; }
  OzLink* tail() const { return tail_; }

  /// Stores the pointer and does nothing else.
  void set_head(OzLink* link) { head_ = link; }
  void set_tail(OzLink* link) { tail_ = link; }

  /// Link number `i`, counted from 0, and the cursor moves there. For `i` equal to the number of links the
  /// cursor moves behind the end and the result is null; for anything larger the result is null and the
  /// cursor stays.
  OzLink* array(std::uint64_t i) const;

  /// The number of links in the chain, whatever a derived class counts.
  std::uint64_t size() const;

  /// Takes `link` out of this list and leaves it free. It isn't deleted, and the cursor is not reset.
  void splice_out(OzLink* link);

  /// Replaces the run of up to `n` links that starts with number `index` by all links of `insert`, which is
  /// empty afterwards. Past the end nothing is taken out and `insert` goes to the end. The links taken out
  /// are appended to `removed` in order, or deleted if that is null. Either list may be null; `insert` may
  /// not be this list and is then passed over. The cursors of all three lists are reset. Counts that derived
  /// classes keep are their own business.
  void splice_sequence(std::uint64_t index, std::uint64_t n, OzLinkList* insert, OzLinkList* removed);

  mutable OzListIndex cursor;
  OzLink* head_ = nullptr;
  OzLink* tail_ = nullptr;

private:
  void insert_chain(OzLink* before, OzLink* first, OzLink* last);
  OzLink* take_out_chain(OzLink* first, std::uint64_t n);
};

#endif
