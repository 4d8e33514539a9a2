#include "ozassert.h"

#include "report_recorder.h"

#include "ozstring.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <sys/mman.h>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
std::vector<std::pair<std::string, int>> calls;

void note_call(char const* file, int line)
{
  calls.emplace_back(file, line);
}

void remove_itself(char const* file, int line)
{
  note_call(file, line);
  dkb_assertion_handler = nullptr;
}

void throw_line(char const*, int line)
{
  throw line;
}

class Assertions : public testing::Test
{
protected:
  Assertions() { calls.clear(); }
  ~Assertions() override { dkb_assertion_handler = nullptr; }
};

TEST_F(Assertions, NoHandlerIsInstalledAfterLoading)
{
  EXPECT_EQ(dkb_assertion_handler, nullptr);
}

TEST_F(Assertions, WithoutAHandlerTheConditionIsNotEvaluated)
{
  int evaluated = 0;

  OZ_ASSERT(++evaluated == 0);

  EXPECT_EQ(evaluated, 0);
}

TEST_F(Assertions, WithAHandlerTheConditionIsEvaluatedOnce)
{
  dkb_assertion_handler = &note_call;
  int evaluated = 0;

  OZ_ASSERT(++evaluated == 1);
  EXPECT_EQ(evaluated, 1);
  EXPECT_TRUE(calls.empty());

  OZ_ASSERT(++evaluated == 1);
  EXPECT_EQ(evaluated, 2);
  EXPECT_EQ(calls.size(), 1u);
}

TEST_F(Assertions, AFalseConditionReportsThePathInTheTreeAndTheLineAndGoesOn)
{
  dkb_assertion_handler = &note_call;

  OZ_ASSERT(calls.size() == 100);
  int const line_before = __LINE__ - 1;
  bool const went_on = true;

  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].first, "tests/ozassert_test.cpp");
  EXPECT_EQ(calls[0].second, line_before);
  EXPECT_TRUE(went_on);
}

TEST_F(Assertions, TheCheckIsOneStatement)
{
  dkb_assertion_handler = &note_call;
  bool const taken = calls.empty();

  if (!taken)
    OZ_ASSERT(Oz_ASSERT_FALSE != 0);
  else
    calls.emplace_back("else of the outer if", 0);

  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].first, "else of the outer if");
}

TEST_F(Assertions, EachCheckReadsTheHandlerAfreshSoThatAHandlerMayRemoveItself)
{
  dkb_assertion_handler = &remove_itself;

  OZ_ASSERT(Oz_ASSERT_FALSE != 0);
  OZ_ASSERT(Oz_ASSERT_FALSE != 0);

  EXPECT_EQ(calls.size(), 1u);
  EXPECT_EQ(dkb_assertion_handler, nullptr);
}

TEST_F(Assertions, AConditionThatRemovesTheHandlerIsStillReported)
{
  dkb_assertion_handler = &note_call;

  OZ_ASSERT((dkb_assertion_handler = nullptr) != nullptr);

  EXPECT_EQ(calls.size(), 1u);
}

TEST_F(Assertions, AHandlerMayThrow)
{
  dkb_assertion_handler = &throw_line;
  OzString text("abc");

  EXPECT_THROW(text[4], int);

  EXPECT_EQ(text, "abc");
}

TEST_F(Assertions, WithoutAHandlerABadIndexIsNotReported)
{
  OzString text("abcd"); // in a buffer of eight

  EXPECT_EQ(text[5], '\0');
  EXPECT_TRUE(calls.empty());
}

TEST_F(Assertions, OzAssertCallsTheHandlerWithItsArguments)
{
  char file[] = "x";
  Oz_assert(file, 1);
  EXPECT_TRUE(calls.empty());
  dkb_assertion_handler = &note_call;

  Oz_assert(file, 12);

  EXPECT_EQ(calls, (std::vector<std::pair<std::string, int>>{{"x", 12}}));
}

TEST_F(Assertions, SettingAHandlerReturnsTheNewOne)
{
  OzAssertionHandler const first = &note_call;
  OzAssertionHandler const second = &throw_line;

  EXPECT_EQ(set_dkb_assertion_handler(first, true), first);
  EXPECT_EQ(dkb_assertion_handler, first);
  EXPECT_EQ(set_dkb_assertion_handler(second, true), second);
  EXPECT_EQ(dkb_assertion_handler, second);
}

TEST_F(Assertions, DisablingReturnsNullAndDoesNotReadTheHandler)
{
  void* const unreadable = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(unreadable, MAP_FAILED);
  dkb_assertion_handler = &note_call;

  EXPECT_EQ(set_dkb_assertion_handler(*static_cast<OzAssertionHandler const*>(unreadable), false), nullptr);

  EXPECT_EQ(dkb_assertion_handler, nullptr);
  munmap(unreadable, 4096);
}

TEST_F(Assertions, TheTypesOfTheHooksAreFixed)
{
  static_assert(std::is_same_v<OzAssertionHandler, void (*)(char const*, int)>);
  static_assert(std::is_same_v<decltype(dkb_assertion_handler), OzAssertionHandler>);
  static_assert(std::is_same_v<decltype(dkb_pure_virtual_called), void (*)(char const*, char const*)>);
  static_assert(std::is_same_v<decltype(Oz_ASSERT_FALSE), int>);
  static_assert(std::is_same_v<decltype(&Oz_assert), void (*)(char*, int)>);
  EXPECT_EQ(Oz_ASSERT_FALSE, 0);
}

TEST_F(Assertions, PathsOfReportsFromTheLibraryEndInTheNameOfTheUnit)
{
  OzArray<int> array;
  dkb_assertion_handler = &note_call;

  array.remove_last();

  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].first, "ProtectedInterfaces/ozarray_t.h");
}

TEST(PureVirtualHook, WritesOneLineAndAborts)
{
  testing::FLAGS_gtest_death_test_style = "threadsafe";

  EXPECT_EXIT(dkb_pure_virtual_called("OzShape", "area"), testing::KilledBySignal(SIGABRT),
              "^Pure virtual method called: OzShape::area\\.\n$");
}

std::vector<std::string> pure_calls;

TEST(PureVirtualHook, IsAVariableThatAClientMaySet)
{
  auto* const before = dkb_pure_virtual_called;
  ASSERT_NE(before, nullptr);
  pure_calls.clear();

  dkb_pure_virtual_called = [](char const* class_name, char const* method_name)
  { pure_calls.push_back(std::string(class_name) + "." + method_name); };
  dkb_pure_virtual_called("OzShape", "area");
  dkb_pure_virtual_called = before;

  EXPECT_EQ(pure_calls, std::vector<std::string>{"OzShape.area"});
}
} // namespace
