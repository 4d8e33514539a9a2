#include "program_runner.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

// Damaged drawings: whatever is done to one, the program ends with one of its codes, says something where it refuses,
// and neither crashes nor hangs. OZ_CONTOURS_MUTATIONS in the environment asks for more of them.

namespace
{

std::string example(char const* name)
{
  std::ifstream in("examples/data/" + std::string(name) + ".dxf", std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::size_t number_below(std::mt19937& random, std::size_t bound)
{
  return bound == 0 ? 0 : random() % bound;
}

/// Where the line at or behind a random place begins.
std::size_t random_line(std::string const& text, std::mt19937& random)
{
  std::size_t const end = text.find('\n', number_below(random, text.size()));
  return end == text.npos ? 0 : end + 1;
}

void mutate(std::string& text, std::mt19937& random)
{
  static char const* const VALUES[] = {"1e400",      "NaN",         "-1e308",   "1e308", "0",      "-0",
                                       "1e-320",     "99999999999", "210",      "LINE",  "ENDSEC", "EOF",
                                       "LWPOLYLINE", "VERTEX",      "",         "-1",    "1e9",    "42",
                                       "40",         "\xFF",        "POLYLINE", "70",    "16",     "SEQEND"};
  std::size_t const at = random_line(text, random);
  std::size_t const line_end = text.find('\n', at);
  std::size_t const length = line_end == text.npos ? text.size() - at : line_end - at;
  switch (random() % 7)
  {
  case 0:
    text.replace(at, length, VALUES[random() % std::size(VALUES)]);
    break;
  case 1: // a byte
    if (!text.empty())
      text[number_below(random, text.size())] = static_cast<char>(random() % 256);
    break;
  case 2: // a line less
    text.erase(at, length + 1);
    break;
  case 3: // some lines twice
    text.insert(at, text.substr(random_line(text, random), random() % 200));
    break;
  case 4: // cut off
    if (random() % 8 == 0)
      text.resize(number_below(random, text.size()));
    break;
  case 5: // two lines swapped for two others
    text.replace(at, length, text.substr(random_line(text, random), length));
    break;
  default: // a number slightly off
    text.insert(at, std::to_string(random() % 10));
  }
}

int mutations()
{
  char const* const asked = std::getenv("OZ_CONTOURS_MUTATIONS");
  return asked == nullptr ? 3000 : std::atoi(asked);
}

} // namespace

TEST(Mutations, EndInOneOfTheExitCodes)
{
  std::vector<std::string> originals;
  for (char const* const name : {"plate", "bulges", "old_polyline", "mirrored", "branches", "inch", "names"})
  {
    originals.push_back(example(name));
    ASSERT_FALSE(originals.back().empty());
  }
  static char const* const FORMATS[] = {"table", "csv", "json"};
  static char const* const STRATEGIES[] = {"closest", "grow", "sequential", "first-fit"};
  static char const* const TOLERANCES[] = {"0.000001", "0.01", "1", "50", "1000000"};

  std::mt19937 random(20240229);
  int counts[4] = {};
  int const rounds = mutations();
  for (int round = 0; round < rounds; ++round)
  {
    std::string text = originals[random() % originals.size()];
    for (std::size_t i = 0, n = 1 + random() % 4; i < n; ++i)
      mutate(text, random);
    std::vector<std::string> arguments = {"-", "-f", FORMATS[random() % 3], "-t", TOLERANCES[random() % 5]};
    if (random() % 2 == 0)
      arguments.insert(arguments.end(), {"--strategy", STRATEGIES[random() % 4]});

    ProgramRun const run = run_program(arguments, text);

    ASSERT_TRUE(run.code == 0 || run.code == 1 || run.code == 3) << "seed 20240229, round " << round << "\n"
                                                                 << run.err;
    ASSERT_EQ(run.code == 3, run.out.empty()) << "round " << round;
    ASSERT_TRUE(run.code != 3 || !run.err.empty()) << "round " << round;
    ASSERT_EQ(run.out.find("inf"), std::string::npos) << "round " << round;
    ASSERT_EQ(run.out.find("nan"), std::string::npos) << "round " << round;
    ++counts[run.code];
  }
  if (rounds < 100)
    return;
  EXPECT_GT(counts[0], rounds / 50) << "some mutations leave a drawing whole";
  EXPECT_GT(counts[1], rounds / 50);
  EXPECT_GT(counts[3], rounds / 50);
}
