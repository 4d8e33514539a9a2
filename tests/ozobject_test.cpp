#include "ozobject.h"

#include "ozarray.h"
#include "ozinterface.h"
#include "ozjournal.h"
#include "ozreport.h"

#include "model_doubles.h"
#include "report_recorder.h"
#include "vtable_slot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <random>
#include <string>
#include <vector>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{
/// The names of the attributes of `object`, first to last.
std::vector<std::string> attrib_names(OzObject const& object)
{
  OzArray<OzAttrib*> found;
  object.find_all_attribs_by_type(TestAttrib::type_id(), found);
  std::vector<std::string> names;
  for (OzAttrib* const attrib : found)
    names.push_back(static_cast<TestAttrib*>(attrib)->name());
  return names;
}

/// Tells the reactors of `object` something, and returns what that left in the log.
Log told_to_reactors(OzObject& object, Log& log)
{
  log.clear();
  object.notify_reactors(OzObjectModified(0));
  Log const result = log;
  log.clear();
  return result;
}

/// An attribute of another class than TestAttrib.
class OtherAttrib : public TestAttrib
{
public:
  using TestAttrib::TestAttrib;

  OzString const* type() const override { return &class_name_; }
  OzString const& class_name() const override { return class_name_; }
  bool isA(OzString const* t) const override { return t == &class_name_ || TestAttrib::isA(t); }

  static OzString const* type_id() { return &class_name_; }
  static inline OzString const class_name_ = "OtherAttrib";
};
} // namespace

// What an object is.

TEST(OzObject, IsOfItsOwnTypeAndOfTheRoot)
{
  TestObject const object;

  EXPECT_EQ(object.type(), OzObject::type_id());
  EXPECT_EQ(&object.class_name(), OzObject::type_id());
  EXPECT_STREQ(object.classname(), "OzObject");
  EXPECT_TRUE(object.isA(OzObject::type_id()));
  EXPECT_TRUE(object.isA(OzDynObj::type_id()));
  EXPECT_FALSE(object.isA(OzAttrib::type_id()));
  EXPECT_FALSE(object.isA(nullptr));
}

TEST(OzObject, CastGivesTheObjectOrNull)
{
  TestObject object;
  OzDynObj* const as_root = &object;
  OzDynObj const* const as_const_root = &object;
  OzObjectModified event(1);
  OzDynObj* const no_object = &event;

  EXPECT_EQ(OzObject::cast(as_root), &object);
  EXPECT_EQ(OzObject::cast(as_const_root), &object);
  EXPECT_EQ(OzObject::cast(no_object), nullptr);
  EXPECT_EQ(OzObject::cast(static_cast<OzDynObj*>(nullptr)), nullptr);
  EXPECT_EQ(OzObject::cast(static_cast<OzDynObj const*>(nullptr)), nullptr);
  EXPECT_EQ(OzObject::cast(nullptr), nullptr);
}

TEST(OzObject, TheNameForObjectsWithoutOneIsDefault)
{
  EXPECT_STREQ(OzObject::get_default_name().as_const_c_string(), "DEFAULT");
  EXPECT_EQ(&OzObject::get_default_name(), &OzObject::default_name_);
}

TEST(OzObject, OffersNoInterfaceAndWritesNothingUnlessOverridden)
{
  class Collector : public OzJournal
  {
  public:
    void flush() override { ++pieces; }
    int pieces = 0;

  protected:
    void append_to_journal(OzString const&) override { ++pieces; }
  } journal;
  TestObject const object;

  object.debug(journal, OZ_DEBUG_DETAIL, true, 3);

  EXPECT_EQ(journal.pieces, 0);
  EXPECT_EQ(object.get_interface(OzInterface::interface_id()), nullptr);
  EXPECT_EQ(object.get_interface(nullptr), nullptr);
}

TEST(OzObject, VirtualFunctionsStandInTheirOrder)
{
  using NotifyOfEvent = void (OzObject::*)(OzEvent const&);
  using Notify = void (OzObject::*)();

  EXPECT_EQ(vtable_slot(&OzDynObj::type), 2);
  EXPECT_EQ(vtable_slot(&OzDynObj::class_name), 3);
  EXPECT_EQ(vtable_slot(&OzDynObj::clone), 4);
  EXPECT_EQ(vtable_slot(&OzDynObj::isA), 5);
  EXPECT_EQ(vtable_slot(&OzDynObj::identity), 6);
  EXPECT_EQ(vtable_slot(&OzObject::debug), 7);
  EXPECT_EQ(vtable_slot(&OzObject::get_interface), 8);
  EXPECT_EQ(vtable_slot(static_cast<NotifyOfEvent>(&OzObject::notify)), 9);
  EXPECT_EQ(vtable_slot(static_cast<Notify>(&OzObject::notify)), 10);
  EXPECT_EQ(vtable_slot(&OzObject::add_ref), 11);
  EXPECT_EQ(vtable_slot(&OzObject::remove_ref), 12);
  EXPECT_EQ(vtable_slot(&OzObject::n_refs), 13);
}

