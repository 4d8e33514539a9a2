#include "ozprogress.h"

#include <algorithm>
#include <limits>

namespace
{
// A range may have been set the wrong way round, and then half of its width can lie below 0; or so high that
// the events counted lie above every number.
unsigned whole_percentage(double percentage)
{
  double const greatest = std::numeric_limits<unsigned>::max();
  return percentage > 0 ? static_cast<unsigned>(std::min(percentage, greatest)) : 0;
}
} // namespace

OzProgressHandler::~OzProgressHandler() = default;

void OzProgressHandler::set_range(unsigned start, unsigned end)
{
  range_start_ = std::max(start, last_reported_);
  range_end_ = std::max(end, last_reported_);
}

void OzProgressHandler::get_range(unsigned& start, unsigned& end) const
{
  start = range_start_;
  end = range_end_;
}

void OzProgressHandler::initialize(unsigned events)
{
  total_ = events;
  current_ = 0;

  // The span is one percent short of the range: its end is left to finish().
  unsigned const start = range_start_;
  unsigned const end = range_end_;
  if (end > start && end - start > 1)
    step_ = static_cast<double>(end - start - 1) / std::max(events, 1u);
  else if (end == start)
    step_ = 0;
  else
    step_ = 1.0 / std::max(static_cast<double>(events) + 1.0, 2.0);

  last_reported_ = start;
  cancelled_ = false;
  increase_progress(start);
}

void OzProgressHandler::update_progress(unsigned events)
{
  // The sum wraps as 32-bit numbers do.
  current_ = std::min(current_ + events, total_);

  unsigned const percentage = current_progress_percentage();
  if (percentage <= last_reported_ || percentage >= range_end_ || cancelled_)
    return;

  last_reported_ = percentage;
  increase_progress(percentage);
}

void OzProgressHandler::finish()
{
  current_ = total_;
  if (cancelled_)
    return;

  last_reported_ = range_end_;
  increase_progress(range_end_);
}

unsigned OzProgressHandler::current_progress_percentage() const
{
  return whole_percentage(current_ * step_ + range_start_);
}

bool OzProgressHandler::is_cancelled()
{
  if (!cancelled_)
    cancelled_ = check_if_cancelled();
  return cancelled_;
}

OzAsymptoticProgressIndicator::OzAsymptoticProgressIndicator(OzProgressHandler* parent,
                                                             std::size_t events_per_stage)
  : parent_(parent)
  , events_per_stage_(events_per_stage)
{
  if (parent_ == nullptr)
    return;

  parent_->get_range(saved_start_, saved_end_);
  double const start = saved_start_;
  double const end = saved_end_;
  parent_->set_range(saved_start_, whole_percentage((end - start) * 0.5 + start));
  parent_->initialize(static_cast<unsigned>(events_per_stage_));
}

OzAsymptoticProgressIndicator::~OzAsymptoticProgressIndicator()
{
  parent_ = nullptr;
}

void OzAsymptoticProgressIndicator::increase_progress(unsigned) {}

bool OzAsymptoticProgressIndicator::check_if_cancelled() const
{
  return parent_ != nullptr && parent_->is_cancelled();
}

void OzAsymptoticProgressIndicator::indicate_next_event()
{
  if (parent_ == nullptr)
    return;

  // With 0 events a stage the limit wraps around to the largest number, and no stage ever begins.
  if (events_in_stage_ >= events_per_stage_ - 1)
  {
    unsigned start = 0;
    unsigned end = 0;
    parent_->get_range(start, end);
    double const width = static_cast<double>(end) - start;
    parent_->set_range(end, whole_percentage(width * 0.5 + end));
    parent_->initialize(static_cast<unsigned>(events_per_stage_));
    events_in_stage_ = 0;
  }
  ++events_in_stage_;
  parent_->update_progress(1);
}

OzProgressIO::~OzProgressIO() = default;
