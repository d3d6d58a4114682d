#include "tools/tool_process.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <utility>

namespace quillix::test {

namespace {

std::string ReadWhole(const std::filesystem::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

[[noreturn]] void ExecTool(const std::vector<std::string>& args) {
  std::string tool = QUILLIX_TOOL_PATH;
  std::vector<std::string> copies = args;
  std::vector<char*> argv{tool.data()};
  for (auto& a : copies) argv.push_back(a.data());
  argv.push_back(nullptr);
  execv(tool.c_str(), argv.data());
  _exit(127);
}

int ExitStatus(pid_t pid) {
  int raw = 0;
  waitpid(pid, &raw, 0);
  return WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
}

}  // namespace

ToolRun RunTool(const std::vector<std::string>& args, const std::filesystem::path& dir,
                const std::string& input) {
  const auto inPath = dir / "stdin.txt", outPath = dir / "stdout.txt", errPath = dir / "stderr.txt";
  {
    std::ofstream in(inPath, std::ios::binary | std::ios::trunc);
    in << input;
  }
  const pid_t pid = fork();
  if (pid == 0) {
    std::freopen(inPath.c_str(), "r", stdin);
    std::freopen(outPath.c_str(), "w", stdout);
    std::freopen(errPath.c_str(), "w", stderr);
    ExecTool(args);
  }
  ToolRun run;
  run.status = ExitStatus(pid);
  run.out = ReadWhole(outPath);
  run.err = ReadWhole(errPath);
  return run;
}

ToolPipe::ToolPipe(const std::vector<std::string>& args) {
  int in[2], out[2];
  if (pipe(in) != 0 || pipe(out) != 0) return;
  std::signal(SIGPIPE, SIG_IGN);
  pid_ = fork();
  if (pid_ == 0) {
    dup2(in[0], STDIN_FILENO);
    dup2(out[1], STDOUT_FILENO);
    close(in[0]);
    close(in[1]);
    close(out[0]);
    close(out[1]);
    ExecTool(args);
  }
  close(in[0]);
  close(out[1]);
  toChild_ = in[1];
  fromChild_ = out[0];
}

ToolPipe::~ToolPipe() {
  if (pid_ > 0) Finish();
  if (fromChild_ >= 0) close(fromChild_);
}

void ToolPipe::Write(const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = write(toChild_, text.data() + done, text.size() - done);
    if (n <= 0) return;
    done += static_cast<std::size_t>(n);
  }
}

std::string ToolPipe::ReadLine() {
  for (;;) {
    const auto newline = pending_.find('\n');
    if (newline != std::string::npos) {
      std::string line = pending_.substr(0, newline);
      pending_.erase(0, newline + 1);
      return line;
    }
    // A child that never answers fails the test in a minute rather than hanging it.
    pollfd ready{fromChild_, POLLIN, 0};
    if (poll(&ready, 1, 60000) <= 0) return std::exchange(pending_, std::string());
    char block[4096];
    const ssize_t n = read(fromChild_, block, sizeof block);
    if (n <= 0) return std::exchange(pending_, std::string());
    pending_.append(block, static_cast<std::size_t>(n));
  }
}

int ToolPipe::Finish() {
  if (toChild_ >= 0) close(toChild_);
  toChild_ = -1;
  const int status = ExitStatus(pid_);
  pid_ = -1;
  return status;
}

}  // namespace quillix::test
