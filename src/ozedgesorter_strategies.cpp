#include "ozedgesorter_strategies.h"

#include "ozedgesorter_p.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <tuple>
#include <utility>

namespace
{
constexpr double NO_CANDIDATE = 1e20; // gaps from here up join nothing
constexpr double NO_GAP = -1.0;
constexpr double EXACT_MATCH = 1e-12;

bool joins(double gap)
{
  return gap >= 0.0 && gap < NO_CANDIDATE;
}
} // namespace

/// Delivers all candidates in rounds: those of a round have gaps above all of the round before, and equal
/// gaps are in one round.
///
/// Where most ends may be joined there are far more candidates than joins, and most die before their turn. So
/// a round keeps the least gaps only, and what is then still open and free is looked at again in the next.
/// Rounds double in size, so that there are few of them even if every candidate lives.
class OzEdgeSorting::Rounds
{
public:
  explicit Rounds(OzEdgeSorting const& sorting_to_serve)
    : sorting(sorting_to_serve)
    , limit(std::max<std::size_t>(1024, 16 * sorting.ends.size()))
  {
  }

  /// Fills `round`, in no particular order; false once there is nothing left.
  bool next(std::vector<Candidate>& round)
  {
    if (upper == LAST)
      return false;

    double const lower = upper;
    upper = LAST;
    round.clear();
    for (int p = 0; p < sorting.n_points(); ++p)
    {
      int const key = sorting.ends[at(p)].key;
      if (key == NONE)
        continue;
      sorting.each_lower_neighbour(p,
                                   [&](int q, double g)
                                   {
                                     if (!(g > lower && g <= upper))
                                       return;
                                     int const other = sorting.ends[at(q)].key;
                                     if (other == NONE || other == key)
                                       return;
                                     round.push_back({g, p, q});
                                     if (round.size() == limit)
                                       trim(round);
                                   });
    }
    limit *= 2;
    return true;
  }

private:
  // Keeps the lesser half, with a bit more or less of it so that equal gaps stay together.
  void trim(std::vector<Candidate>& round)
  {
    auto const middle = round.begin() + static_cast<std::ptrdiff_t>(limit / 2);
    std::nth_element(round.begin(), middle, round.end(),
                     [](Candidate const& a, Candidate const& b) { return a.gap < b.gap; });
    double const g = middle->gap;
    auto kept = std::partition(round.begin(), middle, [g](Candidate const& c) { return c.gap < g; });
    if (static_cast<std::size_t>(kept - round.begin()) >= limit / 4)
    {
      upper = std::nextafter(g, 0.0); // below g, which is above 0 since lesser ones exist
    }
    else
    {
      kept = std::partition(middle, round.end(), [g](Candidate const& c) { return c.gap <= g; });
      upper = g;
    }
    round.erase(kept, round.end());
    if (round.size() > limit / 4 * 3)
      limit *= 2;
  }

  static constexpr double LAST = 99999999999999983616.0; // the greatest number below NO_CANDIDATE

  OzEdgeSorting const& sorting;
  std::size_t limit;
  double upper = -std::numeric_limits<double>::denorm_min(); // gaps up to this one had their turn
};

/// Joins what can be joined by candidates of one and the same gap.
///
/// The search takes, of equal gaps, the pair with the highest outer chain, of these the one with the highest
/// inner chain, and of these the one with the latest ends. The highest chain that has any candidate is the
/// outer one of all its candidates; it takes the key of none other by joining, and keeps its own. So chains
/// get their turn from the highest down, and each one joins until it has no candidate left.
class OzEdgeSorting::Group
{
public:
  explicit Group(OzEdgeSorting& sorting_to_serve)
    : sorting(sorting_to_serve)
    , heads(sorting.ends.size(), NONE)
  {
  }

