#include "ozobjdependency.h"

#include "dependency_types.h"
#include "report_recorder.h"
#include "text_journal.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace
{
/// A graph over five objects with the identities 12 to 16. Damage is done through the probe, and what must
/// be whole again before the graph can be destroyed is put right by `repair`.
struct Fixture
{
  Thing a{12};
  Thing b{13};
  Thing c{14};
  Thing d{15};
  Thing e{16};
  OzObjDependency graph;
  std::function<void()> repair = [] {};

  ~Fixture() { repair(); }

  void record(OzDynObj const* source, OzDynObj const* target, OzObjectDependency::Type type,
              int const* qualifier = nullptr)
  {
    EXPECT_TRUE(graph.record_dependency(source, target, type, qualifier, nullptr));
  }
  void record_parts(OzDynObj const* source, std::initializer_list<OzDynObj const*> targets,
                    OzObjectDependency::Type type)
  {
    ThingList from{source};
    ThingList to(targets);
    EXPECT_TRUE(graph.record_dependency(&from, &to, type, nullptr, nullptr));
  }
  OzObjDepNode* node(OzDynObj const* object) { return Probe::node(graph, object); }
  OzObjDepLink* forward(OzDynObj const* source, OzDynObj const* target)
  {
    return Probe::forward(graph, source, target);
  }
  OzObjDepLink* backward(OzDynObj const* source, OzDynObj const* target)
  {
    return Probe::backward(graph, source, target);
  }
  void retype(OzDynObj const* source, OzDynObj const* target, int type)
  {
    forward(source, target)->dependency_type = static_cast<OzObjectDependency::Type>(type);
    backward(source, target)->dependency_type = static_cast<OzObjectDependency::Type>(type);
  }
};

/// A way to an invalid graph, and what validation says of it: in dotty format as a whole text, in plain
/// format as the lines that begin with "error".
struct Fault
{
  char const* what;
  void (*make)(Fixture& f);
  char const* plain;
  char const* dotty;
};

int const FIVE = 5;
int const SIX = 6;

Fault const FAULTS[] = {
    {"a node that the map does not know",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       OzObjDepNode* const lost = f.node(&f.b);
       Probe::nodes(f.graph).erase(&f.b);
       f.repair = [&f, lost] { Probe::nodes(f.graph).insert(&f.b, lost); };
     },
     "error 1: node n1 is not stored in object-node-map\n",
     "xxx1n113n2x [color=\"red\",label=\"error 1: \\nnode n1 is not stored in object-node-map\\nn1 = 13\"];\n"
     "13 [color=\"red\"];\n"},
    {"the null-object node in neither set",
     [](Fixture& f)
     {
       f.record(&f.a, nullptr, DELETION);
       Probe::leaves(f.graph).erase(f.node(nullptr));
     },
     "error 2: null-object-node n1 neither root nor leaf\n",
     "xxx2n1NULLn2x [color=\"red\",label=\"error 2: \\nnull-object-node n1 neither root nor leaf\\nn1 = "
     "NULL\"];\n"
     "NULL [color=\"red\"];\n"},
    {"no source, and no root",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       OzObjDepLink* const link = f.backward(&f.a, &f.b);
       f.node(&f.b)->source_links.erase(link); // the map still has it
       f.repair = [&f, link] { f.node(&f.b)->source_links.insert(link); };
     },
     "error 3: node n1 without sources not in roots\n",
     "xxx3n113n2x [color=\"red\",label=\"error 3: \\nnode n1 without sources not in roots\\nn1 = 13\"];\n"
     "13 [color=\"red\"];\n"},
    {"a root with a source",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       Probe::roots(f.graph).insert(f.node(&f.b));
     },
     "error 4: node n1 with sources in roots\n",
     "xxx4n113n2x [color=\"red\",label=\"error 4: \\nnode n1 with sources in roots\\nn1 = 13\"];\n"
     "13 [color=\"red\"];\n"},
    {"no target, and no leaf",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       Probe::leaves(f.graph).erase(f.node(&f.b));
     },
     "error 5: node n1 without targets not in leaves\n",
     "xxx5n113n2x [color=\"red\",label=\"error 5: \\nnode n1 without targets not in leaves\\nn1 = 13\"];\n"
     "13 [color=\"red\"];\n"},
    {"a leaf with a target",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       Probe::leaves(f.graph).insert(f.node(&f.a));
     },
     "error 6: node n1 with targets in leaves\n",
     "xxx6n112n2x [color=\"red\",label=\"error 6: \\nnode n1 with targets in leaves\\nn1 = 12\"];\n"
     "12 [color=\"red\"];\n"},
    {"two links to a target",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       OzObjDepLink* const twin = new OzObjDepLink;
       twin->node = f.node(&f.b);
       twin->dependency_type = MODIFICATION;
       f.node(&f.a)->target_links.insert(twin);
     },
     "error 7: more than one link exists between n1 and target n2\n",
     "xxx7n112n213 [color=\"red\",label=\"error 7: \\nmore than one link exists between n1 and target "
     "n2\\nn1 = "
     "12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"two links to a source",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, CREATION);
       OzObjDepLink* const twin = new OzObjDepLink;
       twin->node = f.node(&f.a);
       twin->dependency_type = CREATION;
       f.node(&f.b)->source_links.insert(twin);
     },
     "error 8: more than one link exists between n2 and source n1\n",
     "xxx8n112n213 [color=\"red\",label=\"error 8: \\nmore than one link exists between n2 and source "
     "n1\\nn1 = "
     "12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"a link that the target does not know",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       f.node(&f.b)->source_link_map.erase(f.node(&f.a));
     },
     "error 9: target n2 has no link to source n1\n",
     "xxx9n112n213 [color=\"red\",label=\"error 9: \\ntarget n2 has no link to source n1\\nn1 = 12\\nn2 = "
     "13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"a target that names another source",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       f.record(&f.c, &f.d, MODIFICATION);
       f.backward(&f.a, &f.b)->node = f.node(&f.c);
     },
     "error 10: link from target n2 to source n1 has wrong node\n",
     "xxx10n112n213 [color=\"red\",label=\"error 10: \\nlink from target n2 to source n1 has wrong node\\nn1 "
     "= "
     "12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"two types for one dependency",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       f.backward(&f.a, &f.b)->dependency_type = CREATION;
     },
     "error 11: pair of links between source n1 and target n2 have different dependency types\n",
     "xxx11n112n213 [color=\"red\",label=\"error 11: \\npair of links between source n1 and target n2 have "
     "different dependency types\\nn1 = 12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"a qualifier at one end",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       f.backward(&f.a, &f.b)->has_target_qualifier = true;
     },
     "error 12: pair of links between source n1 and target n2 do not both have a target qualifier\n",
     "xxx12n112n213 [color=\"red\",label=\"error 12: \\npair of links between source n1 and target n2 do not "
     "both have a target qualifier\\nn1 = 12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"two qualifiers for one dependency",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION, &FIVE);
       f.backward(&f.a, &f.b)->target_qualifier = 6;
     },
     "error 13: pair of links between source n1 and target n2 have different target qualifiers\n",
     "xxx13n112n213 [color=\"red\",label=\"error 13: \\npair of links between source n1 and target n2 have "
     "different target qualifiers\\nn1 = 12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"an absorption of nothing", [](Fixture& f) { f.record(nullptr, &f.b, ABSORPTION); },
     "error 14: null-object-node n1 linked to target n2 with dependency type which is not CREATION\n",
     "xxx14n1NULLn213 [color=\"red\",label=\"error 14: \\nnull-object-node n1 linked to target n2 with "
     "dependency type which is not CREATION\\nn1 = NULL\\nn2 = 13\"];\nNULL [color=\"red\"];\n13 "
     "[color=\"red\"];\n"},
    {"a creation of nothing",
     [](Fixture& f)
     {
       f.record(&f.a, nullptr, DELETION);
       f.retype(&f.a, nullptr, CREATION);
     },
     "error 15: null-object-node n2 linked to source n1 with dependency type which is not DELETION\n",
     "xxx15n112n2NULL [color=\"red\",label=\"error 15: \\nnull-object-node n2 linked to source n1 with "
     "dependency type which is not DELETION\\nn1 = 12\\nn2 = NULL\"];\n12 [color=\"red\"];\nNULL "
     "[color=\"red\"];\n"},
    {"a deletion that leads to an object",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       f.retype(&f.a, &f.b, DELETION);
     },
     "error 16: target n2 of DELETION link to source n1 is not null-object-node\n",
     "xxx16n112n213 [color=\"red\",label=\"error 16: \\ntarget n2 of DELETION link to source n1 is not "
     "null-object-node\\nn1 = 12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"two modifications into one object",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       f.record(&f.c, &f.b, MODIFICATION);
     },
     "error 17: target n2 of MODIFICATION has more than one source\n"
     "error 17: target n2 of MODIFICATION has more than one source\n",
     "xxx17n1xn213 [color=\"red\",label=\"error 17: \\ntarget n2 of MODIFICATION has more than one "
     "source\\nn2 = "
     "13\"];\n13 [color=\"red\"];\n"
     "xxx17n1xn213 [color=\"red\",label=\"error 17: \\ntarget n2 of MODIFICATION has more than one "
     "source\\nn2 = "
     "13\"];\n13 [color=\"red\"];\n"},
    {"two conversions into one object",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, CONVERSION);
       f.record(&f.c, &f.b, CONVERSION);
     },
     "error 18: target n2 of CONVERSION has more than one source\n"
     "error 18: target n2 of CONVERSION has more than one source\n",
     "xxx18n1xn213 [color=\"red\",label=\"error 18: \\ntarget n2 of CONVERSION has more than one source\\nn2 "
     "= "
     "13\"];\n13 [color=\"red\"];\n"
     "xxx18n1xn213 [color=\"red\",label=\"error 18: \\ntarget n2 of CONVERSION has more than one source\\nn2 "
     "= "
     "13\"];\n13 [color=\"red\"];\n"},
    {"one object as a part of two",
     [](Fixture& f)
     {
       f.record_parts(&f.a, {&f.b, &f.c}, SPLIT);
       f.record_parts(&f.d, {&f.b, &f.e}, SPLIT);
     },
     "error 19: target n2 of SPLIT has more than one source\n"
     "error 19: target n2 of SPLIT has more than one source\n",
     "xxx19n1xn213 [color=\"red\",label=\"error 19: \\ntarget n2 of SPLIT has more than one source\\nn2 = "
     "13\"];\n13 [color=\"red\"];\n"
     "xxx19n1xn213 [color=\"red\",label=\"error 19: \\ntarget n2 of SPLIT has more than one source\\nn2 = "
     "13\"];\n13 [color=\"red\"];\n"},
    {"one object contained in two",
     [](Fixture& f)
     {
       f.record_parts(&f.a, {&f.b, &f.c}, CONTAINMENT);
       f.record_parts(&f.d, {&f.b, &f.e}, CONTAINMENT);
     },
     "error 20: target n2 of CONTAINMENT has more than one source\n"
     "error 20: target n2 of CONTAINMENT has more than one source\n",
     "xxx20n1xn213 [color=\"red\",label=\"error 20: \\ntarget n2 of CONTAINMENT has more than one "
     "source\\nn2 = "
     "13\"];\n13 [color=\"red\"];\n"
     "xxx20n1xn213 [color=\"red\",label=\"error 20: \\ntarget n2 of CONTAINMENT has more than one "
     "source\\nn2 = "
     "13\"];\n13 [color=\"red\"];\n"},
    {"a split with one product",
     [](Fixture& f)
     {
       f.record_parts(&f.a, {&f.b, &f.c}, SPLIT);
       f.retype(&f.a, &f.c, CREATION);
     },
     "error 21: source n1 of SPLIT has only one target n2\n",
     "xxx21n112n213 [color=\"red\",label=\"error 21: \\nsource n1 of SPLIT has only one target n2\\nn1 = "
     "12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"a containment with one product",
     [](Fixture& f)
     {
       f.record_parts(&f.a, {&f.b, &f.c}, CONTAINMENT);
       f.retype(&f.a, &f.c, CREATION);
     },
     "error 22: source n1 of CONTAINMENT has only one target n2\n",
     "xxx22n112n213 [color=\"red\",label=\"error 22: \\nsource n1 of CONTAINMENT has only one target n2\\nn1 "
     "= "
     "12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"no type",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       f.retype(&f.a, &f.b, OzObjectDependency::UNSPECIFIED);
     },
     "error 23: unsupported dependency type between source n1 and target n2\n",
     "xxx23n112n213 [color=\"red\",label=\"error 23: \\nunsupported dependency type between source n1 and "
     "target "
     "n2\\nn1 = 12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"a type that is never stored",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       f.retype(&f.a, &f.b, OzObjectDependency::TRANSFER);
     },
     "error 23: unsupported dependency type between source n1 and target n2\n",
     "xxx23n112n213 [color=\"red\",label=\"error 23: \\nunsupported dependency type between source n1 and "
     "target "
     "n2\\nn1 = 12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
    {"sources of two types, one of which is to be alone",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, MODIFICATION);
       f.record(&f.c, &f.b, ABSORPTION);
     },
     "error 17: target n2 of MODIFICATION has more than one source\n"
     "error 24: sources of n1 have different dependency types\n",
     "xxx17n1xn213 [color=\"red\",label=\"error 17: \\ntarget n2 of MODIFICATION has more than one "
     "source\\nn2 = "
     "13\"];\n13 [color=\"red\"];\n"
     "xxx24n113n2x [color=\"red\",label=\"error 24: \\nsources of n1 have different dependency types\\nn1 = "
     "13\"];\n13 [color=\"red\"];\n"},
    {"a qualifier at some of the sources",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, ABSORPTION, &FIVE);
       f.record(&f.c, &f.b, ABSORPTION);
     },
     "error 25: not all sources of n1 have target qualifiers\n",
     "xxx25n113n2x [color=\"red\",label=\"error 25: \\nnot all sources of n1 have target qualifiers\\nn1 = "
     "13\"];\n13 [color=\"red\"];\n"},
    {"two qualifiers at the sources",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, ABSORPTION, &FIVE);
       f.record(&f.c, &f.b, ABSORPTION, &SIX);
     },
     "error 26: sources of n1 have different target qualifiers\n",
     "xxx26n113n2x [color=\"red\",label=\"error 26: \\nsources of n1 have different target qualifiers\\nn1 = "
     "13\"];\n13 [color=\"red\"];\n"},
    {"a source that no root leads to",
     [](Fixture& f)
     {
       f.record(&f.a, &f.b, CREATION);
       Probe::roots(f.graph).erase(f.node(&f.a));
     },
     "error 27: node n1 (source of n2) has no sources but is not in roots\n",
     "xxx27n112n213 [color=\"red\",label=\"error 27: \\nnode n1 (source of n2) has no sources but is not in "
     "roots\\nn1 = 12\\nn2 = 13\"];\n12 [color=\"red\"];\n13 [color=\"red\"];\n"},
};

