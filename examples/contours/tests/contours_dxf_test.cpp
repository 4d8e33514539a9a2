#include "drawing_text.h"
#include "dxf_reader.h"
#include "input_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

using namespace contours;

namespace
{

/// What reading `text` complains about, as "line: text"; "" if it doesn't.
std::string error_of(std::string const& text)
{
  try
  {
    read_drawing(text);
    return {};
  }
  catch (InputError const& error)
  {
    return std::to_string(error.line()) + ": " + error.what();
  }
}

Entity read_one(std::string const& entity)
{
  Drawing const drawing = read_drawing(dxf_drawing(entity));
  EXPECT_EQ(drawing.entities.size(), 1u);
  return drawing.entities.empty() ? Entity() : drawing.entities.front();
}

std::string const LINE = "0 LINE\n5 2F\n8 CUT\n10 1\n20 2\n30 9\n11 4\n21 6\n31 9\n";
std::string const ARC = "0 ARC\n8 A\n10 10\n20 0\n40 2\n50 0\n51 90\n";

std::string with_extrusion(std::string const& entity, std::string const& x, std::string const& z)
{
  return entity + "210 " + x + "\n220 0\n230 " + z + "\n";
}

} // namespace

TEST(DxfReader, ReadsALine)
{
  Entity const line = read_one(LINE);

  EXPECT_EQ(line.type, "LINE");
  EXPECT_EQ(line.handle, "2F");
  EXPECT_EQ(line.layer, "CUT");
  EXPECT_EQ(line.number, 1u);
  EXPECT_EQ(line.line, 5u) << "where the entity begins";
  EXPECT_EQ(line.use, Use::CUT);
  ASSERT_EQ(line.curves.size(), 1u);
  EXPECT_EQ(line.curves[0].start.x, 1);
  EXPECT_EQ(line.curves[0].start.y, 2);
  EXPECT_EQ(line.curves[0].end.x, 4);
  EXPECT_EQ(line.curves[0].end.y, 6);
}

TEST(DxfReader, ReadsAnArcAndACircle)
{
  Entity const arc = read_one(ARC);
  ASSERT_EQ(arc.curves.size(), 1u);
  EXPECT_EQ(arc.curves[0].radius, 2);
  EXPECT_NEAR(arc.curves[0].end.x, 10, 1e-12);
  EXPECT_NEAR(arc.curves[0].end.y, 2, 1e-12);

  Entity const circle = read_one("0 CIRCLE\n8 A\n10 1\n20 2\n40 3\n");
  ASSERT_EQ(circle.curves.size(), 1u);
  EXPECT_EQ(circle.curves[0].radius, 3);
  EXPECT_EQ(circle.curves[0].start.x, 4);
}

TEST(DxfReader, ALightPolylineFallsIntoItsPieces)
{
  std::string const vertices = "10 0\n20 0\n10 10\n20 0\n42 1\n10 10\n20 8\n";

  Entity const open = read_one("0 LWPOLYLINE\n8 A\n90 3\n70 0\n" + vertices);
  ASSERT_EQ(open.curves.size(), 2u);
  EXPECT_FALSE(open.curves[0].is_arc());
  EXPECT_TRUE(open.curves[1].is_arc()) << "the bulge belongs to the piece after its vertex";

  Entity const closed = read_one("0 LWPOLYLINE\n8 A\n90 3\n70 129\n" + vertices + "42 -0.5\n");
  ASSERT_EQ(closed.curves.size(), 3u);
  EXPECT_LT(closed.curves[2].sweep, 0) << "the bulge of the last vertex belongs to the closing piece";
  EXPECT_EQ(closed.curves[2].end.x, 0);
}

TEST(DxfReader, AnOldPolylineHasItsVerticesAsEntities)
{
  std::string const text =
      "0 POLYLINE\n8 A\n66 1\n70 1\n0 VERTEX\n8 A\n10 0\n20 0\n0 VERTEX\n8 A\n10 10\n20 0\n42 1\n"
      "0 VERTEX\n8 A\n10 10\n20 8\n0 SEQEND\n8 A\n";
  Drawing const drawing = read_drawing(dxf_drawing(text + LINE));

  ASSERT_EQ(drawing.entities.size(), 2u);
  EXPECT_EQ(drawing.entities[0].curves.size(), 3u);
  EXPECT_TRUE(drawing.entities[0].curves[1].is_arc());
  EXPECT_EQ(drawing.entities[1].number, 2u) << "vertices do not count";
}