TEST(OzObject, HasTheTypedBaseFirstThenTheCountedOne)
{
  TestObject object;

  EXPECT_EQ(static_cast<void*>(static_cast<OzDynObj*>(&object)), static_cast<void*>(&object));
  EXPECT_NE(static_cast<void*>(static_cast<OzRCObj*>(&object)), static_cast<void*>(&object));
  // Two tables, the record, the count and the identity.
  EXPECT_EQ(sizeof(OzObject), 2 * sizeof(void*) + sizeof(void*) + 2 * sizeof(int));
}

// Identities and counts.

TEST(OzObject, EachObjectHasTheNextIdentity)
{
  int const next = OzDynObj::IDENTITY_INDEX_;

  TestObject const first;
  TestObject const second;
  TestObject const copy(first);

  EXPECT_EQ(first.identity(), next);
  EXPECT_EQ(second.identity(), next + 1);
  EXPECT_EQ(copy.identity(), next + 2);
  EXPECT_EQ(OzDynObj::IDENTITY_INDEX_, next + 3);
}

TEST(OzObject, NotifyAndTheDestructorDrawOneIdentityEachForTheirEvent)
{
  int next = 0;
  {
    TestObject object;
    next = OzDynObj::IDENTITY_INDEX_;

    object.notify();

    EXPECT_EQ(OzDynObj::IDENTITY_INDEX_, next + 1);
  }
  EXPECT_EQ(OzDynObj::IDENTITY_INDEX_, next + 2);
}

TEST(OzObject, CountsItsHoldersFromZero)
{
  TestObject const object;
  ReportRecorder const recorder;

  EXPECT_EQ(object.n_refs(), 0);
  object.add_ref();
  object.add_ref();
  EXPECT_EQ(object.n_refs(), 2);
  object.remove_ref();
  EXPECT_EQ(object.n_refs(), 1);
  object.remove_ref();
  EXPECT_EQ(object.n_refs(), 0);

  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzObject, ReportsACountBelowZeroAndCountsOn)
{
  TestObject const object;
  ReportRecorder recorder;

  object.remove_ref();
  EXPECT_EQ(recorder.units(), reports(1, "ozobject.cpp"));

  recorder.clear();
  EXPECT_EQ(object.n_refs(), -1);
  EXPECT_EQ(recorder.units(), reports(1, "ozobject.cpp"));

  recorder.clear();
  object.add_ref();
  EXPECT_EQ(recorder.units(), reports(1, "ozobject.cpp"));

  recorder.clear();
  EXPECT_EQ(object.n_refs(), 0);
  EXPECT_THAT(recorder.units(), IsEmpty());
}

// The record of an object is allocated when it is first needed. What shows that there is one: detaching then
// deletes an attribute that nobody holds.

TEST(OzObject, WithoutEntriesEverythingDoesNothingAndAllocatesNoRecord)
{
  Log log;
  TestAttrib fresh("fresh", log);
  TestReactor fresh_reactor("fresh reactor", log);
  OzArray<OzAttrib*> found;
  TestObject object;

  object.notify();
  object.detach_all_attribs();
  object.detach_all_reactors();
  object.destroy_all_attribs();
  EXPECT_EQ(object.find_attrib_by_id(1), nullptr);
  EXPECT_EQ(object.find_attrib_by_type(OzAttrib::type_id()), nullptr);
  EXPECT_EQ(object.find_all_attribs_by_type(OzAttrib::type_id(), found), 0u);
  EXPECT_EQ(object.find_reactor_by_id(1), nullptr);
  EXPECT_EQ(object.find_reactor_by_type(OzReactor::type_id()), nullptr);
  TestObject const copy(object);
  object.detach_attrib(&fresh); // on the stack: deleting it would end the test
  object.detach_reactor(&fresh_reactor);

  EXPECT_THAT(log, IsEmpty());
  EXPECT_EQ(fresh.n_refs(), 0);
}

TEST(OzObject, DetachingWithoutARecordCallsNoCountingOperation)
{
  class Counting : public TestAttrib
  {
  public:
    using TestAttrib::TestAttrib;
    void add_ref() const override { ++calls; }
    mutable int calls = 0;
  };
  Log log;
  Counting attrib("a", log);
  TestObject object;

  object.detach_attrib(&attrib);

  EXPECT_EQ(attrib.calls, 0);
}

TEST(OzObject, ACopyOfAnObjectWhoseEntriesStayBehindHasNoRecord)
{
  Log log;
  TestAttrib fresh("fresh", log);
  Rules stays_behind;
  stays_behind.propagate = false;
  TestObject object;
  object.add_attrib(new TestAttrib("a", log, stays_behind));

  TestObject copy(object);
  copy.detach_attrib(&fresh);

  EXPECT_EQ(fresh.n_refs(), 0);
  EXPECT_THAT(log, IsEmpty());
}

TEST(OzObject, DetachingAFreshAttributeDeletesItWhereThereIsARecord)
{
  Log log;
  TestObject object;
  object.add_attrib(new TestAttrib("a", log));

  object.detach_attrib(new TestAttrib("fresh", log));
  object.detach_reactor(new TestReactor("fresh reactor", log));

  EXPECT_THAT(log, ElementsAre("~fresh", "~fresh reactor"));
  EXPECT_THAT(attrib_names(object), ElementsAre("a"));
}

