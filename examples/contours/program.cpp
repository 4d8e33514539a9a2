#include "program.h"

#include "dxf_reader.h"
#include "exit_codes.h"
#include "failed_checks.h"
#include "input_error.h"
#include "input_file.h"
#include "options.h"
#include "output_file.h"
#include "remarks.h"
#include "report.h"
#include "text.h"
#include "units.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <ostream>
#include <set>
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

/// Reads, joins and writes. What goes wrong is thrown.
class Run
{
public:
  Run(Options const& chosen, std::istream& input, std::ostream& output, Messages& remarks)
    : options(chosen)
    , in(input)
    , out(output)
    , messages(remarks)
  {
  }

  int execute()
  {
    Drawing drawing = read_drawing(read_input(options.drawing, in));
    double const unit = unit_of(options, drawing);
    scale_to_millimetres(drawing, unit);
    order_entities(drawing);
    std::optional<std::size_t> const asked = find_asked_entity(drawing);
    if (!options.why.empty() && !asked)
      return EXIT_USAGE;

    Outcome outcome = find_contours(drawing, options.layers, options.tolerance_mm, options.strategy);
    if (!has_asked_contours(outcome))
      return EXIT_USAGE;
    History history(drawing, outcome);
    take_pictures(history);
    add_sources(outcome, history);

    Report const report = {options.drawing, unit, options.tolerance_mm, drawing, outcome};
    tell_details(report, messages);
    tell_remarks(report, options.layers, messages);
    std::string const text = asked ? why(report, history, *asked) : result_text(options, report);
    if (!write_results(report, text))
      return EXIT_OUTPUT;
    return verdict(outcome, options.strict);
  }

private:
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
  Messages& messages;
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
    return Run(options, in, out, messages).execute();
  }
  catch (InputError const& error)
  {
    messages.error(error.line(), error.what());
    return EXIT_INPUT;
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
