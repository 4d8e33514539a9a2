#include "ozobjdependency.h"

#include "graph_probe.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{
typedef OzObjDependencyProbe Probe;
typedef OzObjectDependency Dep;
typedef std::set<OzDynObj const*> ObjectSet;
typedef std::vector<OzDynObj const*> Objects;

/// What a query delivers, sorted, since its order means nothing.
struct Answer
{
  bool found;
  Objects objects;
  bool filtered_out;

  bool operator==(Answer const& other) const
  {
    return found == other.found && objects == other.objects && filtered_out == other.filtered_out;
  }
};

std::ostream& operator<<(std::ostream& out, Answer const& answer)
{
  return out << "{" << answer.found << ", " << testing::PrintToString(answer.objects) << ", "
             << answer.filtered_out << "}";
}

Answer answer_of(bool found, OzIterator<OzDynObj const*>& result, bool filtered_out)
{
  Objects objects;
  for (result.reset(); !result.done(); result.next())
    objects.push_back(result.current());
  std::sort(objects.begin(), objects.end());
  return {found, objects, filtered_out};
}

Answer sources_of(OzObjDependency const& graph, OzDynObj const* object,
                  OzObjectDependencyFilter* filter = nullptr)
{
  OzAutoPtr<OzIterator<OzDynObj const*>> result;
  bool filtered_out = true;
  bool const found = graph.get_source_objects(object, result, filter, &filtered_out);
  return answer_of(found, *result, filtered_out);
}

Answer targets_of(OzObjDependency const& graph, OzDynObj const* object,
                  OzObjectDependencyFilter* filter = nullptr)
{
  OzAutoPtr<OzIterator<OzDynObj const*>> result;
  bool filtered_out = true;
  bool const found = graph.get_target_objects(object, result, filter, &filtered_out);
  return answer_of(found, *result, filtered_out);
}

class Graph : public testing::Test
{
protected:
  OzObjDependency graph;
  Thing a, b, c, d;
};

TEST_F(Graph, IsEmptyAtFirst)
{
  EXPECT_TRUE(Probe::roots(graph).empty());
  EXPECT_TRUE(Probe::leaves(graph).empty());
  EXPECT_TRUE(Probe::nodes(graph).empty());
  EXPECT_TRUE(graph.consider_split_modificational());
  EXPECT_FALSE(graph.absorption_inherits_target_qualifier());
  EXPECT_EQ(graph.new_separator(), 1);
  EXPECT_EQ(graph.new_separator(), 2);
}

TEST_F(Graph, RecordsAChainAndDeliversItsEnds)
{
  EXPECT_TRUE(graph.record_dependency(&a, &b, Dep::MODIFICATION, nullptr, nullptr));
  EXPECT_TRUE(graph.record_dependency(&b, &c, Dep::MODIFICATION, nullptr, nullptr));

  EXPECT_EQ(Probe::root_objects(graph), ObjectSet{&a});
  EXPECT_EQ(Probe::leaf_objects(graph), ObjectSet{&c});
  EXPECT_EQ(sources_of(graph, &c), (Answer{true, {&a}, false}));
  EXPECT_EQ(targets_of(graph, &a), (Answer{true, {&c}, false}));
  EXPECT_EQ(sources_of(graph, &a), (Answer{true, {&a}, false}));
  EXPECT_EQ(targets_of(graph, &c), (Answer{true, {&c}, false}));
}
} // namespace
