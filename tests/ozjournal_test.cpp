#include "ozjournal.h"

#include "ozarray.h"
#include "ozdynobj.h"

#include "report_recorder.h"
#include "vtable_slot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
/// Keeps each piece that reaches the sink. The settings that are protected are open here.
class Pieces : public OzJournal
{
public:
  Pieces() = default;
  Pieces(Pieces const& other) = default;
  Pieces& operator=(Pieces const& other) = default;

  void flush() override { pieces.push_back("<flush>"); }

  /// All text so far, which is forgotten then.
  std::string take()
  {
    std::string text;
    for (std::string const& piece : pieces)
      text += piece;
    pieces.clear();
    return text;
  }

  char const* format() const { return fp_format_; }
  void set_format(char const* format) { std::snprintf(fp_format_, sizeof fp_format_, "%s", format); }

  std::vector<std::string> pieces;

protected:
  void append_to_journal(OzString const& text) override { pieces.push_back(text.as_const_c_string()); }
};

/// What printf makes of `number`: nothing of a format that it refuses.
std::string printed(char const* format, double number)
{
  int const length = std::snprintf(nullptr, 0, format, number);
  if (length < 0)
    return "";
  std::string text(static_cast<std::size_t>(length) + 1, '?');
  std::snprintf(&text[0], text.size(), format, number);
  text.pop_back();
  return text;
}

/// A typed object whose name and identity a test chooses.
class Named : public OzDynObj
{
public:
  Named(OzString const& name, int identity)
    : name_(name)
    , identity_(identity)
  {
  }
  OzString const& class_name() const override { return name_; }
  OzDynObj* clone() const override { return new Named(*this); }
  int identity() const override { return identity_; }

private:
  OzString name_;
  int identity_;
};

/// Puts what goes to a standard stream aside while it lives, and counts the flushes.
class Redirected : private std::stringbuf
{
public:
  explicit Redirected(std::ostream& stream)
    : stream_(stream)
    , former_(stream.rdbuf(this))
  {
  }
  ~Redirected() override { stream_.rdbuf(former_); }

  std::string text() const { return str(); }
  int flushes = 0;

private:
  int sync() override
  {
    ++flushes;
    return 0;
  }

  std::ostream& stream_;
  std::streambuf* former_;
};
} // namespace

// Settings.

TEST(OzJournal, StartsWithSixDigitsNoWidthAndLetterF)
{
  Pieces const journal;

  EXPECT_EQ(journal.precision(), 6);
  EXPECT_EQ(journal.width(), 0);
  EXPECT_EQ(journal.fp_format_spec(), 'f');
  EXPECT_STREQ(journal.format(), "%.6f");
}

TEST(OzJournal, ComposesItsFormatFromPrecisionWidthAndLetter)
{
  struct
  {
    char const* what;
    int precision;
    int width;
    char letter;
    char const* format;
  } const cases[] = {
      {"no width", 6, 0, 'f', "%.6f"},
      {"a width one too small", 6, 7, 'f', "%.6f"},
      {"the least width", 6, 8, 'f', "%8.6f"},
      {"a large width", 6, 30, 'f', "%30.6f"},
      {"another letter", 6, 0, 'g', "%.6g"},
      {"both", 3, 12, 'E', "%12.3E"},
      {"one digit", 1, 2, 'f', "%.1f"},
      {"one digit in the least width", 1, 3, 'f', "%3.1f"},
      {"a precision whose least width is beyond an int", INT_MAX, 0, 'f', "%.2147483647f"},
      {"a precision and a width that large", INT_MAX, INT_MAX, 'f', "%.2147483647f"},
      {"a width that large", 6, INT_MAX, 'f', "%2147483647.6f"},
  };
  for (auto const& c : cases)
  {
    Pieces journal;
    journal.set_fp_format_spec(c.letter);
    journal.set_width(c.width);
    journal.set_precision(c.precision);
    EXPECT_STREQ(journal.format(), c.format) << c.what;
    EXPECT_EQ(journal.precision(), c.precision) << c.what;
    EXPECT_EQ(journal.width(), c.width) << c.what;
    EXPECT_EQ(journal.fp_format_spec(), c.letter) << c.what;
  }
}

