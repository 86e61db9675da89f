// The paint protocol as an external brush drives it: set-up, stamps, flood,
// the end of a stroke that records the maps, and undo that brings the record
// back into the live arrays.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/paint/paint_session.h"
#include "core/paint/paint_vocabulary.h"
#include "core/paint/weight_maps.h"
#include "support/log_capture.h"

using namespace myo_core;

namespace {

// Four vertices on a ring: each has the two beside it as neighbours.
constexpr uint32_t kPoints = 4;

// A deformer family over plain arrays, one per map of its table.
class FakeSolver : public PaintableSolver {
 public:
  FakeSolver(const std::vector<WeightMapInfo>& maps, uint32_t influences) : maps_(maps), influences_(influences) {
    for (const WeightMapInfo& map : maps_) {
      const uint32_t blocks = map.MultiInfluence() ? influences_ : 1;
      arrays_[map.weights_type].assign(static_cast<size_t>(blocks) * kPoints * map.Width(), map.default_value);
    }
    for (uint32_t v = 0; v < kPoints; ++v) {
      offsets_.push_back(static_cast<int32_t>(2 * v));
      counts_.push_back(2);
      neighbors_.push_back(static_cast<int32_t>((v + kPoints - 1) % kPoints));
      neighbors_.push_back(static_cast<int32_t>((v + 1) % kPoints));
    }
  }

  const std::vector<WeightMapInfo>& WeightMaps() const override { return maps_; }
  const char* TypeName() const override { return "FakeDeformer"; }
  std::vector<float>* LiveArray(int32_t type) override {
    auto found = arrays_.find(type);
    return found == arrays_.end() ? nullptr : &found->second;
  }
  uint32_t SolverInfluences(InfluenceKind kind) override { return kind == InfluenceKind::kNone ? 0 : influences_; }
  uint32_t PointCount() override { return kPoints; }
  bool IsEmpty() override { return false; }
  VertexNeighborsView Neighbors() override { return {&offsets_, &counts_, &neighbors_}; }
  void ProjectVertexFiber(uint32_t vertex, float direction[3]) override {
    projected_.push_back(vertex);
    for (int k = 0; k < 3; ++k) arrays_[kWeightsFibers][3 * vertex + k] = 2.0f * direction[k];
  }
  void SetConsolidateFibers(bool flag) override { consolidate_fibers_ = flag; }

  std::vector<float>& Array(int32_t type) { return arrays_.at(type); }

  std::vector<uint32_t> projected_;
  bool consolidate_fibers_ = false;

 private:
  std::vector<WeightMapInfo> maps_;
  uint32_t influences_;
  std::map<int32_t, std::vector<float>> arrays_;
  std::vector<int32_t> offsets_, counts_, neighbors_;
};

// The host's record of the maps with an undo journal, as a batch of plug
// changes would keep it: one entry per (map, list element).
class FakeRecord : public MapRecord, public MapWriter {
 public:
  explicit FakeRecord(uint32_t influences) {
    for (uint32_t k = 0; k < influences; ++k) connected_.push_back(static_cast<int32_t>(2 * k + 1));
  }

  std::vector<int32_t> ConnectedInfluences(InfluenceKind kind) override {
    return kind == InfluenceKind::kNone ? std::vector<int32_t>{} : connected_;
  }
  void ReadFloats(const WeightMapInfo& map, uint32_t list_index, uint32_t offset, uint32_t count, uint32_t total,
                  float default_value, std::vector<float>& out) override {
    if (total < offset + count) return;
    out.resize(total);
    const auto found = values_.find({map.weights_type, list_index});
    for (uint32_t i = 0; i < count; ++i)
      out[offset + i] = found != values_.end() && i < found->second.size() ? found->second[i] : default_value;
  }
  void ReadVectors(const WeightMapInfo& map, uint32_t list_index, uint32_t count, float default_value,
                   std::vector<float>& out) override {
    ReadFloats(map, list_index, 0, count * map.Width(), count * map.Width(), default_value, out);
  }
  int32_t CurrentInfluence() override { return current_influence_; }
  void SetCurrentInfluence(int32_t influence) override { current_influence_ = influence; }

