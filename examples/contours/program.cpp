#include "program.h"

#include "cluster_job.h"
#include "dxf_reader.h"
#include "exit_codes.h"
#include "failed_checks.h"
#include "flavours.h"
#include "input_error.h"
#include "input_file.h"
#include "interrupt.h"
#include "options.h"
#include "output_file.h"
#include "progress_bar.h"
#include "remarks.h"
#include "report.h"
#include "result.h"
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

/// What the user says, or the flavour that applies.
std::optional<Strategy> chosen_strategy(Options const& options)
{
  return options.strategy ? options.strategy : strategy_of(flavour_to_apply());
}

Result verdict(Outcome const& outcome, bool strict)
{
  bool const cut_as_drawn = !outcome.contours.empty() && outcome.closed() == outcome.contours.size() &&
                            outcome.branches.empty() && outcome.not_supported == 0;
  bool const tidy = outcome.duplicates.empty() && outcome.skipped.empty();
  return cut_as_drawn && (tidy || !strict) ? Result() : Result(Result::NOT_ALL_CLOSED);
}

/// Whether one would overwrite the other; a pipe or a terminal takes both.
bool is_same_file(std::string const& a, std::string const& b)
{
  std::error_code not_there;
  if (std::filesystem::exists(a, not_there) && !std::filesystem::is_regular_file(a, not_there))
    return false;
  return a == b || std::filesystem::equivalent(a, b, not_there);
}

/// A failure, if an output would overwrite the drawing or another output.
Result check_outputs(Options const& options)
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
      if (is_same_file(file, path))
        return Result(Result::WRONG_USAGE, "the " + std::string(what) + " file would overwrite the " + other);
    }
    taken.emplace_back(std::string(what) + " file", file);
  }
  return Result();
}

bool has_bar(Options const& options, std::ostream const& err)
{
  bool const on_terminal = &err == &std::cerr && ::isatty(STDERR_FILENO) == 1;
  return options.progress == ShowProgress::ALWAYS ||
         (options.progress == ShowProgress::AUTO && on_terminal && options.verbosity != Verbosity::QUIET);
}

/// Reads, joins and writes.
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

  /// A failure, a warning where the drawing can't be cut as it stands, or that all is well. What only a lack of memory,
  /// a bug or Ctrl-C can bring about is thrown.
  Result execute()
  {
    Drawing drawing;
    double unit = 1.0;
    if (Result result = read(drawing, unit); result.failed())
      return result;
    std::optional<std::size_t> asked;
    if (Result result = find_asked_entity(drawing, asked); result.failed())
      return result;

    ContourFinder finder(drawing, options.layers, options.tolerance_mm, chosen_strategy(options));
    Outcome& outcome = finder.outcome();
    History history(drawing, outcome);
    JobFigures const figures = sort_clusters(finder, history);
    if (Result result = check_asked_contours(outcome); result.failed())
      return result;
    take_pictures(history);
    add_sources(outcome, history);

    Report const report = {options.drawing, unit, options.tolerance_mm, drawing, outcome};
    tell_details(report, messages);
    tell_figures(figures, messages);
    tell_remarks(report, options.layers, messages);
    std::string const text = asked ? why(report, history, *asked) : result_text(options, report);
    if (Result result = write_results(report, text); result.failed())
      return result;
    return verdict(outcome, options.strict);
  }

private:
  /// A drawing in millimetres with its entities in order.
  Result read(Drawing& drawing, double& unit)
  {
    try
    {
      std::string const text = read_input(options.drawing, in);
      // Until now there was nothing that Ctrl-C could leave half done, and the input could keep us waiting for ever.
      interrupt.emplace(stop);
      drawing = read_drawing(text);
      unit = unit_of(options, drawing);
      scale_to_millimetres(drawing, unit);
    }
    catch (InputError const& error)
    {
      return Result(Result::BAD_INPUT, error.what(), error.line());
    }
    order_entities(drawing);
    return Result();
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

  /// Leaves `asked` alone where nobody asks.
  Result find_asked_entity(Drawing const& drawing, std::optional<std::size_t>& asked)
  {
    if (options.why.empty())
      return Result();
    auto const found = std::find_if(drawing.entities.begin(), drawing.entities.end(),
                                    [this](Entity const& entity) { return is_named(entity, options.why); });
    if (found == drawing.entities.end())
      return Result(Result::WRONG_USAGE, "there is no entity " + printable(options.why) + " in this drawing");
    asked = static_cast<std::size_t>(found - drawing.entities.begin());
    return Result();
  }

  Result check_asked_contours(Outcome const& outcome)
  {
    for (std::size_t const number : options.history_of)
    {
      if (number > outcome.contours.size())
        return Result(Result::WRONG_USAGE,
                      "there is no contour " + std::to_string(number) + ": " +
                          counted(outcome.contours.size(), "contour was", "contours were") + " found");
    }
    return Result();
  }

  /// Simplifies the history, and keeps the pictures of it that were asked for.
  void take_pictures(History& history)
  {
    std::set<std::size_t> only;
    for (std::size_t const number : options.history_of)
      only.insert(number - 1);
    if (!options.raw_history.empty())
      files.emplace_back(options.raw_history, history.picture(only));
    history.simplify();
    if (!options.history.empty())
      files.emplace_back(options.history, history.picture(only));
  }

  /// All of them or, unless the last step fails, none.
  Result write_files()
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
      return Result();
    }
    catch (OutputError const& error)
    {
      return Result(Result::BAD_OUTPUT, "cannot write " + printable(name) + ": " + error.what());
    }
  }

  Result write_results(Report const& report, std::string const& text)
  {
    if (!options.svg.empty())
      files.emplace_back(options.svg, svg(report));
    // The files first: where one fails, nothing was said that looks like success.
    if (Result result = write_files(); result.failed())
      return result;
    // Whoever reads the standard output may keep us waiting.
    interrupt.reset();
    errno = 0;
    if (out << text << std::flush)
      return Result();
    return Result(Result::BAD_OUTPUT, std::string("cannot write to standard output") +
                                          (errno == 0 ? "" : std::string(": ") + std::strerror(errno)));
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

Result completed(Run&& run)
{
  try
  {
    return run.execute();
  }
  catch (Cancelled const& cancelled)
  {
    return Result(Result::CANCELLED, cancelled.what());
  }
  catch (std::bad_alloc const&)
  {
    return Result(Result::NO_MEMORY);
  }
  catch (std::exception const& error)
  {
    return Result(Result::BUG, std::string(error.what()) +
                                   ". This is a bug: please report it with this line and the drawing.");
  }
}

} // namespace

int run(int argc, char const* const* argv, std::istream& in, std::ostream& out, std::ostream& err)
{
  FailedChecksEndTheProgram const guard;
  Options options;
  if (std::optional<int> const code = read_command_line(argc, argv, options, out, err))
    return *code;

  Messages messages(err, options.drawing == "-" ? "<stdin>" : printable(options.drawing), options.verbosity);
  std::optional<KeptFlavour> kept;
  if (options.flavour)
    kept.emplace(*options.flavour);
  Result result = check_outputs(options);
  if (result.ok())
    result = completed(Run(options, in, out, err, messages));
  if (result.failed())
    messages.error(result.line(), result.message().as_const_c_string());
  return exit_code(result);
}

} // namespace contours
