#include "ozresult.h"

#include "report_recorder.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace
{
// A package as clients write them. It knows the numbers 1 and 2, and counts how often it is asked.
OzString const package_name("Milling");
OzString const* const package = &package_name;
int n_translations;
OzString const* const* last_package;

char const* translate(OzString const* const& of, int number)
{
  ++n_translations;
  last_package = &of;
  switch (number)
  {
  case 1:
    return "Tool is blunt";
  case 2:
    return "Chip is jammed";
  default:
    return nullptr;
  }
}

char const* translate_otherwise(OzString const* const&, int)
{
  return "Another text";
}

OzResult* under_translation;
OzString const* text_within;

char const* ask_within(OzString const* const&, int)
{
  if (++n_translations == 1)
    text_within = &under_translation->message();
  return "Coolant is low";
}

char const* set_within(OzString const* const&, int)
{
  under_translation->set_message("set within");
  text_within = &under_translation->message();
  return "Coolant is low";
}

char const* set_and_return_within(OzString const* const&, int)
{
  under_translation->set_message("set within");
  text_within = &under_translation->message();
  return text_within->as_const_c_string() + 4;
}

class OzResultTest : public testing::Test
{
protected:
  OzResultTest()
  {
    n_translations = 0;
    last_package = nullptr;
    text_within = nullptr;
  }

  static OzResult make_result(int number)
  {
    OzResult result;
    result.set_error_condition(OzResult::FAILED, number, &package, &translate);
    return result;
  }

  static int number(OzResult const& result)
  {
    OzResult::CodeID code;
    int number;
    OzString const* const* of;
    result.get_error_condition(code, number, of);
    return number;
  }

  static OzString const* const* package_of(OzResult const& result)
  {
    OzResult::CodeID code;
    int number;
    OzString const* const* of;
    result.get_error_condition(code, number, of);
    return of;
  }
};

TEST_F(OzResultTest, SeveritiesHaveFixedValues)
{
  static_assert(sizeof(OzResult::CodeID) == sizeof(int));
  EXPECT_EQ(OzResult::OK, 0);
  EXPECT_EQ(OzResult::WARNING, 1);
  EXPECT_EQ(OzResult::FAILED, 2);
}

TEST_F(OzResultTest, IsOneVirtualDestructorAndFiveFields)
{
  static_assert(std::has_virtual_destructor_v<OzResult>);
  // The table's pointer, the severity in a word of its own, text, number likewise, package, function.
  static_assert(sizeof(OzResult) == 6 * sizeof(void*));
  struct Derived : OzResult
  {
    virtual void first_of_its_own() {}
  };

  EXPECT_EQ(vtable_slot(&Derived::first_of_its_own), 2); // the destructor has two entries
}

TEST_F(OzResultTest, ANewOneIsOkWithoutTextAndWithoutCondition)
{
  OzResult const result;
  ReportRecorder const recorder;

  EXPECT_EQ(result.code(), OzResult::OK);
  EXPECT_TRUE(result.message() == "");
  EXPECT_EQ(number(result), -1);
  EXPECT_EQ(package_of(result), nullptr);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST_F(OzResultTest, EachSeverityAnswersItsOwnQueries)
{
  struct
  {
    OzResult::CodeID code;
    bool ok, warning, failed;
  } const cases[] = {
      {OzResult::OK, true, false, false},
      {OzResult::WARNING, false, true, false},
      {OzResult::FAILED, false, false, true},
  };
  for (auto const& c : cases)
  {
    OzResult const result(c.code, "text");

    EXPECT_EQ(result.code(), c.code);
    EXPECT_EQ(result.ok(), c.ok) << c.code;
    EXPECT_EQ(result.normal(), c.ok) << c.code;
    EXPECT_EQ(result.warning(), c.warning) << c.code;
    EXPECT_EQ(result.failed(), c.failed) << c.code;
  }
}

TEST_F(OzResultTest, MadeOfATextKeepsACopyOfItAndNoCondition)
{
  OzString text("The slot is narrow");
  OzResult const result(OzResult::WARNING, text);
  text = "changed";

  EXPECT_TRUE(result.warning());
  EXPECT_TRUE(result.message() == "The slot is narrow");
  EXPECT_EQ(number(result), -1);
  EXPECT_EQ(package_of(result), nullptr);
}

TEST_F(OzResultTest, SetCodeTouchesNothingElse)
{
  OzResult result = make_result(1);
  result.set_message("mine");
  result.set_code(OzResult::WARNING);

  EXPECT_EQ(result.code(), OzResult::WARNING);
  EXPECT_TRUE(result.message() == "mine");
  EXPECT_EQ(number(result), 1);
  EXPECT_EQ(package_of(result), &package);

  OzResult unread = make_result(2);
  unread.set_code(OzResult::OK);

  EXPECT_TRUE(unread.message() == "Chip is jammed");
}

TEST_F(OzResultTest, HandsOutSeverityNumberAndPackageVariable)
{
  OzResult const result = make_result(2);
  OzResult::CodeID code = OzResult::OK;
  int number = 0;
  OzString const* const* of = nullptr;

  result.get_error_condition(code, number, of);

  EXPECT_EQ(code, OzResult::FAILED);
  EXPECT_EQ(number, 2);
  EXPECT_EQ(of, &package);
}

TEST_F(OzResultTest, TranslatesWhenTheMessageIsAskedForAndOnlyOnce)
{
  OzResult const result = make_result(1);
  EXPECT_EQ(n_translations, 0);

  OzString const* const first = &result.message();

  EXPECT_TRUE(*first == "Tool is blunt");
  EXPECT_EQ(&result.message(), first);
  EXPECT_EQ(n_translations, 1);
  EXPECT_EQ(last_package, &package);
}

TEST_F(OzResultTest, WithoutPackageOrFunctionTheMessageIsEmptyAndNotKept)
{
  OzResult result;
  ReportRecorder const recorder;

  result.set_error_condition(OzResult::FAILED, 1, nullptr, &translate);
  OzString const* const empty = &result.message();
  EXPECT_TRUE(*empty == "");
  result.set_error_condition(OzResult::FAILED, 1, &package, nullptr);
  EXPECT_TRUE(result.message() == "");

  // One text for all of them; nothing is stored.
  EXPECT_EQ(&result.message(), empty);
  EXPECT_EQ(&OzResult().message(), empty);
  EXPECT_EQ(n_translations, 0);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST_F(OzResultTest, ANumberWithoutTextIsReportedOnceAndAFixedTextKept)
{
  OzResult const result = make_result(3);
  ReportRecorder const recorder;

  OzString const* const text = &result.message();

  EXPECT_TRUE(*text == "... package does not remember the error number ...");
  EXPECT_EQ(&result.message(), text);
  EXPECT_EQ(n_translations, 1);
  EXPECT_EQ(recorder.units(), reports(1, "ozresult.cpp"));
  EXPECT_EQ(number(result), 3);
  EXPECT_EQ(package_of(result), &package);
  EXPECT_TRUE(result.failed());
}

TEST_F(OzResultTest, ANumberWithoutTextHasTheFixedTextWithoutAHandlerToo)
{
  OzResult const result = make_result(-7);

  EXPECT_TRUE(result.message() == "... package does not remember the error number ...");
  EXPECT_EQ(n_translations, 1);
}

TEST_F(OzResultTest, ATextMadeOrSetWithinATranslationIsTheOneThatIsKept)
{
  struct
  {
    char const* what;
    OzResult::TranslateFunction translate;
    char const* text;
  } const cases[] = {
      {"asked for", &ask_within, "Coolant is low"},
      {"set", &set_within, "Coolant is low"},
      {"set and handed on", &set_and_return_within, "within"},
  };
  for (auto const& c : cases)
  {
    OzResult result;
    under_translation = &result;
    text_within = nullptr;
    n_translations = 0;
    result.set_error_condition(OzResult::FAILED, 1, &package, c.translate);

    OzString const* const text = &result.message();

    EXPECT_STREQ(text->as_const_c_string(), c.text) << c.what;
    EXPECT_EQ(text, text_within) << c.what;
    EXPECT_EQ(&result.message(), text) << c.what;
  }
}

TEST_F(OzResultTest, AHandlerMayAskForTheMessageThatHasNoText)
{
  OzResult result = make_result(3);
  under_translation = &result;
  OzAssertionHandler const former = dkb_assertion_handler;
  dkb_assertion_handler = [](char const*, int)
  {
    if (n_translations == 1)
      text_within = &under_translation->message();
  };

  OzString const* const text = &result.message();

  dkb_assertion_handler = former;
  EXPECT_STREQ(text->as_const_c_string(), "... package does not remember the error number ...");
  EXPECT_EQ(text, text_within);
  EXPECT_EQ(n_translations, 2);
}

TEST_F(OzResultTest, AHandlerMayThrowAndTheTextIsMadeLater)
{
  OzResult const result = make_result(3);
  OzAssertionHandler const former = dkb_assertion_handler;
  dkb_assertion_handler = [](char const*, int) { throw 7; };

  EXPECT_THROW(result.message(), int);

  dkb_assertion_handler = former;
  EXPECT_EQ(number(result), 3);
  EXPECT_TRUE(result.message() == "... package does not remember the error number ...");
  EXPECT_EQ(n_translations, 2);
}

TEST_F(OzResultTest, ASetMessageHidesTheConditionUntilTheNextOne)
{
  OzResult result = make_result(1);

  result.set_message("mine");
  EXPECT_TRUE(result.message() == "mine");
  EXPECT_EQ(number(result), 1);
  EXPECT_EQ(n_translations, 0);

  result.set_error_condition(OzResult::WARNING, 2, &package, &translate);
  EXPECT_TRUE(result.message() == "Chip is jammed");
  EXPECT_TRUE(result.warning());
  EXPECT_EQ(number(result), 2);

  result.set_error_condition(OzResult::FAILED, 2, &package, &translate_otherwise);
  EXPECT_TRUE(result.message() == "Another text");
}

TEST_F(OzResultTest, SetMessageAssignsToTheTextThatIsThere)
{
  OzResult result = make_result(1);
  OzString const* const text = &result.message();

  result.set_message("mine");
  EXPECT_EQ(&result.message(), text);
  EXPECT_TRUE(*text == "mine");

  result.set_message(result.message());
  EXPECT_TRUE(result.message() == "mine");

  result.set_message("");
  EXPECT_TRUE(result.message() == "");
  EXPECT_EQ(n_translations, 1);
}

TEST_F(OzResultTest, ACopyHasATextOfItsOwn)
{
  OzResult result = make_result(1);
  result.set_message("mine");

  OzResult copy(result);
  EXPECT_NE(&copy.message(), &result.message());
  result.set_message("changed");

  EXPECT_TRUE(copy.message() == "mine");
  EXPECT_TRUE(copy.failed());
  EXPECT_EQ(number(copy), 1);
  EXPECT_EQ(package_of(copy), &package);
}

TEST_F(OzResultTest, ACopyWithoutTextTranslatesForItself)
{
  OzResult const result = make_result(2);

  OzResult const copy(result);
  EXPECT_EQ(n_translations, 0);

  EXPECT_TRUE(copy.message() == "Chip is jammed");
  EXPECT_TRUE(result.message() == "Chip is jammed");
  EXPECT_EQ(n_translations, 2);
}

TEST_F(OzResultTest, AssignmentTakesAllFieldsOverInEveryCombinationOfTexts)
{
  for (bool const source_has_text : {false, true})
    for (bool const target_has_text : {false, true})
    {
      n_translations = 0;
      OzResult source;
      source.set_error_condition(OzResult::WARNING, 2, &package, &translate);
      if (source_has_text)
        source.set_message("source");
      OzResult target(OzResult::FAILED, "target");
      if (!target_has_text)
        target.set_error_condition(OzResult::FAILED, 7, nullptr, nullptr);
      OzString const* const old_text = &target.message();

      OzResult& assigned = target = source;

      EXPECT_EQ(&assigned, &target);
      EXPECT_TRUE(target.warning());
      EXPECT_EQ(number(target), 2);
      EXPECT_EQ(package_of(target), &package);
      EXPECT_TRUE(target.message() == (source_has_text ? "source" : "Chip is jammed"));
      EXPECT_EQ(n_translations, source_has_text ? 0 : 1);
      EXPECT_NE(&target.message(), &source.message());
      if (source_has_text && target_has_text)
      {
        EXPECT_EQ(&target.message(), old_text);
      }
      source.set_message("changed");
      EXPECT_FALSE(target.message() == "changed");
    }
}

TEST_F(OzResultTest, AssignmentToItselfChangesNothing)
{
  OzResult result = make_result(1);
  OzString const* const text = &result.message();
  OzResult const& same = result;

  result = same;

  EXPECT_EQ(&result.message(), text);
  EXPECT_TRUE(result.message() == "Tool is blunt");
  EXPECT_EQ(number(result), 1);
  EXPECT_TRUE(result.failed());

  OzResult unread = make_result(2);
  OzResult const& same_unread = unread;
  unread = same_unread;

  EXPECT_TRUE(unread.message() == "Chip is jammed");
}

TEST_F(OzResultTest, AnEndedOneShowsNeitherPackageNorFunction)
{
  alignas(OzResult) unsigned char memory[sizeof(OzResult)];
  OzResult* const result = new (memory) OzResult(make_result(1));

  result->~OzResult();

  unsigned char const volatile* const raw = memory;
  for (std::size_t i = 4 * sizeof(void*); i < sizeof(OzResult); ++i)
    EXPECT_EQ(raw[i], 0) << i;
}
} // namespace
