#include "history.h"

#include "drawing_text.h"
#include "dxf_reader.h"
#include "find_contours.h"
#include "program_runner.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>

using namespace contours;

namespace
{

/// A line and an arc back to its start.
std::string const HALF_DISC =
    line_entity("CUT", 0, 0, 10, 0) + "0 ARC\n8 CUT\n10 5\n20 0\n40 5\n50 0\n51 180\n";

std::string content(std::string const& file)
{
  std::ifstream in(file, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

/// A word for the shell, whatever the place where the tree lies is called.
std::string quoted(std::string const& word)
{
  return "'" + word + "'";
}

bool drawing_program_is_installed()
{
  static bool const is_installed = std::system("command -v dot >/dev/null 2>&1") == 0;
  return is_installed;
}

/// The text of a file for Graphviz, which is also shown to the drawing program, where that is installed.
std::string drawable(std::string const& file)
{
  if (drawing_program_is_installed())
  {
    EXPECT_EQ(std::system(("dot -Tsvg -o /dev/null " + quoted(file) + " >/dev/null 2>&1").c_str()), 0)
        << content(file);
  }
  return content(file);
}

/// A folder of its own for each test.
class HistoryFiles : public testing::Test
{
protected:
  void SetUp() override
  {
    std::string name = (std::filesystem::temp_directory_path() / "oz-contours-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder = name;
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  std::string path(char const* name) const { return (folder / name).string(); }

  /// What the program, as a process of its own, writes to the file that `option` asks for. In a process of its own
  /// identities begin at 1.
  std::string written(std::string const& option, std::string const& arguments) const
  {
    std::string const file = path("written.dot");
    std::string const command =
        quoted(OZ_CONTOURS_PROGRAM) + " -q " + arguments + " " + option + " " + quoted(file) + " >/dev/null";
    int const status = std::system(command.c_str());
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) <= 1) << command;
    return drawable(file);
  }

  std::filesystem::path folder;
};

Drawing in_order(std::string const& entities)
{
  Drawing drawing = read_drawing(dxf_drawing(entities));
  order_entities(drawing);
  return drawing;
}

std::size_t count(std::string const& text, std::string const& part)
{
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1))
    ++found;
  return found;
}

/// Contours of three lines each, far from each other.
std::string triangles(int number)
{
  std::string entities;
  for (int i = 0; i < number; ++i)
    entities += line_entity("CUT", 20.0 * i, 0, 20.0 * i + 10, 0) +
                line_entity("CUT", 20.0 * i + 10, 0, 20.0 * i + 10, 10) +
                line_entity("CUT", 20.0 * i + 10, 10, 20.0 * i, 0);
  return entities;
}

} // namespace

TEST_F(HistoryFiles, OfThePlateAreThoseThatTheManualDraws)
{
  std::string const slots = "examples/data/plate.dxf --history-of 3 --history-of 9";

  EXPECT_EQ(written("--history", slots), content("docs/plate-history.dot"));
  EXPECT_EQ(written("--history-raw", slots), content("docs/plate-history-raw.dot"));
}

TEST_F(HistoryFiles, SimplifiedHaveEntitiesAndContoursAlone)
{
  std::ofstream(path("part.dxf")) << dxf_drawing(HALF_DISC + line_entity("CUT", 10, 0, 0, 0));

  EXPECT_EQ(written("-g", quoted(path("part.dxf"))), R"(strict digraph ObjectDependency {
1 [label="1 NamedObject: LINE #1"];
1  -> {13} [label="ABSORPTION -\nseparator 2",color="blue"];
5 [label="5 NamedObject: ARC #2"];
5  -> {13} [label="ABSORPTION -\nseparator 2",color="blue"];
9 [label="9 NamedObject: LINE #3"];
9  -> {13} [label="ABSORPTION -\nseparator 2",color="blue"];
13 [label="13 NamedObject: contour 1 on CUT"];
}
)") << "the double is absorbed as well";
}

TEST_F(HistoryFiles, HaveTheSameTextInEachRun)
{
  std::string const first = written("--history-raw", "examples/data/plate.dxf");

  // 25 entities of one edge, the double among them, and two polylines of four and of three.
  EXPECT_EQ(count(first, "CONVERSION"), 25u);
  EXPECT_EQ(count(first, "CONTAINMENT"), 7u);
  EXPECT_EQ(count(first, "ABSORPTION"), 32u);
  for (int run = 0; run < 3; ++run)
    EXPECT_EQ(written("--history-raw", "examples/data/plate.dxf"), first)
        << "addresses differ, the text must not";
  EXPECT_EQ(count(written("--history", "examples/data/plate.dxf"), "ABSORPTION"), 27u) << "each source once";
}

