#include "result.h"

#include <ozerr.h>

#include <gtest/gtest.h>

using namespace contours;

TEST(Result, WithoutAConditionAllIsWell)
{
  Result const result;

  EXPECT_TRUE(result.ok());
  EXPECT_EQ(result.line(), 0u);
  EXPECT_EQ(exit_code(result), 0);
}

TEST(Result, EachConditionHasASeverityATextAndAnExitCode)
{
  struct
  {
    Result::Condition condition;
    OzResult::CodeID severity;
    char const* text;
    int exit_code;
  } const cases[] = {
      {Result::NOT_ALL_CLOSED, OzResult::WARNING, "not all contours are closed", 1},
      {Result::WRONG_USAGE, OzResult::FAILED, "wrong usage", 2},
      {Result::BAD_INPUT, OzResult::FAILED, "the drawing cannot be read", 3},
      {Result::NO_MEMORY, OzResult::FAILED, "there is not enough memory for this drawing", 3},
      {Result::BAD_OUTPUT, OzResult::FAILED, "a result cannot be written", 4},
      {Result::CANCELLED, OzResult::FAILED, "cancelled", 130},
      {Result::BUG, OzResult::FAILED, "this is a bug", 70},
  };
  for (auto const& c : cases)
  {
    Result const result(c.condition);
    EXPECT_EQ(result.code(), c.severity) << c.text;
    EXPECT_STREQ(result.message().as_const_c_string(), c.text);
    EXPECT_EQ(exit_code(result), c.exit_code) << c.text;
  }
}

TEST(Result, ATextOfItsOwnHidesThatOfTheCondition)
{
  Result const result(Result::BAD_INPUT, "no radius (group 40)", 5);
  Result const copy(result);

  EXPECT_STREQ(copy.message().as_const_c_string(), "no radius (group 40)");
  EXPECT_EQ(copy.line(), 5u);
  EXPECT_EQ(exit_code(copy), 3);
}

TEST(Result, FailuresOfOtherPackagesAreBugs)
{
  OzResult foreign;
  OzErr::make_result(OzResult::FAILED, OzErr::OZ_ERR_NO_SPACE, foreign);

  EXPECT_EQ(exit_code(foreign), 70);
  EXPECT_EQ(exit_code(OzResult(OzResult::FAILED, "of no package")), 70);
  EXPECT_EQ(exit_code(OzResult()), 0);
}
