#ifndef OZMATRIX_T_H
#define OZMATRIX_T_H

#include "ozmatrix.h"

#include <algorithm>
#include <new>

template <class T>
OzMatrix<T>::OzMatrix(std::uint64_t rows, std::uint64_t columns)
{
  resize(rows, columns);
}

template <class T>
OzMatrix<T>& OzMatrix<T>::operator=(OzMatrix const& other)
{
  cells = other.cells; // the only step that can fail comes first
  rows_ = other.rows_;
  columns_ = other.columns_;
  return *this;
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

  // Another number of rows moves nearly every cell, so the new shape is laid out beside the old one.
  OzArray<T> reshaped;
  reshaped.resize(new_rows * new_columns, false);
  std::uint64_t const kept_rows = std::min(rows_, new_rows);
  std::uint64_t const kept_columns = std::min(columns_, new_columns);
  for (std::uint64_t column = 0; column < kept_columns; ++column)
  {
    T const* const from = cells.begin() + column * rows_;
    std::copy(from, from + kept_rows, reshaped.begin() + column * new_rows);
  }

  cells = reshaped;
  rows_ = new_rows;
  columns_ = new_columns;
}

#endif