TEST(OzJournal, TakesEightLetters)
{
  Pieces journal;
  ReportRecorder const recorder;

  for (char const letter : std::string("aAeEfFgG"))
  {
    journal.set_fp_format_spec(letter);
    EXPECT_EQ(journal.fp_format_spec(), letter);
    EXPECT_EQ(std::string(journal.format()), std::string("%.6") + letter);
  }
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzJournal, ReportsAndRefusesABadPrecision)
{
  Pieces journal;
  {
    ReportRecorder const recorder;
    journal.set_precision(0);
    journal.set_precision(-3);
    EXPECT_EQ(recorder.units(), reports(2, "ozjournal.cpp"));
  }
  journal.set_precision(0);

  EXPECT_EQ(journal.precision(), 6);
  EXPECT_STREQ(journal.format(), "%.6f");
  ReportRecorder const recorder;
  journal.set_precision(1);
  EXPECT_THAT(recorder.units(), IsEmpty());
  EXPECT_EQ(journal.precision(), 1);
}

TEST(OzJournal, ReportsAndRefusesANegativeWidth)
{
  Pieces journal;
  journal.set_width(10);
  {
    ReportRecorder const recorder;
    journal.set_width(-1);
    EXPECT_EQ(recorder.units(), reports(1, "ozjournal.cpp"));
  }
  journal.set_width(-1);

  EXPECT_EQ(journal.width(), 10);
  EXPECT_STREQ(journal.format(), "%10.6f");
  ReportRecorder const recorder;
  journal.set_width(0);
  EXPECT_THAT(recorder.units(), IsEmpty());
  EXPECT_EQ(journal.width(), 0);
  EXPECT_STREQ(journal.format(), "%.6f");
}

TEST(OzJournal, ReportsAndRefusesEveryOtherLetter)
{
  int refused = 0;
  for (int code = CHAR_MIN; code <= CHAR_MAX; ++code)
  {
    char const letter = static_cast<char>(code);
    if (letter != '\0' && std::strchr("aAeEfFgG", letter) != nullptr)
      continue;
    Pieces journal;
    ReportRecorder const recorder;
    journal.set_fp_format_spec(letter);
    EXPECT_EQ(recorder.units(), reports(1, "ozjournal.cpp")) << code;
    EXPECT_EQ(journal.fp_format_spec(), 'f') << code;
    EXPECT_STREQ(journal.format(), "%.6f") << code;
    ++refused;
  }
  EXPECT_EQ(refused, 248);
}

TEST(OzJournal, EachSettingComposesTheFormatThroughTheOverridableOperation)
{
  class Counting : public Pieces
  {
  public:
    int composed = 0;

  protected:
    void update_fp_format() override { ++composed; }
  } journal;

  journal.set_precision(3);
  EXPECT_EQ(journal.composed, 1);
  journal.set_width(9);
  EXPECT_EQ(journal.composed, 2);
  journal.set_fp_format_spec('e');
  EXPECT_EQ(journal.composed, 3);
  journal.set_precision(0);
  journal.set_width(-1);
  journal.set_fp_format_spec('x');
  EXPECT_EQ(journal.composed, 3);
}

TEST(OzJournal, ACopyPrintsWithTheSameFormatButStartsAgainFromF)
{
  Pieces original;
  original.set_precision(3);
  original.set_width(12);
  original.set_fp_format_spec('e');

  Pieces copy(original);
  copy << 1.5;

  EXPECT_EQ(copy.precision(), 3);
  EXPECT_EQ(copy.width(), 12);
  EXPECT_EQ(copy.take(), "   1.500e+00");
  EXPECT_EQ(copy.fp_format_spec(), 'f');
  copy.set_precision(4);
  EXPECT_STREQ(copy.format(), "%12.4f");
}

