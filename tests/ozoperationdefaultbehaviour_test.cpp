#include "ozoperationdefaultbehaviour.h"

#include "deadline.h"
#include "lummutex.h"
#include "ozmutex.h"
#include "ozversionedalgorithm.h"
#include "report_recorder.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
OzString const drawing("DRAWING");
OzString const milling("MILLING");
OzString const milling_again("MILLING");
OzString const unknown("UNKNOWN");

/// What a static object of a client sees before main, and what it does after it.
struct StaticClient
{
  OzOperationBehaviour* const current_at_load = OzOperationBehaviour::the_instance_;
  OzOperationBehaviour* const default_at_load = OzOperationBehaviour::get_default_behaviour();
  OzOperationBehaviour* const first_asked_for = OzOperationBehaviour::get_instance();
  short const first = first_asked_for->determine_flavour_to_apply(&drawing, 1, 5);
  short const second = first_asked_for->get_actual_flavour(&drawing, 1);

  ~StaticClient()
  {
    OzOperationBehaviour::set_instance(nullptr);
    if (OzOperationBehaviour::get_instance()->determine_flavour_to_apply(&drawing, 1, 6) != 6)
      std::abort();
  }
} const static_client;

std::vector<std::string> const ONE_REPORT = reports(1, "ozoperationdefaultbehaviour.cpp");
std::vector<std::string> const NO_REPORT;

/// A default behaviour whose map is within reach.
class OpenBehaviour : public OzOperationDefaultBehaviour
{
public:
  using OzOperationDefaultBehaviour::get_known_operation_behaviours;
  using OzOperationDefaultBehaviour::KnownBehaviours;
  using OzOperationDefaultBehaviour::OzOperationDefaultBehaviour;
  using OzOperationDefaultBehaviour::operator=;

  KnownBehaviours const* const_map() const { return &get_known_operation_behaviours(); }
};

std::vector<OzString const*> packages_of(OzOperationBehaviour const& behaviour)
{
  std::vector<OzString const*> packages;
  OzAutoPtr<OzIterator<OzString const*>> walk;
  behaviour.get_packages(walk);
  for (walk->reset(); !walk->done(); walk->next())
    packages.push_back(walk->current());
  return packages;
}

std::vector<int> services_of(OzOperationBehaviour const& behaviour, OzString const* package)
{
  std::vector<int> services;
  OzAutoPtr<OzIterator<int>> walk;
  behaviour.get_services(package, walk);
  for (walk->reset(); !walk->done(); walk->next())
    services.push_back(walk->current());
  return services;
}

typedef std::map<std::pair<OzString const*, int>, short> Flavours;

Flavours flavours_of(OzOperationBehaviour const& behaviour)
{
  Flavours flavours;
  for (OzString const* const package : packages_of(behaviour))
  {
    for (int const service : services_of(behaviour, package))
      flavours[{package, service}] = behaviour.get_actual_flavour(package, service);
  }
  return flavours;
}

typedef std::vector<std::string> Log;

std::string name(OzString const* package)
{
  return package != nullptr ? package->as_const_c_string() : "null";
}

/// A cursor that tells when it is moved and when it goes.
template <class T>
class LoggedIterator : public OzIterator<T>
{
public:
  LoggedIterator(char const* name_of_cursor, std::vector<T> const& elements_to_walk, Log& log_to_write)
    : own_name(name_of_cursor)
    , elements(elements_to_walk)
    , log(log_to_write)
  {
  }
  ~LoggedIterator() override { tell("deleted"); }
  LoggedIterator(LoggedIterator const&) = delete;
  LoggedIterator& operator=(LoggedIterator const&) = delete;

  T const& first() const override { return elements.front(); }
  void next() override
  {
    tell("next");
    ++place;
  }
  bool done() const override { return place >= elements.size(); }
  void reset() override
  {
    tell("reset");
    place = 0;
  }
  T const& current() const override { return elements.at(place); }

private:
  void tell(char const* what) const { log.push_back(own_name + " " + what); }

  std::string const own_name;
  std::vector<T> const elements;
  Log& log;
  std::size_t place = 0;
};

/// A behaviour of another kind, which tells what it is asked. Its cursors stand behind the first element when
/// they are handed out, unless there is no other.
class OtherBehaviour : public OzOperationBehaviour
{
public:
  explicit OtherBehaviour(Log& log_to_write)
    : log(log_to_write)
  {
  }
  ~OtherBehaviour() override { ++destroyed; }

  void set_best_flavour(OzString const* package, int service, short flavour) override
  {
    log.push_back("other: set " + name(package) + " " + std::to_string(service) + " " +
                  std::to_string(flavour));
  }
  short get_actual_flavour(OzString const* package, int service) const override
  {
    log.push_back("other: get " + name(package) + " " + std::to_string(service));
    return 77;
  }
  bool apply_change(char const*) const override { return false; }
  bool is_activated(OzVersionStamp const&) override { return false; }
  void lock() override { log.push_back("other: lock"); }
  bool is_locked() const override
  {
    log.push_back("other: is locked");
    return locked;
  }
  void clear() override { log.push_back("other: clear"); }
  void get_packages(OzAutoPtr<OzIterator<OzString const*>>& it) const override
  {
    log.push_back("other: get packages");
    it = new LoggedIterator<OzString const*>("packages", packages, log);
  }
  void get_services(OzString const* package, OzAutoPtr<OzIterator<int>>& it) const override
  {
    log.push_back("other: get services " + name(package));
    it = new LoggedIterator<int>("services", services.at(package), log);
  }

  std::vector<OzString const*> packages;
  std::map<OzString const*, std::vector<int>> services;
  bool locked = false;

  static inline int destroyed = 0;

private:
  Log& log;
};

/// A default behaviour that tells what it is asked, from outside and by itself.
class LoggedBehaviour : public OzOperationDefaultBehaviour
{
public:
  explicit LoggedBehaviour(Log& log_to_write)
    : log(log_to_write)
  {
  }
  using OzOperationDefaultBehaviour::operator=;

