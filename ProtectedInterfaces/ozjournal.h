#ifndef OZJOURNAL_H
#define OZJOURNAL_H

#include "ozexport.h"
#include "oziterator.h"
#include "ozstring.h"

class OzDynObj;
class OzJournal;

/// Something with an effect of its own on a journal that it is written to.
class OZ_EXPORT OzToken
{
public:
  OzToken() = default;
  OzToken(OzToken const&) = default;
  OzToken& operator=(OzToken const&) = default;
  virtual ~OzToken();

  virtual void append_to_journal(OzJournal& journal) = 0;
};

/// Ends a line and flushes.
class OZ_EXPORT OzEndExprToken : public OzToken
{
public:
  void append_to_journal(OzJournal& journal) override;
};

/// Ends a line, adds a blank one, and flushes.
class OZ_EXPORT OzEndSectionToken : public OzToken
{
public:
  void append_to_journal(OzJournal& journal) override;
};

extern OZ_EXPORT OzEndExprToken ozEndExpr;
extern OZ_EXPORT OzEndSectionToken ozEndSection;

/// An output stream for diagnostics: it turns values into text and hands each piece to one sink.
///
/// How floating-point numbers look is a property of the journal: the digits after the point, the least
/// width of the field, and the conversion letter of printf. A width that could not hold one digit, the
/// point and the decimals has no effect.
///
/// Threads: one at a time; text written by several calls reaches the sink in as many pieces.
/// Reports: a precision below 1, a negative width and an unknown letter, which are then ignored.
/// Cost: a short-lived string for each piece; numbers are written by std::to_chars where that gives the
/// same characters as printf.
class OZ_EXPORT OzJournal
{
public:
  /// Precision 6, no width, letter `f`.
  OzJournal();
  virtual ~OzJournal();

  /// Pushes out what the sink holds.
  virtual void flush() = 0;

  virtual int precision() const;
  virtual int width() const;
  virtual char fp_format_spec() const;
  virtual void set_precision(int const& digits);
  virtual void set_width(int const& least_width);
  /// One of a, A, e, E, f, F, g, G.
  virtual void set_fp_format_spec(char const& letter);

  OzJournal& operator<<(OzToken& token);
  OzJournal& operator<<(OzString const& text);
  /// Null writes an empty text.
  OzJournal& operator<<(char const* text);
  /// A 0 writes nothing.
  OzJournal& operator<<(char character);
  OzJournal& operator<<(int number);
  OzJournal& operator<<(unsigned int number);
  OzJournal& operator<<(long number);
  OzJournal& operator<<(unsigned long number);
  OzJournal& operator<<(long long number);
  OzJournal& operator<<(unsigned long long number);
  OzJournal& operator<<(double number);
  OzJournal& operator<<(void const* pointer);
  /// The object's class name and identity, in a line of its own. The word `OzObject` stands there for every
  /// class.
  OzJournal& operator<<(OzDynObj const& object);
  /// All elements, after a reset of the cursor. The line is not ended.
  OzJournal& operator<<(OzIterator<int>& numbers);
  OzJournal& operator<<(OzIterator<double>& numbers);

protected:
  /// Takes the format over, but not the letter: a later change of precision or width of the copy goes on
  /// from `f`. Assignment takes over all four fields.
  OzJournal(OzJournal const& other);
  OzJournal& operator=(OzJournal const& other);

  /// Composes fp_format_ from the other three fields.
  virtual void update_fp_format();
  /// The sink: all output arrives here.
  virtual void append_to_journal(OzString const& text) = 0;

  int precision_ = 6;         // at least 1
  int width_ = 0;             // not negative
  char fp_format_[64];        // what printf takes for a double
  char fp_format_spec_ = 'f'; // the conversion letter
};

/// Writes to the standard error stream.
class OZ_EXPORT OzStdErrJournal : public OzJournal
{
public:
  explicit OzStdErrJournal(int precision = 16);
  OzStdErrJournal(OzStdErrJournal const& other);
  OzStdErrJournal& operator=(OzStdErrJournal const& other);
  ~OzStdErrJournal() override;

  void flush() override;

protected:
  void append_to_journal(OzString const& text) override;
};

/// Writes to the standard output stream.
class OZ_EXPORT OzStdOutJournal : public OzJournal
{
public:
  explicit OzStdOutJournal(int precision = 16);
  OzStdOutJournal(OzStdOutJournal const& other);
  OzStdOutJournal& operator=(OzStdOutJournal const& other);
  ~OzStdOutJournal() override;

  void flush() override;

protected:
  void append_to_journal(OzString const& text) override;
};

/// A place where an application publishes a journal for its own parts. The library never reads it, and it
/// does not own the journal. Not synchronised.
class OZ_EXPORT OzJournalProvider
{
public:
  static OzJournal* get_journal() { return journal_; }
  static void set_journal(OzJournal* journal) { journal_ = journal; }

  static OzJournal* journal_; // null at first
};

/// Writes `n` blanks, one at a time; nothing for `n` below 1.
OZ_EXPORT void Oz_DebugIndentation(OzJournal& journal, int n);

#endif
