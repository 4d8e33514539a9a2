#ifndef OZADDRESSSET_H
#define OZADDRESSSET_H

#include "ozexport.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

/// What is common to the sets of addresses, whatever these point to. See OzAddressSet.
///
/// Most sets in a graph hold one address, and a few hold very many. So a set is one word: it has its only
/// address in itself; several stand in a sorted block on the heap; and when that is full, in a row of
/// sorted blocks behind a directory, so that no change moves more than one block and, now and then, part
/// of the directory.
class OZ_EXPORT OzAddressSetBase
{
public:
  std::uint64_t size() const;
  bool empty() const { return content == NOTHING; }
  void clear();

protected:
  typedef std::uintptr_t Address;

  struct Leaf;
  struct Directory;

  /// A leaf of a directory. All its addresses are `least` or above, and below the next leaf's `least`.
  struct Branch
  {
    Address least; // 0 in the first branch
    Leaf* leaf;
  };

  /// A position in a walk; at the end `at` is null.
  struct Position
  {
    Address const* at = nullptr;
    Address const* leaf_end = nullptr;
    Branch const* next_branch = nullptr;
    Branch const* branches_end = nullptr;

    void advance()
    {
      ++at;
      if (at == leaf_end)
        enter_next_leaf();
    }
    void enter_next_leaf();
  };

  OzAddressSetBase() = default;
  OzAddressSetBase(OzAddressSetBase const& other);
  OzAddressSetBase& operator=(OzAddressSetBase const& other);
  ~OzAddressSetBase() { clear(); }

  void swap_with(OzAddressSetBase& other) noexcept { std::swap(content, other.content); }
  bool insert_address(Address address);
  bool erase_address(Address address);
  bool contains_address(Address address) const;
  Position first_position() const
  {
    return is_single() ? Position{&content, &content + 1, nullptr, nullptr} : first_position_on_heap();
  }
  Position position_above(Address address) const;

private:
  // The kind of content shows in its two lowest bits, which are 0 in an address.
  static constexpr Address NOTHING = 1;
  static constexpr Address LEAF = 1;
  static constexpr Address DIRECTORY = 3;
  static constexpr Address KIND = 3;

  bool is_single() const { return (content & KIND) == 0; }
  bool has_directory() const { return (content & KIND) == DIRECTORY; }
  Leaf* leaf() const { return reinterpret_cast<Leaf*>(content - LEAF); }
  Directory* directory() const { return reinterpret_cast<Directory*>(content - DIRECTORY); }
  void set_leaf(Leaf* leaf_to_have) { content = reinterpret_cast<Address>(leaf_to_have) + LEAF; }
  void set_directory(Directory* directory_to_have)
  {
    content = reinterpret_cast<Address>(directory_to_have) + DIRECTORY;
  }

  Position first_position_on_heap() const;
  bool insert_in_leaf(Address address);
  bool insert_in_directory(Address address);
  void erase_in_leaf(std::uint32_t index);
  void erase_in_directory(std::uint32_t branch, std::uint32_t index);

  Address content = NOTHING;
};

/// A set of addresses, walked in ascending order of the addresses as unsigned numbers. T is a pointer to
/// things at multiples of 4; null is an address like any other.
///
/// Ownership: what the addresses point to belongs to somebody else and is never read.
/// Threads: one at a time.
/// Failure: std::bad_alloc, with the set as it was.
/// Cost: 8 bytes for a set of one address; 8 to 16 more for each of several. Changes and look-ups O(log n),
/// a step of a walk O(1). Any change makes the iterators invalid: a walk that changes the set goes on from
/// `above`.
template <class T>
class OzAddressSet : public OzAddressSetBase
{
public:
  class const_iterator
  {
  public:
    typedef std::forward_iterator_tag iterator_category;
    typedef T value_type;
    typedef std::ptrdiff_t difference_type;
    typedef T const* pointer;
    typedef T reference;

    const_iterator() = default;

    T operator*() const { return reinterpret_cast<T>(*position.at); }
    const_iterator& operator++()
    {
      position.advance();
      return *this;
    }
    const_iterator operator++(int)
    {
      const_iterator const before = *this;
      position.advance();
      return before;
    }
    bool operator==(const_iterator const& other) const { return position.at == other.position.at; }
    bool operator!=(const_iterator const& other) const { return position.at != other.position.at; }

  private:
    friend class OzAddressSet;
    explicit const_iterator(Position const& position_to_have)
      : position(position_to_have)
    {
    }

    Position position;
  };

