#include "cluster_job.h"
#include "drawing_text.h"
#include "failed_checks.h"
#include "interrupt.h"
#include "program_process.h"
#include "program_runner.h"

#include <ozassert.h>
#include <oztsprocessor.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <mutex>
#include <new>
#include <random>
#include <thread>

using namespace contours;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::KilledBySignal;
using testing::Not;
using testing::StartsWith;

namespace
{

constexpr std::size_t NUMBERS_OF_THREADS[] = {0, 1, 2, 3, 8, 64};

std::string const BAR_AT_START = "\r[                              ]   0 %";
std::string const BAR_AT_END = "\r[##############################] 100 %";
std::string const BAR_ERASED = "\r" + std::string(40, ' ') + "\r";

/// Work that leaves behind what was taken over. A cluster is known by the number of its only contour's edges.
class Recorded
{
public:
  explicit Recorded(std::size_t clusters)
  {
    work.clusters = clusters;
    work.sort = [](std::size_t cluster) { return sorted(cluster); };
    work.take = [this](std::vector<Contour>&& contours)
    {
      EXPECT_FALSE(taking.exchange(true)) << "one at a time";
      taken.push_back(contours.at(0).links.size());
      taking = false;
    };
  }

  static std::vector<Contour> sorted(std::size_t cluster)
  {
    std::vector<Contour> contours(1);
    contours[0].links.resize(cluster, {0, false});
    return contours;
  }

