#ifndef CONTOURS_NUMBER_TEXT_H
#define CONTOURS_NUMBER_TEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace contours
{

// Numbers as text, in both directions the same under every locale.

/// A finite number in decimal notation, with blanks around it allowed. Nothing for all else: empty text, "nan",
/// "inf", 1e400, anything after the number. A number too small to be held is 0.
std::optional<double> parse_number(std::string_view text);

std::optional<int> parse_integer(std::string_view text);

/// With exactly so many decimals. Never a negative zero.
std::string fixed(double value, int decimals);

/// At most so many decimals and at least one: no zeros at the end but for "188.0".
std::string rounded(double value, int decimals);

/// At most so many decimals and no zeros at the end: "188".
std::string compact(double value, int decimals);

/// The fewest digits that read back as the same value, and at least one decimal.
std::string shortest(double value);

} // namespace contours

#endif
