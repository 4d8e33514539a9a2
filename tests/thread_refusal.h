#ifndef THREAD_REFUSAL_H
#define THREAD_REFUSAL_H

#include <atomic>
#include <cerrno>

#include <dlfcn.h>
#include <pthread.h>

// Lets a test have the platform refuse threads. Included by one source of an executable: its pthread_create
// stands before the platform's for the whole process. A sanitizer has its own in that place, and then threads
// are never refused.

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
#define THREADS_CAN_BE_REFUSED 0
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(address_sanitizer)
#define THREADS_CAN_BE_REFUSED 0
#else
#define THREADS_CAN_BE_REFUSED 1
#endif
#else
#define THREADS_CAN_BE_REFUSED 1
#endif

/// How many of the next threads are refused.
inline std::atomic<int> threads_to_refuse{0};

#if THREADS_CAN_BE_REFUSED
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     pthread_attr_t const* attributes,
                                                                     void* (*body)(void*),
                                                                     void* argument) noexcept
{
  for (int left = threads_to_refuse; left > 0;)
  {
    if (threads_to_refuse.compare_exchange_weak(left, left - 1))
      return EAGAIN;
  }
  static auto* const platforms =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return platforms(thread, attributes, body, argument);
}
#define SKIP_UNLESS_THREADS_CAN_BE_REFUSED() static_cast<void>(0)
#else
#define SKIP_UNLESS_THREADS_CAN_BE_REFUSED() GTEST_SKIP() << "a sanitizer starts the threads"
#endif

#endif
