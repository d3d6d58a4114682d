// What the command bindings share: the argument table, the definition that an Init callback
// writes from it, the arguments that an Execute callback reads back, and the quoting of names
// in the commands' log lines.
#pragma once

#include <span>
#include <vector>

#include <xsi_ref.h>
#include <xsi_status.h>
#include <xsi_string.h>
#include <xsi_value.h>
#include <xsi_valuearray.h>

namespace quillix::commands {

enum class ArgumentType { String, Integer, Double, Boolean, Float };

// One row of a command's argument table. The string argument's default is always empty.
struct ArgumentDef {
  const wchar_t* name;
  ArgumentType type;
  double defaultValue;
};

// Fills in the command that `contextRef` (an Init context) names: `description`, the
// no-logging capability cleared so that every call is logged as usual, and `arguments` in
// table order, each with its default. Returns the host's status.
XSI::CStatus DefineCommand(XSI::CRef& contextRef, const wchar_t* description,
                           std::span<const ArgumentDef> arguments);

// The values of a call, one per row of `arguments` in table order: the value given at that
// position, or the row's default where `given` holds an empty value or ends early. Values
// beyond the table are ignored.
std::vector<XSI::CValue> ReadArguments(const XSI::CValueArray& given,
                                       std::span<const ArgumentDef> arguments);

// `text` between double quotes, as the log lines quote names and paths.
XSI::CString Quoted(const XSI::CString& text);

}  // namespace quillix::commands
