#include "ozevent.h"

#include "ozobject.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
class TestEvent : public OzEvent
{
public:
  OzDynObj* clone() const override { return new TestEvent(*this); }
};

template <class Event>
class OzObjectEvent : public ::testing::Test
{
};
using ObjectEvents = ::testing::Types<OzObjectModified, OzObjectDelete>;
TYPED_TEST_SUITE(OzObjectEvent, ObjectEvents, );
} // namespace

TEST(OzEvent, IsOfItsOwnTypeAndOfTheRoot)
{
  TestEvent const event;

  EXPECT_STREQ(OzEvent::class_name_.as_const_c_string(), "OzEvent");
  EXPECT_EQ(event.type(), OzEvent::type_id());
  EXPECT_EQ(&event.class_name(), OzEvent::type_id());
  EXPECT_TRUE(event.isA(OzEvent::type_id()));
  EXPECT_TRUE(event.isA(OzDynObj::type_id()));
  EXPECT_FALSE(event.isA(OzObjectModified::type_id()));
  EXPECT_FALSE(event.isA(OzObjectDelete::type_id()));
}

TEST(OzEvent, DrawsAnIdentityForItselfAndForEachCopy)
{
  int const next = OzDynObj::IDENTITY_INDEX_;

  TestEvent const event;
  TestEvent const copy(event);

  EXPECT_EQ(event.identity(), next);
  EXPECT_EQ(copy.identity(), next + 1);
}

TEST(OzEvent, AssignmentChangesNothing)
{
  TestEvent const source;
  TestEvent target;
  int const identity = target.identity();

  EXPECT_EQ(&(target = source), &target);

  EXPECT_EQ(target.identity(), identity);
}

TEST(OzEvent, EventsOfObjectsAreToldApartByType)
{
  OzObjectModified const modified(1);
  OzObjectDelete const deleted(1);

  EXPECT_STREQ(modified.classname(), "OzObjectModified");
  EXPECT_STREQ(deleted.classname(), "OzObjectDelete");
  EXPECT_TRUE(modified.isA(OzObjectModified::type_id()));
  EXPECT_FALSE(modified.isA(OzObjectDelete::type_id()));
  EXPECT_TRUE(deleted.isA(OzObjectDelete::type_id()));
  EXPECT_FALSE(deleted.isA(OzObjectModified::type_id()));
}

TYPED_TEST(OzObjectEvent, IsOfItsOwnTypeOfThatOfEventsAndOfTheRoot)
{
  TypeParam const event(5);

  EXPECT_EQ(TypeParam::type_id(), &TypeParam::class_name_);
  EXPECT_EQ(event.type(), TypeParam::type_id());
  EXPECT_EQ(&event.class_name(), TypeParam::type_id());
  EXPECT_TRUE(event.isA(OzEvent::type_id()));
  EXPECT_TRUE(event.isA(OzDynObj::type_id()));
  EXPECT_FALSE(event.isA(OzObject::type_id()));
}

TYPED_TEST(OzObjectEvent, NamesItsObjectAndHasAnIdentityOfItsOwn)
{
  int const next = OzDynObj::IDENTITY_INDEX_;

  TypeParam const event(-5);

  EXPECT_EQ(event.object_id(), -5);
  EXPECT_EQ(event.identity(), next);
}

TYPED_TEST(OzObjectEvent, ACopyNamesTheSameObjectAndHasAnIdentityOfItsOwn)
{
  int const next = OzDynObj::IDENTITY_INDEX_;
  TypeParam const event(5);

  TypeParam const copy(event);

  EXPECT_EQ(copy.object_id(), 5);
  EXPECT_EQ(copy.identity(), next + 1);
}

TYPED_TEST(OzObjectEvent, ACloneIsOfTheSameTypeAndNamesTheSameObject)
{
  TypeParam const event(5);

  std::unique_ptr<OzDynObj> const clone(event.clone());

  ASSERT_EQ(clone->type(), TypeParam::type_id());
  EXPECT_EQ(static_cast<TypeParam&>(*clone).object_id(), 5);
  EXPECT_NE(clone->identity(), event.identity());
}

TYPED_TEST(OzObjectEvent, AssignmentTakesOverNeitherObjectNorIdentity)
{
  TypeParam const source(5);
  TypeParam target(6);
  int const identity = target.identity();

  EXPECT_EQ(&(target = source), &target);

  EXPECT_EQ(target.object_id(), 6);
  EXPECT_EQ(target.identity(), identity);
}
