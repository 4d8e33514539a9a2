#include "ozfilejournal.h"

#include "report_recorder.h"
#include "vtable_slot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <unistd.h>

using ::testing::IsEmpty;

namespace
{
/// What is protected is open here.
class Journal : public OzFileJournal
{
public:
  using OzFileJournal::OzFileJournal;
  Journal() = default;
  Journal(Journal const& other) = default;
  Journal& operator=(Journal const& other) = default;

  using OzFileJournal::buffer;
  using OzFileJournal::flush_buffer;

  char const* text() { return buffer().as_const_c_string(); }
  char const* format() const { return fp_format_; }
};

/// A file that is not there yet, and is gone when the test is over.
class TemporaryFile
{
public:
  TemporaryFile()
    : path_(::testing::TempDir() + "ozfilejournal_test." + std::to_string(getpid()) + "." +
            std::to_string(++made_))
  {
  }
  ~TemporaryFile() { std::remove(path_.c_str()); }
  TemporaryFile(TemporaryFile const&) = delete;
  TemporaryFile& operator=(TemporaryFile const&) = delete;

  char const* path() const { return path_.c_str(); }
  bool exists() const { return access(path_.c_str(), F_OK) == 0; }

  /// What another reader finds in it.
  std::string content() const
  {
    std::ifstream file(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }

private:
  std::string path_;
  static inline int made_ = 0;
};

bool is_open(int descriptor)
{
  return fcntl(descriptor, F_GETFD) != -1;
}
} // namespace

// In memory.

TEST(OzFileJournal, CollectsInMemoryWithWidthSixteenAndTenDigits)
{
  Journal journal;

  EXPECT_EQ(journal.width(), 16);
  EXPECT_EQ(journal.precision(), 10);
  EXPECT_STREQ(journal.format(), "%16.10f");
  EXPECT_EQ(journal.file_handle(), nullptr);
  EXPECT_STREQ(journal.filename().as_const_c_string(), "");
  EXPECT_STREQ(journal.text(), "");

  journal << 1.5;
  EXPECT_STREQ(journal.text(), "    1.5000000000");
}

TEST(OzFileJournal, CollectsOnePieceBehindTheOther)
{
  Journal journal;

  journal << "a"
          << "" << 1 << static_cast<char const*>(nullptr) << ozEndExpr << '\0' << "b";

  EXPECT_STREQ(journal.text(), "a1\nb");
  EXPECT_EQ(journal.buffer().length(), 4u);
}

TEST(OzFileJournal, CollectsWhatAStringWouldAppend)
{
  // Texts in every state, and a buffer that is changed in between, against a string that appends.
  unsigned const seed = 11;
  std::mt19937 random(seed);
  Journal journal;
  OzString const& buffer = journal.buffer(); // asking again would have the journal look for its end
  OzString model;
  ReportRecorder const recorder;
  for (int step = 0; step < 3000; ++step)
  {
    OzString text("some text");
    text.set_size(static_cast<int>(random() % 9), true);
    switch (random() % 10)
    {
    case 0:
      text.append('\0'); // length() is larger than the text
      break;
    case 1:
      text.resize(1 + random() % 5, true); // no terminator within
      break;
    case 2:
      text.resize(0, true);
      break;
    case 3:
      text = "";
      break;
    case 4:
      journal.buffer() = "other";
      model = "other";
      break;
    case 5:
      journal.buffer().append('\0');
      model.append('\0');
      break;
    case 6:
      journal.buffer().resize(3, true);
      model.resize(3, true);
      break;
    case 7:
      journal.flush_buffer();
      model = "";
      break;
    default:
      break;
    }

    journal << text;
    model.append(text);

    ASSERT_STREQ(
        std::string(buffer.as_const_c_string(), strnlen(buffer.as_const_c_string(), buffer.length() + 1))
            .c_str(),
        std::string(model.as_const_c_string(), strnlen(model.as_const_c_string(), model.length() + 1))
            .c_str())
        << "seed " << seed << ", step " << step;
    ASSERT_EQ(buffer.length(), model.length()) << "seed " << seed << ", step " << step;
  }
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzFileJournal, DoublesItsTextWhenItIsGivenItsOwnBuffer)
{
  Journal journal;
  journal << "abc";

  journal << journal.buffer();

  EXPECT_STREQ(journal.text(), "abcabc");
}

TEST(OzFileJournal, StaysWithinItsBufferWhenThatIsChangedThroughAnOldReference)
{
  Journal journal;
  OzString& buffer = journal.buffer();
  journal << "a rather long text";
  buffer = "";
  journal << "b";
  EXPECT_STREQ(journal.text(), "b");

  journal << "c";
  buffer = "much longer than before";
  journal << "!";
  EXPECT_STREQ(journal.text(), "much longer than before!");

  buffer.append('\0');
  buffer.append('\0');
  journal << "?";
  EXPECT_STREQ(journal.text(), "much longer than before!?");

  // The place where the text ended holds a 0 still, far behind its end now.
  journal << "!";
  buffer = "short";
  buffer.resize(40, true);
  journal << ".";
  EXPECT_STREQ(journal.text(), "short.");
}

TEST(OzFileJournal, CollectsBehindATextWithoutATerminator)
{
  Journal full;
  full.buffer() = "abc";
  full.buffer()[3] = 'd'; // fills the buffer of four characters to the end
  Journal cut;
  cut.buffer() = "abcdefg";
  cut.buffer().resize(4, true);
  Journal without_size;
  without_size.buffer().resize(0, true);
  ReportRecorder recorder;

  for (Journal* journal : {&full, &cut, &without_size})
    *journal << "x"
             << "yz";

  EXPECT_THAT(recorder.units(), IsEmpty());
  EXPECT_STREQ(full.text(), "abcdxyz");
  EXPECT_STREQ(cut.text(), "abcdxyz");
  EXPECT_STREQ(without_size.text(), "xyz");
}

TEST(OzFileJournal, CollectsWithoutSearchingForTheEnd)
{
  // A search for the end of the text at each of these steps would read 400 GB.
  Journal journal;
  for (int i = 0; i < 1000000; ++i)
    journal << "a"
            << "";

  EXPECT_EQ(journal.buffer().length(), 1000000u);
}

TEST(OzFileJournal, FlushBufferForgetsTheText)
{
  Journal journal;
  journal << "abc";

  journal.flush_buffer();
  EXPECT_STREQ(journal.text(), "");
  EXPECT_EQ(journal.buffer().length(), 0u);

  journal << "d";
  EXPECT_STREQ(journal.text(), "d");
}

// In a file.

TEST(OzFileJournal, WritesToTheFileThatItIsMadeWith)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  {
    Journal journal(file.path(), 3);
    EXPECT_EQ(journal.precision(), 3);
    EXPECT_EQ(journal.width(), 0);
    EXPECT_STREQ(journal.filename().as_const_c_string(), file.path());
    ASSERT_NE(journal.file_handle(), nullptr);

    journal << 1.5 << ozEndExpr;
    EXPECT_EQ(file.content(), "1.500\n"); // flushed at the end of a line

    journal << "more";
    EXPECT_STREQ(journal.text(), "");
  }

