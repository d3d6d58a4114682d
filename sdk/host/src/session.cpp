#include <xsihost/session.h>

#include <atomic>

namespace xsihost {

void Log::Add(int severity, std::wstring text) {
  std::lock_guard<std::mutex> lock(mutex_);
  lines_.push_back({severity, std::move(text)});
}

std::vector<LogLine> Log::Take() {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<LogLine> out;
  out.swap(lines_);
  return out;
}

Log& HostLog() {
  static Log log;
  return log;
}

namespace {
std::atomic<unsigned> g_failedAssertions{0};
}  // namespace

bool IsInteractive() { return false; }
unsigned FailedAssertions() { return g_failedAssertions; }
void CountFailedAssertion() { ++g_failedAssertions; }

}  // namespace xsihost