/// The lines of a text that begin with "error".
std::string error_lines(std::string const& text)
{
  std::string lines;
  for (std::size_t start = 0; start < text.size();)
  {
    std::size_t const end = text.find('\n', start) + 1;
    if (text.compare(start, 5, "error") == 0)
      lines += text.substr(start, end - start);
    start = end;
  }
  return lines;
}
} // namespace

TEST(OzObjDependencyValidate, FindsAnEmptyGraphValid)
{
  OzObjDependency const graph;
  TextJournal journal;

  EXPECT_TRUE(graph.is_valid(&journal));
  EXPECT_EQ(journal.text(), "");
}

TEST(OzObjDependencyValidate, FindsAHistoryOfAllTypesValid)
{
  Fixture f;
  Thing parts[4];
  f.record(nullptr, &f.a, CREATION);
  f.record(&f.a, &f.b, MODIFICATION);
  f.record_parts(&f.b, {&parts[0], &parts[1]}, SPLIT);
  f.record(&parts[0], &f.c, CONVERSION);
  f.record_parts(&f.c, {&parts[2], &parts[3]}, CONTAINMENT);
  f.record(&parts[1], &f.d, ABSORPTION);
  f.record(&f.d, nullptr, DELETION);
  TextJournal journal;

  EXPECT_TRUE(f.graph.is_valid(&journal));
  EXPECT_EQ(journal.text(), "");
}

