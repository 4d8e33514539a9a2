#ifndef OZUVWVEC_H
#define OZUVWVEC_H

#include "ozdebug.h"
#include "ozexport.h"

class OzJournal;

/// A difference of two positions in a space of three parameters; see OzUVWPar for the positions.
///
/// A value without virtual functions: three adjacent numbers, in the parameters' own units.
/// Reports: an index other than 0, 1 and 2, which is then used all the same; a vector too short to be
/// normalized, which then stays as it is.
class OZ_EXPORT OzUVWVec
{
public:
  /// (0, 0, 0).
  OzUVWVec()
    : du_(0.0)
    , dv_(0.0)
    , dw_(0.0)
  {
  }
  OzUVWVec(double du, double dv, double dw)
    : du_(du)
    , dv_(dv)
    , dw_(dw)
  {
  }
  /// Reads three components.
  explicit OzUVWVec(double const* components)
    : du_(components[0])
    , dv_(components[1])
    , dw_(components[2])
  {
  }
  OzUVWVec(OzUVWVec const&) = default;
  OzUVWVec& operator=(OzUVWVec const&) = default;
  ~OzUVWVec() = default;

  double du() const { return du_; }
  double dv() const { return dv_; }
  double dw() const { return dw_; }
  void set_du(double du) { du_ = du; }
  void set_dv(double dv) { dv_ = dv; }
  void set_dw(double dw) { dw_ = dw; }

  double const* as_array() const { return reinterpret_cast<double const*>(this); }
  double& operator[](int index);
  double const& operator[](int index) const;

  OzUVWVec operator+(OzUVWVec const& other) const;
  OzUVWVec operator-(OzUVWVec const& other) const;
  OzUVWVec operator-() const { return OzUVWVec(-du_, -dv_, -dw_); }
  OzUVWVec operator*(double factor) const { return OzUVWVec(du_ * factor, dv_ * factor, dw_ * factor); }
  /// The cross product.
  OzUVWVec operator*(OzUVWVec const& other) const;
  /// The dot product.
  double operator%(OzUVWVec const& other) const
  {
    return du_ * other.du_ + dv_ * other.dv_ + dw_ * other.dw_;
  }
  OzUVWVec& operator+=(OzUVWVec const& other);
  OzUVWVec& operator-=(OzUVWVec const& other);
  /// The opposite vector.
  OzUVWVec reverse() const { return -*this; }

  /// The root of the sum of the squares; so infinite where these are beyond all numbers, from about 1e154 on.
  double length() const;
  /// Whether the length is below 1e-20; it is the squares that are compared.
  bool numerical_zero() const { return *this % *this < 1e-40; }
  /// Becomes a vector of length 1 of the same direction. Where length() is infinite, finite
  /// components become 0.
  void normalize();

  /// Writes one line, from OZ_DEBUG_CONTENTS on. The flag is ignored.
  void debug(OzJournal& journal, OzDebug level, bool, int indent) const;

private:
  double du_;
  double dv_;
  double dw_;
};

/// Writes the components behind the class name, without ending the line.
OZ_EXPORT OzJournal& operator<<(OzJournal& journal, OzUVWVec const& vector);

#endif
