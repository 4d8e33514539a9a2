#include "oz_times.h"
#include "oztaskprocessor.h"

#include "report_recorder.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <new>
#include <string>
#include <thread>

// Sites keep their numbers as long as the tables of their thread last. So each test runs on a thread of its
// own that is bound to a processor, and finds empty tables.

namespace
{
std::clock_t clock_now = 0;
int tables_that_get_memory = -1; // below 0: all

class Processor : public OzTaskProcessor
{
public:
  using OzTaskProcessor::AddProcessor;
  using OzTaskProcessor::ReleaseProcessorLocals;
  using OzTaskProcessor::RemoveProcessor;
};

/// What `work` writes to the standard error stream on a thread with empty tables.
std::string error_text_of(std::function<void()> const& work)
{
  Processor processor;
  testing::internal::CaptureStderr();
  std::thread thread(
      [&]
      {
        Processor::AddProcessor(&processor);
        work();
        processor.ReleaseProcessorLocals();
        Processor::RemoveProcessor(&processor);
      });
  thread.join();
  return testing::internal::GetCapturedStderr();
}

char sorting[] = "sorting";
char joining[] = "joining";
char file[] = "edges.cpp";
} // namespace

extern "C" __attribute__((visibility("default"))) std::clock_t clock() noexcept
{
  return clock_now;
}

// What the tables of a thread are made by.
void* operator new(std::size_t size, std::nothrow_t const&) noexcept
{
  if (tables_that_get_memory == 0)
    return nullptr;

  if (tables_that_get_memory > 0)
    --tables_that_get_memory;
  return ::operator new(size);
}

TEST(OzTimes, ReportsWhenAPairCloses)
{
  clock_now = 1000;
  int start = -1;
  int end = -1;

  std::string const text = error_text_of(
      [&]
      {
        time_start(start, sorting, file, 10);
        clock_now += 250;
        time_end(end, file, 20);
      });

  EXPECT_EQ(text, "oz_times: start_clocks->size() = 1\n"
                  "oz_times:       calls clocks (file : line)\n"
                  "oz_times: sorting\n"
                  "          start 00001 000250 (edges.cpp : 10)\n"
                  "          end   00001 000250 (edges.cpp : 20)\n"
                  "\n");
  EXPECT_EQ(start, 0);
  EXPECT_EQ(end, 0);
}

TEST(OzTimes, ReportsNestedPairsOnceWhenTheOutermostCloses)
{
  int outer_start = -1;
  int outer_end = -1;
  int inner_start = -7;
  int inner_end = -7;

  std::string const text = error_text_of(
      [&]
      {
        time_start(outer_start, sorting, file, 10);
        for (int pass = 0; pass < 3; ++pass)
        {
          time_start(inner_start, joining, file, 30);
          clock_now += 100;
          time_end(inner_end, file, 40);
        }
        clock_now += 5;
        time_end(outer_end, file, 20);
      });

  EXPECT_EQ(text, "oz_times: start_clocks->size() = 2\n"
                  "oz_times:       calls clocks (file : line)\n"
                  "oz_times: sorting\n"
                  "          start 00001 000305 (edges.cpp : 10)\n"
                  "          end   00001 000305 (edges.cpp : 20)\n"
                  "oz_times: joining\n"
                  "          start 00003 000300 (edges.cpp : 30)\n"
                  "          end   00003 000300 (edges.cpp : 40)\n"
                  "\n");
  EXPECT_EQ(inner_start, 1);
  EXPECT_EQ(inner_end, 0) << "end sites are counted on their own";
  EXPECT_EQ(outer_end, 1);
}

TEST(OzTimes, ReportsTheCallsOfEachPassAlone)
{
  int first = -1;
  int second = -1;
  int end = -1;

  std::string const text = error_text_of(
      [&]
      {
        for (int pass = 0; pass < 2; ++pass)
        {
          time_start(first, sorting, file, 10);
          clock_now += 1;
          time_end(end, file, 20);
        }
        time_start(second, joining, file, 30);
        clock_now += 2;
        time_end(end, file, 20);
      });

  EXPECT_EQ(text, "oz_times: start_clocks->size() = 1\n"
                  "oz_times:       calls clocks (file : line)\n"
                  "oz_times: sorting\n"
                  "          start 00001 000001 (edges.cpp : 10)\n"
                  "          end   00001 000001 (edges.cpp : 20)\n"
                  "\n"
                  "oz_times: start_clocks->size() = 1\n"
                  "oz_times:       calls clocks (file : line)\n"
                  "oz_times: sorting\n"
                  "          start 00001 000001 (edges.cpp : 10)\n"
                  "          end   00001 000001 (edges.cpp : 20)\n"
                  "\n"
                  "oz_times: start_clocks->size() = 2\n"
                  "oz_times:       calls clocks (file : line)\n"
                  "oz_times: joining\n"
                  "          start 00001 000002 (edges.cpp : 30)\n"
                  "          end   00001 000002 (edges.cpp : 20)\n"
                  "\n");
}

