#include "ozstring.h"

#include "report_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
using Array = OzArray<char, OzAllocator<char>>;

std::uint64_t capacity_of(OzString const& text)
{
  struct Peek : OzString
  {
    using OzString::chars;
  };
  struct PeekArray : Array
  {
    using Array::capacity;
  };
  return (text.*(&Peek::chars)).*(&PeekArray::capacity);
}

/// Shows what is inside a string.
class Probe : public OzString
{
public:
  using OzString::OzString;
  using OzString::operator=;
  Probe() = default;
  explicit Probe(OzString const& text)
    : OzString(text)
  {
  }

  std::uint64_t size() const { return chars.size(); }
  std::uint64_t capacity() const { return capacity_of(*this); }
  char const* buffer() const { return chars.begin(); }
  /// All that the buffer holds, up to its capacity.
  std::string bytes() const { return std::string(chars.begin(), capacity()); }
};

std::string text_of(OzString const& text)
{
  return text.as_const_c_string();
}

/// `n` letters.
std::string letters(std::uint64_t n)
{
  return std::string(n, 'x');
}

/// A text that a byte of value 0 divides, in a string.
OzString with_zero_inside()
{
  OzString text("abcdef");
  text[2] = '\0';
  return text;
}

// Construction

TEST(OzString, StartsEmptyWithABufferOfOneByte)
{
  Probe const text;

  EXPECT_EQ(text.length(), 0u);
  EXPECT_TRUE(text.null());
  EXPECT_STREQ(text.as_const_c_string(), "");
  EXPECT_EQ(text.size(), 1u);
  EXPECT_EQ(text.capacity(), 1u);
}

TEST(OzString, HoldsTheTextItIsBuiltFrom)
{
  Probe const text("abc");

  EXPECT_STREQ(text.as_const_c_string(), "abc");
  EXPECT_EQ(text.length(), 3u);
  EXPECT_EQ(text.size(), 4u);
  EXPECT_FALSE(text.null());
}

TEST(OzString, BuiltFromNullIsEmpty)
{
  Probe const text(static_cast<char const*>(nullptr));

  EXPECT_TRUE(text.null());
  EXPECT_STREQ(text.as_const_c_string(), "");
  EXPECT_EQ(text.capacity(), 1u);
}

TEST(OzString, IsBuiltImplicitlyFromAText)
{
  OzString const text = "abc";

  EXPECT_EQ(text, "abc");
}

TEST(OzString, CapacityDoublesFrom1AndGrowsInStepsFrom64000On)
{
  struct
  {
    std::uint64_t length;
    std::uint64_t capacity;
  } const cases[] = {{0, 1},   {1, 2},     {2, 4},         {3, 4},         {4, 8},
                     {16, 32}, {200, 256}, {63998, 65536}, {63999, 65537}, {80000, 81921}};
  for (auto const& c : cases)
  {
    Probe const built(letters(c.length).c_str());
    Probe assigned;
    assigned = letters(c.length).c_str();
    Probe resized;
    resized.resize(c.length + 1, false);

    EXPECT_EQ(built.capacity(), c.capacity) << c.length;
    EXPECT_EQ(assigned.capacity(), c.capacity) << c.length;
    EXPECT_EQ(resized.capacity(), c.capacity) << c.length;
    EXPECT_EQ(text_of(built), letters(c.length));
    EXPECT_EQ(text_of(assigned), letters(c.length));
  }
}

TEST(OzString, AppendingCharactersTakesTheSameCapacities)
{
  std::vector<std::uint64_t> capacities;
  Probe text;
  text.append(OzString(letters(63000).c_str()));
  while (text.length() < 70000)
  {
    text.append('y');
    if (capacities.empty() || capacities.back() != text.capacity())
      capacities.push_back(text.capacity());
  }

  EXPECT_EQ(capacities, (std::vector<std::uint64_t>{65536, 69632, 73728}));
  EXPECT_EQ(text_of(text), letters(63000) + std::string(7000, 'y'));
}

TEST(OzString, CopyGrowsFromNoBuffer)
{
  struct
  {
    std::uint64_t length;
    std::uint64_t capacity;
  } const cases[] = {{0, 1}, {2, 4}, {4, 8}, {63998, 65536}, {63999, 65536}, {80000, 81920}};
  for (auto const& c : cases)
  {
    OzString const original(letters(c.length).c_str());

    Probe const copy(original);

    EXPECT_EQ(copy.capacity(), c.capacity) << c.length;
    EXPECT_EQ(copy.length(), c.length);
    EXPECT_EQ(text_of(copy), letters(c.length));
  }
}

TEST(OzString, CopyHasItsOwnBuffer)
{
  OzString original("abc");
  OzString const copy(original);

  original[0] = 'x';

  EXPECT_EQ(copy, "abc");
  EXPECT_EQ(original, "xbc");
}

