#include "ozhash.h"

#include "ozassert.h"
#include "ozstring.h"

#include <algorithm>
#include <cmath>

namespace
{
OzHashTableNode* node_behind(OzHashTableNode const* node)
{
  return static_cast<OzHashTableNode*>(node->next());
}

int chain_length(OzHashTableNode const* node)
{
  int n = 0;
  for (; node != nullptr; node = node_behind(node))
    ++n;
  return n;
}

/// Unhooks `link` from its neighbours and deletes it.
void delete_link(OzLink* link)
{
  if (link->next() != nullptr)
    link->next()->set_prev(nullptr);
  if (link->prev() != nullptr)
    link->prev()->set_next(nullptr);
  link->set_next(nullptr);
  link->set_prev(nullptr);
  delete link;
}

void delete_chain(OzLink* link)
{
  if (link == nullptr)
    return;

  // A node that was put in front of itself is a ring of one.
  OzLink* behind = link->next() == link ? nullptr : link->next();
  OzLink* before = link->prev() == link ? nullptr : link->prev();
  delete_link(link);
  while (behind != nullptr)
  {
    // In a ring the way behind leads to what stood before.
    if (behind == before)
      before = nullptr;
    OzLink* const next = behind->next();
    delete_link(behind);
    behind = next;
  }
  while (before != nullptr)
  {
    OzLink* const prev = before->prev();
    delete_link(before);
    before = prev;
  }
}

/// The chains of a table that is being copied. What is in them when it ends is deleted.
class Clones
{
public:
  Clones() = default;
  ~Clones()
  {
    for (OzHashTableNode* const head : heads)
      delete_chain(head);
  }
  Clones(Clones const&) = delete;
  Clones& operator=(Clones const&) = delete;

  void copy(OzArray<OzHashTableNode*> const& originals)
  {
    heads.resize(originals.size(), true);
    for (std::uint64_t i = 0; i < originals.size(); ++i)
      copy_chain(originals[i], heads[i]);
  }
  void release_to(OzArray<OzHashTableNode*>& cells)
  {
    std::swap_ranges(heads.begin(), heads.end(), cells.begin());
  }

private:
  static void copy_chain(OzHashTableNode const* original, OzHashTableNode*& head)
  {
    if (original == nullptr)
      return;

    head = original->clone();
    OzHashTableNode* last = head;
    while ((original = node_behind(original)) != nullptr)
    {
      OzHashTableNode* const clone = original->clone();
      last->insert_next(clone);
      last = clone;
    }
  }

  OzArray<OzHashTableNode*> heads;
};

/// The whole part of `value`. What a 64-bit integer does not hold, and what is not a number, gives the most
/// negative one, whose low 32 bits are 0.
std::uint32_t low_bits_of_whole_part(double value)
{
  constexpr double limit = 9223372036854775808.0; // 2^63
  bool const fits = value > -limit && value < limit;
  return fits ? static_cast<std::uint32_t>(static_cast<std::int64_t>(value)) : 0;
}

std::uint32_t scaled(double value, double factor)
{
  return low_bits_of_whole_part(std::fabs(value * factor));
}
} // namespace

OzHashTableNode::~OzHashTableNode() = default;

OzHashTable::OzHashTable()
  : OzHashTable(DEFAULT_SIZE)
{
}

OzHashTable::OzHashTable(int n)
{
  cells.resize(static_cast<std::uint64_t>(n), true);
}

OzHashTable::OzHashTable(OzHashTable const& other)
{
  OzHashTable::operator=(other);
}

OzHashTable::~OzHashTable()
{
  remove_all_elements();
}

OzHashTable& OzHashTable::operator=(OzHashTable const& other)
{
  if (this == &other)
    return *this;

  // All that can fail is done before the first of the old nodes goes.
  std::uint64_t const n = other.cells.size();
  Clones clones;
  clones.copy(other.cells);
  if (n > cells.size())
    cells.resize(n, true);

  remove_all_elements();
  cells.resize(n, true);
  clones.release_to(cells);
  return *this;
}

int OzHashTable::find_index(OzHashTableNode const* node) const
{
  return static_cast<int>(hash_value(node) % static_cast<std::uint32_t>(cells.size()));
}

bool OzHashTable::insert_node(OzHashTableNode* node)
{
  OzHashTableNode*& head = cells[static_cast<std::uint64_t>(find_index(node))];
  bool const was_empty = head == nullptr;
  if (!was_empty)
    head->insert_prev(node);
  head = node;
  return was_empty;
}

OzHashTableNode* OzHashTable::find_node(OzHashTableNode const* query) const
{
  OzHashTableNode* node = cells[static_cast<std::uint64_t>(find_index(query))];
  while (node != nullptr && !node->equal(query))
    node = node_behind(node);
  return node;
}

