#include "report.h"

#include "number_text.h"

#include <algorithm>
#include <limits>

namespace contours
{

namespace
{

std::string described(Entity const& entity)
{
  return entity.type + " " + entity.name() + " (layer " + entity.layer + ", line " +
         std::to_string(entity.line) + ")";
}

std::string why_not(Entity const& entity)
{
  switch (entity.use)
  {
  case Use::CUT:
    return "its layer is not among the chosen ones";
  case Use::NOT_A_CURVE:
    return "it is nothing that is cut";
  case Use::NO_LENGTH:
    return "it has no length";
  case Use::NOT_SUPPORTED:
    return entity.reason;
  }
  return {};
}

std::string edges_text(Report const& report, std::size_t entity)
{
  auto const all = std::count_if(report.outcome.edges.begin(), report.outcome.edges.end(),
                                 [entity](Edge const& edge) { return edge.entity == entity; });
  return counted(static_cast<std::size_t>(all), "edge", "edges");
}

std::string contour_text(Report const& report, std::size_t number)
{
  Contour const& contour = report.outcome.contours[number];
  return "contour " + std::to_string(number + 1) + " (" + (contour.closed ? "closed" : "open") + ", " +
         counted(contour.links.size(), "edge", "edges") + ", " + fixed(contour.length_mm, 3) +
         " mm) comes from " + entity_list(report, contour, std::numeric_limits<std::size_t>::max()) + "\n";
}

} // namespace

std::string why(Report const& report, History const& history, std::size_t entity)
{
  std::vector<Entity> const& entities = report.drawing.entities;
  std::vector<std::size_t> const contours = history.contours_of(entity);
  std::string text = described(entities[entity]);
  if (contours.empty())
    return text + " is in no contour: " + why_not(entities[entity]) + "\n";

  text += " became " + edges_text(report, entity) + " of ";
  for (std::size_t i = 0; i < contours.size(); ++i)
    text += (i == 0 ? "contour " : ", contour ") + std::to_string(contours[i] + 1);
  text += "\n";
  for (Duplicate const& duplicate : report.outcome.duplicates)
    if (duplicate.entity == entity)
      text += std::string(duplicate.whole ? "it lies on " : "it lies in part on ") +
              (duplicate.of == entity ? "itself" : described(entities[duplicate.of])) +
              " and is cut only once\n";
  for (std::size_t const contour : contours)
    text += contour_text(report, contour);
  return text;
}

} // namespace contours