  ClusterWork work;
  std::vector<std::size_t> taken;

private:
  std::atomic<bool> taking{false};
};

/// Chains of one edge each that follow each other.
std::vector<Chain> run_of(std::size_t count)
{
  std::vector<Chain> run;
  for (std::size_t i = 0; i < count; ++i)
  {
    double const x = static_cast<double>(i);
    run.push_back({{x, 0.0}, {x + 1.0, 0.0}, false, {{i, false}}});
  }
  return run;
}

std::vector<std::size_t> first_numbers(std::size_t count)
{
  std::vector<std::size_t> numbers(count);
  for (std::size_t i = 0; i < count; ++i)
    numbers[i] = i;
  return numbers;
}

JobFigures run_job_of(Recorded& recorded, std::size_t threads, StopFlag& stop, bool with_bar = false)
{
  std::ostringstream out;
  ProgressBar bar(out, with_bar);
  return run_job(recorded.work, threads, stop, bar);
}

/// Says what the job was cancelled after.
std::string cancelled(Recorded& recorded, std::size_t threads, StopFlag& stop, bool with_bar = false)
{
  try
  {
    run_job_of(recorded, threads, stop, with_bar);
  }
  catch (Cancelled const& error)
  {
    return error.what();
  }
  return "not cancelled";
}

std::string content(std::filesystem::path const& file)
{
  std::ifstream in(file, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

/// Squares far from each other.
std::string squares(int number)
{
  std::string entities;
  for (int i = 0; i < number; ++i)
  {
    double const x = 20.0 * i;
    entities += line_entity("CUT", x, 0, x + 10, 0) + line_entity("CUT", x + 10, 0, x + 10, 10) +
                line_entity("CUT", x + 10, 10, x, 10) + line_entity("CUT", x, 10, x, 0);
  }
  return entities;
}

/// A drawing of so many clusters of six kinds, with entities and handles in random order.
std::string shuffled_drawing(unsigned seed, int clusters)
{
  std::mt19937 random(seed);
  std::vector<std::string> entities;
  auto const add_line = [&](int cluster, double x1, double y1, double x2, double y2)
  { entities.push_back(line_entity("L" + std::to_string(cluster % 3), x1, y1, x2, y2)); };
  for (int cluster = 0; cluster < clusters; ++cluster)
  {
    double const x = 30.0 * (cluster % 20);
    double const y = 30.0 * (cluster / 20);
    unsigned const more = static_cast<unsigned>(random() % 20);
    switch (random() % 5)
    {
    case 0: // a triangle, perhaps with a double
      add_line(cluster, x, y, x + 10, y);
      add_line(cluster, x + 10, y, x, y + 10);
      add_line(cluster, x, y + 10, x, y);
      if (more < 5)
        add_line(cluster, x + 10, y, x, y);
      break;
    case 1: // two triangles that meet: one cluster, two contours
      for (double const side : {5.0, -5.0})
      {
        add_line(cluster, x, y, x + side, y + 5);
        add_line(cluster, x + side, y + 5, x + side, y - 5);
        add_line(cluster, x + side, y - 5, x, y);
      }
      break;
    case 2: // a star: many open contours
      for (unsigned ray = 0; ray < 3 + more % 4; ++ray)
        add_line(cluster, x, y, x + 6 * std::cos(ray), y + 6 * std::sin(ray));
      break;
    case 3: // a run with gaps
      for (unsigned i = 0; i <= more; ++i)
        add_line(cluster, x + 0.5 * i, y, x + 0.5 * i + 0.495, y);
      break;
    default:
      entities.push_back("0 CIRCLE\n8 L0\n10 " + std::to_string(x) + "\n20 " + std::to_string(y) +
                         "\n40 5\n");
      break;
    }
  }
  std::shuffle(entities.begin(), entities.end(), random);
  std::string all;
  for (std::size_t i = 0; i < entities.size(); ++i)
  {
    std::size_t const after_type = entities[i].find('\n') + 1;
    std::string const handle = "5 " + std::to_string(10000 + (i * 7919) % 10007) + "\n";
    all += entities[i].substr(0, after_type) + handle + entities[i].substr(after_type);
  }
  return dxf_drawing(all);
}

std::string without_statistics(std::string text)
{
  std::size_t const begin = text.rfind('\n', text.find(": job statistics: ")) + 1;
  std::size_t const end = text.find('\n', begin) + 1;
  return text.erase(begin, end - begin);
}

/// Error output during which the user presses Ctrl-C: where a text is written that contains `text`.
class InterruptedBy : public std::stringbuf
{
public:
  explicit InterruptedBy(std::string text, int so_often = 1)
    : trigger(std::move(text))
    , times(so_often)
  {
  }

protected:
  std::streamsize xsputn(char const* text, std::streamsize size) override
  {
    std::streamsize const written = std::stringbuf::xsputn(text, size);
    if (std::string(text, static_cast<std::size_t>(size)).find(trigger) != std::string::npos)
      for (; times > 0; --times)
        std::raise(SIGINT);
    return written;
  }

private:
  std::string trigger;
  int times;
};

/// Input or output during which the user presses Ctrl-C.
class InterruptedAtOnce : public std::streambuf
{
protected:
  int_type underflow() override
  {
    std::raise(SIGINT);
    return traits_type::eof();
  }
  int_type overflow(int_type c) override
  {
    std::raise(SIGINT);
    return c;
  }
};

/// What has been drawn, for a thread that waits for it.
class WatchedBar : public std::stringbuf
{
public:
  /// Returns when the bar says more than 0 %.
  void wait_until_it_moved()
  {
    std::unique_lock<std::mutex> hold(mutex);
    drawn.wait(hold, [this] { return moved; });
  }

protected:
  std::streamsize xsputn(char const* text, std::streamsize size) override
  {
    std::lock_guard<std::mutex> const hold(mutex);
    std::string const picture(text, static_cast<std::size_t>(size));
    moved = moved || (picture.find('%') != picture.npos && picture.find("  0 %") == picture.npos);
    drawn.notify_all();
    return std::stringbuf::xsputn(text, size);
  }

private:
  std::mutex mutex;
  std::condition_variable drawn;
  bool moved = false; // guarded by mutex
};

/// Ctrl-C has its default effect when a test begins, whoever runs it, and afterwards the one that it had.
class CtrlC : public testing::Test
{
protected:
  void SetUp() override
  {
    former = std::signal(SIGINT, SIG_DFL);
    std::string name = (std::filesystem::temp_directory_path() / "oz-contours-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder = name;
    for (char const* const file : {"x.svg", "x.dot", "x.raw.dot"})
      std::ofstream(folder / file) << "old";
  }
  void TearDown() override
  {
    std::filesystem::remove_all(folder);
    EXPECT_EQ(std::signal(SIGINT, former), expected_afterwards);
  }

  /// The arguments of a run that writes all files.
  std::vector<std::string> all_files(std::vector<std::string> arguments) const
  {
    arguments.insert(arguments.end(), {"-o", (folder / "x.svg").string(), "-g", (folder / "x.dot").string(),
                                       "--history-raw", (folder / "x.raw.dot").string()});
    return arguments;
  }

  ProgramRun run_interrupted(InterruptedBy& err_buffer, int clusters, std::vector<std::string> arguments)
  {
    arguments = all_files(std::move(arguments));
    arguments.insert(arguments.begin(), "oz-contours");
    arguments.emplace_back("-");
    std::vector<char const*> argv;
    for (std::string const& argument : arguments)
      argv.push_back(argument.c_str());
    std::istringstream in(dxf_drawing(squares(clusters)));
    std::ostringstream out;
    std::ostream err(&err_buffer);
    int const code = contours::run(static_cast<int>(argv.size()), argv.data(), in, out, err);
    return {code, out.str(), err_buffer.str()};
  }

  void expect_nothing_written() const
  {
    for (char const* const file : {"x.svg", "x.dot", "x.raw.dot"})
      EXPECT_EQ(content(folder / file), "old") << file;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 3) << "nothing is left beside";
  }

  std::filesystem::path folder;
  void (*former)(int) = SIG_DFL;
  void (*expected_afterwards)(int) = SIG_DFL;
};

using Terminal = CtrlC;

} // namespace

TEST(ClusterJob, TakesTheClustersInTheirOrderOneAtATime)
{
  for (std::size_t const threads : NUMBERS_OF_THREADS)
    for (bool const with_bar : {false, true})
    {
      Recorded recorded(300);
      StopFlag stop;

      JobFigures const figures = run_job_of(recorded, threads, stop, with_bar);

      EXPECT_EQ(recorded.taken, first_numbers(300)) << threads;
      EXPECT_EQ(figures.name, threads == 1 ? "OzSequentialJob" : "OzTSJob");
      EXPECT_EQ(figures.tasks, 300u) << threads;
      EXPECT_LE(figures.peak, threads == 0 ? 64 : threads);
      EXPECT_FALSE(stop.requested());
    }
}

TEST(ClusterJob, KeepsWhatComesEarly)
{
  for (std::size_t const threads : {2u, 8u})
  {
    Recorded recorded(50);
    std::mutex mutex;
    std::condition_variable all_but_one;
    std::size_t ended = 0; // guarded by mutex
    recorded.work.sort = [&](std::size_t cluster)
    {
      std::unique_lock<std::mutex> hold(mutex);
      if (cluster == 0)
        all_but_one.wait(hold, [&] { return ended == 49; });
      ++ended;
      all_but_one.notify_one();
      return Recorded::sorted(cluster);
    };
    StopFlag stop;

    run_job_of(recorded, threads, stop);

    EXPECT_EQ(recorded.taken, first_numbers(50)) << threads;
  }
}

TEST(ClusterJob, DoesNothingWhereThereAreNoClusters)
{
  for (std::size_t const threads : {1u, 2u})
  {
    Recorded recorded(0);
    StopFlag stop;

    EXPECT_EQ(run_job_of(recorded, threads, stop, true).tasks, 0u);
    EXPECT_THAT(recorded.taken, ElementsAre());
  }
}

TEST(ClusterJob, RunsOnOneThreadWhereNoOtherJobIsToBeHad)
{
  std::vector<std::unique_ptr<OzJob>> others;
  for (int i = 0; i < 8; ++i)
    others.emplace_back(OzTSProcessor::CreateJob(1, false, nullptr));
  Recorded recorded(20);
  StopFlag stop;

  JobFigures const figures = run_job_of(recorded, 4, stop, true);

  EXPECT_EQ(figures.name, "OzSequentialJob");
  EXPECT_EQ(recorded.taken, first_numbers(20));
}

TEST(ClusterJob, BeginsNothingOnceItIsCancelled)
{
  for (std::size_t const threads : NUMBERS_OF_THREADS)
  {
    Recorded recorded(5);
    recorded.work.sort = [](std::size_t) -> std::vector<Contour>
    {
      ADD_FAILURE() << "sorted";
      return {};
    };
    StopFlag stop;
    stop.request();

    EXPECT_EQ(cancelled(recorded, threads, stop), "cancelled after 0 of 5 clusters; nothing was written");
    EXPECT_THAT(recorded.taken, ElementsAre());
  }
}

TEST(ClusterJob, ThrowsAwayTheClusterDuringWhichItIsCancelled)
{
  Recorded recorded(10);
  StopFlag stop;
  recorded.work.sort = [&](std::size_t cluster)
  {
    if (cluster == 3)
      stop.request();
    return Recorded::sorted(cluster);
  };

  EXPECT_EQ(cancelled(recorded, 1, stop), "cancelled after 3 of 10 clusters; nothing was written");
  EXPECT_THAT(recorded.taken, ElementsAre(0, 1, 2));

  Recorded single(1);
  StopFlag other;
  single.work.sort = [&](std::size_t cluster)
  {
    other.request();
    return Recorded::sorted(cluster);
  };
  EXPECT_EQ(cancelled(single, 1, other), "cancelled after 0 of 1 cluster; nothing was written");
}

TEST(ClusterJob, IsCancelledUntilItHasEnded)
{
  for (std::size_t const threads : {1u, 2u})
  {
    Recorded recorded(3);
    StopFlag stop;
    auto const record = recorded.work.take;
    recorded.work.take = [&](std::vector<Contour>&& contours)
    {
      record(std::move(contours));
      if (recorded.taken.size() == 3)
        stop.request();
    };

    EXPECT_EQ(cancelled(recorded, threads, stop), "cancelled after 3 of 3 clusters; nothing was written");
    EXPECT_THAT(recorded.taken, ElementsAre(0, 1, 2));
  }
}

TEST(ClusterJob, EndsSoonWhereItIsCancelledOnThreads)
{
  for (std::size_t const threads : {2u, 8u})
    for (bool const with_bar : {false, true})
    {
      Recorded recorded(1000);
      StopFlag stop;
      std::mutex mutex;
      std::condition_variable stopped;
      std::size_t begun = 0; // guarded by mutex
      recorded.work.sort = [&](std::size_t cluster)
      {
        std::unique_lock<std::mutex> hold(mutex);
        ++begun;
        if (cluster == 20)
        {
          stop.request();
          stopped.notify_all();
        }
        // Those behind it wait, so that it is certain how many are begun before.
        if (cluster > 20)
          stopped.wait(hold, [&] { return stop.requested(); });
        return Recorded::sorted(cluster);
      };

      std::string const text = cancelled(recorded, threads, stop, with_bar);

      unsigned sorted = 0;
      ASSERT_EQ(std::sscanf(text.c_str(), "cancelled after %u of 1000 clusters; nothing", &sorted), 1)
          << text;
      EXPECT_LE(sorted, 20u);
      EXPECT_LE(begun, 20u + threads);
      EXPECT_LE(recorded.taken.size(), sorted);
      EXPECT_EQ(recorded.taken, first_numbers(recorded.taken.size()));
    }
}

TEST(ClusterJob, HandsOutWhatSortingThrows)
{
  for (std::size_t const threads : {1u, 2u, 8u})
    for (bool const with_bar : {false, true})
    {
      Recorded recorded(100);
      recorded.work.sort = [](std::size_t cluster)
      {
        if (cluster == 7)
          throw std::bad_alloc();
        return Recorded::sorted(cluster);
      };
      StopFlag stop;

      EXPECT_THROW(run_job_of(recorded, threads, stop, with_bar), std::bad_alloc) << threads;
      EXPECT_LE(recorded.taken.size(), 7u);
      EXPECT_TRUE(stop.requested()) << "so that the others end";
    }
}

TEST(ClusterJob, HandsOutWhatTakingThrows)
{
  for (std::size_t const threads : {1u, 2u, 8u})
  {
    Recorded recorded(100);
    std::size_t taken = 0;
    recorded.work.take = [&](std::vector<Contour>&&)
    {
      if (++taken == 5)
        throw 5;
    };
    StopFlag stop;

    EXPECT_THROW(run_job_of(recorded, threads, stop), int) << threads;
    EXPECT_EQ(taken, 5u) << "none after it";
  }
}

TEST(ClusterJob, HandsOutTheFirstOfSeveralExceptions)
{
  Recorded recorded(2);
  StopFlag stop;
  recorded.work.sort = [&](std::size_t cluster) -> std::vector<Contour>
  {
    if (cluster == 0)
      throw std::bad_alloc();
    while (!stop.requested())
      std::this_thread::yield();
    throw std::runtime_error("the second one");
  };

  EXPECT_THROW(run_job_of(recorded, 2, stop), std::bad_alloc);
}

TEST(ClusterJob, MovesTheBarWhileItRunsAndTakesItOff)
{
  for (std::size_t const threads : {1u, 2u, 8u})
  {
    Recorded recorded(10);
    WatchedBar drawn;
    std::ostream out(&drawn);
    recorded.work.sort = [&](std::size_t cluster)
    {
      if (cluster == 9)
        drawn.wait_until_it_moved();
      return Recorded::sorted(cluster);
    };
    StopFlag stop;
    ProgressBar bar(out, true);

    run_job(recorded.work, threads, stop, bar);

    EXPECT_THAT(drawn.str(), StartsWith(BAR_AT_START)) << threads;
    EXPECT_THAT(drawn.str(), testing::EndsWith(BAR_AT_END + BAR_ERASED)) << threads;
  }
}

TEST(ClusterJobDeathTest, AFailedCheckEndsTheProgramOnAnyThreadAndTakesTheBarOff)
{
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  auto const run = [](std::size_t threads)
  {
    FailedChecksEndTheProgram const guard;
    Recorded recorded(4);
    recorded.work.sort = [](std::size_t cluster)
    {
      char file[] = "src/somewhere.cpp";
      Oz_assert(file, 12);
      return Recorded::sorted(cluster);
    };
    StopFlag stop;
    ProgressBar bar(std::cerr, true);
    run_job(recorded.work, threads, stop, bar);
  };

  for (std::size_t const threads : {1u, 2u})
    EXPECT_EXIT(run(threads), ExitedWithCode(70),
                "0 %\r *\roz-contours: src/somewhere.cpp:12: a check failed.")
        << threads;
}

TEST(ProgressBar, IsDrawnWhereItChangesAndLeavesNoTrace)
{
  std::ostringstream out;
  {
    ProgressBar bar(out, true);
    bar.show(0);
    bar.show(0);
    bar.show(50);
    bar.erase();
    bar.erase();
    bar.show(100);
  }

  EXPECT_EQ(out.str(),
            BAR_AT_START + "\r[###############               ]  50 %" + BAR_ERASED + BAR_AT_END + BAR_ERASED);
}

TEST(ProgressBar, DrawsNothingWhereItIsNotVisible)
{
  std::ostringstream out;
  {
    ProgressBar bar(out, false);
    bar.show(0);
    bar.show(100);
  }

  EXPECT_EQ(out.str(), "");
}

TEST(Sorting, JoinsNothingOnceItIsToStop)
{
  StopFlag stop;
  stop.request();
  for (std::size_t const count : {10u, 600u})
  {
    std::vector<Chain> const run = run_of(count);
    ASSERT_EQ(join_chains(run, 0.01, std::nullopt).size(), 1u);

    EXPECT_EQ(join_chains(run, 0.01, std::nullopt, stop).size(), count) << "the sorter finds no gaps";
    EXPECT_EQ(join_chains(run, 0.01, OzEdgeSorter::OzSortSequential, stop).size(), count);
  }
}

TEST(Sorting, OfAVeryLargeClusterEndsBetweenItsPieces)
{
  StopFlag stop;
  stop.request();

  EXPECT_THAT(join_chains(run_of(MOST_IN_ONE_SORTER + 1), 0.01, std::nullopt, stop), ElementsAre())
      << "no piece was sorted";
}

TEST(Sorting, EndsWhereAnotherThreadStopsIt)
{
  std::vector<Chain> const long_run = run_of(400);
  for (std::size_t const threads : {1u, 2u})
  {
    Recorded recorded(2);
    StopFlag stop;
    std::mutex mutex;
    std::condition_variable sorting;
    bool is_sorting = false; // guarded by mutex
    recorded.work.sort = [&](std::size_t cluster)
    {
      {
        std::lock_guard<std::mutex> const hold(mutex);
        is_sorting = true;
        sorting.notify_one();
      }
      // As long as a sort can last.
      while (join_chains(long_run, 0.01, std::nullopt, stop).size() == 1)
      {
      }
      return Recorded::sorted(cluster);
    };
    std::thread user(
        [&]
        {
          std::unique_lock<std::mutex> hold(mutex);
          sorting.wait(hold, [&] { return is_sorting; });
          stop.request();
        });

    EXPECT_EQ(cancelled(recorded, threads, stop), "cancelled after 0 of 2 clusters; nothing was written");
    user.join();
    EXPECT_THAT(recorded.taken, ElementsAre());
  }
}

TEST(Threads, TheirNumberDoesNotShowInResults)
{
  std::vector<std::string> drawings;
  for (auto const& entry : std::filesystem::directory_iterator("examples/data"))
    drawings.push_back(content(entry.path()));
  ASSERT_GE(drawings.size(), 7u);
  drawings.push_back(shuffled_drawing(1, 200));
  drawings.push_back(shuffled_drawing(2, 500));

  for (std::size_t drawing = 0; drawing < drawings.size(); ++drawing)
    for (char const* const format : {"table", "csv", "json"})
    {
      bool const is_large = drawings[drawing].size() > 20000;
      if (is_large && format != std::string("json"))
        continue; // which are other forms of the same
      auto const run_on = [&](std::size_t threads) {
        return run_program({"-j", std::to_string(threads), "-v", "-f", format, "-"}, drawings[drawing]);
      };
      ProgramRun const sequential = run_on(1);
      for (std::size_t const threads : NUMBERS_OF_THREADS)
      {
        ProgramRun const run = run_on(threads);
        EXPECT_EQ(run.code, sequential.code) << drawing << ' ' << threads;
        EXPECT_EQ(run.out, sequential.out) << drawing << ' ' << threads;
        EXPECT_EQ(without_statistics(run.err), without_statistics(sequential.err))
            << drawing << ' ' << threads;
      }
      EXPECT_EQ(run_program({"-v", "-f", format, "-"}, drawings[drawing]).out, sequential.out)
          << drawing << " by default";
    }
}

/// As processes of their own, in which identities begin at 1.
TEST(Threads, TheirNumberDoesNotShowInFiles)
{
  std::string name = (std::filesystem::temp_directory_path() / "oz-contours-XXXXXX").string();
  ASSERT_NE(mkdtemp(name.data()), nullptr);
  std::filesystem::path const folder = name;
  std::vector<std::string> drawings;
  for (auto const& entry : std::filesystem::directory_iterator("examples/data"))
    drawings.push_back(entry.path().string());
  drawings.push_back((folder / "shuffled.dxf").string());
  std::ofstream(drawings.back()) << shuffled_drawing(3, 300);
  OpenFile const nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));

