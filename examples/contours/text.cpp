#include "text.h"

#include <array>
#include <charconv>
#include <cstdint>

namespace contours
{

namespace
{

constexpr std::uint32_t REPLACEMENT = 0xFFFD;

/// What code page 1252 has at 0x80 to 0x9F; the other upper bytes are their own code points.
constexpr std::array<std::uint16_t, 32> CODE_PAGE_1252 = {
    0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};

bool is_control(std::uint32_t c)
{
  return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

bool is_surrogate(std::uint32_t c)
{
  return c >= 0xD800 && c < 0xE000;
}

void append_utf8(std::string& out, std::uint32_t c)
{
  auto const byte = [&out](std::uint32_t value) { out += static_cast<char>(value); };
  auto const tail = [&byte, c](unsigned shift) { byte(0x80 | ((c >> shift) & 0x3F)); };
  if (c < 0x80)
  {
    byte(c);
  }
  else if (c < 0x800)
  {
    byte(0xC0 | (c >> 6));
    tail(0);
  }
  else if (c < 0x10000)
  {
    byte(0xE0 | (c >> 12));
    tail(6);
    tail(0);
  }
  else
  {
    byte(0xF0 | (c >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

struct Decoded
{
  std::uint32_t character;
  std::size_t bytes; // 0 where there is no valid character
};

/// The character at the front of `bytes`, which is not empty. Overlong forms, surrogates and what lies beyond
/// U+10FFFF are not valid.
Decoded front_character(std::string_view bytes)
{
  auto const at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  std::uint32_t const lead = at(0);
  if (lead < 0x80)
    return {lead, 1};

  std::size_t const length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length)
    return {REPLACEMENT, 0};
  std::uint32_t character = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i)
  {
    if ((at(i) & 0xC0) != 0x80)
      return {REPLACEMENT, 0};
    character = (character << 6) | (at(i) & 0x3FU);
  }
  constexpr std::array<std::uint32_t, 5> LEAST = {0, 0, 0x80, 0x800, 0x10000};
  bool const valid = character >= LEAST[length] && character <= 0x10FFFF && !is_surrogate(character);
  return valid ? Decoded{character, length} : Decoded{REPLACEMENT, 0};
}

/// `\U+XXXX` at the front of `bytes`, or 0 bytes.
Decoded front_escape(std::string_view bytes)
{
  constexpr std::size_t LENGTH = 7;
  if (bytes.size() < LENGTH || bytes.substr(0, 3) != "\\U+")
    return {0, 0};
  std::uint32_t character = 0;
  char const* const end = bytes.data() + LENGTH;
  if (std::from_chars(bytes.data() + 3, end, character, 16).ptr != end)
    return {0, 0};
  return {is_surrogate(character) ? REPLACEMENT : character, LENGTH};
}

void append_visible(std::string& out, std::uint32_t c)
{
  append_utf8(out, is_control(c) ? REPLACEMENT : c);
}

} // namespace

bool is_utf8(std::string_view bytes)
{
  while (!bytes.empty())
  {
    std::size_t const length = front_character(bytes).bytes;
    if (length == 0)
      return false;
    bytes.remove_prefix(length);
  }
  return true;
}

std::string decode_name(std::string_view bytes)
{
  bool const utf8 = is_utf8(bytes);
  std::string name;
  while (!bytes.empty())
  {
    Decoded next = front_escape(bytes);
    if (next.bytes == 0 && utf8)
      next = front_character(bytes);
    if (next.bytes == 0)
    {
      std::uint32_t const byte = static_cast<unsigned char>(bytes[0]);
      next = {byte >= 0x80 && byte < 0xA0 ? CODE_PAGE_1252[byte - 0x80] : byte, 1};
    }
    append_visible(name, next.character);
    bytes.remove_prefix(next.bytes);
  }
  return name;
}

std::string printable(std::string_view bytes)
{
  std::string text;
  while (!bytes.empty())
  {
    Decoded const next = front_character(bytes);
    append_visible(text, next.character);
    bytes.remove_prefix(next.bytes == 0 ? 1 : next.bytes);
  }
  return text;
}

std::size_t width(std::string_view utf8)
{
  std::size_t characters = 0;
  for (char const c : utf8)
    characters += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
  return characters;
}

bool equal_without_case(char a, char b)
{
  auto const upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
  return upper(a) == upper(b);
}

} // namespace contours