  EXPECT_EQ(file.content(), "1.500\nmore");
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzFileJournal, TakesTheNameAsAStringToo)
{
  TemporaryFile const files[2];
  ReportRecorder const recorder;
  {
    Journal journal(OzString(files[0].path()), 2);
    journal << 1.0;
    journal.open(OzString(files[1].path()));
    journal << 2.0;
  }

  EXPECT_EQ(files[0].content(), "1.00");
  EXPECT_EQ(files[1].content(), "2.00");
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzFileJournal, WritesTextWithPercentSignsAsItIs)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  {
    Journal journal(file.path(), 6);
    journal << "100%s %n";
  }

  EXPECT_EQ(file.content(), "100%s %n");
}

TEST(OzFileJournal, ReportsABadPrecisionOfTheConstructorAndKeepsSix)
{
  TemporaryFile const file;
  ReportRecorder const recorder;

  Journal const journal(file.path(), 0);

  EXPECT_EQ(recorder.units(), reports(1, "ozjournal.cpp"));
  EXPECT_EQ(journal.precision(), 6);
}

TEST(OzFileJournal, OpenDropsWhatWasCollected)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  Journal journal;
  journal << "dropped";

  journal.open(file.path());
  EXPECT_STREQ(journal.text(), "");
  journal << "kept";
  journal.close();

  EXPECT_EQ(file.content(), "kept");
}

