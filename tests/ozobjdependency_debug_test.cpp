#include "dependency_types.h"
#include "ozobjdependency.h"
#include "ozobject.h"
#include "ozstandardattribs.h"

#include "report_recorder.h"
#include "text_journal.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{
/// An object of a model that can bear a name. Its identity is drawn, so dumps of it are compared by parts.
class ModelObject : public OzObject
{
public:
  OzDynObj* clone() const override { return new ModelObject(*this); }
};

class NodeFilter : public OzObjectDependencyNodeFilter
{
public:
  explicit NodeFilter(std::function<bool(OzDynObj const*)> filter_question)
    : question(std::move(filter_question))
  {
  }
  bool accept(OzDynObj const* object) const override { return question(object); }

private:
  std::function<bool(OzDynObj const*)> question;
};

/// Refuses what it is told to, and notes what it was asked, as "source>target" by identity.
class LinkFilter : public OzObjectDependencyFilter
{
public:
  bool accept(OzDynObj const* source, OzDynObj const* target, OzObjectDependency::Type type, int separator,
              int const* qualifier, OzObjectDependencyRole const* role) override
  {
    auto const name = [](OzDynObj const* object)
    { return object != nullptr ? std::to_string(object->identity()) : std::string("NULL"); };
    asked.push_back(name(source) + ">" + name(target) + " " + std::to_string(type) + " " +
                    std::to_string(separator) + " " +
                    (qualifier != nullptr ? std::to_string(*qualifier) : std::string("-")) +
                    (role != nullptr ? " role" : ""));
    return pass;
  }
  bool pass = true;
  std::vector<std::string> asked;
};

/// Notes at each flush whether a line has just ended.
class LineJournal : public OzJournal
{
public:
  void flush() override
  {
    ++flushes;
    in_step = in_step && lines == flushes && ends_line;
  }
  int lines = 0;
  int flushes = 0;
  bool in_step = true; // one flush at the end of each line

protected:
  void append_to_journal(OzString const& text) override
  {
    ends_line = text == "\n";
    for (char const* c = text.as_const_c_string(); *c != '\0'; ++c)
      lines += *c == '\n' ? 1 : 0;
  }

private:
  bool ends_line = false;
};

/// Counts the nodes of a plain dump whose text would be too long to keep.
class NodeCounter : public OzJournal
{
public:
  void flush() override {}
  std::size_t nodes = 0;

protected:
  void append_to_journal(OzString const& text) override
  {
    if (text == "node object id: ")
      ++nodes;
  }
};

std::string dump(OzObjDependency const& graph, OzDebug level, bool check_integrity = false, int indent = 0)
{
  TextJournal journal;
  graph.debug(journal, level, check_integrity, indent);
  return journal.text();
}

/// What the drawing program says of a text: its exit code, or -1 if it is not installed.
int draw(std::string const& text)
{
  if (std::system("command -v dot >/dev/null 2>&1") != 0)
    return -1;

  std::string const file = testing::TempDir() + "oz_drawing_" + std::to_string(getpid()) + ".dot";
  std::ofstream(file) << text;
  int const result = std::system(("dot -Tsvg -o /dev/null '" + file + "' >/dev/null 2>&1").c_str());
  std::remove(file.c_str());
  return result;
}

/// The dotty text. One that is a whole graph is also shown to the drawing program, where that is installed.
std::string drawing(OzObjDependency& graph, OzDebug level)
{
  graph.set_dotty_output_format(true);
  std::string const text = dump(graph, level);
  graph.set_dotty_output_format(false);
  if (level >= OZ_DEBUG_CONTENTS)
  {
    EXPECT_LE(draw(text), 0) << text;
  }
  return text;
}

/// A history of four objects: 12 is split into 13 and 14, of which one is changed into 15.
struct History
{
  History()
  {
    ThingList source{&a};
    ThingList parts{&c, &b};
    int const three = 3;
    graph.new_separator();
    EXPECT_TRUE(graph.record_dependency(&source, &parts, SPLIT, &three, nullptr));
    graph.new_separator();
    EXPECT_TRUE(graph.record_dependency(&b, &d, MODIFICATION, nullptr, nullptr));
  }

  Thing a{12};
  Thing b{13};
  Thing c{14};
  Thing d{15};
  OzObjDependency graph;
};

char const* const HEADER = "OzObjDependency\n"
                           "   number of nodes               : 4\n"
                           "   number of roots               : 1\n"
                           "   number of leafs               : 2\n";

char const* const NODE_LINES = "\n"
                               "      level 0:\n"
                               "\n"
                               "      node object id: 12\n"
                               "      OzObjDepNode\n"
                               "         object name                   : OzDynObj\n"
                               "         target links                  : 2\n"
                               "         source links                  : 0\n"
                               "\n"
                               "      level 1:\n"
                               "\n"
                               "      node object id: 13\n"
                               "      OzObjDepNode\n"
                               "         object name                   : OzDynObj\n"
                               "         target links                  : 1\n"
                               "         source links                  : 1\n"
                               "\n"
                               "      node object id: 14\n"
                               "      OzObjDepNode\n"
                               "         object name                   : OzDynObj\n"
                               "         target links                  : 0\n"
                               "         source links                  : 1\n"
                               "\n"
                               "      level 2:\n"
                               "\n"
                               "      node object id: 15\n"
                               "      OzObjDepNode\n"
                               "         object name                   : OzDynObj\n"
                               "         target links                  : 0\n"
                               "         source links                  : 1\n";