TEST(OzString, CopyTakesTheSizeButOnlyTheBytesOfTheText)
{
  Probe const copy(with_zero_inside());

  EXPECT_EQ(copy.length(), 6u);
  EXPECT_EQ(copy.bytes(), std::string("ab\0\0\0\0\0\0", 8));
}

TEST(OzString, CopyOfAStringWithoutATerminatorStaysWithinItsBuffer)
{
  Probe original("abcd");
  original.resize(4, true); // `abcd` fills it to the end

  Probe const copy(original);

  EXPECT_EQ(copy.size(), 4u);
  EXPECT_EQ(copy.bytes(), std::string("abcd\0\0\0\0", 8)) << "with a 0 behind, as in the original";
  EXPECT_TRUE(copy == original);
}

TEST(OzString, CopyOfAStringOfSize0IsEmpty)
{
  Probe original("abc");
  original.resize(0, true);
  Probe assigned("xyz");

  Probe const copy(original);
  assigned = original;

  EXPECT_TRUE(copy.null());
  EXPECT_EQ(copy.capacity(), 1u);
  EXPECT_TRUE(assigned.null());
}

TEST(OzString, BuffersAreZeroBehindTheText)
{
  Probe const text("abcde");
  Probe shrunk("abcdefgh");
  shrunk = "x";
  Probe grown("abc");
  grown.append('d').append('e');

  EXPECT_EQ(text.bytes(), std::string("abcde\0\0\0", 8));
  EXPECT_EQ(shrunk.bytes(), "x" + std::string(15, '\0'));
  EXPECT_EQ(grown.bytes(), std::string("abcde\0\0\0", 8));
}

// Numbers

TEST(OzString, NumbersAreRightAlignedInTheirField)
{
  struct
  {
    int value;
    int width;
    char pad;
    char const* text;
  } const cases[] = {
      {0, 3, ' ', "  0"},
      {0, 0, ' ', "0"},
      {0, -5, ' ', "0"},
      {0, 1, 'x', "0"},
      {0, 4, '0', "0000"},
      {7, 1, ' ', "7"},
      {42, 5, '0', "00042"},
      {42, 5, ' ', "   42"},
      {42, 2, '0', "42"},
      {42, 1, '0', "42"},
      {42, -1, ' ', "42"},
      {-42, 6, '0', "-00042"},
      {-42, 6, ' ', "  -42"},
      {-42, 6, '*', "-***42"},
      {-42, 4, ' ', "-42"},
      {-42, 5, ' ', " -42"},
      {-42, 4, '0', "-042"},
      {-42, 3, '0', "-42"},
      {-42, 0, '0', "-42"},
      {-42, 0, ' ', "-42"},
      {-7, INT_MIN, ' ', "-7"},
      {INT_MAX, 12, ' ', "  2147483647"},
      {-INT_MAX, 12, '0', "-02147483647"},
      {INT_MIN, 4, '0', "-000"},
      {INT_MIN, 4, ' ', "  -"},
      {INT_MIN, 0, ' ', "-"},
  };
  for (auto const& c : cases)
  {
    OzString const text(c.value, c.width, c.pad);

    EXPECT_STREQ(text.as_const_c_string(), c.text) << c.value << ", " << c.width << ", '" << c.pad << "'";
    EXPECT_EQ(text.length(), std::strlen(c.text)) << c.value << ", " << c.width << ", '" << c.pad << "'";
  }
}

TEST(OzString, NumbersMayBeWiderThanAnyFixedBuffer)
{
  OzString const padded(-42, 1000, '0');
  OzString const blank(-42, 1000, ' ');

  EXPECT_EQ(text_of(padded), "-" + std::string(997, '0') + "42");
  EXPECT_EQ(text_of(blank), std::string(996, ' ') + "-42");
}

TEST(OzString, PaddedByZeroBytesANumberHasItsLengthAndNoText)
{
  OzString const text(42, 4, '\0');

  EXPECT_EQ(text.length(), 4u);
  EXPECT_EQ(text, "");
  EXPECT_EQ(text[2], '4');
}

// Assignment

TEST(OzString, AssignmentReplacesTheTextAndKeepsTheBufferIfItFits)
{
  Probe text("abcdefgh");
  char const* const buffer = text.buffer();

  OzString& result = static_cast<OzString&>(text) = OzString("xy");

  EXPECT_EQ(&result, &text);
  EXPECT_EQ(text.buffer(), buffer);
  EXPECT_EQ(text.capacity(), 16u);
  EXPECT_EQ(text.bytes(), "xy" + std::string(14, '\0'));
  EXPECT_EQ(text.length(), 2u);

  text = "a longer text than that";

  EXPECT_EQ(text, "a longer text than that");
  EXPECT_EQ(text.capacity(), 32u);
}

