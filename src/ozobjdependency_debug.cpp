#include "ozobjdependency.h"

void OzObjDependency::debug(OzJournal&, OzDebug, bool, int) const {}

void OzObjDependency::set_dotty_output_format(bool dotty)
{
  dotty_output = dotty;
}

void OzObjDependency::add_debug_node_filter(DebugNodeFilterType type,
                                            OzObjectDependencyNodeFilter const* filter)
{
  debug_node_filter_types.append(type);
  debug_node_filters.append(filter);
}

void OzObjDependency::remove_debug_node_filters()
{
  debug_node_filter_types = NodeFilterTypes();
  debug_node_filters = NodeFilters();
}

void OzObjDependency::set_debug_link_filter(OzObjectDependencyFilter* filter)
{
  debug_link_filter = filter;
}

void OzObjDependency::reset_debug_link_filter()
{
  debug_link_filter = nullptr;
}