/// The node ids of a plain dump, in order.
std::vector<std::string> listed(std::string const& text)
{
  std::string const mark = "node object id: ";
  std::vector<std::string> ids;
  for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1))
  {
    std::size_t const start = at + mark.size();
    ids.push_back(text.substr(start, text.find('\n', start) - start));
  }
  return ids;
}

typedef std::vector<std::string> Ids;
} // namespace

TEST(OzObjDependencyDebug, WritesNothingAtLevelOff)
{
  History const h;

  EXPECT_EQ(dump(h.graph, OZ_DEBUG_OFF), "");
}

TEST(OzObjDependencyDebug, WritesTheCountsAtLevelSummary)
{
  History const h;

  EXPECT_EQ(dump(h.graph, OZ_DEBUG_SUMMARY), HEADER);
}

TEST(OzObjDependencyDebug, ListsTheNodesByLevelAtLevelContents)
{
  History const h;

  EXPECT_EQ(dump(h.graph, OZ_DEBUG_CONTENTS),
            std::string(HEADER) + "   contents                      :\n" + NODE_LINES);
}

TEST(OzObjDependencyDebug, ListsTheLinksTooAtLevelDetail)
{
  History const h;

  EXPECT_EQ(dump(h.graph, OZ_DEBUG_DETAIL), std::string(HEADER) +
                                                "   contents                      :\n"
                                                "\n"
                                                "      level 0:\n"
                                                "\n"
                                                "      node object id: 12\n"
                                                "      OzObjDepNode\n"
                                                "         object name                   : OzDynObj\n"
                                                "         target links                  : 2\n"
                                                "            OzObjDepLink\n"
                                                "               object name                : OzDynObj\n"
                                                "               dependency_type            : SPLIT\n"
                                                "               target qualifier           : 3\n"
                                                "               node object id             : 13\n"
                                                "               separator                  : 1\n"
                                                "            OzObjDepLink\n"
                                                "               object name                : OzDynObj\n"
                                                "               dependency_type            : SPLIT\n"
                                                "               target qualifier           : 3\n"
                                                "               node object id             : 14\n"
                                                "               separator                  : 1\n"
                                                "         source links                  : 0\n"
                                                "\n"
                                                "      level 1:\n"
                                                "\n"
                                                "      node object id: 13\n"
                                                "      OzObjDepNode\n"
                                                "         object name                   : OzDynObj\n"
                                                "         target links                  : 1\n"
                                                "            OzObjDepLink\n"
                                                "               object name                : OzDynObj\n"
                                                "               dependency_type            : MODIFICATION\n"
                                                "               target qualifier           : -\n"
                                                "               node object id             : 15\n"
                                                "               separator                  : 2\n"
                                                "         source links                  : 1\n"
                                                "            OzObjDepLink\n"
                                                "               object name                : OzDynObj\n"
                                                "               dependency_type            : SPLIT\n"
                                                "               target qualifier           : 3\n"
                                                "               node object id             : 12\n"
                                                "               separator                  : 1\n"
                                                "\n"
                                                "      node object id: 14\n"
                                                "      OzObjDepNode\n"
                                                "         object name                   : OzDynObj\n"
                                                "         target links                  : 0\n"
                                                "         source links                  : 1\n"
                                                "            OzObjDepLink\n"
                                                "               object name                : OzDynObj\n"
                                                "               dependency_type            : SPLIT\n"
                                                "               target qualifier           : 3\n"
                                                "               node object id             : 12\n"
                                                "               separator                  : 1\n"
                                                "\n"
                                                "      level 2:\n"
                                                "\n"
                                                "      node object id: 15\n"
                                                "      OzObjDepNode\n"
                                                "         object name                   : OzDynObj\n"
                                                "         target links                  : 0\n"
                                                "         source links                  : 1\n"
                                                "            OzObjDepLink\n"
                                                "               object name                : OzDynObj\n"
                                                "               dependency_type            : MODIFICATION\n"
                                                "               target qualifier           : -\n"
                                                "               node object id             : 13\n"
                                                "               separator                  : 2\n");
}

TEST(OzObjDependencyDebug, IndentsEachLine)
{
  Thing a(12);
  OzObjDependency graph;
  graph.record_dependency(&a, nullptr, DELETION, nullptr, nullptr);

  EXPECT_EQ(dump(graph, OZ_DEBUG_CONTENTS, true, 4), "    check integrity of OzObjDependency\n"
                                                     "    OzObjDependency is valid\n"
                                                     "    OzObjDependency\n"
                                                     "       number of nodes               : 2\n"
                                                     "       number of roots               : 1\n"
                                                     "       number of leafs               : 1\n"
                                                     "       contents                      :\n"
                                                     "\n"
                                                     "          level 0:\n"
                                                     "\n"
                                                     "          node object id: 12\n"
                                                     "          OzObjDepNode\n"
                                                     "             object name                   : OzDynObj\n"
                                                     "             target links                  : 1\n"
                                                     "             source links                  : 0\n"
                                                     "\n"
                                                     "          level 1:\n"
                                                     "\n"
                                                     "          node object id: NULL\n"
                                                     "          OzObjDepNode\n"
                                                     "             object name                   : NULL\n"
                                                     "             target links                  : 0\n"
                                                     "             source links                  : 1\n");
}

