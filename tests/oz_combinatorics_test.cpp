#include "oz_combinatorics.h"

#include "deadline.h"
#include "oz_combinatorics_p.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace
{
/// What a static object of a client sees after main, when the main thread's table is gone.
struct StaticClient
{
  double const at_load = oz_binomial_coeff(6, 3);

  ~StaticClient()
  {
    if (oz_binomial_coeff(40, 2) != 780.0 || oz_binomial_coeff(3, 4) != 0.0)
      std::abort();
  }
} const static_client;

std::vector<int> cells(OzBinomialTriangle const& triangle)
{
  return std::vector<int>(triangle.cells().begin(), triangle.cells().end());
}

TEST(OzBinomialCoeff, CountsTheWaysToChoose)
{
  struct
  {
    int n;
    int k;
    double coefficient;
  } const cases[] = {
      {0, 0, 1.0},
      {1, 0, 1.0},
      {1, 1, 1.0},
      {2, 1, 2.0},
      {3, 1, 3.0},
      {3, 2, 3.0},
      {4, 2, 6.0},
      {5, 2, 10.0},
      {5, 3, 10.0},
      {5, 0, 1.0},
      {5, 5, 1.0},
      {10, 4, 210.0},
      {15, 7, 6435.0},
      {15, 8, 6435.0},
      {16, 8, 12870.0},
      {17, 8, 24310.0},
      {20, 10, 184756.0},
      {30, 15, 155117520.0},
      {32, 5, 201376.0},
      {33, 16, 1166803110.0},
      {33, 17, 1166803110.0},
      {40, 0, 1.0},
      {40, 40, 1.0},
      {40, 1, 40.0},
  };
  for (auto const& c : cases)
    EXPECT_EQ(oz_binomial_coeff(c.n, c.k), c.coefficient) << c.n << " over " << c.k;
}

TEST(OzBinomialCoeff, IsZeroOutOfRange)
{
  EXPECT_EQ(oz_binomial_coeff(5, 6), 0.0);
  EXPECT_EQ(oz_binomial_coeff(5, -1), 0.0);
  EXPECT_EQ(oz_binomial_coeff(0, 1), 0.0);
  EXPECT_EQ(oz_binomial_coeff(-1, 0), 0.0);
  EXPECT_EQ(oz_binomial_coeff(-1, -1), 0.0);
  EXPECT_EQ(oz_binomial_coeff(-5, -7), 0.0);
  EXPECT_EQ(oz_binomial_coeff(INT_MAX, -1), 0.0);
  EXPECT_EQ(oz_binomial_coeff(INT_MAX - 1, INT_MAX), 0.0);
  EXPECT_EQ(oz_binomial_coeff(INT_MIN, INT_MIN), 0.0);
}

TEST(OzBinomialCoeff, KnowsLowerRowsAfterTheTableHasGrown)
{
  EXPECT_EQ(oz_binomial_coeff(40, 0), 1.0);
  EXPECT_EQ(oz_binomial_coeff(20, 10), 184756.0);
  EXPECT_EQ(oz_binomial_coeff(0, 0), 1.0);
}

TEST(OzBinomialCoeff, WrapsAroundFromRow34On)
{
  struct
  {
    int n;
    int k;
    double coefficient;
  } const cases[] = {
      {34, 14, 1391975640.0},  // the last below the limit
      {34, 15, 1855967520.0},  // likewise
      {34, 16, -2091005866.0}, // 2203961430
      {34, 17, -1961361076.0}, // 2333606220
      {34, 18, -2091005866.0}, // 2203961430
      {35, 17, 242600354.0},   // 4537567650
      {36, 18, 485200708.0},   // 9075135300
      {40, 20, 407575348.0},   // 137846528820
      {70, 35, 796485624.0},   // 112186277816662845432
  };
  for (auto const& c : cases)
    EXPECT_EQ(oz_binomial_coeff(c.n, c.k), c.coefficient) << c.n << " over " << c.k;
}

TEST(OzBinomialCoeff, AgreesWithPascalsRuleModulo32Bits)
{
  std::vector<std::uint32_t> row{1};
  for (int n = 0; n <= 200; ++n)
  {
    for (int k = 0; k <= n; ++k)
    {
      std::uint32_t const cell = row[static_cast<std::size_t>(k)];
      double const read_as_signed = cell < 0x80000000u ? cell : cell - 4294967296.0;
      ASSERT_EQ(oz_binomial_coeff(n, k), read_as_signed) << n << " over " << k;
    }
    row.push_back(0);
    for (std::size_t k = row.size() - 1; k > 0; --k)
      row[k] += row[k - 1];
  }
}

TEST(OzBinomialCoeff, ReportsNothing)
{
  ReportRecorder const recorder;

  oz_binomial_coeff(5, 6);
  oz_binomial_coeff(-1, -1);
  oz_binomial_coeff(300, 150);

  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzBinomialCoeff, OfARowThatNoMemoryHoldsIsBadAllocAndTheTableStays)
{
  EXPECT_EQ(oz_binomial_coeff(50, 2), 1225.0);

  EXPECT_THROW(oz_binomial_coeff(INT_MAX, 1), std::bad_alloc);

  EXPECT_EQ(oz_binomial_coeff(50, 2), 1225.0);
  EXPECT_EQ(oz_binomial_coeff(51, 2), 1275.0);
}

TEST(OzBinomialCoeff, WorksWhileStaticObjectsAreMade)
{
  EXPECT_EQ(static_client.at_load, 20.0);
}

TEST(OzBinomialCoeff, EachThreadGrowsATableOfItsOwn)
{
  Deadline const deadline(std::chrono::seconds(120));
  std::vector<int> wrong(8, 0);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < wrong.size(); ++i)
  {
    threads.emplace_back(
        [i, &wrong]
        {
          // Each in steps of its own, so that the tables grow at different moments.
          for (int n = static_cast<int>(i); n < 120; n += static_cast<int>(i) + 1)
          {
            if (oz_binomial_coeff(n, 1) != n || oz_binomial_coeff(n, n) != 1.0)
              ++wrong[i];
            if (oz_binomial_coeff(n, 2) != n * (n - 1) / 2)
              ++wrong[i];
          }
        });
  }
  for (std::thread& thread : threads)
    thread.join();

  EXPECT_EQ(wrong, std::vector<int>(8, 0));
}

