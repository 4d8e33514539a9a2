#include "named_object.h"

#include <ozstandardattribs.h>

namespace contours
{

OzString const NamedObject::class_name_("NamedObject");

NamedObject::NamedObject(OzString const& name, std::size_t number)
  : number_(number)
{
  add_attrib(new OzNameAttrib(name));
}

NamedObject::NamedObject(NamedObject const& other)
  : OzObject(other)
  , number_(other.number_)
{
  // Names stay behind when an object is copied.
  add_attrib(new OzNameAttrib(other.name()));
}

NamedObject::~NamedObject() = default;

OzString NamedObject::name() const
{
  auto const* const attribute = OzNameAttrib::cast(find_attrib_by_type(OzNameAttrib::type_id()));
  return attribute == nullptr ? OzString() : attribute->get_name();
}

OzString const* NamedObject::type() const
{
  return &class_name_;
}

OzString const& NamedObject::class_name() const
{
  return class_name_;
}

OzDynObj* NamedObject::clone() const
{
  return new NamedObject(*this);
}

bool NamedObject::isA(OzString const* t) const
{
  return t == &class_name_ || OzObject::isA(t);
}

NamedObject* NamedObject::cast(OzDynObj* object)
{
  return cast_to<NamedObject>(object);
}

NamedObject const* NamedObject::cast(OzDynObj const* object)
{
  return cast_to<NamedObject const>(object);
}

} // namespace contours
