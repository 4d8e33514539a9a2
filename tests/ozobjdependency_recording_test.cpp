#include "ozobjdependency.h"

#include "memory_refusal.h"
#include "simplify_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <new>
#include <random>
#include <stdexcept>

// What a call leaves behind that throws on its way: nothing. And what an assignment leaves of what it replaces.

namespace
{
typedef OzObjDependencyProbe Probe;
typedef OzObjectDependency Dep;
typedef std::vector<std::string> Texts;
using testing::ElementsAre;

/// All that can be seen of a graph, with the address of each record and node.
struct State
{
  explicit State(OzObjDependency& graph)
    : links(links_of(graph))
    , roots(Probe::root_objects(graph))
    , leaves(Probe::leaf_objects(graph))
  {
    for (auto const& entry : Probe::nodes(graph))
    {
      OzObjDepNode* const node = entry.value;
      addresses[entry.key].insert(node);
      addresses[entry.key].insert(node->target_links.begin(), node->target_links.end());
      addresses[entry.key].insert(node->source_links.begin(), node->source_links.end());
      maps_agree = maps_agree && node->target_links.size() == node->target_link_map.size() &&
                   node->source_links.size() == node->source_link_map.size();
      for (OzObjDepLink* link : node->target_links)
        maps_agree = maps_agree && node->target_link_map.value(link->node) == link;
      for (OzObjDepLink* link : node->source_links)
        maps_agree = maps_agree && node->source_link_map.value(link->node) == link;
    }
  }
  bool operator==(State const& other) const
  {
    return maps_agree && other.maps_agree && links == other.links && roots == other.roots &&
           leaves == other.leaves && addresses == other.addresses;
  }

  Texts links;
  std::set<OzDynObj const*> roots;
  std::set<OzDynObj const*> leaves;
  std::map<OzDynObj const*, std::set<void const*>> addresses;
  bool maps_agree = true;
};

void throw_on_report(char const*, int)
{
  throw std::runtime_error("reported");
}

class ThrowingHandler
{
public:
  ThrowingHandler() { dkb_assertion_handler = &throw_on_report; }
  ~ThrowingHandler() { dkb_assertion_handler = former; }
  ThrowingHandler(ThrowingHandler const&) = delete;
  ThrowingHandler& operator=(ThrowingHandler const&) = delete;

private:
  OzAssertionHandler const former = dkb_assertion_handler;
};

/// Throws when the object at `position` is asked for in the given walk, the first one being 1.
class ThrowingList : public ThingList
{
public:
  ThrowingList(std::vector<OzDynObj const*> const& list, int walk_to_fail_in, int position_to_fail_at)
    : ThingList(list)
    , walk(walk_to_fail_in)
    , position(position_to_fail_at)
  {
  }
  void reset() override
  {
    ThingList::reset();
    --walk;
    at = 0;
  }
  void next() override
  {
    ThingList::next();
    ++at;
    if (walk == 0 && at == position)
      throw std::runtime_error("no more objects");
  }

private:
  int walk;
  int const position;
  int at = 0;
};

class FailedRecording : public testing::Test
{
protected:
  OzDynObj const* object(int i) { return i == 0 ? nullptr : &things[static_cast<std::size_t>(i)]; }
  void record(int source, int target, Dep::Type type)
  {
    ASSERT_TRUE(graph.record_dependency(object(source), object(target), type, nullptr, &role));
  }

  std::deque<Thing> const things{Thing(0), Thing(1), Thing(2), Thing(3), Thing(4),
                                 Thing(5), Thing(6), Thing(7), Thing(8), Thing(9)};
  CountingRole const role;
  OzObjDependency graph;
};
class GraphAssignment : public FailedRecording
{
};
} // namespace

