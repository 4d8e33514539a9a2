#include "ozreport.h"

#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
class TestReport : public OzReport
{
public:
  OzDynObj* clone() const override { return new TestReport(*this); }
};
} // namespace

TEST(OzReport, IsOfItsOwnTypeAndOfTheRoot)
{
  TestReport const report;

  EXPECT_STREQ(OzReport::class_name_.as_const_c_string(), "OzReport");
  EXPECT_EQ(report.type(), OzReport::type_id());
  EXPECT_EQ(&report.class_name(), OzReport::type_id());
  EXPECT_TRUE(report.isA(OzReport::type_id()));
  EXPECT_TRUE(report.isA(OzDynObj::type_id()));
  EXPECT_FALSE(report.isA(nullptr));
}

TEST(OzReport, DrawsAnIdentityForItselfAndForEachCopy)
{
  int const next = OzDynObj::IDENTITY_INDEX_;

  TestReport const report;
  TestReport const copy(report);
  std::unique_ptr<OzDynObj> const clone(report.clone());

  EXPECT_EQ(report.identity(), next);
  EXPECT_EQ(copy.identity(), next + 1);
  EXPECT_EQ(clone->identity(), next + 2);
}

TEST(OzReport, AssignmentKeepsTheIdentity)
{
  TestReport const source;
  TestReport target;
  int const identity = target.identity();

  EXPECT_EQ(&(target = source), &target);

  EXPECT_EQ(target.identity(), identity);
}

TEST(OzReport, HasOneFieldAndNoVirtualFunctionsOfItsOwn)
{
  EXPECT_EQ(sizeof(OzReport), 2 * sizeof(void*)); // the table, and the identity in what is left
  EXPECT_EQ(vtable_slot(&OzReport::type), 2);
  EXPECT_EQ(vtable_slot(&OzReport::identity), 6);
}
