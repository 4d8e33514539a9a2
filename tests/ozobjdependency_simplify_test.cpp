#include "ozobjdependency.h"

#include "dependency_types.h"
#include "growing_addresses.h"
#include "report_recorder.h"
#include "simplify_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>

#include <pthread.h>

namespace
{
typedef std::vector<std::string> Texts;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int NO_QUALIFIER = -1000;
char const* const UNIT = "ozobjdependency_simplify.cpp";

/// A history among objects with the identities 1, 2, 3 and so on; 0 stands for the null object. Nodes lie
/// in memory in the order in which they are first named, link records in the order of the calls.
class OzObjDependencySimplify : public testing::Test
{
protected:
  OzObjDependencySimplify()
  {
    growing_addresses::start_again();
    for (int identity = 0; identity < 32; ++identity)
      things.emplace_back(identity);
  }
  ~OzObjDependencySimplify() override { graph.set_simplify_trace(nullptr); }

  OzDynObj const* object(int identity)
  {
    return identity == 0 ? nullptr : &things[static_cast<std::size_t>(identity)];
  }
  OzObjDepLink* forward(int source, int target)
  {
    return Probe::forward(graph, object(source), object(target));
  }
  OzObjDepLink* backward(int source, int target)
  {
    return Probe::backward(graph, object(source), object(target));
  }

  /// Any type and any number of targets, past the checks of recording.
  void link(int source, int target, Type type, int qualifier = NO_QUALIFIER, int separator = 0)
  {
    // A TRANSFER would not be stored.
    Probe::add_dependency_pair(graph, object(source), object(target), type != TRANSFER ? type : CREATION);
    for (OzObjDepLink* record : {forward(source, target), backward(source, target)})
    {
      record->dependency_type = type;
      record->has_target_qualifier = qualifier != NO_QUALIFIER;
      record->target_qualifier = qualifier != NO_QUALIFIER ? qualifier : -1;
      record->separator = separator;
    }
  }
  void drop_forward(int source, int target)
  {
    OzObjDepLink* record = forward(source, target);
    ASSERT_TRUE(Probe::remove_target_link(Probe::node(graph, object(source)), record));
  }
  void drop_backward(int source, int target)
  {
    OzObjDepLink* record = backward(source, target);
    ASSERT_TRUE(Probe::remove_source_link(Probe::node(graph, object(target)), record));
  }

  /// One step, without the validation around it.
  bool step() { return Probe::simplify_step(graph); }
  Texts links() { return links_of(graph); }
  std::string trace_of_a_step()
  {
    graph.set_simplify_trace(&journal);
    step();
    graph.set_simplify_trace(nullptr);
    return journal.take();
  }

  std::deque<Thing> things;
  OzObjDependency graph;
  TextJournal journal;
};

/// Tells what composition of two links gives, through a chain of three objects.
struct Composition
{
  explicit Composition(Type first, int first_qualifier, Type second, int second_qualifier, Type expected)
  {
    Thing a(1);
    Thing b(2);
    Thing c(3);
    Thing sibling(4);
    OzObjDependency graph;
    Probe::add_dependency_pair(graph, &a, &b, CREATION);
    Probe::add_dependency_pair(graph, &b, &c, CREATION);
    set(graph, &a, &b, first_qualifier, 3, first);
    set(graph, &b, &c, second_qualifier, 4, second);
    if (expected == SPLIT) // a split with a single product would be none
      Probe::add_dependency_pair(graph, &a, &sibling, SPLIT);

    ReportRecorder const recorder;
    Probe::simplify_step(graph);

    units = recorder.units();
    text = text_of_link(Probe::node(graph, &a), Probe::forward(graph, &a, &c));
    is_b_gone = Probe::node(graph, &b) == nullptr;
  }

  static void set(OzObjDependency& graph, Thing* source, Thing* target, int qualifier, int separator,
                  Type type)
  {
    for (OzObjDepLink* record :
         {Probe::forward(graph, source, target), Probe::backward(graph, source, target)})
    {
      record->dependency_type = type;
      record->has_target_qualifier = qualifier != NO_QUALIFIER;
      record->target_qualifier = qualifier != NO_QUALIFIER ? qualifier : -1;
      record->separator = separator;
    }
  }

  static std::string expected_text(Type type, int qualifier)
  {
    return "1>3 " + name_of_type(type) +
           (qualifier != NO_QUALIFIER ? " q" + std::to_string(qualifier) : std::string(" q-")) + " s4";
  }

  std::vector<std::string> units;
  std::string text;
  bool is_b_gone = false;
};

struct QualifierPair
{
  int first;
  int second;
};
QualifierPair const QUALIFIER_PAIRS[] = {{5, 7}, {5, NO_QUALIFIER}, {NO_QUALIFIER, 7}, {-1, 0}};
} // namespace

TEST_F(OzObjDependencySimplify, ComposesTypesAndQualifiersByTheTable)
{
  Type const seconds[] = {CREATION, DELETION, MODIFICATION, SPLIT, ABSORPTION, CONVERSION, CONTAINMENT};
  struct Cell
  {
    Type type;
    char from; // the link that the qualifier comes from
  };
  struct
  {
    Type first;
    Cell cells[7]; // one for each of `seconds`
  } const rows[] = {
      {CREATION,
       {{CREATION, 'S'},
        {DELETION, 'S'},
        {CREATION, 'F'},
        {CREATION, 'F'},
        {CREATION, 'S'},
        {CREATION, 'F'},
        {CREATION, 'F'}}},
      {MODIFICATION,
       {{CREATION, 'S'},
        {DELETION, 'S'},
        {MODIFICATION, 'S'},
        {SPLIT, 'S'},
        {ABSORPTION, 'S'},
        {MODIFICATION, 'F'},
        {CREATION, 'F'}}},
      {SPLIT,
       {{CREATION, 'S'},
        {DELETION, 'S'},
        {SPLIT, 'F'},
        {SPLIT, 'F'},
        {CREATION, 'S'},
        {SPLIT, 'F'},
        {SPLIT, 'F'}}},
      {ABSORPTION,
       {{CREATION, 'S'},
        {DELETION, 'S'},
        {ABSORPTION, 'F'},
        {CREATION, 'F'},
        {ABSORPTION, 'S'},
        {ABSORPTION, 'F'},
        {CREATION, 'F'}}},
      {CONVERSION,
       {{CREATION, 'S'},
        {DELETION, 'S'},
        {MODIFICATION, 'S'},
        {SPLIT, 'S'},
        {ABSORPTION, 'S'},
        {CONVERSION, 'S'},
        {CONTAINMENT, 'S'}}},
      {CONTAINMENT,
       {{CREATION, 'S'},
        {DELETION, 'S'},
        {CONTAINMENT, 'F'},
        {SPLIT, 'S'},
        {ABSORPTION, 'S'},
        {CONTAINMENT, 'F'},
        {CONTAINMENT, 'F'}}},
  };

  for (auto const& row : rows)
    for (int column = 0; column < 7; ++column)
      for (QualifierPair const& qualifiers : QUALIFIER_PAIRS)
      {
        Cell const& cell = row.cells[column];
        Composition const done(row.first, qualifiers.first, seconds[column], qualifiers.second, cell.type);
        int const qualifier = cell.from == 'F' ? qualifiers.first : qualifiers.second;
        std::string const what = name_of_type(row.first) + " then " + name_of_type(seconds[column]);
        EXPECT_EQ(done.text, Composition::expected_text(cell.type, qualifier)) << what;
        EXPECT_EQ(done.units, reports(0, UNIT)) << what;
        EXPECT_TRUE(done.is_b_gone) << what;
      }
}

TEST_F(OzObjDependencySimplify, ComposesAnythingBehindADeletionToThatDeletionAndReportsIt)
{
  for (int second = -1; second <= 10; ++second)
    for (QualifierPair const& qualifiers : QUALIFIER_PAIRS)
    {
      Composition const done(DELETION, qualifiers.first, static_cast<Type>(second), qualifiers.second,
                             DELETION);
      EXPECT_EQ(done.text, Composition::expected_text(DELETION, qualifiers.first)) << second;
      EXPECT_EQ(done.units, reports(1, UNIT)) << second;
    }
}

TEST_F(OzObjDependencySimplify, TakesTheSecondLinkBehindAnUnknownFirstAndReportsIt)
{
  for (int first : {-1, 0, 1, 9, 1000})
    for (int second = -1; second <= 10; ++second)
      for (QualifierPair const& qualifiers : QUALIFIER_PAIRS)
      {
        Composition const done(static_cast<Type>(first), qualifiers.first, static_cast<Type>(second),
                               qualifiers.second, static_cast<Type>(second));
        EXPECT_EQ(done.text, Composition::expected_text(static_cast<Type>(second), qualifiers.second))
            << first << " then " << second;
        EXPECT_EQ(done.units, reports(1, UNIT)) << first << " then " << second;
      }
}

