#ifndef OZJOB_H
#define OZJOB_H

#include "ozexport.h"

#include <cstddef>

class OzTask;
class OzTaskService;

/// A run of tasks, as a client works with it: it adds tasks, waits for them, and may do so again. Where and
/// when they run is for the factory that made the job; the client's code is the same.
///
/// Ownership: the client owns the job. A task belongs to the job from the moment AddTask takes it, and the
/// client's pointer is nulled; a refused task stays with the client. A server that SetService hands back
/// belongs to the client, who deletes it when the job is done.
/// Threads: all operations are called on the client's thread, never from a task.
class OZ_EXPORT OzJob
{
public:
  /// The states of a job; the last three are results of `Wait`.
  enum
  {
    JobIdle = 1,      ///< no task was added since the last `Wait`
    JobRunning = 2,   ///< tasks were added
    JobWaiting = 3,   ///< inside `Wait`
    JobDone = 4,      ///< all tasks ended well
    JobCancelled = 5, ///< cancelled through the progress handler
    JobFailed = 6     ///< at least one task returned false
  };

  OzJob() = default;
  OzJob(OzJob const&) = delete;
  OzJob& operator=(OzJob const&) = delete;
  virtual ~OzJob();

  /// Takes a task over, to be run once. A null task makes the job running and is answered true. False means
  /// that the task was refused.
  virtual bool AddTask(OzTask*& task) = 0;
  /// Returns when all tasks have ended; they are deleted then. JobDone, JobCancelled or JobFailed.
  virtual int Wait() = 0;
  /// Takes a service over and returns the server that tasks are handed in its place. `limit` is the number
  /// of waiting requests beyond which the server runs before further tasks do. A service that the job does
  /// not take is returned unchanged, and stays with the client.
  virtual OzTaskService* SetService(OzTaskService*& service, std::size_t limit) = 0;
  /// Returns at a moment at which the job's scheduler is between two steps.
  virtual void Synchronize() = 0;
};

/// What a job tells about its last run.
class OZ_EXPORT OzJobStatistics
{
public:
  OzJobStatistics() = default;
  OzJobStatistics(OzJobStatistics const&) = delete;
  OzJobStatistics& operator=(OzJobStatistics const&) = delete;
  virtual ~OzJobStatistics();

  virtual char const* Name() = 0;
  /// From the first task to the end of `Wait`, in the unit of OzTimer::get_time.
  virtual double ElapsedTime() = 0;
  virtual std::size_t TaskCount() = 0;
  virtual std::size_t PeakConcurrency() = 0;
  virtual std::size_t ServerRunCount() = 0;
};

#endif
