#include "dxf_reader.h"

#include "dxf_entities.h"
#include "dxf_groups.h"
#include "input_error.h"
#include "text.h"

#include <algorithm>
#include <string>

namespace contours
{

namespace
{

std::string_view trimmed(std::string_view text)
{
  std::size_t const first = text.find_first_not_of(" \t");
  if (first == text.npos)
    return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool begins(Group const& group, std::string_view what)
{
  return group.code == 0 && trimmed(group.text) == what;
}

/// The handle as results show it, or nothing where the drawing has something else in its place.
std::string handle_of(EntityGroups const& groups)
{
  constexpr std::size_t MOST_DIGITS = 16;
  Group const* const group = groups.find(5);
  if (group == nullptr)
    return {};
  std::string handle;
  for (char const c : trimmed(group->text))
  {
    bool const letter = (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    if (!letter && (c < '0' || c > '9'))
      return {};
    handle += c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  return handle.size() > MOST_DIGITS ? std::string() : handle;
}

class DrawingReader
{
public:
  explicit DrawingReader(std::string_view text)
    : source(text)
  {
  }

  Drawing read()
  {
    while (source.peek())
    {
      Group const group = source.take();
      if (group.code == 999) // a comment
        continue;
      if (begins(group, "EOF"))
        return std::move(drawing);
      if (!begins(group, "SECTION"))
        throw InputError(group.line, "expected the begin of a section, found group " +
                                         std::to_string(group.code) + " '" +
                                         printable(group.text.substr(0, 40)) + "'");
      read_section(group);
    }
    if (!any_section)
      throw InputError(0, "the file is empty: expected a DXF drawing");
    return std::move(drawing);
  }

private:
  void read_section(Group const& begin)
  {
    any_section = true;
    if (!source.peek() || source.peek()->code != 2)
      throw InputError(begin.line, "the section has no name (group 2)");
    std::string_view const name = trimmed(source.take().text);
    if (name == "HEADER")
      read_header();
    else if (name == "ENTITIES")
      read_entities();
    else
      while (!at_end_of_section(name))
        source.take();
    source.take();
  }

  /// Throws at the end of the file: a section has to be ended.
  bool at_end_of_section(std::string_view name)
  {
    if (!source.peek())
      throw InputError(source.line(), "the file is cut off: it ends within section " + printable(name));
    return begins(*source.peek(), "ENDSEC");
  }

  void read_header()
  {
    std::string_view variable;
    while (!at_end_of_section("HEADER"))
    {
      Group const group = source.take();
      if (group.code == 9)
        variable = trimmed(group.text);
      else if (variable == "$INSUNITS" && group.code == 70)
        drawing.unit_code = integer_of(group);
      else if (variable == "$DWGCODEPAGE" && group.code == 3)
        code_page = trimmed(group.text);
    }
  }

  void read_entities()
  {
    while (!at_end_of_section("ENTITIES"))
    {
      Group const group = source.take();
      if (group.code == 999)
        continue;
      if (group.code != 0)
        throw InputError(group.line, "expected an entity, found group " + std::to_string(group.code));
      read_entity(group);
    }
  }

  void read_entity(Group const& begin)
  {
    Entity entity;
    entity.number = ++entities_seen;
    entity.line = begin.line;
    entity.type = printable(trimmed(begin.text));
    std::vector<Group> own;
    EntityGroups const groups(own, begin.line);
    try
    {
      take_groups(own);
      entity.handle = handle_of(groups);
      Group const* const layer = groups.find(8);
      entity.layer = layer == nullptr ? "0" : name_from(*layer);
      bool const in_paper_space = groups.integer_or(67, 0) == 1;
      read_with_vertices(entity, groups);
      if (in_paper_space)
        ++drawing.paper_space_entities;
      else
        drawing.entities.push_back(std::move(entity));
    }
    catch (InputError const& error)
    {
      entity.handle = handle_of(groups);
      throw InputError(error.line(), entity.type + " " + entity.name() + ": " + error.what());
    }
  }

  void read_with_vertices(Entity& entity, EntityGroups const& groups)
  {
    // Each list is complete before a reference to it is taken.
    std::vector<std::vector<Group>> own;
    std::vector<std::size_t> lines;
    bool const has_vertices = entity.type == "POLYLINE";
    while (has_vertices && source.peek() && begins(*source.peek(), "VERTEX"))
    {
      lines.push_back(source.take().line);
      take_groups(own.emplace_back());
    }
    if (has_vertices && source.peek() && begins(*source.peek(), "SEQEND"))
    {
      source.take();
      std::vector<Group> ignored;
      take_groups(ignored);
    }

    std::vector<EntityGroups> vertices;
    for (std::size_t i = 0; i < own.size(); ++i)
      vertices.emplace_back(own[i], lines[i]);
    read_curves(entity, groups, vertices);
  }

  /// The groups up to the next begin of something.
  void take_groups(std::vector<Group>& groups)
  {
    while (source.peek() && source.peek()->code != 0)
      groups.push_back(source.take());
    if (!source.peek())
      throw InputError(source.line(), "the file is cut off: it ends in the middle of this entity");
  }

  std::string name_from(Group const& group)
  {
    std::string_view const bytes = trimmed(group.text);
    bool const guessed =
        !is_utf8(bytes) && !code_page.empty() && code_page != "ANSI_1252" && code_page != "ansi_1252";
    if (guessed && !code_page_remarked)
    {
      drawing.remarks.push_back(
          {group.line + 1, "names are in code page " + printable(code_page) +
                               ", which is not known here; they are read as ANSI_1252"});
      code_page_remarked = true;
    }
    return decode_name(bytes);
  }

  GroupReader source;
  Drawing drawing;
  std::size_t entities_seen = 0;
  std::string_view code_page;
  bool code_page_remarked = false;
  bool any_section = false;
};

} // namespace

Drawing read_drawing(std::string_view text)
{
  return DrawingReader(text).read();
}

} // namespace contours
