#include "ozaddressset.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace
{
// A leaf of 1 KiB: a change moves at most that much, and a directory of a million addresses is small.
constexpr std::uint32_t LEAF_SIZE = 128;

// Up to here the entries of a map are listed and searched one by one.
constexpr std::uint32_t LIST_SIZE = 8;

// Two addresses and the numbers before them fill a small block of malloc's; so do 4, 8, 16.
constexpr std::uint32_t SMALLEST_BLOCK = 2;

void* allocate(std::size_t bytes)
{
  void* const block = std::malloc(bytes);
  if (block == nullptr)
    throw std::bad_alloc();
  return block;
}
} // namespace

/// Sorted addresses in one block, which begin behind this head.
struct OzAddressSetBase::Leaf
{
  std::uint32_t size;
  std::uint32_t capacity;

  static Leaf* make(std::uint32_t capacity)
  {
    return ::new (allocate(sizeof(Leaf) + capacity * sizeof(Address))) Leaf{0, capacity};
  }

  Address* begin() { return reinterpret_cast<Address*>(this + 1); }
  Address* end() { return begin() + size; }

  std::uint32_t lower_bound(Address address)
  {
    // Blocks fill in ascending order more often than not.
    if (size != 0 && begin()[size - 1] < address)
      return size;
    return static_cast<std::uint32_t>(std::lower_bound(begin(), end(), address) - begin());
  }
  bool has(std::uint32_t index, Address address) { return index < size && begin()[index] == address; }

  void insert(std::uint32_t index, Address address)
  {
    std::memmove(begin() + index + 1, begin() + index, (size - index) * sizeof(Address));
    begin()[index] = address;
    ++size;
  }
  void erase(std::uint32_t index)
  {
    --size;
    std::memmove(begin() + index, begin() + index + 1, (size - index) * sizeof(Address));
  }
  void append(Address const* from, std::uint32_t count)
  {
    std::memcpy(begin() + size, from, count * sizeof(Address));
    size += count;
  }
};

/// A row of leaves, each of which has room for LEAF_SIZE addresses and holds at least one. The branches
/// begin behind this head.
struct OzAddressSetBase::Directory
{
  std::uint64_t size; // of all leaves
  std::uint32_t count;
  std::uint32_t capacity;

  static Directory* make(std::uint32_t capacity)
  {
    return ::new (allocate(sizeof(Directory) + capacity * sizeof(Branch))) Directory{0, 0, capacity};
  }

  Branch* begin() { return reinterpret_cast<Branch*>(this + 1); }
  Branch* end() { return begin() + count; }

  /// The branch where `address` is, if it is anywhere.
  std::uint32_t branch_of(Address address)
  {
    Branch const* const above =
        std::upper_bound(begin() + 1, end(), address,
                         [](Address wanted, Branch const& branch) { return wanted < branch.least; });
    return static_cast<std::uint32_t>(above - begin()) - 1;
  }

  void insert(std::uint32_t index, Branch const& branch)
  {
    std::memmove(begin() + index + 1, begin() + index, (count - index) * sizeof(Branch));
    begin()[index] = branch;
    ++count;
  }
  void erase(std::uint32_t index)
  {
    --count;
    std::memmove(begin() + index, begin() + index + 1, (count - index) * sizeof(Branch));
  }
};

void OzAddressSetBase::Position::enter_next_leaf()
{
  if (next_branch == branches_end)
  {
    at = nullptr;
    return;
  }
  Leaf* const next = next_branch->leaf;
  at = next->begin();
  leaf_end = next->end();
  ++next_branch;
}

// The empty set is complete before anything is copied, and so is destroyed if memory runs out halfway.
OzAddressSetBase::OzAddressSetBase(OzAddressSetBase const& other)
  : OzAddressSetBase()
{
  // Ascending addresses fill each leaf before the next one is begun, so this is as good as a copy in bulk.
  if (!other.empty())
    for (Position position = other.first_position(); position.at != nullptr; position.advance())
      insert_address(*position.at);
}

OzAddressSetBase& OzAddressSetBase::operator=(OzAddressSetBase const& other)
{
  OzAddressSetBase copy(other);
  std::swap(content, copy.content);
  return *this;
}

std::uint64_t OzAddressSetBase::size() const
{
  if (empty())
    return 0;
  if (is_single())
    return 1;
  return has_directory() ? directory()->size : leaf()->size;
}

