#include "report.h"

#include "number_text.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <limits>

namespace contours
{

namespace
{

/// In a table that is to be read a contour names so many entities.
constexpr std::size_t MOST_IN_TABLE = 8;

constexpr std::size_t COLUMNS = 7;
using Row = std::array<std::string, COLUMNS>;
constexpr std::array<bool, COLUMNS> ALIGNED_LEFT = {false, true, true, false, false, false, false};

std::string padded(std::string const& text, std::size_t places, bool left)
{
  std::string const blanks(places - std::min(places, width(text)), ' ');
  return left ? text + blanks : blanks + text;
}

Row row_of(Contour const& contour, std::size_t number)
{
  return {std::to_string(number),
          contour.layer,
          contour.closed ? "closed" : "OPEN",
          std::to_string(contour.links.size()),
          fixed(contour.length_mm, 3),
          contour.closed ? fixed(contour.area_mm2, 1) : "-",
          fixed(contour.max_gap_mm, 3)};
}

std::string opening(Contour const& contour)
{
  if (contour.closed)
    return {};
  return "   gap " + fixed(contour.open_gap_mm, 3) + " mm at (" + fixed(contour.open_at.x, 3) + ", " +
         fixed(contour.open_at.y, 3) + ")";
}

std::string skipped_text(Outcome const& outcome)
{
  if (outcome.skipped.empty())
    return "0 skipped";
  std::string text;
  for (auto const& [type, count] : outcome.skipped)
    text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + type;
  return text + " skipped";
}

std::string summary(Outcome const& outcome)
{
  std::size_t const contours = outcome.contours.size();
  std::size_t const closed = outcome.closed();
  return counted(contours, "contour", "contours") + ": " + std::to_string(closed) + " closed, " +
         std::to_string(contours - closed) + " open. " +
         counted(outcome.entities_used, "entity", "entities") + " used, " +
         counted(outcome.duplicates.size(), "duplicate", "duplicates") + ", " + skipped_text(outcome) +
         ". Cut length " + fixed(outcome.cut_length_mm() / 1000.0, 2) + " m, " +
         counted(contours, "pierce", "pierces") + ".\n";
}

} // namespace

std::string counted(std::size_t number, char const* one, char const* many)
{
  return std::to_string(number) + " " + (number == 1 ? one : many);
}

std::string entity_list(Report const& report, Contour const& contour, std::size_t most)
{
  std::string text;
  for (std::size_t i = 0; i < contour.sources.size(); ++i)
  {
    Source const& source = contour.sources[i];
    text += i == 0 ? "" : " ";
    if (i == most)
      return text + "...";
    text += report.drawing.entities[source.entity].name() + (source.reversed ? "*" : "");
  }
  return text;
}

std::string table(Report const& report, bool all_entities)
{
  std::vector<Row> rows = {{"contour", "layer", "state", "edges", "length mm", "area mm2", "max gap mm"}};
  for (std::size_t i = 0; i < report.outcome.contours.size(); ++i)
    rows.push_back(row_of(report.outcome.contours[i], i + 1));
  std::array<std::size_t, COLUMNS> widths = {};
  for (Row const& row : rows)
    for (std::size_t column = 0; column < COLUMNS; ++column)
      widths[column] = std::max(widths[column], width(row[column]));

  std::size_t const most = all_entities ? std::numeric_limits<std::size_t>::max() : MOST_IN_TABLE;
  std::string text;
  for (std::size_t i = 0; i < rows.size(); ++i)
  {
    for (std::size_t column = 0; column < COLUMNS; ++column)
      text += padded(rows[i][column], widths[column], ALIGNED_LEFT[column]) + "  ";
    if (i == 0)
      text += "entities (* reversed)";
    else
      text +=
          entity_list(report, report.outcome.contours[i - 1], most) + opening(report.outcome.contours[i - 1]);
    text += '\n';
  }
  return text + summary(report.outcome);
}

} // namespace contours