TEST(OzObjDependencyValidate, TellsEachFaultInDottyFormatAsANodeOfThePicture)
{
  for (Fault const& fault : FAULTS)
  {
    Fixture f;
    fault.make(f);
    f.graph.set_dotty_output_format(true);
    TextJournal journal;

    EXPECT_FALSE(f.graph.is_valid(&journal)) << fault.what;
    EXPECT_EQ(journal.text(), fault.dotty) << fault.what;
  }
}

TEST(OzObjDependencyValidate, TellsEachFaultInPlainFormatByItsNumber)
{
  for (Fault const& fault : FAULTS)
  {
    Fixture f;
    fault.make(f);
    TextJournal journal;

    EXPECT_FALSE(f.graph.is_valid(&journal)) << fault.what;
    EXPECT_EQ(error_lines(journal.text()), fault.plain) << fault.what;
  }
}

TEST(OzObjDependencyValidate, FindsTheSameWithoutAJournalAndWithoutAReport)
{
  for (Fault const& fault : FAULTS)
  {
    Fixture f;
    fault.make(f);
    ReportRecorder const recorder;

    EXPECT_FALSE(f.graph.is_valid(nullptr)) << fault.what;
    EXPECT_EQ(recorder.units(), reports(0, "")) << fault.what;
  }
}

