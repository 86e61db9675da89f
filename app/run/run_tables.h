#pragma once
// The tables a run grows frame by frame beside its frames: figures.csv (one
// row per node and written frame), values.csv (one row per written frame,
// a column per single value output of the nodes that are no deformers) and
// each node's totals for summary.json. They are saved with a checkpoint, so
// that a run that goes on from one writes the rows of the frames before it.

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/run/node_runner.h"

namespace myo_core {
class StateReader;
class StateWriter;
}  // namespace myo_core

namespace myo_app {

// Per node: what the summary reports.
struct NodeTotals {
  std::size_t frames = 0;
  std::size_t steps = 0;
  double evaluate_ms_sum = 0.0;
  double evaluate_ms_max = 0.0;
  double max_speed = 0.0;
  std::optional<double> min_volume_ratio;  // nodes with a volume row
  std::optional<double> max_volume_ratio;
};

class RunTables {
 public:
  explicit RunTables(const std::vector<std::unique_ptr<NodeRunner>>& runners);

  // The row of a node at a written frame, and its totals.
  void Record(double frame, const NodeRunner& runner);
  // The row of single values at a written frame; nothing when no node has one.
  void RecordValues(double frame);

  const std::string& figures() const { return figures_; }
  // values.csv, or empty when no node has single value outputs.
  const std::string& values() const { return values_; }
  // A node's totals; zeros for a node without rows.
  NodeTotals Totals(const std::string& node) const;

  void SaveState(myo_core::StateWriter& writer) const;
  void LoadState(myo_core::StateReader& reader);

 private:
  template <class Archive, class Self>
  static void StateFields(Archive& archive, Self& self);

  const std::vector<std::unique_ptr<NodeRunner>>& runners_;
  // The columns of values.csv after the frame: a node and one of its outputs.
  std::vector<std::pair<const NodeRunner*, std::string>> value_columns_;
  std::string figures_;
  std::string values_;
  std::map<std::string, NodeTotals> totals_;
};

}  // namespace myo_app