TEST(DxfReader, AnOldPolylineNeedsNoEndOfItsSequence)
{
  Drawing const drawing =
      read_drawing(dxf_drawing("0 POLYLINE\n8 A\n0 VERTEX\n10 0\n20 0\n0 VERTEX\n10 5\n20 0\n" + LINE));

  ASSERT_EQ(drawing.entities.size(), 2u);
  EXPECT_EQ(drawing.entities[0].curves.size(), 1u);
}

TEST(DxfReader, TheFrameOfASplinePolylineIsNotPartOfIt)
{
  Entity const polyline =
      read_one("0 POLYLINE\n8 A\n70 4\n0 VERTEX\n10 0\n20 0\n70 8\n0 VERTEX\n10 3\n20 9\n70 16\n"
               "0 VERTEX\n10 5\n20 0\n70 8\n0 SEQEND\n8 A\n");

  ASSERT_EQ(polyline.curves.size(), 1u);
  EXPECT_EQ(polyline.curves[0].end.x, 5);
}

TEST(DxfReader, MeshesAreNoCurvesAndPolylinesInSpaceAreFlattened)
{
  std::string const vertices = "0 VERTEX\n10 0\n20 0\n30 1\n0 VERTEX\n10 5\n20 0\n30 7\n0 SEQEND\n8 A\n";

  EXPECT_EQ(read_one("0 POLYLINE\n8 A\n70 16\n" + vertices).use, Use::NOT_A_CURVE);
  EXPECT_EQ(read_one("0 POLYLINE\n8 A\n70 64\n" + vertices).use, Use::NOT_A_CURVE);
  Entity const in_space = read_one(with_extrusion("0 POLYLINE\n8 A\n70 8\n", "0", "-1") + vertices);
  ASSERT_EQ(in_space.curves.size(), 1u);
  EXPECT_EQ(in_space.curves[0].end.x, 5) << "its coordinates are those of the drawing";
}

TEST(DxfReader, AppliesTheExtrusionDirectionToFlatEntitiesOnly)
{
  Entity const arc = read_one(with_extrusion(ARC, "0", "-1"));
  ASSERT_EQ(arc.curves.size(), 1u);
  EXPECT_EQ(arc.curves[0].center.x, -10);
  EXPECT_LT(arc.curves[0].sweep, 0);

  EXPECT_EQ(
      read_one(with_extrusion("0 LWPOLYLINE\n8 A\n10 1\n20 0\n10 2\n20 0\n", "0", "-1")).curves[0].end.x, -2);
  EXPECT_EQ(read_one(with_extrusion("0 CIRCLE\n8 A\n10 1\n20 0\n40 1\n", "0", "-1")).curves[0].center.x, -1);
  EXPECT_EQ(read_one(with_extrusion(LINE, "0", "-1")).curves[0].end.x, 4);
  std::string const old =
      with_extrusion("0 POLYLINE\n8 A\n", "0", "-1") + "0 VERTEX\n10 1\n20 0\n0 VERTEX\n10 2\n20 0\n";
  EXPECT_EQ(read_one(old).curves[0].end.x, -2);
}

TEST(DxfReader, WhatLiesInATiltedPlaneIsNotCut)
{
  Entity const arc = read_one(with_extrusion(ARC, "1", "1"));

  EXPECT_EQ(arc.use, Use::NOT_SUPPORTED);
  EXPECT_EQ(arc.reason, "its plane is tilted against that of the drawing");
  EXPECT_TRUE(arc.curves.empty());
}

TEST(DxfReader, KnowsWhatCouldBeCutAndWhatIsAnnotation)
{
  for (char const* const type : {"ELLIPSE", "SPLINE", "INSERT"})
  {
    Entity const entity = read_one("0 " + std::string(type) + "\n8 A\n10 nonsense\n");
    EXPECT_EQ(entity.use, Use::NOT_SUPPORTED) << type;
    EXPECT_EQ(entity.reason, "this version cannot cut it") << type;
  }
  for (char const* const type : {"TEXT", "MTEXT", "DIMENSION", "POINT", "HATCH", "line"})
    EXPECT_EQ(read_one("0 " + std::string(type) + "\n8 A\n10 nonsense\n").use, Use::NOT_A_CURVE) << type;
}

