#include "ozstandardattribs.h"

#include "ozarray.h"
#include "ozassert.h"
#include "ozobject.h"

namespace
{
/// The newest attribute of the class that `object` has, or null.
template <class Attrib>
Attrib* find_attrib(OzObject const& object)
{
  return static_cast<Attrib*>(object.find_attrib_by_type(Attrib::type_id()));
}
} // namespace

OzString const OzNameAttrib::class_name_("OzNameAttrib");

OzNameAttrib::OzNameAttrib(OzString const& name)
  : name_(name)
{
}

OzNameAttrib::~OzNameAttrib() = default;

OzString const* OzNameAttrib::type() const
{
  return &class_name_;
}

OzString const& OzNameAttrib::class_name() const
{
  return class_name_;
}

bool OzNameAttrib::isA(OzString const* t) const
{
  return t == &class_name_ || OzAttrib::isA(t);
}

bool OzNameAttrib::sharable() const
{
  return false;
}

bool OzNameAttrib::propagate() const
{
  return false;
}

bool OzNameAttrib::invariant(OzEvent const&) const
{
  return true;
}

void OzNameAttrib::set_name(OzString const& name)
{
  name_ = name;
}

OzDynObj* OzNameAttrib::clone() const
{
  return new OzNameAttrib(*this);
}

OzString const OzExtIdAttrib::class_name_("OzExtIdAttrib");

OzExtIdAttrib::OzExtIdAttrib(std::uint64_t extid)
  : extid_(extid)
{
  OZ_ASSERT(extid != illegal_extid_);
}

OzExtIdAttrib::~OzExtIdAttrib() = default;

OzString const* OzExtIdAttrib::type() const
{
  return &class_name_;
}

OzString const& OzExtIdAttrib::class_name() const
{
  return class_name_;
}

bool OzExtIdAttrib::isA(OzString const* t) const
{
  return t == &class_name_ || OzAttrib::isA(t);
}

bool OzExtIdAttrib::sharable() const
{
  return false;
}

bool OzExtIdAttrib::propagate() const
{
  return false;
}

bool OzExtIdAttrib::invariant(OzEvent const&) const
{
  return true;
}

void OzExtIdAttrib::set_extid(std::uint64_t extid)
{
  OZ_ASSERT(extid != illegal_extid_);
  if (extid == illegal_extid_)
    return;

  extid_ = extid;
}

std::uint64_t OzExtIdAttrib::get_extid_from_object(OzObject const& object)
{
  OzExtIdAttrib const* const attrib = find_attrib<OzExtIdAttrib>(object);
  return attrib != nullptr ? attrib->extid_ : illegal_extid_;
}

void OzExtIdAttrib::set_extid_to_object(OzObject& object, std::uint64_t extid)
{
  OZ_ASSERT(extid != illegal_extid_);
  if (extid == illegal_extid_)
    return;

  OzExtIdAttrib* const attrib = find_attrib<OzExtIdAttrib>(object);
  OZ_ASSERT(attrib == nullptr);
  if (attrib != nullptr)
    attrib->set_extid(extid);
  else
    object.add_attrib(new OzExtIdAttrib(extid));
}

OzDynObj* OzExtIdAttrib::clone() const
{
  return new OzExtIdAttrib(*this);
}

OzString const OzGMKIdAttrib::class_name_("OzGMKIdAttrib");

OzGMKIdAttrib::OzGMKIdAttrib(std::uint64_t extid, OzGMKCompareState state)
  : extid_(extid)
  , compare_state_(state)
{
  OZ_ASSERT(extid != illegal_extid_);
}

OzGMKIdAttrib::~OzGMKIdAttrib() = default;

OzString const* OzGMKIdAttrib::type() const
{
  return &class_name_;
}

OzString const& OzGMKIdAttrib::class_name() const
{
  return class_name_;
}

