#include "ozattrib.h"

#include "ozassert.h"

OzString const OzAttrib::class_name_("OzAttrib");

OzAttrib::OzAttrib()
  : identity_(draw_identity())
{
}

OzAttrib::OzAttrib(OzAttrib const&)
  : OzDynObj()
  , OzRCObj()
  , identity_(draw_identity())
{
}

OzAttrib& OzAttrib::operator=(OzAttrib const&)
{
  return *this;
}

OzAttrib::~OzAttrib() = default;

OzString const* OzAttrib::type() const
{
  return &class_name_;
}

OzString const& OzAttrib::class_name() const
{
  return class_name_;
}

bool OzAttrib::isA(OzString const* t) const
{
  return t == &class_name_ || OzDynObj::isA(t);
}

int OzAttrib::identity() const
{
  return identity_;
}

bool OzAttrib::sharable() const
{
  return true;
}

void OzAttrib::add_ref() const
{
  OZ_ASSERT(n_refs_ >= 0);
  ++n_refs_;
}

void OzAttrib::remove_ref() const
{
  OZ_ASSERT(n_refs_ >= 1);
  --n_refs_;
}

int OzAttrib::n_refs() const
{
  OZ_ASSERT(n_refs_ >= 0);
  return n_refs_;
}
