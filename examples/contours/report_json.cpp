#include "report.h"

#include "number_text.h"
#include "text.h"

namespace contours
{

namespace
{

/// `text` is valid UTF-8 without control characters, as all names here are.
std::string quoted(std::string const& text)
{
  std::string result = "\"";
  for (char const c : text)
  {
    if (c == '"' || c == '\\')
      result += '\\';
    result += c;
  }
  return result + '"';
}

std::string boolean(bool value)
{
  return value ? "true" : "false";
}

std::string millimetres(double value)
{
  return rounded(value, 3);
}

std::string pair(Point point)
{
  return "[" + millimetres(point.x) + ", " + millimetres(point.y) + "]";
}

/// "key": [ the items, one in a line ]
std::string list(char const* indent, char const* key, std::vector<std::string> const& items)
{
  std::string text = std::string(indent) + quoted(key) + ": [";
  for (std::size_t i = 0; i < items.size(); ++i)
    text += (i == 0 ? "\n" : ",\n") + std::string(indent) + "  " + items[i];
  return text + (items.empty() ? "]" : "\n" + std::string(indent) + "]");
}

std::string source_object(Report const& report, Source const& source)
{
  Entity const& entity = report.drawing.entities[source.entity];
  return "{ \"entity\": " + quoted(entity.name()) + ", \"type\": " + quoted(entity.type) +
         ", \"line\": " + std::to_string(entity.line) + ", \"reversed\": " + boolean(source.reversed) + " }";
}

std::string contour_object(Report const& report, std::size_t index)
{
  Contour const& contour = report.outcome.contours[index];
  std::vector<std::string> sources;
  for (Source const& source : contour.sources)
    sources.push_back(source_object(report, source));
  return "{ \"contour\": " + std::to_string(index + 1) + ", \"layer\": " + quoted(contour.layer) +
         ", \"closed\": " + boolean(contour.closed) + ", \"edges\": " + std::to_string(contour.links.size()) +
         ", \"length_mm\": " + millimetres(contour.length_mm) +
         ", \"area_mm2\": " + (contour.closed ? rounded(contour.area_mm2, 3) : "null") +
         ",\n      \"max_gap_mm\": " + millimetres(contour.max_gap_mm) +
         ", \"open_gap_mm\": " + (contour.closed ? "null" : millimetres(contour.open_gap_mm)) +
         ", \"start\": " + pair(contour.start) + ", \"end\": " + pair(contour.end) + ",\n" +
         list("      ", "entities", sources) + " }";
}

std::string duplicate_object(Report const& report, Duplicate const& duplicate)
{
  std::vector<Entity> const& entities = report.drawing.entities;
  return "{ \"entity\": " + quoted(entities[duplicate.entity].name()) +
         ", \"of\": " + quoted(entities[duplicate.of].name()) + " }";
}

std::string branch_object(Report const& report, Branch const& branch)
{
  std::vector<Entity> const& entities = report.drawing.entities;
  std::string names;
  for (std::size_t const entity : branch.entities)
    names += (names.empty() ? "" : ", ") + quoted(entities[entity].name());
  return "{ \"at\": " + pair(branch.at) + ", \"layer\": " + quoted(entities[branch.entities.front()].layer) +
         ", \"entities\": [" + names + "] }";
}

std::string skipped_object(Outcome const& outcome)
{
  if (outcome.skipped.empty())
    return "{}";
  std::string text;
  for (auto const& [type, count] : outcome.skipped)
    text += (text.empty() ? "{ " : ", ") + quoted(type) + ": " + std::to_string(count);
  return text + " }";
}

std::string totals_object(Outcome const& outcome)
{
  std::size_t const contours = outcome.contours.size();
  std::size_t const closed = outcome.closed();
  return "{ \"contours\": " + std::to_string(contours) + ", \"closed\": " + std::to_string(closed) +
         ", \"open\": " + std::to_string(contours - closed) +
         ", \"entities\": " + std::to_string(outcome.entities_used) +
         ", \"edges\": " + std::to_string(outcome.edges_used) +
         ", \"cut_length_mm\": " + millimetres(outcome.cut_length_mm()) +
         ", \"pierces\": " + std::to_string(contours) + " }";
}

} // namespace

std::string json(Report const& report)
{
  Outcome const& outcome = report.outcome;
  std::vector<std::string> contours;
  for (std::size_t i = 0; i < outcome.contours.size(); ++i)
    contours.push_back(contour_object(report, i));
  std::vector<std::string> duplicates;
  for (Duplicate const& duplicate : outcome.duplicates)
    duplicates.push_back(duplicate_object(report, duplicate));
  std::vector<std::string> branches;
  for (Branch const& branch : outcome.branches)
    branches.push_back(branch_object(report, branch));

  return "{\n  \"drawing\": " + quoted(printable(report.drawing_name)) +
         ",\n  \"unit_mm\": " + shortest(report.unit_mm) +
         ",\n  \"tolerance_mm\": " + shortest(report.tolerance_mm) + ",\n" +
         list("  ", "contours", contours) + ",\n" + list("  ", "duplicates", duplicates) + ",\n" +
         list("  ", "branches", branches) + ",\n  \"skipped\": " + skipped_object(outcome) +
         ",\n  \"totals\": " + totals_object(outcome) + "\n}\n";
}

} // namespace contours
