#include "messages.h"

#include <ostream>
#include <utility>

namespace contours
{

Messages::Messages(std::ostream& out_stream, std::string file_name, Verbosity level)
  : out(out_stream)
  , file(std::move(file_name))
  , verbosity(level)
{
}

void Messages::error(std::size_t line, std::string const& text)
{
  print(line, text);
}

void Messages::remark(std::string const& kind, std::size_t line, std::string const& text)
{
  if (verbosity == Verbosity::QUIET)
    return;
  std::size_t const before = remarks[kind]++;
  if (before < MOST_OF_A_KIND || verbosity == Verbosity::VERBOSE)
    print(line, text);
}

void Messages::detail(std::string const& text)
{
  if (verbosity == Verbosity::VERBOSE)
    print(0, text);
}

void Messages::finish()
{
  if (verbosity != Verbosity::NORMAL)
    return;
  for (auto const& [kind, count] : remarks)
    if (count > MOST_OF_A_KIND)
      print(0, std::to_string(count - MOST_OF_A_KIND) + " more " + kind + " (--verbose names them)");
}

void Messages::print(std::size_t line, std::string const& text)
{
  out << file << ':';
  if (line > 0)
    out << line << ':';
  out << ' ' << text << '\n';
}

} // namespace contours
