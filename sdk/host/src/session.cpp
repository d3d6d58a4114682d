#include <xsihost/session.h>

#include <atomic>
#include <cstdio>

namespace xsihost {

void Log::Add(int severity, std::wstring text) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (echo_) std::fprintf(stderr, "[%d] %ls\n", severity, text.c_str());
  lines_.push_back({severity, std::move(text)});
}

std::vector<LogLine> Log::Take() {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<LogLine> out;
  out.swap(lines_);
  return out;
}

std::vector<LogLine> Log::Lines() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return lines_;
}

void Log::Clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  lines_.clear();
}

void Log::SetEcho(bool echo) {
  std::lock_guard<std::mutex> lock(mutex_);
  echo_ = echo;
}

Log& HostLog() {
  static Log log;
  return log;
}

namespace {
std::atomic<bool> g_interactive{false};
std::atomic<unsigned> g_failedAssertions{0};
}  // namespace

void SetInteractive(bool interactive) { g_interactive = interactive; }
bool IsInteractive() { return g_interactive; }
unsigned FailedAssertions() { return g_failedAssertions; }
void CountFailedAssertion() { ++g_failedAssertions; }

}  // namespace xsihost