TEST(OzString, AssignmentToItselfDoesNothing)
{
  OzString text = with_zero_inside();
  OzString const& same = text;

  text = same;

  EXPECT_EQ(text.length(), 6u);
  EXPECT_EQ(text[3], 'd');
}

TEST(OzString, AssignmentTakesTheSizeAndLeavesOldBytesBehindTheText)
{
  Probe text("123456");

  text = with_zero_inside();

  EXPECT_EQ(text.length(), 6u);
  EXPECT_EQ(text.bytes(), std::string("ab\0"
                                      "456\0\0",
                                      8));
}

TEST(OzString, AssignmentOfAStringWithoutATerminatorStaysWithinTheBuffer)
{
  Probe source("abcd");
  source.resize(4, true);
  Probe text;

  text = source;

  EXPECT_EQ(text.size(), 4u);
  EXPECT_EQ(text.bytes(), std::string("abcd\0\0\0\0", 8)) << "with a 0 behind, as in the source";
  EXPECT_TRUE(text == source);
}

TEST(OzString, AssigningNullKeepsTheText)
{
  OzString text("abc");

  OzString& result = text = static_cast<char const*>(nullptr);

  EXPECT_EQ(&result, &text);
  EXPECT_EQ(text, "abc");
}

TEST(OzString, AssigningATailOfItsOwnTextGivesThatTail)
{
  for (std::uint64_t length : {3u, 40u, 5000u})
  {
    std::string expected;
    for (std::uint64_t i = 0; i < length; ++i)
      expected.push_back(static_cast<char>('a' + i % 26));
    Probe text(expected.c_str());

    text = text.as_const_c_string() + 2;

    EXPECT_EQ(text_of(text), expected.substr(2));
    EXPECT_EQ(text.length(), length - 2);
    EXPECT_EQ(text.bytes().substr(length - 2), std::string(text.capacity() - (length - 2), '\0'));
  }
  OzString whole("abc");
  whole = whole.as_const_c_string();
  EXPECT_EQ(whole, "abc");
  whole = whole.as_const_c_string() + 3;
  EXPECT_TRUE(whole.null());
}

// Access

TEST(OzString, LengthAndNullGoByTheSize)
{
  OzString text("abc");

  text.append('\0');

  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.length(), 4u);
  text = "";
  EXPECT_TRUE(text.null());
  text.append('\0');
  EXPECT_FALSE(text.null());
  EXPECT_EQ(text, "");
  text.resize(0, true);
  EXPECT_EQ(text.length(), 0u);
  EXPECT_FALSE(text.null());
}

TEST(OzString, ASizeOf1WithoutATerminatorIsNotNull)
{
  OzString text("a");
  text.resize(1, true);

  EXPECT_EQ(text.length(), 0u);
  EXPECT_FALSE(text.null());
}

TEST(OzString, CharactersUpToTheTerminatorAreInRange)
{
  OzString text("abc");
  OzString const& constant = text;
  ReportRecorder const recorder;

  text[1] = 'x';

  EXPECT_EQ(text[0], 'a');
  EXPECT_EQ(constant[1], 'x');
  EXPECT_EQ(text[3], '\0');
  EXPECT_EQ(constant[3], '\0');
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzString, AnIndexBehindTheTerminatorIsReportedAndUsed)
{
  Probe text("abcd"); // in a buffer of eight
  OzString const& constant = text;
  ReportRecorder recorder;

  text[5] = 'x';

  EXPECT_EQ(recorder.units(), reports(1, "ozstring.h"));
  recorder.clear();

  EXPECT_EQ(constant[5], 'x');

  EXPECT_EQ(recorder.units(), reports(1, "ozstring.h"));
  EXPECT_EQ(text.length(), 4u);
}

struct Refused
{
  std::string unit;
};

void refuse(char const* file, int)
{
  std::string const path(file);
  throw Refused{path.substr(path.rfind('/') + 1)};
}

template <class Action>
std::string refusal_of(Action const& action)
{
  dkb_assertion_handler = &refuse;
  std::string unit = "nothing";
  try
  {
    action();
  }
  catch (Refused const& refused)
  {
    unit = refused.unit;
  }
  dkb_assertion_handler = nullptr;
  return unit;
}

TEST(OzString, ANegativeIndexIsOutOfRangeAndAHandlerMayThrow)
{
  OzString text("abc");
  OzString const& constant = text;

  EXPECT_EQ(refusal_of([&] { static_cast<void>(text[-1]); }), "ozstring.h");
  EXPECT_EQ(refusal_of([&] { static_cast<void>(constant[-1]); }), "ozstring.h");
  EXPECT_EQ(refusal_of([&] { static_cast<void>(text[INT_MIN]); }), "ozstring.h");
  EXPECT_EQ(refusal_of([&] { static_cast<void>(text[INT_MAX]); }), "ozstring.h");
  EXPECT_EQ(text, "abc");
}

