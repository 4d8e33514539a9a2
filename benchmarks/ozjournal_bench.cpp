// Dumps are lines of numbers: points, vectors, parameters. Each line is three numbers in the journal's own
// format and the end of the line. One peer writes the same characters to a stream in memory; it needs no
// flush, since there is nothing behind it. The other prints each line by snprintf and adds it to a text. Growth from 1,000 to 100,000 lines shows that collecting does not
// search for the end of what was collected.

#include "ozfilejournal.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace
{
std::vector<double> random_coordinates(std::int64_t lines)
{
  std::mt19937 random(7);
  std::uniform_real_distribution<double> coordinate(-1000.0, 1000.0);
  std::vector<double> numbers;
  for (std::int64_t i = 0; i < 3 * lines; ++i)
    numbers.push_back(coordinate(random));
  return numbers;
}

/// An end of a line that flushes nothing: with no file open, ozEndExpr flushes every stream of the process.
void JournalLines(benchmark::State& state)
{
  std::vector<double> const numbers = random_coordinates(state.range(0));
  for (auto _ : state)
  {
    OzFileJournal journal;
    for (std::size_t i = 0; i < numbers.size(); i += 3)
      journal << numbers[i] << " " << numbers[i + 1] << " " << numbers[i + 2] << "\n";
    benchmark::DoNotOptimize(&journal);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void JournalLinesWithEndToken(benchmark::State& state)
{
  std::vector<double> const numbers = random_coordinates(state.range(0));
  for (auto _ : state)
  {
    OzFileJournal journal;
    for (std::size_t i = 0; i < numbers.size(); i += 3)
      journal << numbers[i] << " " << numbers[i + 1] << " " << numbers[i + 2] << ozEndExpr;
    benchmark::DoNotOptimize(&journal);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void StreamLines(benchmark::State& state)
{
  std::vector<double> const numbers = random_coordinates(state.range(0));
  for (auto _ : state)
  {
    std::ostringstream stream;
    stream << std::fixed << std::setprecision(10);
    for (std::size_t i = 0; i < numbers.size(); i += 3)
      stream << std::setw(16) << numbers[i] << " " << std::setw(16) << numbers[i + 1] << " " << std::setw(16)
             << numbers[i + 2] << "\n";
    benchmark::DoNotOptimize(&stream);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void PrintedLines(benchmark::State& state)
{
  std::vector<double> const numbers = random_coordinates(state.range(0));
  for (auto _ : state)
  {
    std::string text;
    for (std::size_t i = 0; i < numbers.size(); i += 3)
    {
      char line[64];
      int const count = std::snprintf(line, sizeof line, "%16.10f %16.10f %16.10f\n", numbers[i],
                                      numbers[i + 1], numbers[i + 2]);
      text.append(line, static_cast<std::size_t>(count));
    }
    benchmark::DoNotOptimize(&text);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
} // namespace

BENCHMARK(JournalLines)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(JournalLinesWithEndToken)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(StreamLines)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK(PrintedLines)->Arg(1000)->Arg(10000)->Arg(100000);