TEST_F(OzObjDependencySimplify, KeepsTheFirstLinkBeforeAnUnknownSecondAndReportsItUnlessItIsAConversion)
{
  for (Type first : {CREATION, MODIFICATION, SPLIT, ABSORPTION, CONTAINMENT})
    for (int second : {-1, 0, 1, 9, 1000})
      for (QualifierPair const& qualifiers : QUALIFIER_PAIRS)
      {
        Composition const done(first, qualifiers.first, static_cast<Type>(second), qualifiers.second, first);
        EXPECT_EQ(done.text, Composition::expected_text(first, qualifiers.first)) << first << " " << second;
        EXPECT_EQ(done.units, reports(1, UNIT)) << first << " " << second;
      }
  for (int second : {-1, 0, 1, 9, 1000})
    for (QualifierPair const& qualifiers : QUALIFIER_PAIRS)
    {
      Type const type = static_cast<Type>(second);
      Composition const done(CONVERSION, qualifiers.first, type, qualifiers.second, type);
      EXPECT_EQ(done.text, Composition::expected_text(type, qualifiers.second)) << second;
      EXPECT_EQ(done.units, reports(0, UNIT)) << second;
    }
}

TEST_F(OzObjDependencySimplify, LeavesTwoLayersAloneAndTheNullObjectWithThem)
{
  link(0, 1, CREATION);
  link(2, 1, CREATION);
  link(2, 3, SPLIT, 5, 6);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 2 roots.\n"
                               "rn1 = 0\n"
                               "   n2 = 1\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "   no targets => return\n"
                               "rn1 = 2\n"
                               "   n2 = 1\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "   no targets => return\n"
                               "   n2 = 3\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "   no targets => return\n"
                               "remove n2s to remove later\n");

  EXPECT_FALSE(step());
  EXPECT_THAT(links(), ElementsAre("0>1 CREATION q- s0", "2>1 CREATION q- s0", "2>3 SPLIT q5 s6"));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, NeedsNoGraphToWorkOn)
{
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 0 roots.\nremove n2s to remove later\n");
  graph.simplify_it();

  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, PutsOneLinkInThePlaceOfAPath)
{
  link(1, 2, MODIFICATION, 5, 1);
  link(2, 3, MODIFICATION, 6, 2);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 1 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 3\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>3 MODIFICATION q6 s2"));
  EXPECT_EQ(identities_of(graph), (std::set<int>{1, 3}));
  EXPECT_EQ(Probe::root_objects(graph), std::set<OzDynObj const*>{object(1)});
  EXPECT_EQ(Probe::leaf_objects(graph), std::set<OzDynObj const*>{object(3)});
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, TakesStepsUntilTwoLayersAreLeft)
{
  link(1, 2, MODIFICATION);
  link(2, 3, CONVERSION, NO_QUALIFIER, 2);
  link(3, 4, MODIFICATION, NO_QUALIFIER, 3);
  link(4, 5, ABSORPTION, NO_QUALIFIER, 4);
  graph.set_simplify_trace(&journal);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>5 ABSORPTION q- s4"));
  std::string const trace = journal.take();
  EXPECT_EQ(trace, "\"simplify_step\" with 1 roots.\n"
                   "rn1 = 1\n"
                   "   n2 = 2\n"
                   "   \"prepare_removal_of_n2\"\n"
                   "      n1 = 1\n"
                   "         n3 = 3\n"
                   "remove n2s to remove later\n"
                   "\"simplify_step\" with 1 roots.\n"
                   "rn1 = 1\n"
                   "   n2 = 3\n"
                   "   \"prepare_removal_of_n2\"\n"
                   "      n1 = 1\n"
                   "         n3 = 4\n"
                   "remove n2s to remove later\n"
                   "\"simplify_step\" with 1 roots.\n"
                   "rn1 = 1\n"
                   "   n2 = 4\n"
                   "   \"prepare_removal_of_n2\"\n"
                   "      n1 = 1\n"
                   "         n3 = 5\n"
                   "remove n2s to remove later\n"
                   "\"simplify_step\" with 1 roots.\n"
                   "rn1 = 1\n"
                   "   n2 = 5\n"
                   "   \"prepare_removal_of_n2\"\n"
                   "   no targets => return\n"
                   "remove n2s to remove later\n");
}

TEST_F(OzObjDependencySimplify, HandsACreationFromNothingOn)
{
  link(0, 2, CREATION, 5);
  link(2, 3, MODIFICATION, 6, 7);
  ReportRecorder const recorder;

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("0>3 CREATION q5 s7"));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, HandsADeletionBack)
{
  link(1, 2, MODIFICATION);
  link(2, 0, DELETION, 6, 7);
  ReportRecorder const recorder;

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>0 DELETION q6 s7"));
  EXPECT_EQ(Probe::leaf_objects(graph), std::set<OzDynObj const*>{nullptr});
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, ForgetsWhatCameFromNothingAndWentToNothing)
{
  link(0, 2, CREATION);
  link(2, 0, DELETION);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 1 roots.\n"
                               "rn1 = 0\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 0\n"
                               "         n3 = 0\n"
                               "         n1 == n3 == NULL-object => skip n3\n"
                               "remove n2s to remove later\n");

  EXPECT_EQ(identities_of(graph), std::set<int>{});
  EXPECT_EQ(Probe::root_objects(graph), std::set<OzDynObj const*>{});
  EXPECT_EQ(Probe::leaf_objects(graph), std::set<OzDynObj const*>{});
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, KeepsTheNullObjectWhereAnotherObjectComesFromNothing)
{
  link(0, 2, CREATION);
  link(2, 0, DELETION);
  link(0, 3, CREATION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("0>3 CREATION q- s0"));
  EXPECT_EQ(Probe::root_objects(graph), std::set<OzDynObj const*>{nullptr});
  EXPECT_EQ(Probe::leaf_objects(graph), std::set<OzDynObj const*>{object(3)});
}

TEST_F(OzObjDependencySimplify, KeepsTheNullObjectWhereAnotherObjectGoesToNothing)
{
  link(0, 2, CREATION);
  link(2, 0, DELETION);
  link(3, 0, DELETION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("3>0 DELETION q- s0"));
  EXPECT_EQ(Probe::root_objects(graph), std::set<OzDynObj const*>{object(3)});
  EXPECT_EQ(Probe::leaf_objects(graph), std::set<OzDynObj const*>{nullptr});
}

TEST_F(OzObjDependencySimplify, MakesAModificationOfASplitWithASingleProduct)
{
  link(1, 2, SPLIT, 5);
  link(1, 3, SPLIT, 5);
  link(3, 0, DELETION);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 1 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "   no targets => return\n"
                               "   n2 = 3\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 0\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>2 MODIFICATION q5 s0"));
  EXPECT_EQ(identities_of(graph), (std::set<int>{1, 2}));
  EXPECT_EQ(Probe::leaf_objects(graph), std::set<OzDynObj const*>{object(2)});
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, MakesACreationOfASplitWithASingleProductWhenToldSo)
{
  link(1, 2, SPLIT, 5);
  link(1, 3, SPLIT, 5);
  link(3, 0, DELETION);
  graph.set_consider_split_modificational(false);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>2 CREATION q5 s0"));
}

