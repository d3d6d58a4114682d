// `quillix eval --ndjson`: one request document per input line, one result line per input line.
#include <sys/types.h>

#include <cstdio>
#include <cstdlib>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "tools/quillix/commands.h"
#include "tools/quillix/eval_document.h"

namespace quillix::tool {

using nlohmann::json;

namespace {

std::string_view WithoutLineEnd(std::string_view line) {
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  return line;
}

// Evaluates one line into `result`; on bad input returns false with the message line in `error`.
bool EvaluateLine(xsihost::Host& host, std::string_view line, const EvalOptions& options,
                  const std::string& label, ResultDocument& result, std::string& error) {
  std::ostringstream err;
  int status = 2;
  if (line.find_first_not_of(" \t") == std::string_view::npos) {
    err << "quillix: " << label << ": empty line (expected a request document)\n";
  } else {
    json document;
    DecodedValues decoded;
    bool parsed = ReadRequestDocument(line, document, decoded);
    if (!parsed) {
      decoded = DecodedValues();
      try {
        document = json::parse(line);
        parsed = true;
      } catch (const json::exception& e) {
        err << "quillix: " << label << ": " << NotValidJson(e) << '\n';
      }
    }
    if (parsed) status = EvaluateDocument(host, document, decoded, options, label, result, err);
  }
  error = err.str();
  while (!error.empty() && error.back() == '\n') error.pop_back();
  return status == 0;
}

}  // namespace

int RunEvalLines(xsihost::Host& host, const EvalOptions& options, std::FILE* in, std::ostream& out,
                 std::ostream& err) {
  // Every line stands alone: its named instances end with it, so nothing outlives a line.
  EvalOptions lineOptions = options;
  lineOptions.keepInstances = false;
  const std::string file =
      options.requestPath.empty() || options.requestPath == "-" ? "<stdin>" : options.requestPath;
  char* line = nullptr;  // getline's buffer, reused for every line
  std::size_t capacity = 0;
  bool anyBad = false;
  for (std::size_t number = 1;; ++number) {
    const ssize_t length = ::getline(&line, &capacity, in);
    if (length < 0) break;
    const std::string label = file + ":" + std::to_string(number);
    ResultDocument result;
    std::string error;
    if (EvaluateLine(host, WithoutLineEnd(std::string_view(line, std::size_t(length))), lineOptions,
                     label, result, error)) {
      result.Write(out, -1, true);
      out << '\n';
    } else {
      anyBad = true;
      err << error << '\n';
      out << json{{"error", error}, {"line", number}}.dump(-1, ' ', false,
                                                           json::error_handler_t::replace)
          << '\n';
    }
    // The reader on the other end of a pipe waits for this line before it writes the next.
    out.flush();
    err.flush();
  }
  std::free(line);
  return anyBad ? 2 : 0;
}

}  // namespace quillix::tool
