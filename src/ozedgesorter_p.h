#ifndef OZEDGESORTER_P_H
#define OZEDGESORTER_P_H

#include "ozarray.h"
#include "ozdebug.h"

class OzJournal;

/// Edges in the order in which they follow each other, and the two free ends of the whole.
///
/// A free end is kept as its end point number while it is open for joining, and as the complement of that
/// number, which is negative, once it is closed.
class OzEdgeChain
{
public:
  /// A chain of one edge, both of whose ends are open.
  explicit OzEdgeChain(int edge);
  virtual ~OzEdgeChain() = default;

  // `which` is 0 for the start and 1 for the end.
  bool end_open(int which) const { return (which == 0 ? start_point : end_point) >= 0; }

  /// The end point number of an open end. For a closed one it is not the number that was closed, so ask
  /// end_open first.
  int end_number(int which) const;

  /// Closes an open end.
  void close_end(int which);

  /// Turns the direction of the whole chain.
  void reverse();

  void debug(OzJournal& journal, OzDebug level, int indent) const;

  OzArray<int> edges;
  OzArray<int> orientations; // for each edge 1 if it runs along the chain, -1 if against it
  int start_point;
  int end_point;
};

#endif
