#include "ozobjdependency.h"

#include "dependency_types.h"
#include "growing_addresses.h"
#include "report_recorder.h"
#include "simplify_fixture.h"
#include "simplify_model.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <ostream>
#include <random>

namespace
{
/// What a random history is made of.
struct Shape
{
  char const* name;
  int n_objects;
  int n_calls;
  bool may_have_cycles; // else an object only becomes objects with a higher number
  int reach;            // how far those numbers are apart at most
  std::vector<Type> types;
  int n_hubs = 0;                // every other source is one of so many objects
  int n_absorbers = 0;           // if not 0: so many objects absorb nearly all others
  int n_tools = 0;               // and so many are absorbed by many others
  bool has_disturbances = false; // two absorbers, and what brings the order around them to an end
};

/// In messages a shape is its name. Otherwise its bytes would be read, and some of them are never written.
void PrintTo(Shape const& shape, std::ostream* stream)
{
  *stream << shape.name;
}

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
    if (shape.has_disturbances)
    {
      record_disturbances();
      return;
    }
    if (shape.n_absorbers != 0)
    {
      record_absorbers();
      return;
    }
    for (int call = 0; call < shape.n_calls; ++call)
      record();
  }
  ~History() { graph.set_simplify_trace(nullptr); }
  History(History const&) = delete;
  History& operator=(History const&) = delete;

  /// Steps until nothing changes, in both. Empty, or what differs. Simplification takes some ways only
  /// where nobody reads along.
  std::string simplify_and_compare(bool is_traced)
  {
    std::string difference = compare();
    if (is_traced)
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
      if (is_traced && trace != model.trace)
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

  /// All at once and unobserved. Empty, or what differs.
  std::string simplify_unobserved_and_compare()
  {
    graph.simplify_it();
    while (model.simplify_step())
      ;
    return compare();
  }

  /// Do the links that are left depend on the order of addresses? In the models alone.
  bool depends_on_addresses()
  {
    for (SimplifyModel* one : {&model, &other_way_round})
      while (one->simplify_step())
        ;
    return texts_of(model) != texts_of(other_way_round);
  }
  bool is_valid() const { return graph.is_valid(nullptr); }

  SimplifyModel model;
  SimplifyModel other_way_round{SimplifyModel::DESCENDING};
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
    record_in_both(sources, targets, type, qualifier);
  }

  /// Whole objects fall into pieces or are changed, if not taken as they are, and the pieces are absorbed by
  /// the same few objects, some by two of them; of these, some are changed in turn. Here and there something
  /// else happens to one of them.
  void record_absorbers()
  {
    struct Call
    {
      std::vector<int> sources, targets;
      Type type;
    };
    std::vector<Call> calls;
    int n_objects = 0;
    std::vector<int> absorbers;
    for (int i = 0; i < shape.n_absorbers; ++i)
      absorbers.push_back(++n_objects);
    int const how_odd = number(0, 3); // 0: nothing else happens
    auto const is_odd = [&] { return how_odd != 0 && chance(40 / how_odd); };
    bool const is_doubled = chance(2);

    std::vector<int> pieces;
    for (int i = 0; i < shape.n_tools; ++i)
    {
      int tool = ++n_objects;
      for (int n = number(1, 3); n > 0; --n, ++tool, ++n_objects)
        calls.push_back({{tool}, {tool + 1}, OzObjectDependency::MODIFICATION});
      if (chance(2))
        pieces.push_back(tool);
      std::vector<Type> const handlings = {OzObjectDependency::ABSORPTION,   OzObjectDependency::ABSORPTION,
                                           OzObjectDependency::ABSORPTION,   OzObjectDependency::CONVERSION,
                                           OzObjectDependency::MODIFICATION, OzObjectDependency::SPLIT};
      bool const is_always_absorbed = chance(2);
      bool const is_used_often = !chance(3);
      int last = 0; // what the work before this one led to
      for (int n = is_used_often ? number(8, 16) : number(1, 4); n > 0; --n)
      {
        int const blank = ++n_objects;
        int const worked = ++n_objects;
        calls.push_back({{blank}, {worked}, OzObjectDependency::ABSORPTION});
        calls.push_back({{tool},
                         {worked},
                         is_always_absorbed ? OzObjectDependency::ABSORPTION : handlings[random() % 6]});
        if (chance(4))
          pieces.push_back(blank);
        if (chance(6))
        {
          int const step = ++n_objects;
          bool const is_created = chance(2);
          calls.push_back(
              {{blank}, {step}, is_created ? OzObjectDependency::CREATION : OzObjectDependency::ABSORPTION});
          calls.push_back(
              {{step}, {worked}, is_created ? OzObjectDependency::ABSORPTION : OzObjectDependency::CREATION});
        }
        if (chance(4))
        {
          pieces.push_back(worked);
        }
        else if (!chance(3))
        {
          if (last == 0 || chance(2))
            last = ++n_objects;
          calls.push_back({{worked},
                           {last},
                           is_odd()    ? OzObjectDependency::CREATION
                           : chance(2) ? OzObjectDependency::ABSORPTION
                                       : OzObjectDependency::MODIFICATION});
        }
      }
    }
    while (n_objects + 6 < shape.n_objects)
    {
      int const whole = ++n_objects;
      std::vector<int> parts;
      for (int i = chance(3) ? number(2, 4) : number(0, 1); i > 0; --i)
        parts.push_back(++n_objects);
      if (parts.size() == 1)
        calls.push_back({{whole}, parts, shape.types[random() % shape.types.size()]});
      else if (!parts.empty())
        calls.push_back(
            {{whole}, parts, chance(4) ? OzObjectDependency::SPLIT : OzObjectDependency::CONTAINMENT});
      else
        parts = {whole};
      if (parts.size() > 1 && is_odd())
        calls.push_back({{whole}, {absorbers[random() % absorbers.size()]}, OzObjectDependency::ABSORPTION});
      if (is_odd())
        calls.push_back({{0}, {whole}, OzObjectDependency::CREATION});
      if (is_odd())
        calls.push_back({{whole}, {0}, OzObjectDependency::DELETION});
      if (is_odd())
        calls.push_back({{whole}, {++n_objects}, shape.types[random() % shape.types.size()]});
      pieces.insert(pieces.end(), parts.begin(), parts.end());
    }

    for (int piece : pieces)
      for (int n = is_doubled && chance(3) ? 2 : 1; n > 0; --n)
      {
        Type const type = is_odd() ? OzObjectDependency::CREATION : OzObjectDependency::ABSORPTION;
        calls.push_back({{piece}, {absorbers[random() % absorbers.size()]}, type});
      }
    for (int absorber : absorbers)
    {
      if (chance(2))
        continue;
      if (n_objects < shape.n_objects)
        calls.push_back({{absorber}, {++n_objects}, shape.types[random() % shape.types.size()]});
      if (chance(3) && absorber != absorbers[0])
        calls.push_back({{absorber},
                         {absorbers[0]},
                         chance(3) ? OzObjectDependency::CREATION : OzObjectDependency::ABSORPTION});
    }
    if (chance(2))
      std::shuffle(calls.begin(), calls.end(), random);
    for (Call const& call : calls)
      record_in_both(call.sources, call.targets, call.type, nullptr);
  }

  /// Two objects absorb many pieces, some of them together. Between the turns of their roots, sources that they
  /// absorb become sources of something else, and they themselves become mixed without a new link.
  void record_disturbances()
  {
    struct Call
    {
      int source, target;
      Type type;
    };
    std::vector<Call> calls;
    int n_objects = 2;
    int const first = 1;
    int const second = 2;
    auto const make = [&] { return ++n_objects; };
    // At the end of a chain, so that it is neither a root nor the target of one while others have their turns.
    auto const make_tool = [&]
    {
      int const steel = make();
      int const blade = make();
      int const tool = make();
      calls.push_back({steel, blade, MODIFICATION});
      calls.push_back({blade, tool, MODIFICATION});
      return tool;
    };

    // Pieces that are roots themselves let their target be untouched until something else disturbs it.
    bool const is_second_left_alone = chance(2);
    for (int i = number(9, 13); i > 0; --i)
    {
      int const whole = make();
      int const where = is_second_left_alone ? 2 * number(0, 1) : number(0, 3);
      int const piece = is_second_left_alone && where != 0 ? whole : make();
      if (piece != whole)
        calls.push_back({whole, piece, OzObjectDependency::CONVERSION});
      if (where != 0)
        calls.push_back({piece, second, ABSORPTION});
      if (where != 1)
        calls.push_back({piece, first, ABSORPTION});
    }
    if (!chance(3))
    {
      int const tool = make_tool();
      int const blank = make();
      int const worked = make();
      calls.push_back({tool, is_second_left_alone || chance(2) ? first : second, ABSORPTION});
      calls.push_back({tool, worked, ABSORPTION});
      calls.push_back({blank, worked, ABSORPTION});
      calls.push_back({worked, make(), chance(3) ? MODIFICATION : CREATION});
    }
    if (!chance(3))
    {
      int const whole = make();
      int const created = make();
      calls.push_back({whole, second, ABSORPTION});
      calls.push_back({whole, created, CREATION});
      calls.push_back({created, second, ABSORPTION});
    }
    if (!chance(3))
    {
      int const tool = make_tool();
      calls.push_back({tool, second, ABSORPTION});
      int const n_splits = chance(2) ? number(1, 3) : 0;
      for (int i = 0; i < 10; ++i)
      {
        int const blank = make();
        int const worked = make();
        calls.push_back({tool, worked, i < n_splits ? OzObjectDependency::SPLIT : ABSORPTION});
        calls.push_back({blank, worked, ABSORPTION});
        calls.push_back(
            {worked, make(), i < n_splits && chance(2) ? OzObjectDependency::SPLIT : MODIFICATION});
      }
      if (chance(2))
      {
        int const blank = make();
        int const half = make();
        int const other_half = make();
        int const together = make();
        calls.push_back({blank, half, ABSORPTION});
        calls.push_back({blank, other_half, ABSORPTION});
        calls.push_back({tool, half, ABSORPTION});
        calls.push_back({tool, other_half, chance(2) ? CREATION : ABSORPTION});
        calls.push_back({half, together, chance(2) ? MODIFICATION : ABSORPTION});
        calls.push_back({other_half, together, chance(2) ? CREATION : ABSORPTION});
      }
    }
    std::shuffle(calls.begin(), calls.end(), random);
    for (Call const& call : calls)
    {
      // Any type goes from any object to any other here, past the checks of recording.
      if (Probe::check_dependency_pair(graph, object(call.source), object(call.target)))
      {
        Probe::add_dependency_pair(graph, object(call.source), object(call.target), call.type);
        model.record(call.source, call.target, call.type, nullptr, separator);
      }
    }
  }

  void record_in_both(std::vector<int> const& sources, std::vector<int> const& targets, Type type,
                      int const* qualifier)
  {
    if (!record_in_graph(sources, targets, type, qualifier) || type == OzObjectDependency::TRANSFER)
      return;
    for (int s : sources)
      for (int t : targets)
      {
        model.record(s, t, type, qualifier, separator);
        other_way_round.record(s, t, type, qualifier, separator);
      }
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

  static std::vector<std::string> texts_of(SimplifyModel const& model)
  {
    std::vector<std::string> texts;
    for (auto const& link : model.links())
      texts.push_back(
          std::to_string(link.first.first) + ">" + std::to_string(link.first.second) + " " +
          name_of_type(link.second.type) +
          (link.second.has_qualifier ? " q" + std::to_string(link.second.qualifier) : std::string(" q-")) +
          " s" + std::to_string(link.second.separator));
    return texts;
  }

  std::string compare()
  {
    std::vector<std::string> const links_of_model = texts_of(model);
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
    {"one absorber", 30, 40, false, 0, {CONVERSION}, 0, 1},
    {"one absorber of all kinds", 50, 50, false, 0, {CONVERSION, MODIFICATION, ABSORPTION}, 0, 1},
    {"two absorbers", 60, 60, false, 0, {CONVERSION, MODIFICATION, ABSORPTION, CREATION}, 0, 2},
    {"several absorbers", 90, 90, false, 0, {CONVERSION, CONVERSION, MODIFICATION, ABSORPTION}, 0, 4},
    {"a tool and absorbers", 100, 60, false, 0, {CONVERSION, MODIFICATION, ABSORPTION}, 0, 2, 1},
    {"tools and absorbers", 160, 100, false, 0, {CONVERSION, MODIFICATION, ABSORPTION}, 0, 3, 2},
    {"disturbed absorbers", 100, 20, false, 0, {}, 0, 0, 0, true},
    {"cycles", 8, 12, true, 0, ALL_TYPES},
    {"many cycles", 12, 40, true, 0, {CREATION, SPLIT, ABSORPTION, MODIFICATION}},
};

class SimplificationModel : public testing::TestWithParam<Shape>
{
};

unsigned n_histories_of(Shape const& shape)
{
  return std::min(1000u, 20000u / static_cast<unsigned>(shape.n_calls));
}

std::string name_of_shape(testing::TestParamInfo<Shape> const& tested)
{
  std::string name = tested.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}
} // namespace

