#include "program_runner.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

// The example plate from end to end, every result to the byte. The numbers follow from the drawing: the outline, say, is
// 2 (170 + 90) + 30 pi - 0.002 long, and its area is 200 * 120 - (4 - pi) * 225.

namespace
{

std::string const PLATE = "examples/data/plate.dxf";

// clang-format off
char const TABLE[] = R"(contour  layer    state   edges  length mm  area mm2  max gap mm  entities (* reversed)
      1  CUT      closed      8    614.246   23806.9       0.002  20 21 22* 23 24 25 26* 27 ...
      2  CUT      closed      4    117.699     593.1       0.000  29 2A 2B* 2C
      3  CUT      closed      4    117.699     593.1       0.000  2D
      4  HOLES    closed      1     25.133      50.3       0.000  2E
      5  HOLES    closed      1     25.133      50.3       0.000  2F
      6  HOLES    closed      1     25.133      50.3       0.000  30
      7  HOLES    closed      1     25.133      50.3       0.000  31
      8  HOLES    closed      2     50.265     201.1       0.000  32 33
      9  CUT      closed      2     69.315     365.6       0.000  34 35
     10  CUT      OPEN        4    139.963         -       0.000  36 37 38 39   gap 0.037 mm at (120.000, 25.000)
     11  ENGRAVE  closed      3     32.361      50.0       0.000  3A
11 contours: 10 closed, 1 open. 26 entities used, 1 duplicate, 2 TEXT skipped. Cut length 1.24 m, 11 pierces.
)";

char const REMARKS[] = R"(examples/data/plate.dxf:135: LINE 28 on layer CUT lies on LINE 24 and is cut only once
examples/data/plate.dxf:349: contour 10 on layer CUT is open: the end of LINE 36 at (120.000, 25.000) is 0.037 mm from its other end; --tolerance 0.037 would close it
)";

char const CSV[] =
      "contour,layer,state,edges,length_mm,area_mm2,max_gap_mm,entities\r\n"
      "1,CUT,closed,8,614.246,23806.858,0.002,20 21 22* 23 24 25 26* 27 28*\r\n"
      "2,CUT,closed,4,117.699,593.097,0.0,29 2A 2B* 2C\r\n"
      "3,CUT,closed,4,117.699,593.097,0.0,2D\r\n"
      "4,HOLES,closed,1,25.133,50.265,0.0,2E\r\n"
      "5,HOLES,closed,1,25.133,50.265,0.0,2F\r\n"
      "6,HOLES,closed,1,25.133,50.265,0.0,30\r\n"
      "7,HOLES,closed,1,25.133,50.265,0.0,31\r\n"
      "8,HOLES,closed,2,50.265,201.062,0.0,32 33\r\n"
      "9,CUT,closed,2,69.315,365.593,0.0,34 35\r\n"
      "10,CUT,open,4,139.963,,0.0,36 37 38 39\r\n"
      "11,ENGRAVE,closed,3,32.361,50.0,0.0,3A\r\n";