  void join(Candidate const* begin, Candidate const* end)
  {
    if (end - begin == 1)
    {
      if (sorting.fits(*begin))
        join_alone(*begin);
      return;
    }

    candidates = begin;
    next.resize(2 * static_cast<std::size_t>(end - begin));
    keys.clear();
    for (Candidate const* candidate = begin; candidate != end; ++candidate)
    {
      if (!sorting.fits(*candidate))
        continue;
      std::ptrdiff_t const node = 2 * (candidate - begin);
      push(candidate->p, node);
      push(candidate->q, node + 1);
    }
    std::sort(keys.begin(), keys.end(), std::greater<int>());
    for (int const key : keys)
    {
      while (sorting.alive(key) && join_best(key))
      {
      }
    }
    for (Candidate const* candidate = begin; candidate != end; ++candidate)
    {
      heads[at(candidate->p)] = NONE;
      heads[at(candidate->q)] = NONE;
    }
  }

private:
  void join_alone(Candidate const& candidate)
  {
    End const& p = sorting.ends[at(candidate.p)];
    End const& q = sorting.ends[at(candidate.q)];
    End const& outer = p.key > q.key ? p : q;
    End const& inner = p.key > q.key ? q : p;
    sorting.link(outer.key, outer.side, inner.key, inner.side, outer.key);
  }

  void push(int p, std::ptrdiff_t node)
  {
    if (heads[at(p)] == NONE)
      keys.push_back(sorting.ends[at(p)].key);
    next[static_cast<std::size_t>(node)] = heads[at(p)];
    heads[at(p)] = node;
  }

  // Joins the chain to the best of its candidates; false if there is none.
  bool join_best(int key)
  {
    int best_key = NONE;
    int best_own_side = 0;
    int best_side = 0;
    for (int own_side = 0; own_side < 2; ++own_side)
    {
      // What does not fit now never will, and leaves the list.
      std::ptrdiff_t* place = &heads[at(sorting.free_ends[at(2 * key + own_side)])];
      while (*place != NONE)
      {
        std::ptrdiff_t const node = *place;
        Candidate const& candidate = candidates[node / 2];
        End const& other = sorting.ends[at(node % 2 == 0 ? candidate.q : candidate.p)];
        if (other.key == NONE || other.key == key)
        {
          *place = next[static_cast<std::size_t>(node)];
          continue;
        }
        if (std::tie(other.key, own_side, other.side) > std::tie(best_key, best_own_side, best_side))
        {
          best_key = other.key;
          best_own_side = own_side;
          best_side = other.side;
        }
        place = &next[static_cast<std::size_t>(node)];
      }
    }
    if (best_key == NONE)
      return false;
    sorting.link(key, best_own_side, best_key, best_side, key);
    return true;
  }

  OzEdgeSorting& sorting;
  Candidate const* candidates = nullptr;
  // The candidates of an end point are a list of nodes: 2 * candidate if it is that one's p, else one more.
  std::vector<std::ptrdiff_t> heads; // by end point
  std::vector<std::ptrdiff_t> next;  // by node
  std::vector<int> keys;
};

OzEdgeSorting::OzEdgeSorting(OzArray<OzEdgeChain*>& chains_to_join, OzMatrix<double> const& dense_gaps,
                             OzArray<OzArray<int>> const& sparse_neighbours,
                             OzArray<OzArray<double>> const& sparse_gaps, bool redefine)
  : chains(chains_to_join)
  , gaps(dense_gaps)
  , neighbours(&sparse_neighbours)
  , neighbour_gaps(&sparse_gaps)
  , redefine_start(redefine)
  , ends(2 * chains.size())
  , free_ends(2 * chains.size())
  , absorbed(chains.size(), 0)
{
  for (int p = 0; p < n_points(); ++p)
  {
    ends[at(p)] = {NONE, p / 2, p % 2};
    free_ends[at(p)] = p;
  }
}

void OzEdgeSorting::keep_first_entries()
{
  if (dense())
    return;

  first_neighbours.resize(ends.size(), true);
  first_neighbour_gaps.resize(ends.size(), true);
  std::vector<int> seen_by(ends.size(), NONE);
  for (int p = 0; p < n_points(); ++p)
  {
    double const* g = (*neighbour_gaps)[at(p)].begin();
    for (int const q : (*neighbours)[at(p)])
    {
      if (seen_by[at(q)] != p)
      {
        first_neighbours[at(p)].append(q);
        first_neighbour_gaps[at(p)].append(*g);
      }
      seen_by[at(q)] = p;
      ++g;
    }
  }
  neighbours = &first_neighbours;
  neighbour_gaps = &first_neighbour_gaps;
}