int OzHashTable::find_node(OzHashTableNode const* query, OzList<OzHashTableNode*>* list) const
{
  int n = 0;
  OzHashTableNode* node = cells[static_cast<std::uint64_t>(find_index(query))];
  for (; node != nullptr; node = node_behind(node))
  {
    if (!node->equal(query))
      continue;
    ++n;
    if (list != nullptr)
      list->append(node);
  }
  return n;
}

void OzHashTable::splice_node(OzHashTableNode* node)
{
  if (node == nullptr)
    return;

  OzHashTableNode*& head = cells[static_cast<std::uint64_t>(find_index(node))];
  OzLink* const before = node->prev();
  OzLink* const behind = node->next();
  if (head == node)
    head = node_behind(node);
  if (before != nullptr)
    before->set_next(behind);
  if (behind != nullptr)
    behind->set_prev(before);
  node->set_next(nullptr);
  node->set_prev(nullptr);
}

void OzHashTable::remove_chain(OzHashTableNode* node)
{
  delete_chain(node);
}

void OzHashTable::remove_all_elements()
{
  for (OzHashTableNode*& cell : cells)
  {
    // Emptied first: a node that looks at its table as it goes finds none that is gone already.
    OzHashTableNode* const head = cell;
    cell = nullptr;
    remove_chain(head);
  }
}

OzHashTableNode* OzHashTable::first_node(int& cell) const
{
  int const n = static_cast<int>(cells.size());
  for (cell = 0; cell < n; ++cell)
  {
    OzHashTableNode* const head = cells[static_cast<std::uint64_t>(cell)];
    if (head != nullptr)
      return head;
  }
  return nullptr;
}

OzHashTableNode* OzHashTable::next_node(OzHashTableNode* node, int& cell) const
{
  OZ_ASSERT(node != nullptr);
  if (node == nullptr)
    return nullptr;

  if (node->next() != nullptr)
    return node_behind(node);

  int const n = static_cast<int>(cells.size());
  for (++cell; cell < n; ++cell)
  {
    OzHashTableNode* const head = cells[static_cast<std::uint64_t>(cell)];
    if (head != nullptr)
      return head;
  }
  return nullptr;
}

int OzHashTable::best_case() const
{
  int shortest = worst_cast();
  for (OzHashTableNode const* const head : cells)
    shortest = std::min(shortest, chain_length(head));
  return shortest;
}

int OzHashTable::worst_cast() const
{
  int longest = 0;
  for (OzHashTableNode const* const head : cells)
    longest = std::max(longest, chain_length(head));
  return longest;
}

void OzHashTable::get_cell_distribution(OzPriQueue<int, int>& queue) const
{
  int number = 0;
  for (OzHashTableNode const* const head : cells)
    queue.add(number++, chain_length(head));
  queue.build_heap();
}

OzStdIntHashFunctor::OzStdIntHashFunctor(double multiplier)
  : factor(multiplier)
{
}

OzStdIntHashFunctor::~OzStdIntHashFunctor() = default;

std::uint32_t OzStdIntHashFunctor::hash_function(int const& value) const
{
  return scaled(value, factor);
}

OzHashMapFunctor<int>* OzStdIntHashFunctor::clone() const
{
  return new OzStdIntHashFunctor(factor);
}

OzStdPtrdiffHashFunctor::OzStdPtrdiffHashFunctor(double multiplier)
  : factor(multiplier)
{
}

OzStdPtrdiffHashFunctor::~OzStdPtrdiffHashFunctor() = default;

std::uint32_t OzStdPtrdiffHashFunctor::hash_function(std::int64_t const& value) const
{
  return scaled(static_cast<double>(value), factor);
}

OzHashMapFunctor<std::int64_t>* OzStdPtrdiffHashFunctor::clone() const
{
  return new OzStdPtrdiffHashFunctor(factor);
}

OzStdDoubleHashFunctor::OzStdDoubleHashFunctor(double multiplier)
  : factor(multiplier)
{
}

OzStdDoubleHashFunctor::~OzStdDoubleHashFunctor() = default;

std::uint32_t OzStdDoubleHashFunctor::hash_function(double const& value) const
{
  return low_bits_of_whole_part(scaled(value, factor) * factor);
}

OzHashMapFunctor<double>* OzStdDoubleHashFunctor::clone() const
{
  return new OzStdDoubleHashFunctor(factor);
}

OzStdStringHashFunctor::OzStdStringHashFunctor(int count)
  : n_chars(count)
{
}

OzStdStringHashFunctor::~OzStdStringHashFunctor() = default;

std::uint32_t OzStdStringHashFunctor::hash_function(OzString const& value) const
{
  if (n_chars < 0)
    return 0;

  std::uint64_t const n = std::min(value.length(), static_cast<std::uint64_t>(n_chars));
  char const* const text = value.as_const_c_string();
  std::uint32_t sum = 0;
  for (std::uint64_t i = 0; i < n; ++i)
    sum += static_cast<std::uint32_t>(static_cast<signed char>(text[i]));
  return sum;
}

OzHashMapFunctor<OzString>* OzStdStringHashFunctor::clone() const
{
  return new OzStdStringHashFunctor(n_chars);
}