TEST(OzJournal, AssignmentTakesOverTheLetterToo)
{
  Pieces original;
  original.set_precision(3);
  original.set_width(12);
  original.set_fp_format_spec('e');
  Pieces assigned;

  EXPECT_EQ(&(assigned = original), &assigned);

  EXPECT_EQ(assigned.precision(), 3);
  EXPECT_EQ(assigned.width(), 12);
  EXPECT_EQ(assigned.fp_format_spec(), 'e');
  EXPECT_STREQ(assigned.format(), "%12.3e");
  assigned.set_precision(4);
  EXPECT_STREQ(assigned.format(), "%12.4e");
}

TEST(OzJournal, AssignmentToItselfChangesNothing)
{
  Pieces journal;
  journal.set_fp_format_spec('g');
  Pieces const& itself = journal;

  journal = itself;

  EXPECT_STREQ(journal.format(), "%.6g");
  EXPECT_EQ(journal.fp_format_spec(), 'g');
}

TEST(OzJournal, VirtualFunctionsStandInTheirOrder)
{
  class Open : public OzJournal
  {
  public:
    static int slot_of_update() { return vtable_slot(&Open::update_fp_format); }
    static int slot_of_sink() { return vtable_slot(&Open::append_to_journal); }
  };

  EXPECT_EQ(vtable_slot(&OzJournal::flush), 2);
  EXPECT_EQ(vtable_slot(&OzJournal::precision), 3);
  EXPECT_EQ(vtable_slot(&OzJournal::width), 4);
  EXPECT_EQ(vtable_slot(&OzJournal::fp_format_spec), 5);
  EXPECT_EQ(vtable_slot(&OzJournal::set_precision), 6);
  EXPECT_EQ(vtable_slot(&OzJournal::set_width), 7);
  EXPECT_EQ(vtable_slot(&OzJournal::set_fp_format_spec), 8);
  EXPECT_EQ(Open::slot_of_update(), 9);
  EXPECT_EQ(Open::slot_of_sink(), 10);
  EXPECT_EQ(vtable_slot(&OzToken::append_to_journal), 2);
  EXPECT_EQ(sizeof(OzJournal), 8u + 4 + 4 + 64 + 8);
}

// Texts.

TEST(OzJournal, WritesEachOperandInOnePiece)
{
  Pieces journal;

  journal << OzString("text") << "more" << 'c' << -1 << 2u << std::int64_t(-3) << std::uint64_t(4) << 1.5;

  EXPECT_THAT(journal.pieces, ElementsAre("text", "more", "c", "-1", "2", "-3", "4", "1.500000"));
}

TEST(OzJournal, NullAndTheZeroCharacterWriteNothing)
{
  Pieces journal;

  journal << static_cast<char const*>(nullptr) << '\0';

  EXPECT_EQ(journal.take(), "");
}

TEST(OzJournal, WritesTheEndsOfEveryIntegerType)
{
  Pieces journal;
  struct
  {
    char const* what;
    std::string text;
    char const* expected;
  } const cases[] = {
      {"int", (journal << INT_MIN, journal.take()), "-2147483648"},
      {"unsigned", (journal << UINT_MAX, journal.take()), "4294967295"},
      {"long, lowest", (journal << LONG_MIN, journal.take()), "-9223372036854775808"},
      {"long, highest", (journal << LONG_MAX, journal.take()), "9223372036854775807"},
      {"unsigned long", (journal << ULONG_MAX, journal.take()), "18446744073709551615"},
      {"long long, lowest", (journal << LLONG_MIN, journal.take()), "-9223372036854775808"},
      {"long long, highest", (journal << LLONG_MAX, journal.take()), "9223372036854775807"},
      {"unsigned long long", (journal << ULLONG_MAX, journal.take()), "18446744073709551615"},
      {"size_t", (journal << std::size_t(0), journal.take()), "0"},
      {"short", (journal << static_cast<short>(-7), journal.take()), "-7"},
      {"unsigned short", (journal << static_cast<unsigned short>(65535), journal.take()), "65535"},
      {"bool", (journal << true, journal.take()), "1"},
      {"float", (journal << 0.5f, journal.take()), "0.500000"},
  };
  for (auto const& c : cases)
    EXPECT_EQ(c.text, c.expected) << c.what;
}

