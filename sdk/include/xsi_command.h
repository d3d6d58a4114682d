// Command: a command's definition as its Init callback fills it in.
#pragma once

#include <xsi_argument.h>
#include <xsi_base.h>

namespace XSI {

class Command : public SIObject {
 public:
  Command() = default;
  /// Binds to `ref` when it refers to a command (as Context::GetSource does in Init).
  explicit Command(const CRef& ref);

  ArgumentArray GetArguments() const;
  CStatus PutDescription(const CString& description);
  /// Sets or clears the capability bits `flag`.
  CStatus SetFlag(LONG flag, bool value);
};

}  // namespace XSI
