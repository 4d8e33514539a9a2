#include "drawing.h"

#include <algorithm>
#include <string_view>
#include <tuple>

namespace contours
{

namespace
{

/// Orders hexadecimal texts by their value: without leading zeros the longer one is the greater.
std::string_view significant(std::string_view handle)
{
  std::size_t const first = handle.find_first_not_of('0');
  return first == handle.npos ? std::string_view() : handle.substr(first);
}

bool before(Entity const& a, Entity const& b)
{
  auto const key = [](Entity const& entity)
  {
    std::string_view const handle = significant(entity.handle);
    return std::make_tuple(entity.handle.empty(), handle.size(), handle, entity.number);
  };
  return key(a) < key(b);
}

} // namespace

void order_entities(Drawing& drawing)
{
  std::sort(drawing.entities.begin(), drawing.entities.end(), before);
}

bool is_named(Entity const& entity, std::string const& name)
{
  if (!name.empty() && name[0] == '#')
    return name == "#" + std::to_string(entity.number);
  std::string upper = name;
  for (char& c : upper)
    c = c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
  return !entity.handle.empty() && significant(entity.handle) == significant(upper);
}

} // namespace contours
