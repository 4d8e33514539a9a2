#ifndef OZPROGRESS_H
#define OZPROGRESS_H

#include "ozexport.h"
#include "ozstring.h"

#include <cstddef>

/// Turns the counted events of a long operation into whole percentages of a range, and carries the user's
/// wish to cancel.
///
/// The operation says by `initialize` how many events there will be, counts them by `update_progress`, and
/// ends with `finish`. Events alone stay below the end of the range: only `finish` reaches it. A client
/// derives its display.
///
/// Threads: one at a time. A job calls its handler with the scheduler's lock held, on any thread: the two
/// operations that a client implements then only set or read a flag.
class OZ_EXPORT OzProgressHandler
{
public:
  OzProgressHandler() = default;
  OzProgressHandler(OzProgressHandler const&) = default;
  OzProgressHandler& operator=(OzProgressHandler const&) = default;
  virtual ~OzProgressHandler();

  /// Sets the range of the percentages to come. What was shown already is not taken back: both ends are
  /// raised to it if they lie below.
  void set_range(unsigned start, unsigned end);
  void get_range(unsigned& start, unsigned& end) const;

  /// Begins a span of `events` events, shows the start of the range, and forgets a cancellation.
  void initialize(unsigned events);
  /// Counts `events` more, and shows the percentage if it is a new and higher one.
  void update_progress(unsigned events);
  /// Counts all events of the span and shows the end of the range, unless cancelled.
  void finish();

  /// Where the events so far lie, cut to a whole percentage: above the range if that was lowered meanwhile,
  /// and the greatest number where a range was set so high that they lie above it.
  unsigned current_progress_percentage() const;

  /// Asks whether the user has cancelled. Once seen, a cancellation stays until the next `initialize`.
  bool is_cancelled();

  void set_message(OzString const& message) { message_ = message; }
  OzString const& get_message() const { return message_; }

protected:
  /// Shows a percentage that is higher than all before.
  virtual void increase_progress(unsigned percentage) = 0;
  virtual bool check_if_cancelled() const = 0;

  unsigned total_ = 0;         // events in the span
  unsigned current_ = 0;       // events so far
  OzString message_;           // what the operation says that it is doing
  double step_ = 100.0;        // percent an event
  unsigned range_start_ = 0;   // percent
  unsigned range_end_ = 100;   // percent
  unsigned last_reported_ = 0; // the highest percentage shown
  bool cancelled_ = false;
};

/// Drives another handler where the number of events is not known beforehand: each stage of events takes
/// half the width of the one before, so that the display goes on moving and never reaches the end.
///
/// Ownership: the parent is not owned and outlives the indicator; its range is not put back.
class OZ_EXPORT OzAsymptoticProgressIndicator : public OzProgressHandler
{
public:
  /// Takes the lower half of the parent's range for the first stage. With a null parent events do nothing.
  OzAsymptoticProgressIndicator(OzProgressHandler* parent, std::size_t events_per_stage);
  OzAsymptoticProgressIndicator(OzAsymptoticProgressIndicator const&) = default;
  OzAsymptoticProgressIndicator& operator=(OzAsymptoticProgressIndicator const&) = default;
  ~OzAsymptoticProgressIndicator() override;

protected:
  /// Nothing: percentages go to the parent.
  void increase_progress(unsigned percentage) override;
  bool check_if_cancelled() const override;

public:
  /// Counts one event. With 0 events a stage all events are one stage.
  virtual void indicate_next_event();

protected:
  OzProgressHandler* parent_; // not owned, may be null
  std::size_t events_per_stage_;
  std::size_t events_in_stage_ = 0;
  unsigned saved_start_ = 0; // the parent's range at the beginning
  unsigned saved_end_ = 100;
};

/// What a display of progress offers to an operation. The library neither implements nor calls it.
class OZ_EXPORT OzProgressIO
{
public:
  OzProgressIO() = default;
  OzProgressIO(OzProgressIO const&) = default;
  OzProgressIO& operator=(OzProgressIO const&) = default;
  virtual ~OzProgressIO();

  virtual void show(unsigned percentage) = 0;
  virtual bool cancel_requested() = 0;
};

#endif
