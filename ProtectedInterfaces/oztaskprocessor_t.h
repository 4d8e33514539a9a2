#ifndef OZTASKPROCESSOR_T_H
#define OZTASKPROCESSOR_T_H

#include "ozmutex.h"
#include "oztaskprocessor.h"

#include <memory>
#include <new>

template <class T>
OzTaskProcessorDkbLocal<T>::OzTaskProcessorDkbLocal(void (*initializer)(T*))
  : initializer_(initializer)
  , main_value_()
{
  if (initializer_ != nullptr)
    initializer_(&main_value_);
}

template <class T>
OzTaskProcessorDkbLocal<T>::~OzTaskProcessorDkbLocal() = default;

template <class T>
T* OzTaskProcessorDkbLocal<T>::Value()
{
  OzTaskProcessor* const processor = OzTaskProcessor::TaskProcessor();
  if (processor == nullptr)
    return &main_value_;

  {
    OzCriticalDkbRegion const region;
    if (values_.find(processor, nullptr) != 0)
      return values_[processor];
  }

  // Built outside the lock, which the value's constructor or the initializer may need. No other thread
  // enters a value for this processor meanwhile.
  std::unique_ptr<T> fresh(new (std::nothrow) T());
  if (fresh == nullptr)
    return nullptr;
  if (initializer_ != nullptr)
    initializer_(fresh.get());

  T* const value = fresh.get();
  processor->RecordProcessorLocal(this);
  OzCriticalDkbRegion const region;
  values_[processor] = fresh.release();
  if (values_.size() > peak_count_)
    peak_count_ = values_.size();
  return value;
}

template <class T>
void OzTaskProcessorDkbLocal<T>::Release(OzTaskProcessor* processor)
{
  std::unique_ptr<T> value; // freed after the lock is left: its destructor may need it
  OzCriticalDkbRegion const region;
  if (values_.find(processor, nullptr) == 0)
    return;

  value.reset(values_[processor]);
  values_.remove(processor);
}

#endif
