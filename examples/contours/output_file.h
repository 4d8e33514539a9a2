#ifndef CONTOURS_OUTPUT_FILE_H
#define CONTOURS_OUTPUT_FILE_H

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

/// Writes `text` to the file `path`, all or nothing: to a new file beside it, which then takes its place. An old file
/// keeps its permissions, and a link stays a link. What is no ordinary file, as a pipe, is written to directly.
///
/// Throws an OutputError, and then an old file is as it was.
void write_file(std::string const& path, std::string const& text);

} // namespace contours

#endif
