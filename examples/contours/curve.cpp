#include "curve.h"

#include <cmath>

namespace contours
{

namespace
{

double const PI = std::acos(-1.0);

/// A bow that rises less above its chord than this part of it is a line: its radius would have no digits left.
constexpr double LEAST_BULGE = 1e-9;

Point on_circle(Point center, double radius, double angle)
{
  return {center.x + radius * std::cos(angle), center.y + radius * std::sin(angle)};
}

} // namespace

double distance(Point a, Point b)
{
  return std::hypot(a.x - b.x, a.y - b.y);
}

double area_of_line(Point from, Point to, Point origin)
{
  return 0.5 * ((from.x - origin.x) * (to.y - origin.y) - (to.x - origin.x) * (from.y - origin.y));
}

Curve Curve::line(Point start, Point end)
{
  Curve curve;
  curve.start = start;
  curve.end = end;
  return curve;
}

Curve Curve::arc(Point center, double radius, double from, double to)
{
  double turn = std::fmod(to - from, 360.0);
  if (turn <= 0.0)
    turn += 360.0;
  double const angle = std::fmod(from, 360.0) * PI / 180.0;

  Curve curve;
  curve.center = center;
  curve.radius = radius;
  curve.sweep = turn * PI / 180.0;
  curve.start = on_circle(center, radius, angle);
  curve.end = turn == 360.0 ? curve.start : on_circle(center, radius, angle + curve.sweep);
  return curve;
}

Curve Curve::circle(Point center, double radius)
{
  return arc(center, radius, 0.0, 360.0);
}

Curve Curve::bulged(Point start, Point end, double bulge)
{
  Curve curve = line(start, end);
  double const chord = distance(start, end);
  if (std::abs(bulge) < LEAST_BULGE || chord == 0.0)
    return curve;

  // The centre lies on the perpendicular through the middle of the chord, to the left of it for a bulge between
  // 0 and 1: there the arc is less than half a circle and turns left.
  double const offset = (1.0 / bulge - bulge) / 4.0;
  curve.center = {(start.x + end.x) / 2.0 - offset * (end.y - start.y),
                  (start.y + end.y) / 2.0 + offset * (end.x - start.x)};
  curve.radius = chord * (1.0 / std::abs(bulge) + std::abs(bulge)) / 4.0;
  curve.sweep = 4.0 * std::atan(bulge);
  return curve;
}

double Curve::length() const
{
  return is_arc() ? radius * std::abs(sweep) : distance(start, end);
}

Point Curve::middle() const
{
  if (!is_arc())
    return {(start.x + end.x) / 2.0, (start.y + end.y) / 2.0};
  double const angle = std::atan2(start.y - center.y, start.x - center.x);
  return on_circle(center, radius, angle + sweep / 2.0);
}

Curve Curve::reversed() const
{
  Curve curve = *this;
  curve.start = end;
  curve.end = start;
  curve.sweep = -sweep;
  return curve;
}

double Curve::area(Point origin) const
{
  if (!is_arc())
    return area_of_line(start, end, origin);
  // The segment between arc and chord, and the chord.
  double const segment = 0.5 * radius * radius * (sweep - std::sin(sweep));
  return segment + area_of_line(start, end, origin);
}

} // namespace contours
