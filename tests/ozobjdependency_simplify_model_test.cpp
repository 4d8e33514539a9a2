#include "ozobjdependency.h"

#include "growing_addresses.h"
#include "report_recorder.h"
#include "simplify_fixture.h"
#include "simplify_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>

namespace
{
typedef OzObjDependencyProbe Probe;
typedef OzObjectDependency::Type Type;

/// What a random history is made of.
struct Shape
{
  char const* name;
  int n_objects;
  int n_calls;
  bool may_have_cycles; // else an object only becomes objects with a higher number
  int reach;            // how far those numbers are apart at most
  std::vector<Type> types;
  int n_hubs = 0; // every other source is one of so many objects
};

std::vector<Type> const ALL_TYPES = {
    OzObjectDependency::TRANSFER,     OzObjectDependency::CREATION,    OzObjectDependency::DELETION,
    OzObjectDependency::MODIFICATION, OzObjectDependency::SPLIT,       OzObjectDependency::ABSORPTION,
    OzObjectDependency::CONVERSION,   OzObjectDependency::CONTAINMENT, OzObjectDependency::UNSPECIFIED};

/// The same history in a graph and in the model of it.
class History
{
public:
  History(Shape const& shape_to_have, unsigned seed)
    : shape(shape_to_have)
    , random(seed)
  {
    growing_addresses::start_again();
    for (int i = 0; i <= shape.n_objects; ++i)
      things.emplace_back(i);
    bool const modificational = chance(2);
    graph.set_consider_split_modificational(modificational);
    model.split_modificational = modificational;
    with_qualifiers = !chance(3);
    for (int call = 0; call < shape.n_calls; ++call)
      record();
  }
  ~History() { graph.set_simplify_trace(nullptr); }
  History(History const&) = delete;
  History& operator=(History const&) = delete;

  /// Steps until nothing changes, in both. Empty, or what differs.
  std::string simplify_and_compare()
  {
    std::string difference = compare();
    graph.set_simplify_trace(&journal);
    bool changed = true;
    for (int step = 1; changed && difference.empty(); ++step)
    {
      model.trace.clear();
      model.n_reports = 0;
      ReportRecorder const recorder;
      changed = Probe::simplify_step(graph);

      std::string const trace = journal.take();
      bool const model_changed = model.simplify_step();
      if (changed != model_changed)
        difference += "what the step says; ";
      if (trace != model.trace)
        difference += "the trace:\n" + trace + "instead of\n" + model.trace;
      if (recorder.units().size() != static_cast<std::size_t>(model.n_reports))
        difference += std::to_string(recorder.units().size()) + " reports instead of " +
                      std::to_string(model.n_reports) + "; ";
      difference += compare();
      if (!difference.empty())
        difference = "in step " + std::to_string(step) + ": " + difference;
      n_reports += model.n_reports;
    }
    return difference;
  }

  SimplifyModel model;
  int n_reports = 0;

private:
  bool chance(int n) { return random() % static_cast<unsigned>(n) == 0; }
  int number(int from, int to)
  {
    return from + static_cast<int>(random() % static_cast<unsigned>(to - from + 1));
  }

  OzDynObj const* object(int i) { return i == 0 ? nullptr : &things[static_cast<std::size_t>(i)]; }
  int source() { return number(1, shape.n_hubs != 0 && chance(2) ? shape.n_hubs : shape.n_objects); }
  int target_of(int of)
  {
    if (shape.may_have_cycles)
      return source();
    return std::min(shape.n_objects, of + number(1, shape.reach));
  }

  void record()
  {
    if (chance(4))
      separator = graph.new_separator();
    int const some_qualifier = number(-1, 1);
    int const* const qualifier = with_qualifiers && chance(2) ? &some_qualifier : nullptr;
    Type const type = shape.types[random() % shape.types.size()];
    int const from = source();
    std::vector<int> sources{from};
    std::vector<int> targets;
    switch (type)
    {
    case OzObjectDependency::SPLIT:
    case OzObjectDependency::CONTAINMENT:
      for (int i = number(2, 4); i > 0; --i)
        targets.push_back(target_of(from));
      break;
    case OzObjectDependency::CREATION:
    case OzObjectDependency::ABSORPTION:
      targets.push_back(target_of(from));
      if (chance(4))
        sources = {0};
      else
        for (int i = number(0, 2); i > 0; --i)
          sources.push_back(number(1, std::max(1, targets[0] - 1)));
      break;
    case OzObjectDependency::DELETION:
      targets = {0};
      break;
    default:
      targets.push_back(target_of(from));
      break;
    }
    if (record_in_graph(sources, targets, type, qualifier) && type != OzObjectDependency::TRANSFER)
      for (int s : sources)
        for (int t : targets)
          model.record(s, t, type, qualifier, separator);
  }

  bool record_in_graph(std::vector<int> const& sources, std::vector<int> const& targets, Type type,
                       int const* qualifier)
  {
    if (sources.size() == 1 && targets.size() == 1)
      return graph.record_dependency(object(sources[0]), object(targets[0]), type, qualifier, nullptr);
    return graph.record_dependency(list(sources).get(), list(targets).get(), type, qualifier, nullptr);
  }
  std::unique_ptr<ThingList> list(std::vector<int> const& numbers)
  {
    std::vector<OzDynObj const*> objects;
    for (int i : numbers)
      if (i != 0)
        objects.push_back(object(i));
    return std::make_unique<ThingList>(objects);
  }