TEST(OzObjDependencyValidate, DumpsBothNodesOfAFaultInPlainFormat)
{
  Fixture f;
  f.record(&f.a, &f.b, MODIFICATION);
  f.backward(&f.a, &f.b)->dependency_type = CREATION;
  TextJournal journal;

  f.graph.is_valid(&journal);

  EXPECT_EQ(journal.text(),
            "error 11: pair of links between source n1 and target n2 have different dependency types\n"
            "n1 node object id : 12\n"
            "\n"
            "   node object id: 12\n"
            "   OzObjDepNode\n"
            "      object name                   : OzDynObj\n"
            "      target links                  : 1\n"
            "      source links                  : 0\n"
            "n2 node object id : 13\n"
            "\n"
            "   node object id: 13\n"
            "   OzObjDepNode\n"
            "      object name                   : OzDynObj\n"
            "      target links                  : 0\n"
            "      source links                  : 1\n");
}

TEST(OzObjDependencyValidate, DumpsANodeThatIsLinkedToItselfUnderBothHeadings)
{
  Fixture f;
  f.record(&f.a, &f.b, CREATION);
  f.record(&f.b, &f.b, CREATION);
  f.backward(&f.b, &f.b)->node = f.node(&f.a);
  f.repair = [&f] { f.backward(&f.b, &f.b)->node = f.node(&f.b); };
  TextJournal journal;

  f.graph.is_valid(&journal);

  std::string const text = journal.text();
  std::string const node = "\n"
                           "   node object id: 13\n"
                           "   OzObjDepNode\n"
                           "      object name                   : OzDynObj\n"
                           "      target links                  : 1\n"
                           "      source links                  : 2\n";
  EXPECT_EQ(text.substr(0, text.find("error 8")),
            "error 10: link from target n2 to source n1 has wrong node\n"
            "n1 node object id : 13\n" +
                node + "n2 node object id : 13\n" + node);
}

