#include "ozedgesorter.h"

#include "oz_utils.h"
#include "ozedgesorter_p.h"
#include "ozjournal.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

namespace
{
constexpr double NO_CANDIDATE = 1e20; // gaps from here up join nothing
constexpr double NO_GAP = -1.0;
constexpr double CLOSED_EDGE_BOUND = 0.001; // whatever units the derived class uses
constexpr double EXACT_MATCH = 1e-12;

/// Two chains by position, and the ends at which they are to be joined.
struct Joint
{
  std::uint64_t first = 0;
  std::uint64_t second = 0;
  int end_first = 0;
  int end_second = 0;
};

/// The closest ends of two chains, the gap being NO_CANDIDATE if there are none.
struct PairGap
{
  double gap = NO_CANDIDATE;
  int a = 0;
  int b = 0;
};

/// What one sort works on.
struct Sorting
{
  OzArray<OzEdgeChain*>& chains;
  OzMatrix<double> const& gaps;
  OzArray<OzArray<int>> const& neighbours;
  OzArray<OzArray<double>> const& neighbour_gaps;
  bool const redefine_start;

  void closest_first();
  void grow_chains();
  void sequential();
  void first_fit(bool keep_order);

private:
  double gap(int a, int b) const;
  void close_lonely_ends(bool stop_at_branches);
  std::uint64_t count_candidates(std::uint64_t index, int end) const;
  PairGap best_pair_gap(OzEdgeChain const& chain_a, OzEdgeChain const& chain_b) const;
  PairGap first_exact_or_best_pair_gap(OzEdgeChain const& outer, OzEdgeChain const& inner) const;
  bool find_closest_pair(Joint& joint) const;
  bool find_closest_partner(Joint& joint) const;
  bool find_first_pair(bool keep_order, Joint& joint) const;
  bool find_later_partner(std::uint64_t index, int end, Joint& joint) const;
  void join(Joint& joint);
  void compact(std::uint64_t& index);
  void direct(OzEdgeChain& chain) const;
  void direct_all();
  bool closed(OzEdgeChain const& chain) const;
  void redefine(OzEdgeChain& chain) const;
};

double Sorting::gap(int a, int b) const
{
  std::uint64_t const row = static_cast<std::uint64_t>(a);
  std::uint64_t const column = static_cast<std::uint64_t>(b);
  if (gaps.rows() != 0)
    return gaps(row, column);

  OzArray<int> const& list = neighbours[row];
  int const* const hit = std::find(list.begin(), list.end(), b);
  return hit == list.end() ? NO_GAP : neighbour_gaps[row].begin()[hit - list.begin()];
}

void Sorting::closest_first()
{
  close_lonely_ends(false);
  Joint joint;
  while (find_closest_pair(joint))
    join(joint);

  for (OzEdgeChain* chain : chains)
  {
    direct(*chain);
    if (redefine_start && closed(*chain))
      redefine(*chain);
  }
}

void Sorting::grow_chains()
{
  close_lonely_ends(false);
  Joint joint;
  while (find_closest_pair(joint))
  {
    do
      join(joint);
    while (find_closest_partner(joint));

    // Nothing fits any more: the next pair is looked for among the others.
    chains[joint.first]->close_end(0);
    chains[joint.first]->close_end(1);
  }
  direct_all();
}

void Sorting::sequential()
{
  close_lonely_ends(true);
  std::uint64_t i = 0;
  while (i < chains.size())
  {
    Joint joint;
    if (find_later_partner(i, 1, joint))
    {
      join(joint);
      continue;
    }
    chains[i]->close_end(1);

    if (find_later_partner(i, 0, joint))
    {
      // The merged chain keeps the direction of chain i, and its position.
      if (joint.end_second == 0)
        chains[joint.second]->reverse();
      chains[joint.second]->append(*chains[i]);
      std::swap(chains[i], chains[joint.second]);
      delete chains[joint.second];
      chains[joint.second] = nullptr;
      compact(i);
      continue;
    }
    chains[i]->close_end(0);
    ++i;
  }
  direct_all();
}

void Sorting::first_fit(bool keep_order)
{
  close_lonely_ends(false);
  Joint joint;
  while (find_first_pair(keep_order, joint))
    join(joint);
  direct_all();
}

// Takes effect at once, so an end that is closed is no candidate for those behind it.
void Sorting::close_lonely_ends(bool stop_at_branches)
{
  for (std::uint64_t i = 0; i < chains.size(); ++i)
  {
    for (int a = 0; a < 2; ++a)
    {
      std::uint64_t const count = count_candidates(i, a);
      if (count == 0 || (stop_at_branches && count >= 2))
        chains[i]->close_end(a);
    }
  }
}

std::uint64_t Sorting::count_candidates(std::uint64_t index, int end) const
{
  OzEdgeChain const& chain = *chains[index];
  if (!chain.end_open(end))
    return 0;

  std::uint64_t count = 0;
  for (std::uint64_t j = 0; j < chains.size(); ++j)
  {
    for (int b = 0; b < 2; ++b)
    {
      if (j != index && chains[j]->end_open(b) && gap(chain.end_number(end), chains[j]->end_number(b)) >= 0.0)
        ++count;
    }
  }
  return count;
}

// On equal gaps the later combination wins.
PairGap Sorting::best_pair_gap(OzEdgeChain const& chain_a, OzEdgeChain const& chain_b) const
{
  PairGap best;
  for (int a = 0; a < 2; ++a)
  {
    for (int b = 0; b < 2; ++b)
    {
      if (!chain_a.end_open(a) || !chain_b.end_open(b))
        continue;
      double const g = gap(chain_a.end_number(a), chain_b.end_number(b));
      if (g >= 0.0 && g <= best.gap)
        best = {g, a, b};
    }
  }
  return best;
}

// The end of the outer chain comes first here, and a practically exact match ends the choice.
PairGap Sorting::first_exact_or_best_pair_gap(OzEdgeChain const& outer, OzEdgeChain const& inner) const
{
  PairGap best;
  for (int a = 1; a >= 0; --a)
  {
    for (int b = 0; b < 2; ++b)
    {
      if (!outer.end_open(a) || !inner.end_open(b))
        continue;
      double const g = gap(outer.end_number(a), inner.end_number(b));
      if (g >= 0.0 && g <= best.gap && best.gap >= EXACT_MATCH)
        best = {g, a, b};
    }
  }
  return best;
}

bool Sorting::find_closest_pair(Joint& joint) const
{
  double least = NO_CANDIDATE;
  bool found = false;
  for (std::uint64_t outer = 0; outer < chains.size(); ++outer)
  {
    for (std::uint64_t inner = 0; inner < outer; ++inner)
    {
      PairGap const best = best_pair_gap(*chains[outer], *chains[inner]);
      if (best.gap >= NO_CANDIDATE || best.gap > least)
        continue;
      least = best.gap;
      joint = {outer, inner, best.a, best.b};
      found = true;
    }
  }
  return found;
}

// Looks for the chain that is closest to chain joint.first at either end.
bool Sorting::find_closest_partner(Joint& joint) const
{
  double least = NO_CANDIDATE;
  bool found = false;
  for (std::uint64_t k = 0; k < chains.size(); ++k)
  {
    if (k == joint.first)
      continue;
    PairGap const best = best_pair_gap(*chains[joint.first], *chains[k]);
    if (best.gap >= NO_CANDIDATE || best.gap > least)
      continue;
    least = best.gap;
    joint = {joint.first, k, best.a, best.b};
    found = true;
  }
  return found;
}

bool Sorting::find_first_pair(bool keep_order, Joint& joint) const
{
  for (std::uint64_t outer = 0; outer < chains.size(); ++outer)
  {
    for (std::uint64_t inner = 0; inner < outer; ++inner)
    {
      PairGap const best = keep_order ? first_exact_or_best_pair_gap(*chains[outer], *chains[inner])
                                      : best_pair_gap(*chains[outer], *chains[inner]);
      if (best.gap >= NO_CANDIDATE)
        continue;
      joint = keep_order ? Joint{inner, outer, best.b, best.a} : Joint{outer, inner, best.a, best.b};
      return true;
    }
  }
  return false;
}

bool Sorting::find_later_partner(std::uint64_t index, int end, Joint& joint) const
{
  OzEdgeChain const& chain = *chains[index];
  if (!chain.end_open(end))
    return false;

  for (std::uint64_t j = index + 1; j < chains.size(); ++j)
  {
    for (int b = 0; b < 2; ++b)
    {
      if (!chains[j]->end_open(b))
        continue;
      double const g = gap(chain.end_number(end), chains[j]->end_number(b));
      if (g >= 0.0 && g < NO_CANDIDATE)
      {
        joint = {index, j, end, b};
        return true;
      }
    }
  }
  return false;
}

// Puts chain `second` behind chain `first`, which keeps its place among the others; joint.first says where it
// stands afterwards.
void Sorting::join(Joint& joint)
{
  OzEdgeChain& first = *chains[joint.first];
  OzEdgeChain& second = *chains[joint.second];
  if (joint.end_first == 0)
    first.reverse();
  if (joint.end_second == 1)
    second.reverse();
  first.append(second);
  delete chains[joint.second];
  chains[joint.second] = nullptr;
  compact(joint.first);
}

// Closes the hole in `chains`. `index` goes on referring to the same chain.
void Sorting::compact(std::uint64_t& index)
{
  OzEdgeChain** const hole = std::find(chains.begin(), chains.end(), nullptr);
  if (index > static_cast<std::uint64_t>(hole - chains.begin()))
    --index;
  std::copy(hole + 1, chains.end(), hole);
  chains.remove_last();
}

// A chain runs as most of its edges do; where they are equal in number it stays as it was joined.
void Sorting::direct(OzEdgeChain& chain) const
{
  auto const reversed_edges = std::count(chain.orientations.begin(), chain.orientations.end(), -1);
  if (static_cast<std::uint64_t>(reversed_edges) > chain.edges.size() / 2)
    chain.reverse();
}

void Sorting::direct_all()
{
  for (OzEdgeChain* chain : chains)
    direct(*chain);
}

bool Sorting::closed(OzEdgeChain const& chain) const
{
  return chain.end_open(0) && chain.end_open(1) && gap(chain.end_number(0), chain.end_number(1)) != NO_GAP;
}

void Sorting::redefine(OzEdgeChain& chain) const
{
  OzArray<int>& edges = chain.edges;
  OzArray<int>& orientations = chain.orientations;
  auto const p = std::min_element(edges.begin(), edges.end()) - edges.begin();
  if (edges.size() < 2 || p == 0)
    return;

  std::rotate(edges.begin(), edges.begin() + p, edges.end());
  std::rotate(orientations.begin(), orientations.begin() + p, orientations.end());
  chain.start_point = 2 * edges.first() + (orientations.first() == 1 ? 0 : 1);
  chain.end_point = 2 * edges.last() + (orientations.last() == -1 ? 0 : 1);
}
} // namespace

