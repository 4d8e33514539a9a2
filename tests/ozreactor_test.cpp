#include "ozreactor.h"

#include "model_doubles.h"
#include "report_recorder.h"
#include "vtable_slot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using ::testing::IsEmpty;

namespace
{
/// Overrides only what it must.
class PlainReactor : public OzReactor
{
public:
  OzDynObj* clone() const override { return new PlainReactor(*this); }
  bool propagate() const override { return false; }
  void react(OzEvent const&) override {}
};
} // namespace

TEST(OzReactor, IsOfItsOwnTypeAndOfTheRoot)
{
  PlainReactor const reactor;

  EXPECT_STREQ(OzReactor::class_name_.as_const_c_string(), "OzReactor");
  EXPECT_EQ(OzReactor::type_id(), &OzReactor::class_name_);
  EXPECT_EQ(reactor.type(), OzReactor::type_id());
  EXPECT_EQ(&reactor.class_name(), OzReactor::type_id());
  EXPECT_STREQ(reactor.classname(), "OzReactor");
  EXPECT_TRUE(reactor.isA(OzReactor::type_id()));
  EXPECT_TRUE(reactor.isA(OzDynObj::type_id()));
  EXPECT_FALSE(reactor.isA(OzAttrib::type_id()));
}

TEST(OzReactor, IsSharableUnlessOverridden)
{
  PlainReactor const reactor;

  EXPECT_TRUE(reactor.sharable());
}

TEST(OzReactor, VirtualFunctionsStandInTheirOrderInBothTables)
{
  EXPECT_EQ(vtable_slot(&OzReactor::add_ref), 2);
  EXPECT_EQ(vtable_slot(&OzReactor::remove_ref), 3);
  EXPECT_EQ(vtable_slot(&OzReactor::n_refs), 4);
  EXPECT_EQ(vtable_slot(&OzReactor::sharable), 5);
  EXPECT_EQ(vtable_slot(&OzReactor::propagate), 6);
  EXPECT_EQ(vtable_slot(&OzReactor::react), 7);
  // What it overrides of its second base comes behind its own.
  EXPECT_EQ(vtable_slot(static_cast<OzString const* (OzReactor::*)() const>(&OzReactor::type)), 8);
  EXPECT_EQ(vtable_slot(&OzReactor::class_name), 9);
  EXPECT_EQ(vtable_slot(&OzReactor::isA), 10);
  EXPECT_EQ(vtable_slot(&OzReactor::identity), 11);
}

TEST(OzReactor, HasTheCountedBaseFirstThenTheTypedOne)
{
  PlainReactor reactor;

  EXPECT_EQ(static_cast<void*>(static_cast<OzRCObj*>(&reactor)), static_cast<void*>(&reactor));
  EXPECT_NE(static_cast<void*>(static_cast<OzDynObj*>(&reactor)), static_cast<void*>(&reactor));
  EXPECT_EQ(sizeof(OzReactor), 2 * sizeof(void*) + 2 * sizeof(int));
}

TEST(OzReactor, IsDeletedThroughEitherBase)
{
  Log log;

  delete static_cast<OzRCObj*>(new TestReactor("as counted", log));
  delete static_cast<OzDynObj*>(new TestReactor("as typed", log));

  EXPECT_THAT(log, ::testing::ElementsAre("~as counted", "~as typed"));
}

TEST(OzReactor, CountsItsHoldersFromZeroWithoutAReport)
{
  Log log;
  TestReactor const counted("x", log);
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

TEST(OzReactor, ReportsACountBelowZeroAndCountsOn)
{
  Log log;
  TestReactor const counted("x", log);
  ReportRecorder recorder;

  counted.remove_ref();
  EXPECT_EQ(recorder.units(), reports(1, "ozreactor.cpp"));

  recorder.clear();
  EXPECT_EQ(counted.n_refs(), -1);
  EXPECT_EQ(recorder.units(), reports(1, "ozreactor.cpp"));

  recorder.clear();
  counted.add_ref();
  EXPECT_EQ(recorder.units(), reports(1, "ozreactor.cpp"));

  recorder.clear();
  EXPECT_EQ(counted.n_refs(), 0);
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzReactor, CountsBelowZeroWithoutAHandlerToo)
{
  Log log;
  TestReactor const counted("x", log);

  counted.remove_ref();

  EXPECT_EQ(counted.n_refs(), -1);
}

TEST(OzReactor, NothingDeletesAnObjectThatIsHeldByBarePointersOnly)
{
  Log log;
  TestReactor* const counted = new TestReactor("x", log);

  counted->add_ref();
  counted->remove_ref();

  EXPECT_EQ(counted->n_refs(), 0);
  EXPECT_THAT(log, IsEmpty());
  delete counted;
}

TEST(OzReactor, ACopyHasAnIdentityOfItsOwnAndNoHolder)
{
  Log log;
  TestReactor const original("x", log);
  original.add_ref();

  TestReactor const copy(original);
  TestReactor const next(original);

  EXPECT_EQ(copy.identity(), original.identity() + 1);
  EXPECT_EQ(next.identity(), original.identity() + 2);
  EXPECT_EQ(copy.n_refs(), 0);
  EXPECT_EQ(original.n_refs(), 1);
  original.remove_ref();
}

TEST(OzReactor, AssignmentKeepsIdentityAndCount)
{
  Log log;
  TestReactor const source("x", log);
  TestReactor target("y", log);
  target.add_ref();
  int const identity = target.identity();
  int const next = OzDynObj::IDENTITY_INDEX_;

  EXPECT_EQ(&(target = source), &target);

  EXPECT_EQ(target.identity(), identity);
  EXPECT_EQ(target.n_refs(), 1);
  EXPECT_EQ(OzDynObj::IDENTITY_INDEX_, next);
  target.remove_ref();
}

TEST(OzReactor, EachDrawsTheNextIdentity)
{
  Log log;
  int const next = OzDynObj::IDENTITY_INDEX_;

  TestReactor const first("x", log);
  TestReactor const second("y", log);

  EXPECT_EQ(first.identity(), next);
  EXPECT_EQ(second.identity(), next + 1);
}
