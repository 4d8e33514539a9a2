#ifndef CONTOURS_PLANE_H
#define CONTOURS_PLANE_H

#include "curve.h"

namespace contours
{

struct Direction
{
  double x = 0.0;
  double y = 0.0;
  double z = 1.0;
};

/// The plane in which a flat entity of a drawing was drawn, given by the direction in which it would be extruded.
///
/// Arcs, circles and flat polylines have coordinates of their own plane. Its x axis follows from the extrusion
/// direction by a fixed rule; an entity that was mirrored has the direction (0, 0, -1), and its x axis then points
/// backwards. Taking such coordinates for those of the drawing puts every mirrored arc in the wrong place.
class Plane
{
public:
  /// The plane of the drawing itself.
  Plane() = default;
  /// `extrusion` need not have the length 1.
  explicit Plane(Direction extrusion);

  /// False where the extrusion direction has no length.
  bool is_valid() const { return valid; }
  /// Whether circles in this plane are circles in the drawing.
  bool is_level() const { return level; }

  Point to_drawing(Point own) const;
  Curve to_drawing(Curve const& own) const;

private:
  // Images of the own axes in the x, y plane of the drawing.
  Point x_axis = {1.0, 0.0};
  Point y_axis = {0.0, 1.0};
  bool valid = true;
  bool level = true;
};

} // namespace contours

#endif