TEST(OzString, ABadIndexIsUsedWithoutAHandler)
{
  Probe text("abcd");

  EXPECT_EQ(&text[6], text.buffer() + 6);
}

TEST(OzString, HandsOutItsBuffer)
{
  Probe text("abc");
  ReportRecorder const recorder;

  text.as_c_string()[0] = 'x';

  EXPECT_EQ(text.as_c_string(), text.buffer());
  EXPECT_EQ(text.as_const_c_string(), text.buffer());
  EXPECT_EQ(text, "xbc");
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzString, ASizeOf0IsReportedOnceByWhateverNeedsTheText)
{
  OzString empty("abc");
  empty.resize(0, true);
  OzString const other("abc");
  ReportRecorder recorder;
  auto const count = [&]
  {
    std::vector<std::string> const units = recorder.units();
    recorder.clear();
    EXPECT_EQ(units, reports(units.size(), "ozstring.h"));
    return units.size();
  };

  EXPECT_STREQ(empty.as_c_string(), "");
  EXPECT_EQ(count(), 1u);
  EXPECT_STREQ(empty.as_const_c_string(), "");
  EXPECT_EQ(count(), 1u);
  EXPECT_FALSE(empty == other);
  EXPECT_EQ(count(), 1u);
  EXPECT_FALSE(other == empty);
  EXPECT_EQ(count(), 1u);
  EXPECT_TRUE(empty != other);
  EXPECT_EQ(count(), 1u);
  EXPECT_TRUE(empty < "x");
  EXPECT_EQ(count(), 1u);
  EXPECT_TRUE(empty == empty);
  EXPECT_EQ(count(), 2u);
  EXPECT_EQ(other.find(empty, 0), 0);
  EXPECT_EQ(count(), 1u);
  EXPECT_EQ(empty.find("x", 0), -1);
  EXPECT_EQ(count(), 0u);
  empty[0] = '\0';
  EXPECT_EQ(count(), 1u);
}

// Comparison

TEST(OzString, ComparesByteByByteAsUnsignedUpToTheFirstZero)
{
  struct
  {
    char const* a;
    char const* b;
    int order;
  } const cases[] = {
      {"", "", 0},      {"abc", "abc", 0},   {"abc", "abd", -1},         {"ab", "abc", -1},
      {"", "a", -1},    {"B", "a", -1},      {"z", "\xE9", -1},          {"\x7F", "\x80", -1},
      {"abc", "b", -1}, {"\xFF", "\xFF", 0}, {"a\xC3", "a\xC3\xA9", -1},
  };
  for (auto const& c : cases)
  {
    OzString const a(c.a);
    OzString const b(c.b);
    bool const less = c.order < 0;

    EXPECT_EQ(a == b, !less) << c.a << ' ' << c.b;
    EXPECT_EQ(a == c.b, !less) << c.a << ' ' << c.b;
    EXPECT_EQ(a != b, less) << c.a << ' ' << c.b;
    EXPECT_EQ(a != c.b, less) << c.a << ' ' << c.b;
    EXPECT_EQ(a < b, less) << c.a << ' ' << c.b;
    EXPECT_EQ(a < c.b, less) << c.a << ' ' << c.b;
    EXPECT_TRUE(a <= b) << c.a << ' ' << c.b;
    EXPECT_TRUE(a <= c.b) << c.a << ' ' << c.b;
    EXPECT_FALSE(a > b) << c.a << ' ' << c.b;
    EXPECT_FALSE(a > c.b) << c.a << ' ' << c.b;
    EXPECT_EQ(a >= b, !less) << c.a << ' ' << c.b;
    EXPECT_EQ(a >= c.b, !less) << c.a << ' ' << c.b;

    EXPECT_FALSE(b < a) << c.a << ' ' << c.b;
    EXPECT_FALSE(b < c.a) << c.a << ' ' << c.b;
    EXPECT_EQ(b <= a, !less) << c.a << ' ' << c.b;
    EXPECT_EQ(b <= c.a, !less) << c.a << ' ' << c.b;
    EXPECT_EQ(b > a, less) << c.a << ' ' << c.b;
    EXPECT_EQ(b > c.a, less) << c.a << ' ' << c.b;
    EXPECT_TRUE(b >= a) << c.a << ' ' << c.b;
    EXPECT_TRUE(b >= c.a) << c.a << ' ' << c.b;
  }
}

TEST(OzString, ComparisonIgnoresTheSize)
{
  OzString longer("ab");
  longer.append('\0');
  OzString const divided = with_zero_inside();

  EXPECT_TRUE(longer == OzString("ab"));
  EXPECT_TRUE(longer == divided);
  EXPECT_TRUE(divided == "ab");
  EXPECT_FALSE(longer != "ab");
}

// append

