#ifndef OZEVENT_H
#define OZEVENT_H

#include "ozdynobj.h"
#include "ozexport.h"
#include "ozstring.h"

/// Something that happened to an object of the model. The sender keeps an event on its stack and hands it
/// out by reference; whoever wants to keep it clones it. Events are told apart by isA().
///
/// Every event draws an identity, copies too. Assignment changes nothing.
class OZ_EXPORT OzEvent : public OzDynObj
{
public:
  OzEvent& operator=(OzEvent const& other);
  ~OzEvent() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  bool isA(OzString const* t) const override;
  int identity() const override;

  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;

protected:
  OzEvent();
  OzEvent(OzEvent const& other);

private:
  int identity_;
};

/// An object has changed.
class OZ_EXPORT OzObjectModified : public OzEvent
{
public:
  /// `object_id` is the identity of the object that the event is about.
  explicit OzObjectModified(int object_id);
  OzObjectModified(OzObjectModified const& other);
  OzObjectModified& operator=(OzObjectModified const& other);
  ~OzObjectModified() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  OzDynObj* clone() const override;
  bool isA(OzString const* t) const override;

  int object_id() const { return object_id_; }
  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;

private:
  OzObjectModified() = default;

  int object_id_ = 0;
};

/// An object is about to cease to exist: of what a derived class added to it nothing is left.
class OZ_EXPORT OzObjectDelete : public OzEvent
{
public:
  /// `object_id` is the identity of the object that the event is about.
  explicit OzObjectDelete(int object_id);
  OzObjectDelete(OzObjectDelete const& other);
  OzObjectDelete& operator=(OzObjectDelete const& other);
  ~OzObjectDelete() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  OzDynObj* clone() const override;
  bool isA(OzString const* t) const override;

  int object_id() const { return object_id_; }
  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;

private:
  OzObjectDelete() = default;

  int object_id_ = 0;
};

#endif
