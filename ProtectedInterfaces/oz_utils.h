#ifndef OZ_UTILS_H
#define OZ_UTILS_H

#include "ozarray.h"
#include "ozexport.h"
#include "ozstring.h"

#include <vector>

class OzInterval;
class OzJournal;
class OzResult;

/// A text of `n` blanks; empty if `n` is below 1.
OZ_EXPORT OzString oz_blankstring(int n);

/// A copy with each letter lowered by the C locale in force.
OZ_EXPORT OzString oz_tolower(OzString const& s);

/// Lowers each letter in place.
OZ_EXPORT void oz_tolower(OzString& s);

/// The parts of `s` between the occurrences of `delimiter`, which must not be empty.
///
/// A string without a delimiter yields no part at all. A delimiter in front or twice in a row yields an
/// empty part; one at the very end yields none. The walk goes on one character behind a hit, however long
/// the delimiter is, so its further characters belong to the next part: `aXYb` cut at `XY` gives `a` and
/// `Yb`.
OZ_EXPORT std::vector<OzString> oz_split(OzString const& s, char const* delimiter);

/// The number of the result's error condition as it is stored, -1 if there is none. Unlike
/// OzErr::error_number() it asks neither for a package nor for the range of a number.
OZ_EXPORT int oz_error_number(OzResult const& result);

/// Which end of a period a value on its boundary belongs to. Any other value leaves it where it is.
enum OzEvalLimit : int
{
  OzEvalFromBelow = 0, ///< the period is open below: a value at its lower end goes to the upper end
  OzEvalFromAbove = 1  ///< the period is open above: a value at its upper end goes to the lower end
};

/// Splits `value` into a representative in the period that starts at `base` and the number of periods between
/// them, so that value == result + count * period.
///
/// From `base` up the representative lies in [base, base + period), below it in (base, base + period]: a value
/// whole periods below `base` gets base + period and not base. A `period` of 0 is divided by, unguarded. Both
/// results are cut to 32 bits.
OZ_EXPORT void oz_congruence_info(int value, int period, int base, int& result, int& count);

/// The same for numbers with a fraction, but here `count` runs the other way: as the number of periods that
/// were added to `value`, so that result is value + count * period, up to the rounding of repeated additions.
///
/// A value within the period, its ends included, stays as it is; one at an end then goes where `limit` says.
///
/// Cost: one addition a period. It never ends for a value outside the period where adding `period` doesn't
/// bring it nearer: if `period` is 0 or below, or so small that the addition is lost in rounding, or `value`
/// is infinite.
OZ_EXPORT void oz_congruence_info(double value, double period, double base, double& result, int& count,
                                  OzEvalLimit limit);

/// Wraps an angle in radians into [-pi, pi).
///
/// Reports: an angle of 5 pi or more, or below -5 pi. It has run away and is not wrapped but replaced, by -pi.
OZ_EXPORT void oz_rerange(double& angle);

/// Wraps `value` into the period, its start included and its end not. Under a period of length 0 and an empty
/// one the value stays as it is. The value may be an end of the period itself.
///
/// A value so little below the start that adding a period rounds to the end gives the end.
///
/// Reports: a value more than two periods outside, which is replaced by an end of the period, and so becomes
/// the start, up to rounding. Two periods above the end is reported, two below the start is not.
OZ_EXPORT void oz_rerange(double& value, OzInterval const& period);

/// The value at fraction `t` of the way from `a` to `b` on a circle of which `period` is one turn, going the
/// shorter way round; of two equal ways the one upwards. The result is wrapped into the period as by
/// oz_rerange(value, period), with the same reports.
OZ_EXPORT double oz_rerange(double a, double b, double t, OzInterval const& period);

/// Maps each value from the range `from` to the range `to`, the ends exactly.
///
/// With a `scale`, the ends of `from` are multiplied by it before a value is compared with them; the length
/// of `from`, by which is divided, is not. Null, and a scale of exactly 1, stand for no scale.
///
/// A value within 1e-12 of an end of `from` becomes that end of `to`, the start first. Any other becomes the
/// middle of `to` if `from` is shorter than 1e-20.
OZ_EXPORT void oz_linear_function_evaluate(OzArray<double>& values, OzInterval const& from,
                                           OzInterval const& to, double const* scale);

// Dumps of arrays of numbers. Each takes over the journal's width and precision and puts both back in the
// end, also when a handler or the journal throws; the letter of the format stays. `indent` is a number of blanks. An
// element that isn't there is reported by the array and then printed all the same.

/// Writes all numbers, each with `indent` blanks in front and one blank behind it. With `columns` 1 or less
/// each stands in a line of its own, otherwise all stand in one line that is not ended.
///
/// Reports: a `width` not above `precision`, `columns` below 1, a negative `indent`.
OZ_EXPORT void Oz_debug_double_array(OzJournal& journal, OzArray<double> const& array, int width,
                                     int precision, int columns, int indent);

/// Writes a table, each row in a line. The array holds it column by column if `by_column` is true, row by row
/// if not.
///
/// Reports: `rows` and `columns` below 1, each; an array of fewer than rows * columns numbers; a `width` not
/// above `precision`; a negative `indent`.
OZ_EXPORT void Oz_debug_double_matrix(OzJournal& journal, int rows, int columns, OzArray<double> const& array,
                                      int width, int precision, int indent, bool by_column);

/// Writes nothing, and reports each call.
OZ_EXPORT void Oz_debug_vector_array(OzJournal& journal, int, int, OzArray<double> const& array, int, int,
                                     int, int);

/// Writes nothing, and reports each call.
OZ_EXPORT void Oz_debug_vector_matrix(OzJournal& journal, int, int, int, OzArray<double> const& array, int,
                                      int, int, bool);

// The dumps below begin on a new line, under a heading. Blanks as many as `indent` stand at the beginning of
// each line and between two numbers, so without indentation it is the width alone that keeps numbers apart.
// A `per_line` below 1 counts as 1. In tables the array holds points of `dim` numbers, column by column:
// coordinate d of the point at row r and column c is number (c * rows + r) * dim + d.

/// Writes all numbers, up to `per_line` in a line.
OZ_EXPORT void oz_arraydebug(OzJournal& journal, OzArray<double> const& array, int per_line, int width,
                             int precision, int indent);

/// Writes points of `dim` numbers, up to `per_line` side by side, each from top to bottom. With a `dim` of 0
/// or less there is the heading only.
OZ_EXPORT void oz_arraydebug(OzJournal& journal, int dim, OzArray<double> const& array, int per_line,
                             int width, int precision, int indent);

/// Writes a table of points of `dim` numbers, which must not be 0, row after row or column after column. How
/// many columns there are follows from the size of the array, which is cut to 32 bits.
OZ_EXPORT void oz_arraydebug(OzJournal& journal, bool row_wise, int dim, int rows,
                             OzArray<double> const& array, int per_line, int width, int precision,
                             int indent);

/// Writes one row of the table, or one column, without a heading.
OZ_EXPORT void oz_arraydebug(OzJournal& journal, bool row_wise, int index, int dim, int rows,
                             OzArray<double> const& array, int per_line, int width, int precision,
                             int indent);

#endif
