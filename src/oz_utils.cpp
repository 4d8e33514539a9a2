#include "oz_utils.h"

#include "ozinterval.h"
#include "ozjournal.h"
#include "ozresult.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <exception>

namespace
{
constexpr double PI = 3.14159265358979323846;

/// Puts a journal's number format back when the dump ends.
///
/// A journal may refuse to take back what it said, and the handler that hears of it may throw, as may a client's
/// own journal. So the end of a dump throws; where the dump already ends by an exception, that one goes on.
class FormatKeeper
{
public:
  explicit FormatKeeper(OzJournal& kept_journal)
    : journal(kept_journal)
    , width(kept_journal.width())
    , precision(kept_journal.precision())
    , exceptions(std::uncaught_exceptions())
  {
  }
  ~FormatKeeper() noexcept(false)
  {
    if (std::uncaught_exceptions() == exceptions)
    {
      put_back();
      return;
    }
    try
    {
      put_back();
    }
    catch (...)
    {
    }
  }
  FormatKeeper(FormatKeeper const&) = delete;
  FormatKeeper& operator=(FormatKeeper const&) = delete;

private:
  void put_back() const
  {
    try
    {
      journal.set_precision(precision);
    }
    catch (...)
    {
      journal.set_width(width);
      throw;
    }
    journal.set_width(width);
  }

  OzJournal& journal;
  int width;
  int precision;
  int exceptions; // under way when the dump began
};

double number_at(OzArray<double> const& array, std::int64_t index)
{
  return array[static_cast<std::uint64_t>(index)];
}

/// How many columns a table of points has. `dim` is divided by, unless there are no rows.
int columns_of(OzArray<double> const& array, int dim, int rows)
{
  if (rows <= 0)
    return 0;
  // 64 bits, since the lowest number divided by -1 is one more than 32 bits hold.
  std::int64_t const size = static_cast<std::int32_t>(array.size());
  return static_cast<int>(size / dim / rows);
}
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
  // Read once, since the value may be an end of the period itself, which would never get below itself.
  double const start = period.start();
  double const end = period.end();
  double const length = period.length();
  if (length == 0.0)
    return;

  bool const far_above = value >= end + 2.0 * length;
  OZ_ASSERT(!far_above);
  if (far_above)
    value = end;
  bool const far_below = value < start - 2.0 * length;
  OZ_ASSERT(!far_below);
  if (far_below)
    value = start;

