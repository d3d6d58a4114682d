// What the command bindings share: the argument table row, the definition written by an Init
// callback, and the log helpers.
#pragma once

#include <span>

#include <xsi_decl.h>
#include <xsi_ref.h>
#include <xsi_status.h>
#include <xsi_string.h>
#include <xsi_value.h>

namespace quillix::commands {

enum class ArgumentType { String, Integer, Double, Boolean, Float };

// One row of a command's argument table. The string argument's default is always empty.
struct ArgumentDef {
  const wchar_t* name;
  ArgumentType type;
  double defaultValue;
};

// The default of `argument` as a value of its type.
XSI::CValue DefaultValue(const ArgumentDef& argument);

// Fills in the command that `contextRef` (an Init context) names: `description`, the
// no-logging capability cleared so that every call is logged as usual, and `arguments` in
// table order. Returns the host's status; never throws.
XSI::CStatus DefineCommand(XSI::CRef& contextRef, const wchar_t* description,
                           std::span<const ArgumentDef> arguments);

// Appends `text` to the host's log at `severity`.
void Log(const XSI::CString& text, XSI::siSeverityType severity);

// `text` between double quotes.
XSI::CString Quoted(const XSI::CString& text);

}  // namespace quillix::commands
