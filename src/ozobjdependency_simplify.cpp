#include "ozobjdependency.h"

void OzObjDependency::simplify_it() {}
