#include "program.h"

#include "cluster_job.h"
#include "dxf_reader.h"
#include "exit_codes.h"
#include "failed_checks.h"
#include "input_error.h"
#include "input_file.h"
#include "interrupt.h"
#include "options.h"
#include "output_file.h"
#include "progress_bar.h"
#include "remarks.h"
#include "report.h"
#include "stop_flag.h"
#include "text.h"
#include "units.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>
#include <ostream>
#include <set>
#include <unistd.h>
#include <utility>
#include <vector>

namespace contours
{

namespace
{

/// The unit that holds: what the user says, what the drawing says, or millimetres.
double unit_of(Options const& options, Drawing& drawing)
{
  if (options.unit_mm)
    return *options.unit_mm;
  int const code = drawing.unit_code.value_or(0);
  if (std::optional<double> const unit = unit_by_code(code))
    return *unit;
  drawing.remarks.push_back({0, "$INSUNITS is " + std::to_string(code) +
                                    ", which is not known here; the drawing is taken to "
                                    "be in millimetres (--units says otherwise)"});
  return 1.0;
}

std::string result_text(Options const& options, Report const& report)
{
  switch (options.format)
  {
  case Format::CSV:
    return csv(report);
  case Format::JSON:
    return json(report);
  case Format::TABLE:
    break;
  }
  return table(report, options.verbosity == Verbosity::VERBOSE);
}

int verdict(Outcome const& outcome, bool strict)
{
  bool const cut_as_drawn = !outcome.contours.empty() && outcome.closed() == outcome.contours.size() &&
                            outcome.branches.empty() && outcome.not_supported == 0;
  bool const tidy = outcome.duplicates.empty() && outcome.skipped.empty();
  return cut_as_drawn && (tidy || !strict) ? EXIT_ALL_CLOSED : EXIT_NOT_ALL_CLOSED;
}

/// Whether one would overwrite the other; a pipe or a terminal takes both.
bool is_same_file(std::string const& a, std::string const& b)
{
  std::error_code not_there;
  if (std::filesystem::exists(a, not_there) && !std::filesystem::is_regular_file(a, not_there))
    return false;
  return a == b || std::filesystem::equivalent(a, b, not_there);
}

/// Whether no output would overwrite the drawing or another output.
bool outputs_are_apart(Options const& options, Messages& messages)
{
  std::vector<std::pair<std::string, std::string>> taken;
  if (options.drawing != "-")
    taken.emplace_back("drawing", options.drawing);
  for (auto const& [what, file] : {std::pair("SVG", options.svg), std::pair("history", options.history),
                                   std::pair("raw history", options.raw_history)})
  {
    if (file.empty())
      continue;
    for (auto const& [other, path] : taken)
    {
      if (!is_same_file(file, path))
        continue;
      messages.error(0, "the " + std::string(what) + " file would overwrite the " + other);
      return false;
    }
    taken.emplace_back(std::string(what) + " file", file);
  }
  return true;
}

bool has_bar(Options const& options, std::ostream const& err)
{
  bool const on_terminal = &err == &std::cerr && ::isatty(STDERR_FILENO) == 1;
  return options.progress == ShowProgress::ALWAYS ||
         (options.progress == ShowProgress::AUTO && on_terminal && options.verbosity != Verbosity::QUIET);
}

/// Reads, joins and writes. What goes wrong is thrown.
class Run
{
public:
  Run(Options const& chosen, std::istream& input, std::ostream& output, std::ostream& error_output,
      Messages& remarks)
    : options(chosen)
    , in(input)
    , out(output)
    , err(error_output)
    , messages(remarks)
  {
  }

  int execute()
  {
    Drawing drawing = read_drawing(read());
    double const unit = unit_of(options, drawing);
    scale_to_millimetres(drawing, unit);
    order_entities(drawing);
    std::optional<std::size_t> const asked = find_asked_entity(drawing);
    if (!options.why.empty() && !asked)
      return EXIT_USAGE;

    ContourFinder finder(drawing, options.layers, options.tolerance_mm, options.strategy);
    Outcome& outcome = finder.outcome();
    History history(drawing, outcome);
    JobFigures const figures = sort_clusters(finder, history);
    if (!has_asked_contours(outcome))
      return EXIT_USAGE;
    take_pictures(history);
    add_sources(outcome, history);

    Report const report = {options.drawing, unit, options.tolerance_mm, drawing, outcome};
    tell_details(report, messages);
    tell_figures(figures, messages);
    tell_remarks(report, options.layers, messages);
    std::string const text = asked ? why(report, history, *asked) : result_text(options, report);
    if (!write_results(report, text))
      return EXIT_OUTPUT;
    return verdict(outcome, options.strict);
  }

private:
  /// Until it is read there is nothing that Ctrl-C could leave half done, and the input may keep us waiting for ever.
  std::string read()
  {
    std::string text = read_input(options.drawing, in);
    interrupt.emplace(stop);
    return text;
  }

