#ifndef CONTOURS_DXF_GROUPS_H
#define CONTOURS_DXF_GROUPS_H

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace contours
{

/// A DXF file is a sequence of groups, each of two lines: a code that says what the value means, and the value.
struct Group
{
  int code = 0;
  std::string_view text; ///< the value as it stands, without the line end
  std::size_t line = 0;  ///< of the code, from 1; the value is on the next one
};

/// Takes a text apart into groups. Lines end in LF, CR LF, or, where there is no LF at all, CR.
///
/// Everything that is not ASCII DXF throws an InputError.
class GroupReader
{
public:
  /// `text` stays the caller's and must outlive the reader and its groups.
  explicit GroupReader(std::string_view text);

  /// The next group without taking it; nothing at the end of the text.
  std::optional<Group> const& peek();
  /// Takes the next group. Only where peek() has one.
  Group take();
  /// The line that would be read next.
  std::size_t line() const { return lines_read + 1; }

private:
  std::optional<std::string_view> read_line();
  std::optional<Group> read_group();

  std::string_view rest;
  char line_end = '\n';
  std::size_t lines_read = 0;
  bool looked_ahead = false;
  std::optional<Group> next_group; // where looked_ahead
};

/// Throws an InputError if `text`, the beginning of a file or all of it, cannot be ASCII DXF.
void check_is_text(std::string_view text);

/// The groups of one entity, asked by code.
class EntityGroups
{
public:
  EntityGroups(std::vector<Group> const& all, std::size_t entity_line);

  std::vector<Group>::const_iterator begin() const { return groups.begin(); }
  std::vector<Group>::const_iterator end() const { return groups.end(); }
  std::size_t line() const { return entity_line_; }

  /// The first group with this code, or null.
  Group const* find(int code) const;
  /// Its value. A missing group and a value that is not a number throw an InputError; `what` names it there.
  double number(int code, char const* what) const;
  double number_or(int code, double otherwise) const;
  int integer_or(int code, int otherwise) const;

private:
  std::vector<Group> const& groups;
  std::size_t entity_line_;
};

/// The value of a group. One that is not a finite number throws an InputError.
double number_of(Group const& group);
int integer_of(Group const& group);

} // namespace contours

#endif
