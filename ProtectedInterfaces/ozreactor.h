#ifndef OZREACTOR_H
#define OZREACTOR_H

#include "ozdynobj.h"
#include "ozexport.h"
#include "ozrcobj.h"
#include "ozstring.h"

class OzEvent;

/// An observer of objects of the model, told about each event of the objects that it is attached to.
///
/// Ownership: counted; the objects that hold it keep it alive. A copy starts with a count of 0 and draws an
/// identity of its own; assignment changes neither count nor identity.
/// Threads: one at a time, since the count is a plain number.
/// Reports: a count that is negative, or about to become so.
class OZ_EXPORT OzReactor : public OzRCObj, public OzDynObj // counted first, unlike OzAttrib and OzObject
{
public:
  OzReactor& operator=(OzReactor const& other);
  ~OzReactor() override;

  void add_ref() const override;
  void remove_ref() const override;
  int n_refs() const override;

  /// May one reactor hang on several objects? If not, a copied object gets a clone. True unless overridden.
  virtual bool sharable() const;
  /// Does the reactor go along when its object is copied?
  virtual bool propagate() const = 0;
  /// An event has reached this reactor. It may attach reactors to the object and detach others, but it must
  /// not be detached itself while it runs: the walk over the object's reactors stands on it.
  virtual void react(OzEvent const& event) = 0;

  OzString const* type() const override;
  OzString const& class_name() const override;
  bool isA(OzString const* t) const override;
  int identity() const override;

  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;

protected:
  OzReactor();
  OzReactor(OzReactor const& other);

private:
  mutable int n_refs_ = 0;
  int identity_;
};

#endif
