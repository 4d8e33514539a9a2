#include "ozoperationbehaviour.h"
#include "ozoperationdefaultbehaviour.h"
#include "ozversionedalgorithm.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{
std::vector<std::string> const ONE_REPORT = reports(1, "ozversionedalgorithm.cpp");
std::vector<std::string> const NO_REPORT;

/// Answers with fixed values that no default has, and notes what it is asked.
class TalkativeBehaviour : public OzOperationBehaviour
{
public:
  void set_best_flavour(OzString const* package, int service, short flavour) override
  {
    note("set", package, service, flavour);
  }
  short get_actual_flavour(OzString const* package, int service) const override
  {
    note("get", package, service, 0);
    return 41;
  }
  short determine_flavour_to_apply(OzString const* package, int service, short flavour) override
  {
    note("determine", package, service, flavour);
    return 42;
  }
  bool apply_change(char const* change) const override
  {
    asked.push_back(std::string("apply ") + change);
    reports_when_asked = recorder != nullptr ? recorder->units().size() : 0;
    return applies;
  }
  bool is_activated(OzVersionStamp const& stamp) override
  {
    stamps.push_back(&stamp);
    return applies;
  }
  void lock() override {}
  bool is_locked() const override { return false; }
  void clear() override {}
  void get_packages(OzAutoPtr<OzIterator<OzString const*>>&) const override {}
  void get_services(OzString const*, OzAutoPtr<OzIterator<int>>&) const override {}

  bool applies = false;
  ReportRecorder const* recorder = nullptr;
  std::vector<OzVersionStamp const*> stamps;
  mutable std::vector<std::string> asked;
  mutable std::size_t reports_when_asked = 0;

private:
  void note(char const* what, OzString const* package, int service, int flavour) const
  {
    asked.push_back(std::string(what) + " " + package->as_const_c_string() + " " + std::to_string(service) +
                    " " + std::to_string(flavour));
  }
};

/// An algorithm that can be copied, as a derived class may allow.
class Algorithm : public OzVersionedAlgorithm
{
public:
  using OzVersionedAlgorithm::OzVersionedAlgorithm;
  Algorithm(Algorithm const&) = default;
  Algorithm& operator=(Algorithm const&) = default;
};

class Stamp : public OzVersionStamp
{
public:
  using OzVersionStamp::is_active;
  using OzVersionStamp::OzVersionStamp;
};

std::vector<int> fields(OzVersionStamp stamp)
{
  return {stamp.get_trunk_version(), stamp.get_branch_niveau(), stamp.get_branch_version(),
          stamp.get_fdpinpoint_niveau(), stamp.get_fdpinpoint_version()};
}

OzString const package("PACKAGE");
} // namespace

TEST(OzVersionStamp, WithoutArgumentsAllFieldsAreZero)
{
  EXPECT_EQ(fields(OzVersionStamp()), (std::vector<int>{0, 0, 0, 0, 0}));
}

TEST(OzVersionStamp, SplitsPackedNumbersTowardZero)
{
  struct
  {
    char const* what;
    int trunk;
    short branch;
    short fix;
    std::vector<int> split;
  } const cases[] = {
      {"all levels", 12, 305, 37, {12, 3, 5, 2, 5}},
      {"trunk alone", 12, 0, 0, {12, 0, 0, 0, 0}},
      {"just below the first niveau", 1, 99, 15, {1, 0, 99, 0, 15}},
      {"just the first niveau", 1, 100, 16, {1, 1, 0, 1, 0}},
      {"just below the second niveau", 1, 199, 31, {1, 1, 99, 1, 15}},
      {"negative", -12, -305, -37, {-12, -3, -5, -2, -5}},
      {"negative versions alone", -1, -99, -15, {-1, 0, -99, 0, -15}},
      {"greatest", INT_MAX, SHRT_MAX, SHRT_MAX, {2147483647, 327, 67, 2047, 15}},
      {"smallest", INT_MIN, SHRT_MIN, SHRT_MIN, {-2147483647 - 1, -327, -68, -2048, 0}},
  };
  for (auto const& c : cases)
    EXPECT_EQ(fields(OzVersionStamp(c.trunk, c.branch, c.fix)), c.split) << c.what;
}

TEST(OzVersionStamp, BasesHaveAddresses)
{
  short const& branch_base = OzVersionStamp::bl_base;
  short const& fix_base = OzVersionStamp::fl_base;

  EXPECT_EQ(branch_base, 100);
  EXPECT_EQ(fix_base, 16);
  EXPECT_NE(&branch_base, &fix_base);
}

