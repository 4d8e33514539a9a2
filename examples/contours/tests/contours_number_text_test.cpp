#include "number_text.h"

#include <gtest/gtest.h>

#include <limits>

using namespace contours;

TEST(NumberText, ReadsWhatProgramsWrite)
{
  struct
  {
    char const* text;
    double value;
  } const cases[] = {
      {"1", 1.0},      {"-2.5", -2.5},    {"  3.25  ", 3.25},
      {"+4", 4.0},     {".5", 0.5},       {"6.", 6.0},
      {"1e3", 1000.0}, {"1.5E-2", 0.015}, {"\t7\r", 7.0},
      {"-0", 0.0},     {"1e-400", 0.0},   {"1E-999", 0.0},
      {"00012", 12.0}, {"1e+2", 100.0},   {"2.2250738585072014e-308", 2.2250738585072014e-308}};
  for (auto const& c : cases)
    EXPECT_EQ(parse_number(c.text), c.value) << c.text;
}

TEST(NumberText, RefusesWhatIsNoFiniteNumber)
{
  for (char const* const text : {"", " ", "nan", "NaN", "inf", "-inf", "infinity", "1e400", "-1e400", "1,5",
                                 "1.5x", "x", "+-1", "++1", "+", "-", "1 2", "0x10", "--1"})
    EXPECT_EQ(parse_number(text), std::nullopt) << text;
}

TEST(NumberText, ReadsIntegersThatFit)
{
  EXPECT_EQ(parse_integer("  62"), 62);
  EXPECT_EQ(parse_integer("-5 "), -5);
  EXPECT_EQ(parse_integer("+7"), 7);
  for (char const* const text : {"", "1.0", "x", "2147483648", "1 1"})
    EXPECT_EQ(parse_integer(text), std::nullopt) << text;
}

TEST(NumberText, FixedHasExactlyTheDecimalsAndNoNegativeZero)
{
  EXPECT_EQ(fixed(188.4955592, 3), "188.496");
  EXPECT_EQ(fixed(2.0, 1), "2.0");
  EXPECT_EQ(fixed(-0.0004, 3), "0.000");
  EXPECT_EQ(fixed(-0.0, 2), "0.00");
  EXPECT_EQ(fixed(-0.0006, 3), "-0.001");
  EXPECT_EQ(fixed(7.5, 0), "8");
  EXPECT_EQ(fixed(std::numeric_limits<double>::max(), 3).size(), 313u);
}

TEST(NumberText, RoundedDropsZerosButKeepsOneDecimal)
{
  EXPECT_EQ(rounded(188.4955592, 3), "188.496");
  EXPECT_EQ(rounded(18420.1, 3), "18420.1");
  EXPECT_EQ(rounded(0.0, 3), "0.0");
  EXPECT_EQ(rounded(-0.0001, 3), "0.0");
  EXPECT_EQ(rounded(100.0, 3), "100.0");
  EXPECT_EQ(rounded(0.0123, 3), "0.012");
}

TEST(NumberText, CompactDropsAWholeFraction)
{
  EXPECT_EQ(compact(100.0, 4), "100");
  EXPECT_EQ(compact(0.0, 4), "0");
  EXPECT_EQ(compact(-0.00001, 4), "0");
  EXPECT_EQ(compact(1.25, 4), "1.25");
  EXPECT_EQ(compact(-12.34567, 4), "-12.3457");
}

TEST(NumberText, ShortestReadsBackAsTheSameValue)
{
  EXPECT_EQ(shortest(1.0), "1.0");
  EXPECT_EQ(shortest(25.4), "25.4");
  EXPECT_EQ(shortest(0.01), "0.01");
  EXPECT_EQ(shortest(1e-6), "1e-06");
}
