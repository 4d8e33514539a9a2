#ifndef CONTOURS_OUTPUT_FILE_H
#define CONTOURS_OUTPUT_FILE_H

#include <memory>
#include <stdexcept>
#include <string>

namespace contours
{

/// A file that cannot be written, and why.
class OutputError : public std::runtime_error
{
public:
  using std::runtime_error::runtime_error;
};

/// A text on its way to the file `path`, all or nothing: it is written to a new file beside it, which then takes its
/// place. An old file keeps its permissions, and a link stays a link. What is no ordinary file, as a pipe, is written to
/// directly, and only when the text takes its place. Without that the old file is as it was, and nothing is left beside.
///
/// Where several files belong together, each is written before the first takes its place.
class NewFile
{
public:
  /// Throws an OutputError, and then an old file is as it was.
  NewFile(std::string const& path, std::string const& text);
  NewFile(NewFile&&) noexcept;
  ~NewFile();

  /// At most once. Throws an OutputError, and then an old file is as it was.
  void take_place();

private:
  class Beside;

  std::string target;
  std::string direct;             // the text, where there is nothing beside
  std::unique_ptr<Beside> beside; // null where the text goes to `target` directly
};

/// A single file, written and put in its place.
void write_file(std::string const& path, std::string const& text);

} // namespace contours

#endif
