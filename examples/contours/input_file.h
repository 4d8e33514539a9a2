#ifndef CONTOURS_INPUT_FILE_H
#define CONTOURS_INPUT_FILE_H

#include <iosfwd>
#include <string>

namespace contours
{

/// All bytes of the file `path`, or of `in` if that is "-". Stops early where the first of them show that this is
/// no text, so that a device that never ends is no trap. Throws an InputError.
std::string read_input(std::string const& path, std::istream& in);

} // namespace contours

#endif
