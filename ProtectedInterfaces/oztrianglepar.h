#ifndef OZTRIANGLEPAR_H
#define OZTRIANGLEPAR_H

#include "ozdebug.h"
#include "ozexport.h"
#include "oztrianglevec.h"

class OzJournal;

/// A position in a triangle, in barycentric coordinates: three numbers whose sum is 1.
///
/// Numbers with a sum above 1e-12 are taken as proportions and divided by it, so the sum is 1 after every
/// operation, whatever drift there was. One coordinate may be negative: then the position lies outside. An
/// infinite sum is divided by like any other, and then the sum is not 1.
///
/// The difference of two positions is an OzTriangleVec, and a position plus a vector is a position.
///
/// A value without virtual functions that is never changed but by assignment: three adjacent numbers.
/// Reports: numbers with a sum of 1e-12 or below, or none, and then the position is the middle of the triangle;
/// an index other than 0, 1 and 2, which is then used all the same.
class OZ_EXPORT OzTrianglePar
{
public:
  /// The middle of the triangle.
  OzTrianglePar()
    : u_(1.0 / 3.0)
    , v_(1.0 / 3.0)
    , w_(1.0 / 3.0)
  {
  }
  OzTrianglePar(double u, double v, double w);
  /// Reads three numbers.
  explicit OzTrianglePar(double const* proportions);
  OzTrianglePar(OzTrianglePar const&) = default;
  OzTrianglePar& operator=(OzTrianglePar const&) = default;
  ~OzTrianglePar() = default;

  double u() const { return u_; }
  double v() const { return v_; }
  double w() const { return w_; }

  double const* as_array() const { return reinterpret_cast<double const*>(this); }
  double const& operator[](int index) const;

  OzTrianglePar operator+(OzTriangleVec const& step) const;
  OzTrianglePar operator-(OzTriangleVec const& step) const;
  /// What isn't zero in the sum by more than rounding is reported by the vector.
  OzTriangleVec operator-(OzTrianglePar const& other) const;

  /// Writes one line, from OZ_DEBUG_CONTENTS on. The flag is ignored.
  void debug(OzJournal& journal, OzDebug level, bool, int indent) const;

private:
  bool has_proportions() const;
  void normalize();

  double u_;
  double v_;
  double w_;
};

/// Writes the coordinates behind the class name, without ending the line.
OZ_EXPORT OzJournal& operator<<(OzJournal& journal, OzTrianglePar const& position);

#endif
