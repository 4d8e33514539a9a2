#ifndef OZRESULT_H
#define OZRESULT_H

#include "ozexport.h"
#include "ozstring.h"

/// What became of an operation that can fail: a severity, and either a text or an error condition.
///
/// An error condition is a number within a package. The package is known by the address of its name, and
/// brings a function that turns a number into a text. That text is made when somebody first asks for it, so
/// a result that nobody reads costs no allocation. OzErr is the library's own package; others plug in with
/// a name, a variable that holds the name's address, and a function of their own.
///
/// Ownership: a result owns its text, and a copy has a text of its own. It refers to the package's variable,
/// which outlives it.
/// Threads: one at a time. message() keeps the text that it makes, so that a result may be read by several
/// threads only once its message has been asked for.
/// Reports: a function that has no text for its number; a fixed text then takes the place.
/// Cost: no allocation without a text; the first message() of an error condition makes it.
class OZ_EXPORT OzResult
{
public:
  enum CodeID : int
  {
    OK = 0,
    WARNING = 1,
    FAILED = 2
  };

  /// The text of a number of the package, or null if there is none. The text is copied at once, over a message
  /// that the function may have asked for or set in the meantime.
  typedef char const* (*TranslateFunction)(OzString const* const& package, int number);

  /// OK, without a text and without an error condition; its number is -1.
  OzResult();
  OzResult(CodeID code, OzString const& message);
  OzResult(OzResult const& other);
  OzResult& operator=(OzResult const& other);
  virtual ~OzResult();

  CodeID code() const { return code_; }
  /// Changes the severity alone.
  void set_code(CodeID code) { code_ = code; }

  bool ok() const { return code_ == OK; }
  bool normal() const { return code_ == OK; }
  bool warning() const { return code_ == WARNING; }
  bool failed() const { return code_ == FAILED; }

  /// Takes an error condition and drops the text, so that the next message() makes it afresh. `package` is
  /// the address of the variable that holds the package's identity; it and `translate` may be null.
  void set_error_condition(CodeID code, int number, OzString const* const* package,
                           TranslateFunction translate);
  void get_error_condition(CodeID& code, int& number, OzString const* const*& package) const;

  /// A text that hides the one of the error condition, which stays as it is.
  void set_message(OzString const& message);
  /// The text that was set or made before; else that of the error condition, made now and kept; else an
  /// empty one. Valid until the result is changed next.
  OzString const& message() const;

private:
  CodeID code_ = OK;
  mutable OzString* message_ = nullptr; // owned; null until there is a text
  int error_number_ = -1;
  OzString const* const* package_ = nullptr; // not owned
  TranslateFunction translate_ = nullptr;
};

#endif