OzEdgeChain::OzEdgeChain(int edge)
  : start_point(2 * edge)
  , end_point(2 * edge + 1)
{
  edges.append(edge);
  orientations.append(1);
}

OzEdgeChain::~OzEdgeChain() = default;

int OzEdgeChain::end_number(int which) const
{
  int const point = which == 0 ? start_point : end_point;
  return point >= 0 ? point : 1 - point;
}

void OzEdgeChain::close_end(int which)
{
  int& point = which == 0 ? start_point : end_point;
  if (point >= 0)
    point = ~point;
}

void OzEdgeChain::reverse()
{
  std::reverse(edges.begin(), edges.end());
  std::reverse(orientations.begin(), orientations.end());
  for (int& orientation : orientations)
    orientation = -orientation;
  std::swap(start_point, end_point);
}

void OzEdgeChain::append(OzEdgeChain const& other)
{
  for (int const edge : other.edges)
    edges.append(edge);
  for (int const orientation : other.orientations)
    orientations.append(orientation);
  end_point = other.end_point;
}

void OzEdgeChain::debug(OzJournal& journal, OzDebug, int indent) const
{
  OzString const outer = oz_blankstring(indent);
  OzString const inner = oz_blankstring(indent + Oz_DebugIndentStep());
  journal << outer << "OzEdgeChain begin {\n\n";
  journal << inner << "Chain consisting of " << edges.size() << " edges. " << ozEndExpr;
  journal << inner << "edge-index\torientation\t" << ozEndExpr;
  for (std::uint64_t i = 0; i < edges.size(); ++i)
  {
    int const blanks = edges[i] < 10 ? 15 : edges[i] < 100 ? 14 : 13;
    journal << inner << edges[i] << oz_blankstring(blanks) << (orientations[i] >= 1 ? "  +" : "  -")
            << ozEndExpr;
  }
  journal << "\n" << outer << "OzEdgeChain end   }\n";
}

