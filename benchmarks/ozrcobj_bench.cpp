// A counted reference is copied and dropped wherever an attribute or an observer changes hands. One peer is
// a shared pointer, object and count in one block; its count is atomic as soon as the process has threads,
// and a process with this library in it has. So a thread is kept waiting while the times are taken. The other
// is an intrusive pointer as one would write it by hand, over a plain count without virtual operations.

#include "ozattrib.h"
#include "ozrcobj.h"
#include "ozstandardattribs.h"

#include <benchmark/benchmark.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace
{
/// A thread that sleeps for the life of the process.
class SleepingThread
{
public:
  SleepingThread()
    : thread(
          [this]
          {
            std::unique_lock<std::mutex> hold(mutex);
            awake.wait(hold, [this] { return over; });
          })
  {
  }
  ~SleepingThread()
  {
    {
      std::lock_guard<std::mutex> const hold(mutex);
      over = true;
    }
    awake.notify_one();
    thread.join();
  }

private:
  std::mutex mutex;
  std::condition_variable awake;
  bool over = false;
  std::thread thread;
};
SleepingThread const sleeping_thread;

struct Plain
{
  virtual ~Plain() = default;
  int value = 0;
};

/// Counts as the classes of the library do, but in sight of the compiler.
class Counted : public OzRCObj
{
public:
  void add_ref() const override { ++count; }
  void remove_ref() const override { --count; }
  int n_refs() const override { return count; }

private:
  mutable int count = 0;
};

struct PlainCounted : Plain
{
  int count = 0;
};

/// No more than it must be: no check, no virtual operation but the destructor.
class Intrusive
{
public:
  Intrusive() = default;
  explicit Intrusive(PlainCounted* counted)
    : object(counted)
  {
    take();
  }
  Intrusive(Intrusive const& other)
    : object(other.object)
  {
    take();
  }
  Intrusive& operator=(Intrusive const& other)
  {
    PlainCounted* const old = object;
    object = other.object;
    take();
    drop(old);
    return *this;
  }
  ~Intrusive() { drop(object); }
  PlainCounted* get() const { return object; }

private:
  void take() const
  {
    if (object != nullptr)
      ++object->count;
  }
  static void drop(PlainCounted* old)
  {
    if (old != nullptr && --old->count == 0)
      delete old;
  }

  PlainCounted* object = nullptr;
};

template <class Pointer>
Pointer make();
template <>
Intrusive make()
{
  return Intrusive(new PlainCounted);
}
template <>
OzRCPtr<Counted> make()
{
  return OzRCPtr<Counted>(new Counted);
}
template <>
OzRCPtr<OzAttrib> make()
{
  return OzRCPtr<OzAttrib>(new OzDoubleAttrib(OzDoubleAttrib::OzUsageDefault, 1.0));
}
template <>
std::shared_ptr<Plain> make()
{
  return std::make_shared<Plain>();
}

/// Copies and drops a pointer to each of a number of objects in turn.
template <class Pointer>
void CopyAndDrop(benchmark::State& state)
{
  std::vector<Pointer> pointers;
  for (std::int64_t i = 0; i < state.range(0); ++i)
    pointers.push_back(make<Pointer>());
  for (auto _ : state)
    for (Pointer const& pointer : pointers)
    {
      Pointer const copy(pointer);
      benchmark::DoNotOptimize(copy.get());
    }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Assigns pointers to each other, so that each step drops one reference and takes another.
template <class Pointer>
void Assign(benchmark::State& state)
{
  std::vector<Pointer> pointers;
  for (std::int64_t i = 0; i < state.range(0); ++i)
    pointers.push_back(make<Pointer>());
  Pointer held;
  for (auto _ : state)
    for (Pointer const& pointer : pointers)
    {
      held = pointer;
      benchmark::DoNotOptimize(held.get());
    }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
} // namespace

BENCHMARK(CopyAndDrop<OzRCPtr<OzAttrib>>)->Arg(16)->Arg(1024);
BENCHMARK(CopyAndDrop<OzRCPtr<Counted>>)->Arg(16)->Arg(1024);
BENCHMARK(CopyAndDrop<std::shared_ptr<Plain>>)->Arg(16)->Arg(1024);
BENCHMARK(CopyAndDrop<Intrusive>)->Arg(16)->Arg(1024);
BENCHMARK(Assign<OzRCPtr<OzAttrib>>)->Arg(16)->Arg(1024);
BENCHMARK(Assign<OzRCPtr<Counted>>)->Arg(16)->Arg(1024);
BENCHMARK(Assign<std::shared_ptr<Plain>>)->Arg(16)->Arg(1024);
BENCHMARK(Assign<Intrusive>)->Arg(16)->Arg(1024);
