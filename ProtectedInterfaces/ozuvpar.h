#ifndef OZUVPAR_H
#define OZUVPAR_H

#include "ozdebug.h"
#include "ozexport.h"
#include "ozuvvec.h"

class OzJournal;

/// A position in a space of two parameters, such as the domain of a surface.
///
/// The difference of two positions is an OzUVVec, and a position plus a vector is a position. Positions may
/// also be added and scaled, so that weighted means can be computed.
///
/// A value without virtual functions: two adjacent numbers.
/// Reports: an index other than 0 and 1, which is then used all the same.
class OZ_EXPORT OzUVPar
{
public:
  /// (0, 0).
  OzUVPar()
    : u_(0.0)
    , v_(0.0)
  {
  }
  OzUVPar(double u, double v)
    : u_(u)
    , v_(v)
  {
  }
  /// Reads two parameters.
  explicit OzUVPar(double const* parameters)
    : u_(parameters[0])
    , v_(parameters[1])
  {
  }
  OzUVPar(OzUVPar const&) = default;
  OzUVPar& operator=(OzUVPar const&) = default;
  ~OzUVPar() = default;

  double u() const { return u_; }
  double v() const { return v_; }
  void set_u(double u) { u_ = u; }
  void set_v(double v) { v_ = v; }

  /// How many parameters there are.
  static int dim() { return 2; }
  double const* as_array() const { return reinterpret_cast<double const*>(this); }
  double& operator[](int index);
  double const& operator[](int index) const;

  OzUVPar operator+(OzUVPar const& other) const { return OzUVPar(u_ + other.u_, v_ + other.v_); }
  OzUVPar operator+(OzUVVec const& step) const { return OzUVPar(u_ + step.du(), v_ + step.dv()); }
  OzUVPar operator-(OzUVVec const& step) const { return OzUVPar(u_ - step.du(), v_ - step.dv()); }
  OzUVVec operator-(OzUVPar const& other) const { return OzUVVec(u_ - other.u_, v_ - other.v_); }
  OzUVPar operator*(double factor) const { return OzUVPar(u_ * factor, v_ * factor); }
  OzUVPar& operator+=(OzUVPar const& other);
  OzUVPar& operator+=(OzUVVec const& step);
  OzUVPar& operator-=(OzUVPar const& other);
  OzUVPar& operator-=(OzUVVec const& step);
  OzUVPar& operator*=(double factor);

  /// Writes one line, from OZ_DEBUG_CONTENTS on. The flag is ignored.
  void debug(OzJournal& journal, OzDebug level, bool, int indent) const;

private:
  double u_;
  double v_;
};

/// Writes the parameters behind the class name, without ending the line.
OZ_EXPORT OzJournal& operator<<(OzJournal& journal, OzUVPar const& position);

#endif
