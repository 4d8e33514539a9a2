#ifndef DEPENDENCY_TYPES_H
#define DEPENDENCY_TYPES_H

#include "graph_probe.h"

// Short names for tests of the dependency graph.

typedef OzObjDependencyProbe Probe;
typedef OzObjectDependency::Type Type;

inline constexpr Type UNSPECIFIED = OzObjectDependency::UNSPECIFIED;
inline constexpr Type TRANSFER = OzObjectDependency::TRANSFER;
inline constexpr Type CREATION = OzObjectDependency::CREATION;
inline constexpr Type DELETION = OzObjectDependency::DELETION;
inline constexpr Type MODIFICATION = OzObjectDependency::MODIFICATION;
inline constexpr Type SPLIT = OzObjectDependency::SPLIT;
inline constexpr Type ABSORPTION = OzObjectDependency::ABSORPTION;
inline constexpr Type CONVERSION = OzObjectDependency::CONVERSION;
inline constexpr Type CONTAINMENT = OzObjectDependency::CONTAINMENT;

#endif
