#include "ozreactor.h"

#include "ozassert.h"

OzString const OzReactor::class_name_("OzReactor");

OzReactor::OzReactor()
  : identity_(draw_identity())
{
}

OzReactor::OzReactor(OzReactor const&)
  : OzRCObj()
  , OzDynObj()
  , identity_(draw_identity())
{
}

OzReactor& OzReactor::operator=(OzReactor const&)
{
  return *this;
}

OzReactor::~OzReactor() = default;

void OzReactor::add_ref() const
{
  OZ_ASSERT(n_refs_ >= 0);
  ++n_refs_;
}

void OzReactor::remove_ref() const
{
  OZ_ASSERT(n_refs_ >= 1);
  --n_refs_;
}

int OzReactor::n_refs() const
{
  OZ_ASSERT(n_refs_ >= 0);
  return n_refs_;
}

bool OzReactor::sharable() const
{
  return true;
}

OzString const* OzReactor::type() const
{
  return &class_name_;
}

OzString const& OzReactor::class_name() const
{
  return class_name_;
}

bool OzReactor::isA(OzString const* t) const
{
  return t == &class_name_ || OzDynObj::isA(t);
}

int OzReactor::identity() const
{
  return identity_;
}
