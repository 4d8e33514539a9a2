#include "oztimer.h"

#include "ozjournal.h"
#include "ozstring.h"

#include <ctime>

OzTimer::OzTimer()
  : start_clock_(static_cast<double>(std::clock()))
{
}

void OzTimer::reset_time()
{
  start_clock_ = static_cast<double>(std::clock());
}

double OzTimer::get_time() const
{
  return (static_cast<double>(std::clock()) - start_clock_) / 1000.0;
}

void OzTimer::print_time(OzJournal& journal, OzString const& label) const
{
  double const time = get_time(); // before any of the time that printing takes
  journal << label << " : " << time << " seconds " << ozEndExpr;
}
