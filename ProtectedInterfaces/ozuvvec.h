#ifndef OZUVVEC_H
#define OZUVVEC_H

#include "ozdebug.h"
#include "ozexport.h"

class OzJournal;

/// A difference of two positions in a space of two parameters; see OzUVPar for the positions.
///
/// Components are in the parameters' own units, angles in radians. A turn is positive from the first parameter
/// to the second, counter-clockwise where these are drawn to the right and upwards.
///
/// A value without virtual functions: two adjacent numbers.
/// Reports: an index other than 0 and 1, which is then used all the same; a vector too short to be normalized,
/// which then stays as it is.
class OZ_EXPORT OzUVVec
{
public:
  /// (0, 0).
  OzUVVec()
    : du_(0.0)
    , dv_(0.0)
  {
  }
  OzUVVec(double du, double dv)
    : du_(du)
    , dv_(dv)
  {
  }
  /// Reads two components.
  explicit OzUVVec(double const* components)
    : du_(components[0])
    , dv_(components[1])
  {
  }
  OzUVVec(OzUVVec const&) = default;
  OzUVVec& operator=(OzUVVec const&) = default;
  ~OzUVVec() = default;

  double du() const { return du_; }
  double dv() const { return dv_; }
  void set_du(double du) { du_ = du; }
  void set_dv(double dv) { dv_ = dv; }

  /// How many components there are.
  static int dim() { return 2; }
  double const* as_array() const { return reinterpret_cast<double const*>(this); }
  double& operator[](int index);
  double const& operator[](int index) const;

  OzUVVec operator+(OzUVVec const& other) const { return OzUVVec(du_ + other.du_, dv_ + other.dv_); }
  OzUVVec operator-(OzUVVec const& other) const { return OzUVVec(du_ - other.du_, dv_ - other.dv_); }
  OzUVVec operator-() const { return OzUVVec(-du_, -dv_); }
  OzUVVec operator*(double factor) const { return OzUVVec(du_ * factor, dv_ * factor); }
  /// The cross product: the area of the parallelogram, positive if `other` lies counter-clockwise from this.
  double operator*(OzUVVec const& other) const { return du_ * other.dv_ - dv_ * other.du_; }
  /// The dot product.
  double operator%(OzUVVec const& other) const { return du_ * other.du_ + dv_ * other.dv_; }
  OzUVVec& operator+=(OzUVVec const& other);
  OzUVVec& operator-=(OzUVVec const& other);
  OzUVVec& operator*=(double factor);
  /// Divides without looking at the divisor.
  OzUVVec& operator/=(double divisor);
  /// The opposite vector.
  OzUVVec reverse() const { return -*this; }

  /// The root of the sum of the squares; so infinite where these are beyond all numbers, from about 1e154 on.
  double length() const;
  /// Whether the length is below 1e-20; it is the squares that are compared.
  bool numerical_zero() const { return *this % *this < 1e-40; }
  /// Becomes a vector of length 1 of the same direction. Where length() is infinite, finite
  /// components become 0.
  void normalize();
  /// The angle from this vector to `other`, in [-pi, pi], positive counter-clockwise; 0 if one of them is
  /// numerical_zero().
  double angle(OzUVVec const& other) const;
  /// The vector after a quarter turn counter-clockwise.
  OzUVVec ortho() const { return OzUVVec(-dv_, du_); }
  /// The vector after a turn by `angle`, counter-clockwise if that is positive.
  OzUVVec turn(double angle) const;

  /// Writes one line, from OZ_DEBUG_CONTENTS on. The flag is ignored.
  void debug(OzJournal& journal, OzDebug level, bool, int indent) const;

private:
  double du_;
  double dv_;
};

/// Writes the components behind the class name, without ending the line.
OZ_EXPORT OzJournal& operator<<(OzJournal& journal, OzUVVec const& vector);

#endif
