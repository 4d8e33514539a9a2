#ifndef CONTOURS_CLUSTER_JOB_H
#define CONTOURS_CLUSTER_JOB_H

#include "contours.h"
#include "progress_bar.h"
#include "stop_flag.h"

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace contours
{

/// What is to be done for each cluster of a drawing.
struct ClusterWork
{
  std::size_t clusters = 0;
  /// Sorts a cluster. Called on any thread, for many clusters at once. What it gives after the work was stopped is
  /// thrown away.
  std::function<std::vector<Contour>(std::size_t cluster)> sort;
  /// Takes the contours of a cluster over. Called for one cluster after the other in their order, on any thread, but
  /// never on two at once.
  std::function<void(std::vector<Contour>&&)> take;
};

/// What a job tells about itself when it is done. The first two are the same in every run with as many threads.
struct JobFigures
{
  std::string name;
  std::size_t tasks = 0;
  std::size_t peak = 0; ///< of what ran at once
  std::size_t server_runs = 0;
  double processor_ms = 0.0; ///< of the whole process
};

/// The work was stopped before it was done, and how many of how many clusters had been sorted then.
class Cancelled : public std::runtime_error
{
public:
  Cancelled(std::size_t sorted, std::size_t clusters);
};

constexpr std::size_t MOST_THREADS = 64;

/// Does the work as a job on up to `threads` threads; 0 means one for each processor, and 1 the calling thread.
///
/// The calling thread draws the bar. Where `stop` is set meanwhile this throws Cancelled; what sorting or taking
/// throws stops all of it, sets `stop`, and comes out here. In any case nothing runs any more afterwards.
JobFigures run_job(ClusterWork const& work, std::size_t threads, StopFlag& stop, ProgressBar& bar);

} // namespace contours

#endif
