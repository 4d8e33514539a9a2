#include "oztaskserver.h"

#include "ozhold_p.h"

OzTask::~OzTask() = default;

bool OzTask::Execute(OzTaskService* service)
{
  return service == nullptr && Execute();
}

OzTaskServiceRequest::~OzTaskServiceRequest() = default;

OzTaskServiceRequestQueue::~OzTaskServiceRequestQueue() = default;

void OzServerRequestDeque::Enqueue(OzTaskServiceRequest*& request)
{
  OzHold const hold(mutex);
  push_back(request);
}

OzTaskServiceRequest* OzServerRequestDeque::Dequeue()
{
  OzHold const hold(mutex);
  if (is_empty())
    return nullptr;

  OzTaskServiceRequest* const oldest = front();
  pop_front();
  return oldest;
}

bool OzServerRequestDeque::IsEmpty()
{
  OzHold const hold(mutex);
  return is_empty();
}

std::size_t OzServerRequestDeque::Size()
{
  OzHold const hold(mutex);
  return size();
}

OzTaskService::OzTaskService(bool) {}

OzTaskService::~OzTaskService() = default;

void OzTaskService::Start() {}

void OzTaskService::Stop() {}

bool OzTaskService::IsActive()
{
  return true;
}

OzConfigurableTaskService::OzConfigurableTaskService(bool always_active)
  : OzTaskService(always_active)
  , always_active_(always_active)
  , active_(always_active)
  , queue_(new OzServerRequestDeque)
{
}

OzConfigurableTaskService::~OzConfigurableTaskService()
{
  delete queue_;
}

void OzConfigurableTaskService::Start()
{
  if (always_active_ || active_)
    return;

  active_ = true;
  process_cached();
}

void OzConfigurableTaskService::Stop()
{
  if (always_active_ || !active_)
    return;

  process_cached();
  active_ = false;
}

bool OzConfigurableTaskService::IsActive()
{
  return active_;
}

void OzConfigurableTaskService::CacheRequest(OzTaskServiceRequest*& request)
{
  if (queue_ == nullptr)
    return;

  queue_->Enqueue(request);
  request = nullptr;
}

void OzConfigurableTaskService::process_cached()
{
  while (queue_ != nullptr && !queue_->IsEmpty())
  {
    OzTaskServiceRequest* request = queue_->Dequeue();
    if (request != nullptr)
      Process(request);
  }
}

OzTaskServer::OzTaskServer(OzTaskService* service)
  : OzConfigurableTaskService(false)
  , service_(service)
{
  if (service_ == nullptr || service_->IsActive())
  {
    always_active_ = true;
    active_ = true;
  }
}

OzTaskServer::~OzTaskServer()
{
  delete service_;
  service_ = nullptr;
}

bool OzTaskServer::Process(OzTaskServiceRequest*& request)
{
  CacheRequest(request);
  return true;
}

void OzTaskServer::Start()
{
  if (service_ != nullptr)
    service_->Start();
}

void OzTaskServer::Stop()
{
  Execute();
  if (service_ != nullptr)
    service_->Stop();
}

bool OzTaskServer::IsActive()
{
  return service_ != nullptr ? service_->IsActive() : OzConfigurableTaskService::IsActive();
}

bool OzTaskServer::IsEmpty()
{
  return queue_ == nullptr || queue_->IsEmpty();
}

std::size_t OzTaskServer::Size()
{
  return queue_ != nullptr ? queue_->Size() : 0;
}

bool OzTaskServer::Execute()
{
  return Execute(nullptr);
}

bool OzTaskServer::Execute(OzTaskService*)
{
  if (service_ == nullptr)
    return false;
  if (queue_ == nullptr)
    return true;

  bool ok = true;
  for (OzTaskServiceRequest* request = queue_->Dequeue(); request != nullptr; request = queue_->Dequeue())
    ok = service_->Process(request) && ok;
  return ok;
}

Faked_OzTaskServer::Faked_OzTaskServer(OzTaskService* service)
  : OzTaskService(true)
  , service_(service)
{
}

Faked_OzTaskServer::~Faked_OzTaskServer()
{
  delete service_;
}

bool Faked_OzTaskServer::Process(OzTaskServiceRequest*& request)
{
  return service_ != nullptr && service_->Process(request);
}

void Faked_OzTaskServer::Start()
{
  if (service_ != nullptr)
    service_->Start();
}

void Faked_OzTaskServer::Stop()
{
  if (service_ != nullptr)
    service_->Stop();
}

bool Faked_OzTaskServer::IsActive()
{
  return service_ == nullptr || service_->IsActive();
}