TEST(OzJournal, WritesPointersAsPrintfDoes)
{
  Pieces journal;
  int value = 0;
  char text[32];
  std::snprintf(text, sizeof text, "%p", static_cast<void*>(&value));

  journal << static_cast<void const*>(&value);
  EXPECT_EQ(journal.take(), text);

  journal << reinterpret_cast<void const*>(0x1234abcd);
  EXPECT_EQ(journal.take(), "0x1234abcd");
}

TEST(OzJournal, NamesAnObjectInALineOfItsOwn)
{
  Pieces journal;

  journal << Named("Circle", 42);

  EXPECT_THAT(journal.pieces, ElementsAre("OzObject : Circle, identity : 42\n"));
}

TEST(OzJournal, WritesALongClassNameWhole)
{
  Pieces journal;
  std::string const name(1000, 'n');

  journal << Named(OzString(name.c_str()), INT_MIN);

  EXPECT_EQ(journal.take(), "OzObject : " + name + ", identity : -2147483648\n");
}

TEST(OzJournal, WalksAnIteratorOfIntegers)
{
  OzArray<int> numbers;
  OzArrayIterator<int> iterator(&numbers);
  Pieces journal;

  journal << iterator;
  EXPECT_THAT(journal.pieces, ElementsAre("OzIntIterator( ", ")"));

  journal.pieces.clear();
  numbers.append(1);
  numbers.append(-2);
  iterator.next(); // the walk begins with a reset
  journal << iterator;
  EXPECT_THAT(journal.pieces, ElementsAre("OzIntIterator( ", "1", " ", "-2", " ", ")"));
  EXPECT_TRUE(iterator.done());
}

TEST(OzJournal, WalksAnIteratorOfDoublesInItsFormat)
{
  OzArray<double> numbers;
  OzArrayIterator<double> iterator(&numbers);
  Pieces journal;
  journal.set_precision(2);

  journal << iterator;
  EXPECT_EQ(journal.take(), "OzDoubleIterator( )");

  numbers.append(1.0);
  numbers.append(2.5);
  iterator.next();
  journal << iterator;
  EXPECT_THAT(journal.pieces, ElementsAre("OzDoubleIterator( ", "1.00", " ", "2.50", " ", ")"));
}

TEST(OzJournal, OperatorsChain)
{
  Pieces journal;
  OzArray<int> numbers;
  OzArrayIterator<int> integers(&numbers);
  OzArray<double> more_numbers;
  OzArrayIterator<double> doubles(&more_numbers);

  EXPECT_EQ(&(journal << "a"), &journal);
  EXPECT_EQ(&(journal << integers), &journal);
  EXPECT_EQ(&(journal << doubles), &journal);
  EXPECT_EQ(&(journal << ozEndExpr), &journal);
  EXPECT_EQ(&(journal << Named("N", 1)), &journal);
}

// Tokens.

TEST(OzJournal, EndOfExpressionEndsTheLineAndFlushes)
{
  Pieces journal;

  journal << "a" << ozEndExpr << "b";

  EXPECT_THAT(journal.pieces, ElementsAre("a", "\n", "<flush>", "b"));
}

TEST(OzJournal, EndOfSectionLeavesABlankLineAndFlushes)
{
  Pieces journal;

  journal << "a" << ozEndSection << "b";

  EXPECT_THAT(journal.pieces, ElementsAre("a", "\n\n", "<flush>", "b"));
}

TEST(OzJournal, ATokenOfAClientActsOnTheJournal)
{
  class Rule : public OzToken
  {
  public:
    void append_to_journal(OzJournal& journal) override { journal << "---" << ozEndExpr; }
  } rule;
  Pieces journal;

  journal << rule;

  EXPECT_THAT(journal.pieces, ElementsAre("---", "\n", "<flush>"));
}

