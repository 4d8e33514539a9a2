#ifndef OZATTRIB_H
#define OZATTRIB_H

#include "ozdynobj.h"
#include "ozexport.h"
#include "ozrcobj.h"
#include "ozstring.h"

class OzEvent;

/// A piece of data attached to objects of the model.
///
/// A class derived from it says how the attribute fares: whether it goes along when its object is copied,
/// whether the copy then holds the very same attribute or a clone, and whether it stays valid when something
/// happens to its object. An attribute that does not stay valid is dropped by the object.
///
/// Ownership: counted; the objects that hold it keep it alive. A copy starts with a count of 0 and draws an
/// identity of its own; assignment changes neither count nor identity.
/// Threads: one at a time, since the count is a plain number.
/// Reports: a count that is negative, or about to become so.
class OZ_EXPORT OzAttrib : public OzDynObj, public OzRCObj
{
public:
  OzAttrib& operator=(OzAttrib const& other);
  ~OzAttrib() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  bool isA(OzString const* t) const override;
  int identity() const override;

  /// May one attribute hang on several objects? If not, a copied object gets a clone. True unless overridden.
  virtual bool sharable() const;
  /// Does the attribute go along when its object is copied?
  virtual bool propagate() const = 0;
  /// Does the attribute stay valid under `event`? With false its object drops it. Must not change the
  /// attributes of the object that asks.
  virtual bool invariant(OzEvent const& event) const = 0;

  void add_ref() const override;
  void remove_ref() const override;
  int n_refs() const override;

  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;

protected:
  OzAttrib();
  OzAttrib(OzAttrib const& other);

private:
  mutable int n_refs_ = 0;
  int identity_;
};

#endif
