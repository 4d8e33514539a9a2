#ifndef OZ_UTILS_H
#define OZ_UTILS_H

#include "ozexport.h"
#include "ozstring.h"

#include <vector>

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

#endif
