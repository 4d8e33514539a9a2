#include "oz_combinatorics.h"

#include "oz_combinatorics_p.h"

#include <cstdint>

namespace
{
/// Where the cells of the thread's triangle are. A variable that needs neither a constructor nor a destructor
/// is reached without asking whether it has been made, which is most of what a coefficient costs.
struct View
{
  int const* cells = nullptr;
  std::uint64_t size = 0; // 0 before the triangle is made, and after it is gone
  bool gone = false;
};
thread_local View view;

struct Triangle : OzBinomialTriangle
{
  ~Triangle() { view = View{nullptr, 0, true}; }
};

/// For a row that isn't in view.
__attribute__((noinline)) double grown_coefficient(int n, int k)
{
  // A thread that is ending may still destroy objects of its clients, and the main thread static ones.
  if (view.gone)
    return OzBinomialTriangle().coefficient(n, k);

  thread_local Triangle triangle;
  double const result = triangle.coefficient(n, k);
  view.cells = triangle.cells().begin();
  view.size = triangle.cells().size();
  return result;
}
} // namespace

double oz_binomial_coeff(int n, int k)
{
  if (k < 0 || k > n)
    return 0.0;

  View const& now = view;
  std::int64_t const row = n;
  if (OzBinomialTriangle::first_cell(row + 1) > now.size)
    return grown_coefficient(n, k);
  return now.cells[OzBinomialTriangle::first_cell(row) + static_cast<std::uint64_t>(k)];
}
