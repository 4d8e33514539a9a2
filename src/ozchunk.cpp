#include "ozchunk.h"

#include "ozjournal.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <new>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OZ_CHUNK_GUARDS 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define OZ_CHUNK_GUARDS 1
#endif
#ifndef OZ_CHUNK_GUARDS
#define OZ_CHUNK_GUARDS 0
#endif
#if OZ_CHUNK_GUARDS
// The sanitizer's own interface, as its header declares it.
extern "C" void __asan_poison_memory_region(void const volatile* from, std::size_t bytes);
extern "C" void __asan_unpoison_memory_region(void const volatile* from, std::size_t bytes);
#endif

namespace
{
// Chunks and what is cut from them begin at multiples of this.
constexpr std::uint64_t UNIT = 8;
// What a chunk has beyond the request that it is made for, its header included.
constexpr std::uint64_t HEADROOM = 1000;

constexpr std::uint64_t rounded_up(std::uint64_t bytes)
{
  return (bytes + UNIT - 1) / UNIT * UNIT;
}

constexpr std::uint64_t HEADER = rounded_up(sizeof(OzChunk));
static_assert(HEADER + 1 < HEADROOM, "a new chunk holds the request that it is made for");

// The bytes of a chunk for a request; 0 if there can't be such a chunk.
std::uint64_t chunk_size(std::uint64_t size, std::uint64_t min_size)
{
  constexpr std::uint64_t most = PTRDIFF_MAX - UNIT;
  if (size > most - HEADROOM || min_size > most)
    return 0;
  return rounded_up(std::max(size + HEADROOM, min_size));
}

// Makes memory out of bounds for everybody, or usable again, as far as the address sanitizer is on.
void guard([[maybe_unused]] char const* from, [[maybe_unused]] std::uint64_t bytes)
{
#if OZ_CHUNK_GUARDS
  __asan_poison_memory_region(from, bytes);
#endif
}

void unguard([[maybe_unused]] char const* from, [[maybe_unused]] std::uint64_t bytes)
{
#if OZ_CHUNK_GUARDS
  __asan_unpoison_memory_region(from, bytes);
#endif
}

std::uint64_t bytes_behind_header(OzChunk const& chunk)
{
  return static_cast<std::uint64_t>(chunk.upper - chunk.lower) + 1;
}

bool holds(OzChunk const& chunk, void const* block)
{
  std::less_equal<void const*> const up_to{};
  return up_to(chunk.lower, block) && up_to(block, chunk.upper);
}

OzChunk* taken_off(OzChunk*& list)
{
  OzChunk* const chunk = list;
  list = chunk->next;
  return chunk;
}

void put_on(OzChunk*& list, OzChunk* chunk)
{
  chunk->next = list;
  list = chunk;
}

void make_empty(OzChunk& chunk)
{
  chunk.cursor = chunk.lower;
  chunk.n_alloced = 0;
  chunk.n_freed = 0;
  chunk.full = false;
  guard(chunk.lower, bytes_behind_header(chunk));
}

void free_chunk(OzChunk* chunk, OzJournal* journal)
{
  if (journal != nullptr)
    *journal << "Freeing chunk " << chunk->nr << "at " << static_cast<void const*>(chunk) << ozEndExpr;
  unguard(chunk->lower, bytes_behind_header(*chunk));
  std::free(chunk);
}

// `chunk` has left its list.
void retire(OzChunk* chunk, bool keep, OzChunk*& spare, OzJournal* journal)
{
  if (!keep)
  {
    free_chunk(chunk, journal);
    return;
  }
  make_empty(*chunk);
  put_on(spare, chunk);
}

void trace_block(OzChunk const& chunk, char const* block, std::uint64_t size, OzJournal& journal)
{
  journal << "Alloced " << size << "bytes (chunk " << chunk.nr << ") at " << static_cast<void const*>(block)
          << ozEndExpr;
}
} // namespace

