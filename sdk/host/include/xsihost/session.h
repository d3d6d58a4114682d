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
  void Add(int severity, std::wstring text);
  // Returns the lines logged since the last take and forgets them.
  std::vector<LogLine> Take();

 private:
  mutable std::mutex mutex_;
  std::vector<LogLine> lines_;
};

Log& HostLog();

// What Application::IsInteractive reports: false, as no user sits at the offline host.
bool IsInteractive();

// Failed CStatus::AssertSucceeded calls since start-up (each is also logged at severity 2).
unsigned FailedAssertions();
void CountFailedAssertion();

}  // namespace xsihost
