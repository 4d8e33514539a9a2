#ifndef CONTOURS_TEXT_H
#define CONTOURS_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace contours
{

bool is_utf8(std::string_view bytes);

/// A name from a drawing as UTF-8. Drawings say in their header how they encode names, and many say it wrongly; so
/// bytes that are valid UTF-8 are taken as that, and all others as Windows code page 1252. `\U+XXXX` stands for a
/// character. Control characters become U+FFFD, so that a name can go to a terminal and into XML.
std::string decode_name(std::string_view bytes);

/// Any bytes as valid UTF-8 without control characters, U+FFFD in place of what is neither.
std::string printable(std::string_view bytes);

/// Places that UTF-8 text takes in a table with a fixed width: its characters.
std::size_t width(std::string_view utf8);

/// Same but for the case of the letters A to Z.
bool equal_without_case(char a, char b);

} // namespace contours

#endif
