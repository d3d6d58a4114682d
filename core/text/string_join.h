// Joining of string arrays with a delimiter.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quillix {

// Joins the non-empty entries of `entries` with `delimiter` and returns the result; an empty
// array gives the empty string.
//
// Empty entries are skipped together with the delimiter that would follow them, but the
// delimiter after an entry is decided by the entry's index alone (no delimiter after the last
// index), not by whether a non-empty entry follows. So a, b and an empty last entry give "a-b-"
// with a trailing delimiter; graphs built on that text expect it, so it is kept.
std::wstring JoinStrings(std::span<const std::wstring_view> entries, std::wstring_view delimiter);

}  // namespace quillix
