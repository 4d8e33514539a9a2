#ifndef OZDYNOBJ_H
#define OZDYNOBJ_H

#include "ozexport.h"
#include "ozstring.h"

#include <cstddef>

/// The root of all classes that are typed at run time.
///
/// A type is the address of a class's static `class_name_`; the text there is only for printing, and two
/// classes with the same text are different types. A class X of the family declares
/// - `static OzString const class_name_` with exactly its name, and `static OzString const* type_id()`;
/// - overrides of type() and class_name(), which return that string, and of isA(), which compares with it
///   and otherwise asks the direct base;
/// - if it is concrete, an override of clone() that is `new X(*this)`;
/// - if clients cast to it, the overloads of `static cast`, for which OzDynObj offers cast_to().
///
/// Identities: one counter numbers objects, attributes, reactors, events, reports and roles alike. A copy
/// has an identity of its own.
///
/// Threads: types may be asked for and identities drawn on any thread. No object of the family is built
/// before the library's static objects are.
/// Cost: isA() is one virtual call and one comparison of pointers for each level.
class OZ_EXPORT OzDynObj
{
public:
  OzDynObj() = default;
  OzDynObj(OzDynObj const&) = default;
  OzDynObj& operator=(OzDynObj const&) = default;
  virtual ~OzDynObj();

  virtual OzString const* type() const;
  virtual OzString const& class_name() const;
  /// A new object, copy of this one, owned by the caller.
  virtual OzDynObj* clone() const = 0;
  /// Is this object of type `t` or of a type derived from it?
  virtual bool isA(OzString const* t) const;
  virtual int identity() const = 0;

  char const* classname() const { return class_name().as_const_c_string(); }
  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;
  static int IDENTITY_INDEX_; // the next identity; guarded by dkb_critical_mutex

protected:
  /// The next identity, drawn under the global lock.
  static int draw_identity();

  /// `object` as an X if it is one, else null; null for null. What each `X::cast` does.
  template <class X, class Object>
  static X* cast_to(Object* object)
  {
    return object != nullptr && object->isA(X::type_id()) ? static_cast<X*>(object) : nullptr;
  }
};

#endif
