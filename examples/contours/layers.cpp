#include "layers.h"

#include "text.h"

#include <algorithm>

namespace contours
{

bool matches(std::string_view pattern, std::string_view name)
{
  // The last star takes one character more whenever what follows it fails. Stars before it never have to be tried
  // again, so the work is at most the product of the two lengths.
  std::size_t p = 0;
  std::size_t n = 0;
  std::size_t star = pattern.npos;
  std::size_t star_end = 0;
  while (n < name.size())
  {
    if (p < pattern.size() && pattern[p] == '*')
    {
      star = p++;
      star_end = n;
    }
    else if (p < pattern.size() && equal_without_case(pattern[p], name[n]))
    {
      ++p;
      ++n;
    }
    else if (star != pattern.npos)
    {
      p = star + 1;
      n = ++star_end;
    }
    else
    {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == pattern.npos;
}

bool LayerChoice::has(std::string_view layer) const
{
  auto const describes = [layer](std::string const& pattern) { return matches(pattern, layer); };
  bool const asked_for = only.empty() || std::any_of(only.begin(), only.end(), describes);
  return asked_for && std::none_of(exclude.begin(), exclude.end(), describes);
}

} // namespace contours
