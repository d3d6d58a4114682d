// `quillix eval`'s request reader over the real plug-in: any bytes as a request file, or, after
// a first line "#ndjson", as the lines of `eval --ndjson`. Bad input must end in one message
// and status 2, good input in evaluations; nothing may fault in the reader, the host or the
// nodes it reaches. The request file sits in a folder where "meshes/" and "scenes/" hold the
// shipped mesh files and scenes, so inputs bound to mesh files and scene objects are reached.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include <xsihost/host.h>
#include <nlohmann/json.hpp>

#include "fuzz/fuzz_common.h"
#include "tests/support/request_reader_check.h"
#include "tools/quillix/commands.h"

using quillix::fuzz::Check;

namespace {

// Loaded once and never unloaded: the SDK's own statics may be gone by the time a global
// destructor would run at exit, and the real host unloads before it shuts down anyway.
xsihost::Host* gHost = nullptr;
std::string gRequestPath;

// Requests over many elements are valid but only cost time here: their reading is the same
// as for a few elements. Counts the element totals of a parsed document.
bool Oversized(const nlohmann::json& j) {
  if (j.is_object()) {
    for (const auto& [key, value] : j.items()) {
      if ((key == "elements" || key == "threads" || key == "batchSize") && value.is_number() &&
          value.get<double>() > 64)
        return true;
      if (Oversized(value)) return true;
    }
  } else if (j.is_array()) {
    for (const auto& value : j)
      if (Oversized(value)) return true;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::string error;
  gHost = xsihost::Host::Load(QUILLIX_PLUGIN_PATH, error).release();
  if (!gHost) {
    std::fprintf(stderr, "cannot load the plug-in: %s\n", error.c_str());
    std::abort();
  }
  namespace fs = std::filesystem;
  const fs::path folder = fs::temp_directory_path() / ("quillix-fuzz-" + std::to_string(getpid()));
  fs::create_directories(folder);
  std::error_code ignored;
  fs::create_directory_symlink(fs::path(QUILLIX_SOURCE_DIR) / "examples/scenes/meshes",
                               folder / "meshes", ignored);
  fs::create_directory_symlink(fs::path(QUILLIX_SOURCE_DIR) / "examples/scenes", folder / "scenes",
                               ignored);
  gRequestPath = (folder / "request.json").string();
  return 0;
}

namespace {

// Every input line answers one output line of JSON, and the status is 2 exactly when some line
// was bad, with one message line per bad line.
void RunLines(const std::string& lines) {
  std::istringstream scan(lines);
  for (std::string line; std::getline(scan, line);) {
    const auto parsed = nlohmann::json::parse(line, nullptr, false);
    if (!parsed.is_discarded() && Oversized(parsed)) return;
  }
  std::FILE* in = fmemopen(const_cast<char*>(lines.data()), lines.size(), "r");
  if (!in) return;  // fmemopen refuses an empty buffer
  quillix::tool::EvalOptions options;
  options.requestPath = gRequestPath;
  std::ostringstream out, err;
  const int status = quillix::tool::RunEvalLines(*gHost, options, in, out, err);
  std::fclose(in);
  Check(status == 0 || status == 2, "exit status other than 0 or 2");
  std::istringstream results(out.str());
  std::size_t bad = 0;
  for (std::string line; std::getline(results, line);) {
    const auto result = nlohmann::json::parse(line, nullptr, false);
    Check(!result.is_discarded(), "an output line is not JSON");
    bad += result.contains("error");
  }
  Check((status == 2) == (bad > 0), "the status does not say whether a line was bad");
  const std::string messages = err.str();
  Check(std::size_t(std::count(messages.begin(), messages.end(), '\n')) == bad,
        "a bad line did not give exactly one message line");
  gHost->TakeLog();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  constexpr std::string_view kLinesMark = "#ndjson\n";
  if (text.rfind(kLinesMark, 0) == 0) {
    RunLines(text.substr(kLinesMark.size()));
    return 0;
  }
  const nlohmann::json parsed = nlohmann::json::parse(text, nullptr, false);
  if (!parsed.is_discarded() && Oversized(parsed)) return -1;
  const std::string disagreement = quillix::tool::RequestReaderDisagreement(text);
  Check(disagreement.empty(), disagreement.c_str());
  {
    std::ofstream file(gRequestPath, std::ios::binary | std::ios::trunc);
    file.write(text.data(), std::streamsize(text.size()));
  }
  quillix::tool::EvalOptions options;
  options.requestPath = gRequestPath;
  quillix::tool::ResultDocument out;
  std::ostringstream err;
  const int status = quillix::tool::RunEval(*gHost, options, out, err);
  Check(status == 0 || status == 2, "exit status other than 0 or 2");
  if (status == 2) {
    const std::string message = err.str();
    Check(!message.empty() && message.back() == '\n' && message.find('\n') == message.size() - 1,
          "bad input did not give exactly one message line");
  } else {
    Check(err.str().empty(), "a successful run printed an error");
    // Every written value must serialise, as JSON the plain parser reads.
    std::ostringstream text;
    out.Write(text, -1);
    Check(!nlohmann::json::parse(text.str(), nullptr, false).is_discarded(),
          "the results are not JSON");
  }
  gHost->TakeLog();
  return 0;
}