TEST(OzObject, TheRecordStaysWhenAllEntriesHaveGone)
{
  Log log;
  TestObject object;
  object.add_reactor(new TestReactor("r", log));
  object.detach_all_reactors();

  object.detach_attrib(new TestAttrib("fresh", log));

  EXPECT_THAT(log, ElementsAre("~r", "~fresh"));
}

// Attaching, finding and detaching.

TEST(OzObject, AttachingTakesOneReferenceForEachEntry)
{
  Log log;
  TestObject object;
  TestAttrib* const attrib = new TestAttrib("a", log);
  TestReactor* const reactor = new TestReactor("r", log);

  object.add_attrib(attrib);
  object.add_reactor(reactor);
  EXPECT_EQ(attrib->n_refs(), 1);
  EXPECT_EQ(reactor->n_refs(), 1);

  object.add_attrib(attrib);
  object.add_reactor(reactor);
  EXPECT_EQ(attrib->n_refs(), 2);
  EXPECT_EQ(reactor->n_refs(), 2);
  EXPECT_THAT(attrib_names(object), ElementsAre("a", "a"));
}

TEST(OzObject, TheNewestEntryComesFirst)
{
  Log log;
  TestObject object;
  for (char const* name : {"a", "b", "c"})
  {
    object.add_attrib(new TestAttrib(name, log));
    object.add_reactor(new TestReactor(name, log));
  }

  EXPECT_THAT(attrib_names(object), ElementsAre("c", "b", "a"));
  object.notify();
  EXPECT_THAT(log, ElementsAre("c asked", "b asked", "a asked", "c told", "b told", "a told"));
}

TEST(OzObject, FindsByIdentity)
{
  Log log;
  TestObject object;
  TestAttrib* const a = new TestAttrib("a", log);
  TestAttrib* const b = new TestAttrib("b", log);
  TestReactor* const r = new TestReactor("r", log);
  TestReactor* const s = new TestReactor("s", log);
  object.add_attrib(a);
  object.add_attrib(b);
  object.add_reactor(r);
  object.add_reactor(s);

  EXPECT_EQ(object.find_attrib_by_id(a->identity()), a);
  EXPECT_EQ(object.find_attrib_by_id(b->identity()), b);
  EXPECT_EQ(object.find_reactor_by_id(r->identity()), r);
  EXPECT_EQ(object.find_reactor_by_id(s->identity()), s);

  // One counter numbers them all, but each is looked for among its own kind.
  EXPECT_EQ(object.find_attrib_by_id(r->identity()), nullptr);
  EXPECT_EQ(object.find_reactor_by_id(a->identity()), nullptr);
  EXPECT_EQ(object.find_attrib_by_id(object.identity()), nullptr);
}

TEST(OzObject, FindsTheNewestOfATypeAndTakesDerivedOnesForIt)
{
  Log log;
  TestObject object;
  TestAttrib* const plain = new TestAttrib("plain", log);
  OtherAttrib* const older = new OtherAttrib("older", log);
  OtherAttrib* const newer = new OtherAttrib("newer", log);
  TestReactor* const r = new TestReactor("r", log);
  TestReactor* const s = new TestReactor("s", log);
  object.add_attrib(older);
  object.add_attrib(newer);
  object.add_attrib(plain);
  object.add_reactor(r);
  object.add_reactor(s);

  EXPECT_EQ(object.find_attrib_by_type(OtherAttrib::type_id()), newer);
  EXPECT_EQ(object.find_attrib_by_type(TestAttrib::type_id()), plain);
  EXPECT_EQ(object.find_attrib_by_type(OzAttrib::type_id()), plain);
  EXPECT_EQ(object.find_attrib_by_type(OzReactor::type_id()), nullptr);
  EXPECT_EQ(object.find_reactor_by_type(TestReactor::type_id()), s);
  EXPECT_EQ(object.find_reactor_by_type(OzReactor::type_id()), s);
  EXPECT_EQ(object.find_reactor_by_type(OzAttrib::type_id()), nullptr);

  object.detach_attrib(plain);
  EXPECT_EQ(object.find_attrib_by_type(TestAttrib::type_id()), newer);
}

TEST(OzObject, FindingLeavesTheCountsAlone)
{
  Log log;
  TestObject object;
  TestAttrib* const attrib = new TestAttrib("a", log);
  TestReactor* const reactor = new TestReactor("r", log);
  object.add_attrib(attrib);
  object.add_reactor(reactor);
  OzArray<OzAttrib*> found;

  object.find_attrib_by_id(attrib->identity());
  object.find_attrib_by_type(OzAttrib::type_id());
  object.find_all_attribs_by_type(OzAttrib::type_id(), found);
  object.find_reactor_by_id(reactor->identity());
  object.find_reactor_by_type(OzReactor::type_id());

  EXPECT_EQ(attrib->n_refs(), 1);
  EXPECT_EQ(reactor->n_refs(), 1);
}