char const JSON[] = R"({
  "drawing": "examples/data/plate.dxf",
  "unit_mm": 1.0,
  "tolerance_mm": 0.01,
  "contours": [
    { "contour": 1, "layer": "CUT", "closed": true, "edges": 8, "length_mm": 614.246, "area_mm2": 23806.858,
      "max_gap_mm": 0.002, "open_gap_mm": null, "start": [15.0, 0.0], "end": [15.0, 0.0],
      "entities": [
        { "entity": "20", "type": "LINE", "line": 15, "reversed": false },
        { "entity": "21", "type": "ARC", "line": 29, "reversed": false },
        { "entity": "22", "type": "LINE", "line": 45, "reversed": true },
        { "entity": "23", "type": "ARC", "line": 59, "reversed": false },
        { "entity": "24", "type": "LINE", "line": 75, "reversed": false },
        { "entity": "25", "type": "ARC", "line": 89, "reversed": false },
        { "entity": "26", "type": "LINE", "line": 105, "reversed": true },
        { "entity": "27", "type": "ARC", "line": 119, "reversed": false },
        { "entity": "28", "type": "LINE", "line": 135, "reversed": true }
      ] },
    { "contour": 2, "layer": "CUT", "closed": true, "edges": 4, "length_mm": 117.699, "area_mm2": 593.097,
      "max_gap_mm": 0.0, "open_gap_mm": null, "start": [40.0, 84.0], "end": [40.0, 84.0],
      "entities": [
        { "entity": "29", "type": "LINE", "line": 149, "reversed": false },
        { "entity": "2A", "type": "ARC", "line": 163, "reversed": false },
        { "entity": "2B", "type": "LINE", "line": 179, "reversed": true },
        { "entity": "2C", "type": "ARC", "line": 193, "reversed": false }
      ] },
    { "contour": 3, "layer": "CUT", "closed": true, "edges": 4, "length_mm": 117.699, "area_mm2": 593.097,
      "max_gap_mm": 0.0, "open_gap_mm": null, "start": [120.0, 84.0], "end": [120.0, 84.0],
      "entities": [
        { "entity": "2D", "type": "LWPOLYLINE", "line": 209, "reversed": false }
      ] },
    { "contour": 4, "layer": "HOLES", "closed": true, "edges": 1, "length_mm": 25.133, "area_mm2": 50.265,
      "max_gap_mm": 0.0, "open_gap_mm": null, "start": [19.0, 15.0], "end": [19.0, 15.0],
      "entities": [
        { "entity": "2E", "type": "CIRCLE", "line": 239, "reversed": false }
      ] },
    { "contour": 5, "layer": "HOLES", "closed": true, "edges": 1, "length_mm": 25.133, "area_mm2": 50.265,
      "max_gap_mm": 0.0, "open_gap_mm": null, "start": [189.0, 15.0], "end": [189.0, 15.0],
      "entities": [
        { "entity": "2F", "type": "CIRCLE", "line": 251, "reversed": false }
      ] },
    { "contour": 6, "layer": "HOLES", "closed": true, "edges": 1, "length_mm": 25.133, "area_mm2": 50.265,
      "max_gap_mm": 0.0, "open_gap_mm": null, "start": [189.0, 105.0], "end": [189.0, 105.0],
      "entities": [
        { "entity": "30", "type": "CIRCLE", "line": 263, "reversed": false }
      ] },
    { "contour": 7, "layer": "HOLES", "closed": true, "edges": 1, "length_mm": 25.133, "area_mm2": 50.265,
      "max_gap_mm": 0.0, "open_gap_mm": null, "start": [19.0, 105.0], "end": [19.0, 105.0],
      "entities": [
        { "entity": "31", "type": "CIRCLE", "line": 275, "reversed": false }
      ] },
    { "contour": 8, "layer": "HOLES", "closed": true, "edges": 2, "length_mm": 50.265, "area_mm2": 201.062,
      "max_gap_mm": 0.0, "open_gap_mm": null, "start": [108.0, 90.0], "end": [108.0, 90.0],
      "entities": [
        { "entity": "32", "type": "ARC", "line": 287, "reversed": false },
        { "entity": "33", "type": "ARC", "line": 303, "reversed": false }
      ] },
    { "contour": 9, "layer": "CUT", "closed": true, "edges": 2, "length_mm": 69.315, "area_mm2": 365.593,
      "max_gap_mm": 0.0, "open_gap_mm": null, "start": [60.0, 32.0], "end": [60.0, 32.0],
      "entities": [
        { "entity": "34", "type": "LINE", "line": 319, "reversed": false },
        { "entity": "35", "type": "ARC", "line": 333, "reversed": false }
      ] },
    { "contour": 10, "layer": "CUT", "closed": false, "edges": 4, "length_mm": 139.963, "area_mm2": null,
      "max_gap_mm": 0.0, "open_gap_mm": 0.037, "start": [120.0, 25.0], "end": [120.0, 25.037],
      "entities": [
        { "entity": "36", "type": "LINE", "line": 349, "reversed": false },
        { "entity": "37", "type": "LINE", "line": 363, "reversed": false },
        { "entity": "38", "type": "LINE", "line": 377, "reversed": false },
        { "entity": "39", "type": "LINE", "line": 391, "reversed": false }
      ] },
    { "contour": 11, "layer": "ENGRAVE", "closed": true, "edges": 3, "length_mm": 32.361, "area_mm2": 50.0,
      "max_gap_mm": 0.0, "open_gap_mm": null, "start": [95.0, 30.0], "end": [95.0, 30.0],
      "entities": [
        { "entity": "3A", "type": "LWPOLYLINE", "line": 405, "reversed": false }
      ] }
  ],
  "duplicates": [
    { "entity": "28", "of": "24" }
  ],
  "branches": [],
  "skipped": { "TEXT": 2 },
  "totals": { "contours": 11, "closed": 10, "open": 1, "entities": 26, "edges": 31, "cut_length_mm": 1242.079, "pierces": 11 }
}
)";

