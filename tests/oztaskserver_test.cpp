#include "oztaskserver.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <type_traits>
#include <vector>

namespace
{
using Numbers = std::vector<int>;

class Request : public OzTaskServiceRequest
{
public:
  explicit Request(int request_number)
    : number(request_number)
  {
  }
  int number;
};

/// Notes what it is told, and owns its requests.
struct Log
{
  Numbers processed;
  int started = 0;
  int stopped = 0;
  std::size_t processed_before_stop = 0;
  int deleted = 0;
  int failing = -1;                     // the request that fails
  bool active = true;                   // what IsActive answers
  OzTaskServiceRequest* late = nullptr; // cached in `feed` while the first request is processed
  OzTaskService* feed = nullptr;
};

class Service : public OzTaskService
{
public:
  explicit Service(Log& service_log)
    : log(service_log)
  {
  }
  ~Service() override { ++log.deleted; }

  bool Process(OzTaskServiceRequest*& request) override
  {
    std::unique_ptr<OzTaskServiceRequest> const owned(request);
    request = nullptr;
    int const number = static_cast<Request&>(*owned).number;
    log.processed.push_back(number);
    if (log.late != nullptr)
      log.feed->Process(log.late);
    return number != log.failing;
  }
  void Start() override { ++log.started; }
  void Stop() override
  {
    ++log.stopped;
    log.processed_before_stop = log.processed.size();
  }
  bool IsActive() override { return log.active; }

private:
  Log& log;
};

/// A configurable service that notes what it processes.
class Cache : public OzConfigurableTaskService
{
public:
  using OzConfigurableTaskService::always_active_;
  using OzConfigurableTaskService::OzConfigurableTaskService;
  using OzConfigurableTaskService::queue_;

  bool Process(OzTaskServiceRequest*& request) override
  {
    processed.push_back(static_cast<Request*>(request)->number);
    active_while_processing.push_back(IsActive());
    delete request;
    return true;
  }
  Numbers processed;
  std::vector<bool> active_while_processing;
};

class ServerProbe : public OzTaskServer
{
public:
  using OzTaskServer::always_active_;
  using OzTaskServer::OzTaskServer;
  using OzTaskServer::queue_;
  using OzTaskServer::service_;
};

class PlainTask : public OzTask
{
public:
  using OzTask::Execute;
  bool Execute() override { return ++runs == 1; }
  int runs = 0;
};

class Macro : public OzMacroTask
{
public:
  using OzMacroTask::Execute;
  bool Execute() override { return true; }
  bool Split(OzTaskService*) override { return true; }
};

void cache(OzConfigurableTaskService& service, int number)
{
  OzTaskServiceRequest* request = new Request(number);
  service.CacheRequest(request);
}
} // namespace

TEST(OzTask, WithoutInterestInServicesFailsWhenHandedOne)
{
  Log log;
  Service service(log);
  PlainTask task;

  EXPECT_FALSE(task.Execute(&service));
  EXPECT_EQ(task.runs, 0);
}

TEST(OzTask, RunsItsPlainFormWhenHandedNoService)
{
  PlainTask task;

  EXPECT_TRUE(task.Execute(nullptr));
  EXPECT_FALSE(task.Execute(nullptr)) << "the task's own answer comes through";
  EXPECT_EQ(task.runs, 2);
}

TEST(OzMacroTask, CanBeCutAndRunAsATask)
{
  Macro macro;
  OzTask& task = macro;

  EXPECT_TRUE(task.Execute(nullptr));
  EXPECT_TRUE(macro.Split(nullptr));
}

TEST(OzServerRequestDeque, HandsRequestsOutInTheOrderInWhichTheyCame)
{
  OzServerRequestDeque queue;
  Request first(1);
  Request second(2);
  OzTaskServiceRequest* request = &first;
  queue.Enqueue(request);
  EXPECT_EQ(request, &first) << "the caller's pointer stays";
  request = &second;
  queue.Enqueue(request);

  EXPECT_EQ(queue.Size(), 2u);
  EXPECT_FALSE(queue.IsEmpty());
  EXPECT_EQ(queue.Dequeue(), &first);
  EXPECT_EQ(queue.Dequeue(), &second);
  EXPECT_EQ(queue.Dequeue(), nullptr);
  EXPECT_TRUE(queue.IsEmpty());
  EXPECT_EQ(queue.Size(), 0u);
}

TEST(OzTaskService, IsActiveAndDoesNothingOnStartAndStop)
{
  class Plain : public OzTaskService
  {
  public:
    explicit Plain(bool active)
      : OzTaskService(active)
    {
    }
    bool Process(OzTaskServiceRequest*&) override { return true; }
  } service(false);

  service.Start();
  service.Stop();

  EXPECT_TRUE(service.IsActive()) << "the argument is not kept";
}

TEST(OzConfigurableTaskService, ProcessesOnStartWhatWasCachedBefore)
{
  Cache service(false);
  EXPECT_FALSE(service.IsActive());
  cache(service, 1);
  cache(service, 2);

  service.Start();

  EXPECT_EQ(service.processed, (Numbers{1, 2}));
  EXPECT_EQ(service.active_while_processing, (std::vector<bool>{true, true}));
  EXPECT_TRUE(service.IsActive());
}

