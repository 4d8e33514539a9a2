#include "oz_utils.h"

#include "report_recorder.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
std::vector<std::string> split(char const* text, char const* delimiter)
{
  std::vector<std::string> parts;
  for (OzString const& part : oz_split(OzString(text), delimiter))
  {
    EXPECT_EQ(part.length(), std::string(part.as_const_c_string()).size());
    parts.emplace_back(part.as_const_c_string());
  }
  return parts;
}

TEST(OzBlankstring, HasAsManyBlanksAsAskedFor)
{
  EXPECT_EQ(oz_blankstring(1), " ");
  EXPECT_EQ(oz_blankstring(4), "    ");
  EXPECT_EQ(oz_blankstring(4).length(), 4u);
  EXPECT_EQ(oz_blankstring(1000), std::string(1000, ' ').c_str());
}

TEST(OzBlankstring, OfLessThanOneIsEmpty)
{
  EXPECT_TRUE(oz_blankstring(0).null());
  EXPECT_TRUE(oz_blankstring(-1).null());
  EXPECT_TRUE(oz_blankstring(INT_MIN).null());
}

TEST(OzTolower, MakesALoweredCopyOfAConstantString)
{
  OzString const text("Plate 7A_Z[");

  OzString const lowered = oz_tolower(text);

  EXPECT_EQ(lowered, "plate 7a_z[");
  EXPECT_EQ(text, "Plate 7A_Z[");
  EXPECT_EQ(oz_tolower("ABC"), "abc");
}

TEST(OzTolower, LowersAVariableInPlace)
{
  static_assert(std::is_same_v<decltype(oz_tolower(std::declval<OzString&>())), void>);
  OzString text("Plate");

  oz_tolower(text);

  EXPECT_EQ(text, "plate");
}

TEST(OzTolower, LeavesBytesAboveAsciiAlone)
{
  OzString text("\xC3\x89\xFF\x80 A");

  oz_tolower(text);

  EXPECT_EQ(text, "\xC3\x89\xFF\x80 a");
}

TEST(OzTolower, StopsAtTheFirstZero)
{
  OzString text("ABCD");
  text[1] = '\0';

  oz_tolower(text);

  EXPECT_EQ(text[0], 'a');
  EXPECT_EQ(text[2], 'C');
  EXPECT_EQ(text.length(), 4u);
}

TEST(OzTolower, OfAnEmptyStringIsEmptyAndReportsNothing)
{
  OzString text;
  ReportRecorder const recorder;

  oz_tolower(text);

  EXPECT_TRUE(text.null());
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzSplit, CutsAtEachDelimiter)
{
  using Parts = std::vector<std::string>;
  struct
  {
    char const* what;
    char const* text;
    char const* delimiter;
    Parts parts;
  } const cases[] = {
      {"two parts", "a,b", ",", {"a", "b"}},
      {"three longer parts", "ab,cde,f", ",", {"ab", "cde", "f"}},
      {"delimiter at the end", "a,b,", ",", {"a", "b"}},
      {"delimiter in front", ",a", ",", {"", "a"}},
      {"twice in a row", "a,,b", ",", {"a", "", "b"}},
      {"delimiters only", ",,", ",", {"", ""}},
      {"one delimiter", ",", ",", {""}},
      {"no delimiter", "ab", ",", {}},
      {"empty", "", ",", {}},
      {"a longer delimiter leaves its rest", "aXYb", "XY", {"a", "Yb"}},
      {"a longer delimiter at the end", "aXY", "XY", {"a", "Y"}},
      {"one that overlaps itself", "aaa", "aa", {"", "", "a"}},
      {"half a delimiter", "aXb", "XY", {}},
  };
  for (auto const& c : cases)
    EXPECT_EQ(split(c.text, c.delimiter), c.parts) << c.what;
}

TEST(OzSplit, ReportsNothing)
{
  ReportRecorder const recorder;

  oz_split("a,,b,", ",");
  oz_split("", ",");

  EXPECT_EQ(recorder.units(), reports(0, ""));
}
} // namespace