TEST(OzObjDependencyDebug, ChecksIntegrityOnRequestAtAnyLevel)
{
  Thing b(13);
  OzObjDependency graph;
  graph.record_dependency(nullptr, &b, ABSORPTION, nullptr, nullptr);

  EXPECT_EQ(dump(graph, OZ_DEBUG_OFF, true),
            "check integrity of OzObjDependency\n"
            "error 14: null-object-node n1 linked to target n2 with dependency type which is not CREATION\n"
            "n1 node object id : NULL\n"
            "\n"
            "   node object id: NULL\n"
            "   OzObjDepNode\n"
            "      object name                   : NULL\n"
            "      target links                  : 1\n"
            "      source links                  : 0\n"
            "n2 node object id : 13\n"
            "\n"
            "   node object id: 13\n"
            "   OzObjDepNode\n"
            "      object name                   : OzDynObj\n"
            "      target links                  : 0\n"
            "      source links                  : 1\n"
            "OzObjDependency is not valid\n");
}

TEST(OzObjDependencyDebug, LeavesADrawingBelowLevelContentsOpen)
{
  History h;

  EXPECT_EQ(drawing(h.graph, OZ_DEBUG_OFF), "strict digraph ObjectDependency {\n");
  EXPECT_EQ(drawing(h.graph, OZ_DEBUG_SUMMARY), "strict digraph ObjectDependency {\n");
}

TEST(OzObjDependencyDebug, DrawsTheNodesAtLevelContents)
{
  History h;
  std::string const text = drawing(h.graph, OZ_DEBUG_CONTENTS);

  EXPECT_EQ(text, "strict digraph ObjectDependency {\n"
                  "12 [label=\"12 OzDynObj\"];\n"
                  "13 [label=\"13 OzDynObj\"];\n"
                  "14 [label=\"14 OzDynObj\"];\n"
                  "15 [label=\"15 OzDynObj\"];\n"
                  "}\n");
}

TEST(OzObjDependencyDebug, DrawsEachDependencyOnceAtLevelDetail)
{
  History h;

  EXPECT_EQ(drawing(h.graph, OZ_DEBUG_DETAIL),
            "strict digraph ObjectDependency {\n"
            "12 [label=\"12 OzDynObj\"];\n"
            "12  -> {13} [label=\"SPLIT 3\\nseparator 1\",color=\"green\"];\n"
            "12  -> {14} [label=\"SPLIT 3\\nseparator 1\",color=\"green\"];\n"
            "13 [label=\"13 OzDynObj\"];\n"
            "13  -> {15} [label=\"MODIFICATION -\\nseparator 2\",color=\"blue\"];\n"
            "14 [label=\"14 OzDynObj\"];\n"
            "15 [label=\"15 OzDynObj\"];\n"
            "}\n");
}

TEST(OzObjDependencyDebug, DrawsTheNullObjectAtBothEnds)
{
  Thing a(12);
  OzObjDependency graph;
  graph.record_dependency(nullptr, &a, CREATION, nullptr, nullptr);
  graph.record_dependency(&a, nullptr, DELETION, nullptr, nullptr);

  EXPECT_EQ(drawing(graph, OZ_DEBUG_DETAIL),
            "strict digraph ObjectDependency {\n"
            "NULL [label=\"NULL NULL\"];\n"
            "NULL  -> {12} [label=\"CREATION -\\nseparator 0\",color=\"black\"];\n"
            "12 [label=\"12 OzDynObj\"];\n"
            "12  -> {NULL} [label=\"DELETION -\\nseparator 0\",color=\"black\"];\n"
            "}\n");
}

TEST(OzObjDependencyDebug, DrawsFaultsFirstAndThenTheGraph)
{
  Thing b(13);
  OzObjDependency graph;
  graph.record_dependency(nullptr, &b, ABSORPTION, nullptr, nullptr);

  EXPECT_EQ(
      drawing(graph, OZ_DEBUG_DETAIL),
      "strict digraph ObjectDependency {\n"
      "xxx14n1NULLn213 [color=\"red\",label=\"error 14: \\nnull-object-node n1 linked to target n2 with "
      "dependency type which is not CREATION\\nn1 = NULL\\nn2 = 13\"];\n"
      "NULL [color=\"red\"];\n"
      "13 [color=\"red\"];\n"
      "xxx [label=\"OzObjDependecy is invalid\",color=\"red\"];\n"
      "NULL [label=\"NULL NULL\"];\n"
      "NULL  -> {13} [label=\"ABSORPTION -\\nseparator 0\",color=\"black\"];\n"
      "13 [label=\"13 OzDynObj\"];\n"
      "}\n");
}

