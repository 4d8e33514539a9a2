#ifndef CONTOURS_OPTIONS_H
#define CONTOURS_OPTIONS_H

#include "chains.h"
#include "layers.h"
#include "messages.h"

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <set>
#include <string>

namespace contours
{

enum class Format
{
  TABLE,
  CSV,
  JSON
};

enum class ShowProgress
{
  AUTO, ///< on a terminal
  ALWAYS,
  NEVER
};

/// What the user asked for.
struct Options
{
  std::string drawing; ///< a file name; "-" is standard input
  double tolerance_mm = 0.01;
  std::optional<double> unit_mm; ///< in place of what the drawing says
  LayerChoice layers;
  std::optional<Strategy> strategy; ///< in place of what the flavour says
  std::optional<short> flavour;     ///< in place of the one that applies in this process
  std::string svg;                  ///< a file name; empty for none
  std::string history;              ///< a file name; empty for none
  std::string raw_history;          ///< a file name; empty for none
  std::set<std::size_t> history_of; ///< numbers of contours, from 1; empty for all
  std::string why;                  ///< an entity; empty for none
  Format format = Format::TABLE;
  bool strict = false;
  std::size_t threads = 0; ///< 0: one for each processor
  ShowProgress progress = ShowProgress::AUTO;
  Verbosity verbosity = Verbosity::NORMAL;
};

/// Reads the command line into `options`. Gives the exit code where the program should end at once: 0 after printing
/// help or the version to `out`, 2 after printing to `err` what is wrong.
std::optional<int> read_command_line(int argc, char const* const* argv, Options& options, std::ostream& out,
                                     std::ostream& err);

} // namespace contours

#endif