TEST(OzVersionStamp, FieldsLieSideBySideInTheOrderOfTheirLevels)
{
  OzVersionStamp const stamp(12, 305, 38);
  ASSERT_EQ(sizeof stamp, 12u);
  int trunk = 0;
  short shorts[4];

  std::memcpy(&trunk, &stamp, sizeof trunk);
  std::memcpy(shorts, reinterpret_cast<char const*>(&stamp) + sizeof trunk, sizeof shorts);

  EXPECT_EQ(trunk, 12);
  EXPECT_EQ(std::vector<short>(shorts, shorts + 4), (std::vector<short>{3, 5, 2, 6}));
}

TEST(OzVersionStamp, AssignmentCopiesAllFieldsAndGivesTheTarget)
{
  OzVersionStamp source(12, 305, 38);
  OzVersionStamp copied;
  OzVersionStamp moved;

  EXPECT_EQ(&(copied = source), &copied);
  EXPECT_EQ(&(moved = std::move(source)), &moved);

  EXPECT_EQ(fields(copied), (std::vector<int>{12, 3, 5, 2, 6}));
  EXPECT_EQ(fields(moved), (std::vector<int>{12, 3, 5, 2, 6}));
}

TEST(OzVersionStamp, IsActiveFromTrunkVersionOneOn)
{
  EXPECT_FALSE(Stamp().is_active());
  EXPECT_FALSE(Stamp(0, 305, 37).is_active());
  EXPECT_FALSE(Stamp(-1, 305, 37).is_active());
  EXPECT_TRUE(Stamp(1, 0, 0).is_active());
  EXPECT_TRUE(Stamp(12, -305, -37).is_active());
}

TEST(OzVersionStamp, QuestionsNeedAStampThatIsNotConst)
{
  EXPECT_TRUE((std::is_same_v<decltype(&OzVersionStamp::operator>=),
                              bool (OzVersionStamp::*)(OzVersionStamp const&)>));
  EXPECT_TRUE((std::is_same_v<decltype(&OzVersionStamp::get_trunk_version), int (OzVersionStamp::*)()>));
  EXPECT_TRUE((std::is_same_v<decltype(&OzVersionStamp::get_branch_niveau), short (OzVersionStamp::*)()>));
}

