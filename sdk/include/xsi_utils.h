// CUtils: small host utilities.
#pragma once

#include <xsi_string.h>

namespace XSI {

class CUtils {
 public:
  /// Joins the non-empty parts with exactly one of the platform's path separators ('/' here)
  /// between each two, whether or not the parts already end or begin with one.
  static CString BuildPath(const CString& p1, const CString& p2, const CString& p3 = CString(),
                           const CString& p4 = CString(), const CString& p5 = CString(),
                           const CString& p6 = CString());
};

}  // namespace XSI
