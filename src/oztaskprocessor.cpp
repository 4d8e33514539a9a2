#include "oztaskprocessor.h"

#include "lumthreads.h"
#include "ozmutex.h"
#include "oztaskprocessor_p.h"

OzReleaseTaskProcessorLocal::~OzReleaseTaskProcessorLocal() = default;

std::uint64_t OzTaskProcessor::Id_ = 0;

// Never destroyed: a thread that still runs while the process ends unbinds itself.
OzMap<LumThreads*, OzTaskProcessor*>& OzTaskProcessor::processor_map =
    *new OzMap<LumThreads*, OzTaskProcessor*>;

namespace
{
void set_to_minus_one(int* value)
{
  *value = -1;
}
} // namespace

// Never destroyed, as processor_map.
OzTaskProcessorDkbLocal<int>* const dkb_unread_locals = new OzTaskProcessorDkbLocal<int>[DKB_UNREAD_LOCALS]
{
  OzTaskProcessorDkbLocal<int>(&set_to_minus_one), OzTaskProcessorDkbLocal<int>(&set_to_minus_one),
      OzTaskProcessorDkbLocal<int>(&set_to_minus_one)
};

OzTaskProcessor::OzTaskProcessor()
  : id_(0)
{
  OzCriticalDkbRegion const region;
  id_ = ++Id_;
}

OzTaskProcessor::~OzTaskProcessor()
{
  waits_for_ = nullptr;
  ReleaseProcessorLocals();
}

OzTaskProcessor* OzTaskProcessor::TaskProcessor()
{
  LumThreads* const thread = LumThreads::GetCurrentThread();
  if (thread == LumThreads::GetMainThread())
    return nullptr;

  OzCriticalDkbRegion const region;
  return processor_map.find(thread, nullptr) != 0 ? processor_map[thread] : nullptr;
}

void OzTaskProcessor::AddProcessor(OzTaskProcessor* processor)
{
  LumThreads* const thread = LumThreads::GetCurrentThread();
  OzCriticalDkbRegion const region;
  processor_map[thread] = processor;
}

void OzTaskProcessor::RemoveProcessor(OzTaskProcessor*)
{
  LumThreads* const thread = LumThreads::GetCurrentThread();
  OzCriticalDkbRegion const region;
  processor_map.remove(thread);
}

void OzTaskProcessor::RecordProcessorLocal(OzReleaseTaskProcessorLocal* local)
{
  locals_.append(local);
}

void OzTaskProcessor::ReleaseProcessorLocals()
{
  for (std::uint64_t i = 0; i < locals_.size(); ++i)
  {
    if (locals_[i] != nullptr)
      locals_[i]->Release(this);
  }
  locals_.resize(0, true);
}
