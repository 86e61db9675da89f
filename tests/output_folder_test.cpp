// The output folder of a run: the outputs of the last run are replaced, a
// folder of other files is refused, and nothing is written outside it.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "app/run/output_folder.h"
#include "support/command_runner.h"

namespace {

using myo_app::OutputPlan;
using myo_app::PrepareOutputFolder;

const OutputPlan kFirstRun = {{"arm/arm.0001.obj", "arm/arm.0002.obj", "leg.pc2", "figures.csv", "summary.json"},
                              {"arm"}};
const OutputPlan kSecondRun = {{"hand/hand.0001.obj", "figures.csv", "summary.json"}, {"hand"}};

// Writes every file of a plan, as a run would.
void WriteAll(const myo_test::TemporaryDirectory& dir, const std::string& folder, const OutputPlan& plan) {
  for (const std::string& file : plan.files) dir.Write(folder + "/" + file, "output\n");
}

}  // namespace

TEST(OutputFolderTest, ARerunReplacesTheLastRunsOutputsAndKeepsForeignFiles) {
  myo_test::TemporaryDirectory dir;
  const std::string out = dir.File("out");
  std::string error;
  ASSERT_TRUE(PrepareOutputFolder(out, kFirstRun, error)) << error;
  WriteAll(dir, "out", kFirstRun);
  dir.Write("out/arm/arm.0003.obj.partial.4242", "cut short");  // an interrupted write
  dir.Write("out/notes.txt", "the user's own");
  ASSERT_TRUE(PrepareOutputFolder(out, kSecondRun, error)) << error;
  EXPECT_EQ(myo_test::ListFiles(out), ".myoforge-run\nnotes.txt\n");
  EXPECT_TRUE(std::filesystem::is_directory(dir.File("out/hand")));
  EXPECT_EQ(myo_test::ReadFile(dir.File("out/.myoforge-run")),
            "hand/hand.0001.obj\nfigures.csv\nsummary.json\nhand\n");
}

TEST(OutputFolderTest, RefusesWhatItCannotWriteBeforeWritingAnything) {
  myo_test::TemporaryDirectory dir;
  std::string error;
  // A folder of files that no run of myoforge wrote.
  dir.Write("mine/photo.png", "x");
  EXPECT_FALSE(PrepareOutputFolder(dir.File("mine"), kFirstRun, error));
  EXPECT_EQ(error, dir.File("mine") +
                       ": the output folder holds files that myoforge did not write; choose an empty or new folder (-o)");
  EXPECT_EQ(myo_test::ListFiles(dir.File("mine")), "photo.png\n");
  // A file where the folder should be.
  dir.Write("file", "x");
  EXPECT_FALSE(PrepareOutputFolder(dir.File("file"), kFirstRun, error));
  EXPECT_EQ(error, dir.File("file") + ": the output path exists and is not a folder");
  // A folder where the summary goes, left by the user beside a run's outputs.
  ASSERT_TRUE(PrepareOutputFolder(dir.File("out"), kSecondRun, error)) << error;
  std::filesystem::create_directories(dir.File("out/summary.json"));
  EXPECT_FALSE(PrepareOutputFolder(dir.File("out"), kSecondRun, error));
  EXPECT_EQ(error, dir.File("out") + "/summary.json: an output file cannot be written there: the path is taken by a "
                                      "folder");
  // Names that would leave the folder.
  for (const OutputPlan& plan : {OutputPlan{{"../x.obj"}, {}}, OutputPlan{{}, {"/tmp/x"}}}) {
    EXPECT_FALSE(PrepareOutputFolder(dir.File("fresh"), plan, error));
    EXPECT_NE(error.find("is not a name inside the output folder"), std::string::npos) << error;
  }
  EXPECT_FALSE(std::filesystem::exists(dir.File("fresh")));
}

TEST(OutputFolderTest, AManifestCannotRemoveAnythingOutsideTheFolder) {
  myo_test::TemporaryDirectory dir;
  dir.Write("precious.txt", "keep me");
  dir.Write("out/.myoforge-run", "../precious.txt\n" + dir.File("precious.txt") + "\nfigures.csv\n");
  dir.Write("out/figures.csv", "old");
  std::string error;
  ASSERT_TRUE(PrepareOutputFolder(dir.File("out"), kSecondRun, error)) << error;
  EXPECT_EQ(myo_test::ReadFile(dir.File("precious.txt")), "keep me");
  EXPECT_FALSE(std::filesystem::exists(dir.File("out/figures.csv")));
}
