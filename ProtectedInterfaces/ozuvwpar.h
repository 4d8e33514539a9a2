#ifndef OZUVWPAR_H
#define OZUVWPAR_H

#include "ozdebug.h"
#include "ozexport.h"
#include "ozuvwvec.h"

class OzJournal;

/// A position in a space of three parameters, such as the domain of a volume.
///
/// The difference of two positions is an OzUVWVec, and a position plus a vector is a position.
///
/// A value without virtual functions: three adjacent numbers.
/// Reports: an index other than 0, 1 and 2, which is then used all the same.
class OZ_EXPORT OzUVWPar
{
public:
  /// (0, 0, 0).
  OzUVWPar()
    : u_(0.0)
    , v_(0.0)
    , w_(0.0)
  {
  }
  OzUVWPar(double u, double v, double w)
    : u_(u)
    , v_(v)
    , w_(w)
  {
  }
  /// Reads three parameters.
  explicit OzUVWPar(double const* parameters)
    : u_(parameters[0])
    , v_(parameters[1])
    , w_(parameters[2])
  {
  }
  OzUVWPar(OzUVWPar const&) = default;
  OzUVWPar& operator=(OzUVWPar const&) = default;
  ~OzUVWPar() = default;

  double u() const { return u_; }
  double v() const { return v_; }
  double w() const { return w_; }
  void set_u(double u) { u_ = u; }
  void set_v(double v) { v_ = v; }
  void set_w(double w) { w_ = w; }

  double const* as_array() const { return reinterpret_cast<double const*>(this); }
  double& operator[](int index);
  double const& operator[](int index) const;

  OzUVWPar operator+(OzUVWVec const& step) const;
  OzUVWPar operator-(OzUVWVec const& step) const;
  OzUVWVec operator-(OzUVWPar const& other) const;
  OzUVWPar operator*(double factor) const { return OzUVWPar(u_ * factor, v_ * factor, w_ * factor); }

  /// Writes one line, from OZ_DEBUG_CONTENTS on. In the third place it shows the second parameter again. The
  /// flag is ignored.
  void debug(OzJournal& journal, OzDebug level, bool, int indent) const;

private:
  double u_;
  double v_;
  double w_;
};

/// Writes the parameters behind the class name, without ending the line.
OZ_EXPORT OzJournal& operator<<(OzJournal& journal, OzUVWPar const& position);

#endif