OzEdgeSorter::OzEdgeSorter(std::uint64_t n_edges, bool sparse)
{
  // Beyond this the last end point has no number.
  constexpr std::uint64_t most_edges = std::uint64_t(1) << 30;
  if (n_edges > most_edges)
    throw std::bad_alloc();

  std::uint64_t const n = 2 * n_edges;
  if (sparse)
  {
    neighbours.resize(n, true);
    neighbour_gaps.resize(n, true);
  }
  else
  {
    gaps.resize(n, n);
  }
}

OzEdgeSorter::~OzEdgeSorter()
{
  for (OzEdgeChain*& chain : chains)
  {
    delete chain;
    chain = nullptr;
  }
  chains.resize(0, true);
}

void OzEdgeSorter::debug(OzJournal& journal, OzDebug level, int indent) const
{
  int const step = Oz_DebugIndentStep();
  Oz_DebugIndentation(journal, indent);
  journal << "OzEdgeSorter begin {\n\n";
  Oz_DebugIndentation(journal, indent + step);
  journal << "n_chain() = " << n_chain() << ozEndExpr;
  for (std::uint64_t i = 0; i < n_chain(); ++i)
  {
    Oz_DebugIndentation(journal, indent + step);
    journal << "chain(" << i << "): " << ozEndExpr;
    chain(i).debug(journal, level, indent + 2 * step);
  }
  // The indentation falls on the blank line, and the closing text stands at the left margin.
  Oz_DebugIndentation(journal, indent);
  journal << "\n"
          << "OzEdgeSorter end   }\n";
}

