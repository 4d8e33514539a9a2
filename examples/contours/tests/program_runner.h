#ifndef CONTOURS_TESTS_PROGRAM_RUNNER_H
#define CONTOURS_TESTS_PROGRAM_RUNNER_H

#include "program.h"

#include <sstream>
#include <string>
#include <vector>

/// What a run of the program gave.
struct ProgramRun
{
  int code;
  std::string out;
  std::string err;
};

/// Runs the program in this process with `arguments` and `input` on its standard input.
inline ProgramRun run_program(std::vector<std::string> const& arguments, std::string const& input = {})
{
  std::vector<char const*> argv = {"oz-contours"};
  for (std::string const& argument : arguments)
    argv.push_back(argument.c_str());
  std::istringstream in(input);
  std::ostringstream out;
  std::ostringstream err;
  int const code = contours::run(static_cast<int>(argv.size()), argv.data(), in, out, err);
  return {code, out.str(), err.str()};
}

#endif
