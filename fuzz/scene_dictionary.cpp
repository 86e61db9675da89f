// Prints the libFuzzer dictionary of the scene reader's target: the keys of
// the scene format, the node types with every attribute's long and short
// name, enum field names and connection plugs taken from the attribute
// tables, and the meshes and maps of the example directory given as the
// argument. Made at build time, so it follows the tables as they change.
//
//   myo_fuzz_scene_dictionary EXAMPLE_DIR > scene_reader.dict

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "app/scene/node_types.h"

namespace {

using myo_core::AttributeInfo;
using myo_core::AttributeType;

// A dictionary entry holding `text` as a JSON string, quotes included.
std::string JsonStringEntry(const std::string& text) {
  std::string entry = "\"\\\"";
  for (char c : text) {
    if (c == '"' || c == '\\') entry += "\\\\\\";
    entry += c;
  }
  return entry + "\\\"\"";
}

// A dictionary entry holding `text` as it is.
std::string RawEntry(const std::string& text) {
  std::string entry = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') entry += '\\';
    entry += c;
  }
  return entry + "\"";
}

void AddTableEntries(const myo_core::AttributeTable& table, std::set<std::string>& names, std::set<std::string>& plugs) {
  for (const AttributeInfo& info : table) {
    names.insert(info.long_name);
    names.insert(info.short_name);
    for (const myo_core::EnumField& field : info.fields) names.insert(field.name);
    if (info.type != AttributeType::kCompound || !info.Has(myo_core::kArray)) continue;
    for (const std::string& child_name : info.children) {
      const auto child = std::find_if(table.begin(), table.end(),
                                      [&](const AttributeInfo& a) { return a.long_name == child_name; });
      if (child == table.end()) continue;
      if (child->type == AttributeType::kMatrix || child->type == AttributeType::kMesh)
        plugs.insert(info.long_name + "[0]." + child_name);
    }
  }
}

std::vector<std::string> ExampleFiles(const std::string& example) {
  std::vector<std::string> files;
  for (const char* folder : {"meshes", "maps"}) {
    std::error_code ec;
    for (std::filesystem::directory_iterator it(example + "/" + folder, ec), end; !ec && it != end; it.increment(ec))
      if (it->is_regular_file()) files.push_back(std::string(folder) + "/" + it->path().filename().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s EXAMPLE_DIR\n", argv[0]);
    return 2;
  }
  const std::vector<std::string> files = ExampleFiles(argv[1]);
  if (files.empty()) {
    std::fprintf(stderr, "%s: no meshes/ or maps/ files under %s\n", argv[0], argv[1]);
    return 1;
  }

  std::set<std::string> names = {"version", "timeline", "transforms", "meshes", "nodes", "start", "end",
                                 "preroll", "fps", "name", "parent", "keys", "frame", "matrix", "translate",
                                 "rotate", "scale", "file", "type", "input", "attributes", "maps",
                                 "connections", "set", "values", "value"};
  std::set<std::string> plugs;
  for (const myo_app::NodeType& type : myo_app::NodeTypes()) {
    names.insert(type.name);
    AddTableEntries(*type.attributes, names, plugs);
  }
  AddTableEntries(myo_app::DeformerAttributes(), names, plugs);

  std::printf("# Scene reader dictionary, made from the node types' attribute tables.\n");
  for (const std::string& name : names) std::printf("%s\n", JsonStringEntry(name).c_str());
  for (const std::string& plug : plugs) std::printf("%s\n", JsonStringEntry(plug).c_str());
  for (const std::string& file : files) std::printf("%s\n", JsonStringEntry(file).c_str());
  for (const char* token : {"true", "false", "null", "{}", "[]", "[[1, 0.5]]", "-1", "0.5", "1e400", "1e9", "-0",
                            "\\u0000", "\\n"})
    std::printf("%s\n", RawEntry(token).c_str());
  return 0;
}
