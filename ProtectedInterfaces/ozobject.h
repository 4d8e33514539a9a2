#ifndef OZOBJECT_H
#define OZOBJECT_H

#include "ozarray.h"
#include "ozdebug.h"
#include "ozdynobj.h"
#include "ozexport.h"
#include "ozrcobj.h"
#include "ozstring.h"

#include <cstdint>

class OzAttrib;
class OzEvent;
class OzInterface;
class OzJournal;
class OzReactor;
struct OzObjectRtx;

/// The base of the objects of a model.
///
/// An object carries attributes, which are data attached to it, and reactors, which observe it. Both are
/// sequences and not sets, newest first: what is added twice is there twice. An event that is sent through
/// an object reaches the attributes first, and those that do not stay valid are dropped; then the reactors.
/// The object itself sends OzObjectModified, by notify(), and OzObjectDelete, when it is destroyed.
///
/// Copying: the copy has an identity of its own and a count of 0. Attributes and reactors that propagate go
/// along, as the same one if they are sharable, else as a clone; they come out in reverse order.
///
/// Ownership: the object holds a counted reference for each entry. What the find operations return carries
/// no reference for the caller.
/// Threads: one at a time, together with all objects that share an attribute or a reactor with it, since
/// counts are plain numbers.
/// Reports: a count that is negative, or about to become so.
/// Cost: an object without attributes and reactors has one null pointer for both. Each event, the one of
/// destruction too, draws an identity under the global lock. Finding looks at each entry.
class OZ_EXPORT OzObject : public OzDynObj, public OzRCObj
{
public:
  OzObject();
  OzObject(OzObject const& other);
  /// Sends OzObjectDelete to the attributes, then to the reactors, then lets go of the reactors and last of
  /// the attributes. The parts of derived classes are gone by then.
  ~OzObject() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  bool isA(OzString const* t) const override;
  int identity() const override;

  /// Writes the object to a journal. Writes nothing unless overridden.
  virtual void debug(OzJournal& journal, OzDebug level, bool flag, int indent) const;
  /// The interface `id` of this object, or null if it does not offer that, as here.
  virtual OzInterface* get_interface(OzString const* id) const;
  /// Sends `event` to the attributes, then to the reactors.
  virtual void notify(OzEvent const& event);
  /// Sends an OzObjectModified about this object.
  virtual void notify();

  void add_ref() const override;
  void remove_ref() const override;
  int n_refs() const override;

  /// Puts an attribute before the others. It must not be null: sending an event would fail on it.
  void add_attrib(OzAttrib* attrib);
  /// Puts a reactor before the others. It must not be null: sending an event would fail on it.
  void add_reactor(OzReactor* reactor);

  /// Takes the newest entry of `attrib` out. The attribute is deleted if nobody else holds it; one with a
  /// count of 0 is so even if it was never attached, unless this object has had no attribute or reactor yet.
  void detach_attrib(OzAttrib* attrib);
  /// The same for a reactor.
  void detach_reactor(OzReactor* reactor);
  void detach_all_attribs();
  void detach_all_reactors();
  /// Does nothing at all. It is detach_all_attribs() that takes attributes off.
  void destroy_all_attribs();

  /// Null if there is none.
  OzAttrib* find_attrib_by_id(int id) const;
  /// The newest attribute of the type `t` or one derived from it; null if there is none.
  OzAttrib* find_attrib_by_type(OzString const* t) const;
  /// All attributes of the type `t` or one derived from it, newest first, in place of what `out` holds.
  /// Returns their number.
  std::uint64_t find_all_attribs_by_type(OzString const* t,
                                         OzArray<OzAttrib*, OzAllocator<OzAttrib*>>& out) const;
  OzReactor* find_reactor_by_id(int id) const;
  OzReactor* find_reactor_by_type(OzString const* t) const;

  /// Asks every attribute whether it stays valid under `event`, and only then drops those that do not. A
  /// dropped attribute is deleted if nobody else holds it.
  void notify_attribs(OzEvent const& event);
  /// Tells every reactor. One that is added meanwhile is not told; one that is detached before its turn, by
  /// another reactor, neither.
  void notify_reactors(OzEvent const& event);

  static OzObject* cast(OzDynObj* object) { return cast_to<OzObject>(object); }
  static OzObject const* cast(OzDynObj const* object) { return cast_to<OzObject const>(object); }
  static OzObject* cast(std::nullptr_t) { return nullptr; }
  static OzString const* type_id() { return &class_name_; }
  /// A name to show for objects that have none: "DEFAULT".
  static OzString const& get_default_name() { return default_name_; }

  static OzString const class_name_;
  static OzString const default_name_;

protected:
  /// Adds the attributes and reactors of `other` that propagate to those that are here already. Identity and
  /// count stay.
  OzObject& operator=(OzObject const& other);

private:
  void construct_rtx() const;

  mutable OzObjectRtx* rtx_ = nullptr; // owned; null until the first attribute or reactor is added
  mutable int n_refs_ = 0;
  int identity_;
};

#endif