void OzAddressSetBase::clear()
{
  if (empty() || is_single())
  {
    content = NOTHING;
    return;
  }

  if (has_directory())
  {
    for (Branch const& branch : *directory())
      std::free(branch.leaf);
    std::free(directory());
  }
  else
  {
    std::free(leaf());
  }
  content = NOTHING;
}

bool OzAddressSetBase::insert_address(Address address)
{
  if (empty())
  {
    content = address;
    return true;
  }
  if (is_single())
  {
    if (content == address)
      return false;
    Leaf* const both = Leaf::make(SMALLEST_BLOCK);
    Address const addresses[] = {std::min(content, address), std::max(content, address)};
    both->append(addresses, 2);
    set_leaf(both);
    return true;
  }
  return has_directory() ? insert_in_directory(address) : insert_in_leaf(address);
}

bool OzAddressSetBase::insert_in_leaf(Address address)
{
  Leaf* const old = leaf();
  std::uint32_t const index = old->lower_bound(address);
  if (old->has(index, address))
    return false;

  if (old->size < old->capacity)
  {
    old->insert(index, address);
    return true;
  }

  if (old->capacity < LEAF_SIZE)
  {
    Leaf* const larger = Leaf::make(2 * old->capacity);
    larger->append(old->begin(), old->size);
    larger->insert(index, address);
    std::free(old);
    set_leaf(larger);
    return true;
  }

  Directory* const row = Directory::make(SMALLEST_BLOCK);
  row->insert(0, {0, old});
  row->size = old->size;
  set_directory(row);
  return insert_in_directory(address);
}

bool OzAddressSetBase::insert_in_directory(Address address)
{
  Directory* row = directory();
  std::uint32_t const at = row->branch_of(address);
  Leaf* const full = row->begin()[at].leaf;
  std::uint32_t const index = full->lower_bound(address);
  if (full->has(index, address))
    return false;

  if (full->size < LEAF_SIZE)
  {
    full->insert(index, address);
    ++row->size;
    return true;
  }

  if (row->count == row->capacity)
  {
    Directory* const larger = Directory::make(2 * row->capacity);
    std::memcpy(larger->begin(), row->begin(), row->count * sizeof(Branch));
    larger->size = row->size;
    larger->count = row->count;
    std::free(row);
    set_directory(larger);
    row = larger;
  }

  // At the upper end of all, a new leaf leaves the full one full: a set that is filled in ascending order
  // is then half the size. Elsewhere the full leaf is halved.
  bool const at_upper_end = at + 1 == row->count && index == LEAF_SIZE;
  std::uint32_t const kept = at_upper_end ? LEAF_SIZE : LEAF_SIZE / 2;
  Leaf* const next = Leaf::make(LEAF_SIZE);
  next->append(full->begin() + kept, LEAF_SIZE - kept);
  full->size = kept;
  if (index < kept)
    full->insert(index, address);
  else
    next->insert(index - kept, address);
  row->insert(at + 1, {*next->begin(), next});
  ++row->size;
  return true;
}

bool OzAddressSetBase::erase_address(Address address)
{
  if (empty())
    return false;
  if (is_single())
  {
    if (content != address)
      return false;
    content = NOTHING;
    return true;
  }

  std::uint32_t const branch = has_directory() ? directory()->branch_of(address) : 0;
  Leaf* const holder = has_directory() ? directory()->begin()[branch].leaf : leaf();
  std::uint32_t const index = holder->lower_bound(address);
  if (!holder->has(index, address))
    return false;

  if (has_directory())
    erase_in_directory(branch, index);
  else
    erase_in_leaf(index);
  return true;
}

void OzAddressSetBase::erase_in_leaf(std::uint32_t index)
{
  Leaf* const old = leaf();
  old->erase(index);
  if (old->size == 1)
  {
    content = *old->begin();
    std::free(old);
  }
}

