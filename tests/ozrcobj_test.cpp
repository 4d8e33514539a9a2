#include "ozrcobj.h"

#include "model_doubles.h"
#include "report_recorder.h"
#include "vtable_slot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
/// Counts like the classes of the library, and writes down each call.
class Counted : public OzRCObj
{
public:
  Counted(std::string name, Log& log)
    : name_(std::move(name))
    , log_(&log)
  {
  }
  ~Counted() override { log_->push_back("~" + name_); }

  void add_ref() const override
  {
    ++count;
    log_->push_back(name_ + ".add_ref");
  }
  void remove_ref() const override
  {
    --count;
    log_->push_back(name_ + ".remove_ref");
  }
  int n_refs() const override
  {
    log_->push_back(name_ + ".n_refs");
    return count;
  }

  mutable int count = 0;
  OzRCPtr<Counted> next;

private:
  std::string name_;
  Log* log_;
};

class Owned
{
public:
  Owned(std::string name, Log& log)
    : name_(std::move(name))
    , log_(&log)
  {
  }
  virtual ~Owned() { log_->push_back("~" + name_); }
  int answer() const { return 42; }

private:
  std::string name_;
  Log* log_;
};

/// Deleted through the base.
class Derived : public Owned
{
public:
  using Owned::Owned;
  ~Derived() override = default;
};
} // namespace

TEST(OzRCObj, VirtualFunctionsStandInTheirOrderAndThereAreNoFields)
{
  EXPECT_EQ(vtable_slot(&OzRCObj::add_ref), 2);
  EXPECT_EQ(vtable_slot(&OzRCObj::remove_ref), 3);
  EXPECT_EQ(vtable_slot(&OzRCObj::n_refs), 4);
  EXPECT_EQ(sizeof(OzRCObj), sizeof(void*));
}

TEST(OzRCObj, CopyingAndAssigningDoNothing)
{
  Log log;
  Counted const source("source", log);
  source.count = 3;
  Counted target("target", log);

  OzRCObj& base = target;
  EXPECT_EQ(&(base = source), &base);
  {
    Counted const copy(source); // whose own count is a field of its own class
    EXPECT_EQ(copy.count, 3);
    EXPECT_EQ(source.count, 3);
    EXPECT_THAT(log, IsEmpty());
  }

  EXPECT_EQ(target.count, 0);
  EXPECT_EQ(log, Log{"~source"}) << "the copy's end";
}

TEST(OzRCPtr, IsAPointerAndNothingElse)
{
  EXPECT_EQ(sizeof(OzRCPtr<Counted>), sizeof(void*));
  EXPECT_FALSE((std::is_convertible_v<Counted*, OzRCPtr<Counted>>));
  EXPECT_FALSE((std::is_convertible_v<OzRCPtr<Counted>, bool>));
}

TEST(OzRCPtr, OfNothingCountsNothing)
{
  Log log;
  {
    OzRCPtr<Counted> empty;
    OzRCPtr<Counted> of_null(nullptr);
    OzRCPtr<Counted> copy(empty);
    of_null = copy;

    EXPECT_EQ(empty.get(), nullptr);
    EXPECT_FALSE(empty);
    EXPECT_TRUE(empty == nullptr);
    EXPECT_FALSE(empty != nullptr);
    EXPECT_TRUE(nullptr == empty);
    EXPECT_FALSE(nullptr != empty);
    EXPECT_TRUE(empty == of_null);
  }
  EXPECT_THAT(log, IsEmpty());
}

TEST(OzRCPtr, TakesAReferenceAndTheLastOneDeletes)
{
  Log log;
  {
    OzRCPtr<Counted> const pointer(new Counted("a", log));
    EXPECT_EQ(pointer->count, 1);
    {
      OzRCPtr<Counted> const copy(pointer);
      EXPECT_EQ(pointer->count, 2);
    }
    EXPECT_EQ(pointer->count, 1);
  }

  EXPECT_THAT(log, ElementsAre("a.add_ref", "a.add_ref", "a.remove_ref", "a.n_refs", "a.remove_ref",
                               "a.n_refs", "~a"));
}

TEST(OzRCPtr, DroppingTheOnlyWrapperOfAFreshObjectDeletesIt)
{
  Log log;
  Counted* const fresh = new Counted("a", log);

  OzRCPtr<Counted>{fresh};

  EXPECT_THAT(log, ElementsAre("a.add_ref", "a.remove_ref", "a.n_refs", "~a"));
}

