#ifndef CONTOURS_CURVE_H
#define CONTOURS_CURVE_H

namespace contours
{

struct Point
{
  double x = 0.0;
  double y = 0.0;
};

double distance(Point a, Point b);

/// A straight line or a circular arc with a direction: the geometry of one edge of a contour.
///
/// An arc has a radius above 0 and a sweep, the angle in radians from start to end about the centre, positive
/// against the clock. A full circle is an arc whose start is its end and whose sweep is a whole turn. A line has
/// neither centre nor radius nor sweep.
struct Curve
{
  Point start;
  Point end;
  Point center;
  double radius = 0.0;
  double sweep = 0.0;

  static Curve line(Point start, Point end);
  /// Angles in degrees from the x axis against the clock. The arc runs from `from` to `to` against the clock, all
  /// round if the two are equal.
  static Curve arc(Point center, double radius, double from, double to);
  static Curve circle(Point center, double radius);
  /// The piece of a polyline between two vertices. `bulge` is the tangent of a quarter of the sweep; 0 is straight.
  static Curve bulged(Point start, Point end, double bulge);

  bool is_arc() const { return radius > 0.0; }
  double length() const;
  /// The point half way along the curve.
  Point middle() const;
  Curve reversed() const;

  /// The share of this curve in the area that a closed run of curves surrounds (Green's theorem): half the integral
  /// of x dy - y dx about `origin`. An origin near the curve keeps the digits.
  double area(Point origin) const;
};

/// The share of the straight way from `from` to `to` in an area.
double area_of_line(Point from, Point to, Point origin);

} // namespace contours

#endif
