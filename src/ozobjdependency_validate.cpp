#include "ozobjdependency.h"

bool OzObjDependency::is_valid(OzJournal*) const
{
  return true;
}
