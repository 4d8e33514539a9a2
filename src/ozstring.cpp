#include "ozstring.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>

namespace
{
// The size of an empty string, whose one character is the terminator. Capacities start from it.
constexpr std::uint64_t EMPTY_SIZE = 1;

// True where the classic routines end within the array.
bool is_terminated(OzArray<char> const& chars)
{
  return chars.size() != 0 && chars.end()[-1] == '\0';
}

// The number of characters up to the first 0, or all there are.
std::uint64_t text_length(OzArray<char> const& chars)
{
  return is_terminated(chars) ? std::strlen(chars.begin()) : strnlen(chars.begin(), chars.size());
}
} // namespace

OzString::OzString()
  : chars("", EMPTY_SIZE, EMPTY_SIZE)
{
}

OzString::OzString(char const* text)
  : OzString(text, text == nullptr ? 0 : std::strlen(text))
{
}

// In one block, of the capacity that growing from an empty string gives. The slot behind the characters is a
// 0 already.
OzString::OzString(char const* text, std::uint64_t count)
  : chars(text, count, oz_grown_capacity(EMPTY_SIZE, count + 1))
{
  chars.resize(count + 1, true);
}

OzString::OzString(int value, int width, char pad)
  : OzString()
{
  int_to_as(value, chars, width, pad);
}

OzString::OzString(OzString const& other)
  : chars(other.chars, oz_grown_capacity(0, other.chars.size() + (is_terminated(other.chars) ? 0 : 1)))
{
  if (chars.size() == 0)
    chars.resize(EMPTY_SIZE, true);

  // The size is taken over, but of the characters only the text. Its end is looked for in the original, which
  // has not been written just now.
  std::uint64_t const text = text_length(other.chars);
  if (text + 1 < chars.size())
    std::memset(chars.begin() + text, 0, chars.size() - text);
}

OzString& OzString::operator=(OzString const& other)
{
  if (this == &other)
    return *this;

  // The size is taken over, but of the characters only the text: behind it those that were there stay.
  chars.resize(std::max(other.chars.size(), EMPTY_SIZE), true);
  if (is_terminated(other.chars))
    std::strcpy(chars.begin(), other.chars.begin());
  else if (other.chars.size() == 0)
    chars.begin()[0] = '\0';
  else
    copy_unterminated(other);
  return *this;
}

// A string that was cut has a 0 behind its array, and so has what it is assigned to: both can be read.
void OzString::copy_unterminated(OzString const& other)
{
  std::uint64_t const text = text_length(other.chars);
  std::memcpy(chars.begin(), other.chars.begin(), text);
  if (text == chars.size())
    chars.resize(text + 1, true);
  chars.begin()[text] = '\0';
  chars.resize(other.chars.size(), true);
}

OzString& OzString::operator=(char const* text)
{
  if (text == nullptr)
    return *this;

  // `text` may be a tail of this string's own: it is moved before the array shrinks.
  std::uint64_t const size = std::strlen(text) + 1;
  bool const own = text >= chars.begin() && text < chars.end();
  if (own)
    std::memmove(chars.begin(), text, size);
  chars.resize(size, true);
  if (!own)
    std::memcpy(chars.begin(), text, size);
  return *this;
}

OzString& OzString::append(char const& c)
{
  char const added = c; // may be a character of this string, whose buffer is about to move
  if (added != '\0')
    return append_text(&added, 1, 1);

  chars.resize(chars.size() + 1, true);
  return *this;
}

OzString& OzString::append(OzString const& s)
{
  if (s.chars.size() == 0)
    return *this;
  if (this == &s)
    return append(OzString(s));

  return append_text(s.chars.begin(), text_length(s.chars), s.chars.size() - 1);
}

OzString& OzString::append_text(char const* text, std::uint64_t count, std::uint64_t growth)
{
  // Where the text ends is found before the array grows: reading what was moved just now would have to wait.
  std::uint64_t const at = text_length(chars);
  chars.resize(std::max(chars.size(), EMPTY_SIZE) + growth, true);
  if (at + count + 1 > chars.size()) // after a resize the text can fill the array to its end
    chars.resize(at + count + 1, true);
  std::memcpy(chars.begin() + at, text, count);
  chars.begin()[at + count] = '\0';
  return *this;
}

OzString& OzString::append(int value)
{
  char text[24];
  int const count = std::snprintf(text, sizeof text, "%d", value);
  return append_text(text, static_cast<std::uint64_t>(count), static_cast<std::uint64_t>(count));
}