void OzAddressSetBase::erase_in_directory(std::uint32_t branch, std::uint32_t index)
{
  Directory* const row = directory();
  Leaf* const thin = row->begin()[branch].leaf;
  thin->erase(index);
  --row->size;
  if (thin->size > LEAF_SIZE / 4)
    return;

  if (row->count > 1)
  {
    // A thin leaf joins a neighbour if both together leave half of it free, so that the next few
    // insertions don't halve it again; an empty one joins in any case.
    std::uint32_t const lower = branch == 0 ? 0 : branch - 1;
    Leaf* const first = row->begin()[lower].leaf;
    Leaf* const second = row->begin()[lower + 1].leaf;
    if (first->size + second->size > LEAF_SIZE / 2 && thin->size != 0)
      return;
    first->append(second->begin(), second->size);
    std::free(second);
    row->erase(lower + 1);
  }

  if (row->count == 1)
  {
    set_leaf(row->begin()->leaf);
    std::free(row);
  }
}

bool OzAddressSetBase::contains_address(Address address) const
{
  if (is_single())
    return content == address;
  if (empty())
    return false;

  Leaf* const holder = has_directory() ? directory()->begin()[directory()->branch_of(address)].leaf : leaf();
  return holder->has(holder->lower_bound(address), address);
}

OzAddressSetBase::Position OzAddressSetBase::first_position_on_heap() const
{
  if (empty())
    return {};
  if (!has_directory())
    return {leaf()->begin(), leaf()->end(), nullptr, nullptr};

  Leaf* const first = directory()->begin()->leaf;
  return {first->begin(), first->end(), directory()->begin() + 1, directory()->end()};
}

OzAddressSetBase::Position OzAddressSetBase::position_above(Address address) const
{
  if (empty() || is_single())
    return is_single() && content > address ? first_position() : Position{};

  Position position;
  Leaf* holder = nullptr;
  if (has_directory())
  {
    std::uint32_t const branch = directory()->branch_of(address);
    holder = directory()->begin()[branch].leaf;
    position.next_branch = directory()->begin() + branch + 1;
    position.branches_end = directory()->end();
  }
  else
  {
    holder = leaf();
  }
  position.at = std::upper_bound(holder->begin(), holder->end(), address);
  position.leaf_end = holder->end();
  if (position.at == position.leaf_end)
    position.enter_next_leaf();
  return position;
}

/// The entries begin behind this head, in the order in which they came, so that a walk over objects that
/// were made one after the other reads memory in order. Up to LIST_SIZE they are searched one by one. A
/// larger table leaves a quarter of its capacity free; behind the entries stands an index of as many places
/// as the capacity, in which a key's search begins at its home and ends at the first free place.
struct OzAddressMapBase::Table
{
  std::uint32_t size;     // without erased entries
  std::uint32_t used;     // with them; in a list there are none
  std::uint64_t capacity; // a power of 2

  static constexpr std::uint32_t FREE = ~std::uint32_t(0);

  static std::uint64_t room(std::uint64_t capacity)
  {
    return capacity > LIST_SIZE ? capacity - capacity / 4 : capacity;
  }
  static std::size_t bytes(std::uint64_t capacity)
  {
    std::size_t const index_bytes = capacity > LIST_SIZE ? capacity * sizeof(std::uint32_t) : 0;
    return sizeof(Table) + room(capacity) * sizeof(Entry) + index_bytes;
  }
  static Table* make(std::uint64_t capacity)
  {
    Table* const made = ::new (allocate(bytes(capacity))) Table{0, 0, capacity};
    if (made->is_hashed())
      std::fill(made->index(), made->index() + capacity, FREE);
    return made;
  }

  bool is_hashed() const { return capacity > LIST_SIZE; }
  bool is_full() const { return used == room(capacity); }
  Entry* begin() { return reinterpret_cast<Entry*>(this + 1); }
  Entry* end() { return begin() + used; }
  std::uint32_t* index() { return reinterpret_cast<std::uint32_t*>(begin() + room(capacity)); }
  std::uint64_t mask() const { return capacity - 1; }

  /// Multiplication by the golden section spreads objects that lie side by side over the whole index.
  static std::uint64_t hash(Address key) { return (key >> 3) * 0x9E3779B97F4A7C15u; }
  std::uint64_t home(std::uint64_t hash) const { return hash >> (64 - __builtin_ctzll(capacity)); }
  /// What the index says of an entry: where it is, and in the bits that are left, some of its hash. So a
  /// search seldom reads an entry in vain.
  std::uint32_t tag(std::uint64_t hash) const
  {
    return static_cast<std::uint32_t>(hash >> 8) & ~static_cast<std::uint32_t>(mask());
  }
  Entry& entry_of(std::uint32_t place) { return begin()[place & mask()]; }

