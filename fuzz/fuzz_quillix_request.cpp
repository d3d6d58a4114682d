// `quillix eval`'s request reader over the real plug-in: any bytes as a request file. Bad
// input must end in one message and status 2, good input in evaluations; nothing may fault
// in the reader, the host or the nodes it reaches.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include <xsihost/host.h>
#include <nlohmann/json.hpp>

#include "fuzz/fuzz_common.h"
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
  gRequestPath = "/tmp/quillix-fuzz-request-" + std::to_string(getpid()) + ".json";
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  const nlohmann::json parsed = nlohmann::json::parse(text, nullptr, false);
  if (!parsed.is_discarded() && Oversized(parsed)) return -1;
  {
    std::ofstream file(gRequestPath, std::ios::binary | std::ios::trunc);
    file.write(text.data(), std::streamsize(text.size()));
  }
  quillix::tool::EvalOptions options;
  options.requestPath = gRequestPath;
  nlohmann::json out;
  std::ostringstream err;
  const int status = quillix::tool::RunEval(*gHost, options, out, err);
  Check(status == 0 || status == 2, "exit status other than 0 or 2");
  if (status == 2) {
    const std::string message = err.str();
    Check(!message.empty() && message.back() == '\n' && message.find('\n') == message.size() - 1,
          "bad input did not give exactly one message line");
  } else {
    Check(err.str().empty(), "a successful run printed an error");
    (void)out.dump();  // every written value must serialise
  }
  gHost->TakeLog();
  return 0;
}