TEST(OzRCPtr, ReachesTheObject)
{
  Log log;
  Counted* const object = new Counted("a", log);
  OzRCPtr<Counted> const pointer(object);
  OzRCPtr<Counted> const other(new Counted("b", log));

  EXPECT_EQ(pointer.get(), object);
  EXPECT_EQ(&*pointer, object);
  EXPECT_EQ(&pointer->count, &object->count);
  EXPECT_TRUE(pointer);
  EXPECT_TRUE(pointer == object);
  EXPECT_FALSE(pointer != object);
  EXPECT_TRUE(object == pointer);
  EXPECT_FALSE(object != pointer);
  EXPECT_FALSE(pointer == nullptr);
  EXPECT_TRUE(pointer != nullptr);
  EXPECT_TRUE(nullptr != pointer);
  EXPECT_FALSE(nullptr == pointer);
  EXPECT_FALSE(pointer == other);
  EXPECT_TRUE(pointer != other);
  EXPECT_FALSE(pointer == other.get());
  EXPECT_TRUE(pointer != other.get());
}

TEST(OzRCPtr, AssignmentDropsTheOldReferenceThenTakesTheNewOneThenDeletes)
{
  Log log;
  OzRCPtr<Counted> target(new Counted("old", log));
  OzRCPtr<Counted> const source(new Counted("new", log));
  log.clear();

  EXPECT_EQ(&(target = source), &target);

  EXPECT_THAT(log, ElementsAre("old.remove_ref", "old.n_refs", "new.add_ref", "~old"));
  EXPECT_EQ(target, source);
  EXPECT_EQ(source->count, 2);
}

TEST(OzRCPtr, AssignmentLeavesAliveWhatOthersHold)
{
  Log log;
  OzRCPtr<Counted> const holder(new Counted("old", log));
  OzRCPtr<Counted> target(holder);
  OzRCPtr<Counted> const source(new Counted("new", log));
  log.clear();

  target = source;

  EXPECT_THAT(log, ElementsAre("old.remove_ref", "old.n_refs", "new.add_ref"));
  EXPECT_EQ(holder->count, 1);
}

TEST(OzRCPtr, AssignmentFromAnEmptyOneLetsGo)
{
  Log log;
  OzRCPtr<Counted> target(new Counted("a", log));
  log.clear();

  target = OzRCPtr<Counted>();

  EXPECT_THAT(log, ElementsAre("a.remove_ref", "a.n_refs", "~a"));
  EXPECT_EQ(target.get(), nullptr);
}

TEST(OzRCPtr, AssignmentToItselfCountsNothing)
{
  Log log;
  OzRCPtr<Counted> target(new Counted("a", log));
  OzRCPtr<Counted> const& itself = target;
  log.clear();

  target = itself;

  EXPECT_THAT(log, IsEmpty());
  EXPECT_EQ(target->count, 1);
}

TEST(OzRCPtr, AssignmentFromAnotherToTheSameObjectKeepsIt)
{
  Log log;
  OzRCPtr<Counted> target(new Counted("a", log));
  OzRCPtr<Counted> const same(target);
  log.clear();

  target = same;

  EXPECT_THAT(log, ElementsAre("a.remove_ref", "a.n_refs", "a.add_ref"));
  EXPECT_EQ(target->count, 2);
}

TEST(OzRCPtr, MayBeAssignedFromInsideTheObjectThatItLetsGo)
{
  Log log;
  OzRCPtr<Counted> p(new Counted("first", log));
  p->next = OzRCPtr<Counted>(new Counted("second", log));
  log.clear();

  p = p->next;

  EXPECT_THAT(log, ElementsAre("first.remove_ref", "first.n_refs", "second.add_ref", "~first",
                               "second.remove_ref", "second.n_refs"));
  EXPECT_EQ(p->count, 1);
}

TEST(OzRCPtr, DeletesThroughTheVirtualDestructorWhateverTheBaseIs)
{
  Log log;
  OzRCPtr<OzAttrib>{new TestAttrib("attribute", log)};
  OzRCPtr<OzReactor>{new TestReactor("reactor", log)};
  OzRCPtr<OzRCObj>{new TestReactor("counted", log)};

  EXPECT_THAT(log, ElementsAre("~attribute", "~reactor", "~counted"));
}

