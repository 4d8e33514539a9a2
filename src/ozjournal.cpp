#include "ozjournal.h"

#include "ozdynobj.h"

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <iterator>
#include <system_error>

namespace
{
/// A text in a buffer that nearly all numbers fit; a longer one grows a string.
class NumberText
{
public:
  template <class Number>
  static OzString of_integer(Number number)
  {
    char text[24];
    *std::to_chars(std::begin(text), std::end(text), number).ptr = '\0';
    return OzString(text);
  }

  static OzString of_double(char const* format, double number)
  {
    char text[512];
    if (write_directly(format, number, text))
      return OzString(text);

    int const length = std::snprintf(text, sizeof text, format, number);
    if (length < 0) // beyond what printf can count, or can find memory for
      return OzString();
    if (length < static_cast<int>(sizeof text))
      return OzString(text);

    OzString longer;
    longer.resize(static_cast<std::uint64_t>(length) + 1, true);
    std::snprintf(longer.as_c_string(), longer.length() + 1, format, number);
    return longer;
  }

private:
  /// Writes `number` as printf would, in a fifth of the time. False where the two could differ: for other
  /// conversions than e, f and g, for infinities and NaN, for a text that does not fit, and where the
  /// locale has a decimal point of its own.
  static bool write_directly(char const* format, double number, char (&text)[512])
  {
    std::chars_format notation = std::chars_format::fixed;
    std::uint64_t width = 0;
    int precision = 0;
    if (!std::isfinite(number) || !parse(format, width, precision, notation))
      return false;
    if (width >= sizeof text || std::strcmp(std::localeconv()->decimal_point, ".") != 0)
      return false;

    std::to_chars_result const written =
        std::to_chars(std::begin(text), std::end(text) - 1, number, notation, precision);
    if (written.ec != std::errc())
      return false;

    std::uint64_t const length = static_cast<std::uint64_t>(written.ptr - text);
    std::uint64_t const padding = width > length ? width - length : 0;
    std::memmove(text + padding, text, length);
    std::memset(text, ' ', padding);
    text[padding + length] = '\0';
    return true;
  }

  /// Reads `%<width>.<precision><letter>` with an optional width. Anything else that a derived class may
  /// have composed, flags above all, is left to printf.
  static bool parse(char const* format, std::uint64_t& width, int& precision, std::chars_format& notation)
  {
    char const* const end = format + std::strlen(format);
    if (*format != '%' || format[1] == '0')
      return false;

    std::from_chars_result read = std::from_chars(format + 1, end, width);
    char const* const point = read.ec == std::errc() ? read.ptr : format + 1;
    if (*point != '.')
      return false;

    read = std::from_chars(point + 1, end, precision);
    if (read.ec != std::errc() || read.ptr + 1 != end)
      return false;

    switch (*read.ptr)
    {
    case 'e':
      notation = std::chars_format::scientific;
      return true;
    case 'f':
      notation = std::chars_format::fixed;
      return true;
    case 'g':
      notation = std::chars_format::general;
      return true;
    default:
      return false;
    }
  }
};
} // namespace

OzToken::~OzToken() = default;

void OzEndExprToken::append_to_journal(OzJournal& journal)
{
  journal << "\n";
  journal.flush();
}

void OzEndSectionToken::append_to_journal(OzJournal& journal)
{
  journal << "\n\n";
  journal.flush();
}

OzEndExprToken ozEndExpr;
OzEndSectionToken ozEndSection;

OzJournal::OzJournal()
{
  std::snprintf(fp_format_, sizeof fp_format_, "%c.%i%c", '%', precision_, fp_format_spec_);
}

OzJournal::OzJournal(OzJournal const& other)
  : precision_(other.precision_)
  , width_(other.width_)
{
  std::memcpy(fp_format_, other.fp_format_, sizeof fp_format_);
}

OzJournal& OzJournal::operator=(OzJournal const& other)
{
  if (this == &other)
    return *this;

  precision_ = other.precision_;
  width_ = other.width_;
  std::memcpy(fp_format_, other.fp_format_, sizeof fp_format_);
  fp_format_spec_ = other.fp_format_spec_;
  return *this;
}

OzJournal::~OzJournal() = default;

int OzJournal::precision() const
{
  return precision_;
}

int OzJournal::width() const
{
  return width_;
}

char OzJournal::fp_format_spec() const
{
  return fp_format_spec_;
}

void OzJournal::set_precision(int const& digits)
{
  OZ_ASSERT(digits >= 1);
  if (digits < 1)
    return;

  precision_ = digits;
  update_fp_format();
}

