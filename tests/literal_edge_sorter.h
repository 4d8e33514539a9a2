#ifndef LITERAL_EDGE_SORTER_H
#define LITERAL_EDGE_SORTER_H

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// The edge sorter as its strategies are defined: a search over all pairs of chains before each join. Slow
/// and plain; what the library's sorter does is held against it.
class LiteralEdgeSorter
{
public:
  /// The gap of two end points, 2 * edge for a start and 2 * edge + 1 for an end.
  using Gap = std::function<double(int, int)>;

  struct Chain
  {
    std::vector<int> edges;
    std::vector<int> orientations;
    int start_point;
    int end_point;

    bool end_open(int which) const { return point(which) >= 0; }
    int end_number(int which) const { return point(which) >= 0 ? point(which) : 1 - point(which); }
    int point(int which) const { return which == 0 ? start_point : end_point; }
    void close_end(int which)
    {
      int& p = which == 0 ? start_point : end_point;
      p = p >= 0 ? ~p : p;
    }
    void reverse()
    {
      std::reverse(edges.begin(), edges.end());
      std::reverse(orientations.begin(), orientations.end());
      for (int& orientation : orientations)
        orientation = -orientation;
      std::swap(start_point, end_point);
    }
    void append(Chain const& other)
    {
      edges.insert(edges.end(), other.edges.begin(), other.edges.end());
      orientations.insert(orientations.end(), other.orientations.begin(), other.orientations.end());
      end_point = other.end_point;
    }
  };

  LiteralEdgeSorter(int n_edges, bool sparse_form)
    : n(n_edges)
    , sparse(sparse_form)
    , neighbours(2 * static_cast<std::size_t>(n_edges))
    , neighbour_gaps(2 * static_cast<std::size_t>(n_edges))
  {
  }

  /// `strategy` is 0 closest first, 1 grow chains, 2 sequential, 3 first fit; anything else is 0.
  void sort(Gap const& edge_gap, int strategy, bool keep_order)
  {
    initialize(edge_gap);
    if (strategy == 1)
      grow_chains();
    else if (strategy == 2)
      sequential();
    else if (strategy == 3)
      first_fit(keep_order);
    else
      closest_first();
  }

  /// What `debug` writes of the chains with indentation 0.
  std::string text() const
  {
    std::string out = "OzEdgeSorter begin {\n\n   n_chain() = " + std::to_string(chains.size()) + "\n";
    for (std::size_t i = 0; i < chains.size(); ++i)
    {
      std::string const outer(6, ' ');
      std::string const inner(9, ' ');
      Chain const& chain = chains[i];
      out += "   chain(" + std::to_string(i) + "): \n" + outer + "OzEdgeChain begin {\n\n" + inner +
             "Chain consisting of " + std::to_string(chain.edges.size()) + " edges. \n" + inner +
             "edge-index\torientation\t\n";
      for (std::size_t k = 0; k < chain.edges.size(); ++k)
      {
        std::size_t const blanks = chain.edges[k] < 10 ? 15 : chain.edges[k] < 100 ? 14 : 13;
        out += inner + std::to_string(chain.edges[k]) + std::string(blanks, ' ') +
               (chain.orientations[k] >= 1 ? "  +" : "  -") + "\n";
      }
      out += "\n" + outer + "OzEdgeChain end   }\n";
    }
    return out + "\nOzEdgeSorter end   }\n";
  }

  std::vector<Chain> chains;
  bool redefine_start = false;

private:
  struct PairGap
  {
    double gap = 1e20;
    int a = 0;
    int b = 0;
  };

  static std::size_t at(int index) { return static_cast<std::size_t>(index); }
  int n_chains() const { return static_cast<int>(chains.size()); }

