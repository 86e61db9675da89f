#include "app/scene/scene_names.h"

namespace myo_app {

namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string Folded(const std::string& name) {
  std::string out = name;
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return out;
}

}  // namespace

void CheckName(const std::string& name, const Field& field) {
  const std::string quoted = "\"" + name + "\"";
  if (name.empty()) field.Fail("expected a name");
  if (name.size() > kMaxNameLength)
    field.Fail("the name \"" + name.substr(0, 24) + "...\" is " + std::to_string(name.size()) +
               " characters long; at most " +
               std::to_string(kMaxNameLength) + " are allowed");
  if (IsDigit(name[0])) field.Fail(quoted + " starts with a digit; names start with a letter or an underscore");
  for (const char c : name)
    if (!IsLetter(c) && !IsDigit(c) && c != '_')
      field.Fail(quoted + " is not a valid name: use letters, digits and underscores only");
}

void SceneNameSet::Add(const std::string& name, const Field& field) {
  const auto [it, added] = by_folded_.emplace(Folded(name), name);
  if (added) return;
  if (it->second == name) field.Fail("the name \"" + name + "\" is used twice");
  field.Fail("the names \"" + it->second + "\" and \"" + name +
             "\" differ only in letter case, and would share output files where case is ignored");
}

}  // namespace myo_app