void OzJournal::set_width(int const& least_width)
{
  OZ_ASSERT(least_width >= 0);
  if (least_width < 0)
    return;

  width_ = least_width;
  update_fp_format();
}

void OzJournal::set_fp_format_spec(char const& letter)
{
  bool const known = letter != '\0' && std::strchr("aAeEfFgG", letter) != nullptr;
  OZ_ASSERT(known);
  if (!known)
    return;

  fp_format_spec_ = letter;
  update_fp_format();
}

void OzJournal::update_fp_format()
{
  bool const too_narrow = width_ < static_cast<std::int64_t>(precision_) + 2;
  if (too_narrow)
    std::snprintf(fp_format_, sizeof fp_format_, "%c.%i%c", '%', precision_, fp_format_spec_);
  else
    std::snprintf(fp_format_, sizeof fp_format_, "%c%i.%i%c", '%', width_, precision_, fp_format_spec_);
}

OzJournal& OzJournal::operator<<(OzToken& token)
{
  token.append_to_journal(*this);
  return *this;
}

OzJournal& OzJournal::operator<<(OzString const& text)
{
  append_to_journal(text);
  return *this;
}

OzJournal& OzJournal::operator<<(char const* text)
{
  return *this << OzString(text);
}

OzJournal& OzJournal::operator<<(char character)
{
  char const text[] = {character, '\0'};
  return *this << OzString(text);
}

OzJournal& OzJournal::operator<<(int number)
{
  return *this << NumberText::of_integer(number);
}

OzJournal& OzJournal::operator<<(unsigned int number)
{
  return *this << NumberText::of_integer(number);
}

OzJournal& OzJournal::operator<<(long number)
{
  return *this << NumberText::of_integer(number);
}

OzJournal& OzJournal::operator<<(unsigned long number)
{
  return *this << NumberText::of_integer(number);
}

OzJournal& OzJournal::operator<<(long long number)
{
  return *this << NumberText::of_integer(number);
}

OzJournal& OzJournal::operator<<(unsigned long long number)
{
  return *this << NumberText::of_integer(number);
}

OzJournal& OzJournal::operator<<(double number)
{
  return *this << NumberText::of_double(fp_format_, number);
}

OzJournal& OzJournal::operator<<(void const* pointer)
{
  char text[24];
  std::snprintf(text, sizeof text, "%p", pointer);
  return *this << text;
}

OzJournal& OzJournal::operator<<(OzDynObj const& object)
{
  // One piece for the sink.
  OzString line("OzObject : ");
  line.append(object.class_name()).append(OzString(", identity : ")).append(object.identity());
  line.append('\n');
  return *this << line;
}

OzJournal& OzJournal::operator<<(OzIterator<int>& numbers)
{
  *this << "OzIntIterator( ";
  for (numbers.reset(); !numbers.done(); numbers.next())
    *this << numbers.current() << " ";
  return *this << ")";
}

OzJournal& OzJournal::operator<<(OzIterator<double>& numbers)
{
  *this << "OzDoubleIterator( ";
  for (numbers.reset(); !numbers.done(); numbers.next())
    *this << numbers.current() << " ";
  return *this << ")";
}

OzStdErrJournal::OzStdErrJournal(int precision)
{
  OzStdErrJournal::set_precision(precision);
}

OzStdErrJournal::OzStdErrJournal(OzStdErrJournal const&) = default;
OzStdErrJournal& OzStdErrJournal::operator=(OzStdErrJournal const&) = default;
OzStdErrJournal::~OzStdErrJournal() = default;

void OzStdErrJournal::flush()
{
  std::cerr.flush();
}

void OzStdErrJournal::append_to_journal(OzString const& text)
{
  std::cerr << text.as_const_c_string();
}

OzStdOutJournal::OzStdOutJournal(int precision)
{
  OzStdOutJournal::set_precision(precision);
}

OzStdOutJournal::OzStdOutJournal(OzStdOutJournal const&) = default;
OzStdOutJournal& OzStdOutJournal::operator=(OzStdOutJournal const&) = default;
OzStdOutJournal::~OzStdOutJournal() = default;

void OzStdOutJournal::flush()
{
  std::cout.flush();
}

void OzStdOutJournal::append_to_journal(OzString const& text)
{
  std::cout << text.as_const_c_string();
}

OzJournal* OzJournalProvider::journal_ = nullptr;

void Oz_DebugIndentation(OzJournal& journal, int n)
{
  for (int i = 0; i < n; ++i)
    journal << " ";
}
