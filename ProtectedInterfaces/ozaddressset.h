#ifndef OZADDRESSSET_H
#define OZADDRESSSET_H

#include "ozexport.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>

/// A set of addresses, walked in ascending order of the addresses as unsigned numbers. T is a pointer type;
/// null is an address like any other.
///
/// Ownership: what the addresses point to belongs to somebody else and is never read.
/// Threads: one at a time.
/// Cost: all operations O(log n); a step of a walk O(1). Any change makes the iterators invalid: a walk
/// that changes the set goes on from `above`.
template <class T>
class OzAddressSet
{
public:
  typedef typename std::set<T, std::less<T>>::const_iterator const_iterator;

  /// False if it was there before.
  bool insert(T address) { return addresses.insert(address).second; }
  /// False if it was not there.
  bool erase(T address) { return addresses.erase(address) != 0; }
  void clear() { addresses.clear(); }

  bool contains(T address) const { return addresses.count(address) != 0; }
  std::uint64_t size() const { return addresses.size(); }
  bool empty() const { return addresses.empty(); }

  const_iterator begin() const { return addresses.begin(); }
  const_iterator end() const { return addresses.end(); }
  /// The first address above `address`, which need not be in the set itself.
  const_iterator above(T address) const { return addresses.upper_bound(address); }

private:
  std::set<T, std::less<T>> addresses;
};

/// A look-up of one address by another: each key has one value. K and V are pointer types; null is a legal
/// key and a legal value. The order of a walk means nothing.
///
/// Ownership: what keys and values point to belongs to somebody else and is never read.
/// Threads: one at a time.
/// Cost: look-up O(1) on average. Any change makes the iterators invalid.
template <class K, class V>
class OzAddressMap
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
    explicit const_iterator(typename std::map<K, V>::const_iterator position)
      : at(position)
    {
    }
    Entry operator*() const { return {at->first, at->second}; }
    const_iterator& operator++()
    {
      ++at;
      return *this;
    }
    bool operator==(const_iterator const& other) const { return at == other.at; }
    bool operator!=(const_iterator const& other) const { return at != other.at; }

  private:
    typename std::map<K, V>::const_iterator at;
  };

  /// False if the key was there before; its value stays then.
  bool insert(K key, V value) { return entries.emplace(key, value).second; }
  /// False if the key was not there.
  bool erase(K key) { return entries.erase(key) != 0; }
  void clear() { entries.clear(); }

  bool contains(K key) const { return entries.count(key) != 0; }
  /// The value of `key`; null if the key is not there.
  V value(K key) const
  {
    auto const found = entries.find(key);
    return found == entries.end() ? nullptr : found->second;
  }
  std::uint64_t size() const { return entries.size(); }
  bool empty() const { return entries.empty(); }

  const_iterator begin() const { return const_iterator(entries.begin()); }
  const_iterator end() const { return const_iterator(entries.end()); }

private:
  std::map<K, V> entries;
};

#endif
