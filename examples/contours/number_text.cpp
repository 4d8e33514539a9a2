#include "number_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace contours
{

namespace
{

std::string_view without_blanks(std::string_view text)
{
  std::size_t const first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos)
    return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// Programs write a plus sign, which std::from_chars does not take.
std::string_view without_plus(std::string_view text)
{
  bool const plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
  return plus ? text.substr(1) : text;
}

} // namespace

std::optional<double> parse_number(std::string_view text)
{
  std::string_view const digits = without_plus(without_blanks(text));
  char const* const end = digits.data() + digits.size();
  double value = 0.0;
  auto const [rest, error] = std::from_chars(digits.data(), end, value);
  if (rest != end)
    return std::nullopt;
  if (error == std::errc::result_out_of_range && digits.find("e-") != digits.npos)
    return 0.0;
  if (error == std::errc::result_out_of_range && digits.find("E-") != digits.npos)
    return 0.0;
  if (error != std::errc() || !std::isfinite(value))
    return std::nullopt;
  return value;
}

std::optional<int> parse_integer(std::string_view text)
{
  std::string_view const digits = without_plus(without_blanks(text));
  char const* const end = digits.data() + digits.size();
  int value = 0;
  auto const [rest, error] = std::from_chars(digits.data(), end, value);
  if (rest != end || error != std::errc())
    return std::nullopt;
  return value;
}

std::string fixed(double value, int decimals)
{
  std::array<char, 400> buffer; // the largest double has 309 digits before the point
  auto const written =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
  std::string text(buffer.data(), written.ptr);
  bool const zero = text.find_first_not_of("-0.") == std::string::npos;
  return zero && text[0] == '-' ? text.substr(1) : text;
}

std::string rounded(double value, int decimals)
{
  std::string text = fixed(value, decimals);
  std::size_t const point = text.find('.');
  if (point == std::string::npos)
    return text + ".0";
  std::size_t const last = text.find_last_not_of('0');
  text.resize(last == point ? point + 2 : last + 1);
  return text;
}

std::string compact(double value, int decimals)
{
  std::string const text = rounded(value, decimals);
  bool const whole = text.size() > 2 && text.substr(text.size() - 2) == ".0";
  return whole ? text.substr(0, text.size() - 2) : text;
}

std::string shortest(double value)
{
  std::array<char, 40> buffer;
  auto const written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  std::string const text(buffer.data(), written.ptr);
  bool const plain = text.find_first_of(".en") == std::string::npos;
  return plain ? text + ".0" : text;
}

} // namespace contours
