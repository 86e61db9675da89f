#include "app/run/run_tables.h"

#include <algorithm>
#include <sstream>

#include "app/run/scene_run.h"
#include "core/state/state_archive.h"

namespace myo_app {

namespace {

std::string Csv(double value) {
  std::ostringstream out;
  out.precision(9);
  out << value;
  return out.str();
}

template <class Archive>
void OptionalNumber(Archive& a, myo_core::ArchiveRecord<Archive, std::optional<double>>& number) {
  bool present = number.has_value();
  double value = number.value_or(0.0);
  a.Value(present);
  a.Value(value);
  if constexpr (Archive::kLoading) number = present ? std::optional<double>(value) : std::nullopt;
}

template <class Archive>
void NodeTotalsFields(Archive& a, myo_core::ArchiveRecord<Archive, NodeTotals>& totals) {
  a.Value(totals.frames);
  a.Value(totals.steps);
  a.Value(totals.evaluate_ms_sum);
  a.Value(totals.evaluate_ms_max);
  a.Value(totals.max_speed);
  OptionalNumber(a, totals.min_volume_ratio);
  OptionalNumber(a, totals.max_volume_ratio);
}

}  // namespace

RunTables::RunTables(const std::vector<std::unique_ptr<NodeRunner>>& runners)
    : runners_(runners), figures_("frame,node,stepped,evaluate_ms,iterations,volume_ratio,max_speed\n") {
  std::string header;
  for (const auto& runner : runners_)
    for (const std::string& output : runner->ValueOutputs()) {
      value_columns_.emplace_back(runner.get(), output);
      header += "," + runner->node().name + "." + output;
    }
  if (!header.empty()) values_ = "frame" + header + "\n";
}

void RunTables::Record(double frame, const NodeRunner& runner) {
  const NodeFigures& f = runner.figures();
  NodeTotals& totals = totals_[runner.node().name];
  ++totals.frames;
  totals.steps += f.stepped ? 1 : 0;
  totals.evaluate_ms_sum += f.evaluate_ms;
  totals.evaluate_ms_max = std::max(totals.evaluate_ms_max, f.evaluate_ms);
  totals.max_speed = std::max(totals.max_speed, f.max_speed);
  if (f.volume_ratio) {
    totals.min_volume_ratio = std::min(totals.min_volume_ratio.value_or(*f.volume_ratio), *f.volume_ratio);
    totals.max_volume_ratio = std::max(totals.max_volume_ratio.value_or(*f.volume_ratio), *f.volume_ratio);
  }
  figures_ += FrameTag(frame) + "," + runner.node().name + "," + (f.stepped ? "1" : "0") + "," + Csv(f.evaluate_ms) +
              "," + std::to_string(f.iterations) + "," + (f.volume_ratio ? Csv(*f.volume_ratio) : "") + "," +
              Csv(f.max_speed) + "\n";
}

void RunTables::RecordValues(double frame) {
  if (values_.empty()) return;
  values_ += FrameTag(frame);
  for (const auto& [runner, output] : value_columns_) values_ += "," + Csv(runner->OutputValue(output));
  values_ += "\n";
}

NodeTotals RunTables::Totals(const std::string& node) const {
  const auto it = totals_.find(node);
  return it != totals_.end() ? it->second : NodeTotals();
}

template <class Archive, class Self>
void RunTables::StateFields(Archive& a, Self& self) {
  a.Section("tables");
  a.Text(self.figures_);
  a.Text(self.values_);
  // Every node's totals, rows or not, in the scene's order.
  for (const auto& runner : self.runners_) {
    if constexpr (Archive::kLoading) {
      NodeTotalsFields(a, self.totals_[runner->node().name]);
    } else {
      NodeTotalsFields(a, self.Totals(runner->node().name));
    }
  }
}

void RunTables::SaveState(myo_core::StateWriter& writer) const { StateFields(writer, *this); }

void RunTables::LoadState(myo_core::StateReader& reader) { StateFields(reader, *this); }

}  // namespace myo_app
