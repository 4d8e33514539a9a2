#include "ozdynobj.h"

#include "ozmutex.h"

OzString const OzDynObj::class_name_("OzDynObj");
int OzDynObj::IDENTITY_INDEX_ = 1;

OzDynObj::~OzDynObj() = default;

OzString const* OzDynObj::type() const
{
  return &class_name_;
}

OzString const& OzDynObj::class_name() const
{
  return class_name_;
}

bool OzDynObj::isA(OzString const* t) const
{
  return t == &class_name_;
}

int OzDynObj::draw_identity()
{
  OzCriticalDkbRegion const region;
  return IDENTITY_INDEX_++;
}
