#include "ozedgesorter.h"

#include "oz_utils.h"
#include "ozedgesorter_p.h"
#include "ozedgesorter_strategies.h"
#include "ozjournal.h"

#include <algorithm>
#include <new>
#include <utility>

namespace
{
constexpr double NO_GAP = -1.0;
constexpr double CLOSED_EDGE_BOUND = 0.001; // whatever units the derived class uses

} // namespace

OzEdgeChain::OzEdgeChain(int edge)
  : start_point(2 * edge)
  , end_point(2 * edge + 1)
{
  edges.append(edge);
  orientations.append(1);
}

int OzEdgeChain::end_number(int which) const
{
  int const point = which == 0 ? start_point : end_point;
  return point >= 0 ? point : 1 - point;
}

void OzEdgeChain::close_end(int which)
{
  int& point = which == 0 ? start_point : end_point;
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
  bool const sorted_before = initialized();
  initialize();
  OzEdgeSorting sorting(chains, gaps, neighbours, neighbour_gaps, redefine_start);
  if (sorted_before)
    sorting.keep_first_entries();
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

  OzArray<bool> closed;
  closed.resize(n_edges, false);
  for (std::uint64_t e = 0; e < n_edges; ++e)
  {
    double const g = edge_gap(e, e, true, false);
    closed[e] = g >= 0.0 && g <= CLOSED_EDGE_BOUND;
  }

  if (dense)
    fill_table(closed);
  else
    fill_lists(closed);
}

// Asks for the half of the table in which the row belongs to the lower edge, column by column as it is
// stored, and copies it to the other half strip by strip, while it is still at hand. Every cell is written.
void OzEdgeSorter::fill_table(OzArray<bool> const& closed)
{
  constexpr std::uint64_t strip = 32; // columns, an even number
  std::uint64_t const n = gaps.rows();
  double* const cells = &gaps(0, 0);
  bool const* const apart = closed.begin();
  for (std::uint64_t column = 0; column < n; column += 2)
  {
    double* const starts = cells + column * n;
    double* const ends = starts + n;
    std::uint64_t const i = column / 2;
    for (std::uint64_t j = 0; j < i; ++j)
    {
      bool const joinable = !apart[i] && !apart[j];
      starts[2 * j] = joinable ? edge_gap(i, j, true, true) : NO_GAP;
      starts[2 * j + 1] = joinable ? edge_gap(i, j, true, false) : NO_GAP;
      ends[2 * j] = joinable ? edge_gap(i, j, false, true) : NO_GAP;
      ends[2 * j + 1] = joinable ? edge_gap(i, j, false, false) : NO_GAP;
    }
    std::fill(starts + column, starts + column + 2, NO_GAP);
    std::fill(ends + column, ends + column + 2, NO_GAP);

    std::uint64_t const next = column + 2;
    if (next % strip != 0 && next != n)
      continue;
    std::uint64_t const first = column / strip * strip;
    for (std::uint64_t row = 0; row < next; ++row)
    {
      for (std::uint64_t copied = std::max(first, row + 1); copied < next; ++copied)
        cells[row * n + copied] = cells[copied * n + row];
    }
  }
}

void OzEdgeSorter::fill_lists(OzArray<bool> const& closed)
{
  bool const* const apart = closed.begin();
  auto const note = [this](std::uint64_t p, std::uint64_t q, double gap)
  {
    if (gap >= 0.0)
      add_neighbours(p, q, gap);
  };
  for (std::uint64_t i = 0; i < closed.size(); ++i)
  {
    if (apart[i])
      continue;
    for (std::uint64_t j = 0; j < i; ++j)
    {
      if (apart[j])
        continue;
      note(2 * i, 2 * j, edge_gap(i, j, true, true));
      note(2 * i, 2 * j + 1, edge_gap(i, j, true, false));
      note(2 * i + 1, 2 * j, edge_gap(i, j, false, true));
      note(2 * i + 1, 2 * j + 1, edge_gap(i, j, false, false));
    }
  }
}

void OzEdgeSorter::add_neighbours(std::uint64_t p, std::uint64_t q, double gap)
{
  std::uint64_t const n_p = neighbours[p].size();
  std::uint64_t const n_q = neighbours[q].size();
  try
  {
    neighbours[p].append(static_cast<int>(q));
    neighbours[q].append(static_cast<int>(p));
    neighbour_gaps[p].append(gap);
    neighbour_gaps[q].append(gap);
  }
  catch (...)
  {
    // A gap belongs to the neighbour at its own place, so all four lists grow or none does. The entries of
    // this sort are still there in the next.
    neighbours[p].resize(n_p, true);
    neighbours[q].resize(n_q, true);
    neighbour_gaps[p].resize(n_p, true);
    neighbour_gaps[q].resize(n_q, true);
    throw;
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
