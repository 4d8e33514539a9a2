#ifndef CONTOURS_TESTS_PROGRAM_PROCESS_H
#define CONTOURS_TESTS_PROGRAM_PROCESS_H

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/epoll.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/// A file descriptor that is closed at the end.
class OpenFile
{
public:
  explicit OpenFile(int opened)
    : number(opened)
  {
    if (number < 0)
      throw std::runtime_error("a file cannot be opened");
  }
  ~OpenFile() { close(); }
  OpenFile(OpenFile const&) = delete;
  OpenFile& operator=(OpenFile const&) = delete;

  int get() const { return number; }
  void close()
  {
    if (number >= 0)
      ::close(number);
    number = -1;
  }
  /// All that is to be read. A terminal that nobody has open any more ends in an error.
  std::string read_to_end() const
  {
    std::string text;
    char block[4096];
    for (ssize_t got = ::read(number, block, sizeof(block)); got > 0;
         got = ::read(number, block, sizeof(block)))
      text.append(block, static_cast<std::size_t>(got));
    return text;
  }

private:
  int number;
};

/// The program as a process of its own, which minds SIGINT whatever this process does.
class ProgramProcess
{
public:
  /// Standard output goes to the file `out`, standard error to `err`, which stays the caller's.
  ProgramProcess(std::vector<std::string> arguments, std::string const& out, int err)
  {
    arguments.insert(arguments.begin(), OZ_CONTOURS_PROGRAM);
    std::vector<char*> argv;
    for (std::string& argument : arguments)
      argv.push_back(argument.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    posix_spawn_file_actions_adddup2(&files, err, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t minded;
    sigemptyset(&minded);
    sigaddset(&minded, SIGINT);
    posix_spawnattr_setsigdefault(&attributes, &minded);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    int const failed = ::posix_spawn(&pid, OZ_CONTOURS_PROGRAM, &files, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    if (failed != 0)
      throw std::runtime_error("the program cannot be started");
  }
  ~ProgramProcess() { wait(); }
  ProgramProcess(ProgramProcess const&) = delete;
  ProgramProcess& operator=(ProgramProcess const&) = delete;

  void interrupt() const { ::kill(pid, SIGINT); }
  /// What it ended with; a signal counts from 1000.
  int wait()
  {
    if (pid != 0)
    {
      int status = 0;
      ::waitpid(pid, &status, 0);
      pid = 0;
      code = WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    return code;
  }

private:
  pid_t pid = 0;
  int code = -1;
};

/// A pipe that has room for one picture of a progress bar: who draws a second one waits until somebody reads. So the
/// program can be met at its work.
class NarrowPipe
{
public:
  NarrowPipe()
    : NarrowPipe(open())
  {
    // One page, of which all but a little is taken.
    if (::fcntl(write_end.get(), F_SETPIPE_SZ, PAGE) != PAGE ||
        ::write(write_end.get(), std::string(TAKEN, '-').data(), TAKEN) != TAKEN)
      throw std::runtime_error("no narrow pipe");
    epoll_event watched = {};
    watched.events = EPOLLIN | static_cast<unsigned>(EPOLLET);
    ::epoll_ctl(watch.get(), EPOLL_CTL_ADD, read_end.get(), &watched);
    wait_for_text(); // what was written just now
  }

  int writer() const { return write_end.get(); }
  void close_writer() { write_end.close(); }
  /// Returns when something has been written since the last time.
  void wait_for_text() const
  {
    epoll_event event = {};
    while (::epoll_wait(watch.get(), &event, 1, -1) < 0)
    {
    }
  }
  std::string read_to_end() const { return read_end.read_to_end().substr(TAKEN); }

private:
  struct Ends
  {
    int read;
    int write;
  };
  static constexpr int PAGE = 4096;
  static constexpr int TAKEN = PAGE - 60; // a bar has 39 characters

  static Ends open()
  {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
      throw std::runtime_error("no pipe");
    return {ends[0], ends[1]};
  }
  explicit NarrowPipe(Ends ends)
    : read_end(ends.read)
    , write_end(ends.write)
    , watch(::epoll_create1(EPOLL_CLOEXEC))
  {
  }

  OpenFile read_end;
  OpenFile write_end;
  OpenFile watch;
};

#endif