TEST(OzJournal, IndentationIsSingleBlanks)
{
  Pieces journal;

  Oz_DebugIndentation(journal, 0);
  Oz_DebugIndentation(journal, -5);
  EXPECT_THAT(journal.pieces, IsEmpty());

  Oz_DebugIndentation(journal, 4);
  EXPECT_THAT(journal.pieces, ElementsAre(" ", " ", " ", " "));
}

// Floating-point numbers come out as printf makes them, however they are made.

TEST(OzJournal, NumbersAreThoseOfPrintfForEveryLetterWidthAndPrecision)
{
  double const chosen[] = {0.0,
                           -0.0,
                           1.0,
                           -1.5,
                           0.1,
                           0.5,
                           2.5,
                           9.9999995,
                           99999.5,
                           999999.5,
                           1e-5,
                           123456789.125,
                           1e15,
                           1e16,
                           1e22,
                           1e300,
                           -1e300,
                           std::numeric_limits<double>::max(),
                           std::numeric_limits<double>::min(),
                           std::numeric_limits<double>::denorm_min(),
                           std::numeric_limits<double>::epsilon(),
                           std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN(),
                           -std::numeric_limits<double>::quiet_NaN()};
  std::vector<double> numbers(std::begin(chosen), std::end(chosen));
  std::mt19937_64 random(20250611);
  for (int i = 0; i < 200; ++i)
  {
    std::uint64_t const bits = random();
    double number;
    std::memcpy(&number, &bits, sizeof number);
    numbers.push_back(number);                                              // any magnitude
    numbers.push_back(std::uniform_real_distribution<>(-1e4, 1e4)(random)); // a coordinate
  }

  for (char const letter : std::string("aAeEfFgG"))
    for (int const precision : {1, 2, 6, 10, 16, 17, 30, 200, 600})
      for (int const width : {0, 8, 20, 60, 511, 512, 700})
      {
        Pieces journal;
        journal.set_fp_format_spec(letter);
        journal.set_precision(precision);
        journal.set_width(width);
        for (double const number : numbers)
        {
          journal << number;
          ASSERT_EQ(journal.take(), printed(journal.format(), number)) << journal.format();
        }
      }
}

TEST(OzJournal, ALongNumberIsNeverCut)
{
  Pieces journal;
  journal.set_precision(300);

  journal << 1e300;
  std::string const text = journal.take();
  EXPECT_EQ(text.size(), 602u);
  EXPECT_EQ(text.substr(0, 20), "10000000000000000525");
  EXPECT_EQ(text.substr(300), "0." + std::string(300, '0'));

  for (int const precision : {508, 509, 510, 511, 512})
  {
    journal.set_precision(precision);
    journal << 0.5;
    EXPECT_EQ(journal.take(), "0.5" + std::string(static_cast<std::size_t>(precision) - 1, '0')) << precision;
  }

  for (int const width : {510, 511, 512, 513, 5000})
  {
    journal.set_width(width);
    journal.set_precision(1);
    journal << -1.5;
    EXPECT_EQ(journal.take(), std::string(static_cast<std::size_t>(width) - 4, ' ') + "-1.5") << width;
  }
}

TEST(OzJournal, ANumberThatPrintfRefusesToWriteIsEmpty)
{
  Pieces journal;
  journal.set_format("%99999999999.1f");

  journal << 1.5;

  EXPECT_EQ(journal.take(), "");
}

TEST(OzJournal, HonoursAFormatThatADerivedClassComposed)
{
  char const* const formats[] = {"%+.3f",  "%08.3f", "%-10.3f|", "% .3f",   "%#.3g",   "%.3f mm",
                                 "[%.2f]", "%.f",    "%f",       "%8f",     "%5.1f%%", "x",
                                 "",       "%-.3f",  "%12.e",    "%012.3e", "%0.2f",   "%3.2f",
                                 "%.3fe",  "%15.3g", "%7.2a",    "%.002f",  "%1.1fg",  "%%.3f"};
  for (char const* const format : formats)
    for (double const number : {0.0, -1234.5678, 1e20})
    {
      Pieces journal;
      journal.set_format(format);
      journal << number;
      EXPECT_EQ(journal.take(), printed(format, number)) << format;
    }
}

