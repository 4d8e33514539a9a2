#ifndef CONTOURS_RESULT_H
#define CONTOURS_RESULT_H

#include "exit_codes.h"

#include <ozresult.h>

#include <cstddef>
#include <string>

namespace contours
{

/// What a step of the program comes to: an OzResult whose error condition says what kind of thing happened. It is
/// handed up to run(), where it becomes a text and an exit code. Without a condition all is well.
class Result : public OzResult
{
public:
  enum Condition : int
  {
    NOT_ALL_CLOSED, ///< a warning; all else is a failure
    WRONG_USAGE,
    BAD_INPUT,
    NO_MEMORY,
    BAD_OUTPUT,
    CANCELLED,
    BUG
  };

  Result() = default;
  /// With a text that belongs to the condition.
  explicit Result(Condition condition);
  /// With a text of its own, and the line of the drawing that is at fault (0: the file as a whole).
  Result(Condition condition, std::string const& text, std::size_t line = 0);

  std::size_t line() const { return line_; }

private:
  std::size_t line_ = 0;
};

/// What the program ends with. A failure of another package counts as a bug.
ExitCode exit_code(OzResult const& result);

} // namespace contours

#endif