  void set_best_flavour(OzString const* package, int service, short flavour) override
  {
    log.push_back("set " + name(package) + " " + std::to_string(service) + " " + std::to_string(flavour));
    OzOperationDefaultBehaviour::set_best_flavour(package, service, flavour);
  }
  short get_actual_flavour(OzString const* package, int service) const override
  {
    log.push_back("get " + name(package) + " " + std::to_string(service));
    return OzOperationDefaultBehaviour::get_actual_flavour(package, service);
  }
  void lock() override
  {
    log.push_back("lock");
    OzOperationDefaultBehaviour::lock();
  }
  bool is_locked() const override
  {
    log.push_back("is locked");
    return pretend_locked || OzOperationDefaultBehaviour::is_locked();
  }
  void clear() override
  {
    log.push_back("clear");
    OzOperationDefaultBehaviour::clear();
  }

  bool pretend_locked = false;

private:
  Log& log;
};

/// Runs `work` on several threads, which start together.
void run_together(int threads, std::function<void(int)> const& work)
{
  std::atomic<int> arrived = 0;
  std::vector<std::thread> running;
  for (int i = 0; i < threads; ++i)
  {
    running.emplace_back(
        [&, i]
        {
          for (++arrived; arrived < threads;)
            std::this_thread::yield();
          work(i);
        });
  }
  for (std::thread& thread : running)
    thread.join();
}

/// Called by this thread when it has next given a lock back: what another thread may do at that moment.
thread_local std::function<void()> after_next_unlock;

/// Whether `operation` stays under way on another thread while this one holds the global lock.
bool waits_for_the_lock(std::function<void()> const& operation)
{
  std::atomic<bool> started = false;
  std::atomic<bool> ended = false;
  std::thread thread;
  bool ended_too_early = false;
  {
    OzCriticalDkbRegion const region;
    thread = std::thread(
        [&]
        {
          started = true;
          operation();
          ended = true;
        });
    while (!started)
      std::this_thread::yield();
    for (int i = 0; i < 500 && !ended; ++i)
      std::this_thread::yield();
    ended_too_early = ended;
  }
  thread.join();
  return !ended_too_early;
}
} // namespace

/// Stands before the platform library's own in this process.
void LumMutex::Unlock()
{
  mutex.unlock();
  if (std::function<void()> const call = std::exchange(after_next_unlock, nullptr))
    call();
}

TEST(OzOperationBehaviour, IsUsableByStaticObjectsAndCurrentByDefault)
{
  EXPECT_EQ(static_client.current_at_load, nullptr);
  EXPECT_NE(static_client.default_at_load, nullptr);
  EXPECT_EQ(static_client.first_asked_for, static_client.default_at_load);
  EXPECT_EQ(static_client.first, 5);
  EXPECT_EQ(static_client.second, 5);
  EXPECT_EQ(OzOperationBehaviour::get_default_behaviour(), static_client.default_at_load);
}

TEST(OzOperationBehaviour, GetInstanceMakesTheDefaultCurrentWhereNothingIsSet)
{
  OzOperationBehaviour::the_instance_ = nullptr;

  OzOperationBehaviour* const given = OzOperationBehaviour::get_instance();

  EXPECT_EQ(given, OzOperationBehaviour::get_default_behaviour());
  EXPECT_EQ(OzOperationBehaviour::the_instance_, given);
  EXPECT_NE(dynamic_cast<OzOperationDefaultBehaviour*>(given), nullptr);
}

TEST(OzOperationBehaviour, SetInstanceStoresABehaviourAsItIs)
{
  Log log;
  OtherBehaviour other(log);

  OzOperationBehaviour::set_instance(&other);

  EXPECT_EQ(OzOperationBehaviour::get_instance(), &other);
  EXPECT_EQ(OzOperationBehaviour::the_instance_, &other);
  EXPECT_EQ(log, Log());
  OzOperationBehaviour::set_instance(nullptr);
}

TEST(OzOperationBehaviour, SetInstanceLeavesTheFormerBehaviourAlone)
{
  Log log;
  OtherBehaviour::destroyed = 0;
  auto const former = std::make_unique<OtherBehaviour>(log);
  OzOperationBehaviour::set_instance(former.get());

  OzOperationBehaviour::set_instance(nullptr);

  EXPECT_EQ(OtherBehaviour::destroyed, 0);
  EXPECT_EQ(log, Log());
}

TEST(OzOperationBehaviour, SetInstanceToNullEmptiesUnlocksAndTakesTheDefault)
{
  Log log;
  OtherBehaviour other(log);
  OzOperationBehaviour* const fallback = OzOperationBehaviour::get_default_behaviour();
  fallback->set_best_flavour(&drawing, 1, 3);
  fallback->lock();
  OzOperationBehaviour::set_instance(&other);

  OzOperationBehaviour::set_instance(nullptr);

  EXPECT_EQ(OzOperationBehaviour::get_instance(), fallback);
  EXPECT_FALSE(fallback->is_locked());
  EXPECT_EQ(flavours_of(*fallback), Flavours());
}

TEST(OzOperationBehaviour, SetInstanceToTheDefaultKeepsItsFlavours)
{
  OzOperationBehaviour* const fallback = OzOperationBehaviour::get_default_behaviour();
  fallback->clear();
  fallback->set_best_flavour(&drawing, 1, 3);
  fallback->lock();

  OzOperationBehaviour::set_instance(fallback);

  EXPECT_EQ(flavours_of(*fallback), (Flavours{{{&drawing, 1}, 3}}));
  EXPECT_TRUE(fallback->is_locked());
  OzOperationBehaviour::set_instance(nullptr);
}

TEST(OzOperationBehaviour, DeterminesAFlavourByProposingAndThenAsking)
{
  Log log;
  OtherBehaviour other(log);

  EXPECT_EQ(other.determine_flavour_to_apply(&drawing, 4, -3), 77);

  EXPECT_EQ(log, (Log{"other: set DRAWING 4 -3", "other: get DRAWING 4"}));
}

