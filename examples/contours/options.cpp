#include "options.h"

#include "cluster_job.h"
#include "exit_codes.h"
#include "flavours.h"
#include "text.h"
#include "units.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>
#include <map>
#include <ostream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace contours
{

namespace
{

// Shorter than the first no drawing program tells points apart; the second is longer than any workpiece.
constexpr double SHORTEST_TOLERANCE = 1e-6;
constexpr double LONGEST_TOLERANCE = 1e6;

std::map<std::string, Format> const FORMATS = {
    {"table", Format::TABLE}, {"csv", Format::CSV}, {"json", Format::JSON}};

std::map<std::string, Strategy> const STRATEGIES = {{"closest", OzEdgeSorter::OzSortClosestFirst},
                                                    {"grow", OzEdgeSorter::OzSortGrowChains},
                                                    {"sequential", OzEdgeSorter::OzSortSequential},
                                                    {"first-fit", OzEdgeSorter::OzSortFirstFit}};

std::map<std::string, ShowProgress> const SHOW_PROGRESS = {
    {"auto", ShowProgress::AUTO}, {"always", ShowProgress::ALWAYS}, {"never", ShowProgress::NEVER}};

std::map<std::string, short> const FLAVOURS = {{"1", CLOSEST_FIRST}, {"2", BY_SIZE}};

constexpr char const* HELP =
    R"(Joins the loose lines and arcs of a DXF drawing to contours that can be cut, and says
from which entities of the drawing each contour comes.

oz-contours [options] DRAWING.dxf        ("-" reads standard input)
  -t, --tolerance MM     join ends closer than this             [0.01]
  -u, --units U          mm, cm, m, in; overrides $INSUNITS     [from the file, else mm]
  -l, --layer NAME       only this layer (repeatable, * allowed)
  -x, --exclude NAME     not this layer (repeatable, * allowed)
      --strategy S       closest | grow | sequential | first-fit
                         [closest; grow for a cluster of more than 500 edges]
      --flavour N        1 | 2: the rule behind that choice, to make an old result
                         again; --strategy wins over it          [2, the newest]
  -o, --svg FILE         contours as SVG, in millimetres; open ones red and dashed
  -g, --history FILE     which entities went into which contours, for Graphviz (dot)
      --history-raw FILE the same with the edges in between, as it was recorded
      --history-of N     only contour N in both (repeatable)
      --why ENTITY       which contour took this entity (handle or #number), and from
                         what it came
  -f, --format F         table | csv | json on standard output  [table]
  -j, --threads N        sort up to N clusters at once; 0: one for each processor [0]
      --progress P       auto | always | never: a bar on standard error; auto: on a
                         terminal, without --quiet              [auto]
      --strict           duplicates and skipped entities also give exit 1
  -q, --quiet            no remarks, only errors
  -v, --verbose          all remarks, and all entities in the table
  -h, --help
      --version

exit 0   all contours of the chosen layers are closed
     1   read and written, but something is open, branches or was skipped that could be
         cut, or there is nothing to cut
     2   wrong usage
     3   the drawing can't be read, isn't ASCII DXF, or is damaged: nothing written
     4   an output can't be written
    70   a bug: please report the line that tells of it
   130   cancelled by Ctrl-C: nothing written
)";

/// Throws CLI::ValidationError, as the checks of the command line parser do.
void check_tolerance(double tolerance)
{
  bool const usable = tolerance >= SHORTEST_TOLERANCE && tolerance <= LONGEST_TOLERANCE; // false for NaN
  if (!usable)
    throw CLI::ValidationError("--tolerance", "must be from 0.000001 to 1000000 millimetres");
}

template <class Value>
Value named(std::map<std::string, Value> const& values, std::string const& option, std::string const& name)
{
  auto const found = values.find(name);
  if (found != values.end())
    return found->second;
  std::string names;
  for (auto const& [other, value] : values)
    names += (names.empty() ? "" : ", ") + other;
  throw CLI::ValidationError(option, "'" + printable(name) + "' is none of " + names);
}

/// Nothing, if `text` is anything but digits, or too large a number.
std::optional<std::size_t> whole_number(std::string const& text)
{
  std::size_t number = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return number;
}

std::size_t contour_numbered(std::string const& text)
{
  std::size_t const number = whole_number(text).value_or(0);
  if (number == 0)
    throw CLI::ValidationError("--history-of", "'" + printable(text) + "' is not the number of a contour");
  return number;
}

std::size_t number_of_threads(std::string const& text)
{
  std::optional<std::size_t> const number = whole_number(text);
  if (!number || *number > MOST_THREADS)
    throw CLI::ValidationError("--threads", "'" + printable(text) + "' is no number from 0 to " +
                                                std::to_string(MOST_THREADS));
  return *number;
}

double unit_named(std::string const& name)
{
  std::optional<double> const unit = unit_by_name(name);
  if (!unit)
    throw CLI::ValidationError("--units", "'" + printable(name) + "' is none of mm, cm, m, in");
  return *unit;
}

} // namespace

std::optional<int> read_command_line(int argc, char const* const* argv, Options& options, std::ostream& out,
                                     std::ostream& err)
{
  CLI::App app("", "oz-contours");
  app.formatter_fn([](CLI::App const*, std::string const&, CLI::AppFormatMode) { return std::string(HELP); });
  app.set_version_flag("--version", std::string("oz-contours ") + OZ_CONTOURS_VERSION);

  std::string units;
  std::string strategy;
  std::string flavour;
  std::string format;
  std::string threads;
  std::string progress;
  std::vector<std::string> history_of;
  bool quiet = false;
  bool verbose = false;
  app.add_option("DRAWING.dxf", options.drawing)->required();
  app.add_option("-t,--tolerance", options.tolerance_mm);
  app.add_option("-u,--units", units);
  // One name for each option: a second one would be taken from what follows.
  app.add_option("-l,--layer", options.layers.only)->allow_extra_args(false);
  app.add_option("-x,--exclude", options.layers.exclude)->allow_extra_args(false);
  app.add_option("--strategy", strategy);
  app.add_option("--flavour", flavour);
  app.add_option("-o,--svg", options.svg);
  app.add_option("-g,--history", options.history);
  app.add_option("--history-raw", options.raw_history);
  app.add_option("--history-of", history_of)->allow_extra_args(false);
  app.add_option("--why", options.why);
  app.add_option("-f,--format", format);
  app.add_option("-j,--threads", threads);
  app.add_option("--progress", progress);
  app.add_flag("--strict", options.strict);
  auto* const quiet_flag = app.add_flag("-q,--quiet", quiet);
  app.add_flag("-v,--verbose", verbose)->excludes(quiet_flag);

  try
  {
    app.parse(argc, argv);
    check_tolerance(options.tolerance_mm);
    if (app.count("--units") > 0)
      options.unit_mm = unit_named(units);
    if (app.count("--strategy") > 0)
      options.strategy = named(STRATEGIES, "--strategy", strategy);
    if (app.count("--flavour") > 0)
      options.flavour = named(FLAVOURS, "--flavour", flavour);
    if (app.count("--format") > 0)
      options.format = named(FORMATS, "--format", format);
    if (app.count("--threads") > 0)
      options.threads = number_of_threads(threads);
    if (app.count("--progress") > 0)
      options.progress = named(SHOW_PROGRESS, "--progress", progress);
    for (auto const& [option, name] :
         {std::pair("--svg", &options.svg), std::pair("--history", &options.history),
          std::pair("--history-raw", &options.raw_history)})
      if (app.count(option) > 0 && name->empty())
        throw CLI::ValidationError(option, "the file name is empty");
    for (std::string const& number : history_of)
      options.history_of.insert(contour_numbered(number));
    if (!history_of.empty() && options.history.empty() && options.raw_history.empty())
      throw CLI::ValidationError("--history-of", "there is no --history and no --history-raw");
    if (app.count("--why") > 0 && options.why.empty())
      throw CLI::ValidationError("--why", "the entity is empty");
  }
  catch (CLI::ParseError const& error)
  {
    return app.exit(error, out, err) == 0 ? EXIT_ALL_CLOSED : EXIT_USAGE;
  }
  options.verbosity = quiet ? Verbosity::QUIET : verbose ? Verbosity::VERBOSE : Verbosity::NORMAL;
  return std::nullopt;
}

} // namespace contours
