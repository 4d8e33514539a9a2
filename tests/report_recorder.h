#ifndef REPORT_RECORDER_H
#define REPORT_RECORDER_H

#include "ozassert.h"

#include <mutex>
#include <string>
#include <vector>

/// Collects what the assertion hook is told while it lives, then puts the former handler back. The handler
/// is a plain function, so one recorder lives at a time; any thread may report to it.
class ReportRecorder
{
public:
  ReportRecorder()
  {
    units_.clear();
    dkb_assertion_handler = &record;
  }
  ~ReportRecorder() { dkb_assertion_handler = former; }
  ReportRecorder(ReportRecorder const&) = delete;
  ReportRecorder& operator=(ReportRecorder const&) = delete;

  /// One file name per report, oldest first. Called when the threads that report have ended.
  std::vector<std::string> units() const { return units_; }

  /// Forgets the reports so far.
  void clear() { units_.clear(); }

private:
  static void record(char const* file, int)
  {
    std::string const path(file);
    std::lock_guard<std::mutex> const hold(mutex_);
    units_.push_back(path.substr(path.rfind('/') + 1));
  }

  OzAssertionHandler const former = dkb_assertion_handler;
  static inline std::mutex mutex_;
  static inline std::vector<std::string> units_;
};

/// The list of reports that is wanted where each comes from the same unit.
inline std::vector<std::string> reports(std::size_t count, char const* unit)
{
  return std::vector<std::string>(count, unit);
}

#endif
