#include "history.h"

#include <ozarray.h>
#include <oziterator.h>

#include <algorithm>
#include <map>

namespace contours
{

namespace
{

using ObjectArray = OzArray<OzDynObj const*>;
using ObjectIterator = OzIterator<OzDynObj const*>;

std::unique_ptr<NamedObject> make_object(std::string const& name, std::size_t number)
{
  return std::make_unique<NamedObject>(OzString(name.c_str()), number);
}

/// The numbers of the delivered objects, in order. The graph delivers an object once for each way that leads to it:
/// a polyline once for each of its edges.
std::vector<std::size_t> numbers_of(ObjectIterator& objects)
{
  std::vector<std::size_t> numbers;
  for (objects.reset(); !objects.done(); objects.next())
    if (NamedObject const* const object = NamedObject::cast(objects.current()))
      numbers.push_back(object->number());
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

/// Whether a double runs as its original does.
bool same_direction(Curve const& a, Curve const& b)
{
  bool const same_ends = distance(a.start, b.start) <= distance(a.start, b.end);
  bool const full_circles = distance(a.start, a.end) == 0.0 || distance(b.start, b.end) == 0.0;
  return full_circles ? (a.sweep > 0.0) == (b.sweep > 0.0) : same_ends;
}

/// For each entity of a contour whether the contour runs against it: against the first of its edges that it has.
std::map<std::size_t, bool> directions(Outcome const& outcome, Contour const& contour)
{
  std::map<std::size_t, bool> reversed; // by edge
  for (Link const link : contour.links)
    reversed[link.edge] = link.reversed;
  for (std::size_t const edge : contour.doubles)
  {
    std::size_t const original = outcome.edges[edge].original;
    reversed[edge] =
        reversed[original] == same_direction(outcome.edges[edge].curve, outcome.edges[original].curve);
  }

  std::map<std::size_t, bool> by_entity;
  for (auto const& [edge, against] : reversed)
    by_entity.emplace(outcome.edges[edge].entity, against);
  return by_entity;
}

} // namespace

History::History(Drawing const& drawing, Outcome const& outcome)
  : entities(drawing.entities.size())
{
  std::vector<std::size_t> entity_edges;
  for (std::size_t i = 0; i < outcome.edges.size(); ++i)
  {
    std::size_t const entity = outcome.edges[i].entity;
    std::string const name = drawing.entities[entity].name();
    if (!entities[entity])
      entities[entity] = make_object(name, entity);
    edges.push_back(make_object(name + "/" + std::to_string(entity_edges.size() + 1), i));
    entity_edges.push_back(i);
    if (i + 1 < outcome.edges.size() && outcome.edges[i + 1].entity == entity)
      continue;
    record_entity(entity, entity_edges);
    entity_edges.clear();
  }
  for (std::size_t i = 0; i < outcome.contours.size(); ++i)
  {
    contours.push_back(make_object("contour " + std::to_string(i + 1), i));
    record_contour(outcome.contours[i], i);
  }
}

void History::record_entity(std::size_t entity, std::vector<std::size_t> const& entity_edges)
{
  if (entity_edges.size() == 1)
  {
    graph.record_dependency(entities[entity].get(), edges[entity_edges.front()].get(),
                            OzObjectDependency::CONVERSION, nullptr, nullptr);
    return;
  }
  ObjectArray whole;
  whole.append(entities[entity].get());
  ObjectArray parts;
  for (std::size_t const edge : entity_edges)
    parts.append(edges[edge].get());
  OzArrayIterator<OzDynObj const*> source(&whole);
  OzArrayIterator<OzDynObj const*> targets(&parts);
  graph.record_dependency(&source, &targets, OzObjectDependency::CONTAINMENT, nullptr, nullptr);
}

void History::record_contour(Contour const& contour, std::size_t number)
{
  ObjectArray parts;
  for (Link const link : contour.links)
    parts.append(edges[link.edge].get());
  for (std::size_t const edge : contour.doubles)
    parts.append(edges[edge].get());
  ObjectArray whole;
  whole.append(contours[number].get());
  OzArrayIterator<OzDynObj const*> sources(&parts);
  OzArrayIterator<OzDynObj const*> target(&whole);
  graph.record_dependency(&sources, &target, OzObjectDependency::ABSORPTION, nullptr, nullptr);
}

std::vector<std::size_t> History::entities_of(std::size_t contour) const
{
  OzAutoPtr<ObjectIterator> found;
  graph.get_source_objects(contours[contour].get(), found, nullptr, nullptr);
  return numbers_of(*found);
}

std::vector<std::size_t> History::contours_of(std::size_t entity) const
{
  if (!entities[entity])
    return {};
  OzAutoPtr<ObjectIterator> found;
  graph.get_target_objects(entities[entity].get(), found, nullptr, nullptr);
  return numbers_of(*found);
}

void add_sources(Outcome& outcome, History const& history)
{
  for (std::size_t i = 0; i < outcome.contours.size(); ++i)
  {
    Contour& contour = outcome.contours[i];
    std::map<std::size_t, bool> const reversed = directions(outcome, contour);
    for (std::size_t const entity : history.entities_of(i))
      contour.sources.push_back({entity, reversed.at(entity)});
  }
}

} // namespace contours