TEST(OzObjDependencyValidate, DumpsTheOneNodeOfAFaultInPlainFormat)
{
  Fixture f;
  f.record(&f.a, nullptr, DELETION);
  Probe::leaves(f.graph).erase(f.node(nullptr));
  TextJournal journal;

  f.graph.is_valid(&journal);

  EXPECT_EQ(journal.text(), "error 2: null-object-node n1 neither root nor leaf\n"
                            "n1 node object id : NULL\n"
                            "\n"
                            "   node object id: NULL\n"
                            "   OzObjDepNode\n"
                            "      object name                   : NULL\n"
                            "      target links                  : 0\n"
                            "      source links                  : 1\n");
}

TEST(OzObjDependencyValidate, GoesOnByTypeAfterAWrongLinkToTheNullObject)
{
  Fixture f;
  f.record(&f.a, nullptr, DELETION);
  f.record(&f.b, nullptr, DELETION);
  f.retype(&f.a, nullptr, MODIFICATION);
  TextJournal journal;

  EXPECT_FALSE(f.graph.is_valid(&journal));

  EXPECT_EQ(error_lines(journal.text()),
            "error 15: null-object-node n2 linked to source n1 with dependency type which is not DELETION\n"
            "error 17: target n2 of MODIFICATION has more than one source\n"
            "error 24: sources of n1 have different dependency types\n");
}