TEST(OzObject, FindAllReplacesWhatTheArrayHeld)
{
  Log log;
  TestObject object;
  TestAttrib* const plain = new TestAttrib("plain", log);
  OtherAttrib* const other = new OtherAttrib("other", log);
  object.add_attrib(plain);
  object.add_attrib(other);
  OzArray<OzAttrib*> found;
  for (int i = 0; i < 5; ++i)
    found.append(nullptr);

  EXPECT_EQ(object.find_all_attribs_by_type(OzAttrib::type_id(), found), 2u);
  EXPECT_EQ(std::vector<OzAttrib*>(found.begin(), found.end()), (std::vector<OzAttrib*>{other, plain}));

  EXPECT_EQ(object.find_all_attribs_by_type(OtherAttrib::type_id(), found), 1u);
  EXPECT_EQ(std::vector<OzAttrib*>(found.begin(), found.end()), std::vector<OzAttrib*>{other});

  EXPECT_EQ(object.find_all_attribs_by_type(OzObject::type_id(), found), 0u);
  EXPECT_EQ(found.size(), 0u);
}

TEST(OzObject, FindAllEmptiesTheArrayOfAnObjectThatHasNothing)
{
  TestObject const object;
  OzArray<OzAttrib*> found;
  found.append(nullptr);

  EXPECT_EQ(object.find_all_attribs_by_type(OzAttrib::type_id(), found), 0u);
  EXPECT_EQ(found.size(), 0u);
}

TEST(OzObject, DetachingTheLastHolderDeletes)
{
  Log log;
  TestObject object;
  TestAttrib* const attrib = new TestAttrib("a", log);
  TestReactor* const reactor = new TestReactor("r", log);
  object.add_attrib(attrib);
  object.add_reactor(reactor);

  object.detach_attrib(attrib);
  EXPECT_THAT(log, ElementsAre("~a"));

  object.detach_reactor(reactor);
  EXPECT_THAT(log, ElementsAre("~a", "~r"));
  EXPECT_EQ(object.find_attrib_by_type(OzAttrib::type_id()), nullptr);
  EXPECT_EQ(object.find_reactor_by_type(OzReactor::type_id()), nullptr);
}

TEST(OzObject, DetachingWhatAnotherHoldsLowersTheCountByOne)
{
  Log log;
  TestObject object;
  TestObject other;
  TestAttrib* const attrib = new TestAttrib("a", log);
  TestReactor* const reactor = new TestReactor("r", log);
  for (TestObject* const holder : {&object, &other})
  {
    holder->add_attrib(attrib);
    holder->add_reactor(reactor);
  }

  object.detach_attrib(attrib);
  object.detach_reactor(reactor);

  EXPECT_THAT(log, IsEmpty());
  EXPECT_EQ(attrib->n_refs(), 1);
  EXPECT_EQ(reactor->n_refs(), 1);
  EXPECT_EQ(other.find_attrib_by_type(OzAttrib::type_id()), attrib);
}

TEST(OzObject, DetachingWhatIsThereTwiceTakesOneEntryOut)
{
  Log log;
  TestObject object;
  TestAttrib* const attrib = new TestAttrib("a", log);
  TestReactor* const reactor = new TestReactor("r", log);
  object.add_attrib(attrib);
  object.add_attrib(new TestAttrib("b", log));
  object.add_attrib(attrib);
  object.add_reactor(reactor);
  object.add_reactor(reactor);

  object.detach_attrib(attrib);
  object.detach_reactor(reactor);

  EXPECT_THAT(attrib_names(object), ElementsAre("b", "a"));
  EXPECT_EQ(attrib->n_refs(), 1);
  EXPECT_EQ(reactor->n_refs(), 1);
  EXPECT_THAT(told_to_reactors(object, log), ElementsAre("r told"));
}

TEST(OzObject, DetachingWhatHangsElsewhereChangesNothing)
{
  Log log;
  TestObject object;
  TestObject other;
  TestAttrib* const attrib = new TestAttrib("a", log);
  object.add_attrib(new TestAttrib("b", log));
  other.add_attrib(attrib);
  ReportRecorder const recorder;

  object.detach_attrib(attrib);

  EXPECT_EQ(attrib->n_refs(), 1);
  EXPECT_THAT(attrib_names(object), ElementsAre("b"));
  EXPECT_THAT(attrib_names(other), ElementsAre("a"));
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzObject, DetachAllLetsGoFromTheNewestToTheOldestAndSendsNoEvent)
{
  Log log;
  TestObject object;
  for (char const* name : {"a", "b"})
  {
    object.add_attrib(new TestAttrib(name, log));
    object.add_reactor(new TestReactor(std::string("r") + name, log));
  }

  object.detach_all_attribs();
  EXPECT_THAT(log, ElementsAre("~b", "~a"));
  EXPECT_EQ(object.find_attrib_by_type(OzAttrib::type_id()), nullptr);
  EXPECT_NE(object.find_reactor_by_type(OzReactor::type_id()), nullptr);

  log.clear();
  object.detach_all_reactors();
  EXPECT_THAT(log, ElementsAre("~rb", "~ra"));
  EXPECT_EQ(object.find_reactor_by_type(OzReactor::type_id()), nullptr);
}

