#include "input_file.h"

#include "dxf_groups.h"
#include "input_error.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <istream>
#include <vector>

namespace contours
{

namespace
{

constexpr std::size_t BLOCK = 1 << 16;

std::string read_all(std::istream& in)
{
  std::string text;
  std::vector<char> block(BLOCK);
  while (in)
  {
    in.read(block.data(), static_cast<std::streamsize>(block.size()));
    bool const first = text.empty();
    text.append(block.data(), static_cast<std::size_t>(in.gcount()));
    if (first)
      check_is_text(text);
  }
  if (in.bad())
    throw InputError(0, "it cannot be read to its end");
  return text;
}

} // namespace

std::string read_input(std::string const& path, std::istream& in)
{
  if (path == "-")
    return read_all(in);

  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored))
    throw InputError(0, "this is a directory, not a drawing");
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file)
    throw InputError(0, std::string("it cannot be opened: ") + std::strerror(errno));
  return read_all(file);
}

} // namespace contours
