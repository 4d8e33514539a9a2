#include "ozdebug.h"

namespace
{
// Kept in writable memory, though nothing in the library writes them.
int bogus_int = 42424242;
double bogus_double = 42424242242.42424;
} // namespace

int Oz_BogusInt()
{
  return bogus_int;
}

double Oz_BogusDouble()
{
  return bogus_double;
}

int Oz_DebugIndentStep()
{
  return 3;
}

extern "C" double oztfp0_()
{
  return 1e-20;
}
