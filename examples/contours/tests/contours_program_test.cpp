#include "drawing_text.h"
#include "program_runner.h"

#include <ozassert.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <streambuf>

using testing::ExitedWithCode;

namespace
{

std::string const SQUARE =
    "0 LWPOLYLINE\n5 20\n8 CUT\n70 1\n10 0\n20 0\n10 10\n20 0\n10 10\n20 10\n10 0\n20 10\n";

ProgramRun run_on(std::string const& entities, std::vector<std::string> arguments = {})
{
  arguments.push_back("-");
  return run_program(arguments, dxf_drawing(entities));
}

/// The last line of a table.
std::string summary(ProgramRun const& run)
{
  std::size_t const before = run.out.rfind('\n', run.out.size() - 2);
  return run.out.substr(before + 1);
}

/// Input during which a check of the library fails.
class FailingCheck : public std::streambuf
{
protected:
  int_type underflow() override
  {
    char file[] = "src/somewhere.cpp";
    Oz_assert(file, 12);
    return traits_type::eof();
  }
};

/// Input that breaks off, and output that takes nothing.
class BrokenStream : public std::streambuf
{
protected:
  int_type underflow() override { throw std::runtime_error("broken"); }
};

} // namespace

TEST(ExitCode, IsZeroWhereAllIsClosed)
{
  ProgramRun const run = run_on(SQUARE);

  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(
      summary(run),
      "1 contour: 1 closed, 0 open. 1 entity used, 0 duplicates, 0 skipped. Cut length 0.04 m, 1 pierce.\n");
}

TEST(ExitCode, IsOneWhereSomethingCannotBeCutAsDrawn)
{
  struct
  {
    char const* what;
    std::string more;
    char const* err;
  } const cases[] = {
      {"open", line_entity("CUT", 20, 0, 30, 0),
       "<stdin>:29: contour 2 on layer CUT is open: the end of LINE #2 at (20.000, 0.000) is 10.000 mm from "
       "its other end; "
       "nothing else is near\n"},
      {"could be cut", "0 SPLINE\n5 77\n8 CUT\n",
       "<stdin>:29: SPLINE 77 on layer CUT is skipped: this version cannot cut it\n"},
      {"tilted", "0 CIRCLE\n8 CUT\n10 0\n20 0\n40 1\n210 1\n220 0\n230 1\n",
       "<stdin>:29: CIRCLE #2 on layer CUT is skipped: its plane is tilted against that of the drawing\n"},
      {"branch", "0 LWPOLYLINE\n5 21\n8 CUT\n70 1\n10 10\n20 10\n10 20\n20 10\n10 20\n20 20\n",
       "<stdin>:5: branch on layer CUT at (10.000, 10.000): ends of 20, 21 meet; joined: 20 and 20, 21 and "
       "21\n"},
  };
  for (auto const& c : cases)
  {
    ProgramRun const run = run_on(SQUARE + c.more);
    EXPECT_EQ(run.code, 1) << c.what;
    EXPECT_EQ(run.err, c.err) << c.what;
    EXPECT_EQ(run_on(SQUARE + c.more, {"-q"}).err, "") << c.what;
  }
}

TEST(ExitCode, IsOneWhereThereIsNothingToDo)
{
  ProgramRun const none = run_on("");
  EXPECT_EQ(none.code, 1);
  EXPECT_EQ(none.err, "<stdin>: nothing to do: the drawing has no entities\n");

  ProgramRun const other = run_on(SQUARE + "0 TEXT\n8 NOTES\n0 TEXT\n8 NOTES\n", {"-l", "CUTT"});
  EXPECT_EQ(other.code, 1);
  EXPECT_EQ(other.err,
            "<stdin>: nothing to do on the chosen layers; there are: CUT (1 entity), NOTES (2 entities)\n");
}

TEST(ExitCode, IsOneForDuplicatesAndTextOnlyIfStrict)
{
  for (std::string const& more :
       {std::string("0 TEXT\n8 CUT\n"), line_entity("CUT", 0, 0, 10, 0), line_entity("CUT", 3, 3, 3, 3)})
  {
    EXPECT_EQ(run_on(SQUARE + more).code, 0) << more;
    EXPECT_EQ(run_on(SQUARE + more, {"--strict"}).code, 1) << more;
  }
  EXPECT_EQ(run_on(SQUARE, {"--strict"}).code, 0);
}

