#include "ozdebug.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <dlfcn.h>

namespace
{
std::uint64_t bits_of(double value)
{
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

TEST(OzDebug, LevelsHaveTheirNumbers)
{
  EXPECT_EQ(static_cast<int>(OZ_DEBUG_OFF), 0);
  EXPECT_EQ(static_cast<int>(OZ_DEBUG_SUMMARY), 1);
  EXPECT_EQ(static_cast<int>(OZ_DEBUG_CONTENTS), 2);
  EXPECT_EQ(static_cast<int>(OZ_DEBUG_DETAIL), 3);
}

TEST(OzDebug, DeadNumbersAreTheSameAtEachCall)
{
  EXPECT_EQ(Oz_BogusInt(), 42424242);
  EXPECT_EQ(Oz_BogusInt(), 42424242);
  EXPECT_EQ(bits_of(Oz_BogusDouble()), 0x4223C15D2084D936u);
}

TEST(OzDebug, DumpsIndentByThree)
{
  EXPECT_EQ(Oz_DebugIndentStep(), 3);
}

TEST(OzDebug, ZeroLengthIsExportedUnderItsPlainName)
{
  using Function = double (*)();
  Function const found = reinterpret_cast<Function>(dlsym(RTLD_DEFAULT, "oztfp0_"));

  ASSERT_NE(found, nullptr);
  EXPECT_EQ(bits_of(found()), 0x3BC79CA10C924223u);
  EXPECT_EQ(oztfp0_(), 1e-20);
}
} // namespace
