#include "run/SafeOutputFile.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "common/TestUtil.h"

namespace {

std::size_t EntryCount(const testutil::TempDir& dir) {
  std::size_t n = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(dir.path())) ++n;
  return n;
}

TEST(SafeOutputFile, TargetChangesOnlyOnCommit) {
  testutil::TempDir dir;
  const std::string target = dir / "out.txt";
  testutil::WriteFile(target, "earlier\n");
  {
    CSafeOutputFile file;
    ASSERT_TRUE(file.Open(target));
    file.Stream() << "new\n";
    EXPECT_EQ(testutil::ReadFile(target), "earlier\n");
  }  // not committed: discarded
  EXPECT_EQ(testutil::ReadFile(target), "earlier\n");
  EXPECT_EQ(EntryCount(dir), 1u);

  CSafeOutputFile file;
  ASSERT_TRUE(file.Open(target));
  file.Stream() << "new\n";
  EXPECT_TRUE(file.Commit());
  EXPECT_EQ(testutil::ReadFile(target), "new\n");
  EXPECT_EQ(EntryCount(dir), 1u);

  // Nothing can be put in place of a directory, a device, or into a missing folder.
  std::filesystem::create_directory(dir / "folder");
  EXPECT_FALSE(file.Open(dir / "folder"));
  EXPECT_FALSE(file.Open("/dev/null"));
  EXPECT_FALSE(file.Open(dir / "missing/out.txt"));
  EXPECT_EQ(file.Failure(), "No such file or directory");
  EXPECT_EQ(EntryCount(dir), 2u);
}

TEST(SafeOutputFile, ASignalRemovesTheTemporaryAndScratchNamesAndKeepsTheTarget) {
  testutil::TempDir dir;
  const std::string target = dir / "out.txt";
  testutil::WriteFile(target, "earlier\n");
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    RemoveTemporariesOnSignals();
    CSafeOutputFile file;
    if (!file.Open(target)) ::_exit(3);
    file.Stream() << "half" << std::flush;
    // A second name of the target, as the FDR stage gives the search's lines.
    CScratchName scratch(target + ".tmp");
    ::link(target.c_str(), scratch.Path().c_str());
    std::raise(SIGTERM);
    ::_exit(4);  // not reached
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
  EXPECT_EQ(testutil::ReadFile(target), "earlier\n");
  EXPECT_EQ(EntryCount(dir), 1u);
}

}  // namespace
