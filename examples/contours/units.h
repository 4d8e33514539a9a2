#ifndef CONTOURS_UNITS_H
#define CONTOURS_UNITS_H

#include "drawing.h"

#include <optional>
#include <string_view>

namespace contours
{

/// Millimetres in one "mm", "cm", "m" or "in".
std::optional<double> unit_by_name(std::string_view name);

/// Millimetres in one unit of a drawing whose header has this $INSUNITS. A drawing without unit is in millimetres.
std::optional<double> unit_by_code(int code);

/// Brings all curves of `drawing` to millimetres and drops those without length. An entity that has none left gets
/// Use::NO_LENGTH. Throws an InputError for a curve that reaches farther out than numbers can tell apart.
void scale_to_millimetres(Drawing& drawing, double unit_mm);

} // namespace contours

#endif