TEST(OzString, AppendAddsCharactersAndTexts)
{
  OzString text;
  ReportRecorder const recorder;

  OzString& result = text.append('a').append(OzString("bcd")).append("ef").append('g');

  EXPECT_EQ(&result, &text);
  EXPECT_EQ(text, "abcdefg");
  EXPECT_EQ(text.length(), 7u);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzString, AppendTakesACharacterOfItsOwn)
{
  Probe text("abc");
  ASSERT_EQ(text.capacity(), 4u);

  text.append(text[1]);

  EXPECT_EQ(text, "abcb");
}

TEST(OzString, AppendedZerosLengthenTheStringAndNotTheText)
{
  Probe text("abc");

  text.append('\0').append('\0').append('d');

  EXPECT_EQ(text, "abcd");
  EXPECT_EQ(text.length(), 6u);
  EXPECT_EQ(text.bytes(), std::string("abcd\0\0\0\0", 8));
}

TEST(OzString, AppendToItselfDoublesTheText)
{
  OzString text("abc");

  text.append(text);
  EXPECT_EQ(text, "abcabc");
  EXPECT_EQ(text.length(), 6u);
  text.append(text);
  EXPECT_EQ(text, "abcabcabcabc");

  OzString empty;
  empty.append(empty);
  EXPECT_TRUE(empty.null());
}

TEST(OzString, AppendAddsTheSizeOfTheOtherAndItsTextBehindTheOwnText)
{
  OzString text("xy");

  text.append(with_zero_inside());

  EXPECT_EQ(text, "xyab");
  EXPECT_EQ(text.length(), 8u);
  OzString divided = with_zero_inside();
  divided.append("X");
  EXPECT_EQ(divided.length(), 7u);
  EXPECT_EQ(divided, "abX");
  EXPECT_EQ(divided[4], 'e');
}

TEST(OzString, AppendOfAStringOfSize0ChangesNothing)
{
  OzString nothing("q");
  nothing.resize(0, true);
  OzString text("abc");
  ReportRecorder const recorder;

  text.append(nothing);

  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.length(), 3u);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzString, AppendToAStringOfSize0MakesAnOrdinaryString)
{
  OzString text("q");
  text.resize(0, true);
  OzString letter("q");
  letter.resize(0, true);
  OzString zero("q");
  zero.resize(0, true);

  text.append(OzString("abc"));
  letter.append('a');
  zero.append('\0');

  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.length(), 3u);
  EXPECT_EQ(letter, "a");
  EXPECT_EQ(letter.length(), 1u);
  EXPECT_TRUE(zero.null());
}

TEST(OzString, AppendToAFullBufferWithoutATerminatorGrowsToFit)
{
  for (std::uint64_t cut : {3u, 4u})
  {
    std::string const kept = std::string("abcdefg").substr(0, cut);
    Probe letter("abcdefg");
    letter.resize(cut, true);
    Probe text(letter);
    Probe number(letter);

    letter.append('X');
    text.append(OzString("XYZ"));
    number.append(17);

    EXPECT_EQ(text_of(letter), kept + "X") << cut;
    EXPECT_EQ(letter.length(), cut + 1) << cut;
    EXPECT_EQ(text_of(text), kept + "XYZ") << cut;
    EXPECT_EQ(text.length(), cut + 3) << cut;
    EXPECT_EQ(text_of(number), kept + "17") << cut;
  }
}

TEST(OzString, AppendsIntegers)
{
  OzString text("n=");

  text.append(0).append(-42).append(7u).append(INT_MAX).append(INT_MIN).append(UINT_MAX);

  EXPECT_EQ(text, "n=0-4272147483647-21474836484294967295");
  EXPECT_EQ(text.length(), 38u);
}

TEST(OzString, AppendsFloatingNumbersAsPrintfDoes)
{
  struct
  {
    double value;
    int precision;
    bool general;
    char const* text;
  } const cases[] = {
      {3.14159, 3, false, "3.142"},
      {3.14159, 3, true, "3.14"},
      {0.0, 0, false, "0"},
      {-0.0, 1, false, "-0.0"},
      {1e10, 3, true, "1e+10"},
      {1234567.0, 4, true, "1.235e+06"},
      {2.5, 0, false, "2"},
      {100.0, 6, true, "100"},
      {1e300, 1, true, "1e+300"},
      {-1.0 / 3.0, 17, true, "-0.33333333333333331"},
      {std::numeric_limits<double>::infinity(), 3, true, "inf"},
      {-std::numeric_limits<double>::infinity(), 3, false, "-inf"},
      {std::numeric_limits<double>::quiet_NaN(), 3, true, "nan"},
  };
  for (auto const& c : cases)
  {
    OzString text("v=");

    text.append(c.value, c.precision, c.general);

    EXPECT_EQ(text_of(text), std::string("v=") + c.text);
    EXPECT_EQ(text.length(), std::strlen(c.text) + 2);
  }
}