  for (std::string const& drawing : drawings)
  {
    std::vector<std::string> first;
    for (std::size_t const threads : NUMBERS_OF_THREADS)
    {
      ProgramProcess({drawing, "-j", std::to_string(threads), "-o", (folder / "svg").string(), "-g",
                      (folder / "dot").string(), "--history-raw", (folder / "raw").string()},
                     (folder / "out").string(), nowhere.get());
      std::vector<std::string> written;
      for (char const* const file : {"svg", "dot", "raw", "out"})
        written.push_back(content(folder / file));
      if (first.empty())
        first = written;
      EXPECT_FALSE(written[1].empty());
      EXPECT_TRUE(written == first) << drawing << ' ' << threads;
    }
  }
  std::filesystem::remove_all(folder);
}

TEST(Statistics, AreToldToWhoAsks)
{
  std::string const drawing = dxf_drawing(squares(4));

  EXPECT_THAT(
      run_program({"-v", "-j", "1", "-"}, drawing).err,
      HasSubstr("\n<stdin>: job statistics: OzSequentialJob, 4 tasks, at most 1 at once, 0 runs of the "
                "server, "));
  EXPECT_THAT(run_program({"-v", "-j", "2", "-"}, drawing).err,
              HasSubstr("\n<stdin>: job statistics: OzTSJob, 4 tasks, at most "));
  EXPECT_THAT(run_program({"-v", "-"}, drawing).err, HasSubstr(" job statistics: OzTSJob, 4 tasks, "));
  EXPECT_EQ(run_program({"-"}, drawing).err, "");
}