TEST(OzOperationBehaviour, SaysNothingMoreAboutItself)
{
  Log log;
  OtherBehaviour const other(log);
  OzOperationDefaultBehaviour const behaviour;

  EXPECT_EQ(other.is_a_lumdkb_op_behaviour(), 0);
  EXPECT_EQ(other.is_additional_level_active(7), 0);
  EXPECT_EQ(behaviour.is_a_lumdkb_op_behaviour(), 0);
  EXPECT_EQ(behaviour.is_additional_level_active(-7), 0);
}

TEST(OzOperationBehaviour, VirtualFunctionsStandInTheirOrder)
{
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::set_best_flavour), 2);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::get_actual_flavour), 3);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::determine_flavour_to_apply), 4);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::apply_change), 5);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::is_activated), 6);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::lock), 7);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::is_locked), 8);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::clear), 9);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::get_packages), 10);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::get_services), 11);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::is_a_lumdkb_op_behaviour), 12);
  EXPECT_EQ(vtable_slot(&OzOperationBehaviour::is_additional_level_active), 13);
  EXPECT_TRUE(std::has_virtual_destructor_v<OzOperationBehaviour>);
  EXPECT_EQ(sizeof(OzOperationBehaviour), sizeof(void*));
}

TEST(OzOperationDefaultBehaviour, OverridesKeepTheirPlaces)
{
  EXPECT_EQ(vtable_slot(&OzOperationDefaultBehaviour::set_best_flavour), 2);
  EXPECT_EQ(vtable_slot(&OzOperationDefaultBehaviour::get_actual_flavour), 3);
  EXPECT_EQ(vtable_slot(&OzOperationDefaultBehaviour::apply_change), 5);
  EXPECT_EQ(vtable_slot(&OzOperationDefaultBehaviour::is_activated), 6);
  EXPECT_EQ(vtable_slot(&OzOperationDefaultBehaviour::lock), 7);
  EXPECT_EQ(vtable_slot(&OzOperationDefaultBehaviour::is_locked), 8);
  EXPECT_EQ(vtable_slot(&OzOperationDefaultBehaviour::clear), 9);
  EXPECT_EQ(vtable_slot(&OzOperationDefaultBehaviour::get_packages), 10);
  EXPECT_EQ(vtable_slot(&OzOperationDefaultBehaviour::get_services), 11);
}

TEST(OzOperationDefaultBehaviour, HasTheLockFlagBeforeTheMap)
{
  OpenBehaviour behaviour;
  char const* const begin = reinterpret_cast<char const*>(&behaviour);
  bool before = true;
  std::memcpy(&before, begin + sizeof(void*), sizeof before);

  behaviour.lock();

  bool after = false;
  std::memcpy(&after, begin + sizeof(void*), sizeof after);
  EXPECT_FALSE(before);
  EXPECT_TRUE(after);
  EXPECT_EQ(reinterpret_cast<char const*>(behaviour.const_map()), begin + 2 * sizeof(void*));
}

TEST(OzOperationDefaultBehaviour, IsEmptyAndUnlockedAtFirst)
{
  OzOperationDefaultBehaviour const behaviour;

  EXPECT_FALSE(behaviour.is_locked());
  EXPECT_EQ(packages_of(behaviour), std::vector<OzString const*>());
  EXPECT_EQ(behaviour.get_actual_flavour(&drawing, 1), 0);
}

TEST(OzOperationDefaultBehaviour, AllChangesAndModificationsApply)
{
  OzOperationDefaultBehaviour behaviour;

  EXPECT_TRUE(behaviour.apply_change("change"));
  EXPECT_TRUE(behaviour.apply_change(""));
  EXPECT_TRUE(behaviour.apply_change(nullptr));
  EXPECT_TRUE(behaviour.is_activated(OzVersionStamp()));
  EXPECT_TRUE(behaviour.is_activated(OzVersionStamp(12, 305, 37)));
  EXPECT_TRUE(behaviour.is_activated(OzVersionStamp(-1, -1, -1)));
}

TEST(OzOperationDefaultBehaviour, TheFirstFlavourStaysAndADifferingOneIsReported)
{
  OzOperationDefaultBehaviour behaviour;
  ReportRecorder const recorder;

  EXPECT_EQ(behaviour.determine_flavour_to_apply(&drawing, 1, 3), 3);
  EXPECT_EQ(recorder.units(), NO_REPORT);

  EXPECT_EQ(behaviour.determine_flavour_to_apply(&drawing, 1, 7), 3);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzOperationDefaultBehaviour, ProposingTheSameFlavourAgainIsNotReported)
{
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 1, 3);
  ReportRecorder const recorder;

  behaviour.set_best_flavour(&drawing, 1, 3);
  EXPECT_EQ(behaviour.determine_flavour_to_apply(&drawing, 1, 3), 3);

  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzOperationDefaultBehaviour, TheFirstFlavourStaysWithoutAHandlerToo)
{
  OzOperationDefaultBehaviour behaviour;

  EXPECT_EQ(behaviour.determine_flavour_to_apply(&drawing, 1, 3), 3);
  EXPECT_EQ(behaviour.determine_flavour_to_apply(&drawing, 1, 7), 3);
  behaviour.set_best_flavour(&drawing, 1, 8);
  EXPECT_EQ(behaviour.get_actual_flavour(&drawing, 1), 3);
}

TEST(OzOperationDefaultBehaviour, AFlavourOfZeroIsRecordedLikeAnyOther)
{
  OzOperationDefaultBehaviour behaviour;
  ReportRecorder const recorder;

  behaviour.set_best_flavour(&drawing, 1, 0);

  EXPECT_EQ(behaviour.determine_flavour_to_apply(&drawing, 1, 2), 0);
  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzOperationDefaultBehaviour, ReportsWhenTheLockIsFreeAgain)
{
  Deadline const deadline(std::chrono::seconds(60));
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 1, 3);
  static std::uint64_t drawn;
  drawn = 0;
  OzAssertionHandler const former = dkb_assertion_handler;
  dkb_assertion_handler = [](char const*, int) { drawn = OzMutexId().Id(); };

  behaviour.set_best_flavour(&drawing, 1, 7);

  dkb_assertion_handler = former;
  EXPECT_NE(drawn, 0u);
}