  void initialize(Gap const& edge_gap)
  {
    chains.clear();
    for (int e = 0; e < n; ++e)
      chains.push_back({{e}, {1}, 2 * e, 2 * e + 1});

    std::vector<bool> closed;
    for (int e = 0; e < n; ++e)
    {
      double const g = edge_gap(2 * e, 2 * e + 1);
      closed.push_back(g >= 0.0 && g <= 0.001);
    }

    table.assign(sparse ? 0 : 4 * at(n) * at(n), -1.0);
    for (int i = 0; i < n; ++i)
    {
      for (int j = 0; j < i; ++j)
      {
        if (closed[at(i)] || closed[at(j)])
          continue;
        for (int p = 2 * i; p < 2 * i + 2; ++p)
        {
          for (int q = 2 * j; q < 2 * j + 2; ++q)
          {
            double const g = edge_gap(p, q);
            if (!sparse)
            {
              table[2 * at(n) * at(p) + at(q)] = g;
              table[2 * at(n) * at(q) + at(p)] = g;
            }
            else if (g >= 0.0)
            {
              neighbours[at(p)].push_back(q);
              neighbours[at(q)].push_back(p);
              neighbour_gaps[at(p)].push_back(g);
              neighbour_gaps[at(q)].push_back(g);
            }
          }
        }
      }
    }
  }

  double gap(int p, int q) const
  {
    if (!sparse)
      return table[2 * at(n) * at(p) + at(q)];
    for (std::size_t k = 0; k < neighbours[at(p)].size(); ++k)
    {
      if (neighbours[at(p)][k] == q)
        return neighbour_gaps[at(p)][k];
    }
    return -1.0;
  }

  void close_lonely_ends(bool stop_at_branches)
  {
    for (int i = 0; i < n_chains(); ++i)
    {
      for (int a = 0; a < 2; ++a)
      {
        int count = 0;
        for (int j = 0; j < n_chains(); ++j)
        {
          for (int b = 0; b < 2; ++b)
          {
            if (j != i && chains[at(i)].end_open(a) && chains[at(j)].end_open(b) &&
                gap(chains[at(i)].end_number(a), chains[at(j)].end_number(b)) >= 0.0)
              ++count;
          }
        }
        if (count == 0 || (stop_at_branches && count >= 2))
          chains[at(i)].close_end(a);
      }
    }
  }

  PairGap best_pair_gap(Chain const& chain_a, Chain const& chain_b) const
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

  PairGap keep_order_gap(Chain const& outer, Chain const& inner) const
  {
    PairGap best;
    for (int a = 1; a >= 0; --a)
    {
      for (int b = 0; b < 2; ++b)
      {
        if (!outer.end_open(a) || !inner.end_open(b))
          continue;
        double const g = gap(outer.end_number(a), inner.end_number(b));
        if (g >= 0.0 && g <= best.gap && best.gap >= 1e-12)
          best = {g, a, b};
      }
    }
    return best;
  }

  bool find_closest_pair(int& first, int& second, PairGap& ends) const
  {
    double best = 1e20;
    bool found = false;
    for (int outer = 0; outer < n_chains(); ++outer)
    {
      for (int inner = 0; inner < outer; ++inner)
      {
        PairGap const g = best_pair_gap(chains[at(outer)], chains[at(inner)]);
        if (g.gap >= 1e20 || g.gap > best)
          continue;
        best = g.gap;
        first = outer;
        second = inner;
        ends = g;
        found = true;
      }
    }
    return found;
  }

  // `first` goes on meaning the same chain.
  void join(int& first, int second, int end_first, int end_second)
  {
    if (end_first == 0)
      chains[at(first)].reverse();
    if (end_second == 1)
      chains[at(second)].reverse();
    chains[at(first)].append(chains[at(second)]);
    remove(second);
    if (first > second)
      --first;
  }

  void remove(int index) { chains.erase(chains.begin() + index); }

  void closest_first()
  {
    close_lonely_ends(false);
    int first = 0;
    int second = 0;
    PairGap ends;
    while (find_closest_pair(first, second, ends))
      join(first, second, ends.a, ends.b);
    for (Chain& chain : chains)
    {
      direct(chain);
      if (redefine_start && chain.end_open(0) && chain.end_open(1) &&
          gap(chain.end_number(0), chain.end_number(1)) != -1.0)
        redefine(chain);
    }
  }

