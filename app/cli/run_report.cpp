#include "app/cli/run_report.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

namespace myo_app {

namespace {

std::string Fixed(double value, int digits) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

}  // namespace

std::string RunReport(const std::string& output_directory) {
  namespace fs = std::filesystem;
  const fs::path folder(output_directory);
  std::ifstream in(folder / "summary.json");
  const nlohmann::json summary = nlohmann::json::parse(in, nullptr, false);
  if (!in || summary.is_discarded() || !summary.is_object()) return {};
  const nlohmann::json nodes = summary.value("nodes", nlohmann::json::array());
  std::string report = "Simulated " + std::to_string(summary.value("frames_simulated", 0)) + " frames (" +
                       std::to_string(summary.value("frames_written", 0)) + " written) of " +
                       std::to_string(nodes.size()) + " nodes in " + Fixed(summary.value("seconds", 0.0), 2) + " s\n";
  std::string volumes;
  for (const nlohmann::json& node : nodes) {
    if (!node.is_object() || !node.contains("min_volume_ratio")) continue;
    volumes += (volumes.empty() ? "" : ", ") + node.value("name", std::string("?")) + " " +
               Fixed(node.value("min_volume_ratio", 0.0), 4) + " to " + Fixed(node.value("max_volume_ratio", 0.0), 4);
  }
  if (!volumes.empty()) report += "Volume ratio: " + volumes + "\n";
  const fs::path page = folder / "viewer.html";
  std::error_code ignored;
  if (fs::is_regular_file(page, ignored))
    report += "Viewer: " + page.string() + " (open it in a browser)\n";
  return report;
}

}  // namespace myo_app