TEST(ExitCode, IsTwoForWrongUsage)
{
  struct
  {
    std::vector<std::string> arguments;
    char const* err;
  } const cases[] = {
      {{}, "DRAWING.dxf is required\n"},
      {{"a", "b"}, "The following argument was not expected: b\n"},
      {{"--nope", "-"}, "The following argument was not expected: --nope\n"},
      {{"-t", "0", "-"}, "--tolerance: must be from 0.000001 to 1000000 millimetres\n"},
      {{"-t", "-1", "-"}, "--tolerance: must be from 0.000001 to 1000000 millimetres\n"},
      {{"-t", "nan", "-"}, "--tolerance: must be from 0.000001 to 1000000 millimetres\n"},
      {{"-t", "1e7", "-"}, "--tolerance: must be from 0.000001 to 1000000 millimetres\n"},
      {{"-u", "km", "-"}, "--units: 'km' is none of mm, cm, m, in\n"},
      {{"-f", "xml", "-"}, "--format: 'xml' is none of csv, json, table\n"},
      {{"--strategy", "fast", "-"}, "--strategy: 'fast' is none of closest, first-fit, grow, sequential\n"},
      {{"-o", "", "-"}, "--svg: the file name is empty\n"},
      {{"--why", "", "-"}, "--why: the entity is empty\n"},
      {{"-q", "-v", "-"}, "--quiet excludes --verbose\n"},
      {{"-j", "65", "-"}, "--threads: '65' is no number from 0 to 64\n"},
      {{"-j", "-1", "-"}, "--threads: '-1' is no number from 0 to 64\n"},
      {{"-j", "2x", "-"}, "--threads: '2x' is no number from 0 to 64\n"},
      {{"-j", "", "-"}, "--threads: '' is no number from 0 to 64\n"},
      {{"-j", "99999999999999999999", "-"}, "--threads: '99999999999999999999' is no number from 0 to 64\n"},
      {{"--progress", "maybe", "-"}, "--progress: 'maybe' is none of always, auto, never\n"},
  };
  for (auto const& c : cases)
  {
    ProgramRun const run = run_program(c.arguments, dxf_drawing(SQUARE));
    EXPECT_EQ(run.code, 2) << c.err;
    EXPECT_EQ(run.out, "") << c.err;
    EXPECT_EQ(run.err, std::string(c.err) + "Run with --help for more information.\n");
  }
}

TEST(ExitCode, IsTwoForAnEntityThatIsNotThere)
{
  ProgramRun const run = run_on(SQUARE, {"--why", "99"});

  EXPECT_EQ(run.code, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "<stdin>: there is no entity 99 in this drawing\n");
}

TEST(ExitCode, IsThreeForInputThatCannotBeRead)
{
  ProgramRun const missing = run_program({"/no/such/drawing.dxf"});
  EXPECT_EQ(missing.code, 3);
  EXPECT_EQ(missing.err, "/no/such/drawing.dxf: it cannot be opened: No such file or directory\n");

  ProgramRun const folder = run_program({"/tmp"});
  EXPECT_EQ(folder.code, 3);
  EXPECT_EQ(folder.err, "/tmp: this is a directory, not a drawing\n");

  ProgramRun const endless = run_program({"/dev/zero"});
  EXPECT_EQ(endless.code, 3);
  EXPECT_EQ(endless.err, "/dev/zero:1: this is not a text file: it holds a zero byte\n");

  ProgramRun const prose = run_program({"-"}, "Hello\n");
  EXPECT_EQ(prose.code, 3);
  EXPECT_EQ(prose.err, "<stdin>:1: expected a group code, found 'Hello'\n");

  ProgramRun const damaged = run_on("0 CIRCLE\n5 7\n8 CUT\n10 0\n20 0\n");
  EXPECT_EQ(damaged.code, 3);
  EXPECT_EQ(damaged.out, "");
  EXPECT_EQ(damaged.err, "<stdin>:5: CIRCLE 7: no radius (group 40)\n");
}

TEST(ExitCode, IsThreeForAStreamThatBreaksOff)
{
  BrokenStream broken;
  std::istream in(&broken);
  std::ostringstream out;
  std::ostringstream err;
  char const* const argv[] = {"oz-contours", "-"};

  EXPECT_EQ(contours::run(2, argv, in, out, err), 3);
  EXPECT_EQ(err.str(), "<stdin>: it cannot be read to its end\n");
}