TEST(OzObjDependencyValidate, WantsASiblingOfTheSameQualifierForEachPart)
{
  Fixture f;
  f.record_parts(&f.a, {&f.b, &f.c}, SPLIT);
  for (OzObjDepLink* link : {f.forward(&f.a, &f.c), f.backward(&f.a, &f.c)})
  {
    link->has_target_qualifier = true;
    link->target_qualifier = 2;
  }
  TextJournal journal;

  EXPECT_FALSE(f.graph.is_valid(&journal));

  EXPECT_EQ(error_lines(journal.text()), "error 21: source n1 of SPLIT has only one target n2\n"
                                         "error 21: source n1 of SPLIT has only one target n2\n");
}

TEST(OzObjDependencyValidate, TakesAPartWithAnotherQualifierForNoSibling)
{
  Fixture f;
  f.record_parts(&f.a, {&f.b, &f.c}, SPLIT);
  int qualifier = 2;
  for (OzDynObj const* part : {&f.b, &f.c})
  {
    for (OzObjDepLink* link : {f.forward(&f.a, part), f.backward(&f.a, part)})
    {
      link->has_target_qualifier = true;
      link->target_qualifier = qualifier;
    }
    ++qualifier;
  }
  TextJournal journal;

  EXPECT_FALSE(f.graph.is_valid(&journal));

  EXPECT_EQ(error_lines(journal.text()), "error 21: source n1 of SPLIT has only one target n2\n"
                                         "error 21: source n1 of SPLIT has only one target n2\n");
}

TEST(OzObjDependencyValidate, DoesNotCompareTheValuesOfAQualifierThatIsAtOneEndOnly)
{
  Fixture f;
  f.record(&f.a, &f.b, MODIFICATION, &FIVE);
  f.backward(&f.a, &f.b)->has_target_qualifier = false;
  f.backward(&f.a, &f.b)->target_qualifier = -1;
  TextJournal journal;

  EXPECT_FALSE(f.graph.is_valid(&journal));

  EXPECT_EQ(error_lines(journal.text()),
            "error 12: pair of links between source n1 and target n2 do not both have a target qualifier\n");
}

TEST(OzObjDependencyValidate, ChecksThePlaceOfANodeThatTheMapDoesNotKnow)
{
  Fixture f;
  f.record(&f.a, &f.b, MODIFICATION);
  OzObjDepNode* const lost = f.node(&f.b);
  Probe::leaves(f.graph).erase(lost);
  Probe::nodes(f.graph).erase(&f.b);
  f.repair = [&f, lost] { Probe::nodes(f.graph).insert(&f.b, lost); };
  TextJournal journal;

  EXPECT_FALSE(f.graph.is_valid(&journal));

  EXPECT_EQ(error_lines(journal.text()), "error 1: node n1 is not stored in object-node-map\n"
                                         "error 5: node n1 without targets not in leaves\n");
}

TEST(OzObjDependencyValidate, TellsOfADeletionThatComesFromNothingForBothItsEnds)
{
  Fixture f;
  f.record(nullptr, &f.a, CREATION);
  f.retype(nullptr, &f.a, DELETION);
  TextJournal journal;

  EXPECT_FALSE(f.graph.is_valid(&journal));

  EXPECT_EQ(error_lines(journal.text()),
            "error 14: null-object-node n1 linked to target n2 with dependency type which is not CREATION\n"
            "error 16: target n2 of DELETION link to source n1 is not null-object-node\n");
}

TEST(OzObjDependencyValidate, WalksUpFromEachLeafOnce)
{
  Fixture f;
  f.record(&f.a, &f.b, CREATION);
  f.record(&f.b, &f.c, CREATION);
  Probe::leaves(f.graph).insert(f.node(&f.b)); // a leaf on the way up from another one
  Probe::roots(f.graph).erase(f.node(&f.a));
  TextJournal journal;

  EXPECT_FALSE(f.graph.is_valid(&journal));

  EXPECT_EQ(error_lines(journal.text()),
            "error 27: node n1 (source of n2) has no sources but is not in roots\n"
            "error 27: node n1 (source of n2) has no sources but is not in roots\n");
}

