#include "flavours.h"

namespace contours
{

OzString const PACKAGE("oz-contours");

short flavour_to_apply()
{
  return OzOperationBehaviour::get_instance()->determine_flavour_to_apply(&PACKAGE, JOIN_EDGES,
                                                                          NEWEST_FLAVOUR);
}

std::optional<Strategy> strategy_of(short flavour)
{
  if (flavour <= CLOSEST_FIRST)
    return OzEdgeSorter::OzSortClosestFirst;
  return std::nullopt;
}

KeptFlavour::KeptFlavour(short flavour)
  : former(OzOperationBehaviour::get_instance())
{
  behaviour.set_best_flavour(&PACKAGE, JOIN_EDGES, flavour);
  behaviour.lock();
  OzOperationBehaviour::set_instance(&behaviour);
}

KeptFlavour::~KeptFlavour()
{
  OzOperationBehaviour::set_instance(former);
}

} // namespace contours
