// The host's message log, as the bindings write to it.
#pragma once

#include <string>

#include <xsi_application.h>
#include <xsi_decl.h>
#include <xsi_string.h>

namespace quillix::plugin {

// Severities of the host's message log, as the cores report them.
inline constexpr int kLogError = XSI::siErrorMsg;      // 2
inline constexpr int kLogWarning = XSI::siWarningMsg;  // 4
inline constexpr int kLogInfo = XSI::siCommentMsg;     // 32, "information"

// Appends `text` (narrow, Latin-1) to the host's log at `severity`.
inline void LogLine(int severity, const std::string& text) {
  XSI::Application().LogMessage(XSI::CString(text.c_str()),
                                static_cast<XSI::siSeverityType>(severity));
}

// Appends `text` to the host's log at `severity`.
inline void LogLine(int severity, const XSI::CString& text) {
  XSI::Application().LogMessage(text, static_cast<XSI::siSeverityType>(severity));
}

}  // namespace quillix::plugin