TEST_F(OzObjDependencySimplify, KeepsASplitWithTwoProducts)
{
  link(1, 2, SPLIT);
  link(1, 3, SPLIT);
  link(1, 4, SPLIT);
  link(4, 0, DELETION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>2 SPLIT q- s0", "1>3 SPLIT q- s0"));
}

TEST_F(OzObjDependencySimplify, MakesModificationsOfSplitsWithASingleProductThatComeOneAfterTheOther)
{
  // Both roots' turns have to do with 11, which no root reaches, and leave it one split each.
  link(1, 4, CREATION);
  link(2, 5, CREATION);
  link(10, 11, CREATION);
  link(11, 10, CREATION);
  link(11, 4, CREATION);
  link(11, 5, CONVERSION);
  link(11, 14, SPLIT);
  for (int target = 15; target <= 22; ++target)
    link(11, target, CREATION);
  link(4, 6, CREATION);
  link(5, 7, SPLIT);
  Probe::roots(graph).erase(Probe::node(graph, object(10)));

  step();

  EXPECT_EQ(forward(11, 6)->dependency_type, CREATION);
  EXPECT_EQ(forward(11, 7)->dependency_type, MODIFICATION);
  EXPECT_EQ(forward(11, 14)->dependency_type, MODIFICATION);
}

TEST_F(OzObjDependencySimplify, KeepsAContainmentWithASingleProduct)
{
  link(1, 2, CONTAINMENT);
  link(1, 3, CONTAINMENT);
  link(3, 0, DELETION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>2 CONTAINMENT q- s0"));
  EXPECT_FALSE(graph.is_valid(&journal));
  EXPECT_EQ(journal.take().substr(0, 9), "error 22:");
}

TEST_F(OzObjDependencySimplify, AsksForTheTreatmentOfSplitsThroughTheVirtualOperation)
{
  class Creational : public OzObjDependency
  {
  public:
    bool consider_split_modificational() const override { return false; }
  };
  Creational creational;
  Probe::add_dependency_pair(creational, object(1), object(2), SPLIT);
  Probe::add_dependency_pair(creational, object(1), object(3), SPLIT);
  Probe::add_dependency_pair(creational, object(3), nullptr, DELETION);

  creational.simplify_it();

  EXPECT_THAT(links_of(creational), ElementsAre("1>2 CREATION q- s0"));
}

TEST_F(OzObjDependencySimplify, HandsAnAbsorptionOnWithItsQualifier)
{
  link(1, 3, ABSORPTION, 5);
  link(3, 4, MODIFICATION, 6, 7);
  ReportRecorder const recorder;

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>4 ABSORPTION q5 s7"));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, MakesCreationsOfTwoAbsorptionsThatComeOneAfterTheOther)
{
  link(1, 3, ABSORPTION);
  link(2, 3, ABSORPTION);
  link(3, 4, MODIFICATION);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 2 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 3\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 4\n"
                               "      n1 = 2\n"
                               "      is unchecked root => skip n1, remove n2 later\n"
                               "rn1 = 2\n"
                               "   n2 = 3\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 2\n"
                               "         n3 = 4\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>4 CREATION q- s0", "2>4 CREATION q- s0"));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, MakesACreationOfAnAbsorptionWhoseSourceHasOtherTargets)
{
  link(1, 2, ABSORPTION);
  link(2, 3, MODIFICATION);
  link(1, 4, CREATION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0", "1>4 CREATION q- s0"));
}

TEST_F(OzObjDependencySimplify, SpreadsImpurityToTheOtherAbsorptionsOfTheTargetsOfAMixedSource)
{
  link(1, 2, ABSORPTION);
  link(2, 3, MODIFICATION);
  link(1, 4, CREATION);
  link(1, 5, ABSORPTION);
  link(6, 5, ABSORPTION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0", "1>4 CREATION q- s0", "1>5 CREATION q- s0",
                                   "6>5 CREATION q- s0"));
}

TEST_F(OzObjDependencySimplify, LeavesMixedAbsorptionsAloneThatNoNewLinkTouches)
{
  link(1, 2, MODIFICATION);
  link(2, 3, MODIFICATION);
  link(4, 5, ABSORPTION);
  link(4, 6, CREATION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>3 MODIFICATION q- s0", "4>5 ABSORPTION q- s0", "4>6 CREATION q- s0"));
}

TEST_F(OzObjDependencySimplify, LooksAgainAtASourceOfManyAbsorptionsThatHasBecomeMixed)
{
  // Three roots in this order. The first and the third come to be absorbed by 6, as is the second, which has
  // many more absorptions, and in its turn gets a target of another type.
  link(1, 4, CONVERSION);
  link(2, 13, ABSORPTION);
  link(3, 5, CONVERSION);
  for (int source : {2, 4, 5, 7, 8, 9, 10, 11, 12})
    link(source, 6, ABSORPTION);
  for (int target = 14; target <= 20; ++target)
    link(2, target, ABSORPTION);
  link(13, 21, CREATION);
  ReportRecorder const recorder;

  step();

  for (int source : {1, 2, 3, 7, 8, 9, 10, 11, 12})
    EXPECT_EQ(forward(source, 6)->dependency_type, CREATION) << source;
  for (int target = 14; target <= 21; ++target)
    EXPECT_EQ(forward(2, target)->dependency_type, CREATION) << target;
  EXPECT_EQ(Probe::link_count(graph), 17u);
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, LooksAgainAtAMixedSourceThatIsAbsorbedOnceMore)
{
  // The first root's turn makes creations of all absorptions of the second, which then gets another one.
  link(1, 4, CONVERSION);
  link(2, 13, MODIFICATION);
  link(4, 6, ABSORPTION);
  link(2, 6, ABSORPTION);
  for (int target = 14; target <= 20; ++target)
    link(2, target, ABSORPTION);
  link(13, 21, ABSORPTION);
  ReportRecorder const recorder;

  step();

  EXPECT_EQ(forward(1, 6)->dependency_type, CREATION);
  for (int target : {6, 14, 15, 16, 17, 18, 19, 20, 21})
    EXPECT_EQ(forward(2, target)->dependency_type, CREATION) << target;
  EXPECT_EQ(Probe::link_count(graph), 10u);
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, LooksAgainAtASourceWhoseOtherTargetHasBecomeMixed)
{
  // The second root's turn makes a creation of its absorption by 7, which absorbs 4 as well. So when the third
  // root's turn comes near 4, what 7 still absorbs is created.
  link(1, 5, CONVERSION);
  link(2, 8, CREATION);
  link(3, 9, CONVERSION);
  link(5, 6, ABSORPTION);
  link(9, 6, ABSORPTION);
  link(8, 7, ABSORPTION);
  link(2, 7, ABSORPTION);
  for (int target : {6, 7, 14, 15, 16, 17, 18, 19, 20})
    link(4, target, ABSORPTION);
  for (int source : {10, 11, 12, 13, 21, 22, 23, 24})
    link(source, 7, ABSORPTION);
  ReportRecorder const recorder;

  step();

  for (int source : {1, 3, 4})
    EXPECT_EQ(forward(source, 6)->dependency_type, ABSORPTION) << source;
  for (int source : {2, 4, 10, 11, 12, 13, 21, 22, 23, 24})
    EXPECT_EQ(forward(source, 7)->dependency_type, CREATION) << source;
  for (int target = 14; target <= 20; ++target)
    EXPECT_EQ(forward(4, target)->dependency_type, ABSORPTION) << target;
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, LooksAgainAtASourceWhoseOtherTargetOfFewSourcesHasBecomeMixed)
{
  link(1, 5, CONVERSION);
  link(2, 8, CREATION);
  link(3, 9, CONVERSION);
  link(5, 6, ABSORPTION);
  link(9, 6, ABSORPTION);
  link(8, 7, ABSORPTION);
  link(2, 7, ABSORPTION);
  for (int target : {6, 7, 14, 15, 16, 17, 18, 19, 20})
    link(4, target, ABSORPTION);

  step();

  EXPECT_EQ(forward(3, 6)->dependency_type, ABSORPTION);
  EXPECT_EQ(forward(4, 6)->dependency_type, ABSORPTION);
  EXPECT_EQ(forward(4, 7)->dependency_type, CREATION);
}

TEST_F(OzObjDependencySimplify, LooksAgainAtATargetWithASourceThatALinkJustMadeHasMixed)
{
  // No root reaches the cycle of 10 and 11. The first root's turn finds all that 6 absorbs pure, 11 among it. The
  // second one's makes a link from 11 to 8 first, and so a creation of the absorption of 11 by 7.
  link(1, 4, CONVERSION);
  link(2, 5, ABSORPTION);
  link(2, 8, ABSORPTION);
  link(3, 9, CONVERSION);
  link(4, 6, ABSORPTION);
  link(9, 6, ABSORPTION);
  link(10, 11, MODIFICATION);
  for (int target : {10, 5, 6, 7, 14, 15, 16, 17, 18, 19})
    link(11, target, ABSORPTION);
  Probe::roots(graph).erase(Probe::node(graph, object(10)));
  link(5, 8, CREATION);
  link(8, 7, ABSORPTION);
  for (int source = 20; source <= 26; ++source)
    link(source, 6, ABSORPTION);
  ReportRecorder const recorder;

  step();

  EXPECT_EQ(forward(2, 7)->dependency_type, CREATION);
  for (int target : {10, 6, 7, 14, 15, 16, 17, 18, 19})
    EXPECT_EQ(forward(11, target)->dependency_type, CREATION) << target;
  for (int source : {1, 3, 20, 21, 22, 23, 24, 25, 26})
    EXPECT_EQ(forward(source, 6)->dependency_type, CREATION) << source;
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, KeepsAbsorptionsThatArePureAtBothEnds)
{
  link(1, 2, ABSORPTION);
  link(2, 3, MODIFICATION);
  link(2, 4, MODIFICATION);
  ReportRecorder const recorder;

  step();

  EXPECT_THAT(links(), ElementsAre("1>3 ABSORPTION q- s0", "1>4 ABSORPTION q- s0"));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, MakesACreationOfAnAbsorptionFromNothing)
{
  link(0, 2, ABSORPTION, 5);
  link(2, 3, MODIFICATION);
  ReportRecorder const recorder;

  step();

  EXPECT_THAT(links(), ElementsAre("0>3 CREATION q5 s0"));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, MakesNoLinkFromNothingOfAnotherType)
{
  link(0, 2, MODIFICATION);
  link(2, 3, MODIFICATION);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 1 roots.\n"
                               "rn1 = 0\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 0\n"
                               "         n3 = 3\n"
                               "         _ASSERTION_: NULL-object n1 has link with wrong dependency type!!!\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), IsEmpty());
  EXPECT_EQ(identities_of(graph), std::set<int>{3});
  EXPECT_EQ(recorder.units(), reports(1, UNIT));
}

TEST_F(OzObjDependencySimplify, MakesNoLinkToNothingButDeletions)
{
  link(1, 2, MODIFICATION);
  link(2, 0, CREATION);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 1 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 0\n"
                               "         n3 == NULL-object would delete something => skip n3\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), IsEmpty());
  EXPECT_EQ(identities_of(graph), std::set<int>{1});
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, PrunesCreationsFromNothingOfWhatHasARealSource)
{
  link(0, 2, CREATION);
  link(2, 4, MODIFICATION);
  link(1, 4, CREATION);
  link(0, 5, CREATION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("0>5 CREATION q- s0", "1>4 CREATION q- s0"));
  EXPECT_EQ(Probe::root_objects(graph), (std::set<OzDynObj const*>{nullptr, object(1)}));
}

TEST_F(OzObjDependencySimplify, RemovesRootAndLeafMarksOfTheNullObjectOneByOne)
{
  link(0, 4, CREATION);
  link(1, 4, CREATION);
  link(2, 0, DELETION);
  link(5, 6, MODIFICATION);
  link(6, 7, MODIFICATION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>4 CREATION q- s0", "2>0 DELETION q- s0", "5>7 MODIFICATION q- s0"));
  EXPECT_EQ(Probe::root_objects(graph), (std::set<OzDynObj const*>{object(1), object(2), object(5)}));
  EXPECT_EQ(Probe::leaf_objects(graph), (std::set<OzDynObj const*>{nullptr, object(4), object(7)}));
}

TEST_F(OzObjDependencySimplify, DropsTheRolesOfCollapsedPathsAndKeepsAllOthers)
{
  int const alive_before = CountingRole::alive;
  {
    CountingRole const role;
    OzObjDependency with_roles;
    with_roles.record_dependency(object(1), object(2), MODIFICATION, nullptr, &role);
    with_roles.record_dependency(object(2), object(3), MODIFICATION, nullptr, &role);
    with_roles.record_dependency(object(4), object(5), MODIFICATION, nullptr, &role);
    EXPECT_EQ(CountingRole::alive - alive_before, 7);

    with_roles.simplify_it();

    EXPECT_THAT(links_of(with_roles), ElementsAre("1>3 MODIFICATION q- s0", "4>5 MODIFICATION q- s0 role"));
    EXPECT_EQ(CountingRole::alive - alive_before, 3) << "the caller's, and two clones";
  }
  EXPECT_EQ(CountingRole::alive, alive_before);
}

TEST_F(OzObjDependencySimplify, MakesNoLinkBesideOneThatIsThereAlready)
{
  link(1, 2, CREATION);
  link(1, 3, CREATION);
  link(2, 3, MODIFICATION, NO_QUALIFIER, 9);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 1 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 3\n"
                               "         link between n1 and n3 already existing => skip n3\n"
                               "   n2 = 3\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "   no targets => return\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0"));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, ReportsWhatDoesNotFitALinkThatIsThereAlready)
{
  struct
  {
    char const* what;
    Type existing;
    int existing_qualifier;
    Type first;
    Type second;
    int second_qualifier;
    Type result;
    std::size_t n_reports;
  } const cases[] = {
      {"creation beside creation", CREATION, 5, MODIFICATION, CREATION, 5, CREATION, 0},
      {"absorption beside absorption", ABSORPTION, 5, MODIFICATION, ABSORPTION, 5, ABSORPTION, 0},
      {"creation beside absorption", ABSORPTION, 5, MODIFICATION, CREATION, 5, CREATION, 0},
      {"absorption beside creation", CREATION, 5, MODIFICATION, ABSORPTION, 5, CREATION, 0},
      {"modification beside creation", CREATION, 5, MODIFICATION, MODIFICATION, 5, CREATION, 1},
      {"modification beside absorption", ABSORPTION, 5, MODIFICATION, MODIFICATION, 5, CREATION, 1},
      {"deletion beside absorption", ABSORPTION, 5, MODIFICATION, DELETION, 5, CREATION, 1},
      {"another qualifier", CREATION, 5, MODIFICATION, CREATION, 6, CREATION, 1},
      {"no qualifier beside one", CREATION, 5, MODIFICATION, CREATION, NO_QUALIFIER, CREATION, 1},
      {"a qualifier beside none", CREATION, NO_QUALIFIER, MODIFICATION, CREATION, 5, CREATION, 1},
      {"no qualifier beside none", CREATION, NO_QUALIFIER, MODIFICATION, CREATION, NO_QUALIFIER, CREATION, 0},
      {"type and qualifier", CREATION, 5, MODIFICATION, MODIFICATION, 6, CREATION, 2},
  };
  for (auto const& c : cases)
  {
    OzObjDependency one;
    Probe::add_dependency_pair(one, object(1), object(2), c.first);
    Probe::add_dependency_pair(one, object(1), object(3), c.existing);
    Probe::add_dependency_pair(one, object(2), object(3), c.second);
    Composition::set(one, &things[1], &things[3], c.existing_qualifier, 8, c.existing);
    Composition::set(one, &things[2], &things[3], c.second_qualifier, 9, c.second);
    ReportRecorder const recorder;

    Probe::simplify_step(one);

    std::string const q = c.existing_qualifier == NO_QUALIFIER ? "q-" : "q5";
    EXPECT_THAT(links_of(one), ElementsAre("1>3 " + name_of_type(c.result) + " " + q + " s8")) << c.what;
    EXPECT_EQ(recorder.units(), reports(c.n_reports, UNIT)) << c.what;
  }
}

TEST_F(OzObjDependencySimplify, RetypesALinkWithoutPartnerAloneAndReportsIt)
{
  link(1, 2, MODIFICATION);
  link(1, 3, ABSORPTION);
  link(2, 3, CREATION);
  drop_backward(1, 3);
  ReportRecorder const recorder;

  step();

  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0 without partner"));
  EXPECT_EQ(recorder.units(), reports(1, UNIT));
}

TEST_F(OzObjDependencySimplify, MakesOneLinkForTwoPathsAndRemembersTheOther)
{
  link(1, 2, CREATION);
  link(1, 3, CREATION);
  link(2, 4, ABSORPTION, 5, 8);
  link(3, 4, ABSORPTION, 5, 9);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 1 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 4\n"
                               "            remember triple to skip with n2a = 3\n"
                               "   n2 = 3\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 4\n"
                               "         already handled n1 and n3 earlier => skip n3\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>4 CREATION q5 s8"));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, ReportsPathsBetweenTheSameObjectsThatDisagree)
{
  struct
  {
    char const* what;
    Type first;
    Type other;
    Type result;
    std::size_t n_reports;
  } const cases[] = {
      {"creations", CREATION, CREATION, CREATION, 0},
      {"creation before absorption", CREATION, ABSORPTION, CREATION, 1},
      {"creation before deletion", CREATION, DELETION, CREATION, 1},
      {"creation before modification", CREATION, MODIFICATION, CREATION, 1},
      {"absorptions", ABSORPTION, ABSORPTION, ABSORPTION, 0},
      {"absorption before creation", ABSORPTION, CREATION, CREATION, 0},
      {"absorption before deletion", ABSORPTION, DELETION, ABSORPTION, 1},
      {"absorption before modification", ABSORPTION, MODIFICATION, ABSORPTION, 1},
      {"deletions", DELETION, DELETION, DELETION, 0},
      {"deletion before creation", DELETION, CREATION, CREATION, 1},
      {"deletion before absorption", DELETION, ABSORPTION, DELETION, 1},
      {"modifications", MODIFICATION, MODIFICATION, MODIFICATION, 2},
      {"modification before creation", MODIFICATION, CREATION, CREATION, 1},
      {"conversion before absorption", CONVERSION, ABSORPTION, MODIFICATION, 2},
  };
  for (auto const& c : cases)
  {
    OzObjDependency one;
    Probe::add_dependency_pair(one, object(1), object(2), MODIFICATION);
    Probe::add_dependency_pair(one, object(1), object(3), MODIFICATION);
    Probe::add_dependency_pair(one, object(2), object(4), c.first);
    Probe::add_dependency_pair(one, object(3), object(4), c.other);
    ReportRecorder const recorder;

    Probe::simplify_step(one);

    EXPECT_THAT(links_of(one), ElementsAre("1>4 " + name_of_type(c.result) + " q- s0")) << c.what;
    EXPECT_EQ(recorder.units(), reports(c.n_reports, UNIT)) << c.what;
  }
}

TEST_F(OzObjDependencySimplify, ReportsPathsBetweenTheSameObjectsWithOtherQualifiers)
{
  struct
  {
    int first;
    int other;
    std::size_t n_reports;
  } const cases[] = {{5, 5, 0},
                     {5, 6, 1},
                     {5, NO_QUALIFIER, 1},
                     {NO_QUALIFIER, 5, 1},
                     {NO_QUALIFIER, NO_QUALIFIER, 0},
                     {-1, NO_QUALIFIER, 1}};
  for (auto const& c : cases)
  {
    OzObjDependency one;
    Probe::add_dependency_pair(one, object(1), object(2), MODIFICATION);
    Probe::add_dependency_pair(one, object(1), object(3), MODIFICATION);
    Probe::add_dependency_pair(one, object(2), object(4), CREATION);
    Probe::add_dependency_pair(one, object(3), object(4), CREATION);
    Composition::set(one, &things[2], &things[4], c.first, 1, CREATION);
    Composition::set(one, &things[3], &things[4], c.other, 2, CREATION);
    ReportRecorder const recorder;

    Probe::simplify_step(one);

    EXPECT_EQ(recorder.units(), reports(c.n_reports, UNIT)) << c.first << " " << c.other;
  }
}

TEST_F(OzObjDependencySimplify, ReportsAnUnknownTypeOnTheOtherPath)
{
  link(1, 2, MODIFICATION);
  link(1, 3, TRANSFER);
  link(2, 4, CREATION);
  link(3, 4, CREATION);
  ReportRecorder const recorder;

  step();

  EXPECT_EQ(recorder.units(), reports(2, UNIT)) << "composed for the turn of 2, and for its own";
}

TEST_F(OzObjDependencySimplify, LeavesAnObjectForLaterWhoseSourceIsATargetOfTheRoot)
{
  link(1, 3, CREATION);
  link(1, 2, CREATION);
  link(2, 3, CREATION);
  link(3, 4, CREATION, NO_QUALIFIER, 9);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(),
            "\"simplify_step\" with 1 roots.\n"
            "rn1 = 1\n"
            "   n2 = 3\n"
            "   \"prepare_removal_of_n2\"\n"
            "      n1 = 1\n"
            "         n3 = 4\n"
            "      n1 = 2\n"
            "      (n1 and n2) may become (n2 and n3) => skip n1, store n2 to remove it later\n"
            "   n2 = 2\n"
            "   \"prepare_removal_of_n2\"\n"
            "      n1 = 1\n"
            "         n3 = 3\n"
            "         link between n1 and n3 already existing => skip n3\n"
            "remove n2s to remove later\n"
            "   n2 = 3\n"
            "   \"prepare_removal_of_n2\"\n");

  EXPECT_THAT(links(), ElementsAre("1>4 CREATION q- s9"));
  EXPECT_EQ(identities_of(graph), (std::set<int>{1, 4}));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, RemovesLaterWhatStillHasSources)
{
  link(1, 3, CREATION);
  link(1, 2, CREATION);
  link(2, 3, CREATION);
  link(3, 4, CREATION);
  link(5, 2, CREATION);

  EXPECT_EQ(trace_of_a_step(),
            "\"simplify_step\" with 2 roots.\n"
            "rn1 = 1\n"
            "   n2 = 3\n"
            "   \"prepare_removal_of_n2\"\n"
            "      n1 = 1\n"
            "         n3 = 4\n"
            "      n1 = 2\n"
            "      (n1 and n2) may become (n2 and n3) => skip n1, store n2 to remove it later\n"
            "   n2 = 2\n"
            "   \"prepare_removal_of_n2\"\n"
            "      n1 = 1\n"
            "         n3 = 3\n"
            "         link between n1 and n3 already existing => skip n3\n"
            "      n1 = 5\n"
            "      is unchecked root => skip n1, remove n2 later\n"
            "rn1 = 5\n"
            "   n2 = 2\n"
            "   \"prepare_removal_of_n2\"\n"
            "      n1 = 5\n"
            "         n3 = 3\n"
            "remove n2s to remove later\n"
            "   n2 = 3\n"
            "   \"prepare_removal_of_n2\"\n"
            "      n1 = 5\n"
            "         n3 = 4\n");

  EXPECT_THAT(links(), ElementsAre("1>4 CREATION q- s0", "5>4 CREATION q- s0"));
}

TEST_F(OzObjDependencySimplify, ComposesALinkThatWasJustMade)
{
  link(1, 2, CREATION);
  link(1, 3, CREATION);
  link(2, 3, CREATION);
  link(3, 4, CREATION, NO_QUALIFIER, 9);
  link(6, 5, CREATION);
  link(5, 2, CREATION);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 2 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 3\n"
                               "         link between n1 and n3 already existing => skip n3\n"
                               "      n1 = 5\n"
                               "         n3 = 3\n"
                               "   n2 = 3\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 4\n"
                               "      n1 = 5\n"
                               "      link between n1 and n2 is a new one\n"
                               "         n3 = 4\n"
                               "rn1 = 6\n"
                               "   n2 = 5\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 6\n"
                               "         n3 = 4\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>4 CREATION q- s9", "6>4 CREATION q- s9"));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, RemembersAPathThroughALinkThatWasJustMade)
{
  link(1, 2, CREATION);
  link(1, 9, CREATION);
  link(8, 7, CREATION);
  link(7, 5, CREATION);
  link(7, 9, CREATION);
  link(5, 2, CREATION);
  link(2, 3, CREATION);
  link(9, 3, CREATION);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 2 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 3\n"
                               "            remember triple to skip with n2a = 9\n"
                               "      n1 = 5\n"
                               "         n3 = 3\n"
                               "   n2 = 9\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 3\n"
                               "         already handled n1 and n3 earlier => skip n3\n"
                               "      n1 = 7\n"
                               "         n3 = 3\n"
                               "            remember triple to skip via not yet created link with n2a = 5\n"
                               "rn1 = 8\n"
                               "   n2 = 7\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 8\n"
                               "         n3 = 5\n"
                               "         n3 = 3\n"
                               "            remember triple to skip with n2a = 5\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0", "5>3 CREATION q- s0", "8>3 CREATION q- s0",
                                   "8>5 CREATION q- s0"));
  graph.simplify_it();
  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0", "8>3 CREATION q- s0"));
  EXPECT_EQ(recorder.units(), reports(0, UNIT));
}

