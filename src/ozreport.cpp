#include "ozreport.h"

OzString const OzReport::class_name_("OzReport");

OzReport::OzReport()
  : identity_(draw_identity())
{
}

OzReport::OzReport(OzReport const&)
  : OzDynObj()
  , identity_(draw_identity())
{
}

OzReport& OzReport::operator=(OzReport const&)
{
  return *this;
}

OzReport::~OzReport() = default;

OzString const* OzReport::type() const
{
  return &class_name_;
}

OzString const& OzReport::class_name() const
{
  return class_name_;
}

bool OzReport::isA(OzString const* t) const
{
  return t == &class_name_ || OzDynObj::isA(t);
}

int OzReport::identity() const
{
  return identity_;
}
