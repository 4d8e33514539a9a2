#include "failed_checks.h"

#include "exit_codes.h"
#include "progress_bar.h"

#include <cstdio>
#include <cstdlib>

namespace contours
{

namespace
{

[[noreturn]] void end_the_program(char const* file, int line)
{
  ProgressBar::erase_before_the_end();
  std::fprintf(
      stderr,
      "oz-contours: %s:%d: a check failed. This is a bug: please report it with this line and the drawing.\n",
      file, line);
  std::_Exit(EXIT_BUG);
}

} // namespace

FailedChecksEndTheProgram::FailedChecksEndTheProgram()
  : former(dkb_assertion_handler)
{
  set_dkb_assertion_handler(&end_the_program, true);
}

FailedChecksEndTheProgram::~FailedChecksEndTheProgram()
{
  dkb_assertion_handler = former;
}

} // namespace contours
