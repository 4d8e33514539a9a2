// Work is handed to threads in pieces. The question is what a piece costs to hand over, beside the ways in
// which a C++ program would do it otherwise: the task groups of oneTBB, std::async, and a pool of threads
// around a queue with a mutex and a condition variable. Each hands over the same pieces on as many threads.
//
// The threads of a job start with the job's first tasks and end with its last; those of the pool and of oneTBB
// are there before and after. std::async starts a thread for each piece.

#include "oztaskserver.h"
#include "oztsprocessor.h"

#include <benchmark/benchmark.h>

#ifdef OZ_BENCHMARK_TBB
#include <tbb/global_control.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>
#endif

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace
{
typedef std::chrono::steady_clock Clock;

/// A chain of dependent steps that takes about 10 microseconds.
void work_a_while(int seed)
{
  std::uint32_t value = static_cast<std::uint32_t>(seed);
  for (int i = 0; i < 9000; ++i)
    value = value * 1664525u + 1013904223u;
  benchmark::DoNotOptimize(value);
}

/// What all pieces of a run do: a function of their number, and perhaps something under one lock.
struct Piece
{
  void (*work)(int) = nullptr;
  bool enters = false;        // puts its number into a map that all share
  bool keeps_request = false; // in a job: the request by which it does so is a part of the task
};

/// Pieces as tasks of a job; the map is behind a service.
class OzPeer
{
public:
  explicit OzPeer(int threads)
    : job(static_cast<OzTSJob*>(OzTSProcessor::CreateJob(static_cast<std::size_t>(threads), false, nullptr)))
  {
  }

  void run(int count, Piece const& piece)
  {
    entered.clear();
    std::unique_ptr<OzTaskService> server;
    if (piece.enters)
    {
      OzTaskService* service = new Service(entered, !piece.keeps_request);
      server.reset(job->SetService(service, 64));
    }
    for (int i = 0; i < count; ++i)
    {
      OzTask* task = nullptr;
      if (piece.keeps_request)
        task = new KeepingTask(piece, i);
      else
        task = new Task(piece, i);
      job->AddTask(task);
    }
    job->Wait();
  }

  Clock::time_point first_instruction()
  {
    Clock::time_point began;
    OzTask* task = new Noting(began);
    job->AddTask(task);
    job->Wait();
    return began;
  }

private:
  class Request : public OzTaskServiceRequest
  {
  public:
    explicit Request(int request_number)
      : number(request_number)
    {
    }
    int const number;
  };

  class Service : public OzTaskService
  {
  public:
    Service(std::map<int, int>& map, bool owns_its_requests)
      : entered(map)
      , owns_requests(owns_its_requests)
    {
    }
    bool Process(OzTaskServiceRequest*& request) override
    {
      int const number = static_cast<Request*>(request)->number;
      entered[number] = number;
      if (owns_requests)
        delete request;
      request = nullptr;
      return true;
    }

  private:
    std::map<int, int>& entered;
    bool const owns_requests;
  };

  class Task : public OzTask
  {
  public:
    Task(Piece const& its_piece, int its_number)
      : piece(its_piece)
      , number(its_number)
    {
    }
    bool Execute(OzTaskService* service) override
    {
      if (piece.work != nullptr)
        piece.work(number);
      if (service == nullptr)
        return true;
      OzTaskServiceRequest* request = new Request(number);
      return service->Process(request);
    }
    bool Execute() override { return Execute(nullptr); }

  private:
    Piece const& piece;
    int const number;
  };

  /// A task lives until the job was waited for, so its request may be a part of it.
  class KeepingTask : public OzTask
  {
  public:
    KeepingTask(Piece const& its_piece, int its_number)
      : piece(its_piece)
      , request(its_number)
    {
    }
    bool Execute(OzTaskService* service) override
    {
      if (piece.work != nullptr)
        piece.work(request.number);
      OzTaskServiceRequest* sent = &request;
      return service->Process(sent);
    }
    bool Execute() override { return false; }

  private:
    Piece const& piece;
    Request request;
  };

  class Noting : public OzTask
  {
  public:
    explicit Noting(Clock::time_point& begin)
      : began(begin)
    {
    }
    using OzTask::Execute;
    bool Execute() override
    {
      began = Clock::now();
      return true;
    }

  private:
    Clock::time_point& began;
  };

  std::unique_ptr<OzTSJob> job;
  std::map<int, int> entered;
};

/// A map behind a mutex, as the peers have it.
class GuardedMap
{
public:
  void clear() { entered.clear(); }
  void run(Piece const& piece, int number)
  {
    if (piece.work != nullptr)
      piece.work(number);
    if (!piece.enters)
      return;
    std::lock_guard<std::mutex> const hold(mutex);
    entered[number] = number;
  }

private:
  std::mutex mutex;
  std::map<int, int> entered;
};

class PoolPeer
{
public:
  explicit PoolPeer(int count)
  {
    for (int i = 0; i < count; ++i)
      threads.emplace_back([this] { serve(); });
  }
  ~PoolPeer()
  {
    {
      std::lock_guard<std::mutex> const hold(mutex);
      over = true;
    }
    changed.notify_all();
    for (std::thread& thread : threads)
      thread.join();
  }

  void run(int count, Piece const& piece)
  {
    map.clear();
    for (int i = 0; i < count; ++i)
      add(std::make_unique<Task>(piece, map, i));
    wait();
  }

  Clock::time_point first_instruction()
  {
    Clock::time_point began;
    add(std::make_unique<Noting>(began));
    wait();
    return began;
  }

private:
  struct Work
  {
    virtual ~Work() = default;
    virtual void execute() = 0;
  };
  struct Task : Work
  {
    Task(Piece const& its_piece, GuardedMap& its_map, int its_number)
      : piece(its_piece)
      , shared(its_map)
      , number(its_number)
    {
    }
    void execute() override { shared.run(piece, number); }
    Piece const& piece;
    GuardedMap& shared;
    int const number;
  };
  struct Noting : Work
  {
    explicit Noting(Clock::time_point& begin)
      : began(begin)
    {
    }
    void execute() override { began = Clock::now(); }
    Clock::time_point& began;
  };

  void add(std::unique_ptr<Work> work)
  {
    {
      std::lock_guard<std::mutex> const hold(mutex);
      queue.push_back(std::move(work));
      ++open;
    }
    changed.notify_one();
  }

  void wait()
  {
    std::unique_lock<std::mutex> hold(mutex);
    done.wait(hold, [this] { return open == 0; });
  }

  void serve()
  {
    std::unique_lock<std::mutex> hold(mutex);
    for (;;)
    {
      changed.wait(hold, [this] { return over || !queue.empty(); });
      if (queue.empty())
        return;
      std::unique_ptr<Work> work = std::move(queue.front());
      queue.pop_front();
      hold.unlock();
      work->execute();
      work.reset();
      hold.lock();
      if (--open == 0)
        done.notify_all();
    }
  }

  std::mutex mutex;
  std::condition_variable changed;
  std::condition_variable done;
  std::deque<std::unique_ptr<Work>> queue;
  std::size_t open = 0;
  bool over = false;
  std::vector<std::thread> threads;
  GuardedMap map;
};

/// As many pieces under way as there are threads.
class AsyncPeer
{
public:
  explicit AsyncPeer(int threads)
    : under_way(static_cast<std::size_t>(threads))
  {
  }

  void run(int count, Piece const& piece)
  {
    map.clear();
    for (int i = 0; i < count; ++i)
    {
      std::future<void>& place = under_way[static_cast<std::size_t>(i) % under_way.size()];
      if (place.valid())
        place.get();
      place = std::async(std::launch::async, [this, &piece, i] { map.run(piece, i); });
    }
    for (std::future<void>& place : under_way)
    {
      if (place.valid())
        place.get();
    }
  }

  Clock::time_point first_instruction()
  {
    return std::async(std::launch::async, [] { return Clock::now(); }).get();
  }

private:
  std::vector<std::future<void>> under_way;
  GuardedMap map;
};

#ifdef OZ_BENCHMARK_TBB
/// The thread that adds pieces runs none until it waits, and then it is one of the threads.
class TbbPeer
{
public:
  explicit TbbPeer(int threads)
    : most(tbb::global_control::max_allowed_parallelism, static_cast<std::size_t>(threads) + 1)
    , arena(threads + 1, 1)
  {
  }

  void run(int count, Piece const& piece)
  {
    map.clear();
    arena.execute(
        [&]
        {
          tbb::task_group group;
          for (int i = 0; i < count; ++i)
            group.run([this, &piece, i] { map.run(piece, i); });
          group.wait();
        });
  }

  Clock::time_point first_instruction()
  {
    std::promise<Clock::time_point> began;
    arena.enqueue([&] { began.set_value(Clock::now()); });
    return began.get_future().get();
  }

private:
  tbb::global_control most;
  tbb::task_arena arena;
  GuardedMap map;
};
#endif

template <class Peer>
void run_pieces(benchmark::State& state, Piece const& piece)
{
  int const threads = static_cast<int>(state.range(0));
  int const count = static_cast<int>(state.range(1));
  Peer peer(threads);
  for (auto _ : state)
    peer.run(count, piece);
  state.SetItemsProcessed(state.iterations() * count);
}

template <class Peer>
void EmptyTasks(benchmark::State& state)
{
  run_pieces<Peer>(state, Piece());
}

template <class Peer>
void ShortTasks(benchmark::State& state)
{
  run_pieces<Peer>(state, Piece{&work_a_while, false, false});
}

template <class Peer>
void OneRequestEach(benchmark::State& state)
{
  run_pieces<Peer>(state, Piece{nullptr, true, false});
}

template <class Peer>
void OneKeptRequestEach(benchmark::State& state)
{
  run_pieces<Peer>(state, Piece{nullptr, true, true});
}

/// From the hand-over of a piece, when nothing is under way, to its first instruction.
template <class Peer>
void FirstInstruction(benchmark::State& state)
{
  Peer peer(2);
  for (auto _ : state)
  {
    Clock::time_point const added = Clock::now();
    state.SetIterationTime(std::chrono::duration<double>(peer.first_instruction() - added).count());
  }
}

#define OZ_BENCHMARK_PEER(Peer, empty_tasks)                                                                 \
  BENCHMARK(EmptyTasks<Peer>)                                                                                \
      ->Args({1, empty_tasks})                                                                               \
      ->Args({2, empty_tasks})                                                                               \
      ->MeasureProcessCPUTime()                                                                              \
      ->UseRealTime()                                                                                        \
      ->Unit(benchmark::kMillisecond);                                                                       \
  BENCHMARK(ShortTasks<Peer>)                                                                                \
      ->Args({1, 20000})                                                                                     \
      ->Args({2, 20000})                                                                                     \
      ->MeasureProcessCPUTime()                                                                              \
      ->UseRealTime()                                                                                        \
      ->Unit(benchmark::kMillisecond);                                                                       \
  BENCHMARK(OneRequestEach<Peer>)                                                                            \
      ->Args({1, 20000})                                                                                     \
      ->Args({2, 20000})                                                                                     \
      ->MeasureProcessCPUTime()                                                                              \
      ->UseRealTime()                                                                                        \
      ->Unit(benchmark::kMillisecond);                                                                       \
  BENCHMARK(FirstInstruction<Peer>)->UseManualTime()->Unit(benchmark::kMicrosecond)

OZ_BENCHMARK_PEER(OzPeer, 200000);
BENCHMARK(OneKeptRequestEach<OzPeer>)
    ->Args({1, 20000})
    ->Args({2, 20000})
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
OZ_BENCHMARK_PEER(PoolPeer, 200000);
OZ_BENCHMARK_PEER(AsyncPeer, 20000); // ten times as many would take ten times as long, each a thread's start
#ifdef OZ_BENCHMARK_TBB
OZ_BENCHMARK_PEER(TbbPeer, 200000);
#endif
} // namespace
