#include "ozrcobj.h"

OzRCObj::OzRCObj() = default;

OzRCObj::OzRCObj(OzRCObj const&) {}

OzRCObj& OzRCObj::operator=(OzRCObj const&)
{
  return *this;
}

OzRCObj::~OzRCObj() = default;
