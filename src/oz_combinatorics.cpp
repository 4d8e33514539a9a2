#include "oz_combinatorics.h"

#include "oz_combinatorics_p.h"

namespace
{
thread_local bool triangle_gone = false;

struct Triangle : OzBinomialTriangle
{
  ~Triangle() { triangle_gone = true; }
};
} // namespace

double oz_binomial_coeff(int n, int k)
{
  // A thread that is ending may still destroy objects of its clients, and the main thread static ones.
  if (triangle_gone)
    return OzBinomialTriangle().coefficient(n, k);

  thread_local Triangle triangle;
  return triangle.coefficient(n, k);
}