TEST(OzString, LongNumbersComeOutWhole)
{
  for (int precision : {40, 60, 61, 62, 63, 400})
  {
    OzString text("v=");

    text.append(1.0, precision, false);

    EXPECT_EQ(text_of(text), "v=1." + std::string(static_cast<std::size_t>(precision), '0'));
    EXPECT_EQ(text.length(), static_cast<std::uint64_t>(precision) + 4);
  }
  OzString large;
  large.append(1e300, 0, false);
  EXPECT_EQ(large.length(), 301u);
  EXPECT_EQ(text_of(large).substr(0, 16), "1000000000000000");
}

// format

TEST(OzString, FormatReplacesTheText)
{
  OzString text("something that was here before");
  ReportRecorder const recorder;

  OzString& result = text.format(20, "%d-%s", 7, "x");

  EXPECT_EQ(&result, &text);
  EXPECT_EQ(text, "7-x");
  EXPECT_EQ(text.length(), 3u);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzString, FormatReportsATextThatFillsItsSize)
{
  OzString text;
  ReportRecorder recorder;

  text.format(5, "%s", "abc");
  EXPECT_EQ(recorder.units(), reports(0, ""));
  EXPECT_EQ(text, "abc");

  text.format(4, "%s", "abc");
  EXPECT_EQ(recorder.units(), reports(1, "ozstring.cpp"));
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.length(), 3u);
}

TEST(OzString, FormatCutsALongerTextAtItsSizeAndReports)
{
  Probe text;
  ReportRecorder const recorder;

  text.format(4, "%s", "abcdef");

  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.length(), 3u);
  EXPECT_EQ(text.capacity(), 4u);
  EXPECT_EQ(recorder.units(), reports(1, "ozstring.cpp"));
}

TEST(OzString, FormatWorksWithoutAHandler)
{
  OzString text;

  text.format(4, "%s", "abcdef");

  EXPECT_EQ(text, "abc");
}

TEST(OzString, FormatOfNothingIsEmpty)
{
  OzString text("abc");

  text.format(8, "%s", "");

  EXPECT_TRUE(text.null());
}

// resize and set_size

TEST(OzString, ResizeKeepsTheTextWhateverIsAsked)
{
  OzString text("abc");

  text.resize(10, false);

  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.length(), 9u);
  text.resize(100, false);
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.length(), 99u);
}

TEST(OzString, ResizeWritesNoTerminator)
{
  Probe text("abcdefg");

  text.resize(3, true);

  EXPECT_EQ(text.length(), 2u);
  EXPECT_EQ(text.bytes(), std::string("abc\0\0\0\0\0", 8));
}

TEST(OzString, AStringThatWasCutIsReadAsWhatIsLeftOfItAndSoAreItsCopies)
{
  for (std::uint64_t cut = 2; cut <= 8; ++cut)
  {
    std::string const left = std::string("abcdefg").substr(0, cut);
    OzString text("abcdefg");
    text.resize(cut, true);
    OzString assigned("0123456789");
    assigned = text;
    OzString const copy(text);

    for (OzString const* const each : std::initializer_list<OzString const*>{&text, &copy, &assigned})
    {
      EXPECT_EQ(text_of(*each), left) << cut;
      EXPECT_EQ(each->find(left.c_str(), 0), 0) << cut;
      EXPECT_EQ(each->find("abcdefg", 0), cut >= 7 ? 0 : -1) << cut;
      EXPECT_TRUE(*each == left.c_str()) << cut;
      EXPECT_EQ(each->length(), cut - 1) << cut;
    }
  }
}

TEST(OzString, SetSizeFillsUpWithBlanks)
{
  OzString empty;
  empty.set_size(3, true);
  EXPECT_EQ(empty, "   ");
  EXPECT_EQ(empty.length(), 3u);

  OzString text("ab");
  text.set_size(5, true);
  EXPECT_EQ(text, "ab   ");
  text.set_size(5, true);
  EXPECT_EQ(text, "ab   ");
}

TEST(OzString, SetSizeCutsTheText)
{
  Probe text("abcdef");

  text.set_size(2, true);

  EXPECT_EQ(text, "ab");
  EXPECT_EQ(text.length(), 2u);
  EXPECT_EQ(text.bytes(), "ab" + std::string(6, '\0'));
  text.set_size(0, false);
  EXPECT_TRUE(text.null());
}

TEST(OzString, SetSizeWithoutKeepingLosesTheTextOnlyWhereItReallocates)
{
  Probe moved("abc"); // fills its buffer of four
  moved.set_size(6, false);
  EXPECT_EQ(moved.length(), 6u);
  EXPECT_EQ(moved.bytes(), std::string(8, '\0'));

  Probe stayed("abcd"); // leaves room in its buffer of eight
  stayed.set_size(6, false);
  EXPECT_EQ(stayed.length(), 6u);
  EXPECT_EQ(stayed, "abcd");
}

