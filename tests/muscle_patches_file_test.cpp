// The muscle patches file: what the writer puts on each line, what comes back
// through text, and every kind of file the reader refuses.

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "core/patches/muscle_patches_file.h"
#include "support/command_runner.h"

using myo_core::ReadMusclePatchesFile;
using myo_core::WriteMusclePatchesFile;

namespace {

// Four vertices in two patches, the third outside the mask.
const char kExample[] =
    "1\n"
    "4\n"
    "1 1 -1 2\n"
    "0.1000000000 0.0000000000 -0.2500000000 0.0000000000 1.5000000000 0.0000000000\n";

// A read of `path` for `count` vertices into arrays that hold something
// already, so that a refusal must empty them.
struct Read {
  bool accepted = false;
  std::vector<int32_t> ids{7, 7};
  std::vector<float> fibers{7.0f};
};

Read ReadFile(const std::string& path, uint32_t count) {
  Read read;
  read.accepted = ReadMusclePatchesFile(path, count, read.ids, read.fibers);
  return read;
}

}  // namespace

TEST(MusclePatchesFileTest, WritesFourLinesWithTenDigitFibersOrNothing) {
  myo_test::TemporaryDirectory dir;
  const std::string path = dir.File("patches.mmp");
  ASSERT_TRUE(WriteMusclePatchesFile(path, 4, {1, 1, -1, 2}, {{0.1, 0.0, -0.25}, {0.0, 1.5, 0.0}}));
  EXPECT_EQ(myo_test::ReadFile(path), kExample);

  // No fiber at all still ends the fourth line; a single id has no blank.
  ASSERT_TRUE(WriteMusclePatchesFile(path, 1, {-1}, {}));
  EXPECT_EQ(myo_test::ReadFile(path), "1\n1\n-1\n\n");

  // Ids that do not match the count leave the file as it was.
  dir.Write("kept.mmp", kExample);
  EXPECT_FALSE(WriteMusclePatchesFile(dir.File("kept.mmp"), 5, {1, 1, -1, 2}, {{1.0, 0.0, 0.0}}));
  EXPECT_EQ(myo_test::ReadFile(dir.File("kept.mmp")), kExample);
  // A file that cannot be opened is skipped.
  EXPECT_FALSE(WriteMusclePatchesFile(dir.File("missing/patches.mmp"), 1, {1}, {{1.0, 0.0, 0.0}}));
  EXPECT_FALSE(std::filesystem::exists(dir.File("missing")));
}

TEST(MusclePatchesFileTest, RoundTripKeepsTenDigitsAndArrivesAsFloats) {
  myo_test::TemporaryDirectory dir;
  const std::string path = dir.File("round.mmp");
  const std::vector<int32_t> ids = {2, 1, -1, 3, 0, 9};
  const std::vector<std::array<double, 3>> fibers = {
      {1.0 / 3.0, -2.0 / 3.0, 12345.678901234567}, {-0.00000000004, 0.00000000006, 1e-3}, {-7.25, 0.0, 3.14159265358979}};
  ASSERT_TRUE(WriteMusclePatchesFile(path, 6, ids, fibers));

  const Read read = ReadFile(path, 6);
  ASSERT_TRUE(read.accepted);
  // Ids are not range-checked: 0 and an id beyond the fibers pass.
  EXPECT_EQ(read.ids, ids);
  // Each number as the float nearest to its ten-digit text.
  const std::vector<float> expected = {0.3333333333f, -0.6666666667f, 12345.6789012346f, -0.0f, 0.0000000001f,
                                       0.001f,        -7.25f,          0.0f,              3.1415926536f};
  EXPECT_EQ(read.fibers, expected);
}

TEST(MusclePatchesFileTest, ReadsOnlyRegularFilesEndingInLowerCaseMmp) {
  myo_test::TemporaryDirectory dir;
  dir.Write("good.mmp", kExample);
  ASSERT_TRUE(ReadFile(dir.File("good.mmp"), 4).accepted);
  // Good content under another name is refused, and emptied.
  dir.Write("good.MMP", kExample);
  const Read other = ReadFile(dir.File("good.MMP"), 4);
  EXPECT_FALSE(other.accepted);
  EXPECT_TRUE(other.ids.empty() && other.fibers.empty());
  // A missing file is neither read nor created: the open is in update mode.
  EXPECT_FALSE(ReadFile(dir.File("none.mmp"), 4).accepted);
  EXPECT_FALSE(std::filesystem::exists(dir.File("none.mmp")));
  // A pipe would never end the read.
  ASSERT_EQ(mkfifo(dir.File("pipe.mmp").c_str(), 0600), 0);
  EXPECT_FALSE(ReadFile(dir.File("pipe.mmp"), 4).accepted);
  // Reading leaves the file as it was.
  EXPECT_EQ(myo_test::ReadFile(dir.File("good.mmp")), kExample);
}

// A bad head or id refuses the file and empties both arrays; the fibers end
// at the first value that is no float, keeping those read before it.
TEST(MusclePatchesFileTest, ReadsWholeHeadsAndIdsAndFibersUpToTheFirstNonFloat) {
  myo_test::TemporaryDirectory dir;
  struct Case {
    std::string text;
    uint32_t count;
    bool accepted;
    std::vector<int32_t> ids;
    std::vector<float> fibers;
  };
  const std::vector<Case> cases = {
      {"2\n4\n1 1 -1 2\n0.1 0 0\n", 4, false, {}, {}},            // version other than 1
      {"1\n4\n1 1 -1 2\n0.1 0 0\n", 3, false, {}, {}},            // another vertex count
      {"1\n99999999999\n1 1 -1 2\n0.1 0 0\n", 4, false, {}, {}},  // beyond 32 bits
      {"1\n4\n1 1 x 2\n0.1 0 0\n", 4, false, {}, {}},             // text inside the ids
      {"1\n4\n1 1 -1\n", 4, false, {}, {}},                       // fewer ids, file ends
      {"1\n4\n1 1 -1 2\nfiber\n", 4, false, {}, {}},              // text where the fibers start
      {"", 4, false, {}, {}},
      {"1\n2\n1 2\n0.5 0 0 1 oops 3\n", 2, true, {1, 2}, {0.5f, 0.0f, 0.0f, 1.0f}},
      {"\t1\r\n2\r\n-1 1\r\n0 1e-3 -2E2", 2, true, {-1, 1}, {0.0f, 0.001f, -200.0f}},
      {"1\n1\n1\n1 2 3 4e38 5\n", 1, true, {1}, {1.0f, 2.0f, 3.0f}},  // beyond the float range
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    dir.Write("patches.mmp", c.text);
    const Read read = ReadFile(dir.File("patches.mmp"), c.count);
    EXPECT_EQ(read.accepted, c.accepted);
    EXPECT_EQ(read.ids, c.ids);
    EXPECT_EQ(read.fibers, c.fibers);
  }
}
