#include "ozerr.h"

#include "oz_utils.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <type_traits>

namespace
{
OzString const other_name("OzErr"); // the same text, and yet another package
OzString const* const other_package = &other_name;

std::string text_of(int number)
{
  return OzErr::translate_error_number(OzErr::package_, number);
}

std::string text_of_other(int number)
{
  return OzErr::translate_error_number(other_package, number);
}

OzResult made_by(OzString const* const* package, int number)
{
  OzResult result;
  result.set_error_condition(OzResult::WARNING, number, package, &OzErr::translate_error_number);
  return result;
}

TEST(OzErr, HasATextForEachNumber)
{
  struct
  {
    OzErr::ErrorNumber number;
    int value;
    char const* text;
  } const cases[] = {
      {OzErr::OZ_ERR_UNKNOWN, -1, "Error condition unknown by this package"},
      {OzErr::OZ_ERR_NONE, 0, "No error condition detected"},
      {OzErr::OZ_ERR_NO_SPACE, 1, "Not enough space"},
      {OzErr::OZ_ERR_INVALID_ARGUMENT, 2, "Invalid argument"},
      {OzErr::OZ_ERR_UNINITIALIZED_OBJECT, 3, "Uninitialized object(s) found"},
      {OzErr::OZ_ERR_INVALID_OBJECT, 4, "Invalid object(s) found"},
      {OzErr::OZ_ERR_UNPROCESSED_OBJECT, 5, "Some objects could not be processed"},
      {OzErr::OZ_ERR_NULL_POINTER, 6, "NULL-pointer passed"},
      {OzErr::OZ_ERR_SERVICE_FAILED, 7, "A service from an other package failed"},
      {OzErr::OZ_ERR_INCOMPLETE_RESULT, 8, "Result model may be incomplete"},
      {OzErr::OZ_ERR_NOT_IMPLEMENTED, 9, "Service is not (yet) implemented"},
      {OzErr::OZ_ERR_CANCELED, 10, "Operation was canceled"},
      {OzErr::ErrorNumber(11), 11, ""},
      {OzErr::ErrorNumber(12), 12, ""},
      {OzErr::ErrorNumber(13), 13, ""},
      {OzErr::ErrorNumber(14), 14, ""},
      {OzErr::ErrorNumber(15), 15, ""},
      {OzErr::OZ_ERR_LIMIT, 16, ""},
  };
  ReportRecorder const recorder;
  for (auto const& c : cases)
  {
    OzResult result;
    OzErr::make_result(OzResult::FAILED, c.number, result);

    EXPECT_EQ(c.number, c.value);
    EXPECT_EQ(text_of(c.value), c.text);
    EXPECT_TRUE(result.failed()) << c.value;
    EXPECT_STREQ(result.message().as_const_c_string(), c.text);
    EXPECT_EQ(OzErr::error_number(result), c.number);
    EXPECT_EQ(oz_error_number(result), c.value);
  }
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzErr, IsKnownByTheAddressOfItsName)
{
  static_assert(std::is_same_v<decltype(OzErr::package_), OzString const* const>);

  EXPECT_TRUE(OzErr::class_name_ == "OzErr");
  EXPECT_EQ(OzErr::package_, &OzErr::class_name_);
}

TEST(OzErr, MakeResultTakesItsOwnPackageAndDropsATextThatWasThere)
{
  OzResult result(OzResult::OK, "so far");
  OzErr::make_result(OzResult::WARNING, OzErr::OZ_ERR_CANCELED, result);
  OzResult::CodeID code = OzResult::OK;
  int number = 0;
  OzString const* const* package = nullptr;
  result.get_error_condition(code, number, package);

  EXPECT_EQ(code, OzResult::WARNING);
  EXPECT_EQ(number, 10);
  EXPECT_EQ(package, &OzErr::package_);
  EXPECT_TRUE(result.message() == "Operation was canceled");
}

TEST(OzErr, ASetMessageLeavesTheNumberAndGoesWithTheNextCondition)
{
  OzResult result;
  OzErr::make_result(OzResult::FAILED, OzErr::OZ_ERR_NO_SPACE, result);
  result.set_message("mine");

  EXPECT_TRUE(result.message() == "mine");
  EXPECT_EQ(OzErr::error_number(result), OzErr::OZ_ERR_NO_SPACE);

  OzErr::make_result(OzResult::FAILED, OzErr::OZ_ERR_NO_SPACE, result);
  EXPECT_TRUE(result.message() == "Not enough space");
}

TEST(OzErr, NumbersOutsideTheTableAreReportedAndUnknown)
{
  for (int const number : {-2, 17, INT_MIN, INT_MAX})
  {
    OzResult const own = made_by(&OzErr::package_, number);
    OzResult const other = made_by(&other_package, number);
    ReportRecorder recorder;

    EXPECT_EQ(text_of(number), "Error condition unknown by this package");
    EXPECT_EQ(recorder.units(), reports(1, "ozerr.cpp")) << number;
    EXPECT_EQ(text_of_other(number), "Error condition unknown by this package");
    EXPECT_EQ(recorder.units(), reports(2, "ozerr.cpp")) << number;
    EXPECT_EQ(OzErr::error_number(own), -1);
    EXPECT_EQ(recorder.units(), reports(3, "ozerr.cpp")) << number;
    EXPECT_EQ(OzErr::error_number(other), -1);
    EXPECT_EQ(recorder.units(), reports(4, "ozerr.cpp")) << number;
    EXPECT_TRUE(own.message() == "Error condition unknown by this package");
    EXPECT_EQ(recorder.units(), reports(5, "ozerr.cpp")) << number;
    EXPECT_EQ(oz_error_number(own), number);
    EXPECT_EQ(recorder.units(), reports(5, "ozerr.cpp")) << number;
  }
}

TEST(OzErr, TheLimitIsReportedAndUnknownForAnotherPackage)
{
  OzResult const result = made_by(&other_package, 16);
  ReportRecorder recorder;

  EXPECT_EQ(text_of_other(16), "Error condition unknown by this package");
  EXPECT_EQ(recorder.units(), reports(1, "ozerr.cpp"));
  EXPECT_EQ(OzErr::error_number(result), -1);
  EXPECT_EQ(recorder.units(), reports(2, "ozerr.cpp"));
  EXPECT_EQ(oz_error_number(result), 16);

  recorder.clear();
  OzString const* const no_package = nullptr;
  EXPECT_STREQ(OzErr::translate_error_number(no_package, 16), "Error condition unknown by this package");
  EXPECT_EQ(recorder.units(), reports(1, "ozerr.cpp"));
}

TEST(OzErr, BelowTheLimitTheNumbersServeEveryPackage)
{
  OzString const* const no_package = nullptr;
  ReportRecorder const recorder;

  EXPECT_EQ(text_of_other(15), "");
  EXPECT_EQ(text_of_other(-1), "Error condition unknown by this package");
  EXPECT_EQ(text_of_other(6), "NULL-pointer passed");
  EXPECT_STREQ(OzErr::translate_error_number(no_package, 1), "Not enough space");
  EXPECT_EQ(OzErr::error_number(made_by(&other_package, 15)), 15);
  EXPECT_EQ(OzErr::error_number(made_by(&other_package, 0)), 0);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzErr, WithoutAPackageTheNumberIsUnknownAndNotReported)
{
  OzResult const stored = made_by(nullptr, 12345);
  ReportRecorder const recorder;

  EXPECT_EQ(OzErr::error_number(OzResult()), -1);
  EXPECT_EQ(oz_error_number(OzResult()), -1);
  EXPECT_EQ(OzErr::error_number(made_by(nullptr, 5)), -1);
  EXPECT_EQ(OzErr::error_number(stored), -1);
  EXPECT_EQ(oz_error_number(stored), 12345);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzErr, WithoutAHandlerUnknownNumbersAreUnknownToo)
{
  EXPECT_EQ(text_of(17), "Error condition unknown by this package");
  EXPECT_EQ(text_of_other(16), "Error condition unknown by this package");
  EXPECT_EQ(OzErr::error_number(made_by(&OzErr::package_, -2)), -1);
}

// Results may be made before main begins.
TEST(OzErr, AHandlerMayThrow)
{
  OzResult const result = made_by(&other_package, 16);
  OzAssertionHandler const former = dkb_assertion_handler;
  dkb_assertion_handler = [](char const*, int) { throw 7; };

  EXPECT_THROW(text_of(17), int);
  EXPECT_THROW(OzErr::error_number(result), int);
  EXPECT_THROW(result.message(), int);

  dkb_assertion_handler = former;
  EXPECT_TRUE(result.message() == "Error condition unknown by this package");
}

OzResult const early = []
{
  OzResult result;
  OzErr::make_result(OzResult::FAILED, OzErr::OZ_ERR_NULL_POINTER, result);
  return result;
}();

TEST(OzErr, ServesStaticObjects)
{
  EXPECT_TRUE(early.message() == "NULL-pointer passed");
  EXPECT_EQ(OzErr::error_number(early), OzErr::OZ_ERR_NULL_POINTER);
}
} // namespace
