#include "ozobjectdependency.h"

#include "graph_probe.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace
{
TEST(OzObjectDependencyRole, IsOfItsOwnTypeAndOfTheRoot)
{
  CountingRole const role;
  OzObjectDependencyRole const& plain = role;

  EXPECT_STREQ(OzObjectDependencyRole::class_name_.as_const_c_string(), "OzObjectDependencyRole");
  EXPECT_EQ(OzObjectDependencyRole::type_id(), &OzObjectDependencyRole::class_name_);
  EXPECT_EQ(plain.type(), &OzObjectDependencyRole::class_name_);
  EXPECT_EQ(&plain.class_name(), &OzObjectDependencyRole::class_name_);
  EXPECT_TRUE(plain.isA(&OzObjectDependencyRole::class_name_));
  EXPECT_TRUE(plain.isA(&OzDynObj::class_name_));
  EXPECT_FALSE(plain.isA(&OzArtificialObjectDependency::class_name_));
  EXPECT_FALSE(plain.isA(nullptr));
}

TEST(OzObjectDependencyRole, DrawsItsIdentityFromTheCounterOfAllObjects)
{
  Thing const before;
  CountingRole const role;
  Thing const after;

  EXPECT_EQ(role.identity(), before.identity() + 1);
  EXPECT_EQ(after.identity(), before.identity() + 2);
}

TEST(OzObjectDependencyRole, KeepsItsIdentityWhenCopied)
{
  CountingRole const role;
  CountingRole const copy(role);
  std::unique_ptr<OzDynObj> const clone(role.clone());

  EXPECT_EQ(copy.identity(), role.identity());
  EXPECT_EQ(clone->identity(), role.identity());
}

TEST(OzObjectDependencyRole, TakesOverTheIdentityWhenAssigned)
{
  CountingRole const source;
  CountingRole target;
  OzObjectDependencyRole& as_role = target;
  OzArtificialObjectDependency const artificial_source;
  OzArtificialObjectDependency artificial;

  EXPECT_EQ(&(as_role = source), &as_role);
  EXPECT_EQ(&(artificial = artificial_source), &artificial);

  EXPECT_EQ(target.identity(), source.identity());
  EXPECT_EQ(artificial.identity(), artificial_source.identity());
}

TEST(OzObjectDependencyRole, IsCastFromObjectsThatAreRoles)
{
  Thing thing;
  OzArtificialObjectDependency role;
  OzDynObj* const object = &role;
  OzDynObj const* const const_object = &role;

  EXPECT_EQ(OzObjectDependencyRole::cast(object), &role);
  EXPECT_EQ(OzObjectDependencyRole::cast(const_object), &role);
  EXPECT_EQ(OzObjectDependencyRole::cast(&thing), nullptr);
  EXPECT_EQ(OzObjectDependencyRole::cast(nullptr), nullptr);
}

TEST(OzArtificialObjectDependency, IsOfItsOwnTypeAndARoleAndOfTheRoot)
{
  OzArtificialObjectDependency const role;

  EXPECT_STREQ(role.classname(), "OzArtificialObjectDependency");
  EXPECT_EQ(OzArtificialObjectDependency::type_id(), &OzArtificialObjectDependency::class_name_);
  EXPECT_EQ(role.type(), &OzArtificialObjectDependency::class_name_);
  EXPECT_EQ(&role.class_name(), &OzArtificialObjectDependency::class_name_);
  EXPECT_TRUE(role.isA(&OzArtificialObjectDependency::class_name_));
  EXPECT_TRUE(role.isA(&OzObjectDependencyRole::class_name_));
  EXPECT_TRUE(role.isA(&OzDynObj::class_name_));
  EXPECT_FALSE(role.isA(nullptr));
}

TEST(OzArtificialObjectDependency, DrawsAnIdentityOfItsOwnWhenCopiedOrCloned)
{
  OzArtificialObjectDependency const role;
  OzArtificialObjectDependency const copy(role);
  std::unique_ptr<OzDynObj> const clone(role.clone());

  EXPECT_EQ(copy.identity(), role.identity() + 1);
  EXPECT_EQ(clone->identity(), role.identity() + 2);
  EXPECT_EQ(clone->type(), &OzArtificialObjectDependency::class_name_);
  EXPECT_TRUE(clone->isA(&OzObjectDependencyRole::class_name_));
}

TEST(OzArtificialObjectDependency, IsCastFromObjectsOfItsOwnTypeOnly)
{
  CountingRole other;
  OzArtificialObjectDependency role;
  OzDynObj* const object = &role;
  OzDynObj const* const const_object = &role;

  EXPECT_EQ(OzArtificialObjectDependency::cast(object), &role);
  EXPECT_EQ(OzArtificialObjectDependency::cast(const_object), &role);
  EXPECT_EQ(OzArtificialObjectDependency::cast(&other), nullptr);
  EXPECT_EQ(OzArtificialObjectDependency::cast(nullptr), nullptr);
}

TEST(OzObjectDependency, TypesHaveFixedNumbers)
{
  EXPECT_EQ(OzObjectDependency::UNSPECIFIED, 0);
  EXPECT_EQ(OzObjectDependency::TRANSFER, 1);
  EXPECT_EQ(OzObjectDependency::CREATION, 2);
  EXPECT_EQ(OzObjectDependency::DELETION, 3);
  EXPECT_EQ(OzObjectDependency::MODIFICATION, 4);
  EXPECT_EQ(OzObjectDependency::SPLIT, 5);
  EXPECT_EQ(OzObjectDependency::ABSORPTION, 6);
  EXPECT_EQ(OzObjectDependency::CONVERSION, 7);
  EXPECT_EQ(OzObjectDependency::CONTAINMENT, 8);
  EXPECT_EQ(sizeof(OzObjectDependency::Type), sizeof(int));
  EXPECT_EQ(OzObjectDependency::NODE_FILTER_SELF, 0);
  EXPECT_EQ(OzObjectDependency::NODE_FILTER_SOURCES, 1);
  EXPECT_EQ(OzObjectDependency::NODE_FILTER_TARGETS, 2);
  EXPECT_EQ(OzObjectDependency::NODE_FILTER_SOURCES_AND_TARGETS, 3);
  EXPECT_EQ(sizeof(OzObjectDependency::DebugNodeFilterType), sizeof(int));
}

OzArray<OzDynObj const*> array_of(std::initializer_list<OzDynObj const*> objects)
{
  OzArray<OzDynObj const*> array;
  for (OzDynObj const* object : objects)
    array.append(object);
  return array;
}

TEST(OzDynObjArrayIterator, WalksTheArrayThatItOwns)
{
  Thing const a, b;
  std::unique_ptr<OzIterator<OzDynObj const*>> const objects =
      std::make_unique<OzDynObjArrayIterator>(array_of({&a, &b}));

  EXPECT_FALSE(objects->done());
  EXPECT_EQ(objects->current(), &a);
  objects->next();
  EXPECT_EQ(objects->current(), &b);
  EXPECT_EQ(objects->first(), &a);
  EXPECT_EQ(objects->current(), &b);
  objects->next();
  EXPECT_TRUE(objects->done());
  objects->reset();
  EXPECT_FALSE(objects->done());
  EXPECT_EQ(objects->current(), &a);
}

TEST(OzDynObjArrayIterator, IsDoneAtOnceOverNoObjects)
{
  ReportRecorder const recorder;
  OzDynObjArrayIterator objects(array_of({}));

  EXPECT_TRUE(objects.done());
  objects.reset();
  EXPECT_TRUE(objects.done());

  EXPECT_EQ(recorder.units(), reports(0, ""));
}
} // namespace
