#ifndef OZTASKSERVER_H
#define OZTASKSERVER_H

#include "lummutex.h"
#include "ozdeque.h"
#include "ozexport.h"

#include <cstddef>

class OzTaskService;

/// A piece of work for a job. A client derives its tasks, and overrides the form of `Execute` that it
/// wants: with a service, or without.
class OZ_EXPORT OzTask
{
public:
  OzTask() = default;
  OzTask(OzTask const&) = default;
  OzTask& operator=(OzTask const&) = default;
  virtual ~OzTask();

  /// Does the work; false means that it failed. Here: a task that was not written for a service fails when
  /// it is handed one, and otherwise runs `Execute()`.
  virtual bool Execute(OzTaskService* service);
  virtual bool Execute() = 0;
};

/// A task that can be cut into smaller ones. No operation of the library does that.
class OZ_EXPORT OzMacroTask : public OzTask
{
public:
  using OzTask::Execute;
  /// Hands parts of the work to `service`; false if it cannot be cut.
  virtual bool Split(OzTaskService* service) = 0;
};

/// What a task asks a service to do. A client derives its requests.
class OZ_EXPORT OzTaskServiceRequest
{
public:
  OzTaskServiceRequest() = default;
  OzTaskServiceRequest(OzTaskServiceRequest const&) = default;
  OzTaskServiceRequest& operator=(OzTaskServiceRequest const&) = default;
  virtual ~OzTaskServiceRequest();
};

/// Requests that wait, first in first out. The queue does not own them.
class OZ_EXPORT OzTaskServiceRequestQueue
{
public:
  OzTaskServiceRequestQueue() = default;
  OzTaskServiceRequestQueue(OzTaskServiceRequestQueue const&) = delete;
  OzTaskServiceRequestQueue& operator=(OzTaskServiceRequestQueue const&) = delete;
  virtual ~OzTaskServiceRequestQueue();

  /// Puts a request behind the others. The caller's pointer stays set.
  virtual void Enqueue(OzTaskServiceRequest*& request) = 0;
  /// Takes the oldest request off; null if there is none.
  virtual OzTaskServiceRequest* Dequeue() = 0;
  virtual bool IsEmpty() = 0;
  virtual std::size_t Size() = 0;
};

/// A queue of requests that any number of threads may use at once.
class OZ_EXPORT OzServerRequestDeque : public OzTaskServiceRequestQueue,
                                       protected OzDeque<OzTaskServiceRequest*>
{
public:
  void Enqueue(OzTaskServiceRequest*& request) override;
  OzTaskServiceRequest* Dequeue() override;
  bool IsEmpty() override;
  std::size_t Size() override;

private:
  LumMutex mutex{0, 1, 0}; // guards the deque; innermost in the order of locks
};

/// Something that carries out requests. A client derives its service; a job sees to it that it is never
/// entered by two threads at once.
class OZ_EXPORT OzTaskService
{
public:
  /// The argument is for derived classes and not kept here.
  explicit OzTaskService(bool active = true);
  OzTaskService(OzTaskService const&) = default;
  OzTaskService& operator=(OzTaskService const&) = default;
  virtual ~OzTaskService();

  /// Takes a request over. False means that it failed.
  virtual bool Process(OzTaskServiceRequest*& request) = 0;
  virtual void Start();
  virtual void Stop();
  virtual bool IsActive();
};

/// A service that can keep requests until it is started.
///
/// One that was built with `true` is active for good: starting and stopping never change it, and what is
/// cached in it stays in the queue.
///
/// Ownership: the queue belongs to the service, requests left in it are not deleted. A copy shares the
/// queue, so only one of the two may be destroyed.
/// Threads: CacheRequest from any; starting and stopping from one.
class OZ_EXPORT OzConfigurableTaskService : public OzTaskService
{
public:
  explicit OzConfigurableTaskService(bool always_active = true);
  OzConfigurableTaskService(OzConfigurableTaskService const&) = default;
  OzConfigurableTaskService& operator=(OzConfigurableTaskService const&) = default;
  ~OzConfigurableTaskService() override;

  /// Becomes active and processes what was cached. Nothing if it is active.
  void Start() override;
  /// Processes what was cached and becomes inactive. Nothing if it is inactive or active for good.
  void Stop() override;
  bool IsActive() override;

  /// Puts a request behind the others and nulls the caller's pointer.
  virtual void CacheRequest(OzTaskServiceRequest*& request);

protected:
  bool always_active_;
  bool active_;
  OzTaskServiceRequestQueue* queue_; // owned

private:
  void process_cached();
};

/// Stands before a client's service and takes the requests of all tasks into a queue; as a task of its own
/// it then hands them to the service one by one, in the order in which they came.
///
/// Ownership: the wrapped service belongs to the server. A request belongs to the queue once it was
/// processed here, and to the service once that was handed it.
/// Threads: Process from any; Execute and Stop run on one thread at a time, which is for the caller to see
/// to.
class OZ_EXPORT OzTaskServer : public OzConfigurableTaskService, public OzTask
{
public:
  /// Active for good unless `service` says that it is not active.
  explicit OzTaskServer(OzTaskService* service);
  OzTaskServer(OzTaskServer const&) = delete;
  OzTaskServer& operator=(OzTaskServer const&) = delete;
  ~OzTaskServer() override;

  /// Caches the request; true. Nothing is ever processed on the caller's thread.
  bool Process(OzTaskServiceRequest*& request) override;
  /// Starts the wrapped service. What was cached stays.
  void Start() override;
  /// Hands what was cached to the wrapped service, then stops it.
  void Stop() override;
  bool IsActive() override;

  virtual bool IsEmpty();
  virtual std::size_t Size();

  /// Hands all requests to the wrapped service, also those that come in meanwhile, and those behind one that
  /// failed. False if one failed, or if there is no service; then the queue stays as it is.
  bool Execute(OzTaskService* service) override;
  bool Execute() override;

protected:
  OzTaskService* service_; // owned, may be null
};

/// What stands in a server's place where all runs on one thread: requests go straight to the service.
///
/// Ownership: the wrapped service belongs to it.
class OZ_EXPORT Faked_OzTaskServer : public OzTaskService
{
public:
  explicit Faked_OzTaskServer(OzTaskService* service);
  Faked_OzTaskServer(Faked_OzTaskServer const&) = delete;
  Faked_OzTaskServer& operator=(Faked_OzTaskServer const&) = delete;
  ~Faked_OzTaskServer() override;

  /// False without a service, and the request stays with the caller.
  bool Process(OzTaskServiceRequest*& request) override;
  void Start() override;
  void Stop() override;
  bool IsActive() override;

protected:
  OzTaskService* service_; // owned, may be null
};

#endif