  /// False if it was there before.
  bool insert(T address) { return insert_address(reinterpret_cast<Address>(address)); }
  /// False if it was not there.
  bool erase(T address) { return erase_address(reinterpret_cast<Address>(address)); }
  bool contains(T address) const { return contains_address(reinterpret_cast<Address>(address)); }

  void swap(OzAddressSet& other) noexcept { swap_with(other); }

  const_iterator begin() const { return const_iterator(first_position()); }
  const_iterator end() const { return const_iterator(); }
  /// The first address above `address`, which need not be in the set itself.
  const_iterator above(T address) const
  {
    return const_iterator(position_above(reinterpret_cast<Address>(address)));
  }
};

/// What is common to the look-ups by address. See OzAddressMap.
///
/// The only entry of a map is in the map itself; several are listed in a block on the heap; and many are
/// found through an index of the hashes of their keys.
class OZ_EXPORT OzAddressMapBase
{
public:
  std::uint64_t size() const;
  bool empty() const { return content.key == NOTHING; }
  void clear();

protected:
  typedef std::uintptr_t Address;

  struct Entry
  {
    Address key;
    Address value;
  };

  /// A position in a walk; at the end both are the same.
  struct Position
  {
    Entry const* at;
    Entry const* end;

    void advance()
    {
      ++at;
      skip_free();
    }
    void skip_free()
    {
      while (at != end && at->key == NOTHING)
        ++at;
    }
  };

  OzAddressMapBase() = default;
  OzAddressMapBase(OzAddressMapBase const& other);
  OzAddressMapBase& operator=(OzAddressMapBase const& other);
  ~OzAddressMapBase() { clear(); }

  void swap_with(OzAddressMapBase& other) noexcept { std::swap(content, other.content); }
  bool insert_entry(Address key, Address value);
  bool erase_key(Address key);
  /// Null if the key is not there.
  Entry const* find(Address key) const
  {
    return content.key == key ? &content : content.key == TABLE ? find_in_table(key) : nullptr;
  }
  Position first_position() const;
  Position last_position() const;

private:
  struct Table;

  // No key is odd.
  static constexpr Address NOTHING = 1;
  static constexpr Address TABLE = 3;

  Table* table() const { return reinterpret_cast<Table*>(content.value); }
  Entry const* find_in_table(Address key) const;
  void grow();

  Entry content = {NOTHING, 0}; // the only entry; or, under the key TABLE, the address of the table
};

/// A look-up of one address by another: each key has one value. K and V are pointers, K to things at even
/// addresses; null is a legal key and a legal value. The order of a walk means nothing.
///
/// Ownership: what keys and values point to belongs to somebody else and is never read.
/// Threads: one at a time.
/// Failure: std::bad_alloc, with the map as it was.
/// Cost: 16 bytes for a map of one entry; 21 to 43 for each of many. Changes and look-ups O(1) on average. Any
/// change makes the iterators invalid.
template <class K, class V>
class OzAddressMap : public OzAddressMapBase
{
public:
  struct Entry
  {
    K key;
    V value;
  };

  class const_iterator
  {
  public:
    Entry operator*() const
    {
      return {reinterpret_cast<K>(position.at->key), reinterpret_cast<V>(position.at->value)};
    }
    const_iterator& operator++()
    {
      position.advance();
      return *this;
    }
    bool operator==(const_iterator const& other) const { return position.at == other.position.at; }
    bool operator!=(const_iterator const& other) const { return position.at != other.position.at; }

  private:
    friend class OzAddressMap;
    explicit const_iterator(Position const& position_to_have)
      : position(position_to_have)
    {
    }

    Position position;
  };

  /// False if the key was there before; its value stays then.
  bool insert(K key, V value)
  {
    return insert_entry(reinterpret_cast<Address>(key), reinterpret_cast<Address>(value));
  }
  /// False if the key was not there.
  bool erase(K key) { return erase_key(reinterpret_cast<Address>(key)); }

  bool contains(K key) const { return find(reinterpret_cast<Address>(key)) != nullptr; }
  /// The value of `key`; null if the key is not there.
  V value(K key) const
  {
    OzAddressMapBase::Entry const* const entry = find(reinterpret_cast<Address>(key));
    return entry != nullptr ? reinterpret_cast<V>(entry->value) : nullptr;
  }

  void swap(OzAddressMap& other) noexcept { swap_with(other); }

  const_iterator begin() const { return const_iterator(first_position()); }
  const_iterator end() const { return const_iterator(last_position()); }
};

#endif
