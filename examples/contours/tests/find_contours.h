#ifndef CONTOURS_TESTS_FIND_CONTOURS_H
#define CONTOURS_TESTS_FIND_CONTOURS_H

#include "contours.h"
#include "history.h"

/// Sorts one cluster after the other, without a job.
inline void find_contours(contours::ContourFinder& finder, contours::History& history)
{
  for (std::size_t cluster = 0; cluster < finder.clusters(); ++cluster)
  {
    finder.add(finder.sort(cluster, {}));
    history.record_new_contours();
  }
  finder.finish();
}

#endif
