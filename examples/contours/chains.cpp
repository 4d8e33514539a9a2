#include "chains.h"

#include "ends.h"

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <utility>

namespace contours
{

namespace
{

/// Chains of a cluster that is too large for one sorter go to sorters of so many. Their cost for each chain grows
/// with their size.
constexpr std::size_t PIECE = 200;

/// Sorts chains as if each were an edge.
class ChainSorter : public OzEdgeSorter
{
public:
  /// `chains` and the flag stay the caller's and must outlive the sorter. The sparse form suits: a chain can join very
  /// few others.
  ChainSorter(std::vector<Chain> const& all, double join_tolerance, StopFlag const& stop_flag)
    : OzEdgeSorter(all.size(), true)
    , chains(all)
    , tolerance(join_tolerance)
    , stop(stop_flag)
  {
  }

  std::vector<Chain> result() const
  {
    std::vector<Chain> joined;
    for (std::uint64_t chain = 0; chain < n_chain(); ++chain)
      joined.push_back(result(chain));
    return joined;
  }

private:
  double edge_gap(std::uint64_t a, std::uint64_t b, bool at_start_a, bool at_start_b) const override
  {
    constexpr double NOT_TO_BE_JOINED = -1.0;
    // The sorter can't be stopped, but it has no more to do where nothing joins.
    if (stop.requested())
      return NOT_TO_BE_JOINED;
    // By its own ends the sorter asks whether an edge is closed. A straight edge shorter than its bound is not.
    if (a == b)
      return chains[a].ring ? 0.0 : NOT_TO_BE_JOINED;

    Point const end_a = at_start_a ? chains[a].start : chains[a].end;
    Point const end_b = at_start_b ? chains[b].start : chains[b].end;
    double const gap = distance(end_a, end_b);
    return gap <= tolerance ? gap : NOT_TO_BE_JOINED;
  }

  Chain result(std::uint64_t chain) const
  {
    Chain joined;
    for (std::uint64_t link = 0; link < n_link(chain); ++link)
    {
      Chain part = chains[edge_index(chain, link)];
      if (reversed(chain, link))
        reverse(part);
      if (link == 0)
        joined.start = part.start;
      joined.end = part.end;
      joined.ring = part.ring;
      joined.links.insert(joined.links.end(), part.links.begin(), part.links.end());
    }
    return joined;
  }

  std::vector<Chain> const& chains;
  double tolerance;
  StopFlag const& stop;
};

std::vector<Chain> sort_once(std::vector<Chain> const& chains, double tolerance, Strategy strategy,
                             StopFlag const& stop)
{
  ChainSorter sorter(chains, tolerance, stop);
  bool const keep_order = true;
  sorter.sort(strategy, keep_order);
  return sorter.result();
}

/// An order that follows from where the chains lie. The sorter settles ties by the order of its edges.
std::vector<Chain> in_order_of_place(std::vector<Chain> chains)
{
  auto const before = [](Chain const& a, Chain const& b)
  {
    auto const key = [](Chain const& chain)
    {
      auto const first = std::make_pair(chain.start.x, chain.start.y);
      auto const last = std::make_pair(chain.end.x, chain.end.y);
      return std::make_tuple(std::min(first, last), std::max(first, last));
    };
    return key(a) < key(b);
  };
  std::stable_sort(chains.begin(), chains.end(), before);
  return chains;
}

std::vector<std::size_t> places_of_ends(std::vector<Chain> const& chains, double tolerance)
{
  std::vector<Point> ends;
  for (Chain const& chain : chains)
  {
    ends.push_back(chain.start);
    ends.push_back(chain.end);
  }
  return places_of(ends, tolerance);
}

/// Chains that can join others, in an order in which those that can join each other stand together: each place where
/// ends meet is followed on before the next one is looked at. The others, which are finished, go to `finished`.
std::vector<Chain> in_walking_order(std::vector<Chain>& chains, double tolerance,
                                    std::vector<Chain>& finished)
{
  std::vector<std::size_t> const place = places_of_ends(chains, tolerance);
  std::vector<std::vector<std::size_t>> chains_at(place.size()); // emptied when it has been followed
  for (std::size_t i = 0; i < chains.size(); ++i)
  {
    chains_at[place[2 * i]].push_back(i);
    if (place[2 * i + 1] != place[2 * i])
      chains_at[place[2 * i + 1]].push_back(i);
  }

  auto const alone = [&](std::size_t end) { return chains_at[place[end]].size() == 1; };
  std::vector<bool> taken(chains.size());
  for (std::size_t i = 0; i < chains.size(); ++i)
    if (alone(2 * i) && alone(2 * i + 1))
    {
      finished.push_back(std::move(chains[i]));
      taken[i] = true;
    }

  std::vector<Chain> ordered;
  for (std::size_t first = 0; first < chains.size(); ++first)
  {
    std::vector<std::size_t> waiting = {first};
    while (!waiting.empty())
    {
      std::size_t const i = waiting.back();
      waiting.pop_back();
      if (taken[i])
        continue;
      taken[i] = true;
      ordered.push_back(std::move(chains[i]));
      for (std::size_t const end : {2 * i, 2 * i + 1})
      {
        std::vector<std::size_t> const at = std::exchange(chains_at[place[end]], {});
        waiting.insert(waiting.end(), at.rbegin(), at.rend());
      }
    }
  }
  return ordered;
}

/// Joins within pieces, then what came out of them, until one sorter can take the rest or nothing joins any more. A
/// piece holds chains that meet, so each round leaves only a part of them.
std::vector<Chain> join_in_pieces(std::vector<Chain> chains, double tolerance, StopFlag const& stop)
{
  std::vector<Chain> finished;
  for (;;)
  {
    std::size_t const before = chains.size();
    std::vector<Chain> const ordered = in_walking_order(chains, tolerance, finished);
    chains.clear();
    for (std::size_t begin = 0; begin < ordered.size(); begin += PIECE)
    {
      if (stop.requested())
        return {};
      auto const first = ordered.begin() + static_cast<std::ptrdiff_t>(begin);
      auto const last =
          ordered.begin() + static_cast<std::ptrdiff_t>(std::min(begin + PIECE, ordered.size()));
      for (Chain& chain : sort_once({first, last}, tolerance, OzEdgeSorter::OzSortGrowChains, stop))
        chains.push_back(std::move(chain));
    }
    if (chains.size() <= PIECE || chains.size() == before)
      break;
  }
  for (Chain& chain : sort_once(chains, tolerance, OzEdgeSorter::OzSortGrowChains, stop))
    finished.push_back(std::move(chain));
  return finished;
}

} // namespace

std::vector<Chain> join_chains(std::vector<Chain> const& chains, double tolerance,
                               std::optional<Strategy> strategy, StopFlag const& stop)
{
  std::vector<Chain> const ordered = in_order_of_place(chains);
  if (strategy)
    return sort_once(ordered, tolerance, *strategy, stop);
  if (ordered.size() <= MOST_CLOSEST_FIRST)
    return sort_once(ordered, tolerance, OzEdgeSorter::OzSortClosestFirst, stop);
  if (ordered.size() <= MOST_IN_ONE_SORTER)
    return sort_once(ordered, tolerance, OzEdgeSorter::OzSortGrowChains, stop);
  return join_in_pieces(ordered, tolerance, stop);
}

void reverse(Chain& chain)
{
  std::swap(chain.start, chain.end);
  std::reverse(chain.links.begin(), chain.links.end());
  for (Link& link : chain.links)
    link.reversed = !link.reversed;
}

} // namespace contours
