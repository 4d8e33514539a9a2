#ifndef OZRCOBJ_H
#define OZRCOBJ_H

#include "ozexport.h"

#include <cstddef>

/// An object that counts who holds it. The count is a plain number: a counted object belongs to one thread
/// at a time. Counting never deletes anything; only OzRCPtr turns a count of 0 into a deletion, so an
/// object that nobody ever held through one lives on.
class OZ_EXPORT OzRCObj
{
public:
  OzRCObj();
  OzRCObj(OzRCObj const&);
  OzRCObj& operator=(OzRCObj const&);
  virtual ~OzRCObj();

  virtual void add_ref() const = 0;
  virtual void remove_ref() const = 0;
  virtual int n_refs() const = 0;
};

/// A counted reference: as long as it stands, the object lives. T offers add_ref, remove_ref, n_refs and a
/// virtual destructor.
///
/// Wrapping a fresh object and dropping the wrapper deletes the object.
template <class T>
class OzRCPtr
{
public:
  OzRCPtr() = default;
  explicit OzRCPtr(T* object)
    : pointer(object)
  {
    if (pointer != nullptr)
      pointer->add_ref();
  }
  OzRCPtr(OzRCPtr const& other)
    : OzRCPtr(other.pointer)
  {
  }
  ~OzRCPtr() { delete let_go(); }

  /// The old object is deleted last of all, since the other pointer may live inside it: `p = p->next`.
  OzRCPtr& operator=(OzRCPtr const& other)
  {
    if (this == &other)
      return *this;

    T* const taken = other.pointer;
    T* const doomed = let_go();
    pointer = taken;
    if (pointer != nullptr)
      pointer->add_ref();
    delete doomed;
    return *this;
  }

  T* get() const { return pointer; }
  T* operator->() const { return pointer; }
  T& operator*() const { return *pointer; }
  explicit operator bool() const { return pointer != nullptr; }

  friend bool operator==(OzRCPtr const& a, OzRCPtr const& b) { return a.pointer == b.pointer; }
  friend bool operator!=(OzRCPtr const& a, OzRCPtr const& b) { return a.pointer != b.pointer; }
  friend bool operator==(OzRCPtr const& a, T const* b) { return a.pointer == b; }
  friend bool operator!=(OzRCPtr const& a, T const* b) { return a.pointer != b; }
  friend bool operator==(T const* a, OzRCPtr const& b) { return a == b.pointer; }
  friend bool operator!=(T const* a, OzRCPtr const& b) { return a != b.pointer; }
  friend bool operator==(OzRCPtr const& a, std::nullptr_t) { return a.pointer == nullptr; }
  friend bool operator!=(OzRCPtr const& a, std::nullptr_t) { return a.pointer != nullptr; }
  friend bool operator==(std::nullptr_t, OzRCPtr const& b) { return b.pointer == nullptr; }
  friend bool operator!=(std::nullptr_t, OzRCPtr const& b) { return b.pointer != nullptr; }

private:
  /// Takes the reference back. Returns the object if nobody holds it any more, else null.
  T* let_go()
  {
    if (pointer == nullptr)
      return nullptr;
    pointer->remove_ref();
    return pointer->n_refs() == 0 ? pointer : nullptr;
  }

  T* pointer = nullptr;
};

/// The one owner of an object. As an out-parameter it is how an operation hands a new object to its caller.
/// It is neither copied nor assigned from another.
template <class T>
class OzAutoPtr
{
public:
  OzAutoPtr() = default;
  explicit OzAutoPtr(T* object)
    : pointer(object)
  {
  }
  OzAutoPtr(OzAutoPtr const&) = delete;
  OzAutoPtr& operator=(OzAutoPtr const&) = delete;
  ~OzAutoPtr() { delete pointer; }

  /// Deletes the object held so far, unless it is `object` itself, and owns `object` from now on.
  OzAutoPtr& operator=(T* object)
  {
    if (object != pointer)
    {
      delete pointer;
      pointer = object;
    }
    return *this;
  }

  T* get() const { return pointer; }
  T* operator->() const { return pointer; }
  T& operator*() const { return *pointer; }
  explicit operator bool() const { return pointer != nullptr; }

  /// Gives the object up to the caller, without deleting it.
  T* release()
  {
    T* const object = pointer;
    pointer = nullptr;
    return object;
  }

private:
  T* pointer = nullptr;
};

#endif