TEST(OzVersionStamp, ContainsWhatWasMadeBeforeOnItsOwnLine)
{
  struct Level
  {
    int trunk;
    short branch; // niveau * 100 + version
    short fix;    // niveau * 16 + version
  };
  struct
  {
    char const* what;
    Level level;
    Level other;
    bool contained;
  } const cases[] = {
      {"no level at all, itself", {0, 0, 0}, {0, 0, 0}, false},
      {"no level at all, a trunk", {0, 0, 0}, {1, 0, 0}, false},
      {"no level at all, a lower trunk", {0, 0, 0}, {-1, 0, 0}, false},
      {"no level at all, a fix", {0, 0, 0}, {12, 305, 37}, false},
      {"negative trunk, a lower one", {-1, 0, 0}, {-2, 0, 0}, false},
      {"negative trunk, itself", {-1, 0, 0}, {-1, 0, 0}, false},
      {"branch of trunk 0, itself", {0, 305, 0}, {0, 305, 0}, false},
      {"fix of a negative trunk, an earlier one", {-12, 305, 37}, {-12, 305, 33}, false},

      {"later trunk", {12, 0, 0}, {11, 0, 0}, true},
      {"same trunk", {12, 0, 0}, {12, 0, 0}, true},
      {"earlier trunk", {11, 0, 0}, {12, 0, 0}, false},
      {"first trunk, no level at all", {1, 0, 0}, {0, 0, 0}, true},
      {"first trunk, a negative one", {1, 0, 0}, {-5, 0, 0}, true},
      {"branch, its trunk", {12, 305, 0}, {12, 0, 0}, true},
      {"branch, an earlier trunk", {12, 305, 0}, {11, 0, 0}, true},
      {"branch, a later trunk", {12, 305, 0}, {13, 0, 0}, false},
      {"fix, its trunk", {12, 305, 37}, {12, 0, 0}, true},
      {"fix, an earlier trunk", {12, 305, 37}, {11, 0, 0}, true},
      {"fix, a later trunk", {12, 305, 37}, {13, 0, 0}, false},
      {"branch without niveau, its trunk", {12, 5, 0}, {12, 0, 0}, true},
      {"negative branch, its trunk", {12, -305, 0}, {12, 0, 0}, true},
      {"fix of no branch, its trunk", {12, 0, 37}, {12, 0, 0}, true},
      {"greatest trunk, smallest", {INT_MAX, 0, 0}, {INT_MIN, 0, 0}, true},
      {"greatest trunk, itself", {INT_MAX, 0, 0}, {INT_MAX, 0, 0}, true},
      {"first trunk, greatest", {1, 0, 0}, {INT_MAX, 0, 0}, false},

      {"trunk, a branch of it", {12, 0, 0}, {12, 305, 0}, false},
      {"trunk, a branch of an earlier one", {13, 0, 0}, {12, 305, 0}, false},
      {"trunk, a fix", {12, 0, 0}, {12, 305, 37}, false},
      {"branch without niveau, a branch", {12, 5, 0}, {12, 305, 0}, false},
      {"branch without niveau, itself", {12, 5, 0}, {12, 5, 0}, false},
      {"negative branch, a branch", {12, -305, 0}, {12, 305, 0}, false},
      {"negative branch, itself", {12, -305, 0}, {12, -305, 0}, false},
      {"branch, one without niveau", {12, 305, 0}, {12, 5, 0}, false},
      {"branch, one without niveau and with a negative version", {12, 305, 0}, {12, -5, 0}, false},
      {"branch, a negative one", {12, 305, 0}, {12, -305, 0}, false},
      {"branch, the same of an earlier trunk", {13, 305, 0}, {12, 305, 0}, false},
      {"branch, the same of a later trunk", {11, 305, 0}, {12, 305, 0}, false},
      {"branch, an earlier one", {12, 407, 0}, {12, 305, 0}, false},
      {"branch, a later one", {12, 205, 0}, {12, 305, 0}, false},
      {"branch, a fix of no branch", {12, 305, 0}, {12, 0, 37}, false},
      {"fix, a fix of no branch", {12, 305, 37}, {12, 0, 37}, false},
      {"fix, a fix version of no branch", {12, 305, 37}, {12, 0, 5}, false},
      {"fix of no branch, itself", {12, 0, 37}, {12, 0, 37}, false},

      {"same branch version", {12, 305, 0}, {12, 305, 0}, true},
      {"later branch version", {12, 307, 0}, {12, 305, 0}, true},
      {"earlier branch version", {12, 304, 0}, {12, 305, 0}, false},
      {"start of a branch, a version of it", {12, 300, 0}, {12, 305, 0}, false},
      {"branch, its start", {12, 305, 0}, {12, 300, 0}, true},
      {"start of a branch, itself", {12, 300, 0}, {12, 300, 0}, true},
      {"last version of a branch", {12, 399, 0}, {12, 305, 0}, true},
      {"first branch, later version", {12, 105, 0}, {12, 101, 0}, true},
      {"first branch, earlier version", {12, 100, 0}, {12, 101, 0}, false},
      {"fix, its branch version", {12, 305, 37}, {12, 305, 0}, true},
      {"fix, an earlier branch version", {12, 307, 37}, {12, 305, 0}, true},
      {"fix, a later branch version", {12, 303, 37}, {12, 305, 0}, false},
      {"negative fix, its branch version", {12, 305, -37}, {12, 305, 0}, true},

      {"branch, a fix of it", {12, 305, 0}, {12, 305, 37}, false},
      {"later branch version, a fix of an earlier one", {12, 307, 0}, {12, 305, 37}, false},
      {"fix without niveau, a fix", {12, 305, 5}, {12, 305, 37}, false},
      {"fix without niveau, itself", {12, 305, 5}, {12, 305, 5}, false},
      {"negative fix, a fix", {12, 305, -37}, {12, 305, 37}, false},
      {"negative fix, itself", {12, 305, -37}, {12, 305, -37}, false},
      {"fix, one without niveau", {12, 305, 37}, {12, 305, 5}, false},
      {"fix, one without niveau and with a negative version", {12, 305, 37}, {12, 305, -5}, false},
      {"fix, a negative one", {12, 305, 37}, {12, 305, -37}, false},
      {"fix, the same of an earlier branch version", {12, 307, 37}, {12, 305, 37}, false},
      {"fix, the same of a later branch version", {12, 304, 37}, {12, 305, 37}, false},
      {"fix, the same of another branch", {12, 405, 37}, {12, 305, 37}, false},
      {"fix, the same of another trunk", {13, 305, 37}, {12, 305, 37}, false},
      {"fix, another line before it", {12, 305, 37}, {12, 305, 21}, false},
      {"fix, another line behind it", {12, 305, 37}, {12, 305, 53}, false},

      {"same fix version", {12, 305, 37}, {12, 305, 37}, true},
      {"later fix version", {12, 305, 37}, {12, 305, 33}, true},
      {"earlier fix version", {12, 305, 33}, {12, 305, 37}, false},
      {"start of a line of fixes, itself", {12, 305, 32}, {12, 305, 32}, true},
      {"fix, the start of its line", {12, 305, 37}, {12, 305, 32}, true},
      {"start of a line of fixes, a fix of it", {12, 305, 32}, {12, 305, 33}, false},
      {"last fix of a line", {12, 305, 47}, {12, 305, 33}, true},
      {"fix at the start of a branch", {12, 300, 37}, {12, 300, 33}, true},
      {"first line of fixes", {1, 101, 17}, {1, 101, 16}, true},
  };
  for (auto const& c : cases)
  {
    OzVersionStamp stamp(c.level.trunk, c.level.branch, c.level.fix);
    EXPECT_EQ(stamp >= OzVersionStamp(c.other.trunk, c.other.branch, c.other.fix), c.contained) << c.what;
  }
}

