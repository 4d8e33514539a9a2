#ifndef CONTOURS_NAMED_OBJECT_H
#define CONTOURS_NAMED_OBJECT_H

#include <ozobject.h>
#include <ozstring.h>

#include <cstddef>

namespace contours
{

/// What the history is about: an entity, an edge or a contour, as an object of the library's object model. It says where
/// the thing itself is to be found, and has a name as an attribute, under which dumps of the history show it.
class NamedObject : public OzObject
{
public:
  /// `number` is the place among all things of its kind.
  NamedObject(OzString const& name, std::size_t number);
  NamedObject(NamedObject const& other);
  ~NamedObject() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  OzDynObj* clone() const override;
  bool isA(OzString const* t) const override;

  /// Empty if somebody took the attribute away.
  OzString name() const;
  std::size_t number() const { return number_; }

  static OzString const* type_id() { return &class_name_; }
  static NamedObject* cast(OzDynObj* object);
  static NamedObject const* cast(OzDynObj const* object);

  static OzString const class_name_;

private:
  std::size_t number_;
};

} // namespace contours

#endif
