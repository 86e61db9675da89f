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
#include "core/mesh/closest_point_query.h"
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
  EXPECT_EQ(refusal(later), "format version 7; this myoforge reads version 1");
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

TEST(ObjectStates, MapsQueriesAndEvaluatorsComeBackAsTheyWere) {
  myo_core::MapStore maps;
  maps.SetAll("list", "weights", 2, {0.5f, 0.25f});
  maps.SetAll("", "tendons", 0, {1, 2, 3, 4, 5, 6}, 3);
  StateWriter writer;
  maps.SaveState(writer);

  // A query on two triangles answers the same after the round trip.
  myo_core::ClosestPointQuery query;
  query.Build({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0}, {0, 1, 2, 1, 3, 2}, {2});
  query.SaveState(writer);

  StateReader reader(writer.bytes());
  myo_core::MapStore loaded_maps;
  loaded_maps.SetAll("list", "stale", 0, {9.0f});
  loaded_maps.LoadState(reader);
  myo_core::ClosestPointQuery loaded_query;
  loaded_query.LoadState(reader);
  ASSERT_TRUE(reader.Finish()) << reader.error();

  std::vector<float> values;
  loaded_maps.ReadFloats("list", "weights", 2, 2, 0.0f, values);
  EXPECT_EQ(values, (std::vector<float>{0.5f, 0.25f}));
  EXPECT_EQ(loaded_maps.ElementCount("list", "stale", 0), 0u);
  loaded_maps.ReadVectors("", "tendons", {"x", "y", "z"}, 0, 2, 0.0f, values);
  EXPECT_EQ(values, (std::vector<float>{1, 2, 3, 4, 5, 6}));
  const float p[3] = {0.9f, 0.8f, 0.3f};
  myo_core::ClosestPointHit before, after;
  ASSERT_TRUE(query.Closest(p, -1.0f, before));
  ASSERT_TRUE(loaded_query.Closest(p, -1.0f, after));
  EXPECT_EQ(after.triangle, before.triangle);
  EXPECT_EQ(after.distance, before.distance);
}

TEST(ObjectStates, AHierarchyOrTopologyThatWouldLoopOrReachOutsideIsRefused) {
  myo_core::ClosestPointQuery query;
  std::vector<float> points;
  std::vector<int32_t> triangles, counts;
  // A strip of 40 triangles: deep enough for internal nodes.
  for (int i = 0; i <= 20; ++i) points.insert(points.end(), {float(i), 0, 0, float(i), 1, 0});
  for (int i = 0; i < 20; ++i) {
    triangles.insert(triangles.end(), {2 * i, 2 * i + 2, 2 * i + 1, 2 * i + 1, 2 * i + 2, 2 * i + 3});
    counts.push_back(2);
  }
  query.Build(points, triangles, counts);
  StateWriter writer;
  query.SaveState(writer);
  std::string bytes = writer.bytes();
  // The root is written right after the section name: point it at a node
  // that does not exist.
  const std::size_t root = 8 + std::strlen("closest point query");
  const int32_t missing[2] = {1000, 0};
  std::memcpy(&bytes[root], missing, sizeof missing);
  StateReader reader(bytes);
  myo_core::ClosestPointQuery loaded;
  loaded.LoadState(reader);
  EXPECT_EQ(reader.error(), "the closest-point hierarchy does not hold together (in closest point query)");
  EXPECT_TRUE(loaded.Empty());

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
