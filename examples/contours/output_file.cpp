#include "output_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace contours
{

namespace
{

namespace fs = std::filesystem;

[[noreturn]] void fail(int error)
{
  throw OutputError(std::strerror(error));
}

/// A file descriptor that is closed in any case.
class Descriptor
{
public:
  explicit Descriptor(int opened)
    : number(opened)
  {
    if (number < 0)
      fail(errno);
  }
  ~Descriptor()
  {
    if (number >= 0)
      ::close(number);
  }
  Descriptor(Descriptor const&) = delete;
  Descriptor& operator=(Descriptor const&) = delete;

  void write(std::string const& text)
  {
    std::size_t done = 0;
    while (done < text.size())
    {
      ssize_t const written = ::write(number, text.data() + done, text.size() - done);
      if (written < 0 && errno != EINTR)
        fail(errno);
      if (written > 0)
        done += static_cast<std::size_t>(written);
    }
  }

  void take_permissions_of(fs::path const& path)
  {
    struct stat status;
    if (::stat(path.c_str(), &status) == 0 && ::fchmod(number, status.st_mode & 07777U) != 0)
      fail(errno);
  }

  /// Some file systems tell only now that there was no room.
  void close()
  {
    int const closing = number;
    number = -1;
    if (::close(closing) != 0)
      fail(errno);
  }

private:
  int number;
};

void write_directly(fs::path const& path, std::string const& text)
{
  Descriptor file(::open(path.c_str(), O_WRONLY));
  file.write(text);
  file.close();
}

} // namespace

/// Deletes the file unless it was moved to its place.
class NewFile::Beside
{
public:
  explicit Beside(fs::path name)
    : path(std::move(name))
  {
  }
  ~Beside()
  {
    if (!moved)
      ::unlink(path.c_str());
  }
  Beside(Beside const&) = delete;
  Beside& operator=(Beside const&) = delete;

  void move_to(fs::path const& place)
  {
    if (::rename(path.c_str(), place.c_str()) != 0)
      fail(errno);
    moved = true;
  }

private:
  fs::path path;
  bool moved = false;
};

NewFile::NewFile(std::string const& path, std::string const& text)
  : target(path)
{
  std::error_code ignored;
  if (fs::exists(target, ignored) && !fs::is_regular_file(target, ignored))
  {
    direct = text;
    return;
  }
  if (fs::is_symlink(target, ignored))
    target = fs::weakly_canonical(target, ignored).string();
  if (target.empty())
    fail(ENOENT);

  fs::path const name = target + ".new-" + std::to_string(::getpid());
  Descriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666));
  beside = std::make_unique<Beside>(name);
  file.take_permissions_of(target);
  file.write(text);
  file.close();
}

NewFile::NewFile(NewFile&&) noexcept = default;

NewFile::~NewFile() = default;

void NewFile::take_place()
{
  if (beside)
    beside->move_to(target);
  else
    write_directly(target, direct);
}

void write_file(std::string const& path, std::string const& text)
{
  NewFile(path, text).take_place();
}

} // namespace contours