  /// Fills in the contours, and records them.
  JobFigures sort_clusters(ContourFinder& finder, History& history)
  {
    clusters = finder.clusters();
    ClusterWork work;
    work.clusters = clusters;
    work.sort = [&](std::size_t cluster) { return finder.sort(cluster, stop); };
    work.take = [&](std::vector<Contour>&& contours)
    {
      finder.add(std::move(contours));
      history.record_new_contours();
    };
    ProgressBar bar(err, has_bar(options, err));
    JobFigures figures = run_job(work, options.threads, stop, bar);
    finder.finish();
    return figures;
  }

  std::optional<std::size_t> find_asked_entity(Drawing const& drawing)
  {
    if (options.why.empty())
      return std::nullopt;
    auto const found = std::find_if(drawing.entities.begin(), drawing.entities.end(),
                                    [this](Entity const& entity) { return is_named(entity, options.why); });
    if (found == drawing.entities.end())
    {
      messages.error(0, "there is no entity " + printable(options.why) + " in this drawing");
      return std::nullopt;
    }
    return static_cast<std::size_t>(found - drawing.entities.begin());
  }

  bool has_asked_contours(Outcome const& outcome)
  {
    for (std::size_t const number : options.history_of)
    {
      if (number <= outcome.contours.size())
        continue;
      messages.error(0, "there is no contour " + std::to_string(number) + ": " +
                            counted(outcome.contours.size(), "contour was", "contours were") + " found");
      return false;
    }
    return true;
  }

  /// Simplifies the history, and keeps the pictures of it that were asked for.
  void take_pictures(History& history)
  {
    std::set<std::size_t> only;
    for (std::size_t const number : options.history_of)
      only.insert(number - 1);
    if (!options.raw_history.empty())
      files.emplace_back(options.raw_history, history.picture(only));
    if (options.history.empty() && !history.is_soon_simplified())
      return;
    history.simplify();
    if (!options.history.empty())
      files.emplace_back(options.history, history.picture(only));
  }

  /// All of them or, unless the last step fails, none.
  bool write_files()
  {
    std::string name;
    try
    {
      std::vector<NewFile> written;
      for (auto const& [path, text] : files)
      {
        name = path;
        written.emplace_back(path, text);
      }
      // From here on it is too late to cancel.
      if (stop.requested())
        throw Cancelled(clusters, clusters);
      for (std::size_t i = 0; i < files.size(); ++i)
      {
        name = files[i].first;
        written[i].take_place();
      }
      return true;
    }
    catch (OutputError const& error)
    {
      messages.error(0, "cannot write " + printable(name) + ": " + error.what());
      return false;
    }
  }

  bool write_results(Report const& report, std::string const& text)
  {
    if (!options.svg.empty())
      files.emplace_back(options.svg, svg(report));
    // The files first: where one fails, nothing was said that looks like success.
    if (!write_files())
      return false;
    // Whoever reads the standard output may keep us waiting.
    interrupt.reset();
    errno = 0;
    if (out << text << std::flush)
      return true;
    messages.error(0, std::string("cannot write to standard output") +
                          (errno == 0 ? "" : std::string(": ") + std::strerror(errno)));
    return false;
  }

  Options const& options;
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  Messages& messages;
  StopFlag stop;
  std::optional<Interrupt> interrupt;
  std::size_t clusters = 0;
  std::vector<std::pair<std::string, std::string>> files; // to be written: names and texts
};

} // namespace

int run(int argc, char const* const* argv, std::istream& in, std::ostream& out, std::ostream& err)
{
  FailedChecksEndTheProgram const guard;
  Options options;
  if (std::optional<int> const code = read_command_line(argc, argv, options, out, err))
    return *code;

  Messages messages(err, options.drawing == "-" ? "<stdin>" : printable(options.drawing), options.verbosity);
  if (!outputs_are_apart(options, messages))
    return EXIT_USAGE;
  try
  {
    return Run(options, in, out, err, messages).execute();
  }
  catch (InputError const& error)
  {
    messages.error(error.line(), error.what());
    return EXIT_INPUT;
  }
  catch (Cancelled const& cancelled)
  {
    messages.error(0, cancelled.what());
    return EXIT_CANCELLED;
  }
  catch (std::bad_alloc const&)
  {
    messages.error(0, "there is not enough memory for this drawing");
    return EXIT_INPUT;
  }
  catch (std::exception const& error)
  {
    messages.error(0, std::string(error.what()) +
                          ". This is a bug: please report it with this line and the drawing.");
    return EXIT_BUG;
  }
}

} // namespace contours