TEST(DxfReader, LeavesOutPaperSpace)
{
  Drawing const drawing =
      read_drawing(dxf_drawing(LINE + "0 LINE\n67 1\n10 0\n20 0\n11 1\n21 1\n" + ARC + "67 0\n"));

  ASSERT_EQ(drawing.entities.size(), 2u);
  EXPECT_EQ(drawing.paper_space_entities, 1u);
  EXPECT_EQ(drawing.entities[1].number, 3u) << "but it keeps its number";
}

TEST(DxfReader, PassesOverOtherSections)
{
  std::string const text = dxf_groups("999 a comment\n0 SECTION\n2 BLOCKS\n0 BLOCK\n0 LINE\n10 x\n0 ENDSEC\n"
                                      "0 SECTION\n2 ENTITIES\n999 another\n" +
                                      LINE + "0 ENDSEC\n0 SECTION\n2 OBJECTS\n0 THING\n0 ENDSEC\n0 EOF\n");

  EXPECT_EQ(read_drawing(text).entities.size(), 1u);
}

TEST(DxfReader, ReadsTheUnitFromTheHeader)
{
  std::string const header =
      "0 SECTION\n2 HEADER\n9 $OTHER\n70 7\n9 $INSUNITS\n70      5\n9 $MORE\n70 8\n0 ENDSEC\n";

  EXPECT_EQ(read_drawing(dxf_groups(header + "0 EOF\n")).unit_code, 5);
  EXPECT_EQ(read_drawing(dxf_drawing(LINE)).unit_code, std::nullopt);
}

TEST(DxfReader, ReadsEveryKindOfLineEnd)
{
  std::string const text = dxf_drawing(LINE);
  std::string with_crlf;
  std::string with_cr;
  for (char const c : text)
  {
    with_crlf += c == '\n' ? "\r\n" : std::string(1, c);
    with_cr += c == '\n' ? '\r' : c;
  }

  for (std::string const& variant :
       {with_crlf, with_cr, "\xEF\xBB\xBF" + text, text + "\n\n  \n\x1A", text + "garbage"})
  {
    Drawing const drawing = read_drawing(variant);
    ASSERT_EQ(drawing.entities.size(), 1u);
    EXPECT_EQ(drawing.entities[0].layer, "CUT");
    EXPECT_EQ(drawing.entities[0].line, 5u);
  }
}

TEST(DxfReader, BlanksRoundNamesAndCodesDoNotMatter)
{
  Drawing const drawing = read_drawing(
      "  0\nSECTION\n  2\n ENTITIES \n  0\nLINE  \n  8\n  CUT \n 10\n  1 \n 20\n1\n 11\n2\n 21\n2\n"
      "  0\n ENDSEC\n  0\nEOF\n");

  ASSERT_EQ(drawing.entities.size(), 1u);
  EXPECT_EQ(drawing.entities[0].type, "LINE");
  EXPECT_EQ(drawing.entities[0].layer, "CUT");
}

TEST(DxfReader, NamesMayBeUtf8OrEightBit)
{
  EXPECT_EQ(read_one("0 TEXT\n8 Au\xDF"
                     "en\n")
                .layer,
            "Au\xC3\x9F"
            "en");
  EXPECT_EQ(read_one("0 TEXT\n8 Au\xC3\x9F"
                     "en\n")
                .layer,
            "Au\xC3\x9F"
            "en");
  EXPECT_EQ(read_one("0 TEXT\n").layer, "0") << "the layer of what names none";
}

TEST(DxfReader, RemarksOnceThatACodePageIsNotKnown)
{
  auto const drawing_in = [](std::string const& code_page, std::string const& layer)
  {
    return read_drawing(dxf_groups("0 SECTION\n2 HEADER\n9 $DWGCODEPAGE\n3 " + code_page +
                                   "\n0 ENDSEC\n0 SECTION\n"
                                   "2 ENTITIES\n0 TEXT\n8 " +
                                   layer + "\n0 TEXT\n8 " + layer + "\n0 ENDSEC\n0 EOF\n"));
  };

  Drawing const drawing = drawing_in("ANSI_1251", "\xDF");
  ASSERT_EQ(drawing.remarks.size(), 1u);
  EXPECT_EQ(drawing.remarks[0].text,
            "names are in code page ANSI_1251, which is not known here; they are read as ANSI_1252");
  EXPECT_EQ(drawing.remarks[0].line, 18u);
  EXPECT_TRUE(drawing_in("ANSI_1251", "A").remarks.empty()) << "no such name, no remark";
  EXPECT_TRUE(drawing_in("ANSI_1252", "\xDF").remarks.empty());
  EXPECT_TRUE(drawing_in("ansi_1252", "\xDF").remarks.empty());
}

