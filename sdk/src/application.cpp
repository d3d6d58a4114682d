#include <xsi_application.h>
#include <xsi_factory.h>

#include <xsihost/session.h>

namespace XSI {

CStatus Application::LogMessage(const CString& text, siSeverityType severity) const {
  xsihost::HostLog().Add(static_cast<int>(severity), text.Wide());
  return CStatus::OK;
}

Factory Application::GetFactory() const { return Factory(); }

bool Application::IsInteractive() const { return xsihost::IsInteractive(); }

}  // namespace XSI
