#include "ozobject.h"

#include "ozassert.h"
#include "ozattrib.h"
#include "ozevent.h"
#include "ozlist.h"
#include "ozreactor.h"

/// What an object carries. Allocated when the first entry comes, since most objects have none. Reactors are
/// let go before attributes.
struct OzObjectRtx
{
  OzList<OzRCPtr<OzAttrib>> attribs;   // newest first
  OzList<OzRCPtr<OzReactor>> reactors; // newest first
};

namespace
{
template <class Entry>
using Entries = OzList<OzRCPtr<Entry>>;

/// The first entry that `wanted` holds for, or null.
template <class Entry, class Predicate>
Entry* find_first(Entries<Entry>& entries, Predicate wanted)
{
  for (OzRCPtr<Entry> const& entry : entries)
    if (wanted(*entry))
      return entry.get();
  return nullptr;
}

template <class Entry>
Entry* find_by_id(Entries<Entry>& entries, int id)
{
  return find_first(entries, [id](Entry const& entry) { return entry.identity() == id; });
}

template <class Entry>
Entry* find_by_type(Entries<Entry>& entries, OzString const* t)
{
  return find_first(entries, [t](Entry const& entry) { return entry.isA(t); });
}

/// What the copy of an object holds for `entry`: the same, or a clone of its own. Null if the clone turns
/// out to be something else altogether.
template <class Entry>
Entry* for_copy(Entry& entry)
{
  if (entry.sharable())
    return &entry;

  OzDynObj* const clone = entry.clone();
  Entry* const own = dynamic_cast<Entry*>(clone);
  if (own == nullptr)
    delete clone;
  return own;
}
} // namespace

OzString const OzObject::class_name_("OzObject");
OzString const OzObject::default_name_("DEFAULT");

OzObject::OzObject()
  : identity_(draw_identity())
{
}

OzObject::OzObject(OzObject const& other)
  : OzObject()
{
  OzObject::operator=(other);
}

OzObject::~OzObject()
{
  {
    OzObjectDelete const event(identity_);
    notify_attribs(event);
    notify_reactors(event);
  }

  // Nulled first: an entry that dies now and looks at the object finds it bare.
  OzObjectRtx* const rtx = rtx_;
  rtx_ = nullptr;
  delete rtx;
}

OzString const* OzObject::type() const
{
  return &class_name_;
}

OzString const& OzObject::class_name() const
{
  return class_name_;
}

bool OzObject::isA(OzString const* t) const
{
  return t == &class_name_ || OzDynObj::isA(t);
}

int OzObject::identity() const
{
  return identity_;
}

void OzObject::debug(OzJournal&, OzDebug, bool, int) const {}

OzInterface* OzObject::get_interface(OzString const*) const
{
  return nullptr;
}

void OzObject::notify(OzEvent const& event)
{
  notify_attribs(event);
  notify_reactors(event);
}

void OzObject::notify()
{
  OzObjectModified const event(identity());
  notify(event);
}

void OzObject::add_ref() const
{
  OZ_ASSERT(n_refs_ >= 0);
  ++n_refs_;
}

void OzObject::remove_ref() const
{
  OZ_ASSERT(n_refs_ >= 1);
  --n_refs_;
}

int OzObject::n_refs() const
{
  OZ_ASSERT(n_refs_ >= 0);
  return n_refs_;
}

void OzObject::add_attrib(OzAttrib* attrib)
{
  OzRCPtr<OzAttrib> const held(attrib);
  construct_rtx();
  rtx_->attribs.prepend(held);
}

void OzObject::add_reactor(OzReactor* reactor)
{
  OzRCPtr<OzReactor> const held(reactor);
  construct_rtx();
  rtx_->reactors.prepend(held);
}

void OzObject::detach_attrib(OzAttrib* attrib)
{
  if (rtx_ == nullptr)
    return;

  // Dropped on return, and with it an attribute that nobody else holds.
  OzRCPtr<OzAttrib> const held(attrib);
  rtx_->attribs.remove(held);
}

void OzObject::detach_reactor(OzReactor* reactor)
{
  if (rtx_ == nullptr)
    return;

  OzRCPtr<OzReactor> const held(reactor);
  rtx_->reactors.remove(held);
}

void OzObject::detach_all_attribs()
{
  if (rtx_ != nullptr)
    rtx_->attribs.clear();
}

void OzObject::detach_all_reactors()
{
  if (rtx_ != nullptr)
    rtx_->reactors.clear();
}

void OzObject::destroy_all_attribs() {}

OzAttrib* OzObject::find_attrib_by_id(int id) const
{
  return rtx_ == nullptr ? nullptr : find_by_id(rtx_->attribs, id);
}

OzAttrib* OzObject::find_attrib_by_type(OzString const* t) const
{
  return rtx_ == nullptr ? nullptr : find_by_type(rtx_->attribs, t);
}

std::uint64_t OzObject::find_all_attribs_by_type(OzString const* t,
                                                 OzArray<OzAttrib*, OzAllocator<OzAttrib*>>& out) const
{
  out.resize(0, false);
  if (rtx_ == nullptr)
    return 0;

  for (OzRCPtr<OzAttrib> const& attrib : rtx_->attribs)
    if (attrib->isA(t))
      out.append(attrib.get());
  return out.size();
}

OzReactor* OzObject::find_reactor_by_id(int id) const
{
  return rtx_ == nullptr ? nullptr : find_by_id(rtx_->reactors, id);
}

OzReactor* OzObject::find_reactor_by_type(OzString const* t) const
{
  return rtx_ == nullptr ? nullptr : find_by_type(rtx_->reactors, t);
}

void OzObject::notify_attribs(OzEvent const& event)
{
  if (rtx_ == nullptr)
    return;

  // All are asked before the first is dropped, so that the list stands still under the walk.
  Entries<OzAttrib> invalid;
  for (OzRCPtr<OzAttrib> const& attrib : rtx_->attribs)
    if (!attrib->invariant(event))
      invalid.append(attrib);

  while (invalid.count() != 0)
  {
    OzRCPtr<OzAttrib> const attrib = invalid.pop_first();
    detach_attrib(attrib.get());
  }
}

void OzObject::notify_reactors(OzEvent const& event)
{
  if (rtx_ == nullptr)
    return;

  // Over the live list, which a reactor may change: so the walk ends where the links do, and the next item
  // is looked for only after the reactor has returned.
  for (Entries<OzReactor>::iterator i = rtx_->reactors.begin(); !i.at_end(); ++i)
    (*i)->react(event);
}

OzObject& OzObject::operator=(OzObject const& other)
{
  if (this == &other || other.rtx_ == nullptr)
    return *this;

  for (OzRCPtr<OzAttrib> const& attrib : other.rtx_->attribs)
    if (attrib->propagate())
      if (OzAttrib* const copy = for_copy(*attrib))
        add_attrib(copy);

  for (OzRCPtr<OzReactor> const& reactor : other.rtx_->reactors)
    if (reactor->propagate())
      if (OzReactor* const copy = for_copy(*reactor))
        add_reactor(copy);

  return *this;
}

void OzObject::construct_rtx() const
{
  if (rtx_ == nullptr)
    rtx_ = new OzObjectRtx;
}
