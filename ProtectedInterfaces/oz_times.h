#ifndef OZ_TIMES_H
#define OZ_TIMES_H

#include "ozexport.h"

// A small profiler for code that brackets its regions by hand. Each call site has a number in a static
// variable of its own, which is negative before its first call; the function gives it its number:
//
//   static int start = -1;
//   time_start(start, name, file, line);
//   ...
//   static int end = -1;
//   time_end(end, file, line);
//
// When the outermost pair closes, the calls and clock ticks of each pair of sites since the last report go
// to the standard error stream, and counting starts anew. The calls of an end site are those under any
// start site; the ticks are those of the pair.
//
// Threads: each thread with a processor counts for itself, and all others together. A site's number is only
// good on the thread that drew it; a start site that is used on another thread is reported, and not counted.
// Reports: a wrong number, and an end without a start, each with a line on the standard error stream.

OZ_EXPORT void time_start(int& index, char* name, char* file, int line);
OZ_EXPORT void time_end(int& index, char* file, int line);

#endif
