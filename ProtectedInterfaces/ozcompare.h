#ifndef OZCOMPARE_H
#define OZCOMPARE_H

#include "ozexport.h"

/// Decides whether two values are equal: how a list finds one.
template <class T>
class OZ_EXPORT OzCompare
{
public:
  virtual ~OzCompare() = default;

  /// Whether `compare` tells less from greater.
  virtual bool ordered() = 0;
  /// A new comparison of the same kind, which the caller owns.
  virtual OzCompare* clone() = 0;
  /// 0 if the values are equal.
  virtual int compare(T const& a, T const& b) = 0;
};

/// Equality by `==`. Of counted references the pointers are compared, not the objects.
template <class T>
class OZ_EXPORT OzStdCompare : public OzCompare<T>
{
public:
  bool ordered() override { return false; }
  OzStdCompare* clone() override { return new OzStdCompare(); }
  /// 0 if the values are equal, -1 if they differ.
  int compare(T const& a, T const& b) override { return a == b ? 0 : -1; }
};

#endif
