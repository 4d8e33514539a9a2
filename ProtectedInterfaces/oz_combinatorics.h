#ifndef OZ_COMBINATORICS_H
#define OZ_COMBINATORICS_H

#include "ozexport.h"

/// The binomial coefficient "n over k"; 0 if `k` is negative or above `n`.
///
/// Coefficients are kept in 32-bit numbers and wrap around: exact up to n = 33, and in the middle of the rows
/// from n = 34 on of no use.
///
/// Threads: any; each has a table of its own, which is released with it, and no lock is taken.
/// Failure: std::bad_alloc if there is no memory for rows up to `n`; the table is then as it was.
/// Cost: one read once row `n` is in the thread's table. The first request beyond the table adds all rows up
/// to `n`, so the table takes 2 * n * n bytes.
OZ_EXPORT double oz_binomial_coeff(int n, int k);

#endif
