#include "oz_times.h"

#include "ozarray.h"
#include "ozstring.h"
#include "oztaskprocessor.h"

#include <cstdint>
#include <cstdio>
#include <ctime>

namespace
{
// Ticks and counts are 64-bit or int; the report prints both as int.
int printable(long ticks)
{
  return static_cast<int>(ticks);
}

template <class T>
using PerThread = OzTaskProcessorDkbLocal<T>;

template <class T>
PerThread<T>& never_destroyed()
{
  // A thread that still runs while the process ends frees its tables through this.
  return *new PerThread<T>;
}

PerThread<OzArray<int>>& start_calls = never_destroyed<OzArray<int>>();
PerThread<OzArray<OzString>>& start_names = never_destroyed<OzArray<OzString>>();
PerThread<OzArray<OzString>>& start_files = never_destroyed<OzArray<OzString>>();
PerThread<OzArray<int>>& start_lines = never_destroyed<OzArray<int>>();
// For each start site, side by side: the end sites that it met and the ticks between the two.
PerThread<OzArray<OzArray<long>>>& start_clocks = never_destroyed<OzArray<OzArray<long>>>();
PerThread<OzArray<OzArray<int>>>& start_end_sites = never_destroyed<OzArray<OzArray<int>>>();
// Stacks of what is open.
PerThread<OzArray<long>>& start_times = never_destroyed<OzArray<long>>();
PerThread<OzArray<int>>& start_stack = never_destroyed<OzArray<int>>();
PerThread<OzArray<int>>& end_calls = never_destroyed<OzArray<int>>();
PerThread<OzArray<OzString>>& end_files = never_destroyed<OzArray<OzString>>();
PerThread<OzArray<int>>& end_lines = never_destroyed<OzArray<int>>();

/// The calling thread's tables of start sites.
struct StartTables
{
  OzArray<int>* const calls = start_calls.Value();
  OzArray<OzString>* const names = start_names.Value();
  OzArray<OzString>* const files = start_files.Value();
  OzArray<int>* const lines = start_lines.Value();
  OzArray<OzArray<long>>* const clocks = start_clocks.Value();
  OzArray<OzArray<int>>* const end_sites = start_end_sites.Value();
  OzArray<long>* const times = start_times.Value();
  OzArray<int>* const stack = start_stack.Value();

  bool complete() const
  {
    return calls != nullptr && names != nullptr && files != nullptr && lines != nullptr &&
           clocks != nullptr && end_sites != nullptr && times != nullptr && stack != nullptr;
  }

  int new_site(char const* name, char const* file, int line)
  {
    int const site = static_cast<int>(calls->size());
    calls->append(0);
    names->append(OzString(name));
    files->append(OzString(file));
    lines->append(line);
    clocks->resize(calls->size(), true);
    end_sites->resize(calls->size(), true);
    return site;
  }
};

/// The calling thread's tables of end sites.
struct EndTables
{
  OzArray<int>* const calls = end_calls.Value();
  OzArray<OzString>* const files = end_files.Value();
  OzArray<int>* const lines = end_lines.Value();

  bool complete() const { return calls != nullptr && files != nullptr && lines != nullptr; }

  int new_site(char const* file, int line)
  {
    int const site = static_cast<int>(calls->size());
    calls->append(0);
    files->append(OzString(file));
    lines->append(line);
    return site;
  }
};

std::uint64_t position(int site)
{
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(site));
}

/// Closes the pair that was opened last.
void add_ticks(StartTables& starts, int end_site, long now)
{
  std::uint64_t const start_site = position(starts.stack->last());
  long const ticks = now - starts.times->last();
  starts.stack->remove_last();
  starts.times->remove_last();

  OzArray<int>& met = (*starts.end_sites)[start_site];
  OzArray<long>& clocks = (*starts.clocks)[start_site];
  std::uint64_t place = met.size();
  while (place > 0 && met[place - 1] != end_site)
    --place;
  if (place == 0)
  {
    met.append(end_site);
    clocks.resize(met.size(), true);
    place = met.size();
  }
  clocks[place - 1] += ticks;
}

void print_start_site(StartTables const& starts, EndTables const& ends, std::uint64_t site)
{
  OzArray<long> const& clocks = (*starts.clocks)[site];
  OzArray<int> const& met = (*starts.end_sites)[site];
  long sum = 0;
  for (long const ticks : clocks)
    sum += ticks;

  std::fprintf(stderr, "oz_times: %s\n", (*starts.names)[site].as_const_c_string());
  std::fprintf(stderr, "          start %.5i %.6i (%s : %i)\n", (*starts.calls)[site], printable(sum),
               (*starts.files)[site].as_const_c_string(), (*starts.lines)[site]);
  for (std::uint64_t i = 0; i < met.size(); ++i)
  {
    std::uint64_t const end_site = position(met[i]);
    std::fprintf(stderr, "          end   %.5i %.6i (%s : %i)\n", (*ends.calls)[end_site],
                 printable(clocks[i]), (*ends.files)[end_site].as_const_c_string(), (*ends.lines)[end_site]);
  }
}

void report(StartTables& starts, EndTables& ends)
{
  std::fprintf(stderr, "oz_times: start_clocks->size() = %i\n", static_cast<int>(starts.clocks->size()));
  std::fprintf(stderr, "oz_times:       calls clocks (file : line)\n");
  for (std::uint64_t site = 0; site < starts.calls->size(); ++site)
  {
    if ((*starts.calls)[site] > 0)
      print_start_site(starts, ends, site);
    (*starts.calls)[site] = 0;
    (*starts.end_sites)[site].resize(0, true);
    (*starts.clocks)[site].resize(0, true);
  }
  std::fprintf(stderr, "\n");
  for (int& calls : *ends.calls)
    calls = 0;
}
} // namespace

void time_start(int& index, char* name, char* file, int line)
{
  StartTables starts;
  OZ_ASSERT(starts.complete());
  if (!starts.complete())
    return;

  if (index < 0)
    index = starts.new_site(name, file, line);

  bool const known = position(index) < starts.calls->size();
  OZ_ASSERT(known);
  if (!known)
  {
    std::fprintf(stderr, "oz_times: wrong index %i at %s in (%s : %i)\n", index, name, file, line);
    return;
  }
  starts.stack->append(index);
  starts.times->append(static_cast<long>(std::clock()));
  ++(*starts.calls)[position(index)];
}

void time_end(int& index, char* file, int line)
{
  StartTables starts;
  EndTables ends;
  OZ_ASSERT(starts.complete() && ends.complete());
  if (!starts.complete() || !ends.complete())
    return;

  long const now = static_cast<long>(std::clock());
  if (index < 0)
    index = ends.new_site(file, line);
  ++(*ends.calls)[position(index)];

  bool const open = starts.stack->size() > 0;
  OZ_ASSERT(open);
  if (open)
    add_ticks(starts, index, now);
  else
    std::fprintf(stderr, "oz_times: start_stack->empty() in (%s : %i)\n", file, line);

  // An end without a start reports too.
  if (starts.stack->size() == 0)
    report(starts, ends);
}