TEST(OzOperationDefaultBehaviour, AHandlerMayThrowAndTheFlavourStays)
{
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 1, 3);
  OzAssertionHandler const former = dkb_assertion_handler;
  dkb_assertion_handler = [](char const*, int) { throw 7; };

  EXPECT_THROW(behaviour.set_best_flavour(&drawing, 1, 7), int);

  dkb_assertion_handler = former;
  EXPECT_EQ(behaviour.get_actual_flavour(&drawing, 1), 3);
}

TEST(OzOperationDefaultBehaviour, ServicesAndPackagesAreSettledApart)
{
  OzOperationDefaultBehaviour behaviour;
  ReportRecorder const recorder;

  behaviour.set_best_flavour(&drawing, 1, 3);
  behaviour.set_best_flavour(&drawing, 2, 4);
  behaviour.set_best_flavour(&milling, 1, 5);
  behaviour.set_best_flavour(&milling, INT_MIN, SHRT_MIN);
  behaviour.set_best_flavour(&milling, INT_MAX, SHRT_MAX);

  EXPECT_EQ(behaviour.get_actual_flavour(&drawing, 1), 3);
  EXPECT_EQ(behaviour.get_actual_flavour(&drawing, 2), 4);
  EXPECT_EQ(behaviour.get_actual_flavour(&milling, 1), 5);
  EXPECT_EQ(behaviour.get_actual_flavour(&milling, INT_MIN), -32768);
  EXPECT_EQ(behaviour.get_actual_flavour(&milling, INT_MAX), 32767);
  EXPECT_EQ(behaviour.get_actual_flavour(&drawing, 3), 0);
  EXPECT_EQ(behaviour.get_actual_flavour(&unknown, 1), 0);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzOperationDefaultBehaviour, EqualStringsAreTwoPackages)
{
  OzOperationDefaultBehaviour behaviour;
  ReportRecorder const recorder;

  EXPECT_EQ(behaviour.determine_flavour_to_apply(&milling, 1, 3), 3);
  EXPECT_EQ(behaviour.determine_flavour_to_apply(&milling_again, 1, 7), 7);

  EXPECT_EQ(behaviour.get_actual_flavour(&milling, 1), 3);
  EXPECT_EQ(packages_of(behaviour).size(), 2u);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzOperationDefaultBehaviour, NullIsAPackageLikeAnyOther)
{
  OzOperationDefaultBehaviour behaviour;

  EXPECT_EQ(behaviour.determine_flavour_to_apply(nullptr, 1, 3), 3);

  EXPECT_EQ(behaviour.get_actual_flavour(nullptr, 1), 3);
  EXPECT_EQ(packages_of(behaviour), std::vector<OzString const*>{nullptr});
}

TEST(OzOperationDefaultBehaviour, ALockedOneRecordsNothingAndReportsNothing)
{
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 1, 3);
  ReportRecorder const recorder;

  behaviour.lock();

  EXPECT_TRUE(behaviour.is_locked());
  EXPECT_EQ(behaviour.determine_flavour_to_apply(&unknown, 1, 7), 0);
  EXPECT_EQ(behaviour.determine_flavour_to_apply(&drawing, 2, 7), 0);
  EXPECT_EQ(behaviour.determine_flavour_to_apply(&drawing, 1, 7), 3);
  EXPECT_EQ(flavours_of(behaviour), (Flavours{{{&drawing, 1}, 3}}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzOperationDefaultBehaviour, LockingTwiceIsLockingOnce)
{
  OzOperationDefaultBehaviour behaviour;

  behaviour.lock();
  behaviour.lock();
  EXPECT_TRUE(behaviour.is_locked());

  behaviour.clear();
  EXPECT_FALSE(behaviour.is_locked());
}

TEST(OzOperationDefaultBehaviour, ADerivedClassDecidesWhetherItIsLocked)
{
  Log log;
  LoggedBehaviour behaviour(log);
  behaviour.pretend_locked = true;

  behaviour.set_best_flavour(&drawing, 1, 3);

  EXPECT_EQ(log, (Log{"set DRAWING 1 3", "is locked"}));
  EXPECT_EQ(flavours_of(static_cast<OzOperationDefaultBehaviour&>(behaviour)), Flavours());
}

TEST(OzOperationDefaultBehaviour, ClearForgetsAndUnlocks)
{
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 1, 3);
  behaviour.set_best_flavour(&milling, 2, 4);
  behaviour.lock();
  ReportRecorder const recorder;

  behaviour.clear();

  EXPECT_FALSE(behaviour.is_locked());
  EXPECT_EQ(flavours_of(behaviour), Flavours());
  EXPECT_EQ(behaviour.determine_flavour_to_apply(&drawing, 1, 7), 7);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzOperationDefaultBehaviour, PackagesComeInTheOrderOfTheirAddressesAndServicesInThatOfTheirNumbers)
{
  OzString const strings[3];
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&strings[1], 9, 1);
  behaviour.set_best_flavour(&strings[1], -9, 1);
  behaviour.set_best_flavour(&strings[1], 0, 1);
  behaviour.set_best_flavour(&strings[2], 1, 1);
  behaviour.set_best_flavour(&strings[0], 1, 1);

  EXPECT_EQ(packages_of(behaviour), (std::vector<OzString const*>{&strings[0], &strings[1], &strings[2]}));
  EXPECT_EQ(services_of(behaviour, &strings[1]), (std::vector<int>{-9, 0, 9}));
}

TEST(OzOperationDefaultBehaviour, PackagesReplaceWhatThePointerHeld)
{
  Log log;
  OzOperationDefaultBehaviour behaviour;
  OzAutoPtr<OzIterator<OzString const*>> walk(
      new LoggedIterator<OzString const*>("held", std::vector<OzString const*>{&unknown}, log));

  behaviour.get_packages(walk);

  EXPECT_EQ(log, Log{"held deleted"});
  EXPECT_TRUE(walk->done());
}

