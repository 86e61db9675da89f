#include "app/scene/name_suggestion.h"

#include <algorithm>
#include <cctype>

namespace myo_app {

namespace {

// Names longer than this are no typos of a name in a table; the quadratic
// table of the distance stays small whatever a file holds.
constexpr std::size_t kLongestCompared = 256;

char Lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

}  // namespace

std::size_t EditDistance(const std::string& a, const std::string& b) {
  const std::size_t n = a.size(), m = b.size();
  // Three rows of the table: two rows back, one row back, this row.
  std::vector<std::size_t> before(m + 1), previous(m + 1), current(m + 1);
  for (std::size_t j = 0; j <= m; ++j) previous[j] = j;
  for (std::size_t i = 1; i <= n; ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= m; ++j) {
      const bool same = Lower(a[i - 1]) == Lower(b[j - 1]);
      current[j] = std::min({previous[j] + 1, current[j - 1] + 1, previous[j - 1] + (same ? 0 : 1)});
      if (i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) && Lower(a[i - 2]) == Lower(b[j - 1]))
        current[j] = std::min(current[j], before[j - 2] + 1);
    }
    before.swap(previous);
    previous.swap(current);
  }
  return previous[m];
}

std::string NearestName(const std::string& name, const std::vector<std::string>& candidates) {
  if (name.empty() || name.size() > kLongestCompared) return {};
  const std::size_t allowed = std::max<std::size_t>(1, std::min<std::size_t>(3, name.size() / 3));
  std::string best;
  std::size_t best_distance = allowed + 1;
  for (const std::string& candidate : candidates) {
    if (candidate.size() > kLongestCompared) continue;
    const std::size_t distance = EditDistance(name, candidate);
    if (distance < best_distance) {
      best = candidate;
      best_distance = distance;
    }
  }
  return best;
}

std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates) {
  const std::string nearest = NearestName(name, candidates);
  return nearest.empty() ? std::string() : "; did you mean \"" + nearest + "\"?";
}

std::vector<std::string> AttributeNames(const NodeType& type) {
  std::vector<std::string> names;
  for (const myo_core::AttributeInfo& info : *type.attributes) names.insert(names.end(), {info.long_name, info.short_name});
  if (type.deformer)
    for (const myo_core::AttributeInfo& info : DeformerAttributes())
      names.insert(names.end(), {info.long_name, info.short_name});
  return names;
}

}  // namespace myo_app