TEST(OzRCPtr, ACountThatWasSpoiledIsReportedByTheObject)
{
  Log log;
  ReportRecorder const recorder;
  TestAttrib attrib("a", log);
  {
    OzRCPtr<OzAttrib> const pointer(&attrib);
    attrib.remove_ref(); // a reference that nobody took
    // The count falls to -1 now, so nothing is deleted: one report for the fall, one for the question.
  }

  EXPECT_EQ(recorder.units(), reports(2, "ozattrib.cpp"));
  EXPECT_THAT(log, IsEmpty());
}

TEST(OzRCPtr, KeepsCountsRightOverALongRandomWalk)
{
  unsigned const seed = 7;
  std::mt19937 random(seed);
  Log log;
  std::vector<TestAttrib*> objects;
  std::vector<OzRCPtr<OzAttrib>> keepers; // one reference each, so that none dies
  for (int i = 0; i < 4; ++i)
  {
    objects.push_back(new TestAttrib("x", log));
    keepers.emplace_back(objects.back());
  }
  std::vector<OzRCPtr<OzAttrib>> pointers(8);
  std::vector<OzAttrib*> model(8, nullptr);

  for (int step = 0; step < 5000; ++step)
  {
    std::size_t const to = random() % pointers.size();
    std::size_t const from = random() % pointers.size();
    if (random() % 2 == 0)
    {
      pointers[to] = pointers[from];
      model[to] = model[from];
    }
    else
    {
      OzAttrib* const object = random() % 5 == 0 ? nullptr : objects[random() % objects.size()];
      pointers[to] = OzRCPtr<OzAttrib>(object);
      model[to] = object;
    }

    for (OzAttrib const* const object : objects)
      ASSERT_EQ(object->n_refs(), 1 + std::count(model.begin(), model.end(), object))
          << "seed " << seed << ", step " << step;
  }
  EXPECT_THAT(log, IsEmpty());
}

TEST(OzAutoPtr, DeletesWhatItOwnsThroughTheVirtualDestructor)
{
  Log log;
  {
    OzAutoPtr<Owned> const pointer(new Derived("a", log));
    EXPECT_THAT(log, IsEmpty());
  }

  EXPECT_THAT(log, ElementsAre("~a"));
}

TEST(OzAutoPtr, OwnsNothingAtFirst)
{
  OzAutoPtr<Owned> const pointer;

  EXPECT_EQ(pointer.get(), nullptr);
  EXPECT_FALSE(pointer);
}

TEST(OzAutoPtr, ReachesTheObject)
{
  Log log;
  Owned* const object = new Owned("a", log);
  OzAutoPtr<Owned> const pointer(object);

  EXPECT_EQ(pointer.get(), object);
  EXPECT_EQ(&*pointer, object);
  EXPECT_EQ(pointer->answer(), 42);
  EXPECT_TRUE(pointer);
}

TEST(OzAutoPtr, AssignmentDeletesTheOldObjectAndOwnsTheNewOne)
{
  Log log;
  OzAutoPtr<Owned> pointer(new Owned("old", log));
  Owned* const taken = new Owned("new", log);

  EXPECT_EQ(&(pointer = taken), &pointer);

  EXPECT_THAT(log, ElementsAre("~old"));
  EXPECT_EQ(pointer.get(), taken);
}

TEST(OzAutoPtr, AssignmentOfNullDeletes)
{
  Log log;
  OzAutoPtr<Owned> pointer(new Owned("a", log));

  pointer = nullptr;

  EXPECT_THAT(log, ElementsAre("~a"));
  EXPECT_EQ(pointer.get(), nullptr);
}

TEST(OzAutoPtr, AssignmentOfWhatItHoldsDoesNothing)
{
  Log log;
  OzAutoPtr<Owned> pointer(new Owned("a", log));

  pointer = pointer.get();

  EXPECT_THAT(log, IsEmpty());
}

TEST(OzAutoPtr, ReleaseGivesTheObjectUp)
{
  Log log;
  OzAutoPtr<Owned> pointer(new Owned("a", log));

  Owned* const released = pointer.release();

  EXPECT_EQ(pointer.get(), nullptr);
  EXPECT_THAT(log, IsEmpty());
  delete released;
}

TEST(OzAutoPtr, IsAPointerThatIsNeitherCopiedNorAssignedFromAnother)
{
  EXPECT_EQ(sizeof(OzAutoPtr<Owned>), sizeof(void*));
  EXPECT_FALSE(std::is_copy_constructible_v<OzAutoPtr<Owned>>);
  EXPECT_FALSE(std::is_copy_assignable_v<OzAutoPtr<Owned>>);
  EXPECT_FALSE((std::is_convertible_v<Owned*, OzAutoPtr<Owned>>));
}