TEST(OzOperationDefaultBehaviour, ServicesReplaceWhatThePointerHeld)
{
  Log log;
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 4, 3);
  OzAutoPtr<OzIterator<int>> walk(new LoggedIterator<int>("held", std::vector<int>{9}, log));

  behaviour.get_services(&drawing, walk);
  EXPECT_EQ(log, Log{"held deleted"});
  ASSERT_FALSE(walk->done());
  EXPECT_EQ(walk->current(), 4);

  behaviour.get_services(&unknown, walk);
  EXPECT_TRUE(walk->done());
}

TEST(OzOperationDefaultBehaviour, WhatThePointersHeldIsDeletedOutsideTheLock)
{
  struct TakesTheLock : LoggedIterator<int>
  {
    using LoggedIterator<int>::LoggedIterator;
    ~TakesTheLock() override { OzMutexId(); }
  };
  struct TakesTheLockToo : LoggedIterator<OzString const*>
  {
    using LoggedIterator<OzString const*>::LoggedIterator;
    ~TakesTheLockToo() override { OzMutexId(); }
  };
  Deadline const deadline(std::chrono::seconds(60));
  Log log;
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 4, 3);
  OzAutoPtr<OzIterator<OzString const*>> packages(
      new TakesTheLockToo("packages", std::vector<OzString const*>{}, log));
  OzAutoPtr<OzIterator<int>> services(new TakesTheLock("services", std::vector<int>{}, log));

  behaviour.get_packages(packages);
  behaviour.get_services(&drawing, services);
  services = new TakesTheLock("services again", std::vector<int>{}, log);
  behaviour.get_services(&unknown, services);

  EXPECT_EQ(log, (Log{"packages deleted", "services deleted", "services again deleted"}));
}

TEST(OzOperationDefaultBehaviour, AnUnknownPackageHasNoServices)
{
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 4, 3);
  ReportRecorder const recorder;
  OzAutoPtr<OzIterator<int>> walk;

  behaviour.get_services(&unknown, walk);
  EXPECT_TRUE(walk->done());
  walk->reset();
  EXPECT_TRUE(walk->done());

  EXPECT_EQ(packages_of(behaviour), std::vector<OzString const*>{&drawing});
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzOperationDefaultBehaviour, ReadingAServiceOfAnUnknownPackageIsReportedByTheArray)
{
  OzOperationDefaultBehaviour const behaviour;
  ReportRecorder const recorder;
  OzAutoPtr<OzIterator<int>> walk;
  behaviour.get_services(&unknown, walk);

  EXPECT_EQ(walk->current(), 0);

  EXPECT_EQ(recorder.units(), reports(1, "ozarray_i.h"));
}

TEST(OzOperationDefaultBehaviour, CopiesHaveAllFlavoursAndTheLock)
{
  OzOperationDefaultBehaviour source;
  source.set_best_flavour(&drawing, 1, 3);
  source.set_best_flavour(&drawing, 2, 4);
  source.set_best_flavour(&milling, 1, 5);
  source.lock();
  Flavours const all{{{&drawing, 1}, 3}, {{&drawing, 2}, 4}, {{&milling, 1}, 5}};
  OzOperationDefaultBehaviour assigned;
  assigned.set_best_flavour(&unknown, 1, 9);

  OzOperationDefaultBehaviour const copy(source);
  EXPECT_EQ(&(assigned = source), &assigned);

  EXPECT_EQ(flavours_of(copy), all);
  EXPECT_EQ(flavours_of(assigned), all);
  EXPECT_TRUE(copy.is_locked());
  EXPECT_TRUE(assigned.is_locked());
}

TEST(OzOperationDefaultBehaviour, AssigningAnUnlockedOneUnlocks)
{
  OzOperationDefaultBehaviour const source;
  OzOperationDefaultBehaviour target;
  target.set_best_flavour(&drawing, 1, 3);
  target.lock();

  target = source;

  EXPECT_FALSE(target.is_locked());
  EXPECT_EQ(flavours_of(target), Flavours());
  EXPECT_FALSE(OzOperationDefaultBehaviour(source).is_locked());
}

TEST(OzOperationDefaultBehaviour, CopiesAreIndependent)
{
  OzOperationDefaultBehaviour source;
  source.set_best_flavour(&drawing, 1, 3);
  OzOperationDefaultBehaviour copy(source);

  source.set_best_flavour(&drawing, 2, 4);
  copy.set_best_flavour(&milling, 1, 5);
  copy.lock();

  EXPECT_EQ(flavours_of(source), (Flavours{{{&drawing, 1}, 3}, {{&drawing, 2}, 4}}));
  EXPECT_EQ(flavours_of(copy), (Flavours{{{&drawing, 1}, 3}, {{&milling, 1}, 5}}));
  EXPECT_FALSE(source.is_locked());
}

TEST(OzOperationDefaultBehaviour, CopyingReadsTheFlagItselfAndAsksNoDerivedClass)
{
  Deadline const deadline(std::chrono::seconds(60));
  Log log;
  LoggedBehaviour source(log);
  source.pretend_locked = true;
  OzOperationDefaultBehaviour const& plain = source;

  OzOperationDefaultBehaviour const copy(plain);
  OzOperationDefaultBehaviour assigned;
  assigned = plain;

  EXPECT_FALSE(copy.is_locked());
  EXPECT_FALSE(assigned.is_locked());
  EXPECT_EQ(log, Log());
}

TEST(OzOperationDefaultBehaviour, AssignedToItselfItStaysAsItIs)
{
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 1, 3);
  behaviour.lock();
  OzOperationDefaultBehaviour const& same = behaviour;
  OzOperationBehaviour const& same_as_any = behaviour;

  EXPECT_EQ(&(behaviour = same), &behaviour);
  EXPECT_EQ(&(behaviour = same_as_any), &behaviour);

  EXPECT_EQ(flavours_of(behaviour), (Flavours{{{&drawing, 1}, 3}}));
  EXPECT_TRUE(behaviour.is_locked());
}