TEST(OzConfigurableTaskService, DoesNothingOnASecondStart)
{
  Cache service(false);
  service.Start();
  cache(service, 1);

  service.Start();

  EXPECT_EQ(service.processed, Numbers{});
  service.Stop();
}

TEST(OzConfigurableTaskService, ProcessesOnStopWhatWasCachedSinceTheStart)
{
  Cache service(false);
  service.Start();
  cache(service, 1);

  service.Stop();

  EXPECT_EQ(service.processed, Numbers{1});
  EXPECT_EQ(service.active_while_processing, std::vector<bool>{true});
  EXPECT_FALSE(service.IsActive());
}

TEST(OzConfigurableTaskService, DoesNothingOnStopBeforeAStart)
{
  Cache service(false);
  cache(service, 1);

  service.Stop();

  EXPECT_EQ(service.processed, Numbers{});
  service.Start();
  EXPECT_EQ(service.processed, Numbers{1});
}

TEST(OzConfigurableTaskService, ThatIsActiveForGoodNeverDrainsItsQueue)
{
  Cache service;
  EXPECT_TRUE(service.always_active_);
  cache(service, 1);

  service.Start();
  service.Stop();

  EXPECT_TRUE(service.IsActive());
  EXPECT_EQ(service.processed, Numbers{});
  delete service.queue_->Dequeue();
}

TEST(OzConfigurableTaskService, NullsTheCallersPointerWhenItCaches)
{
  Cache service(false);
  OzTaskServiceRequest* request = new Request(1);

  service.CacheRequest(request);

  EXPECT_EQ(request, nullptr);
  service.Start();
}

TEST(OzConfigurableTaskService, WithoutAQueueLeavesTheRequestWithTheCaller)
{
  Cache service(false);
  delete service.queue_;
  service.queue_ = nullptr;
  Request kept(1);
  OzTaskServiceRequest* request = &kept;

  service.CacheRequest(request);
  service.Start();
  service.Stop();

  EXPECT_EQ(request, &kept);
}

TEST(OzConfigurableTaskService, SharesItsQueueWithACopy)
{
  Cache service(false);
  {
    Cache copy(service);
    EXPECT_EQ(copy.queue_, service.queue_);
    copy.queue_ = nullptr;
  }
  Cache other(true);
  OzTaskServiceRequestQueue* const own = other.queue_;
  other = service;
  EXPECT_EQ(other.queue_, service.queue_);
  EXPECT_FALSE(other.always_active_);
  other.queue_ = own;
}

TEST(OzTaskServer, CachesWhatItIsToProcess)
{
  Log log;
  OzTaskServer server(new Service(log));
  OzTaskServiceRequest* request = new Request(1);

  EXPECT_TRUE(server.Process(request));

  EXPECT_EQ(request, nullptr);
  EXPECT_EQ(log.processed, Numbers{});
  EXPECT_EQ(server.Size(), 1u);
  EXPECT_FALSE(server.IsEmpty());
  EXPECT_TRUE(server.Execute());
  EXPECT_TRUE(server.IsEmpty());
}

TEST(OzTaskServer, HandsAllRequestsOnInOrderAlsoBehindOneThatFails)
{
  Log log;
  log.failing = 2;
  OzTaskServer server(new Service(log));
  for (int number = 1; number <= 3; ++number)
    cache(server, number);

  EXPECT_FALSE(server.Execute());

  EXPECT_EQ(log.processed, (Numbers{1, 2, 3}));
  EXPECT_TRUE(server.Execute()) << "nothing left to fail";
}

TEST(OzTaskServer, ServesRequestsThatComeWhileItRuns)
{
  Log log;
  OzTaskServer server(new Service(log));
  log.late = new Request(9);
  log.feed = &server;
  cache(server, 1);

  EXPECT_TRUE(server.Execute(nullptr));

  EXPECT_EQ(log.processed, (Numbers{1, 9}));
}

TEST(OzTaskServer, WithoutServiceRefusesToRunAndKeepsItsQueue)
{
  ServerProbe server(nullptr);
  EXPECT_TRUE(server.IsActive());
  EXPECT_TRUE(server.always_active_);
  EXPECT_TRUE(server.IsEmpty());
  cache(server, 1);

  EXPECT_FALSE(server.Execute());
  server.Start();
  server.Stop();

  EXPECT_EQ(server.Size(), 1u);
  delete server.queue_->Dequeue();
}

TEST(OzTaskServer, WithoutQueueHasNothingToDo)
{
  Log log;
  ServerProbe server(new Service(log));
  delete server.queue_;
  server.queue_ = nullptr;

  EXPECT_TRUE(server.Execute());
  EXPECT_TRUE(server.IsEmpty());
  EXPECT_EQ(server.Size(), 0u);
}

