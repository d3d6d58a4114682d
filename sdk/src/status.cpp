#include <xsi_status.h>

#include <cstdio>

#include <xsihost/session.h>

namespace XSI {

void CStatus::AssertSucceeded(const CString& message) const {
  if (Succeeded()) return;
  xsihost::CountFailedAssertion();
  char code[32];
  std::snprintf(code, sizeof code, "0x%08X", code_);
  std::wstring text = L"Assertion failed (status " + CString(code).Wide() + L")";
  if (!message.IsEmpty()) text += L": " + message.Wide();
  xsihost::HostLog().Add(siErrorMsg, std::move(text));
}

}  // namespace XSI