TEST(OzOperationDefaultBehaviour, TheMapIsOneAndInUse)
{
  OpenBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 1, 3);

  OpenBehaviour::KnownBehaviours& map = behaviour.get_known_operation_behaviours();
  map[&milling][2] = 4;

  EXPECT_EQ(behaviour.const_map(), &map);
  EXPECT_EQ(map.size(), 2u);
  EXPECT_EQ(map.at(&drawing).at(1), 3);
  EXPECT_EQ(behaviour.get_actual_flavour(&milling, 2), 4);
}

TEST(ConversionOfABehaviour, TakesItsCourseStepByStep)
{
  Log log;
  OzString const strings[3] = {"A", "B", "C"};
  OtherBehaviour other(log);
  other.packages = {&strings[0], &strings[1], &strings[2]};
  other.services = {{&strings[0], {7, 8}}, {&strings[1], {9}}, {&strings[2], {10, 11, 12}}};
  other.locked = true;
  LoggedBehaviour target(log);
  OzOperationDefaultBehaviour& plain = target;
  ReportRecorder const recorder;

  EXPECT_EQ(&(plain = static_cast<OzOperationBehaviour const&>(other)), &plain);

  EXPECT_EQ(log, (Log{
                     "clear",
                     "other: get packages",
                     "packages reset",
                     "other: get services A",
                     "packages reset",
                     "get A 7",
                     "set A 7 0",
                     "is locked",
                     "packages next",
                     "get B 7",
                     "set B 7 0",
                     "is locked",
                     "packages next",
                     "get C 7",
                     "set C 7 0",
                     "is locked",
                     "packages next",
                     "packages next",
                     "other: is locked",
                     "lock",
                     "services deleted",
                     "packages deleted",
                 }));
  EXPECT_EQ(recorder.units(), NO_REPORT);
  EXPECT_EQ(flavours_of(target),
            (Flavours{{{&strings[0], 7}, 0}, {{&strings[1], 7}, 0}, {{&strings[2], 7}, 0}}));
}

TEST(ConversionOfABehaviour, OfNoPackagesAsksForNoServices)
{
  Log log;
  OtherBehaviour other(log);
  LoggedBehaviour target(log);
  OzOperationDefaultBehaviour& plain = target;

  plain = static_cast<OzOperationBehaviour const&>(other);

  EXPECT_EQ(log,
            (Log{"clear", "other: get packages", "packages reset", "other: is locked", "packages deleted"}));
}

TEST(ConversionOfABehaviour, OfNoPackagesCanLock)
{
  Log log;
  OtherBehaviour other(log);
  other.locked = true;
  OzOperationDefaultBehaviour target;
  target.set_best_flavour(&drawing, 1, 3);

  target = static_cast<OzOperationBehaviour const&>(other);

  EXPECT_TRUE(target.is_locked());
  EXPECT_EQ(flavours_of(target), Flavours());
}

