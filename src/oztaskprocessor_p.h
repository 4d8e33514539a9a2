#ifndef OZTASKPROCESSOR_P_H
#define OZTASKPROCESSOR_P_H

#include "oztaskprocessor.h"

/// Three numbers of which each processor has its own, and which are -1 until somebody sets them. Nothing in
/// the library reads them.
extern OZ_EXPORT OzTaskProcessorDkbLocal<int>* const dkb_unread_locals;
constexpr int DKB_UNREAD_LOCALS = 3;

#endif
