#ifndef OZSEQUENTIAL_H
#define OZSEQUENTIAL_H

#include "ozexport.h"
#include "ozjob.h"
#include "oztimer.h"

#include <cstddef>

/// A job that runs each task at once, on the thread that adds it.
///
/// It takes a service at any time; the server around it hands each request straight on. There is no
/// cancelling.
class OZ_EXPORT OzSequentialJob : public OzJob, public OzJobStatistics
{
public:
  OzSequentialJob();
  ~OzSequentialJob() override;

  /// Runs and deletes the task. True whatever it did: a failure shows in the result of `Wait`.
  bool AddTask(OzTask*& task) override;
  int Wait() override;
  /// `limit` is not used. A null service is answered null.
  OzTaskService* SetService(OzTaskService*& service, std::size_t limit) override;
  void Synchronize() override;

  char const* Name() override;
  double ElapsedTime() override;
  std::size_t TaskCount() override;
  std::size_t PeakConcurrency() override;
  std::size_t ServerRunCount() override;

private:
  int state = JobIdle;
  OzTaskService* service = nullptr; // the server around the client's service; not owned
  OzTimer timer;
  double elapsed = 0;
  std::size_t task_count = 0;
  std::size_t peak_concurrency = 1;
  std::size_t server_runs = 0;
};

/// The factory of jobs that run on the client's own thread.
class OZ_EXPORT OzSequential
{
public:
  /// A new job, owned by the caller. The arguments are those of the factory of jobs on threads, and ignored.
  static OzJob* CreateJob(std::size_t threads, bool flag);
};

/// A factory that has no jobs to give.
class OZ_EXPORT OzEKProcessor
{
public:
  /// Null, always.
  static OzJob* CreateJob(std::size_t threads, bool flag);
};

#endif
