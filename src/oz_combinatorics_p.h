#ifndef OZ_COMBINATORICS_P_H
#define OZ_COMBINATORICS_P_H

#include "ozarray.h"

#include <cstdint>

/// The binomial coefficients of all rows up to some greatest one, row after row.
///
/// Cell 0 is 0, the coefficient of all that is out of range. Row n begins at cell (n + 1) * (n + 2) / 2 and
/// has n + 2 cells: its coefficients for 0 to n, and a closing 0. A coefficient is the sum of the two above
/// it; for the first in a row the left one of these is the closing 0 of the row before last.
class OzBinomialTriangle
{
public:
  OzBinomialTriangle()
  {
    // Room for rows up to 15, which is more than most curves and surfaces ever ask for.
    cells_.resize(first_cell(16), true);
    cells_.resize(first_cell(1), true);
    cells_[1] = 1;
  }

  double coefficient(int n, int k)
  {
    if (k < 0 || k > n)
      return cells_.begin()[0];

    std::int64_t const row = n;
    if (first_cell(row + 1) > cells_.size())
      add_rows(row);
    return cells_.begin()[first_cell(row) + static_cast<std::uint64_t>(k)];
  }

  OzArray<int> const& cells() const { return cells_; }

  /// Where row `row` begins; a row is there if the next one begins within the table or at its end.
  static std::uint64_t first_cell(std::int64_t row)
  {
    return static_cast<std::uint64_t>((row + 1) * (row + 2) / 2);
  }

private:
  // 32-bit additions without a guard.
  static int wrapped_sum(int a, int b)
  {
    return static_cast<int>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
  }

  void add_rows(std::int64_t last)
  {
    std::int64_t present = 0;
    while (first_cell(present + 1) < cells_.size())
      ++present;

    cells_.resize(first_cell(last + 1), true); // the new cells are 0
    for (std::int64_t row = present + 1; row <= last; ++row)
    {
      int* const cell = cells_.begin() + first_cell(row);
      int const* const above = cells_.begin() + first_cell(row - 1);
      for (std::int64_t k = 0; k < (row + 2) / 2; ++k)
        cell[k] = cell[row - k] = wrapped_sum(above[k - 1], above[k]);
    }
  }

  OzArray<int> cells_;
};

#endif
