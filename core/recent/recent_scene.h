// Finding the most recent scene in the host's recent-file list.
//
// The list ("RecentFileMenus.xml") is the host's own file and is read as plain bytes: the
// scan is a byte-string search for the recent-scenes marker and the first recent-file entry
// after it, not an XML parse. Its content is untrusted, so every outcome is a return code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quillix {

// Environment variable naming the user's host directory.
inline constexpr const char* kUserHomeVariable = "XSI_USERHOME";
// Folders under the user directory, then the list file's name; joined by the host's
// path builder, so the separator is the platform's.
inline constexpr const char* kRecentListFolder = "Data";
inline constexpr const char* kRecentListSubfolder = "Preferences";
inline constexpr const char* kRecentListFileName = "RecentFileMenus.xml";
// Marker of the recent-scenes section and the tags around each entry.
inline constexpr const char* kRecentScenesMarker = "RECENT_SCENES_MENU";
inline constexpr const char* kRecentFileOpenTag = "<recent_file>";
inline constexpr const char* kRecentFileCloseTag = "</recent_file>";
// Capacity of the scene path, terminating zero included: paths of up to 1,023 bytes.
inline constexpr std::ptrdiff_t kScenePathCapacity = 1024;

// Return codes of ExtractBetween and FindMostRecentScene.
inline constexpr int kExtractOk = 0;
inline constexpr int kExtractTagNotFound = 1;
inline constexpr int kExtractTooLong = 2;
inline constexpr int kExtractBadArguments = 127;

// Index of the first non-whitespace byte of `text`; nothing when `text` is empty or all
// whitespace. Whitespace here, and for the trim options of ExtractBetween, is exactly space,
// line feed, tab, vertical tab, form feed and carriage return, whatever the locale.
std::optional<std::size_t> SkipLeadingSpace(std::string_view text);

// Index of the last non-whitespace byte of `text`; nothing when `text` is empty or all
// whitespace.
std::optional<std::size_t> FindLastNonSpace(std::string_view text);

// Copies the bytes between the first `openTag` in `text` and the first `closeTag` after it
// into `out` as a zero-terminated string.
//  - text, openTag, closeTag: zero-terminated byte strings; the search ends at the first
//    zero byte of `text`.
//  - out: caller-owned buffer of `outSize` bytes. When outSize > 0 it is first set to the
//    empty string, so a failed call leaves an empty string behind.
//  - trimLeading / trimTrailing: drop whitespace (SkipLeadingSpace) at either end of the
//    content; a content that is empty after trimming yields kExtractOk and "".
// The content is copied verbatim otherwise: no entity decoding.
// Returns kExtractOk; kExtractTagNotFound when either tag is missing; kExtractTooLong when
// the content plus its terminating zero exceeds outSize; kExtractBadArguments when a
// pointer is null, outSize is negative or a tag is empty (nothing is written then).
int ExtractBetween(const char* text, const char* openTag, const char* closeTag, char* out,
                   std::ptrdiff_t outSize, bool trimLeading, bool trimTrailing);

// Finds the most recent scene in the recent-file list `listText` (the whole file as a
// zero-terminated byte string; a zero byte inside the file ends the text there): the
// content of the first "<recent_file>" entry at or after the first "RECENT_SCENES_MENU",
// untrimmed, at most 1,023 bytes. The entry need not lie inside the recent-scenes section.
// On kExtractOk `scenePath` holds the path; otherwise it is emptied. Returns the
// ExtractBetween code, or kExtractTagNotFound when the marker is missing, or
// kExtractBadArguments when `listText` is null.
int FindMostRecentScene(const char* listText, std::string& scenePath);

// Whether a list file of `size` bytes (as FileSize reports it) is worth reading: an empty
// file counts as unopenable, like a missing one.
inline bool IsReadableListSize(std::int64_t size) { return size > 0; }

// Size in bytes of the file at `path` (zero-terminated, as the OS takes it), found by
// opening it for binary reading and seeking to the end; -1 when it cannot be opened or
// measured or is not a regular file (a directory). A null `path` yields -1.
std::int64_t FileSize(const char* path);

// Reads up to out.size() bytes of the file at `path` in binary mode into `out` and returns
// the number read (0 when the file cannot be opened). Bytes past that count are left as
// they were.
std::size_t ReadWholeFile(const char* path, std::span<char> out);

}  // namespace quillix
