// CUtils: small host utilities.
#pragma once

#include <xsi_string.h>

namespace XSI {

class CUtils {
 public:
  /// Joins the non-empty parts with the platform's path separator ('/' here), adding a
  /// separator only where a part does not already end with one.
  static CString BuildPath(const CString& p1, const CString& p2, const CString& p3 = CString(),
                           const CString& p4 = CString(), const CString& p5 = CString(),
                           const CString& p6 = CString());
  /// The value of the environment variable `name` as the host sees it; empty when unset.
  static CString GetEnvironmentVariable(const CString& name);
};

}  // namespace XSI