char const SVG[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<svg xmlns="http://www.w3.org/2000/svg" width="208mm" height="128mm" viewBox="-4 -124 208 128">
  <title>examples/data/plate.dxf</title>
  <g id="layer-1" fill="none" stroke="#202020" stroke-width="0.4">
    <title>CUT</title>
    <path id="contour-1" d="M 15 0 L 185 0 A 15 15 0 0 0 200 -15 L 200 -15.002 L 200 -105 A 15 15 0 0 0 185 -120 L 15 -120 A 15 15 0 0 0 0 -105 L 0 -15 A 15 15 0 0 0 15 0 Z"><title>contour 1, closed</title></path>
    <path id="contour-2" d="M 40 -84 L 80 -84 A 6 6 0 0 0 86 -90 A 6 6 0 0 0 80 -96 L 40 -96 A 6 6 0 0 0 34 -90 A 6 6 0 0 0 40 -84 Z"><title>contour 2, closed</title></path>
    <path id="contour-3" d="M 120 -84 L 160 -84 A 6 6 0 0 0 166 -90 A 6 6 0 0 0 160 -96 L 120 -96 A 6 6 0 0 0 114 -90 A 6 6 0 0 0 120 -84 Z"><title>contour 3, closed</title></path>
    <path id="contour-9" d="M 60 -32 L 60 -48 A 11.3137 11.3137 0 0 0 40.6863 -40 A 11.3137 11.3137 0 0 0 60 -32 Z"><title>contour 9, closed</title></path>
    <path id="contour-10" stroke="#d00000" stroke-dasharray="1.6" d="M 120 -25 L 160 -25 L 160 -55 L 120 -55 L 120 -25.037"><title>contour 10, open</title></path>
  </g>
  <g id="layer-2" fill="none" stroke="#1f5fa8" stroke-width="0.4">
    <title>ENGRAVE</title>
    <path id="contour-11" d="M 95 -30 L 105 -30 L 100 -40 L 95 -30 Z"><title>contour 11, closed</title></path>
  </g>
  <g id="layer-3" fill="none" stroke="#2a7f3f" stroke-width="0.4">
    <title>HOLES</title>
    <path id="contour-4" d="M 19 -15 A 4 4 0 0 0 11 -15 A 4 4 0 0 0 19 -15 Z"><title>contour 4, closed</title></path>
    <path id="contour-5" d="M 189 -15 A 4 4 0 0 0 181 -15 A 4 4 0 0 0 189 -15 Z"><title>contour 5, closed</title></path>
    <path id="contour-6" d="M 189 -105 A 4 4 0 0 0 181 -105 A 4 4 0 0 0 189 -105 Z"><title>contour 6, closed</title></path>
    <path id="contour-7" d="M 19 -105 A 4 4 0 0 0 11 -105 A 4 4 0 0 0 19 -105 Z"><title>contour 7, closed</title></path>
    <path id="contour-8" d="M 108 -90 A 8 8 0 0 0 100 -98 A 8 8 0 0 0 92 -90 A 8 8 0 0 0 100 -82 A 8 8 0 0 0 108 -90 Z"><title>contour 8, closed</title></path>
  </g>
</svg>
)";
// clang-format on

} // namespace

TEST(Plate, TheTableAndTheRemarks)
{
  ProgramRun const run = run_program({PLATE});

  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.out, TABLE);
  EXPECT_EQ(run.err, REMARKS);
}

TEST(Plate, IsWhatTheManualShows)
{
  std::ifstream in("docs/contours.md", std::ios::binary);
  std::stringstream page;
  page << in.rdbuf();

  EXPECT_NE(page.str().find(REMARKS + std::string(TABLE)), std::string::npos);
}

TEST(Plate, TheCsv)
{
  ProgramRun const run = run_program({PLATE, "--format", "csv", "--quiet"});

  EXPECT_EQ(run.out, CSV);
  EXPECT_EQ(run.err, "");
}

TEST(Plate, TheJson)
{
  ProgramRun const run = run_program({"-q", "-f", "json", PLATE});

  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.out, JSON);
}

TEST(Plate, TheSvg)
{
  std::string name = (std::filesystem::temp_directory_path() / "oz-contours-XXXXXX").string();
  ASSERT_NE(mkdtemp(name.data()), nullptr);
  std::string const file = name + "/plate.svg";

  ProgramRun const run = run_program({"-q", PLATE, "-o", file});

  EXPECT_EQ(run.out, TABLE) << "the table is printed all the same";
  std::ifstream in(file, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  EXPECT_EQ(text.str(), SVG);
  std::filesystem::remove_all(name);
}

TEST(Plate, StandardInputGivesTheSame)
{
  std::ifstream in(PLATE, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();

  ProgramRun const run = run_program({"-"}, text.str());

  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.out, TABLE);
  EXPECT_EQ(run.err.substr(0, 12), "<stdin>:135:");
}

TEST(Plate, ALongerToleranceClosesTheOpening)
{
  ProgramRun const run = run_program({PLATE, "-t", "0.037"});

  EXPECT_EQ(run.code, 0);
  EXPECT_NE(run.out.find("     10  CUT      closed      4    139.963    1200.0       0.037  36 37 38 39\n"),
            std::string::npos);
  EXPECT_EQ(run_program({PLATE, "-t", "0.036"}).code, 1);
  EXPECT_EQ(run_program({PLATE, "-t", "0.037", "--strict"}).code, 1) << "a duplicate and text";
}

TEST(Plate, OneLayerOfIt)
{
  ProgramRun const run = run_program({PLATE, "-l", "holes", "--strict"});

  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_NE(run.out.find("5 contours: 5 closed, 0 open. 6 entities used, 0 duplicates, 0 skipped. Cut length "
                         "0.15 m, 5 pierces.\n"),
            std::string::npos);
  EXPECT_EQ(run_program({PLATE, "-x", "CUT", "-x", "NOTES", "--strict"}).code, 0);
}
