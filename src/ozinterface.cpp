#include "ozinterface.h"

OzString const OzInterface::class_name_("OzInterface");

OzInterface::~OzInterface() = default;

OzInterface* OzInterface::query_interface(OzString const* id) const
{
  // Asking changes nothing; what is found may be changed by whoever asked.
  return id == &class_name_ ? const_cast<OzInterface*>(this) : nullptr;
}
