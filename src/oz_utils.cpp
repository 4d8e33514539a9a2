#include "oz_utils.h"

#include "ozresult.h"

#include <cctype>
#include <cstring>

OzString oz_blankstring(int n)
{
  OzString blanks;
  if (n < 1)
    return blanks;

  blanks.resize(static_cast<std::uint64_t>(n) + 1, true);
  std::memset(blanks.as_c_string(), ' ', static_cast<std::uint64_t>(n));
  blanks.as_c_string()[n] = '\0';
  return blanks;
}

OzString oz_tolower(OzString const& s)
{
  OzString lowered(s);
  oz_tolower(lowered);
  return lowered;
}

void oz_tolower(OzString& s)
{
  // Bytes above ASCII go in as negative numbers.
  for (char* c = s.as_c_string(); *c != '\0'; ++c)
    *c = static_cast<char>(std::tolower(static_cast<signed char>(*c)));
}

std::vector<OzString> oz_split(OzString const& s, char const* delimiter)
{
  std::vector<OzString> parts;
  std::uint64_t start = 0;
  int hit = s.find(delimiter, 0);
  if (hit == -1)
    return parts;

  while (hit != -1)
  {
    std::uint64_t const end = static_cast<std::uint64_t>(hit);
    parts.push_back(s.substr(start, static_cast<int>(end - start)));
    start = end + 1;
    hit = s.find(delimiter, start);
  }
  if (start < s.length())
    parts.push_back(s.substr(start, -1));
  return parts;
}

int oz_error_number(OzResult const& result)
{
  OzResult::CodeID code = OzResult::OK;
  int number = -1;
  OzString const* const* package = nullptr;
  result.get_error_condition(code, number, package);
  return number;
}