TEST(OzObjDependencyDebug, ColoursDependenciesBySeparator)
{
  char const* const colours[] = {"black",     "green",     "blue",       "yellow2",        "magenta",
                                 "cyan",      "burlywood", "gray",       "yellow3",        "DarkGreen",
                                 "SteelBlue", "yellow4",   "BlueViolet", "MediumSeaGreen", "brown",
                                 "black",     "black",     "black"};
  for (int separator = 0; separator <= 17; ++separator)
  {
    Thing a(12);
    Thing b(13);
    OzObjDependency graph;
    for (int i = 0; i < separator; ++i)
      graph.new_separator();
    graph.record_dependency(&a, &b, MODIFICATION, nullptr, nullptr);

    EXPECT_EQ(drawing(graph, OZ_DEBUG_DETAIL), "strict digraph ObjectDependency {\n"
                                               "12 [label=\"12 OzDynObj\"];\n"
                                               "12  -> {13} [label=\"MODIFICATION -\\nseparator " +
                                                   std::to_string(separator) + "\",color=\"" +
                                                   colours[separator] +
                                                   "\"];\n"
                                                   "13 [label=\"13 OzDynObj\"];\n"
                                                   "}\n");
  }
}

TEST(OzObjDependencyDebug, DrawsASeparatorBelowZeroInBlack)
{
  Thing a(12);
  Thing b(13);
  OzObjDependency graph;
  graph.record_dependency(&a, &b, MODIFICATION, nullptr, nullptr);
  Probe::forward(graph, &a, &b)->separator = -1;
  TextJournal journal;

  Probe::debug_link(Probe::forward(graph, &a, &b), journal, OZ_DEBUG_DETAIL, 0, true);

  EXPECT_EQ(journal.text(), " -> {13} [label=\"MODIFICATION -\\nseparator -1\",color=\"black\"];\n");
}

TEST(OzObjDependencyDebug, NamesAllTypes)
{
  char const* const names[] = {"UNSPECIFIED", "TRANSFER",   "CREATION",   "DELETION",    "MODIFICATION",
                               "SPLIT",       "ABSORPTION", "CONVERSION", "CONTAINMENT", "unknown"};
  Thing a(12);
  Thing b(13);
  OzObjDependency graph;
  graph.record_dependency(&a, &b, MODIFICATION, nullptr, nullptr);
  OzObjDepLink* const link = Probe::forward(graph, &a, &b);

  for (int type = 0; type <= 9; ++type)
  {
    link->dependency_type = static_cast<OzObjectDependency::Type>(type);
    TextJournal journal;
    Probe::debug_link(link, journal, OZ_DEBUG_CONTENTS, 2, false);
    EXPECT_EQ(journal.text(), std::string("  OzObjDepLink\n"
                                          "     object name                : OzDynObj\n"
                                          "     dependency_type            : ") +
                                  names[type] +
                                  "\n"
                                  "     target qualifier           : -\n"
                                  "     node object id             : 13\n"
                                  "     separator                  : 0\n");
  }
  link->dependency_type = MODIFICATION;
}

TEST(OzObjDependencyDebug, WritesTheNodeOfALinkAtLevelDetail)
{
  Thing a(12);
  Thing b(13);
  OzObjDependency graph;
  graph.record_dependency(&a, &b, MODIFICATION, nullptr, nullptr);
  TextJournal journal;

  Probe::debug_link(Probe::forward(graph, &a, &b), journal, OZ_DEBUG_DETAIL, 0, false);

  EXPECT_EQ(journal.take(), "OzObjDepLink\n"
                            "   object name                : OzDynObj\n"
                            "   dependency_type            : MODIFICATION\n"
                            "   target qualifier           : -\n"
                            "   node object id             : 13\n"
                            "\n"
                            "   node object id: 13\n"
                            "   OzObjDepNode\n"
                            "      object name                   : OzDynObj\n"
                            "      target links                  : 0\n"
                            "      source links                  : 1\n"
                            "   separator                  : 0\n");
  Probe::debug_link(Probe::forward(graph, &a, &b), journal, OZ_DEBUG_SUMMARY, 0, false);
  EXPECT_EQ(journal.text(), "");
}

TEST(OzObjDependencyDebug, NamesObjectsByTypeAndNameAttribute)
{
  ModelObject named;
  named.add_attrib(new OzNameAttrib("slot"));
  ModelObject unnamed;
  OzObjDependency graph;
  graph.record_dependency(&named, &unnamed, MODIFICATION, nullptr, nullptr);

  std::string const text = dump(graph, OZ_DEBUG_CONTENTS);

  EXPECT_NE(text.find("object name                   : OzObject: slot\n"), std::string::npos) << text;
  EXPECT_NE(text.find("object name                   : OzObject\n"), std::string::npos) << text;
  EXPECT_NE(drawing(graph, OZ_DEBUG_CONTENTS).find(" OzObject: slot\"];\n"), std::string::npos);
}

TEST(OzObjDependencyDebug, SortsByIdentityWhateverTheAddresses)
{
  std::vector<std::string> texts;
  for (bool const backwards : {false, true})
  {
    std::vector<std::unique_ptr<Thing>> things(40);
    for (std::size_t i = 0; i < things.size(); ++i)
    {
      std::size_t const at = backwards ? things.size() - 1 - i : i;
      things[at] = std::make_unique<Thing>(static_cast<int>(100 + at));
    }
    OzObjDependency graph;
    for (std::size_t i = 0; i < 20; ++i)
    {
      std::size_t const at = backwards ? 19 - i : i;
      graph.record_dependency(things[at].get(), things[20 + (at * 7) % 20].get(), CREATION, nullptr, nullptr);
      graph.record_dependency(things[at].get(), things[20 + (at * 3 + 1) % 20].get(), CREATION, nullptr,
                              nullptr);
    }
    texts.push_back(dump(graph, OZ_DEBUG_DETAIL) + drawing(graph, OZ_DEBUG_DETAIL));
  }

  EXPECT_EQ(texts[0], texts[1]);
}

