#include "drawing_text.h"
#include "flavours.h"
#include "program_runner.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace contours;

namespace
{

/// An open run of `count` edges that ends where two lines start, within the tolerance of the run and nearer to each
/// other. Closest first joins the lines; a chain that grows along the run takes one of them.
std::string run_and_fork(int count)
{
  std::string run = "0 LWPOLYLINE\n5 20\n8 CUT\n70 0\n";
  for (int i = count; i >= 0; --i)
    run += "10 " + std::to_string(-i) + "\n20 0\n";
  return run + "0 LINE\n5 21\n8 CUT\n10 0.006\n20 0\n11 5\n21 5\n" +
         "0 LINE\n5 22\n8 CUT\n10 0.008\n20 0\n11 5\n21 -5\n";
}

ProgramRun run_on(std::string const& entities, std::vector<std::string> arguments)
{
  arguments.insert(arguments.end(), {"-f", "csv", "-"});
  return run_program(arguments, dxf_drawing(entities));
}

/// The columns with layer, state and number of edges of all contours.
std::string edges_of_contours(ProgramRun const& run)
{
  std::string found;
  std::istringstream lines(run.out);
  std::string line;
  std::getline(lines, line);
  while (std::getline(lines, line))
  {
    std::size_t end = 0;
    for (int column = 0; column < 4; ++column)
      end = line.find(',', end + 1);
    found += line.substr(0, end) + "\n";
  }
  return found;
}

char const* const CLOSEST = "1,CUT,open,600\n2,CUT,open,2\n";
char const* const GROWN = "1,CUT,open,601\n2,CUT,open,1\n";

/// Gives a fixed answer to everybody.
class FixedBehaviour : public OzOperationDefaultBehaviour
{
public:
  explicit FixedBehaviour(short flavour_for_all)
    : flavour(flavour_for_all)
  {
  }
  void set_best_flavour(OzString const* package, int service, short best) override
  {
    asked.push_back(std::string(package->as_const_c_string()) + " " + std::to_string(service) + " " +
                    std::to_string(best));
  }
  short get_actual_flavour(OzString const*, int) const override { return flavour; }

  std::vector<std::string> asked;

private:
  short flavour;
};

/// The behaviour of the process while it lives.
struct CurrentBehaviour
{
  explicit CurrentBehaviour(OzOperationBehaviour* behaviour)
  {
    OzOperationBehaviour::set_instance(behaviour);
  }
  ~CurrentBehaviour() { OzOperationBehaviour::set_instance(nullptr); }
};

} // namespace

TEST(Flavours, TheNewestAppliesWhereNothingWasRecorded)
{
  CurrentBehaviour const current(nullptr);

  EXPECT_EQ(flavour_to_apply(), 2);
}

TEST(Flavours, EachComesToAStrategy)
{
  EXPECT_EQ(strategy_of(1), OzEdgeSorter::OzSortClosestFirst);
  EXPECT_EQ(strategy_of(2), std::nullopt);
  EXPECT_EQ(strategy_of(0), OzEdgeSorter::OzSortClosestFirst) << "unknown to a behaviour that is locked";
  EXPECT_EQ(strategy_of(-1), OzEdgeSorter::OzSortClosestFirst);
  EXPECT_EQ(strategy_of(3), std::nullopt) << "of a version to come";
}

TEST(Flavours, AKeptFlavourAppliesWhileItIsKept)
{
  FixedBehaviour behaviour(5);
  CurrentBehaviour const current(&behaviour);
  {
    KeptFlavour const kept(1);
    EXPECT_EQ(flavour_to_apply(), 1);
  }
  EXPECT_EQ(OzOperationBehaviour::get_instance(), &behaviour);
  EXPECT_EQ(flavour_to_apply(), 5);
}

TEST(Flavours, AKeptFlavourRefusesASecondRecord)
{
  CurrentBehaviour const current(nullptr);
  KeptFlavour const kept(1);
  static int reports;
  reports = 0;
  dkb_assertion_handler = [](char const*, int) { ++reports; };

  OzOperationBehaviour::get_instance()->set_best_flavour(&PACKAGE, JOIN_EDGES, 2);
  OzOperationBehaviour::get_instance()->set_best_flavour(&PACKAGE, JOIN_EDGES + 1, 2);

  dkb_assertion_handler = nullptr;
  EXPECT_TRUE(OzOperationBehaviour::get_instance()->is_locked());
  EXPECT_EQ(flavour_to_apply(), 1);
  EXPECT_EQ(OzOperationBehaviour::get_instance()->get_actual_flavour(&PACKAGE, JOIN_EDGES + 1), 0);
  EXPECT_EQ(reports, 0);
}