TEST_P(SimplificationModel, DoesWhatTheGraphDoes)
{
  unsigned const n_histories = n_histories_of(GetParam());
  for (unsigned seed = 1; seed <= n_histories; ++seed)
  {
    History history(GetParam(), seed);
    ASSERT_EQ(history.simplify_and_compare(true), "") << GetParam().name << ", seed " << seed;
  }
}

TEST_P(SimplificationModel, DoesWhatTheGraphDoesUntraced)
{
  unsigned const n_histories = n_histories_of(GetParam()) / 3;
  for (unsigned seed = 1; seed <= n_histories; ++seed)
  {
    History history(GetParam(), seed);
    ASSERT_EQ(history.simplify_and_compare(false), "") << GetParam().name << ", seed " << seed;
  }
}

TEST_P(SimplificationModel, ComesToWhatTheGraphComesToUnobserved)
{
  unsigned const n_histories = n_histories_of(GetParam()) / 3;
  for (unsigned seed = 1; seed <= n_histories; ++seed)
  {
    History history(GetParam(), seed);
    ASSERT_EQ(history.simplify_unobserved_and_compare(), "") << GetParam().name << ", seed " << seed;
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
      history.simplify_and_compare(true);
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

/// The figures of the guide. Two orders of addresses show a part of the histories that depend on them.
TEST(SimplificationModelItself, DependsOnTheOrderOfAddressesNowAndThen)
{
  struct
  {
    Shape const& shape;
    int one_in;           // of all histories
    int one_valid_one_in; // of the valid ones
  } const cases[] = {
      {SHAPES[0], 13, 40},
      {SHAPES[1], 6, 18},
  };
  for (auto const& c : cases)
  {
    int n = 0;
    int n_valid = 0;
    int n_dependent = 0;
    int n_valid_and_dependent = 0;
    for (unsigned seed = 1; seed <= 2000; ++seed)
    {
      History history(c.shape, seed);
      bool const is_valid = history.is_valid();
      bool const depends = history.depends_on_addresses();
      ++n;
      n_valid += is_valid;
      n_dependent += depends;
      n_valid_and_dependent += is_valid && depends;
    }
    ASSERT_GT(n_dependent, 0) << c.shape.name;
    ASSERT_GT(n_valid_and_dependent, 0) << c.shape.name;
    EXPECT_NEAR(static_cast<double>(n) / n_dependent, c.one_in, 0.5) << c.shape.name;
    EXPECT_NEAR(static_cast<double>(n_valid) / n_valid_and_dependent, c.one_valid_one_in, 0.5)
        << c.shape.name;
  }
}