TEST(ExitCode, IsThreeAndNothingWrittenWhereTheDrawingIsDamaged)
{
  std::string name = (std::filesystem::temp_directory_path() / "oz-contours-XXXXXX").string();
  ASSERT_NE(mkdtemp(name.data()), nullptr);
  std::string const svg = name + "/old.svg";
  std::ofstream(svg) << "old";

  EXPECT_EQ(run_on("0 CIRCLE\n", {"-o", svg}).code, 3);

  std::ifstream in(svg);
  std::stringstream text;
  text << in.rdbuf();
  EXPECT_EQ(text.str(), "old");
  std::filesystem::remove_all(name);
}

TEST(ExitCode, IsFourForOutputThatCannotBeWritten)
{
  ProgramRun const run = run_on(SQUARE, {"-o", "/no/such/folder/x.svg"});
  EXPECT_EQ(run.code, 4);
  EXPECT_EQ(run.out, "") << "nothing that looks like success";
  EXPECT_EQ(run.err, "<stdin>: cannot write /no/such/folder/x.svg: No such file or directory\n");

  std::istringstream in(dxf_drawing(SQUARE));
  std::ofstream full("/dev/full");
  std::ostringstream err;
  char const* const argv[] = {"oz-contours", "-"};
  EXPECT_EQ(contours::run(2, argv, in, full, err), 4);
  EXPECT_EQ(err.str().substr(0, 41), "<stdin>: cannot write to standard output:");
}

TEST(ExitCode, IsTwoWhereTheResultWouldOverwriteTheDrawing)
{
  std::string name = (std::filesystem::temp_directory_path() / "oz-contours-XXXXXX").string();
  ASSERT_NE(mkdtemp(name.data()), nullptr);
  std::string const file = name + "/drawing.dxf";
  std::ofstream(file) << dxf_drawing(SQUARE);

  ProgramRun const run = run_program({file, "-o", name + "/./drawing.dxf"});

  EXPECT_EQ(run.code, 2);
  EXPECT_EQ(run.err, file + ": the SVG file would overwrite the drawing\n");
  std::filesystem::remove_all(name);
}

TEST(ExitCodeDeathTest, IsSeventyWhereACheckOfTheLibraryFails)
{
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  auto const run = []
  {
    FailingCheck failing;
    std::istream in(&failing);
    std::ostringstream out;
    std::ostringstream err;
    char const* const argv[] = {"oz-contours", "-"};
    std::exit(contours::run(2, argv, in, out, err));
  };

  EXPECT_EXIT(run(), ExitedWithCode(70),
              "oz-contours: src/somewhere.cpp:12: a check failed. This is a bug: please report it with this "
              "line and the "
              "drawing.");
}

TEST(Program, LeavesTheAssertionHookAsItWas)
{
  run_on(SQUARE);

  EXPECT_EQ(dkb_assertion_handler, nullptr);
}

TEST(Program, HelpAndVersionGoToStandardOutput)
{
  ProgramRun const help = run_program({"--help"});
  EXPECT_EQ(help.code, 0);
  EXPECT_EQ(help.err, "");
  for (char const* const word :
       {"--tolerance MM", "--units U", "--layer NAME", "--exclude NAME", "--strategy S", "--svg FILE",
        "--why ENTITY", "--history FILE", "--history-raw FILE", "--history-of N", "--format F", "--strict",
        "--threads N", "--progress P", "--quiet", "--verbose", "--help", "--version"})
    EXPECT_NE(help.out.find(word), std::string::npos) << word;

  ProgramRun const version = run_program({"--version"});
  EXPECT_EQ(version.code, 0);
  EXPECT_EQ(version.out.substr(0, 12), "oz-contours ");
  EXPECT_GT(version.out.size(), 16u);
}

TEST(Program, TheUnitOfTheDrawingCanBeOverridden)
{
  std::string const inch =
      dxf_groups("0 SECTION\n2 HEADER\n9 $INSUNITS\n70 1\n0 ENDSEC\n") + dxf_drawing(SQUARE);
  auto const length = [&](std::vector<std::string> arguments)
  {
    arguments.insert(arguments.end(), {"-", "-f", "csv"});
    ProgramRun const run = run_program(arguments, inch);
    return run.out.substr(run.out.find("closed,4,") + 9, 8);
  };

  EXPECT_EQ(length({}), "1016.0,6");
  EXPECT_EQ(length({"-u", "mm"}), "40.0,100");
  EXPECT_EQ(length({"-u", "m"}), "40000.0,");
}