TEST(Flavours, TheBehaviourOfTheProcessDecides)
{
  FixedBehaviour behaviour(1);
  CurrentBehaviour const current(&behaviour);

  EXPECT_EQ(edges_of_contours(run_on(run_and_fork(600), {})), CLOSEST);

  EXPECT_EQ(behaviour.asked, std::vector<std::string>{"oz-contours 1 2"}) << "once for a run";
}

TEST(Flavours, ALockedBehaviourThatDoesNotKnowTheProgramGetsTheOldest)
{
  OzOperationDefaultBehaviour behaviour;
  behaviour.lock();
  CurrentBehaviour const current(&behaviour);

  EXPECT_EQ(edges_of_contours(run_on(run_and_fork(600), {})), CLOSEST);
}

TEST(Flavours, DifferInLargeClusters)
{
  EXPECT_EQ(edges_of_contours(run_on(run_and_fork(600), {"--flavour", "1"})), CLOSEST);
  EXPECT_EQ(edges_of_contours(run_on(run_and_fork(600), {"--flavour", "2"})), GROWN);
  EXPECT_EQ(edges_of_contours(run_on(run_and_fork(600), {})), GROWN);

  EXPECT_EQ(edges_of_contours(run_on(run_and_fork(2100), {"--flavour", "1"})),
            "1,CUT,open,2100\n2,CUT,open,2\n");
  EXPECT_EQ(edges_of_contours(run_on(run_and_fork(2100), {"--flavour", "2"})),
            "1,CUT,open,2101\n2,CUT,open,1\n");
}

TEST(Flavours, AgreeInSmallClusters)
{
  std::string const largest = run_and_fork(498);
  std::string const one_more = run_and_fork(499);

  EXPECT_EQ(run_on(largest, {"--flavour", "1"}).out, run_on(largest, {"--flavour", "2"}).out);
  EXPECT_NE(run_on(one_more, {"--flavour", "1"}).out, run_on(one_more, {"--flavour", "2"}).out);
}

TEST(Flavours, AStrategyOfTheUserWins)
{
  std::string const drawing = run_and_fork(600);

  EXPECT_EQ(edges_of_contours(run_on(drawing, {"--flavour", "1", "--strategy", "grow"})), GROWN);
  EXPECT_EQ(edges_of_contours(run_on(drawing, {"--strategy", "closest", "--flavour", "2"})), CLOSEST);
}

TEST(Flavours, GiveTheSameBytesOnAnyNumberOfThreads)
{
  // Several clusters, so that there is work for all.
  std::string drawing = run_and_fork(600);
  for (int i = 0; i < 40; ++i)
    drawing += line_entity("B", 10 * i, 0, 10 * i + 4, 0) + line_entity("B", 10 * i + 4, 0, 10 * i + 4, 3);
  for (char const* const flavour : {"1", "2"})
  {
    ProgramRun const one = run_on(drawing, {"--flavour", flavour, "--threads", "1"});
    for (char const* const threads : {"2", "4", "0"})
    {
      ProgramRun const several = run_on(drawing, {"--flavour", flavour, "--threads", threads});
      EXPECT_EQ(several.out, one.out) << flavour << ", " << threads;
      EXPECT_EQ(several.err, one.err) << flavour << ", " << threads;
      EXPECT_EQ(several.code, 1) << flavour << ", " << threads;
    }
  }
}

TEST(Flavours, OneRunLeavesNothingForTheNext)
{
  CurrentBehaviour const current(nullptr);
  std::string const drawing = run_and_fork(600);

  for (int round = 0; round < 2; ++round)
  {
    EXPECT_EQ(edges_of_contours(run_on(drawing, {})), GROWN);
    EXPECT_EQ(edges_of_contours(run_on(drawing, {"--flavour", "1"})), CLOSEST);
  }
  EXPECT_FALSE(OzOperationBehaviour::get_instance()->is_locked());
}

TEST(Flavours, UnknownOnesAreWrongUsage)
{
  for (char const* const flavour : {"0", "3", "-1", "1.5", "two", "", " 1", "65537", "99999999999999999999"})
  {
    ProgramRun const run = run_program({"--flavour", flavour, "-"}, dxf_drawing(run_and_fork(1)));
    EXPECT_EQ(run.code, 2) << flavour;
    EXPECT_EQ(run.out, "") << flavour;
    EXPECT_EQ(run.err, "--flavour: '" + std::string(flavour) +
                           "' is none of 1, 2\nRun with --help for more information.\n");
  }
  EXPECT_EQ(run_on(run_and_fork(1), {"--flavour", "3", "--strategy", "grow"}).code, 2)
      << "also where it would not be used";
  EXPECT_EQ(run_on(run_and_fork(1), {"--flavour", "1", "--flavour", "2"}).code, 2) << "one, not two";
}

TEST(Flavours, AreInTheHelp)
{
  EXPECT_NE(run_program({"--help"}).out.find("--flavour N"), std::string::npos);
}
