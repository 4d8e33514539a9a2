#ifndef CONTOURS_FAILED_CHECKS_H
#define CONTOURS_FAILED_CHECKS_H

#include <ozassert.h>

namespace contours
{

/// While it lives, a check of the library that fails ends the process with EXIT_BUG and a line on standard error that
/// asks for a report, on whichever thread it is. The library itself would go on, and its results could then be wrong without a sign; files are
/// written last, so there is nothing half done.
class FailedChecksEndTheProgram
{
public:
  FailedChecksEndTheProgram();
  ~FailedChecksEndTheProgram();
  FailedChecksEndTheProgram(FailedChecksEndTheProgram const&) = delete;
  FailedChecksEndTheProgram& operator=(FailedChecksEndTheProgram const&) = delete;

private:
  OzAssertionHandler former;
};

} // namespace contours

#endif
