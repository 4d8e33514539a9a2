#include "named_object.h"

namespace contours
{

OzString const NamedObject::class_name_("NamedObject");

NamedObject::NamedObject(OzString const& name, std::size_t number)
  : name_(name)
  , number_(number)
{
}

NamedObject::NamedObject(NamedObject const& other) = default;

NamedObject::~NamedObject() = default;

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
