// Reading the files `quillix` is given (request and scene files) with one clear message for a
// file that is not there, is a directory or cannot be read.
#pragma once

#include <string>

namespace quillix::tool {

// Reads all of the file at `path` into `text`: a regular file in one read of its size, standard
// input (`path` "-") or a pipe in large blocks. On failure returns false and sets `error` to one
// line naming the file: "<path>: is a directory", or "<path>: cannot open the <what> file:
// <reason>" (`what` is "request", "scene", ...).
bool ReadFileText(const std::string& path, const char* what, std::string& text, std::string& error);

// Whether the file at `path` can be opened for reading and is no directory; on failure sets
// `error` as ReadFileText does and returns false. Reads nothing.
bool CheckReadableFile(const std::string& path, const char* what, std::string& error);

}  // namespace quillix::tool
