#ifndef CONTOURS_FLAVOURS_H
#define CONTOURS_FLAVOURS_H

#include "chains.h"

#include <ozoperationdefaultbehaviour.h>

#include <optional>

namespace contours
{

/// How edges are joined where the user asks for no strategy, in numbered variants. Where a drawing leaves a choice they
/// come to different contours, so a variant that was once in use stays: old results can be made again with it. A better
/// one is added with the next number.
enum Flavour : short
{
  CLOSEST_FIRST = 1, ///< the closest ends first, however large the cluster is
  BY_SIZE = 2,       ///< so in clusters up to MOST_CLOSEST_FIRST edges, and by growing chains in larger ones
  NEWEST_FLAVOUR = BY_SIZE
};

/// The flavour that applies: what the current OzOperationBehaviour of the process answers, who is asked for the newest.
/// Any number can come; below CLOSEST_FIRST it stands for that, above the newest for the newest.
short flavour_to_apply();

/// What a flavour comes to: a strategy for all clusters, or none where each cluster's size decides.
std::optional<Strategy> strategy_of(short flavour);

/// While it lives, `flavour` applies in this process: the current behaviour is one that has recorded it. That behaviour
/// is locked, so a later record of another flavour is refused, and is not even reported: a report would end the program.
class KeptFlavour
{
public:
  explicit KeptFlavour(short flavour);
  /// Puts back the behaviour that was current before.
  ~KeptFlavour();
  KeptFlavour(KeptFlavour const&) = delete;
  KeptFlavour& operator=(KeptFlavour const&) = delete;

private:
  OzOperationDefaultBehaviour behaviour;
  OzOperationBehaviour* former; // not owned
};

/// By these the program is known to behaviours: the address of its name, and the number of what it does.
extern OzString const PACKAGE;
constexpr int JOIN_EDGES = 1;

} // namespace contours

#endif