/// Asks when its thread ends, by then perhaps without a table.
struct LateAsker
{
  ~LateAsker() { *answer = oz_binomial_coeff(8, 4); }
  double* answer = nullptr;
};

TEST(OzBinomialCoeff, WorksWhileAThreadEnds)
{
  double before_table = 0.0;
  double after_table = 0.0;

  std::thread(
      [&before_table, &after_table]
      {
        thread_local LateAsker outlives_the_table;
        outlives_the_table.answer = &after_table;
        oz_binomial_coeff(20, 1);
        thread_local LateAsker goes_before_the_table;
        goes_before_the_table.answer = &before_table;
      })
      .join();

  EXPECT_EQ(before_table, 70.0);
  EXPECT_EQ(after_table, 70.0);
}

TEST(OzBinomialTriangle, BeginsWithCellZeroAndRowZero)
{
  OzBinomialTriangle const triangle;

  EXPECT_EQ(cells(triangle), (std::vector<int>{0, 1, 0}));
}

TEST(OzBinomialTriangle, HoldsEachRowWithAClosingZero)
{
  OzBinomialTriangle triangle;

  EXPECT_EQ(triangle.coefficient(5, 2), 10.0);

  EXPECT_EQ(cells(triangle), (std::vector<int>{0,                       //
                                               1, 0,                    // row 0
                                               1, 1, 0,                 //
                                               1, 2, 1,  0,             //
                                               1, 3, 3,  1,  0,         //
                                               1, 4, 6,  4,  1, 0,      //
                                               1, 5, 10, 10, 5, 1, 0})) // row 5
      << "row n begins at cell (n + 1) * (n + 2) / 2";
}

TEST(OzBinomialTriangle, GrowsByWholeRowsAndOnlyWhereARowIsMissing)
{
  OzBinomialTriangle triangle;
  struct
  {
    char const* what;
    int n;
    int k;
    std::uint64_t size;
  } const steps[] = {
      {"row 0 is there from the start", 0, 0, 3},
      {"row 1", 1, 0, 6},
      {"k out of range, before it grows", 9, 10, 6},
      {"k below range, before it grows", 9, -1, 6},
      {"two rows at once", 3, 1, 15},
      {"a row that is there", 2, 1, 15},
      {"the greatest row that is there", 3, 3, 15},
      {"the next one", 4, 0, 21},
      {"the last without a new block", 15, 0, 153},
      {"one more", 16, 8, 171},
      {"many rows", 40, 20, 903},
      {"a lower row", 20, 10, 903},
  };
  for (auto const& step : steps)
  {
    triangle.coefficient(step.n, step.k);
    EXPECT_EQ(triangle.cells().size(), step.size) << step.what;
  }
}

TEST(OzBinomialTriangle, IsTheSameHoweverItGrew)
{
  OzBinomialTriangle at_once;
  OzBinomialTriangle row_by_row;
  OzBinomialTriangle in_leaps;

  at_once.coefficient(60, 0);
  for (int n = 0; n <= 60; ++n)
    row_by_row.coefficient(n, n);
  for (int n : {7, 8, 20, 59, 60})
    in_leaps.coefficient(n, n / 2);

  EXPECT_EQ(cells(row_by_row), cells(at_once));
  EXPECT_EQ(cells(in_leaps), cells(at_once));
}

TEST(OzBinomialTriangle, HasRoomForRowsUpTo15)
{
  OzBinomialTriangle triangle;
  int const* const block = triangle.cells().begin();

  for (int n = 0; n <= 15; ++n)
    triangle.coefficient(n, 0);

  EXPECT_EQ(triangle.cells().begin(), block);
}
} // namespace