  void grow_chains()
  {
    close_lonely_ends(false);
    int first = 0;
    int second = 0;
    PairGap ends;
    while (find_closest_pair(first, second, ends))
    {
      join(first, second, ends.a, ends.b);
      while (true)
      {
        double best = 1e20;
        for (int k = 0; k < n_chains(); ++k)
        {
          PairGap const g = k == first ? PairGap() : best_pair_gap(chains[at(first)], chains[at(k)]);
          if (g.gap >= 1e20 || g.gap > best)
            continue;
          best = g.gap;
          second = k;
          ends = g;
        }
        if (best >= 1e20)
          break;
        join(first, second, ends.a, ends.b);
      }
      chains[at(first)].close_end(0);
      chains[at(first)].close_end(1);
    }
    for (Chain& chain : chains)
      direct(chain);
  }

  bool find_partner(int i, int which, int& partner, int& end) const
  {
    for (int j = i + 1; j < n_chains(); ++j)
    {
      for (int b = 0; b < 2; ++b)
      {
        if (!chains[at(i)].end_open(which) || !chains[at(j)].end_open(b))
          continue;
        double const g = gap(chains[at(i)].end_number(which), chains[at(j)].end_number(b));
        if (g >= 0.0 && g < 1e20)
        {
          partner = j;
          end = b;
          return true;
        }
      }
    }
    return false;
  }

  void sequential()
  {
    close_lonely_ends(true);
    int i = 0;
    while (i < n_chains())
    {
      int j = 0;
      int b = 0;
      if (find_partner(i, 1, j, b))
      {
        if (b == 1)
          chains[at(j)].reverse();
        chains[at(i)].append(chains[at(j)]);
        remove(j);
        continue;
      }
      chains[at(i)].close_end(1);
      if (find_partner(i, 0, j, b))
      {
        if (b == 0)
          chains[at(j)].reverse();
        chains[at(j)].append(chains[at(i)]);
        std::swap(chains[at(i)], chains[at(j)]);
        remove(j);
        continue;
      }
      chains[at(i)].close_end(0);
      ++i;
    }
    for (Chain& chain : chains)
      direct(chain);
  }

  bool join_first_fit(bool keep_order)
  {
    for (int outer = 0; outer < n_chains(); ++outer)
    {
      for (int inner = 0; inner < outer; ++inner)
      {
        PairGap const g = keep_order ? keep_order_gap(chains[at(outer)], chains[at(inner)])
                                     : best_pair_gap(chains[at(outer)], chains[at(inner)]);
        if (g.gap >= 1e20)
          continue;
        int first = keep_order ? inner : outer;
        if (keep_order)
          join(first, outer, g.b, g.a);
        else
          join(first, inner, g.a, g.b);
        return true;
      }
    }
    return false;
  }

  void first_fit(bool keep_order)
  {
    close_lonely_ends(false);
    while (join_first_fit(keep_order))
    {
    }
    for (Chain& chain : chains)
      direct(chain);
  }

  static void direct(Chain& chain)
  {
    std::size_t against = 0;
    for (int const orientation : chain.orientations)
      against += orientation < 0 ? 1 : 0;
    if (against > chain.edges.size() / 2)
      chain.reverse();
  }

  static void redefine(Chain& chain)
  {
    std::size_t p = 0;
    for (std::size_t k = 1; k < chain.edges.size(); ++k)
    {
      if (chain.edges[k] < chain.edges[p])
        p = k;
    }
    if (p == 0)
      return;
    std::vector<int> const edges = chain.edges;
    std::vector<int> const orientations = chain.orientations;
    std::size_t const size = edges.size();
    for (std::size_t k = 0; k < size; ++k)
    {
      chain.edges[k] = edges[(k + p) % size];
      chain.orientations[k] = orientations[(k + p) % size];
    }
    chain.start_point = 2 * chain.edges.front() + (chain.orientations.front() == 1 ? 0 : 1);
    chain.end_point = 2 * chain.edges.back() + (chain.orientations.back() == -1 ? 0 : 1);
  }

  int n;
  bool sparse;
  std::vector<double> table;
  std::vector<std::vector<int>> neighbours;
  std::vector<std::vector<double>> neighbour_gaps;
};

#endif