TEST(OzObjDependencyDebug, SortsTheNullObjectAsIdentityZero)
{
  Thing below(-3);
  Thing above(12);
  Thing first(20);
  Thing second(21);
  OzObjDependency graph;
  graph.record_dependency(&above, &first, MODIFICATION, nullptr, nullptr);
  graph.record_dependency(nullptr, &second, CREATION, nullptr, nullptr);
  graph.record_dependency(&below, &second, MODIFICATION, nullptr, nullptr);

  EXPECT_EQ(dump(graph, OZ_DEBUG_CONTENTS), "OzObjDependency\n"
                                            "   number of nodes               : 5\n"
                                            "   number of roots               : 3\n"
                                            "   number of leafs               : 2\n"
                                            "   contents                      :\n"
                                            "\n"
                                            "      level 0:\n"
                                            "\n"
                                            "      node object id: -3\n"
                                            "      OzObjDepNode\n"
                                            "         object name                   : OzDynObj\n"
                                            "         target links                  : 1\n"
                                            "         source links                  : 0\n"
                                            "\n"
                                            "      node object id: NULL\n"
                                            "      OzObjDepNode\n"
                                            "         object name                   : NULL\n"
                                            "         target links                  : 1\n"
                                            "         source links                  : 0\n"
                                            "\n"
                                            "      node object id: 12\n"
                                            "      OzObjDepNode\n"
                                            "         object name                   : OzDynObj\n"
                                            "         target links                  : 1\n"
                                            "         source links                  : 0\n"
                                            "\n"
                                            "      level 1:\n"
                                            "\n"
                                            "      node object id: 20\n"
                                            "      OzObjDepNode\n"
                                            "         object name                   : OzDynObj\n"
                                            "         target links                  : 0\n"
                                            "         source links                  : 1\n"
                                            "\n"
                                            "      node object id: 21\n"
                                            "      OzObjDepNode\n"
                                            "         object name                   : OzDynObj\n"
                                            "         target links                  : 0\n"
                                            "         source links                  : 2\n");
}

TEST(OzObjDependencyDebug, SortsALinkToTheNullObjectAsIdentityZero)
{
  Thing a(12);
  Thing below(-3);
  Thing above(7);
  OzObjDependency graph;
  graph.record_dependency(&a, &above, CREATION, nullptr, nullptr);
  graph.record_dependency(&a, nullptr, DELETION, nullptr, nullptr);
  graph.record_dependency(&a, &below, CREATION, nullptr, nullptr);
  TextJournal journal;

  Probe::debug_node(Probe::node(graph, &a), journal, OZ_DEBUG_DETAIL, 0, true);

  EXPECT_EQ(journal.text(), "12 [label=\"12 OzDynObj\"];\n"
                            "12  -> {-3} [label=\"CREATION -\\nseparator 0\",color=\"black\"];\n"
                            "12  -> {NULL} [label=\"DELETION -\\nseparator 0\",color=\"black\"];\n"
                            "12  -> {7} [label=\"CREATION -\\nseparator 0\",color=\"black\"];\n");
}

TEST(OzObjDependencyDebug, WritesNoNodeAtLevelOff)
{
  History h;
  TextJournal journal;

  Probe::debug_node(Probe::node(h.graph, &h.a), journal, OZ_DEBUG_OFF, 0, false);
  Probe::debug_node(Probe::node(h.graph, &h.a), journal, OZ_DEBUG_OFF, 0, true);

  EXPECT_EQ(journal.text(), "");
}

TEST(OzObjDependencyDebug, FlushesAtTheEndOfEachLineAndNowhereElse)
{
  for (bool const dotty : {false, true})
  {
    History h;
    h.graph.record_dependency(nullptr, &h.d, ABSORPTION, nullptr, nullptr); // which makes it invalid
    h.graph.set_dotty_output_format(dotty);
    LineJournal journal;

    h.graph.debug(journal, OZ_DEBUG_DETAIL, true, 0);

    EXPECT_GT(journal.lines, 10);
    EXPECT_EQ(journal.flushes, journal.lines);
    EXPECT_TRUE(journal.in_step);
  }
}

TEST(OzObjDependencyDebug, AsksTheOverridableCheckWhetherTheGraphIsValid)
{
  class Doubtful : public OzObjDependency
  {
  public:
    bool is_valid(OzJournal* journal) const override
    {
      *journal << "asked" << ozEndExpr;
      return false;
    }
  };
  Doubtful graph;

  EXPECT_EQ(dump(graph, OZ_DEBUG_OFF, true), "check integrity of OzObjDependency\n"
                                             "asked\n"
                                             "OzObjDependency is not valid\n");
  EXPECT_EQ(drawing(graph, OZ_DEBUG_OFF), "strict digraph ObjectDependency {\n"
                                          "asked\n"
                                          "xxx [label=\"OzObjDependecy is invalid\",color=\"red\"];\n");
}

