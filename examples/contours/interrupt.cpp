#include "interrupt.h"

#include <atomic>

namespace contours
{

namespace
{

std::atomic<StopFlag*> interrupted{nullptr};
static_assert(std::atomic<StopFlag*>::is_always_lock_free, "a signal handler reads it");

// Does no more than what is allowed inside a signal handler.
extern "C" void set_flag(int /*signal*/)
{
  if (StopFlag* const flag = interrupted.load())
    flag->request();
}

} // namespace

Interrupt::Interrupt(StopFlag& flag)
  : former()
{
  interrupted = &flag;
  struct sigaction action = {};
  action.sa_handler = &set_flag;
  // The system puts the default action back before it calls the handler: the next Ctrl-C ends the process even if
  // nobody looks at the flag. Calls that were under way go on.
  action.sa_flags = static_cast<int>(static_cast<unsigned>(SA_RESETHAND) | static_cast<unsigned>(SA_RESTART));
  ::sigemptyset(&action.sa_mask);
  ::sigaction(SIGINT, nullptr, &former);
  if (former.sa_handler != SIG_IGN)
    ::sigaction(SIGINT, &action, nullptr);
}

Interrupt::~Interrupt()
{
  ::sigaction(SIGINT, &former, nullptr);
  interrupted = nullptr;
}

} // namespace contours