TEST(OzVersionStamp, ComparingWithItselfReadsOneObject)
{
  OzVersionStamp stamp(12, 305, 37);
  OzVersionStamp none;

  EXPECT_TRUE(stamp >= stamp);
  EXPECT_FALSE(none >= none);
}

TEST(OzVersioning, WithoutABehaviourEveryModificationIsActive)
{
  EXPECT_TRUE(OzVersioning::active_modification(nullptr, OzVersionStamp()));
  EXPECT_TRUE(OzVersioning::active_modification(nullptr, OzVersionStamp(12, 305, 37)));
  EXPECT_TRUE(OzVersioning::active_modification(nullptr, OzVersionStamp(-1, -1, -1)));
}

TEST(OzVersioning, AsksTheBehaviourAboutTheVeryStamp)
{
  TalkativeBehaviour behaviour;
  OzVersionStamp const stamp(12, 305, 37);

  behaviour.applies = false;
  EXPECT_FALSE(OzVersioning::active_modification(&behaviour, stamp));
  behaviour.applies = true;
  EXPECT_TRUE(OzVersioning::active_modification(&behaviour, stamp));

  EXPECT_EQ(behaviour.stamps, (std::vector<OzVersionStamp const*>{&stamp, &stamp}));
}

TEST(OzVersionedAlgorithm, ForwardsQuestionsToItsBehaviour)
{
  TalkativeBehaviour behaviour;
  OzVersionedAlgorithm const algorithm(&behaviour);
  ReportRecorder const recorder;

  algorithm.set_best_flavour(&package, 7, 3);
  EXPECT_EQ(algorithm.get_actual_flavour(&package, -8), 41);
  EXPECT_EQ(algorithm.determine_flavour_to_apply(&package, 9, 5), 42);

  EXPECT_EQ(behaviour.asked,
            (std::vector<std::string>{"set PACKAGE 7 3", "get PACKAGE -8 0", "determine PACKAGE 9 5"}));
  EXPECT_EQ(algorithm.get_operation_behaviour(), &behaviour);
  EXPECT_EQ(recorder.units(), NO_REPORT);
}

TEST(OzVersionedAlgorithm, GetsTheFlavourThatTheDefaultBehaviourRecordedFirst)
{
  OzOperationDefaultBehaviour behaviour;
  OzVersionedAlgorithm const before(&behaviour);
  OzVersionedAlgorithm const after(&behaviour);

  EXPECT_EQ(before.determine_flavour_to_apply(&package, 1, 3), 3);
  EXPECT_EQ(after.determine_flavour_to_apply(&package, 1, 7), 3);
  EXPECT_EQ(after.get_actual_flavour(&package, 1), 3);
}

TEST(OzVersionedAlgorithm, SettingAFlavourWithoutABehaviourIsReportedAndDoesNothing)
{
  OzVersionedAlgorithm const algorithm(nullptr);
  ReportRecorder const recorder;

  algorithm.set_best_flavour(&package, 7, 3);

  EXPECT_EQ(recorder.units(), ONE_REPORT);
  EXPECT_EQ(algorithm.get_operation_behaviour(), nullptr);
}

TEST(OzVersionedAlgorithm, GettingAFlavourWithoutABehaviourIsReportedAndGivesZero)
{
  OzVersionedAlgorithm const algorithm(nullptr);
  ReportRecorder const recorder;

  EXPECT_EQ(algorithm.get_actual_flavour(&package, 7), 0);

  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzVersionedAlgorithm, DeterminingAFlavourWithoutABehaviourIsReportedAndGivesZero)
{
  OzVersionedAlgorithm const algorithm(nullptr);
  ReportRecorder const recorder;

  EXPECT_EQ(algorithm.determine_flavour_to_apply(&package, 7, 3), 0);

  EXPECT_EQ(recorder.units(), ONE_REPORT);
}

