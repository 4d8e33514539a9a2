#ifndef CONTOURS_EXIT_CODES_H
#define CONTOURS_EXIT_CODES_H

namespace contours
{

/// What the program ends with. Scripts rely on these numbers.
enum ExitCode : int
{
  EXIT_ALL_CLOSED = 0,
  EXIT_NOT_ALL_CLOSED =
      1, ///< something is open, branches, could be cut and was not, or there is nothing to cut
  EXIT_USAGE = 2,
  EXIT_INPUT = 3,      ///< the drawing cannot be read or is damaged; nothing was written
  EXIT_OUTPUT = 4,     ///< a result cannot be written
  EXIT_BUG = 70,       ///< a check within the library failed
  EXIT_CANCELLED = 130 ///< by Ctrl-C; nothing was written
};

} // namespace contours

#endif