  while (value >= end)
    value -= length;
  while (value < start)
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

void Oz_debug_double_array(OzJournal& journal, OzArray<double> const& array, int width, int precision,
                           int columns, int indent)
{
  FormatKeeper const keeper(journal);
  OZ_ASSERT(width > precision);
  OZ_ASSERT(columns >= 1);
  OZ_ASSERT(indent >= 0);
  journal.set_precision(1);
  journal.set_width(width);
  journal.set_precision(precision);

  OzString const blanks = oz_blankstring(indent);
  for (double const number : array)
  {
    journal << blanks << number << " ";
    if (columns <= 1)
      journal << ozEndExpr;
  }
}

void Oz_debug_double_matrix(OzJournal& journal, int rows, int columns, OzArray<double> const& array,
                            int width, int precision, int indent, bool by_column)
{
  FormatKeeper const keeper(journal);
  OZ_ASSERT(rows > 0);
  OZ_ASSERT(columns > 0);
  OZ_ASSERT(static_cast<std::int64_t>(array.size()) >= std::int64_t(rows) * columns);
  OZ_ASSERT(width > precision);
  OZ_ASSERT(indent >= 0);
  journal.set_precision(1);
  journal.set_width(width);
  journal.set_precision(precision);

  OzString const blanks = oz_blankstring(indent);
  for (std::int64_t row = 0; row < rows; ++row)
  {
    journal << blanks;
    for (std::int64_t column = 0; column < columns; ++column)
      journal << number_at(array, by_column ? row + column * rows : row * columns + column) << " ";
    journal << ozEndExpr;
  }
}

void Oz_debug_vector_array(OzJournal& journal, int, int, OzArray<double> const&, int, int, int, int)
{
  FormatKeeper const keeper(journal);
  OZ_ASSERT(false);
}

void Oz_debug_vector_matrix(OzJournal& journal, int, int, int, OzArray<double> const&, int, int, int, bool)
{
  FormatKeeper const keeper(journal);
  OZ_ASSERT(false);
}

void oz_arraydebug(OzJournal& journal, OzArray<double> const& array, int per_line, int width, int precision,
                   int indent)
{
  FormatKeeper const keeper(journal);
  journal.set_width(width);
  journal.set_precision(precision);

  OzString const blanks = oz_blankstring(indent);
  journal << ozEndExpr;
  journal << blanks << "Array of " << array.size() << " doubles " << ozEndExpr;

  std::uint64_t const step = static_cast<std::uint64_t>(std::max(per_line, 1));
  for (std::uint64_t start = 0; start < array.size(); start += step)
  {
    std::uint64_t const stop = std::min(start + step, array.size());
    for (std::uint64_t i = start; i < stop; ++i)
      journal << blanks << array[i];
    journal << ozEndExpr;
  }
}

void oz_arraydebug(OzJournal& journal, int dim, OzArray<double> const& array, int per_line, int width,
                   int precision, int indent)
{
  FormatKeeper const keeper(journal);
  journal.set_width(width);
  journal.set_precision(precision);

  std::uint64_t const points = dim > 0 ? array.size() / static_cast<std::uint64_t>(dim) : 0;
  journal << ozEndExpr << oz_blankstring(indent);
  if (points == 1)
    journal << "Point/vector of dimension ";
  else
    journal << "Array of " << points << " points/vectors of dimension ";
  journal << dim << ozEndExpr;

  if (dim > 0)
    oz_arraydebug(journal, true, 0, dim, 1, array, per_line, width, precision, indent);
}

void oz_arraydebug(OzJournal& journal, bool row_wise, int dim, int rows, OzArray<double> const& array,
                   int per_line, int width, int precision, int indent)
{
  FormatKeeper const keeper(journal);
  journal.set_width(width);
  journal.set_precision(precision);

  int const columns = columns_of(array, dim, rows);
  OzString const blanks = oz_blankstring(indent);
  journal << ozEndExpr;
  journal << blanks << "Matrix with " << rows << " rows and " << columns << " columns." << ozEndExpr;
  journal << blanks;
  if (dim == 1)
    journal << "Entries are doubles.";
  else
    journal << "Entries are points/vectors of dimension " << dim << ".";
  journal << ozEndExpr << ozEndExpr;

  int const count = row_wise ? rows : columns;
  for (int index = 0; index < count; ++index)
  {
    journal << blanks << (row_wise ? "Row with index " : "Column with index ") << index << ozEndExpr;
    oz_arraydebug(journal, row_wise, index, dim, rows, array, per_line, width, precision, indent);
  }
}

void oz_arraydebug(OzJournal& journal, bool row_wise, int index, int dim, int rows,
                   OzArray<double> const& array, int per_line, int width, int precision, int indent)
{
  FormatKeeper const keeper(journal);
  journal.set_width(width);
  journal.set_precision(precision);

  OzString const blanks = oz_blankstring(indent);
  std::int64_t const count = row_wise ? columns_of(array, dim, rows) : rows;
  std::int64_t const step = std::max(per_line, 1);
  for (std::int64_t start = 0; start < count; start += step)
  {
    std::int64_t const stop = std::min(start + step, count);
    for (int d = 0; d < dim; ++d)
    {
      for (std::int64_t i = start; i < stop; ++i)
      {
        std::int64_t const entry = row_wise ? i * rows + index : std::int64_t(index) * rows + i;
        journal << blanks << number_at(array, entry * dim + d);
      }
      journal << ozEndExpr;
    }
    if (dim > 1)
      journal << ozEndExpr;
  }
}