TEST_F(OzObjDependencySimplify, MakesOneLinkForADependencyThatIsThereTwice)
{
  link(1, 2, MODIFICATION);
  link(2, 3, CREATION);
  link(2, 3, CREATION);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(),
            "\"simplify_step\" with 1 roots.\n"
            "rn1 = 1\n"
            "   n2 = 2\n"
            "   \"prepare_removal_of_n2\"\n"
            "      n1 = 1\n"
            "         n3 = 3\n"
            "         n3 = 3\n"
            "         link between n1 and n3 already chosen to create => skip n3\n"
            "  _ASSERTION_: removing links between n2 and (n3 = 3): no link from n3 to n2!!!\n"
            "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0"));
  EXPECT_EQ(recorder.units(), (std::vector<std::string>{UNIT, "ozobjdependency.cpp"}))
      << "the look-ups know one of the two";
}

TEST_F(OzObjDependencySimplify, ReportsAnInvalidTypeBetweenIntermediatesAndEndsNormally)
{
  link(1, 2, MODIFICATION, 5);
  link(2, 3, UNSPECIFIED, 6);
  link(3, 4, MODIFICATION, 7, 9);
  ReportRecorder const recorder;

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>4 MODIFICATION q7 s9"));
  EXPECT_EQ(recorder.units(), reports(2, UNIT)) << "the graph is invalid, and so is what is composed";
}

