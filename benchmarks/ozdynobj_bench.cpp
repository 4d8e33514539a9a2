// Types are asked for in every search among attributes and by every observer of events. The peer asks the
// language for the same. The objects are of a class that stands 1 to 4 levels below the root; the question is
// whether they are objects of the model, one level below it, so that the chain is climbed all the way. A
// question that is answered by no climbs one level more.

#include "ozobject.h"
#include "ozreactor.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace
{
/// The class at `Depth` below the root, as a client derives it.
template <int Depth>
class Level : public Level<Depth - 1>
{
public:
  OzString const* type() const override { return &class_name_; }
  OzString const& class_name() const override { return class_name_; }
  bool isA(OzString const* t) const override { return t == &class_name_ || Level<Depth - 1>::isA(t); }

  static inline OzString const class_name_ = "Level";
};

template <>
class Level<1> : public OzObject
{
public:
  OzDynObj* clone() const override { return nullptr; }
};

template <int Depth>
std::vector<std::unique_ptr<OzDynObj>> make_objects()
{
  std::vector<std::unique_ptr<OzDynObj>> objects;
  for (int i = 0; i < 64; ++i)
    objects.emplace_back(new Level<Depth>);
  return objects;
}

struct IsAnObject
{
  static bool ask(OzDynObj const* object) { return object->isA(OzObject::type_id()); }
};
struct CastToObject
{
  static OzObject* ask(OzDynObj* object) { return OzObject::cast(object); }
};
struct DynamicCastToObject
{
  static OzObject* ask(OzDynObj* object) { return dynamic_cast<OzObject*>(object); }
};
struct IsAReactor
{
  static bool ask(OzDynObj const* object) { return object->isA(OzReactor::type_id()); }
};
struct DynamicCastToReactor
{
  static OzReactor* ask(OzDynObj* object) { return dynamic_cast<OzReactor*>(object); }
};

template <class Question, int Depth>
void Ask(benchmark::State& state)
{
  auto const objects = make_objects<Depth>();
  for (auto _ : state)
    for (auto const& object : objects)
    {
      OzDynObj* asked = object.get();
      benchmark::DoNotOptimize(asked); // hides the class, which the compiler could know
      benchmark::DoNotOptimize(Question::ask(asked));
    }
  state.SetItemsProcessed(state.iterations() * 64);
}
} // namespace

BENCHMARK(Ask<IsAnObject, 1>);
BENCHMARK(Ask<CastToObject, 1>);
BENCHMARK(Ask<DynamicCastToObject, 1>);
BENCHMARK(Ask<IsAnObject, 2>);
BENCHMARK(Ask<CastToObject, 2>);
BENCHMARK(Ask<DynamicCastToObject, 2>);
BENCHMARK(Ask<IsAnObject, 3>);
BENCHMARK(Ask<CastToObject, 3>);
BENCHMARK(Ask<DynamicCastToObject, 3>);
BENCHMARK(Ask<IsAnObject, 4>);
BENCHMARK(Ask<CastToObject, 4>);
BENCHMARK(Ask<DynamicCastToObject, 4>);
BENCHMARK(Ask<IsAReactor, 1>);
BENCHMARK(Ask<DynamicCastToReactor, 1>);
BENCHMARK(Ask<IsAReactor, 4>);
BENCHMARK(Ask<DynamicCastToReactor, 4>);