  static std::set<int> numbers_of(std::set<OzDynObj const*> const& objects)
  {
    std::set<int> numbers;
    for (OzDynObj const* o : objects)
      numbers.insert(o == nullptr ? 0 : o->identity());
    return numbers;
  }

  std::string compare()
  {
    std::vector<std::string> links_of_model;
    for (auto const& link : model.links())
      links_of_model.push_back(
          std::to_string(link.first.first) + ">" + std::to_string(link.first.second) + " " +
          name_of_type(link.second.type) +
          (link.second.has_qualifier ? " q" + std::to_string(link.second.qualifier) : std::string(" q-")) +
          " s" + std::to_string(link.second.separator));
    std::vector<std::string> const links_of_graph = links_of(graph);

    std::string difference;
    if (links_of_graph != links_of_model)
    {
      difference += "the links:\n";
      for (std::string const& link : links_of_graph)
        difference += link + "\n";
      difference += "instead of\n";
      for (std::string const& link : links_of_model)
        difference += link + "\n";
    }
    if (identities_of(graph) != model.objects())
      difference += "the objects; ";
    if (numbers_of(Probe::root_objects(graph)) != model.root_objects())
      difference += "the roots; ";
    if (numbers_of(Probe::leaf_objects(graph)) != model.leaf_objects())
      difference += "the leaves; ";
    return difference;
  }

  Shape const& shape;
  std::mt19937 random;
  std::deque<Thing> things;
  OzObjDependency graph;
  TextJournal journal;
  int separator = 0;
  bool with_qualifiers = false;
};

constexpr Type CREATION = OzObjectDependency::CREATION;
constexpr Type DELETION = OzObjectDependency::DELETION;
constexpr Type MODIFICATION = OzObjectDependency::MODIFICATION;
constexpr Type SPLIT = OzObjectDependency::SPLIT;
constexpr Type ABSORPTION = OzObjectDependency::ABSORPTION;

Shape const SHAPES[] = {
    {"tiny", 5, 7, false, 3, ALL_TYPES},
    {"small", 10, 14, false, 4, ALL_TYPES},
    {"small and dense", 8, 24, false, 7, ALL_TYPES},
    {"creations and absorptions", 14, 30, false, 6, {CREATION, ABSORPTION, MODIFICATION}},
    {"splits that lose pieces", 20, 24, false, 6, {SPLIT, SPLIT, DELETION, MODIFICATION}},
    {"diamonds", 16, 40, false, 4, {CREATION, SPLIT, ABSORPTION}},
    {"from nothing and to nothing", 12, 30, false, 5, {CREATION, DELETION, ABSORPTION}},
    {"large", 60, 70, false, 8, ALL_TYPES},
    {"large and deep", 60, 90, false, 3, ALL_TYPES},
    {"wide", 60, 150, false, 59, {CREATION, ABSORPTION, MODIFICATION, SPLIT, DELETION}},
    {"hubs", 40, 90, false, 39, {CREATION, ABSORPTION, SPLIT, DELETION}, 3},
    {"hubs in a row", 30, 120, false, 12, {CREATION, ABSORPTION}, 6},
    {"cycles", 8, 12, true, 0, ALL_TYPES},
    {"many cycles", 12, 40, true, 0, {CREATION, SPLIT, ABSORPTION, MODIFICATION}},
};

class SimplificationModel : public testing::TestWithParam<Shape>
{
};

std::string name_of_shape(testing::TestParamInfo<Shape> const& tested)
{
  std::string name = tested.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}
} // namespace

TEST_P(SimplificationModel, DoesWhatTheGraphDoes)
{
  unsigned const n_histories = std::min(1000u, 20000u / static_cast<unsigned>(GetParam().n_calls));
  for (unsigned seed = 1; seed <= n_histories; ++seed)
  {
    History history(GetParam(), seed);
    std::string const difference = history.simplify_and_compare();
    ASSERT_EQ(difference, "") << GetParam().name << ", seed " << seed;
  }
}

/// The comparison is worth what the histories reach.
TEST(SimplificationModelItself, WritesEachLineThatAnUndamagedGraphCanWrite)
{
  std::map<std::string, int> lines;
  int n_reports = 0;
  for (Shape const& shape : SHAPES)
    for (unsigned seed = 1; seed <= 25; ++seed)
    {
      History history(shape, seed);
      history.simplify_and_compare();
      for (auto const& line : history.model.lines)
        lines[line.first] += line.second;
      n_reports += history.n_reports;
    }

  for (char const* line :
       {"   no targets ", "      is unchecked root ", "      link between n1 and n2 is a new one",
        "      (n1 and n2) may become (n2 and n3) ", "         n1 ", "         n3 ",
        "         already handled n1 and n3 earlier ", "         link between n1 and n3 already existing ",
        "            remember triple to skip with n2a ",
        "            remember triple to skip via not yet created link with n2a "})
    EXPECT_GE(lines[line], 20) << line;
  EXPECT_GE(n_reports, 500);
  EXPECT_EQ(lines.count("   _ASSERTION_: removal of n2 produced new n2s to remove!!!"), 0u);
}

INSTANTIATE_TEST_SUITE_P(OfEachShape, SimplificationModel, testing::ValuesIn(SHAPES), name_of_shape);
