#ifndef OZMATRIX_T_H
#define OZMATRIX_T_H

#include "ozmatrix.h"

#include <new>

template <class T>
OzMatrix<T>::OzMatrix(std::uint64_t rows, std::uint64_t columns)
{
  resize(rows, columns);
}

template <class T>
inline T& OzMatrix<T>::operator()(std::uint64_t row, std::uint64_t column)
{
  OZ_ASSERT(row < rows_);
  OZ_ASSERT(column < columns_);
  return cells[column * rows_ + row];
}

template <class T>
inline T const& OzMatrix<T>::operator()(std::uint64_t row, std::uint64_t column) const
{
  OZ_ASSERT(row < rows_);
  OZ_ASSERT(column < columns_);
  return cells[column * rows_ + row];
}

template <class T>
void OzMatrix<T>::resize(std::uint64_t new_rows, std::uint64_t new_columns)
{
  if (new_columns != 0 && new_rows > ~std::uint64_t(0) / new_columns)
    throw std::bad_alloc();

  OzMatrix const old = *this;
  cells.resize(new_rows * new_columns, true);
  rows_ = new_rows;
  columns_ = new_columns;
  for (std::uint64_t column = 0; column < new_columns; ++column)
  {
    for (std::uint64_t row = 0; row < new_rows; ++row)
    {
      bool const kept = row < old.rows_ && column < old.columns_;
      cells.begin()[column * new_rows + row] = kept ? old.cells.begin()[column * old.rows_ + row] : T();
    }
  }
}

#endif