TEST_F(OzObjDependencySimplify, ValidatesBeforeEachStepWhenAHandlerIsInstalled)
{
  class Counting : public OzObjDependency
  {
  public:
    bool is_valid(OzJournal* journal) const override
    {
      EXPECT_EQ(journal, nullptr);
      ++n_validations;
      return is_good;
    }
    mutable int n_validations = 0;
    bool is_good = true;
  };
  Counting counting;
  Probe::add_dependency_pair(counting, object(1), object(2), MODIFICATION);
  Probe::add_dependency_pair(counting, object(2), object(3), MODIFICATION);
  Probe::add_dependency_pair(counting, object(3), object(4), MODIFICATION);
  {
    ReportRecorder const recorder;
    counting.simplify_it();
    EXPECT_EQ(counting.n_validations, 3) << "two steps that change something, and one that does not";
    EXPECT_EQ(recorder.units(), reports(0, UNIT));

    counting.is_good = false;
    counting.simplify_it();
    EXPECT_EQ(counting.n_validations, 4);
    EXPECT_EQ(recorder.units(), reports(1, UNIT));
  }

  counting.simplify_it();
  EXPECT_EQ(counting.n_validations, 4) << "not without a handler";
}

// Damaged graphs.

TEST_F(OzObjDependencySimplify, ReportsAndSkipsANullAmongTheRoots)
{
  link(1, 2, MODIFICATION);
  link(2, 3, MODIFICATION);
  Probe::roots(graph).insert(nullptr);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step().substr(0, 38), "\"simplify_step\" with 2 roots.\nrn1 = 1\n");

  EXPECT_THAT(links(), ElementsAre("1>3 MODIFICATION q- s0"));
  EXPECT_EQ(recorder.units(), reports(1, UNIT));
}

TEST_F(OzObjDependencySimplify, ReportsALinkWithoutATargetNode)
{
  link(1, 2, MODIFICATION);
  OzObjDepLink* const record = forward(1, 2);
  OzObjDepNode* const node = record->node;
  record->node = nullptr;
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 1 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 0\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "remove n2s to remove later\n");

  EXPECT_EQ(recorder.units(), reports(1, UNIT));
  record->node = node;
}

TEST_F(OzObjDependencySimplify, ReportsASourceThatHoldsNoLink)
{
  link(2, 3, CREATION);
  link(1, 3, CREATION);
  link(3, 4, CREATION);
  drop_forward(2, 3);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 2 roots.\n"
                               "rn1 = 2\n"
                               "rn1 = 1\n"
                               "   n2 = 3\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 2\n"
                               "      _ASSERTION_: link from n1 to n2 missing!!!\n"
                               "      n1 = 1\n"
                               "         n3 = 4\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>4 CREATION q- s0"));
  EXPECT_EQ(identities_of(graph), (std::set<int>{1, 2, 4}));
  EXPECT_EQ(recorder.units(), reports(1, UNIT));
}

TEST_F(OzObjDependencySimplify, ReportsATargetThatHoldsNoLink)
{
  link(1, 2, CREATION);
  link(2, 3, CREATION);
  drop_backward(2, 3);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 1 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 3\n"
                               "  _ASSERTION_: removing links between n2 and (n3 = 3): no link from n3 to"
                               " n2!!!\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0"));
  EXPECT_EQ(recorder.units(), reports(1, UNIT));
}

/// Whether a second path is noted in advance depends on which end is looked through. The link comes out the same.
TEST_F(OzObjDependencySimplify, MakesTheSameLinkWhereASecondPathIsNotSeenFromItsTarget)
{
  for (bool has_more_targets_than_sources : {true, false})
  {
    for (int way : {2, 3})
    {
      Probe::add_dependency_pair(graph, object(1), object(way), CREATION);
      Probe::add_dependency_pair(graph, object(way), object(4), ABSORPTION);
    }
    for (int other = 5; other <= 8; ++other)
      if (has_more_targets_than_sources)
        link(1, other, CREATION);
      else
        link(other, 4, ABSORPTION);
    drop_backward(3, 4);
    ReportRecorder const recorder;

    std::string const trace = trace_of_a_step();

    EXPECT_EQ(trace.find("remember triple to skip with n2a = 3") == std::string::npos,
              has_more_targets_than_sources);
    EXPECT_EQ(forward(1, 4)->dependency_type, CREATION);
    EXPECT_EQ(backward(1, 4)->dependency_type, CREATION);
    EXPECT_EQ(Probe::node(graph, object(2)), nullptr);
    EXPECT_EQ(Probe::node(graph, object(3)), nullptr);
    EXPECT_EQ(recorder.units(), reports(1, UNIT));
    graph = OzObjDependency();
  }
}