// The texts of the trace stand as they are, missing blanks included.
OzChunk* OzChunk::get_chunk(std::uint64_t& counter, std::uint64_t size, std::uint64_t min_size,
                            OzJournal* journal)
{
  std::uint64_t const total = chunk_size(size, min_size);
  void* const memory = total == 0 ? nullptr : std::malloc(total);
  if (memory == nullptr)
    return nullptr;

  OzChunk* const chunk = ::new (memory) OzChunk;
  chunk->lower = static_cast<char*>(memory) + HEADER;
  chunk->upper = static_cast<char*>(memory) + (total - 1);
  chunk->nr = counter++;
  make_empty(*chunk);
  if (journal != nullptr)
  {
    *journal << "Alloced chunk of" << total << "bytes at " << static_cast<void const*>(memory) << ozEndExpr;
    *journal << "Header: nr=" << chunk->nr << " lower=" << static_cast<void const*>(chunk->lower)
             << ", upper=" << static_cast<void const*>(chunk->upper) << ozEndExpr;
  }
  return chunk;
}

bool const OzChunk::guarded_ = OZ_CHUNK_GUARDS;

bool OzChunk::any_has_room(OzChunk const* list, std::uint64_t size)
{
  for (; list != nullptr; list = list->next)
    if (list->has_room(size))
      return true;
  return false;
}

// The chunk that serves a request for which the first of `active` has no room; null if there is none.
OzChunk* OzChunk::chunk_with_room(std::uint64_t& counter, OzChunk*& active, OzChunk*& spare,
                                  std::uint64_t min_size, std::uint64_t size, OzJournal* journal)
{
  if (chunk_size(size, min_size) == 0 && !any_has_room(active, size) && !any_has_room(spare, size))
    return nullptr;

  for (OzChunk* chunk = active; chunk != nullptr; chunk = chunk->next)
  {
    if (chunk->has_room(size))
      return chunk;
    chunk->full = true;
  }

  // Those behind the new head have no room, so each turn only asks the head.
  for (;;)
  {
    // Where one list serves as both, its chunks have been asked already.
    bool const has_spare = spare != nullptr && &spare != &active;
    OzChunk* const chunk = has_spare ? taken_off(spare) : get_chunk(counter, size, min_size, journal);
    if (chunk == nullptr)
      return nullptr;
    put_on(active, chunk);
    if (chunk->has_room(size))
      return chunk;
    chunk->full = true;
  }
}

void* OzChunk::search_and_cut(std::uint64_t& counter, OzChunk*& active, OzChunk*& spare,
                              std::uint64_t min_size, std::uint64_t size, OzJournal* journal)
{
  OzChunk* const chunk = chunk_with_room(counter, active, spare, min_size, size, journal);
  if (chunk == nullptr)
    return nullptr;

  unguard(chunk->cursor, size);
  if (journal != nullptr)
    trace_block(*chunk, chunk->cursor, size, *journal);
  return chunk->cut(size);
}

void OzChunk::OzChunkFree(OzChunk*& active, void* block, bool keep, OzChunk*& spare, OzJournal* journal)
{
  if (block == nullptr || active == nullptr)
    return;

  OzChunk** link = &active;
  while (*link != nullptr && !holds(**link, block))
    link = &(*link)->next;
  OzChunk* const chunk = *link;
  if (chunk == nullptr)
  {
    if (journal != nullptr)
      *journal << "Freeing not chunked malloced blockat " << static_cast<void const*>(block) << ozEndExpr;
    std::free(block);
    return;
  }

  if (journal != nullptr)
    *journal << "Freeing malloced block (chunk " << chunk->nr << ")at " << static_cast<void const*>(block)
             << ozEndExpr;
  ++chunk->n_freed;
  if (!chunk->full || chunk->n_alloced != chunk->n_freed)
    return;

  retire(taken_off(*link), keep, spare, journal);
}

void OzChunk::OzChunkReinit(OzChunk*& active, OzChunk*& spare, bool keep, OzJournal* journal)
{
  // `spare` may be the same list.
  OzChunk* rest = active;
  active = nullptr;
  while (rest != nullptr)
    retire(taken_off(rest), keep, spare, journal);
}

void OzChunk::OzChunkClear(OzChunk*& list, OzJournal* journal)
{
  while (list != nullptr)
    free_chunk(taken_off(list), journal);
}