TEST(ShownProgress, IsABarOnStandardErrorAlone)
{
  std::string const drawing = dxf_drawing(squares(4) + "0 SPLINE\n5 77\n8 CUT\n");
  ProgramRun const plain = run_program({"-"}, drawing);
  ASSERT_EQ(plain.err, "<stdin>:197: SPLINE 77 on layer CUT is skipped: this version cannot cut it\n");

  EXPECT_EQ(run_program({"-", "--progress", "never"}, drawing).err, plain.err);
  EXPECT_EQ(run_program({"-", "--progress", "auto"}, drawing).err, plain.err) << "a stream in memory";
  ProgramRun const sequential = run_program({"-", "--progress", "always", "-j", "1"}, drawing);
  EXPECT_EQ(sequential.err,
            BAR_AT_START + "\r[#######                       ]  24 %" +
                "\r[##############                ]  49 %" + "\r[######################        ]  74 %" +
                "\r[############################# ]  99 %" + BAR_AT_END + BAR_ERASED + plain.err);
  EXPECT_EQ(sequential.out, plain.out);
  for (char const* const threads : {"0", "2", "8"})
  {
    ProgramRun const run = run_program({"-", "--progress", "always", "-j", threads}, drawing);
    EXPECT_THAT(run.err, StartsWith(BAR_AT_START));
    EXPECT_THAT(run.err, testing::EndsWith(BAR_AT_END + BAR_ERASED + plain.err));
    EXPECT_EQ(run.out, plain.out);
  }
  EXPECT_EQ(run_program({"-", "--progress", "always", "-j", "1", "-q"}, drawing).err,
            sequential.err.substr(0, sequential.err.size() - plain.err.size()));
}

