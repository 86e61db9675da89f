// Tests of the fuzzing harness: a check that is too strict floods a run with
// false findings, one that is too loose hides faults, and a sandbox or
// clean-up that misjudges a path reads or deletes what it must not.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "app/scene/scene_reader.h"
#include "fuzz/fuzz_support.h"
#include "fuzz/reader_checks.h"

namespace {

namespace fs = std::filesystem;

#ifndef MYO_FUZZ_SOURCE_DIR
#error "MYO_FUZZ_SOURCE_DIR names the source tree with the example and the seeds"
#endif
const std::string kSource = MYO_FUZZ_SOURCE_DIR;

bool OutsideFile(const std::string& json) {
  return myo_fuzz::NamesOutsideFile(reinterpret_cast<const uint8_t*>(json.data()), json.size());
}

// A directory for one test, removed afterwards.
class ScratchDirectory {
 public:
  ScratchDirectory() {
    path_ = fs::temp_directory_path() / ("myo-fuzz-harness-test-" + std::to_string(getpid()));
    fs::remove_all(path_);
    fs::create_directories(path_);
  }
  ~ScratchDirectory() { fs::remove_all(path_); }
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

// Sets MYO_FUZZ_SEEN_DIR for the life of the object.
class SeenDirectory {
 public:
  explicit SeenDirectory(const fs::path& path) { setenv("MYO_FUZZ_SEEN_DIR", path.c_str(), 1); }
  ~SeenDirectory() { unsetenv("MYO_FUZZ_SEEN_DIR"); }
};

myo_io::ObjMesh TriangleWithUvs() {
  myo_io::ObjMesh mesh;
  mesh.polygons.points = {0, 0, 0, 1, 0, 0, 0, 1, 0};
  mesh.polygons.vertex_counts = {3};
  mesh.polygons.vertices = {0, 1, 2};
  mesh.uvs = {0, 0, 1, 0, 0, 1};
  mesh.uv_indices = {0, 1, -1};
  return mesh;
}

TEST(FuzzHarnessMessages, OneLineNonEmptyMessagesPassAndOthersAreNamed) {
  EXPECT_EQ(myo_fuzz::MessageFault("scene.json: nodes[0].type: unknown node type \"x\""), "");
  EXPECT_NE(myo_fuzz::MessageFault(""), "");
  EXPECT_NE(myo_fuzz::MessageFault("scene.json: time\nline: unknown key"), "");
  EXPECT_NE(myo_fuzz::MessageFault("map.txt: line 1\r"), "");
  // Reports stay on one line whatever the message holds.
  EXPECT_EQ(myo_fuzz::Printable("a\nb\rc\x01\x7f" "d\te"), "a\\nb\\rc\\x01\\x7fd\\te");
}

TEST(FuzzHarnessFindings, EachKindIsRecordedOncePerRun) {
  ScratchDirectory scratch;
  EXPECT_TRUE(myo_fuzz::FirstOfItsKind("reader: a kind"));  // no record kept: always first
  EXPECT_TRUE(myo_fuzz::FirstOfItsKind("reader: a kind"));
  {
    SeenDirectory seen(scratch.path());
    EXPECT_TRUE(myo_fuzz::FirstOfItsKind("reader: a kind"));
    EXPECT_FALSE(myo_fuzz::FirstOfItsKind("reader: a kind"));
    EXPECT_TRUE(myo_fuzz::FirstOfItsKind("reader: another kind"));
    EXPECT_TRUE(myo_fuzz::FirstOfItsKind("other reader: a kind"));
  }
  std::ifstream record(scratch.path() / "reader__a_kind");
  std::string text;
  std::getline(record, text);
  EXPECT_EQ(text, "reader: a kind");
}

TEST(FuzzHarnessFindings, EscapingExceptionsAreCaughtAndNamedByType) {
  ScratchDirectory scratch;
  SeenDirectory seen(scratch.path());
  // Recorded kinds return instead of aborting, so a wrong kind would end the test.
  ASSERT_TRUE(myo_fuzz::FirstOfItsKind("reader: an exception escaped (std::runtime_error)"));
  ASSERT_TRUE(myo_fuzz::FirstOfItsKind("reader: an exception escaped (of unknown type)"));
  EXPECT_EQ(myo_fuzz::CallReader("reader", []() -> bool { throw std::runtime_error("overflow"); }), std::nullopt);
  EXPECT_EQ(myo_fuzz::CallReader("reader", []() -> bool { throw 7; }), std::nullopt);
  EXPECT_EQ(myo_fuzz::CallReader("reader", [] { return false; }), std::optional<bool>(false));
  EXPECT_EQ(myo_fuzz::CallReader("reader", [] { return true; }), std::optional<bool>(true));
}

TEST(FuzzHarnessDirectories, PrivateDirectoryIsMadeRemovedAndClearsOnlyDeadOwners) {
  const fs::path root = myo_fuzz::TemporaryRoot();
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) _exit(0);
  ASSERT_EQ(waitpid(child, nullptr, 0), child);
  const fs::path dead = root / ("myo-fuzz-test-" + std::to_string(child) + "-aaaaaa");
  const fs::path live = root / ("myo-fuzz-test-" + std::to_string(getppid()) + "-aaaaaa");
  const fs::path foreign = root / "myo-fuzz-test-notapid-aaaaaa";
  for (const fs::path& p : {dead, live, foreign}) fs::create_directories(p / "inside");

