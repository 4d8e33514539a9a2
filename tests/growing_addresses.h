#ifndef GROWING_ADDRESSES_H
#define GROWING_ADDRESSES_H

#include "ozobjdependency_p.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <new>
#include <vector>

#ifdef OZ_OBJ_DEP_PLAIN_RECORDS
#include <sanitizer/asan_interface.h>
#include <sys/mman.h>
#endif

// Makes known in which order the records of a graph lie in memory, for tests of what depends on it: each
// node and each link record lies above all those of its kind that were made before it, unless it takes the
// place of the one that was deleted last (`DELETED_RECORDS_ARE_USED_AGAIN`). This header replaces functions
// of the whole program, so it belongs into one source of a test executable.

#ifdef OZ_OBJ_DEP_PLAIN_RECORDS

namespace growing_addresses
{
// Each record is a block of its own here. Blocks of these sizes come from one arena and are never used
// again, so that a look at a deleted one is found.
constexpr bool DELETED_RECORDS_ARE_USED_AGAIN = false;
constexpr std::size_t ARENA_SIZE = std::size_t(1) << 34;

struct Arena
{
  char* begin = nullptr;
  char* next = nullptr;
};
inline Arena arena;

inline long records_in_use = 0; // and other blocks of their sizes

inline bool is_of_a_record(std::size_t size)
{
  return size == sizeof(OzObjDepLink) || size == sizeof(OzObjDepNode);
}

inline void* take(std::size_t size)
{
  if (!is_of_a_record(size))
    return std::malloc(size);
  if (arena.begin == nullptr)
  {
    void* const memory =
        mmap(nullptr, ARENA_SIZE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED)
      return nullptr;
    arena.begin = arena.next = static_cast<char*>(memory);
  }
  std::size_t const room = (size + 15) / 16 * 16 + 16;
  if (arena.next + room > arena.begin + ARENA_SIZE)
    return nullptr;
  void* const block = arena.next;
  arena.next += room;
  ++records_in_use;
  return block;
}

inline void give_back(void* block, std::size_t size)
{
  char const* const address = static_cast<char*>(block);
  if (arena.begin == nullptr || address < arena.begin || address >= arena.begin + ARENA_SIZE)
  {
    std::free(block);
    return;
  }
  --records_in_use;
  ASAN_POISON_MEMORY_REGION(block, size != 0 ? size : sizeof(OzObjDepLink));
}

inline void start_again() {}
inline bool any_order = false; // makes no difference here
} // namespace growing_addresses

void* operator new(std::size_t size)
{
  void* const block = growing_addresses::take(size);
  if (block == nullptr)
    throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept
{
  growing_addresses::give_back(block, 0);
}
void operator delete(void* block, std::size_t size) noexcept
{
  growing_addresses::give_back(block, size);
}

#else

namespace growing_addresses
{
// A graph cuts its records from pages. A page that would lie below an older one is put aside, and the next
// one is asked for.
constexpr bool DELETED_RECORDS_ARE_USED_AGAIN = true;
inline long records_in_use = 0; // not counted here

inline std::uintptr_t highest = 0;

struct Pages
{
  ~Pages() { free_all(); }
  void free_all()
  {
    for (void* page : pages)
      std::free(page);
    pages.clear();
  }
  std::vector<void*> pages;
};
inline Pages put_aside;

/// Takes pages as they come. For threads with much to record: beside the main thread, memory may be found further
/// and further down, and then no page lies above the older ones.
inline bool any_order = false;

/// Between two graphs: what counts as older is forgotten.
inline void start_again()
{
  put_aside.free_all();
  highest = 0;
}
} // namespace growing_addresses

extern "C" __attribute__((visibility("default"))) int posix_memalign(void** memory, std::size_t alignment,
                                                                     std::size_t size) noexcept
{
  using namespace growing_addresses;
  for (;;)
  {
    void* const page = memalign(alignment, size);
    if (page == nullptr)
      return 12; // ENOMEM
    if (any_order || reinterpret_cast<std::uintptr_t>(page) > highest)
    {
      highest = reinterpret_cast<std::uintptr_t>(page);
      *memory = page;
      return 0;
    }
    put_aside.pages.push_back(page);
  }
}

#endif

#endif