TEST_F(Terminal, ShowsTheBarByDefault)
{
  std::string const drawing = (folder / "drawing.dxf").string();
  std::ofstream(drawing) << dxf_drawing(squares(4));
  std::filesystem::remove(folder / "x.svg");
  auto const shown = [&](std::vector<std::string> arguments)
  {
    OpenFile const terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    EXPECT_EQ(::grantpt(terminal.get()) | ::unlockpt(terminal.get()), 0);
    OpenFile screen(::open(::ptsname(terminal.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    arguments.push_back(drawing);
    ProgramProcess process(std::move(arguments), (folder / "out").string(), screen.get());
    screen.close();
    std::string text = terminal.read_to_end();
    EXPECT_EQ(process.wait(), 0);
    EXPECT_THAT(content(folder / "out"), HasSubstr("4 contours: 4 closed"));
    EXPECT_THAT(content(folder / "out"), Not(HasSubstr("%")));
    return text;
  };

  for (char const* const threads : {"1", "2"})
  {
    std::string const text = shown({"-j", threads});
    EXPECT_THAT(text, StartsWith(BAR_AT_START));
    EXPECT_THAT(text, testing::EndsWith(BAR_AT_END + BAR_ERASED));
  }
  EXPECT_EQ(shown({"-q"}), "");
  EXPECT_EQ(shown({"--progress", "never"}), "");
}

TEST_F(CtrlC, BeforeTheFirstClusterCancels)
{
  for (char const* const threads : {"0", "1", "2", "8"})
  {
    InterruptedBy err("   0 %");
    ProgramRun const run = run_interrupted(err, 4, {"--progress", "always", "-j", threads});

    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              BAR_AT_START + BAR_ERASED + "<stdin>: cancelled after 0 of 4 clusters; nothing was written\n");
    expect_nothing_written();
  }
}

TEST_F(CtrlC, BetweenClustersCancels)
{
  InterruptedBy err("  49 %");
  ProgramRun const run = run_interrupted(err, 4, {"--progress", "always", "-j", "1", "-q"});

  EXPECT_EQ(run.code, 130);
  EXPECT_EQ(run.out, "");
  EXPECT_THAT(run.err, testing::EndsWith("  49 %" + BAR_ERASED +
                                         "<stdin>: cancelled after 2 of 4 clusters; nothing was written\n"));
  expect_nothing_written();
}

TEST_F(CtrlC, AfterTheLastClusterCancelsAsLongAsNothingIsWritten)
{
  for (char const* const threads : {"1", "2"})
    for (char const* const moment : {" 100 %", "layer CUT: 4 clusters"})
    {
      InterruptedBy err(moment);
      ProgramRun const run = run_interrupted(err, 4, {"--progress", "always", "-v", "-j", threads});

      EXPECT_EQ(run.code, 130) << moment;
      EXPECT_EQ(run.out, "") << moment;
      EXPECT_THAT(run.err,
                  testing::EndsWith("<stdin>: cancelled after 4 of 4 clusters; nothing was written\n"))
          << moment;
      expect_nothing_written();
    }
}

TEST_F(CtrlC, IsLeftAloneByARunWithoutIt)
{
  InterruptedBy err("never written");
  ProgramRun const run = run_interrupted(err, 4, {"-j", "2"});

  EXPECT_EQ(run.code, 0);
  EXPECT_THAT(content(folder / "x.svg"), StartsWith("<?xml"));
}

TEST_F(CtrlC, StaysIgnoredWhereItWasIgnored)
{
  std::signal(SIGINT, SIG_IGN);
  expected_afterwards = SIG_IGN;
  InterruptedBy err("   0 %");

  ProgramRun const run = run_interrupted(err, 4, {"--progress", "always"});

  EXPECT_EQ(run.code, 0);
  EXPECT_THAT(run.out, HasSubstr("4 contours: 4 closed"));
}

using CtrlCDeathTest = CtrlC;

TEST_F(CtrlCDeathTest, ForTheSecondTimeEndsAtOnce)
{
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  auto const run = [this](int times)
  {
    InterruptedBy err("   0 %", times);
    std::exit(run_interrupted(err, 4, {"--progress", "always"}).code);
  };

  EXPECT_EXIT(run(1), ExitedWithCode(130), "");
  EXPECT_EXIT(run(2), KilledBySignal(SIGINT), "");
  expect_nothing_written();
}

TEST_F(CtrlCDeathTest, EndsAProgramThatReadsOrPrintsAsItEndsAny)
{
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  InterruptedAtOnce interrupted;
  auto const run = [](std::streambuf* in_buffer, std::streambuf* out_buffer)
  {
    std::istream in(in_buffer);
    std::ostream out(out_buffer);
    std::ostringstream err;
    char const* const argv[] = {"oz-contours", "-"};
    std::exit(contours::run(2, argv, in, out, err));
  };
  std::stringbuf drawing(dxf_drawing(squares(1)));
  std::stringbuf out;

  EXPECT_EXIT(run(&interrupted, &out), KilledBySignal(SIGINT), "") << "who reads a pipe may wait for ever";
  EXPECT_EXIT(run(&drawing, &interrupted), KilledBySignal(SIGINT), "") << "who writes to one, too";
}

TEST_F(CtrlC, AtTheProcessCancelsWhatItIsAbout)
{
  std::string long_run;
  for (int i = 0; i < 3000; ++i)
    long_run += line_entity("CUT", i, 0, i + 1, 0);
  struct
  {
    char const* what;
    std::string entities;
    std::vector<std::string> arguments;
    char const* clusters;
  } const cases[] = {
      {"many clusters", squares(300), {}, " of 300 clusters; nothing was written\n"},
      {"a long sort", long_run, {"--strategy", "closest"}, " of 1 cluster; nothing was written\n"},
  };

  for (auto const& c : cases)
    for (char const* const threads : {"1", "2"})
    {
      std::string const drawing = (folder / "drawing.dxf").string();
      std::ofstream(drawing) << dxf_drawing(c.entities);
      NarrowPipe pipe;
      std::vector<std::string> arguments = all_files({drawing, "--progress", "always", "-j", threads});
      arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
      ProgramProcess process(arguments, (folder / "out").string(), pipe.writer());
      pipe.close_writer();

      pipe.wait_for_text();
      process.interrupt();
      std::string const text = pipe.read_to_end();

      EXPECT_EQ(process.wait(), 130) << c.what;
      EXPECT_THAT(text, StartsWith(BAR_AT_START)) << c.what;
      EXPECT_THAT(text, HasSubstr(BAR_ERASED + drawing + ": cancelled after ")) << c.what;
      EXPECT_THAT(text, testing::EndsWith(c.clusters)) << c.what;
      EXPECT_EQ(content(folder / "out"), "") << c.what;
      std::filesystem::remove(folder / "out");
      std::filesystem::remove(drawing);
      expect_nothing_written();
    }
}
