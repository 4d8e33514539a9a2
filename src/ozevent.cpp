#include "ozevent.h"

OzString const OzEvent::class_name_("OzEvent");

OzEvent::OzEvent()
  : identity_(draw_identity())
{
}

OzEvent::OzEvent(OzEvent const&)
  : OzDynObj()
  , identity_(draw_identity())
{
}

OzEvent& OzEvent::operator=(OzEvent const&)
{
  return *this;
}

OzEvent::~OzEvent() = default;

OzString const* OzEvent::type() const
{
  return &class_name_;
}

OzString const& OzEvent::class_name() const
{
  return class_name_;
}

bool OzEvent::isA(OzString const* t) const
{
  return t == &class_name_ || OzDynObj::isA(t);
}

int OzEvent::identity() const
{
  return identity_;
}

OzString const OzObjectModified::class_name_("OzObjectModified");

OzObjectModified::OzObjectModified(int object_id)
  : object_id_(object_id)
{
}

OzObjectModified::OzObjectModified(OzObjectModified const& other) = default;

OzObjectModified& OzObjectModified::operator=(OzObjectModified const&)
{
  return *this;
}

OzObjectModified::~OzObjectModified() = default;

OzString const* OzObjectModified::type() const
{
  return &class_name_;
}

OzString const& OzObjectModified::class_name() const
{
  return class_name_;
}

OzDynObj* OzObjectModified::clone() const
{
  return new OzObjectModified(*this);
}

bool OzObjectModified::isA(OzString const* t) const
{
  return t == &class_name_ || OzEvent::isA(t);
}

OzString const OzObjectDelete::class_name_("OzObjectDelete");

OzObjectDelete::OzObjectDelete(int object_id)
  : object_id_(object_id)
{
}

OzObjectDelete::OzObjectDelete(OzObjectDelete const& other) = default;

OzObjectDelete& OzObjectDelete::operator=(OzObjectDelete const&)
{
  return *this;
}

OzObjectDelete::~OzObjectDelete() = default;

OzString const* OzObjectDelete::type() const
{
  return &class_name_;
}

OzString const& OzObjectDelete::class_name() const
{
  return class_name_;
}

OzDynObj* OzObjectDelete::clone() const
{
  return new OzObjectDelete(*this);
}

bool OzObjectDelete::isA(OzString const* t) const
{
  return t == &class_name_ || OzEvent::isA(t);
}