TEST(DxfReader, HandlesAreHexadecimalInCapitals)
{
  EXPECT_EQ(read_one("0 TEXT\n5 1a\n").name(), "1A");
  EXPECT_EQ(read_one("0 TEXT\n5 1G\n").name(), "#1") << "no handle at all";
  EXPECT_EQ(read_one("0 TEXT\n5 \n").name(), "#1");
  EXPECT_EQ(read_one("0 TEXT\n5 0123456789ABCDEF\n").name(), "0123456789ABCDEF");
  EXPECT_EQ(read_one("0 TEXT\n5 0123456789ABCDEF0\n").name(), "#1") << "more than a handle can hold";
}

TEST(DxfReader, SaysWhereATextIsNoDrawing)
{
  std::string const section = "0\nSECTION\n2\nENTITIES\n";
  struct
  {
    char const* what;
    std::string text;
    char const* error;
  } const cases[] = {
      {"empty", "", "0: the file is empty: expected a DXF drawing"},
      {"blank", "\n \n", "0: the file is empty: expected a DXF drawing"},
      {"prose", "Dear reader,\nthis is a letter.\n", "1: expected a group code, found 'Dear reader,'"},
      {"long prose", std::string(100, 'x') + "\n",
       "1: expected a group code, found 'xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...'"},
      {"numbers", "1\n2\n3\n4\n", "1: expected the begin of a section, found group 1 '2'"},
      {"other file", "0\nHELLO\n", "1: expected the begin of a section, found group 0 'HELLO'"},
      {"code too high", section + "1072\nx\n", "5: expected a group code, found '1072'"},
      {"code too low", section + "-6\nx\n", "5: expected a group code, found '-6'"},
      {"blank line within", "0\nSECTION\n\n2\nENTITIES\n", "3: expected a group code, found ''"},
      {"no name", "0\nSECTION\n0\nENDSEC\n", "1: the section has no name (group 2)"},
      {"nothing after SECTION", "0\nSECTION\n", "1: the section has no name (group 2)"},
      {"no entity", section + "8\nCUT\n", "5: expected an entity, found group 8"},
      {"zero byte", std::string("0\nSECTION\n2\nA\0B\n", 15),
       "4: this is not a text file: it holds a zero byte"},
      {"binary DXF", "Some Binary DXF\r\n\x1A rest",
       "0: this is a binary DXF file; only ASCII DXF can be read"},
      {"DWG", "AC1032 and more", "0: this is a DWG file; only ASCII DXF can be read"},
      {"bad unit", "0\nSECTION\n2\nHEADER\n9\n$INSUNITS\n70\nmm\n0\nENDSEC\n",
       "8: group 70 is not an integer: 'mm'"},
  };
  for (auto const& c : cases)
    EXPECT_EQ(error_of(c.text), c.error) << c.what;
}

TEST(DxfReader, SaysWhereAFileIsCutOff)
{
  std::string const section = "0 SECTION\n2 ENTITIES\n";
  EXPECT_EQ(error_of(dxf_groups(section + "0 LINE\n5 2F\n10 1\n")),
            "11: LINE 2F: the file is cut off: it ends in the middle of this entity");
  EXPECT_EQ(error_of(dxf_groups(section)), "5: the file is cut off: it ends within section ENTITIES");
  EXPECT_EQ(error_of(dxf_groups("0 SECTION\n2 HEADER\n9 $X\n")),
            "7: the file is cut off: it ends within section HEADER");
  EXPECT_EQ(error_of(dxf_groups("0 SECTION\n2 TABLES\n0 X\n")),
            "7: the file is cut off: it ends within section TABLES");
  EXPECT_EQ(error_of(dxf_groups(section) + "10\n"), "5: the file is cut off: it ends after group code 10");
}