TEST_F(OzObjDependencySimplify, ReportsALinkThatOnlyTheLookUpKnows)
{
  link(1, 2, CREATION);
  link(2, 3, CREATION);
  OzObjDepLink* const record = backward(2, 3);
  Probe::node(graph, object(3))->source_links.erase(record);
  ReportRecorder const recorder;

  EXPECT_EQ(trace_of_a_step(), "\"simplify_step\" with 1 roots.\n"
                               "rn1 = 1\n"
                               "   n2 = 2\n"
                               "   \"prepare_removal_of_n2\"\n"
                               "      n1 = 1\n"
                               "         n3 = 3\n"
                               "  _ASSERTION_: removing link from (n3 = 3) to n2 failed!!!\n"
                               "remove n2s to remove later\n");

  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0"));
  EXPECT_EQ(recorder.units(), reports(1, UNIT));
  delete record;
}

TEST_F(OzObjDependencySimplify, ComesBackToARootWhoseTargetOnlySeemedToHaveNoTargets)
{
  link(1, 2, CREATION);
  link(2, 5, CREATION);
  link(3, 5, CREATION);
  link(5, 6, CREATION);
  OzObjDepLink* const record = forward(2, 5);
  Probe::node(graph, object(2))->target_links.erase(record);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>6 CREATION q- s0", "3>6 CREATION q- s0"));
  delete record;
}

TEST_F(OzObjDependencySimplify, ReportsANullNodeOfTheNullObject)
{
  link(1, 2, CREATION);
  link(2, 3, CREATION);
  Probe::nodes(graph).insert(nullptr, nullptr);
  ReportRecorder const recorder;

  step();

  EXPECT_EQ(recorder.units(), reports(1, UNIT));
  Probe::nodes(graph).erase(nullptr);
  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0"));
}

TEST_F(OzObjDependencySimplify, ReportsANodeThatTheGraphDoesNotKnow)
{
  link(1, 2, CREATION);
  link(2, 3, CREATION);
  Probe::nodes(graph).erase(object(2));
  ReportRecorder const recorder;

  step();

  EXPECT_EQ(recorder.units(), reports(1, UNIT));
  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0"));
}

TEST_F(OzObjDependencySimplify, ReportsALoneSplitWithoutPartner)
{
  link(1, 2, SPLIT);
  link(1, 3, SPLIT);
  link(3, 4, CREATION);
  drop_backward(1, 2);
  ReportRecorder const recorder;

  step();

  EXPECT_THAT(links(), ElementsAre("1>2 MODIFICATION q- s0 without partner", "1>4 CREATION q- s0"));
  EXPECT_EQ(recorder.units(), reports(1, UNIT));
}

TEST_F(OzObjDependencySimplify, ReportsAbsorptionsWithoutPartner)
{
  // The source is mixed, and one of its absorptions has no partner at the target.
  link(1, 2, ABSORPTION);
  link(2, 3, MODIFICATION);
  link(1, 4, CREATION);
  link(1, 5, ABSORPTION);
  drop_backward(1, 5);
  // The target is mixed, and one of its absorptions has no partner at the source.
  link(6, 7, ABSORPTION);
  link(7, 8, MODIFICATION);
  link(9, 8, ABSORPTION);
  link(10, 8, CREATION);
  drop_forward(9, 8);
  ReportRecorder const recorder;

  step();

  EXPECT_THAT(links(),
              ElementsAre("1>3 CREATION q- s0", "1>4 CREATION q- s0", "1>5 CREATION q- s0 without partner",
                          "6>8 CREATION q- s0", "10>8 CREATION q- s0"));
  EXPECT_EQ(backward(9, 8)->dependency_type, CREATION);
  EXPECT_EQ(recorder.units(), reports(3, UNIT))
      << "two without partner, and a source of an absorption that holds none";
}

TEST_F(OzObjDependencySimplify, ReportsTheOnlyAbsorptionOfAMixedTargetWhoseSourceHoldsNoLink)
{
  link(9, 8, ABSORPTION);
  link(6, 7, CREATION);
  link(7, 8, MODIFICATION);
  drop_forward(9, 8);
  ReportRecorder const recorder;

  step();

  EXPECT_THAT(links(), ElementsAre("6>8 CREATION q- s0"));
  EXPECT_EQ(backward(9, 8)->dependency_type, CREATION);
  EXPECT_EQ(recorder.units(), reports(2, UNIT)) << "nothing of the source is an absorption, and no partner";
}

TEST_F(OzObjDependencySimplify, ReportsAndPrunesALinkOfTheNullObjectWithoutPartner)
{
  link(0, 4, CREATION);
  link(1, 4, CREATION);
  link(2, 4, CREATION);
  drop_backward(0, 4);
  link(5, 6, MODIFICATION);
  link(6, 7, MODIFICATION);
  ReportRecorder const recorder;

  step();

  EXPECT_THAT(links(), ElementsAre("1>4 CREATION q- s0", "2>4 CREATION q- s0", "5>7 MODIFICATION q- s0"));
  EXPECT_EQ(identities_of(graph), (std::set<int>{1, 2, 4, 5, 7}));
  EXPECT_EQ(recorder.units(), reports(1, UNIT));
}

// Cycles.

TEST_F(OzObjDependencySimplify, SurvivesACycleBehindARoot)
{
  link(1, 2, CREATION);
  link(2, 3, CREATION);
  link(3, 2, CREATION);
  link(3, 4, CREATION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>4 CREATION q- s0"));
  EXPECT_EQ(identities_of(graph), (std::set<int>{1, 4}));
}

TEST_F(OzObjDependencySimplify, SurvivesAnObjectThatBecameItself)
{
  link(1, 2, CREATION);
  link(2, 2, CREATION);
  link(2, 3, CREATION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>3 CREATION q- s0"));
  EXPECT_EQ(identities_of(graph), (std::set<int>{1, 3}));
}

TEST_F(OzObjDependencySimplify, LeavesACycleAloneThatNoRootReaches)
{
  link(1, 2, CREATION);
  link(2, 1, CREATION);
  link(3, 3, CREATION);

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>2 CREATION q- s0", "2>1 CREATION q- s0", "3>3 CREATION q- s0"));
}

TEST_F(OzObjDependencySimplify, SurvivesCyclesWithoutAWayOut)
{
  for (int length = 1; length <= 6; ++length)
  {
    OzObjDependency cycle;
    Probe::add_dependency_pair(cycle, object(15), object(1), CREATION);
    Probe::add_dependency_pair(cycle, object(14), object(length), CREATION);
    for (int i = 1; i <= length; ++i)
      Probe::add_dependency_pair(cycle, object(i), object(i % length + 1), CREATION);

    cycle.simplify_it();

    for (OzObjDepNode* root : Probe::roots(cycle))
      for (OzObjDepLink* record : root->target_links)
        EXPECT_TRUE(record->node->target_links.empty()) << length;
  }
}

// Valid histories that don't stay valid.

namespace
{
/// The numbers of the faults that validation finds.
std::vector<int> faults_of(OzObjDependency const& graph)
{
  TextJournal journal;
  graph.is_valid(&journal);
  std::string const text = journal.take();
  std::vector<int> codes;
  for (std::size_t at = text.find("error "); at != std::string::npos; at = text.find("error ", at + 1))
    codes.push_back(std::stoi(text.substr(at + 6)));
  return codes;
}
} // namespace

TEST_F(OzObjDependencySimplify, LeavesALoneSplitOfItsQualifierBesideOthers)
{
  int const qualifier = 5;
  ThingList whole{object(1)}, first{object(2), object(3)}, second{object(4), object(5)};
  graph.record_dependency(&whole, &first, SPLIT, &qualifier, nullptr);
  graph.record_dependency(&whole, &second, SPLIT, nullptr, nullptr);
  graph.record_dependency(object(5), nullptr, DELETION, nullptr, nullptr);
  ASSERT_THAT(faults_of(graph), IsEmpty());

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>2 SPLIT q5 s0", "1>3 SPLIT q5 s0", "1>4 SPLIT q- s0"));
  EXPECT_THAT(faults_of(graph), ElementsAre(21));
}

TEST_F(OzObjDependencySimplify, LeavesALoneContainment)
{
  ThingList whole{object(1)}, pieces{object(2), object(3)};
  graph.record_dependency(&whole, &pieces, CONTAINMENT, nullptr, nullptr);
  graph.record_dependency(object(3), nullptr, DELETION, nullptr, nullptr);
  ASSERT_THAT(faults_of(graph), IsEmpty());

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>2 CONTAINMENT q- s0"));
  EXPECT_THAT(faults_of(graph), ElementsAre(22));
}

TEST_F(OzObjDependencySimplify, LeavesACreationBesideAbsorptionsOfTheSameTarget)
{
  graph.record_dependency(object(1), object(4), ABSORPTION, nullptr, nullptr);
  graph.record_dependency(object(2), object(4), ABSORPTION, nullptr, nullptr);
  graph.record_dependency(object(3), object(4), ABSORPTION, nullptr, nullptr);
  graph.record_dependency(object(1), object(2), CREATION, nullptr, nullptr);
  ASSERT_THAT(faults_of(graph), IsEmpty());

  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>4 CREATION q- s0", "3>4 ABSORPTION q- s0"));
  EXPECT_THAT(faults_of(graph), ElementsAre(24));
}

// Large ones.

TEST_F(OzObjDependencySimplify, RecordsOnAfterwards)
{
  link(1, 2, MODIFICATION);
  link(2, 3, MODIFICATION);
  graph.simplify_it();

  EXPECT_TRUE(graph.record_dependency(object(3), object(4), MODIFICATION, nullptr, nullptr));
  EXPECT_TRUE(graph.record_dependency(object(2), object(5), MODIFICATION, nullptr, nullptr));
  graph.simplify_it();

  EXPECT_THAT(links(), ElementsAre("1>4 MODIFICATION q- s0", "2>5 MODIFICATION q- s0"));
}

namespace
{
void* simplify_a_long_chain(void* done)
{
  constexpr int DEPTH = 300000;
  std::deque<Thing> things;
  OzObjDependency graph;
  for (int i = 0; i < DEPTH; ++i)
    things.emplace_back(i + 1);
  for (std::size_t i = 0; i + 1 < DEPTH; ++i)
    graph.record_dependency(&things[i], &things[i + 1], MODIFICATION, nullptr, nullptr);
  graph.simplify_it();
  *static_cast<Texts*>(done) = links_of(graph);
  return nullptr;
}
} // namespace

TEST_F(OzObjDependencySimplify, CollapsesALongChainOnASmallStack)
{
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  Texts left;
  growing_addresses::any_order = true;
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, &simplify_a_long_chain, &left), 0);
  pthread_join(thread, nullptr);
  growing_addresses::any_order = false;
  pthread_attr_destroy(&attributes);

  EXPECT_THAT(left, ElementsAre("1>300000 MODIFICATION q- s0"));
}

