#ifndef OZTRIANGLEVEC_H
#define OZTRIANGLEVEC_H

#include "ozdebug.h"
#include "ozexport.h"

class OzJournal;

/// A difference of two positions in a triangle, in barycentric components, whose sum is 0; see OzTrianglePar
/// for the positions.
///
/// Every vector, the result of each operation included, is held to that sum: components whose sum is 1e-12 or
/// more away from 0, or no number, are reported, and all three become 0. The bound is absolute, so a long
/// vector can fall to it by mere rounding, from components of some thousands on; a vector between two positions in
/// the triangle is far shorter.
///
/// A value without virtual functions that is never changed but by assignment: three adjacent numbers. Angles
/// are in radians.
/// Reports: components with another sum, as above; an index other than 0, 1 and 2, which is then used all the
/// same.
class OZ_EXPORT OzTriangleVec
{
public:
  /// (0, 0, 0).
  OzTriangleVec()
    : du_(0.0)
    , dv_(0.0)
    , dw_(0.0)
  {
  }
  OzTriangleVec(double du, double dv, double dw);
  /// Reads three components.
  explicit OzTriangleVec(double const* components);
  OzTriangleVec(OzTriangleVec const&) = default;
  OzTriangleVec& operator=(OzTriangleVec const&) = default;
  ~OzTriangleVec() = default;

  double du() const { return du_; }
  double dv() const { return dv_; }
  double dw() const { return dw_; }

  double const* as_array() const { return reinterpret_cast<double const*>(this); }
  double const& operator[](int index) const;

  OzTriangleVec operator+(OzTriangleVec const& other) const;
  OzTriangleVec operator-(OzTriangleVec const& other) const;
  OzTriangleVec operator-() const;
  OzTriangleVec operator*(double factor) const;
  /// The opposite vector.
  OzTriangleVec reverse() const;

  /// The vector at a right angle, of the same length.
  OzTriangleVec ortho() const;
  /// The vector after a turn by `angle`, towards ortho() if that is positive.
  OzTriangleVec turn(double angle) const;

  /// Writes one line, from OZ_DEBUG_CONTENTS on. The flag is ignored.
  void debug(OzJournal& journal, OzDebug level, bool, int indent) const;

private:
  bool sums_to_zero() const;

  double du_;
  double dv_;
  double dw_;
};

/// Writes the components behind the class name, without ending the line.
OZ_EXPORT OzJournal& operator<<(OzJournal& journal, OzTriangleVec const& vector);

#endif
