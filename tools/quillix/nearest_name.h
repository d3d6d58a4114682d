// Suggestions for misspelt names: the known name nearest to what the user wrote.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillix::tool {

// Edit distance between `a` and `b`, ignoring ASCII case: the fewest insertions, deletions
// and substitutions of one byte and swaps of two neighbouring bytes that turn one into the
// other (each substring edited once). O(|a| × |b|) time, O(|b|) memory.
std::size_t EditDistance(std::string_view a, std::string_view b);

// The candidate nearest to `word` by EditDistance, the first in `candidates` order among
// equals; empty when none is near enough to be a likely misspelling. Near enough: at most a
// third of the part of `word` that follows its common prefix with the candidate (at least one
// edit), so "Quillix_dvi" finds "Quillix_divi" but "Quillix_nothing" finds no node.
std::string NearestName(std::string_view word, const std::vector<std::string>& candidates);

// "; did you mean \"<nearest>\"?" to append to a message about `word`, or "" when no
// candidate is near enough.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace quillix::tool