// Large random graphs: what holds whatever the addresses are.

namespace
{
/// A history of thousands of links. Each object is a source in at most one call, so that simplification
/// must keep it valid; `may_contain_all` lifts both rules that this takes.
struct LargeHistory
{
  LargeHistory(unsigned seed, bool may_contain_all, OzObjectDependencyRole const* role)
    : random(seed)
  {
    for (int i = 1; i <= 40; ++i)
      alive.push_back(make());
    while (links < 4000)
      record(may_contain_all, role);
  }

  OzDynObj const* make()
  {
    things.emplace_back(static_cast<int>(things.size()) + 1);
    return &things.back();
  }
  std::size_t number(std::size_t n) { return random() % n; }
  /// A living object, which is then a source no more, unless `stays`.
  OzDynObj const* take(bool stays)
  {
    std::size_t const i = number(alive.size());
    OzDynObj const* const taken = alive[i];
    if (!stays)
    {
      alive[i] = alive.back();
      alive.pop_back();
    }
    return taken;
  }

  void record(bool may_contain_all, OzObjectDependencyRole const* role)
  {
    bool const stays = may_contain_all && number(4) == 0;
    OzObjectDependencyRole const* const given = number(3) == 0 ? role : nullptr;
    if (alive.size() < 20)
    {
      OzDynObj const* const made = make();
      add({}, {made}, CREATION, given);
      alive.push_back(made);
      return;
    }
    switch (number(8))
    {
    case 0:
    case 1:
    {
      std::vector<OzDynObj const*> const pieces = {make(), make(), make()};
      add({take(stays)}, pieces, may_contain_all && number(3) == 0 ? CONTAINMENT : SPLIT, given);
      alive.insert(alive.end(), pieces.begin(), pieces.end());
      return;
    }
    case 2:
      add({take(stays)}, {}, DELETION, given);
      return;
    case 3:
    case 4:
    {
      OzDynObj const* const whole = make();
      add({take(stays), take(stays)}, {whole}, number(2) == 0 ? ABSORPTION : CREATION, given);
      alive.push_back(whole);
      return;
    }
    default:
    {
      OzDynObj const* const next = make();
      add({take(stays)}, {next}, number(3) == 0 ? CONVERSION : MODIFICATION, given);
      alive.push_back(next);
      return;
    }
    }
  }
  void add(std::vector<OzDynObj const*> const& sources, std::vector<OzDynObj const*> const& targets,
           Type type, OzObjectDependencyRole const* role)
  {
    ThingList from(sources);
    ThingList to(targets);
    if (!graph.record_dependency(&from, &to, type, nullptr, role))
      return;
    for (OzDynObj const* source : sources)
    {
      if (origins[source].empty() && made_from_nothing.count(source) == 0)
        origins[source].insert(source);
      for (OzDynObj const* target : targets)
        origins[target].insert(origins[source].begin(), origins[source].end());
    }
    for (OzDynObj const* target : targets)
      if (origins[target].empty())
        made_from_nothing.insert(target);
    links += std::max<std::size_t>(1, sources.size()) * std::max<std::size_t>(1, targets.size());
  }

  std::mt19937 random;
  std::deque<Thing> things;
  std::vector<OzDynObj const*> alive;
  std::size_t links = 0;
  std::map<OzDynObj const*, std::set<OzDynObj const*>> origins; // the roots that an object descends from
  std::set<OzDynObj const*> made_from_nothing;                  // and all that descends from these alone
  OzObjDependency graph;
};

bool has_two_layers(OzObjDependency& graph)
{
  for (auto const& entry : Probe::nodes(graph))
  {
    OzObjDepNode const* const node = entry.value;
    if (node->object == nullptr)
      continue;
    if (!node->target_links.empty() && !node->source_links.empty())
      return false;
  }
  return true;
}

bool has_partners(Texts const& links)
{
  return std::none_of(links.begin(), links.end(),
                      [](std::string const& text) { return text.find("partner") != std::string::npos; });
}
} // namespace

TEST_F(OzObjDependencySimplify, LeavesTwoLayersOfAnyHistory)
{
  for (unsigned seed = 1; seed <= 6; ++seed)
  {
    LargeHistory history(seed, true, nullptr);
    history.graph.simplify_it();

    EXPECT_TRUE(has_two_layers(history.graph)) << seed;
    Texts const once = links_of(history.graph);
    EXPECT_TRUE(has_partners(once)) << seed;
    EXPECT_FALSE(once.empty()) << seed;
    std::set<int> const objects = identities_of(history.graph);

    history.graph.simplify_it();
    EXPECT_EQ(links_of(history.graph), once) << seed;
    EXPECT_EQ(identities_of(history.graph), objects) << seed;
  }
}

TEST_F(OzObjDependencySimplify, KeepsAHistoryValidInWhichEachObjectIsASourceOnceAndNothingIsContained)
{
  for (unsigned seed = 1; seed <= 6; ++seed)
  {
    LargeHistory history(seed, false, nullptr);
    ASSERT_TRUE(history.graph.is_valid(nullptr)) << seed;

    history.graph.simplify_it();

    EXPECT_TRUE(history.graph.is_valid(&journal)) << seed << "\n" << journal.take();
  }
}

TEST_F(OzObjDependencySimplify, DeliversEachRootOfAResultOnce)
{
  for (unsigned seed = 1; seed <= 3; ++seed)
  {
    LargeHistory history(seed, false, nullptr);

    history.graph.simplify_it();

    for (OzDynObj const* leaf : history.alive)
    {
      OzAutoPtr<OzIterator<OzDynObj const*>> found;
      history.graph.get_source_objects(leaf, found, nullptr, nullptr);
      std::multiset<OzDynObj const*> sources;
      for (found->reset(); !found->done(); found->next())
        sources.insert(found->current());
      std::set<OzDynObj const*> const& origins = history.origins[leaf]; // none if it was never recorded
      EXPECT_EQ(sources, std::multiset<OzDynObj const*>(origins.begin(), origins.end())) << seed;
    }
  }
}

TEST_F(OzObjDependencySimplify, DestroysEachCloneOfARoleOnce)
{
  int const alive_before = CountingRole::alive;
  {
    CountingRole const role;
    LargeHistory history(7, true, &role);
    EXPECT_GT(CountingRole::alive - alive_before, 500);

    history.graph.simplify_it();

    int roles = 0;
    for (auto const& entry : Probe::nodes(history.graph))
    {
      for (OzObjDepLink const* record : entry.value->target_links)
        roles += record->role != nullptr ? 1 : 0;
      for (OzObjDepLink const* record : entry.value->source_links)
        roles += record->role != nullptr ? 1 : 0;
    }
    EXPECT_EQ(CountingRole::alive - alive_before, 1 + roles);
  }
  EXPECT_EQ(CountingRole::alive, alive_before);
}

TEST_F(OzObjDependencySimplify, DeletesEachRecordThatItMakes)
{
  if (growing_addresses::DELETED_RECORDS_ARE_USED_AGAIN)
    GTEST_SKIP() << "records are blocks of their own, and counted, under the address sanitizer only";
  long const before = growing_addresses::records_in_use;

  for (unsigned seed = 1; seed <= 3; ++seed)
  {
    LargeHistory history(seed, true, nullptr);
    auto const records_of_the_graph = [&]
    { return static_cast<long>(Probe::nodes(history.graph).size() + 2 * Probe::link_count(history.graph)); };
    long const others = growing_addresses::records_in_use - records_of_the_graph();

    history.graph.simplify_it();

    EXPECT_EQ(growing_addresses::records_in_use - records_of_the_graph(), others) << seed;
  }

  EXPECT_EQ(growing_addresses::records_in_use, before);
}

