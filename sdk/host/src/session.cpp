#include <xsihost/session.h>

#include <atomic>
#include <cstdio>

namespace xsihost {

void Log::add(int severity, std::wstring text) {
  std::lock_guard<std::mutex> lock(m_mutex);
  if (m_echo) std::fprintf(stderr, "[%d] %ls\n", severity, text.c_str());
  m_lines.push_back({severity, std::move(text)});
}

std::vector<LogLine> Log::take() {
  std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<LogLine> out;
  out.swap(m_lines);
  return out;
}

std::vector<LogLine> Log::lines() const {
  std::lock_guard<std::mutex> lock(m_mutex);
  return m_lines;
}

void Log::clear() {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_lines.clear();
}

void Log::setEcho(bool echo) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_echo = echo;
}

Log& hostLog() {
  static Log log;
  return log;
}

namespace {
std::atomic<bool> g_interactive{false};
std::atomic<unsigned> g_failedAssertions{0};
}  // namespace

void setInteractive(bool interactive) { g_interactive = interactive; }
bool isInteractive() { return g_interactive; }
unsigned failedAssertions() { return g_failedAssertions; }
void countFailedAssertion() { ++g_failedAssertions; }

}  // namespace xsihost