TEST_F(HistoryFiles, ShowOnlyTheContoursThatAreAskedFor)
{
  std::ofstream(path("part.dxf")) << dxf_drawing(triangles(3));

  run_program({"-q", path("part.dxf"), "-g", path("2.dot"), "--history-of", "2"});
  run_program({"-q", path("part.dxf"), "-g", path("13.dot"), "--history-of", "3", "--history-of", "1"});
  run_program({"-q", path("part.dxf"), "-g", path("all.dot")});
  std::string const second = drawable(path("2.dot"));
  std::string const first_and_third = drawable(path("13.dot"));
  std::string const all = drawable(path("all.dot"));

  EXPECT_EQ(count(second, "contour"), 1u);
  EXPECT_EQ(count(second, "contour 2 on CUT"), 1u);
  EXPECT_EQ(count(second, "LINE #"), 3u);
  EXPECT_EQ(count(first_and_third, "contour"), 2u);
  EXPECT_EQ(count(first_and_third, "contour 2"), 0u);
  EXPECT_EQ(count(all, "contour"), 3u);
  EXPECT_EQ(count(all, "LINE #"), 9u);
  EXPECT_EQ(count(written("-g", "examples/data/plate.dxf --history-of 1"), "ABSORPTION"), 9u)
      << "the double too";
}

TEST_F(HistoryFiles, LeaveOutTheOtherContoursOfAnEntity)
{
  // One polyline that passes its start on the way: a triangle above and one below.
  std::string const crossed =
      "0 LWPOLYLINE\n5 20\n8 CUT\n70 0\n10 0\n20 0\n10 10\n20 0\n10 5\n20 5\n10 0\n20 0\n"
      "10 -10\n20 0\n10 -5\n20 5\n10 0\n20 0\n";
  std::ofstream(path("part.dxf")) << dxf_drawing(crossed);
  ASSERT_NE(run_program({path("part.dxf"), "-q"}).out.find("2 contours: 2 closed"), std::string::npos);

  run_program(
      {"-q", path("part.dxf"), "-g", path("1.dot"), "--history-raw", path("1r.dot"), "--history-of", "1"});
  std::string const simple = drawable(path("1.dot"));
  std::string const raw = drawable(path("1r.dot"));

  EXPECT_EQ(count(simple, "ABSORPTION"), 1u);
  EXPECT_EQ(count(raw, "CONTAINMENT"), 3u);
  EXPECT_EQ(count(raw, "ABSORPTION"), 3u);
}

TEST_F(HistoryFiles, HaveNamesWithoutQuotesAndBackslashes)
{
  std::ofstream(path("part.dxf")) << dxf_drawing("0 CIRCLE\n5 1\n8 a\"b\\c\n10 0\n20 0\n40 1\n");

  run_program({"-q", path("part.dxf"), "-g", path("x.dot")});

  EXPECT_NE(drawable(path("x.dot")).find("NamedObject: contour 1 on a'b/c\"];\n"), std::string::npos);
}

TEST_F(HistoryFiles, AreWrittenAllOrNone)
{
  for (char const* const name : {"x.svg", "x.dot"})
    std::ofstream(path(name)) << "old";

  ProgramRun const run = run_program({"-q", "examples/data/bulges.dxf", "-o", path("x.svg"), "-g",
                                      path("x.dot"), "--history-raw", "/no/such/folder/x.dot"});

  EXPECT_EQ(run.code, 4);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "examples/data/bulges.dxf: cannot write /no/such/folder/x.dot: No such file or directory\n");
  EXPECT_EQ(content(path("x.svg")), "old");
  EXPECT_EQ(content(path("x.dot")), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2) << "nothing is left beside";
}

