#include "remarks.h"

#include "ends.h"
#include "number_text.h"

#include <cmath>
#include <map>
#include <set>

namespace contours
{

namespace
{

std::string place(Point point)
{
  return "(" + fixed(point.x, 3) + ", " + fixed(point.y, 3) + ")";
}

std::string titled(Entity const& entity)
{
  return entity.type + " " + entity.name();
}

/// With three decimals, and not below `gap`: a user who asks for this tolerance gets what was promised.
std::string tolerance_for(double gap)
{
  return compact(std::ceil(gap * 1000.0) / 1000.0, 3);
}

Entity const& entity_of_edge(Report const& report, std::size_t edge)
{
  return report.drawing.entities[report.outcome.edges[edge].entity];
}

/// The entity that has the open end.
Entity const& entity_at_open_end(Report const& report, Contour const& contour)
{
  bool const at_start = contour.open_at.x == contour.start.x && contour.open_at.y == contour.start.y;
  return entity_of_edge(report, at_start ? contour.links.front().edge : contour.links.back().edge);
}

/// What would close an open contour, as far as that can be said.
std::string advice(Report const& report, std::size_t number)
{
  Contour const& contour = report.outcome.contours[number];
  double const gap = contour.open_gap_mm;
  if (gap <= report.tolerance_mm)
    return contour.open_towards == number ? "" : "; it meets others there that were joined otherwise";
  std::string const tolerance = "--tolerance " + tolerance_for(gap);
  if (contour.open_towards != number)
    return " from contour " + std::to_string(contour.open_towards + 1) + "; " + tolerance +
           " would join them";
  return is_closed(gap, contour.length_mm, gap) ? " from its other end; " + tolerance + " would close it"
                                                : " from its other end; nothing else is near";
}

void tell_open(Report const& report, Messages& messages)
{
  for (std::size_t i = 0; i < report.outcome.contours.size(); ++i)
  {
    Contour const& contour = report.outcome.contours[i];
    if (contour.closed)
      continue;
    Entity const& entity = entity_at_open_end(report, contour);
    messages.remark("open contours", entity.line,
                    "contour " + std::to_string(i + 1) + " on layer " + contour.layer +
                        " is open: the end of " + titled(entity) + " at " + place(contour.open_at) + " is " +
                        fixed(contour.open_gap_mm, 3) + " mm" + advice(report, i));
  }
}

void tell_branches(Report const& report, Messages& messages)
{
  std::vector<Entity> const& entities = report.drawing.entities;
  for (Branch const& branch : report.outcome.branches)
  {
    std::string meeting;
    for (std::size_t const entity : branch.entities)
      meeting += (meeting.empty() ? "" : ", ") + entities[entity].name();
    std::string joined;
    for (auto const& [a, b] : branch.joined)
      joined += (joined.empty() ? "" : ", ") + entities[a].name() + " and " + entities[b].name();
    Entity const& lowest = entities[branch.entities.front()];
    messages.remark("branches", lowest.line,
                    "branch on layer " + lowest.layer + " at " + place(branch.at) + ": ends of " + meeting +
                        " meet; joined: " + (joined.empty() ? "none" : joined));
  }
}

void tell_skipped(Report const& report, LayerChoice const& layers, Messages& messages)
{
  for (Entity const& entity : report.drawing.entities)
  {
    if (!layers.has(entity.layer))
      continue;
    std::string const what = titled(entity) + " on layer " + entity.layer;
    if (entity.use == Use::NOT_SUPPORTED)
      messages.remark("entities that could be cut and were skipped", entity.line,
                      what + " is skipped: " + entity.reason);
    else if (entity.use == Use::NO_LENGTH)
      messages.remark("entities without length", entity.line, what + " is skipped: it has no length");
  }
}

void tell_duplicates(Report const& report, Messages& messages)
{
  std::vector<Entity> const& entities = report.drawing.entities;
  for (Duplicate const& duplicate : report.outcome.duplicates)
  {
    Entity const& entity = entities[duplicate.entity];
    messages.remark("duplicates", entity.line,
                    titled(entity) + " on layer " + entity.layer +
                        (duplicate.whole ? " lies on " : " lies in part on ") +
                        (duplicate.of == duplicate.entity ? "itself" : titled(entities[duplicate.of])) +
                        " and is cut only once");
  }
}

void tell_short_edges(Report const& report, Messages& messages)
{
  ShortEdges const& edges = report.outcome.short_edges;
  if (edges.count == 0)
    return;
  Entity const& entity = entity_of_edge(report, edges.shortest);
  messages.remark("short edges", entity.line,
                  "the tolerance of " + compact(report.tolerance_mm, 6) + " mm is longer than " +
                      counted(edges.count, "edge", "edges") + "; the shortest, of " + titled(entity) +
                      ", has " + fixed(report.outcome.edges[edges.shortest].curve.length(), 6) + " mm");
}

void tell_nothing_to_do(Report const& report, Messages& messages)
{
  if (!report.outcome.contours.empty())
    return;
  std::map<std::string, std::size_t> layers;
  for (Entity const& entity : report.drawing.entities)
    ++layers[entity.layer];
  std::string text;
  for (auto const& [layer, count] : layers)
    text +=
        (text.empty() ? "; there are: " : ", ") + layer + " (" + counted(count, "entity", "entities") + ")";
  messages.remark("layers", 0,
                  layers.empty() ? "nothing to do: the drawing has no entities"
                                 : "nothing to do on the chosen layers" + text);
}

} // namespace

void tell_remarks(Report const& report, LayerChoice const& layers, Messages& messages)
{
  for (Remark const& remark : report.drawing.remarks)
    messages.remark("remarks", remark.line, remark.text);
  tell_nothing_to_do(report, messages);
  tell_skipped(report, layers, messages);
  tell_duplicates(report, messages);
  tell_short_edges(report, messages);
  tell_branches(report, messages);
  tell_open(report, messages);
  messages.finish();
}

void tell_details(Report const& report, Messages& messages)
{
  messages.detail("1 unit of the drawing is " + compact(report.unit_mm, 9) + " mm");
  if (report.drawing.paper_space_entities > 0)
    messages.detail(counted(report.drawing.paper_space_entities, "entity", "entities") +
                    " in paper space left out");
  for (LayerClusters const& layer : report.outcome.clusters)
    messages.detail("layer " + layer.layer + ": " + counted(layer.clusters, "cluster", "clusters") +
                    " of edges that touch, the largest of " + std::to_string(layer.largest));
}

void tell_figures(JobFigures const& figures, Messages& messages)
{
  messages.detail("job statistics: " + figures.name + ", " + counted(figures.tasks, "task", "tasks") +
                  ", at most " + std::to_string(figures.peak) + " at once, " +
                  counted(figures.server_runs, "run", "runs") + " of the server, " +
                  fixed(figures.processor_ms, 1) + " ms of processor time");
}

} // namespace contours
