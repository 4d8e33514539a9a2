#ifndef CONTOURS_PROGRESS_BAR_H
#define CONTOURS_PROGRESS_BAR_H

#include "stop_flag.h"

#include <ozprogress.h>

#include <atomic>
#include <iosfwd>

namespace contours
{

/// Keeps for the bar how far a job is, and tells the job when to stop.
///
/// A job calls its handler on any thread with the scheduler's lock held, so nothing is drawn here: whoever draws asks
/// for the percentage.
class Progress : public OzProgressHandler
{
public:
  /// `flag` stays the caller's and must outlive this.
  explicit Progress(StopFlag const& flag)
    : stop(flag)
  {
  }

  /// On any thread.
  unsigned percentage() const { return shown.load(std::memory_order_relaxed); }

protected:
  void increase_progress(unsigned percentage) override;
  bool check_if_cancelled() const override;

private:
  StopFlag const& stop;
  std::atomic<unsigned> shown{0};
};

/// A bar on a line of its own, which is drawn over itself while it grows, and leaves no trace.
///
/// One lives at a time, and belongs to one thread.
class ProgressBar
{
public:
  /// `out` stays the caller's, who writes nothing to it between `show` and `erase`. A bar that is not `visible` draws
  /// nothing.
  ProgressBar(std::ostream& out, bool visible);
  ~ProgressBar();
  ProgressBar(ProgressBar const&) = delete;
  ProgressBar& operator=(ProgressBar const&) = delete;

  bool is_visible() const { return visible; }
  /// Draws the bar, unless it is there and says so already.
  void show(unsigned percentage);
  void erase();

  /// Takes the bar off for good, if there is one: for a thread that is about to end the process and to say why.
  static void erase_before_the_end();

private:
  void erase_drawn();

  std::ostream& out;
  bool const visible;
  bool drawn = false;
  unsigned drawn_percentage = 0;
};

} // namespace contours

#endif