OzString& OzString::append(unsigned int value)
{
  char text[24];
  int const count = std::snprintf(text, sizeof text, "%u", value);
  return append_text(text, static_cast<std::uint64_t>(count), static_cast<std::uint64_t>(count));
}

OzString& OzString::append(double value, int precision, bool general)
{
  char const* const pattern = general ? "%.*g" : "%.*f";
  char text[64];
  int const printed = std::snprintf(text, sizeof text, pattern, precision, value);
  std::uint64_t const count = static_cast<std::uint64_t>(std::max(printed, 0));
  if (count < sizeof text)
    return append_text(text, count, count);

  OzString long_text;
  long_text.chars.resize(count + 1, true);
  std::snprintf(long_text.chars.begin(), long_text.chars.size(), pattern, precision, value);
  return append(long_text);
}

OzString& OzString::format(int size, char const* pattern, ...)
{
  chars.resize(static_cast<std::uint64_t>(static_cast<std::int64_t>(size)), true);

  std::va_list arguments;
  va_start(arguments, pattern);
  std::vsnprintf(chars.begin(), chars.size(), pattern, arguments);
  va_end(arguments);

  int const text = static_cast<int>(std::strlen(chars.begin()));
  OZ_ASSERT(text < size - 1);
  set_size(text, true);
  return *this;
}

void OzString::resize(std::uint64_t n, bool)
{
  chars.resize(n, true);
}

void OzString::set_size(int n, bool keep)
{
  OZ_ASSERT(n >= 0);
  if (n < 0)
    return;

  std::uint64_t const old_length = length();
  std::uint64_t const new_length = static_cast<std::uint64_t>(n);
  chars.resize(new_length + 1, keep);
  chars.begin()[new_length] = '\0';
  if (keep && new_length > old_length)
    std::memset(chars.begin() + old_length, ' ', new_length - old_length);
}

int OzString::find(char const* pattern, std::uint64_t pos) const
{
  if (*pattern == '\0')
    return 0;

  std::uint64_t const from = static_cast<std::uint64_t>(static_cast<std::int64_t>(static_cast<int>(pos)));
  if (length() == 0 || length() <= from)
    return -1;

  char const* const hit = std::strstr(chars.begin() + from, pattern);
  return hit == nullptr ? -1 : static_cast<int>(hit - chars.begin());
}

int OzString::find(OzString const& pattern, std::uint64_t pos) const
{
  return find(pattern.as_const_c_string(), pos);
}

OzString OzString::substr(std::uint64_t pos, int len) const
{
  if (pos >= length() || len == 0)
    return OzString();

  std::uint64_t const wanted = len < 0 ? length() : std::min(length(), static_cast<std::uint64_t>(len));
  return OzString(chars.begin() + pos, std::min(wanted, length() - pos));
}

void OzString::int_to_as(int value, OzArray<char, OzAllocator<char>>& out, int width, char pad)
{
  // Digits without sign. The most negative number has no positive counterpart and yields none.
  char digits[16];
  std::uint64_t n_digits = 0;
  if (value == 0)
    digits[n_digits++] = '0';
  if (value != std::numeric_limits<int>::min())
  {
    for (int rest = value < 0 ? -value : value; rest > 0; rest /= 10)
      digits[n_digits++] = static_cast<char>('0' + rest % 10);
  }

  bool const negative = value < 0;
  std::int64_t const field = static_cast<std::int64_t>(width) - (negative ? 1 : 0);
  std::int64_t taken = static_cast<std::int64_t>(n_digits);
  bool const sign_next_to_digits = pad == ' ';
  // The sign has lowered the field already. Next to the digits it counts once more, so that a negative
  // number padded with blanks is one character short of its width.
  if (negative && sign_next_to_digits)
    ++taken;
  std::uint64_t const padding = field > taken ? static_cast<std::uint64_t>(field - taken) : 0;
  std::uint64_t const count = padding + n_digits + (negative ? 1 : 0);

  out.resize(count + 1, true);
  char* to = out.begin();
  if (negative && !sign_next_to_digits)
    *to++ = '-';
  std::memset(to, pad, padding);
  to += padding;
  if (negative && sign_next_to_digits)
    *to++ = '-';
  std::reverse_copy(digits, digits + n_digits, to);
  to[n_digits] = '\0';
}