TEST_F(FailedRecording, LeavesNothingBehindWhenAHandlerThrowsAboutAnAbsorptionFromNothing)
{
  record(0, 1, Dep::CREATION);
  record(2, 3, Dep::MODIFICATION);
  State const before(graph);
  int const alive_before = CountingRole::alive;
  ThingList none{}, target{object(4)}, known_target{object(2)};
  ThrowingHandler const handler;

  for (int to : {4, 2})
    EXPECT_THROW(graph.record_dependency(nullptr, object(to), Dep::ABSORPTION, nullptr, &role),
                 std::runtime_error);
  EXPECT_THROW(graph.record_dependency(&none, &target, Dep::ABSORPTION, nullptr, &role), std::runtime_error);
  EXPECT_THROW(graph.record_dependency(&none, &known_target, Dep::ABSORPTION, nullptr, &role),
               std::runtime_error);

  EXPECT_TRUE(State(graph) == before);
  EXPECT_EQ(CountingRole::alive, alive_before);
}

TEST_F(FailedRecording, LeavesNothingBehindWhenAHandlerThrowsAboutANullTarget)
{
  record(1, 0, Dep::DELETION);
  State const before(graph);
  ThrowingHandler const handler;

  EXPECT_THROW(Probe::add_dependency_pair(graph, object(2), nullptr, Dep::MODIFICATION), std::runtime_error);

  EXPECT_TRUE(State(graph) == before);
}

TEST_F(FailedRecording, LeavesNothingBehindWhenAnIteratorThrowsWhileThePairsAreAdded)
{
  record(1, 2, Dep::MODIFICATION);
  record(3, 4, Dep::MODIFICATION);
  State const before(graph);
  int const alive_before = CountingRole::alive;
  // Walked to be counted, to be checked twice, and to be added.
  ThrowingList sources({object(2), object(5), object(3), object(6)}, 4, 3);
  ThingList target{object(3)};

  EXPECT_THROW(graph.record_dependency(&sources, &target, Dep::ABSORPTION, nullptr, &role),
               std::runtime_error);

  EXPECT_TRUE(State(graph) == before);
  EXPECT_EQ(CountingRole::alive, alive_before);
}

TEST_F(FailedRecording, LeavesNothingBehindOfASplitOfManyPieces)
{
  record(1, 2, Dep::MODIFICATION);
  std::deque<Thing> const many(200);
  std::vector<OzDynObj const*> pieces;
  for (Thing const& piece : many)
    pieces.push_back(&piece);
  State const before(graph);
  int const alive_before = CountingRole::alive;
  ThingList source{object(2)};
  ThrowingList targets(pieces, 4, 190);

  EXPECT_THROW(graph.record_dependency(&source, &targets, Dep::SPLIT, nullptr, &role), std::runtime_error);

  EXPECT_TRUE(State(graph) == before);
  EXPECT_EQ(CountingRole::alive, alive_before);
}

TEST_F(FailedRecording, LeavesNothingBehindOfTheFirstCallOfAll)
{
  ThingList source{object(1)};
  ThrowingList targets({object(2), object(3), object(4)}, 4, 2);
  int const alive_before = CountingRole::alive;

  EXPECT_THROW(graph.record_dependency(&source, &targets, Dep::SPLIT, nullptr, &role), std::runtime_error);

  EXPECT_TRUE(Probe::nodes(graph).empty());
  EXPECT_TRUE(Probe::roots(graph).empty());
  EXPECT_TRUE(Probe::leaves(graph).empty());
  EXPECT_EQ(CountingRole::alive, alive_before);
}

