#ifndef CONTOURS_DXF_ENTITIES_H
#define CONTOURS_DXF_ENTITIES_H

#include "drawing.h"
#include "dxf_groups.h"

#include <vector>

namespace contours
{

/// Fills in `use`, `reason` and `curves` of `entity` by its type, in the units of the drawing. `vertices` are those
/// that follow an old POLYLINE, and empty for all else.
///
/// A missing or senseless number throws an InputError that does not name the entity; the caller does.
void read_curves(Entity& entity, EntityGroups const& groups, std::vector<EntityGroups> const& vertices);

} // namespace contours

#endif