TEST_F(HistoryFiles, DoNotOverwriteTheDrawingOrEachOther)
{
  std::ofstream(path("part.dxf")) << dxf_drawing(triangles(1));
  std::string const part = path("part.dxf");

  ProgramRun const drawing = run_program({part, "-g", part});
  ProgramRun const twice = run_program({part, "-g", path("x"), "--history-raw", path("x")});
  ProgramRun const nowhere = run_program({part, "-g", "/dev/null", "--history-raw", "/dev/null"});

  EXPECT_EQ(drawing.code, 2);
  EXPECT_EQ(drawing.err, part + ": the history file would overwrite the drawing\n");
  EXPECT_EQ(twice.code, 2);
  EXPECT_EQ(twice.err, part + ": the raw history file would overwrite the history file\n");
  EXPECT_EQ(nowhere.code, 0);
}

TEST_F(HistoryFiles, AreRefusedForContoursThatAreNotThere)
{
  ProgramRun const run =
      run_program({"-q", "examples/data/bulges.dxf", "-g", path("x.dot"), "--history-of", "3"});

  EXPECT_EQ(run.code, 2);
  EXPECT_EQ(run.err, "examples/data/bulges.dxf: there is no contour 3: 2 contours were found\n");
  EXPECT_FALSE(std::filesystem::exists(path("x.dot")));
}

TEST(HistoryOptions, AreCheckedBeforeTheDrawingIsRead)
{
  struct
  {
    std::vector<std::string> arguments;
    char const* message;
  } const cases[] = {
      {{"--history-of", "1", "x"}, "--history-of: there is no --history and no --history-raw\n"},
      {{"-g", "y", "--history-of", "0", "x"}, "--history-of: '0' is not the number of a contour\n"},
      {{"-g", "y", "--history-of", "1a", "x"}, "--history-of: '1a' is not the number of a contour\n"},
      {{"-g", "y", "--history-of", "-1", "x"}, "--history-of: '-1' is not the number of a contour\n"},
      {{"-g", "", "x"}, "--history: the file name is empty\n"},
      {{"--history-raw", "", "x"}, "--history-raw: the file name is empty\n"},
  };
  for (auto const& c : cases)
  {
    ProgramRun const run = run_program(c.arguments);
    EXPECT_EQ(run.code, 2) << c.message;
    EXPECT_EQ(run.err.substr(0, std::string(c.message).size()), c.message);
  }
}

TEST(History, AnswersTheSameWhenItIsSimplified)
{
  std::string const polyline_and_double =
      "0 LWPOLYLINE\n5 20\n8 CUT\n70 1\n10 0\n20 0\n10 10\n20 0\n10 10\n20 10\n10 0\n20 10\n" +
      line_entity("CUT", 10, 0, 0, 0) + line_entity("CUT", 30, 0, 40, 0) + line_entity("CUT", 40, 0, 50, 1);
  Drawing const drawing = in_order(polyline_and_double);
  ContourFinder finder(drawing, {}, 0.01, std::nullopt);
  History history(drawing, finder.outcome());
  find_contours(finder, history);
  ASSERT_EQ(finder.outcome().contours.size(), 2u);

  for (char const* const when : {"recorded", "simplified", "simplified again"})
  {
    EXPECT_EQ(history.entities_of(0), (std::vector<std::size_t>{0, 1})) << when;
    EXPECT_EQ(history.entities_of(1), (std::vector<std::size_t>{2, 3})) << when;
    EXPECT_EQ(history.contours_of(0), std::vector<std::size_t>{0}) << when;
    EXPECT_EQ(history.contours_of(1), std::vector<std::size_t>{0}) << when;
    EXPECT_EQ(history.contours_of(3), std::vector<std::size_t>{1}) << when;
    history.simplify();
  }
}

TEST_F(HistoryFiles, OfAVeryLongContourAreSimplifiedAsWell)
{
  std::string run;
  for (int i = 0; i < 20000; ++i)
    run += line_entity("CUT", i, 0, i + 1, 0);
  std::ofstream(path("part.dxf")) << dxf_drawing(run);

  run_program({"-q", path("part.dxf"), "-g", path("x.dot")});

  std::string const simple = content(path("x.dot")); // too long to be drawn
  EXPECT_EQ(count(simple, "ABSORPTION"), 20000u);
  EXPECT_EQ(count(simple, "CONVERSION"), 0u);
}

TEST(DrawingProgram, IsShownAllHistories)
{
  if (!drawing_program_is_installed())
    GTEST_SKIP() << "dot is not installed";

  EXPECT_NE(drawable("docs/plate-history.dot"), "");
}
