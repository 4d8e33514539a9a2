#include "ozattrib.h"

#include "model_doubles.h"
#include "report_recorder.h"
#include "vtable_slot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using ::testing::IsEmpty;

namespace
{
/// Overrides only what it must.
class PlainAttrib : public OzAttrib
{
public:
  OzDynObj* clone() const override { return new PlainAttrib(*this); }
  bool propagate() const override { return false; }
  bool invariant(OzEvent const&) const override { return true; }
};
} // namespace

TEST(OzAttrib, IsOfItsOwnTypeAndOfTheRoot)
{
  PlainAttrib const attrib;

  EXPECT_STREQ(OzAttrib::class_name_.as_const_c_string(), "OzAttrib");
  EXPECT_EQ(OzAttrib::type_id(), &OzAttrib::class_name_);
  EXPECT_EQ(attrib.type(), OzAttrib::type_id());
  EXPECT_EQ(&attrib.class_name(), OzAttrib::type_id());
  EXPECT_STREQ(attrib.classname(), "OzAttrib");
  EXPECT_TRUE(attrib.isA(OzAttrib::type_id()));
  EXPECT_TRUE(attrib.isA(OzDynObj::type_id()));
  EXPECT_FALSE(attrib.isA(OzReactor::type_id()));
  EXPECT_FALSE(attrib.isA(OzObject::type_id()));
}

TEST(OzAttrib, IsSharableUnlessOverridden)
{
  PlainAttrib const attrib;

  EXPECT_TRUE(attrib.sharable());
}

TEST(OzAttrib, VirtualFunctionsStandInTheirOrder)
{
  EXPECT_EQ(vtable_slot(&OzAttrib::type), 2);
  EXPECT_EQ(vtable_slot(&OzAttrib::class_name), 3);
  EXPECT_EQ(vtable_slot(&OzAttrib::clone), 4);
  EXPECT_EQ(vtable_slot(&OzAttrib::isA), 5);
  EXPECT_EQ(vtable_slot(&OzAttrib::identity), 6);
  EXPECT_EQ(vtable_slot(&OzAttrib::sharable), 7);
  EXPECT_EQ(vtable_slot(&OzAttrib::propagate), 8);
  EXPECT_EQ(vtable_slot(&OzAttrib::invariant), 9);
  EXPECT_EQ(vtable_slot(&OzAttrib::add_ref), 10);
  EXPECT_EQ(vtable_slot(&OzAttrib::remove_ref), 11);
  EXPECT_EQ(vtable_slot(&OzAttrib::n_refs), 12);
}

TEST(OzAttrib, HasTheTypedBaseFirstThenTheCountedOne)
{
  PlainAttrib attrib;

  EXPECT_EQ(static_cast<void*>(static_cast<OzDynObj*>(&attrib)), static_cast<void*>(&attrib));
  EXPECT_NE(static_cast<void*>(static_cast<OzRCObj*>(&attrib)), static_cast<void*>(&attrib));
  EXPECT_EQ(sizeof(OzAttrib), 2 * sizeof(void*) + 2 * sizeof(int));
}

TEST(OzAttrib, CountsItsHoldersFromZeroWithoutAReport)
{
  Log log;
  TestAttrib const counted("x", log);
  ReportRecorder const recorder;

  EXPECT_EQ(counted.n_refs(), 0);
  counted.add_ref();
  counted.add_ref();
  EXPECT_EQ(counted.n_refs(), 2);
  counted.remove_ref();
  counted.remove_ref();
  EXPECT_EQ(counted.n_refs(), 0);

  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzAttrib, ReportsACountBelowZeroAndCountsOn)
{
  Log log;
  TestAttrib const counted("x", log);
  ReportRecorder recorder;

  counted.remove_ref();
  EXPECT_EQ(recorder.units(), reports(1, "ozattrib.cpp"));

  recorder.clear();
  EXPECT_EQ(counted.n_refs(), -1);
  EXPECT_EQ(recorder.units(), reports(1, "ozattrib.cpp"));

  recorder.clear();
  counted.add_ref();
  EXPECT_EQ(recorder.units(), reports(1, "ozattrib.cpp"));

  recorder.clear();
  EXPECT_EQ(counted.n_refs(), 0);
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzAttrib, CountsBelowZeroWithoutAHandlerToo)
{
  Log log;
  TestAttrib const counted("x", log);

  counted.remove_ref();

  EXPECT_EQ(counted.n_refs(), -1);
}

TEST(OzAttrib, NothingDeletesAnObjectThatIsHeldByBarePointersOnly)
{
  Log log;
  TestAttrib* const counted = new TestAttrib("x", log);

  counted->add_ref();
  counted->remove_ref();

  EXPECT_EQ(counted->n_refs(), 0);
  EXPECT_THAT(log, IsEmpty());
  delete counted;
}

TEST(OzAttrib, ACopyHasAnIdentityOfItsOwnAndNoHolder)
{
  Log log;
  TestAttrib const original("x", log);
  original.add_ref();

  TestAttrib const copy(original);
  TestAttrib const next(original);

  EXPECT_EQ(copy.identity(), original.identity() + 1);
  EXPECT_EQ(next.identity(), original.identity() + 2);
  EXPECT_EQ(copy.n_refs(), 0);
  EXPECT_EQ(original.n_refs(), 1);
  original.remove_ref();
}

TEST(OzAttrib, AssignmentKeepsIdentityAndCount)
{
  Log log;
  TestAttrib const source("x", log);
  TestAttrib target("y", log);
  target.add_ref();
  int const identity = target.identity();
  int const next = OzDynObj::IDENTITY_INDEX_;

  EXPECT_EQ(&(target = source), &target);

  EXPECT_EQ(target.identity(), identity);
  EXPECT_EQ(target.n_refs(), 1);
  EXPECT_EQ(OzDynObj::IDENTITY_INDEX_, next);
  target.remove_ref();
}

TEST(OzAttrib, EachDrawsTheNextIdentity)
{
  Log log;
  int const next = OzDynObj::IDENTITY_INDEX_;

  TestAttrib const first("x", log);
  TestAttrib const second("y", log);

  EXPECT_EQ(first.identity(), next);
  EXPECT_EQ(second.identity(), next + 1);
}