TEST(DxfReader, NamesTheEntityThatIsDamaged)
{
  struct
  {
    char const* what;
    std::string entity;
    char const* error;
  } const cases[] = {
      {"word", "0 LINE\n5 2F\n10 one\n20 0\n11 1\n21 1\n", "10: LINE 2F: group 10 is not a number: 'one'"},
      {"nan", "0 LINE\n5 2F\n10 nan\n20 0\n11 1\n21 1\n", "10: LINE 2F: group 10 is not a number: 'nan'"},
      {"inf", "0 LINE\n5 2F\n10 0\n20 inf\n11 1\n21 1\n", "12: LINE 2F: group 20 is not a number: 'inf'"},
      {"too large", "0 LINE\n10 0\n20 0\n11 1e400\n21 1\n", "12: LINE #1: group 11 is not a number: '1e400'"},
      {"no end y", "0 LINE\n5 A\n10 0\n20 0\n11 1\n", "5: LINE A: no end y (group 21)"},
      {"no radius", "0 CIRCLE\n5 A\n10 0\n20 0\n", "5: CIRCLE A: no radius (group 40)"},
      {"negative radius", "0 ARC\n5 A\n10 0\n20 0\n40 -1\n50 0\n51 1\n",
       "14: ARC A: the radius is below zero"},
      {"no end angle", "0 ARC\n5 A\n10 0\n20 0\n40 1\n50 0\n", "5: ARC A: no end angle (group 51)"},
      {"vertex without y", "0 LWPOLYLINE\n5 A\n10 0\n20 0\n10 1\n10 2\n20 0\n",
       "5: LWPOLYLINE A: vertex 2 has no y (group 20)"},
      {"last vertex without y", "0 LWPOLYLINE\n5 A\n10 0\n20 0\n10 1\n",
       "5: LWPOLYLINE A: vertex 2 has no y (group 20)"},
      {"old vertex", "0 POLYLINE\n5 A\n0 VERTEX\n10 0\n20 x\n",
       "14: POLYLINE A: group 20 is not a number: 'x'"},
      {"old vertex without x", "0 POLYLINE\n5 A\n0 VERTEX\n20 1\n",
       "9: POLYLINE A: no x of a vertex (group 10)"},
      {"flags", "0 LWPOLYLINE\n5 A\n70 1.5\n", "10: LWPOLYLINE A: group 70 is not an integer: '1.5'"},
      {"no direction", "0 CIRCLE\n5 A\n10 0\n20 0\n40 1\n230 0\n",
       "5: CIRCLE A: the extrusion direction (group 210) has no length"},
  };
  for (auto const& c : cases)
    EXPECT_EQ(error_of(dxf_drawing(c.entity)), c.error) << c.what;
}

TEST(DxfReader, ADrawingWithoutEntitiesIsADrawing)
{
  EXPECT_TRUE(read_drawing("0\nEOF\n").entities.empty());
  EXPECT_TRUE(read_drawing("0\nSECTION\n2\nHEADER\n0\nENDSEC\n").entities.empty())
      << "nor does it need an end mark";
}

TEST(Drawing, EntitiesStandInTheOrderOfTheirHandles)
{
  Drawing drawing;
  for (char const* const handle : {"", "10", "9", "00A", "", "a"})
  {
    Entity entity;
    entity.number = drawing.entities.size() + 1;
    entity.handle = handle;
    drawing.entities.push_back(entity);
  }
  drawing.entities.back().handle = "A";

  order_entities(drawing);

  std::vector<std::string> names;
  for (Entity const& entity : drawing.entities)
    names.push_back(entity.name());
  EXPECT_THAT(names, testing::ElementsAre("9", "00A", "A", "10", "#1", "#5"));
}

TEST(Drawing, AnEntityIsNamedByHandleOrNumber)
{
  Entity entity;
  entity.number = 12;
  entity.handle = "2F";

  for (char const* const name : {"2F", "2f", "02F", "#12"})
    EXPECT_TRUE(is_named(entity, name)) << name;
  for (char const* const name : {"", "12", "#2F", "#012", "2F0", "#"})
    EXPECT_FALSE(is_named(entity, name)) << name;
  entity.handle.clear();
  EXPECT_FALSE(is_named(entity, "0"));
  EXPECT_EQ(entity.name(), "#12");
}
