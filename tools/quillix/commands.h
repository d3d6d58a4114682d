// The subcommands of `quillix`. Each returns the process exit status: 0 on success, 2 for
// bad input (after printing one message naming the place).
#pragma once

#include <cstdio>
#include <iosfwd>
#include <string>

#include <nlohmann/json.hpp>

#include <xsihost/host.h>

#include "tools/quillix/result_document.h"
#include "tools/quillix/result_output.h"

namespace quillix::tool {

struct EvalOptions {
  std::string requestPath;  // "-" reads standard input (so does "" with --ndjson)
  unsigned threads = 0;     // 0: the request's or the machine's
  unsigned batchSize = 0;   // 0: the request's, else sized by the host
  bool sceneGiven = false;  // a --scene option overrides the request file's "scene"
  // Named instances outlive the call (a session that evaluates again later, as the Python
  // host does); their Term then runs when the host destroys them, not here.
  bool keepInstances = false;
  // Folders for result files and pictures of the geometric outputs; empty ones are off.
  ResultOutputOptions outputs;
};

// Prints identity, commands and node definitions.
int RunList(const xsihost::PluginRecord& plugin, bool asJson, std::ostream& out);

// Evaluates the requests of a JSON file into `out` ({"results", "shutdownLog"}); bad input
// prints one message to `err` and returns 2.
int RunEval(xsihost::Host& host, const EvalOptions& options, ResultDocument& out,
            std::ostream& err);

// `eval --ndjson`: reads one request document per line of `in` and writes one compact line
// per input line to `out`, flushed as each finishes: the {"results", "shutdownLog"} of the
// line, or {"error": "<the message>", "line": N} for a bad line, whose message also goes to
// `err`. Each line is evaluated as a request file of its own (named instances end with it),
// so memory does not grow with the number of lines. Returns 2 when any line was bad, else 0.
int RunEvalLines(xsihost::Host& host, const EvalOptions& options, std::FILE* in, std::ostream& out,
                 std::ostream& err);

}  // namespace quillix::tool