TEST(OzObject, DetachAllLeavesAliveWhatAnotherHolds)
{
  Log log;
  TestObject object;
  OzRCPtr<TestAttrib> const attrib(new TestAttrib("a", log));
  OzRCPtr<TestReactor> const reactor(new TestReactor("r", log));
  object.add_attrib(attrib.get());
  object.add_reactor(reactor.get());

  object.detach_all_attribs();
  object.detach_all_reactors();

  EXPECT_THAT(log, IsEmpty());
  EXPECT_EQ(attrib->n_refs(), 1);
  EXPECT_EQ(reactor->n_refs(), 1);
}

TEST(OzObject, DestroyAllAttributesDoesNothing)
{
  Log log;
  TestObject object;
  object.add_attrib(new TestAttrib("a", log));

  object.destroy_all_attribs();

  EXPECT_THAT(attrib_names(object), ElementsAre("a"));
  EXPECT_THAT(log, IsEmpty());
}

// Copying.

TEST(OzObject, ACopyHoldsTheEntriesInReverseOrder)
{
  Log log;
  TestObject object;
  for (char const* name : {"a", "b", "c"})
  {
    object.add_attrib(new TestAttrib(name, log));
    object.add_reactor(new TestReactor(name, log));
  }

  TestObject copy(object);

  EXPECT_THAT(attrib_names(copy), ElementsAre("a", "b", "c"));
  EXPECT_THAT(told_to_reactors(copy, log), ElementsAre("a told", "b told", "c told"));
  EXPECT_THAT(attrib_names(object), ElementsAre("c", "b", "a"));
}

TEST(OzObject, ACopySharesWhatIsSharable)
{
  Log log;
  TestObject object;
  TestAttrib* const attrib = new TestAttrib("a", log);
  TestReactor* const reactor = new TestReactor("r", log);
  object.add_attrib(attrib);
  object.add_reactor(reactor);

  TestObject const copy(object);

  EXPECT_EQ(copy.find_attrib_by_type(OzAttrib::type_id()), attrib);
  EXPECT_EQ(copy.find_reactor_by_type(OzReactor::type_id()), reactor);
  EXPECT_EQ(attrib->n_refs(), 2);
  EXPECT_EQ(reactor->n_refs(), 2);
}

TEST(OzObject, ACopyGetsAnEntryOfItsOwnForWhatIsNotSharable)
{
  Log log;
  Rules single;
  single.sharable = false;
  TestObject object;
  TestAttrib* const attrib = new TestAttrib("a", log, single);
  TestReactor* const reactor = new TestReactor("r", log, single);
  object.add_attrib(attrib);
  object.add_reactor(reactor);

  TestObject const copy(object);

  OzAttrib const* const own = copy.find_attrib_by_type(OzAttrib::type_id());
  OzReactor const* const own_reactor = copy.find_reactor_by_type(OzReactor::type_id());
  ASSERT_NE(own, nullptr);
  ASSERT_NE(own_reactor, nullptr);
  EXPECT_NE(own, attrib);
  EXPECT_NE(own->identity(), attrib->identity());
  EXPECT_EQ(own->n_refs(), 1);
  EXPECT_EQ(attrib->n_refs(), 1);
  EXPECT_NE(own_reactor, reactor);
  EXPECT_NE(own_reactor->identity(), reactor->identity());
  EXPECT_EQ(own_reactor->n_refs(), 1);
  EXPECT_EQ(reactor->n_refs(), 1);
  EXPECT_THAT(attrib_names(copy), ElementsAre("a"));
}

TEST(OzObject, ACopyLeavesBehindWhatDoesNotPropagate)
{
  Log log;
  TestObject object;
  for (bool const sharable : {true, false})
  {
    Rules rules;
    rules.propagate = false;
    rules.sharable = sharable;
    object.add_attrib(new TestAttrib("a", log, rules));
    object.add_reactor(new TestReactor("r", log, rules));
  }
  object.add_attrib(new TestAttrib("goes along", log));

  TestObject const copy(object);

  EXPECT_THAT(attrib_names(copy), ElementsAre("goes along"));
  EXPECT_EQ(copy.find_reactor_by_type(OzReactor::type_id()), nullptr);
}

TEST(OzObject, ACloneThatIsNoAttributeIsDeletedAndNotAttached)
{
  class Stray : public OzReport
  {
  public:
    explicit Stray(Log& log)
      : log_(&log)
    {
    }
    ~Stray() override { log_->push_back("~stray"); }
    OzDynObj* clone() const override { return new Stray(*this); }

  private:
    Log* log_;
  };
  Log log;
  Rules single;
  single.sharable = false;
  TestAttrib* const attrib = new TestAttrib("a", log, single);
  attrib->on_clone = [&log](TestAttrib const&) { return new Stray(log); };
  TestReactor* const reactor = new TestReactor("r", log, single);
  reactor->on_clone = [](TestReactor const&) { return nullptr; };
  TestObject object;
  object.add_attrib(attrib);
  object.add_reactor(reactor);

  TestObject copy(object);

  EXPECT_THAT(log, ElementsAre("~stray"));
  copy.notify();
  EXPECT_THAT(log, ElementsAre("~stray"));
}

TEST(OzObject, ACopyHasAnIdentityAndACountOfItsOwn)
{
  TestObject object;
  object.add_ref();

  TestObject const copy(object);

  EXPECT_NE(copy.identity(), object.identity());
  EXPECT_EQ(copy.n_refs(), 0);
  object.remove_ref();
}