  /// Where the index says `key` is; a free place if it is not there.
  std::uint64_t place_of(Address key)
  {
    std::uint64_t const key_hash = hash(key);
    std::uint32_t const key_tag = tag(key_hash);
    std::uint64_t place = home(key_hash);
    for (;; place = (place + 1) & mask())
    {
      std::uint32_t const found = index()[place];
      if (found == FREE || ((found & ~mask()) == key_tag && entry_of(found).key == key))
        return place;
    }
  }

  Entry* find(Address key)
  {
    if (is_hashed())
    {
      std::uint32_t const found = index()[place_of(key)];
      return found == FREE ? nullptr : &entry_of(found);
    }
    Entry* const found = std::find_if(begin(), end(), [key](Entry const& entry) { return entry.key == key; });
    return found == end() ? nullptr : found;
  }

  /// False if the key is there; otherwise there must be room.
  bool insert(Entry const& entry)
  {
    if (is_hashed())
    {
      std::uint32_t& place = index()[place_of(entry.key)];
      if (place != FREE)
        return false;
      place = used | tag(hash(entry.key));
    }
    else if (find(entry.key) != nullptr)
    {
      return false;
    }
    begin()[used] = entry;
    ++used;
    ++size;
    return true;
  }

  bool erase(Address key)
  {
    Entry* const entry = find(key);
    if (entry == nullptr)
      return false;
    --size;
    if (!is_hashed())
    {
      --used;
      *entry = begin()[used];
      return true;
    }

    // Its place in the index stays taken, since searches pass over it, until the next table is made.
    entry->key = NOTHING;
    return true;
  }
};

OzAddressMapBase::OzAddressMapBase(OzAddressMapBase const& other)
  : content(other.content)
{
  if (content.key != TABLE)
    return;

  std::size_t const bytes = Table::bytes(other.table()->capacity);
  content = {NOTHING, 0};
  void* const block = allocate(bytes);
  std::memcpy(block, other.table(), bytes);
  content = {TABLE, reinterpret_cast<Address>(block)};
}

OzAddressMapBase& OzAddressMapBase::operator=(OzAddressMapBase const& other)
{
  OzAddressMapBase copy(other);
  std::swap(content, copy.content);
  return *this;
}

std::uint64_t OzAddressMapBase::size() const
{
  return content.key == TABLE ? table()->size : content.key == NOTHING ? 0 : 1;
}

void OzAddressMapBase::clear()
{
  if (content.key == TABLE)
    std::free(table());
  content = {NOTHING, 0};
}

bool OzAddressMapBase::insert_entry(Address key, Address value)
{
  if (empty())
  {
    content = {key, value};
    return true;
  }
  if (content.key != TABLE || table()->is_full())
  {
    if (find(key) != nullptr)
      return false;
    grow();
  }
  return table()->insert({key, value});
}

/// Moves to a table with room for another entry, without those that were erased.
void OzAddressMapBase::grow()
{
  std::uint64_t capacity = SMALLEST_BLOCK;
  if (content.key == TABLE)
    // If half of the room goes back to erased entries, that is enough.
    capacity = table()->size > table()->used / 2 ? 2 * table()->capacity : table()->capacity;

  Table* const larger = Table::make(capacity);
  Position const last = last_position();
  for (Position position = first_position(); position.at != last.at; position.advance())
    larger->insert(*position.at);
  clear();
  content = {TABLE, reinterpret_cast<Address>(larger)};
}

bool OzAddressMapBase::erase_key(Address key)
{
  if (content.key != TABLE)
  {
    if (content.key != key)
      return false;
    content = {NOTHING, 0};
    return true;
  }

  if (!table()->erase(key))
    return false;
  if (table()->size == 0)
    clear();
  return true;
}

OzAddressMapBase::Entry const* OzAddressMapBase::find_in_table(Address key) const
{
  return table()->find(key);
}

OzAddressMapBase::Position OzAddressMapBase::first_position() const
{
  Position const last = last_position();
  if (content.key != TABLE)
    return {&content, last.end};

  Position first = {table()->begin(), last.end};
  first.skip_free();
  return first;
}

OzAddressMapBase::Position OzAddressMapBase::last_position() const
{
  Entry const* const end = content.key == TABLE ? table()->end() : &content + (empty() ? 0 : 1);
  return {end, end};
}