TEST(OzTaskServer, IsActiveForGoodUnlessItsServiceIsNot)
{
  Log active;
  ServerProbe const around_active(new Service(active));
  EXPECT_TRUE(around_active.always_active_);
  Log inactive;
  inactive.active = false;
  ServerProbe around_inactive(new Service(inactive));
  EXPECT_FALSE(around_inactive.always_active_);

  EXPECT_FALSE(around_inactive.IsActive());
  inactive.active = true;
  EXPECT_TRUE(around_inactive.IsActive()) << "the service is asked afresh";
}

TEST(OzTaskServer, StartsItsServiceWithoutTouchingTheQueue)
{
  Log log;
  OzTaskServer server(new Service(log));
  cache(server, 1);

  server.Start();

  EXPECT_EQ(log.started, 1);
  EXPECT_EQ(log.processed, Numbers{});
  server.Stop();
}

TEST(OzTaskServer, DrainsItsQueueOnStopAndThenStopsItsService)
{
  Log log;
  OzTaskServer server(new Service(log));
  cache(server, 1);
  cache(server, 2);

  server.Stop();

  EXPECT_EQ(log.processed, (Numbers{1, 2}));
  EXPECT_EQ(log.stopped, 1);
  EXPECT_EQ(log.processed_before_stop, 2u);
}

TEST(OzTaskServer, OwnsItsService)
{
  Log log;
  {
    OzTaskServer const server(new Service(log));
  }

  EXPECT_EQ(log.deleted, 1);
}

TEST(OzTaskServer, TakesRequestsFromSeveralThreadsAndLosesNone)
{
  Log log;
  OzTaskServer server(new Service(log));
  std::vector<std::thread> feeders;
  for (int feeder = 0; feeder < 4; ++feeder)
    feeders.emplace_back(
        [&server, feeder]
        {
          for (int i = 0; i < 500; ++i)
            cache(server, feeder * 1000 + i);
        });
  for (std::thread& feeder : feeders)
    feeder.join();

  EXPECT_TRUE(server.Execute());

  Numbers next{0, 1000, 2000, 3000};
  for (int const number : log.processed)
    EXPECT_EQ(number, next[static_cast<std::size_t>(number / 1000)]++)
        << "first in, first out for each feeder";
  EXPECT_EQ(next, (Numbers{500, 1500, 2500, 3500}));
}

TEST(FakedOzTaskServer, HandsRequestsStraightToItsService)
{
  Log log;
  log.failing = 2;
  Faked_OzTaskServer server(new Service(log));
  OzTaskServiceRequest* good = new Request(1);
  OzTaskServiceRequest* bad = new Request(2);

  EXPECT_TRUE(server.Process(good));
  EXPECT_EQ(log.processed, Numbers{1});
  EXPECT_FALSE(server.Process(bad));
}

TEST(FakedOzTaskServer, ForwardsStartStopAndState)
{
  Log log;
  log.active = false;
  {
    Faked_OzTaskServer server(new Service(log));

    server.Start();
    server.Stop();
    EXPECT_FALSE(server.IsActive());
  }

  EXPECT_EQ(log.started, 1);
  EXPECT_EQ(log.stopped, 1);
  EXPECT_EQ(log.deleted, 1);
}

TEST(FakedOzTaskServer, WithoutServiceRefusesRequests)
{
  Faked_OzTaskServer server(nullptr);
  Request kept(1);
  OzTaskServiceRequest* request = &kept;

  EXPECT_FALSE(server.Process(request));
  server.Start();
  server.Stop();

  EXPECT_TRUE(server.IsActive());
  EXPECT_EQ(request, &kept);
}

TEST(OzTaskServer, AndAllThatItStandsOnHaveTheirVirtualOperationsInAFixedOrder)
{
  EXPECT_EQ(vtable_slot(static_cast<bool (OzTask::*)(OzTaskService*)>(&OzTask::Execute)), 2);
  EXPECT_EQ(vtable_slot(static_cast<bool (OzTask::*)()>(&OzTask::Execute)), 3);
  EXPECT_EQ(vtable_slot(&OzMacroTask::Split), 4);

  EXPECT_EQ(vtable_slot(&OzTaskServiceRequestQueue::Enqueue), 2);
  EXPECT_EQ(vtable_slot(&OzTaskServiceRequestQueue::Dequeue), 3);
  EXPECT_EQ(vtable_slot(&OzTaskServiceRequestQueue::IsEmpty), 4);
  EXPECT_EQ(vtable_slot(&OzTaskServiceRequestQueue::Size), 5);

  EXPECT_EQ(vtable_slot(&OzTaskService::Process), 2);
  EXPECT_EQ(vtable_slot(&OzTaskService::Start), 3);
  EXPECT_EQ(vtable_slot(&OzTaskService::Stop), 4);
  EXPECT_EQ(vtable_slot(&OzTaskService::IsActive), 5);
  EXPECT_EQ(vtable_slot(&OzConfigurableTaskService::CacheRequest), 6);
  EXPECT_EQ(vtable_slot(&OzTaskServer::IsEmpty), 7);
  EXPECT_EQ(vtable_slot(&OzTaskServer::Size), 8);
}
