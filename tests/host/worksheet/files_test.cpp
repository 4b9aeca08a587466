// Files: what is written whole, what is refused, and what a confined worksheet gets at.
#include "host/efiutils/system/files.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/host/build_files.hpp"
#include "tests/host/sheet.hpp"

using namespace test;

namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

TEST(Files, ANewOneTakesItsPlaceWhole) {
  const Directory directory;
  const std::string path = directory.write("old", "old");
  fs::permissions(path, fs::perms::owner_all);
  fs::create_symlink("old", directory.path("link"));
  fs::create_symlink("new", directory.path("dangling"));
  {
    efi::NewFile given_up(path);
    ASSERT_EQ(given_up.error(), 0);
    ASSERT_EQ(efi::write_all(given_up.descriptor(), "half of"), 0);
    EXPECT_EQ(directory.names(), Names({"dangling", "link", "old"})) << "it has no name yet";
  }
  EXPECT_EQ(directory.read("old"), "old");
  EXPECT_EQ(efi::replace_file(directory.path("link"), "whole"), 0);
  EXPECT_EQ(efi::replace_file(directory.path("dangling"), "made"), 0);
  EXPECT_EQ(directory.read("old"), "whole");
  EXPECT_EQ(directory.read("new"), "made");
  EXPECT_EQ(directory.names(), Names({"dangling", "link", "new", "old"}));
  EXPECT_TRUE(fs::is_symlink(directory.path("link")));
  EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_all) << "as they were";
}

TEST(Files, OnlyFilesAreReadAndReplaced) {
  const Directory directory;
  const std::string pipe = directory.path("pipe"), loop = directory.path("loop");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  fs::create_symlink("loop", loop);
  const std::pair<std::string, int> cases[] = {{pipe, efi::kNoFile},
                                               {"/dev/null", efi::kNoFile},
                                               {directory.path("."), EISDIR},
                                               {loop, ELOOP},
                                               {directory.path("none/x"), ENOENT}};
  for (const auto& [path, expected] : cases) {
    int error = 0;
    EXPECT_EQ(efi::read_file(path, &error), std::nullopt) << path;
    EXPECT_EQ(error, expected) << path;
    EXPECT_EQ(efi::replace_file(path, "x"), expected) << path;
    EXPECT_EQ(run_program({"--pack", path, "-e", "1"}).status, 2) << path;
    EXPECT_NE(run_program({"-e", "1"}, "", path).out, "") << path;
    EXPECT_EQ(run_program({"--register", kPackFile}, "", path).status, error == ENOENT ? 0 : 2)
        << path;
  }
}

TEST(Files, RegisteringTouchesNothingButTheCatalogue) {
  const Directory directory;
  const std::string catalogue = directory.path("packs.json");
  directory.write("packs.json.backup", "mine");
  directory.write(".packs.json.worksheet-abcdef", "half a catalogue of one that was killed");
  ASSERT_EQ(run_program({"--register", kPackFile}, "", catalogue).status, 0);
  EXPECT_EQ(directory.names(), Names({"packs.json", "packs.json.backup", "packs.json.lock"}));
  fs::remove(directory.path("packs.json.lock"));
  fs::create_symlink("victim", directory.path("packs.json.lock"));
  EXPECT_EQ(run_program({"--register", kPackFile}, "", catalogue).status, 2);
  EXPECT_FALSE(fs::exists(directory.path("victim"))) << "the lock is no link to elsewhere";
}

TEST(Files, AConfinedWorksheetStaysBelowItsDirectory) {
  const Directory outside;
  outside.write("secret.csv", "42");
  const std::string root = outside.path("root");
  fs::create_directories(root + "/sub");
  outside.write("root/in.csv", "1");
  outside.write("root/sub/in.csv", "2");
  fs::create_symlink("../secret.csv", root + "/link.csv");
  fs::create_symlink("..", root + "/up");
  fs::create_symlink("sub", root + "/down");
  Sheet sheet;
  worksheet::SheetFiles& files = sheet.machine().files;
  files.confine(root);
  const std::string refused =
      ": lies outside of " + fs::canonical(root).string() + ", to which the worksheet is confined";
  const std::pair<std::string, const char*> cases[] = {
      {"in.csv", "[1]"},
      {"sub/../in.csv", "[1]"},
      {"down/in.csv", "[2]"},
      {root + "/sub/in.csv", "[2]"},
      {"link.csv", nullptr},
      {"up/secret.csv", nullptr},
      {"down/../../secret.csv", nullptr},
      {"../root2", nullptr},
      {"/etc/passwd", nullptr},
      {"/proc/self/environ", nullptr},
  };
  for (const auto& [name, value] : cases) {
    EXPECT_EQ(sheet.brief("read(\"" + name + "\")"),
              value != nullptr ? value : "error: " + name + refused + " (0, 0)");
    if (value != nullptr) continue;
    EXPECT_THROW(files.write(name, "x"), worksheet::FileError) << name;
  }
  EXPECT_EQ(outside.read("secret.csv"), "42");
  files.write("down/new.txt", "x");
  files.write("in.csv", "3");
  EXPECT_EQ(outside.read("root/sub/new.txt") + outside.read("root/in.csv"), "x3");
  EXPECT_FALSE(files.output_lost()) << "a name that is refused is the worksheet's mistake";
  EXPECT_THROW(files.write("none/new.txt", "x"), worksheet::FileError);
  EXPECT_TRUE(files.output_lost());
  files.directory = root + "/sub";  // Of a worksheet inside.
  EXPECT_EQ(sheet.brief("read(\"in.csv\")"), "[2]");
}

}  // namespace