TEST(OzObjDependencyDebug, PassesOverNullRecords)
{
  Thing a(12);
  Thing b(13);
  OzObjDependency graph;
  graph.record_dependency(&a, &b, MODIFICATION, nullptr, nullptr);
  std::string const text = dump(graph, OZ_DEBUG_DETAIL);
  OzObjDepNode* const node_a = Probe::node(graph, &a);
  OzObjDepNode* const node_b = Probe::node(graph, &b);
  node_a->target_links.insert(nullptr);
  node_b->source_links.insert(nullptr);
  ReportRecorder const recorder;

  EXPECT_EQ(dump(graph, OZ_DEBUG_DETAIL), text);

  EXPECT_EQ(recorder.units(), reports(0, ""));
  node_a->target_links.erase(nullptr);
  node_b->source_links.erase(nullptr);
}

TEST(OzObjDependencyDebug, PutsANodeOnTheLevelOfItsShortestWayFromARoot)
{
  Thing a(12);
  Thing b(13);
  Thing c(14);
  OzObjDependency graph;
  graph.record_dependency(&a, &b, CREATION, nullptr, nullptr);
  graph.record_dependency(&b, &c, CREATION, nullptr, nullptr);
  graph.record_dependency(&a, &c, CREATION, nullptr, nullptr);

  std::string const text = dump(graph, OZ_DEBUG_CONTENTS);

  EXPECT_EQ(listed(text), (Ids{"12", "13", "14"}));
  EXPECT_EQ(text.find("level 2:"), std::string::npos);
}

TEST(OzObjDependencyDebug, WritesALineForANullNode)
{
  OzObjDependency graph;
  Probe::roots(graph).insert(nullptr);
  ReportRecorder const recorder;

  EXPECT_EQ(dump(graph, OZ_DEBUG_CONTENTS), "OzObjDependency\n"
                                            "   number of nodes               : 0\n"
                                            "   number of roots               : 1\n"
                                            "   number of leafs               : 0\n"
                                            "   contents                      :\n"
                                            "\n"
                                            "      level 0:\n"
                                            "\n"
                                            "      node object id: NULL node\n");
  EXPECT_EQ(recorder.units(), reports(0, ""));
  Probe::roots(graph).erase(nullptr);
}

TEST(OzObjDependencyDebug, ReportsALinkWithoutANodeAndWritesNothingForIt)
{
  Thing a(12);
  Thing b(13);
  OzObjDependency graph;
  graph.record_dependency(&a, &b, MODIFICATION, nullptr, nullptr);
  OzObjDepNode* const node = Probe::node(graph, &b);
  Probe::forward(graph, &a, &b)->node = nullptr;
  {
    ReportRecorder const recorder;
    EXPECT_EQ(dump(graph, OZ_DEBUG_DETAIL), "OzObjDependency\n"
                                            "   number of nodes               : 2\n"
                                            "   number of roots               : 1\n"
                                            "   number of leafs               : 1\n"
                                            "   contents                      :\n"
                                            "\n"
                                            "      level 0:\n"
                                            "\n"
                                            "      node object id: 12\n"
                                            "      OzObjDepNode\n"
                                            "         object name                   : OzDynObj\n"
                                            "         target links                  : 1\n"
                                            "         source links                  : 0\n");
    EXPECT_EQ(recorder.units(), reports(1, "ozobjdependency_debug.cpp"));
  }
  TextJournal journal;
  OzObjDepLink* link = *Probe::node(graph, &a)->target_links.begin();
  {
    ReportRecorder const recorder;
    Probe::debug_node(Probe::node(graph, &a), journal, OZ_DEBUG_DETAIL, 0, true);
    EXPECT_EQ(journal.take(), "12 [label=\"12 OzDynObj\"];\n");
    EXPECT_EQ(recorder.units(), reports(1, "ozobjdependency_debug.cpp"));
  }
  Probe::debug_link(link, journal, OZ_DEBUG_DETAIL, 0, true);
  EXPECT_EQ(journal.text(), "");
  link->node = node;
}

TEST(OzObjDependencyDebug, LeavesOutANodeThatAFilterRefusesAndGoesOnBehindIt)
{
  History h;
  NodeFilter const not_13([](OzDynObj const* object)
                          { return object == nullptr || object->identity() != 13; });
  h.graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SELF, &not_13);

  // 15 has only the link to 13, which is left out, so it is not shown either.
  EXPECT_EQ(listed(dump(h.graph, OZ_DEBUG_CONTENTS)), (Ids{"12", "14"}));

  Thing e(16);
  h.graph.record_dependency(&h.d, &e, MODIFICATION, nullptr, nullptr);
  EXPECT_EQ(listed(dump(h.graph, OZ_DEBUG_CONTENTS)), (Ids{"12", "14", "15", "16"}));
}

