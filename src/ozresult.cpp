#include "ozresult.h"

#include "ozassert.h"

OzResult::OzResult() = default;

OzResult::OzResult(CodeID code, OzString const& message)
  : code_(code)
  , message_(new OzString(message))
{
}

OzResult::OzResult(OzResult const& other)
  : code_(other.code_)
  , message_(other.message_ == nullptr ? nullptr : new OzString(*other.message_))
  , error_number_(other.error_number_)
  , package_(other.package_)
  , translate_(other.translate_)
{
}

OzResult& OzResult::operator=(OzResult const& other)
{
  if (this == &other)
    return *this;

  // The text first: where there is no memory for it, nothing has changed.
  if (other.message_ != nullptr)
    set_message(*other.message_);
  else
  {
    delete message_;
    message_ = nullptr;
  }
  code_ = other.code_;
  error_number_ = other.error_number_;
  package_ = other.package_;
  translate_ = other.translate_;
  return *this;
}

OzResult::~OzResult()
{
  delete message_;
  // A compiler may leave out what is written into an object that ends here, unless the write is volatile.
  OzString const* const* volatile& dead_package = package_;
  dead_package = nullptr;
  TranslateFunction volatile& dead_function = translate_;
  dead_function = nullptr;
}

void OzResult::set_error_condition(CodeID code, int number, OzString const* const* package,
                                   TranslateFunction translate)
{
  code_ = code;
  error_number_ = number;
  package_ = package;
  translate_ = translate;
  delete message_;
  message_ = nullptr;
}

void OzResult::get_error_condition(CodeID& code, int& number, OzString const* const*& package) const
{
  code = code_;
  number = error_number_;
  package = package_;
}

void OzResult::set_message(OzString const& message)
{
  if (message_ != nullptr)
    *message_ = message;
  else
    message_ = new OzString(message);
}

OzString const& OzResult::message() const
{
  if (message_ != nullptr)
    return *message_;
  if (package_ == nullptr || translate_ == nullptr)
  {
    // Never deleted: results may be read while static objects end.
    static OzString const* const no_message = new OzString();
    return *no_message;
  }

  char const* text = translate_(*package_, error_number_);
  OZ_ASSERT(text != nullptr);
  if (text == nullptr)
    text = "... package does not remember the error number ...";
  // The function and the handler are clients' code, and may have asked for the message or set one by now: who
  // holds that one keeps it.
  if (message_ == nullptr)
    message_ = new OzString(text);
  else
    *message_ = text;
  return *message_;
}