  void Write(const WeightMapInfo& map, uint32_t blocks, const std::vector<float>& values, uint32_t points) override {
    const uint32_t width = map.Width();
    for (uint32_t b = 0; b < blocks; ++b) {
      const uint32_t list_index = map.MultiInfluence() ? static_cast<uint32_t>(connected_.at(b)) : b;
      const Key key{map.weights_type, list_index};
      journal_.emplace_back(key, values_.count(key) ? values_[key] : std::vector<float>{});
      const auto first = values.begin() + static_cast<size_t>(b) * points * width;
      values_[key].assign(first, first + static_cast<size_t>(points) * width);
    }
  }
  // Undoes every write since the last call.
  void Undo() {
    for (auto entry = journal_.rbegin(); entry != journal_.rend(); ++entry) {
      if (entry->second.empty())
        values_.erase(entry->first);
      else
        values_[entry->first] = entry->second;
    }
    journal_.clear();
  }
  const std::vector<float>& Recorded(int32_t type, uint32_t list_index = 0) const {
    return values_.at({type, list_index});
  }
  bool HasRecord(int32_t type) const {
    return std::any_of(values_.begin(), values_.end(), [type](const auto& entry) { return entry.first.first == type; });
  }
  void Record(int32_t type, uint32_t list_index, std::vector<float> values) { values_[{type, list_index}] = values; }

 private:
  using Key = std::pair<int32_t, uint32_t>;
  std::vector<int32_t> connected_;
  std::map<Key, std::vector<float>> values_;
  std::vector<std::pair<Key, std::vector<float>>> journal_;
  int32_t current_influence_ = 0;
};

class FakeDisplay : public WeightsDisplay {
 public:
  std::vector<float>& Weights() override { return weights_; }
  void SetShowFibers(bool show) override { show_fibers_ = show; }
  void FlipTrigger() override {}

  std::vector<float> weights_;
  bool show_fibers_ = false;
};

// A paint run on one deformer: the set-up the tool does before its strokes.
struct PaintRun {
  PaintRun(const std::vector<WeightMapInfo>& maps, const std::string& type, uint32_t influences = 2)
      : solver(maps, influences), record(influences), deformer(solver, record, kWeightsAttachmentsToGeometry) {
    EXPECT_TRUE(SetPaintDeformerType(context, type));
    context.point_count_ = deformer.GetNumPoints();
  }
  void Select(const std::string& map) { ASSERT_TRUE(SelectPaintWeights(context, deformer, display, map)); }
  void Stroke(int32_t modifiers, const std::vector<std::pair<uint32_t, double>>& stamps) {
    BeginPaintStroke(context, deformer, display, modifiers);
    const double none[3] = {0.0, 0.0, 0.0};
    for (const auto& [vertex, strength] : stamps) ApplyPaintStamp(context, deformer, display, vertex, strength, none);
    ASSERT_TRUE(FinishPaintStroke(context, deformer, record));
  }

  FakeSolver solver;
  FakeRecord record;
  PaintableDeformer deformer;
  FakeDisplay display;
  PaintContext context;
};

bool Logged(const myo_test::LogCapture& log, const std::string& text) {
  const std::vector<std::string> lines = log.lines();
  return std::any_of(lines.begin(), lines.end(),
                     [&text](const std::string& line) { return line.find(text) != std::string::npos; });
}

}  // namespace

TEST(PaintSetupTest, OfferedNamesAreMapsAndUnknownTypesAndMapsAreRefused) {
  for (const std::string& type : PaintDeformerTypes())
    for (const std::string& name : *PaintableAttributeNames(type)) EXPECT_TRUE(WeightsTypeByName(name)) << name;
  EXPECT_FALSE(WeightsTypeByName("Slide on segment")) << "names match exactly";

  myo_test::LogCapture log;
  PaintContext context;
  EXPECT_FALSE(SetPaintDeformerType(context, "MyoSensorDistance"));
  EXPECT_TRUE(Logged(log, "Could not find a valid deformer with the given type name: MyoSensorDistance"));
  EXPECT_TRUE(context.deformer_type_.empty());

  PaintRun run(SkinWeightMaps(), "MyoSkin");
  run.display.weights_ = {0.25f};
  EXPECT_FALSE(SelectPaintWeights(run.context, run.deformer, run.display, "Fiber"));
  EXPECT_TRUE(Logged(log, "Could not find custom paintable attributes"));
  EXPECT_EQ(run.display.weights_, std::vector<float>{0.25f});
}

TEST(PaintStampTest, AddModeStartsEachStampFromTheLiveArray) {
  PaintRun run(SkinWeightMaps(), "MyoSkin");
  std::vector<float>& masses = run.solver.Array(kWeightsMasses);
  masses.assign(kPoints, 0.5f);
  run.Select("Masses");
  run.context.paint_mode_ = kPaintAdd;
  run.context.ui_value_ = 0.2f;
  run.Stroke(0, {{1, 1.0}, {1, 1.0}});
  // Two stamps on one vertex in one stroke give 0.7, not 0.9.
  EXPECT_FLOAT_EQ(masses[1], 0.7f);
  EXPECT_EQ(masses[0], 0.5f);
  EXPECT_FLOAT_EQ(run.record.Recorded(kWeightsMasses)[1], 0.7f);
  // Later strokes start from the new live value, up to 1.
  run.Stroke(0, {{1, 1.0}});
  run.Stroke(0, {{1, 1.0}});
  EXPECT_EQ(masses[1], 1.0f);
}

