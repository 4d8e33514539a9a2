#include "oz_utils.h"

#include "ozinterval.h"
#include "ozresult.h"

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace
{
constexpr double PI = 3.14159265358979323846;
} // namespace

OzString oz_blankstring(int n)
{
  OzString blanks;
  if (n < 1)
    return blanks;

  blanks.resize(static_cast<std::uint64_t>(n) + 1, true);
  std::memset(blanks.as_c_string(), ' ', static_cast<std::uint64_t>(n));
  blanks.as_c_string()[n] = '\0';
  return blanks;
}

OzString oz_tolower(OzString const& s)
{
  OzString lowered(s);
  oz_tolower(lowered);
  return lowered;
}

void oz_tolower(OzString& s)
{
  // Bytes above ASCII go in as negative numbers.
  for (char* c = s.as_c_string(); *c != '\0'; ++c)
    *c = static_cast<char>(std::tolower(static_cast<signed char>(*c)));
}

std::vector<OzString> oz_split(OzString const& s, char const* delimiter)
{
  std::vector<OzString> parts;
  std::uint64_t start = 0;
  int hit = s.find(delimiter, 0);
  if (hit == -1)
    return parts;

  while (hit != -1)
  {
    std::uint64_t const end = static_cast<std::uint64_t>(hit);
    parts.push_back(s.substr(start, static_cast<int>(end - start)));
    start = end + 1;
    hit = s.find(delimiter, start);
  }
  if (start < s.length())
    parts.push_back(s.substr(start, -1));
  return parts;
}

int oz_error_number(OzResult const& result)
{
  OzResult::CodeID code = OzResult::OK;
  int number = -1;
  OzString const* const* package = nullptr;
  result.get_error_condition(code, number, package);
  return number;
}

void oz_congruence_info(int value, int period, int base, int& result, int& count)
{
  // The distance of two 32-bit numbers needs one bit more.
  std::int64_t const distance = std::int64_t(value) - base;
  if (distance >= 0)
  {
    result = static_cast<int>(distance % period + base);
    count = static_cast<int>(distance / period);
    return;
  }

  // Whole periods below the base give the upper end of the period, not the base.
  result = static_cast<int>(period - -distance % period + base);
  count = static_cast<int>(-(-distance / period) - 1);
}

void oz_congruence_info(double value, double period, double base, double& result, int& count,
                        OzEvalLimit limit)
{
  double const top = base + period;
  double wrapped = value;
  std::int64_t added = 0;
  if (base > value)
  {
    for (; base > wrapped; ++added)
      wrapped += period;
  }
  if (value > top)
  {
    for (; wrapped > top; --added)
      wrapped -= period;
  }

  if (wrapped <= base && limit == OzEvalFromBelow)
  {
    wrapped = top;
    ++added;
  }
  else if (wrapped >= top && limit == OzEvalFromAbove)
  {
    wrapped = base;
    --added;
  }
  result = wrapped;
  count = static_cast<int>(added);
}

void oz_rerange(double& angle)
{
  bool const far_above = angle >= 5.0 * PI;
  OZ_ASSERT(!far_above);
  if (far_above)
    angle = PI;
  bool const far_below = angle < -5.0 * PI;
  OZ_ASSERT(!far_below);
  if (far_below)
    angle = -PI;

  while (angle >= PI)
    angle -= 2.0 * PI;
  while (angle < -PI)
    angle += 2.0 * PI;
}

void oz_rerange(double& value, OzInterval const& period)
{
  double const length = period.length();
  if (length == 0.0)
    return;

  bool const far_above = value >= period.end() + 2.0 * length;
  OZ_ASSERT(!far_above);
  if (far_above)
    value = period.end();
  bool const far_below = value < period.start() - 2.0 * length;
  OZ_ASSERT(!far_below);
  if (far_below)
    value = period.start();

  while (value >= period.end())
    value -= length;
  while (value < period.start())
    value += length;
}

double oz_rerange(double a, double b, double t, OzInterval const& period)
{
  // Negative for an empty period, so that then both steps below may be taken.
  double const turn = period.end() - period.start();
  double const way = b - a;
  if (way > turn * 0.5)
    b -= turn;
  if (-turn * 0.5 >= way)
    b += turn;

  double value = (1.0 - t) * a + t * b;
  oz_rerange(value, period);
  return value;
}

void oz_linear_function_evaluate(OzArray<double>& values, OzInterval const& from, OzInterval const& to,
                                 double const* scale)
{
  double const factor = scale != nullptr && *scale != 1.0 ? *scale : 1.0;
  double const from_start = factor * from.start();
  double const from_end = factor * from.end();
  double const width = from.end() - from.start();
  for (double& value : values)
  {
    double const above_start = value - from_start;
    double const above_end = value - from_end;
    if (std::fabs(above_start) < 1e-12)
      value = to.start();
    else if (std::fabs(above_end) < 1e-12)
      value = to.end();
    else if (std::fabs(width) < 1e-20)
      value = (to.start() + to.end()) * 0.5;
    else
      value = (above_start * to.end() - above_end * to.start()) / width;
  }
}