TEST(OzObject, AssignmentAddsToWhatIsThereAndKeepsIdentityAndCount)
{
  Log log;
  TestObject source;
  source.add_attrib(new TestAttrib("a", log));
  source.add_attrib(new TestAttrib("b", log));
  source.add_reactor(new TestReactor("s", log));
  TestObject target;
  target.add_attrib(new TestAttrib("own", log));
  target.add_reactor(new TestReactor("own", log));
  target.add_ref();
  int const identity = target.identity();

  EXPECT_EQ(&(target = source), &target);

  EXPECT_THAT(attrib_names(target), ElementsAre("a", "b", "own"));
  EXPECT_THAT(told_to_reactors(target, log), ElementsAre("s told", "own told"));
  EXPECT_EQ(target.identity(), identity);
  EXPECT_EQ(target.n_refs(), 1);
  EXPECT_THAT(attrib_names(source), ElementsAre("b", "a"));
  target.remove_ref();
}

TEST(OzObject, AssignmentToItselfOrFromABareObjectChangesNothing)
{
  Log log;
  TestObject bare;
  TestObject object;
  object.add_attrib(new TestAttrib("a", log));
  object.add_reactor(new TestReactor("r", log));
  TestObject const& itself = object;

  object = itself;
  object = bare;

  EXPECT_THAT(attrib_names(object), ElementsAre("a"));
  EXPECT_THAT(told_to_reactors(object, log), ElementsAre("r told"));
}

TEST(OzObject, ACopyThatFailsHalfwayLeavesNothingBehind)
{
  Log log;
  Rules single;
  single.sharable = false;
  TestObject object;
  TestAttrib* const shared = new TestAttrib("shared", log);
  TestAttrib* const failing = new TestAttrib("failing", log, single);
  failing->on_clone = [](TestAttrib const&) -> OzDynObj* { throw std::bad_alloc(); };
  object.add_attrib(failing);
  object.add_attrib(shared);

  EXPECT_THROW(TestObject copy(object), std::bad_alloc);

  EXPECT_EQ(shared->n_refs(), 1);
}

// Events.

TEST(OzObject, NotifySendsThatTheObjectWasModified)
{
  Log log;
  TestObject object;
  TestAttrib* const attrib = new TestAttrib("a", log);
  TestReactor* const reactor = new TestReactor("r", log);
  object.add_attrib(attrib);
  object.add_reactor(reactor);
  std::vector<OzEvent const*> events;
  auto const check = [&](OzEvent const& event)
  {
    events.push_back(&event);
    EXPECT_EQ(event.type(), OzObjectModified::type_id());
    EXPECT_EQ(static_cast<OzObjectModified const&>(event).object_id(), object.identity());
  };
  attrib->on_event = check;
  reactor->on_event = check;

  object.notify();

  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[0], events[1]); // one event for all
  attrib->on_event = nullptr;
  reactor->on_event = nullptr;
}

TEST(OzObject, NotifyGoesThroughTheOverridableFormWithAnEvent)
{
  class Overriding : public TestObject
  {
  public:
    using TestObject::notify;
    void notify(OzEvent const& event) override
    {
      EXPECT_TRUE(event.isA(OzObjectModified::type_id()));
      ++calls;
    }
    int identity() const override { return -7; }
    int calls = 0;
  } object;

  object.notify();

  EXPECT_EQ(object.calls, 1);
}

TEST(OzObject, NotifyNamesTheObjectByItsOverridableIdentity)
{
  class Overriding : public TestObject
  {
  public:
    int identity() const override { return -7; }
  };
  Log log;
  int named = 0;
  Overriding object;
  TestReactor* const reactor = new TestReactor("r", log);
  reactor->on_event = [&named](OzEvent const& event)
  {
    if (event.isA(OzObjectModified::type_id()))
      named = static_cast<OzObjectModified const&>(event).object_id();
  };
  object.add_reactor(reactor);

  object.notify();

  EXPECT_EQ(named, -7);
}

TEST(OzObject, SendsTheVeryEventThatItIsGiven)
{
  Log log;
  TestObject object;
  TestAttrib* const attrib = new TestAttrib("a", log);
  TestReactor* const reactor = new TestReactor("r", log);
  object.add_attrib(attrib);
  object.add_reactor(reactor);
  OzObjectDelete const sent(42);
  std::vector<OzEvent const*> events;
  attrib->on_event = reactor->on_event = [&](OzEvent const& event) { events.push_back(&event); };

  object.notify(sent);

  EXPECT_THAT(events, ElementsAre(&sent, &sent));
  EXPECT_THAT(log, ElementsAre("a asked", "r told"));
  attrib->on_event = reactor->on_event = nullptr;
}

TEST(OzObject, DropsTheAttributesThatDoNotStayValidAfterAskingAll)
{
  Log log;
  Rules short_lived;
  short_lived.invariant = false;
  TestObject object;
  object.add_attrib(new TestAttrib("a", log, short_lived));
  object.add_attrib(new TestAttrib("b", log));
  object.add_attrib(new TestAttrib("c", log, short_lived));
  object.add_reactor(new TestReactor("r", log));

  object.notify();

  EXPECT_THAT(log, ElementsAre("c asked", "b asked", "a asked", "~c", "~a", "r told"));
  EXPECT_THAT(attrib_names(object), ElementsAre("b"));
}

