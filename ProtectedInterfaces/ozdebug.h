#ifndef OZDEBUG_H
#define OZDEBUG_H

#include "ozexport.h"

/// How much a `debug` operation prints. The values are compared as numbers: a value type prints nothing
/// below OZ_DEBUG_CONTENTS.
enum OzDebug
{
  OZ_DEBUG_OFF = 0,      ///< nothing beyond what an operation prints unconditionally
  OZ_DEBUG_SUMMARY = 1,  ///< header and counts of a large structure
  OZ_DEBUG_CONTENTS = 2, ///< the one line of a value, the contents of a graph, name and sizes of a table
  OZ_DEBUG_DETAIL = 3    ///< also the entries of a table, each at this level
};

/// The number that marks an `int` as dead (42424242), so that a stale read stands out in a dump.
OZ_EXPORT int Oz_BogusInt();

/// The number that marks a `double` as dead (42424242242.42424).
OZ_EXPORT double Oz_BogusDouble();

/// How many blanks a dump is indented for each level (3).
OZ_EXPORT int Oz_DebugIndentStep();

/// 1e-20. Exported without name decoration, under exactly this name.
extern "C" OZ_EXPORT double oztfp0_();

#endif
