#ifndef MEMORY_REFUSAL_H
#define MEMORY_REFUSAL_H

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include <dlfcn.h>

// Lets a test run out of memory. Included by one source of an executable: its malloc and its posix_memalign
// stand before the platform's for the whole process. A sanitizer has its own in that place, and so has a
// memory checker that runs the program; then memory is never refused.

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
#define MEMORY_CAN_BE_REFUSED 0
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(address_sanitizer)
#define MEMORY_CAN_BE_REFUSED 0
#else
#define MEMORY_CAN_BE_REFUSED 1
#endif
#else
#define MEMORY_CAN_BE_REFUSED 1
#endif

/// While it lives, the first `n` requests for memory are met and all others are refused, whoever makes them.
/// Requests that go to calloc or realloc are always met.
class MemoryRefusal
{
public:
  explicit MemoryRefusal(int n) { requests_to_meet = n; }
  ~MemoryRefusal() { requests_to_meet = -1; }
  MemoryRefusal(MemoryRefusal const&) = delete;
  MemoryRefusal& operator=(MemoryRefusal const&) = delete;

  /// Whether the next request is to be met.
  static bool meets()
  {
    if (requests_to_meet < 0)
      return true;
    return requests_to_meet > 0 && requests_to_meet-- > 0;
  }

private:
  static inline std::atomic<int> requests_to_meet{-1};
};

#if MEMORY_CAN_BE_REFUSED
extern "C" __attribute__((visibility("default"))) void* malloc(std::size_t bytes) noexcept
{
  static auto* const platforms = reinterpret_cast<decltype(&malloc)>(dlsym(RTLD_NEXT, "malloc"));
  return MemoryRefusal::meets() ? platforms(bytes) : nullptr;
}
extern "C" __attribute__((visibility("default"))) int posix_memalign(void** memory, std::size_t alignment,
                                                                     std::size_t bytes) noexcept
{
  static auto* const platforms =
      reinterpret_cast<decltype(&posix_memalign)>(dlsym(RTLD_NEXT, "posix_memalign"));
  return MemoryRefusal::meets() ? platforms(memory, alignment, bytes) : ENOMEM;
}
#endif

inline bool memory_can_be_refused()
{
#if MEMORY_CAN_BE_REFUSED
  void* (*volatile const take)(std::size_t) = &std::malloc; // a request that the compiler cannot leave out
  void* memory;
  {
    MemoryRefusal const refusal(0);
    memory = take(1);
  }
  std::free(memory);
  return memory == nullptr;
#else
  return false;
#endif
}

#define SKIP_UNLESS_MEMORY_CAN_BE_REFUSED()                                                                  \
  if (!memory_can_be_refused())                                                                              \
  GTEST_SKIP() << "memory comes from elsewhere"

#endif