TEST(OzObjDependencyDebug, AsksNodeFiltersAboutSelfSourcesAndTargets)
{
  // 12 to 13 and 14, 13 to 15: roots 12, leaves 14 and 15.
  struct
  {
    char const* what;
    OzObjectDependency::DebugNodeFilterType type;
    int accepted;
    Ids shown;
  } const cases[] = {
      {"only the root itself has no link that is shown", OzObjectDependency::NODE_FILTER_SELF, 12, {}},
      {"all come from 12", OzObjectDependency::NODE_FILTER_SOURCES, 12, {"12", "13", "14", "15"}},
      {"none comes from 13, which is no root", OzObjectDependency::NODE_FILTER_SOURCES, 13, {}},
      {"what leads to 15", OzObjectDependency::NODE_FILTER_TARGETS, 15, {"12", "13", "15"}},
      {"what leads to 14", OzObjectDependency::NODE_FILTER_TARGETS, 14, {"12", "14"}},
      {"both sides are to pass", OzObjectDependency::NODE_FILTER_SOURCES_AND_TARGETS, 15, {}},
  };
  for (auto const& c : cases)
  {
    History h;
    NodeFilter const filter([&c](OzDynObj const* object)
                            { return object != nullptr && object->identity() == c.accepted; });
    h.graph.add_debug_node_filter(c.type, &filter);

    EXPECT_EQ(listed(dump(h.graph, OZ_DEBUG_CONTENTS)), c.shown) << c.what;
  }
}

TEST(OzObjDependencyDebug, ShowsANodeWhoseSourcesAndTargetsBothPass)
{
  History h;
  NodeFilter const ends(
      [](OzDynObj const* object)
      { return object != nullptr && (object->identity() == 12 || object->identity() == 15); });
  h.graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SOURCES_AND_TARGETS, &ends);

  EXPECT_EQ(listed(dump(h.graph, OZ_DEBUG_CONTENTS)), (Ids{"12", "13", "15"}));
}

TEST(OzObjDependencyDebug, AsksAFilterAboutTheObjectItselfWhereThereIsNoList)
{
  Thing a(12);
  OzObjDependency graph;
  graph.record_dependency(nullptr, &a, CREATION, nullptr, nullptr);
  std::vector<OzDynObj const*> asked;
  NodeFilter const filter(
      [&asked](OzDynObj const* object)
      {
        asked.push_back(object);
        return true;
      });
  graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SOURCES, &filter);

  dump(graph, OZ_DEBUG_CONTENTS);

  // The null-object node has no list and 12 comes from nothing. Each is asked about for itself and for the
  // link to the other.
  EXPECT_EQ(asked, (std::vector<OzDynObj const*>{nullptr, &a, &a, nullptr}));
}

TEST(OzObjDependencyDebug, WantsAllNodeFiltersToPass)
{
  History h;
  NodeFilter const from_12([](OzDynObj const* object)
                           { return object != nullptr && object->identity() == 12; });
  NodeFilter const to_14([](OzDynObj const* object)
                         { return object != nullptr && object->identity() == 14; });
  h.graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SOURCES, &from_12);
  h.graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_TARGETS, &to_14);

  EXPECT_EQ(listed(dump(h.graph, OZ_DEBUG_CONTENTS)), (Ids{"12", "14"}));
  h.graph.remove_debug_node_filters();
  EXPECT_EQ(listed(dump(h.graph, OZ_DEBUG_CONTENTS)), (Ids{"12", "13", "14", "15"}));
  h.graph.remove_debug_node_filters();
}

TEST(OzObjDependencyDebug, AsksNoFurtherFilterOnceOneHasRefused)
{
  Thing a(12);
  OzObjDependency graph;
  graph.record_dependency(&a, nullptr, DELETION, nullptr, nullptr);
  NodeFilter const none([](OzDynObj const*) { return false; });
  int asked = 0;
  NodeFilter const counting(
      [&asked](OzDynObj const*)
      {
        ++asked;
        return true;
      });
  graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SELF, &none);
  graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SELF, &counting);

  EXPECT_EQ(listed(dump(graph, OZ_DEBUG_CONTENTS)), Ids{});
  EXPECT_EQ(asked, 0);
}

/// Tells how much an array has allocated.
struct FilterTypesCapacity : OzArray<OzObjectDependency::DebugNodeFilterType>
{
  static std::uint64_t of(OzArray<OzObjectDependency::DebugNodeFilterType> const& array)
  {
    return array.*(&FilterTypesCapacity::capacity);
  }
};
struct FiltersCapacity : OzArray<OzObjectDependencyNodeFilter const*>
{
  static std::uint64_t of(OzArray<OzObjectDependencyNodeFilter const*> const& array)
  {
    return array.*(&FiltersCapacity::capacity);
  }
};

TEST(OzObjDependencyDebug, KeepsNoMemoryForNodeFiltersThatWereRemoved)
{
  OzObjDependency graph;
  NodeFilter const all([](OzDynObj const*) { return true; });
  graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SELF, &all);

  graph.remove_debug_node_filters();

  EXPECT_EQ(FilterTypesCapacity::of(Probe::filter_types(graph)), 0u);
  EXPECT_EQ(FiltersCapacity::of(Probe::filters(graph)), 0u);
}

TEST(OzObjDependencyDebug, ReportsANullNodeFilterAndPassesItOver)
{
  Thing a(12);
  OzObjDependency graph;
  graph.record_dependency(&a, nullptr, DELETION, nullptr, nullptr);
  graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SELF, nullptr);
  ReportRecorder const recorder;

  EXPECT_EQ(listed(dump(graph, OZ_DEBUG_CONTENTS)), (Ids{"12", "NULL"}));

  // Each of the two nodes for itself and as the other's end.
  EXPECT_EQ(recorder.units(), reports(4, "ozobjdependency_debug.cpp"));
}

