#include "ozobjectdependency.h"

#include <utility>

OzString const OzObjectDependencyRole::class_name_("OzObjectDependencyRole");

OzObjectDependencyRole::OzObjectDependencyRole()
  : identity_(draw_identity())
{
}

OzObjectDependencyRole::OzObjectDependencyRole(OzObjectDependencyRole const&) = default;
OzObjectDependencyRole& OzObjectDependencyRole::operator=(OzObjectDependencyRole const&) = default;
OzObjectDependencyRole::~OzObjectDependencyRole() = default;

OzString const& OzObjectDependencyRole::class_name() const
{
  return class_name_;
}

OzString const* OzObjectDependencyRole::type() const
{
  return &class_name_;
}

bool OzObjectDependencyRole::isA(OzString const* t) const
{
  return t == &class_name_ || OzDynObj::isA(t);
}

int OzObjectDependencyRole::identity() const
{
  return identity_;
}

OzString const OzArtificialObjectDependency::class_name_("OzArtificialObjectDependency");

OzArtificialObjectDependency::OzArtificialObjectDependency() = default;

OzArtificialObjectDependency::OzArtificialObjectDependency(OzArtificialObjectDependency const&)
  : OzObjectDependencyRole()
{
}

OzArtificialObjectDependency&
OzArtificialObjectDependency::operator=(OzArtificialObjectDependency const&) = default;
OzArtificialObjectDependency::~OzArtificialObjectDependency() = default;

OzString const& OzArtificialObjectDependency::class_name() const
{
  return class_name_;
}

OzString const* OzArtificialObjectDependency::type() const
{
  return &class_name_;
}

OzDynObj* OzArtificialObjectDependency::clone() const
{
  return new OzArtificialObjectDependency;
}

bool OzArtificialObjectDependency::isA(OzString const* t) const
{
  return t == &class_name_ || OzObjectDependencyRole::isA(t);
}

OzObjectDependency::OzObjectDependency() = default;

OzObjectDependency::OzObjectDependency(OzObjectDependency const&) {}

OzObjectDependency& OzObjectDependency::operator=(OzObjectDependency const&)
{
  return *this;
}

OzObjectDependency::~OzObjectDependency() = default;

OzObjectDependencyFilter::~OzObjectDependencyFilter() = default;

OzObjectDependencyNodeFilter::~OzObjectDependencyNodeFilter() = default;

OzDynObjArrayIterator::OzDynObjArrayIterator(OzArray<OzDynObj const*>&& objects_to_own)
  : objects(std::move(objects_to_own))
  , cursor(&objects)
{
}

OzDynObjArrayIterator::~OzDynObjArrayIterator() = default;

OzDynObj const* const& OzDynObjArrayIterator::first() const
{
  return cursor.first();
}

void OzDynObjArrayIterator::next()
{
  cursor.next();
}

bool OzDynObjArrayIterator::done() const
{
  return cursor.done();
}

void OzDynObjArrayIterator::reset()
{
  cursor.reset();
}

OzDynObj const* const& OzDynObjArrayIterator::current() const
{
  return cursor.current();
}
