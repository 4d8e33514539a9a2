#ifndef OZOBJDEPENDENCY_P_H
#define OZOBJDEPENDENCY_P_H

#include "ozobjdependency.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define OZ_OBJ_DEP_PLAIN_RECORDS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OZ_OBJ_DEP_PLAIN_RECORDS 1
#endif
#endif

/// Memory for records of one size that belong to one graph.
///
/// A graph makes and deletes three records for each dependency, and asking malloc for each one would cost
/// more than all the rest. Records are cut from pages instead, one after the other, so that what was
/// recorded together lies together. A page begins at a multiple of its size: that is how a record that is
/// deleted finds its way back to the shelf it came from.
///
/// Under the address sanitizer each record is a block of its own, so that a look at a deleted one is found.
class OzObjDepShelf
{
public:
  explicit OzObjDepShelf(std::size_t size_of_a_record)
    : record_size(size_of_a_record)
  {
  }
  OzObjDepShelf(OzObjDepShelf const&) = delete;
  OzObjDepShelf& operator=(OzObjDepShelf const&) = delete;
  /// Frees all pages, whatever is still on them.
  ~OzObjDepShelf()
  {
    while (pages != nullptr)
    {
      Page* const page = pages;
      pages = page->next;
      std::free(page);
    }
  }

#ifdef OZ_OBJ_DEP_PLAIN_RECORDS
  void* take()
  {
    return ::operator new(record_size);
  }
  static void* take_alone(std::size_t size)
  {
    return ::operator new(size);
  }
  static void give_back(void* record)
  {
    ::operator delete(record);
  }
#else
  void* take()
  {
    if (given_back != nullptr)
    {
      FreeRecord* const record = given_back;
      given_back = record->next;
      return record;
    }
    if (room < record_size)
      turn_the_page();
    char* const record = fresh;
    fresh += record_size;
    room -= record_size;
    return record;
  }

  /// A record that belongs to no graph as yet: it has a page to itself.
  static void* take_alone(std::size_t)
  {
    return new_page(nullptr)->records();
  }

  /// What `take` or `take_alone` gave; null is legal.
  static void give_back(void* record)
  {
    if (record == nullptr)
      return;
    Page* const page =
        reinterpret_cast<Page*>(reinterpret_cast<std::uintptr_t>(record) & ~std::uintptr_t(PAGE_SIZE - 1));
    if (page->shelf == nullptr)
      std::free(page);
    else
      page->shelf->given_back = ::new (record) FreeRecord{page->shelf->given_back};
  }
#endif

private:
  struct FreeRecord
  {
    FreeRecord* next;
  };
  struct Page
  {
    OzObjDepShelf* shelf; // null for a page of a single record
    Page* next;

    char* records() { return reinterpret_cast<char*>(this + 1); }
  };

  static constexpr std::size_t PAGE_SIZE = 4096;
  // malloc's own head fits in the rest, so that pages lie side by side.
  static constexpr std::size_t USED_PAGE_SIZE = PAGE_SIZE - 64;

  static Page* new_page(OzObjDepShelf* shelf)
  {
    void* memory = nullptr;
    if (posix_memalign(&memory, PAGE_SIZE, USED_PAGE_SIZE) != 0)
      throw std::bad_alloc();
    return ::new (memory) Page{shelf, nullptr};
  }
  void turn_the_page()
  {
    Page* const page = new_page(this);
    page->next = pages;
    pages = page;
    fresh = page->records();
    room = USED_PAGE_SIZE - sizeof(Page);
  }

  std::size_t const record_size;
  FreeRecord* given_back = nullptr;
  char* fresh = nullptr; // where the youngest page is unused yet
  std::size_t room = 0;  // bytes from there on
  Page* pages = nullptr; // youngest first
};

/// One end's record of a dependency. The one in the source node names the target, the one in the target
/// node names the source; all else is the same in both.
struct OzObjDepLink
{
  OzObjDepLink() = default;
  OzObjDepLink(OzObjDepLink const&) = delete;
  OzObjDepLink& operator=(OzObjDepLink const&) = delete;
  ~OzObjDepLink() { delete role; }

  static void* operator new(std::size_t size) { return OzObjDepShelf::take_alone(size); }
  static void* operator new(std::size_t, OzObjDepShelf& shelf) { return shelf.take(); }
  static void operator delete(void* record) { OzObjDepShelf::give_back(record); }
  static void operator delete(void* record, OzObjDepShelf&) { OzObjDepShelf::give_back(record); }

  /// The qualifier as filters get it: null if there is none.
  int const* qualifier() const { return has_target_qualifier ? &target_qualifier : nullptr; }

  OzObjDepNode* node = nullptr; // at the other end; not owned
  OzObjectDependency::Type dependency_type = OzObjectDependency::UNSPECIFIED;
  bool has_target_qualifier = false;
  int target_qualifier = -1;              // -1 where there is none
  OzObjectDependencyRole* role = nullptr; // owned; a clone of this record's own
  int separator = 0;
};

typedef OzAddressSet<OzObjDepLink*> OzObjDepLinkSet;
typedef OzAddressMap<OzObjDepNode*, OzObjDepLink*> OzObjDepLinkMap;

/// An object and its dependencies. Each link record is in a set, which owns it and is what is walked, and
/// in the map beside it under the node at its other end, which is what is looked up.
struct OzObjDepNode
{
  explicit OzObjDepNode(OzDynObj const* object_to_stand_for)
    : object(object_to_stand_for)
  {
  }
  OzObjDepNode(OzObjDepNode const&) = delete;
  OzObjDepNode& operator=(OzObjDepNode const&) = delete;
  ~OzObjDepNode()
  {
    for (OzObjDepLink* link : target_links)
      delete link;
    for (OzObjDepLink* link : source_links)
      delete link;
  }

  static void* operator new(std::size_t size) { return OzObjDepShelf::take_alone(size); }
  static void* operator new(std::size_t, OzObjDepShelf& shelf) { return shelf.take(); }
  static void operator delete(void* record) { OzObjDepShelf::give_back(record); }
  static void operator delete(void* record, OzObjDepShelf&) { OzObjDepShelf::give_back(record); }

  void add_target_link(OzObjDepLink* link)
  {
    target_links.insert(link);
    target_link_map.insert(link->node, link);
  }
  void add_source_link(OzObjDepLink* link)
  {
    source_links.insert(link);
    source_link_map.insert(link->node, link);
  }

  OzDynObj const* object; // null for the null-object node; not owned
  OzObjDepLinkSet target_links;
  OzObjDepLinkSet source_links;
  OzObjDepLinkMap target_link_map; // from the target node
  OzObjDepLinkMap source_link_map; // from the source node
};

/// Where a graph and its copies, which share the records, have them.
struct OzObjDepRecords
{
  OzObjDepShelf links{sizeof(OzObjDepLink)};
  OzObjDepShelf nodes{sizeof(OzObjDepNode)};
};

#endif
