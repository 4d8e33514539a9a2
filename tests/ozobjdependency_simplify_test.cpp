#include "ozobjdependency.h"
#include "ozobject.h"

#include "report_recorder.h"

#include <gtest/gtest.h>

namespace
{
class Thing : public OzObject
{
public:
  OzDynObj* clone() const override { return new Thing(*this); }
};

std::vector<OzDynObj const*> sources_of(OzObjDependency const& graph, OzDynObj const& object)
{
  OzAutoPtr<OzIterator<OzDynObj const*>> found;
  graph.get_source_objects(&object, found, nullptr, nullptr);
  std::vector<OzDynObj const*> sources;
  for (found->reset(); !found->done(); found->next())
    sources.push_back(found->current());
  return sources;
}
} // namespace

TEST(OzObjDependencySimplify, PutsOneLinkInThePlaceOfAPath)
{
  Thing a;
  Thing b;
  Thing c;
  OzObjDependency graph;
  graph.record_dependency(&a, &b, OzObjectDependency::MODIFICATION, nullptr, nullptr);
  graph.record_dependency(&b, &c, OzObjectDependency::MODIFICATION, nullptr, nullptr);
  ReportRecorder const recorder;

  graph.simplify_it();

  EXPECT_EQ(recorder.units(), reports(0, ""));
  EXPECT_EQ(sources_of(graph, c), std::vector<OzDynObj const*>{&a});
  EXPECT_EQ(sources_of(graph, b), std::vector<OzDynObj const*>{}) << "the graph knows it no more";
}

TEST(OzObjDependencySimplify, DeliversARootOnceForADiamond)
{
  Thing a;
  Thing b;
  Thing c;
  Thing d;
  OzObjDependency graph;
  graph.record_dependency(&a, &b, OzObjectDependency::CREATION, nullptr, nullptr);
  graph.record_dependency(&a, &c, OzObjectDependency::CREATION, nullptr, nullptr);
  graph.record_dependency(&b, &d, OzObjectDependency::ABSORPTION, nullptr, nullptr);
  graph.record_dependency(&c, &d, OzObjectDependency::ABSORPTION, nullptr, nullptr);
  EXPECT_EQ(sources_of(graph, d).size(), 2u);

  graph.simplify_it();

  EXPECT_EQ(sources_of(graph, d), std::vector<OzDynObj const*>{&a});
}