TEST(OzObject, AnAttributeThatIsDroppedLivesOnWithItsOtherHolder)
{
  Log log;
  Rules short_lived;
  short_lived.invariant = false;
  TestObject object;
  OzRCPtr<TestAttrib> const attrib(new TestAttrib("a", log, short_lived));
  object.add_attrib(attrib.get());

  object.notify();

  EXPECT_THAT(log, ElementsAre("a asked"));
  EXPECT_EQ(attrib->n_refs(), 1);
  EXPECT_EQ(object.find_attrib_by_type(OzAttrib::type_id()), nullptr);
}

TEST(OzObject, AnInvalidAttributeThatIsThereTwiceIsAskedAndDroppedTwice)
{
  Log log;
  Rules short_lived;
  short_lived.invariant = false;
  TestObject object;
  TestAttrib* const attrib = new TestAttrib("a", log, short_lived);
  object.add_attrib(attrib);
  object.add_attrib(attrib);

  object.notify_attribs(OzObjectModified(1));

  EXPECT_THAT(log, ElementsAre("a asked", "a asked", "~a"));
  EXPECT_EQ(object.find_attrib_by_type(OzAttrib::type_id()), nullptr);
}

TEST(OzObject, ADyingAttributeMayTakeAnotherOneOff)
{
  Log log;
  Rules short_lived;
  short_lived.invariant = false;
  TestObject object;
  TestAttrib* const doomed = new TestAttrib("doomed", log, short_lived);
  TestAttrib* const also_doomed = new TestAttrib("also doomed", log, short_lived);
  TestAttrib* const valid = new TestAttrib("valid", log);
  object.add_attrib(also_doomed);
  object.add_attrib(valid);
  object.add_attrib(doomed);
  doomed->on_delete = [&]
  {
    object.detach_attrib(valid);
    object.detach_attrib(also_doomed);
  };

  object.notify_attribs(OzObjectModified(1));

  EXPECT_THAT(log, ElementsAre("doomed asked", "valid asked", "also doomed asked", "~valid", "~doomed",
                               "~also doomed"));
}

TEST(OzObject, AReactorThatIsAddedDuringTheWalkIsNotTold)
{
  Log log;
  TestObject object;
  TestReactor* const adding = new TestReactor("adding", log);
  object.add_reactor(new TestReactor("last", log));
  object.add_reactor(adding);
  adding->on_event = [&](OzEvent const&) { object.add_reactor(new TestReactor("added", log)); };

  object.notify_reactors(OzObjectModified(1));
  EXPECT_THAT(log, ElementsAre("adding told", "last told"));

  adding->on_event = nullptr;
  EXPECT_THAT(told_to_reactors(object, log), ElementsAre("added told", "adding told", "last told"));
}

TEST(OzObject, AReactorMayDetachOthersBeforeAndBehindIt)
{
  Log log;
  TestObject object;
  TestReactor* const first = new TestReactor("first", log);
  TestReactor* const detaching = new TestReactor("detaching", log);
  TestReactor* const next = new TestReactor("next", log);
  object.add_reactor(new TestReactor("last", log));
  object.add_reactor(next);
  object.add_reactor(detaching);
  object.add_reactor(first);
  detaching->on_event = [&](OzEvent const&)
  {
    object.detach_reactor(first);
    object.detach_reactor(next);
  };

  object.notify_reactors(OzObjectModified(1));

  EXPECT_THAT(log, ElementsAre("first told", "detaching told", "~first", "~next", "last told"));
  detaching->on_event = nullptr;
}

TEST(OzObject, AReactorMayDetachAllTheOthers)
{
  Log log;
  TestObject object;
  TestReactor* const only = new TestReactor("only", log);
  TestReactor* const last = new TestReactor("last", log);
  object.add_reactor(last);
  object.add_reactor(only);
  only->on_event = [&](OzEvent const&) { object.detach_reactor(last); };

  object.notify_reactors(OzObjectModified(1));

  EXPECT_THAT(log, ElementsAre("only told", "~last"));
  only->on_event = nullptr;
}

TEST(OzObject, ReactorsSeeTheObjectWithoutTheInvalidAttributes)
{
  Log log;
  Rules short_lived;
  short_lived.invariant = false;
  TestObject object;
  TestReactor* const reactor = new TestReactor("r", log);
  object.add_attrib(new TestAttrib("a", log, short_lived));
  object.add_reactor(reactor);
  std::vector<std::string> seen = {"not told"};
  reactor->on_event = [&](OzEvent const&) { seen = attrib_names(object); };

  object.notify();

  EXPECT_THAT(seen, IsEmpty());
  reactor->on_event = nullptr;
}

// The end of an object.

