#include "result.h"

#include <iterator>

namespace contours
{

namespace
{

// The identity of the package is the address of the name.
OzString const NAME("oz-contours");
OzString const* const PACKAGE_OF_CONDITIONS = &NAME;

struct Meaning
{
  ExitCode exit_code;
  char const* text;
};

// By condition.
constexpr Meaning MEANINGS[] = {
    {EXIT_NOT_ALL_CLOSED, "not all contours are closed"},
    {EXIT_USAGE, "wrong usage"},
    {EXIT_INPUT, "the drawing cannot be read"},
    {EXIT_INPUT, "there is not enough memory for this drawing"},
    {EXIT_OUTPUT, "a result cannot be written"},
    {EXIT_CANCELLED, "cancelled"},
    {EXIT_BUG, "this is a bug"},
};

bool is_condition(int number)
{
  return number >= 0 && number < static_cast<int>(std::size(MEANINGS));
}

char const* text_of(OzString const* const&, int number)
{
  return is_condition(number) ? MEANINGS[number].text : nullptr;
}

} // namespace

Result::Result(Condition condition)
{
  set_error_condition(condition == NOT_ALL_CLOSED ? WARNING : FAILED, condition, &PACKAGE_OF_CONDITIONS,
                      &text_of);
}

Result::Result(Condition condition, std::string const& text, std::size_t line)
  : Result(condition)
{
  set_message(text.c_str());
  line_ = line;
}

ExitCode exit_code(OzResult const& result)
{
  if (result.ok())
    return EXIT_ALL_CLOSED;
  OzResult::CodeID severity = OzResult::OK;
  int number = -1;
  OzString const* const* package = nullptr;
  result.get_error_condition(severity, number, package);
  bool const is_own = package != nullptr && *package == &NAME;
  return is_own && is_condition(number) ? MEANINGS[number].exit_code : EXIT_BUG;
}

} // namespace contours
