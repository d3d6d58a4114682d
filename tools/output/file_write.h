// Writing output files: one status type for every failure, and the file naming of results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace quillix {

// Outcome of an output operation. Failures are reported here, never thrown: `message` says
// what failed and where, ready to be shown to the user.
struct OutputStatus {
  bool ok = true;
  std::string message;
};

// Creates `directory` and its missing parents. Fails when it cannot be created or exists as
// something other than a directory.
OutputStatus EnsureDirectory(const std::filesystem::path& directory);

// Writes `bytes` to `file`, replacing it. The directory must exist. A failure names the file
// and the system's reason; a partly written file may remain.
OutputStatus WriteFileBytes(const std::filesystem::path& file, std::string_view bytes);

// The name of the file holding one result element: "r<request>_p<port>_e<element>.<extension>",
// all numbers in decimal with no padding, e.g. ResultFileName(0, 2010, 3, "obj") is
// "r0_p2010_e3.obj". `extension` is given without its dot.
std::string ResultFileName(std::size_t request, std::int32_t port, std::size_t element,
                           std::string_view extension);

}  // namespace quillix
