// The myoforge command end to end: the bundled example runs and writes its
// results, the same scene gives the same bytes whatever the threads, bad
// scenes fail with one line and leave nothing behind, and the listings come
// from the attribute tables.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "support/command_runner.h"

namespace {

using myo_test::ListFiles;
using myo_test::ReadFile;
using myo_test::RunCommand;

const std::string kBinary = MYOFORGE_BINARY;
const std::string kForearm = std::string(MYO_EXAMPLES_DIR) + "/forearm/forearm.json";

TEST(MyoforgeCommand, ForearmRunsWritesEveryFrameAndRepeatsBitForBit) {
  myo_test::TemporaryDirectory one, two;
  const auto first = RunCommand(kBinary, "run '" + kForearm + "' -q -t 1 -o '" + one.path() + "'");
  ASSERT_EQ(first.exit_code, 0) << first.err;
  EXPECT_EQ(first.out, "");
  const auto second = RunCommand(kBinary, "run '" + kForearm + "' -t 2 -o '" + two.path() + "'");
  ASSERT_EQ(second.exit_code, 0) << second.err;
  // What was written, then the run in short and where its page is.
  const std::string wrote = "Wrote 96 frames of 5 nodes to " + two.path() + " (summary.json, figures.csv, values.csv)\n";
  EXPECT_EQ(second.out.rfind(wrote + "Simulated 108 frames (96 written) of 5 nodes in ", 0), 0u) << second.out;
  EXPECT_EQ(second.err, "");  // no progress bar when standard error is not a terminal

  const std::string files = ListFiles(one.path());
  EXPECT_EQ(files, ListFiles(two.path()));
  EXPECT_NE(files.find("biceps/biceps.0001.obj\nbiceps/biceps.0002.obj\n"), std::string::npos);  // no preroll
  for (const char* frame : {"biceps/biceps.0050.obj", "skin/skin.0096.obj"})
    EXPECT_EQ(ReadFile(one.File(frame)), ReadFile(two.File(frame))) << frame;

  // The skin keeps the texture coordinates of its input.
  EXPECT_NE(ReadFile(one.File("skin/skin.0050.obj")).find("\nf 1/1 2/2 34/34 33/33\n"), std::string::npos);

  const auto summary = nlohmann::json::parse(ReadFile(one.File("summary.json")));
  // The sensor and its remap come first: they drive the muscle's activation.
  EXPECT_EQ(summary["nodes"][0]["name"], "bicepsLength");
  EXPECT_EQ(summary["nodes"][1]["name"], "bicepsDrive");
  EXPECT_EQ(summary["nodes"][2]["name"], "biceps");
  EXPECT_NEAR(summary["nodes"][2]["min_volume_ratio"].get<double>(), 1.0, 0.05);

  // The origin-insertion distance shortens as the elbow bends (frames 1 to
  // 40), and the remapped activation follows it up to its 0.8.
  const std::string values = ReadFile(one.File("values.csv"));
  auto row = [&values](const std::string& frame) {
    const std::size_t at = values.find("\n" + frame + ",");
    double distance = 0, velocity = 0, acceleration = 0, activation = 0;
    if (at != std::string::npos)
      std::sscanf(values.c_str() + at + 6, "%lf,%lf,%lf,%lf", &distance, &velocity, &acceleration, &activation);
    return std::vector<double>{distance, activation};
  };
  const std::vector<double> straight = row("0001"), bending = row("0020"), bent = row("0040");
  EXPECT_NEAR(straight[0], 30.3, 0.05);
  EXPECT_EQ(straight[1], 0.0);
  EXPECT_LT(bent[0], bending[0]);
  EXPECT_LT(bending[0], straight[0]);
  EXPECT_GT(bending[1], 0.1);
  EXPECT_NEAR(bent[1], 0.8, 1e-6);
}

TEST(MyoforgeCommand, PointCacheHoldsEveryFrameAndReplacesAnEarlierRun) {
  myo_test::TemporaryDirectory out;
  // A first run writes OBJ frames into the folder; the second replaces them.
  ASSERT_EQ(RunCommand(kBinary, "run '" + kForearm + "' -q -o '" + out.path() + "'").exit_code, 0);
  const auto run = RunCommand(kBinary, "run '" + kForearm + "' -q -f pc2 -o '" + out.path() + "'");
  ASSERT_EQ(run.exit_code, 0) << run.err;
  // No OBJ frame of a deformer stays; the edge evaluator writes its coloured
  // frames in either format.
  const std::string files = ListFiles(out.path());
  EXPECT_EQ(files.rfind(".myoforge-run\nbiceps.pc2\nfigures.csv\nskin.pc2\n", 0), 0u) << files;
  EXPECT_NE(files.find("skinCompression/skinCompression.0096.obj\n"), std::string::npos);
  EXPECT_NE(files.find("skinCompression/skinCompression.compression.0096.txt\n"), std::string::npos);
  // 96 samples of the 986 points after the header.
  EXPECT_EQ(ReadFile(out.File("biceps.pc2")).size(), 32u + 96u * 986u * 12u);
}

TEST(MyoforgeCommand, InvalidScenesFailWithOneLineAndWriteNothing) {
  myo_test::TemporaryDirectory dir;
  dir.Write("bad.json", "{\"timeline\": {\"start\": 1, \"end\": 4}, \"nodes\": [{\"name\": \"m\", \"type\": "
                        "\"MyoMuscle\", \"input\": \"nothing\"}]}");
  const std::string out = dir.File("out");
  const auto result = RunCommand(kBinary, "run '" + dir.File("bad.json") + "' -o '" + out + "'");
  EXPECT_EQ(result.exit_code, 3);
  EXPECT_EQ(result.err, "myoforge: " + dir.File("bad.json") +
                            ": nodes[0].input: \"nothing\" is not a mesh or node of the scene\n");
  EXPECT_FALSE(std::filesystem::exists(out));
  const auto valid = RunCommand(kBinary, "validate '" + kForearm + "'");
  EXPECT_EQ(valid.exit_code, 0) << valid.err;
  EXPECT_EQ(valid.out, kForearm + ": valid: 5 nodes, 4 meshes, 4 transforms, frames -11 to 96\n");
}

TEST(MyoforgeCommand, FailureWhileRunningLeavesNoPartialFile) {
  myo_test::TemporaryDirectory dir;
  dir.Write("blocked", "a file where the output directory should be");
  const auto result = RunCommand(kBinary, "run '" + kForearm + "' -q -o '" + dir.File("blocked") + "/out'");
  EXPECT_EQ(result.exit_code, 4);
  EXPECT_NE(result.err.find(dir.File("blocked") + "/out: cannot create the output folder"), std::string::npos)
      << result.err;
  EXPECT_EQ(ListFiles(dir.path()), "blocked\n");
}

TEST(MyoforgeCommand, ListingsAndUsage) {
  const auto skin = RunCommand(kBinary, "attributes MyoSkin");
  EXPECT_EQ(skin.exit_code, 0);
  EXPECT_NE(skin.out.find("\nenvelope (en): float, default 1, limits 0..1, keyable\n"), std::string::npos);
  // Any letter case; --attribute for one.
  EXPECT_EQ(RunCommand(kBinary, "attributes myoskin").out, skin.out);
  EXPECT_EQ(RunCommand(kBinary, "attributes MyoMuscle --attribute s").out,
            "stiffness (s): float, default 100000, limits 0.., soft limits ..1e+12, keyable\n"
            "    Sets the custom stiffness value.\n");
  // Every mistake on the command line: exit code 2 and one line.
  const std::vector<std::pair<std::string, std::string>> usage = {
      {"attributes MyoMusle", "myoforge: unknown node type \"MyoMusle\" (see myoforge nodes); did you mean \"MyoMuscle\"?\n"},
      {"snapshot out --size 10x10",
       "myoforge: --size: expected WIDTHxHEIGHT, each from 64 to 4096 pixels, not \"10x10\" (see myoforge --help)\n"},
      {"", "myoforge: A subcommand is required (see myoforge --help)\n"},
      {"run x.json --threads 0",
       "myoforge: --threads: expected a whole number from 1 to 256, not \"0\" (see myoforge --help)\n"},
      {"run x.json --bogus", "myoforge: The following argument was not expected: --bogus (see myoforge --help)\n"},
  };
  for (const auto& [arguments, message] : usage) {
    const auto result = RunCommand(kBinary, arguments);
    EXPECT_EQ(result.exit_code, 2) << arguments;
    EXPECT_EQ(result.err, message) << arguments;
  }
  const auto help = RunCommand(kBinary, "run --help");
  EXPECT_EQ(help.exit_code, 0);
  EXPECT_NE(help.out.find("at most 10000 \"iterations\" per step"), std::string::npos);
}

}  // namespace
