#ifndef OZINTERFACE_H
#define OZINTERFACE_H

#include "ozexport.h"
#include "ozstring.h"

/// The root of interfaces that an object can be asked for. An interface is identified by the address of its
/// class's static `class_name_`; a derived one compares with its own id and passes on what it does not know.
class OZ_EXPORT OzInterface
{
public:
  OzInterface() = default;
  OzInterface(OzInterface const&) = default;
  OzInterface& operator=(OzInterface const&) = default;
  virtual ~OzInterface();

  /// This object as the interface `id`, or null if it does not offer that. Ownership stays where it is.
  virtual OzInterface* query_interface(OzString const* id) const;

  static OzString const* interface_id() { return &class_name_; }

  static OzString const class_name_;
};

#endif
