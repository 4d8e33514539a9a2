#include "dxf_groups.h"

#include "input_error.h"
#include "number_text.h"
#include "text.h"

#include <algorithm>
#include <string>

namespace contours
{

namespace
{

constexpr int LOWEST_CODE = -5;
constexpr int HIGHEST_CODE = 1071;
constexpr std::size_t LONGEST_QUOTE = 40;

std::string quoted(std::string_view text)
{
  std::string const shown = printable(text.substr(0, LONGEST_QUOTE));
  return "'" + shown + (text.size() > LONGEST_QUOTE ? "...'" : "'");
}

/// Drawings in the binary formats say so in their first bytes.
bool is_binary_dxf(std::string_view text)
{
  return text.substr(0, 32).find("Binary DXF\r\n\x1a") != text.npos;
}

bool is_dwg(std::string_view text)
{
  auto const digit = [](char c) { return c >= '0' && c <= '9'; };
  return text.size() >= 6 && text.substr(0, 2) == "AC" &&
         std::all_of(text.begin() + 2, text.begin() + 6, digit);
}

} // namespace

void check_is_text(std::string_view text)
{
  if (is_binary_dxf(text))
    throw InputError(0, "this is a binary DXF file; only ASCII DXF can be read");
  if (is_dwg(text))
    throw InputError(0, "this is a DWG file; only ASCII DXF can be read");
  std::size_t const zero = text.find('\0');
  if (zero == text.npos)
    return;
  auto const line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(zero), '\n');
  throw InputError(static_cast<std::size_t>(line), "this is not a text file: it holds a zero byte");
}

GroupReader::GroupReader(std::string_view text)
  : rest(text)
{
  check_is_text(text);
  constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
  if (rest.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK)
    rest.remove_prefix(BYTE_ORDER_MARK.size());
  if (rest.find('\n') == rest.npos)
    line_end = '\r';
}

std::optional<Group> const& GroupReader::peek()
{
  // Not before it is asked for: what follows the end mark of a drawing is nobody's business.
  if (!looked_ahead)
    next_group = read_group();
  looked_ahead = true;
  return next_group;
}

Group GroupReader::take()
{
  Group const group = *peek();
  looked_ahead = false;
  return group;
}

std::optional<std::string_view> GroupReader::read_line()
{
  if (rest.empty())
    return std::nullopt;
  ++lines_read;
  std::size_t const length = rest.find(line_end);
  std::string_view line = rest.substr(0, length);
  rest.remove_prefix(length == rest.npos ? rest.size() : length + 1);
  if (!line.empty() && line.back() == '\r')
    line.remove_suffix(1);
  return line;
}

std::optional<Group> GroupReader::read_group()
{
  std::optional<std::string_view> const code = read_line();
  if (!code)
    return std::nullopt;

  // Blank lines are nothing at the end of a file and damage elsewhere.
  bool const at_end = rest.find_first_not_of(" \t\r\n\x1a") == rest.npos;
  if (at_end && code->find_first_not_of(" \t\x1a") == code->npos)
    return std::nullopt;

  std::size_t const line = lines_read;
  std::optional<int> const number = parse_integer(*code);
  if (!number || *number < LOWEST_CODE || *number > HIGHEST_CODE)
    throw InputError(line, "expected a group code, found " + quoted(*code));
  std::optional<std::string_view> const text = read_line();
  if (!text)
    throw InputError(line, "the file is cut off: it ends after group code " + std::to_string(*number));
  return Group{*number, *text, line};
}

EntityGroups::EntityGroups(std::vector<Group> const& all, std::size_t entity_line)
  : groups(all)
  , entity_line_(entity_line)
{
}

Group const* EntityGroups::find(int code) const
{
  auto const found =
      std::find_if(groups.begin(), groups.end(), [code](Group const& group) { return group.code == code; });
  return found == groups.end() ? nullptr : &*found;
}

double EntityGroups::number(int code, char const* what) const
{
  Group const* const group = find(code);
  if (group == nullptr)
    throw InputError(entity_line_, std::string("no ") + what + " (group " + std::to_string(code) + ")");
  return number_of(*group);
}

double EntityGroups::number_or(int code, double otherwise) const
{
  Group const* const group = find(code);
  return group == nullptr ? otherwise : number_of(*group);
}

int EntityGroups::integer_or(int code, int otherwise) const
{
  Group const* const group = find(code);
  return group == nullptr ? otherwise : integer_of(*group);
}

double number_of(Group const& group)
{
  std::optional<double> const value = parse_number(group.text);
  if (!value)
    throw InputError(group.line + 1,
                     "group " + std::to_string(group.code) + " is not a number: " + quoted(group.text));
  return *value;
}

int integer_of(Group const& group)
{
  std::optional<int> const value = parse_integer(group.text);
  if (!value)
    throw InputError(group.line + 1,
                     "group " + std::to_string(group.code) + " is not an integer: " + quoted(group.text));
  return *value;
}

} // namespace contours
