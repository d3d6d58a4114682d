#include <xsi_status.h>

#include <cstdio>

#include <xsihost/session.h>

namespace XSI {

void CStatus::AssertSucceeded(const CString& message) const {
  if (Succeeded()) return;
  xsihost::countFailedAssertion();
  char code[32];
  std::snprintf(code, sizeof code, "0x%08X", m_code);
  std::wstring text = L"Assertion failed (status " + CString(code).Wide() + L")";
  if (!message.IsEmpty()) text += L": " + message.Wide();
  xsihost::hostLog().add(siErrorMsg, std::move(text));
}

}  // namespace XSI