TEST(OzJournal, WritesTheDecimalPointOfTheLocale)
{
  char const* const locale = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
  if (locale == nullptr)
    GTEST_SKIP() << "no locale here has another decimal point";
  Pieces journal;

  journal << 1.5;

  std::setlocale(LC_NUMERIC, "C");
  EXPECT_EQ(journal.take(), "1,500000");
}

// The standard streams.

TEST(OzStdOutJournal, WritesSixteenDigitsToStandardOutput)
{
  std::string text;
  int flushes = 0;
  {
    Redirected output(std::cout);
    OzStdOutJournal journal;
    EXPECT_EQ(journal.width(), 0);
    journal << 1.5 << "|" << ozEndExpr;
    text = output.text();
    flushes = output.flushes;
  }

  EXPECT_EQ(text, "1.5000000000000000|\n");
  EXPECT_EQ(flushes, 1);
}

TEST(OzStdErrJournal, WritesSixteenDigitsToStandardError)
{
  std::string text;
  int flushes = 0;
  {
    Redirected output(std::cerr);
    std::cerr.unsetf(std::ios_base::unitbuf);
    OzStdErrJournal journal;
    EXPECT_EQ(journal.width(), 0);
    journal << 1.5 << "|" << ozEndExpr;
    text = output.text();
    flushes = output.flushes;
    std::cerr.setf(std::ios_base::unitbuf);
  }

  EXPECT_EQ(text, "1.5000000000000000|\n");
  EXPECT_EQ(flushes, 1);
}

TEST(OzStdOutJournal, KeepsItsPlaceAmongOtherOutput)
{
  std::string text;
  {
    Redirected output(std::cout);
    OzStdOutJournal journal;
    std::cout << "a";
    journal << "b";
    std::cout << "c";
    text = output.text();
  }

  EXPECT_EQ(text, "abc");
}

template <class Journal>
class StandardJournal : public ::testing::Test
{
};
using StandardJournals = ::testing::Types<OzStdOutJournal, OzStdErrJournal>;
TYPED_TEST_SUITE(StandardJournal, StandardJournals, );

TYPED_TEST(StandardJournal, TakesAPrecision)
{
  ReportRecorder const recorder;

  EXPECT_EQ(TypeParam().precision(), 16);
  EXPECT_EQ(TypeParam(3).precision(), 3);
  EXPECT_THAT(recorder.units(), IsEmpty());
  EXPECT_FALSE((std::is_convertible_v<int, TypeParam>));
}

TYPED_TEST(StandardJournal, ReportsABadPrecisionAndKeepsSix)
{
  ReportRecorder const recorder;

  TypeParam const journal(0);

  EXPECT_EQ(recorder.units(), reports(1, "ozjournal.cpp"));
  EXPECT_EQ(journal.precision(), 6);
}

TYPED_TEST(StandardJournal, IsCopiedAndAssigned)
{
  TypeParam original(4);
  original.set_fp_format_spec('e');
  TypeParam const copy(original);
  TypeParam assigned;

  EXPECT_EQ(&(assigned = original), &assigned);

  EXPECT_EQ(copy.precision(), 4);
  EXPECT_EQ(copy.fp_format_spec(), 'f');
  EXPECT_EQ(assigned.precision(), 4);
  EXPECT_EQ(assigned.fp_format_spec(), 'e');
}

TEST(OzJournalProvider, KeepsAJournalForTheApplication)
{
  EXPECT_EQ(OzJournalProvider::get_journal(), nullptr);
  Pieces journal;

  OzJournalProvider::set_journal(&journal);
  EXPECT_EQ(OzJournalProvider::get_journal(), &journal);
  EXPECT_EQ(OzJournalProvider::journal_, &journal);

  OzJournalProvider::set_journal(nullptr);
  EXPECT_EQ(OzJournalProvider::get_journal(), nullptr);
}