TEST(OzVersionedAlgorithm, ChangesApplyWithoutABehaviourAndAreReported)
{
  OzVersionedAlgorithm const algorithm(nullptr);
  ReportRecorder const recorder;

  EXPECT_TRUE(algorithm.apply_change("change"));
  EXPECT_EQ(recorder.units(), ONE_REPORT);

  EXPECT_TRUE(algorithm.apply_change(nullptr));
  EXPECT_EQ(recorder.units(), reports(2, "ozversionedalgorithm.cpp"));
}

TEST(OzVersionedAlgorithm, EachQuestionAboutAChangeIsReportedBeforeTheBehaviourAnswersIt)
{
  TalkativeBehaviour behaviour;
  OzVersionedAlgorithm const algorithm(&behaviour);
  ReportRecorder const recorder;
  behaviour.recorder = &recorder;

  behaviour.applies = false;
  EXPECT_FALSE(algorithm.apply_change("first"));
  EXPECT_EQ(behaviour.reports_when_asked, 1u);
  EXPECT_EQ(recorder.units(), ONE_REPORT);

  behaviour.applies = true;
  EXPECT_TRUE(algorithm.apply_change("second"));
  EXPECT_EQ(behaviour.reports_when_asked, 2u);

  EXPECT_EQ(recorder.units(), reports(2, "ozversionedalgorithm.cpp"));
  EXPECT_EQ(behaviour.asked, (std::vector<std::string>{"apply first", "apply second"}));
}

TEST(OzVersionedAlgorithm, AnswersTheSameWithoutAHandler)
{
  TalkativeBehaviour behaviour;
  OzVersionedAlgorithm const without(nullptr);
  OzVersionedAlgorithm const with(&behaviour);

  without.set_best_flavour(&package, 7, 3);
  EXPECT_EQ(without.get_actual_flavour(&package, 7), 0);
  EXPECT_EQ(without.determine_flavour_to_apply(&package, 7, 3), 0);
  EXPECT_TRUE(without.apply_change("change"));
  EXPECT_FALSE(with.apply_change("change"));
}

TEST(OzVersionedAlgorithm, AHandlerMayThrowAndTheBehaviourIsNotAsked)
{
  TalkativeBehaviour behaviour;
  OzVersionedAlgorithm const without(nullptr);
  OzVersionedAlgorithm const with(&behaviour);
  OzAssertionHandler const former = dkb_assertion_handler;
  dkb_assertion_handler = [](char const*, int) { throw 7; };

  EXPECT_THROW(with.apply_change("change"), int);
  EXPECT_THROW(without.apply_change("change"), int);
  EXPECT_THROW(without.set_best_flavour(&package, 7, 3), int);
  EXPECT_THROW(without.get_actual_flavour(&package, 7), int);
  EXPECT_THROW(without.determine_flavour_to_apply(&package, 7, 3), int);

  dkb_assertion_handler = former;
  EXPECT_EQ(behaviour.asked, std::vector<std::string>());
}

TEST(OzVersionedAlgorithm, CopiesObeyTheSameBehaviour)
{
  TalkativeBehaviour behaviour;
  Algorithm const source(&behaviour);

  Algorithm copy(source);
  Algorithm assigned(nullptr);
  EXPECT_EQ(&(assigned = source), &assigned);
  Algorithm& same = assigned;
  assigned = same;

  EXPECT_EQ(copy.get_operation_behaviour(), &behaviour);
  EXPECT_EQ(assigned.get_operation_behaviour(), &behaviour);
}

TEST(OzVersionedAlgorithm, OnlyDerivedClassesAreCopied)
{
  EXPECT_FALSE(std::is_copy_constructible_v<OzVersionedAlgorithm>);
  EXPECT_FALSE(std::is_copy_assignable_v<OzVersionedAlgorithm>);
}

TEST(OzVersionedAlgorithm, HasAVirtualDestructorAndOnePointer)
{
  TalkativeBehaviour behaviour;
  OzVersionedAlgorithm const algorithm(&behaviour);
  OzOperationBehaviour* stored = nullptr;

  std::memcpy(&stored, reinterpret_cast<char const*>(&algorithm) + sizeof(void*), sizeof stored);

  EXPECT_TRUE(std::has_virtual_destructor_v<OzVersionedAlgorithm>);
  EXPECT_EQ(sizeof algorithm, 2 * sizeof(void*));
  EXPECT_EQ(stored, &behaviour);
}