TEST(OzObject, TheDestructorSendsDeleteThenLetsGoOfReactorsThenOfAttributes)
{
  Log log;
  {
    TestObject object;
    int const identity = object.identity();
    auto const check = [identity](OzEvent const& event)
    {
      EXPECT_EQ(event.type(), OzObjectDelete::type_id());
      EXPECT_EQ(static_cast<OzObjectDelete const&>(event).object_id(), identity);
    };
    for (char const* name : {"a", "b"})
    {
      TestAttrib* const attrib = new TestAttrib(name, log);
      attrib->on_event = check;
      object.add_attrib(attrib);
      TestReactor* const reactor = new TestReactor(std::string("r") + name, log);
      reactor->on_event = check;
      object.add_reactor(reactor);
    }
  }

  EXPECT_THAT(log, ElementsAre("b asked", "a asked", "rb told", "ra told", "~rb", "~ra", "~b", "~a"));
}

TEST(OzObject, AnAttributeInvalidAtTheEndIsDroppedBeforeTheReactorsAreTold)
{
  Log log;
  Rules short_lived;
  short_lived.invariant = false;
  {
    TestObject object;
    object.add_attrib(new TestAttrib("a", log, short_lived));
    object.add_reactor(new TestReactor("r", log));
  }

  EXPECT_THAT(log, ElementsAre("a asked", "~a", "r told", "~r"));
}

TEST(OzObject, TheDestructorSendsAroundOverridesOfDerivedClasses)
{
  class Overriding : public TestObject
  {
  public:
    explicit Overriding(Log& log)
      : log_(&log)
    {
    }
    ~Overriding() override { log_->push_back("~derived"); }
    using TestObject::notify;
    void notify(OzEvent const&) override { log_->push_back("overridden notify"); }

  private:
    Log* log_;
  };
  Log log;
  {
    Overriding object(log);
    object.add_reactor(new TestReactor("r", log));
  }

  EXPECT_THAT(log, ElementsAre("~derived", "r told", "~r"));
}

TEST(OzObject, TheEventOfTheEndIsGoneBeforeTheEntriesAre)
{
  // Of two identities drawn by one dying object, the first is the event's: clones of it come later.
  Log log;
  int event_identity = 0;
  int next = 0;
  {
    TestObject object;
    TestReactor* const reactor = new TestReactor("r", log);
    reactor->on_event = [&](OzEvent const& event) { event_identity = event.identity(); };
    object.add_reactor(reactor);
    next = OzDynObj::IDENTITY_INDEX_;
  }

  EXPECT_EQ(event_identity, next);
  EXPECT_EQ(OzDynObj::IDENTITY_INDEX_, next + 1);
}

TEST(OzObject, AnEntryThatDiesWithItsObjectFindsTheObjectBare)
{
  Log log;
  OzAttrib const* seen_attrib = nullptr;
  OzReactor const* seen_reactor = nullptr;
  {
    TestObject object;
    TestAttrib* const attrib = new TestAttrib("a", log);
    TestReactor* const reactor = new TestReactor("r", log);
    seen_attrib = attrib;
    seen_reactor = reactor;
    object.add_attrib(attrib);
    object.add_reactor(reactor);
    reactor->on_delete = [&] { seen_attrib = object.find_attrib_by_type(OzAttrib::type_id()); };
    attrib->on_delete = [&] { seen_reactor = object.find_reactor_by_type(OzReactor::type_id()); };
  }

  EXPECT_EQ(seen_attrib, nullptr);
  EXPECT_EQ(seen_reactor, nullptr);
}

TEST(OzObject, ASharedAttributeOutlivesTheFirstOfItsObjects)
{
  Log log;
  TestObject survivor;
  TestAttrib* const attrib = new TestAttrib("a", log);
  survivor.add_attrib(attrib);
  {
    TestObject object;
    object.add_attrib(attrib);
    EXPECT_EQ(attrib->n_refs(), 2);
  }

  EXPECT_THAT(log, ElementsAre("a asked"));
  EXPECT_EQ(attrib->n_refs(), 1);
}

// A long random walk against plain vectors of names.

TEST(OzObject, AgreesWithPlainVectorsOverALongRandomWalk)
{
  unsigned const seed = 20250611;
  std::mt19937 random(seed);
  Log log;
  TestObject object;
  std::vector<TestAttrib*> model; // newest first
  std::vector<OzRCPtr<TestAttrib>> pool;
  for (char const* name : {"a", "b", "c", "d", "e"})
    pool.emplace_back(new TestAttrib(name, log));

  for (int step = 0; step < 5000; ++step)
  {
    TestAttrib* const attrib = pool[random() % pool.size()].get();
    switch (random() % 3)
    {
    case 0:
      object.add_attrib(attrib);
      model.insert(model.begin(), attrib);
      break;
    case 1:
    {
      object.detach_attrib(attrib);
      auto const entry = std::find(model.begin(), model.end(), attrib);
      if (entry != model.end())
        model.erase(entry);
      break;
    }
    default:
      if (random() % 50 == 0)
      {
        object.detach_all_attribs();
        model.clear();
      }
      break;
    }

    std::vector<std::string> names;
    for (TestAttrib const* const entry : model)
      names.push_back(entry->name());
    ASSERT_EQ(attrib_names(object), names) << "seed " << seed << ", step " << step;
    ASSERT_EQ(attrib->n_refs(), 1 + std::count(model.begin(), model.end(), attrib))
        << "seed " << seed << ", step " << step;
  }
  EXPECT_THAT(log, IsEmpty());
}
