#ifndef CONTOURS_INTERRUPT_H
#define CONTOURS_INTERRUPT_H

#include "stop_flag.h"

#include <csignal>

namespace contours
{

/// While it lives, the first Ctrl-C sets a flag, and the second one ends the process, as Ctrl-C does where nobody
/// minds it. A process that was started to ignore Ctrl-C, as shells do in the background, goes on ignoring it.
///
/// One lives at a time, and no thread but its own runs when it ends.
class Interrupt
{
public:
  /// `flag` stays the caller's and must outlive this.
  explicit Interrupt(StopFlag& flag);
  ~Interrupt();
  Interrupt(Interrupt const&) = delete;
  Interrupt& operator=(Interrupt const&) = delete;

private:
  struct sigaction former;
};

} // namespace contours

#endif
