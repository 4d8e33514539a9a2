#include "ozprogress.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

namespace
{
using Percentages = std::vector<unsigned>;

/// A display that keeps what it was shown.
class Display : public OzProgressHandler
{
public:
  Percentages shown;
  bool cancel = false;
  mutable int questions = 0;

  using OzProgressHandler::cancelled_;
  using OzProgressHandler::current_;
  using OzProgressHandler::last_reported_;
  using OzProgressHandler::step_;
  using OzProgressHandler::total_;

protected:
  void increase_progress(unsigned percentage) override { shown.push_back(percentage); }
  bool check_if_cancelled() const override
  {
    ++questions;
    return cancel;
  }
};

Percentages from_to(unsigned first, unsigned last)
{
  Percentages all;
  for (unsigned percentage = first; percentage <= last; ++percentage)
    all.push_back(percentage);
  return all;
}

std::pair<unsigned, unsigned> range_of(OzProgressHandler const& handler)
{
  unsigned start = 0;
  unsigned end = 0;
  handler.get_range(start, end);
  return {start, end};
}
} // namespace

TEST(OzProgressHandler, StartsWithTheWholeRangeAndNothingShown)
{
  Display const display;

  EXPECT_EQ(display.step_, 100.0);
  EXPECT_EQ(range_of(display), std::make_pair(0u, 100u));
  EXPECT_EQ(display.total_, 0u);
  EXPECT_EQ(display.current_, 0u);
  EXPECT_EQ(display.last_reported_, 0u);
  EXPECT_FALSE(display.cancelled_);
  EXPECT_TRUE(display.get_message().null());
  EXPECT_EQ(display.current_progress_percentage(), 0u);
}

TEST(OzProgressHandler, ShowsEachWholePercentageOnceAndTheEndOnlyWhenFinished)
{
  Display display;

  display.initialize(99);
  for (int i = 0; i < 99; ++i)
    display.update_progress(1);

  EXPECT_EQ(display.step_, 1.0);
  EXPECT_EQ(display.shown, from_to(0, 99));
  display.finish();
  EXPECT_EQ(display.shown, from_to(0, 100));
  EXPECT_EQ(display.last_reported_, 100u);
}

TEST(OzProgressHandler, PassesOverPercentagesThatManyEventsSkip)
{
  Display display;

  display.initialize(3);
  display.update_progress(1);
  display.update_progress(2);
  display.finish();

  EXPECT_EQ(display.shown, (Percentages{0, 33, 99, 100}));
}

TEST(OzProgressHandler, CountsNoFurtherThanTheTotal)
{
  Display display;

  display.initialize(2);
  display.update_progress(10);

  EXPECT_EQ(display.current_, 2u);
  EXPECT_EQ(display.current_progress_percentage(), 99u);
}

TEST(OzProgressHandler, AddsEventsAs32BitNumbersThatWrap)
{
  Display display;

  display.initialize(10);
  display.update_progress(5);
  display.update_progress(std::numeric_limits<unsigned>::max());

  EXPECT_EQ(display.current_, 4u);
}

TEST(OzProgressHandler, TakesNoEventAsOneWhenItDividesTheRange)
{
  Display display;

  display.initialize(0);
  display.update_progress(1);

  EXPECT_EQ(display.step_, 99.0);
  EXPECT_EQ(display.current_, 0u);
  EXPECT_EQ(display.shown, Percentages{0});
}

TEST(OzProgressHandler, DividesNarrowRangesAsStated)
{
  struct
  {
    char const* what;
    unsigned start, end, events;
    double step;
  } const cases[] = {
      {"one wide: a fraction that stays below it", 5, 6, 3, 0.25},
      {"one wide and no event", 5, 6, 0, 0.5},
      {"no width", 7, 7, 4, 0.0},
      {"two wide", 10, 12, 4, 0.25},
      {"the wrong way round", 50, 20, 3, 0.25},
  };
  for (auto const& c : cases)
  {
    Display display;
    display.set_range(c.start, c.end);

    display.initialize(c.events);

    EXPECT_EQ(display.step_, c.step) << c.what;
    EXPECT_EQ(display.shown, Percentages{c.start}) << c.what;
  }
}

TEST(OzProgressHandler, LeavesTheEndOfANarrowRangeToFinish)
{
  Display display;
  display.set_range(5, 6);

  display.initialize(3);
  display.update_progress(3);
  display.finish();

  EXPECT_EQ(display.shown, (Percentages{5, 6}));
}

TEST(OzProgressHandler, LeavesTheEndOfARangeThatWasNarrowedMeanwhileToFinish)
{
  Display display;
  display.initialize(99);
  display.set_range(0, 50);

  display.update_progress(49);
  display.update_progress(1);
  display.update_progress(1);

  EXPECT_EQ(display.shown, (Percentages{0, 49}));
  display.finish();
  EXPECT_EQ(display.shown, (Percentages{0, 49, 50}));
}