void OzEdgeSorting::closest_first()
{
  close_lonely_ends();
  Rounds rounds(*this);
  Group group(*this);
  std::vector<Candidate> round;
  while (rounds.next(round))
  {
    std::sort(round.begin(), round.end(),
              [](Candidate const& a, Candidate const& b) { return a.gap < b.gap; });
    Candidate const* const end = round.data() + round.size();
    for (Candidate const* first = round.data(); first != end;)
    {
      Candidate const* last = first + 1;
      while (last != end && last->gap == first->gap)
        ++last;
      group.join(first, last);
      first = last;
    }
  }

  write_chains();
  for (OzEdgeChain* chain : chains)
  {
    if (redefine_start && closed(*chain))
      redefine(*chain);
  }
}

// A chain that has grown is closed, so whatever is still open is an edge that nothing was joined to: the
// places that decide between equal gaps are those of the edges.
void OzEdgeSorting::grow_chains()
{
  close_lonely_ends();
  Rounds rounds(*this);
  std::vector<Candidate> round;
  while (rounds.next(round))
  {
    std::sort(round.begin(), round.end(),
              [](Candidate const& a, Candidate const& b)
              {
                if (a.gap != b.gap)
                  return a.gap < b.gap;
                return std::make_tuple(a.p / 2, a.q / 2, a.p, a.q) >
                       std::make_tuple(b.p / 2, b.q / 2, b.p, b.q);
              });
    for (Candidate const& candidate : round)
    {
      if (!fits(candidate))
        continue;
      int const key = candidate.p / 2;
      link(key, candidate.p % 2, candidate.q / 2, candidate.q % 2, key);
      Partner partner = closest_partner(key);
      while (partner.key != NONE)
      {
        link(key, partner.own_side, partner.key, partner.side, key);
        partner = closest_partner(key);
      }
      close_chain(key);
    }
  }
  write_chains();
}

// The chains in front of `key` are closed, and those behind it are single edges still.
void OzEdgeSorting::sequential()
{
  close_branches();
  for (int key = 0; key < n_edges(); ++key)
  {
    if (!alive(key))
      continue;

    int const& end = free_ends[at(2 * key + 1)];
    for (int q = only_fitting_end(end); q != NONE; q = only_fitting_end(end))
      link(key, 1, q / 2, q % 2, key);
    close(end);

    int const& start = free_ends[at(2 * key)];
    for (int q = only_fitting_end(start); q != NONE; q = only_fitting_end(start))
      link(q / 2, q % 2, key, 0, key);
    close(start);
  }
  write_chains();
}

// The search begins anew after each join, yet no two chains in front of the outer one fit, and a join makes
// no ends fit that did not before. So only the joined chain itself is to be looked at again.
void OzEdgeSorting::first_fit(bool keep_order)
{
  close_lonely_ends();
  for (int outer = 0; outer < n_edges(); ++outer)
  {
    // With keep_order the joined chain stands at the lower place, with ends that the chains up to `outer`
    // have not seen there. Its lowest partner, be it in front or behind, then makes the first pair that fits.
    int key = outer;
    Partner partner = lowest_partner(key, outer);
    while (partner.key != NONE)
    {
      if (keep_order)
      {
        int const inner = std::min(key, partner.key);
        int const other = std::max(key, partner.key);
        Partner const best = first_exact_or_closest(other, inner);
        link(inner, best.side, other, best.own_side, inner);
        key = inner;
      }
      else
      {
        link(key, partner.own_side, partner.key, partner.side, key);
      }
      partner = lowest_partner(key, outer);
    }
  }
  write_chains();
}

double OzEdgeSorting::gap(int p, int q) const
{
  if (dense())
    return gaps(at(p), at(q));

  OzArray<int> const& list = (*neighbours)[at(p)];
  int const* const hit = std::find(list.begin(), list.end(), q);
  return hit == list.end() ? NO_GAP : (*neighbour_gaps)[at(p)].begin()[hit - list.begin()];
}

bool OzEdgeSorting::has_neighbour(int p) const
{
  if (!dense())
    return (*neighbours)[at(p)].size() != 0;

  double const* const column = &gaps(0, at(p));
  return std::any_of(column, column + n_points(), [](double g) { return g >= 0.0; });
}