TEST(PaintStampTest, ModifierKeysReplaceScaleAndSmooth) {
  PaintRun run(SkinWeightMaps(), "MyoSkin");
  std::vector<float>& masses = run.solver.Array(kWeightsMasses);
  masses = {0.0f, 0.4f, 0.8f, 0.2f};
  run.Select("Masses");
  run.context.ui_value_ = 0.2f;

  // Shift with Ctrl: the tool's own mode (replace) with the value inverted.
  run.Stroke(kModifierShift | kModifierCtrl, {{0, 0.5}});
  EXPECT_EQ(run.context.active_paint_mode_, kPaintReplace);
  EXPECT_FLOAT_EQ(masses[0], static_cast<float>(0.5 * 0.0 + 0.8 * 0.5));

  // Shift alone smooths: the mean of the vertex and its two neighbours.
  masses = {0.0f, 0.4f, 0.8f, 0.2f};
  run.Stroke(kModifierShift, {{2, 1.0}});
  EXPECT_FLOAT_EQ(masses[2], (0.8f + 0.4f + 0.2f) / 3.0f);

  // Scale mode: the brush starts from 1, and a stamp scales the live value.
  masses = {0.0f, 0.4f, 0.8f, 0.2f};
  run.context.paint_mode_ = kPaintScale;
  BeginPaintStroke(run.context, run.deformer, run.display, 0);
  EXPECT_EQ(GetPaintBaseValue(run.context, run.deformer.DisplayWeight(), 1).value, 1.0f);
  EXPECT_FALSE(GetPaintBaseValue(run.context, run.deformer.DisplayWeight(), 4).present);
  const double none[3] = {0, 0, 0};
  ApplyPaintStamp(run.context, run.deformer, run.display, 2, 0.5, none);
  EXPECT_FLOAT_EQ(run.display.weights_[2], static_cast<float>(0.2 * 0.5 * 0.8 + 0.5 * 0.8));
}

TEST(PaintStampTest, AStampPastTheEndOfTheInfluenceBlockDoesNothing) {
  PaintRun run(MuscleWeightMaps(), "MyoMuscle");
  run.Select("Slide On Segment");
  SelectPaintInfluence(run.context, run.deformer, run.display, 1);
  EXPECT_EQ(run.record.CurrentInfluence(), 1);
  BeginPaintStroke(run.context, run.deformer, run.display, 0);
  const std::vector<float> before = run.display.weights_;
  const double none[3] = {0, 0, 0};
  // Vertex 5 lies inside the display copy (8 values), but 5 + 4 does not.
  ApplyPaintStamp(run.context, run.deformer, run.display, 5, 1.0, none);
  EXPECT_EQ(run.display.weights_, before);
  ApplyPaintStamp(run.context, run.deformer, run.display, 3, 1.0, none);
  EXPECT_EQ(run.display.weights_[kPoints + 3], 1.0f);
  EXPECT_EQ(run.display.weights_[3], before[3]) << "only the influence on display is painted";
}

TEST(PaintFiberTest, StampsProjectAndTendonsOrFibersChooseWhereFibersComeFrom) {
  PaintRun run(MuscleWeightMaps(), "MyoMuscle");
  run.Select("Tendons");
  run.Stroke(0, {{0, 1.0}});
  EXPECT_TRUE(run.solver.consolidate_fibers_);

  run.Select("Fibers");
  EXPECT_TRUE(run.display.show_fibers_);
  EXPECT_TRUE(BeginPaintStroke(run.context, run.deformer, run.display, 0)) << "fibers take world directions";
  const double direction[3] = {0.0, 3.0, 4.0};
  ApplyPaintStamp(run.context, run.deformer, run.display, 2, 1.0, direction);
  EXPECT_FLOAT_EQ(run.display.weights_[7], 0.6f);
  EXPECT_FLOAT_EQ(run.display.weights_[8], 0.8f);
  EXPECT_EQ(run.solver.projected_, std::vector<uint32_t>{2});
  ASSERT_TRUE(FinishPaintStroke(run.context, run.deformer, run.record));
  EXPECT_FALSE(run.solver.consolidate_fibers_);
  EXPECT_EQ(run.record.Recorded(kWeightsFibers).size(), 3 * kPoints);
}

