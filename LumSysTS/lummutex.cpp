#include "lummutex.h"

void LumMutex::Lock()
{
  mutex.lock();
}

void LumMutex::Unlock()
{
  mutex.unlock();
}
