#include "history.h"

#include <ozarray.h>
#include <oziterator.h>
#include <ozjournal.h>

#include <algorithm>
#include <map>
#include <unordered_set>

namespace contours
{

namespace
{

using ObjectArray = OzArray<OzDynObj const*>;
using ObjectIterator = OzIterator<OzDynObj const*>;

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

/// A name that can stand between quotes in a text for Graphviz.
std::string drawable(std::string name)
{
  std::replace(name.begin(), name.end(), '"', '\'');
  std::replace(name.begin(), name.end(), '\\', '/');
  return name;
}

std::unique_ptr<NamedObject> make_object(std::string const& name, std::size_t number)
{
  return std::make_unique<NamedObject>(OzString(drawable(name).c_str()), number);
}

/// Keeps what the library writes.
class TextJournal : public OzJournal
{
public:
  void flush() override {}

  std::string text;

private:
  void append_to_journal(OzString const& piece) override { text += piece.as_const_c_string(); }
};

/// Lets only certain objects into a dump.
class Chosen : public OzObjectDependencyNodeFilter
{
public:
  void add(OzDynObj const* object) { objects.insert(object); }
  bool accept(OzDynObj const* object) const override { return objects.count(object) > 0; }

private:
  std::unordered_set<OzDynObj const*> objects;
};

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

History::History(Drawing const& drawing, Outcome const& found)
  : outcome(found)
  , entities(drawing.entities.size())
{
  // The steps are groups of their own, which a picture shows by colour.
  graph.new_separator();
  std::vector<std::size_t> entity_edges;
  for (std::size_t i = 0; i < outcome.edges.size(); ++i)
  {
    std::size_t const entity = outcome.edges[i].entity;
    std::string const name = drawing.entities[entity].name();
    if (!entities[entity])
      entities[entity] = make_object(drawing.entities[entity].type + " " + name, entity);
    edges.push_back(make_object("edge " + name + "/" + std::to_string(entity_edges.size() + 1), i));
    entity_edges.push_back(i);
    if (i + 1 < outcome.edges.size() && outcome.edges[i + 1].entity == entity)
      continue;
    record_entity(entity, entity_edges);
    entity_edges.clear();
  }
  graph.new_separator();
}

void History::record_new_contours()
{
  while (contours.size() < outcome.contours.size())
  {
    std::size_t const number = contours.size();
    std::string const name = "contour " + std::to_string(number + 1);
    contours.push_back(make_object(name + " on " + outcome.contours[number].layer, number));
    record_contour(outcome.contours[number], number);
  }
}

void History::simplify()
{
  graph.simplify_it();
}

std::string History::picture(std::set<std::size_t> const& only_contours)
{
  Chosen chosen;
  for (std::size_t const number : only_contours)
  {
    Contour const& contour = outcome.contours[number];
    std::vector<std::size_t> absorbed = contour.doubles;
    for (Link const link : contour.links)
      absorbed.push_back(link.edge);
    for (std::size_t const edge : absorbed)
    {
      chosen.add(edges[edge].get());
      chosen.add(entities[outcome.edges[edge].entity].get());
    }
    chosen.add(contours[number].get());
  }

  TextJournal journal;
  graph.set_dotty_output_format(true);
  if (!only_contours.empty())
    graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SELF, &chosen);
  graph.debug(journal, OZ_DEBUG_DETAIL, false, 0);
  graph.remove_debug_node_filters();
  return journal.text;
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