TEST(OzProgressHandler, StaysWithinNumbersWhereARangeIsTooHighForItsEvents)
{
  unsigned const greatest = std::numeric_limits<unsigned>::max();
  Display display;
  display.initialize(99);

  display.set_range(greatest - 5, greatest);
  display.update_progress(5);
  EXPECT_EQ(display.current_progress_percentage(), 4294967295u);
  EXPECT_EQ(display.shown, Percentages{0}) << "the end is left to finish";
  display.update_progress(90);
  EXPECT_EQ(display.current_progress_percentage(), 4294967295u);

  display.set_range(greatest - 100, greatest);
  EXPECT_EQ(display.current_progress_percentage(), 4294967290u);
  display.update_progress(1);
  EXPECT_EQ(display.shown, (Percentages{0, 4294967291u}));
  display.finish();
  EXPECT_EQ(display.shown, (Percentages{0, 4294967291u, 4294967295u}));
}

TEST(OzProgressHandler, RaisesARangeToWhatWasShown)
{
  Display display;
  display.initialize(1);
  display.update_progress(1);

  display.set_range(10, 50);
  EXPECT_EQ(range_of(display), std::make_pair(99u, 99u));
  display.set_range(10, 120);
  EXPECT_EQ(range_of(display), std::make_pair(99u, 120u));
}

TEST(OzProgressHandler, DoesNotShowTheEndOfARangeThatWasLowered)
{
  Display display;
  display.initialize(99);
  display.update_progress(49);

  display.set_range(0, 50);
  display.update_progress(1);

  EXPECT_EQ(display.shown, (Percentages{0, 49}));
  EXPECT_EQ(display.current_, 50u);
}

TEST(OzProgressHandler, ShowsNothingAfterACancellationButGoesOnCounting)
{
  Display display;
  display.initialize(10);
  display.cancel = true;

  EXPECT_TRUE(display.is_cancelled());
  display.update_progress(5);
  EXPECT_EQ(display.current_, 5u);
  display.finish();

  EXPECT_EQ(display.current_, 10u);
  EXPECT_EQ(display.shown, Percentages{0});
  EXPECT_EQ(display.last_reported_, 0u);
}

TEST(OzProgressHandler, RemembersACancellationUntilTheNextSpan)
{
  Display display;
  EXPECT_FALSE(display.is_cancelled());
  display.cancel = true;
  EXPECT_TRUE(display.is_cancelled());
  display.cancel = false;

  EXPECT_TRUE(display.is_cancelled());
  EXPECT_EQ(display.questions, 2);
  display.initialize(1);
  EXPECT_FALSE(display.is_cancelled());
}

TEST(OzProgressHandler, KeepsAMessage)
{
  Display display;

  display.set_message("Joining edges");

  EXPECT_STREQ(display.get_message().as_const_c_string(), "Joining edges");
}

TEST(OzProgressHandler, CopiesAllOfItsState)
{
  Display display;
  display.set_range(10, 20);
  display.initialize(9);
  display.update_progress(3);
  display.set_message("half way");

  Display copy(display);
  copy.update_progress(1);

  EXPECT_EQ(copy.shown, (Percentages{10, 13, 14}));
  EXPECT_STREQ(copy.get_message().as_const_c_string(), "half way");
  EXPECT_EQ(display.shown, (Percentages{10, 13}));
  display = copy;
  EXPECT_EQ(display.current_, 4u);
}

TEST(OzProgressIO, IsDeletedThroughItsBase)
{
  class Bar : public OzProgressIO
  {
  public:
    explicit Bar(bool& gone_flag)
      : gone(&gone_flag)
    {
    }
    ~Bar() override { *gone = true; }
    void show(unsigned) override {}
    bool cancel_requested() override { return true; }

  private:
    bool* gone;
  };
  bool gone = false;
  std::unique_ptr<OzProgressIO> bar(new Bar(gone));
  EXPECT_TRUE(bar->cancel_requested());

  bar.reset();

  EXPECT_TRUE(gone);
}

TEST(OzAsymptoticProgressIndicator, GivesEachStageHalfTheWidthOfTheOneBefore)
{
  Display display;
  OzAsymptoticProgressIndicator indicator(&display, 4);
  std::vector<std::pair<unsigned, unsigned>> stages{range_of(display)};

  for (int event = 0; event < 40; ++event)
  {
    indicator.indicate_next_event();
    if (range_of(display) != stages.back())
      stages.push_back(range_of(display));
  }

  // The width goes to 0 at 99, and the range stands there.
  std::vector<std::pair<unsigned, unsigned>> const expected{{0, 50},  {50, 75}, {75, 87}, {87, 93},
                                                            {93, 96}, {96, 97}, {97, 97}};
  EXPECT_EQ(stages, expected);
}