TEST(OzTimes, CountsAnEndSiteUnderEachStartButItsTicksPerPair)
{
  int outer = -1;
  int a = -1;
  int b = -1;
  int end = -1;
  int other_end = -1;
  int outer_end = -1;

  std::string const text = error_text_of(
      [&]
      {
        time_start(outer, sorting, file, 1);
        time_start(a, joining, file, 2);
        clock_now += 10;
        time_end(end, file, 5);
        time_start(b, joining, file, 3);
        clock_now += 20;
        time_end(end, file, 5);
        time_start(a, joining, file, 2);
        clock_now += 40;
        time_end(other_end, file, 6);
        time_start(a, joining, file, 2);
        clock_now += 80;
        time_end(end, file, 5);
        time_end(outer_end, file, 7);
      });

  EXPECT_EQ(text, "oz_times: start_clocks->size() = 3\n"
                  "oz_times:       calls clocks (file : line)\n"
                  "oz_times: sorting\n"
                  "          start 00001 000150 (edges.cpp : 1)\n"
                  "          end   00001 000150 (edges.cpp : 7)\n"
                  "oz_times: joining\n"
                  "          start 00003 000130 (edges.cpp : 2)\n"
                  "          end   00003 000090 (edges.cpp : 5)\n"
                  "          end   00001 000040 (edges.cpp : 6)\n"
                  "oz_times: joining\n"
                  "          start 00001 000020 (edges.cpp : 3)\n"
                  "          end   00003 000020 (edges.cpp : 5)\n"
                  "\n");
}

TEST(OzTimes, ComplainsAboutAnEndWithoutAStartAndReports)
{
  int end = -1;
  ReportRecorder const recorder;

  std::string const text = error_text_of([&] { time_end(end, file, 20); });

  EXPECT_EQ(text, "oz_times: start_stack->empty() in (edges.cpp : 20)\n"
                  "oz_times: start_clocks->size() = 0\n"
                  "oz_times:       calls clocks (file : line)\n"
                  "\n");
  EXPECT_EQ(recorder.units(), reports(1, "oz_times.cpp"));
}

TEST(OzTimes, RefusesANumberDrawnOnAnotherThread)
{
  int start = 3;
  ReportRecorder const recorder;

  std::string const text = error_text_of([&] { time_start(start, sorting, file, 10); });

  EXPECT_EQ(text, "oz_times: wrong index 3 at sorting in (edges.cpp : 10)\n");
  EXPECT_EQ(recorder.units(), reports(1, "oz_times.cpp"));
  EXPECT_EQ(start, 3);
}

TEST(OzTimes, ReportsNothingWhileAStartIsOpen)
{
  int start = -1;
  int end = -1;

  std::string const text = error_text_of(
      [&]
      {
        time_start(start, sorting, file, 10);
        time_start(start, sorting, file, 10);
        time_end(end, file, 20);
      });

  EXPECT_EQ(text, "");
}

TEST(OzTimes, PrintsLongFiguresWhole)
{
  int start = -1;
  int end = -1;
  clock_now = 0;

  std::string const text = error_text_of(
      [&]
      {
        time_start(start, sorting, file, 123456);
        clock_now = 12345678;
        time_end(end, file, 20);
      });

  EXPECT_NE(text.find("start 00001 12345678 (edges.cpp : 123456)\n"), std::string::npos) << text;
}

TEST(OzTimes, GivesUpACallWithoutMemoryForTheTablesOfItsThread)
{
  int start = -1;
  int end = -1;
  for (int tables = 0; tables < 8; ++tables)
  {
    ReportRecorder const recorder;
    std::string const text = error_text_of(
        [&]
        {
          tables_that_get_memory = tables;
          time_start(start, sorting, file, 10);
          tables_that_get_memory = -1;
        });
    EXPECT_EQ(text, "");
    EXPECT_EQ(start, -1);
    EXPECT_EQ(recorder.units(), reports(1, "oz_times.cpp")) << tables << " of 8";
  }
  for (int tables = 0; tables < 11; ++tables)
  {
    ReportRecorder const recorder;
    std::string const text = error_text_of(
        [&]
        {
          tables_that_get_memory = tables;
          time_end(end, file, 20);
          tables_that_get_memory = -1;
        });
    EXPECT_EQ(text, "");
    EXPECT_EQ(end, -1);
    EXPECT_EQ(recorder.units(), reports(1, "oz_times.cpp")) << tables << " of 11";
  }
}