void OzEdgeSorter::sort(OzSortStrategy strategy, bool keep_order)
{
  initialize();
  Sorting sorting{chains, gaps, neighbours, neighbour_gaps, redefine_start};
  switch (strategy)
  {
  case OzSortGrowChains:
    sorting.grow_chains();
    break;
  case OzSortSequential:
    sorting.sequential();
    break;
  case OzSortFirstFit:
    sorting.first_fit(keep_order);
    break;
  case OzSortClosestFirst:
  default:
    sorting.closest_first();
    break;
  }
}

std::uint64_t OzEdgeSorter::n_chain() const
{
  return chains.size();
}

std::uint64_t OzEdgeSorter::n_link(std::uint64_t chain_index) const
{
  return chain(chain_index).edges.size();
}

std::uint64_t OzEdgeSorter::edge_index(std::uint64_t chain_index, std::uint64_t link) const
{
  OzArray<int> const& edges = chain(chain_index).edges;
  OZ_ASSERT(link < edges.size());
  return static_cast<std::uint64_t>(edges[link]);
}

bool OzEdgeSorter::reversed(std::uint64_t chain_index, std::uint64_t link) const
{
  OzArray<int> const& orientations = chain(chain_index).orientations;
  OZ_ASSERT(link < orientations.size());
  return orientations[link] < 0;
}

bool OzEdgeSorter::reversed(std::uint64_t edge) const
{
  std::uint64_t chain_index = 0;
  std::uint64_t link = 0;
  return get_indices(edge, chain_index, link) && reversed(chain_index, link);
}

bool OzEdgeSorter::get_indices(std::uint64_t edge, std::uint64_t& chain_index, std::uint64_t& link) const
{
  for (std::uint64_t i = 0; i < chains.size(); ++i)
  {
    OzArray<int> const& edges = chains[i]->edges;
    for (std::uint64_t k = 0; k < edges.size(); ++k)
    {
      if (static_cast<std::uint64_t>(edges[k]) != edge)
        continue;
      chain_index = i;
      link = k;
      return true;
    }
  }
  return false;
}

void OzEdgeSorter::set_redefine_start_of_closed_chains()
{
  redefine_start = true;
}

OzEdgeChain const& OzEdgeSorter::chain(std::uint64_t index) const
{
  OZ_ASSERT(initialized());
  OZ_ASSERT(index < chains.size());
  return *chains[index];
}

void OzEdgeSorter::initialize()
{
  for (OzEdgeChain*& chain : chains)
  {
    delete chain;
    chain = nullptr;
  }

  bool const dense = gaps.rows() != 0;
  std::uint64_t const n_edges = (dense ? gaps.rows() : neighbours.size()) / 2;
  chains.resize(n_edges, true);
  for (std::uint64_t e = 0; e < n_edges; ++e)
    chains[e] = new OzEdgeChain(static_cast<int>(e));

  std::vector<bool> closed(n_edges);
  for (std::uint64_t e = 0; e < n_edges; ++e)
  {
    double const g = edge_gap(e, e, true, false);
    closed[e] = g >= 0.0 && g <= CLOSED_EDGE_BOUND;
  }

  for (std::uint64_t column = 0; column < gaps.columns(); ++column)
  {
    for (std::uint64_t row = 0; row < gaps.rows(); ++row)
      gaps(row, column) = NO_GAP;
  }

  for (std::uint64_t i = 0; i < n_edges; ++i)
  {
    for (std::uint64_t j = 0; j < i && !closed[i]; ++j)
    {
      if (closed[j])
        continue;
      for (std::uint64_t end = 0; end < 4; ++end)
      {
        std::uint64_t const a = end / 2;
        std::uint64_t const b = end % 2;
        std::uint64_t const point_a = 2 * i + a;
        std::uint64_t const point_b = 2 * j + b;
        double const g = edge_gap(i, j, a == 0, b == 0);
        if (dense)
        {
          gaps(point_a, point_b) = g;
          gaps(point_b, point_a) = g;
        }
        else if (g >= 0.0)
        {
          neighbours[point_a].append(static_cast<int>(point_b));
          neighbours[point_b].append(static_cast<int>(point_a));
          neighbour_gaps[point_a].append(g);
          neighbour_gaps[point_b].append(g);
        }
      }
    }
  }
}

bool OzEdgeSorter::initialized() const
{
  return chains.size() != 0;
}

OzEdgeSorter* OzEdgeSorter::mp() const
{
  return const_cast<OzEdgeSorter*>(this);
}
