#ifndef CONTOURS_REMARKS_H
#define CONTOURS_REMARKS_H

#include "messages.h"
#include "options.h"
#include "report.h"

namespace contours
{

/// Tells what the user should look at before cutting: what is open, branches, was skipped or was there twice.
void tell_remarks(Report const& report, LayerChoice const& layers, Messages& messages);

/// How the result came about, for who asks.
void tell_details(Report const& report, Messages& messages);

} // namespace contours

#endif
