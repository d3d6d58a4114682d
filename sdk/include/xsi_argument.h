// Argument and ArgumentArray: the arguments a command defines in its Init callback.
#pragma once

#include <memory>

#include <xsi_base.h>
#include <xsi_string.h>
#include <xsi_value.h>

namespace XSI {

class Argument : public SIObject {
 public:
  Argument() = default;
  explicit Argument(const CRef& ref);
};

class ArgumentArray : public CBase {
 public:
  ArgumentArray() = default;
  explicit ArgumentArray(const CRef& ref) : CBase(ref) {}

  /// Appends an argument named `name` with the default `value`; a name already defined is
  /// refused with CStatus::InvalidArgument.
  CStatus Add(const CString& name, const CValue& value = CValue());
};

}  // namespace XSI
