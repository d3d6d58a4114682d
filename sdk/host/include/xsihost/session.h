// Process-wide state of the offline host: the message log and host settings.
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace xsihost {

struct LogLine {
  int severity = 0;
  std::wstring text;
  bool operator==(const LogLine&) const = default;
};

// The host's message log. Lines are appended from any thread; readers take them in order.
class Log {
 public:
  void add(int severity, std::wstring text);
  // Returns the lines logged since the last take and forgets them.
  std::vector<LogLine> take();
  std::vector<LogLine> lines() const;
  void clear();
  // Echo every line to stderr as it is logged (for interactive use).
  void setEcho(bool echo);

 private:
  mutable std::mutex m_mutex;
  std::vector<LogLine> m_lines;
  bool m_echo = false;
};

Log& hostLog();

// Whether Application::IsInteractive reports an interactive session (default false).
void setInteractive(bool interactive);
bool isInteractive();

// Failed CStatus::AssertSucceeded calls since start-up (each is also logged at severity 2).
unsigned failedAssertions();
void countFailedAssertion();

}  // namespace xsihost