TEST(OzFileJournal, OpenEmptiesAFileThatExists)
{
  TemporaryFile const file;
  std::ofstream(file.path()) << "old content";
  ReportRecorder const recorder;

  Journal const journal(file.path(), 6);

  EXPECT_EQ(file.content(), "");
}

TEST(OzFileJournal, ItsStreamCanBeReadToo)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  Journal journal(file.path(), 6);
  journal << "abc";
  std::rewind(journal.file_handle());
  char text[4] = {};

  EXPECT_EQ(std::fread(text, 1, 3, journal.file_handle()), 3u);

  EXPECT_STREQ(text, "abc");
}

TEST(OzFileJournal, OpenClosesTheFileThatWasOpen)
{
  TemporaryFile const files[2];
  ReportRecorder const recorder;
  Journal journal(files[0].path(), 6);
  journal << "first";

  journal.open(files[1].path());

  EXPECT_EQ(files[0].content(), "first");
  EXPECT_STREQ(journal.filename().as_const_c_string(), files[1].path());
}

TEST(OzFileJournal, OpenClosesThroughTheOverridableOperation)
{
  class Closing : public Journal
  {
  public:
    void close() override
    {
      ++closed;
      Journal::close();
    }
    int closed = 0;
  } journal;
  TemporaryFile const file;
  ReportRecorder const recorder;

  journal.open(file.path());
  EXPECT_EQ(journal.closed, 1);
  journal.open(OzString(file.path()));
  EXPECT_EQ(journal.closed, 2);
}

TEST(OzFileJournal, OpenByStringGoesThroughTheOverridableOpenByText)
{
  class Opening : public Journal
  {
  public:
    using Journal::open;
    void open(char const* name) override { opened = name; }
    std::string opened;
  } journal;

  journal.open(OzString("name"));

  EXPECT_EQ(journal.opened, "name");
}

TEST(OzFileJournal, AFileThatCannotBeOpenedIsReportedAndTextGoesOnInMemory)
{
  Journal journal;
  journal << "dropped";
  {
    ReportRecorder const recorder;
    journal.open("/nonexistent folder/journal");
    EXPECT_EQ(recorder.units(), reports(1, "ozfilejournal.cpp"));
  }

  EXPECT_EQ(journal.file_handle(), nullptr);
  EXPECT_STREQ(journal.filename().as_const_c_string(), "/nonexistent folder/journal");
  EXPECT_STREQ(journal.text(), "");
  journal << "kept";
  EXPECT_STREQ(journal.text(), "kept");
}

TEST(OzFileJournal, OpeningNullIsReportedKeepsTheNameAndGoesOnInMemory)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  Journal journal(file.path(), 6);
  journal << "in the file";

  journal.open(static_cast<char const*>(nullptr));

  EXPECT_EQ(recorder.units(), reports(1, "ozfilejournal.cpp"));
  EXPECT_EQ(journal.file_handle(), nullptr);
  EXPECT_STREQ(journal.filename().as_const_c_string(), file.path());
  EXPECT_EQ(file.content(), "in the file");
  journal << "in memory";
  EXPECT_STREQ(journal.text(), "in memory");
}