/// Each call of long histories fails at each place where it asks for memory, before it succeeds.
TEST(RecordingWithoutMemory, ChangesNothingUntilItSucceeds)
{
  SKIP_UNLESS_MEMORY_CAN_BE_REFUSED();
  int n_failures = 0;
  for (unsigned seed = 1; seed <= 12; ++seed)
  {
    std::mt19937 random(seed);
    auto const number = [&](unsigned n) { return static_cast<std::size_t>(random() % n); };
    std::deque<Thing> things;
    for (int i = 0; i <= 60; ++i)
      things.emplace_back(i);
    // The first few are hubs, so that sets and maps grow through all their forms.
    auto const object = [&]() -> OzDynObj const*
    { return &things[1 + (number(2) == 0 ? number(2) : number(60))]; };
    CountingRole const role;
    int const alive_before = CountingRole::alive;
    {
      OzObjDependency graph;
      OzObjDependency undisturbed;
      for (int call = 0; call < 120; ++call)
      {
        std::vector<OzDynObj const*> some{object()};
        std::vector<OzDynObj const*> others;
        for (std::size_t i = number(7); i > 0; --i)
          others.push_back(object());
        Dep::Type type = Dep::MODIFICATION;
        bool const is_set = number(2) == 0;
        OzDynObj const* source = some[0];
        OzDynObj const* target = object();
        if (is_set)
          type = others.size() > 1 ? Dep::SPLIT : Dep::DELETION;
        else if (number(4) == 0)
          source = nullptr, type = Dep::CREATION;
        else if (number(4) == 0)
          target = nullptr, type = Dep::DELETION;
        if (type == Dep::DELETION)
          others.clear();
        bool const gathers = type == Dep::SPLIT && number(2) == 0;
        ThingList left(gathers ? others : some);
        ThingList right(gathers ? some : others);
        if (gathers)
          type = Dep::ABSORPTION;
        auto const record = [&](OzObjDependency& to)
        {
          return is_set ? to.record_dependency(&left, &right, type, nullptr, &role)
                        : to.record_dependency(source, target, type, nullptr, &role);
        };

        State const before(graph);
        int const roles_before = CountingRole::alive;
        bool has_failed = true;
        bool accepted = false;
        for (int n = 0; has_failed; ++n)
        {
          has_failed = false;
          {
            MemoryRefusal const refusal(n);
            try
            {
              accepted = record(graph);
            }
            catch (std::bad_alloc const&)
            {
              has_failed = true;
            }
          }
          if (has_failed)
          {
            ++n_failures;
            ASSERT_TRUE(State(graph) == before) << "seed " << seed << ", call " << call << ", request " << n;
            ASSERT_EQ(CountingRole::alive, roles_before)
                << "seed " << seed << ", call " << call << ", request " << n;
          }
        }
        ASSERT_EQ(record(undisturbed), accepted);
        ASSERT_TRUE(State(graph).maps_agree);
        ASSERT_EQ(links_of(graph), links_of(undisturbed));
        ASSERT_EQ(Probe::root_objects(graph), Probe::root_objects(undisturbed));
        ASSERT_EQ(Probe::leaf_objects(graph), Probe::leaf_objects(undisturbed));
      }
    }
    EXPECT_EQ(CountingRole::alive, alive_before) << seed;
  }
  EXPECT_GE(n_failures, 3000);
}

// Assignment.

TEST_F(GraphAssignment, DeletesWhatItReplaces)
{
  int const alive_before = CountingRole::alive;
  OzObjDependency target;
  ASSERT_TRUE(target.record_dependency(object(1), object(2), Dep::MODIFICATION, nullptr, &role));
  record(3, 4, Dep::CREATION);
  ASSERT_EQ(CountingRole::alive, alive_before + 4);

  target = graph;

  EXPECT_EQ(CountingRole::alive, alive_before + 2);
  EXPECT_THAT(links_of(target), ElementsAre("3>4 CREATION q- s0 role"));
  Probe::nodes(target).clear(); // one graph alone may delete the nodes
}

TEST_F(GraphAssignment, LeavesWhatACopyShares)
{
  record(1, 2, Dep::MODIFICATION);
  int const alive = CountingRole::alive;
  OzObjDependency copy(graph);
  OzObjDependency const empty;

  copy = empty;

  EXPECT_TRUE(Probe::nodes(copy).empty());
  EXPECT_EQ(CountingRole::alive, alive);
  EXPECT_THAT(links_of(graph), ElementsAre("1>2 MODIFICATION q- s0 role"));
}

TEST_F(GraphAssignment, ToItselfChangesNothing)
{
  record(1, 2, Dep::MODIFICATION);
  State const before(graph);
  OzObjDependency const& same = graph;

  graph = same;

  EXPECT_TRUE(State(graph) == before);
}
