#ifndef OZ_H
#define OZ_H

/// @file
/// Everything that the library offers, for clients that would rather wait for the compiler than choose. The
/// library itself includes what it uses.

#include "oz_times.h"
#include "oz_utils.h"
#include "ozaddressset.h"
#include "ozarray.h"
#include "ozassert.h"
#include "ozattrib.h"
#include "ozcompare.h"
#include "ozdebug.h"
#include "ozdeque.h"
#include "ozdynobj.h"
#include "ozedgesorter.h"
#include "ozevent.h"
#include "ozexport.h"
#include "ozfilejournal.h"
#include "ozheap.h"
#include "ozinterface.h"
#include "oziterator.h"
#include "ozjob.h"
#include "ozjournal.h"
#include "ozlinklist.h"
#include "ozlist.h"
#include "ozmap.h"
#include "ozmatrix.h"
#include "ozmutex.h"
#include "ozobjdependency.h"
#include "ozobject.h"
#include "ozobjectdependency.h"
#include "ozpriqueue.h"
#include "ozprogress.h"
#include "ozrbt.h"
#include "ozrcobj.h"
#include "ozreactor.h"
#include "ozreport.h"
#include "ozsequential.h"
#include "ozstandardattribs.h"
#include "ozstring.h"
#include "oztaskprocessor.h"
#include "oztaskserver.h"
#include "oztimer.h"
#include "oztsprocessor.h"

#endif
