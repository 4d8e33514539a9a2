#ifndef CONTOURS_PROGRAM_H
#define CONTOURS_PROGRAM_H

#include <iosfwd>

namespace contours
{

/// The program without its process: takes a command line and three streams, gives an ExitCode.
int run(int argc, char const* const* argv, std::istream& in, std::ostream& out, std::ostream& err);

} // namespace contours

#endif
