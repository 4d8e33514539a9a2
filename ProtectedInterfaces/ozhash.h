#ifndef OZHASH_H
#define OZHASH_H

#include "ozarray.h"
#include "ozexport.h"
#include "ozlinklist.h"
#include "ozlist.h"
#include "ozpriqueue.h"

#include <cstdint>

class OzString;

/// What a hash table holds: a link that carries a key, and whatever belongs to it. Equal nodes have equal hash
/// values; and while a node is in a table, its key stays as it is.
class OZ_EXPORT OzHashTableNode : public OzLink
{
public:
  OzHashTableNode() = default;
  /// A node that is in no chain, wherever `other` is.
  OzHashTableNode(OzHashTableNode const& other) = default;
  OzHashTableNode& operator=(OzHashTableNode const& other) = default;
  ~OzHashTableNode() override;

  /// Is the key of `query` the key of this node? A table asks its own nodes about the query, so a query may be
  /// of another class.
  virtual bool equal(OzHashTableNode const* query) const = 0;
  /// A new node of the same type and content, in no chain, which the caller owns.
  virtual OzHashTableNode* clone() const = 0;
};

/// A hash table with chains. Only for derivation: the derived class says what the hash value of a node is, and
/// makes its own interface of the operations below.
///
/// The table is a multimap. Any number of equal nodes may be in it; a derived class that wants keys to be
/// unique looks first. The newest node of a cell comes first. The number of cells is fixed from
/// construction until an assignment replaces it, and chains grow as nodes come in. A cell is the hash value
/// modulo the number of cells, with no mixing, so hash values should differ in what that number leaves over.
///
/// Ownership: the table owns its nodes, and a copy clones them, chain by chain in the same order, without
/// asking for a hash value. A node that is spliced out is the caller's.
/// Threads: one writer or any number of readers.
/// Reports: `next_node` of null.
/// Failure: without memory std::bad_alloc, also for a negative number of cells. A clone that throws while
/// tables are assigned leaves the target as it was.
/// Cost: a node has its links inside, so inserting and finding allocate nothing. Chain lengths are counted
/// when asked for. No operation recurses, whatever the length of a chain.
class OZ_EXPORT OzHashTable
{
public:
  /// The number of cells where none is given.
  static constexpr int DEFAULT_SIZE = 100;

  OzHashTable();
  /// A table of `n` cells. One of none can be built, copied and asked for its statistics, but whatever hashes
  /// divides by 0 in it.
  explicit OzHashTable(int n);
  /// As many cells as `other` has. The hash function of the derived class is not there yet, and not asked.
  OzHashTable(OzHashTable const& other);
  virtual ~OzHashTable();

protected:
  OzHashTable& operator=(OzHashTable const& other);

  virtual std::uint32_t hash_value(OzHashTableNode const* node) const = 0;

  /// The cell of a node, which need not be in the table.
  int find_index(OzHashTableNode const* node) const;

  /// Puts a node in front of its chain. True if its cell was empty.
  bool insert_node(OzHashTableNode* node);

  /// The newest node that is equal to `query`, or null.
  OzHashTableNode* find_node(OzHashTableNode const* query) const;
  /// The number of nodes that are equal to `query`. They are appended to `list`, which may be null, newest
  /// first.
  int find_node(OzHashTableNode const* query, OzList<OzHashTableNode*>* list) const;

  /// Takes a node out and leaves it free; it is the caller's from now on. Null is ignored.
  void splice_node(OzHashTableNode* node);

  /// Deletes a node and all that stands behind and before it. Null is ignored. No cell is looked at: the one
  /// whose chain it was, if any, has to be emptied first.
  void remove_chain(OzHashTableNode* node);

  /// Deletes all nodes. The cells stay.
  void remove_all_elements();

  /// The first node of the table, and its cell. Null, and the number of cells, if there is none.
  OzHashTableNode* first_node(int& cell) const;
  /// The node that comes after `node`, which is in `cell`: cell by cell, and in each from the newest node to
  /// the oldest. Null at the end, and the number of cells. A null `node` is reported, and the result null.
  OzHashTableNode* next_node(OzHashTableNode* node, int& cell) const;

  /// The length of the shortest chain, which is 0 if a cell is empty.
  int best_case() const;
  /// The length of the longest chain.
  int worst_cast() const;
  /// Adds each cell to `queue`, with the length of its chain as the priority, and builds the heap. The
  /// direction of the queue decides whether the longest or the shortest chains come first.
  void get_cell_distribution(OzPriQueue<int, int>& queue) const;

  OzArray<OzHashTableNode*> cells; // the first node of each chain, or null; owned
};

/// A hash function for keys of type T, as derived tables may hold one.
template <class T>
class OZ_EXPORT OzHashMapFunctor
{
public:
  OzHashMapFunctor() = default;
  OzHashMapFunctor(OzHashMapFunctor const&) = default;
  OzHashMapFunctor& operator=(OzHashMapFunctor const&) = default;
  virtual ~OzHashMapFunctor() = default;

  virtual std::uint32_t hash_function(T const& value) const = 0;
  /// A new functor of the same type and content, which the caller owns.
  virtual OzHashMapFunctor* clone() const = 0;
};

/// The whole part of |value * factor|, of which the low 32 bits count. From 2^63 on the result is 0.
class OZ_EXPORT OzStdIntHashFunctor : public OzHashMapFunctor<int>
{
public:
  explicit OzStdIntHashFunctor(double multiplier = 1.0);
  ~OzStdIntHashFunctor() override;

  std::uint32_t hash_function(int const& value) const override;
  OzHashMapFunctor<int>* clone() const override;

protected:
  double factor;
};

/// The same for 64-bit numbers, which are rounded to `double` first: neighbours beyond 2^53 may share a value.
class OZ_EXPORT OzStdPtrdiffHashFunctor : public OzHashMapFunctor<std::int64_t>
{
public:
  explicit OzStdPtrdiffHashFunctor(double multiplier = 1.0);
  ~OzStdPtrdiffHashFunctor() override;

  std::uint32_t hash_function(std::int64_t const& value) const override;
  OzHashMapFunctor<std::int64_t>* clone() const override;

protected:
  double factor;
};

/// The low 32 bits of the whole part of |value * factor|, multiplied by the factor once more, of which the low
/// 32 bits of the whole part count. Values of 2^63 and more, and those that are not numbers, count as 0 in
/// either step. With the factor 1.0 all values between two whole numbers share a hash value.
class OZ_EXPORT OzStdDoubleHashFunctor : public OzHashMapFunctor<double>
{
public:
  explicit OzStdDoubleHashFunctor(double multiplier = 1.0);
  ~OzStdDoubleHashFunctor() override;

  std::uint32_t hash_function(double const& value) const override;
  OzHashMapFunctor<double>* clone() const override;

protected:
  double factor;
};

/// The sum of the first `n_chars` characters of a text, or of all if it is shorter, each as a signed byte. 0 if
/// `n_chars` is negative. Texts that begin alike, or with the same characters in another order, share a value.
class OZ_EXPORT OzStdStringHashFunctor : public OzHashMapFunctor<OzString>
{
public:
  explicit OzStdStringHashFunctor(int count = 3);
  ~OzStdStringHashFunctor() override;

  std::uint32_t hash_function(OzString const& value) const override;
  OzHashMapFunctor<OzString>* clone() const override;

protected:
  int n_chars;
};

#endif