TEST(OzAsymptoticProgressIndicator, ShowsThisListOverNineStages)
{
  Display display;
  OzAsymptoticProgressIndicator indicator(&display, 5);

  for (int event = 0; event < 40; ++event)
    indicator.indicate_next_event();

  // A stage begins with every fourth event, which also counts in it. Steps: 49/5, 24/5, 11/5, 5/5, 2/5, then
  // a range one wide, and from then on one without width, whose start is shown each time.
  Percentages const expected{0,  9,  19, 29, 39, 50, 54, 59, 64, 69, 75, 77, 79, 81,
                             83, 87, 88, 89, 90, 91, 93, 94, 96, 97, 97, 97, 97};
  EXPECT_EQ(display.shown, expected);
}

TEST(OzAsymptoticProgressIndicator, BeginsInTheRangeThatTheParentHas)
{
  Display display;
  display.set_range(20, 60);

  OzAsymptoticProgressIndicator const indicator(&display, 10);

  EXPECT_EQ(range_of(display), std::make_pair(20u, 40u));
  EXPECT_EQ(display.shown, Percentages{20});
  EXPECT_EQ(display.total_, 10u);
}

TEST(OzAsymptoticProgressIndicator, NeverEndsAStageOfNoEvents)
{
  Display display;
  OzAsymptoticProgressIndicator indicator(&display, 0);

  for (int event = 0; event < 100; ++event)
    indicator.indicate_next_event();

  EXPECT_EQ(range_of(display), std::make_pair(0u, 50u));
  EXPECT_EQ(display.shown, Percentages{0});
}

TEST(OzAsymptoticProgressIndicator, StartsAStageWithEachEventWhenOneEventIsAStage)
{
  Display display;
  OzAsymptoticProgressIndicator indicator(&display, 1);

  indicator.indicate_next_event();

  EXPECT_EQ(range_of(display), std::make_pair(50u, 75u));
}

TEST(OzAsymptoticProgressIndicator, IgnoresEventsWithoutAParent)
{
  OzAsymptoticProgressIndicator indicator(nullptr, 3);

  indicator.indicate_next_event();

  EXPECT_FALSE(indicator.is_cancelled());
}

TEST(OzAsymptoticProgressIndicator, AsksItsParentAboutCancellationUntilThatIsSeen)
{
  Display display;
  OzAsymptoticProgressIndicator indicator(&display, 3);
  EXPECT_FALSE(indicator.is_cancelled());
  display.cancel = true;

  EXPECT_TRUE(indicator.is_cancelled());
  EXPECT_TRUE(display.cancelled_);
  int const questions = display.questions;
  EXPECT_TRUE(indicator.is_cancelled());
  EXPECT_EQ(display.questions, questions);
}

TEST(OzAsymptoticProgressIndicator, ShowsNothingItself)
{
  Display display;
  OzAsymptoticProgressIndicator indicator(&display, 3);
  std::size_t const before = display.shown.size();

  indicator.initialize(10);
  indicator.update_progress(5);
  indicator.finish();

  EXPECT_EQ(display.shown.size(), before);
}

TEST(OzAsymptoticProgressIndicator, RaisesItsFirstStageToWhatTheParentHasShown)
{
  Display display;
  display.initialize(1);
  display.update_progress(1); // shows 99

  OzAsymptoticProgressIndicator const indicator(&display, 4);

  EXPECT_EQ(range_of(display), std::make_pair(99u, 99u));
}

TEST(OzAsymptoticProgressIndicator, StaysWithinNumbersWhereItsParentsRangeIsTooHigh)
{
  Display display;
  display.set_range(0, std::numeric_limits<unsigned>::max() - 1);
  OzAsymptoticProgressIndicator indicator(&display, 1);
  EXPECT_EQ(range_of(display), std::make_pair(0u, 2147483647u));

  display.set_range(10, std::numeric_limits<unsigned>::max() - 1);
  indicator.indicate_next_event();

  EXPECT_EQ(range_of(display), std::make_pair(4294967294u, 4294967295u));
}

TEST(OzAsymptoticProgressIndicator, DoesNotPutTheRangeOfItsParentBack)
{
  Display display;
  {
    OzAsymptoticProgressIndicator const indicator(&display, 4);
  }

  EXPECT_EQ(range_of(display), std::make_pair(0u, 50u));
}

TEST(OzProgressHandler, HasItsVirtualOperationsInAFixedOrder)
{
  struct Open : OzProgressHandler
  {
    using OzProgressHandler::check_if_cancelled;
    using OzProgressHandler::increase_progress;
  };

  EXPECT_EQ(vtable_slot(&Open::increase_progress), 2);
  EXPECT_EQ(vtable_slot(&Open::check_if_cancelled), 3);
  EXPECT_EQ(vtable_slot(&OzAsymptoticProgressIndicator::indicate_next_event), 4);
}
