// Context: what a callback receives about its caller (node instance or command).
#pragma once

#include <xsi_base.h>
#include <xsi_ref.h>
#include <xsi_status.h>
#include <xsi_string.h>
#include <xsi_value.h>

namespace XSI {

class Context : public CBase {
 public:
  Context() = default;
  explicit Context(const CRef& ref) : CBase(ref) {}

  // User data kept by the host for this node instance or command.
  CValue GetUserData() const;
  CStatus PutUserData(const CValue& data);
  // The object that owns the callback: the ICE node, or the command.
  CRef GetSource() const;
  CValue GetAttribute(const CString& name) const;
  CStatus PutAttribute(const CString& name, const CValue& value);
};

}  // namespace XSI
