#ifndef OZREPORT_H
#define OZREPORT_H

#include "ozdynobj.h"
#include "ozexport.h"
#include "ozstring.h"

/// The base of reports that the layers above make about their work: typed, with an identity, and nothing
/// else. A copy draws an identity of its own; assignment keeps the identity.
class OZ_EXPORT OzReport : public OzDynObj
{
public:
  OzReport& operator=(OzReport const& other);
  ~OzReport() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  bool isA(OzString const* t) const override;
  int identity() const override;

  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;

protected:
  OzReport();
  OzReport(OzReport const& other);

private:
  int identity_;
};

#endif