TEST(ConversionOfABehaviour, ForgetsWhatTheTargetHadAndUnlocksItFirst)
{
  Log log;
  OtherBehaviour other(log);
  other.packages = {&drawing};
  other.services = {{&drawing, {1}}};
  OzOperationDefaultBehaviour target;
  target.set_best_flavour(&drawing, 1, 3);
  target.set_best_flavour(&milling, 1, 4);
  target.lock();
  ReportRecorder const recorder;

  target = static_cast<OzOperationBehaviour const&>(other);

  EXPECT_EQ(flavours_of(target), (Flavours{{{&drawing, 1}, 0}}));
  EXPECT_FALSE(target.is_locked());
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(ConversionOfABehaviour, BelievesThePackagesToBeDifferent)
{
  Log log;
  OtherBehaviour other(log);
  other.packages = {&drawing, &milling, &drawing};
  other.services = {{&drawing, {1}}};
  OzOperationDefaultBehaviour target;
  ReportRecorder const recorder;

  target = static_cast<OzOperationBehaviour const&>(other);

  EXPECT_EQ(flavours_of(target), (Flavours{{{&drawing, 1}, 0}, {{&milling, 1}, 0}}));
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(ConversionOfABehaviour, GivesEachPackageTheFirstServiceOfTheFirstAndFlavourZero)
{
  OzString const strings[2] = {"A", "B"};
  OzOperationDefaultBehaviour source;
  source.set_best_flavour(&strings[0], 5, 3);
  source.set_best_flavour(&strings[0], 2, 4);
  source.set_best_flavour(&strings[1], 9, 6);
  source.lock();
  OzOperationBehaviour const& any = source;

  OzOperationDefaultBehaviour const converted(any);
  OzOperationDefaultBehaviour assigned;
  EXPECT_EQ(&(assigned = any), &assigned);

  Flavours const expected{{{&strings[0], 2}, 0}, {{&strings[1], 2}, 0}};
  EXPECT_EQ(flavours_of(converted), expected);
  EXPECT_EQ(flavours_of(assigned), expected);
  EXPECT_TRUE(converted.is_locked());
  EXPECT_TRUE(assigned.is_locked());
}

TEST(ConversionOfABehaviour, ByConstructorIsExplicit)
{
  EXPECT_TRUE((std::is_constructible_v<OzOperationDefaultBehaviour, OzOperationBehaviour const&>));
  EXPECT_FALSE((std::is_convertible_v<OzOperationBehaviour const&, OzOperationDefaultBehaviour>));
}

TEST(OzOperationDefaultBehaviour, AgreesWithATableOfPairs)
{
  struct Model
  {
    Flavours flavours;
    bool locked = false;
  };
  constexpr unsigned SEED = 20211;
  constexpr int STEPS = 20000;
  constexpr int PACKAGES = 6;
  OzString const strings[PACKAGES];
  OzOperationDefaultBehaviour behaviours[2];
  Model models[2];
  std::size_t expected_reports = 0;
  ReportRecorder const recorder;
  std::mt19937 random(SEED);
  auto const below = [&random](int limit) { return static_cast<int>(random() % unsigned(limit)); };

  for (int step = 0; step < STEPS; ++step)
  {
    int const which = below(2);
    OzOperationDefaultBehaviour& behaviour = behaviours[which];
    Model& model = models[which];
    OzString const* const package = &strings[below(PACKAGES)];
    int const service = below(5) - 2;
    short const flavour = static_cast<short>(below(3));
    std::pair<OzString const*, int> const pair(package, service);

    int const action = below(100);
    if (action < 60)
    {
      if (!model.locked)
      {
        auto const entered = model.flavours.emplace(pair, flavour);
        if (entered.first->second != flavour)
          ++expected_reports;
      }
      if (action < 30)
        behaviour.set_best_flavour(package, service, flavour);
      else
      {
        auto const known = model.flavours.find(pair);
        short const applies = known != model.flavours.end() ? known->second : short(0);
        ASSERT_EQ(behaviour.determine_flavour_to_apply(package, service, flavour), applies)
            << "seed " << SEED << ", step " << step;
      }
    }
    else if (action < 86)
    {
      auto const known = model.flavours.find(pair);
      short const applies = known != model.flavours.end() ? known->second : short(0);
      ASSERT_EQ(behaviour.get_actual_flavour(package, service), applies)
          << "seed " << SEED << ", step " << step;
    }
    else if (action < 88)
    {
      behaviour.lock();
      model.locked = true;
    }
    else if (action < 96)
    {
      behaviour.clear();
      model = Model();
    }
    else if (action < 98)
    {
      behaviour = behaviours[1 - which];
      model = models[1 - which];
    }
    else if (action < 99)
    {
      OzOperationDefaultBehaviour const copy(behaviour);
      ASSERT_EQ(flavours_of(copy), model.flavours) << "seed " << SEED << ", step " << step;
      ASSERT_EQ(copy.is_locked(), model.locked) << "seed " << SEED << ", step " << step;
    }
    else
    {
      behaviour = static_cast<OzOperationBehaviour const&>(behaviours[1 - which]);
      Model converted;
      converted.locked = models[1 - which].locked;
      Flavours const& from = models[1 - which].flavours;
      for (auto const& entry : from)
        converted.flavours[{entry.first.first, from.begin()->first.second}] = 0;
      model = converted;
    }

    ASSERT_EQ(behaviour.is_locked(), model.locked) << "seed " << SEED << ", step " << step;
    if (step % 16 == 0)
    {
      ASSERT_EQ(flavours_of(behaviour), model.flavours) << "seed " << SEED << ", step " << step;
      ASSERT_EQ(recorder.units().size(), expected_reports) << "seed " << SEED << ", step " << step;
    }
  }
  EXPECT_EQ(recorder.units(), reports(expected_reports, "ozoperationdefaultbehaviour.cpp"));
  EXPECT_GT(expected_reports, 1000u);
}

TEST(BehavioursAndThreads, ALockBetweenTheLookAndTheRecordComesTooLate)
{
  OzOperationDefaultBehaviour behaviour;

  after_next_unlock = [&] { behaviour.lock(); };
  EXPECT_EQ(behaviour.determine_flavour_to_apply(&drawing, 1, 3), 3);

  EXPECT_TRUE(behaviour.is_locked());
  EXPECT_EQ(flavours_of(behaviour), (Flavours{{{&drawing, 1}, 3}}));
}

TEST(BehavioursAndThreads, APackageThatIsForgottenBeforeTheSecondLookHasNoServices)
{
  OzOperationDefaultBehaviour behaviour;
  behaviour.set_best_flavour(&drawing, 1, 3);
  OzAutoPtr<OzIterator<int>> walk;
  ReportRecorder const recorder;

  after_next_unlock = [&] { behaviour.clear(); };
  behaviour.get_services(&drawing, walk);

  EXPECT_TRUE(walk->done());
  EXPECT_EQ(recorder.units(), NO_REPORT);
  EXPECT_EQ(walk->current(), 0);
  EXPECT_EQ(recorder.units(), reports(1, "ozarray_i.h"));
}

TEST(BehavioursAndThreads, APackageThatComesAfterTheFirstLookHasNoServicesYet)
{
  OzOperationDefaultBehaviour behaviour;
  OzAutoPtr<OzIterator<int>> walk;

  after_next_unlock = [&] { behaviour.set_best_flavour(&drawing, 1, 3); };
  behaviour.get_services(&drawing, walk);

  EXPECT_TRUE(walk->done());
  EXPECT_EQ(behaviour.get_actual_flavour(&drawing, 1), 3);
}

TEST(BehavioursAndThreads, NullClearsTheDefaultBeforeItBecomesCurrent)
{
  Log log;
  OtherBehaviour other(log);
  OzOperationBehaviour::set_instance(&other);
  OzOperationBehaviour* current = nullptr;

  after_next_unlock = [&] { current = OzOperationBehaviour::get_instance(); };
  OzOperationBehaviour::set_instance(nullptr);

  EXPECT_EQ(current, &other);
}

TEST(BehavioursAndThreads, EveryAccessWaitsForTheGlobalLock)
{
  Deadline const deadline(std::chrono::seconds(60));
  OpenBehaviour behaviour;
  OzOperationDefaultBehaviour const source;
  OzAutoPtr<OzIterator<OzString const*>> packages;
  OzAutoPtr<OzIterator<int>> services;
  struct
  {
    char const* what;
    std::function<void()> operation;
  } const cases[] = {
      {"get_instance", [] { OzOperationBehaviour::get_instance(); }},
      {"set_instance",
       [] { OzOperationBehaviour::set_instance(OzOperationBehaviour::get_default_behaviour()); }},
      {"set_instance of null", [] { OzOperationBehaviour::set_instance(nullptr); }},
      {"constructor", [] { OzOperationDefaultBehaviour(); }},
      {"copy constructor", [&] { OzOperationDefaultBehaviour const copy(source); }},
      {"assignment", [&] { static_cast<OzOperationDefaultBehaviour&>(behaviour) = source; }},
      {"lock", [&] { behaviour.lock(); }},
      {"is_locked", [&] { behaviour.is_locked(); }},
      {"clear", [&] { behaviour.clear(); }},
      {"set_best_flavour", [&] { behaviour.set_best_flavour(&drawing, 1, 3); }},
      {"get_actual_flavour", [&] { behaviour.get_actual_flavour(&drawing, 1); }},
      {"get_packages", [&] { behaviour.get_packages(packages); }},
      {"get_services", [&] { behaviour.get_services(&drawing, services); }},
      {"the map", [&] { behaviour.get_known_operation_behaviours(); }},
      {"the const map", [&] { behaviour.const_map(); }},
  };
  for (auto const& c : cases)
    EXPECT_TRUE(waits_for_the_lock(c.operation)) << c.what;
  OzOperationBehaviour::set_instance(nullptr);
}

TEST(BehavioursAndThreads, WhatReadsNothingThatIsSharedTakesNoLock)
{
  Deadline const deadline(std::chrono::seconds(60));
  OzOperationDefaultBehaviour behaviour;
  OzCriticalDkbRegion const region;

  EXPECT_NE(OzOperationBehaviour::get_default_behaviour(), nullptr);
  EXPECT_TRUE(behaviour.apply_change("change"));
  EXPECT_TRUE(behaviour.is_activated(OzVersionStamp(12, 305, 37)));
}

TEST(BehavioursAndThreads, AllThreadsGetTheSameBehaviour)
{
  constexpr int THREADS = 4;
  OzOperationBehaviour* const fallback = OzOperationBehaviour::get_default_behaviour();
  OzOperationBehaviour* given[THREADS] = {};
  for (int round = 0; round < 100; ++round)
  {
    OzOperationBehaviour::the_instance_ = nullptr;
    run_together(THREADS, [&](int i) { given[i] = OzOperationBehaviour::get_instance(); });
    for (OzOperationBehaviour* const one : given)
      ASSERT_EQ(one, fallback) << round;
  }
}

TEST(BehavioursAndThreads, TheCurrentBehaviourIsReplacedWhileOthersAskForIt)
{
  constexpr int THREADS = 4;
  constexpr int STEPS = 500;
  OzOperationDefaultBehaviour one;
  OzOperationBehaviour* const fallback = OzOperationBehaviour::get_default_behaviour();
  std::atomic<int> strangers = 0;

  run_together(THREADS,
               [&](int i)
               {
                 for (int step = 0; step < STEPS; ++step)
                 {
                   if (i == 0)
                     OzOperationBehaviour::set_instance(step % 2 == 0 ? &one : nullptr);
                   OzOperationBehaviour* const current = OzOperationBehaviour::get_instance();
                   if (current != &one && current != fallback)
                     ++strangers;
                   current->determine_flavour_to_apply(&drawing, i, static_cast<short>(i + 1));
                 }
               });

  EXPECT_EQ(strangers, 0);
  OzOperationBehaviour::set_instance(nullptr);
}

TEST(BehavioursAndThreads, ThreadsThatProposeDifferentFlavoursGetTheSameOne)
{
  constexpr int THREADS = 4;
  constexpr int SERVICES = 50;
  OzString const strings[4];
  OzOperationDefaultBehaviour behaviour;
  short answers[THREADS][4][SERVICES] = {};
  ReportRecorder const recorder;

  run_together(THREADS,
               [&](int i)
               {
                 for (int service = 0; service < SERVICES; ++service)
                 {
                   for (int p = 0; p < 4; ++p)
                     answers[i][p][service] = behaviour.determine_flavour_to_apply(&strings[p], service,
                                                                                   static_cast<short>(i + 1));
                 }
               });

  for (int p = 0; p < 4; ++p)
  {
    for (int service = 0; service < SERVICES; ++service)
    {
      short const settled = behaviour.get_actual_flavour(&strings[p], service);
      EXPECT_TRUE(settled >= 1 && settled <= THREADS);
      for (int i = 0; i < THREADS; ++i)
        EXPECT_EQ(answers[i][p][service], settled) << "thread " << i << ", service " << service;
    }
  }
  // All but the first thread differ for each of the 200 pairs.
  EXPECT_EQ(recorder.units(), reports(600, "ozoperationdefaultbehaviour.cpp"));
}

TEST(BehavioursAndThreads, AllOperationsRunSideBySide)
{
  constexpr int STEPS = 400;
  OzString const strings[3];
  OzOperationDefaultBehaviour behaviour;
  std::atomic<int> wrong = 0;
  auto const recorded = [&](short flavour) { return flavour == 0 || flavour == 5; };
  std::function<void(int)> const roles[] = {
      [&](int step) { behaviour.set_best_flavour(&strings[step % 3], step % 40, 5); },
      [&](int step) { wrong += !recorded(behaviour.get_actual_flavour(&strings[step % 3], step % 40)); },
      [&](int step)
      {
        if (step % 20 == 0)
          behaviour.clear();
        else if (step % 20 == 10)
          behaviour.lock();
        behaviour.is_locked();
      },
      [&](int step)
      {
        OzOperationDefaultBehaviour const copy(behaviour);
        wrong += !recorded(copy.get_actual_flavour(&strings[step % 3], step % 40));
        for (auto const& entry : flavours_of(copy))
          wrong += entry.second != 5;
      },
  };
  ReportRecorder const recorder;

  run_together(4,
               [&](int i)
               {
                 for (int step = 0; step < STEPS; ++step)
                   roles[i](step);
               });

  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(BehavioursAndThreads, APackageMayBeForgottenWhileItsServicesAreAskedFor)
{
  constexpr int STEPS = 20000;
  OzOperationDefaultBehaviour behaviour;
  std::atomic<bool> stop = false;
  ReportRecorder const recorder;

  run_together(2,
               [&](int i)
               {
                 if (i == 0)
                 {
                   OzAutoPtr<OzIterator<int>> services;
                   for (int step = 0; step < STEPS; ++step)
                     behaviour.get_services(&drawing, services);
                   stop = true;
                 }
                 while (!stop)
                 {
                   behaviour.set_best_flavour(&drawing, 1, 3);
                   behaviour.clear();
                 }
               });

  EXPECT_EQ(recorder.units(), NO_REPORT);
}