TEST(PaintFloodTest, ModesInSinglePrecisionAndUnknownModes) {
  myo_test::LogCapture log;
  PaintRun run(SkinWeightMaps(), "MyoSkin");
  run.solver.Array(kWeightsStretchingResistance) = {0.0f, 0.5f, 1.0f, 0.25f};
  run.Select("Stretching Resistance");
  BeginPaintStroke(run.context, run.deformer, run.display, 0);
  run.context.ui_value_ = 0.5f;
  run.context.ui_opacity_ = 0.5f;
  run.context.paint_mode_ = kPaintReplace;
  ASSERT_TRUE(FloodPaint(run.context, run.deformer, run.display));
  EXPECT_EQ(run.display.weights_, (std::vector<float>{0.25f, 0.5f, 0.75f, 0.375f}));
  run.context.paint_mode_ = kPaintAdd;
  ASSERT_TRUE(FloodPaint(run.context, run.deformer, run.display));
  EXPECT_EQ(run.display.weights_, (std::vector<float>{0.25f, 0.75f, 1.0f, 0.5f}));
  // The flood changes the display copy only, until the stroke is finished.
  EXPECT_EQ(run.solver.Array(kWeightsStretchingResistance)[0], 0.0f);

  run.context.paint_mode_ = 7;
  EXPECT_FALSE(FloodPaint(run.context, run.deformer, run.display));
  EXPECT_TRUE(Logged(log, "Unrecognized paint mode during flood operation."));
}

TEST(PaintFinishTest, UndoOfAHardConstraintsStrokeRestoresAllThreeMaps) {
  PaintRun run(SkinWeightMaps(), "MyoSkin");
  // Stored maps: hard 0.5, soft 0.5, slide 0 everywhere.
  for (int32_t type : {kWeightsHardConstraints, kWeightsSoftConstraints, kWeightsSlideConstraints}) {
    const float value = type == kWeightsSlideConstraints ? 0.0f : 0.5f;
    run.record.Record(type, 0, std::vector<float>(kPoints, value));
    run.solver.Array(type).assign(kPoints, value);
  }
  run.Select("Hard Constraints");
  run.context.ui_value_ = 0.9f;
  run.Stroke(0, {{0, 1.0}});
  // Hard wins: soft makes room, in the live arrays and in the record.
  EXPECT_FLOAT_EQ(run.solver.Array(kWeightsHardConstraints)[0], 0.9f);
  EXPECT_NEAR(run.solver.Array(kWeightsSoftConstraints)[0], 0.1f, 1e-6f);
  EXPECT_NEAR(run.record.Recorded(kWeightsSoftConstraints)[0], 0.1f, 1e-6f);
  EXPECT_EQ(run.record.Recorded(kWeightsSlideConstraints)[0], 0.0f);

  run.record.Undo();
  ReloadPaintedWeights(run.context, run.deformer, run.display, kWeightsHardConstraints);
  for (int32_t type : {kWeightsHardConstraints, kWeightsSoftConstraints})
    EXPECT_EQ(run.solver.Array(type), std::vector<float>(kPoints, 0.5f)) << type;
  EXPECT_EQ(run.solver.Array(kWeightsSlideConstraints), std::vector<float>(kPoints, 0.0f));
  EXPECT_EQ(run.display.weights_, std::vector<float>(kPoints, 0.5f));
}

TEST(PaintFinishTest, MultiInfluenceMapsAreNormalisedAndEachBlockRecorded) {
  PaintRun run(MuscleWeightMaps(), "MyoMuscle");
  std::vector<float>& segments = run.solver.Array(kWeightsSlideOnSegment);
  segments.assign(2 * kPoints, 0.5f);
  run.Select("Slide On Segment");
  SelectPaintInfluence(run.context, run.deformer, run.display, 0);
  run.context.ui_value_ = 0.9f;
  run.Stroke(0, {{2, 1.0}});
  EXPECT_FLOAT_EQ(segments[2], 0.9f);
  EXPECT_NEAR(segments[kPoints + 2], 0.1f, 1e-6f);
  EXPECT_EQ(segments[1], 0.5f) << "a vertex summing to 1 is left alone";
  // One block per connected influence, at its logical index.
  EXPECT_NEAR(run.record.Recorded(kWeightsSlideOnSegment, 3)[2], 0.1f, 1e-6f);
  EXPECT_FLOAT_EQ(run.record.Recorded(kWeightsSlideOnSegment, 1)[2], 0.9f);
}

TEST(PaintFinishTest, AStrokeOnARebuiltDeformerIsRefusedAndChangesNothing) {
  myo_test::LogCapture log;
  PaintRun run(SkinWeightMaps(), "MyoSkin");
  run.Select("Masses");
  BeginPaintStroke(run.context, run.deformer, run.display, 0);
  run.solver.Array(kWeightsMasses).assign(kPoints + 2, 0.3f);
  EXPECT_FALSE(FinishPaintStroke(run.context, run.deformer, run.record));
  EXPECT_TRUE(Logged(log, "rebuilt during the stroke"));
  EXPECT_EQ(run.solver.Array(kWeightsMasses).size(), kPoints + 2);
  EXPECT_FALSE(run.record.HasRecord(kWeightsMasses));
}
