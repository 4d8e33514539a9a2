#include "ozstring.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

// Names, messages and each piece of a dump are strings, most of them short. What does a string cost that
// has a buffer of its own however short it is, against std::string, which keeps 15 characters inline?

namespace
{
constexpr std::uint64_t N_TEXTS = 64; // so that no branch learns one length by heart

/// Texts of `length` characters, or up to a quarter more.
std::vector<std::string> make_texts(std::int64_t length)
{
  std::mt19937 random(5);
  std::vector<std::string> texts;
  for (std::uint64_t i = 0; i < N_TEXTS; ++i)
  {
    std::string text;
    std::uint64_t const n = static_cast<std::uint64_t>(length + random() % (length / 4 + 1));
    for (std::uint64_t k = 0; k < n; ++k)
      text.push_back(static_cast<char>('a' + random() % 20));
    texts.push_back(text);
  }
  return texts;
}

template <class String>
std::vector<String> make_strings(std::int64_t length)
{
  std::vector<String> strings;
  for (std::string const& text : make_texts(length))
    strings.push_back(String(text.c_str()));
  return strings;
}

template <class String>
void Build(benchmark::State& state)
{
  std::vector<std::string> const texts = make_texts(state.range(0));
  std::uint64_t next = 0;
  for (auto _ : state)
  {
    String const built(texts[next++ % N_TEXTS].c_str());
    benchmark::DoNotOptimize(&built);
    benchmark::ClobberMemory();
  }
}

template <class String>
void Copy(benchmark::State& state)
{
  std::vector<String> const strings = make_strings<String>(state.range(0));
  std::uint64_t next = 0;
  for (auto _ : state)
  {
    String const copy(strings[next++ % N_TEXTS]);
    benchmark::DoNotOptimize(&copy);
    benchmark::ClobberMemory();
  }
}

template <class String>
void Assign(benchmark::State& state)
{
  std::vector<String> const strings = make_strings<String>(state.range(0));
  String target;
  std::uint64_t next = 0;
  for (auto _ : state)
  {
    target = strings[next++ % N_TEXTS];
    benchmark::DoNotOptimize(&target);
    benchmark::ClobberMemory();
  }
}

template <class String>
void AssignText(benchmark::State& state)
{
  std::vector<std::string> const texts = make_texts(state.range(0));
  String target;
  std::uint64_t next = 0;
  for (auto _ : state)
  {
    target = texts[next++ % N_TEXTS].c_str();
    benchmark::DoNotOptimize(&target);
    benchmark::ClobberMemory();
  }
}

// A text that is put together from ten pieces.
template <class String>
void Append(benchmark::State& state)
{
  std::vector<String> const strings = make_strings<String>(state.range(0));
  std::uint64_t next = 0;
  for (auto _ : state)
  {
    String text;
    for (int piece = 0; piece < 10; ++piece)
      text.append(strings[next++ % N_TEXTS]);
    benchmark::DoNotOptimize(&text);
    benchmark::ClobberMemory();
  }
}

// Equal texts: the whole of both is read.
template <class String>
void CompareEqual(benchmark::State& state)
{
  std::vector<String> const strings = make_strings<String>(state.range(0));
  std::vector<String> const others = make_strings<String>(state.range(0));
  std::uint64_t next = 0;
  for (auto _ : state)
  {
    std::uint64_t const i = next++ % N_TEXTS;
    benchmark::DoNotOptimize(strings[i] == others[i]);
  }
}

template <class String>
void CompareOrder(benchmark::State& state)
{
  std::vector<String> const strings = make_strings<String>(state.range(0));
  std::uint64_t next = 0;
  for (auto _ : state)
  {
    std::uint64_t const i = next++ % (N_TEXTS - 1);
    benchmark::DoNotOptimize(strings[i] < strings[i + 1]);
  }
}

// The last five characters of each text; or that with one character that no text has.
template <class String>
void find_ends(benchmark::State& state, char const* behind)
{
  std::vector<String> const strings = make_strings<String>(state.range(0));
  std::vector<std::string> patterns;
  for (std::string const& text : make_texts(state.range(0)))
    patterns.push_back(text.substr(text.size() - 5) + behind);
  std::uint64_t next = 0;
  for (auto _ : state)
  {
    std::uint64_t const i = next++ % N_TEXTS;
    benchmark::DoNotOptimize(strings[i].find(patterns[i].c_str(), 0));
  }
}

template <class String>
void FindHit(benchmark::State& state)
{
  find_ends<String>(state, "");
}

template <class String>
void FindMiss(benchmark::State& state)
{
  find_ends<String>(state, "z");
}

#define OZ_STRING_BENCHMARK(question)                                                                        \
  BENCHMARK(question<OzString>)->Arg(8)->Arg(16)->Arg(64)->Arg(200)->Arg(4000);                              \
  BENCHMARK(question<std::string>)->Arg(8)->Arg(16)->Arg(64)->Arg(200)->Arg(4000)

OZ_STRING_BENCHMARK(Build);
OZ_STRING_BENCHMARK(Copy);
OZ_STRING_BENCHMARK(Assign);
OZ_STRING_BENCHMARK(AssignText);
OZ_STRING_BENCHMARK(Append);
OZ_STRING_BENCHMARK(CompareEqual);
OZ_STRING_BENCHMARK(CompareOrder);
OZ_STRING_BENCHMARK(FindHit);
OZ_STRING_BENCHMARK(FindMiss);
} // namespace
