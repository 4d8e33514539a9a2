#ifndef CONTOURS_REPORT_H
#define CONTOURS_REPORT_H

#include "contours.h"
#include "drawing.h"
#include "history.h"

#include <cstddef>
#include <string>

namespace contours
{

/// All that results are made of.
struct Report
{
  std::string drawing_name; ///< as the user gave it
  double unit_mm;
  double tolerance_mm;
  Drawing const& drawing;
  Outcome const& outcome;
};

// The forms of the result on standard output. Numbers look the same under every locale.

/// For reading: a line for each contour and a summary. A long list of entities is cut unless `all_entities` is set.
std::string table(Report const& report, bool all_entities);
/// For spreadsheets, by RFC 4180: lines end in CR LF.
std::string csv(Report const& report);
/// For programs. Keys and their meaning stay; new ones may be added.
std::string json(Report const& report);

/// The answer to the question which contour took `entity`, and from what that contour came.
std::string why(Report const& report, History const& history, std::size_t entity);

/// The contours as an SVG drawing in millimetres with true arcs, a group for each layer.
std::string svg(Report const& report);

/// The entities of a contour as one text, those that the contour runs against with a star; at most `most` of them,
/// then "...".
std::string entity_list(Report const& report, Contour const& contour, std::size_t most);

/// "1 contour", "2 contours".
std::string counted(std::size_t number, char const* one, char const* many);

} // namespace contours

#endif
