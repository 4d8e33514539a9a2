#ifndef CONTOURS_MESSAGES_H
#define CONTOURS_MESSAGES_H

#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>

namespace contours
{

enum class Verbosity
{
  QUIET,
  NORMAL,
  VERBOSE
};

/// What the program tells beside its results: lines `file:line: text`.
///
/// Drawings with one fault often have it a thousand times. Of each kind of remark the first MOST_OF_A_KIND are
/// printed and the others counted, unless the user asked for all.
class Messages
{
public:
  static constexpr std::size_t MOST_OF_A_KIND = 20;

  /// `out` stays the caller's. `file` is what the user calls the drawing.
  Messages(std::ostream& out, std::string file, Verbosity verbosity);

  /// What stops the program; printed always. Line 0 means the file as a whole.
  void error(std::size_t line, std::string const& text);
  /// What the user should look at; `kind` in the plural ("branches") for the count of what was not printed.
  void remark(std::string const& kind, std::size_t line, std::string const& text);
  /// What is of interest only to who asks.
  void detail(std::string const& text);
  /// Says how many remarks were not printed.
  void finish();

private:
  void print(std::size_t line, std::string const& text);

  std::ostream& out;
  std::string file;
  Verbosity verbosity;
  std::map<std::string, std::size_t> remarks; // by kind
};

} // namespace contours

#endif
