#include "output_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace contours;
namespace fs = std::filesystem;

namespace
{

/// A folder of its own for each test.
class OutputFile : public testing::Test
{
protected:
  void SetUp() override
  {
    std::string name = (fs::temp_directory_path() / "oz-contours-XXXXXX").string();
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder = name;
  }
  void TearDown() override { fs::remove_all(folder); }

  std::string path(char const* name) const { return (folder / name).string(); }

  static std::string content(std::string const& file)
  {
    std::ifstream in(file, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }

  static void put(std::string const& file, std::string const& text)
  {
    std::ofstream(file, std::ios::binary) << text;
  }

  std::size_t files() const
  {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
  }

  fs::path folder;
};

} // namespace

TEST_F(OutputFile, WritesANewFile)
{
  write_file(path("new.svg"), "a\r\nb\n");

  EXPECT_EQ(content(path("new.svg")), "a\r\nb\n");
  EXPECT_EQ(files(), 1u) << "nothing else stays behind";
}

TEST_F(OutputFile, ReplacesAnOldFileAndKeepsItsPermissions)
{
  put(path("old.svg"), "old");
  ASSERT_EQ(::chmod(path("old.svg").c_str(), 0640), 0);

  write_file(path("old.svg"), "new");

  EXPECT_EQ(content(path("old.svg")), "new");
  EXPECT_EQ(fs::status(path("old.svg")).permissions(), static_cast<fs::perms>(0640));
}

TEST_F(OutputFile, WritesThroughALink)
{
  put(path("target.svg"), "old");
  fs::create_symlink("target.svg", folder / "link.svg");

  write_file(path("link.svg"), "new");

  EXPECT_TRUE(fs::is_symlink(path("link.svg")));
  EXPECT_EQ(content(path("target.svg")), "new");
}

TEST_F(OutputFile, LeavesTheOldFileWhereItCannotWriteBesideIt)
{
  // The name of the new file is taken, as by a folder.
  put(path("old.svg"), "old");
  fs::create_directory(path("old.svg") + ".new-" + std::to_string(::getpid()));

  EXPECT_THROW(write_file(path("old.svg"), "new"), OutputError);
  EXPECT_EQ(content(path("old.svg")), "old");
}

TEST_F(OutputFile, RefusesAFolderAndWhatIsNotThere)
{
  EXPECT_THROW(write_file(folder.string(), "x"), OutputError);
  EXPECT_THROW(write_file(path("no/such/folder.svg"), "x"), OutputError);
  EXPECT_THROW(write_file("", "x"), OutputError);
  EXPECT_EQ(files(), 0u);
}

TEST_F(OutputFile, WritesToADeviceDirectly)
{
  EXPECT_NO_THROW(write_file("/dev/null", "x"));
  EXPECT_FALSE(fs::is_regular_file("/dev/null"));
  EXPECT_THROW(write_file("/dev/full", "x"), OutputError);
}
