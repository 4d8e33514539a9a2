#include "ozfilejournal.h"
#include "oztimer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <string>

namespace
{
/// What the timer sees as clock(): tests say what it is.
std::clock_t clock_now = 0;

class TextJournal : public OzFileJournal
{
public:
  std::string text() { return buffer().as_const_c_string(); }
};
} // namespace

// The program's own definition stands before that of the C library for all that is loaded after it.
extern "C" __attribute__((visibility("default"))) std::clock_t clock() noexcept
{
  return clock_now;
}

TEST(OzTimer, DividesTheTicksSinceItsStartByAThousand)
{
  clock_now = 5000;
  OzTimer const timer;
  clock_now = 7500;

  EXPECT_EQ(timer.get_time(), 2.5);
}

TEST(OzTimer, StartsAnewOnReset)
{
  clock_now = 1000;
  OzTimer timer;
  clock_now = 4000;

  timer.reset_time();
  clock_now = 4250;

  EXPECT_EQ(timer.get_time(), 0.25);
}

TEST(OzTimer, WritesLabelAndTimeInTheJournalsFormat)
{
  clock_now = 0;
  OzTimer const timer;
  clock_now = 2500;
  TextJournal journal;
  journal.set_width(0);
  journal.set_precision(3);

  timer.print_time(journal, "sorting");

  EXPECT_EQ(journal.text(), "sorting : 2.500 seconds \n");
}

TEST(OzTimer, IsCopiedWithItsStart)
{
  clock_now = 1000;
  OzTimer const timer;
  clock_now = 9000;
  OzTimer copy;

  copy = timer;

  EXPECT_EQ(copy.get_time(), 8.0);
}