// Visits the end points that may join `p`, with their gaps, which are 0 or more.
template <class Visit>
void OzEdgeSorting::each_neighbour(int p, Visit visit) const
{
  if (dense())
  {
    double const* const column = &gaps(0, at(p));
    for (int q = 0; q < n_points(); ++q)
    {
      if (column[q] >= 0.0)
        visit(q, column[q]);
    }
    return;
  }

  OzArray<int> const& list = (*neighbours)[at(p)];
  double const* g = (*neighbour_gaps)[at(p)].begin();
  for (int const q : list)
    visit(q, *g++);
}

// The same for ends of edges with a lower number, so that a pair is visited from one side only.
template <class Visit>
void OzEdgeSorting::each_lower_neighbour(int p, Visit visit) const
{
  if (dense())
  {
    double const* const column = &gaps(0, at(p));
    for (int q = 0; q < p / 2 * 2; ++q)
    {
      if (column[q] >= 0.0)
        visit(q, column[q]);
    }
    return;
  }

  each_neighbour(p,
                 [&](int q, double g)
                 {
                   if (q < p)
                     visit(q, g);
                 });
}

// Visits what the chain can be joined to at either end.
template <class Visit>
void OzEdgeSorting::each_partner(int key, Visit visit) const
{
  for (int own_side = 0; own_side < 2; ++own_side)
  {
    int const p = free_ends[at(2 * key + own_side)];
    if (ends[at(p)].key == NONE)
      continue;
    each_neighbour(p,
                   [&](int q, double g)
                   {
                     End const& end = ends[at(q)];
                     if (end.key != NONE && end.key != key && joins(g))
                       visit(Partner{g, end.key, own_side, end.side});
                   });
  }
}

bool OzEdgeSorting::fits(Candidate const& candidate) const
{
  int const key = ends[at(candidate.p)].key;
  int const other = ends[at(candidate.q)].key;
  return key != NONE && other != NONE && key != other;
}

void OzEdgeSorting::close_chain(int key)
{
  close(free_ends[at(2 * key)]);
  close(free_ends[at(2 * key + 1)]);
}

// Joins an end of chain `front` to an end of chain `back`. Both are turned so that these ends meet, and the
// whole is chain `key` from then on, which is one of the two.
void OzEdgeSorting::link(int front, int end_front, int back, int end_back, int key)
{
  int const p = free_ends[at(2 * front + end_front)];
  int const q = free_ends[at(2 * back + end_back)];
  int const start = free_ends[at(2 * front + 1 - end_front)];
  int const end = free_ends[at(2 * back + 1 - end_back)];

  ends[at(p)] = {q, NONE, 0};
  ends[at(q)] = {p, NONE, 0};
  if (ends[at(start)].key != NONE)
    ends[at(start)] = {NONE, key, 0};
  if (ends[at(end)].key != NONE)
    ends[at(end)] = {NONE, key, 1};
  free_ends[at(2 * key)] = start;
  free_ends[at(2 * key + 1)] = end;
  absorbed[at(key == front ? back : front)] = 1;
}

// An end without a candidate is none itself, so closing it changes nothing for the others.
void OzEdgeSorting::close_lonely_ends()
{
  for (int p = 0; p < n_points(); ++p)
  {
    if (!has_neighbour(p))
      close(p);
  }
}

// Closes each end that has not exactly one candidate. It takes effect at once, so an end that is closed is no
// candidate for those behind it.
void OzEdgeSorting::close_branches()
{
  std::vector<int> count(ends.size(), 0);
  for (int p = 0; p < n_points(); ++p)
    each_neighbour(p, [&](int, double) { ++count[at(p)]; });

  for (int p = 0; p < n_points(); ++p)
  {
    if (count[at(p)] == 1)
      continue;
    close(p);
    each_neighbour(p, [&](int q, double) { --count[at(q)]; });
  }
}

