#include "ozdebug.h"

namespace
{
// Variables that are read at each call, although nothing in the library writes them.
volatile int bogus_int = 42424242;
volatile double bogus_double = 42424242242.42424;
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