TEST(OzFileJournal, OpensANameThatLiesInItsOwnBuffer)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  Journal journal;
  journal << file.path();

  journal.open(journal.buffer());

  EXPECT_NE(journal.file_handle(), nullptr);
  EXPECT_STREQ(journal.filename().as_const_c_string(), file.path());
  EXPECT_TRUE(file.exists());
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzFileJournal, FilenameIsACopy)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  Journal const journal(file.path(), 6);

  journal.filename().append('x');

  EXPECT_STREQ(journal.filename().as_const_c_string(), file.path());
}

// Closing.

TEST(OzFileJournal, CloseClosesTheStreamWhileAHandlerIsInstalled)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  Journal journal(file.path(), 6);
  int const descriptor = fileno(journal.file_handle());
  journal << "abc";

  journal.close();

  EXPECT_EQ(journal.file_handle(), nullptr);
  EXPECT_FALSE(is_open(descriptor));
  EXPECT_EQ(file.content(), "abc");
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzFileJournal, CloseWithoutAHandlerForgetsTheStreamAndLeavesItOpen)
{
  TemporaryFile const file;
  Journal journal(file.path(), 6);
  std::FILE* const stream = journal.file_handle();
  journal << "abc";

  journal.close();

  EXPECT_EQ(journal.file_handle(), nullptr);
  EXPECT_TRUE(is_open(fileno(stream)));
  EXPECT_EQ(file.content(), ""); // not flushed either
  std::fclose(stream);
  EXPECT_EQ(file.content(), "abc");
}

TEST(OzFileJournal, TheDestructorDoesWhatCloseDoes)
{
  TemporaryFile const file;
  std::FILE* stream = nullptr;
  {
    Journal journal(file.path(), 6);
    stream = journal.file_handle();
    journal << "abc";
  }
  EXPECT_TRUE(is_open(fileno(stream)));
  EXPECT_EQ(file.content(), "");
  std::fclose(stream);

  ReportRecorder const recorder;
  int descriptor = -1;
  {
    Journal journal(file.path(), 6);
    descriptor = fileno(journal.file_handle());
    journal << "def";
  }
  EXPECT_FALSE(is_open(descriptor));
  EXPECT_EQ(file.content(), "def");
}

TEST(OzFileJournal, AStreamThatCannotBeClosedIsReportedAndForgotten)
{
  Journal journal;
  ReportRecorder const recorder;
  journal.open("/dev/full");
  journal << "no room for this";

  journal.close();

  EXPECT_EQ(recorder.units(), reports(1, "ozfilejournal.cpp"));
  EXPECT_EQ(journal.file_handle(), nullptr);
}

TEST(OzFileJournal, AStreamIsForgottenAlsoWhereTheHandlerThrows)
{
  struct Refusal
  {
    static void refuse(char const*, int) { throw Refusal(); }
  };
  Journal journal;
  journal.open("/dev/full");
  journal << "no room for this";
  dkb_assertion_handler = &Refusal::refuse;

  EXPECT_THROW(journal.close(), Refusal);

  dkb_assertion_handler = nullptr;
  EXPECT_EQ(journal.file_handle(), nullptr);
}

TEST(OzFileJournal, AfterClosingTextIsCollectedAgain)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  Journal journal(file.path(), 6);
  journal << "in the file";

  journal.close();
  journal.close(); // nothing more to close
  journal << "in memory";

  EXPECT_STREQ(journal.text(), "in memory");
  EXPECT_EQ(file.content(), "in the file");
  EXPECT_STREQ(journal.filename().as_const_c_string(), file.path());
  EXPECT_THAT(recorder.units(), IsEmpty());
}

// Flushing.

TEST(OzFileJournal, FlushPushesTextToTheFile)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  Journal journal(file.path(), 6);
  journal << "abc";
  EXPECT_EQ(file.content(), "");

  journal.flush();

  EXPECT_EQ(file.content(), "abc");
}

TEST(OzFileJournal, FlushWithoutAFileFlushesEveryStreamOfTheProcess)
{
  TemporaryFile const file;
  std::FILE* const other = std::fopen(file.path(), "w");
  ASSERT_NE(other, nullptr);
  std::fputs("abc", other);
  Journal journal;

  journal.flush();

  EXPECT_EQ(file.content(), "abc");
  std::fclose(other);
}