  std::string made;
  {
    myo_fuzz::PrivateDirectory directory("test");
    made = directory.path();
    EXPECT_EQ(made.rfind((root / ("myo-fuzz-test-" + std::to_string(getpid()) + "-")).string(), 0), 0u) << made;
    EXPECT_TRUE(fs::is_directory(made));
    EXPECT_EQ(directory.File("scene.json"), made + "/scene.json");
    std::ofstream(directory.File("scene.json")) << "{}";
  }
  EXPECT_FALSE(fs::exists(made));
  EXPECT_FALSE(fs::exists(dead));
  EXPECT_TRUE(fs::exists(live / "inside"));
  EXPECT_TRUE(fs::exists(foreign / "inside"));
  fs::remove_all(live);
  fs::remove_all(foreign);
}

std::string Contents(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(FuzzHarnessFiles, InputsReplaceTheFileAndExampleFilesAreCopied) {
  ScratchDirectory scratch;
  const std::string path = (scratch.path() / "mesh.obj").string();
  const std::string longer = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
  const std::string shorter("v 1\0x", 5);  // bytes as they come, zero included
  myo_fuzz::WriteInput(path, reinterpret_cast<const uint8_t*>(longer.data()), longer.size());
  EXPECT_EQ(Contents(path), longer);
  myo_fuzz::WriteInput(path, reinterpret_cast<const uint8_t*>(shorter.data()), shorter.size());
  EXPECT_EQ(Contents(path), shorter);  // nothing of the longer input is left
  myo_fuzz::WriteInput(path, nullptr, 0);
  EXPECT_TRUE(fs::exists(path));
  EXPECT_EQ(fs::file_size(path), 0u);

  const fs::path from = scratch.path() / "example";
  fs::create_directories(from / "nested");
  std::ofstream(from / "a.txt") << "1 2 3";
  std::ofstream(from / "nested" / "b.txt") << "4";
  const fs::path to = scratch.path() / "copy" / "maps";
  myo_fuzz::CopyFiles(from.string(), to.string());
  EXPECT_EQ(Contents(to / "a.txt"), "1 2 3");
  EXPECT_FALSE(fs::exists(to / "nested"));
  std::ofstream(from / "a.txt") << "0.5";
  myo_fuzz::CopyFiles(from.string(), to.string());  // a second copy overwrites
  EXPECT_EQ(Contents(to / "a.txt"), "0.5");
}

TEST(FuzzHarnessSceneSandbox, OnlyFilesInsideTheSceneDirectoryAreOpened) {
  EXPECT_FALSE(OutsideFile(R"({"meshes": [{"name": "m", "file": "meshes/biceps.obj"}]})"));
  EXPECT_FALSE(OutsideFile(R"({"file": "maps/..x/skin..txt", "other": "/dev/zero"})"));
  EXPECT_TRUE(OutsideFile(R"({"meshes": [{"name": "m", "file": "/dev/zero"}]})"));
  EXPECT_TRUE(OutsideFile(R"({"nodes": [{"maps": [[], {"file": "maps/../../scene.json"}]}]})"));
  EXPECT_TRUE(OutsideFile(R"({"a": {"b": [{"c": {"file": ".."}}]}})"));
  EXPECT_TRUE(OutsideFile(R"({"file": "\u002fetc\/passwd"})"));  // escapes decode to an absolute path
  EXPECT_FALSE(OutsideFile(R"({"file": 3, "x": {"file": ["/dev/zero"]}})"));  // the reader opens strings only
  EXPECT_FALSE(OutsideFile(R"({"file": "/dev/zero")"));  // does not parse: the reader opens nothing
  EXPECT_FALSE(OutsideFile(R"({"timeline": 1e500, "file": "/dev/zero"})"));
}

TEST(FuzzHarnessMeshChecks, ReadMeshesPassAndEachBrokenPartIsNamed) {
  myo_io::ObjMesh read;
  std::string error;
  ASSERT_TRUE(myo_io::ReadObjMesh(kSource + "/examples/forearm/meshes/biceps_skin.obj", read, error)) << error;
  EXPECT_FALSE(myo_fuzz::FindMeshFault(read).Found()) << myo_fuzz::FindMeshFault(read).kind;
  EXPECT_FALSE(myo_fuzz::FindMeshFault(TriangleWithUvs()).Found());

  const std::pair<void (*)(myo_io::ObjMesh&), const char*> breaks[] = {
      {[](myo_io::ObjMesh& m) { m.polygons.points.push_back(1); }, "points that are not triples"},
      {[](myo_io::ObjMesh& m) { m.polygons.vertex_counts = {4}; }, "corner counts that do not match the vertex indices"},
      {[](myo_io::ObjMesh& m) { m.polygons.vertices[2] = 3; }, "a vertex index out of range"},
      {[](myo_io::ObjMesh& m) { m.polygons.vertices[0] = -1; }, "a vertex index out of range"},
      {[](myo_io::ObjMesh& m) { m.uv_indices.pop_back(); }, "texture indices that do not match the corners"},
      {[](myo_io::ObjMesh& m) { m.uv_indices[1] = 3; }, "a texture index out of range"},
      {[](myo_io::ObjMesh& m) { m.polygons.points[4] = std::numeric_limits<float>::infinity(); },
       "a point coordinate that is not finite"},
      {[](myo_io::ObjMesh& m) { m.uvs[5] = std::nanf(""); }, "a texture coordinate that is not finite"},
  };
  for (const auto& [broken, kind] : breaks) {
    myo_io::ObjMesh mesh = TriangleWithUvs();
    broken(mesh);
    EXPECT_EQ(myo_fuzz::FindMeshFault(mesh).kind, kind);
  }
  const myo_fuzz::Fault map = myo_fuzz::FindMapFault({0.5f, 1.0f, -std::numeric_limits<float>::infinity()});
  EXPECT_EQ(map.kind, "a value that is not a finite float");
  EXPECT_EQ(map.detail, "value 3");
  EXPECT_FALSE(myo_fuzz::FindMapFault({0.0f, -1e30f}).Found());
}

TEST(FuzzHarnessPatchesChecks, DeclaredCountsAndAcceptedFilesAreJudged) {
  auto declared = [](const std::string& text) {
    return myo_fuzz::DeclaredVertexCount(reinterpret_cast<const uint8_t*>(text.data()), text.size(), 4096);
  };
  EXPECT_EQ(declared("1\n4\n1 1 -1 2\n"), std::optional<uint32_t>(4));
  EXPECT_EQ(declared(" \t1\r\n+12 x"), std::optional<uint32_t>(12));
  EXPECT_EQ(declared("x 4096"), std::optional<uint32_t>(4096));
  for (const char* text : {"", "1", "1\n", "1 4096x", "1 -4", "1 4097", "1 99999999999999999999999", "1 +"})
    EXPECT_EQ(declared(text), std::nullopt) << text;

  EXPECT_FALSE(myo_fuzz::FindPatchesFault(2, {1, -1}, {0.5f}).Found());
  EXPECT_EQ(myo_fuzz::FindPatchesFault(3, {1, -1}, {0.5f}).kind, "ids that are not one per vertex");
  EXPECT_EQ(myo_fuzz::FindPatchesFault(2, {1, -1}, {}).kind, "no fiber value");
  const myo_fuzz::Fault nan = myo_fuzz::FindPatchesFault(1, {1}, {0.5f, std::nanf("")});
  EXPECT_EQ(nan.kind, "a fiber with a value that is not a finite float");
  EXPECT_EQ(nan.detail, "value 2");
}

TEST(FuzzHarnessSceneChecks, ReadScenesPassAndUnplayableOnesAreNamed) {
  ScratchDirectory scratch;
  for (const char* folder : {"meshes", "maps"})
    fs::copy(kSource + "/examples/forearm/" + folder, scratch.path() / folder);
  fs::copy(kSource + "/fuzz/seeds/scene_reader/node_chain.json", scratch.path() / "scene.json");
  myo_app::Scene read;
  std::string error;
  ASSERT_TRUE(myo_app::ReadScene((scratch.path() / "scene.json").string(), read, error)) << error;
  ASSERT_EQ(read.nodes.size(), 2u);
  ASSERT_EQ(read.nodes[0].name, "flex");  // the skin reads the muscle's output
  EXPECT_FALSE(myo_fuzz::FindSceneFault(read).Found()) << myo_fuzz::FindSceneFault(read).kind;

  myo_app::Scene swapped = read;
  std::swap(swapped.nodes[0], swapped.nodes[1]);
  swapped.index["skin"] = 0;
  swapped.index["flex"] = 1;
  EXPECT_EQ(myo_fuzz::FindSceneFault(swapped).kind, "a node evaluated before a node whose output it reads");

  myo_app::Scene short_map = read;
  short_map.nodes[1].maps[0].values.pop_back();
  EXPECT_EQ(myo_fuzz::FindSceneFault(short_map).kind, "a map whose size does not match its mesh");

  myo_app::Scene infinite = read;
  infinite.nodes[0].maps[0].values[3] = std::numeric_limits<float>::infinity();
  EXPECT_EQ(myo_fuzz::FindSceneFault(infinite).kind, "a map with a value that is not a finite float");

  myo_app::Scene untyped = read;
  untyped.nodes[1].type = nullptr;
  EXPECT_EQ(myo_fuzz::FindSceneFault(untyped).kind, "a node without a type");

  myo_app::Scene empty;
  EXPECT_EQ(myo_fuzz::FindSceneFault(empty).kind, "no nodes");
}

}  // namespace