bool OzGMKIdAttrib::isA(OzString const* t) const
{
  return t == &class_name_ || OzAttrib::isA(t);
}

bool OzGMKIdAttrib::sharable() const
{
  return false;
}

bool OzGMKIdAttrib::propagate() const
{
  return false;
}

bool OzGMKIdAttrib::invariant(OzEvent const&) const
{
  return true;
}

void OzGMKIdAttrib::set_extid(std::uint64_t extid)
{
  OZ_ASSERT(extid != illegal_extid_);
  extid_ = extid;
}

void OzGMKIdAttrib::set_compare_state(OzGMKCompareState state)
{
  compare_state_ = state;
}

OzGMKIdAttrib::OzGMKCompareState OzGMKIdAttrib::get_compare_state(OzObject const& object)
{
  OzGMKIdAttrib const* const attrib = find_attrib<OzGMKIdAttrib>(object);
  return attrib != nullptr ? attrib->compare_state_ : OzGMKCompareUnknown;
}

std::uint64_t OzGMKIdAttrib::get_extid_from_object(OzObject const& object, OzGMKCompareState* state)
{
  OzGMKIdAttrib const* const attrib = find_attrib<OzGMKIdAttrib>(object);
  if (state != nullptr)
    *state = attrib != nullptr ? attrib->compare_state_ : OzGMKCompareUnknown;
  return attrib != nullptr ? attrib->extid_ : illegal_extid_;
}

void OzGMKIdAttrib::set_extid_to_object(OzObject& object, std::uint64_t extid, OzGMKCompareState* state)
{
  OzGMKIdAttrib* const attrib = find_attrib<OzGMKIdAttrib>(object);
  if (attrib == nullptr)
  {
    OZ_ASSERT(extid != illegal_extid_);
    object.add_attrib(new OzGMKIdAttrib(extid, state != nullptr ? *state : OzGMKCompareDefault));
    return;
  }

  if (extid != illegal_extid_)
    attrib->extid_ = extid;
  if (state != nullptr)
    attrib->compare_state_ = *state;
}

OzDynObj* OzGMKIdAttrib::clone() const
{
  return new OzGMKIdAttrib(*this);
}

OzString const OzDoubleAttrib::class_name_("OzDoubleAttrib");

OzDoubleAttrib::OzDoubleAttrib(Usage usage, double value)
  : usage_(usage)
  , value_(value)
{
}

OzDoubleAttrib::~OzDoubleAttrib() = default;

OzString const* OzDoubleAttrib::type() const
{
  return &class_name_;
}

OzString const& OzDoubleAttrib::class_name() const
{
  return class_name_;
}

bool OzDoubleAttrib::isA(OzString const* t) const
{
  return t == &class_name_ || OzAttrib::isA(t);
}

bool OzDoubleAttrib::sharable() const
{
  return false;
}

bool OzDoubleAttrib::propagate() const
{
  return false;
}

bool OzDoubleAttrib::invariant(OzEvent const&) const
{
  return true;
}

void OzDoubleAttrib::get(Usage& usage, double& value) const
{
  usage = usage_;
  value = value_;
}

bool OzDoubleAttrib::get_value_from_object(OzObject const& object, Usage usage, double& value)
{
  value = 0.0;
  OzArray<OzAttrib*> attribs;
  object.find_all_attribs_by_type(type_id(), attribs);
  for (OzAttrib const* const attrib : attribs)
  {
    OzDoubleAttrib const* const candidate = static_cast<OzDoubleAttrib const*>(attrib);
    if (candidate->usage_ == usage)
    {
      value = candidate->value_;
      return true;
    }
  }
  return false;
}

void OzDoubleAttrib::set_value_to_object(OzObject& object, Usage usage, double value)
{
  object.add_attrib(new OzDoubleAttrib(usage, value));
}

OzDynObj* OzDoubleAttrib::clone() const
{
  return new OzDoubleAttrib(*this);
}
