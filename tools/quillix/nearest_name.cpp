#include "tools/quillix/nearest_name.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <utility>

namespace quillix::tool {

namespace {

char Folded(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

}  // namespace

std::size_t EditDistance(std::string_view a, std::string_view b) {
  // Three rows of the distance table: row[j] is the distance between the first i bytes of `a`
  // and the first j bytes of `b`; the row two back lets a swap of neighbours count as one edit.
  std::vector<std::size_t> before(b.size() + 1), previous(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::swap(before, previous);
    std::swap(previous, row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool same = Folded(a[i - 1]) == Folded(b[j - 1]);
      row[j] = std::min({previous[j] + 1, row[j - 1] + 1, previous[j - 1] + (same ? 0 : 1)});
      if (i > 1 && j > 1 && Folded(a[i - 1]) == Folded(b[j - 2]) &&
          Folded(a[i - 2]) == Folded(b[j - 1]))
        row[j] = std::min(row[j], before[j - 2] + 1);
    }
  }
  return row[b.size()];
}

std::string NearestName(std::string_view word, const std::vector<std::string>& candidates) {
  std::size_t best = std::numeric_limits<std::size_t>::max();
  std::string nearest;
  for (const std::string& candidate : candidates) {
    std::size_t prefix = 0;
    while (prefix < word.size() && prefix < candidate.size() &&
           Folded(word[prefix]) == Folded(candidate[prefix]))
      ++prefix;
    const std::size_t allowed = std::max<std::size_t>(1, (word.size() - prefix + 2) / 3);
    const std::size_t distance = EditDistance(word, candidate);
    if (distance <= allowed && distance < best) {
      best = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates) {
  const std::string nearest = NearestName(word, candidates);
  return nearest.empty() ? std::string() : "; did you mean \"" + nearest + "\"?";
}

}  // namespace quillix::tool
