#ifndef OZTIMER_H
#define OZTIMER_H

#include "ozexport.h"

class OzJournal;
class OzString;

/// A stopwatch on the standard library's clock(), which measures the processor time of the whole process.
///
/// The ticks are divided by the constant 1000.0 whatever CLOCKS_PER_SEC is: where that is 1,000,000, as on
/// POSIX systems, the figures are milliseconds of processor time, though the printed text says seconds.
class OZ_EXPORT OzTimer
{
public:
  /// Starts.
  OzTimer();

  /// Starts anew.
  void reset_time();
  /// The ticks since the start, over 1000.
  double get_time() const;
  /// Writes `label` and the time, and ends the line.
  void print_time(OzJournal& journal, OzString const& label) const;

private:
  double start_clock_; // clock() at the start
};

#endif
