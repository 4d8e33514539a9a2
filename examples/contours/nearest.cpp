#include "nearest.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace contours
{

namespace
{

/// A tree that halves the points by x and y in turn. It has no nodes: the middle of each range of `order` divides the
/// range in two.
class PointTree
{
public:
  explicit PointTree(std::vector<Point> const& all)
    : points(all)
    , order(all.size())
  {
    std::iota(order.begin(), order.end(), std::size_t(0));
    build(0, order.size(), true);
  }

  std::size_t nearest_other(std::size_t number) const
  {
    Search search = {number, number, std::numeric_limits<double>::infinity()};
    look(search, 0, order.size(), true);
    return search.best;
  }

private:
  struct Search
  {
    std::size_t number;
    std::size_t best;
    double gap;
  };

  double coordinate(std::size_t number, bool by_x) const
  {
    return by_x ? points[number].x : points[number].y;
  }

  // The depth of both recursions is the logarithm of the number of points.
  void build(std::size_t begin, std::size_t end, bool by_x)
  {
    if (end - begin < 2)
      return;
    std::size_t const middle = begin + (end - begin) / 2;
    auto const at = [this](std::size_t i) { return order.begin() + static_cast<std::ptrdiff_t>(i); };
    std::nth_element(at(begin), at(middle), at(end),
                     [this, by_x](std::size_t a, std::size_t b)
                     { return coordinate(a, by_x) < coordinate(b, by_x); });
    build(begin, middle, !by_x);
    build(middle + 1, end, !by_x);
  }

  void look(Search& search, std::size_t begin, std::size_t end, bool by_x) const
  {
    if (begin == end)
      return;
    std::size_t const middle = begin + (end - begin) / 2;
    std::size_t const other = order[middle];
    if (other != search.number)
    {
      double const gap = distance(points[search.number], points[other]);
      if (gap < search.gap || (gap == search.gap && other < search.best))
      {
        search.gap = gap;
        search.best = other;
      }
    }

    double const beyond = coordinate(search.number, by_x) - coordinate(other, by_x);
    bool const upper_first = beyond > 0.0;
    look_half(search, begin, middle, end, by_x, upper_first);
    // Nothing beyond the dividing line is nearer than the line. Equality is looked at only above 0: on a heap of equal
    // points it would make every search visit them all.
    double const to_line = beyond < 0.0 ? -beyond : beyond;
    if (to_line < search.gap || (to_line == search.gap && to_line > 0.0))
      look_half(search, begin, middle, end, by_x, !upper_first);
  }

  void look_half(Search& search, std::size_t begin, std::size_t middle, std::size_t end, bool by_x,
                 bool upper) const
  {
    if (upper)
      look(search, middle + 1, end, !by_x);
    else
      look(search, begin, middle, !by_x);
  }

  std::vector<Point> const& points;
  std::vector<std::size_t> order;
};

} // namespace

std::vector<std::size_t> nearest_others(std::vector<Point> const& points)
{
  PointTree const tree(points);
  std::vector<std::size_t> nearest(points.size());
  for (std::size_t i = 0; i < points.size(); ++i)
    nearest[i] = tree.nearest_other(i);
  return nearest;
}

} // namespace contours