TEST_F(OzObjDependencySimplify, HandlesVeryManyCreationsFromNothing)
{
  // Where the time grows with the square of the links, this does not end.
  constexpr std::size_t N = 50000;
  std::deque<Thing> many;
  for (std::size_t i = 0; i < 2 * N; ++i)
    many.emplace_back(static_cast<int>(i) + 1);
  for (std::size_t i = 0; i < N; ++i)
  {
    graph.record_dependency(nullptr, &many[i], CREATION, nullptr, nullptr);
    graph.record_dependency(&many[i], &many[N + i], MODIFICATION, nullptr, nullptr);
  }

  graph.simplify_it();

  EXPECT_EQ(Probe::link_count(graph), N);
  EXPECT_EQ(Probe::node(graph, nullptr)->target_links.size(), N);
  EXPECT_EQ(Probe::forward(graph, nullptr, &many[N])->dependency_type, CREATION);
}

// Where the time grows with the square of the objects, none of the following ends.

namespace
{
/// Objects without number, and what they become.
struct ManyObjects
{
  OzDynObj const* make()
  {
    things.emplace_back(static_cast<int>(things.size()) + 1);
    return &things.back();
  }
  std::vector<OzDynObj const*> make(std::size_t n)
  {
    std::vector<OzDynObj const*> made;
    while (made.size() < n)
      made.push_back(make());
    return made;
  }
  void record(OzDynObj const* source, OzDynObj const* target, Type type)
  {
    ASSERT_TRUE(graph.record_dependency(source, target, type, nullptr, nullptr));
  }
  void record(std::vector<OzDynObj const*> const& sources, std::vector<OzDynObj const*> const& targets,
              Type type)
  {
    ThingList from(sources);
    ThingList to(targets);
    ASSERT_TRUE(graph.record_dependency(&from, &to, type, nullptr, nullptr));
  }
  /// How many direct dependencies of `type` there are between `sources` and `target`; -1 if the records of one
  /// differ.
  int count(std::vector<OzDynObj const*> const& sources, OzDynObj const* target, Type type)
  {
    int n = 0;
    for (OzDynObj const* source : sources)
    {
      OzObjDepLink const* const forward = Probe::forward(graph, source, target);
      OzObjDepLink const* const backward = Probe::backward(graph, source, target);
      if ((forward != nullptr) != (backward != nullptr) ||
          (forward != nullptr && forward->dependency_type != backward->dependency_type))
        return -1;
      n += forward != nullptr && forward->dependency_type == type;
    }
    return n;
  }

  std::deque<Thing> things;
  OzObjDependency graph;
};
} // namespace

TEST(ManyRoots, AreAbsorbedByOneObject)
{
  constexpr std::size_t N = 200000;
  ManyObjects all;
  std::vector<OzDynObj const*> const entities = all.make(N);
  std::vector<OzDynObj const*> const edges = all.make(N);
  OzDynObj const* const contour = all.make();
  for (std::size_t i = 0; i < N; ++i)
    all.record(entities[i], edges[i], CONVERSION);
  all.record(edges, {contour}, ABSORPTION);

  all.graph.simplify_it();

  EXPECT_EQ(Probe::link_count(all.graph), N);
  EXPECT_EQ(Probe::nodes(all.graph).size(), N + 1);
  EXPECT_EQ(all.count(entities, contour, ABSORPTION), static_cast<int>(N));
}

TEST(ManyRoots, AreAbsorbedByTenObjects)
{
  constexpr std::size_t N = 20000;
  ManyObjects all;
  std::vector<OzDynObj const*> const contours = all.make(10);
  std::vector<std::vector<OzDynObj const*>> entities;
  for (OzDynObj const* contour : contours)
  {
    entities.push_back(all.make(N));
    std::vector<OzDynObj const*> const edges = all.make(N);
    for (std::size_t i = 0; i < N; ++i)
      all.record(entities.back()[i], edges[i], CONVERSION);
    all.record(edges, {contour}, ABSORPTION);
  }

  all.graph.simplify_it();

  EXPECT_EQ(Probe::link_count(all.graph), 10 * N);
  for (std::size_t i = 0; i < contours.size(); ++i)
    EXPECT_EQ(all.count(entities[i], contours[i], ABSORPTION), static_cast<int>(N));
}

TEST(ManyRoots, AreEachAbsorbedByTenObjects)
{
  constexpr std::size_t N = 20000;
  ManyObjects all;
  std::vector<OzDynObj const*> const entities = all.make(N);
  std::vector<OzDynObj const*> const contours = all.make(10);
  for (OzDynObj const* contour : contours)
  {
    std::vector<OzDynObj const*> const edges = all.make(N);
    for (std::size_t i = 0; i < N; ++i)
      all.record(entities[i], edges[i], CONVERSION);
    all.record(edges, {contour}, ABSORPTION);
  }

  all.graph.simplify_it();

  EXPECT_EQ(Probe::link_count(all.graph), 10 * N);
  for (OzDynObj const* contour : contours)
    EXPECT_EQ(all.count(entities, contour, ABSORPTION), static_cast<int>(N));
}

TEST(ManyRoots, ContainSeveralThingsThatOneObjectAbsorbs)
{
  constexpr std::size_t N = 20000;
  ManyObjects all;
  std::vector<OzDynObj const*> const entities = all.make(N);
  std::vector<OzDynObj const*> edges;
  for (OzDynObj const* entity : entities)
  {
    std::vector<OzDynObj const*> const own = all.make(4);
    all.record({entity}, own, CONTAINMENT);
    edges.insert(edges.end(), own.begin(), own.end());
  }
  OzDynObj const* const contour = all.make();
  all.record(edges, {contour}, ABSORPTION);

  all.graph.simplify_it();

  EXPECT_EQ(Probe::link_count(all.graph), N);
  EXPECT_EQ(all.count(entities, contour, ABSORPTION), static_cast<int>(N));
}

TEST(ManyRoots, CreateWhatTheyWereAbsorbedByAndWhatWasThenChanged)
{
  constexpr std::size_t N = 50000;
  ManyObjects all;
  std::vector<OzDynObj const*> const parts = all.make(N);
  OzDynObj const* const whole = all.make();
  OzDynObj const* const changed = all.make();
  all.record(parts, {whole}, ABSORPTION);
  all.record(whole, changed, MODIFICATION);

  all.graph.simplify_it();

  EXPECT_EQ(Probe::link_count(all.graph), N);
  // The last root's turn takes the whole out, so that it meets creations only, and joins them.
  EXPECT_EQ(all.count(parts, changed, CREATION), static_cast<int>(N));
}

TEST(ManyRoots, CreateTwoThingsThatTheyWereAbsorbedByAndThatWereThenChanged)
{
  constexpr std::size_t N = 100000;
  ManyObjects all;
  std::vector<OzDynObj const*> const parts = all.make(N);
  OzDynObj const* changed[2];
  for (OzDynObj const*& one : changed)
  {
    OzDynObj const* const whole = all.make();
    one = all.make();
    all.record(parts, {whole}, ABSORPTION);
    all.record(whole, one, MODIFICATION);
  }

  all.graph.simplify_it();

  EXPECT_EQ(Probe::link_count(all.graph), 2 * N);
  for (OzDynObj const* one : changed)
    EXPECT_EQ(all.count(parts, one, CREATION), static_cast<int>(N));
}

TEST(ManyRoots, StandBesideADeepHistory)
{
  constexpr std::size_t N = 50000;
  constexpr std::size_t DEPTH = 5000;
  ManyObjects all;
  for (std::size_t i = 0; i < N; ++i)
    all.record(all.make(), all.make(), MODIFICATION);
  OzDynObj const* const first = all.make();
  OzDynObj const* last = first;
  for (std::size_t i = 0; i < DEPTH; ++i)
  {
    OzDynObj const* const next = all.make();
    all.record(last, next, MODIFICATION);
    last = next;
  }

  all.graph.simplify_it();

  EXPECT_EQ(Probe::link_count(all.graph), N + 1);
  EXPECT_EQ(all.count({first}, last, MODIFICATION), 1);
}

TEST(ManyRoots, AreWorkedOnWithOneTool)
{
  constexpr std::size_t N = 20000;
  ManyObjects all;
  std::vector<OzDynObj const*> const blanks = all.make(N);
  OzDynObj const* const steel = all.make();
  OzDynObj const* const tool = all.make();
  all.record(steel, tool, CONVERSION);
  std::vector<OzDynObj const*> finished;
  for (OzDynObj const* blank : blanks)
  {
    OzDynObj const* const worked = all.make();
    finished.push_back(all.make());
    all.record({blank, tool}, {worked}, ABSORPTION);
    all.record(worked, finished.back(), MODIFICATION);
  }

  all.graph.simplify_it();

  EXPECT_EQ(Probe::link_count(all.graph), 2 * N);
  EXPECT_EQ(Probe::node(all.graph, steel)->target_links.size(), N);
  for (std::size_t i = 0; i < N; ++i)
    ASSERT_NE(Probe::forward(all.graph, blanks[i], finished[i]), nullptr) << i;
}
