#include "text.h"

#include <gtest/gtest.h>

using namespace contours;

TEST(Text, KnowsValidUtf8)
{
  for (char const* const text :
       {"", "abc", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x99\x82", "\xF4\x8F\xBF\xBF"})
    EXPECT_TRUE(is_utf8(text)) << text;
}

TEST(Text, KnowsWhatOnlyLooksLikeUtf8)
{
  struct
  {
    char const* what;
    char const* text;
  } const cases[] = {{"lone tail", "\x80"},
                     {"lead without tail", "\xC3"},
                     {"tail is ASCII", "\xC3"
                                       "a"},
                     {"overlong, 2", "\xC0\xAF"},
                     {"overlong, 3", "\xE0\x80\xAF"},
                     {"overlong, 4", "\xF0\x80\x80\xAF"},
                     {"surrogate", "\xED\xA0\x80"},
                     {"too high", "\xF4\x90\x80\x80"},
                     {"never a lead", "\xFF"},
                     {"cut", "\xE2\x82"}};
  for (auto const& c : cases)
    EXPECT_FALSE(is_utf8(c.text)) << c.what;
}

TEST(Text, DecodeNameKeepsUtf8)
{
  EXPECT_EQ(decode_name("Stra\xC3\x9F"
                        "e"),
            "Stra\xC3\x9F"
            "e");
}

TEST(Text, DecodeNameTakesOtherBytesForCodePage1252)
{
  EXPECT_EQ(decode_name("Au\xDF"
                        "en"),
            "Au\xC3\x9F"
            "en");
  EXPECT_EQ(decode_name("\x80 5"), "\xE2\x82\xAC 5") << "the euro sign";
  EXPECT_EQ(decode_name("\x9F"), "\xC5\xB8") << "the last of the upper controls";
  EXPECT_EQ(decode_name("\xFF"), "\xC3\xBF");
  EXPECT_EQ(decode_name("\x81"), "\xEF\xBF\xBD") << "not in the code page";
}

TEST(Text, DecodeNameUnderstandsEscapes)
{
  EXPECT_EQ(decode_name("\\U+00D8 5"), "\xC3\x98 5");
  EXPECT_EQ(decode_name("a\\U+20acb"), "a\xE2\x82\xAC"
                                       "b");
  EXPECT_EQ(decode_name("\\U+D800"), "\xEF\xBF\xBD") << "half a pair is no character";
  EXPECT_EQ(decode_name("\\U+00D"), "\\U+00D") << "too short";
  EXPECT_EQ(decode_name("\\U+00GH"), "\\U+00GH") << "no number";
  EXPECT_EQ(decode_name("\\U+001B["), "\xEF\xBF\xBD[") << "no control character on the terminal";
}

TEST(Text, DecodeNameReplacesControlCharacters)
{
  EXPECT_EQ(decode_name("a\x1B[31m"), "a\xEF\xBF\xBD[31m");
  EXPECT_EQ(decode_name("\x7F"), "\xEF\xBF\xBD");
  EXPECT_EQ(decode_name("\xC2\x9B"), "\xEF\xBF\xBD");
}

TEST(Text, PrintableReplacesWhatIsNoText)
{
  EXPECT_EQ(printable("caf\xC3\xA9"), "caf\xC3\xA9");
  EXPECT_EQ(printable("a\xFF\tb"), "a\xEF\xBF\xBD\xEF\xBF\xBD"
                                   "b");
}

TEST(Text, WidthCountsCharacters)
{
  EXPECT_EQ(width(""), 0u);
  EXPECT_EQ(width("abc"), 3u);
  EXPECT_EQ(width("B\xC3\xBCgel \xE2\x82\xAC"), 7u);
}

TEST(Text, CaseMattersNotForLettersAToZ)
{
  EXPECT_TRUE(equal_without_case('a', 'A'));
  EXPECT_TRUE(equal_without_case('Z', 'z'));
  EXPECT_TRUE(equal_without_case('1', '1'));
  EXPECT_FALSE(equal_without_case('a', 'b'));
  EXPECT_FALSE(equal_without_case('@', '`'));
  EXPECT_FALSE(equal_without_case('[', '{'));
}
