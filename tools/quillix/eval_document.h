// One request document of `quillix eval`, already parsed: what a request file and each line of
// `--ndjson` input hold.
#pragma once

#include <iosfwd>
#include <string>

#include <xsihost/host.h>
#include <nlohmann/json.hpp>

#include "tools/quillix/commands.h"
#include "tools/quillix/request_reader.h"
#include "tools/quillix/result_document.h"

namespace quillix::tool {

// Evaluates `document` ({"requests": [...], "scene": ...} or a bare list of requests) into
// `out` ({"results", "shutdownLog"}); the inputs whose lists the request reader decoded take
// them from `decoded`. Bad input prints one line "quillix: <file>: <place>: <what>" to `err`,
// evaluates nothing further and returns 2 (results of earlier requests are dropped); 0
// otherwise.
int EvaluateDocument(xsihost::Host& host, const nlohmann::json& document, DecodedValues& decoded,
                     const EvalOptions& options, const std::string& file, ResultDocument& out,
                     std::ostream& err);

// "not valid JSON: <the parser's reason>" for a document the parser refused, without the
// library's own error number: "parse error at line 1, column 9: syntax error ...".
std::string NotValidJson(const nlohmann::json::exception& e);

}  // namespace quillix::tool