TEST(OzString, ANegativeSizeIsReportedAndRefused)
{
  OzString text("abc");
  {
    ReportRecorder const recorder;
    text.set_size(-1, true);
    text.set_size(INT_MIN, false);
    EXPECT_EQ(recorder.units(), reports(2, "ozstring.cpp"));
  }

  text.set_size(-1, true);

  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.length(), 3u);
}

TEST(OzString, AnImpossibleSizeThrowsAndChangesNothing)
{
  Probe text("abc");

  EXPECT_THROW(text.resize(~std::uint64_t(0), true), std::bad_alloc);
  EXPECT_THROW(text.resize(std::uint64_t(1) << 63, true), std::bad_alloc);

  EXPECT_EQ(text, "abc");
  EXPECT_EQ(text.length(), 3u);
  EXPECT_EQ(text.capacity(), 4u);
}

// find

TEST(OzString, FindCountsFromTheStartOfTheString)
{
  struct
  {
    char const* text;
    char const* pattern;
    std::uint64_t pos;
    int found;
  } const cases[] = {
      {"abc", "c", 0, 2},
      {"abca", "a", 1, 3},
      {"abca", "a", 0, 0},
      {"abca", "a", 3, 3},
      {"abca", "a", 4, -1},
      {"abc", "b", 3, -1},
      {"abc", "b", 100, -1},
      {"abc", "b", 2, -1},
      {"abc", "x", 0, -1},
      {"abc", "abcd", 0, -1},
      {"abc", "abc", 0, 0},
      {"abc", "bc", 1, 1},
      {"abc", "cb", 0, -1},
      {"aab", "ab", 0, 1},
      {"ababac", "abac", 0, 2},
      {"abaabaaab", "aaab", 0, 5},
      {"", "x", 0, -1},
      {"", "", 0, 0},
      {"", "", 100, 0},
      {"abc", "", 100, 0},
      {"abc", "", 1, 0},
      {"\xC3\xA9x", "x", 0, 2},
      {"x\xFFy", "\xFF", 0, 1},
      {"abc", "c", std::uint64_t(1) << 32, 2}, // the low 32 bits count
      {"abca", "a", (std::uint64_t(1) << 32) + 1, 3},
      {"abc", "a", std::uint64_t(1) << 31, -1}, // cut to a negative number, which is large
      {"abc", "a", ~std::uint64_t(0), -1},
      {"abc", "", ~std::uint64_t(0), 0},
  };
  for (auto const& c : cases)
  {
    OzString const text(c.text);

    EXPECT_EQ(text.find(c.pattern, c.pos), c.found) << c.text << ", " << c.pattern << ", " << c.pos;
    EXPECT_EQ(text.find(OzString(c.pattern), c.pos), c.found) << c.text << ", " << c.pattern << ", " << c.pos;
  }
}

TEST(OzString, FindLooksAtTheTextBehindThePositionUpToItsFirstZero)
{
  OzString const text = with_zero_inside(); // ab, 0, def

  EXPECT_EQ(text.find("d", 0), -1);
  EXPECT_EQ(text.find("d", 3), 3);
  EXPECT_EQ(text.find("b", 2), -1);
  EXPECT_EQ(text.find("f", 4), 5);
}

TEST(OzString, FindAgreesWithTheStandardStringOnRandomTexts)
{
  std::mt19937 random(11);
  for (int step = 0; step < 20000; ++step)
  {
    std::string text;
    std::string pattern;
    for (std::uint64_t n = random() % 70; n > 0; --n)
      text.push_back("ab\xE9"[random() % 3]);
    for (std::uint64_t n = random() % 6; n > 0; --n)
      pattern.push_back("abc"[random() % (step % 10 == 0 ? 3 : 2)]);
    std::uint64_t const pos = random() % (text.size() + 2);

    std::size_t const expected = pattern.empty() ? 0 : text.find(pattern, pos);

    ASSERT_EQ(OzString(text.c_str()).find(pattern.c_str(), pos),
              expected == std::string::npos ? -1 : static_cast<int>(expected))
        << "step " << step << ": " << text << ", " << pattern << ", " << pos;
  }
}

// substr

TEST(OzString, SubstrTakesWhatIsThere)
{
  struct
  {
    std::uint64_t pos;
    int len;
    char const* part;
  } const cases[] = {
      {0, 3, "abc"},
      {0, 2, "ab"},
      {1, -1, "bc"},
      {1, 1, "b"},
      {1, 0, ""},
      {3, 2, ""},
      {1, 100, "bc"},
      {0, -1, "abc"},
      {2, INT_MAX, "c"},
      {2, INT_MIN, "c"},
      {~std::uint64_t(0), 1, ""},
      {100, -1, ""},
  };
  for (auto const& c : cases)
  {
    OzString const text("abc");

    OzString const part = text.substr(c.pos, c.len);

    EXPECT_STREQ(part.as_const_c_string(), c.part) << c.pos << ", " << c.len;
    EXPECT_EQ(part.length(), std::strlen(c.part)) << c.pos << ", " << c.len;
  }
}

