#ifndef OZCHUNK_H
#define OZCHUNK_H

#include "ozexport.h"

#include <cstdint>

class OzJournal;

/// Many small blocks with a common lifetime, cut from large pieces of memory.
///
/// An OzChunk is the header at the start of such a piece. A block is had by moving the chunk's cursor, so it
/// costs an addition, and is never reused singly: a chunk is given up as a whole, or becomes reusable, when
/// all its blocks are free. All operations are static. The caller holds what they work on: a counter, from
/// which chunks take their numbers; `active`, the list of the chunks in use; and `spare`, that of the empty
/// ones kept for later. All three begin as 0 or null, and belong together: a chunk of one `active` list does
/// not know the blocks of another. One list may serve as both; OzChunkReinit with `keep` then leaves the
/// empty chunks in it.
///
/// Blocks follow each other without a gap: one begins at a multiple of 8 as long as all sizes in its chunk
/// are multiples of 8, and no stricter alignment is to be had.
///
/// Where the address sanitizer is on in the library's build, what is free in a chunk is out of bounds: a
/// client that writes behind its block, or into a block after OzChunkReinit with `keep`, is caught there.
///
/// Ownership: chunks belong to the lists that hold them, blocks to their chunks. The end of a list frees
/// nothing; OzChunkClear does.
/// Threads: the operations keep nothing of their own; whoever shares the lists guards them by a lock.
/// Reports: none. No memory, or an impossible size, is a null result.
/// Cost: OzChunkMalloc is an addition as long as the first chunk of `active` has room, else a walk over the
/// list. OzChunkFree walks the list to the block's chunk, so a list of many chunks makes it dear:
/// choose `min_size` large, or give all up at once by OzChunkReinit.
struct OZ_EXPORT OzChunk
{
  /// A new chunk with room for a block of `size` and a little more, of at least `min_size` bytes altogether.
  /// Null, with `counter` unchanged, if there is no memory for it. It belongs to the caller, who puts it on a
  /// list. A `journal` is told about it; null is none, here and below.
  static OzChunk* get_chunk(std::uint64_t& counter, std::uint64_t size, std::uint64_t min_size,
                            OzJournal* journal);

  /// A block of `size` bytes from the first chunk of `active` that has room; else from a chunk of `spare`;
  /// else from a new one of at least `min_size` bytes. Chunks that have no room are marked `full` on the
  /// way, for good, and still asked for smaller blocks. Null if there is no memory; a request that no chunk
  /// can ever hold changes nothing then. A block of 0 bytes has the address of the next one.
  static void* OzChunkMalloc(std::uint64_t& counter, OzChunk*& active, OzChunk*& spare,
                             std::uint64_t min_size, std::uint64_t size, OzJournal* journal)
  {
    OzChunk* const chunk = active;
    if (!guarded_ && journal == nullptr && chunk != nullptr && chunk->has_room(size))
      return chunk->cut(size);
    return search_and_cut(counter, active, spare, min_size, size, journal);
  }

  /// Gives a block back, each once. A chunk that is marked `full` leaves `active` with its last block: with
  /// `keep` true to the head of `spare`, else its memory is freed. A chunk that never was full stays. A
  /// `block` in none of the chunks counts as one of malloc's and goes to free, unless `active` is null; then,
  /// and if `block` is null, nothing happens.
  static void OzChunkFree(OzChunk*& active, void* block, bool keep, OzChunk*& spare, OzJournal* journal);

  /// Takes all chunks off `active`, whatever is still in use in them: with `keep` true each to the head of
  /// `spare`, so that their order turns round, else their memory is freed. All blocks are invalid then.
  static void OzChunkReinit(OzChunk*& active, OzChunk*& spare, bool keep, OzJournal* journal);

  /// Frees all chunks of a list, be it `active` or `spare`, and makes it null.
  static void OzChunkClear(OzChunk*& list, OzJournal* journal);

  char* cursor = nullptr;     // the next free byte
  char* last_block = nullptr; // what was handed out last; a record, put to no use
  char* lower = nullptr;      // the first byte behind this header
  char* upper = nullptr;      // the last byte of the chunk, which is never handed out
  OzChunk* next = nullptr;
  std::uint64_t n_alloced = 0;
  std::uint64_t n_freed = 0;
  bool full = false; // a request didn't fit: the chunk may go when all its blocks are free
  std::uint64_t nr = 0;

private:
  // The end of a block stays below the last byte.
  bool has_room(std::uint64_t size) const { return size < static_cast<std::uint64_t>(upper - cursor); }
  char* cut(std::uint64_t size)
  {
    char* const block = cursor;
    cursor = block + size;
    // Written apart: as one store of both fields it would keep the next block waiting for the cursor.
    char* volatile& apart = last_block;
    apart = block;
    ++n_alloced;
    return block;
  }
  static void* search_and_cut(std::uint64_t& counter, OzChunk*& active, OzChunk*& spare,
                              std::uint64_t min_size, std::uint64_t size, OzJournal* journal);
  static OzChunk* chunk_with_room(std::uint64_t& counter, OzChunk*& active, OzChunk*& spare,
                                  std::uint64_t min_size, std::uint64_t size, OzJournal* journal);
  static bool any_has_room(OzChunk const* list, std::uint64_t size);

  static bool const guarded_; // the library poisons what is free, so all blocks are cut by it
};

#endif
