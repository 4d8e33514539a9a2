#ifndef CONTOURS_REMARKS_H
#define CONTOURS_REMARKS_H

#include "cluster_job.h"
#include "messages.h"
#include "options.h"
#include "report.h"

namespace contours
{

/// Tells what the user should look at before cutting: what is open, branches, was skipped or was there twice.
void tell_remarks(Report const& report, LayerChoice const& layers, Messages& messages);

/// How the result came about, for who asks.
void tell_details(Report const& report, Messages& messages);

/// The statistics of the job, in one line: they are not the same in each run.
void tell_figures(JobFigures const& figures, Messages& messages);

} // namespace contours

#endif
