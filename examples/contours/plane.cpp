#include "plane.h"

#include <algorithm>
#include <cmath>

namespace contours
{

namespace
{

/// Beyond this the direction counts as upright. Writers that compute it are exact to about twelve digits.
constexpr double LEVEL = 1.0 - 1e-9;

/// Nearer to the z axis than this, a plane takes its x axis from the y axis of the drawing instead of the z axis.
constexpr double NEAR_Z = 1.0 / 64.0;

Direction cross(Direction a, Direction b)
{
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// With length 1, or with length 0. Components are scaled first: they may be as large as numbers go.
Direction unit(Direction d)
{
  double const largest = std::max({std::abs(d.x), std::abs(d.y), std::abs(d.z)});
  if (largest == 0.0)
    return {0.0, 0.0, 0.0};
  d = {d.x / largest, d.y / largest, d.z / largest};
  double const length = std::hypot(d.x, d.y, d.z);
  return {d.x / length, d.y / length, d.z / length};
}

} // namespace

Plane::Plane(Direction extrusion)
{
  Direction const normal = unit(extrusion);
  valid = normal.x != 0.0 || normal.y != 0.0 || normal.z != 0.0;
  if (!valid)
    return;

  bool const near_z = std::abs(normal.x) < NEAR_Z && std::abs(normal.y) < NEAR_Z;
  Direction const x = unit(cross(near_z ? Direction{0.0, 1.0, 0.0} : Direction{0.0, 0.0, 1.0}, normal));
  Direction const y = unit(cross(normal, x));
  x_axis = {x.x, x.y};
  y_axis = {y.x, y.y};
  level = std::abs(normal.z) > LEVEL;
}

Point Plane::to_drawing(Point own) const
{
  return {own.x * x_axis.x + own.y * y_axis.x, own.x * x_axis.y + own.y * y_axis.y};
}

Curve Plane::to_drawing(Curve const& own) const
{
  Curve curve = own;
  curve.start = to_drawing(own.start);
  curve.end = to_drawing(own.end);
  if (!own.is_arc())
    return curve;
  curve.center = to_drawing(own.center);
  bool const mirrored = x_axis.x * y_axis.y - x_axis.y * y_axis.x < 0.0;
  if (mirrored)
    curve.sweep = -own.sweep;
  return curve;
}

} // namespace contours