// Of equal gaps the later chain counts, and there the later ends.
OzEdgeSorting::Partner OzEdgeSorting::closest_partner(int key) const
{
  Partner best{NO_CANDIDATE, NONE, 0, 0};
  each_partner(key,
               [&](Partner const& found)
               {
                 if (std::tie(found.gap, best.key, best.own_side, best.side) <
                     std::tie(best.gap, found.key, found.own_side, found.side))
                   best = found;
               });
  return best;
}

// The chain at the lowest place below `below`, and there the closest ends, of equal gaps the later ones.
OzEdgeSorting::Partner OzEdgeSorting::lowest_partner(int key, int below) const
{
  Partner best{NO_CANDIDATE, NONE, 0, 0};
  int lowest = below;
  each_partner(key,
               [&](Partner const& found)
               {
                 if (found.key >= below)
                   return;
                 if (std::tie(found.key, found.gap, best.own_side, best.side) <
                     std::tie(lowest, best.gap, found.own_side, found.side))
                 {
                   best = found;
                   lowest = found.key;
                 }
               });
  return best;
}

// Of two chains that fit, the end of the outer one comes first here, and a practically exact match ends the
// choice.
OzEdgeSorting::Partner OzEdgeSorting::first_exact_or_closest(int outer, int inner) const
{
  Partner best{NO_CANDIDATE, NONE, 0, 0};
  for (int a = 1; a >= 0; --a)
  {
    for (int b = 0; b < 2; ++b)
    {
      int const p = free_ends[at(2 * outer + a)];
      int const q = free_ends[at(2 * inner + b)];
      if (ends[at(p)].key == NONE || ends[at(q)].key == NONE)
        continue;
      double const g = gap(p, q);
      if (joins(g) && g <= best.gap && best.gap >= EXACT_MATCH)
        best = {g, inner, a, b};
    }
  }
  return best;
}

// What an open end can be joined to once branches are closed, or NONE: it has one candidate at most then.
int OzEdgeSorting::only_fitting_end(int p) const
{
  int const key = ends[at(p)].key;
  int fitting = NONE;
  if (key == NONE)
    return fitting;

  each_neighbour(p,
                 [&](int q, double g)
                 {
                   int const other = ends[at(q)].key;
                   if (other != NONE && other != key && joins(g))
                     fitting = q;
                 });
  return fitting;
}

// Leaves a chain for each key that was not absorbed, in the order of keys.
void OzEdgeSorting::write_chains()
{
  std::vector<int> path;
  for (int key = 0; key < n_edges(); ++key)
  {
    if (alive(key))
      write_chain(key, path);
  }

  std::uint64_t count = 0;
  for (int key = 0; key < n_edges(); ++key)
  {
    OzEdgeChain* const chain = std::exchange(chains[at(key)], nullptr);
    if (alive(key))
      chains[count++] = chain;
    else
      delete chain;
  }
  chains.resize(count, true);
}

// A chain runs as most of its edges do; where they are equal in number it stays as it was joined.
void OzEdgeSorting::write_chain(int key, std::vector<int>& path)
{
  path.clear();
  for (int p = free_ends[at(2 * key)]; p != NONE; p = ends[at(p ^ 1)].mate)
    path.push_back(p);

  OzEdgeChain& chain = *chains[at(key)];
  chain.edges.resize(path.size(), false);
  chain.orientations.resize(path.size(), false);
  std::uint64_t reversed = 0;
  for (std::size_t i = 0; i < path.size(); ++i)
  {
    bool const against = path[i] % 2 == 1;
    chain.edges.begin()[i] = path[i] / 2;
    chain.orientations.begin()[i] = against ? -1 : 1;
    reversed += against ? 1 : 0;
  }
  chain.start_point = free_ends[at(2 * key)];
  chain.end_point = free_ends[at(2 * key + 1)];
  for (int which = 0; which < 2; ++which)
  {
    if (ends[at(free_ends[at(2 * key + which)])].key == NONE)
      chain.close_end(which);
  }
  if (reversed > path.size() / 2)
    chain.reverse();
}

bool OzEdgeSorting::closed(OzEdgeChain const& chain) const
{
  return chain.end_open(0) && chain.end_open(1) && gap(chain.end_number(0), chain.end_number(1)) != NO_GAP;
}

// Turns a ring so that it starts at its lowest edge.
void OzEdgeSorting::redefine(OzEdgeChain& chain)
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