TEST(Program, AnUnknownUnitIsTakenForMillimetresWithARemark)
{
  ProgramRun const run = run_program(
      {"-"}, dxf_groups("0 SECTION\n2 HEADER\n9 $INSUNITS\n70 99\n0 ENDSEC\n") + dxf_drawing(SQUARE));

  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "<stdin>: $INSUNITS is 99, which is not known here; the drawing is taken to be in "
                     "millimetres (--units says "
                     "otherwise)\n");
}

TEST(Program, WhyNamesTheContourAndWhatItCameFrom)
{
  std::string const drawing =
      SQUARE + "0 LINE\n5 21\n8 CUT\n10 10\n20 0\n11 0\n21 0\n0 TEXT\n5 22\n8 CUT\n0 SPLINE\n5 23\n8 CUT\n" +
      "0 LINE\n5 24\n8 X\n10 0\n20 0\n11 0\n21 0\n";
  struct
  {
    std::vector<std::string> arguments;
    char const* out;
  } const cases[] = {
      {{"--why", "20"},
       "LWPOLYLINE 20 (layer CUT, line 5) became 4 edges of contour 1\n"
       "contour 1 (closed, 4 edges, 40.000 mm) comes from 20 21*\n"},
      {{"--why", "#2"},
       "LINE 21 (layer CUT, line 29) became 1 edge of contour 1\n"
       "it lies on LWPOLYLINE 20 (layer CUT, line 5) and is cut only once\n"
       "contour 1 (closed, 4 edges, 40.000 mm) comes from 20 21*\n"},
      {{"--why", "22"}, "TEXT 22 (layer CUT, line 43) is in no contour: it is nothing that is cut\n"},
      {{"--why", "23"}, "SPLINE 23 (layer CUT, line 49) is in no contour: this version cannot cut it\n"},
      {{"--why", "24"}, "LINE 24 (layer X, line 55) is in no contour: it has no length\n"},
      {{"--why", "20", "-l", "X"},
       "LWPOLYLINE 20 (layer CUT, line 5) is in no contour: its layer is not among the chosen ones\n"},
  };
  for (auto const& c : cases)
    EXPECT_EQ(run_on(drawing, c.arguments).out, c.out);
}

TEST(Program, WhatLiesOnOtherThingsIsRemarked)
{
  EXPECT_EQ(run_on(SQUARE + line_entity("CUT", 0, 0, 10, 0)).err,
            "<stdin>:29: LINE #2 on layer CUT lies on LWPOLYLINE 20 and is cut only once\n");

  std::string const tail = "0 LWPOLYLINE\n5 21\n8 CUT\n10 10\n20 0\n10 0\n20 0\n10 -9\n20 0\n10 0\n20 0\n";
  std::string const err = run_on(SQUARE + tail).err;
  EXPECT_NE(
      err.find("<stdin>:29: LWPOLYLINE 21 on layer CUT lies in part on LWPOLYLINE 20 and is cut only once\n"),
      std::string::npos);
  EXPECT_NE(err.find("<stdin>:29: LWPOLYLINE 21 on layer CUT lies in part on itself and is cut only once\n"),
            std::string::npos);
  EXPECT_NE(
      run_on(SQUARE + tail, {"--why", "21"}).out.find("\nit lies in part on itself and is cut only once\n"),
      std::string::npos);
}

TEST(Program, RemarksOfOneKindAreLimitedUnlessAskedFor)
{
  std::string drawing = SQUARE;
  for (int i = 0; i < 25; ++i)
    drawing += "0 SPLINE\n8 CUT\n";

  std::string const some = run_on(drawing).err;
  EXPECT_EQ(std::count(some.begin(), some.end(), '\n'), 21);
  EXPECT_NE(
      some.find("\n<stdin>: 5 more entities that could be cut and were skipped (--verbose names them)\n"),
      std::string::npos);
  std::string const all = run_on(drawing, {"-v"}).err;
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 25 + 3)
      << "and two details, and the statistics of the job";
  EXPECT_EQ(all.find("more"), std::string::npos);
}

TEST(Program, VerboseTellsHowTheEdgesFellApart)
{
  ProgramRun const run =
      run_on(SQUARE + "0 CIRCLE\n8 CUT\n10 0\n20 0\n40 1\n0 CIRCLE\n67 1\n10 0\n20 0\n40 1\n", {"-v"});

  std::size_t const statistics = run.err.find("<stdin>: job statistics: ");
  EXPECT_EQ(run.err.substr(0, statistics),
            "<stdin>: 1 unit of the drawing is 1 mm\n"
            "<stdin>: 1 entity in paper space left out\n"
            "<stdin>: layer CUT: 2 clusters of edges that touch, the largest of 4\n");
  EXPECT_EQ(run.err.find('\n', statistics), run.err.size() - 1) << "one line of them";
}

