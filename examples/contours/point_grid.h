#ifndef CONTOURS_POINT_GRID_H
#define CONTOURS_POINT_GRID_H

#include "curve.h"

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace contours
{

/// Numbered points in square cells, for asking what lies near a place without looking at all points.
class PointGrid
{
public:
  /// `cell` is the length of a cell's side, above 0.
  explicit PointGrid(double cell);

  void add(Point point, std::size_t number);

  /// The numbers in each non-empty cell among the (2 reach + 1) squared ones around the cell of `point`: all that
  /// lie within `reach` cell sides, and some that lie farther out.
  std::vector<std::vector<std::size_t> const*> near(Point point, int reach) const;

private:
  // Whole numbers, kept as doubles: a coordinate far out and a small cell give numbers beyond any integer type.
  struct Cell
  {
    double column;
    double row;
    bool operator==(Cell const& other) const { return column == other.column && row == other.row; }
  };
  struct Hash
  {
    std::size_t operator()(Cell const& cell) const;
  };

  Cell cell_of(Point point) const;

  double side;
  std::unordered_map<Cell, std::vector<std::size_t>, Hash> cells;
};

} // namespace contours

#endif
