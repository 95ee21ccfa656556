#include "qvrcli/text/named_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "qvrcli/text/text_files.h"
#include "support/temporary_folder.h"

using namespace gfast::console;

namespace {

constexpr const char* kSecret = "secret\n";

// Two folders: names stay inside one, and the other holds what must not be reached.
class FilesInside : public testing::Test {
 protected:
  FilesInside() {
    outside_.write("secret.txt", kSecret);
    inside_.write("own.txt", "own\n");
    mkdir(inside_.file("below").c_str(), 0755);
    inside_.write("below/deep.txt", "deep\n");
    EXPECT_TRUE(keepFilesInside(inside_.path().c_str()));
  }

  // What is read at a name, or the errno of the refusal.
  static std::string read(const std::string& name) {
    const TextFile file = openForReading(name.c_str());
    if (file == nullptr) {
      return std::to_string(errno);
    }
    char text[100] = {};
    return std::string(text, std::fread(text, 1, sizeof text, file.get()));
  }

  static std::string refusedWith(int error) { return std::to_string(error); }

  static bool writes(const std::string& name) {
    OutputFile file(name.c_str());
    return file.isOpen() && std::fputs("new\n", file.get()) >= 0 && file.finish();
  }

  void link(const std::string& target, const std::string& name) const {
    ASSERT_EQ(symlink(target.c_str(), inside_.file(name).c_str()), 0);
  }

  // The other folder, from this one.
  std::string wayOut() const { return "../" + outside_.path().substr(outside_.path().rfind('/') + 1); }

  TemporaryFolder outside_;
  TemporaryFolder inside_;
};

TEST_F(FilesInside, AreFoundFromTheFolderOn) {
  EXPECT_EQ(read("own.txt"), "own\n");
  EXPECT_EQ(read("./own.txt"), "own\n");
  EXPECT_EQ(read("below/deep.txt"), "deep\n");
  EXPECT_EQ(read("below//./deep.txt"), "deep\n");
  EXPECT_EQ(read("missing.txt"), refusedWith(ENOENT));
  EXPECT_EQ(read("missing/own.txt"), refusedWith(ENOENT));
}

TEST_F(FilesInside, AreWrittenThere) {
  EXPECT_TRUE(writes("new.txt"));
  EXPECT_EQ(inside_.read("new.txt"), "new\n");
  EXPECT_TRUE(writes("below/new.txt"));
  EXPECT_EQ(inside_.read("below/new.txt"), "new\n");
}

TEST_F(FilesInside, HaveNoAbsoluteNames) {
  EXPECT_EQ(read(outside_.file("secret.txt")), refusedWith(EACCES));
  EXPECT_EQ(read(inside_.file("own.txt")), refusedWith(EACCES));
  EXPECT_EQ(read("/dev/null"), refusedWith(EACCES));
  EXPECT_FALSE(writes("/dev/null"));
}

TEST_F(FilesInside, AreNotReachedOverTheFolderAbove) {
  ASSERT_EQ(access((inside_.path() + "/" + wayOut() + "/secret.txt").c_str(), R_OK), 0);
  for (const std::string& name : {wayOut() + "/secret.txt", "below/../../" + wayOut() + "/secret.txt",
                                  "./" + wayOut() + "/secret.txt", std::string("below/../own.txt")}) {
    EXPECT_EQ(read(name), refusedWith(EACCES)) << name;
    EXPECT_FALSE(writes(name)) << name;
  }
  EXPECT_FALSE(writes(wayOut() + "/planted.txt"));
  EXPECT_FALSE(outside_.has("planted.txt"));
  EXPECT_EQ(outside_.read("secret.txt"), kSecret);
}

TEST_F(FilesInside, AreNotReachedOverLinks) {
  link(outside_.file("secret.txt"), "file");
  link(outside_.path(), "folder");
  link(wayOut(), "relative");
  link("own.txt", "own");
  link(outside_.file("planted.txt"), "planted");
  for (const char* const name : {"file", "folder/secret.txt", "relative/secret.txt", "own"}) {
    EXPECT_NE(read(name).find_first_of("0123456789"), std::string::npos) << name << " was read";
    EXPECT_FALSE(writes(name)) << name;
  }
  EXPECT_FALSE(writes("planted"));
  EXPECT_FALSE(writes("folder/planted.txt"));
  EXPECT_FALSE(outside_.has("planted.txt"));
  EXPECT_EQ(outside_.read("secret.txt"), kSecret);
  EXPECT_EQ(inside_.read("own.txt"), "own\n");
}

TEST_F(FilesInside, AreNoFolders) {
  for (const char* const name : {"", ".", "./", "below", "below/", "own.txt/", "own.txt/x", "/"}) {
    EXPECT_NE(read(name).find_first_of("0123456789"), std::string::npos) << name << " was read";
    EXPECT_FALSE(writes(name)) << name;
  }
}

TEST_F(FilesInside, StayInTheFolderWhenItIsRenamed) {
  const std::string moved = outside_.file("moved");
  ASSERT_EQ(rename(inside_.path().c_str(), moved.c_str()), 0);
  EXPECT_EQ(read("own.txt"), "own\n");
  ASSERT_EQ(rename(moved.c_str(), inside_.path().c_str()), 0);
}

TEST_F(FilesInside, HaveTheFoldersNameForOthers) {
  const auto name = nameForOthers("below/deep.txt");
  ASSERT_TRUE(name);
  char folder[PATH_MAX];
  ASSERT_NE(realpath(inside_.path().c_str(), folder), nullptr);
  EXPECT_EQ(*name, std::string(folder) + "/below/deep.txt");
  link(outside_.file("secret.txt"), "file");
  link(outside_.path(), "folder");
  for (const std::string& refused :
       {std::string("file"), std::string("folder/secret.txt"), wayOut() + "/secret.txt",
        outside_.file("secret.txt"), std::string("missing.txt"), std::string("below")}) {
    errno = 0;
    EXPECT_FALSE(nameForOthers(refused.c_str())) << refused;
    EXPECT_NE(errno, 0) << refused;
  }
}

TEST(FilesAnywhere, KeepTheirNamesForOthers) {
  EXPECT_EQ(nameForOthers("../anything"), "../anything");
}

TEST(FilesFolder, MustBeAFolder) {
  const TemporaryFolder folder;
  EXPECT_FALSE(keepFilesInside(folder.file("missing").c_str()));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(keepFilesInside(folder.write("file.txt", "").c_str()));
  EXPECT_EQ(errno, ENOTDIR);
}

// A link to the folder is the administrator's, not a user's.
TEST(FilesFolder, MayBeNamedOverALink) {
  const TemporaryFolder folder;
  const TemporaryFolder other;
  folder.write("own.txt", "own\n");
  const std::string link = other.file("link");
  ASSERT_EQ(symlink(folder.path().c_str(), link.c_str()), 0);
  ASSERT_TRUE(keepFilesInside(link.c_str()));
  EXPECT_NE(openForReading("own.txt"), nullptr);
}

}  // namespace
