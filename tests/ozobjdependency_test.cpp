#include "ozobjdependency.h"

#include "graph_probe.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace
{
typedef OzObjDependencyProbe Probe;
typedef OzObjectDependency Dep;
typedef std::set<OzDynObj const*> ObjectSet;
typedef std::vector<OzDynObj const*> Objects;

/// What a query delivers, sorted, since its order means nothing.
struct Answer
{
  bool found;
  Objects objects;
  bool filtered_out;

  bool operator==(Answer const& other) const
  {
    return found == other.found && objects == other.objects && filtered_out == other.filtered_out;
  }
};

std::ostream& operator<<(std::ostream& out, Answer const& answer)
{
  return out << "{" << answer.found << ", " << testing::PrintToString(answer.objects) << ", "
             << answer.filtered_out << "}";
}

Answer answer_of(bool found, OzIterator<OzDynObj const*>& result, bool filtered_out)
{
  Objects objects;
  for (result.reset(); !result.done(); result.next())
    objects.push_back(result.current());
  std::sort(objects.begin(), objects.end());
  return {found, objects, filtered_out};
}

Answer sources_of(OzObjDependency const& graph, OzDynObj const* object,
                  OzObjectDependencyFilter* filter = nullptr)
{
  OzAutoPtr<OzIterator<OzDynObj const*>> result;
  bool filtered_out = true;
  bool const found = graph.get_source_objects(object, result, filter, &filtered_out);
  return answer_of(found, *result, filtered_out);
}

Answer targets_of(OzObjDependency const& graph, OzDynObj const* object,
                  OzObjectDependencyFilter* filter = nullptr)
{
  OzAutoPtr<OzIterator<OzDynObj const*>> result;
  bool filtered_out = true;
  bool const found = graph.get_target_objects(object, result, filter, &filtered_out);
  return answer_of(found, *result, filtered_out);
}

char const* const unit = "ozobjdependency.cpp";

/// One question that a graph asked a link filter.
struct Question
{
  OzDynObj const* source;
  OzDynObj const* target;
  int type;
  int separator;
  int qualifier; // -1 for none
  OzObjectDependencyRole const* role;

  bool operator==(Question const& other) const
  {
    return std::tie(source, target, type, separator, qualifier, role) ==
           std::tie(other.source, other.target, other.type, other.separator, other.qualifier, other.role);
  }
};

std::ostream& operator<<(std::ostream& out, Question const& question)
{
  return out << question.source << " -> " << question.target << " type " << question.type << " separator "
             << question.separator << " qualifier " << question.qualifier << " role " << question.role;
}

/// Lets all links through but those into the targets it is given, and notes what it was asked.
class RefusingFilter : public OzObjectDependencyFilter
{
public:
  explicit RefusingFilter(ObjectSet targets_to_refuse = {})
    : refused(targets_to_refuse)
  {
  }
  bool accept(OzDynObj const* source, OzDynObj const* target, Dep::Type type, int separator,
              int const* target_qualifier, OzObjectDependencyRole const* role) override
  {
    questions.push_back(
        {source, target, type, separator, target_qualifier != nullptr ? *target_qualifier : -1, role});
    return refused.count(target) == 0;
  }

  ObjectSet const refused;
  std::vector<Question> questions;
};

class Graph : public testing::Test
{
protected:
  bool record(OzDynObj const* source, OzDynObj const* target, Dep::Type type)
  {
    return graph.record_dependency(source, target, type, nullptr, nullptr);
  }
  bool record(OzDynObj const* source, OzDynObj const* target, Dep::Type type, int qualifier)
  {
    return graph.record_dependency(source, target, type, &qualifier, nullptr);
  }
  bool record_sets(ThingList&& sources, ThingList&& targets, Dep::Type type,
                   OzObjectDependencyRole const* role = nullptr)
  {
    return graph.record_dependency(&sources, &targets, type, nullptr, role);
  }
  void expect_empty()
  {
    EXPECT_TRUE(Probe::roots(graph).empty());
    EXPECT_TRUE(Probe::leaves(graph).empty());
    EXPECT_TRUE(Probe::nodes(graph).empty());
  }

  OzObjDependency graph;
  Thing const a, b, c, d;
};

TEST_F(Graph, IsEmptyAtFirst)
{
  expect_empty();
  EXPECT_TRUE(graph.consider_split_modificational());
  EXPECT_FALSE(graph.absorption_inherits_target_qualifier());
  EXPECT_EQ(graph.new_separator(), 1);
  EXPECT_EQ(graph.new_separator(), 2);
}

TEST_F(Graph, KeepsItsTwoFlags)
{
  graph.set_absorption_inherits_target_qualifier(true);
  graph.set_consider_split_modificational(false);
  EXPECT_TRUE(graph.absorption_inherits_target_qualifier());
  EXPECT_FALSE(graph.consider_split_modificational());

  graph.set_absorption_inherits_target_qualifier(false);
  graph.set_consider_split_modificational(true);
  EXPECT_FALSE(graph.absorption_inherits_target_qualifier());
  EXPECT_TRUE(graph.consider_split_modificational());
}

TEST_F(Graph, CopyHasTheSameNodesAndSettings)
{
  record(&a, &b, Dep::MODIFICATION);
  graph.set_absorption_inherits_target_qualifier(true);
  graph.set_consider_split_modificational(false);
  graph.new_separator();

  OzObjDependency copy(graph);
  OzObjDependency assigned;
  assigned = graph;

  for (OzObjDependency* other : {&copy, &assigned})
  {
    EXPECT_EQ(Probe::node(*other, &a), Probe::node(graph, &a));
    EXPECT_EQ(Probe::node(*other, &b), Probe::node(graph, &b));
    EXPECT_EQ(Probe::root_objects(*other), ObjectSet{&a});
    EXPECT_EQ(Probe::leaf_objects(*other), ObjectSet{&b});
    EXPECT_TRUE(other->absorption_inherits_target_qualifier());
    EXPECT_FALSE(other->consider_split_modificational());
    EXPECT_EQ(other->new_separator(), 2);
    Probe::nodes(*other).clear(); // one graph alone may delete the nodes
  }
  EXPECT_EQ(Probe::nodes(graph).size(), 2u);
}

// Which numbers of objects each type admits.

struct Admitted
{
  int type;
  // For 0 to 3 sources a row, in it for 0 to 3 targets a column.
  char const* rows[4];
};

Admitted const admitted[] = {
    {-1, {"....", "....", "....", "...."}},
    {Dep::UNSPECIFIED, {"....", "....", "....", "...."}},
    {Dep::TRANSFER, {"....", "x...", "x...", "x..."}},
    {Dep::CREATION, {".x..", ".x..", ".x..", ".x.."}},
    {Dep::DELETION, {"....", "x...", "x...", "x..."}},
    {Dep::MODIFICATION, {"....", ".x..", "....", "...."}},
    {Dep::SPLIT, {"....", "..xx", "....", "...."}},
    {Dep::ABSORPTION, {".x..", ".x..", ".x..", ".x.."}},
    {Dep::CONVERSION, {"....", ".x..", "....", "...."}},
    {Dep::CONTAINMENT, {"....", "..xx", "....", "...."}},
    {9, {"....", "....", "....", "...."}},
};

/// Calls `check` with each type, each number of sources and targets, and whether that is admitted.
template <class Check>
void for_all_numbers(Check check)
{
  for (Admitted const& row : admitted)
    for (int sources = 0; sources <= 3; ++sources)
      for (int targets = 0; targets <= 3; ++targets)
      {
        SCOPED_TRACE("type " + std::to_string(row.type) + ", " + std::to_string(sources) + " sources, " +
                     std::to_string(targets) + " targets");
        check(static_cast<Dep::Type>(row.type), sources, targets, row.rows[sources][targets] == 'x');
      }
}

TEST_F(Graph, AdmitsEachTypeWithItsNumbersOfObjects)
{
  for_all_numbers([](Dep::Type type, int sources, int targets, bool is_admitted)
                  { EXPECT_EQ(Probe::check_dependency(sources, targets, type), is_admitted); });
}

TEST_F(Graph, RecordsSetsOfAdmittedNumbersAndRefusesOthersSilently)
{
  Thing const things[6];
  ReportRecorder const recorder;

  for_all_numbers(
      [&](Dep::Type type, int sources, int targets, bool is_admitted)
      {
        OzObjDependency fresh;
        ThingList from(Objects{}), to(Objects{});
        Objects first, second;
        for (int i = 0; i < sources; ++i)
          first.push_back(&things[i]);
        for (int i = 0; i < targets; ++i)
          second.push_back(&things[3 + i]);
        ThingList source_list(first), target_list(second);

        EXPECT_EQ(fresh.record_dependency(&source_list, &target_list, type, nullptr, nullptr), is_admitted);

        bool const stored = is_admitted && type != Dep::TRANSFER;
        int const links = std::max(sources, 1) * std::max(targets, 1);
        EXPECT_EQ(Probe::link_count(fresh), stored ? static_cast<std::uint64_t>(links) : 0u);
        EXPECT_EQ(Probe::nodes(fresh).empty(), !stored);
      });

  EXPECT_EQ(recorder.units(), reports(0, unit));
}

TEST_F(Graph, RecordsPairsOfAdmittedNumbersAndRefusesOthersSilently)
{
  ReportRecorder const recorder;

  for_all_numbers(
      [&](Dep::Type type, int sources, int targets, bool is_admitted)
      {
        if (sources > 1 || targets > 1)
          return;
        OzObjDependency fresh;

        bool const recorded = fresh.record_dependency(sources == 1 ? &a : nullptr,
                                                      targets == 1 ? &b : nullptr, type, nullptr, nullptr);

        EXPECT_EQ(recorded, is_admitted);
        EXPECT_EQ(Probe::link_count(fresh), is_admitted && type != Dep::TRANSFER ? 1u : 0u);
      });

  EXPECT_EQ(recorder.units(), reports(0, unit));
}

// Recording one pair.

TEST_F(Graph, RecordsAChainAndDeliversItsEnds)
{
  EXPECT_TRUE(record(&a, &b, Dep::MODIFICATION));
  EXPECT_TRUE(record(&b, &c, Dep::MODIFICATION));

  EXPECT_EQ(Probe::root_objects(graph), ObjectSet{&a});
  EXPECT_EQ(Probe::leaf_objects(graph), ObjectSet{&c});
  EXPECT_EQ(sources_of(graph, &c), (Answer{true, {&a}, false}));
  EXPECT_EQ(targets_of(graph, &a), (Answer{true, {&c}, false}));
  EXPECT_EQ(sources_of(graph, &a), (Answer{true, {&a}, false}));
  EXPECT_EQ(targets_of(graph, &c), (Answer{true, {&c}, false}));
}

TEST_F(Graph, FillsBothRecordsOfALink)
{
  graph.new_separator();
  record(&a, &b, Dep::CONVERSION, 7);

  OzObjDepLink const* const forward = Probe::forward(graph, &a, &b);
  OzObjDepLink const* const backward = Probe::backward(graph, &a, &b);
  ASSERT_NE(forward, nullptr);
  ASSERT_NE(backward, nullptr);
  EXPECT_NE(forward, backward);
  EXPECT_EQ(forward->node, Probe::node(graph, &b));
  EXPECT_EQ(backward->node, Probe::node(graph, &a));
  for (OzObjDepLink const* link : {forward, backward})
  {
    EXPECT_EQ(link->dependency_type, Dep::CONVERSION);
    EXPECT_TRUE(link->has_target_qualifier);
    EXPECT_EQ(link->target_qualifier, 7);
    EXPECT_EQ(link->role, nullptr);
    EXPECT_EQ(link->separator, 1);
  }
  EXPECT_TRUE(Probe::node(graph, &a)->target_links.contains(Probe::forward(graph, &a, &b)));
  EXPECT_TRUE(Probe::node(graph, &b)->source_links.contains(Probe::backward(graph, &a, &b)));
  EXPECT_TRUE(Probe::node(graph, &a)->source_links.empty());
  EXPECT_TRUE(Probe::node(graph, &b)->target_links.empty());
}

TEST_F(Graph, MarksALinkWithoutQualifierByMinusOne)
{
  record(&a, &b, Dep::MODIFICATION);

  for (OzObjDepLink const* link : {Probe::forward(graph, &a, &b), Probe::backward(graph, &a, &b)})
  {
    EXPECT_FALSE(link->has_target_qualifier);
    EXPECT_EQ(link->target_qualifier, -1);
    EXPECT_EQ(link->qualifier(), nullptr);
  }
}

TEST_F(Graph, MakesTheNullObjectNodeARootForACreation)
{
  EXPECT_TRUE(record(nullptr, &a, Dep::CREATION));

  EXPECT_EQ(Probe::root_objects(graph), ObjectSet{nullptr});
  EXPECT_EQ(Probe::leaf_objects(graph), ObjectSet{&a});
  EXPECT_EQ(Probe::nodes(graph).size(), 2u);
  EXPECT_EQ(Probe::node(graph, nullptr)->object, nullptr);
  EXPECT_EQ(Probe::forward(graph, nullptr, &a)->dependency_type, Dep::CREATION);
}

TEST_F(Graph, MakesTheNullObjectNodeALeafForADeletion)
{
  record(&a, &b, Dep::MODIFICATION);

  EXPECT_TRUE(record(&a, nullptr, Dep::DELETION));

  EXPECT_EQ(Probe::root_objects(graph), ObjectSet{&a});
  EXPECT_EQ(Probe::leaf_objects(graph), (ObjectSet{&b, nullptr}));
}

TEST_F(Graph, TakesADeletedObjectOutOfTheLeaves)
{
  record(&a, &b, Dep::MODIFICATION);

  record(&b, nullptr, Dep::DELETION);

  EXPECT_EQ(Probe::root_objects(graph), ObjectSet{&a});
  EXPECT_EQ(Probe::leaf_objects(graph), ObjectSet{nullptr});
}

TEST_F(Graph, HasOneNullObjectNodeThatStaysBothRootAndLeaf)
{
  ReportRecorder const recorder;
  record(nullptr, &a, Dep::CREATION);
  record(&b, nullptr, Dep::DELETION);

  EXPECT_EQ(Probe::root_objects(graph), (ObjectSet{&b, nullptr}));
  EXPECT_EQ(Probe::leaf_objects(graph), (ObjectSet{&a, nullptr}));
  EXPECT_EQ(Probe::nodes(graph).size(), 3u);

  // In the other order the null object is known as a target before it becomes a source.
  OzObjDependency other;
  other.record_dependency(&b, nullptr, Dep::DELETION, nullptr, nullptr);
  other.record_dependency(nullptr, &a, Dep::CREATION, nullptr, nullptr);
  EXPECT_EQ(Probe::root_objects(other), (ObjectSet{&b, nullptr}));
  EXPECT_EQ(Probe::leaf_objects(other), (ObjectSet{&a, nullptr}));
  EXPECT_EQ(recorder.units(), reports(0, unit));
}

TEST_F(Graph, TakesARootThatGetsASourceOutOfTheRoots)
{
  record(&b, &c, Dep::MODIFICATION);
  record(&a, &b, Dep::MODIFICATION);

  EXPECT_EQ(Probe::root_objects(graph), ObjectSet{&a});
  EXPECT_EQ(Probe::leaf_objects(graph), ObjectSet{&c});
}

TEST_F(Graph, AcceptsATransferAndStoresNothing)
{
  ReportRecorder const recorder;

  EXPECT_TRUE(record(&a, nullptr, Dep::TRANSFER));
  EXPECT_TRUE(record(&a, nullptr, Dep::TRANSFER));
  Probe::add_dependency_pair(graph, &a, &b, Dep::TRANSFER);

  expect_empty();
  EXPECT_EQ(recorder.units(), reports(0, unit));
}

TEST_F(Graph, AcceptsATransferOfSetsBeforeItLooksAtTheObjects)
{
  ReportRecorder const recorder;

  EXPECT_TRUE(record_sets({nullptr, &a, &a}, {}, Dep::TRANSFER));

  expect_empty();
  EXPECT_EQ(recorder.units(), reports(0, unit));
}

TEST_F(Graph, ReportsAndRefusesAPairThatItHas)
{
  record(&a, &b, Dep::MODIFICATION, 3);
  OzObjDepLink const* const link = Probe::forward(graph, &a, &b);
  ReportRecorder const recorder;

  EXPECT_FALSE(record(&a, &b, Dep::MODIFICATION));
  EXPECT_FALSE(record(&a, &b, Dep::CREATION));

  EXPECT_EQ(recorder.units(), reports(2, unit));
  EXPECT_EQ(Probe::link_count(graph), 1u);
  EXPECT_EQ(Probe::forward(graph, &a, &b), link);
  EXPECT_EQ(link->dependency_type, Dep::MODIFICATION);
  EXPECT_EQ(link->target_qualifier, 3);
}

TEST_F(Graph, RefusesAPairThatItHasWithoutAHandlerToo)
{
  record(&a, &b, Dep::MODIFICATION);

  EXPECT_FALSE(record(&a, &b, Dep::MODIFICATION));

  EXPECT_EQ(Probe::link_count(graph), 1u);
}

TEST_F(Graph, RefusesASecondCreationOrDeletionOfAnObject)
{
  record(nullptr, &a, Dep::CREATION);
  record(&a, nullptr, Dep::DELETION);
  ReportRecorder const recorder;

  EXPECT_FALSE(record(nullptr, &a, Dep::CREATION));
  EXPECT_FALSE(record(&a, nullptr, Dep::DELETION));

  EXPECT_EQ(recorder.units(), reports(2, unit));
  EXPECT_EQ(Probe::link_count(graph), 2u);
}

TEST_F(Graph, AcceptsTheReverseOfAPairAsADependencyOfItsOwn)
{
  record(&a, &b, Dep::MODIFICATION);

  EXPECT_TRUE(record(&b, &a, Dep::MODIFICATION));

  EXPECT_EQ(Probe::link_count(graph), 2u);
  EXPECT_EQ(Probe::root_objects(graph), ObjectSet{});
  EXPECT_EQ(Probe::leaf_objects(graph), ObjectSet{});
}

TEST_F(Graph, AcceptsADependencyOfAnObjectOnItself)
{
  EXPECT_TRUE(record(&a, &a, Dep::MODIFICATION));

  EXPECT_EQ(Probe::nodes(graph).size(), 1u);
  EXPECT_EQ(Probe::link_count(graph), 1u);
  EXPECT_EQ(Probe::root_objects(graph), ObjectSet{});
  EXPECT_EQ(Probe::leaf_objects(graph), ObjectSet{});
  EXPECT_NE(Probe::forward(graph, &a, &a), Probe::backward(graph, &a, &a));
}

TEST_F(Graph, KnowsWhichPairsItHas)
{
  EXPECT_TRUE(Probe::check_dependency_pair(graph, &a, &b));
  record(&a, &b, Dep::MODIFICATION);
  record(&a, &c, Dep::MODIFICATION);

  EXPECT_FALSE(Probe::check_dependency_pair(graph, &a, &b));
  EXPECT_FALSE(Probe::check_dependency_pair(graph, &a, &c));
  EXPECT_TRUE(Probe::check_dependency_pair(graph, &b, &a));
  EXPECT_TRUE(Probe::check_dependency_pair(graph, &b, &c));
  EXPECT_TRUE(Probe::check_dependency_pair(graph, &d, &b));
  EXPECT_TRUE(Probe::check_dependency_pair(graph, &a, &d));
  EXPECT_TRUE(Probe::check_dependency_pair(graph, nullptr, &a));
}

TEST_F(Graph, ReportsAnAbsorptionFromNothingOnceItKnowsTheNullObject)
{
  ReportRecorder recorder;
  EXPECT_TRUE(record(nullptr, &a, Dep::ABSORPTION));
  EXPECT_EQ(recorder.units(), reports(0, unit));

  EXPECT_TRUE(record(nullptr, &b, Dep::ABSORPTION));

  EXPECT_EQ(recorder.units(), reports(1, unit));
  EXPECT_EQ(Probe::link_count(graph), 2u);
  EXPECT_EQ(Probe::forward(graph, nullptr, &b)->dependency_type, Dep::ABSORPTION);
  EXPECT_EQ(Probe::root_objects(graph), ObjectSet{nullptr});
}

TEST_F(Graph, ReportsANullTargetOfOtherTypesThanDeletionAndLinksItAllTheSame)
{
  ReportRecorder recorder;
  Probe::add_dependency_pair(graph, &a, nullptr, Dep::MODIFICATION);
  EXPECT_EQ(recorder.units(), reports(0, unit));

  Probe::add_dependency_pair(graph, &b, nullptr, Dep::MODIFICATION);

  EXPECT_EQ(recorder.units(), reports(1, unit));
  EXPECT_EQ(Probe::link_count(graph), 2u);
  EXPECT_EQ(Probe::leaf_objects(graph), ObjectSet{nullptr});
}

TEST_F(Graph, StampsTheSeparatorOfItsTime)
{
  record(&a, &b, Dep::MODIFICATION);
  graph.new_separator();
  record(&b, &c, Dep::MODIFICATION);
  graph.new_separator();
  graph.new_separator();
  record(&c, &d, Dep::MODIFICATION);

  EXPECT_EQ(Probe::forward(graph, &a, &b)->separator, 0);
  EXPECT_EQ(Probe::backward(graph, &a, &b)->separator, 0);
  EXPECT_EQ(Probe::forward(graph, &b, &c)->separator, 1);
  EXPECT_EQ(Probe::forward(graph, &c, &d)->separator, 3);
  EXPECT_EQ(Probe::backward(graph, &c, &d)->separator, 3);
}

// Roles.

TEST_F(Graph, ClonesARoleForEachRecordAndDeletesEachCloneOnce)
{
  CountingRole const role;
  int const alive_before = CountingRole::alive;
  int const clones_before = CountingRole::clones;
  {
    OzObjDependency own;
    own.record_dependency(&a, &b, Dep::MODIFICATION, nullptr, &role);

    OzObjectDependencyRole const* const forward = Probe::forward(own, &a, &b)->role;
    OzObjectDependencyRole const* const backward = Probe::backward(own, &a, &b)->role;
    EXPECT_NE(forward, nullptr);
    EXPECT_NE(backward, nullptr);
    EXPECT_NE(forward, backward);
    EXPECT_NE(forward, &role);
    EXPECT_NE(backward, &role);
    EXPECT_EQ(forward->identity(), role.identity());
    EXPECT_EQ(CountingRole::alive, alive_before + 2);
    EXPECT_EQ(CountingRole::clones, clones_before + 2);
  }
  EXPECT_EQ(CountingRole::alive, alive_before);
}

TEST_F(Graph, ClonesARoleOncePerRecordOfASetCall)
{
  CountingRole const role;
  int const clones_before = CountingRole::clones;
  ThingList source{&a}, targets{&b, &c, &d};

  graph.record_dependency(&source, &targets, Dep::SPLIT, nullptr, &role);

  EXPECT_EQ(CountingRole::clones, clones_before + 6);
}

TEST_F(Graph, ClonesNoRoleForWhatItRefusesOrTransfers)
{
  record(&a, &b, Dep::MODIFICATION);
  CountingRole const role;
  int const clones_before = CountingRole::clones;

  graph.record_dependency(&a, &b, Dep::MODIFICATION, nullptr, &role);
  graph.record_dependency(&a, nullptr, Dep::TRANSFER, nullptr, &role);
  graph.record_dependency(&a, &c, Dep::SPLIT, nullptr, &role);

  EXPECT_EQ(CountingRole::clones, clones_before);
}

TEST_F(Graph, GivesTheBackwardRecordTheFirstClone)
{
  OzArtificialObjectDependency const role;

  graph.record_dependency(&a, &b, Dep::MODIFICATION, nullptr, &role);

  EXPECT_EQ(Probe::backward(graph, &a, &b)->role->identity(), role.identity() + 1);
  EXPECT_EQ(Probe::forward(graph, &a, &b)->role->identity(), role.identity() + 2);
}

/// A role whose clone is no role, or that cannot be cloned at all.
class OddRole : public OzObjectDependencyRole
{
public:
  explicit OddRole(bool throws_when_cloned)
    : throws(throws_when_cloned)
  {
  }
  OzDynObj* clone() const override
  {
    if (throws)
      throw std::runtime_error("no clone");
    return new Thing;
  }

private:
  bool throws;
};

TEST_F(Graph, DropsACloneThatIsNoRole)
{
  OddRole const role(false);

  EXPECT_TRUE(graph.record_dependency(&a, &b, Dep::MODIFICATION, nullptr, &role));

  EXPECT_EQ(Probe::forward(graph, &a, &b)->role, nullptr);
  EXPECT_EQ(Probe::backward(graph, &a, &b)->role, nullptr);
}

TEST_F(Graph, StaysAsItWasWhenARoleCannotBeCloned)
{
  OddRole const role(true);

  EXPECT_THROW(graph.record_dependency(&a, &b, Dep::MODIFICATION, nullptr, &role), std::runtime_error);

  expect_empty();
}

/// Cannot be cloned more often than it was told.
class SparseRole : public OzObjectDependencyRole
{
public:
  explicit SparseRole(int clones_to_allow)
    : clones_left(clones_to_allow)
  {
  }
  OzDynObj* clone() const override
  {
    if (clones_left == 0)
      throw std::runtime_error("no clone");
    --clones_left;
    return new OzArtificialObjectDependency;
  }

private:
  mutable int clones_left;
};

TEST_F(Graph, StaysAsItWasWhenARoleCannotBeClonedForAllOfASet)
{
  SparseRole const too_few(3), enough(4);

  EXPECT_THROW(record_sets({&a}, {&b, &c}, Dep::SPLIT, &too_few), std::runtime_error);
  expect_empty();

  EXPECT_TRUE(record_sets({&a}, {&b, &c}, Dep::SPLIT, &enough));
  EXPECT_EQ(Probe::link_count(graph), 2u);
}

TEST_F(Graph, ClonesARoleForASetWithoutSources)
{
  SparseRole const role(2);

  EXPECT_TRUE(record_sets({}, {&a}, Dep::CREATION, &role));

  EXPECT_NE(Probe::forward(graph, nullptr, &a)->role, nullptr);
  EXPECT_NE(Probe::backward(graph, nullptr, &a)->role, nullptr);
}

TEST_F(Graph, DrawsNoIdentityButForClonesOfARole)
{
  int const before = OzArtificialObjectDependency().identity();
  SparseRole const role(2); // this draws one too

  EXPECT_TRUE(record_sets({&a}, {}, Dep::DELETION, &role));

  EXPECT_EQ(OzArtificialObjectDependency().identity(), before + 4);
}

// Recording sets.

TEST_F(Graph, RecordsEachSourceOfASetWithTheSameStamp)
{
  graph.new_separator();
  ThingList sources{&a, &b, &c}, target{&d};
  int const qualifier = 9;

  EXPECT_TRUE(graph.record_dependency(&sources, &target, Dep::CREATION, &qualifier, nullptr));

  EXPECT_EQ(Probe::link_count(graph), 3u);
  for (OzDynObj const* source : {&a, &b, &c})
  {
    EXPECT_EQ(Probe::forward(graph, source, &d)->separator, 1);
    EXPECT_EQ(Probe::forward(graph, source, &d)->target_qualifier, 9);
    EXPECT_EQ(Probe::backward(graph, source, &d)->separator, 1);
    EXPECT_EQ(Probe::backward(graph, source, &d)->target_qualifier, 9);
  }
  EXPECT_EQ(Probe::root_objects(graph), (ObjectSet{&a, &b, &c}));
  EXPECT_EQ(Probe::leaf_objects(graph), ObjectSet{&d});
}

TEST_F(Graph, RecordsEachTargetOfASet)
{
  EXPECT_TRUE(record_sets({&a}, {&b, &c, &d}, Dep::SPLIT));

  EXPECT_EQ(Probe::link_count(graph), 3u);
  EXPECT_EQ(Probe::forward(graph, &a, &b)->dependency_type, Dep::SPLIT);
  EXPECT_EQ(Probe::forward(graph, &a, &c)->dependency_type, Dep::SPLIT);
  EXPECT_EQ(Probe::forward(graph, &a, &d)->dependency_type, Dep::SPLIT);
}

TEST_F(Graph, TakesANullIteratorForNoObjects)
{
  ReportRecorder const recorder;
  ThingList objects{&a, &b}, object{&c}, none{};
  ThingList* const no_list = nullptr;

  EXPECT_TRUE(graph.record_dependency(&objects, nullptr, Dep::DELETION, nullptr, nullptr));
  EXPECT_TRUE(graph.record_dependency(nullptr, &object, Dep::CREATION, nullptr, nullptr));
  EXPECT_FALSE(graph.record_dependency(no_list, no_list, Dep::CREATION, nullptr, nullptr));
  EXPECT_FALSE(graph.record_dependency(no_list, no_list, Dep::DELETION, nullptr, nullptr));
  EXPECT_FALSE(graph.record_dependency(&none, nullptr, Dep::TRANSFER, nullptr, nullptr));

  EXPECT_EQ(Probe::link_count(graph), 3u);
  EXPECT_EQ(Probe::forward(graph, &a, nullptr)->dependency_type, Dep::DELETION);
  EXPECT_EQ(Probe::forward(graph, &b, nullptr)->dependency_type, Dep::DELETION);
  EXPECT_EQ(Probe::forward(graph, nullptr, &c)->dependency_type, Dep::CREATION);
  EXPECT_EQ(recorder.units(), reports(0, unit));
}

TEST_F(Graph, TakesAnEmptyIteratorForNoObjects)
{
  EXPECT_TRUE(record_sets({}, {&a}, Dep::CREATION));
  EXPECT_TRUE(record_sets({&b, &c}, {}, Dep::DELETION));

  EXPECT_EQ(Probe::link_count(graph), 3u);
  EXPECT_NE(Probe::forward(graph, nullptr, &a), nullptr);
  EXPECT_NE(Probe::forward(graph, &b, nullptr), nullptr);
  EXPECT_NE(Probe::forward(graph, &c, nullptr), nullptr);
}

TEST_F(Graph, WalksTheIteratorsFromTheirBeginning)
{
  ThingList sources{&a, &b}, target{&c};
  sources.next();
  target.next();

  EXPECT_TRUE(graph.record_dependency(&sources, &target, Dep::CREATION, nullptr, nullptr));

  EXPECT_EQ(Probe::link_count(graph), 2u);
}

TEST_F(Graph, ReportsOnceAndRefusesAWholeSetForOneOfItsPairs)
{
  struct
  {
    char const* what;
    Objects sources, targets;
    Dep::Type type;
  } const cases[] = {
      {"the first pair is there", {&a, &c}, {&b}, Dep::ABSORPTION},
      {"the last pair is there", {&c, &d, &a}, {&b}, Dep::ABSORPTION},
      {"the last target is there", {&a}, {&c, &b}, Dep::SPLIT},
      {"the first target is there", {&a}, {&b, &c}, Dep::SPLIT},
      {"a null source", {&c, nullptr}, {&d}, Dep::ABSORPTION},
      {"a null source first", {nullptr, &c}, {&d}, Dep::ABSORPTION},
      {"a null source alone", {nullptr}, {&d}, Dep::CREATION},
      {"a null target", {&c}, {&d, nullptr}, Dep::SPLIT},
      {"a null target first", {&c}, {nullptr, &d}, Dep::SPLIT},
      {"a null target alone", {&c}, {nullptr}, Dep::MODIFICATION},
      {"a source twice", {&c, &c}, {&d}, Dep::ABSORPTION},
      {"a source twice, apart", {&c, &a, &c}, {&d}, Dep::ABSORPTION},
      {"a deleted object twice", {&c, &c}, {}, Dep::DELETION},
      {"a target twice", {&c}, {&d, &d}, Dep::SPLIT},
      {"a target twice, apart", {&c}, {&d, &a, &d}, Dep::CONTAINMENT},
  };
  record(&a, &b, Dep::MODIFICATION);

  for (auto const& test : cases)
  {
    SCOPED_TRACE(test.what);
    ThingList sources(test.sources), targets(test.targets);
    {
      ReportRecorder const recorder;
      EXPECT_FALSE(graph.record_dependency(&sources, &targets, test.type, nullptr, nullptr));
      EXPECT_EQ(recorder.units(), reports(1, unit));
    }
    EXPECT_FALSE(graph.record_dependency(&sources, &targets, test.type, nullptr, nullptr));
    EXPECT_EQ(Probe::link_count(graph), 1u);
    EXPECT_EQ(Probe::nodes(graph).size(), 2u);
  }
}

TEST_F(Graph, AcceptsAnObjectOnBothSides)
{
  ReportRecorder const recorder;

  EXPECT_TRUE(record_sets({&a}, {&a, &b}, Dep::SPLIT));

  EXPECT_EQ(Probe::link_count(graph), 2u);
  EXPECT_EQ(recorder.units(), reports(0, unit));
}

TEST_F(Graph, ReportsEachAbsorptionFromNothingOfASetCall)
{
  record(nullptr, &a, Dep::CREATION);
  ReportRecorder const recorder;

  EXPECT_TRUE(record_sets({}, {&b}, Dep::ABSORPTION));

  EXPECT_EQ(recorder.units(), reports(1, unit));
  EXPECT_EQ(Probe::forward(graph, nullptr, &b)->dependency_type, Dep::ABSORPTION);
}

TEST_F(Graph, ChecksPairsWithoutSayingSoWhereNobodyAsks)
{
  ThingList sources{&a}, targets{&b};

  Probe::check_or_add_dependency(graph, true, &sources, &targets, Dep::MODIFICATION, nullptr);
  expect_empty();

  bool ok = false;
  Probe::check_or_add_dependency(graph, true, &sources, &targets, Dep::MODIFICATION, &ok);
  EXPECT_TRUE(ok);
  expect_empty();
  Probe::check_or_add_dependency(graph, false, &sources, &targets, Dep::MODIFICATION, nullptr);
  EXPECT_EQ(Probe::link_count(graph), 1u);
  Probe::check_or_add_dependency(graph, true, &sources, &targets, Dep::MODIFICATION, &ok);
  EXPECT_FALSE(ok);
}

/// Counts how often it is asked for an object.
class CountingList : public ThingList
{
public:
  using ThingList::ThingList;
  OzDynObj const* const& current() const override
  {
    ++asked;
    return ThingList::current();
  }

  mutable int asked = 0;
};

TEST_F(Graph, StopsCheckingAtTheFirstPairThatItHas)
{
  record(&a, &b, Dep::MODIFICATION);
  CountingList sources{&a, &c, &d}, targets{&b, &c, &d};
  bool ok = true;

  Probe::check_or_add_dependency(graph, true, &sources, &targets, Dep::ABSORPTION, &ok);

  EXPECT_FALSE(ok);
  EXPECT_EQ(sources.asked, 1);
  EXPECT_EQ(targets.asked, 1);
}

// Qualifiers that an absorption inherits.

class InheritingGraph : public Graph
{
protected:
  InheritingGraph() { graph.set_absorption_inherits_target_qualifier(true); }

  /// The qualifier of the link from `source` to `target`, -1 if it has none, on both of its records.
  int qualifier_of(OzDynObj const* source, OzDynObj const* target)
  {
    OzObjDepLink const* const forward = Probe::forward(graph, source, target);
    OzObjDepLink const* const backward = Probe::backward(graph, source, target);
    EXPECT_EQ(forward->has_target_qualifier, backward->has_target_qualifier);
    EXPECT_EQ(forward->target_qualifier, backward->target_qualifier);
    return forward->has_target_qualifier ? forward->target_qualifier : -1;
  }

  Thing const e, f;
};

TEST_F(InheritingGraph, TakesTheQualifierThatTheSourcesOfTheSourceShare)
{
  record(&a, &c, Dep::ABSORPTION, 5);
  record(&b, &c, Dep::ABSORPTION, 5);

  record(&c, &d, Dep::ABSORPTION);

  EXPECT_EQ(qualifier_of(&c, &d), 5);
}

TEST_F(InheritingGraph, TakesNoneFromSourcesThatDiffer)
{
  record(&a, &c, Dep::ABSORPTION, 5);
  record(&b, &c, Dep::ABSORPTION, 6);

  record(&c, &d, Dep::ABSORPTION);

  EXPECT_EQ(qualifier_of(&c, &d), -1);
}

TEST_F(InheritingGraph, TakesNoneIfASourceHasNone)
{
  record(&a, &d, Dep::CREATION, 5);
  record(&b, &d, Dep::CREATION);
  record(&c, &d, Dep::CREATION, 5);

  record(&d, &e, Dep::ABSORPTION);

  EXPECT_EQ(qualifier_of(&d, &e), -1);
}

TEST_F(InheritingGraph, TakesNoneFromARoot)
{
  record(&a, &b, Dep::ABSORPTION);

  EXPECT_EQ(qualifier_of(&a, &b), -1);
}

TEST_F(InheritingGraph, PrefersAnExplicitQualifier)
{
  record(&a, &b, Dep::MODIFICATION, 5);

  record(&b, &c, Dep::ABSORPTION, 8);

  EXPECT_EQ(qualifier_of(&b, &c), 8);
}

TEST_F(InheritingGraph, LeavesOtherTypesAlone)
{
  record(&a, &b, Dep::MODIFICATION, 5);

  record(&b, &c, Dep::MODIFICATION);

  EXPECT_EQ(qualifier_of(&b, &c), -1);
}

TEST_F(InheritingGraph, DoesSoOnlyWhileTheFlagIsSet)
{
  graph.set_absorption_inherits_target_qualifier(false);
  record(&a, &b, Dep::MODIFICATION, 5);
  record(&b, &c, Dep::ABSORPTION);
  EXPECT_TRUE(record_sets({&b}, {&d}, Dep::ABSORPTION));

  graph.set_absorption_inherits_target_qualifier(true);
  record(&b, &e, Dep::ABSORPTION);

  EXPECT_EQ(qualifier_of(&b, &c), -1);
  EXPECT_EQ(qualifier_of(&b, &d), -1);
  EXPECT_EQ(qualifier_of(&b, &e), 5);
}

TEST_F(InheritingGraph, LetsAnAbsorptionFromNothingInheritFromDeletionsInThePairFormOnly)
{
  record(&a, nullptr, Dep::DELETION, 4);

  record(nullptr, &b, Dep::ABSORPTION);
  EXPECT_TRUE(record_sets({}, {&c}, Dep::ABSORPTION));

  EXPECT_EQ(qualifier_of(nullptr, &b), 4);
  EXPECT_EQ(qualifier_of(nullptr, &c), -1);
}

TEST_F(InheritingGraph, TakesTheQualifierThatAllSourcesOfASetShare)
{
  record(&a, &c, Dep::MODIFICATION, 5);
  record(&b, &d, Dep::MODIFICATION, 5);

  EXPECT_TRUE(record_sets({&c, &d}, {&e}, Dep::ABSORPTION));

  EXPECT_EQ(qualifier_of(&c, &e), 5);
  EXPECT_EQ(qualifier_of(&d, &e), 5);
}

TEST_F(InheritingGraph, TakesNoneForASetWithDifferentOrMissingQualifiers)
{
  record(&a, &c, Dep::MODIFICATION, 5);
  record(&b, &d, Dep::MODIFICATION, 6);
  EXPECT_TRUE(record_sets({&c, &d}, {&e}, Dep::ABSORPTION));
  EXPECT_TRUE(record_sets({&c, &b}, {&f}, Dep::ABSORPTION));

  EXPECT_EQ(qualifier_of(&c, &e), -1);
  EXPECT_EQ(qualifier_of(&d, &e), -1);
  EXPECT_EQ(qualifier_of(&c, &f), -1);
  EXPECT_EQ(qualifier_of(&b, &f), -1);
}

TEST_F(InheritingGraph, PrefersAnExplicitQualifierForASet)
{
  record(&a, &b, Dep::MODIFICATION, 5);
  ThingList sources{&b}, targets{&c};
  int const qualifier = 8;

  graph.record_dependency(&sources, &targets, Dep::ABSORPTION, &qualifier, nullptr);

  EXPECT_EQ(qualifier_of(&b, &c), 8);
}

TEST_F(Graph, LeavesTheQualifierAloneWhereSourcesShareNone)
{
  int qualifier = 77;
  record(&a, &b, Dep::MODIFICATION);
  record(&a, &c, Dep::MODIFICATION, 5);
  record(&b, &d, Dep::MODIFICATION, 6);
  ThingList none{}, unknown_first{&a, &c}, differing{&c, &d}, fitting{&c, &c};
  OzDynObj const* const no_object = nullptr;
  ThingList* const no_list = nullptr;

  EXPECT_FALSE(Probe::have_same_qualifier(graph, no_object, qualifier));
  EXPECT_FALSE(Probe::have_same_qualifier(graph, &a, qualifier));
  EXPECT_FALSE(Probe::have_same_qualifier(graph, &b, qualifier));
  EXPECT_FALSE(Probe::have_same_qualifier(graph, no_list, qualifier));
  EXPECT_FALSE(Probe::have_same_qualifier(graph, &none, qualifier));
  EXPECT_FALSE(Probe::have_same_qualifier(graph, &unknown_first, qualifier));
  EXPECT_FALSE(Probe::have_same_qualifier(graph, &differing, qualifier));
  EXPECT_EQ(qualifier, 77);

  EXPECT_TRUE(Probe::have_same_qualifier(graph, &c, qualifier));
  EXPECT_EQ(qualifier, 5);
  EXPECT_TRUE(Probe::have_same_qualifier(graph, &d, qualifier));
  EXPECT_EQ(qualifier, 6);
  fitting.next();
  EXPECT_TRUE(Probe::have_same_qualifier(graph, &fitting, qualifier));
  EXPECT_EQ(qualifier, 5);
}

// Queries.

TEST_F(Graph, AnswersFalseForAnObjectThatItDoesNotKnow)
{
  EXPECT_EQ(sources_of(graph, &a), (Answer{false, {}, false}));
  EXPECT_EQ(targets_of(graph, &a), (Answer{false, {}, false}));
  record(&b, &c, Dep::MODIFICATION);
  EXPECT_EQ(sources_of(graph, &a), (Answer{false, {}, false}));
  EXPECT_EQ(targets_of(graph, &a), (Answer{false, {}, false}));
}

TEST_F(Graph, DeliversAllRootsAndLeavesButNull)
{
  record(&a, &c, Dep::MODIFICATION);
  record(&b, &d, Dep::MODIFICATION);
  record(nullptr, &c, Dep::CREATION);
  record(&a, nullptr, Dep::DELETION);

  EXPECT_EQ(sources_of(graph, nullptr), (Answer{true, {&a, &b}, false}));
  EXPECT_EQ(targets_of(graph, nullptr), (Answer{true, {&c, &d}, false}));
}

TEST_F(Graph, AnswersFalseIfNullIsTheOnlyRootOrLeaf)
{
  EXPECT_EQ(sources_of(graph, nullptr), (Answer{false, {}, false}));
  EXPECT_EQ(targets_of(graph, nullptr), (Answer{false, {}, false}));
  record(nullptr, &a, Dep::CREATION);
  EXPECT_EQ(sources_of(graph, nullptr), (Answer{false, {}, false}));
  EXPECT_EQ(targets_of(graph, nullptr), (Answer{true, {&a}, false}));
  record(&a, nullptr, Dep::DELETION);
  EXPECT_EQ(targets_of(graph, nullptr), (Answer{false, {}, false}));
}

TEST_F(Graph, TellsWhatCameFromNothingButNotWhatWentToNothing)
{
  record(nullptr, &a, Dep::CREATION);
  record(&b, nullptr, Dep::DELETION);

  EXPECT_EQ(sources_of(graph, &a), (Answer{true, {}, false}));
  EXPECT_EQ(targets_of(graph, &b), (Answer{false, {}, false}));
}

TEST_F(Graph, DeliversRealEndsBesideNull)
{
  record(nullptr, &c, Dep::CREATION);
  record(&a, &c, Dep::CREATION);
  record(&a, nullptr, Dep::DELETION);

  EXPECT_EQ(sources_of(graph, &c), (Answer{true, {&a}, false}));
  EXPECT_EQ(targets_of(graph, &a), (Answer{true, {&c}, false}));
}

TEST_F(Graph, DoesNotWalkThroughNull)
{
  record(&a, nullptr, Dep::DELETION);
  record(nullptr, &b, Dep::CREATION);

  EXPECT_EQ(sources_of(graph, &b), (Answer{true, {}, false}));
  EXPECT_EQ(targets_of(graph, &a), (Answer{false, {}, false}));
}

TEST_F(Graph, DeliversAnEndOncePerPath)
{
  record_sets({&a}, {&b, &c}, Dep::SPLIT);
  record_sets({&b, &c}, {&d}, Dep::ABSORPTION);

  EXPECT_EQ(sources_of(graph, &d), (Answer{true, {&a, &a}, false}));
  EXPECT_EQ(targets_of(graph, &a), (Answer{true, {&d, &d}, false}));
}

TEST_F(Graph, StopsWhereTheFilterRefusesALink)
{
  record(&a, &b, Dep::MODIFICATION);
  record(&b, &c, Dep::MODIFICATION);
  RefusingFilter into_b({&b}), into_c({&c});

  EXPECT_EQ(sources_of(graph, &c, &into_c), (Answer{false, {}, true}));
  EXPECT_EQ(into_c.questions, (std::vector<Question>{{&b, &c, Dep::MODIFICATION, 0, -1, nullptr}}));
  EXPECT_EQ(targets_of(graph, &a, &into_b), (Answer{false, {}, true}));
  EXPECT_EQ(into_b.questions, (std::vector<Question>{{&a, &b, Dep::MODIFICATION, 0, -1, nullptr}}));
}

TEST_F(Graph, DeliversWhatTheFilterLeaves)
{
  record(&a, &c, Dep::CREATION);
  record(&b, &c, Dep::CREATION);
  record_sets({&c}, {&d, &a}, Dep::SPLIT);
  OzObjDependency other;
  other.record_dependency(&a, &b, Dep::CREATION, nullptr, nullptr);
  other.record_dependency(&a, &c, Dep::CREATION, nullptr, nullptr);
  RefusingFilter filter({&b});

  EXPECT_EQ(targets_of(other, &a, &filter), (Answer{true, {&c}, true}));
}

TEST_F(Graph, ShowsTheFilterEachFieldOfALinkWithItsSourceFirst)
{
  OzArtificialObjectDependency const role;
  int const qualifier = 12;
  graph.new_separator();
  graph.record_dependency(&a, &b, Dep::CONVERSION, &qualifier, &role);
  RefusingFilter backwards, forwards;

  EXPECT_EQ(sources_of(graph, &b, &backwards), (Answer{true, {&a}, false}));
  EXPECT_EQ(targets_of(graph, &a, &forwards), (Answer{true, {&b}, false}));

  OzObjectDependencyRole const* const backward_role = Probe::backward(graph, &a, &b)->role;
  OzObjectDependencyRole const* const forward_role = Probe::forward(graph, &a, &b)->role;
  EXPECT_EQ(backwards.questions, (std::vector<Question>{{&a, &b, Dep::CONVERSION, 1, 12, backward_role}}));
  EXPECT_EQ(forwards.questions, (std::vector<Question>{{&a, &b, Dep::CONVERSION, 1, 12, forward_role}}));
}

TEST_F(Graph, ShowsTheFilterLinksFromAndToNull)
{
  record(nullptr, &a, Dep::CREATION);
  record(&a, nullptr, Dep::DELETION);
  RefusingFilter backwards, forwards;

  EXPECT_EQ(sources_of(graph, &a, &backwards), (Answer{true, {}, false}));
  EXPECT_EQ(targets_of(graph, &a, &forwards), (Answer{false, {}, false}));

  EXPECT_EQ(backwards.questions, (std::vector<Question>{{nullptr, &a, Dep::CREATION, 0, -1, nullptr}}));
  EXPECT_EQ(forwards.questions, (std::vector<Question>{{&a, nullptr, Dep::DELETION, 0, -1, nullptr}}));
}

TEST_F(Graph, AsksNoFilterAboutAllRootsOrLeaves)
{
  record(&a, &b, Dep::MODIFICATION);
  RefusingFilter filter({&a, &b});

  EXPECT_EQ(sources_of(graph, nullptr, &filter), (Answer{true, {&a}, false}));
  EXPECT_EQ(targets_of(graph, nullptr, &filter), (Answer{true, {&b}, false}));
  EXPECT_EQ(filter.questions, std::vector<Question>{});
}

TEST_F(Graph, NeedsNoPlaceForTheFiltersAnswer)
{
  record(&a, &b, Dep::MODIFICATION);
  RefusingFilter filter({&b});
  OzAutoPtr<OzIterator<OzDynObj const*>> result;

  EXPECT_FALSE(graph.get_source_objects(&b, result, &filter, nullptr));
  EXPECT_TRUE(result->done());
  EXPECT_FALSE(graph.get_target_objects(&a, result, &filter, nullptr));
  EXPECT_TRUE(result->done());
}

/// An iterator that tells of its own end.
class DoomedList : public ThingList
{
public:
  explicit DoomedList(bool& flag)
    : ThingList({})
    , deleted(flag)
  {
  }
  ~DoomedList() override { deleted = true; }

private:
  bool& deleted;
};

TEST_F(Graph, ReplacesWhatTheResultHeldInEveryCase)
{
  bool deleted = false;
  OzAutoPtr<OzIterator<OzDynObj const*>> result;

  result = new DoomedList(deleted);
  EXPECT_FALSE(graph.get_source_objects(&a, result, nullptr, nullptr));
  EXPECT_TRUE(deleted);
  EXPECT_NE(dynamic_cast<OzDynObjArrayIterator*>(result.get()), nullptr);

  deleted = false;
  result = new DoomedList(deleted);
  EXPECT_FALSE(graph.get_target_objects(&a, result, nullptr, nullptr));
  EXPECT_TRUE(deleted);
  EXPECT_NE(dynamic_cast<OzDynObjArrayIterator*>(result.get()), nullptr);
}

TEST_F(Graph, PassesOverRecordsWithoutANode)
{
  record_sets({&a}, {&b, &c}, Dep::SPLIT);
  record_sets({&b, &c}, {&d}, Dep::ABSORPTION);
  Probe::forward(graph, &a, &b)->node = nullptr;
  Probe::backward(graph, &b, &d)->node = nullptr;
  Probe::node(graph, &d)->source_links.insert(nullptr);
  Probe::roots(graph).insert(nullptr);
  Probe::leaves(graph).insert(nullptr);

  EXPECT_EQ(sources_of(graph, &d), (Answer{true, {&a}, false}));
  EXPECT_EQ(targets_of(graph, &a), (Answer{true, {&d}, false}));
  EXPECT_EQ(sources_of(graph, nullptr), (Answer{true, {&a}, false}));
  EXPECT_EQ(targets_of(graph, nullptr), (Answer{true, {&d}, false}));
}

TEST_F(Graph, KnowsWhetherAnObjectHasADirectSource)
{
  record(nullptr, &a, Dep::CREATION);
  record(&b, &c, Dep::MODIFICATION);
  record(nullptr, &c, Dep::CREATION);
  record(&c, nullptr, Dep::DELETION);

  EXPECT_FALSE(Probe::has_direct_source(graph, nullptr));
  EXPECT_FALSE(Probe::has_direct_source(graph, &d));
  EXPECT_FALSE(Probe::has_direct_source(graph, &a));
  EXPECT_FALSE(Probe::has_direct_source(graph, &b));
  EXPECT_TRUE(Probe::has_direct_source(graph, &c));
}

// A history far deeper than a thread's stack.

void* walk_a_deep_history(void*)
{
  constexpr std::size_t depth = 300000;
  std::vector<Thing> const things(depth);
  OzObjDependency graph;
  for (std::size_t i = 1; i < depth; ++i)
    graph.record_dependency(&things[i - 1], &things[i], Dep::MODIFICATION, nullptr, nullptr);
  RefusingFilter filter;

  EXPECT_EQ(sources_of(graph, &things[depth - 1]), (Answer{true, {&things[0]}, false}));
  EXPECT_EQ(targets_of(graph, &things[0]), (Answer{true, {&things[depth - 1]}, false}));
  EXPECT_EQ(sources_of(graph, &things[depth - 1], &filter), (Answer{true, {&things[0]}, false}));
  EXPECT_EQ(filter.questions.size(), depth - 1);
  return nullptr;
}

TEST(DeepGraph, IsRecordedWalkedAndDestroyedOnASmallStack)
{
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  pthread_t thread;

  ASSERT_EQ(pthread_create(&thread, &attributes, &walk_a_deep_history, nullptr), 0);

  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(WideGraph, RecordsManyCreationsFromNothing)
{
  constexpr std::size_t width = 100000;
  std::vector<Thing> const things(width);
  OzObjDependency graph;

  for (Thing const& thing : things)
    ASSERT_TRUE(graph.record_dependency(nullptr, &thing, Dep::CREATION, nullptr, nullptr));

  OzObjDepNode const* const null_node = Probe::node(graph, nullptr);
  EXPECT_EQ(null_node->target_links.size(), width);
  OzObjDepLink const* last = nullptr;
  for (OzObjDepLink const* link : null_node->target_links)
  {
    ASSERT_LT(last, link);
    last = link;
  }
}

// Removal.

TEST_F(Graph, ReportsAndRefusesToRemoveObjects)
{
  record(&a, &b, Dep::MODIFICATION);
  ReportRecorder const recorder;

  EXPECT_FALSE(graph.remove_source_object(&a, true));
  EXPECT_FALSE(graph.remove_source_object(&c, false));
  EXPECT_FALSE(graph.remove_target_object(&b, true));
  EXPECT_FALSE(graph.remove_target_object(nullptr, false));

  EXPECT_EQ(recorder.units(), reports(4, unit));
  EXPECT_EQ(Probe::link_count(graph), 1u);
  EXPECT_EQ(Probe::nodes(graph).size(), 2u);
}

TEST_F(Graph, RemovesOneEndOfALinkWithItsRole)
{
  CountingRole const role;
  graph.record_dependency(&a, &b, Dep::MODIFICATION, nullptr, &role);
  int const alive_before = CountingRole::alive;
  OzObjDepNode* const n1 = Probe::node(graph, &a);
  OzObjDepNode* const n2 = Probe::node(graph, &b);
  OzObjDepLink* forward = Probe::forward(graph, &a, &b);
  OzObjDepLink* backward = Probe::backward(graph, &a, &b);
  ReportRecorder const recorder;

  EXPECT_TRUE(Probe::remove_target_link(n1, forward));

  EXPECT_EQ(forward, nullptr);
  EXPECT_TRUE(n1->target_links.empty());
  EXPECT_TRUE(n1->target_link_map.empty());
  EXPECT_EQ(CountingRole::alive, alive_before - 1);
  EXPECT_EQ(n2->source_links.size(), 1u);
  EXPECT_EQ(n2->source_link_map.value(n1), backward);
  EXPECT_EQ(Probe::root_objects(graph), ObjectSet{&a});
  EXPECT_EQ(Probe::leaf_objects(graph), ObjectSet{&b});

  EXPECT_TRUE(Probe::remove_source_link(n2, backward));

  EXPECT_EQ(backward, nullptr);
  EXPECT_TRUE(n2->source_links.empty());
  EXPECT_TRUE(n2->source_link_map.empty());
  EXPECT_EQ(CountingRole::alive, alive_before - 2);
  EXPECT_EQ(recorder.units(), reports(0, unit));
}

TEST_F(Graph, RemovesNoLinkThatANodeDoesNotHold)
{
  record(&a, &b, Dep::MODIFICATION);
  record(&b, &c, Dep::MODIFICATION);
  OzObjDepNode* const n2 = Probe::node(graph, &b);
  OzObjDepLink* none = nullptr;
  OzObjDepLink* of_another_node = Probe::forward(graph, &a, &b);
  OzObjDepLink* const same = of_another_node;
  OzObjDepLink* own_target_link = Probe::forward(graph, &b, &c);
  OzObjDepLink* own_source_link = Probe::backward(graph, &a, &b);
  ReportRecorder const recorder;

  EXPECT_FALSE(Probe::remove_source_link(n2, none));
  EXPECT_FALSE(Probe::remove_target_link(n2, none));
  EXPECT_FALSE(Probe::remove_source_link(n2, of_another_node));
  EXPECT_FALSE(Probe::remove_target_link(n2, of_another_node));
  EXPECT_FALSE(Probe::remove_source_link(n2, own_target_link));
  EXPECT_FALSE(Probe::remove_target_link(n2, own_source_link));

  EXPECT_EQ(of_another_node, same);
  EXPECT_EQ(Probe::link_count(graph), 2u);
  EXPECT_EQ(recorder.units(), reports(0, unit));
}

TEST_F(Graph, RemovesNoNullFromTheLinks)
{
  record(&a, &b, Dep::MODIFICATION);
  OzObjDepNode* const n1 = Probe::node(graph, &a);
  OzObjDepNode* const n2 = Probe::node(graph, &b);
  n1->target_links.insert(nullptr);
  n2->source_links.insert(nullptr);
  OzObjDepLink* none = nullptr;

  EXPECT_FALSE(Probe::remove_target_link(n1, none));
  EXPECT_FALSE(Probe::remove_source_link(n2, none));

  EXPECT_EQ(n1->target_links.size(), 2u);
  EXPECT_EQ(n2->source_links.size(), 2u);
}

TEST_F(Graph, DoesNotReadALinkThatWasDeletedBefore)
{
  record(&a, &b, Dep::MODIFICATION);
  OzObjDepNode* const n1 = Probe::node(graph, &a);
  OzObjDepNode* const n2 = Probe::node(graph, &b);
  OzObjDepLink* forward = Probe::forward(graph, &a, &b);
  OzObjDepLink* backward = Probe::backward(graph, &a, &b);
  OzObjDepLink* stale_forward = forward;
  OzObjDepLink* stale_backward = backward;
  Probe::remove_target_link(n1, forward);
  Probe::remove_source_link(n2, backward);

  EXPECT_FALSE(Probe::remove_target_link(n1, stale_forward));
  EXPECT_FALSE(Probe::remove_source_link(n2, stale_backward));
  EXPECT_NE(stale_forward, nullptr);
  EXPECT_NE(stale_backward, nullptr);
}

TEST_F(Graph, ReportsALinkThatIsMissingInTheMapAndRemovesItAllTheSame)
{
  record(&a, &b, Dep::MODIFICATION);
  OzObjDepNode* const n1 = Probe::node(graph, &a);
  OzObjDepNode* const n2 = Probe::node(graph, &b);
  OzObjDepLink* forward = Probe::forward(graph, &a, &b);
  OzObjDepLink* backward = Probe::backward(graph, &a, &b);
  n1->target_link_map.erase(n2);
  n2->source_link_map.erase(n1);
  ReportRecorder const recorder;

  EXPECT_TRUE(Probe::remove_target_link(n1, forward));
  EXPECT_TRUE(Probe::remove_source_link(n2, backward));

  EXPECT_EQ(recorder.units(), reports(2, unit));
  EXPECT_EQ(forward, nullptr);
  EXPECT_EQ(backward, nullptr);
  EXPECT_TRUE(n1->target_links.empty());
  EXPECT_TRUE(n2->source_links.empty());
}

TEST_F(Graph, RemovesALinkWithoutAHandlerToo)
{
  record(&a, &b, Dep::MODIFICATION);
  OzObjDepNode* const n1 = Probe::node(graph, &a);
  OzObjDepNode* const n2 = Probe::node(graph, &b);
  OzObjDepLink* forward = Probe::forward(graph, &a, &b);
  OzObjDepLink* backward = Probe::backward(graph, &a, &b);

  EXPECT_TRUE(Probe::remove_target_link(n1, forward));
  EXPECT_TRUE(Probe::remove_source_link(n2, backward));

  EXPECT_TRUE(n1->target_link_map.empty());
  EXPECT_TRUE(n2->source_link_map.empty());
}

// Where the records lie.

TEST(OzObjDepShelf, HandsOutRecordsThatDontOverlapAndTakesThemBack)
{
  OzObjDepShelf shelf(sizeof(OzObjDepLink));
  std::set<OzObjDepLink*> links;
  for (int round = 0; round < 3; ++round)
  {
    while (links.size() < 1000)
    {
      OzObjDepLink* const link = new (shelf) OzObjDepLink;
      link->target_qualifier = static_cast<int>(links.size());
      auto const [at, is_new] = links.insert(link);
      ASSERT_TRUE(is_new);
      if (at != links.begin())
      {
        ASSERT_GE(reinterpret_cast<char*>(link) - reinterpret_cast<char*>(*std::prev(at)), 40);
      }
    }
    while (links.size() > 300)
    {
      delete *links.begin();
      links.erase(links.begin());
    }
  }
  for (OzObjDepLink* link : links)
    delete link;
}

#ifndef OZ_OBJ_DEP_PLAIN_RECORDS
TEST(OzObjDepShelf, GivesTheRecordThatCameBackLast)
{
  OzObjDepShelf shelf(sizeof(OzObjDepLink));
  void* const first = shelf.take();
  void* const second = shelf.take();

  OzObjDepShelf::give_back(first);
  OzObjDepShelf::give_back(second);
  OzObjDepShelf::give_back(nullptr);

  EXPECT_EQ(shelf.take(), second);
  EXPECT_EQ(shelf.take(), first);
  EXPECT_NE(shelf.take(), first);
}
#endif

TEST(OzObjDepShelf, LetsRecordsStandAlone)
{
  OzObjDepLink* const link = new OzObjDepLink;
  OzObjDepNode* const node = new OzObjDepNode(nullptr);

  link->node = node;
  node->add_target_link(link); // which the node deletes

  EXPECT_EQ(node->target_link_map.value(node), link);
  delete node;
}

// Against a slow and obvious model.

/// What was recorded, as a list.
class Model
{
public:
  struct Record
  {
    int type;
    int qualifier; // -1 for none
    int separator;

    bool operator==(Record const& other) const
    {
      return type == other.type && qualifier == other.qualifier && separator == other.separator;
    }
  };
  typedef std::pair<OzDynObj const*, OzDynObj const*> Pair; // source, target

  bool record(Objects const& sources, Objects const& targets, Dep::Type type, int qualifier)
  {
    for (OzDynObj const* source : sources)
      for (OzDynObj const* target : targets)
        if (records.count({source, target}) != 0)
          return false;
    if (ObjectSet(sources.begin(), sources.end()).size() != sources.size() ||
        ObjectSet(targets.begin(), targets.end()).size() != targets.size())
      return false;

    if (inherits && qualifier == -1 && type == Dep::ABSORPTION)
      qualifier = common_qualifier(sources);
    for (OzDynObj const* source : sources)
      for (OzDynObj const* target : targets)
      {
        Record const record = {type, qualifier, separator};
        records.emplace(Pair(source, target), record);
      }
    return true;
  }

  ObjectSet ends(bool roots) const
  {
    ObjectSet result;
    for (auto const& [pair, record] : records)
    {
      OzDynObj const* const end = roots ? pair.first : pair.second;
      bool inner = false;
      for (auto const& other : records)
        inner = inner || (roots ? other.first.second : other.first.first) == end;
      if (!inner || end == nullptr)
        result.insert(end);
    }
    return result;
  }

  /// The ends of all paths from `object`; sets `nothing` if one is the null object.
  void collect(OzDynObj const* object, bool sources, ObjectSet const& refused, Answer& answer,
               bool& nothing) const
  {
    if (object == nullptr)
    {
      nothing = true;
      return;
    }
    bool is_end = true;
    for (auto const& [pair, record] : records)
    {
      if ((sources ? pair.second : pair.first) != object)
        continue;
      is_end = false;
      if (refused.count(pair.second) != 0)
        answer.filtered_out = true;
      else
        collect(sources ? pair.first : pair.second, sources, refused, answer, nothing);
    }
    if (is_end)
      answer.objects.push_back(object);
  }

  Answer query(OzDynObj const* object, bool sources, ObjectSet const& refused) const
  {
    Answer answer = {false, {}, false};
    bool nothing = false;
    for (auto const& [pair, record] : records)
      if (pair.first == object || pair.second == object)
      {
        collect(object, sources, refused, answer, nothing);
        break;
      }
    std::sort(answer.objects.begin(), answer.objects.end());
    answer.found = !answer.objects.empty() || (sources && nothing);
    return answer;
  }

  std::map<Pair, Record> records;
  int separator = 0;
  bool inherits = false;

private:
  int common_qualifier(Objects const& objects) const
  {
    std::set<int> qualifiers;
    for (OzDynObj const* object : objects)
    {
      bool has_source = false;
      for (auto const& [pair, record] : records)
        if (pair.second == object)
        {
          has_source = true;
          qualifiers.insert(record.qualifier);
        }
      if (!has_source)
        return -1;
    }
    return qualifiers.size() == 1 ? *qualifiers.begin() : -1;
  }
};

/// The questions that a recursive walk over the links of `node` would ask, in its order.
void ask_recursively(OzObjDepNode const* node, bool sources, RefusingFilter& filter)
{
  if (node->object == nullptr)
    return;
  for (OzObjDepLink const* link : sources ? node->source_links : node->target_links)
    if (filter.accept(sources ? link->node->object : node->object,
                      sources ? node->object : link->node->object, link->dependency_type, link->separator,
                      link->qualifier(), link->role))
      ask_recursively(link->node, sources, filter);
}

class RandomWalk
{
public:
  explicit RandomWalk(unsigned seed)
    : random(seed)
    , things(9)
  {
  }

  int number(int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); }

  /// One to three distinct-or-not things of a range; a later range than that of the sources keeps the
  /// history free of cycles.
  Objects some_of(std::size_t from, std::size_t to, int count)
  {
    Objects some;
    for (int i = 0; i < count; ++i)
      some.push_back(&things[from + static_cast<std::size_t>(number(static_cast<int>(to - from)))]);
    return some;
  }

  std::mt19937 random;
  std::vector<Thing> const things;
};

void expect_same(OzObjDependency& graph, Model const& model)
{
  ASSERT_EQ(Probe::link_count(graph), model.records.size());
  ObjectSet known;
  for (auto const& [pair, record] : model.records)
  {
    known.insert(pair.first);
    known.insert(pair.second);
    OzObjDepLink* const forward = Probe::forward(graph, pair.first, pair.second);
    OzObjDepLink* const backward = Probe::backward(graph, pair.first, pair.second);
    ASSERT_NE(forward, nullptr);
    ASSERT_NE(backward, nullptr);
    ASSERT_TRUE(Probe::node(graph, pair.first)->target_links.contains(forward));
    ASSERT_TRUE(Probe::node(graph, pair.second)->source_links.contains(backward));
    for (OzObjDepLink const* link : {forward, backward})
    {
      Model::Record const found = {link->dependency_type,
                                   link->has_target_qualifier ? link->target_qualifier : -1, link->separator};
      ASSERT_EQ(found, record);
    }
  }
  ASSERT_EQ(Probe::nodes(graph).size(), known.size());
  ASSERT_EQ(Probe::root_objects(graph), model.ends(true));
  ASSERT_EQ(Probe::leaf_objects(graph), model.ends(false));
}

void expect_same_answers(OzObjDependency const& graph, Model const& model, OzDynObj const* object,
                         ObjectSet const& refused)
{
  for (bool const sources : {true, false})
  {
    RefusingFilter filter(refused), recursive(refused);
    Answer const answer = sources ? sources_of(graph, object, &filter) : targets_of(graph, object, &filter);
    ASSERT_EQ(answer, model.query(object, sources, refused));
    if (OzObjDepNode const* const node = Probe::node(graph, object))
      ask_recursively(node, sources, recursive);
    ASSERT_EQ(filter.questions, recursive.questions);
    ASSERT_EQ(sources ? sources_of(graph, object) : targets_of(graph, object),
              model.query(object, sources, {}));
  }
}

TEST(RandomGraph, AgreesWithAListOfRecords)
{
  for (unsigned seed = 1; seed <= 60; ++seed)
  {
    RandomWalk walk(seed);
    OzObjDependency graph;
    Model model;
    for (int step = 0; step < 40; ++step)
    {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", step " + std::to_string(step));
      if (walk.number(4) == 0)
      {
        model.separator = graph.new_separator();
        model.inherits = walk.number(2) == 0;
        graph.set_absorption_inherits_target_qualifier(model.inherits);
      }

      std::size_t const middle = static_cast<std::size_t>(1 + walk.number(8));
      Dep::Type const type = static_cast<Dep::Type>(2 + walk.number(7));
      bool const splits = type == Dep::SPLIT || type == Dep::CONTAINMENT;
      bool const gathers = type == Dep::CREATION || type == Dep::ABSORPTION || type == Dep::DELETION;
      Objects const sources = walk.some_of(
          0, middle, gathers ? walk.number(type == Dep::CREATION ? 3 : 2) + (type != Dep::CREATION) : 1);
      Objects const targets = walk.some_of(middle, 9,
                                           splits                  ? 2 + walk.number(2)
                                           : type == Dep::DELETION ? 0
                                                                   : 1);
      int const chosen = walk.number(3) - 1;
      int const* const qualifier = chosen == -1 ? nullptr : &chosen;

      bool const expected = model.record(sources.empty() ? Objects{nullptr} : sources,
                                         targets.empty() ? Objects{nullptr} : targets, type, chosen);
      ReportRecorder const recorder;
      bool recorded = false;
      if (sources.size() <= 1 && targets.size() <= 1 && walk.number(2) == 0)
      {
        recorded = graph.record_dependency(sources.empty() ? nullptr : sources[0],
                                           targets.empty() ? nullptr : targets[0], type, qualifier, nullptr);
      }
      else
      {
        ThingList from(sources), to(targets);
        recorded = graph.record_dependency(&from, &to, type, qualifier, nullptr);
      }

      ASSERT_EQ(recorded, expected);
      ASSERT_EQ(recorder.units(), reports(expected ? 0 : 1, unit));
      ASSERT_NO_FATAL_FAILURE(expect_same(graph, model));
      Objects const refused = walk.some_of(0, 9, walk.number(3));
      for (Thing const& thing : walk.things)
        ASSERT_NO_FATAL_FAILURE(
            expect_same_answers(graph, model, &thing, ObjectSet(refused.begin(), refused.end())));
    }
  }
}
} // namespace