TEST(OzObjDependencyValidate, TellsAQualifierOfMinusOneFromNone)
{
  Fixture f;
  f.record_parts(&f.a, {&f.b, &f.c}, SPLIT);
  for (OzObjDepLink* link : {f.forward(&f.a, &f.c), f.backward(&f.a, &f.c)})
    link->has_target_qualifier = true;
  TextJournal journal;

  EXPECT_FALSE(f.graph.is_valid(&journal));

  EXPECT_EQ(error_lines(journal.text()), "error 21: source n1 of SPLIT has only one target n2\n"
                                         "error 21: source n1 of SPLIT has only one target n2\n");
}

TEST(OzObjDependencyValidate, ComparesAllSourcesWithTheFirst)
{
  Fixture f;
  f.record(&f.a, &f.e, ABSORPTION);
  f.record(&f.b, &f.e, ABSORPTION);
  f.record(&f.c, &f.e, ABSORPTION);
  std::vector<OzObjDepLink*> links;
  for (OzObjDepLink* link : f.node(&f.e)->source_links)
    links.push_back(link);
  for (OzObjDepLink* link : {links[1], links[2]})
  {
    link->has_target_qualifier = true;
    link->target_qualifier = 7;
    OzObjDepLink* const partner = link->node->target_link_map.value(f.node(&f.e));
    partner->has_target_qualifier = true;
    partner->target_qualifier = 7;
  }
  TextJournal journal;

  EXPECT_FALSE(f.graph.is_valid(&journal));

  EXPECT_EQ(error_lines(journal.text()), "error 25: not all sources of n1 have target qualifiers\n"
                                         "error 25: not all sources of n1 have target qualifiers\n");
}

TEST(OzObjDependencyValidate, ReportsAndSkipsNullEntries)
{
  Fixture f;
  f.record(&f.a, &f.b, CREATION);
  f.record(&f.c, &f.b, CREATION);
  Probe::roots(f.graph).insert(nullptr);
  Probe::leaves(f.graph).insert(nullptr);
  f.node(&f.a)->target_links.insert(nullptr);
  f.node(&f.b)->source_links.insert(nullptr);
  ReportRecorder const recorder;

  EXPECT_TRUE(f.graph.is_valid(nullptr));

  // Once each, and the source of b in both walks.
  EXPECT_EQ(recorder.units(), reports(5, "ozobjdependency_validate.cpp"));
  f.node(&f.a)->target_links.erase(nullptr);
  f.node(&f.b)->source_links.erase(nullptr);
  Probe::roots(f.graph).erase(nullptr);
  Probe::leaves(f.graph).erase(nullptr);
}

TEST(OzObjDependencyValidate, GoesOnAlongCycles)
{
  Fixture f;
  f.record(&f.a, &f.b, CREATION);
  f.record(&f.b, &f.c, CREATION);
  f.record(&f.c, &f.b, CREATION);

  EXPECT_TRUE(f.graph.is_valid(nullptr));
}

TEST(OzObjDependencyValidate, HasTheTextForNoErrorAndNoneForUnknownCodes)
{
  TextJournal journal;
  bool valid = true;

  Probe::report_error(valid, 0, &journal, false, nullptr, nullptr);
  EXPECT_FALSE(valid);
  Probe::report_error(valid, 28, &journal, false, nullptr, nullptr);
  Probe::report_error(valid, -1, &journal, true, nullptr, nullptr);

  EXPECT_EQ(journal.text(), "error 0: no error\n"
                            "error 28: \n"
                            "xxx-1n1xn2x [color=\"red\",label=\"error -1: \\n\"];\n");
}

TEST(OzObjDependencyValidate, ChecksAChainLongerThanAnyStack)
{
  std::vector<Thing> things(300000);
  OzObjDependency graph;
  for (std::size_t i = 1; i < things.size(); ++i)
    graph.record_dependency(&things[i - 1], &things[i], MODIFICATION, nullptr, nullptr);

  EXPECT_TRUE(graph.is_valid(nullptr));
}