TEST(OzString, SubstrGoesByTheSizeAndKeepsZeroBytes)
{
  OzString const part = with_zero_inside().substr(1, 3);

  EXPECT_EQ(part.length(), 3u);
  EXPECT_EQ(part, "b");
  EXPECT_EQ(part[2], 'd');
  EXPECT_EQ(part[3], '\0');
}

TEST(OzString, SubstrGrowsFromAnEmptyString)
{
  OzString const text(letters(70000).c_str());

  EXPECT_EQ(text.substr(0, 5).length(), 5u);
  EXPECT_EQ(capacity_of(text.substr(0, 5)), 8u);
  EXPECT_EQ(capacity_of(text.substr(0, 63999)), 65537u);
  EXPECT_EQ(capacity_of(text.substr(0, 0)), 1u);
}

// The class as a whole

TEST(OzString, IsOneArrayAndNothingElse)
{
  EXPECT_EQ(sizeof(OzString), sizeof(Array));
  EXPECT_FALSE(std::is_polymorphic_v<OzString>);
  EXPECT_FALSE(std::has_virtual_destructor_v<OzString>);
}

TEST(OzString, EachOperationHasItsType)
{
  static_assert(std::is_same_v<decltype(std::declval<OzString const&>().length()), std::uint64_t>);
  static_assert(std::is_same_v<decltype(std::declval<OzString&>()[0]), char&>);
  static_assert(std::is_same_v<decltype(std::declval<OzString const&>()[0]), char const&>);
  static_assert(std::is_same_v<decltype(std::declval<OzString const&>().find("", 0)), int>);
  static_assert(!std::is_constructible_v<OzString, char const*, std::uint64_t>);
  static_assert(!std::is_constructible_v<OzString, int, int>);
  SUCCEED();
}

TEST(OzString, AgreesWithTheStandardStringAtEachOfManyRandomSteps)
{
  std::mt19937 random(3);
  auto const below = [&](std::uint64_t n) { return static_cast<std::uint64_t>(random()) % n; };
  auto const random_text = [&](std::uint64_t longest)
  {
    std::string text;
    for (std::uint64_t n = below(longest); n > 0; --n)
      text.push_back(static_cast<char>('a' + below(4)));
    return text;
  };
  Probe text;
  std::string model;
  std::uint64_t capacity = 1;
  for (int step = 0; step < 50000; ++step)
  {
    std::string const other = random_text(12);
    switch (below(12))
    {
    case 0:
      text.append(other.c_str());
      model += other;
      break;
    case 1:
      text.append(OzString(other.c_str()));
      model += other;
      break;
    case 2:
      text.append('z');
      model += 'z';
      break;
    case 3:
      text.append(static_cast<int>(below(1000)) - 500);
      model = text_of(text);
      break;
    case 4:
      text = other.c_str();
      model = other;
      break;
    case 5:
      static_cast<OzString&>(text) = OzString(other.c_str());
      model = other;
      break;
    case 6:
    {
      int const n = static_cast<int>(below(60));
      text.set_size(n, true);
      model.resize(static_cast<std::size_t>(n), ' ');
      break;
    }
    case 7:
    {
      std::uint64_t const pos = below(model.size() + 1);
      text = OzString(text.substr(pos, static_cast<int>(other.size()))).as_const_c_string();
      model = model.substr(pos, other.size());
      break;
    }
    case 8:
    {
      std::uint64_t const pos = below(model.size() + 1);
      text = text.as_const_c_string() + pos;
      model = std::string(model, pos);
      break;
    }
    case 9:
      if (model.size() < 100)
      {
        text.append(text);
        model += std::string(model);
      }
      break;
    case 10:
      text.format(50, "<%s>", other.c_str());
      model = "<" + other + ">";
      capacity = std::max<std::uint64_t>(capacity, 64); // the room that was asked for
      break;
    default:
      ASSERT_EQ(text < other.c_str(), model < other) << "step " << step;
      ASSERT_EQ(text == OzString(other.c_str()), model == other) << "step " << step;
      break;
    }

    while (capacity < model.size() + 1)
      capacity *= 2;
    ASSERT_EQ(text_of(text), model) << "step " << step;
    ASSERT_EQ(text.length(), model.size()) << "step " << step;
    ASSERT_EQ(text.capacity(), capacity) << "step " << step;
    ASSERT_EQ(text.bytes().substr(model.size()), std::string(capacity - model.size(), '\0'))
        << "step " << step;
    ASSERT_EQ(text.null(), model.empty()) << "step " << step;
  }
}
} // namespace
