#ifndef OZSTRING_H
#define OZSTRING_H

#include "ozarray.h"
#include "ozexport.h"

#include <cstdint>
#include <cstring>

/// A text of 8-bit characters that can be changed, ends with a 0 byte, and is copied by value.
///
/// It is a thin layer over an array of characters whose size counts the terminator. Two notions of its end
/// exist side by side: the text goes up to the first 0 byte, and that is what comparisons, `find` and
/// output look at; length(), null() and `substr` go by the size of the array. They differ after a 0 was
/// appended and after `resize`.
///
/// Ownership: each string owns one buffer of its own on the heap, the empty one too; nothing is shared.
/// What as_c_string() hands out is that buffer, valid until the string is changed next.
/// Threads: one string is for one thread at a time; different strings are independent.
/// Reports: an index out of range, and then the access is made all the same; a string without even a
/// terminator, which no constructor makes; a `format` that fills its size; a negative `set_size`, which
/// then changes nothing.
/// Cost: one allocation for each string, copies included; the capacity doubles, as that of OzArray.
class OZ_EXPORT OzString
{
public:
  OzString();
  /// The text `text`; empty if that is null.
  OzString(char const* text);
  /// The decimal number `value`, right-aligned in a field of `width` by `pad`. With a pad other than a
  /// blank the sign stands before the padding and the field has exactly `width` characters; with a blank
  /// the sign stands before the digits, and a negative number comes out one character short.
  OzString(int value, int width, char pad);
  OzString(OzString const& other);
  /// A null `text` changes nothing.
  OzString& operator=(char const* text);
  OzString& operator=(OzString const& other);
  ~OzString() = default;

  /// The size of the array without the terminator's slot.
  std::uint64_t length() const { return chars.size() == 0 ? 0 : chars.size() - 1; }
  /// True for an empty text: the array holds the terminator and nothing else.
  bool null() const { return chars.size() == 1 && chars.begin()[0] == '\0'; }

  /// The character at `i`, the terminator included. Out of range, and below 0 is, it is reported and then
  /// used all the same.
  char& operator[](int i)
  {
    OZ_ASSERT(static_cast<std::uint64_t>(static_cast<std::int64_t>(i)) < chars.size());
    return chars.begin()[i];
  }
  char const& operator[](int i) const
  {
    OZ_ASSERT(static_cast<std::uint64_t>(static_cast<std::int64_t>(i)) < chars.size());
    return chars.begin()[i];
  }

  char* as_c_string()
  {
    OZ_ASSERT(chars.size() > 0);
    return chars.begin();
  }
  char const* as_const_c_string() const
  {
    OZ_ASSERT(chars.size() > 0);
    return chars.begin();
  }

  // Texts are ordered byte by byte as unsigned numbers, so a letter above ASCII comes after `z`. A null
  // pointer must not be passed.
  bool operator==(OzString const& other) const { return compare(other.as_const_c_string()) == 0; }
  bool operator==(char const* other) const { return compare(other) == 0; }
  bool operator!=(OzString const& other) const { return compare(other.as_const_c_string()) != 0; }
  bool operator!=(char const* other) const { return compare(other) != 0; }
  bool operator<(OzString const& other) const { return compare(other.as_const_c_string()) < 0; }
  bool operator<(char const* other) const { return compare(other) < 0; }
  bool operator<=(OzString const& other) const { return compare(other.as_const_c_string()) <= 0; }
  bool operator<=(char const* other) const { return compare(other) <= 0; }
  bool operator>(OzString const& other) const { return compare(other.as_const_c_string()) > 0; }
  bool operator>(char const* other) const { return compare(other) > 0; }
  bool operator>=(OzString const& other) const { return compare(other.as_const_c_string()) >= 0; }
  bool operator>=(char const* other) const { return compare(other) >= 0; }

  /// Adds a character behind the text. A 0 lengthens length() by one and the text not at all.
  OzString& append(char const& c);
  /// Adds the text of `s`, which may be this string.
  OzString& append(OzString const& s);
  OzString& append(int value);
  OzString& append(unsigned int value);
  /// Adds a number as printf writes it with `precision` and its letter `g` where `general` is true, else
  /// `f`; the locale in force sets the decimal point.
  OzString& append(double value, int precision, bool general);

  /// Replaces the text by what printf makes of `pattern` and the arguments, none of which may lie in this
  /// string. `size` is the room for it, terminator included, and at least 1; a longer text is cut there.
  /// Reports if the text has `size` - 1 characters or more, even though one of exactly `size` - 1 fits.
  OzString& format(int size, char const* pattern, ...) __attribute__((format(printf, 3, 4)));

  /// Sets the size of the array, terminator included, without writing a terminator. The text is always
  /// kept, whatever `keep` is. A string that was made shorter than its text can be read all the same, and so
  /// can its copies: a 0 stands behind the array. Whoever then overwrites the 0 bytes of a string that was
  /// made longer, up to the end of its array, has to put a terminator back before the text is compared,
  /// searched or printed; copying, assignment and `append` do without.
  void resize(std::uint64_t n, bool keep);

  /// Sets length() to `n`, which must not be negative. With `keep` true a longer text is filled up with
  /// blanks. With `keep` false growing loses the text if it has to reallocate; if not, the old text and its
  /// terminator stay while length() grows.
  void set_size(int n, bool keep);

  /// The index of the first `pattern` at or behind `pos`, counted from the start of the string, or -1. An
  /// empty pattern is found at 0 whatever `pos` is. `pos` is cut to a signed 32-bit number.
  int find(char const* pattern, std::uint64_t pos) const;
  int find(OzString const& pattern, std::uint64_t pos) const;

  /// At most `len` characters from `pos` on; all the rest if `len` is negative.
  OzString substr(std::uint64_t pos, int len) const;

protected:
  OzArray<char, OzAllocator<char>> chars; // its size counts the terminator

private:
  OzString(char const* text, std::uint64_t count);
  int compare(char const* other) const { return std::strcmp(as_const_c_string(), other); }
  void copy_unterminated(OzString const& other);
  OzString& append_text(char const* text, std::uint64_t count, std::uint64_t growth);
  void int_to_as(int value, OzArray<char, OzAllocator<char>>& out, int width, char pad);
};

#endif
