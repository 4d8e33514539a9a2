#include "point_grid.h"

#include <cmath>
#include <functional>

namespace contours
{

PointGrid::PointGrid(double cell)
  : side(cell)
{
}

void PointGrid::add(Point point, std::size_t number)
{
  cells[cell_of(point)].push_back(number);
}

std::vector<std::vector<std::size_t> const*> PointGrid::near(Point point, int reach) const
{
  std::vector<std::vector<std::size_t> const*> found;
  Cell const middle = cell_of(point);
  for (int column = -reach; column <= reach; ++column)
  {
    for (int row = -reach; row <= reach; ++row)
    {
      auto const cell = cells.find(Cell{middle.column + column, middle.row + row});
      if (cell != cells.end())
        found.push_back(&cell->second);
    }
  }
  return found;
}

std::size_t PointGrid::Hash::operator()(Cell const& cell) const
{
  std::hash<double> const hash;
  return hash(cell.column) * 31 + hash(cell.row);
}

PointGrid::Cell PointGrid::cell_of(Point point) const
{
  return {std::floor(point.x / side), std::floor(point.y / side)};
}

} // namespace contours
