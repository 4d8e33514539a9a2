#include "layers.h"

#include <gtest/gtest.h>

using namespace contours;

TEST(Layers, PatternsDescribeWholeNames)
{
  struct
  {
    char const* pattern;
    char const* name;
    bool matches;
  } const cases[] = {
      {"CUT", "CUT", true},
      {"CUT", "cut", true},
      {"CUT", "CUTS", false},
      {"CUT", "CU", false},
      {"*", "", true},
      {"*", "anything", true},
      {"", "", true},
      {"", "x", false},
      {"CUT*", "CUT", true},
      {"CUT*", "CUT_1", true},
      {"*CUT", "LASER-CUT", true},
      {"*CUT", "CUTTER", false},
      {"A*B*C", "AxxBxxC", true},
      {"A*B*C", "AxxBxxCx", false},
      {"*ab", "aab", true},
      {"*aab", "aaab", true},
      {"**", "x", true},
      {"a**b", "ab", true},
      {"?", "x", false},
      {"\xC3\x84*", "\xC3\x84rger", true},
  };
  for (auto const& c : cases)
    EXPECT_EQ(matches(c.pattern, c.name), c.matches) << c.pattern << " and " << c.name;
}

TEST(Layers, ManyStarsTakeNoLongTime)
{
  std::string pattern;
  for (int i = 0; i < 100; ++i)
    pattern += "a*";

  EXPECT_FALSE(matches(pattern + "b", std::string(10000, 'a')));
}

TEST(Layers, WithoutAChoiceAllAreTaken)
{
  EXPECT_TRUE(LayerChoice().has("CUT"));
  EXPECT_TRUE(LayerChoice().has(""));
}

TEST(Layers, ExcludedOnesAreLeftOutEvenIfAskedFor)
{
  LayerChoice choice;
  choice.only = {"CUT*", "HOLES"};
  choice.exclude = {"*_OLD"};

  EXPECT_TRUE(choice.has("CUT_1"));
  EXPECT_TRUE(choice.has("holes"));
  EXPECT_FALSE(choice.has("CUT_OLD"));
  EXPECT_FALSE(choice.has("NOTES"));
}
