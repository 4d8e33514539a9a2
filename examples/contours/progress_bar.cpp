#include "progress_bar.h"

#include <algorithm>
#include <mutex>
#include <ostream>
#include <string>

namespace contours
{

namespace
{

constexpr unsigned CELLS = 30; // with what stands around them fewer than the columns of any terminal
constexpr std::size_t WIDTH = CELLS + 8;
constexpr std::size_t ECHO = 2; // a terminal shows Ctrl-C as ^C behind the bar

std::mutex drawing;                 // held while a bar is drawn or erased
ProgressBar* current_bar = nullptr; // guarded by drawing

std::string picture(unsigned percentage)
{
  unsigned const full = percentage * CELLS / 100;
  std::string const number = std::to_string(percentage);
  return "\r[" + std::string(full, '#') + std::string(CELLS - full, ' ') + "] " +
         std::string(3 - number.size(), ' ') + number + " %";
}

} // namespace

void Progress::increase_progress(unsigned percentage)
{
  shown.store(percentage, std::memory_order_relaxed);
}

bool Progress::check_if_cancelled() const
{
  return stop.requested();
}

ProgressBar::ProgressBar(std::ostream& stream, bool is_visible)
  : out(stream)
  , visible(is_visible)
{
  std::lock_guard<std::mutex> const hold(drawing);
  current_bar = this;
}

ProgressBar::~ProgressBar()
{
  erase();
  std::lock_guard<std::mutex> const hold(drawing);
  current_bar = nullptr;
}

void ProgressBar::show(unsigned percentage)
{
  if (!visible || (drawn && percentage == drawn_percentage))
    return;
  std::string const text = picture(std::min(percentage, 100U));
  std::lock_guard<std::mutex> const hold(drawing);
  drawn = true;
  drawn_percentage = percentage;
  out << text << std::flush;
}

void ProgressBar::erase()
{
  std::lock_guard<std::mutex> const hold(drawing);
  erase_drawn();
}

void ProgressBar::erase_before_the_end()
{
  // Never let go: nothing is drawn any more.
  drawing.lock();
  if (current_bar != nullptr)
    current_bar->erase_drawn();
}

/// The lock is held.
void ProgressBar::erase_drawn()
{
  if (!drawn)
    return;
  drawn = false;
  // Blanks do on every terminal; not all know a word for erasing.
  out << '\r' + std::string(WIDTH + ECHO, ' ') + '\r' << std::flush;
}

} // namespace contours
