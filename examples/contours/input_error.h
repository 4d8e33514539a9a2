#ifndef CONTOURS_INPUT_ERROR_H
#define CONTOURS_INPUT_ERROR_H

#include <cstddef>
#include <stdexcept>
#include <string>

namespace contours
{

/// A drawing that cannot be read or is damaged: what is wrong, and in which line (0: the file as a whole).
class InputError : public std::runtime_error
{
public:
  InputError(std::size_t line, std::string const& text)
    : std::runtime_error(text)
    , line_(line)
  {
  }

  std::size_t line() const { return line_; }

private:
  std::size_t line_;
};

} // namespace contours

#endif