TEST(Program, TheTableCutsLongListsUnlessVerbose)
{
  std::string ring;
  for (int i = 0; i < 9; ++i)
    ring += line_entity("A", i, i * i, i + 1, (i + 1) * (i + 1));

  EXPECT_NE(run_on(ring).out.find("#1 #2 #3 #4 #5 #6 #7 #8 ...   gap"), std::string::npos);
  EXPECT_NE(run_on(ring, {"-v"}).out.find("#1 #2 #3 #4 #5 #6 #7 #8 #9   gap"), std::string::npos);
}

TEST(Program, AToleranceLongerThanEdgesIsRemarked)
{
  ProgramRun const run =
      run_on(SQUARE + line_entity("B", 50, 0, 50.5, 0) + line_entity("B", 50.5, 0, 50.5, 3), {"-t", "0.75"});

  EXPECT_NE(run.err.find("<stdin>:29: the tolerance of 0.75 mm is longer than 1 edge; the shortest, of LINE "
                         "#2, has 0.500000 mm\n"),
            std::string::npos)
      << run.err;
}

TEST(Program, NamesAreQuotedInEachFormat)
{
  std::string const circle = "0 CIRCLE\n5 1\n8 a\"b, <c> & \\\n10 0\n20 0\n40 1\n";

  EXPECT_NE(run_on(circle, {"-f", "csv"}).out.find("1,\"a\"\"b, <c> & \\\",closed,1,6.283,3.142,0.0,1\r\n"),
            std::string::npos);
  EXPECT_NE(run_on(circle, {"-f", "json"}).out.find("\"layer\": \"a\\\"b, <c> & \\\\\""), std::string::npos);
  std::string name = (std::filesystem::temp_directory_path() / "oz-contours-XXXXXX").string();
  ASSERT_NE(mkdtemp(name.data()), nullptr);
  run_on(circle, {"-o", name + "/x.svg"});
  std::ifstream in(name + "/x.svg");
  std::stringstream svg;
  svg << in.rdbuf();
  EXPECT_NE(svg.str().find("<title>a&quot;b, &lt;c&gt; &amp; \\</title>"), std::string::npos);
  std::filesystem::remove_all(name);
}

TEST(Program, TheExamplesShowWhatTheyAreFor)
{
  struct
  {
    char const* drawing;
    int code;
    char const* summary;
  } const cases[] = {
      {"branches", 1,
       "3 contours: 2 closed, 1 open. 9 entities used, 0 duplicates, 0 skipped. Cut length 0.09 m, 3 "
       "pierces.\n"},
      {"bulges", 0,
       "2 contours: 2 closed, 0 open. 2 entities used, 0 duplicates, 0 skipped. Cut length 0.12 m, 2 "
       "pierces.\n"},
      {"inch", 0,
       "2 contours: 2 closed, 0 open. 2 entities used, 0 duplicates, 0 skipped. Cut length 0.19 m, 2 "
       "pierces.\n"},
      {"mirrored", 0,
       "1 contour: 1 closed, 0 open. 4 entities used, 0 duplicates, 0 skipped. Cut length 0.11 m, 1 "
       "pierce.\n"},
      {"names", 0,
       "3 contours: 3 closed, 0 open. 3 entities used, 0 duplicates, 0 skipped. Cut length 0.20 m, 3 "
       "pierces.\n"},
      {"old_polyline", 1,
       "2 contours: 1 closed, 1 open. 2 entities used, 0 duplicates, 0 skipped. Cut length 0.17 m, 2 "
       "pierces.\n"},
  };
  for (auto const& c : cases)
  {
    ProgramRun const run = run_program({"examples/data/" + std::string(c.drawing) + ".dxf"});
    EXPECT_EQ(run.code, c.code) << c.drawing;
    EXPECT_EQ(summary(run), c.summary) << c.drawing;
  }
  EXPECT_NE(run_program({"examples/data/names.dxf"}).out.find("  B\xC3\xBCgel, \xE2\x82\xAC  closed"),
            std::string::npos);
  EXPECT_NE(run_program({"examples/data/mirrored.dxf", "-f", "csv"})
                .out.find(",111.416,478.54,0.0,20 21* 22 23\r\n"),
            std::string::npos);
}
