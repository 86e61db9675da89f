// Map files: numbers separated by blanks, commas or line ends, with comments;
// anything that is no finite 32-bit float is refused naming the line.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "io/map_file.h"
#include "support/command_runner.h"

TEST(MapFileTest, ReadsNumbersAndRefusesTextAndOverflowByLine) {
  myo_test::TemporaryDirectory dir;
  const std::string path = dir.File("map.txt");
  dir.Write("map.txt", "# mass per point\n1, 0.5 .25\r\n\n2e-3 5. # the last\n");
  std::vector<float> values;
  std::string error;
  ASSERT_TRUE(myo_io::ReadMapFile(path, values, error)) << error;
  EXPECT_EQ(values, (std::vector<float>{1.0f, 0.5f, 0.25f, 0.002f, 5.0f}));

  const std::vector<std::pair<std::string, std::string>> cases = {
      {"1\n2 abc\n", ": line 2: \"abc\" is not a number"},
      {"nan\n", ": line 1: \"nan\" is not a number"},
      {"1\n\n1e39\n", ": line 3: \"1e39\" is outside the range of a 32-bit float"},
  };
  for (const auto& [text, message] : cases) {
    SCOPED_TRACE(text);
    dir.Write("map.txt", text);
    std::vector<float> kept = {9.0f};
    EXPECT_FALSE(myo_io::ReadMapFile(path, kept, error));
    EXPECT_EQ(error, path + message);
    EXPECT_EQ(kept, std::vector<float>{9.0f});
  }
  EXPECT_FALSE(myo_io::ReadMapFile(dir.File("none.txt"), values, error));
  EXPECT_EQ(error, dir.File("none.txt") + ": cannot open the map file");
}
