// The recent-file scan: the most recent scene out of an untrusted list file, and the tag
// extraction under it with fuzzed tags, buffer sizes and trim options.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "core/recent/recent_scene.h"
#include "fuzz/fuzz_common.h"

using namespace quillix;
using quillix::fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  // The whole input as the list file, zero-terminated as the command reads it.
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  std::string scene = "previous";
  const int code = FindMostRecentScene(text.c_str(), scene);
  Check(code == kExtractOk || code == kExtractTagNotFound || code == kExtractTooLong,
        "unexpected scan code");
  if (code != kExtractOk) Check(scene.empty(), "a failed scan left a path");
  Check(scene.size() < std::size_t(kScenePathCapacity), "path longer than its capacity");

  // The extraction with tags and a buffer size taken from the input's first bytes.
  FuzzedDataProvider in(bytes, size);
  const std::string open = in.ConsumeRandomLengthString(12);
  const std::string close = in.ConsumeRandomLengthString(12);
  const std::ptrdiff_t outSize = in.ConsumeIntegralInRange<std::ptrdiff_t>(-2, 64);
  const bool trimLeading = in.ConsumeBool(), trimTrailing = in.ConsumeBool();
  const std::string body = in.ConsumeRemainingBytesAsString();
  std::vector<char> out(std::size_t(outSize > 0 ? outSize : 0) + 1, '\x7f');
  const int extract = ExtractBetween(body.c_str(), open.c_str(), close.c_str(), out.data(), outSize,
                                     trimLeading, trimTrailing);
  Check(out.back() == '\x7f', "wrote past the output buffer");
  if (outSize > 0 && extract != kExtractBadArguments)
    Check(std::memchr(out.data(), 0, std::size_t(outSize)) != nullptr, "output not terminated");
  Check(extract == kExtractOk || extract == kExtractTagNotFound || extract == kExtractTooLong ||
            extract == kExtractBadArguments,
        "unexpected extraction code");
  return 0;
}
