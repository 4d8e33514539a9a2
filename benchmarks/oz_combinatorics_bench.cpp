// Bernstein polynomials ask for the same few binomial coefficients again and again: is it worth keeping them? The peers
// compute each anew as a product of fractions, and read it from a plain table that is made beforehand. First use, which
// makes the rows, is measured by itself, in a new thread each time, beside a thread that does nothing.

#include "oz_combinatorics.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <thread>
#include <utility>
#include <vector>

namespace
{
struct Kept
{
  explicit Kept(int) {}
  double operator()(int n, int k) const { return oz_binomial_coeff(n, k); }
};

struct Computed
{
  explicit Computed(int) {}
  double operator()(int n, int k) const
  {
    double product = 1.0;
    for (int i = 1; i <= k; ++i)
      product = product * (n - k + i) / i;
    return product;
  }
};

struct PlainTable
{
  explicit PlainTable(int degree)
  {
    for (int n = 0; n <= degree; ++n)
    {
      std::vector<double> row;
      for (int k = 0; k <= n; ++k)
        row.push_back(Computed(degree)(n, k));
      rows.push_back(row);
    }
  }
  double operator()(int n, int k) const
  {
    return rows[static_cast<std::size_t>(n)][static_cast<std::size_t>(k)];
  }

  std::vector<std::vector<double>> rows;
};

template <class Coefficients>
void Coefficient(benchmark::State& state)
{
  int const degree = static_cast<int>(state.range(0));
  Coefficients const coefficient(degree);
  std::mt19937 random(42);
  std::vector<std::pair<int, int>> questions;
  while (questions.size() < 1024)
  {
    int const n = std::uniform_int_distribution<int>(0, degree)(random);
    questions.emplace_back(n, std::uniform_int_distribution<int>(0, n)(random));
  }
  coefficient(degree, 0);

  std::size_t next = 0;
  for (auto _ : state)
  {
    std::pair<int, int> const& question = questions[next++ % questions.size()];
    benchmark::DoNotOptimize(coefficient(question.first, question.second));
  }
}
BENCHMARK_TEMPLATE(Coefficient, Kept)->Arg(3)->Arg(9)->Arg(30);
BENCHMARK_TEMPLATE(Coefficient, Computed)->Arg(3)->Arg(9)->Arg(30);
BENCHMARK_TEMPLATE(Coefficient, PlainTable)->Arg(3)->Arg(9)->Arg(30);

void FirstUseInAThread(benchmark::State& state)
{
  int const degree = static_cast<int>(state.range(0));
  for (auto _ : state)
    std::thread([degree] { benchmark::DoNotOptimize(oz_binomial_coeff(degree, 0)); }).join();
}
BENCHMARK(FirstUseInAThread)->Arg(3)->Arg(30)->Arg(300)->MeasureProcessCPUTime();

void ThreadThatDoesNothing(benchmark::State& state)
{
  for (auto _ : state)
    std::thread([] {}).join();
}
BENCHMARK(ThreadThatDoesNothing)->MeasureProcessCPUTime();
} // namespace