TEST(OzObjDependencyDebug, ReportsFilterArraysOfDifferentSizeAndUsesTheShorter)
{
  Thing a(12);
  OzObjDependency graph;
  graph.record_dependency(&a, nullptr, DELETION, nullptr, nullptr);
  NodeFilter const none([](OzDynObj const*) { return false; });
  graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SELF, &none);
  Probe::filter_types(graph).resize(0, true);
  ReportRecorder recorder;

  EXPECT_EQ(listed(dump(graph, OZ_DEBUG_CONTENTS)), (Ids{"12", "NULL"}));
  EXPECT_EQ(recorder.units(), reports(4, "ozobjdependency_debug.cpp"));

  recorder.clear();
  Probe::filter_types(graph).append(OzObjectDependency::NODE_FILTER_SELF);
  Probe::filters(graph).resize(0, true);
  EXPECT_EQ(listed(dump(graph, OZ_DEBUG_CONTENTS)), (Ids{"12", "NULL"}));
  EXPECT_EQ(recorder.units(), reports(4, "ozobjdependency_debug.cpp"));
}

TEST(OzObjDependencyDebug, HandsALinkFilterTheNodesOwnObjectFirstOnBothSides)
{
  Thing a(12);
  Thing b(13);
  CountingRole const role;
  int const five = 5;
  OzObjDependency graph;
  graph.new_separator();
  graph.record_dependency(&a, &b, MODIFICATION, &five, &role);
  LinkFilter filter;
  graph.set_debug_link_filter(&filter);

  dump(graph, OZ_DEBUG_CONTENTS);

  // 13 is the target, and yet stands first when its own record is asked about.
  EXPECT_EQ(filter.asked, (Ids{"12>13 4 1 5 role", "13>12 4 1 5 role"}));
}

TEST(OzObjDependencyDebug, LeavesOutNodesWhoseLinksAreAllRefused)
{
  History h;
  Thing alone(20);
  h.graph.record_dependency(&alone, nullptr, DELETION, nullptr, nullptr);
  OzObjDepNode* const node = Probe::node(h.graph, &alone);
  OzObjDepLink* backward = Probe::backward(h.graph, &alone, nullptr);
  OzObjDepLink* forward = Probe::forward(h.graph, &alone, nullptr);
  Probe::remove_source_link(Probe::node(h.graph, nullptr), backward);
  Probe::remove_target_link(node, forward);
  LinkFilter filter;
  filter.pass = false;
  h.graph.set_debug_link_filter(&filter);

  EXPECT_EQ(listed(dump(h.graph, OZ_DEBUG_CONTENTS)), Ids{"20"}) << "a node without any link stays";
  h.graph.reset_debug_link_filter();
  EXPECT_EQ(listed(dump(h.graph, OZ_DEBUG_CONTENTS)), (Ids{"12", "20", "13", "14", "15"}));
}

TEST(OzObjDependencyDebug, ShowsANodeOfWhichSomeLinksAreLeft)
{
  History h;
  NodeFilter const not_15([](OzDynObj const* object)
                          { return object == nullptr || object->identity() != 15; });
  h.graph.add_debug_node_filter(OzObjectDependency::NODE_FILTER_SELF, &not_15);

  std::string const text = dump(h.graph, OZ_DEBUG_CONTENTS);

  EXPECT_EQ(listed(text), (Ids{"12", "13", "14"}));
  EXPECT_NE(text.find("node object id: 13\n"
                      "      OzObjDepNode\n"
                      "         object name                   : OzDynObj\n"
                      "         target links                  : 0\n"
                      "         source links                  : 1\n"),
            std::string::npos)
      << text;
}

TEST(OzObjDependencyDebug, DumpsAChainLongerThanAnyStack)
{
  std::vector<Thing> things(300000);
  OzObjDependency graph;
  for (std::size_t i = 1; i < things.size(); ++i)
    graph.record_dependency(&things[i - 1], &things[i], MODIFICATION, nullptr, nullptr);
  NodeCounter journal;

  graph.debug(journal, OZ_DEBUG_CONTENTS, false, 0);

  EXPECT_EQ(journal.nodes, things.size());
}

TEST(OzObjDependencyDebug, WritesDrawingsThatTheDrawingProgramAccepts)
{
  if (draw("digraph {}") == -1)
    GTEST_SKIP() << "dot is not installed";
  ASSERT_NE(draw("strict digraph {"), 0) << "a drawing that is no graph is refused";

  History h;
  drawing(h.graph, OZ_DEBUG_CONTENTS);
  drawing(h.graph, OZ_DEBUG_DETAIL);

  ModelObject named;
  named.add_attrib(new OzNameAttrib("slot 1 (CUT)"));
  h.graph.record_dependency(nullptr, &named, ABSORPTION, nullptr, nullptr);
  h.graph.record_dependency(&named, nullptr, DELETION, nullptr, nullptr);
  h.graph.record_dependency(&h.c, &h.d, MODIFICATION, nullptr, nullptr);
  // With faults, and with a name that is no identifier.
  drawing(h.graph, OZ_DEBUG_CONTENTS);
  drawing(h.graph, OZ_DEBUG_DETAIL);
}
