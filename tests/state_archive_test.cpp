// Saved states: one field list serves saving and loading; the envelope
// refuses files of another kind or version, truncated, lengthened or damaged
// ones with the reason; a reader never reads past its bytes nor believes a
// size that cannot fit them; a node's state survives the round trip.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/evaluator/edge_evaluator.h"
#include "core/maps/map_store.h"
#include "core/muscle/muscle_deformer.h"
#include "scenes/muscle_meshes.h"
#include "support/solver_runs.h"
#include "support/test_geometry.h"
#include "core/state/state_archive.h"
#include "core/state/state_checksum.h"
#include "core/state/state_envelope.h"

namespace {

using myo_core::StateReader;
using myo_core::StateWriter;

struct Sample {
  float time = 0.0f;
  bool on = false;
  std::vector<int32_t> ids;
  std::vector<bool> flags;
  std::string name;
  std::vector<std::vector<float>> rows;
};

template <class Archive>
void SampleFields(Archive& a, myo_core::ArchiveRecord<Archive, Sample>& s) {
  a.Section("sample");
  a.Value(s.time);
  a.Value(s.on);
  a.Array(s.ids);
  a.Array(s.flags);
  a.Text(s.name);
  a.Records(s.rows, [&a](auto& row) { a.Array(row); });
}

std::string Saved(const Sample& sample) {
  StateWriter writer;
  SampleFields(writer, sample);
  return writer.bytes();
}

// The reader's verdict on `bytes` read as a Sample.
std::string LoadError(const std::string& bytes) {
  StateReader reader(bytes);
  Sample sample;
  SampleFields(reader, sample);
  reader.Finish();
  return reader.error();
}

TEST(StateArchive, OneFieldListSavesAndLoadsEveryKindOfField) {
  Sample sample;
  sample.time = 1.5f;
  sample.on = true;
  sample.ids = {3, -1, 7};
  sample.flags = {true, false, true};
  sample.name = "biceps";
  sample.rows = {{1.0f, 2.0f}, {}, {3.0f}};
  const std::string bytes = Saved(sample);
  StateReader reader(bytes);
  Sample loaded;
  loaded.ids = {9, 9, 9, 9, 9};  // replaced, not appended to
  SampleFields(reader, loaded);
  ASSERT_TRUE(reader.Finish()) << reader.error();
  EXPECT_EQ(loaded.time, 1.5f);
  EXPECT_TRUE(loaded.on);
  EXPECT_EQ(loaded.ids, sample.ids);
  EXPECT_EQ(loaded.flags, sample.flags);
  EXPECT_EQ(loaded.name, "biceps");
  EXPECT_EQ(loaded.rows, sample.rows);
}

TEST(StateArchive, AReaderRefusesWhatDoesNotHoldTogetherAndNeverReadsPastTheEnd) {
  Sample sample;
  sample.ids = {1, 2, 3};
  sample.name = "x";
  const std::string bytes = Saved(sample);
  // Every cut short of the end is refused, never read beyond.
  for (std::size_t size = 0; size < bytes.size(); ++size)
    EXPECT_NE(LoadError(bytes.substr(0, size)), "") << size;
  EXPECT_EQ(LoadError(bytes + "?"), "1 bytes follow the end of the state (in sample)");

  // A count that cannot fit what is left is refused before anything is
  // allocated for it.
  std::string huge = bytes;
  const std::size_t ids_count = 8 + 6 + 4 + 1;  // section text, time, flag
  const uint64_t absurd = uint64_t{1} << 60;
  std::memcpy(&huge[ids_count], &absurd, sizeof absurd);
  EXPECT_EQ(LoadError(huge).rfind("a size of 1152921504606846976 items does not fit the ", 0), 0u) << LoadError(huge);

  std::string flag = bytes;
  flag[8 + 6 + 4] = 2;
  EXPECT_EQ(LoadError(flag), "a flag holds 2 (in sample)");

  StateWriter other;
  other.Section("sensor");
  EXPECT_EQ(LoadError(other.bytes()), "\"sample\" expected, \"sensor\" found");
}

TEST(StateEnvelope, RefusesOtherFilesVersionsTruncationAndDamageWithTheReason) {
  const std::string state = "the state of every node";
  const std::string file = myo_core::SealState(state);
  ASSERT_EQ(file.size(), myo_core::kStateHeaderSize + state.size());
  std::string error;
  ASSERT_TRUE(myo_core::OpenState(file, error)) << error;
  EXPECT_EQ(file.substr(myo_core::kStateHeaderSize), state);

  auto refusal = [](const std::string& bytes) {
    std::string why;
    EXPECT_FALSE(myo_core::OpenState(bytes, why));
    return why;
  };
  EXPECT_EQ(refusal("{\"timeline\": {}}\n............................"), "not a myoforge state file");
  EXPECT_EQ(refusal(file.substr(0, 20)), "truncated: 20 bytes, less than its 24-byte header");
  EXPECT_EQ(refusal(file.substr(0, file.size() - 5)),
            "truncated: 18 bytes of state where its header announces 23");
  EXPECT_EQ(refusal(file + "xy"), "lengthened: 25 bytes of state where its header announces 23");
  std::string damaged = file;
  damaged[myo_core::kStateHeaderSize + 4] ^= 0x10;
  EXPECT_EQ(refusal(damaged), "damaged: its checksum does not match its contents");
  std::string later = file;
  later[8] = 7;
  EXPECT_EQ(refusal(later),
            "format version 7; this myoforge reads version " + std::to_string(myo_core::kStateFormatVersion));
}

TEST(StateChecksum, Crc32AndFnv1aGiveTheirKnownValuesInPiecesOrWhole) {
  EXPECT_EQ(myo_core::Crc32("123456789", 9), 0xcbf43926u);
  EXPECT_EQ(myo_core::Crc32("", 0), 0u);
  // Eight bytes at a time and the tail byte by byte agree with one piece.
  const std::string text = "the state of every node, saved after frame 40";
  for (std::size_t cut = 0; cut <= text.size(); ++cut)
    EXPECT_EQ(myo_core::Crc32(text.data() + cut, text.size() - cut, myo_core::Crc32(text.data(), cut)),
              myo_core::Crc32(text.data(), text.size()))
        << cut;
  EXPECT_EQ(myo_core::Fnv1a64(""), 14695981039346656037ull);
  EXPECT_EQ(myo_core::HashText(myo_core::Fnv1a64("a")), "af63dc4c8601ec8c");
  EXPECT_EQ(myo_core::Fnv1a64("ab"), myo_core::Fnv1a64("b", 1, myo_core::Fnv1a64("a")));
}

TEST(ObjectStates, MapsComeBackAsTheyStoodAndReplaceWhatWasThere) {
  myo_core::MapStore maps;
  maps.SetAll("list", "weights", 2, {0.5f, 0.25f});
  maps.SetAll("", "tendons", 0, {1, 2, 3, 4, 5, 6}, 3);
  StateWriter writer;
  maps.SaveState(writer);
  StateReader reader(writer.bytes());
  myo_core::MapStore loaded;
  loaded.SetAll("list", "stale", 0, {9.0f});
  loaded.LoadState(reader);
  ASSERT_TRUE(reader.Finish()) << reader.error();
  std::vector<float> values;
  loaded.ReadFloats("list", "weights", 2, 2, 0.0f, values);
  EXPECT_EQ(values, (std::vector<float>{0.5f, 0.25f}));
  EXPECT_EQ(loaded.ElementCount("list", "stale", 0), 0u);
  loaded.ReadVectors("", "tendons", {"x", "y", "z"}, 0, 2, 0.0f, values);
  EXPECT_EQ(values, (std::vector<float>{1, 2, 3, 4, 5, 6}));
}

TEST(ObjectStates, ARestoredMuscleSavesTheSameBytesAndAnswersClosestPointsAsBuilt) {
  myo_test::TimeLine<myo_core::MuscleDeformer, myo_core::MuscleFrameValues> muscle(
      myo_test::BuildMesh(myo_scenes::MakeSpindle(6, 8, 10.0f, 2.0f)));
  muscle.frame.gravity = 980.0f;
  for (int frame = 1; frame <= 3; ++frame) muscle.At(static_cast<float>(frame));
  StateWriter writer;
  muscle.deformer.SaveState(writer);

  myo_core::MuscleDeformer restored;
  StateReader reader(writer.bytes());
  restored.LoadState(reader);
  ASSERT_TRUE(reader.Finish()) << reader.error();
  StateWriter again;
  restored.SaveState(again);
  EXPECT_TRUE(again.bytes() == writer.bytes());
  // The query, built again from its points, finds what the built one finds.
  for (const float p : {-3.0f, 0.5f, 4.0f}) {
    const float point[3] = {p, 1.5f, -0.7f};
    myo_core::ClosestPointHit built, rebuilt;
    ASSERT_TRUE(muscle.deformer.node().reference_mesh_query_.Closest(point, -1.0f, built));
    ASSERT_TRUE(restored.node().reference_mesh_query_.Closest(point, -1.0f, rebuilt));
    EXPECT_EQ(rebuilt.triangle, built.triangle);
    EXPECT_EQ(rebuilt.distance, built.distance);
  }
}

TEST(ObjectStates, AnEvaluatorTopologyThatWouldReachOutsideItsVerticesIsRefused) {
  myo_core::EdgeEvaluator evaluator;
  StateWriter edges;
  evaluator.SaveState(edges);
  std::string edge_bytes = edges.bytes();
  const std::size_t count_at = 8 + std::strlen("edge evaluator");
  const int32_t vertices = 5;  // five vertices, but no topology for them
  std::memcpy(&edge_bytes[count_at], &vertices, sizeof vertices);
  StateReader edge_reader(edge_bytes);
  evaluator.LoadState(edge_reader);
  EXPECT_EQ(edge_reader.error(), "the edge evaluator's topology does not fit its 5 vertices (in edge evaluator)");
}

}  // namespace