// Draining one into another.

TEST(OzFileJournal, AppendDrainsTheOtherThroughItsOwnSink)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  Journal collector;
  collector << "collected";
  Journal journal(file.path(), 6);

  journal.append(collector);
  journal.flush();

  EXPECT_EQ(file.content(), "collected");
  EXPECT_STREQ(collector.text(), "");
  collector << "again";
  EXPECT_STREQ(collector.text(), "again");
}

TEST(OzFileJournal, AppendBetweenTwoInMemory)
{
  Journal a;
  Journal b;
  a << "a";
  b << "b";

  a.append(b);

  EXPECT_STREQ(a.text(), "ab");
  EXPECT_STREQ(b.text(), "");
}

TEST(OzFileJournal, AppendGoesThroughTheOverridableSink)
{
  class Sink : public Journal
  {
  public:
    std::string got;

  protected:
    void append_to_journal(OzString const& text) override { got += text.as_const_c_string(); }
  } sink;
  Journal collector;
  collector << "abc";

  sink.append(collector);

  EXPECT_EQ(sink.got, "abc");
}

TEST(OzFileJournal, AppendToItselfDoesNothing)
{
  Journal journal;
  journal << "abc";

  journal.append(journal);

  EXPECT_STREQ(journal.text(), "abc");
}

TEST(OzFileJournal, AppendLeavesTheFileOfTheOtherAlone)
{
  TemporaryFile const file;
  ReportRecorder const recorder;
  Journal other(file.path(), 6);
  other << "in the file";
  Journal journal;

  journal.append(other);

  EXPECT_STREQ(journal.text(), "");
  EXPECT_NE(other.file_handle(), nullptr);
}

// Copying is not meant to happen.

TEST(OzFileJournal, ACopyIsReportedAndStartsEmptyWithTheSameFormat)
{
  TemporaryFile const file;
  ReportRecorder recorder;
  Journal original(file.path(), 4);
  original.set_fp_format_spec('e');

  Journal copy(original);

  EXPECT_EQ(recorder.units(), reports(1, "ozfilejournal.cpp"));
  EXPECT_EQ(copy.file_handle(), nullptr);
  EXPECT_STREQ(copy.filename().as_const_c_string(), "");
  copy << 1.5;
  EXPECT_STREQ(copy.text(), "1.5000e+00");
  EXPECT_EQ(copy.fp_format_spec(), 'f');
}

TEST(OzFileJournal, ACopyDoesNotHaveTheTextOfItsOriginal)
{
  Journal original;
  original << "abc";

  Journal copy(original);
  copy << "d";

  EXPECT_STREQ(copy.text(), "d");
  EXPECT_STREQ(original.text(), "abc");
}

TEST(OzFileJournal, AssignmentIsReportedAndChangesNothing)
{
  Journal source;
  source.set_precision(3);
  source << "source";
  Journal target;
  target << "target";
  ReportRecorder const recorder;

  EXPECT_EQ(&(target = source), &target);

  EXPECT_EQ(recorder.units(), reports(1, "ozfilejournal.cpp"));
  EXPECT_STREQ(target.text(), "target");
  EXPECT_EQ(target.precision(), 10);
}

TEST(OzFileJournal, VirtualFunctionsStandInTheirOrder)
{
  using OpenText = void (OzFileJournal::*)(char const*);
  using OpenString = void (OzFileJournal::*)(OzString const&);

  EXPECT_EQ(vtable_slot(&OzFileJournal::flush), 2);
  EXPECT_EQ(vtable_slot(static_cast<OpenText>(&OzFileJournal::open)), 11);
  EXPECT_EQ(vtable_slot(static_cast<OpenString>(&OzFileJournal::open)), 12);
  EXPECT_EQ(vtable_slot(&OzFileJournal::close), 13);
  EXPECT_EQ(vtable_slot(&OzFileJournal::filename), 14);
}
