// `myoforge learn` end to end: the jiggle example's poses give the committed
// belly.mmp, which the activation reader accepts; bad input fails with one
// line, its exit code and nothing written.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "core/patches/muscle_patches_file.h"
#include "io/obj_mesh.h"
#include "support/command_runner.h"

namespace {

using myo_test::RunCommand;

const std::string kBinary = MYOFORGE_BINARY;
const std::string kJiggle = std::string(MYO_EXAMPLES_DIR) + "/jiggle";

std::string Poses() {
  std::string text = "'" + kJiggle + "/meshes/belly.obj'";
  for (const char* pose : {"bulge", "drop", "slide"})
    text += " '" + kJiggle + "/meshes/belly_pose_" + pose + ".obj'";
  return text;
}

TEST(LearnCommand, TheBundledPosesGiveTheCommittedPatchesAndColours) {
  myo_test::TemporaryDirectory out;
  const auto result = RunCommand(kBinary, "learn " + Poses() + " -k 5 -o '" + out.File("belly.mmp") +
                                              "' --colors '" + out.File("colors.obj") + "'");
  ASSERT_EQ(result.exit_code, 0) << result.err;
  EXPECT_EQ(result.err, "");
  // A fresh process draws the same seeds: the example's file again.
  EXPECT_EQ(myo_test::ReadFile(out.File("belly.mmp")), myo_test::ReadFile(kJiggle + "/belly.mmp"));
  // The colour mesh reads back with the neutral mesh's points and faces.
  myo_io::ObjMesh colored, neutral;
  std::string error;
  ASSERT_TRUE(myo_io::ReadObjMesh(out.File("colors.obj"), colored, error)) << error;
  ASSERT_TRUE(myo_io::ReadObjMesh(kJiggle + "/meshes/belly.obj", neutral, error)) << error;
  EXPECT_EQ(colored.polygons.vertices, neutral.polygons.vertices);

  const auto limited = RunCommand(kBinary, "learn " + Poses() + " -k 5 --max-iterations 1 -q --vertices 0,1,2,3,4,5 -o '" +
                                               out.File("six.mmp") + "'");
  ASSERT_EQ(limited.exit_code, 0) << limited.err;
  EXPECT_EQ(limited.out, "");
  std::vector<int32_t> ids;
  std::vector<float> fibers;
  ASSERT_TRUE(myo_core::ReadMusclePatchesFile(out.File("six.mmp"), 289, ids, fibers));
  for (size_t v = 6; v < ids.size(); ++v) ASSERT_EQ(ids[v], -1) << v;
}

TEST(LearnCommand, BadInputFailsWithOneLineAndWritesNothing) {
  myo_test::TemporaryDirectory out;
  out.Write("mask.txt", "0\n1\n2.5\n");
  out.Write("short.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
  const std::string target = " -o '" + out.File("x.mmp") + "'";
  struct Case {
    std::string arguments;
    int exit_code;
    std::string message;
  };
  const std::vector<Case> cases = {
      {"learn '" + kJiggle + "/meshes/nothing.obj' '" + kJiggle + "/meshes/belly.obj' -k 2" + target, 3,
       "nothing.obj"},
      {"learn " + Poses() + " '" + out.File("short.obj") + "' '" + out.File("short.obj") + "' -k 2" + target, 3,
       "Something failed querying target points for targets: '" + out.File("short.obj") + "', '" +
           out.File("short.obj") + "' (the vertex count differs from the 289 vertices of"},
      {"learn " + Poses() + " -k 0" + target, 2, "--patches: expected a number of patches above 0, not 0"},
      {"learn " + Poses() + " -k 2 --vertices 1,300" + target, 3, "the index 300 (entry 1), outside the 289"},
      {"learn " + Poses() + " -k 2 --mask '" + out.File("mask.txt") + "'" + target, 3,
       "mask.txt: value 3: expected a vertex index (a whole number from 0), not 2.5"},
      {"learn " + Poses() + " -k 290" + target, 3, "Cannot learn 290 muscle patches from 289 vertices"},
      {"learn " + Poses() + " -k 2 -o '" + out.File("missing/x.mmp") + "'", 4,
       "Could not write the muscle patches file"},
  };
  for (const Case& c : cases) {
    const auto result = RunCommand(kBinary, c.arguments + " -q");
    EXPECT_EQ(result.exit_code, c.exit_code) << c.arguments << "\n" << result.err;
    EXPECT_EQ(result.err.rfind("myoforge: ", 0), 0u) << result.err;
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
  }
  EXPECT_EQ(myo_test::ListFiles(out.path()), "mask.txt\nshort.obj\n");
}

}  // namespace
