#ifndef OZEDGESORTER_H
#define OZEDGESORTER_H

#include "ozarray.h"
#include "ozdebug.h"
#include "ozmatrix.h"

#include <cstdint>

class OzEdgeChain;
class OzJournal;

/// Sorts a set of edges into chains, in which each edge follows the one before it end to start, some of them
/// reversed.
///
/// The sorter knows no geometry. A derived class says how far two ends of edges are apart, in units of its
/// own, and whether they may be joined at all; the sorter tabulates all these gaps, joins ends by one of four
/// strategies, and gives each chain the direction that most of its edges have. Every edge is in exactly one
/// chain afterwards. An edge whose own ends are at most 0.001 apart is closed in itself, whatever the units
/// are, and stays a chain of its own.
///
/// An edge is known by its number, 0 to n_edges - 1. Its ends are numbered in an `int`, 2 * edge for the
/// start and one more for the end, so there are at most 2^30 edges; more are std::bad_alloc.
///
/// Results hold from one `sort` to the next. The sorter may be sorted any number of times, and asks for all
/// gaps each time.
///
/// Ownership: the sorter owns its chains and tables and hands out numbers only. It is not copyable.
/// Threads: one at a time.
/// Reports: a chain or link out of range, which is then used all the same; see the operations.
/// Failure: what `edge_gap` throws passes through `sort`, which may then be called again; there are no
/// results until it has returned.
/// Cost: `edge_gap` is asked once for each pair of ends of different edges, 2 * n_edges * (n_edges - 1)
/// times: where edges are many, put them into clusters first and sort each for itself. Beside that a sort
/// costs little: a walk over all gaps, and one over the gaps of two ends for each join. The dense form holds
/// (2 * n_edges) squared doubles, 128 MB for 2,000 edges; the sparse form holds only the gaps of ends that
/// may be joined, twice.
class OZ_EXPORT OzEdgeSorter
{
public:
  /// Which ends are joined first. Any other value counts as OzSortClosestFirst.
  enum OzSortStrategy : int
  {
    OzSortClosestFirst = 0, ///< always the closest two of all open ends
    OzSortGrowChains = 1,   ///< the closest two, then that chain grows at both ends until it finds nothing
    OzSortSequential = 2,   ///< each chain in turn takes the first end that fits; branching ends stay apart
    OzSortFirstFit = 3      ///< the first two chains that fit at any end
  };

protected:
  /// The gap between the start (flag true) or the end (flag false) of `edge_a` and the same of `edge_b`. From
  /// 0 up, the two ends may be joined and are so far apart; below 0 they may not. Return -1.0 for ends that
  /// are not to be joined: any other negative number between the two ends of a chain makes it count as closed
  /// in the dense form, see set_redefine_start_of_closed_chains.
  ///
  /// Called by `sort` alone: first for each edge with itself, flags true and false, then with `edge_a` above
  /// `edge_b`, for each pair start before end. A gap of 1e20 or more, and one that is not a number, joins
  /// nothing.
  virtual double edge_gap(std::uint64_t edge_a, std::uint64_t edge_b, bool at_start_a,
                          bool at_start_b) const = 0;

public:
  /// Makes room for the gaps of `n_edges` edges, as a table or as lists; there are no chains yet.
  OzEdgeSorter(std::uint64_t n_edges, bool sparse);
  OzEdgeSorter(OzEdgeSorter const&) = delete;
  OzEdgeSorter& operator=(OzEdgeSorter const&) = delete;
  virtual ~OzEdgeSorter();

  /// Writes all chains, whatever the level is.
  virtual void debug(OzJournal& journal, OzDebug level, int indent) const;

  /// Sorts all edges anew.
  ///
  /// `keep_order` matters to OzSortFirstFit only: with it a chain joins behind the one at the lower position,
  /// so that the order of the edges carries through to the result, and takes the first practically exact
  /// match (below 1e-12) of two chains instead of the closest.
  ///
  /// Under OzSortSequential an end that could be joined to several open ends is closed before anything is
  /// joined. That takes effect at once, edge by edge: of three ends that meet at a point the first is closed,
  /// and the other two, each with one candidate left, may join.
  ///
  /// In the sparse form the lists are not emptied before, so they grow with each sort, and the gap that was
  /// found first for two ends is the one that counts from then on.
  void sort(OzSortStrategy strategy, bool keep_order);

  std::uint64_t n_chain() const;
  /// How many edges there are in the chain.
  std::uint64_t n_link(std::uint64_t chain) const;
  /// The edge at a place of a chain. A chain out of range is reported here and by the array of chains, a link
  /// out of range here and by the array of edges; both are then used all the same.
  std::uint64_t edge_index(std::uint64_t chain, std::uint64_t link) const;
  /// Whether the edge at that place runs against its chain. Reports as edge_index does.
  bool reversed(std::uint64_t chain, std::uint64_t link) const;
  /// Whether an edge runs against its chain; false if there is no such edge. Cost: a walk over all links.
  bool reversed(std::uint64_t edge) const;
  /// Where an edge is. False, with the outputs unchanged, if there is no such edge. Cost: a walk over all
  /// links.
  bool get_indices(std::uint64_t edge, std::uint64_t& chain, std::uint64_t& link) const;

protected:
  /// From now on OzSortClosestFirst lets each closed chain start at its lowest edge number. A chain is closed
  /// if both its ends are still open for joining and their gap is not exactly -1.0. The other strategies do
  /// not honour it, and it cannot be taken back.
  void set_redefine_start_of_closed_chains();

private:
  OzEdgeChain const& chain(std::uint64_t index) const;
  void initialize();
  void fill_table(OzArray<bool> const& closed);
  void fill_lists(OzArray<bool> const& closed);
  void add_neighbours(std::uint64_t p, std::uint64_t q, double gap);
  bool initialized() const;
  OzEdgeSorter* mp() const;

  OzArray<OzEdgeChain*> chains; // owned
  OzMatrix<double> gaps;        // dense form: the gap between two end points, or -1.0
  // Sparse form: the end points that may join each end point, and how far apart they are.
  OzArray<OzArray<int>> neighbours;
  OzArray<OzArray<double>> neighbour_gaps;
  bool redefine_start = false;
};

#endif
