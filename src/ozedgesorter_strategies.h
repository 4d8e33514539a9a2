#ifndef OZEDGESORTER_STRATEGIES_H
#define OZEDGESORTER_STRATEGIES_H

#include "ozarray.h"
#include "ozmatrix.h"

#include <cstdint>
#include <vector>

class OzEdgeChain;

/// What one sort works on: the chains of the sorter, one for each edge at first, and the gaps of all ends.
///
/// The strategies are defined by searches over all pairs of chains before each join, in which the position of
/// a chain decides between equal gaps. The same joins are found here without these searches:
///
/// - A chain keeps the number of its place, its key, however many chains in front of it go: closing a hole
///   moves the chains behind it but not past one another, so keys compare as positions do.
/// - Joins are links between end points. The edges of a chain are written down once, in the end, by walking
///   from its free start to its free end.
/// - A gap that joins nothing at some moment (an end is taken or closed, or both ends lie in one chain) never
///   does later. So gaps are gone through once, from the least up, or chain by chain in the order of the
///   search.
///
/// Cost: one walk over all gaps, and a look at the gaps of the two ends of a chain for each join.
class OzEdgeSorting
{
public:
  OzEdgeSorting(OzArray<OzEdgeChain*>& chains, OzMatrix<double> const& gaps,
                OzArray<OzArray<int>> const& neighbours, OzArray<OzArray<double>> const& neighbour_gaps,
                bool redefine_start);

  /// Wanted if the lists of the sparse form are those of several sorts: of several entries for one end point
  /// the first alone counts.
  void keep_first_entries();

  void closest_first();
  void grow_chains();
  void sequential();
  void first_fit(bool keep_order);

private:
  static constexpr int NONE = -1;

  /// An end point.
  struct End
  {
    int mate; // the end point that it is joined to, or NONE while it is free
    int key;  // the chain that it is a free and open end of, else NONE
    int side; // 0 if it is the start of that chain, 1 if it is the end
  };

  /// Two end points that may be joined; `p` is an end of the edge with the higher number.
  struct Candidate
  {
    double gap;
    int p;
    int q;
  };

  /// A partner for one end of a chain.
  struct Partner
  {
    double gap;
    int key;
    int own_side;
    int side;
  };

  class Rounds;
  class Group;

  bool dense() const { return gaps.rows() != 0; }
  double gap(int p, int q) const;
  bool has_neighbour(int p) const;
  template <class Visit>
  void each_neighbour(int p, Visit visit) const;
  template <class Visit>
  void each_lower_neighbour(int p, Visit visit) const;
  template <class Visit>
  void each_partner(int key, Visit visit) const;

  bool alive(int key) const { return !absorbed[at(key)]; }
  bool fits(Candidate const& candidate) const;
  void close(int p) { ends[at(p)].key = NONE; }
  void close_chain(int key);
  void link(int front, int end_front, int back, int end_back, int key);
  void close_lonely_ends();
  void close_branches();
  Partner closest_partner(int key) const;
  Partner lowest_partner(int key, int below) const;
  Partner first_exact_or_closest(int outer, int inner) const;
  int only_fitting_end(int p) const;
  void write_chains();
  void write_chain(int key, std::vector<int>& path);
  bool closed(OzEdgeChain const& chain) const;
  static void redefine(OzEdgeChain& chain);

  static std::uint64_t at(int index) { return static_cast<std::uint64_t>(index); }
  int n_points() const { return static_cast<int>(ends.size()); }
  int n_edges() const { return n_points() / 2; }

  OzArray<OzEdgeChain*>& chains;
  OzMatrix<double> const& gaps;
  OzArray<OzArray<int>> const* neighbours;
  OzArray<OzArray<double>> const* neighbour_gaps;
  bool const redefine_start;

  std::vector<End> ends;      // by end point
  std::vector<int> free_ends; // by 2 * key + side: the end points at which a chain begins and ends
  std::vector<char> absorbed; // by key: went into another chain
  OzArray<OzArray<int>> first_neighbours;        // see keep_first_entries
  OzArray<OzArray<double>> first_neighbour_gaps; // likewise
};

#endif
