#ifndef OZMATRIX_H
#define OZMATRIX_H

#include "ozarray.h"

#include <cstdint>

/// A table with two indices over one array, stored column by column: element (r, c) is cell c * rows + r.
///
/// Ownership: the matrix owns its elements.
/// Threads: one at a time.
/// Reports: a row and a column out of range, each for itself; the access is then made all the same.
/// Failure: an impossible shape, or no memory, is std::bad_alloc, and what an element's copy throws passes
/// through; in both cases the matrix is as it was.
template <class T>
class OZ_EXPORT OzMatrix
{
public:
  OzMatrix() = default;
  OzMatrix(std::uint64_t rows, std::uint64_t columns);
  OzMatrix(OzMatrix const& other) = default;
  OzMatrix& operator=(OzMatrix const& other);
  virtual ~OzMatrix() = default;

  T& operator()(std::uint64_t row, std::uint64_t column);
  T const& operator()(std::uint64_t row, std::uint64_t column) const;

  std::uint64_t rows() const { return rows_; }
  std::uint64_t columns() const { return columns_; }

  /// Changes the shape. An element keeps its row and column, and what comes in is T().
  /// Cost: the new cells are made beside the old ones and then copied over them.
  void resize(std::uint64_t new_rows, std::uint64_t new_columns);

protected:
  std::uint64_t rows_ = 0;
  std::uint64_t columns_ = 0;
  OzArray<T> cells; // rows_ * columns_
};

#include "ozmatrix_t.h"

#endif
