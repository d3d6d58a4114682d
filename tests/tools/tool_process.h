// Running the real `quillix` binary from a test: once with its streams in files, or as a child
// on pipes that the test writes to and reads from while it runs.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace quillix::test {

struct ToolRun {
  int status = -1;  // exit status, or 128 + signal
  std::string out, err;
};

// Runs QUILLIX_TOOL_PATH with `args`, standard input `input`, both output streams captured in
// files in `dir`; returns when it has exited.
ToolRun RunTool(const std::vector<std::string>& args, const std::filesystem::path& dir,
                const std::string& input = "");

// The tool as a running child process whose standard input and output are pipes.
class ToolPipe {
 public:
  explicit ToolPipe(const std::vector<std::string>& args);
  ~ToolPipe();
  ToolPipe(const ToolPipe&) = delete;
  ToolPipe& operator=(const ToolPipe&) = delete;

  // Writes `text` to the child's standard input.
  void Write(const std::string& text);
  // Reads the child's standard output up to and including the next newline; what was read
  // (without the newline) or what came before the end of the output.
  std::string ReadLine();
  // Closes the child's standard input, then waits for it; its exit status.
  int Finish();

 private:
  pid_t pid_ = -1;
  int toChild_ = -1, fromChild_ = -1;
  std::string pending_;
};

}  // namespace quillix::test
